"""The appliance under test: a fresh tree for each test, the built program, and what it leaves."""
import dataclasses
import fcntl
import glob
import json
import os
import re
import shutil
import socket
import subprocess
import time
import urllib.parse
from pathlib import Path

import pytest
from schedules import Schedule, epoch

pytest.register_assert_rewrite("api_description")
from api_description import observe  # noqa: E402
pytest_plugins = ["api_description"]
SOURCE = Path(__file__).resolve().parent.parent
NOW = "2025-07-01 12:00"  # a Tuesday
[FAKETIME] = glob.glob("/usr/lib/*/faketime/libfaketime.so.1")
[EATMYDATA] = glob.glob("/usr/lib/*/libeatmydata.so.1")
ETC = "var/packages/Tremolane/etc"
FILES = {
    "one_shot": f"{ETC}/dtvschedules/0dtv_schedule.json",
    "repeat": f"{ETC}/dtvrepeatschedules/0dtv_repeat_schedule.json",
    "one_shot_of_1": f"{ETC}/dtvschedules/1dtv_schedule.json",
    "repeat_of_1": f"{ETC}/dtvrepeatschedules/1dtv_repeat_schedule.json",
    "user_defined": f"{ETC}/dtvuserdefineschedules.json",
    "folders": f"{ETC}/folder.conf",
    "users": f"{ETC}/users.conf",
    "commands": "var/run/dtvd/commands",
    "passwd": "etc/passwd",
    "group": "etc/group",
}
NAMES = {path: name for name, path in FILES.items()}
ACCOUNTS = """admin:x:1024:100::/:
viewer:x:1026:100::/:
guest:x:1027:100::/:
locked:!:1028:100::/:
nouid:x:4294967295:100::/:
"""
FOLDER = {"section": "tv_record", "share": "video", "subpath": "tv"}


@dataclasses.dataclass
class Answer:
    """What a client gets and the system log holds; Answer() is a plain success."""
    code: int | None = None
    data: object = None
    log: list = dataclasses.field(default_factory=list)
    headers: dict = dataclasses.field(default_factory=dict, compare=False, repr=False)
    body: dict = dataclasses.field(default_factory=dict, compare=False, repr=False)


@dataclasses.dataclass
class Stored:
    """The documents of tuner 0 and the daemon's commands; None means there is no such file."""
    one_shot: list | None = None
    repeat: list | None = None
    user_defined: list | None = None
    commands: list | None = None


def parameters_of(query, form=""):
    """The parameters of a request: of one name the first counts, and a text ends at NUL."""
    pairs = urllib.parse.parse_qsl(f"{query}&{form}", keep_blank_values=True)
    return {name: text.partition("\0")[0] for name, text in reversed(pairs)}


def parse_answer(parameters, headers, body, log=()):
    """The only way from an answer's text to an Answer, over CGI and over HTTP. Without parameters
    it is not one of this API."""
    assert body.endswith("\n") and body.count("\n") == 1 and body.isascii(), body
    document = json.loads(body)
    assert document["success"] == ("error" not in document), body
    code = document["error"]["code"] if "error" in document else None
    answer = Answer(code, document.get("data"), list(log), headers, document)
    if parameters is not None:
        observe(parameters.get("method", ""), parameters, answer)
    return answer


def case(name, *values, **marks):
    """A row of a parametrised test; the name is what pytest -k finds."""
    return pytest.param(*values, id=name, **marks)


def is_ignored(path):
    """Whether a file of the tree is no document: a lock, or what a save is about to replace."""
    return path.name.startswith(".") or path.suffix in (".lock", ".tmp")


def in_forms(name, value):
    """A document for the named file, with each Schedule in the form that the file has of it."""
    if isinstance(value, list):
        return [in_forms(name, element) for element in value]
    if isinstance(value, Schedule):
        return value.record() if name == "user_defined" else value.stored()
    return value


def leaves(document, path=""):
    """The JSON of every value that holds no other, by its path."""
    if not document or not isinstance(document, (dict, list)):
        return {path: json.dumps(document)}
    children = document.items() if isinstance(document, dict) else enumerate(document)
    return {name: leaf for key, child in children
            for name, leaf in leaves(child, f"{path}/{key}").items()}


