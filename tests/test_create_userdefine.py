"""create_userdefine: first the record, then the schedule that it describes."""
import pytest
from conftest import Answer, case
from faults import daemon_fails, daemon_log, save_fails
from schedules import OTHER, SHOW, WEEKLY, epoch


def create(appliance, schedule, **changes):
    return appliance.request("create_userdefine", **schedule.form() | changes)


@pytest.mark.parametrize("schedule, changes, stored, record", [
    case("one-shot", SHOW, {"isweekly": "x", "weekdaystatus": "y", "end_date": "z"}, {}, {}),
    case("rule", WEEKLY, {"isweekly": "1"}, {}, {"isweekly": False}),
    case("without texts", SHOW, {"title": None, "description": None},
         {"title": "", "description": ""}, {"event_name": "", "text_name": ""}),
    *(case(f"length {text}", SHOW, {"duration": text}, {"duration": max(seconds, 1800)},
           {"duration": seconds, "input_duration": text}) for text, seconds in [
        ("", -1), ("abcde", -1), ("99:99", 362340), ("1:300", 21600)])])
def test_create_userdefine_replaces_record_of_same_start_and_tuner(
        appliance, schedule, changes, stored, record):
    made = schedule.record(**record)
    old, on_1 = made | {"event_name": "Old"}, made | {"event_name": "On 1", "tuner": 1}
    appliance.store(user_defined=[on_1, old, OTHER, old])
    assert create(appliance, schedule, **changes) == Answer()
    appliance.expect_changes(user_defined=[on_1, OTHER, made], commands=["reload"], **{
        "repeat" if schedule.is_repeat else "one_shot": [schedule.stored(**stored)]})


@pytest.mark.parametrize("zone, date, time, start", [
    ("America/New_York", "2025-07-02", "20:15", "2025-07-03 00:15"),
    ("Europe/Berlin", "2025-01-15", "20:15", "2025-01-15 18:15"),  # by the clock of summer
    ("UTC", "2025-13-01", "00:00", "2026-01-01 00:00"),
    ("UTC", "aaaaaaaaaa", "xx:xx", "2000-01-01 00:00")])
def test_create_userdefine_start(appliance, zone, date, time, start):
    assert create(appliance, SHOW, zone=zone, start_date=date, start_time=time) == Answer()
    record = SHOW.record(start_time=epoch(start), input_start_date=date, input_start_time=time)
    appliance.expect_changes(one_shot=[SHOW.stored(start_time=epoch(start))],
                             user_defined=[record], commands=["reload"])


@pytest.mark.parametrize("schedule, changes, files, code", [
    case("no folder", SHOW, {}, {"folders": None}, 406),
    case("already stored", SHOW, {}, {"one_shot": [SHOW]}, 401),
    case("no user", SHOW, {"user": "ghost"}, {}, 100),
    case("rule without folder", WEEKLY, {}, {"folders": None}, 406),
    case("rule already stored", WEEKLY, {}, {"repeat": [WEEKLY]}, 401),
    case("weekday not selected", WEEKLY, {"weekdaystatus": "1,1,1,1,0,1,1"}, {}, 101)])
def test_create_userdefine_takes_record_back(appliance, schedule, changes, files, code):
    appliance.store(**files, user_defined=[OTHER, schedule.but(title="Former")])
    assert create(appliance, schedule, **changes).code == code
    appliance.expect_changes(user_defined=[OTHER])


def test_create_userdefine_without_daemon_takes_record_back_but_no_one_shot(appliance):
    assert create(appliance, SHOW, under=daemon_fails(appliance, after=0)) == Answer(
        100, log=daemon_log(appliance))
    appliance.expect_changes(one_shot=[SHOW], user_defined="null\n")


def test_create_userdefine_not_saved_and_no_broken_file_written_over(appliance):
    appliance.store(user_defined=[SHOW])
    assert create(appliance, SHOW, under=save_fails(appliance, "user_defined")) == Answer(101)
    for stored in "{", "{}", "7":
        assert create(appliance.store(user_defined=stored), SHOW) == Answer(101)
