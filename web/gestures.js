// Recordings are drawn in the week with the mouse, and some are moved and lengthened there.
import { DAY, STEP, dayOf, drawn, movedBy, timeText } from "./week.js";
import { element } from "./words.js";

const JITTER = 4; // pixels by which the mouse may move in a click
const EDGE = 7; // pixels at the foot of a box that lengthen it

/**
 * Lets a section of time columns follow the mouse. `occurrenceOf(box)` answers what a box stands
 * for, `isMovable(plan)` whether it follows. In the end `actions.openNew(values)` or
 * `actions.openChanged(plan, values)` is called. Escape, or a release outside of the section, ends
 * a gesture without a call.
 */
export function addGestures(section, occurrenceOf, isMovable, actions) {
  const ghost = element("div", "ghost");
  let gesture = null;
  let isClickDone = false; // the click that the browser makes of a gesture

  const columns = () => [...section.querySelectorAll(".day")];
  const isInside = ({ clientX, clientY }) =>
    section.contains(document.elementFromPoint(clientX, clientY));

  // The tuner and the wall time under the mouse, or beside it in a given column.
  function placeAt({ clientX, clientY }, column = null) {
    const under = column
      ?? columns().findLast((one) => one.getBoundingClientRect().left <= clientX) ?? columns()[0];
    const { top, height } = under.querySelector(".times").getBoundingClientRect();
    const part = Math.min(Math.max((clientY - top) / height, 0), 1);
    return { tuner: Number(under.dataset.tuner), wall: Number(under.dataset.day) + part * DAY };
  }

  // A gesture is where it begins, what it wants under the mouse, and what is done with that.
  function gestureAt(event) {
    const column = event.target.closest(".day");
    const { tuner, wall } = placeAt(event, column);
    const wallIn = (other) => placeAt(other, column).wall;
    const box = event.target.closest(".box");
    if (!box) {
      const want = (other) => ({ tuner, ...drawn(wall, wallIn(other)) });
      return { from: event, want, open: actions.openNew };
    }
    const { plan, begin, end } = occurrenceOf(box);
    if (!isMovable(plan)) return { from: event, isRefused: true };
    const lengthen = (by) =>
      ({ tuner, start: begin, duration: Math.max(movedBy(end, by) - begin, STEP) });
    const move = (to) =>
      ({ tuner: to.tuner, start: movedBy(begin, to.wall - wall), duration: plan.length });
    const isAtEdge =
      box.querySelector(".edge") && box.getBoundingClientRect().bottom - event.clientY <= EDGE;
    return {
      from: event,
      want: (other) => (isAtEdge ? lengthen(wallIn(other) - wall) : move(placeAt(other))),
      open: (values) => actions.openChanged(plan, values),
      isSame: (values) =>
        values.tuner === tuner && values.start === begin && values.duration === plan.length,
    };
  }

  function show({ tuner, start, duration }) {
    const day = dayOf(start);
    const isColumn = ({ dataset }) =>
      Number(dataset.day) === day && Number(dataset.tuner) === tuner;
    ghost.textContent = `${timeText(start)}–${timeText(start + duration)}`;
    ghost.style.setProperty("--top", (start - day) / DAY);
    ghost.style.setProperty("--height", Math.min(duration / DAY, 1 - (start - day) / DAY));
    columns().find(isColumn)?.append(ghost);
  }

  function end() {
    gesture = null;
    ghost.remove();
    section.classList.remove("refuses");
  }

  function follow(event) {
    const { from, isRefused, want } = gesture;
    const way = Math.hypot(event.clientX - from.clientX, event.clientY - from.clientY);
    if (!isRefused && isInside(event)) show(want(event));
    else ghost.remove();
    if (!isRefused || way < JITTER) return;
    section.classList.add("refuses");
    isClickDone = true; // otherwise a drag within one box would open it
  }

  section.addEventListener("pointerdown", (event) => {
    isClickDone = false;
    const isGrid = getComputedStyle(section).display === "grid"; // otherwise it is a list
    const isMouse = event.pointerType !== "touch" && event.button === 0;
    if (isGrid && isMouse && event.target.closest(".times")) gesture = gestureAt(event);
  });
  addEventListener("pointermove", (event) => { if (gesture) follow(event); });
  addEventListener("pointerup", (event) => {
    const { want, open, isSame } = gesture ?? {};
    end();
    if (!want || isInside(event) && isSame?.(want(event))) return;
    isClickDone = true;
    if (isInside(event)) open(want(event));
  });
  addEventListener("pointercancel", end);
  addEventListener("keydown", ({ key }) => {
    if (key !== "Escape" || !gesture) return;
    isClickDone = true;
    end();
  });
  section.addEventListener("click", (event) => { // the keyboard's clicks have no detail
    if (isClickDone && event.detail) event.stopPropagation();
  }, true);
}
