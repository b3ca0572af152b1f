// The texts of the page in the user's language, and the elements of index.html that show them.
import de from "./text_de.js";
import en from "./text_en.js";

const CATALOGUES = { en, de };
const DEFAULT_LOCALES = { en: "en-GB", de: "de-DE" }; // for the dates

/**
 * The locale of the page: `?lang=` decides, otherwise the first of the browser's languages that has
 * a catalogue. Of a language, the browser's own variant is taken.
 */
export function localeOf(search, languages) {
  const base = (tag) => tag.slice(0, 2).toLowerCase();
  const wanted = [new URLSearchParams(search).get("lang") ?? "", ...languages].map(base);
  const language = wanted.find((one) => Object.hasOwn(CATALOGUES, one)) ?? "en";
  return languages.find((tag) => base(tag) === language) ?? DEFAULT_LOCALES[language];
}

export const LOCALE = localeOf(globalThis.location?.search, globalThis.navigator?.languages ?? []);
export const TEXT = CATALOGUES[LOCALE.slice(0, 2).toLowerCase()];

// The attributes that name a text, and the property that shows it.
const PLACES = { text: "textContent", label: "ariaLabel", hint: "title", example: "placeholder" };

/** Puts the texts into the elements that name one. */
export function translate(page) {
  page.documentElement.lang = LOCALE;
  for (const [place, property] of Object.entries(PLACES)) {
    for (const one of page.querySelectorAll(`[data-${place}]`)) {
      one[property] = TEXT[one.dataset[place]];
    }
  }
}

/** Why something failed and what to do. A sentence for one method goes before that for all. */
export function explain({ method, code, message }) {
  if (code === undefined) return message;
  const { errors } = TEXT;
  return errors[`${method} ${code}`] ?? errors[code] ?? errors.unknown(code);
}
