// Shows the list of a tuner's schedules, one page at a time, in the order of the server.
import { TEXT } from "./text.js";
import { lengthText } from "./week.js";
import { describe, element, marksOf, nameOf, rhythmOf, statusOf, whenOf } from "./words.js";

const PAGE = 50;

/**
 * The view in a section. `open` receives the plan of a clicked row, and `turn` the start of the
 * page to turn to.
 */
export function makeListView(section, open, turn) {
  const list = section.querySelector("ol");
  const [earlier, later] = section.querySelectorAll(".pages button");
  let first = 0;
  let page = []; // the schedules that are shown
  earlier.addEventListener("click", () => turn(first - PAGE));
  later.addEventListener("click", () => turn(first + PAGE));

  function makeRow(plan, now, checked) {
    const { schedule } = plan;
    const choice = element("input", "");
    const ariaLabel = TEXT.choose(nameOf(schedule));
    Object.assign(choice, { type: "checkbox", ariaLabel, checked });
    const row = describe("row", schedule, marksOf(schedule), whenOf(plan));
    const facts = [lengthText(plan.length), statusOf(plan, now), rhythmOf(plan)].filter(Boolean);
    row.append(" ", element("span", "facts", facts.join(" · ")));
    row.addEventListener("click", () => open(plan));
    choice.dataset.key = `choice ${schedule.primeid}`;
    row.dataset.key = `row ${schedule.primeid}`;
    return element("li", "", choice, row);
  }

  /** Shows a page of some plans, or what is to be said without any. */
  function show(plans, start, now, none) {
    const kept = new Set(chosen().map(({ primeid }) => primeid));
    const shown = plans.slice(start, start + PAGE);
    first = start;
    page = shown.map(({ schedule }) => schedule);
    list.replaceChildren(...shown.map((plan) =>
      makeRow(plan, now, kept.has(plan.schedule.primeid))));
    const last = start + shown.length;
    section.querySelector("output").textContent =
      shown.length ? TEXT.range(start + 1, last, plans.length) : none;
    earlier.disabled = start === 0;
    later.disabled = last >= plans.length;
  }

  /** The schedules whose boxes are ticked. */
  function chosen() {
    const choices = list.querySelectorAll("input");
    return page.filter((_, index) => choices[index].checked);
  }

  return { show, chosen };
}
