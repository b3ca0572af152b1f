"""getinfo_userdefine: the form of a stored schedule, or of a new one."""
import pytest
from conftest import NOW, Answer, case
from schedules import SHOW, WEEKLY

LONG, NO_LENGTH = SHOW.but(length="25:00"), WEEKLY.record(duration=-1)


def info(appliance, zone="UTC", now=NOW, **changes):
    appliance.store(user_defined=[LONG, SHOW, NO_LENGTH, SHOW.record(start_time=5, tuner=1)])
    return appliance.request("getinfo_userdefine", zone=zone, now=now, **{"tuner": 0} | changes)


@pytest.mark.parametrize("schedule, zone, changes", [
    case("one-shot", LONG, "UTC", {"start_weekday": "3"}),
    case("rule without a length", WEEKLY, "UTC", {"start_weekday": "4", "duration": "00:00"}),
    case("local time", LONG, "Asia/Kolkata", {
        "start_date": "2033-05-19", "start_time": "01:45", "start_weekday": "4"})])
def test_getinfo_userdefine(appliance, schedule, zone, changes):
    answer = info(appliance, zone, start_time=schedule.start)
    assert answer == Answer(data={
        "channel_name": "C", "channel_id": schedule.channel, "start_date": schedule.date,
        "start_time": schedule.time, "today_date": "2025-07-01", "duration": schedule.length,
        "title": schedule.title, "description": f"About {schedule.title}",
        "is_repeat": schedule.is_repeat, "end_date": schedule.end_date,
        "weekdaystatus": schedule.days or "0,0,0,0,0,0,0"} | changes)


@pytest.mark.parametrize("now, zone, start, date, time, weekday", [
    case("no start", NOW, "UTC", None, "2025-07-01", "12:00", 2),
    case("other tuner", NOW, "UTC", 5, "2025-07-01", "12:00", 2),
    case("Sunday", "2025-07-07 03:59", "America/New_York", -1, "2025-07-06", "23:59", 0)])
def test_getinfo_userdefine_of_none(appliance, now, zone, start, date, time, weekday):
    assert info(appliance, zone, now, start_time=start) == Answer(data={
        "channel_name": "", "channel_id": "", "start_date": date, "start_time": time,
        "start_weekday": str(weekday), "today_date": date, "duration": "00:30", "title": "",
        "description": "", "is_repeat": False, "end_date": "1",
        "weekdaystatus": ",".join("1" if day == weekday else "0" for day in range(7))})
