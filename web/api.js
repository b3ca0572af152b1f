// Knows the API: how its methods are called and what their error codes mean. It needs nothing else
// of the page, so another client can use it as it is.

// What each code means and what to do. A sentence for one method goes before that for all.
const SENTENCES = {
  lost: "The appliance does not answer. Check that it is on and reachable, then try again.",
  refused: "The web server refused the request. Log in again, or ask an administrator.",
  garbled: "The answer is not one of this API. Try again; the system log may tell more.",
  100: "A file, the tuner daemon or the user look-up failed. Try later; the system log tells more.",
  101: "A value is missing, malformed, or contradicts another one. Correct it and try again.",
  105: "Your account lacks the privilege for TV recordings. An administrator can grant it.",
  106: "You are not logged in. Log in and try again.",
  107: "Your account is locked. Only an administrator can help.",
  401: "A schedule of that channel and start is stored already. Leave it, or choose another start.",
  402: "No schedule of that channel and start is stored any more. See what is stored now.",
  403: "The schedule store cannot be read or written. Try again later; it is left as it was.",
  405: "The new times overlap another recording, so nothing is changed. Choose other times.",
  406: "There is no folder for TV recordings. Have one set up on the appliance, then try again.",
  "create 100": "Nothing is stored, for lack of a user id; or the daemon did not reload.",
  "delete 100": "The daemon did not stop or did not reload. A named schedule is deleted anyway.",
  "create_repeat 100": "Nothing is stored, for lack of a user id; or the daemon did not reload.",
  "getinfo_repeat 100": "The repeat store cannot be read. Only first days are shown; try later.",
  "edit_repeat 100": "The change is stored, but the daemon did not reload. See what is stored now.",
  "delete_repeat 100": "The repeat store cannot be read or written. No repeat schedule is deleted.",
  "edit_userdefine 401": "It is stored already; the old one is put back. Choose another start.",
  "edit_userdefine 402": "The new schedule is stored. The old one was no longer there to replace.",
  "edit_userdefine 403": "The schedule store cannot be written. See what is stored now.",
  "delete_userdefine 100": "A repeat schedule stayed, or the daemon did not stop or reload.",
};

/** A failed request. `code` is the API's; without an answer, "lost", "refused" or "garbled". */
export class ApiError extends Error {
  constructor(method, code) {
    const sentence = SENTENCES[`${method} ${code}`] ?? SENTENCES[code];
    super(sentence ?? `The appliance answered an unknown error, ${code}.`);
    Object.assign(this, { name: "ApiError", code });
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
