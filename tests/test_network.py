"""What the base class, network/ and text_list/ give to other API classes of the package: shared
links, lists, the appliance's address outside, and the guard that runs a block as root."""
import json
import re

import pytest
from conftest import Answer, case, needs_root

BOX = "box.tvr.example.com"  # a host under the relay domain
PORTWAY = "usr/kald/webapi/KALD.Core.Portway.2.get.json"
PERMIT = "usr/kald/webapi/KALD.Core.Portway.Permission.1.get.json"
PORTS = "external_port_zem_https=444\nexternal_port_zem_http=88\n"
HOST = 'external_host_ip="out"\nexternal_host_ip=later\n'
LONG = "a" * 5000
ON, PORTAL = {"data": {"enabled": True}}, {"enabled": True, "id": "zem_portal"}


@pytest.fixture
def other(build, appliance):
    """The same appliance with another API class of the package, and the relay service on."""
    if build.emulator:
        pytest.skip("there is no other class for another processor")
    appliance.program = build.folder / "tests/other_api"
    return appliance.store(**{PORTWAY: ON, PERMIT: {"data": {"services": [PORTAL]}}})


def ask(other, *questions, under=(), user="admin", query="", **environment):
    environment["QUERY_STRING"] = f"ask={','.join(questions)}&{query}".replace(" ", "%20")
    answer = other.run(environment, "body", is_described=False, user=user, under=under)
    other.forget()  # the tools leave files
    return answer


def install(other, **tools):
    """Tools that note that they were started with the right argument, and print a text and what
    they are sent."""
    for name, text in tools.items():
        argument = {"ddnsinfo": "--get-hostname", "relayd": "-p"}[name]
        path = f"usr/kald/sbin/kald{name}"
        other.store(**{path: f"#!/bin/sh\n[ \"$*\" = {argument} ] || exit\n"
                       f"printf {name[0]} >>{other.root}/started\nprintf '{text}'; cat\n"})
        other.path(path).chmod(0o755)


@pytest.mark.parametrize("user, link, code, judged", [
    ("", "good", None, 2), ("locked", "bad", 107, 2), ("", "bad", 106, 2), ("", "", 106, 1)])
def test_shared_link_is_judged_once(other, user, link, code, judged):
    answer = ask(other, "sharing", "sharing", user=user, query=f"sharing_id={link}")
    assert answer == Answer(code, None if code else ["yes", "yes"],
                            ["SupportsSharing", "IsSharingIdValid"][:judged])


def test_privileges_are_written_when_the_object_goes(other):
    other.store(users={"7": 1, "1026": {"sharing": True, "renderer": False}})
    assert ask(other, "may share", "may render", "grant", user="viewer").data == [
        "yes", "no", "yes"]
    assert json.loads(other.path("users").read_text()) == {
        "1026": {"dtv": False, "renderer": False, "sharing": True}, "7": {"dtv": True}}


def test_not_found_page(other):
    run = other.launch({"QUERY_STRING": "ask=not%20found", "REMOTE_USER": "admin"})
    assert run.stdout.startswith(b"Cache-control: no-store\r\nStatus: 404 Not Found\r\n\r\n")


@pytest.mark.parametrize("questions, query, answers", [
    case("number in decimal", ["number"], "n=-012x", ["-12"]),
    case("no number", ["number"], "n=x7", ["0"]), case("none given", ["number"], "N=1", [""]),
    case("no parts", ["parts"], "text=&separator=,", [""]),
    case("empty parts", ["parts"], "text=,a;b,,c,&separator=,", [" | a;b |  | c | "]),
    case("byte between", ["parts"], "text=a%E9b&separator=%E9", ["a | b"]),
    case("second save", ["save", "save"], "method=other", ["yes", "yes"]),
    case("of one", ["save", "save"], "method=create_repeat", ["yes", "no"])])
def test_answers_about_a_request(other, questions, query, answers):
    assert ask(other, *questions, query=query).data == answers


@pytest.mark.parametrize("host, uri, tls, answer", [
    ("", "/tv/webapi/x", {"HTTPS": "on"}, "/tv "), (BOX, "", {}, f" https://{BOX}"),
    ("tv", "/tv/webapi/webapi", {"HTTPS": "off"}, "/tv https://tv/tv"),
    (BOX + ":80", "/tv?a=/web", {}, f"/tv?a=/web http://{BOX}:80/tv?a=/web")])
def test_address_of_a_request(other, host, uri, tls, answer):
    environment = {"HTTP_HOST": host, "REQUEST_URI": uri, **tls}
    assert ask(other, "request", **environment).data == [answer]


@pytest.mark.parametrize("location, parts", [
    ("tv:/x", ["tv", ""]), ("a:b:c/d", ["a", "b:c"]), ("[::1", ["[::1", ""]),
    ("[::1]x:80", ["[::1]", ""]), (f"{LONG}:{LONG}", [LONG[:4095], LONG[:4095]])])
