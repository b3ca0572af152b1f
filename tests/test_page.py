"""The page in a browser, which stands in another time zone than the appliance."""
import base64
import datetime
import os
import re
import shutil
import zoneinfo

import pytest
from conftest import SOURCE, Appliance, WebServer, case

webdriver = pytest.importorskip("selenium.webdriver", reason="there is no python3-selenium")
from selenium.common.exceptions import StaleElementReferenceException  # noqa: E402
from selenium.webdriver.chrome.service import Service  # noqa: E402
from selenium.webdriver.common.keys import Keys  # noqa: E402
from selenium.webdriver.support.wait import WebDriverWait  # noqa: E402

BERLIN = zoneinfo.ZoneInfo("Europe/Berlin")
DAY = datetime.timedelta(days=1)
NOW = datetime.datetime.now(BERLIN).replace(tzinfo=None)
TODAY = NOW.replace(hour=0, minute=0, second=0, microsecond=0)
MONDAY = TODAY - TODAY.weekday() * DAY
BOXES = """
    return [...document.querySelectorAll(".box")].map((box) => {
      const list = box.closest("ol").getBoundingClientRect(), own = box.getBoundingClientRect();
      const minute = 5 * Math.round((own.top - list.top) / list.height * 288);
      const day = new Date(1000 * box.closest(".day").dataset.day).toISOString().slice(0, 10);
      return [day, minute, box.querySelector(".title").textContent, box.className];
    });"""
FILL = """
    const fields = document.querySelector("#recording form").elements;
    for (const [name, value] of Object.entries(arguments[0])) {
      if (name === "day") fields.day.forEach((box, day) => { box.checked = value[2 * day] === "1"; });
      else fields[name][typeof value === "boolean" ? "checked" : "value"] = value;
    }
    fields[0].form.dispatchEvent(new Event("input"));"""


@pytest.fixture(scope="module")
def server(build, tmp_path_factory):
    """A web server over a sample appliance in Berlin."""
    folder = tmp_path_factory.mktemp("page")
    program = folder / "schedule_recording"
    program.write_text(f"#!/bin/sh\nTZ={BERLIN.key} exec {build.program}\n", encoding="ascii")
    program.chmod(0o755)
    with pytest.MonkeyPatch.context() as patch:
        patch.setenv("TZ", BERLIN.key)
        with WebServer(program, Appliance(build), folder) as running:
            yield running


@pytest.fixture(scope="module")
def browser():
    if not shutil.which("chromedriver") or not shutil.which("chromium"):
        pytest.skip("there is no chromium with a chromedriver")
    options = webdriver.ChromeOptions()
    options.add_experimental_option("prefs", {"intl.accept_languages": "en-GB"})
    for option in ("headless=new", "no-sandbox", "disable-dev-shm-usage"):
        options.add_argument(f"--{option}")
    service = Service(shutil.which("chromedriver"), env=os.environ | {"TZ": "Asia/Kolkata", "LC_ALL": "C"})
    chrome = webdriver.Chrome(service=service, options=options)
    yield chrome
    chrome.quit()


class Page:
    """What a person does with the page, and sees of it."""

    def __init__(self, server, browser):
        self.server, self.browser, self.stored = server, browser, server.appliance.stored

    def open(self, fragment="", login="viewer", width=1280):
        word = base64.b64encode(f"{login}:{login}".encode()).decode()
        self.tell("Network.enable")
        self.tell("Network.setExtraHTTPHeaders", headers={"Authorization": f"Basic {word}"})
        self.tell("Emulation.setDeviceMetricsOverride", width=width, height=900, mobile=False,
                  deviceScaleFactor=1)
        self.browser.get("about:blank")
        self.browser.get(f"{self.server.url}/#{fragment}")
        self.settle()
        return self

    def tell(self, command, **options):
        self.browser.execute_cdp_cmd(command, options)

    def all(self, selector, words=""):
        found = self.browser.find_elements("css selector", selector)
        return [element for element in found if words in element.text]

    def wait(self, condition):
        waiting = WebDriverWait(self.browser, 5, 0.02, [StaleElementReferenceException])
        return waiting.until(lambda _: condition())

    def settle(self):
        self.wait(lambda: self.all("main[aria-busy=false]"))

    def says(self, selector, words):
        self.wait(lambda: self.all(selector, words))

    def click(self, selector, words=""):
        self.wait(lambda: self.all(selector, words))[0].click()

    def boxes(self):
        return self.browser.execute_script(BOXES)

    def fill(self, **fields):
        self.browser.execute_script(FILL, fields)

    def change(self, row="", **fields):
        """Opens the dialog for a row of the list, or for a new recording, and fills fields."""
        self.click(*((".row", row) if row else ("#create",)))
        self.wait(lambda: self.all("#recording[open]"))
        self.fill(**fields)

    def save(self):
        self.click("#recording [type=submit]")
        self.says("#done", "Saved")
        self.settle()

    def confirm(self, button):
        self.click("#question[open] button", button)
        self.settle()

    def records(self):
        """What is stored, as its local start, channel, length, title and rule."""
        stored = self.stored()
        return {(start_of(record), record.get("id", record.get("service_id")), record["duration"],
                 record["title"], record.get("weekdaystatus"), record.get("end_date"),
                 record.get("isweekly")) for record in stored.one_shot + stored.repeat}


