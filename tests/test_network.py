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
SETTINGS = "etc/kaldinfo.conf"
PORTS = "external_port_zem_https=444\nexternal_port_zem_http=88\n"
HOST = "external_host_ip=out\n"
ON = {"data": {"enabled": True}}
PORTAL = {"enabled": True, "id": "zem_portal"}
JUDGED = ["<7> SupportsSharing", "<7> IsSharingIdValid"]
GUARD_FAILS, BACK_FAILS = "ERROR: IF_RUN_AS(0, 0)", "ERROR: ~IF_RUN_AS(9, 8)"


@pytest.fixture
def other(build, appliance):
    """The same appliance with another API class of the package, and the relay service on."""
    appliance.program = build.folder / "tests/other_api"
    return appliance.store(**{PORTWAY: ON, PERMIT: {"data": {"services": [PORTAL]}}})


def ask(other, *questions, under=(), user="admin", query="", **environment):
    environment["QUERY_STRING"] = f"ask={','.join(questions)}&{query}".replace(" ", "%20")
    return other.run(environment, None, user=user, under=under)


def tools(other, **outputs):
    """Tools that print an output, and leave a file if they were started as they should."""
    for name, output in outputs.items():
        argument = {"ddnsinfo": "--get-hostname", "relayd": "-p"}[name]
        other.store(**{f"usr/kald/sbin/kald{name}": f"#!/bin/sh\n[ \"$*\" = {argument} ] || exit\n"
                       f"echo started >>{other.root}/started.{name}\nprintf '{output}'\n"})
        other.path(f"usr/kald/sbin/kald{name}").chmod(0o755)


@pytest.mark.parametrize("user, sharing, code, log", [
    case("good link without login", "", "good", None, JUDGED),
    case("bad link of a locked user", "locked", "bad", 107, JUDGED),
    case("good link of an administrator", "admin", "good", None, JUDGED),
    case("bad link without login", "", "bad", 106, JUDGED),
    case("empty link", "", "", 106, JUDGED[:1])])
def test_shared_link(other, user, sharing, code, log):
    """The link is judged once, and not at all for a login that passes."""
    answer = ask(other, "sharing", "sharing", user=user, query=f"sharing_id={sharing}")
    assert answer == Answer(code, ["yes", "yes"] if code is None else None, log)


def test_privileges_of_other_classes(other):
    other.store(users={"1027": {"sharing": True, "renderer": False}})
    assert ask(other, "may share", "may render", user="guest").data == ["yes", "no"]


def test_not_found_page(other):
    run = other.launch({"QUERY_STRING": "ask=not%20found", "REMOTE_USER": "admin"})
    assert run.stdout.startswith(b"Cache-control: no-store\r\nStatus: 404 Not Found\r\n\r\n")


@pytest.mark.parametrize("query, number", [
    ("n", "0"), ("n=012", "12"), ("n=-3", "-3"), ("n=7x", "7"), ("n=x7", "0"), ("N=1", ""),
    ("", "")])
def test_number_parameter_in_decimal(other, query, number):
    assert ask(other, "number", query=query).data == [number]


@pytest.mark.parametrize("environment, base, url", [
    case("no host", {"HTTPS": "on", "REQUEST_URI": "/tv/webapi/x"}, "/tv", ""),
    case("at the root", {"HTTP_HOST": "tv:81", "REQUEST_URI": "/webapi/x"}, "", "http://tv:81"),
    case("first of two", {"HTTP_HOST": "tv", "REQUEST_URI": "/tv/webapi/webapi"}, "/tv",
         "http://tv/tv"),
    case("no API in it", {"HTTP_HOST": "tv", "REQUEST_URI": "/tv?a=/web"}, "/tv?a=/web",
         "http://tv/tv?a=/web"),
    case("HTTPS off is set", {"HTTP_HOST": "tv", "HTTPS": "off"}, "", "https://tv"),
    case("relay domain", {"HTTP_HOST": BOX}, "", f"https://{BOX}"),
    case("relay domain and port", {"HTTP_HOST": BOX + ":80"}, "", f"http://{BOX}:80")])
def test_request_url(other, environment, base, url):
    assert ask(other, "base", "request", **environment).data == [base, url]


