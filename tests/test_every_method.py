"""What is alike in several methods: bad parameters, the user, and files and a daemon that fail."""
import pytest
from conftest import FOLDER, Answer, dangling_link
from every_method import STORED, query_of
from faults import daemon_fails, daemon_log, save_fails
from schedules import SHOW, WEEKLY

REPEAT = {"start_time": [None, "x", -1, 0, 2**31], "end_date": [None],
          "weekdaystatus": [None, ",1", "0,0,0,0,0,0,0", "2,2,2,2,2,2,2"]}
BAD = {  # besides no tuner
    "create": {"id": [None, "x", "0", "0@0", "7@", "+7", "7@4@4", 2**31],
               "start_time": [None, "x", "1,2", 0, 2**31]},
    "delete": {"id": ["x"], "channel_id": [None, "x"]},
    "delete_passed": {},
    "create_repeat": REPEAT | {"id": [None, "x"]},
    "edit_repeat": REPEAT | {"id": [None], "isweekly": [None, "x"]},
    "delete_repeat": {"id": [None, "1,2"], "channel_id": [None, "7,8"]},
    "create_userdefine": {
        "is_repeat": [None, "1"], "start_time": [None, "8:15"], "channel_name": [""], "id": [None],
        "start_date": [None, "2025-7-2", "1960-01-01", "9999-12-31", str(2033 + 2**32)]},
    "create_userdefine of a rule": {"weekdaystatus": [None], "end_date": [""]},
    "edit_userdefine": {
        "is_repeat": [None], "start_date": [""], "start_time": ["2030"], "tuner": [1],
        "duration": ["00:00", "45"], "orig_start_date": [None], "orig_start_time": ["20:16"]},
    "edit_userdefine to a rule": {"isweekly": ["x"], "end_date": [None], "weekdaystatus": [None]},
    "delete_userdefine": {"id": [None, ""]},
    "getinfo_repeat": {"id": [None, "x"], "start_time": [None, "1x", -1]},
    "getinfo_userdefine": {"start_time": ["", "x"]},
}


@pytest.mark.parametrize("name, changes, code", [
    *((name, {parameter: text}, 101) for name, bad in BAD.items()
      for parameter, texts in ({"tuner": [None]} | bad).items() for text in texts),
    ("create", {"id": 7, "start_time": SHOW.start}, 401),
    ("create_repeat", {"id": 9, "start_time": WEEKLY.start}, 401),
    ("edit_repeat", {"id": 5}, 402), ("delete", {"id": 1001}, 402),
    ("delete", {"channel_id": 5}, 402), ("delete", {"tuner": 1}, 402)], ids=str)
def test_refused(appliance, name, changes, code):
    assert appliance.store(**STORED).request(**query_of(name) | changes) == Answer(code)


@pytest.mark.parametrize("name, is_rule, bad", [
    ("create", False, {"id": "x"}), ("edit_userdefine", False, {"tuner": None}),
    ("create_repeat", True, {"id": "x"}), ("edit_userdefine to a rule", True, {"tuner": None})],
    ids=str)
def test_parameters_come_before_user_and_folder(appliance, name, is_rule, bad):
    """The folder comes before the user for a one-shot schedule, and after the user for a rule."""
    query = query_of(name)
    for user, line, text in (("ghost", 856 if is_rule else 661, "Failed to KALDUserGet function."),
                             ("nouid", 862 if is_rule else 667, "uid is error.")):
        answer = Answer(100, log=[f"schedule_recording:{line} {text}"])
        appliance.store(**STORED, folders=[FOLDER])
        assert appliance.request(user=user, **query) == answer
        appliance.store(folders=[])
        assert appliance.request(user=user, **query) == (answer if is_rule else Answer(406))
        assert appliance.request(user=user, **query | bad) == Answer(101)
    assert appliance.request(**query) == Answer(406)


TOO_DEEP = "[" * 1001 + "]" * 1001
LOAD, SAVE = "cannot load {}: {}", "cannot save {}: Operation not permitted"


@pytest.mark.parametrize("name, file, code, loading, saving", [
    *((name, "one_shot", 403, LOAD, SAVE) for name in ("create", "delete", "delete_passed")),
    *((name, "repeat", 403, LOAD, SAVE) for name in ("create_repeat", "edit_repeat")),
    ("delete_repeat", "repeat", 100, "schedule_recording:1032 Fail to load file {}",
     "schedule_recording:1051 Fail to save repeat schedule json. Path is {}"),
    ("getinfo_repeat", "repeat", 100, "schedule_recording:926 Fail to load file {}", None)])
def test_file_not_loaded_or_not_saved(appliance, name, file, code, loading, saving):
    path = appliance.path(file)
    for stored, reason in (
            *((text, "it is not JSON") for text in ("", "[", "[]\0x", "[]x", "[{},]", TOO_DEEP)),
            ("{}", "it holds no array"), (dangling_link, "No such device or address")):
        answer = appliance.store(**{file: stored}).request(**query_of(name))
        assert answer == Answer(code, log=[loading.format(path, reason)])
    if saving:
        under = save_fails(appliance.store(**STORED), file)
        answer = appliance.request(under=under, **query_of(name))
        assert answer == Answer(code, log=[saving.format(path)])


@pytest.mark.parametrize("name", [
    "create", "delete", "create_repeat", "edit_repeat", "create_userdefine of a rule",
    "edit_userdefine to a rule", "delete_userdefine"])
def test_all_is_stored_although_a_command_to_the_daemon_fails(appliance, name):
    appliance.store(**STORED, commands="").request(**query_of(name))
    appliance.forget()
    files = appliance.snapshot()
    commands = files["commands"].splitlines(keepends=True)
    for taken in range(len(commands)):
        under = daemon_fails(appliance.store(**STORED, commands=""), taken)
        answer = appliance.request(under=under, **query_of(name))
        assert (answer.code, set(answer.log)) == (100, set(daemon_log(appliance)))
        appliance.forget()
        assert appliance.snapshot() == files | {"commands": b"".join(commands[:taken])}
