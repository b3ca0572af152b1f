"""What docs/openapi.yaml says of each method, for the tests and script/describe-operations."""
from pathlib import Path

import yaml

FILE = "docs/openapi.yaml"
DOCUMENT = yaml.safe_load((Path(__file__).parent.parent / FILE).read_text(encoding="utf-8"))
SCHEMAS = DOCUMENT["components"]["schemas"]
REQUESTS = {}  # of each method, the schemas of which a request must be as exactly one
for branch in SCHEMAS["request"]["oneOf"]:
    request = SCHEMAS[branch["$ref"].split("/")[-1]]
    REQUESTS.setdefault(request["properties"]["method"]["const"], []).append(request)


def codes(method):
    """The error codes that a method sets itself, each with its schema; `common`: any method."""
    return {branch["const"]: branch for branch in SCHEMAS[f"{method}_code"]["anyOf"]
            if "const" in branch}


def parameters(method):
    return {name: schema for request in REQUESTS[method]
            for name, schema in request["properties"].items() if name != "method"}


def type_of(parameter):
    """The name of the type of a parameter, as docs/api.md explains it."""
    return parameter.get("$ref", "flag").split("/")[-1].replace("_", " ")
