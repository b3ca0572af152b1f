"""Holds the answers that the tests get against docs/openapi.yaml."""
from pathlib import Path

import jsonschema
import yaml

FILE = "docs/openapi.yaml"
DOCUMENT = yaml.safe_load((Path(__file__).parent.parent / FILE).read_text(encoding="utf-8"))
SCHEMAS = DOCUMENT["components"]["schemas"]
RESOLVER = jsonschema.RefResolver.from_schema(DOCUMENT)
REQUESTS = {}  # of each method, the schemas of which a request must be as exactly one
for branch in SCHEMAS["request"]["oneOf"]:
    request = RESOLVER.resolve(branch["$ref"])[1]
    REQUESTS.setdefault(request["properties"]["method"]["const"], []).append(request)
METHODS = list(REQUESTS)
seen = set()  # each method with a code that it answered, None for a success, or a parameter


def codes(method):
    """The error codes that a method sets itself, each with its schema; `common`: any method."""
    return {branch["const"]: branch for branch in SCHEMAS[f"{method}_code"]["anyOf"]
            if "const" in branch}


def types_of(method):
    """The parameters of a method, each with the name of its type."""
    return {name: schema.get("$ref", "flag").split("/")[-1] for request in REQUESTS[method]
            for name, schema in request["properties"].items() if name != "method"}


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
    if method not in METHODS:
        assert answer == {"success": True} or code in codes("common"), f"{method!r}: {answer}"
        return
    check_answer(method, answer)
    seen.update([("any method", code), *((method, what) for what in (code, *texts))])


def unseen():
    """The codes and parameters of the description that no request so far has shown."""
    described = {(method, what) for method in METHODS
                 for what in (None, *codes(method), *types_of(method))}
    return described.union(("any method", code) for code in codes("common")) - seen
