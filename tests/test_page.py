"""The page in a browser, which stands in another time zone than the appliance."""
import base64
import datetime
import os
import re
import zoneinfo

import pytest
from conftest import SOURCE, case, sample_server

webdriver = pytest.importorskip("selenium.webdriver", reason="there is no python3-selenium")
from selenium.common.exceptions import StaleElementReferenceException  # noqa: E402
from selenium.webdriver.chrome.service import Service  # noqa: E402
from selenium.webdriver.common.keys import Keys  # noqa: E402
from selenium.webdriver.support.wait import WebDriverWait  # noqa: E402

BERLIN, DAY = zoneinfo.ZoneInfo("Europe/Berlin"), datetime.timedelta(days=1)
NOW = datetime.datetime.now(BERLIN).replace(tzinfo=None)
TODAY = NOW.replace(hour=0, minute=0, second=0, microsecond=0)
MARKUP = """<img src=x onerror="document.title='run'">"""
TITLES = """
    return [...document.querySelectorAll(".box .title")].map((title) => title.textContent);"""
PLACE = """
    const [day, time, tuner = 0] = arguments, section = document.querySelector(".days");
    const part = (60 * time.slice(0, 2) + Number(time.slice(3))) / 1440;
    const column =
      document.querySelector(`.day[data-day="${day}"][data-tuner="${tuner}"] .times`);
    section.scrollTop = column.offsetHeight * part - section.clientHeight / 2;
    const { left, top, height } = column.getBoundingClientRect();
    return [Math.round(left + 20), Math.round(top + height * part)];"""
FORM = """
    const fields = document.querySelector("#recording form").elements;
    return ["title", "date", "time", "duration"].map((name) => fields[name].value);"""
FILL = """
    const fields = document.querySelector("#recording form").elements;
    for (const [name, value] of Object.entries(arguments[0])) {
      if (name === "day") fields.day.forEach((one) => { one.checked = value[2 * one.value] > 0; });
      else fields[name][typeof value === "boolean" ? "checked" : "value"] = value;
      const field = name === "day" ? fields.day[0] : fields[name];
      field.dispatchEvent(new Event("input", { bubbles: true }));
    }"""


def wall_of(time):
    """A local time as the page counts it."""
    return int(time.replace(tzinfo=datetime.timezone.utc).timestamp())


def start_of(record):
    return datetime.datetime.fromtimestamp(record["start_time"], BERLIN).replace(tzinfo=None)


def flags_of(day):
    return ",".join("01"[number == day.isoweekday() % 7] for number in range(7))


@pytest.fixture(scope="module")
def server(build, tmp_path_factory):
    """A web server over a sample appliance in Berlin."""
    folder = tmp_path_factory.mktemp("page")
    with pytest.MonkeyPatch.context() as patch:
        patch.setenv("TZ", BERLIN.key)  # for the sample
        with sample_server(build, folder, under=["env", f"TZ={BERLIN.key}"]) as web:
            yield web


@pytest.fixture(scope="module")
def browser():
    options = webdriver.ChromeOptions()
    for option in ("headless=new", "no-sandbox", "disable-dev-shm-usage", "accept-lang=en-GB"):
        options.add_argument(f"--{option}")
    environment = os.environ | {"TZ": "Asia/Kolkata", "LC_ALL": "C"}
    with webdriver.Chrome(service=Service(env=environment), options=options) as chrome:
        yield chrome


