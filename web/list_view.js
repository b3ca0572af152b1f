// The list of a tuner's schedules, a page at a time, in the order of the server.
import { PAGE } from "./schedules.js";
import { lengthText, planOf } from "./week.js";
import { describe, element, marksOf, nameOf, rhythmOf, statusOf, whenOf } from "./words.js";

/** The view in a section; `open` is called with the plan of a chosen row, `turn` with the start of a wanted page. */
export function makeListView(section, { open, turn }) {
  const [list, range] = [section.querySelector("ol"), section.querySelector("output")];
  const [earlier, later] = [section.querySelector(".earlier"), section.querySelector(".later")];
  let page = { start: 0, schedules: [] };
  earlier.addEventListener("click", () => turn(page.start - PAGE));
  later.addEventListener("click", () => turn(page.start + PAGE));

  function makeRow(schedule, plan, now, checked) {
    const choice = element("input", "");
    Object.assign(choice, { type: "checkbox", ariaLabel: `Choose ${nameOf(schedule)}`, checked });
    const row = describe("row", whenOf(plan), schedule, marksOf(schedule));
    const facts = [lengthText(plan.length), statusOf(plan, now), rhythmOf(plan)].filter(Boolean);
    row.append(" ", element("span", "facts", facts.join(" · ")));
    row.addEventListener("click", () => open(plan));
    for (const [one, name] of [[choice, "choice"], [row, "row"]]) one.dataset.key = `${name} ${schedule.primeid}`;
    return element("li", "", choice, row);
  }

  function show(newPage, plans, now) {
    const kept = chosen();
    page = newPage;
    const last = page.start + page.schedules.length;
    const known = new Map(plans.map((plan) => [plan.schedule.primeid, plan]));
    const isKept = ({ primeid }) => kept.some((schedule) => schedule.primeid === primeid);
    const planFor = (schedule) => known.get(schedule.primeid) ?? planOf(schedule);
    list.replaceChildren(...page.schedules.map((one) => makeRow(one, planFor(one), now, isKept(one))));
    range.textContent = plans.length ? `${page.start + 1} to ${last} of ${plans.length}` : "No schedules on this tuner";
    earlier.disabled = page.start === 0;
    later.disabled = last >= plans.length;
  }

  /** The schedules whose boxes are ticked. */
  function chosen() {
    const choices = list.querySelectorAll("input");
    return page.schedules.filter((_, index) => choices[index].checked);
  }

  return { show, chosen };
}
