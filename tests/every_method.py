"""One request of every method, over the same stored schedules."""
from schedules import SHOW, WEEKLY, Schedule

NEW = Schedule("2033-05-20", "21:00", "02:00", "New", "5@1")
NEW_RULE = NEW.but(days="0,0,0,0,0,1,0", end_date="2034-01-01")
PASSED = Schedule("2001-01-01", "00:00", "01:00", "Passed", "9@1")
# The rule and the one-shot schedule that the daemon made of it last, with its service as text.
RULE = WEEKLY.stored(lastcreatetime=WEEKLY.start)
MADE = WEEKLY.but(days=None).stored(service_id="9")
STORED = {"one_shot": [PASSED, SHOW, MADE], "repeat": [RULE], "user_defined": [SHOW, WEEKLY]}
DAYS = {"weekdaystatus": "1,1,1,1,1,1,1", "end_date": "1", "isweekly": "false"}


def edit_of(old, new):
    """The parameters that edit a user-defined schedule into another one."""
    return {"orig_start_date": old.date, "orig_start_time": old.time} | new.form()


CHANGING = {
    "create": {"id": 5, "start_time": NEW.start},
    "create of a list": {"id": "5,6@1,8", "start_time": f"{NEW.start},{NEW.start},1000"},
    "delete": {"id": SHOW.start, "channel_id": 7},
    "delete_passed": {},
    "create_repeat": {"id": 5, "start_time": NEW.start, **DAYS},
    "edit_repeat": {"id": 9, "start_time": WEEKLY.start, **DAYS},
    "delete_repeat": {"id": WEEKLY.start, "channel_id": 9},
    "create_userdefine": NEW.form(),
    "create_userdefine of a rule": NEW_RULE.form(),
    "edit_userdefine": edit_of(WEEKLY, NEW),
    "edit_userdefine to a rule": edit_of(SHOW, NEW_RULE),
    "delete_userdefine": {"id": f"{SHOW.start},{WEEKLY.start}"},
}
READING = {
    "list": {},
    "getinfo_repeat": {"id": 9, "start_time": WEEKLY.start},
    "getinfo_userdefine": {"start_time": SHOW.start},
}


def query_of(name):
    """The parameters of a request, its method among them."""
    return {"method": name.split()[0], "tuner": 0, **(CHANGING | READING)[name]}
