// The week as seven columns of boxes; the style sheet makes a list of days of it on a narrow screen.
import { DAY, boxesOfWeek, dayOf, occurrencesOfWeek } from "./week.js";
import { dayName, describe, element, marksOf, spanOf, weekName } from "./words.js";

const SHORT = 1800; // seconds; a shorter box has room for one line

/** The view in a section; `open` is called with the plan of a chosen box. */
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
    const box = describe(["box", ...marks].join(" "), spanOf(begin, end), plan.schedule, marks);
    const place = { top: top / DAY, height: (bottom - top) / DAY, left: column / columns, width: 1 / columns };
    for (const [name, value] of Object.entries(place)) box.style.setProperty(`--${name}`, value);
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
    const list = items.length ? element("ol", "", ...items) : element("p", "none", "Nothing");
    const column = element("section", "day", title, list);
    column.setAttribute("aria-labelledby", title.id);
    column.dataset.day = day;
    return column;
  }

  /** Moves the line of now, and makes faint what has passed. */
  function tick() {
    if (!clock) return;
    const today = dayOf(clock.wallNow());
    line.remove();
    line.style.setProperty("--top", (clock.wallNow() - today) / DAY);
    section.querySelectorAll(".day").forEach((day) => day.classList.toggle("today", Number(day.dataset.day) === today));
    section.querySelector(".today")?.append(line);
    for (const [box, occurrence] of boxes) box.classList.toggle("passed", occurrence.endEpoch <= clock.now());
  }

  // A week that was not shown before begins at its first box, today's at now.
  function scroll(week) {
    if (scrolledTo === week || !boxes.length) return;
    scrolledTo = week;
    const goal = line.isConnected ? line.offsetTop : Math.min(...boxes.map(([box]) => box.offsetTop));
    section.scrollTop = goal - section.clientHeight / 4;
  }

  function show(plans, week, ownClock) {
    clock = ownClock;
    boxes = [];
    heading.textContent = weekName(week, week + 6 * DAY);
    section.replaceChildren(hours, ...boxesOfWeek(occurrencesOfWeek(plans, week, clock), week).map(makeDay));
    tick();
    scroll(week);
  }

  return { show, tick };
}
