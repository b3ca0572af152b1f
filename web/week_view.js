// Shows columns of boxes beside each other: the days of a week, or the tuners of a day. On a narrow
// screen the style sheet makes them lists.
import { addGestures } from "./gestures.js";
import { TEXT } from "./text.js";
import { DAY, dayOf, timeText } from "./week.js";
import { describe, element, marksOf } from "./words.js";

const HOUR = 3600;
const SHORT = 1800; // seconds; a shorter box has room for one line

// The lines for which a box of some hours has room, on the screen in rem, on paper in millimetres:
// what an hour is high, less what the edges take, by the height of a line. As in style.css.
const linesOf = (hours) => Math.max(Math.floor((4 * hours - 0.15) / 0.9), 1);
const paperLinesOf = (hours) => Math.max(Math.floor((7 * hours - 0.6) / 2.7), 1);

// No method moves other schedules: they would become new ones.
const isMovable = (plan) => plan.schedule.is_userdefine && !plan.selected && plan.rule === null;

/** The view in a section. `actions` are openChanged(plan, values) and openNew(values). */
export function makeWeekView(section, heading, actions) {
  const hours = element("div", "hours");
  for (let hour = 0; hour < 24; hour++) hours.append(element("span", "", `${hour}:00`));
  hours.ariaHidden = "true";
  let clock = null;
  let boxes = new Map(); // occurrences by their elements
  let scrolledTo = null;
  addGestures(section, (box) => boxes.get(box), isMovable, actions);

  function makeBox({ occurrence, top, bottom, column, columns, continued }) {
    const { plan, begin, end, collides } = occurrence;
    const marks = marksOf(plan.schedule, { collides, continued });
    const until = element("span", "until", `–${timeText(end)}`);
    const box = describe("box", plan.schedule, marks, timeText(begin), until);
    box.style.setProperty("--top", top / DAY);
    box.style.setProperty("--height", (bottom - top) / DAY);
    box.style.setProperty("--left", column / columns);
    box.style.setProperty("--width", 1 / columns);
    box.style.setProperty("--lines", linesOf((bottom - top) / HOUR));
    box.style.setProperty("--paper-lines", paperLinesOf((bottom - top) / HOUR));
    box.classList.toggle("short", bottom - top < SHORT);
    box.title = box.textContent;
    box.append(element("span", "text", ...box.childNodes));
    box.dataset.key = `box ${plan.schedule.primeid} ${begin} ${continued}`;
    box.addEventListener("click", () => actions.openChanged(plan));
    if (isMovable(plan)) {
      box.classList.add("movable");
      if (end <= dayOf(begin) + DAY || continued) box.append(element("span", "edge"));
    } else {
      box.title += `\n${TEXT.unmovable}`;
    }
    boxes.set(box, occurrence);
    return box;
  }

  function makeColumn({ title, day, tuner, boxes: own }, index) {
    const name = element("h3", "", title);
    name.id = `column-${index}`;
    const items = own.map((box) => element("li", "", makeBox(box)));
    const list = items.length ? element("ol", "times", ...items)
      : element("p", "times none", TEXT.nothing);
    const column = element("section", "day", name, list);
    column.setAttribute("aria-labelledby", name.id);
    Object.assign(column.dataset, { day, tuner });
    return column;
  }

  const columns = () => [...section.querySelectorAll(".day")];

  /** Moves the line of now, and fades what has passed. */
  function tick() {
    if (!clock) return;
    const today = dayOf(clock.wallNow());
    const isWeek = new Set(columns().map(({ dataset }) => dataset.day)).size > 1;
    for (const line of section.querySelectorAll(".now")) line.remove();
    for (const column of columns()) {
      const isToday = Number(column.dataset.day) === today;
      column.classList.toggle("today", isToday && isWeek);
      if (isToday) column.append(makeLine(today));
    }
    for (const [box, one] of boxes) box.classList.toggle("passed", one.endEpoch <= clock.now());
  }

  function makeLine(today) {
    const line = element("div", "now");
    line.style.setProperty("--top", (clock.wallNow() - today) / DAY);
    line.ariaHidden = "true";
    return line;
  }

  // What was not shown before begins near now, or near its first box; a list, at today.
  function scroll(key, isWhole) {
    const lines = section.querySelectorAll(".now");
    const goals = lines.length ? [...lines] : [...boxes.keys()];
    if (scrolledTo === key || !goals.length) return;
    if (isWhole && boxes.size) scrolledTo = key;
    const goal = Math.min(...goals.map((one) => one.offsetTop));
    section.scrollTop = goal - section.clientHeight / 8;
    if (section.clientHeight === section.scrollHeight) {
      section.querySelector(".today")?.scrollIntoView();
    }
  }

  /**
   * Shows columns: each has a title, the day and the tuner, and its boxes. More boxes follow if
   * they are not whole.
   */
  function show(title, shown, ownClock, isWhole) {
    clock = ownClock;
    boxes = new Map();
    heading.textContent = title;
    section.style.setProperty("--columns", shown.length);
    section.replaceChildren(hours, ...shown.map(makeColumn));
    tick();
    scroll(`${shown[0].day} ${shown.length}`, isWhole);
  }

  return { show, tick };
}