@pytest.mark.parametrize("environment, settings, outputs, address, started", [
    case("configured port for TLS", {"HTTP_HOST": "a:81", "HTTPS": "oN", "SERVER_PORT": "443"},
         PORTS, {}, ("444", "a", "https://a:444"), ""),
    case("port of 16 bytes is cut", {"HTTP_HOST": "a"}, "external_port_zem_http=1234567890123456",
         {}, ("123456789012345", "a", "http://a:123456789012345"), ""),
    case("empty port is none", {"HTTP_HOST": "a:8", "HTTPS": "on", "SERVER_PORT": "43"},
         "external_port_zem_https=\n", {}, ("43", "a", "https://a:43"), ""),
    case("port of the request", {"HTTP_HOST": "[::]:82/x", "HTTPS": "off", "SERVER_PORT": "",
                                 "REQUEST_URI": "/tv/webapi"}, "", {"ddnsinfo": ""},
         ("82", "[::]", "http://[::]:82/tv"), "d"),
    case("dynamic DNS before relay", {"HTTP_HOST": "a"}, "",
         {"ddnsinfo": "dyn x\\ny", "relayd": f"{BOX}\\n"}, ("", "dyn", "http://dyn"), "dr"),
    case("name without a blank keeps its line end", {"HTTP_HOST": "a"}, "",
         {"ddnsinfo": "dyn\\nx"}, ("", "dyn\n", "http://dyn\n"), "d"),
    case("a blank comes first", {"HTTP_HOST": "a"}, "", {"ddnsinfo": " dyn"}, ("", "", "http://"),
         "d"),
    case("nothing but NUL", {"HTTP_HOST": "a"}, "", {"ddnsinfo": "\\000dyn", "relayd": ""},
         ("", "a", "http://a"), "dr"),
    case("name of 1024 bytes is cut", {}, "", {"ddnsinfo": "a" * 1024},
         ("", "a" * 1023, "http://" + "a" * 1023), "d"),
    case("configured host first", {"HTTP_HOST": "a"}, PORTS + HOST, {"ddnsinfo": "dyn x"},
         ("88", "out", "http://out:88"), ""),
    case("relay name at last", {"HTTP_HOST": "a", "SERVER_PORT": "80"}, PORTS,
         {"relayd": BOX + "\\r\\n"}, ("88", BOX + "\r\n", f"https://{BOX}/direct"), "r"),
    case("request over the relay", {"HTTP_HOST": BOX + ":81/x", "SERVER_PORT": "80",
                                    "REQUEST_URI": "/a/webapi"}, PORTS + HOST,
         {"relayd": BOX + "\\n"}, ("81", BOX, f"https://{BOX}/direct/a"), "r"),
    case("relay domain within the host", {"HTTP_HOST": BOX + "er"}, HOST, {"relayd": "box.a"},
         ("", BOX + "er", f"https://{BOX}er/direct"), "r"),
    case("first label is another", {"HTTP_HOST": BOX + ":1"}, HOST, {"relayd": "bo.a"},
         ("1", "out", "http://out:1"), "r"),
    case("first label in capitals", {"HTTP_HOST": BOX + ":1"}, HOST, {"relayd": "Box"},
         ("1", "out", "http://out:1"), "r"),
    case("not under the relay domain", {"HTTP_HOST": "box"}, HOST, {"relayd": BOX},
         ("", "out", "http://out"), "r")])
def test_external_address(other, environment, settings, outputs, address, started):
    tools(other, **outputs)
    other.store(**{SETTINGS: settings})
    assert ask(other, "port", "host", "external", **environment).data == list(address)
    other.forget()
    for tool in "ddnsinfo", "relayd":
        count = len(other.path(f"started.{tool}").read_text().split()) if tool[0] in started else 0
        assert other.path(f"started.{tool}").exists() == (tool[0] in started)
        assert count == (0 if tool[0] not in started else 1 if tool == "relayd" else 2)


OTHERS = [7, ["zem_portal"], {"enabled": True, "id": 7}, {"enabled": "true", "id": "zem_portal"},
          {"enabled": True, "id": "portal"}, {"enabled": False, "id": "zem_portal"}]


