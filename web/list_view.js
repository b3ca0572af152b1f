// Shows the list of a tuner's schedules, one page at a time, in the order of the server.
import { PAGE } from "./schedules.js";
import { TEXT } from "./text.js";
import { lengthText, planOf } from "./week.js";
import { describe, element, marksOf, nameOf, rhythmOf, statusOf, whenOf } from "./words.js";

/**
 * The view in a section. `open` receives the plan of a clicked row, and `turn` the start of the
 * page to turn to.
 */
export function makeListView(section, open, turn) {
  const list = section.querySelector("ol");
  const [earlier, later] = section.querySelectorAll(".pages button");
  let page = { start: 0, schedules: [] };
  earlier.addEventListener("click", () => turn(page.start - PAGE));
  later.addEventListener("click", () => turn(page.start + PAGE));

  function makeRow(schedule, plan, now, checked) {
    const choice = element("input", "");
    Object.assign(choice, { type: "checkbox", ariaLabel: TEXT.choose(nameOf(schedule)), checked });
    const row = describe("row", schedule, marksOf(schedule), whenOf(plan));
    const facts = [lengthText(plan.length), statusOf(plan, now), rhythmOf(plan)].filter(Boolean);
    row.append(" ", element("span", "facts", facts.join(" · ")));
    row.addEventListener("click", () => open(plan));
    choice.dataset.key = `choice ${schedule.primeid}`;
    row.dataset.key = `row ${schedule.primeid}`;
    return element("li", "", choice, row);
  }

  function show(newPage, count, plans, now) {
    const kept = new Set(chosen().map(({ primeid }) => primeid));
    const known = new Map(plans.map((plan) => [plan.schedule.primeid, plan]));
    page = newPage;
    list.replaceChildren(...page.schedules.map((one) =>
      makeRow(one, known.get(one.primeid) ?? planOf(one), now, kept.has(one.primeid))));
    const last = page.start + page.schedules.length;
    section.querySelector("output").textContent = count
      ? TEXT.range(page.start + 1, last, count) : plans.length ? TEXT.noMatch : TEXT.empty;
    earlier.disabled = page.start === 0;
    later.disabled = last >= count;
  }

  /** The schedules whose boxes are ticked. */
  function chosen() {
    const choices = list.querySelectorAll("input");
    return page.schedules.filter((_, index) => choices[index].checked);
  }

  return { show, chosen };
}
