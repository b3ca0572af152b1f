// Knows the API: how its methods are called and how they fail. It needs nothing else of the page,
// so another client can use it as it is.

/**
 * A failed request. `code` is the API's; without an answer, "lost", "refused" or "garbled". A
 * client may find a schedule "gone" before a change or "missing" after it.
 */
export class ApiError extends Error {
  constructor(method, code) {
    super(`${method} failed: ${code}`);
    Object.assign(this, { name: "ApiError", method, code });
  }
}

const READING = ["list", "getinfo_repeat", "getinfo_userdefine"]; // the others are sent as forms
const LONGEST_WAIT = 60_000; // milliseconds; a change may wait ten seconds for another one

/**
 * Connects to one endpoint. `call` takes a method and its parameters, and returns `data` or throws
 * an ApiError. `now` returns the form of a new user-defined schedule, which starts now, with the
 * epoch of that now. `onBusy` receives the number of pending requests whenever it changes.
 */
export function connect(address, options = {}) {
  const { fetch = globalThis.fetch.bind(globalThis), onBusy = () => {} } = options;
  let pending = 0;
  let date = null; // of the last answer

  async function ask(method, parameters) {
    const fail = (code) => { throw new ApiError(method, code); };
    const form = new URLSearchParams({ method, ...parameters });
    const signal = AbortSignal.timeout(LONGEST_WAIT);
    const request = READING.includes(method)
      ? fetch(`${address}?${form}`, { signal })
      : fetch(address, { signal, method: "POST", body: form });
    const response = await request.catch(() => fail("lost"));
    if (!response.ok) fail(response.status < 500 ? "refused" : "lost");
    date = response.headers.get("Date");
    const isText = ({ name }) => name === "SyntaxError"; // otherwise the connection broke
    const answer = await response.json().catch((error) => fail(isText(error) ? "garbled" : "lost"));
    if (answer?.error) fail(answer.error.code);
    return answer?.success === true ? answer.data : fail("garbled");
  }

  function call(method, parameters) {
    onBusy(++pending);
    return ask(method, parameters).finally(() => onBusy(--pending));
  }

  async function now(tuner) {
    const form = await call("getinfo_userdefine", { tuner });
    return { form, epoch: Math.floor((Date.parse(date) || Date.now()) / 1000) };
  }

  return { call, now };
}
