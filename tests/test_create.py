"""create: one one-shot schedule or a list, and the folder that recordings need."""
import pytest
from conftest import FOLDER, Answer, case
from faults import daemon_fails, not_loaded, not_saved, not_told, unsaved


def create(appliance, user="admin", under=(), **changes):
    return appliance.request("create", user, under=under, **{
        "tuner": 0, "id": "7@474", "start_time": 1000} | changes)


def made(start=1000, service=7, frequency=474, **changes):
    """The record of a schedule that no user-defined record describes."""
    record = {"start_time": start, "service_id": service, "status": 4, "duration": 1800,
              "channel_name": "", "title": "", "description": "", "uid": "1024"}
    return record | ({} if frequency is None else {"frequency": frequency}) | changes


@pytest.mark.parametrize("changes", [
    {"tuner": None}, {"id": None}, {"id": "x"}, {"id": "0"}, {"id": "0@0"}, {"id": "7@"},
    {"id": "+7"}, {"id": "7@4@4"}, {"id": 2**31}, {"start_time": None}, {"start_time": "1,2"},
    {"start_time": "x"}, {"start_time": 0}, {"start_time": 2**31}], ids=str)
def test_create_bad_parameter(appliance, changes):
    assert create(appliance, **changes) == Answer(101)


@pytest.mark.parametrize("changes, record", [
    ({}, made()), ({"id": "7"}, made(frequency=None)), ({"id": "7@0"}, made(frequency=0)),
    ({"id": "0@474"}, made(service=0)), ({"id": "007@0474"}, made()),
    ({"start_time": 2**31 - 1}, made(2**31 - 1))], ids=str)
def test_create(appliance, changes, record):
    for stored in "null", "[]", [made(1000, 8)], [made(9)]:
        assert create(appliance.store(one_shot=stored), **changes) == Answer()
        before = stored if isinstance(stored, list) else []
        appliance.expect_changes(one_shot=[*before, record], commands=["reload"])


@pytest.mark.parametrize("duration, stored", [(60, 60), (0, 1800), (-1, 1800)])
def test_create_takes_details_of_user_defined_record(appliance, duration, stored):
    record = {"start_time": 1000, "tuner": 0, "channel_name": "C", "event_name": "E",
              "text_name": "T", "duration": duration}
    appliance.store(user_defined=[record | {"tuner": 1, "event_name": "other"}, record])
    assert create(appliance) == Answer()
    appliance.expect_changes(commands=["reload"], one_shot=[
        made(duration=stored, channel_name="C", title="E", description="T")])


@pytest.mark.parametrize("stored, code", [
    ([{"start_time": 1000, "service_id": "7"}], 401), ("[", 403), ("{}", 403)], ids=str)
def test_create_refused_by_store(appliance, stored, code):
    log = [] if code == 401 else not_loaded(appliance, "one_shot", stored)
    assert create(appliance.store(one_shot=stored)) == Answer(code, log=log)


def test_create_not_saved(appliance):
    assert create(appliance, under=unsaved(appliance, "one_shot")) == Answer(
        403, log=not_saved(appliance, "one_shot"))
    appliance.path("one_shot").parent.rmdir()
    assert create(appliance) == Answer(
        403, log=not_saved(appliance, "one_shot", "No such file or directory"))


@pytest.mark.parametrize("user, log", [
    ("ghost", "schedule_recording:661 Failed to KALDUserGet function."),
    ("nouid", "schedule_recording:667 uid is error.")])
def test_create_without_user(appliance, user, log):
    assert create(appliance, user) == Answer(100, log=[log])
    assert create(appliance.store(folders=[]), user) == Answer(406)


def test_create_without_daemon_stays_stored(appliance):
    assert create(appliance, under=daemon_fails(appliance, after=0)) == Answer(
        100, log=not_told(appliance))
    appliance.expect_changes(one_shot=[made()])


@pytest.mark.parametrize("channels, starts, code, after", [
    case("surplus start", "7@474,8", "1000,2000,3000", None, [made(), made(2000, 8, None)]),
    case("fewer starts", "7@474,8", "1000", 101, [made()]),
    case("the second fails", "7@474,8,9", "1000,x,3000", 101, [made(), made(3000, 9, None)]),
    case("the last code counts", "7@474,x,7@474", "1000,5,1000", 401, [made()],
         marks=pytest.mark.sloppy)])
def test_create_list_goes_on_after_failure(appliance, channels, starts, code, after):
    assert create(appliance, id=channels, start_time=starts) == Answer(code)
    appliance.expect_changes(one_shot=after, **{} if code else {"commands": ["reload"]})


MISSING, MUSIC = FOLDER | {"subpath": "x"}, FOLDER | {"section": "music"}
A_FILE, NO_SHARE = FOLDER | {"share": "../etc", "subpath": "passwd"}, FOLDER | {"share": []}


@pytest.mark.parametrize("folders", [
    [FOLDER | {"section": "TV_Record"}], [MISSING, FOLDER], [FOLDER, MISSING],
    [7, None, {}, {"section": 1}, FOLDER]], ids=str)
def test_create_with_recording_folder(appliance, folders):
    assert create(appliance.store(folders=folders)) == Answer()
    appliance.expect_changes(one_shot=[made()], commands=["reload"])


@pytest.mark.parametrize("folders", [
    None, "[", [], {"a": FOLDER}, FOLDER, [MISSING], [A_FILE], [MUSIC], [NO_SHARE, 7]], ids=str)
def test_create_without_recording_folder(appliance, folders):
    assert create(appliance.store(folders=folders)) == Answer(406)
