"""What the base class and network/ give to other API classes of the package: shared links, the
appliance's address outside, and the guard that runs a block as root."""
import json
import os
import re

import pytest
from conftest import Answer, case

BOX = "box.tvr.example.com"  # a host under the relay domain
PORTWAY = "usr/kald/webapi/KALD.Core.Portway.2.get.json"
PERMIT = "usr/kald/webapi/KALD.Core.Portway.Permission.1.get.json"
PORTS = "external_port_zem_https=444\nexternal_port_zem_http=88\n"
HOST = "external_host_ip=out\n"
ON, PORTAL = {"data": {"enabled": True}}, {"enabled": True, "id": "zem_portal"}


@pytest.fixture
def other(build, appliance):
    """The same appliance with another API class of the package, and the relay service on."""
    appliance.program = build.folder / "tests/other_api"
    return appliance.store(**{PORTWAY: ON, PERMIT: {"data": {"services": [PORTAL]}}})


def ask(other, *questions, under=(), user="admin", query="", **environment):
    environment["QUERY_STRING"] = f"ask={','.join(questions)}&{query}".replace(" ", "%20")
    answer = other.run(environment, is_described=False, user=user, under=under)
    other.forget()  # the tools leave files
    return answer


def install(other, **tools):
    """Tools that print a text and note that they were started with the right argument."""
    for name, text in tools.items():
        argument = {"ddnsinfo": "--get-hostname", "relayd": "-p"}[name]
        path = f"usr/kald/sbin/kald{name}"
        other.store(**{path: f"#!/bin/sh\n[ \"$*\" = {argument} ] || exit\n"
                       f"printf {name[0]} >>{other.root}/started\nprintf '{text}'\n"})
        other.path(path).chmod(0o755)


@pytest.mark.parametrize("user, link, code, judged", [
    ("", "good", None, 2), ("locked", "bad", 107, 2), ("admin", "good", None, 2),
    ("", "bad", 106, 2), ("", "", 106, 1)])
def test_shared_link_is_judged_once(other, user, link, code, judged):
    answer = ask(other, "sharing", "sharing", user=user, query=f"sharing_id={link}")
    assert answer == Answer(code, None if code else ["yes", "yes"],
                            ["SupportsSharing", "IsSharingIdValid"][:judged])


def test_privileges_of_other_classes(other):
    other.store(users={"1027": {"sharing": True, "renderer": False}})
    assert ask(other, "may share", "may render", user="guest").data == ["yes", "no"]


def test_not_found_page(other):
    run = other.launch({"QUERY_STRING": "ask=not%20found", "REMOTE_USER": "admin"})
    assert run.stdout.startswith(b"Cache-control: no-store\r\nStatus: 404 Not Found\r\n\r\n")


@pytest.mark.parametrize("query, number", [
    ("n", "0"), ("n=012", "12"), ("n=-3", "-3"), ("n=7x", "7"), ("n=x7", "0"), ("N=1", "")])
def test_number_parameter_in_decimal(other, query, number):
    assert ask(other, "number", query=query).data == [number]


@pytest.mark.parametrize("host, uri, https, base, url", [
    ("", "/tv/webapi/x", "on", "/tv", ""), ("tv:81", "/webapi/x", None, "", "http://tv:81"),
    ("tv", "/tv/webapi/webapi", "off", "/tv", "https://tv/tv"),
    ("tv", "/tv?a=/web", None, "/tv?a=/web", "http://tv/tv?a=/web"),
    (BOX, "", None, "", f"https://{BOX}"), (BOX + ":80", "", None, "", f"http://{BOX}:80")])
def test_request_url(other, host, uri, https, base, url):
    tls = {"HTTPS": https} if https else {}
    assert ask(other, "base", "request", HTTP_HOST=host, REQUEST_URI=uri, **tls).data == [base, url]


@pytest.mark.parametrize("environment, settings, tools, address, started", [
    ({"HTTP_HOST": "a:81", "HTTPS": "oN", "SERVER_PORT": "443"}, PORTS, {}, "444 a https://a:444",
     ""),
    ({"HTTP_HOST": "a"}, "external_port_zem_http=1234567890123456", {},
     "123456789012345 a http://a:123456789012345", ""),
    ({"HTTP_HOST": "a:8", "HTTPS": "on", "SERVER_PORT": "43"}, "external_port_zem_https=\n", {},
     "43 a https://a:43", ""),
    ({"HTTP_HOST": "[::]:82/x", "HTTPS": "off", "SERVER_PORT": "", "REQUEST_URI": "/tv/webapi"},
     "", {"ddnsinfo": ""}, "82 [::] http://[::]:82/tv", "dd"),
    ({"HTTP_HOST": "a"}, "", {"ddnsinfo": "dyn x\\ny", "relayd": f"{BOX}\\n"},
     " dyn http://dyn", "rdd"),
    ({"HTTP_HOST": "a"}, "", {"ddnsinfo": "dyn\\nx"}, " dyn\n http://dyn\n", "dd"),
    ({"HTTP_HOST": "a"}, "", {"ddnsinfo": "\\000dyn", "relayd": ""}, " a http://a", "rdd"),
    ({"HTTP_HOST": "a"}, PORTS + HOST, {"ddnsinfo": "dyn x"}, "88 out http://out:88", ""),
    ({"HTTP_HOST": "a", "SERVER_PORT": "80"}, PORTS, {"relayd": BOX + "\\r\\n"},
     f"88 {BOX}\r\n https://{BOX}/direct", "r"),
    ({"HTTP_HOST": BOX + ":81/x", "REQUEST_URI": "/a/webapi"}, PORTS + HOST,
     {"relayd": BOX + "\\n"}, f"81 {BOX} https://{BOX}/direct/a", "r"),
    ({"HTTP_HOST": BOX + "er"}, HOST, {"relayd": "box.a"}, f" {BOX}er https://{BOX}er/direct", "r"),
    ({"HTTP_HOST": BOX + ":1"}, HOST, {"relayd": "bo.a"}, "1 out http://out:1", "r"),
    ({"HTTP_HOST": BOX + ":1"}, HOST, {"relayd": "Box"}, "1 out http://out:1", "r"),
    ({"HTTP_HOST": "box"}, HOST, {"relayd": BOX}, " out http://out", "r")], ids=str)
