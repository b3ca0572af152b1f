"""The program behind a real web server: logins, forms, what docs/api.md shows, and the package."""
import json
import os
import re
import subprocess

import pytest
from conftest import SOURCE, Appliance, WebServer, case, parameters_of, parse_answer

DONE, GUEST, NO_LOGIN = ({"success": True}, {"success": False, "error": {"code": 105}},
                         {"success": False, "error": {"code": 106}})


def curl(*arguments):
    run = subprocess.run(["curl", "--silent", "--noproxy", "*", "--write-out",
                          "\n%{http_code} %{content_type}", *arguments],
                         capture_output=True, check=True, text=True)
    body, _, status = run.stdout.rpartition("\n")
    return body, status


def ask(server, query, form=None, header="X: y", login="viewer", where="webapi"):
    """The JSON of an answer over HTTP."""
    body, status = curl("-u", f"{login}:{login}", "-H", header, *(["-d", form] if form else []),
                        f"{server.url}/{where}/schedule_recording?{query}")
    assert status == "200 application/json; charset=utf-8", body
    return parse_answer(parameters_of(query, form or ""), {}, body).body


@pytest.mark.parametrize("query, form, first, start, total", [
    case("tuner 0", "method=list", None, "Das Haus am Mühlbach", 0, 12),
    case("page", "method=LIST&tuner=1&start=3&limit=9", None, "A Train Too Late", 3, 4),
    case("form", "", "method=list&limit=1", "Das Haus am Mühlbach", 0, 12),
    case("query string before form", "method=list&start=3&limit=1",
         "start=0&tuner=1", "A Train Too Late", 3, 4)])
def test_over_http_list(web_server, query, form, first, start, total):
    page = ask(web_server, query, form)["data"]
    assert (page["schedules"][0]["title"], page["start"], page["total"]) == (first, start, total)


def test_over_http_create_and_delete(web_server):
    before = web_server.appliance.stored()
    assert ask(web_server, "", "method=create&tuner=0&id=9@8&start_time=2000000000") == DONE
    assert web_server.appliance.stored().one_shot[-1]["start_time"] == 2000000000
    assert ask(web_server, "", "method=delete&tuner=0&id=2000000000&channel_id=9@8") == DONE
    assert web_server.appliance.stored().one_shot == before.one_shot


@pytest.mark.parametrize("login, where, header, answer", [
    case("without the privilege", "guest", "webapi", "X: y", GUEST),
    case("another name in a header", "guest", "webapi", "Remote-User: admin", GUEST),
    case("where no login is asked for", "admin", "open", "X: y", NO_LOGIN),
    case("a name in a header there", "admin", "open", "Remote-User: admin", NO_LOGIN)])
def test_over_http_refused(web_server, login, where, header, answer):
    assert ask(web_server, "method=list", None, header, login, where) == answer


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
