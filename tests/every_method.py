"""One request of every method that changes something, over the same stored schedules."""
from schedules import Schedule

SHOW = Schedule("2033-05-18", "04:00", "01:00", "Show", "9@1")
RULE = Schedule("2033-05-18", "05:00", "00:30", "Rule", "9@1", "0,0,0,1,0,0,0", "2034-01-01")
NEW = Schedule("2033-05-20", "04:00", "02:00", "New", "5@1")
NEW_RULE = NEW.but(days="0,0,0,0,0,1,0", end_date="2034-01-01")
PASSED = Schedule("2001-01-01", "00:00", "01:00", "Passed", "9@1")
DAYS = {"weekdaystatus": "1,1,1,1,1,1,1", "end_date": "1", "isweekly": "false"}
STORED = {"one_shot": [PASSED, SHOW, RULE.but(days=None)], "user_defined": [SHOW, RULE],
          "repeat": [RULE.stored(lastcreatetime=RULE.start)]}


def edit(old, new):
    return {"orig_start_date": old.date, "orig_start_time": old.time, **new.form()}


CHANGING = {
    "create": {"id": 5, "start_time": NEW.start},
    "delete": {"id": SHOW.start, "channel_id": 9},
    "delete_passed": {},
    "create_repeat": {"id": 5, "start_time": NEW.start, **DAYS},
    "edit_repeat": {"id": 9, "start_time": RULE.start, **DAYS},
    "delete_repeat": {"id": RULE.start, "channel_id": 9},
    "create_userdefine": NEW.form(),
    "edit_userdefine": edit(RULE, NEW),
    "edit_userdefine to a rule": edit(SHOW, NEW_RULE),
    "delete_userdefine": {"id": f"{SHOW.start},{RULE.start}"},
}
READING = {
    "list": {},
    "getinfo_repeat": {"id": 9, "start_time": RULE.start},
    "getinfo_userdefine": {"start_time": SHOW.start},
}


def query_of(name):
    """The parameters of a request, its method among them."""
    return {"method": name.split()[0], "tuner": 0, **(CHANGING | READING)[name]}
