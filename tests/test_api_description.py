"""docs/api.md and docs/openapi.yaml say the same: parameters, codes and members."""
import re
from pathlib import Path

import pytest
from api_description import (DOCUMENT, METHODS, REQUESTS, SCHEMAS, check_answer, check_request,
                             codes, form_of, parameters_of)

PAGE = (Path(__file__).parent.parent / "docs/api.md").read_text(encoding="utf-8")
SECTIONS = dict(re.findall(r"^## (.*?)\n(.*?)(?=^## |\Z)", PAGE, re.DOTALL | re.MULTILINE))
POST = DOCUMENT["paths"]["/webapi/schedule_recording"]["post"]["requestBody"]["content"]
ASKED = POST["application/x-www-form-urlencoded"]["examples"]
ANSWERS = DOCUMENT["components"]["responses"]["answer"]["content"]["application/json"]["examples"]


def rows_of(text, heading=""):
    """The rows of the first table with that heading, without the links in its cells."""
    rows = re.search(rf"^\| {heading}.*\|\n\|[-|]*\n((?:\|.*\n)*)", text, re.MULTILINE)[1]
    return [[cell.strip() for cell in re.sub(r"\[(.*?)\]\(.*?\)", r"\1", row)[1:-1].split("|")]
            for row in rows.splitlines()]


def default(method, name, schema):
    """What the page says of a parameter that is left out."""
    needing = [request for request in REQUESTS[method] if name in request["required"]]
    if needing == REQUESTS[method]:
        return "required"
    if needing:
        return f"required {needing[0]['x-when']}"
    value = schema.get("default")
    return {"": "empty", None: "none", True: "`true`"}.get(value, str(value))


def code_rows(method):
    return [[str(code), branch["description"], branch.get("x-remedy", "")]
            for code, branch in codes(method).items()]


@pytest.mark.parametrize("method", METHODS)
def test_the_page_and_the_examples_of_the_description_agree_with_it(method):
    section = SECTIONS[f"`{method}`"]
    does = " ".join(dict.fromkeys(request["description"] for request in REQUESTS[method]))
    assert [f"`{method}`", does] in rows_of(PAGE, "Method")
    assert rows_of(section, "Parameter") == [
        [f"`{name}`", form_of(parameter).replace("_", " "), default(method, name, parameter),
         parameter.get("description", "")] for name, parameter in parameters_of(method).items()]
    assert rows_of(section, "Code") == code_rows(method)
    check_answer(method, ANSWERS[method]["value"])
    for asked in ASKED.values():
        if asked["value"]["method"] == method:
            check_request(method, asked["value"])


def test_the_page_has_the_members_the_forms_and_the_common_codes_of_the_description():
    for heading, name in (r"Member \|", "list_page"), ("Member of a", "schedule"):
        assert rows_of(SECTIONS["`list`"], heading) == [
            [f"`{member}`", schema["description"]]
            for member, schema in SCHEMAS[name]["properties"].items()]
    assert rows_of(SECTIONS["Errors"], "Code") == code_rows("common")
    assert {row[0] for row in rows_of(SECTIONS["Requests"], "Form")} == {
        form_of(parameter).replace("_", " ")
        for method in METHODS for parameter in parameters_of(method).values()}
