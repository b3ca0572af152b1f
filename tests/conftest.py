"""The appliance under test: a fresh tree for each test, the built program, and what it leaves."""
import contextlib
import dataclasses
import difflib
import fcntl
import glob
import json
import os
import re
import shlex
import shutil
import subprocess
import types
import urllib.parse
from pathlib import Path

import pytest
from answers import observe, unseen
from schedules import Schedule, epoch
from web_server import lighttpd

SOURCE = Path(__file__).resolve().parent.parent
NOW = "2025-07-01 12:00"  # a Tuesday
[FAKETIME] = glob.glob("/usr/lib/*/faketime/libfaketime.so.1")
[EATMYDATA] = glob.glob("/usr/lib/*/libeatmydata.so.1")
ETC = "var/packages/Tremolane/etc"
FILES = {
    "one_shot": f"{ETC}/dtvschedules/0dtv_schedule.json",
    "repeat": f"{ETC}/dtvrepeatschedules/0dtv_repeat_schedule.json",
    "one_shot_of_1": f"{ETC}/dtvschedules/1dtv_schedule.json",
    "user_defined": f"{ETC}/dtvuserdefineschedules.json",
    "folders": f"{ETC}/folder.conf",
    "users": f"{ETC}/users.conf",
    "commands": "var/run/dtvd/commands",
}
NAMES = {path: name for name, path in FILES.items()}
ACCOUNTS = """admin:x:1024:100::/:
viewer:x:1026:100::/:
guest:x:1027:100::/:
locked:!:1028:100::/:
nouid:x:4294967295:100::/:
"""
needs_root = pytest.mark.skipif(os.geteuid() != 0, reason="needs what only root can do")
EMPTY_LIST = {"schedules": [], "start": 0, "total": 0}
FOLDER = {"section": "tv_record", "share": "video", "subpath": "tv"}
HEAD = "Content-Type: application/json; charset=utf-8\r\nCache-Control: no-store"


@dataclasses.dataclass
class Answer:
    """What a client gets and the system log holds; Answer() is a plain success."""
    code: int | None = None
    data: object = None
    log: list = dataclasses.field(default_factory=list)


def case(name, *values, **marks):
    """A row of a parametrised test; the name is what pytest -k finds."""
    return pytest.param(*values, id=name, **marks)


def text_of(name, document):
    """What stands in the named file: a text, or the JSON of a document, a member a line, with each
    Schedule in the form that the file has of it."""
    form = Schedule.record if name == "user_defined" else Schedule.stored
    return document if isinstance(document, str) else json.dumps(
        document, default=form, indent=1, sort_keys=True)


def dangling_link(path):
    path.symlink_to("volume/that/is/away")


class Appliance:
    """A tree at the build's APPLIANCE_ROOT. Files are named by FILES, or by their path."""

    def __init__(self, build):
        self.program, self.root, self.emulator = build.program, build.root, build.emulator
        self._before = None

    def lay(self):
        """A fresh tree: accounts, one user with the privilege, a recording folder, no schedule."""
        shutil.rmtree(self.root, ignore_errors=True)
        for name in ("one_shot", "repeat", "commands", "volume1/video/tv/show"):
            self.path(name).parent.mkdir(parents=True)
        return self.store(users={"1026": {"dtv": True}}, folders=[FOLDER], **{
            "etc/passwd": ACCOUNTS, "etc/group": "administrators:x:101:admin,nouid,ghost\n"})

    def lay_sample(self):
        """The sample that a person develops with."""
        shutil.rmtree(self.root, ignore_errors=True)
        subprocess.run([SOURCE / "dev/make-sample-appliance", self.root], check=True)

    def path(self, name):
        return self.root / FILES.get(name, name)

    def store(self, **files):
        """Writes files: a list of schedules or a document, a text as it stands; None removes. A
        function makes the file itself, from its path."""
        self.settle()
        for name, value in files.items():
            path = self.path(name)
            path.unlink(missing_ok=True)
            if callable(value):
                value(path)
            elif value is not None:
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text_of(name, value), encoding="utf-8", errors="surrogateescape")
        return self

    def stored(self):
        """The documents of tuner 0, None without a file, and the daemon's commands."""
        files = {name: text.decode() for name, text in self.snapshot().items()}
        return types.SimpleNamespace(
            **{name: json.loads(files.get(name, "null"))
               for name in ("one_shot", "repeat", "user_defined")},
            commands=files.get("commands", "").splitlines())

    def snapshot(self):
        """Every file of the tree but hidden ones, by its name in FILES, else by its path."""
        names = {path: str(path.relative_to(self.root)) for path in self.root.rglob("[!.]*")
                 if path.is_file()}
        return {NAMES.get(name, name): path.read_bytes() for path, name in names.items()}

    def request(self, method, user="admin", now=NOW, zone="UTC", under=(), **parameters):
        """Asks for a method as a web server does; parameters that are None are left out.

        What the request may change is told afterwards to expect_changes(). If it is not called,
        nothing may have changed. `now` is a time in UTC, None for the real one; `under` is a
        command that runs the program.
        """
        given = {key: value for key, value in {"method": method, **parameters}.items()
                 if value is not None}
        return self.run({"QUERY_STRING": urllib.parse.urlencode(given)}, user=user, now=now,
                        zone=zone, under=under)

    def run(self, environment, body="", form="", is_described=True, user="admin", **options):
        """The same with any CGI environment and a body, of which the program reads `form`.
        `is_described` is false for another API."""
        run = self.launch({"REMOTE_USER": user} | environment, input=body.encode(), **options)
        errors = run.stderr.decode()
        log = re.findall(rf"^{self.program.name}\[\d+\]: (.*)$", errors, re.MULTILINE)
        assert (run.returncode, len(log)) == (0, errors.count("\n")), errors
        head, _, text = run.stdout.decode().partition("\r\n\r\n")
        assert head == HEAD and re.fullmatch(r"[\x20-\x7f]+\n", text), run.stdout
        answer = json.loads(text)
        if is_described:  # of one name the first counts, and a text ends at NUL
            query = f"{environment.get('QUERY_STRING', '')}&{form}"
            pairs = urllib.parse.parse_qsl(query, keep_blank_values=True)
            observe({name: value.partition("\0")[0] for name, value in reversed(pairs)}, answer)
        return Answer(answer.get("error", {}).get("code"), answer.get("data"), log)

    def launch(self, environment, now=NOW, zone="UTC", under=(), **options):
        """Runs the program to its end, whatever it answers."""
        self.settle()
        self._before = self.snapshot()
        if under and self.emulator:
            pytest.skip("strace would see the calls of the emulator")
        return subprocess.run([*under, *self.emulator, self.program], capture_output=True,
                              timeout=60, **options,
                              env=program_environment(now, zone, syncs=under) | environment)

    def expect_changes(self, **expected):
        """Asserts what the last request left in the files that it may change.

        A file is given as in store(), and `commands` as the list of the lines that were added.
        All other files must be as they were, byte for byte.
        """
        __tracebackhide__ = True
        before, after, self._before = self._before, self.snapshot(), None
        changes = {name: self._change(name, before, after, expected)
                   for name in before | after | expected
                   if before.get(name) != after.get(name) or name in expected}
        wanted, changed = (
            [f"{name}: {line}" for name in sorted(files)
             for line in text_of(name, files[name]).split("\n")] for files in (expected, changes))
        difference = difflib.unified_diff(wanted, changed, "expected", "changed", lineterm="")
        assert wanted == changed, "\n".join(difference)

    @staticmethod
    def _change(name, before, after, expected):
        if name not in after:
            return "(no file)"
        if name == "commands":
            assert after[name].startswith(before.get(name, b""))
            return after[name][len(before.get(name, b"")):].decode().splitlines()
        text = after[name].decode("utf-8", "replace")
        return text if isinstance(expected.get(name), str) else json.loads(text)

    def settle(self):
        """Asserts that the last request changed nothing, unless expect_changes() has asked."""
        __tracebackhide__ = True
        if self._before is not None:
            self.expect_changes()

    def forget(self):
        """Accepts whatever the last request changed."""
        self._before = None


