// Shows a week as seven columns of boxes. On a narrow screen the style sheet makes it a day list.
import { TEXT } from "./text.js";
import { DAY, boxesOfWeek, dayOf, occurrencesOfWeek, timeText } from "./week.js";
import { dayName, describe, element, marksOf, weekName } from "./words.js";

const SHORT = 1800; // seconds; a shorter box has room for one line

/** The view in a section. `open` receives the plan of a clicked box. */
export function makeWeekView(section, heading, open) {
  const hours = element("div", "hours");
  for (let hour = 0; hour < 24; hour++) hours.append(element("span", "", `${hour}:00`));
  const line = element("div", "now");
  hours.ariaHidden = line.ariaHidden = "true";
  let clock = null;
  let boxes = []; // [element, occurrence]
  let scrolledTo = null;

  function makeBox({ occurrence, top, bottom, column, columns, continued }) {
    const { plan, begin, end, collides } = occurrence;
    const marks = marksOf(plan.schedule, { collides, continued });
    const until = element("span", "until", `–${timeText(end)}`);
    const box = describe("box", plan.schedule, marks, timeText(begin), until);
    box.style.setProperty("--top", top / DAY);
    box.style.setProperty("--height", (bottom - top) / DAY);
    box.style.setProperty("--left", column / columns);
    box.style.setProperty("--width", 1 / columns);
    box.classList.toggle("short", bottom - top < SHORT);
    box.title = box.textContent;
    box.dataset.key = `box ${plan.schedule.primeid} ${begin} ${continued}`;
    box.addEventListener("click", () => open(plan));
    boxes.push([box, occurrence]);
    return box;
  }

  function makeDay({ day, boxes: own }) {
    const title = element("h3", "", dayName(day));
    title.id = `day-${day}`;
    const items = own.map((box) => element("li", "", makeBox(box)));
    const list = items.length ? element("ol", "", ...items) : element("p", "none", TEXT.nothing);
    const column = element("section", "day", title, list);
    column.setAttribute("aria-labelledby", title.id);
    column.dataset.day = day;
    return column;
  }

  /** Moves the line of now, and fades what has passed. */
  function tick() {
    if (!clock) return;
    const today = dayOf(clock.wallNow());
    line.remove();
    line.style.setProperty("--top", (clock.wallNow() - today) / DAY);
    for (const day of section.querySelectorAll(".day")) {
      day.classList.toggle("today", Number(day.dataset.day) === today);
    }
    section.querySelector(".today")?.append(line);
    for (const [box, one] of boxes) box.classList.toggle("passed", one.endEpoch <= clock.now());
  }

  // A week that was not shown before begins near now, or near its first box.
  function scroll(week) {
    const goals = line.isConnected ? [line] : boxes.map(([box]) => box);
    if (scrolledTo === week || !goals.length) return;
    scrolledTo = week;
    const goal = Math.min(...goals.map((one) => one.offsetTop));
    section.scrollTop = goal - section.clientHeight / 4;
  }

  function show(plans, week, ownClock) {
    clock = ownClock;
    boxes = [];
    heading.textContent = weekName(week, week + 6 * DAY);
    const days = boxesOfWeek(occurrencesOfWeek(plans, week, clock), week);
    section.replaceChildren(hours, ...days.map(makeDay));
    tick();
    scroll(week);
  }

  return { show, tick };
}
