"""delete_userdefine: schedules of both kinds, and their records."""
import pytest
from conftest import Answer, case
from faults import daemon_fails
from schedules import Schedule

SHOW = Schedule("2025-07-02", "20:15", "01:00", "Show", "7@474")
WEEKLY = Schedule("2025-07-03", "18:00", "00:30", "Weekly", "9@500", "0,0,0,0,1,0,0", "2025-12-31")
ON_1 = SHOW.but(tuner=1)
STOP = f"stop 0 {SHOW.start} 474 7"


@pytest.fixture
def both(appliance):
    """An appliance with a one-shot schedule and a rule, and a record of another tuner."""
    return appliance.store(one_shot=[SHOW], repeat=[WEEKLY], user_defined=[SHOW, WEEKLY, ON_1])


def delete(appliance, *starts, under=(), **changes):
    return appliance.request("delete_userdefine", under=under, **{
        "tuner": 0, "id": ",".join(map(str, starts))} | changes)


@pytest.mark.parametrize("changes", [{"tuner": None}, {"id": ""}, {"id": None}], ids=str)
def test_delete_userdefine_bad_parameter(both, changes):
    assert delete(both, SHOW.start, **changes) == Answer(101)


def test_delete_userdefine_both_kinds_with_one_reload(both):
    assert delete(both, SHOW.start, WEEKLY.start) == Answer()
    both.expect_changes(one_shot=[], repeat=[], user_defined=[ON_1], commands=[STOP, "reload"])


@pytest.mark.parametrize("starts, code", [
    case("unknown start", (5, SHOW.start), None), case("no number", ("x", SHOW.start), None),
    case("named twice", (SHOW.start, SHOW.start), 402)])
def test_delete_userdefine_goes_on(both, starts, code):
    assert delete(both, *starts) == Answer(code)
    both.expect_changes(one_shot=[], user_defined=[WEEKLY, ON_1], commands=[STOP, "reload"])


def test_delete_userdefine_none_named(both):
    assert delete(both, 5, "x") == Answer()
    both.expect_changes(user_defined=[SHOW, WEEKLY, ON_1], commands=["reload"])


def test_delete_userdefine_last_record_leaves_null(both):
    assert delete(both.store(user_defined=[SHOW]), SHOW.start) == Answer()
    both.expect_changes(one_shot=[], user_defined="null\n", commands=[STOP, "reload"])


@pytest.mark.parametrize("one_shot, code", [(None, 402), ("[", 403)])
def test_delete_userdefine_schedule_not_deleted_record_goes(both, one_shot, code):
    both.store(one_shot=one_shot, repeat=None)
    log = f"schedule_recording:1032 Fail to load file {both.path('repeat')}"
    assert delete(both, SHOW.start, WEEKLY.start) == Answer(code, log=[log])
    both.expect_changes(user_defined=[ON_1], commands=["reload"])
    assert delete(both.store(user_defined=[WEEKLY]), WEEKLY.start) == Answer(100, log=[log])
    both.expect_changes(user_defined="null\n", commands=["reload"])


def test_delete_userdefine_without_daemon(both):
    assert delete(both, WEEKLY.start, under=daemon_fails(both, after=0)) == Answer(100)
    both.expect_changes(repeat=[], user_defined=[SHOW, ON_1])


@pytest.mark.parametrize("stored", [None, "[", "{}"])
def test_delete_userdefine_without_records(both, stored):
    assert delete(both.store(user_defined=stored), SHOW.start) == Answer()
    both.expect_changes(commands=["reload"])


def test_delete_userdefine_negative_tuner_keeps_record(both):
    both.store(user_defined=[SHOW.record(tuner=-1)])
    assert delete(both, SHOW.start, tuner=-1) == Answer(402)
    both.expect_changes(commands=["reload"])
