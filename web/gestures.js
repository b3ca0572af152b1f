// Recordings are drawn in the week with the mouse, and some are moved and lengthened there.
import { DAY, STEP, dayOf, drawn, movedBy, timeText } from "./week.js";
import { element } from "./words.js";

/**
 * Lets a section of time columns follow the mouse. `occurrenceOf(box)` answers what a box stands
 * for, `isMovable(plan)` whether it follows. In the end `actions.openNew(values)` or
 * `actions.openChanged(plan, values)` is called. Escape ends a gesture without a call.
 */
export function addGestures(section, occurrenceOf, isMovable, actions) {
  const ghost = element("div", "ghost");
  let gesture = null;
  let isClickDone = false; // the click that the browser makes of a gesture

  const columns = () => [...section.querySelectorAll(".day")];
  const columnOf = (day, tuner) => columns().find(({ dataset }) =>
    Number(dataset.day) === day && dataset.tuner === tuner);

  function wallAt({ clientX, clientY }, column = null) {
    const under = column
      ?? columns().findLast((one) => one.getBoundingClientRect().left <= clientX) ?? columns()[0];
    const { top, height } = under.querySelector(".times").getBoundingClientRect();
    const part = Math.min(Math.max((clientY - top) / height, 0), 1);
    return Number(under.dataset.day) + part * DAY;
  }

  // A gesture is what it wants at a wall time under the mouse, and what is done with that.
  function gestureAt(event) {
    const column = event.target.closest(".day");
    const { tuner } = column.dataset;
    const inColumn = (other) => wallAt(other, column);
    const from = inColumn(event);
    const box = event.target.closest(".box");
    if (!box) {
      const open = (values) => actions.openNew({ tuner: Number(tuner), ...values });
      return { tuner, open, want: (other) => drawn(from, inColumn(other)) };
    }
    const { plan, begin, end } = occurrenceOf(box);
    if (!isMovable(plan)) return { isRefused: true };
    const open = (values) => actions.openChanged(plan, values);
    const isSame = ({ start, duration }) => start === begin && duration === plan.length;
    const lengthen = (by) =>
      ({ start: begin, duration: Math.max(movedBy(end, by) - begin, STEP) });
    const want = event.target.matches(".edge") ? (other) => lengthen(inColumn(other) - from)
      : (other) => ({ start: movedBy(begin, wallAt(other) - from), duration: plan.length });
    return { tuner, open, want, isSame };
  }

  function show({ start, duration }) {
    const day = dayOf(start);
    ghost.textContent = `${timeText(start)}–${timeText(start + duration)}`;
    ghost.style.setProperty("--top", (start - day) / DAY);
    ghost.style.setProperty("--height", Math.min(duration / DAY, 1 - (start - day) / DAY));
    columnOf(day, gesture.tuner)?.append(ghost);
  }

  function end() {
    gesture = null;
    ghost.remove();
    section.classList.remove("refuses");
  }

  section.addEventListener("pointerdown", (event) => {
    isClickDone = false;
    const isGrid = getComputedStyle(section).display === "grid"; // otherwise it is a list
    const isMouse = event.pointerType !== "touch" && event.button === 0;
    if (isGrid && isMouse && event.target.closest(".times")) gesture = gestureAt(event);
  });
  addEventListener("pointermove", (event) => {
    if (gesture?.isRefused) section.classList.add("refuses");
    else if (gesture) show(gesture.want(event));
  });
  addEventListener("pointerup", (event) => {
    const { want, open, isSame } = gesture ?? {};
    end();
    if (!want || isSame?.(want(event))) return;
    isClickDone = true;
    open(want(event));
  });
  addEventListener("pointercancel", end);
  addEventListener("keydown", ({ key }) => {
    if (key !== "Escape" || !gesture) return;
    isClickDone = true;
    end();
  });
  section.addEventListener("click", (event) => { if (isClickDone) event.stopPropagation(); }, true);
}
