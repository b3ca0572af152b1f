"""How a request comes in, which method it names, and how its answer goes out."""
import re

import pytest
from conftest import Answer, case
from test_create import made

pytestmark = pytest.mark.sloppy  # most of these no client should send
EMPTY = {"schedules": [], "start": 0, "total": 0}
LIST, BAD, NOTHING = Answer(data=EMPTY), Answer(101), Answer()
BAD_LIST = Answer(101, EMPTY)
CREATE = "method=create&tuner=0&id=7@474&start_time=1000"


def ask(appliance, query, **options):
    return appliance.run({"QUERY_STRING": query}, **options)


@pytest.mark.parametrize("query, answer", [
    case("any case of letters", "method=LiSt", LIST),
    case("the first counts", "method=list&method=x", LIST),
    case("text ends at NUL", "method=list%00x&start=0%00x", LIST),
    case("line ends", "method=list%0d%0aX-Y:%20z", NOTHING),
    case("broken escapes", "method=list&%=%&%zz=%4&&=&=x", LIST),
    case("plus is a blank", "method=list&limit=+1", BAD_LIST),
    case("key alone", "method=list&limit", BAD_LIST),
    case("key in capitals", "METHOD=list", NOTHING), case("nothing", "", NOTHING),
    case("part of a method", "method=lis", NOTHING), case("longer", "method=lists", NOTHING),
    case("ten thousand", "method=list" + "".join(f"&p{i}=1" for i in range(10000)), LIST)])
def test_request_in_query_string(appliance, query, answer):
    assert ask(appliance, query) == answer


FORM = "application/x-www-form-urlencoded"
MIB = 1 << 20


@pytest.mark.parametrize("length, body, changes, answer", [
    case("form", "11", "method=list", {}, LIST),
    case("with a character set", "11", "method=list", {
        "CONTENT_TYPE": "Application/X-WWW-Form-URLencoded; charset=x"}, LIST),
    case("no more than it says", "11", "method=list&limit=x", {}, LIST),
    case("less than it says", "12", "method=list", {}, BAD),
    case("length with a letter", "11x", "method=list", {}, BAD),
    case("negative length", "-1", "method=list", {}, BAD),
    case("length beyond 64 bits", "9" * 20, "method=list", {}, BAD),
    case("no length", "", "method=delete", {}, NOTHING),
    case("a mebibyte", str(MIB), "method=list".ljust(MIB, "&"), {}, LIST),
    case("more than a mebibyte", str(MIB + 1), "method=list".ljust(MIB + 1, "&"), {}, BAD),
    case("query string first", "15", "method=nonsense", {"QUERY_STRING": "method=list"}, LIST),
    case("no form", "13", "method=delete", {"CONTENT_TYPE": "text/x"}, NOTHING),
    case("no post", "13", "method=delete", {"REQUEST_METHOD": "GET"}, NOTHING)])
def test_request_in_body(appliance, length, body, changes, answer):
    environment = {"REQUEST_METHOD": "POST", "CONTENT_TYPE": FORM, "CONTENT_LENGTH": length}
    assert appliance.run(environment | changes, body.encode()) == answer


def test_answer_headers(appliance):
    answer = ask(appliance, "method=list")
    assert answer.headers["Content-Type"] == "application/json; charset=utf-8"


@pytest.mark.xfail(reason="no such header yet")
def test_answer_is_not_to_be_cached(appliance):
    assert ask(appliance, "method=list").headers["Cache-Control"] == "no-store"


def test_answer_that_is_lost_is_logged_once(appliance):
    run = appliance.launch({"QUERY_STRING": "method=list", "REMOTE_USER": "admin"},
                           under=["sh", "-c", 'exec "$0" >/dev/full'])
    assert re.fullmatch(r"schedule_recording\[\d+\]: failed to send the answer: "
                        "No space left on device\n", run.stderr.decode())


@pytest.mark.parametrize("closed", ["<&-", "2>&-", "<&- 2>&-"])
def test_request_with_closed_descriptors(appliance, closed):
    assert ask(appliance, CREATE, under=["sh", "-c", f'exec "$0" {closed}']) == Answer()
    appliance.expect_changes(one_shot=[made()], commands=["reload"])


@pytest.mark.parametrize("tuner", ["", "0x", "../../../../etc/passwd", "0%00/../x", "00"])
def test_request_tuner_is_a_number_in_every_path(appliance, tuner):
    assert ask(appliance, CREATE.replace("tuner=0", f"tuner={tuner}")) == Answer()
    appliance.expect_changes(one_shot=[made()], commands=["reload"])


@pytest.mark.parametrize("channel", [
    case("long", "7" * 100000), case("line ends", "7%0d%0a%0d%0a"), case("blank", "7@474%20")])
def test_request_channel_is_digits(appliance, channel):
    assert ask(appliance, CREATE.replace("7@474", channel)) == BAD
