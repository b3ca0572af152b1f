"""Holds the requests and the answers of the tests against docs/openapi.yaml."""
# A test that sends on purpose what no client should send bears the mark `sloppy`.
import re
from pathlib import Path

import jsonschema
import yaml

FILE = "docs/openapi.yaml"
DOCUMENT = yaml.safe_load((Path(__file__).parent.parent / FILE).read_text(encoding="utf-8"))
METHODS = list(DOCUMENT["components"]["schemas"]["request"]["discriminator"]["mapping"])
RESOLVER = jsonschema.RefResolver.from_schema(DOCUMENT)
seen = set()  # each method with a code that it answered, None for a success, or a parameter


def schema_of(name):
    return DOCUMENT["components"]["schemas"][name]


def form_of(parameter):
    """The name of the schema of a parameter, or of each element of a list."""
    return parameter.get("items", parameter)["$ref"].split("/")[-1]


def codes(method):
    """The error codes that a method sets itself, each with its schema; `common`: any method."""
    return {branch["const"]: branch for branch in schema_of(f"{method}_code")["anyOf"]
            if "const" in branch}


def parameters_of(method):
    properties = schema_of(f"{method}_request")["properties"]
    return {name: schema for name, schema in properties.items() if name != "method"}


def check(name, value):
    """Fails unless the value is as the schema of that name, and says why it is not."""
    schema = schema_of(name)
    if name.endswith("_answer"):  # the first branch is that of a success
        schema = schema["oneOf"]["error" in value]
    errors = jsonschema.Draft202012Validator(schema, resolver=RESOLVER).iter_errors(value)
    error = jsonschema.exceptions.best_match(errors)
    assert error is None, f"{name} is not as in {FILE}: {error.json_path}: {error.message}"


def read_as(parameter, text):
    """The value that the text of a parameter stands for; a text that stands for none stays."""
    if parameter.get("type") == "array":
        return [read_as(parameter["items"], piece) for piece in text.split(",")]
    kind = schema_of(form_of(parameter))["type"]
    if kind == "integer" and re.fullmatch("[+-]?[0-9]+", text):
        return int(text)
    if kind == "boolean" and text.lower() in ("true", "false"):
        return text.lower() == "true"
    return text


def observe(texts, answer, is_sloppy=False):
    """Fails if an answer, or the request of these parameters, is not as described."""
    method, code = texts.get("method", "").lower(), answer.get("error", {}).get("code")
    if method not in METHODS:
        assert answer == {"success": True} or code in codes("common"), f"{method!r}: {answer}"
        return
    check(f"{method}_answer", answer)
    seen.update([("any method", code), *((method, what) for what in (code, *texts))])
    is_refused = code in (101, 105, 106, 107)  # for its parameters or its login
    if not is_sloppy and not is_refused:
        forms = parameters_of(method)
        values = {name: read_as(forms[name], text) if name in forms else text
                  for name, text in texts.items()}
        check(f"{method}_request", values | {"method": method})


def unseen():
    """The codes and parameters of the description that no request so far has shown."""
    described = {(method, what) for method in METHODS
                 for what in (None, *codes(method), *parameters_of(method))}
    return described.union(("any method", code) for code in codes("common")) - seen
