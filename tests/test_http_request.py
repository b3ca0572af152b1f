"""How a request comes in, which method it names, and how its answer goes out."""
import os
import re

import pytest
from conftest import EMPTY_LIST, Answer, case
from test_create import made

LIST, BAD, NOTHING = Answer(data=EMPTY_LIST), Answer(101), Answer()
CREATE = "method=create&tuner=0&id=7@474&start_time=1000"
CREATED = {"one_shot": [made()], "commands": ["reload"]}
FORM, MIB = "application/x-www-form-urlencoded", 1 << 20
CHUNKED = {"HTTP_TRANSFER_ENCODING": "chunked"}


@pytest.mark.parametrize("query, answer", [
    case("any case of letters", "method=LiSt", LIST),
    case("the first counts", "method=list&method=x", LIST),
    case("text ends at NUL", "method=list%00x&start=0%00x", LIST),
    case("broken escapes", "method=list&%=%&%zz=%4&&=&=x", LIST),
    case("plus is a blank", "method=list&limit=+1", Answer(101, EMPTY_LIST)),
    case("a thousand", "method=list" + "".join(f"&p{i}=1" for i in range(999)), LIST),
    case("more", "method=list" + "".join(f"&p{i}=1" for i in range(1000)), Answer(101))])
def test_request_in_query_string(appliance, query, answer):
    assert appliance.run({"QUERY_STRING": query}) == answer


@pytest.mark.parametrize("length, body, changes, answer", [
    case("form with a character set", "11", "method=list", {
        "CONTENT_TYPE": "Application/X-WWW-Form-URLencoded; charset=x"}, LIST),
    case("less than it says", "12", "method=list", {}, BAD),
    case("length with a letter", "11x", "method=list", {}, BAD),
    case("a mebibyte", str(MIB), "method=list".ljust(MIB, "&"), {}, LIST),
    case("the greatest length", str(2**64 - 1), "method=list", {}, BAD),
    case("chunked", "", "method=list", CHUNKED, LIST),
    case("more in chunks", "", "method=list".ljust(MIB + 1, "&"), CHUNKED, BAD),
    case("query string first", "15", "method=nonsense", {"QUERY_STRING": "method=list"}, LIST),
    case("no form", "2", "{}", {"CONTENT_TYPE": "application/json"}, BAD),
    case("nothing of no form", "0", "", {"CONTENT_TYPE": "text/plain"}, NOTHING)])
def test_request_in_body(appliance, length, body, changes, answer):
    environment = {"REQUEST_METHOD": "POST", "CONTENT_TYPE": FORM, "CONTENT_LENGTH": length}
    read = "method=list" if answer == LIST else ""
    assert appliance.run(environment | changes, body, read) == answer


@pytest.mark.parametrize("http_method, length, read", [
    ("POST", 9 * MIB, 8 * MIB), ("PUT", 9 * MIB, 8 * MIB), ("POST", 11, 11)])
def test_body_is_read_to_its_end_but_not_beyond_eight_mebibytes(
        appliance, tmp_path, http_method, length, read):
    (tmp_path / "body").write_bytes(b"method=list".ljust(10 * MIB))
    with open(tmp_path / "body", "rb") as body:
        appliance.launch({"REQUEST_METHOD": http_method, "CONTENT_TYPE": FORM,
                          "CONTENT_LENGTH": str(length), "REMOTE_USER": "admin"}, stdin=body)
        assert os.lseek(body.fileno(), 0, os.SEEK_CUR) == read


NOT_ALLOWED = "Status: 405 Method Not Allowed\r\nAllow: "


@pytest.mark.parametrize("http_method, query, head", [
    ("HEAD", "method=list", "Content-Type: application/json; charset=utf-8"),
    ("OPTIONS", "method=list", f"{NOT_ALLOWED}GET, HEAD, POST"),
    ("HEAD", CREATE, f"{NOT_ALLOWED}GET, POST"), ("PUT", CREATE, f"{NOT_ALLOWED}GET, POST")])
def test_request_by_http_method(appliance, http_method, query, head):
    run = appliance.launch({"REQUEST_METHOD": http_method, "QUERY_STRING": query,
                            "REMOTE_USER": "admin"})
    assert run.stdout.decode() == f"{head}\r\nCache-Control: no-store\r\n\r\n"


@pytest.mark.parametrize("is_foreign, origin, host, more", [
    *((is_foreign, "", "", {"HTTP_SEC_FETCH_SITE": site}) for is_foreign, site in [
        (False, "same-origin"), (False, "none"), (True, "same-site")]),
    (False, "http://tv", "TV:80", {}), (False, "https://tv", "tv:443", {"HTTPS": "on"}),
    (False, "https://tv:80", "tv:80", {"REQUEST_SCHEME": "https"}),
    (False, "http://tv:81", "tv", {"SERVER_PORT": "81"}), (True, "https://tv", "tv", {}),
    (True, "http://tv:82", "tv", {"SERVER_PORT": "81"}), (True, "null", "tv", {}),
    (True, "http://x", "tv", {"HTTP_SEC_FETCH_SITE": "same-origin"})])
def test_request_of_a_foreign_page_changes_nothing(appliance, is_foreign, origin, host, more):
    headers = {"HTTP_ORIGIN": origin, "HTTP_HOST": host} | more
    assert appliance.run({"QUERY_STRING": "method=list"} | headers) == LIST
    log = ["refused a change that a page of another site or origin has sent"]
    answer = appliance.run({"QUERY_STRING": CREATE} | headers)
    assert answer == (Answer(105, log=log) if is_foreign else Answer())
    appliance.expect_changes(**{} if is_foreign else CREATED)


def test_answer_that_is_lost_is_logged_once(appliance):
    run = appliance.launch({"QUERY_STRING": "method=list", "REMOTE_USER": "admin"},
                           under=["sh", "-c", 'exec "$0" >/dev/full'])
    assert re.fullmatch(r"schedule_recording\[\d+\]: failed to send the answer: "
                        "No space left on device\n", run.stderr.decode())


@pytest.mark.parametrize("closed", ["<&-", "2>&-", "<&- 2>&-"])
def test_request_with_closed_descriptors(appliance, closed):
    under = ["sh", "-c", f'exec "$0" {closed}']
    assert appliance.run({"QUERY_STRING": CREATE}, under=under) == Answer()
    appliance.expect_changes(**CREATED)
