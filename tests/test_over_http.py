"""The program behind a real web server: logins, forms, what docs/api.md shows, and the package."""
import json
import os
import re
import subprocess

import pytest
from conftest import SOURCE, Appliance, WebServer, case, parse_answer


def curl(*arguments):
    run = subprocess.run(["curl", "--silent", "--noproxy", "*", "--write-out",
                          "\n%{http_code} %{content_type}", *arguments],
                         capture_output=True, check=True, text=True)
    body, _, status = run.stdout.rpartition("\n")
    return body, status


@pytest.mark.parametrize("login, where, header, code", [
    case("without the privilege", "guest", "webapi", "X: y", 105),
    case("another name in a header", "guest", "webapi", "Remote-User: admin", 105),
    case("where no login is asked for", "admin", "open", "X: y", 106),
    case("a name in a header there", "admin", "open", "Remote-User: admin", 106)])
def test_over_http_refused(web_server, login, where, header, code):
    body, status = curl("-u", f"{login}:{login}", "-H", header,
                        f"{web_server.url}/{where}/schedule_recording?method=list")
    assert status == "200 application/json; charset=utf-8"
    assert parse_answer({"method": "list"}, {}, body).code == code


@pytest.mark.parametrize("arguments, path, status", [
    case("wrong password", ("-u", "viewer:admin"), "webapi/schedule_recording", "401"),
    case("unknown user", ("-u", "nobody:"), "webapi/schedule_recording", "401"),
    case("a name in a header", ("-H", "Remote-User: admin"), "webapi/schedule_recording", "401"),
    case("another path", ("-u", "admin:admin"), "webapi/../etc", "404")])
def test_over_http_not_reached(web_server, arguments, path, status):
    assert curl(*arguments, f"{web_server.url}/{path}?method=list")[1].split()[0] == status


EXAMPLE = re.compile(r"^```sh\n(.*?)^```\n\n^```json\n(.*?)^```$", re.DOTALL | re.MULTILINE)


def shape(value, key=""):
    """What must not differ: members, types and outcome. Texts, times and lengths may."""
    if isinstance(value, dict):
        return {name: shape(member, name) for name, member in value.items()}
    if isinstance(value, list):
        return sorted({json.dumps(shape(element), sort_keys=True) for element in value})
    return value if key in ("success", "code") else type(value).__name__


def check_examples(server):
    page = (SOURCE / "docs/api.md").read_text(encoding="utf-8")
    examples = EXAMPLE.findall(page)
    assert len(examples) == page.count("curl "), "an example of docs/api.md has no answer"
    for command, example in examples:
        command = command.replace("http://127.0.0.1:8080", server.url)
        run = subprocess.run(["bash", "-c", command], capture_output=True, check=True, text=True,
                             env=os.environ | {"no_proxy": "*"})
        assert (command, shape(json.loads(run.stdout))) == (command, shape(json.loads(example)))


def test_over_http_examples_of_the_documentation(web_server):
    check_examples(web_server)


def test_over_http_package(build, tmp_path):
    """The Debian package has its documents, names its libraries and holds a program that works."""
    if "SANITIZE:BOOL=ON" in (build.folder / "CMakeCache.txt").read_text():
        pytest.skip("a build with sanitizers is not packaged")
    subprocess.run(["cpack", "--config", build.folder / "CPackConfig.cmake", "-B", tmp_path],
                   check=True, capture_output=True)
    [package] = tmp_path.glob("schedule-recording_*.deb")
    subprocess.run(["dpkg", "-x", package, tmp_path / "root"], check=True)
    for name in "copyright", "README.md", "docs/api.md":
        assert (tmp_path / "root/usr/share/doc/schedule-recording" / name).stat().st_size > 0
    depends = subprocess.run(["dpkg-deb", "--field", package, "Depends"], check=True,
                             capture_output=True, text=True).stdout
    assert all(name in depends for name in ("libc6", "libjsoncpp", "liburiparser"))
    program = tmp_path / "root/usr/lib/cgi-bin/schedule_recording"
    with WebServer(program, Appliance(build), tmp_path) as server:
        check_examples(server)