class Page:
    """What a person does with the page, and sees of it."""

    def __init__(self, server, browser):
        self.server, self.browser, self.stored = server, browser, server.appliance.stored
        self.tell = browser.execute_cdp_cmd

    def open(self, login="viewer", width=1280, query=""):
        word = base64.b64encode(f"{login}:{login}".encode()).decode()
        self.tell("Network.enable", {})
        self.tell("Network.setExtraHTTPHeaders", {"headers": {"Authorization": f"Basic {word}"}})
        self.tell("Emulation.setDeviceMetricsOverride",
                  {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False})
        self.browser.get(f"{self.server.url}/{query}")
        self.see("main[aria-busy=false]")

    def all(self, selector, words=""):
        found = self.browser.find_elements("css selector", selector)
        return [one for one in found if words in one.text]

    def see(self, selector, words=""):
        """Waits until there is such an element with these words, and answers it."""
        waiting = WebDriverWait(self.browser, 5, 0.02, [StaleElementReferenceException])
        return waiting.until(lambda _: self.all(selector, words), f"no {selector} {words!r}")[0]

    def change(self, row="", **fields):
        """Opens the dialog for a row of the list, or for a new recording, and fills fields."""
        self.see(*((".row", row) if row else ("#create",))).click()
        self.see("#recording[open]")
        self.browser.execute_script(FILL, fields)

    def click_until(self, selector, answer, words):
        """Clicks, and waits until the page says that what this has begun is done."""
        self.browser.execute_script("document.querySelector('#done').textContent = ''")
        self.see(selector, answer).click()
        self.see("#done", words)

    def save(self):
        self.click_until("#recording [type=submit]", "", "Saved")

    def press(self, selector, answer, words=""):
        """Presses a button, and answers the question that it asks."""
        self.see(selector).click()
        self.click_until("#question[open] button", answer, words)

    def drag(self, *stops, key=None):
        """Moves the pressed mouse from one day, time and tuner to others, or out of the week.

        A stop of None is outside. A key is pressed on the way.
        """
        mouse = webdriver.ActionChains(self.browser, 0)
        pointer = mouse.w3c_actions.pointer_action
        for stop in stops:
            point = 5, 5
            if stop:
                point = self.browser.execute_script(PLACE, wall_of(stop[0]), *stop[1:])
            pointer.move_to_location(*point)
            if stop is stops[0]:
                pointer.pointer_down()
            mouse.perform()
        if key:
            mouse.send_keys(key)
        pointer.pointer_up()
        mouse.perform()

    def records(self):
        """What is stored, as its local start, title, channel, length and rule."""
        return {(start_of(record), record["title"], record.get("id", record.get("service_id")),
                 record["duration"], *map(record.get, ("weekdaystatus", "end_date", "isweekly")))
                for record in self.stored().one_shot + self.stored().repeat}


@pytest.fixture
def page(server, browser, request):
    """The page over a fresh sample. If the test fails, a picture of it stays in build/."""
    server.appliance.lay_sample()
    failed = request.session.testsfailed
    yield Page(server, browser)
    if request.session.testsfailed > failed:
        browser.save_screenshot(str(SOURCE / f"build/{request.node.name}.png"))


def test_page_shows_the_weeks_of_the_sample(page):
    page.open()
    page.see(".box", "Morgenbericht")
    page.see("#previous").click()
    titles, placed = set(), []
    for _ in range(3):
        titles |= set(page.browser.execute_script(TITLES))
        for day, marks in (TODAY - DAY, ".passed"), (TODAY + 3 * DAY, ":not(.passed)"):
            placed += page.all(f".day[data-day='{wall_of(day)}'] .box{marks}", "20:15")
        page.see("#next").click()
    assert len(placed) == 2 and titles == {one[1] for one in page.records()}


SOON = TODAY + 3 * DAY
FAR = next(day for number in range(40, 365) if (day := TODAY + number * DAY).replace(
    tzinfo=BERLIN).utcoffset() != NOW.replace(tzinfo=BERLIN).utcoffset())  # behind a clock change


@pytest.mark.parametrize("kind, title, is_repeat, day", [
    case("one-shot", {"plain": True}, "", False, SOON, marks=pytest.mark.slow),
    case("repeat", {"plain": True, "repeats": True}, "", True, FAR),
    case("user-defined", {}, MARKUP, False, FAR, marks=pytest.mark.slow),
    case("user-defined repeat", {"repeats": True}, MARKUP, True, SOON)])
def test_page_creates_changes_and_deletes(page, kind, title, is_repeat, day):
    page.open()
    before, forms, end = page.records(), page.stored().user_defined, str((day + 9 * DAY).date())
    page.change(**kind | {"channel": "", "id": "9@8", "channel_name": "Nine", "time": "03:10"},
                date=str(day.date()), title=title, duration="00:45", day="1,1,1,1,1,1,1")
    flags = flags_of(day)
    for hour, minute, *rule in [(3, 10, "1,1,1,1,1,1,1", "1", True), (4, 20, flags, end, False)]:
        page.save()
        assert page.records() - before == {
            (day.replace(hour=hour, minute=minute), title, 9, 2700 if title else 1800,
             *(rule if is_repeat else (None, None, None)))}
        page.see(".box", title or "Nine")
        assert (page.stored().user_defined == forms) == ("plain" in kind and hour == 3)
        page.change(title or "Nine", time="04:20", day=flags, endless=False, weekly=False, end=end)
    page.press("#delete", "Cancel")
    assert page.records() > before and page.browser.title == "Scheduled recordings"
    made = page.records()
    for undone in True, False:
        page.press("#delete", "Delete", "Deleted")
        assert (page.records(), page.stored().user_defined) == (before, forms)
        if undone:
            page.see("#undo").click()
            page.see("#done", "Stored again")
            assert page.records() == made
            page.change(title or "Nine")