def test_host_and_port(other, location, parts):
    assert ask(other, "host,port", HTTP_HOST=location).data == parts


@pytest.mark.parametrize("environment, settings, tools, address, started", [
    ({"HTTP_HOST": "a:81", "HTTPS": "oN", "SERVER_PORT": "443"}, PORTS, {}, "444 a https://a:444",
     ""),
    ({"HTTP_HOST": "[::]:82/x", "HTTPS": "off", "SERVER_PORT": "", "REQUEST_URI": "/tv/webapi"},
     "", {"ddnsinfo": ""}, "82 [::] http://[::]:82/tv", "dd"),
    ({"HTTP_HOST": "a", "SERVER_PORT": "4"}, "", {"ddnsinfo": "dyn x"}, "4 dyn http://dyn:4", "dd"),
    ({"HTTP_HOST": "a", "SERVER_PORT": "80"}, PORTS, {"relayd": BOX + "\\r\\n"},
     f"88 {BOX}\r\n https://{BOX}/direct", "r"),
    ({"HTTP_HOST": BOX + ":81/x", "REQUEST_URI": "/a/webapi"}, PORTS + HOST,
     {"relayd": BOX + "\\n"}, f"81 {BOX} https://{BOX}/direct/a", "r"),
    ({"HTTP_HOST": BOX + ":1"}, HOST, {"relayd": "Box.a"}, "1 out http://out:1", "r"),
    ({"HTTP_HOST": "box"}, 'external_host_ip="ou\n', {"relayd": BOX}, ' "ou http://"ou', "r")],
    ids=str)
def test_external_address(other, environment, settings, tools, address, started):
    install(other, **tools)
    other.store(**{"etc/kaldinfo.conf": settings, "started": ""})
    answer = ask(other, "port", "host", "external", **environment)
    assert (" ".join(answer.data), other.path("started").read_text()) == (address, started)


@pytest.mark.parametrize("portway, services, host", [
    case("on", {"data": {"enabled": 1}}, [7, PORTAL], "box"), case("off", 7, [PORTAL], "a"),
    case("for others", ON, [PORTAL | {"enabled": False}, PORTAL | {"id": 7}], "a"),
    case("for no list", ON, PORTAL, "a"), case("no data", {"data": 7}, [PORTAL], "a")])
def test_relay_service(other, portway, services, host):
    other.store(**{PORTWAY: portway, PERMIT: {"data": {"services": services}}})
    install(other, relayd="box")
    assert ask(other, "host", HTTP_HOST="a").data == [host]


def ask_as_uid_9(other, trace, *questions, fails):
    """The answer to questions as uid 9 and gid 8, and the changes of ids: u0 is to uid 0."""
    under = ["strace", "-f", "-qq", "-o", trace, "-e", "trace=setresuid,setresgid",
             "-e", f"inject={fails[0]}:error=EPERM:when={fails[1]}"]
    answer = ask(other, "become", *questions, under=under)
    calls = re.findall(r"setres([ug])id\(-1, (\d+), -1\)", trace.read_text())
    return answer.data[1:], answer.log, " ".join(map("".join, calls[2:]))


IN, BACK = (f"network_utils:7 ERROR: {name}" for name in ("IF_RUN_AS(0, 0)", "~IF_RUN_AS(9, 8)"))


@needs_root
@pytest.mark.parametrize("fails, answer, log, calls", [
    case("nothing fails", ("setresuid", 99), "yes", [], "u0 g0 u0 u5 u0 g8 u9"),
    case("to user 0", ("setresuid", 2), "no", [IN], "u0"),
    case("to group 0", ("setresgid", 2), "no", [IN], "u0 g0 u9"),
    case("to user 0 again", ("setresuid", 3), "no", [IN], "u0 g0 u0 g8 u9"),
    case("back to user 0", ("setresuid", 5), "yes", [BACK], "u0 g0 u0 u5 u0"),
    case("back to the user", ("setresuid", 6), "yes", [BACK], "u0 g0 u0 u5 u0 g8 u9")])
def test_guard(other, tmp_path, fails, answer, log, calls):
    """Its changes of ids: u5 is to uid 5, which the guarded block does, g8 to gid 8."""
    assert ask_as_uid_9(other, tmp_path / "trace", "guard", fails=fails) == ([answer], log, calls)


@needs_root
@pytest.mark.parametrize("fails, hosts, line, started", [
    (2, ["dyn", "dyn"], 185, "dd"), (5, [BOX, "dyn"], 95, "rd")])
def test_names_are_asked_as_root_and_the_relay_once(other, tmp_path, fails, hosts, line, started):
    install(other, ddnsinfo="dyn ", relayd=BOX)
    found, log, _ = ask_as_uid_9(other, tmp_path / "trace", "host", "host",
                                 fails=("setresuid", fails))
    assert (found, log) == (hosts, [f"network_utils:{line} ERROR: IF_RUN_AS(0, 0)"])
    assert other.path("started").read_text() == started
