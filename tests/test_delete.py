"""delete, which also stops a recording, and delete_passed."""
import pytest
from conftest import NOW, Answer
from schedules import epoch

SEVEN = {"start_time": 1000, "service_id": "7", "duration": 4000}
EIGHT = {"start_time": 1000, "service_id": 8, "duration": 4001}


def delete(appliance, **changes):
    return appliance.request("delete", **{"tuner": 0, "id": 1000, "channel_id": "8"} | changes)


@pytest.mark.parametrize("channel, stored, left, stopped", [
    ("8", [SEVEN, EIGHT], [SEVEN], "0 8"), ("7", [SEVEN, EIGHT], [EIGHT], "0 7"),
    ("7@9", [SEVEN, EIGHT], [EIGHT], "9 7"), ("8", [EIGHT, EIGHT], [], "0 8")])
def test_delete_stops_recording(appliance, channel, stored, left, stopped):
    assert delete(appliance.store(one_shot=stored), channel_id=channel) == Answer()
    appliance.expect_changes(one_shot=left, commands=[f"stop 0 1000 {stopped}", "reload"])


@pytest.mark.parametrize("channel", [None, "x", "8"])
def test_delete_without_id_stops_tuner(appliance, channel):
    appliance.store(one_shot=[SEVEN, EIGHT])
    assert delete(appliance, id=None, channel_id=channel, tuner=3) == Answer()
    appliance.expect_changes(commands=["stop 3 -1 -1 -1", "reload"])


NOON = epoch(NOW)
PASSED = [{"start_time": NOON - 60, "duration": 60}, {"start_time": -2**31, "duration": 1},
          {"start_time": NOON - 1800, "duration": 0}, {"start_time": NOON - 1800}]
KEPT = [{"start_time": NOON - 60, "duration": 61}, {"start_time": NOON - 1799, "duration": -5},
        {"start_time": 2**31 - 1, "duration": 2**31 - 1}, {"start_time": "5"}, {"duration": 5}]


def test_delete_passed(appliance):
    appliance.store(one_shot=[*PASSED, *KEPT], one_shot_of_1=PASSED)
    assert appliance.request("delete_passed", tuner=0) == Answer()
    appliance.expect_changes(one_shot=KEPT)
    for nothing_passed in KEPT, None:
        appliance.store(one_shot=nothing_passed)
        assert appliance.request("delete_passed", tuner=0) == Answer()