def start_of(record):
    return datetime.datetime.fromtimestamp(record["start_time"], BERLIN).replace(tzinfo=None)


@pytest.fixture
def page(server, browser, request):
    """The page over a fresh sample. If the test fails, a picture of it stays in build/."""
    server.lay_sample()
    failed = request.session.testsfailed
    yield Page(server, browser)
    if request.session.testsfailed > failed:
        name = re.sub(r"\W+", "-", request.node.name)
        browser.save_screenshot(str(SOURCE / f"build/{name}.png"))


def occurrences(stored, first):
    """What the week from a day on holds: day, minute, title and whether it has passed."""
    for record in stored.one_shot + stored.repeat:
        start, flags = start_of(record), record.get("weekdaystatus", "1,1,1,1,1,1,1").split(",")
        for day in (first + number * DAY for number in range(7)):
            begin = datetime.datetime.combine(day, start.time())
            last = datetime.datetime.max if "end_date" in record else start
            if start <= begin <= last and flags[day.isoweekday() % 7] == "1":
                yield (str(day.date()), 60 * begin.hour + begin.minute, record["title"],
                       begin + datetime.timedelta(seconds=record["duration"]) <= NOW)


def test_page_shows_the_weeks_of_the_sample(page):
    page.open()
    picture = SOURCE / os.environ.get("WEEK_PICTURE", "build/week.png")
    page.wait(lambda: page.all(".box", "Morgenbericht"))
    page.browser.save_screenshot(str(picture))
    assert picture.stat().st_size <= 150_000
    for first in (MONDAY, MONDAY + 7 * DAY):
        shown = {(*box[:3], "passed" in box[3]) for box in page.boxes()}
        assert shown == set(occurrences(page.stored(), first))
        page.click("#next")


@pytest.mark.parametrize("kind, title, rule", [
    case("one-shot", {"kind": "oneshot"}, "", (None, None, None)),
    case("repeat", {"kind": "repeat"}, "", ("1,1,1,1,1,1,1", "1", True)),
    case("user-defined", {"kind": "userdefine"}, "Tea", (None, None, None)),
    case("user-defined repeat", {"kind": "userdefine", "repeats": True}, "Tea",
         ("1,1,1,1,1,1,1", "1", True))])
def test_page_creates_changes_and_deletes(page, kind, title, rule):
    page.open()
    before, forms = page.records(), page.stored().user_defined
    day, length = TODAY + 3 * DAY, 2700 if title else 1800
    page.change(**kind)
    page.fill(channel="", id="9@8", channel_name="Nine", date=str(day.date()), time="03:10",
              title=title, duration="00:45", day="1,1,1,1,1,1,1")
    page.save()
    assert page.records() - before == {(day.replace(hour=3, minute=10), 9, length, title, *rule)}
    if rule[0]:
        rule = (",".join("01"[number == day.isoweekday() % 7] for number in range(7)),
                str((day + 9 * DAY).date()), False)
    page.change(title or "9@8", time="04:20", day=rule[0] or "", endless=False, weekly=False,
                end=str((day + 9 * DAY).date()))
    page.save()
    assert page.records() - before == {(day.replace(hour=4, minute=20), 9, length, title, *rule)}
    page.change(title or "9@8")
    page.click("#delete")
    page.confirm("Cancel")
    assert page.records() > before
    page.click("#delete")
    page.confirm("Delete")
    assert (page.records(), page.stored().user_defined) == (before, forms)


def test_page_names_and_marks_collisions(page):
    day = TODAY + 2 * DAY
    page.open(f"week={day.date()}")
    page.change(kind="userdefine", channel="17540@618000", date=str(day.date()), time="21:49",
                title="Late", duration="01:00")
    page.says("#collisions", "Collides with Die Uhrmacherin")
    page.save()
    collides = [box[2] for box in page.boxes() if "collides" in box[3]]
    assert sorted(collides) == ["Die Uhrmacherin", "Late"]
    page.change("Late", time="21:50")
    assert not page.all("#collisions", "Collides")
    page.save()
    assert not page.all(".collides")


