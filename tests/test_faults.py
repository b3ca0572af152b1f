"""Faults at every system call of every changing method: what is stored is whole, and once the next
request has run it is all as before the request or all as after it."""
import json
import urllib.parse

import pytest
from conftest import ETC
from every_method import CHANGING, STORED, query_of
from faults import calls_of, failing

RECOVERY = {"method": "delete_passed", "tuner": 9}  # the next request, which changes nothing
READING = ("read", "newfstatat", "close", "mmap", "munmap", "geteuid", "getpid", "rt_sigaction")


class Faults:
    """Runs one request again and again, each time with a fault at another of its calls."""

    def __init__(self, appliance, method, trace):
        self.appliance, self.query, self.trace = appliance, query_of(method), trace
        self.before = self.reset()
        self.run()
        self.after = self.state()
        assert self.before != self.after, "nothing is tested by a request that changes nothing"
        self.reset()

    def reset(self):
        for left in (self.appliance.root / ETC).rglob("*.tmp"):
            left.unlink()
        self.appliance.store(**STORED)
        return self.state()

    def run(self, under=(), query=None):
        query = urllib.parse.urlencode(query or self.query)
        run = self.appliance.launch({"QUERY_STRING": query, "REMOTE_USER": "admin"}, now=None,
                                    under=under)
        self.appliance.forget()
        return run

    def calls(self, query=None, but=()):
        """The calls of a run that can fail, from its first look at the package's files on."""
        self.run(["strace", "-f", "-y", "-o", self.trace], query)
        calls = calls_of(self.trace.read_text(), f"{ETC}/")
        assert len(calls) > 20
        return [call for call in calls if call[0] not in ("exit_group", "brk", "futex", *but)]

    def state(self):
        """The three documents; each must be whole."""
        return {name: json.loads(self.appliance.path(name).read_text()) for name in STORED}


@pytest.fixture(params=CHANGING)
def faults(request, appliance, tmp_path):
    return Faults(appliance, request.param, tmp_path / "trace")


@pytest.mark.slow
def test_killed_at_every_call(faults):
    for name, nth, line in faults.calls(but=READING):
        faults.reset()
        assert faults.run(failing(name, at=nth, fault="signal=KILL")).returncode != 0
        faults.state()
        assert faults.run(query=RECOVERY).returncode == 0
        assert faults.state() in (faults.before, faults.after), line


@pytest.mark.slow
@pytest.mark.parametrize("faults", [
    name for name in CHANGING if "userdefine" in name or "list" in name], indirect=True)
def test_killed_in_recovery(faults):
    """A request that changes several files is killed when all is stored, and then the recovery at
    each of its calls. The other methods replace one file, which needs no recovery."""
    commit = [nth for name, nth, line in faults.calls()
              if name == "unlink" and '.schedules.journal"' in line][-1]

    def killed():
        faults.reset()
        faults.run(failing("unlink", at=commit, fault="signal=KILL"))
        assert faults.state() == faults.after

    killed()
    for name, nth, line in faults.calls(RECOVERY, but=READING):
        killed()
        faults.run(failing(name, at=nth, fault="signal=KILL"), RECOVERY)
        faults.state()
        faults.run(query=RECOVERY)
        assert faults.state() == faults.before, line


@pytest.mark.slow
def test_eio_at_every_call(faults):
    """A request under which the device fails is answered, and a success is one. What stands if the
    tuner daemon's commands cannot be written, or the recording folder cannot be seen, differs by
    method, so their own tests show it."""
    others = [str(faults.appliance.path(name)) for name in ("commands", "volume1")]
    for name, nth, line in faults.calls():
        faults.reset()
        run = faults.run(failing(name, at=nth))
        assert run.returncode == 0, line
        faults.run(query=RECOVERY)
        if b'{"success":true}' in run.stdout:
            assert faults.state() == faults.after, line
        elif not any(other in line for other in others):
            assert faults.state() in (faults.before, faults.after), line