class Appliance:
    """A tree at the build's APPLIANCE_ROOT. Files are named by FILES, or by their path."""

    def __init__(self, build):
        self.program, self.root, self.emulator = build.program, build.root, build.emulator
        self._before = None

    def lay(self):
        """A fresh tree: accounts, one user with the privilege, a recording folder, no schedule."""
        shutil.rmtree(self.root, ignore_errors=True)
        for name in ("one_shot", "repeat", "commands", "passwd"):
            self.path(name).parent.mkdir(parents=True, exist_ok=True)
        (self.root / "volume1/video/tv").mkdir(parents=True)
        self.store(passwd=ACCOUNTS, group="administrators:x:101:admin,nouid,ghost\n",
                   users={"1026": {"dtv": True}}, folders=[FOLDER])

    def path(self, name):
        return self.root / FILES.get(name, name)

    def store(self, **files):
        """Writes files: a list of schedules or a document, a text as it stands; None removes."""
        self.settle()
        for name, value in files.items():
            path = self.path(name)
            path.unlink(missing_ok=True)
            if value is not None:
                text = value if isinstance(value, str) else json.dumps(in_forms(name, value))
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8", errors="surrogateescape")
        return self

    def stored(self):
        def load(name):
            path = self.path(name)
            return json.loads(path.read_text(encoding="utf-8")) if path.exists() else None
        commands = self.path("commands")
        return Stored(load("one_shot"), load("repeat"), load("user_defined"),
                      commands.read_text().splitlines() if commands.exists() else None)

    def snapshot(self):
        """Every file of the tree by its name in FILES, else by its path."""
        files = {}
        for path in self.root.rglob("*"):
            if path.is_file() and not is_ignored(path):
                name = str(path.relative_to(self.root))
                files[NAMES.get(name, name)] = path.read_bytes()
        return files

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

    def run(self, environment, body="", form="", is_described=True, user="admin", now=NOW,
            zone="UTC", under=()):
        """The same with any CGI environment and a body, of which the program reads `form`.
        `is_described` is false for another API."""
        run = self.launch({"REMOTE_USER": user} | environment, now, zone, under,
                          input=body.encode())
        lines = run.stderr.decode().splitlines()
        log = [line.split("]: ", 1)[1] for line in lines if line.startswith(self.program.name)]
        assert run.returncode == 0, f"ends with {run.returncode}: {run.stderr.decode()}"
        assert len(log) == len(lines), run.stderr.decode()
        head, _, text = run.stdout.decode().partition("\r\n\r\n")
        headers = dict(line.split(": ", 1) for line in head.split("\r\n"))
        parameters = parameters_of(environment.get("QUERY_STRING", ""), form)
        return parse_answer(parameters if is_described else None, headers, text, log)

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
        before, self._before = self._before, None
        after = self.snapshot()
        changed = {name: self._change(name, before, after, expected) for name in before | after
                   if before.get(name) != after.get(name)}
        expected = {name: in_forms(name, value) for name, value in expected.items()}
        found, wanted = leaves(changed), leaves(expected)
        differing = {path: f"{found.get(path)} instead of {wanted.get(path)}"
                     for path in found | wanted if found.get(path) != wanted.get(path)}
        assert differing == {}

    def settle(self):
        """Asserts that the last request changed nothing, unless expect_changes() has asked."""
        __tracebackhide__ = True
        if self._before is not None:
            self.expect_changes()

    def forget(self):
        """Accepts whatever the last request changed."""
        self._before = None

    @staticmethod
    def _change(name, before, after, expected):
        if name not in after:
            return "(no file)"
        text = after[name].decode("utf-8", "replace")
        if name == "commands":
            assert after[name].startswith(before.get(name, b""))
            return after[name][len(before.get(name, b"")):].decode().splitlines()
        return text if isinstance(expected.get(name), str) else json.loads(text)


def program_environment(now, zone, syncs):
    """The clock, the zone and the sanitizers of a program under test, and whether it waits for the
    disk."""
    preloaded = [*([] if now is None else [FAKETIME]), *([] if syncs else [EATMYDATA])]
    clock = {} if now is None else {"FAKETIME": str(epoch(now)), "FAKETIME_FMT": "%s",
                                    "NO_FAKE_STAT": "1"}
    return {"PATH": os.environ["PATH"], "TZ": zone, "LD_PRELOAD": ":".join(preloaded), **clock,
            "ASAN_OPTIONS": "verify_asan_link_order=0:detect_leaks=0"}


