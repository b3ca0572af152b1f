"""getinfo_userdefine: the form of a stored schedule, or of a new one."""
import pytest
from conftest import Answer, case
from schedules import Schedule

SHOW = Schedule("2025-07-02", "20:15", "25:00", "Show", "7@474")
WEEKLY = Schedule("2025-07-03", "20:00", "00:30", "Weekly", "9@500", "0,0,0,0,1,0,0", "2025-12-31")


def info(appliance, zone="UTC", now="2025-07-01 12:00", **changes):
    appliance.store(user_defined=[SHOW, WEEKLY.record(duration=-1), SHOW.record(
        start_time=5, tuner=1)])
    return appliance.request("getinfo_userdefine", zone=zone, now=now, **{"tuner": 0} | changes)


def form_of(schedule, **changes):
    return {"channel_name": "C", "channel_id": schedule.channel, "start_date": schedule.date,
            "start_time": schedule.time, "today_date": "2025-07-01", "duration": schedule.length,
            "title": schedule.title, "description": f"About {schedule.title}",
            "is_repeat": schedule.is_repeat, "end_date": schedule.end_date,
            "weekdaystatus": schedule.days or "0,0,0,0,0,0,0"} | changes


@pytest.mark.parametrize("schedule, zone, changes", [
    case("one-shot", SHOW, "UTC", {"start_weekday": "3"}),
    case("rule without a length", WEEKLY, "UTC", {"start_weekday": "4", "duration": "00:00"}),
    case("local time", SHOW, "Asia/Kolkata", {
        "start_date": "2025-07-03", "start_time": "01:45", "start_weekday": "4"})])
def test_getinfo_userdefine(appliance, schedule, zone, changes):
    answer = info(appliance, zone, start_time=schedule.start)
    assert answer == Answer(data=form_of(schedule, **changes))


@pytest.mark.parametrize("now, zone, parameters, date, time, weekday", [
    case("no start", "2025-07-01 12:00", "UTC", {}, "2025-07-01", "12:00", 2),
    case("unknown start", "2025-07-01 12:00", "UTC", {"start_time": 0}, "2025-07-01", "12:00", 2),
    case("other tuner", "2025-07-01 12:00", "UTC", {"start_time": 5}, "2025-07-01", "12:00", 2),
    case("Saturday in Kolkata", "2025-07-04 20:00", "Asia/Kolkata", {"start_time": -5},
         "2025-07-05", "01:30", 6),
    case("Sunday in New York", "2025-07-07 03:59", "America/New_York", {"start_time": -1},
         "2025-07-06", "23:59", 0)])
def test_getinfo_userdefine_of_none(appliance, now, zone, parameters, date, time, weekday):
    assert info(appliance, zone, now, **parameters) == Answer(data={
        "channel_name": "", "channel_id": "", "start_date": date, "start_time": time,
        "start_weekday": str(weekday), "today_date": date, "duration": "00:30", "title": "",
        "description": "", "is_repeat": False, "end_date": "1",
        "weekdaystatus": ",".join("1" if day == weekday else "0" for day in range(7))})


@pytest.mark.parametrize("changes", [{"tuner": None}, {"start_time": "x"}, {"start_time": ""}],
                         ids=str)
def test_getinfo_userdefine_bad_parameter(appliance, changes):
    assert info(appliance, **changes) == Answer(101)
