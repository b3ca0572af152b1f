"""Faults at every system call of every changing method: what is stored is whole, and once the next
request has run it is all as before the request or all as after it."""
import json
import urllib.parse

import pytest
from conftest import ETC
from every_method import CHANGING, STORED, query_of
from faults import calls_of, failing, failing_nth

RECOVERY = {"method": "delete_passed", "tuner": 9}  # the next request, which changes nothing
MEMORY = ("exit_group", "brk", "futex")
READING = ("read", "newfstatat", "close", "mmap", "munmap", "geteuid", "getpid", "rt_sigaction")


class Faults:
    """Runs one request again and again, each time with a fault at another of its calls."""

    def __init__(self, appliance, method):
        self.appliance = appliance
        self.query = query_of(method)
        self.before = self.reset()
        self.run()
        self.after = self.state()
        assert self.before != self.after, "nothing is tested by a request that changes nothing"

    def reset(self):
        etc = self.appliance.root / ETC
        for left in [*etc.rglob(".*"), *etc.rglob("*.tmp")]:
            left.unlink()
        self.appliance.forget()
        self.appliance.store(**STORED)
        return self.state()

    def run(self, under=(), query=None):
        query = urllib.parse.urlencode(query or self.query)
        run = self.appliance.launch({"QUERY_STRING": query, "REMOTE_USER": "admin"}, now=None,
                                    under=under)
        self.appliance.forget()
        return run

    def calls(self, trace, query=None):
        """The calls of a run that can fail, from its first look at the package's files on."""
        self.run(["strace", "-f", "-y", "-o", trace], query)
        calls = calls_of(trace.read_text(), f"{ETC}/")
        assert len(calls) > 20
        return [call for call in calls if call[0] not in MEMORY]

    def state(self):
        """The three documents; each must be whole."""
        return {name: json.loads(self.appliance.path(name).read_text()) for name in STORED}

    def recover(self, under=()):
        return self.run(under, RECOVERY)


@pytest.fixture(params=CHANGING)
def faults(request, appliance):
    return Faults(appliance, request.param)


@pytest.mark.slow
def test_killed_at_every_call(faults, tmp_path):
    faults.reset()
    for call in faults.calls(tmp_path / "trace"):
        if call[0] not in READING:
            faults.reset()
            assert faults.run(failing_nth(*call[:2], "signal=KILL")).returncode != 0
            faults.state()
            assert faults.recover().returncode == 0
            assert faults.state() in (faults.before, faults.after), call


@pytest.mark.slow
def test_killed_in_recovery(faults, tmp_path):
    """The request is killed when all is stored, and then the recovery at each of its calls."""
    faults.reset()
    commits = [call for call in faults.calls(tmp_path / "trace")
               if call[0] == "unlink" and ".schedules.journal" + '"' in call[2]]
    assert commits or "userdefine" not in faults.query["method"]
    if not commits:  # a request that saves one file once needs no journal
        return
    last = commits[-1]

    def killed():
        faults.reset()
        faults.run(failing_nth(*last[:2], "signal=KILL"))
        assert faults.state() == faults.after

    killed()
    for call in faults.calls(tmp_path / "trace", RECOVERY):
        if call[0] not in READING:
            killed()
            faults.recover(failing_nth(*call[:2], "signal=KILL"))
            faults.state()
            faults.recover()
            assert faults.state() == faults.before, call


@pytest.mark.slow
def test_eio_at_every_call(faults, tmp_path):
    """A request under which the device fails is answered, and a success is one. Only if the device
    of the tuner daemon's commands fails, all may be as after a command that the daemon refused."""
    faults.reset()
    calls, refused = faults.calls(tmp_path / "trace"), []
    for taken in range(3):
        faults.reset()
        faults.run(failing("openat", faults.appliance.path("commands"), at=taken + 1))
        refused.append(faults.state())
    for call in calls:
        faults.reset()
        run = faults.run(failing_nth(*call[:2], "error=EIO"))
        assert run.returncode == 0, call
        faults.recover()
        is_success = b'{"success":true}' in run.stdout
        is_command = str(faults.appliance.path("commands")) in call[2]
        assert faults.state() in (
            [faults.after] if is_success else
            [faults.before, faults.after, *(refused if is_command else ())]), call
