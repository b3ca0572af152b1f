// The German texts of the page. A text with parameters is a function.
export default {
  page: "Geplante Aufnahmen",
  tuner: "Tuner",
  otherTuner: "Nummer eines anderen Tuners",
  otherTunerShort: "andere",
  allTuners: "Alle Tuner",
  tunerOf: (tuner) => `Tuner ${tuner}`,
  create: "Neue Aufnahme",
  reload: "Neu laden",
  stop: "Tuner stoppen",
  stopping: {
    text: (tuner) => `Laufende Aufnahme von Tuner ${tuner} stoppen? Sie bleibt im Plan stehen.`,
    verb: "Stoppen",
    done: (tuner) => `Tuner ${tuner} wurde angewiesen, die Aufnahme zu stoppen.`,
  },
  waiting: "Warten auf das Gerät …",
  retry: "Erneut versuchen",
  dismiss: "Schließen",
  cancel: "Abbrechen",
  undo: "Rückgängig",
  undone: "Wiederhergestellt.",

  days: "Aufnahmen nach Uhrzeit",
  earlier: "Zurück",
  today: "Heute",
  later: "Weiter",
  nothing: "Nichts geplant",
  unmovable: "Lässt sich nicht ziehen. Zum Ändern anklicken.",

  listOf: (tuner) => `Plan von Tuner ${tuner}`,
  filter: "Titel, Sender",
  filterHint: "Nur Aufnahmen mit diesen Wörtern in Titel oder Sender zeigen",
  noMatch: "Nichts mit diesen Wörtern gefunden",
  deleteChosen: (count) => (count ? `Auswahl löschen (${count})` : "Auswahl löschen"),
  clear: "Alte entfernen",
  clearing: {
    text: (tuner) => `Alle vergangenen Aufnahmen von Tuner ${tuner} aus dem Plan entfernen? ` +
      "Wiederholungen bleiben.",
    verb: "Entfernen",
    done: (tuner) => `Die vergangenen Aufnahmen von Tuner ${tuner} sind aus dem Plan entfernt.`,
  },
  previousPage: "Vorige Seite",
  nextPage: "Nächste Seite",
  choose: (name) => `${name} auswählen`,
  range: (first, last, all) => `${first} bis ${last} von ${all}`,
  empty: "Auf diesem Tuner ist nichts geplant",

  channelOf: (id) => `Sender ${id}`,
  noTime: "ohne gültige Zeit",
  status: { 0: "Status unbekannt", 1: "Geplant", 12: "Wiederholt sich" },
  otherStatus: (status) => `Gerätestatus ${status}`,
  passed: "Vorbei",
  ended: "Beendet",
  onNow: "Läuft gerade",
  everyDay: "täglich",
  oneWeek: (days) => `${days}, nur eine Woche lang`,
  until: (days, last) => `${days}, bis ${last}`,
  marks: {
    collides: "überschneidet sich",
    continued: "Fortsetzung vom Vortag",
    repeats: "wiederholt sich",
    "user-defined": "mit eigenem Titel",
  },
  passedOnPaper: "gestrichelt: vorbei",

  saved: (name) => `Gespeichert: ${name}.`,
  savedElsewhere: (name, when) => `Gespeichert: ${name}, ${when}. ` +
    "Die gewünschte Zeit gibt es an diesem Tag wegen der Zeitumstellung nicht.",
  chooseFirst: "Wählen Sie zuerst Aufnahmen in der Liste aus.",
  several: (count) => `${count} Aufnahmen`,
  remove: (what) => `${what} löschen?`,
  removeAll: (what) => `${what} löschen, samt allen Wiederholungen?`,
  losesTitle: "„Rückgängig“ stellt Titel und Länge, die vom Gerät kommen, nicht wieder her.",
  delete: "Löschen",
  deleted: (what) => `Gelöscht: ${what}.`,

  new: "Neue Aufnahme",
  change: (name) => `${name} ändern`,
  title: "Titel",
  channel: "Sender",
  other: "Anderer …",
  otherChannel: "Anderer Sender",
  number: "Nummer",
  numberHint: "Die Programmnummer (Service-ID) oder Programmnummer@Frequenz",
  name: "Name",
  date: "Datum",
  start: "Beginn",
  length: "Länge (hh:mm)",
  lengthHint: "Stunden und Minuten mit je zwei Ziffern, mehr als 00:00",
  repeatIt: "Wiederholen",
  weekdays: "Tage",
  weekly: "Jede Woche, nicht nur in den ersten sieben Tagen",
  endless: "Ohne Ende",
  end: "Letzter Tag",
  description: "Beschreibung",
  plain: "So, wie das Gerät die Sendung kennt",
  plainNew: "Titel und Länge kommen vom Gerät. Ohne Länge nimmt es 30 Minuten auf.",
  keeps: "Sie behält ihren jetzigen Titel und ihre Länge.",
  loses: "Sie verliert ihren jetzigen Titel und ihre Länge.",
  wrongDay: (day) => `Der erste Tag ist ein ${day}. Wählen Sie ihn mit aus.`,
  taken: "Zu dieser Zeit beginnt schon eine andere Aufnahme mit eigenem Titel.",
  hasPassed: "Diese Zeit ist schon vorbei.",
  collides: (names) => `Überschneidet sich mit ${names}.`,
  quoted: (name, when) => `„${name}“ (${when})`,
  others: "weiteren",
  free: (tuner) => `Tuner ${tuner} ist dann frei.`,
  save: "Speichern",
  discard: "Ihre Eingaben verwerfen?",
  discardVerb: "Verwerfen",

  // What each error code means and what to do.
  errors: {
    unknown: (code) => `Das Gerät meldet einen unbekannten Fehler: ${code}.`,
    lost: "Das Gerät antwortet nicht. Prüfen Sie, ob es eingeschaltet und erreichbar ist.",
    refused: "Der Webserver lehnt die Anfrage ab. Melden Sie sich neu an oder fragen Sie einen " +
      "Administrator.",
    garbled: "Die Antwort ist unverständlich. Versuchen Sie es erneut; eventuell steht mehr im " +
      "Systemprotokoll.",
    gone: "Die Aufnahme wurde inzwischen gelöscht, gespeichert ist nichts. Speichern Sie noch " +
      "einmal, um sie neu anzulegen.",
    missing: "Das Gerät hat die Anfrage angenommen, führt die Aufnahme aber nicht auf. Sehen Sie " +
      "nach, was jetzt geplant ist.",
    100: "Eine Datei, der Tunerdienst oder die Benutzerabfrage hat versagt. Versuchen Sie es " +
      "später; mehr steht im Systemprotokoll.",
    101: "Eine Angabe fehlt, ist ungültig oder widerspricht einer anderen. Berichtigen Sie sie.",
    105: "Ihr Konto darf keine TV-Aufnahmen verwalten. Ein Administrator kann das Recht erteilen.",
    106: "Sie sind nicht angemeldet. Melden Sie sich an und versuchen Sie es erneut.",
    107: "Ihr Konto ist gesperrt. Nur ein Administrator kann helfen.",
    401: "Für diesen Sender und Beginn ist schon eine Aufnahme geplant. Lassen Sie sie stehen " +
      "oder wählen Sie einen anderen Beginn.",
    402: "Für diesen Sender und Beginn ist nichts mehr geplant. Sehen Sie nach, was jetzt " +
      "geplant ist.",
    403: "Der Aufnahmeplan lässt sich nicht lesen oder schreiben. Er bleibt, wie er war; " +
      "versuchen Sie es später.",
    405: "Die neuen Zeiten überschneiden sich mit einer anderen Aufnahme; geändert ist nichts. " +
      "Wählen Sie andere Zeiten.",
    406: "Es gibt keinen Ordner für TV-Aufnahmen. Lassen Sie auf dem Gerät einen einrichten.",
    "create 100": "Nichts gespeichert, weil die Benutzer-ID fehlt; oder der Tunerdienst hat den " +
      "Plan nicht neu geladen.",
    "delete 100": "Der Tunerdienst hat nicht gestoppt oder den Plan nicht neu geladen. Eine " +
      "bestimmte Aufnahme ist trotzdem gelöscht.",
    "create_repeat 100": "Nichts gespeichert, weil die Benutzer-ID fehlt; oder der Tunerdienst " +
      "hat den Plan nicht neu geladen.",
    "getinfo_repeat 100": "Die Wiederholungen lassen sich nicht lesen. Gezeigt werden nur die " +
      "ersten Tage; versuchen Sie es später.",
    "edit_repeat 100": "Die Änderung ist gespeichert, aber der Tunerdienst hat den Plan nicht " +
      "neu geladen. Sehen Sie nach, was jetzt geplant ist.",
    "delete_repeat 100": "Die Wiederholungen lassen sich nicht lesen oder schreiben. Keine davon " +
      "ist gelöscht.",
    "edit_userdefine 101": "Eine Angabe ist ungültig, oder die Aufnahme wurde inzwischen " +
      "gelöscht. Sehen Sie nach, was jetzt geplant ist.",
    "edit_userdefine 401": "Sie ist schon geplant; die alte ist wiederhergestellt. Wählen Sie " +
      "einen anderen Beginn.",
    "edit_userdefine 402": "Die neue Aufnahme ist gespeichert. Die alte, die sie ersetzen " +
      "sollte, gab es nicht mehr.",
    "edit_userdefine 403": "Der Aufnahmeplan lässt sich nicht schreiben. Sehen Sie nach, was " +
      "jetzt geplant ist.",
    "delete_userdefine 100": "Eine Wiederholung ist noch da, oder der Tunerdienst hat nicht " +
      "gestoppt oder den Plan nicht neu geladen.",
  },
};