def test_page_says_errors_in_words(page):
    page.open(login="guest")
    page.says("#alert", "Your account lacks the privilege")
    page.open()
    before = page.stored()
    page.change("Chorprobe", date=str((TODAY + 4 * DAY).date()), time="21:30")
    page.says("#collisions", "Lighthouse Keepers")
    page.click("#recording [type=submit]")
    page.says("#problem", "The new times overlap another recording")
    assert page.stored() == before


def test_page_takes_titles_as_text(page):
    title = "<img src=x onerror=\"document.title='run'\">"
    page.open()
    page.change(kind="userdefine", title=title, time="23:58")
    page.save()
    assert page.all(".box", title) and page.all(".row", title) and not page.all("img")
    assert page.browser.title == "Scheduled recordings"


@pytest.mark.parametrize("kind", ["repeat", "userdefine"])
def test_page_keeps_the_wanted_time_beyond_a_change_of_the_clocks(page, kind):
    offset = NOW.replace(tzinfo=BERLIN).utcoffset()
    far = next(day for day in (TODAY + number * DAY for number in range(40, 365))
               if day.replace(tzinfo=BERLIN).utcoffset() != offset)
    page.open()
    before = page.records()
    page.change(kind=kind, date=str(far.date()), time="20:15", title="Far", day="1,1,1,1,1,1,1")
    page.save()
    assert [record[0] for record in page.records() - before] == [far.replace(hour=20, minute=15)]


def test_page_works_by_keyboard(page):
    page.open()
    keys = webdriver.ActionChains(page.browser)
    while page.browser.switch_to.active_element.get_attribute("id") != "create":
        keys.send_keys(Keys.TAB).perform()
    keys.send_keys(Keys.ENTER).perform()
    page.wait(lambda: page.all("#recording[open]"))
    keys.send_keys(Keys.ARROW_RIGHT, Keys.ARROW_RIGHT, Keys.TAB, Keys.TAB).perform()
    keys.send_keys(f"{TODAY + 3 * DAY:%m%d%Y}", Keys.TAB, Keys.TAB, "0505AM").perform()
    keys.send_keys(Keys.TAB, Keys.TAB, "Typed", Keys.ENTER).perform()
    page.says("#done", "Saved: Typed.")
    wanted = TODAY + 3 * DAY + datetime.timedelta(hours=5, minutes=5)
    assert (wanted, "Typed") in {(record[0], record[3]) for record in page.records()}


def test_page_asks_once_before_it_clears_stops_and_deletes_several(page):
    page.open()
    for title in ("Abendbericht", "Sand and Stars", "Gymnastik"):
        page.click(f"#list input[aria-label^='Choose {title}']")
    for button, verb in (("#delete-chosen", "Delete"), ("#clear", "Clear"), ("#stop", "Stop")):
        page.click(button)
        page.confirm(verb)
    titles = {record[3] for record in page.records()}
    assert len(titles) == 7 and not titles & {"Abendbericht", "Das Haus am Mühlbach"}
    assert page.stored().commands[-2:] == ["stop 0 -1 -1 -1", "reload"]


def test_page_pages_long_lists_and_fits_a_phone(page):
    shots = [{"start_time": 2000000000 + number * 3600, "service_id": 7, "title": f"Show {number}",
              "duration": 60, "channel_name": "", "description": "", "status": 4} for number in range(60)]
    page.server.appliance.store(one_shot=shots, repeat=[])
    page.open(width=360)
    page.says(".pages", "1 to 50 of 60")
    page.click(".later")
    page.says(".pages", "51 to 60 of 60")
    assert [row.text.split("\n")[1] for row in page.all(".row")] == [f"Show {n}" for n in range(50, 60)]
    assert page.browser.execute_script("return document.documentElement.scrollWidth") <= 360


def test_page_says_that_it_waits_and_that_the_server_is_lost(page):
    page.open()
    lost = {"latency": 0, "downloadThroughput": -1, "uploadThroughput": -1}
    page.tell("Network.emulateNetworkConditions", **lost | {"latency": 800}, offline=False)
    page.click("#reload")
    page.says(".waiting", "Waiting")
    page.settle()
    page.tell("Network.emulateNetworkConditions", **lost, offline=True)
    page.click("#reload")
    page.says("#alert", "The appliance does not answer")
    page.tell("Network.emulateNetworkConditions", **lost, offline=False)
    page.click("#retry")
    page.wait(lambda: not page.all("#alert", "answer"))