def test_external_address(other, environment, settings, tools, address, started):
    install(other, **tools)
    other.store(**{"etc/kaldinfo.conf": settings, "started": ""})
    answer = ask(other, "port", "host", "external", **environment)
    assert (" ".join(answer.data), other.path("started").read_text()) == (address, started)


OTHERS = [7, ["zem_portal"], {"enabled": True, "id": 7}, {"enabled": "true", "id": "zem_portal"},
          {"enabled": True, "id": "portal"}, {"enabled": False, "id": "zem_portal"}]


@pytest.mark.parametrize("portway, services, answer", [
    case("on", ON, [*OTHERS, PORTAL], "found box"), case("not here", ON, OTHERS, "none "),
    case("a number is on", {"data": {"enabled": 1}}, [PORTAL], "found box"),
    case("no array", ON, {"x": PORTAL}, "none "),
    *(case(json.dumps(off), off, [PORTAL], "none ") for off in [
        None, 7, {"data": 7}, {"data": {}}, {"data": {"enabled": "true"}},
        {"data": {"enabled": False}}])])
def test_relay_service(other, portway, services, answer):
    other.store(**{PORTWAY: portway, PERMIT: {"data": {"services": services}}})
    install(other, relayd="box")
    assert ask(other, "relay").data == [answer]


def ids_changed(other, trace, *questions, fails):
    """The answer to questions asked as uid 9 and gid 8, and the changes of ids: u0 is to uid 0."""
    under = ["strace", "-f", "-qq", "-o", trace, "-e", "trace=setresuid,setresgid",
             "-e", f"inject={fails[0]}:error=EPERM:when={fails[1]}"]
    answer = ask(other, "become", *questions, under=under)
    calls = re.findall(r"setres([ug])id\(-1, (\d+), -1\)", trace.read_text())
    return answer.data[1:], answer.log, " ".join(map("".join, calls[2:]))


IN, BACK = (f"network_utils:7 ERROR: {name}" for name in ("IF_RUN_AS(0, 0)", "~IF_RUN_AS(9, 8)"))
needs_root = pytest.mark.skipif(os.geteuid() != 0, reason="only root can change its ids")


@needs_root
@pytest.mark.parametrize("question, fails, answer, log, calls", [
    ("guard", ("setresuid", 99), "yes", [], "u0 g0 u0 g8 u9"),
    ("guard a loss", ("setresuid", 99), "yes", [], "u0 g0 u0 u5 u0 g8 u9"),
    ("guard", ("setresuid", 2), "no", [IN], "u0"),
    ("guard", ("setresgid", 2), "no", [IN], "u0 g0 u9"),
    ("guard", ("setresuid", 3), "no", [IN], "u0 g0 u0 g8 u9"),
    ("guard a loss", ("setresuid", 5), "yes", [BACK], "u0 g0 u0 u5 u0"),
    ("guard a loss", ("setresgid", 3), "yes", [BACK], "u0 g0 u0 u5 u0 g8"),
    ("guard a loss", ("setresuid", 6), "yes", [BACK], "u0 g0 u0 u5 u0 g8 u9")], ids=str)
def test_guard(other, tmp_path, question, fails, answer, log, calls):
    assert ids_changed(other, tmp_path / "trace", question, fails=fails) == ([answer], log, calls)


@needs_root
@pytest.mark.parametrize("questions, answers, line", [
    (("ddns", "relay", "relay"), ["none untouched", f"found {BOX}", f"found {BOX}"], 95),
    (("relay", "relay", "ddns"), ["none ", "none ", "found dyn"], 185)])
def test_relay_name_is_asked_once_in_a_process(other, tmp_path, questions, answers, line):
    install(other, ddnsinfo="dyn ", relayd=BOX)
    found, log, _ = ids_changed(other, tmp_path / "trace", *questions, fails=("setresuid", 2))
    assert (found, log) == (answers, [f"network_utils:{line} ERROR: IF_RUN_AS(0, 0)"])
