"""delete_userdefine: schedules of both kinds, and their records."""
import pytest
from conftest import Answer, case
from schedules import SHOW, STOP_SHOW, WEEKLY

OTHERS = [SHOW.record(tuner=1), {"tuner": 0, "event_name": "Without a start"}]


@pytest.fixture
def both(appliance):
    """An appliance with a one-shot schedule and a rule, and records that are not theirs."""
    return appliance.store(one_shot=[SHOW], repeat=[WEEKLY], user_defined=[SHOW, WEEKLY, *OTHERS])


def delete(appliance, *starts):
    return appliance.request("delete_userdefine", tuner=0, id=",".join(map(str, starts)))


@pytest.mark.parametrize("starts, code, changes", [
    case("both kinds, one reload", (SHOW.start, WEEKLY.start), None, {
        "one_shot": [], "repeat": [], "user_defined": OTHERS, "commands": [STOP_SHOW, "reload"]}),
    *(case(name, starts, code, {"one_shot": [], "user_defined": [WEEKLY, *OTHERS],
                                "commands": [STOP_SHOW, "reload"]}) for name, starts, code in [
        ("unknown start", (5, SHOW.start), None), ("no number", ("x", SHOW.start), None),
        ("named twice", (SHOW.start, SHOW.start), 402)]),
    case("none stored", (5, "x"), None, {
        "user_defined": [SHOW, WEEKLY, *OTHERS], "commands": ["reload"]})])
def test_delete_userdefine(both, starts, code, changes):
    assert delete(both, *starts) == Answer(code)
    both.expect_changes(**changes)


@pytest.mark.parametrize("one_shot, code", [(None, 402), ("[", 403)])
def test_delete_userdefine_schedule_not_deleted_record_goes(both, one_shot, code):
    both.store(one_shot=one_shot, repeat=None, user_defined=[SHOW, WEEKLY])
    log = [*([f"cannot load {both.path('one_shot')}: it is not JSON"] if one_shot else []),
           f"schedule_recording:1032 Fail to load file {both.path('repeat')}"]
    assert delete(both, SHOW.start, WEEKLY.start) == Answer(code, log=log)
    both.expect_changes(user_defined="null\n", commands=["reload"])


@pytest.mark.parametrize("stored", [None, "[", "{}"])
def test_delete_userdefine_without_records(both, stored):
    assert delete(both.store(user_defined=stored), SHOW.start) == Answer()
    both.expect_changes(commands=["reload"])
