"""What counts as an overlap, by the edits that it refuses. The appliance stands in Berlin, where
the clocks go forward on the Sunday after the first recording."""
import time

import pytest
from conftest import case
from every_method import edit_of
from schedules import SHOW, Schedule

HOUR, DAY = 60, 1440  # minutes
WEEK = 7 * DAY - HOUR  # to the same time of day
ALL = "1,1,1,1,1,1,1"
SHOT = Schedule("2025-03-25", "20:00", "01:00", "Stored", "9@1")  # a Tuesday, at 21:00 in Berlin
RULE = SHOT.but(days="0,0,1,0,0,0,0").stored()


def shot(**changes):
    return {"one_shot": [SHOW, SHOT.stored(**changes)]}


def rule(**changes):
    return {"one_shot": [SHOW], "repeat": [RULE | changes]}


def begin(minutes):
    """A schedule that begins so long after the stored one, by the clock of Berlin's winter."""
    local = time.gmtime(SHOT.start + 60 * minutes + 3600)
    return SHOW.but(date=time.strftime("%Y-%m-%d", local), time=time.strftime("%H:%M", local))


def overlaps(appliance, files, new, now="2025-03-25 12:00"):
    """Whether an edit of SHOW into a new schedule is refused for an overlap with what is stored."""
    appliance.store(**files, user_defined=[SHOW])
    answer = appliance.request("edit_userdefine", now=now, zone="Europe/Berlin",
                               **edit_of(SHOW, new) | {"orig_start_time": "21:15"})
    appliance.forget()
    return {405: True, None: False}[answer.code]


@pytest.mark.parametrize("files, after, length, expected", [
    case("ends touch", shot(), HOUR, "00:01", False), case("touch", shot(), -1, "00:01", False),
    case("last minute", shot(), HOUR - 1, "00:01", True), case("first", shot(), -1, "00:02", True),
    case("no length is half an hour", shot(duration=0), 29, "00:01", True),
    case("that has ended", shot(duration=0), 30, "00:01", False),
    case("beyond 32 bits", shot(duration=2**31 - 1), 4000 * DAY, "99:59", True),
    case("shot at 0", shot(start_time=0), 1 - SHOT.start // 60, "00:20", False),
    case("rule at 0", rule(start_time=0, weekdaystatus=ALL), 0, "00:01", False),
    case("rule's first day", rule(), 0, "00:01", True),
    case("a week later", rule(), WEEK, "00:01", True),
    case("an hour late", rule(), WEEK + HOUR, "00:01", False),
    case("a week before", rule(), -7 * DAY, "00:01", False),
    case("another weekday", rule(), DAY, "00:01", False),
    case("days long", rule(), 4 * DAY, "80:00", True),
    case("end date", rule(end_date="2025-04-01"), WEEK, "00:01", True),
    case("day after it", rule(end_date="2025-03-31"), WEEK, "00:01", False),
    case("no such date", rule(end_date="2025-02-30"), WEEK, "00:01", True),
    case("for a week", rule(isweekly=False, weekdaystatus=ALL), WEEK, "00:01", False)])
def test_overlap(appliance, files, after, length, expected):
    assert overlaps(appliance, files, begin(after).but(length=length)) == expected


@pytest.mark.parametrize("days, end_date, expected", [
    (365, "1", True), (366, "1", False), (5, "2025-03-25", True), (5, "2025-03-24", False)])
def test_overlap_of_a_rule_counts_through_its_end_or_for_a_year(
        appliance, days, end_date, expected):
    new = begin(-days * DAY).but(days=ALL, end_date=end_date)
    assert overlaps(appliance, shot(), new, now=f"{new.date} 12:00") == expected
