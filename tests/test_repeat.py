"""create_repeat, edit_repeat, delete_repeat and getinfo_repeat: rules of repeated recordings."""
import pytest
from conftest import Answer, case
from faults import daemon_fails, not_loaded, not_saved, not_told, unsaved

SUNDAY = 1000000000  # 2001-09-09 01:46:40 in UTC
DAYS = {"isweekly": True, "weekdaystatus": "1,0,0,0,0,0,0", "end_date": "2030-01-01"}
OTHER = {"id": 8, "start_time": SUNDAY, "foreign": [1], "isweekly": None, "weekdaystatus": "x"}
BOTH = pytest.mark.parametrize("method", ["create_repeat", "edit_repeat"])


def ask(appliance, method, user="admin", zone="UTC", under=(), **changes):
    return appliance.request(method, user, zone=zone, under=under, **{
        "tuner": 0, "id": "7@474" if method == "create_repeat" else "8@1", "start_time": SUNDAY,
        **DAYS, "isweekly": "true"} | changes)


def made(**changes):
    return {"id": 7, "frequency": 474, "start_time": SUNDAY, "lastcreatetime": 0, "status": 19,
            "channel_name": "", "title": "", "description": "", "duration": 1800, "uid": "1024",
            "start_date": "2001-09-09", **DAYS} | changes


@pytest.fixture
def rules(appliance):
    """An appliance with one rule."""
    return appliance.store(repeat=[OTHER])


@BOTH
@pytest.mark.parametrize("changes", [
    {"tuner": None}, {"start_time": None}, {"start_time": -1}, {"start_time": "x"},
    {"start_time": 2**31}, {"end_date": None}, {"weekdaystatus": None}, {"weekdaystatus": ",1"},
    {"weekdaystatus": "0,1,1,1,1,1,1"}, {"weekdaystatus": "2,1,1,1,1,1,1"},
    {"weekdaystatus": "4294967297,0,0,0,0,0,0"}], ids=str)
def test_repeat_bad_parameter(rules, method, changes):
    assert ask(rules, method, **changes) == Answer(101)


@pytest.mark.sloppy
@pytest.mark.parametrize("zone, days, date", [
    ("America/New_York", "0,0,0,0,0,0,01x", "2001-09-08"), ("Asia/Kolkata", "1", "2001-09-09")])
def test_create_repeat_on_the_local_weekday(rules, zone, days, date):
    assert ask(rules, "create_repeat", zone=zone, weekdaystatus=days) == Answer()
    rules.expect_changes(repeat=[OTHER, made(weekdaystatus=days, start_date=date)],
                         commands=["reload"])


@pytest.mark.sloppy
@pytest.mark.parametrize("text, stored", [
    (None, True), ("x", True), ("FALSE", False), ("true", True)])
def test_repeat_isweekly(rules, text, stored):
    """What does not parse is true for a new rule and an error for an old one."""
    assert ask(rules, "create_repeat", isweekly=text) == Answer()
    rules.expect_changes(repeat=[OTHER, made(isweekly=stored)], commands=["reload"])
    is_bad = text in (None, "x")
    rules.store(repeat=[OTHER])
    assert ask(rules, "edit_repeat", "nouid", isweekly=text) == Answer(101 if is_bad else None)
    rules.expect_changes(**{} if is_bad else {
        "repeat": [OTHER | DAYS | {"isweekly": stored}], "commands": ["reload"]})


@pytest.mark.parametrize("method, changes, code", [
    case("create_repeat of one stored already", "create_repeat", {"id": "8@474"}, 401),
    case("create_repeat at 0 is no start", "create_repeat",
         {"start_time": 0, "weekdaystatus": "0,0,0,0,1,0,0"}, 101),
    case("edit_repeat of none stored", "edit_repeat", {"id": "7"}, 402),
    case("edit_repeat without id", "edit_repeat", {"id": None}, 101)])
def test_repeat_refused_by_store(rules, method, changes, code):
    assert ask(rules, method, **changes) == Answer(code)


@BOTH
def test_repeat_not_loaded_or_not_saved(rules, method):
    assert ask(rules, method, under=unsaved(rules, "repeat")) == Answer(
        403, log=not_saved(rules, "repeat"))
    for text in "[", "{}":
        assert ask(rules.store(repeat=text), method) == Answer(
            403, log=not_loaded(rules, "repeat", text))


@pytest.mark.parametrize("user, channel, code, log", [
    ("ghost", "x", 101, []), ("admin", "7", 406, []),
    ("ghost", "7", 100, ["schedule_recording:856 Failed to KALDUserGet function."]),
    ("nouid", "7", 100, ["schedule_recording:862 uid is error."])])
