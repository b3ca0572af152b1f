"""create_userdefine: first the record, then the schedule that it describes."""
import pytest
from conftest import Answer, case
from faults import daemon_fails, unsaved
from schedules import Schedule

SHOW = Schedule("2025-07-02", "20:15", "01:00", "Show", "7@474")
OTHER = Schedule("2025-07-05", "20:15", "01:00", "Other", "8@490")
WEEKLY = Schedule("2025-07-03", "18:00", "00:30", "Weekly", "9@500", "0,0,0,0,1,0,0", "2025-12-31")


def create(appliance, schedule, user="admin", zone="UTC", under=(), **changes):
    return appliance.request("create_userdefine", user, zone=zone, under=under,
                             **schedule.form() | changes)


@pytest.mark.parametrize("schedule, changes", [
    (SHOW, {"tuner": None}), (SHOW, {"is_repeat": "1"}), (SHOW, {"is_repeat": None}),
    (SHOW, {"start_date": None}), (SHOW, {"start_date": "2025-7-2"}),
    (SHOW, {"start_date": "1960-01-01"}), (SHOW, {"start_date": "2999-01-01"}),
    (SHOW, {"start_time": None}), (SHOW, {"start_time": "8:15"}), (SHOW, {"channel_name": ""}),
    (SHOW, {"id": None}), (WEEKLY, {"weekdaystatus": None}), (WEEKLY, {"end_date": ""})], ids=str)
def test_create_userdefine_bad_parameter(appliance, schedule, changes):
    appliance.store(user_defined=[SHOW])
    assert create(appliance, schedule, **changes) == Answer(101)


def test_create_userdefine_one_shot(appliance):
    assert create(appliance, SHOW, isweekly="x", weekdaystatus="y", end_date="z") == Answer()
    appliance.expect_changes(one_shot=[SHOW], user_defined=[SHOW], commands=["reload"])


def test_create_userdefine_rule(appliance):
    assert create(appliance.store(user_defined=[OTHER]), WEEKLY) == Answer()
    appliance.expect_changes(repeat=[WEEKLY], user_defined=[OTHER, WEEKLY], commands=["reload"])


def test_create_userdefine_isweekly_that_does_not_parse(appliance):
    assert create(appliance, WEEKLY, isweekly="1") == Answer()
    appliance.expect_changes(repeat=[WEEKLY], user_defined=[WEEKLY.record(isweekly=False)],
                             commands=["reload"])


@pytest.mark.parametrize("length", ["", "45", "90:00:00"])
def test_create_userdefine_length_that_does_not_parse(appliance, length):
    assert create(appliance, SHOW, duration=length) == Answer()
    appliance.expect_changes(one_shot=[SHOW.stored(duration=1800)], commands=["reload"],
                             user_defined=[SHOW.record(duration=-1, input_duration=length)])


def test_create_userdefine_without_texts(appliance):
    assert create(appliance, SHOW, title=None, description=None) == Answer()
    appliance.expect_changes(one_shot=[SHOW.stored(title="", description="")],
                             user_defined=[SHOW.record(event_name="", text_name="")],
                             commands=["reload"])


@pytest.mark.parametrize("zone, start", [
    ("America/New_York", "2025-07-03T00:15"), ("Europe/Berlin", "2025-07-02T18:15")])
def test_create_userdefine_at_local_time(appliance, zone, start):
    date, time = start.split("T")
    epoch = SHOW.but(date=date, time=time).start
    assert create(appliance, SHOW, zone=zone) == Answer()
    appliance.expect_changes(one_shot=[SHOW.stored(start_time=epoch)], commands=["reload"],
                             user_defined=[SHOW.record(start_time=epoch)])


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
    assert create(appliance, schedule, **changes) == Answer(code)
    appliance.expect_changes(user_defined=[OTHER])
    appliance.store(user_defined=None)
    assert create(appliance, schedule, **changes) == Answer(code)
    appliance.expect_changes(user_defined="null\n")


@pytest.mark.parametrize("user, schedule, line, text", [
    case("no account", "ghost", SHOW, 661, "Failed to KALDUserGet function."),
    case("no uid", "nouid", SHOW, 667, "uid is error."),
    case("rule, no account", "ghost", WEEKLY, 856, "Failed to KALDUserGet function."),
    case("rule, no uid", "nouid", WEEKLY, 862, "uid is error.")])
def test_create_userdefine_without_user(appliance, user, schedule, line, text):
    appliance.store(user_defined=[OTHER])
    assert create(appliance, schedule, user) == Answer(
        100, log=[f"schedule_recording:{line} {text}"])
    appliance.expect_changes(user_defined=[OTHER])


def test_create_userdefine_without_daemon_one_shot_stays_without_record(appliance):
    assert create(appliance, SHOW, under=daemon_fails(appliance, after=0)) == Answer(100)
    appliance.expect_changes(one_shot=[SHOW], user_defined="null\n")


def test_create_userdefine_without_daemon_rule_stays_with_record(appliance):
    assert create(appliance, WEEKLY, under=daemon_fails(appliance, after=0)) == Answer(100)
    appliance.expect_changes(repeat=[WEEKLY], user_defined=[WEEKLY])


def test_create_userdefine_not_saved(appliance):
    appliance.store(user_defined=[SHOW])
    assert create(appliance, SHOW, under=unsaved(appliance, "user_defined")) == Answer(101)


@pytest.mark.parametrize("stored", ["{", "{}", "7"])
def test_create_userdefine_writes_over_no_broken_file(appliance, stored):
    assert create(appliance.store(user_defined=stored), SHOW) == Answer(101)


def test_create_userdefine_tuner_without_a_number_is_0(appliance):
    assert create(appliance, SHOW, tuner="x") == Answer()
    appliance.expect_changes(one_shot=[SHOW], user_defined=[SHOW], commands=["reload"])
