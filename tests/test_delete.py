"""delete, which also stops a recording, and delete_passed."""
import pytest
from conftest import NOW, Answer
from faults import daemon_fails, not_loaded, not_saved, not_told, unsaved
from schedules import epoch

SEVEN = {"start_time": 1000, "service_id": "7", "duration": 4000}
EIGHT = {"start_time": 1000, "service_id": 8, "duration": 4001}


@pytest.fixture
def two(appliance):
    """An appliance with two schedules of one start."""
    return appliance.store(one_shot=[SEVEN, EIGHT])


def delete(appliance, under=(), **changes):
    return appliance.request("delete", under=under, **{
        "tuner": 0, "id": 1000, "channel_id": "8"} | changes)


@pytest.mark.parametrize("changes, code", [
    ({"tuner": None}, 101), ({"channel_id": None}, 101), ({"channel_id": "x"}, 101),
    ({"id": "x"}, 101), ({"id": 1001}, 402), ({"channel_id": 9}, 402), ({"tuner": 1}, 402)],
    ids=str)
def test_delete_refused(two, changes, code):
    assert delete(two, **changes) == Answer(code)


@pytest.mark.parametrize("channel, stored, left, stopped", [
    ("8", [SEVEN, EIGHT], [SEVEN], "0 8"), ("7", [SEVEN, EIGHT], [EIGHT], "0 7"),
    ("7@9", [SEVEN, EIGHT], [EIGHT], "9 7"), ("8", [EIGHT, EIGHT], [], "0 8")])
def test_delete_stops_recording(appliance, channel, stored, left, stopped):
    assert delete(appliance.store(one_shot=stored), channel_id=channel) == Answer()
    appliance.expect_changes(one_shot=left, commands=[f"stop 0 1000 {stopped}", "reload"])


@pytest.mark.sloppy
@pytest.mark.parametrize("channel", [None, "x", "8"])
def test_delete_without_id_stops_tuner(two, channel):
    assert delete(two, id=None, channel_id=channel, tuner=3) == Answer()
    two.expect_changes(commands=["stop 3 -1 -1 -1", "reload"])


@pytest.mark.parametrize("after, commands", [(0, {}), (1, {"commands": ["stop 0 1000 0 8"]})])
def test_delete_without_daemon_stays_deleted(two, after, commands):
    assert delete(two, under=daemon_fails(two, after)) == Answer(100, log=not_told(two))
    two.expect_changes(one_shot=[SEVEN], **commands)
    assert delete(two, id=None, under=daemon_fails(two, after=0)).code == 100


def test_delete_from_broken_file(two):
    assert delete(two, under=unsaved(two, "one_shot")) == Answer(
        403, log=not_saved(two, "one_shot"))
    for stored in "[", "{}":
        answer = Answer(403, log=not_loaded(two, "one_shot", stored))
        assert delete(two.store(one_shot=stored)) == answer
        assert two.request("delete_passed", tuner=0) == answer


def ends(after, duration, **more):
    """A schedule whose start and duration end that long after the clock of the tests."""
    return {"start_time": epoch(NOW) - duration + after, "duration": duration} | more


HALF_AN_HOUR = epoch(NOW) - 1800


@pytest.mark.parametrize("record", [
    ends(0, 60), ends(-10**9, 1), {"start_time": -2**31, "duration": 1},
    {"start_time": HALF_AN_HOUR, "duration": 0}, {"start_time": HALF_AN_HOUR, "duration": "x"}],
    ids=str)
def test_delete_passed(appliance, record):
    appliance.store(one_shot=[record, ends(1, 61)], one_shot_of_1=[record])
    assert appliance.request("delete_passed", tuner=0) == Answer()
    appliance.expect_changes(one_shot=[ends(1, 61)])


@pytest.mark.parametrize("record", [
    ends(1, 61), {"start_time": 2**31 - 1, "duration": 2**31 - 1}, {"duration": 5},
    {"start_time": HALF_AN_HOUR + 1, "duration": -5}, {"start_time": "5", "duration": 5}], ids=str)
def test_delete_passed_keeps(appliance, record):
    appliance.store(one_shot=[record])
    assert appliance.request("delete_passed", tuner=0) == Answer()


def test_delete_passed_without_tuner_or_file(appliance):
    assert appliance.store(one_shot=[SEVEN]).request("delete_passed") == Answer(101)
    assert appliance.store(one_shot=None).request("delete_passed", tuner=0) == Answer()
