"""delete, which also stops a recording, and delete_passed."""
import pytest
from conftest import Answer, case
from faults import daemon_fails, unsaved

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


@pytest.mark.parametrize("channel, left, frequency, service", [
    ("8", SEVEN, 0, 8), ("7", EIGHT, 0, 7), ("7@9", EIGHT, 9, 7)])
def test_delete_stops_recording(two, channel, left, frequency, service):
    assert delete(two, channel_id=channel) == Answer()
    two.expect_changes(one_shot=[left],
                       commands=[f"stop 0 1000 {frequency} {service}", "reload"])


def test_delete_last_leaves_empty_array(appliance):
    assert delete(appliance.store(one_shot=[EIGHT, EIGHT])) == Answer()
    appliance.expect_changes(one_shot=[], commands=["stop 0 1000 0 8", "reload"])


@pytest.mark.parametrize("channel", [None, "x", "8"])
def test_delete_without_id_stops_tuner(two, channel):
    assert delete(two, id=None, channel_id=channel, tuner=3) == Answer()
    two.expect_changes(commands=["stop 3 -1 -1 -1", "reload"])


@pytest.mark.parametrize("after, commands", [(0, {}), (1, {"commands": ["stop 0 1000 0 8"]})])
def test_delete_without_daemon_stays_deleted(two, after, commands):
    assert delete(two, under=daemon_fails(two, after)) == Answer(100)
    two.expect_changes(one_shot=[SEVEN], **commands)


def test_delete_without_id_or_daemon(two):
    assert delete(two, id=None, under=daemon_fails(two, after=0)) == Answer(100)


@pytest.mark.parametrize("stored", ["[", "{}"])
def test_delete_from_broken_file(appliance, stored):
    assert delete(appliance.store(one_shot=stored)) == Answer(403)


def test_delete_not_saved(two):
    assert delete(two, under=unsaved(two, "one_shot")) == Answer(403)


def ends(start, duration, **more):
    return {"start_time": start, "duration": duration, "service_id": 7} | more


NOW = 1751371200  # of the tests


@pytest.mark.parametrize("record", [
    case("ends now", ends(NOW - 60, 60)), case("long ago", ends(0, 1)),
    case("duration beyond 32 bits of time", ends(-2**31, 1)),
    case("half an hour without a duration", ends(NOW - 1800, 0)),
    case("duration of text", ends(NOW - 1800, "x"))])
def test_delete_passed(appliance, record):
    running = ends(NOW - 60, 61)
    appliance.store(one_shot=[record, running], one_shot_of_1=[record])
    assert appliance.request("delete_passed", tuner=0) == Answer()
    appliance.expect_changes(one_shot=[running])


@pytest.mark.parametrize("record", [
    case("runs", ends(NOW - 60, 61)), case("to come", ends(2**31 - 1, 2**31 - 1)),
    case("half an hour", ends(NOW - 1799, -5)),
    case("no start", {"duration": 5}),
    case("start of text", ends("5", 5))])
def test_delete_passed_keeps(appliance, record):
    appliance.store(one_shot=[record])
    assert appliance.request("delete_passed", tuner=0) == Answer()


@pytest.mark.parametrize("tuner, stored, code", [
    case("no tuner", None, [SEVEN], 101), case("broken file", 0, "[", 403),
    case("no array", 0, "{}", 403), case("no file", 0, None, None)])
def test_delete_passed_refused(appliance, tuner, stored, code):
    appliance.store(one_shot=stored)
    assert appliance.request("delete_passed", tuner=tuner) == Answer(code)
