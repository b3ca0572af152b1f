"""A schedule of tuner 0 in every form: the client's, the stored record, the user-defined one."""
import calendar
import dataclasses
import time


def epoch(text):
    """Seconds since the epoch of a time like 2025-07-01 12:00 in UTC."""
    return calendar.timegm(time.strptime(text, "%Y-%m-%d %H:%M"))


@dataclasses.dataclass(frozen=True)
class Schedule:
    """One recording, or with `days` a rule of recordings; times of day are UTC."""
    date: str
    time: str
    length: str
    title: str
    channel: str
    days: str | None = None
    end_date: str = "1"

    def but(self, **changes):
        return dataclasses.replace(self, **changes)

    @property
    def is_repeat(self):
        return self.days is not None

    @property
    def start(self):
        return epoch(f"{self.date} {self.time}")

    @property
    def seconds(self):
        return epoch(f"1970-01-01 00:{self.length[3:]}") + 3600 * int(self.length[:2])

    def form(self):
        """The parameters by which a client creates it as a user-defined schedule."""
        form = {"id": self.channel, "channel_name": "C", "start_date": self.date,
                "start_time": self.time, "duration": self.length, "title": self.title,
                "description": f"About {self.title}", "is_repeat": str(self.is_repeat).lower(),
                "tuner": 0}
        if self.is_repeat:
            form |= {"isweekly": "true", "weekdaystatus": self.days, "end_date": self.end_date}
        return form

    def stored(self, **changes):
        """Its record in the file of one-shot or of repeat schedules, made by the user 1024."""
        service, frequency = map(int, self.channel.split("@"))
        record = {"start_time": self.start, "frequency": frequency, "channel_name": "C",
                  "title": self.title, "description": f"About {self.title}",
                  "duration": self.seconds, "uid": "1024"}
        if self.is_repeat:
            record |= {"id": service, "status": 19, "lastcreatetime": 0, "start_date": self.date,
                       "isweekly": True, "weekdaystatus": self.days, "end_date": self.end_date}
        else:
            record |= {"service_id": service, "status": 4}
        return record | changes

    def record(self, **changes):
        """Its record in the file of user-defined schedules."""
        return {"start_time": self.start, "event_name": self.title,
                "text_name": f"About {self.title}", "duration": self.seconds, "tuner": 0,
                "input_start_date": self.date, "input_start_time": self.time,
                "input_duration": self.length, "channel_name": "C", "channel_id": self.channel,
                "is_repeat": self.is_repeat, "isweekly": True,
                "weekdaystatus": self.days or "0,0,0,0,0,0,0", "end_date": self.end_date} | changes


SHOW = Schedule("2033-05-18", "20:15", "01:00", "Show", "7@474")
OTHER = Schedule("2033-05-21", "20:15", "01:00", "Other", "8@490")
STOP_SHOW = f"stop 0 {SHOW.start} 474 7"  # the command of the tuner daemon
WEEKLY = Schedule("2033-05-19", "18:00", "00:30", "Weekly", "9@500", "0,0,0,0,1,0,0", "2033-12-31")