def program_environment(now, zone, syncs):
    """The clock, the zone and the sanitizers of a program under test, and whether it waits for the
    disk."""
    preloaded = [*([] if now is None else [FAKETIME]), *([] if syncs else [EATMYDATA])]
    clock = {} if now is None else {"FAKETIME": str(epoch(now)), "FAKETIME_FMT": "%s",
                                    "NO_FAKE_STAT": "1"}
    return {"PATH": os.environ["PATH"], "TZ": zone, "LD_PRELOAD": ":".join(preloaded), **clock,
            "ASAN_OPTIONS": "verify_asan_link_order=0:detect_leaks=0"}


def pytest_addoption(parser):
    parser.addoption("--build", default="build/dev", help="build to test, below the source folder")


def pytest_sessionfinish(session):
    """Fails a run of all tests in which something described was never seen."""
    options = session.config.option
    is_whole = options.file_or_dir == ["tests"] and not options.keyword and not options.markexpr
    if is_whole and session.testsfailed == 0 and unseen():
        session.exitstatus = 1
        print("\ndocs/openapi.yaml describes what no test has seen:", *unseen())


@pytest.fixture(scope="session")
def build(pytestconfig):
    """The build under test: its folder, its program, the tree that the program works on, and the
    command that runs a program of another processor. Other tests of it wait until these are done.
    """
    folder = SOURCE / pytestconfig.getoption("--build")
    cache = dict(re.findall(r"^(\w+):\w+=(.+)$", (folder / "CMakeCache.txt").read_text(), re.M))
    with open(folder / "tests.lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        yield types.SimpleNamespace(
            folder=folder, root=Path(cache["APPLIANCE_ROOT"]),
            program=folder / "schedule_recording",
            emulator=re.findall("[^;]+", cache.get("CMAKE_CROSSCOMPILING_EMULATOR", "")))


@pytest.fixture
def appliance(build, request):
    """A fresh appliance for each test. What a request changes must be named: expect_changes()."""
    failed = request.session.testsfailed
    appliance = Appliance(build).lay()
    yield appliance
    if request.session.testsfailed == failed:
        appliance.settle()


@contextlib.contextmanager
def sample_server(build, folder, under=()):
    """A web server that runs the program, by a command if one is given, over the sample appliance.
    Its `url` is on the loopback interface; the endpoint is at /webapi/schedule_recording; each
    login is its own password."""
    if build.emulator:
        pytest.skip("a web server cannot start a program of another processor")
    appliance = Appliance(build)
    appliance.lay_sample()
    program, logins, log = (folder / name for name in ("schedule_recording", "logins", "log"))
    program.write_text(f"#!/bin/sh\nexec {shlex.join([*under, str(build.program)])}\n")
    program.chmod(0o755)
    shutil.copy(appliance.path("etc/logins"), logins)
    with lighttpd(program, logins, log) as (_, port):
        yield types.SimpleNamespace(url=f"http://127.0.0.1:{port}", appliance=appliance)
    assert "Sanitizer" not in log.read_text(errors="replace")


@pytest.fixture
def web_server(build, tmp_path):
    with sample_server(build, tmp_path) as server:
        yield server
