"""create_userdefine: first the record, then the schedule that it describes."""
import pytest
from conftest import Answer, case
from faults import daemon_fails, not_loaded, not_told, unsaved
from schedules import OTHER, SHOW, WEEKLY, epoch


def create(appliance, schedule, user="admin", zone="UTC", under=(), **changes):
    return appliance.request("create_userdefine", user, zone=zone, under=under,
                             **schedule.form() | changes)


@pytest.mark.parametrize("schedule, changes", [
    (SHOW, {"tuner": None}), (SHOW, {"is_repeat": "1"}), (SHOW, {"is_repeat": None}),
    (SHOW, {"start_date": None}), (SHOW, {"start_date": "2025-7-2"}),
    (SHOW, {"start_date": "1960-01-01"}), (SHOW, {"start_date": "9999-12-31"}),
    (SHOW, {"start_date": "9999999999"}), (SHOW, {"start_time": None}),
    (SHOW, {"start_time": "8:15"}), (SHOW, {"channel_name": ""}), (SHOW, {"id": None}),
    (WEEKLY, {"weekdaystatus": None}), (WEEKLY, {"end_date": ""})], ids=str)
def test_create_userdefine_bad_parameter(appliance, schedule, changes):
    appliance.store(user_defined=[SHOW])
    assert create(appliance, schedule, **changes) == Answer(101)


@pytest.mark.sloppy
@pytest.mark.parametrize("schedule, changes, stored, record", [
    case("one-shot", SHOW, {"isweekly": "x", "weekdaystatus": "y", "end_date": "z"}, {}, {}),
    case("rule", WEEKLY, {}, {}, {}), case("tuner x is 0", SHOW, {"tuner": "x"}, {}, {}),
    case("isweekly that does not parse", WEEKLY, {"isweekly": "1"}, {}, {"isweekly": False}),
    case("without texts", SHOW, {"title": None, "description": None},
         {"title": "", "description": ""}, {"event_name": "", "text_name": ""}),
    *(case(f"length {text}", SHOW, {"duration": text}, {"duration": max(seconds, 1800)},
           {"duration": seconds, "input_duration": text}) for text, seconds in [
        ("", -1), ("0:30", -1), ("00:30:0", -1), ("abcde", -1), ("12345", -1), ("99:99", 362340),
        ("1:300", 21600)])])
def test_create_userdefine(appliance, schedule, changes, stored, record):
    appliance.store(user_defined=[OTHER])
    assert create(appliance, schedule, **changes) == Answer()
    appliance.expect_changes(user_defined=[OTHER, schedule.record(**record)], commands=["reload"],
                             **{schedule.file: [schedule.stored(**stored)]})


@pytest.mark.sloppy
@pytest.mark.parametrize("zone, date, time, start", [
    ("America/New_York", "2025-07-02", "20:15", "2025-07-03 00:15"),
    ("Europe/Berlin", "2025-01-15", "20:15", "2025-01-15 18:15"),  # by the clock of summer
    ("UTC", "2025-13-01", "00:00", "2026-01-01 00:00"),
    ("UTC", "2025/07/02", "20:15", "2025-01-01 20:15"),
    ("UTC", "aaaaaaaaaa", "xx:xx", "2000-01-01 00:00")])
def test_create_userdefine_start(appliance, zone, date, time, start):
    assert create(appliance, SHOW, zone=zone, start_date=date, start_time=time) == Answer()
    appliance.expect_changes(
        one_shot=[SHOW.stored(start_time=epoch(start))], commands=["reload"],
        user_defined=[SHOW.record(start_time=epoch(start), input_start_date=date,
                                  input_start_time=time)])


def test_create_userdefine_replaces_record_of_same_start_and_tuner(appliance):
    on_1 = SHOW.record(tuner=1)
    appliance.store(user_defined=[SHOW.but(title="Old"), on_1, OTHER, SHOW.but(title="Older")])
    assert create(appliance, SHOW) == Answer()
    appliance.expect_changes(one_shot=[SHOW], user_defined=[on_1, OTHER, SHOW],
                             commands=["reload"])


@pytest.mark.parametrize("schedule, changes, files, code", [
    case("no folder", SHOW, {}, {"folders": None}, 406),
    case("already stored", SHOW, {}, {"one_shot": [SHOW]}, 401),
    case("store does not load", SHOW, {}, {"one_shot": "["}, 403),
    case("no channel", SHOW, {"id": "x"}, {}, 101),
    case("rule without folder", WEEKLY, {}, {"folders": None}, 406),
    case("rule already stored", WEEKLY, {}, {"repeat": [WEEKLY]}, 401),
    case("weekday not selected", WEEKLY, {"weekdaystatus": "1,1,1,1,0,1,1"}, {}, 101)])
def test_create_userdefine_takes_record_back(appliance, schedule, changes, files, code):
    appliance.store(**files, user_defined=[OTHER, schedule.but(title="Former")])
    answer = Answer(code, log=not_loaded(appliance, "one_shot", "[") if code == 403 else [])
    assert create(appliance, schedule, **changes) == answer
    appliance.expect_changes(user_defined=[OTHER])
    appliance.store(user_defined=None)
    assert create(appliance, schedule, **changes) == answer
    appliance.expect_changes(user_defined="null\n")


@pytest.mark.parametrize("user, schedule, log", [
    ("ghost", SHOW, "661 Failed to KALDUserGet function."), ("nouid", SHOW, "667 uid is error."),
    ("ghost", WEEKLY, "856 Failed to KALDUserGet function."),
    ("nouid", WEEKLY, "862 uid is error.")], ids=str)
def test_create_userdefine_without_user(appliance, user, schedule, log):
    appliance.store(user_defined=[OTHER])
    assert create(appliance, schedule, user) == Answer(100, log=[f"schedule_recording:{log}"])
    appliance.expect_changes(user_defined=[OTHER])


@pytest.mark.parametrize("schedule, records", [(SHOW, "null\n"), (WEEKLY, [WEEKLY])], ids=str)
def test_create_userdefine_without_daemon_only_a_rule_keeps_its_record(
        appliance, schedule, records):
    assert create(appliance, schedule, under=daemon_fails(appliance, after=0)) == Answer(
        100, log=not_told(appliance))
    appliance.expect_changes(**{schedule.file: [schedule]}, user_defined=records)


def test_create_userdefine_not_saved_and_no_broken_file_written_over(appliance):
    appliance.store(user_defined=[SHOW])
    assert create(appliance, SHOW, under=unsaved(appliance, "user_defined")) == Answer(101)
    for stored in "{", "{}", "7":
        assert create(appliance.store(user_defined=stored), SHOW) == Answer(101)
