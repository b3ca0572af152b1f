"""list: merged, sorted, paged and made ready for display."""
import pytest
from conftest import Answer, case

EMPTY = {"schedules": [], "start": 0, "total": 0}
DETAILS = {"duration": 9, "channel_name": "C", "title": "T", "description": "D"}
NO_DETAILS = {"duration": 0, "channel_name": "", "title": "", "description": ""}


def titled(**starts):
    return [{"title": title, "start_time": start} for title, start in starts.items()]


ONE_SHOTS, RULES = titled(a=10, c=30, e=50, g=70), titled(b=20, d=40, f=60)
BOTH = {"one_shot": ONE_SHOTS, "repeat": RULES}


@pytest.mark.parametrize("files, parameters, titles, start, total", [
    case("rules alone", {"repeat": RULES}, {}, "bdf", 0, 3),
    case("rules in no array", {"one_shot": ONE_SHOTS, "repeat": "{}"}, {}, "aceg", 0, 4),
    case("rules that do not parse", {"one_shot": ONE_SHOTS, "repeat": "[{}"}, {}, "aceg", 0, 4),
    case("no limit: all from any start", BOTH, {"start": 7}, "abcdefg", 7, 7),
    case("page", BOTH, {"start": 2, "limit": 2}, "cd", 2, 7),
    case("last page", BOTH, {"start": 5, "limit": 10}, "fg", 5, 7),
    case("limit 1", BOTH, {"start": 1, "limit": 1}, "b", 1, 7),
    case("limit 0 is 1", BOTH, {"start": 1, "limit": 0}, "b", 1, 7),
    case("limit -5 is 1", BOTH, {"limit": -5}, "a", 0, 7),
    case("limit with a sign", BOTH, {"limit": "+2"}, "ab", 0, 7),
    case("tuner without a number is 0", BOTH, {"tuner": "x"}, "abcdefg", 0, 7),
    case("start before 1970", {"one_shot": titled(a=10, b=-1)}, {}, "ba", 0, 2),
    case("equal starts: last in first, rules before one-shots",
         {"one_shot": titled(a=10, b=10, c=5), "repeat": titled(d=10, e=10)}, {}, "cedba", 0, 5),
])
def test_list_page(appliance, files, parameters, titles, start, total):
    answer = appliance.store(**files).request("list", **parameters)
    assert answer.code is None
    assert "".join(schedule["title"] for schedule in answer.data["schedules"]) == titles
    assert (answer.data["start"], answer.data["total"]) == (start, total)


@pytest.mark.parametrize("files, parameters, code", [
    case("no files", {}, {}, None),
    case("files of null", {"one_shot": "null", "repeat": "null"}, {}, None),
    case("page behind the last", BOTH, {"start": 7, "limit": 2}, None),
    case("another tuner", BOTH, {"tuner": 1}, None),
    case("start beyond the last", BOTH, {"start": 8}, 101),
    case("start beyond nothing", {}, {"start": 1}, 101),
    case("negative start", BOTH, {"start": -1}, 101),
    case("start is no number", BOTH, {"start": "x"}, 101),
    case("limit is no number", BOTH, {"limit": ""}, 101),
    case("one-shots that do not parse", BOTH | {"one_shot": "[7"}, {"start": -1}, 403),
    case("one-shots in no array", BOTH | {"one_shot": '{"x":7}'}, {}, 403),
])
def test_list_nothing(appliance, files, parameters, code):
    assert appliance.store(**files).request("list", **parameters) == Answer(code, EMPTY)


