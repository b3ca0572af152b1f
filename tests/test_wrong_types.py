"""Members and records of wrong types: every method answers as if they were absent, changes nothing
else, and keeps them."""
import json

import pytest
from conftest import text_of
from every_method import CHANGING, READING, STORED, query_of

NO_TEXT = [None, [], {}]
NO_NUMBER = [*NO_TEXT, "x", 1e300]


def spoilt(record):
    """What may stand in a file instead of a record, each with the records that it counts as."""
    for bad in ("x", None, []):
        yield bad, []
    for member, good in record.items():
        others = {key: value for key, value in record.items() if key != member}
        is_number = type(good) is int and member != "service_id"  # which is read as text
        for bad in NO_NUMBER if is_number else NO_TEXT:
            yield others | {member: bad}, [others]


def readable(document):
    """A document without members and elements of wrong types."""
    if isinstance(document, dict):
        members = {key: readable(value) for key, value in document.items()}
        return {key: value for key, value in members.items() if value not in NO_NUMBER}
    if isinstance(document, list):
        return [value for value in map(readable, document) if value not in NO_NUMBER]
    return document


def outcome(appliance, name, file, records):
    """The answer to a request and what it leaves, with these records in one of the files."""
    appliance.store(commands=None, **STORED | {file: records})
    answer = appliance.request(**query_of(name))
    appliance.forget()
    return vars(answer) | vars(appliance.stored())


@pytest.mark.slow
@pytest.mark.parametrize("name", CHANGING | READING)
@pytest.mark.parametrize("file", STORED)
def test_wrong_type(appliance, file, name):
    records = json.loads(text_of(file, STORED[file]))
    for position, record in enumerate(records):
        before, behind = records[:position], records[position + 1:]
        for bad, good in spoilt(record):
            expected = outcome(appliance, name, file, [*before, *good, *behind])
            left = outcome(appliance, name, file, [*before, bad, *behind])
            assert (bad, readable(left)) == (bad, readable(expected))
            is_kept = all(record in (expected[file] or []) for record in good)
            assert (bad in (left[file] or [])) == is_kept, bad
