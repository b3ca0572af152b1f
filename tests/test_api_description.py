"""docs/api.md and docs/openapi.yaml say the same: parameters, codes, members and examples."""
import json
import re
import subprocess
from pathlib import Path

import pytest

import api_description
from api_description import DOCUMENT, METHODS, codes, schema_of

PAGE = (Path(__file__).parent.parent / "docs/api.md").read_text(encoding="utf-8")
SECTIONS = dict(re.findall(r"^## (.*?)\n(.*?)(?=^## |\Z)", PAGE, re.DOTALL | re.MULTILINE))
EXAMPLE = re.compile(r"^```sh\n(curl.*?)^```\n\n^```json\n(.*?)^```$", re.DOTALL | re.MULTILINE)
# The moment at which the page's examples were run, and what prints a request in place of curl.
PRINT_REQUESTS = ["faketime", "-f", "@2026-11-24 21:23:00", "bash", "-c"]
CURL = 'curl() { for word; do printf "%s\\0" "$word"; done; }\n'


def table(section, heading):
    """The rows of the table with that heading in a section, without the marks of its cells."""
    head = rf"^\| {heading} \|.*\n\|[-|]*\n"
    rows = re.search(head + r"((?:\|.*\n)*)", SECTIONS[section], re.MULTILINE)
    cells = [[cell.strip() for cell in row[1:-1].split("|")] for row in rows[1].splitlines()]
    return [[re.sub(r"\[(.*?)\]\(.*?\)", r"\1", cell) for cell in row] for row in cells]


def form(parameter):
    listed = parameter.get("type") == "array"
    return parameter.get("items", parameter)["$ref"].split("/")[-1] + (" list" if listed else "")


def default(schema, name):
    if name in schema["required"]:
        return "required"
    if name in schema.get("then", {}).get("required", ()):
        return "required if `is_repeat`"
    for other, needed in schema.get("dependentRequired", {}).items():
        if name in needed:
            return f"required with `{other}`"
    value = schema["properties"][name].get("default")
    return {"": "empty", None: "none", True: "`true`"}.get(value, str(value))


@pytest.mark.parametrize("method", METHODS)
def test_the_page_has_the_tables_of_the_description(method):
    request = schema_of(f"{method}_request")
    assert [f"[`{method}`](#{method})", request["description"]] in [
        [cell.strip() for cell in row[1:-1].split("|")] for row in PAGE.splitlines()]
    assert table(f"`{method}`", "Parameter") == [
        [f"`{name}`", form(parameter), default(request, name), parameter.get("description", "")]
        for name, parameter in request["properties"].items() if name != "method"]
    assert table(f"`{method}`", "Code") == rows_of(codes(method))


def rows_of(branches):
    return [[str(code), branch["description"], branch.get("x-remedy", "")]
            for code, branch in branches.items()]


def test_the_page_has_the_members_of_the_description_and_the_codes_of_all_methods():
    def members(name):
        return [[f"`{member}`", schema["description"]]
                for member, schema in schema_of(name)["properties"].items()]

    assert table("`list`", "Member") == members("list_data")
    assert table("`list`", "Member of a schedule") == members("schedule")
    assert table("Errors", "Code") == rows_of(codes(None))
    forms = {form(parameter).removesuffix(" list") for method in METHODS
             for name, parameter in schema_of(f"{method}_request")["properties"].items()
             if name != "method"}
    assert {name for name, *_ in table("Requests", "Form")} == forms


def examples_of_the_page():
    """Every request that the page shows as its parameters, with the answer shown."""
    for command, answer in EXAMPLE.findall(PAGE):
        words = subprocess.run([*PRINT_REQUESTS, CURL + command], capture_output=True, check=True,
                               text=True, env={"TZ": "UTC", "PATH": "/usr/bin:/bin"}).stdout
        sent = re.findall(r"(?:\A|\0|[?&])(\w+)=([^\0&]*(?:& [^\0&]*)*)", words)
        yield dict(sent), json.loads(answer)


def test_the_examples_of_the_description_are_those_of_the_page():
    shown = list(examples_of_the_page())
    post = DOCUMENT["paths"]["/webapi/schedule_recording"]["post"]
    requests = post["requestBody"]["content"]["application/x-www-form-urlencoded"]["examples"]
    answer = DOCUMENT["components"]["responses"]["answer"]
    answers = answer["content"]["application/json"]["examples"]
    assert list(requests) == list(answers) == METHODS
    for method in METHODS:
        request = {name: text_of(value) for name, value in requests[method]["value"].items()}
        assert (request, answers[method]["value"]) in shown, method


def text_of(value):
    """How a client writes the value of a parameter."""
    if isinstance(value, list):
        return ",".join(map(text_of, value))
    return str(value).lower() if isinstance(value, bool) else str(value)


@pytest.mark.parametrize("method, parameters, answer, complaint", [
    ("list", {"tunr": "0"}, {"success": True, "data": {"schedules": [], "start": 0, "total": 0}},
     "'tunr' was unexpected"),
    ("list", {}, {"success": True, "data": {"schedules": [], "start": 0, "total": 0, "more": 1}},
     "'more' was unexpected"),
    ("delete", {}, {"success": False, "error": {"code": 405}}, "delete answers 405"),
    ("delete", {"tuner": "0", "id": "9"}, {"success": True}, "'channel_id' is a dependency"),
    ("create", {"tuner": "0", "id": "7", "start_time": "1,x"}, {"success": True}, "'x' is not of"),
    ("edit_userdefine", {}, {"success": True, "error": {"code": 405}}, "False was expected"),
    ("nonsense", {}, {"success": True, "data": {}}, "'nonsense' answers"),
], ids=["parameter", "member", "code", "required with", "list", "outcome", "unknown method"])
def test_what_is_not_described_is_named(method, parameters, answer, complaint):
    with pytest.raises(AssertionError, match=complaint):
        api_description.observe(method, parameters, answer)
