"""create_repeat, edit_repeat, delete_repeat and getinfo_repeat: rules of repeated recordings."""
import pytest
from conftest import Answer, case
from schedules import WEEKLY

OTHER = {"id": 8, "start_time": WEEKLY.start, "foreign": [1], "isweekly": None, "end_date": "x"}
DAYS = {"weekdaystatus": WEEKLY.days, "end_date": WEEKLY.end_date}


def ask(appliance, method, **changes):
    return appliance.request(method, **{
        "tuner": 0, "id": WEEKLY.channel, "start_time": WEEKLY.start, "isweekly": "true",
        **DAYS} | changes)


@pytest.mark.parametrize("changes, stored", [
    ({}, {}), ({"isweekly": None}, {}), ({"isweekly": "x"}, {}),
    ({"isweekly": "FALSE"}, {"isweekly": False}),
    ({"zone": "Asia/Tokyo", "weekdaystatus": "0,0,0,0,0,01x"},
     {"weekdaystatus": "0,0,0,0,0,01x", "start_date": "2033-05-20"})], ids=str)
def test_create_repeat(appliance, changes, stored):
    assert ask(appliance.store(repeat=[OTHER]), "create_repeat", **changes) == Answer()
    appliance.expect_changes(commands=["reload"], repeat=[OTHER, WEEKLY.stored(
        channel_name="", title="", description="", **stored)])


def test_edit_repeat(appliance):
    appliance.store(repeat=[OTHER])
    assert ask(appliance, "edit_repeat", user="nouid", id="8@1", isweekly="FALSE") == Answer()
    appliance.expect_changes(repeat=[OTHER | DAYS | {"isweekly": False}], commands=["reload"])


A = {"id": 7, "frequency": 474, "start_time": 1000, "foreign": {}}
B = {"id": 7, "frequency": "5", "start_time": 1000, "title": "B", "isweekly": 1, "end_date": None}
C = {"id": 8, "start_time": 2000}


@pytest.mark.parametrize("starts, channels, left", [
    case("both of a key", "1000", "7@1", [C]), case("all", "2000,1000,1000", "8,7,9", []),
    case("paired by position", "1000,2000", "8,7", [A, B, C]),
    case("names beyond 32 bits", "4294968296", "7", [A, B, C])])
def test_delete_repeat(appliance, starts, channels, left):
    for stored, expected in ([A, B, C], left), ("null", []):
        appliance.store(repeat=stored)
        answer = appliance.request("delete_repeat", tuner=0, id=starts, channel_id=channels)
        assert answer == Answer()
        appliance.expect_changes(repeat=expected)


@pytest.mark.parametrize("stored, record, channel", [
    case("first of a key", [C, A, B], A, "7@474"), case("frequency of text", [B, A], B, "7")])
def test_getinfo_repeat(appliance, stored, record, channel):
    copied = ("channel_name", "start_time", "start_date", "duration", "title", "description",
              "isweekly", "weekdaystatus", "end_date")
    info = {"id": channel} | {name: record.get(name) for name in copied}
    appliance.store(repeat=stored)
    for start, asked, data in (1000, 7, info), (1000, "7@3", info), (1000, 9, None), (0, 7, None):
        answer = appliance.request("getinfo_repeat", tuner=0, start_time=start, id=asked)
        assert answer == Answer(data=data)
