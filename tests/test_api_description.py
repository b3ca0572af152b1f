"""The examples of docs/openapi.yaml are as it describes."""
import pytest
from answers import check_answer, check_request
from api_description import DOCUMENT, REQUESTS

POST = DOCUMENT["paths"]["/webapi/schedule_recording"]["post"]["requestBody"]["content"]
ASKED = POST["application/x-www-form-urlencoded"]["examples"]
ANSWERS = DOCUMENT["components"]["responses"]["answer"]["content"]["application/json"]["examples"]


@pytest.mark.parametrize("method", REQUESTS)
def test_examples_of_the_description(method):
    check_answer(method, ANSWERS[method]["value"])
    for asked in ASKED.values():
        if asked["value"]["method"] == method:
            check_request(method, asked["value"])
