// Shows the list of a tuner's schedules, one page at a time, in the order of the server.
import { TEXT } from "./text.js";
import { lengthText } from "./week.js";
import { describe, element, marksOf, nameOf, rhythmOf, statusOf, whenOf } from "./words.js";

const PAGE = 50;

/**
 * The view in a section. `open` receives the plan of a clicked row, and `turn` the start of the
 * page to turn to. Its button `remove` tells how many schedules are ticked.
 */
export function makeListView(section, remove, open, turn) {
  const list = section.querySelector("ol");
  const [earlier, later] = section.querySelectorAll(".pages button");
  const ticked = new Set(); // keys of schedules, also of those that a filter or a page hides
  let first = 0;
  let plans = []; // of the tuner
  earlier.addEventListener("click", () => turn(first - PAGE));
  later.addEventListener("click", () => turn(first + PAGE));

  const keyOf = ({ tuner, primeid }) => `${tuner} ${primeid}`;
  /** The ticked schedules of the tuner. */
  const chosen = () =>
    plans.map(({ schedule }) => schedule).filter((one) => ticked.has(keyOf(one)));
  const count = () => { remove.textContent = TEXT.deleteChosen(chosen().length); };

  function tick(schedule, isTicked) {
    ticked[isTicked ? "add" : "delete"](keyOf(schedule));
    count();
  }

  function makeRow(plan, clock) {
    const { schedule } = plan;
    const choice = element("input", "");
    const ariaLabel = TEXT.choose(nameOf(schedule));
    const checked = ticked.has(keyOf(schedule));
    Object.assign(choice, { type: "checkbox", ariaLabel, checked });
    const row = describe("row", schedule, marksOf(schedule), whenOf(plan));
    const facts = [lengthText(plan.length), statusOf(plan, clock), rhythmOf(plan)].filter(Boolean);
    row.append(" ", element("span", "facts", facts.join(" · ")));
    row.addEventListener("click", () => open(plan));
    choice.addEventListener("change", () => tick(schedule, choice.checked));
    choice.dataset.key = `choice ${schedule.primeid}`;
    row.dataset.key = `row ${schedule.primeid}`;
    return element("li", "", choice, row);
  }

  /**
   * Shows a page of those of a tuner's plans that a filter has found, or what is to be said
   * without any.
   */
  function show(all, found, start, clock, none) {
    const shown = found.slice(start, start + PAGE);
    [first, plans] = [start, all];
    list.replaceChildren(...shown.map((plan) => makeRow(plan, clock)));
    const last = start + shown.length;
    section.querySelector("output").textContent =
      shown.length ? TEXT.range(start + 1, last, found.length) : none;
    earlier.disabled = start === 0;
    later.disabled = last >= found.length;
    count();
  }

  return { show, chosen, untick: (schedules) => schedules.forEach((one) => tick(one, false)) };
}
