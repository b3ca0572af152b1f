"""How a request comes in, which method it names, and how its answer goes out."""
import os
import re

import pytest
from conftest import Answer, case
from test_create import made

EMPTY = {"schedules": [], "start": 0, "total": 0}
LIST, BAD, NOTHING = Answer(data=EMPTY), Answer(101), Answer()
CREATE = "method=create&tuner=0&id=7@474&start_time=1000"


def ask(appliance, query, **options):
    return appliance.run({"QUERY_STRING": query}, **options)


@pytest.mark.sloppy
@pytest.mark.parametrize("query, answer", [
    case("any case of letters", "method=LiSt", LIST),
    case("the first counts", "method=list&method=x", LIST),
    case("text ends at NUL", "method=list%00x&start=0%00x", LIST),
    case("line ends", "method=list%0d%0aX-Y:%20z", NOTHING),
    case("broken escapes", "method=list&%=%&%zz=%4&&=&=x", LIST),
    case("plus is a blank", "method=list&limit=+1", Answer(101, EMPTY)),
    case("key alone", "method=list&limit", Answer(101, EMPTY)),
    case("key in capitals", "METHOD=list", NOTHING), case("nothing", "", NOTHING),
    case("part of a method", "method=lis", NOTHING), case("longer", "method=lists", NOTHING),
    case("ten thousand", "method=list" + "".join(f"&p{i}=1" for i in range(10000)), LIST)])
def test_request_in_query_string(appliance, query, answer):
    assert ask(appliance, query) == answer
    assert ask(appliance, query).headers == {
        "Content-Type": "application/json; charset=utf-8", "Cache-Control": "no-store"}


FORM = "application/x-www-form-urlencoded"
MIB = 1 << 20
CHUNKED = {"HTTP_TRANSFER_ENCODING": "chunked"}


@pytest.mark.parametrize("length, body, changes, answer", [
    case("form", "11", "method=list", {}, LIST),
    case("with a character set", "11", "method=list", {
        "CONTENT_TYPE": "Application/X-WWW-Form-URLencoded; charset=x"}, LIST),
    case("no more than it says", "11", "method=listxxx", {}, LIST),
    case("less than it says", "12", "method=list", {}, BAD),
    case("length with a letter", "11x", "method=list", {}, BAD),
    case("negative length", "-1", "method=list", {}, BAD),
    case("length beyond 64 bits", "9" * 20, "method=list", {}, BAD),
    case("no length", "", "method=list", {}, NOTHING),
    case("a mebibyte", str(MIB), "method=list".ljust(MIB, "&"), {}, LIST),
    case("more than a mebibyte", str(MIB + 1), "method=list".ljust(MIB + 1, "&"), {}, BAD),
    case("chunked", "", "method=list", CHUNKED, LIST),
    case("chunked with a length", "11", "method=listxxx", CHUNKED, LIST),
    case("a mebibyte in chunks", "", "method=list".ljust(MIB, "&"), CHUNKED, LIST),
    case("more in chunks", "", "method=list".ljust(MIB + 1, "&"), CHUNKED, BAD),
    case("chunked, but no form", "", "x", CHUNKED | {"CONTENT_TYPE": "text/plain"}, BAD),
    case("query string first", "15", "method=nonsense", {"QUERY_STRING": "method=list"}, LIST),
    case("no form", "2", "{}", {"CONTENT_TYPE": "application/json"}, BAD),
    case("nothing of no form", "0", "", {"CONTENT_TYPE": "text/plain"}, NOTHING),
    case("no post", "11", "method=list", {"REQUEST_METHOD": "GET"}, NOTHING)])
def test_request_in_body(appliance, length, body, changes, answer):
    environment = {"REQUEST_METHOD": "POST", "CONTENT_TYPE": FORM, "CONTENT_LENGTH": length}
    read = "method=list" if answer == LIST else ""
    assert appliance.run(environment | changes, body, read) == answer


@pytest.mark.parametrize("http_method, query, allowed", [
    ("HEAD", "method=list", None), ("OPTIONS", "method=list", "GET, HEAD, POST"),
    *((name, CREATE, "GET, POST") for name in ("HEAD", "PUT", "DELETE", "get"))])