def test_list_every_member_in_local_time(appliance):
    appliance.store(
        one_shot=[{"start_time": 1752000001, "service_id": "5", "frequency": 6, "status": 4,
                   "uid": "1", "id": [], "more": {}, **DETAILS}, {"service_id": "7" * 200}],
        repeat=[{"start_time": 1735686300, "id": 8, "frequency": 474, "status": 20, **DETAILS},
                {"start_time": 1752000000, "id": 9, "frequency": "474"}])
    assert appliance.request("list", zone="Europe/Berlin") == Answer(data={
        "start": 0, "total": 4, "schedules": [
            {"start_time": 0, "start": "1970/01/01 01:00", "weekday": 4, "id": "7" * 200,
             "primeid": "0." + "7" * 125, "status": 0, "is_userdefine": False, **NO_DETAILS},
            {"start_time": 1735686300, "start": "2025/01/01 00:05", "weekday": 3, "id": "8@474",
             "primeid": "1735686300.8@474.20", "status": 13, "is_userdefine": False, **DETAILS},
            {"start_time": 1752000000, "start": "2025/07/08 20:40", "weekday": 2, "id": "9",
             "primeid": "1752000000.9.0", "status": 0, "is_userdefine": False, **NO_DETAILS},
            {"start_time": 1752000001, "start": "2025/07/08 20:40", "weekday": 2, "id": "5@6",
             "primeid": "1752000001.5@6.4", "status": 1, "is_userdefine": False, **DETAILS}]})


def first_of(answer, member):
    return answer.data["schedules"][0][member]


@pytest.mark.parametrize("frequency, channel", [
    (474, "7@474"), ("474", "7@474"), (0, "7@0"), (None, "7"), ("x", "7"), (4.5, "7")])
def test_list_channel_of_one_shot(appliance, frequency, channel):
    appliance.store(one_shot=[{"service_id": 7, "frequency": frequency}])
    assert first_of(appliance.request("list"), "id") == channel


@pytest.mark.parametrize("status, records, is_userdefine", [
    case("one-shot of a one-shot record", 4, [(5, 1, False)], True),
    case("one-shot made from a rule", 4, [(5, 1, True)], False),
    case("rule of a rule record", 19, [(5, 1, True)], True),
    case("other kind of rule", 20, [(5, 1, True)], True),
    case("rule that has ended", 21, [(5, 1, True)], False),
    case("record of another tuner", 4, [(5, 0, False)], False),
    case("record of another start", 4, [(6, 1, False)], False),
    case("first of two records", 4, [(5, 1, False), (5, 1, True)], True),
])
def test_list_marks_user_defined(appliance, status, records, is_userdefine):
    appliance.store(one_shot_of_1=[{"start_time": 5, "status": status}], user_defined=[
        {"start_time": start, "tuner": tuner, "is_repeat": is_repeat}
        for start, tuner, is_repeat in records])
    assert first_of(appliance.request("list", tuner=1), "is_userdefine") is is_userdefine


def test_list_status_for_display(appliance):
    view = {2: 2, 3: 3, 4: 1, 8: 4, 9: 11, 10: 5, 11: 6, 12: 7, 13: 8, 14: 9, 15: 10, 16: 11,
            19: 12, 20: 13, 21: 14, 23: 15}
    appliance.store(repeat=[{"status": raw, "start_time": raw} for raw in range(-1, 30)])
    shown = appliance.request("list").data["schedules"]
    assert {s["start_time"]: s["status"] for s in shown} == {
        raw: view.get(raw, 0) for raw in range(-1, 30)}


@pytest.mark.parametrize("stored, shown", [
    case("quotes, escapes, controls", '\\"\x01\x7f\u2028', '\\"\x01\x7f\u2028'),
    case("beyond the basic plane", "\u00e4\U0001f600", "\u00e4\U0001f600"),
    case("broken UTF-8", b"\xc3(\xe2AB\xf4\x90\x80\x80\x80A\xed\xa0\x80\xc0\x80\xff\xc3"
         .decode(errors="surrogateescape"), "~(~AB~~~~~A~~~~~~~".replace("~", "\ufffd")),
    case("larger than any buffer", "x\\" * 50000, "x\\" * 50000),
])
def test_list_text_in_ascii(appliance, stored, shown):
    text = stored.replace("\\", "\\\\").replace('"', '\\"').replace("\x01", "\\u0001")
    appliance.store(one_shot=f'[{{"title":"{text}"}}]')
    assert first_of(appliance.request("list"), "title") == shown