def test_page_names_and_marks_collisions(page):
    day = (TODAY + 2 * DAY).date()
    page.open()
    page.see("#next" if TODAY.weekday() > 4 else "#today").click()
    page.change(channel="28102@546000", date=str(day), time="21:49", title="Late News",
                duration="01:00")
    page.see("#collisions", "Collides with “Die Uhrmacherin” (")
    page.see("#collisions", "Tuner 1 is free then")
    page.save()
    page.browser.save_screenshot(str(SOURCE / os.environ.get("WEEK_PICTURE", "build/week.png")))
    assert {one.text for one in page.all(".collides .title")} == {"Die Uhrmacherin", "Late News"}


def test_page_says_errors_in_words(page):
    page.open(login="guest")
    page.see("#alert", "Your account lacks the privilege")
    page.open()
    for offline, button in (True, "#reload"), (False, "#retry"):
        page.tell("Network.emulateNetworkConditions", {
            "offline": offline, "latency": 0, "downloadThroughput": -1, "uploadThroughput": -1})
        page.see(button).click()
        page.see("main[aria-busy=false]")
        assert bool(page.all("#alert", "The appliance does not answer")) == offline
    before = page.stored()
    page.change("Chorprobe", date=str((TODAY + 4 * DAY).date()), time="21:30")
    page.see("#recording [type=submit]").click()
    page.see("#problem", "The new times overlap another recording")
    assert not page.all("#alert:not([hidden])")
    assert page.stored() == before


def test_page_speaks_the_language_of_the_address_or_the_browser(page):
    page.open(query="?lang=de")
    page.see("#create", "Neue Aufnahme")
    page.see(".today h3", ("Mo", "Di", "Mi", "Do", "Fr", "Sa", "So")[TODAY.weekday()])
    page.open()
    page.see("#create", "New recording")


def test_page_draws_moves_and_lengthens_with_the_mouse(page):
    monday = TODAY + (7 - TODAY.weekday()) * DAY
    tuesday = monday + DAY
    page.open()
    page.change(date=str(tuesday.date()), time="10:40", title="Choir", duration="01:05")
    page.save()
    before = page.records()
    for start, end, *values in [
            ((monday, "03:02"), (monday, "03:47"), "", monday, "03:00", "00:50"),
            ((monday, "03:02"), (monday, "03:02"), "", monday, "03:00", "00:30"),
            ((tuesday, "11:43"), (tuesday, "12:34"), "Choir", tuesday, "10:40", "01:55"),
            ((tuesday, "11:00"), (monday, "05:22"), "Choir", monday, "05:00", "01:05")]:
        page.drag(start, end, key=Keys.ESCAPE)
        page.drag(start, None)
        for stop in end, (monday, "07:25"):  # from a repeat schedule, which stays
            page.drag((monday, "07:10"), stop)
        assert not page.all("#recording[open], .ghost")
        page.drag(start, end)
        page.see("#recording[open]")
        title, day, *others = values
        assert page.browser.execute_script(FORM) == [title, str(day.date()), *others]
        if day == tuesday or not title:
            page.see("#recording .cancel").click()
    assert page.records() == before
    page.save()
    assert {one[:2] for one in page.records() - before} == {(monday.replace(hour=5), "Choir")}
    page.see(".box", "Choir").send_keys(Keys.ENTER)  # no drag takes it for its own click
    page.see("#recording[open] .cancel").click()
    page.see("#all-tuners").click()
    page.see("main[aria-busy=false]")
    page.see("#previous").click()
    page.see(f".day[data-tuner='1'][data-day='{wall_of(monday)}']")
    page.drag((monday, "05:30", 0), (monday, "05:45", 1))
    page.see("#recording[open] [name=tuner] :checked", "1")
    assert page.browser.execute_script(FORM)[2] == "05:15"


def test_page_shows_all_tuners_filters_the_list_and_prints_one_page(page):
    page.open()
    page.see("#all-tuners").click()
    page.see("main[aria-busy=false]")  # the rules, too: the page is not drawn anew any more
    page.see(".day[data-tuner='1'] .box", "The Quiet Harbour")
    assert [one.text for one in page.all(".day h3")] == [f"Tuner {number}" for number in range(4)]
    page.see("#next").click()
    page.see(".day[data-tuner='0'] .box", "Gardens Under Glass")
    page.see("#filter").send_keys("ahorn abend")
    page.see(".pages", "1 to 1 of 1")
    page.see(".row", "Abendbericht")
    page.see("#tuners button").click()
    printed = page.tell("Page.printToPDF", {"preferCSSPageSize": True})["data"]
    assert len(re.findall(rb"/Type\s*/Page\b", base64.b64decode(printed))) == 1