def test_create_repeat_tests_channel_then_user_then_folder(rules, user, channel, code, log):
    rules.store(folders=[])
    assert ask(rules, "create_repeat", user, id=channel) == Answer(code, log=log)


@pytest.mark.parametrize("method, after", [
    ("create_repeat", [OTHER, made()]), ("edit_repeat", [OTHER | DAYS])])
def test_repeat_without_daemon_stays_stored(rules, method, after):
    assert ask(rules, method, under=daemon_fails(rules, after=0)) == Answer(
        100, log=not_told(rules))
    rules.expect_changes(repeat=after)


A = {"id": 7, "frequency": 474, "start_time": 1000, "foreign": {}}
B = {"id": 7, "frequency": "5", "start_time": 1000, "title": "B", "isweekly": 1, "end_date": None}
C = {"id": 8, "start_time": 2000}


@pytest.fixture
def three(appliance):
    """An appliance with three rules, the first two of one key."""
    return appliance.store(repeat=[A, B, C])


@pytest.mark.sloppy
@pytest.mark.parametrize("starts, channels, left", [
    case("both of a key", "1000", "7@1", [C]), case("all", "2000,1000,1000", "8,7,9", []),
    case("paired by position", "1000,2000", "8,7", [A, B, C]),
    case("other start", "1001", "7", [A, B, C]),
    case("names beyond 32 bits", "4294968296", "7", [A, B, C])])
def test_delete_repeat(three, starts, channels, left):
    assert three.request("delete_repeat", tuner=0, id=starts, channel_id=channels) == Answer()
    three.expect_changes(repeat=left)


@pytest.mark.parametrize("changes", [
    {"tuner": None}, {"id": None}, {"channel_id": ""}, {"id": "1,2"}, {"channel_id": "7,8"}],
    ids=str)
def test_delete_repeat_bad_parameter(three, changes):
    parameters = {"tuner": 0, "id": 1000, "channel_id": 7} | changes
    assert three.request("delete_repeat", **parameters) == Answer(101)


@pytest.mark.parametrize("stored", [None, "[", "{}"])
@pytest.mark.parametrize("method, line", [("delete_repeat", 1032), ("getinfo_repeat", 926)])
def test_repeat_file_not_loaded(appliance, method, line, stored):
    appliance.store(repeat_of_1=stored)
    log = f"schedule_recording:{line} Fail to load file {appliance.path('repeat_of_1')}"
    name = "channel_id" if method == "delete_repeat" else "start_time"
    assert appliance.request(method, tuner=1, id=7, **{name: 7}) == Answer(100, log=[log])


def test_delete_repeat_from_file_of_null_or_not_saved(three):
    log = ("schedule_recording:1051 Fail to save repeat schedule json. Path is "
           f"{three.path('repeat')}")
    answer = three.request("delete_repeat", tuner=0, id=1000, channel_id=7,
                           under=unsaved(three, "repeat"))
    assert answer == Answer(100, log=[log])
    three.store(repeat="null")
    assert three.request("delete_repeat", tuner=0, id=7, channel_id=7) == Answer()
    three.expect_changes(repeat=[])


COPIED = ("channel_name", "start_time", "start_date", "duration", "title", "description",
          "isweekly", "weekdaystatus", "end_date")
ODD = {"id": 7, "start_time": 1000, "duration": 1.5, "title": {}, "isweekly": [True, {}],
       "channel_name": 2**64 - 1, "description": -2**63, "start_date": False, "end_date": "\0"}


@pytest.mark.parametrize("stored, channel", [
    case("first of a key", [C, A, B], "7@474"), case("frequency of text", [B, A], "7"),
    case("any type", [ODD], "7")])
def test_getinfo_repeat(appliance, stored, channel):
    record = next(record for record in stored if record["id"] == 7)
    appliance.store(repeat=stored)
    for asked in "7", "7@3":
        answer = appliance.request("getinfo_repeat", tuner=0, start_time=1000, id=asked)
        assert answer.data == {"id": channel} | {name: record.get(name) for name in COPIED}


@pytest.mark.parametrize("changes, code", [
    ({"tuner": None}, 101), ({"start_time": None}, 101), ({"start_time": "1x"}, 101),
    ({"start_time": -1}, 101), ({"id": None}, 101), ({"id": "x"}, 101),
    ({"id": 9}, None), pytest.param({"start_time": 0}, None, marks=pytest.mark.sloppy)], ids=str)
def test_getinfo_repeat_of_none(three, changes, code):
    parameters = {"tuner": 0, "start_time": 1000, "id": "7"} | changes
    assert three.request("getinfo_repeat", **parameters) == Answer(code)