@pytest.mark.parametrize("answer, is_on, is_portal", [
    case("on", ON, "yes", "no"), case("a number is on", {"data": {"enabled": 1}}, "yes", "no"),
    case("portal behind others", {"data": {"services": [*OTHERS, PORTAL]}}, "no", "yes"),
    *(case(f"neither: {json.dumps(answer)}", answer, "no", "no") for answer in [
        None, 7, [], {"data": 7}, {"data": []}, {"data": {}}, {"data": {"services": OTHERS}},
        {"data": {"enabled": "true"}}, {"data": {"enabled": {}}}, {"data": {"enabled": False}},
        {"data": {"services": {"x": PORTAL}}}])])
def test_relay_service(other, answer, is_on, is_portal):
    other.store(**{PORTWAY: answer, PERMIT: answer})
    tools(other, relayd="box")
    assert ask(other, "is on", "is portal", "relay").data == [is_on, is_portal, "none "]


def test_relay_name_without_a_tool(other):
    assert ask(other, "relay", "ddns").data == ["none ", "none untouched"]


needs_root = pytest.mark.skipif(os.geteuid() != 0, reason="only root can change its ids")


def id_calls(other, trace, *questions, fails=None):
    """The answer, and the changes of ids since the process left root's: u0 is to uid 0."""
    inject = ["-e", f"inject={fails[0]}:error=EPERM:when={fails[1]}"] if fails else []
    under = ["strace", "-f", "-qq", "-o", trace, "-e", "trace=setresuid,setresgid", *inject]
    answer = ask(other, *questions, under=under)
    other.forget()
    calls = re.findall(r"setres([ug])id\(-1, (\d+), -1\)", trace.read_text())
    return answer, " ".join(map("".join, calls))


@needs_root
@pytest.mark.parametrize("questions, calls", [
    case("root", ["guard"], ""), case("root of another group", ["as gid", "guard"], "g8 g0 g8"),
    case("another user", ["as uid", "guard"], "u9 u0 u0 u9"),
    case("both", ["as gid", "as uid", "guard"], "g8 u9 u0 g0 u0 g8 u9"),
    case("the block loses its uid", ["as gid", "as uid", "guard that loses its uid"],
         "g8 u9 u0 g0 u0 u5 u0 g8 u9")])
def test_guard(other, tmp_path, questions, calls):
    answer, made = id_calls(other, tmp_path / "trace", *questions, "is on")
    assert answer.data == ["yes"] * (len(questions) + 1) and answer.log == [] and made == calls


@needs_root
@pytest.mark.parametrize("fails, calls, outcome, priority, text", [
    (("setresuid", 2), "u0", "no", 35, GUARD_FAILS),
    (("setresgid", 2), "u0 g0 u9", "no", 35, GUARD_FAILS),
    (("setresuid", 3), "u0 g0 u0 g8 u9", "no", 35, GUARD_FAILS),
    (("setresuid", 5), "u0 g0 u0 u5 u0", "yes", 34, BACK_FAILS),
    (("setresgid", 3), "u0 g0 u0 u5 u0 g8", "yes", 34, BACK_FAILS),
    (("setresuid", 6), "u0 g0 u0 u5 u0 g8 u9", "yes", 34, BACK_FAILS)], ids=str)
def test_guard_that_fails(other, tmp_path, fails, calls, outcome, priority, text):
    answer, made = id_calls(other, tmp_path / "trace", "as gid", "as uid",
                            "guard that loses its uid", fails=fails)
    assert (answer.data[2], made) == (outcome, "g8 u9 " + calls)
    assert answer.log == [f"<{priority}> network_utils:7 {text}"]


@needs_root
def test_relay_name_is_asked_once_in_a_process(other, tmp_path):
    tools(other, ddnsinfo="dyn ", relayd=BOX)
    answer, _ = id_calls(other, tmp_path / "trace", "as uid", "ddns", "relay", "relay",
                         fails=("setresuid", 2))
    assert answer.data[1:] == ["none untouched"] + [f"found {BOX}"] * 2
    assert answer.log == ["<35> network_utils:95 ERROR: IF_RUN_AS(0, 0)"]
    answer, _ = id_calls(other, tmp_path / "trace", "as uid", "relay", "relay", "ddns",
                         fails=("setresuid", 2))
    assert answer.data[1:] == ["none ", "none ", "found dyn"]
    assert answer.log == ["<35> network_utils:185 ERROR: IF_RUN_AS(0, 0)"]