def test_page_works_by_keyboard(page):
    page.open()
    keys = webdriver.ActionChains(page.browser)
    while page.browser.switch_to.active_element.get_attribute("id") != "create":
        keys.send_keys(Keys.TAB).perform()
    keys.send_keys(Keys.ENTER).perform()
    page.see("#recording[open]")
    keys.send_keys("Typed", Keys.TAB, Keys.TAB, Keys.TAB, f"{SOON:%m%d%Y}", Keys.TAB, Keys.TAB,
                   "0505AM", Keys.TAB, Keys.TAB, Keys.TAB, Keys.SPACE, Keys.ENTER).perform()
    page.see("#done", "Saved: Typed.")
    assert (SOON.replace(hour=5, minute=5), "Typed", flags_of(SOON)) in {
        (one[0], one[1], one[4]) for one in page.records()}


def test_page_drops_what_was_typed_only_when_it_is_told_to(page):
    page.open()
    page.browser.execute_script("""
        document.querySelector(".row.user-defined").click(); // its dialog waits for an answer
        document.querySelector("#create").click();""")
    for keys in ("Typed", Keys.ESCAPE), (Keys.ESCAPE,), (Keys.ESCAPE,):
        webdriver.ActionChains(page.browser).send_keys(*keys).perform()
        page.see("#question[open]", "Discard what you have entered?")
        webdriver.ActionChains(page.browser).send_keys(Keys.ESCAPE).perform()
        page.see("#question:not([open])")
        page.see("#recording h2").click()  # takes the focus out of the fields
    assert page.see("[name=title]").get_attribute("value") == "Typed"
    page.see("#recording .cancel").click()
    page.see("#question[open] .main").click()
    page.see("#recording:not([open])")


@pytest.mark.parametrize("title, fields", [
    case("one-shot", "Die Uhrmacherin", {}),
    case("one-shot that moves", "Die Uhrmacherin", {"time": "20:25"}),
    case("user-defined", "Chorprobe im Fernsehen", {"duration": "01:00"})])
def test_page_says_that_a_schedule_was_deleted_meanwhile(page, title, fields):
    page.open()
    page.change(title, **fields)
    page.server.appliance.store(one_shot=[])
    page.see("#recording [type=submit]").click()
    page.see("#problem", "It was deleted meanwhile, so nothing is saved")
    assert page.stored().one_shot == []
    page.save()
    assert [record["title"] for record in page.stored().one_shot] == [title]


def test_page_keeps_title_and_length_of_a_show_that_moves(page):
    page.open()
    before = page.records()
    for title in ("Lighthouse Keepers", "Nachtzug nach Norden"):
        page.change(title, time="05:00")
        if title == "Nachtzug nach Norden":
            page.see("[name=plain]").click()
        page.save()
    assert {one[:4] for one in page.records() - before} == {
        ((TODAY + 4 * DAY).replace(hour=5), "Lighthouse Keepers", 17541, 3600),
        (TODAY.replace(hour=5), "", 28102, 1800)}
    page.change("Gardens Under Glass", tuner=1)
    page.save()
    page.see("#tuners [aria-pressed=true]", "1")
    page.see(".row", "Gardens Under Glass")
    assert "Gardens Under Glass" not in {one[1] for one in page.records()}
    page.see("#create").click()
    page.see("[name=channel] :checked", "Channel Cedar")


def test_page_asks_once_before_it_clears_stops_and_deletes_several(page):
    page.open()
    for title in ("Abendbericht", "Sand and Stars", "Gymnastik"):
        page.see(f"#list input[aria-label^='Choose {title}']").click()
    page.see("#filter").send_keys("sand")  # what it hides stays chosen
    page.see("#delete-chosen", "(3)").click()
    page.see("#question", "Undo cannot bring back titles")
    page.click_until("#question button", "Delete", "Deleted: 3 schedules")
    page.press("#clear", "Clear", "cleared")
    page.press("#stop", "Stop", "told to stop")
    kept = {record[1] for record in page.records()}
    assert len(kept) == 7 and not kept & {"Abendbericht", "Sand and Stars", "Das Haus am Mühlbach"}
    assert page.stored().commands[-2:] == ["stop 0 -1 -1 -1", "reload"]


def test_page_pages_long_lists_and_fits_a_phone(page):
    shots = [{"start_time": n, "service_id": 7, "title": f"Show {n}"} for n in range(1, 61)]
    page.server.appliance.store(repeat=[], one_shot=shots)
    page.open(width=360)
    page.see("#later").click()
    page.see(".pages", "51 to 60 of 60")
    assert len(page.all(".row", "Show")) == 10
    assert page.browser.execute_script("return document.documentElement.scrollWidth") <= 360