def test_request_by_http_method(appliance, http_method, query, allowed):
    run = appliance.launch({"REQUEST_METHOD": http_method, "QUERY_STRING": query,
                            "REMOTE_USER": "admin"})
    head = ("Content-Type: application/json; charset=utf-8" if allowed is None else
            f"Status: 405 Method Not Allowed\r\nAllow: {allowed}")
    assert run.stdout.decode() == f"{head}\r\nCache-Control: no-store\r\n\r\n"


@pytest.mark.parametrize("http_method", ["POST", "PUT"])
def test_rest_of_body_is_read_away(appliance, tmp_path, http_method):
    for size, read in (2 * MIB, 2 * MIB), (9 * MIB, 8 * MIB):
        (tmp_path / "body").write_bytes(bytes(size))
        with open(tmp_path / "body", "rb") as body:
            appliance.launch({"REQUEST_METHOD": http_method, "CONTENT_TYPE": FORM,
                              "CONTENT_LENGTH": str(size), "REMOTE_USER": "admin"}, stdin=body)
            assert os.lseek(body.fileno(), 0, os.SEEK_CUR) == read


def origin(text, host, **environment):
    return {"HTTP_ORIGIN": text, "HTTP_HOST": host, **environment}


@pytest.mark.parametrize("is_foreign, headers", [
    *((is_foreign, {"HTTP_SEC_FETCH_SITE": site}) for is_foreign, site in [
        (False, "same-origin"), (False, "none"), (True, "same-site"), (True, "cross-site")]),
    (False, origin("http://tv", "tv")), (False, origin("http://tv", "TV:80")),
    (False, origin("http://tv:81", "tv:81")), (False, origin("https://tv", "tv:443", HTTPS="on")),
    (False, origin("http://tv:81", "tv", SERVER_PORT="81")),
    (False, origin("https://tv:80", "tv:80", REQUEST_SCHEME="https")),
    (True, origin("https://tv", "tv")), (True, origin("http://tv", "tv", HTTPS="on")),
    (True, origin("http://tv:82", "tv", SERVER_PORT="81")), (True, origin("http://tv", "tv:81")),
    (True, origin("null", "tv")), (True, origin("http://tv.example", "tv")),
    (True, origin("http://x", "tv", HTTP_SEC_FETCH_SITE="same-origin"))], ids=str)
def test_request_of_a_foreign_page_changes_nothing(appliance, is_foreign, headers):
    log = "refused a change that a page of another site or origin has sent"
    answer = appliance.run({"QUERY_STRING": CREATE} | headers)
    assert answer == (Answer(105, log=[log]) if is_foreign else Answer())
    appliance.expect_changes(**{} if is_foreign else {
        "one_shot": [made()], "commands": ["reload"]})
    appliance.store(one_shot=None)
    assert appliance.run({"QUERY_STRING": "method=list"} | headers) == LIST


def test_answer_that_is_lost_is_logged_once(appliance):
    run = appliance.launch({"QUERY_STRING": "method=list", "REMOTE_USER": "admin"},
                           under=["sh", "-c", 'exec "$0" >/dev/full'])
    assert re.fullmatch(r"schedule_recording\[\d+\]: failed to send the answer: "
                        "No space left on device\n", run.stderr.decode())


@pytest.mark.parametrize("closed", ["<&-", "2>&-", "<&- 2>&-"])
def test_request_with_closed_descriptors(appliance, closed):
    assert ask(appliance, CREATE, under=["sh", "-c", f'exec "$0" {closed}']) == Answer()
    appliance.expect_changes(one_shot=[made()], commands=["reload"])


@pytest.mark.sloppy
@pytest.mark.parametrize("tuner", ["", "0x", "../../../../etc/passwd", "0%00/../x", "00"])
def test_request_tuner_is_a_number_in_every_path(appliance, tuner):
    assert ask(appliance, CREATE.replace("tuner=0", f"tuner={tuner}")) == Answer()
    appliance.expect_changes(one_shot=[made()], commands=["reload"])


@pytest.mark.parametrize("channel", [
    case("long", "7" * 100000), case("line ends", "7%0d%0a%0d%0a"), case("blank", "7@474%20")])
def test_request_channel_is_digits(appliance, channel):
    assert ask(appliance, CREATE.replace("7@474", channel)) == BAD
