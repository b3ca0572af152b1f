"""Members and records of wrong types: every method answers as if they were absent, changes nothing
else, and keeps them where they stand."""
import json

import pytest
from conftest import in_forms
from every_method import CHANGING, READING, STORED, query_of

VALUES = [7, -1, 1e300, None, "x", [], {}]
READ_AS_TEXT = ("service_id",)  # also where they are numbers


def is_unreadable(value, member, good):
    """Whether a value cannot be read as one of the type of a good one."""
    if isinstance(good, str) or member in READ_AS_TEXT:
        return value in (None, [], {})
    return value in (None, "x", [], {}) or value == 1e300 and not isinstance(good, bool)


def outcome(appliance, name, file, records):
    """The answer to a request and what it leaves, with these records in one of the files."""
    appliance.store(commands=None, **STORED | {file: records})
    answer = appliance.request(**query_of(name))
    appliance.forget()
    return {"code": answer.code, "log": answer.log, "data": answer.data, **vars(appliance.stored())}


def without(document, member, bad):
    """A document without members of that name and value, or without elements of it."""
    if isinstance(document, dict):
        return {key: without(value, member, bad) for key, value in document.items()
                if value is not None and not (key == member and value == bad)}
    if isinstance(document, list):
        return [without(element, member, bad) for element in document
                if member is not None or element != bad]
    return document


def records_of(file):
    """Each record of a file, with those before and behind it."""
    records = in_forms(file, STORED[file])
    for position, record in enumerate(records):
        yield record, records[:position], records[position + 1:]


@pytest.mark.slow
@pytest.mark.parametrize("name", CHANGING | READING)
@pytest.mark.parametrize("file", STORED)
def test_wrong_type_of_member(appliance, file, name):
    for record, before, behind in records_of(file):
        for member, good in record.items():
            others = {key: value for key, value in record.items() if key != member}
            expected = outcome(appliance, name, file, [*before, others, *behind])
            for bad in (value for value in VALUES if is_unreadable(value, member, good)):
                left = outcome(appliance, name, file, [*before, others | {member: bad}, *behind])
                assert (member, bad, without(left, member, bad)) == (
                    member, bad, without(expected, member, None))
                kept = others in (expected[file] or [])
                assert kept == (others | {member: bad} in (left[file] or [])), (member, bad)


@pytest.mark.slow
@pytest.mark.parametrize("name", CHANGING | READING)
@pytest.mark.parametrize("file", STORED)
def test_wrong_type_of_record(appliance, file, name):
    for _, before, behind in records_of(file):
        expected = outcome(appliance, name, file, [*before, *behind])
        expected[file] = expected[file] or []
        for bad in (value for value in VALUES if value != {}):
            left = outcome(appliance, name, file, [*before, bad, *behind])
            assert (bad, without(left, None, bad)) == (bad, without(expected, None, "none"))
            assert json.dumps(bad) in map(json.dumps, left[file]), bad
