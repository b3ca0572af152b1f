"""list: merged, sorted, paged and made ready for display."""
import pytest
from conftest import Answer, case

DETAILS = {"duration": 9, "channel_name": "C", "title": "T", "description": "D"}
NO_DETAILS = {"duration": 0, "channel_name": "", "title": "", "description": ""}


def titled(**starts):
    return [{"title": title, "start_time": start} for title, start in starts.items()]


ONE_SHOTS, RULES = titled(a=10, c=30, e=50, g=70), titled(b=20, d=40, f=60)
BOTH = {"one_shot": ONE_SHOTS, "repeat": RULES}
EQUAL = {"one_shot": titled(a=10, b=10, c=-5), "repeat": titled(d=10, e=10)}


@pytest.mark.parametrize("files, parameters, code, titles, start, total", [
    case("no files", {}, {}, None, "", 0, 0),
    case("broken rules", BOTH | {"repeat": "[{}"}, {}, None, "aceg", 0, 4),
    case("broken one-shots", BOTH | {"one_shot": "[7"}, {"start": -1}, 403, "", 0, 0),
    case("latest first of equal starts, rules before", EQUAL, {}, None, "cedba", 0, 5),
    case("no limit shows all", BOTH, {"start": 7}, None, "abcdefg", 7, 7),
    case("last page", BOTH, {"start": 5, "limit": "+10"}, None, "fg", 5, 7),
    case("page behind the last", BOTH, {"start": 7, "limit": 2}, None, "", 0, 0),
    case("negative limit is 1", BOTH, {"start": 0, "limit": -5}, None, "a", 0, 7),
    case("start beyond the last", BOTH, {"start": 8}, 101, "", 0, 0),
    case("negative start", BOTH, {"start": -1}, 101, "", 0, 0)])
def test_list_page(appliance, files, parameters, code, titles, start, total):
    answer = appliance.store(**files).request("list", **parameters)
    shown = "".join(schedule["title"] for schedule in answer.data["schedules"])
    assert (answer.code, shown, answer.data["start"], answer.data["total"]) == (
        code, titles, start, total)


def test_list_every_member_in_local_time(appliance):
    appliance.store(
        one_shot=[{"start_time": 1752000001, "service_id": "5", "frequency": 6, "status": 4,
                   "uid": "1", "id": [], "more": {}, **DETAILS},
                  {"service_id": "7" * 200, "frequency": "0"}],
        repeat=[{"start_time": 1735686300, "id": 8, "frequency": 474, "status": 20, **DETAILS},
                {"start_time": 1752000000, "id": 9, "frequency": "474"}])
    rows = [(0, "1970/01/01 01:00", 4, "7" * 200 + "@0", "0." + "7" * 125, 0, NO_DETAILS),
            (1735686300, "2025/01/01 00:05", 3, "8@474", "1735686300.8@474.20", 13, DETAILS),
            (1752000000, "2025/07/08 20:40", 2, "9", "1752000000.9.0", 0, NO_DETAILS),
            (1752000001, "2025/07/08 20:40", 2, "5@6", "1752000001.5@6.4", 1, DETAILS)]
    members = ("start_time", "start", "weekday", "id", "primeid", "status")
    assert appliance.request("list", zone="Europe/Berlin") == Answer(data={
        "start": 0, "total": 4, "schedules": [
            dict(zip(members, row)) | {"is_userdefine": False} | row[-1] for row in rows]})


@pytest.mark.parametrize("status, record, is_userdefine", [
    (4, {}, True), (4, {"tuner": 0}, False), (4, {"start_time": 6}, False),
    (4, {"is_repeat": True}, False), (19, {"is_repeat": True}, True),
    (20, {"is_repeat": True}, True), (21, {"is_repeat": True}, False)], ids=str)
def test_list_marks_user_defined(appliance, status, record, is_userdefine):
    """A record of a rule stands for the rule, not for the schedules that are made of it."""
    appliance.store(one_shot_of_1=[{"start_time": 5, "status": status}],
                    user_defined=[{"start_time": 5, "tuner": 1, "is_repeat": False} | record])
    [shown] = appliance.request("list", tuner=1).data["schedules"]
    assert shown["is_userdefine"] is is_userdefine


def test_list_status_for_display(appliance):
    view = {2: 2, 3: 3, 4: 1, 8: 4, 9: 11, 10: 5, 11: 6, 12: 7, 13: 8, 14: 9, 15: 10, 16: 11,
            19: 12, 20: 13, 21: 14, 23: 15}
    appliance.store(repeat=[{"status": raw, "start_time": raw} for raw in range(-1, 30)])
    shown = appliance.request("list").data["schedules"]
    assert [s["status"] for s in shown] == [view.get(raw, 0) for raw in range(-1, 30)]


@pytest.mark.parametrize("stored, shown", [
    case("characters", "\x7f\u00e4\u2028\U0001f600", "\x7f\u00e4\u2028\U0001f600"),
    case("escapes", r"\"\\\u0001\ud83d\ude00\ud83d", '"\\\x01\U0001f600\ufffd'),
    case("broken UTF-8", b"\xc3(\xe2AB\xf4\x90\x80\x80\x80A\xed\xa0\x80\xc0\x80\xff\xc3"
         .decode(errors="surrogateescape"), "~(~AB~~~~~A~~~~~~~".replace("~", "\ufffd")),
    case("larger than any buffer", r"x\\" * 50000, "x\\" * 50000)])
def test_list_text(appliance, stored, shown):
    appliance.store(one_shot=f'[{{"title":"{stored}"}}]')
    assert appliance.request("list").data["schedules"][0]["title"] == shown