@dataclasses.dataclass(frozen=True)
class Build:
    """A folder that CMake has built in, its program, the tree that the program works on, and the
    command that runs a program of another processor."""
    folder: Path
    program: Path
    root: Path
    emulator: list


def pytest_addoption(parser):
    parser.addoption("--build", default="build/dev", help="build to test, below the source folder")


@pytest.fixture(scope="session")
def build(pytestconfig):
    """The build under test. Other tests of the same build wait until these are done."""
    folder = SOURCE / pytestconfig.getoption("--build")
    cache = (folder / "CMakeCache.txt").read_text(encoding="utf-8")
    root = Path(re.search(r"^APPLIANCE_ROOT:\w+=(/.+)$", cache, re.MULTILINE)[1])
    emulator = re.search(r"^CMAKE_CROSSCOMPILING_EMULATOR:\w+=(.+)$", cache, re.MULTILINE)
    with open(folder / "tests.lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        yield Build(folder, folder / "schedule_recording", root,
                    emulator[1].split(";") if emulator else [])


@pytest.fixture
def appliance(build):
    """A fresh appliance for each test. What a request changes must be named: expect_changes()."""
    appliance = Appliance(build)
    appliance.lay()
    return appliance


@pytest.hookimpl(hookwrapper=True)
def pytest_pyfunc_call(pyfuncitem):
    """A test has only passed if its last request changed nothing but what the test named."""
    __tracebackhide__ = True
    outcome = yield
    outcome.get_result()
    if "appliance" in pyfuncitem.funcargs:
        pyfuncitem.funcargs["appliance"].settle()


class WebServer:
    """A web server on the loopback interface that runs a program; `url` is where it answers."""

    def __init__(self, program, appliance, folder):
        self.appliance = appliance
        self.log = folder / "log"
        self._program, self._folder = program, folder

    def lay_sample(self):
        """Replaces the appliance's tree with the sample that a person develops with."""
        shutil.rmtree(self.appliance.root, ignore_errors=True)
        subprocess.run([SOURCE / "dev/make-sample-appliance", self.appliance.root], check=True)
        return self

    def __enter__(self):
        if self.appliance.emulator:
            pytest.skip("a web server cannot start a program of another processor")
        self.lay_sample()
        shutil.copy(self.appliance.root / "etc/logins", self._folder)
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            port = probe.getsockname()[1]
        self.url = f"http://127.0.0.1:{port}"
        self._output = open(self.log, "w", encoding="utf-8")
        environment = {"WEB_PORT": str(port), "WEB_PROGRAM": str(self._program),
                       "WEB_LOGINS": str(self._folder / "logins"), "WEB_ACCESS_LOG": "/dev/null",
                       "WEB_PAGE": str(SOURCE / "web"),
                       "PATH": os.environ["PATH"] + ":/usr/sbin"}
        command = ["lighttpd", "-D", "-f", SOURCE / "dev/lighttpd.conf"]
        self._server = subprocess.Popen(["setpriv", "--pdeathsig", "TERM", *command],
                                        stderr=self._output, env=os.environ | environment)
        while socket.socket().connect_ex(("127.0.0.1", port)) != 0:
            assert self._server.poll() is None, self.log.read_text()
            time.sleep(0.02)
        return self

    def __exit__(self, *_):
        self._server.terminate()
        self._server.wait()
        self._output.close()
        assert "Sanitizer" not in self.log.read_text(errors="replace")


@pytest.fixture(scope="session")
def web_server(build, tmp_path_factory):
    """One web server for all tests; it ends with them. Each test that names this fixture finds the
    sample appliance afresh in `web_server.appliance`, and the endpoint at
    `web_server.url + "/webapi/schedule_recording"`, where each sample login is its own password."""
    with WebServer(build.program, Appliance(build), tmp_path_factory.mktemp("web")) as server:
        yield server


@pytest.fixture(autouse=True)
def fresh_sample(request):
    """Lays the sample for each test of the web server: the tests share one tree."""
    if "web_server" in request.fixturenames:
        request.getfixturevalue("web_server").lay_sample()
