"""docs/api.md and docs/openapi.yaml say the same: parameters, codes, members and examples."""
import json
import re
import subprocess
import types
from pathlib import Path

import pytest
from api_description import DOCUMENT, METHODS, codes, observe, parameters_of, schema_of

PAGE = (Path(__file__).parent.parent / "docs/api.md").read_text(encoding="utf-8")
SECTIONS = dict(re.findall(r"^## (.*?)\n(.*?)(?=^## |\Z)", PAGE, re.DOTALL | re.MULTILINE))
EXAMPLE = re.compile(r"^```sh\n(curl.*?)^```\n\n^```json\n(.*?)^```$", re.DOTALL | re.MULTILINE)
# The page's examples were run at this moment. Instead of curl, a function prints what it is given.
PRINT = ["faketime", "-f", "@2026-11-24 21:23:00", "bash", "-c",
         'curl() { printf "%s\\0" "$@"; }; eval "$0"']


def rows_of(text, heading=""):
    """The rows of the first table with that heading, without the links in its cells."""
    rows = re.search(rf"^\| {heading}.*\|\n\|[-|]*\n((?:\|.*\n)*)", text, re.MULTILINE)[1]
    return [[cell.strip() for cell in re.sub(r"\[(.*?)\]\(.*?\)", r"\1", row)[1:-1].split("|")]
            for row in rows.splitlines()]


def form(parameter):
    listed = " list" if parameter.get("type") == "array" else ""
    return parameter.get("items", parameter)["$ref"].split("/")[-1] + listed


def default(method, name):
    request = schema_of(f"{method}_request")
    if name in request["required"]:
        return "required"
    if name in request.get("then", {}).get("required", ()):
        return "required if `is_repeat`"
    for other, needed in request.get("dependentRequired", {}).items():
        if name in needed:
            return f"required with `{other}`"
    value = request["properties"][name].get("default")
    return {"": "empty", None: "none", True: "`true`"}.get(value, str(value))


def code_rows(method):
    return [[str(code), branch["description"], branch.get("x-remedy", "")]
            for code, branch in codes(method).items()]


def member_rows(name):
    return [[f"`{member}`", schema["description"]]
            for member, schema in schema_of(name)["properties"].items()]


@pytest.mark.parametrize("method", METHODS)
def test_the_page_has_the_parameters_and_codes_of_the_description(method):
    section = SECTIONS[f"`{method}`"]
    assert [f"`{method}`", schema_of(f"{method}_request")["description"]] in rows_of(PAGE, "Method")
    assert rows_of(section, "Parameter") == [
        [f"`{name}`", form(parameter), default(method, name), parameter.get("description", "")]
        for name, parameter in parameters_of(method).items()]
    assert rows_of(section, "Code") == code_rows(method)


def test_the_page_has_the_members_the_forms_and_the_common_codes_of_the_description():
    assert rows_of(SECTIONS["`list`"], r"Member \|") == member_rows("list_data")
    assert rows_of(SECTIONS["`list`"], "Member of a") == member_rows("schedule")
    assert rows_of(SECTIONS["Errors"], "Code") == code_rows("common")
    assert {row[0] for row in rows_of(SECTIONS["Requests"], "Form")} == {
        form(parameter).removesuffix(" list")
        for method in METHODS for parameter in parameters_of(method).values()}


def as_sent(value):
    """How a client writes the value of a parameter."""
    if isinstance(value, list):
        return ",".join(map(as_sent, value))
    return str(value).lower() if isinstance(value, bool) else str(value)


def test_the_examples_of_the_description_are_those_of_the_page():
    shown = []
    for command, answer in EXAMPLE.findall(PAGE):
        words = subprocess.run([*PRINT, command], capture_output=True, check=True, text=True,
                               env={"TZ": "UTC", "PATH": "/usr/bin:/bin"}).stdout
        sent = re.findall(r"(?:\A|[\0?&])(\w+)=((?:[^\0&]|& )*)", words)
        shown.append((dict(sent), json.loads(answer)))
    post = DOCUMENT["paths"]["/webapi/schedule_recording"]["post"]["requestBody"]["content"]
    requests = post["application/x-www-form-urlencoded"]["examples"]
    answers = DOCUMENT["components"]["responses"]["answer"]["content"]["application/json"]
    assert list(requests) == list(answers["examples"]) == METHODS
    for method, example in requests.items():
        request = {name: as_sent(value) for name, value in example["value"].items()}
        assert (request, answers["examples"][method]["value"]) in shown


@pytest.mark.parametrize("method, parameters, body, complaint", [
    ("getinfo_repeat", {}, {"success": True, "more": 1}, "'more' was unexpected"),
    ("delete", {}, {"success": False, "error": {"code": 405}}, "delete answers 405"),
    ("delete_passed", {"tuner": "0", "tunr": "0"}, {"success": True}, "'tunr' was unexpected"),
    ("delete_userdefine", {"tuner": "0", "id": "1,x"}, {"success": True}, "'x' is not of type"),
], ids=["member", "code", "parameter", "list"])
def test_what_is_not_described_is_named(method, parameters, body, complaint):
    with pytest.raises(AssertionError, match=complaint):
        observe(method, parameters, types.SimpleNamespace(body=body))
