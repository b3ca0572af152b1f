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


def code_of_edit(appliance, files, new, now="2025-03-25 12:00", **changes):
    """The code of an edit of SHOW into a new schedule, over what is stored."""
    appliance.store(**files, user_defined=[SHOW])
    answer = appliance.request("edit_userdefine", now=now, zone="Europe/Berlin",
                               **edit_of(SHOW, new) | {"orig_start_time": "21:15"} | changes)
    appliance.forget()
    return answer.code


@pytest.mark.parametrize("files, after, length, code", [
    case("ends touch", shot(), HOUR, "00:01", None), case("touch", shot(), -1, "00:01", None),
    case("last minute", shot(), HOUR - 1, "00:01", 405), case("first", shot(), -1, "00:02", 405),
    case("no length is half an hour", shot(duration=0), 29, "00:01", 405),
    case("beyond 32 bits", shot(duration=2**31 - 1), 4000 * DAY, "99:59", 405),
    case("shot at 0", shot(start_time=0), 1 - SHOT.start // 60, "00:20", None),
    case("rule at 0", rule(start_time=0, weekdaystatus=ALL), 0, "00:01", None),
    case("first day", rule(), 0, "00:01", 405), case("next", rule(), WEEK, "00:01", 405),
    case("days long", rule(), 4 * DAY, "80:00", 405),
    case("end date", rule(end_date="2025-04-01"), WEEK, "00:01", 405),
    case("day after it", rule(end_date="2025-03-31"), WEEK, "00:01", None),
    case("on the day of the change", rule(weekdaystatus=ALL), 5 * DAY - HOUR, "00:01", 405),
    case("half a minute late", rule(start_time=SHOT.start + 30), -1, "00:01", None),
    case("for a week", rule(isweekly=False, weekdaystatus=ALL), WEEK, "00:01", None)])
def test_overlap(appliance, files, after, length, code):
    assert code_of_edit(appliance, files, begin(after).but(length=length)) == code


@pytest.mark.parametrize("first, days, end_date, today, code", [
    case("a year", -365, ALL, "1", 0, 405), case("longer", -366, ALL, "1", 0, None),
    case("to its end", -5, ALL, "2025-03-25", 0, 405),
    case("behind its end", -5, ALL, "2025-03-24", 0, None),
    case("the first day is today", 0, "0,0,0,0,0,1,0", "1", -4, 405),
    case("the first day is not the start's", 0, "0,0,1,0,0,0,0", "1", -4, None),
    case("the end of a long list is dropped", 0, "0,0,000000000001", "1", 0, None)])
def test_overlap_of_a_new_rule(appliance, first, days, end_date, today, code):
    new = begin(first * DAY).but(days=days, end_date=end_date)
    now = begin((first + today) * DAY).date + " 12:00"
    assert code_of_edit(appliance, shot(), new, now) == code


def test_overlap_of_a_new_rule_for_a_week(appliance):
    new = begin(-8 * DAY).but(days=ALL)
    assert code_of_edit(appliance, shot(), new, f"{new.date} 12:00", isweekly="false") is None


def test_overlap_ends_with_the_last_second_of_32_bits(appliance):
    new = begin(0).but(date="2038-01-18", days=ALL)
    assert code_of_edit(appliance, shot(start_time=-2**31, duration=86400), new) is None
