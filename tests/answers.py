"""Holds the answers that the tests get against docs/openapi.yaml."""
import jsonschema
from api_description import DOCUMENT, FILE, REQUESTS, SCHEMAS, codes, parameters

RESOLVER = jsonschema.RefResolver.from_schema(DOCUMENT)
seen = set()  # each method with a code that it answered, None for a success, or a parameter


def check(what, schema, value):
    """Fails unless the value is as in the schema, and says why it is not."""
    errors = jsonschema.Draft202012Validator(schema, resolver=RESOLVER).iter_errors(value)
    error = jsonschema.exceptions.best_match(errors)
    assert error is None, f"{what} is not as in {FILE}: {error.json_path}: {error.message}"


def check_request(method, values):
    check(f"the request of {method}", {"oneOf": REQUESTS[method]}, values | {"method": method})


def check_answer(method, value):
    schema = SCHEMAS[f"{method}_answer"]["oneOf"]["error" in value]  # the first is a success
    check(f"the answer of {method}", schema, value)


def observe(texts, answer):
    """Fails if the answer to a request of these parameters is not as described."""
    method, code = texts.get("method", "").lower(), answer.get("error", {}).get("code")
    if method not in REQUESTS:
        assert answer == {"success": True} or code in codes("common"), f"{method!r}: {answer}"
        return
    check_answer(method, answer)
    seen.update([("any method", code), *((method, what) for what in (code, *texts))])


def unseen():
    """The codes and parameters of the description that no request so far has shown."""
    described = {(method, what) for method in REQUESTS
                 for what in (None, *codes(method), *parameters(method))}
    return described.union(("any method", code) for code in codes("common")) - seen
