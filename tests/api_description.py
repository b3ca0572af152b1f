"""Holds every request and answer of the tests against docs/openapi.yaml, both ways."""
import re
from pathlib import Path

import jsonschema
import yaml

TESTS = Path(__file__).resolve().parent
FILE = "docs/openapi.yaml"
DOCUMENT = yaml.safe_load((TESTS.parent / FILE).read_text(encoding="utf-8"))
METHODS = list(DOCUMENT["components"]["schemas"]["request"]["discriminator"]["mapping"])
RESOLVER = jsonschema.RefResolver.from_schema(DOCUMENT)
seen = set()  # (method, path of a member, parameter or code)


def schema_of(name):
    """The schema of that name, the reference in it resolved."""
    return resolved({"$ref": f"#/components/schemas/{name}"})


def resolved(schema):
    """A schema together with the one that it refers to; its own members come first."""
    if "$ref" not in schema:
        return schema
    return {**resolved(RESOLVER.resolve(schema["$ref"])[1]), **schema}


def codes(method):
    """The error codes that a method sets itself, each with its schema; those of all for None."""
    if method is None:
        return {branch["const"]: branch for branch in schema_of("common_code")["oneOf"]}
    failure = schema_of(f"{method}_answer")["oneOf"][1]
    branches = failure["properties"]["error"]["properties"]["code"]["anyOf"]
    return {branch["const"]: branch for branch in branches if "const" in branch}


def described(schema, path=""):
    """The paths of all members in a schema."""
    schema = resolved(schema)
    for branch in schema.get("oneOf", []) + schema.get("anyOf", []):
        yield from described(branch, path)
    for name, member in schema.get("properties", {}).items():
        yield f"{path}.{name}"
        yield from described(member, f"{path}.{name}")
    if "items" in schema:
        yield from described(schema["items"], f"{path}[]")


def present(value, path=""):
    """The paths of all members in an answer."""
    if isinstance(value, dict):
        for name, member in value.items():
            yield f"{path}.{name}"
            yield from present(member, f"{path}.{name}")
    elif isinstance(value, list):
        for element in value:
            yield from present(element, f"{path}[]")


def read_as(schema, text):
    """The value that the text of a parameter stands for; a text that stands for none stays."""
    schema = resolved(schema)
    kind = schema.get("type")
    if kind == "array":
        return [read_as(schema["items"], piece) for piece in str(text).split(",")]
    if kind == "integer" and re.fullmatch("[+-]?[0-9]+", str(text)):
        return int(text)
    if kind == "boolean" and str(text).lower() in ("true", "false"):
        return str(text).lower() == "true"
    return str(text)


def check(schema, value, what):
    """Fails unless the value is valid, and says what is wrong with it."""
    errors = jsonschema.Draft202012Validator(schema, resolver=RESOLVER).iter_errors(value)
    error = jsonschema.exceptions.best_match(errors)
    assert error is None, f"{what} is not as in {FILE}: {error.json_path}: {error.message}"


def observe(method, parameters, answer, sloppy=False):
    """Fails if a request and its answer (parsed) are not as described; remembers what it saw.

    A request that no test of its parameters or its login refused is taken as meant to be
    well-formed, unless the test says that it is sloppy on purpose.
    """
    method = str(method).lower()
    if method not in METHODS:
        refusals = [{"success": False, "error": {"code": code}} for code in codes(None)]
        assert answer in [{"success": True}, *refusals], f"the method {method!r} answers {answer}"
        return
    code = answer.get("error", {}).get("code")
    listed = {None, *codes(None), *codes(method)}
    assert code in listed, f"{method} answers {code}, a code that {FILE} does not list for it"
    succeeds = schema_of(f"{method}_answer")["oneOf"][0 if code is None else 1]
    check(succeeds, answer, f"the answer of {method}")
    seen.update((method, path) for path in present(answer))
    seen.add((method, code))
    if not sloppy and code not in (101, 105, 106, 107):
        check_request(method, parameters)


def check_request(method, parameters):
    """Fails unless the parameters (names and texts, without the method) are as described."""
    schema = schema_of(f"{method}_request")
    values = {name: read_as(schema["properties"].get(name, {}), text)
              for name, text in parameters.items() if name != "method"}
    check(schema, {"method": method, **values}, f"a request of {method}")
    seen.update((method, name) for name in values)


def never_seen():
    """What the description has and no test has shown, a sentence each."""
    everywhere = {code for _, code in seen}
    for code in codes(None):
        if code not in everywhere:
            yield f"no method has answered {code}"
    for method in METHODS:
        wanted = {**dict.fromkeys(described(schema_of(f"{method}_answer")), "member"),
                  **dict.fromkeys(codes(method), "code"),
                  **dict.fromkeys(schema_of(f"{method}_request")["properties"], "parameter")}
        for what, kind in wanted.items():
            if what != "method" and (method, what) not in seen:
                yield f"{method}: the {kind} {what}"


def is_whole(session):
    """Whether every test of every file has run and passed."""
    reporter = session.config.pluginmanager.get_plugin("terminalreporter")
    files = {Path(item.fspath).name for item in session.items}
    return (session.testsfailed == 0 and not reporter.stats.get("deselected")
            and not any("::" in argument for argument in session.config.args)
            and files == {file.name for file in TESTS.glob("test_*.py")})


def pytest_sessionfinish(session):
    """Fails a run of the whole suite in which something described was never seen."""
    unseen = list(never_seen()) if is_whole(session) else []
    if unseen:
        session.exitstatus = 1
        print(f"\n\nFAILED: {FILE} describes what no test has seen:", *unseen, sep="\n    ")
