"""create: one one-shot schedule or a list, and the folder that recordings need."""
import pytest
from conftest import FOLDER, Answer, case


def create(appliance, **changes):
    return appliance.request("create", **{"tuner": 0, "id": "7@474", "start_time": 1000} | changes)


def made(start=1000, service=7, frequency=474):
    """The record of a schedule that no user-defined record describes."""
    record = {"start_time": start, "service_id": service, "status": 4, "duration": 1800,
              "channel_name": "", "title": "", "description": "", "uid": "1024"}
    return record | ({} if frequency is None else {"frequency": frequency})


@pytest.mark.parametrize("changes, record", [
    ({}, made()), ({"id": "7"}, made(frequency=None)), ({"id": "7@0"}, made(frequency=0)),
    ({"id": "0@1"}, made(service=0, frequency=1)), ({"id": "007@0474"}, made()),
    ({"start_time": 2**31 - 1}, made(2**31 - 1)),
    *(({"tuner": text}, made()) for text in ("", "0x", "../../etc/passwd", "0\0/../x", "00"))],
    ids=str)
def test_create(appliance, changes, record):
    others = [made(1000, 8), made(9)]
    assert create(appliance.store(one_shot=others), **changes) == Answer()
    appliance.expect_changes(one_shot=[*others, record], commands=["reload"])


@pytest.mark.parametrize("channels, starts, code, after", [
    case("surplus start", "7@474,8", "1000,2000,3000", None, [made(), made(2000, 8, None)]),
    case("the second fails", "7@474,8,9", "1000,x,3000", 101, [made(), made(3000, 9, None)]),
    case("the last code counts", "7@474,x,7@474", "1000,5,1000", 401, [made()])])
def test_create_list_goes_on_after_failure(appliance, channels, starts, code, after):
    appliance.store(one_shot="null")
    assert create(appliance, id=channels, start_time=starts) == Answer(code)
    appliance.expect_changes(one_shot=after, **{} if code else {"commands": ["reload"]})


MISSING = FOLDER | {"subpath": "x"}


@pytest.mark.parametrize("folders, code", [
    ([MISSING, FOLDER], None), ([7, {"section": 1}, FOLDER, MISSING], None),
    ([FOLDER | {"section": "TV_Record"}], None), (None, 406), ("[", 406), ({"a": FOLDER}, 406),
    ([MISSING], 406), ([FOLDER | {"section": "music"}], 406), ([FOLDER | {"share": []}], 406),
    ([FOLDER | {"share": "../etc", "subpath": "passwd"}], 406)], ids=str)
def test_create_needs_a_recording_folder(appliance, folders, code):
    assert create(appliance.store(folders=folders)) == Answer(code)
    if code is None:
        appliance.expect_changes(one_shot=[made()], commands=["reload"])
