// Knows the API: how its methods are called and what their error codes mean. It needs nothing else of the page.

// What a code means and what to do, by method where a method has its own sentence, else for all.
const SENTENCES = {
  all: {
    lost: "The appliance does not answer. Check that it is on and that you have a network, then try again.",
    refused: "The web server refused the request. Log in again, or ask an administrator.",
    garbled: "The answer is not one of this API. Try again; if it stays, look into the appliance's system log.",
    100: "A file, the tuner daemon or the user look-up failed. Try later; the appliance's system log tells more.",
    101: "A value is missing, not of its form, or contradicts another one. Correct it and save again.",
    105: "Your account lacks the privilege for TV recordings. An administrator can grant it.",
    106: "You are not logged in. Log in and try again.",
    107: "Your account is locked. Only an administrator can help.",
    401: "A schedule of that channel and start is stored already. Leave it so, or choose another start.",
    402: "No schedule of that channel and start is stored any more. The page shows what there is now.",
    403: "The schedule store cannot be read or written. Try later; it is left as it was.",
    405: "The new times overlap another recording, so nothing was changed. Choose other times.",
    406: "There is no folder for TV recordings. Have one set up on the appliance, then save again.",
  },
  create: { 100: "Either your account has no number and nothing is stored, or the daemon did not reload." },
  create_repeat: { 100: "Either your account has no number and nothing is stored, or the daemon did not reload." },
  delete: { 100: "The tuner daemon did not stop or did not reload. The schedule is deleted all the same." },
  edit_repeat: { 100: "The change is stored, but the tuner daemon did not reload. It will with the next change." },
  getinfo_repeat: { 100: "The repeat schedules cannot be read, so only their first days are shown. Try later." },
  edit_userdefine: {
    401: "A schedule of that channel and start is stored already, so the old one is put back. Choose another start.",
    402: "The new schedule is stored; the old one was no longer there to delete.",
    403: "The schedule store cannot be written, so the old schedule is put back. Try later.",
  },
  delete_userdefine: { 100: "A repeat schedule stayed, or the tuner daemon did not stop or reload. Try later." },
};

/** A request that failed: `code` is the API's, or "lost", "refused" or "garbled" if it gave no answer. */
export class ApiError extends Error {
  constructor(method, code) {
    super(SENTENCES[method]?.[code] ?? SENTENCES.all[code] ?? `The appliance answered an unknown error, ${code}.`);
    Object.assign(this, { name: "ApiError", method, code });
  }
}

const READING = ["list", "getinfo_repeat", "getinfo_userdefine"]; // the other nine are sent as forms
const LONGEST_WAIT = 60_000; // milliseconds; a change may wait ten seconds for another one

/**
 * One endpoint. `call` takes a method and the parameters of docs/api.md, and answers `data` or throws an ApiError.
 * `now` answers the form of a new user-defined schedule, whose start is now, and the epoch of that now. `onBusy` is
 * told how many requests are under way.
 */
export function connect(address, { fetch = globalThis.fetch.bind(globalThis), onBusy = () => {} } = {}) {
  let pending = 0;
  let date = null; // of the last answer

  async function ask(method, parameters) {
    const signal = AbortSignal.timeout(LONGEST_WAIT);
    const request = READING.includes(method)
      ? fetch(`${address}?${parameters}`, { signal })
      : fetch(address, { signal, method: "POST", body: parameters });
    const response = await request.catch(() => { throw new ApiError(method, "lost"); });
    if (response.status >= 500) throw new ApiError(method, "lost");
    if (!response.ok) throw new ApiError(method, "refused");
    date = response.headers.get("Date");
    return response.json().catch(() => { throw new ApiError(method, "garbled"); });
  }

  async function call(method, parameters) {
    onBusy(++pending);
    const answer = await ask(method, new URLSearchParams({ method, ...parameters })).finally(() => onBusy(--pending));
    if (answer.error) throw new ApiError(method, answer.error.code);
    if (answer.success !== true) throw new ApiError(method, "garbled");
    return answer.data;
  }

  async function now(tuner) {
    const form = await call("getinfo_userdefine", { tuner });
    return { form, epoch: Math.floor((Date.parse(date) || Date.now()) / 1000) };
  }

  return { call, now };
}
