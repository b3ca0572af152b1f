"""Holds every request and answer of the tests against docs/openapi.yaml, both ways."""
# A plugin of pytest: conftest.py names it in pytest_plugins and calls observe() for every request.
# A test that sends on purpose what no client should send bears the mark `sloppy`.
import re
from pathlib import Path

import jsonschema
import yaml

TESTS = Path(__file__).resolve().parent
FILE = "docs/openapi.yaml"
DOCUMENT = yaml.safe_load((TESTS.parent / FILE).read_text(encoding="utf-8"))
METHODS = list(DOCUMENT["components"]["schemas"]["request"]["discriminator"]["mapping"])
RESOLVER = jsonschema.RefResolver.from_schema(DOCUMENT)
seen = set()  # pairs of a method and a code, a parameter or the path of a member of an answer
is_sloppy = False  # whether the running test sends parameters that no client should


def resolved(schema):
    """A schema together with the one that it refers to; its own members come first."""
    if "$ref" not in schema:
        return schema
    return {**resolved(RESOLVER.resolve(schema["$ref"])[1]), **schema}


def schema_of(name):
    return resolved({"$ref": f"#/components/schemas/{name}"})


def codes(method):
    """The error codes that a method sets itself, each with its schema; `common`: any method."""
    return {branch["const"]: branch for branch in schema_of(f"{method}_code")["anyOf"]
            if "const" in branch}


def parameters_of(method):
    properties = schema_of(f"{method}_request")["properties"]
    return {name: schema for name, schema in properties.items() if name != "method"}


def described(schema, path=""):
    """The paths of all members in a schema."""
    schema = resolved(schema)
    for branch in schema.get("oneOf", []):
        yield from described(branch, path)
    for name, member in schema.get("properties", {}).items():
        yield f"{path}.{name}"
        yield from described(member, f"{path}.{name}")
    if "items" in schema:
        yield from described(schema["items"], f"{path}[]")


def present(value, path=""):
    """The paths of all members in an answer."""
    for name, member in value.items() if isinstance(value, dict) else ():
        yield f"{path}.{name}"
        yield from present(member, f"{path}.{name}")
    for element in value if isinstance(value, list) else ():
        yield from present(element, f"{path}[]")


def read_as(schema, text):
    """The value that the text of a parameter stands for; a text that stands for none stays."""
    kind = resolved(schema).get("type")
    if kind == "array":
        return [read_as(schema["items"], piece) for piece in text.split(",")]
    if kind == "integer" and re.fullmatch("[+-]?[0-9]+", text):
        return int(text)
    if kind == "boolean" and text.lower() in ("true", "false"):
        return text.lower() == "true"
    return text


def check(schema, value, what):
    """Fails unless the value is valid, and says what is wrong with it."""
    errors = jsonschema.Draft202012Validator(schema, resolver=RESOLVER).iter_errors(value)
    error = jsonschema.exceptions.best_match(errors)
    assert error is None, f"{what} is not as in {FILE}: {error.json_path}: {error.message}"


def observe(method, parameters, answer):
    """Fails if a request or its answer is not as described; remembers what it saw."""
    method, body = method.lower(), answer.body
    code = body.get("error", {}).get("code")
    if method not in METHODS:
        assert body == {"success": True} or code in codes("common"), f"{method!r} answers {body}"
        return
    assert code in [None, *codes("common"), *codes(method)], \
        f"{method} answers {code}, a code that {FILE} does not list for it"
    schema = schema_of(f"{method}_answer")["oneOf"][0 if code is None else 1]
    check(schema, body, f"the answer of {method}")
    seen.update((method, what) for what in [code, *present(body)])
    is_refused = code in (101, 105, 106, 107)  # for its parameters or its login
    if not is_sloppy and not is_refused:
        values = {name: read_as(parameters_of(method).get(name, {}), text)
                  for name, text in parameters.items()} | {"method": method}
        check(schema_of(f"{method}_request"), values, f"a request of {method}, not marked sloppy,")
        seen.update((method, name) for name in values)


def never_seen():
    """What the description has and no test has shown, as texts."""
    answered = {code for _, code in seen}
    yield from (f"any method: {code}" for code in codes("common") if code not in answered)
    for method in METHODS:
        members = dict.fromkeys(described(schema_of(f"{method}_answer")))
        yield from (f"{method}: {what}"
                    for what in [*members, *codes(method), *parameters_of(method)]
                    if (method, what) not in seen)


def pytest_configure(config):
    config.addinivalue_line("markers", "sloppy: sends parameters that the API does not describe")


def pytest_runtest_setup(item):
    global is_sloppy
    is_sloppy = item.get_closest_marker("sloppy") is not None


def pytest_sessionfinish(session):
    """Fails a run of the whole suite in which something described was never seen."""
    outcomes = session.config.pluginmanager.get_plugin("terminalreporter").stats
    files = {Path(item.fspath) for item in session.items}
    is_whole = "deselected" not in outcomes and files == set(TESTS.glob("test_*.py"))
    unseen = list(never_seen()) if is_whole and session.testsfailed == 0 else []
    if unseen:
        session.exitstatus = 1
        print(f"\n\nFAILED: {FILE} describes what no test has seen:", *unseen, sep="\n    ")
