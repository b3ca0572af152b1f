"""The examples of docs/openapi.yaml are as it describes, and docs/api.md explains every type."""
import re
from pathlib import Path

import pytest
from answers import check_answer, check_request
from api_description import DOCUMENT, REQUESTS, type_of, parameters

PAGE = (Path(__file__).parent.parent / "docs/api.md").read_text(encoding="utf-8")
POST = DOCUMENT["paths"]["/webapi/schedule_recording"]["post"]["requestBody"]["content"]
ASKED = POST["application/x-www-form-urlencoded"]["examples"]
ANSWERS = DOCUMENT["components"]["responses"]["answer"]["content"]["application/json"]["examples"]


@pytest.mark.parametrize("method", REQUESTS)
def test_examples_of_the_description(method):
    check_answer(method, ANSWERS[method]["value"])
    for asked in ASKED.values():
        if asked["value"]["method"] == method:
            check_request(method, asked["value"])


def test_types_of_the_description_are_explained():
    [rows] = re.findall(r"^\| Type .*\n.*\n((?:\|.*\n)*)", PAGE, re.MULTILINE)
    assert set(re.findall(r"^\| (.*?) \|", rows, re.MULTILINE)) == {
        type_of(parameter) for method in REQUESTS for parameter in parameters(method).values()}
