"""Who may ask, whatever the method is: the login, the account and the privilege."""
import json
import os

import pytest
from conftest import Answer, case

EMPTY = {"schedules": [], "start": 0, "total": 0}
GRANTED = {"1026": {"dtv": True}}


def privilege_log(appliance, line, text, reason=""):
    return [f"privilege:{line} failed to {text}[{appliance.path('users')}]{reason}"]


@pytest.mark.parametrize("user, code", [
    ("", 106), ("locked", 107), ("viewer", None), ("guest", 105), ("admin", None)])
def test_access_of_user(appliance, user, code):
    for sharing in None, "x":
        assert appliance.request("list", user, sharing_id=sharing) == (
            Answer(code, EMPTY if code is None else None))


def test_access_of_administrator_without_asking_privileges(appliance):
    appliance.store(users="{")
    assert appliance.request("list") == Answer(data=EMPTY)


@pytest.mark.parametrize("users", [
    None, [1, 2], {"1": {"dtv": True}}, {"1026": 1}, {"1026": {"dtv": 1}},
    {"1026": {"dtv": "true"}}, {"1026": {"dtv": False, "sharing": True, "renderer": True}},
    {"01026": {"dtv": True}}], ids=str)
def test_access_not_granted(appliance, users):
    appliance.store(users=users)
    assert appliance.request("delete", "viewer", tuner=0) == Answer(105)


def test_access_without_account_is_that_of_uid_0(appliance):
    assert appliance.request("list", "nobody") == Answer(100)
    appliance.store(users={"0": {"dtv": True}})
    assert appliance.request("list", "nobody") == Answer(100, EMPTY)


@pytest.mark.parametrize("users, code", [
    case("broken", "{", 105), case("broken behind the entry", json.dumps(GRANTED)[:-1] + ",", None),
    case("too deep", json.dumps(GRANTED)[:-1] + ',"x":' + "[" * 100000, 105)])
def test_access_with_privileges_that_do_not_parse(appliance, users, code):
    appliance.store(users=users)
    log = privilege_log(appliance, 70, "parse json file")
    assert appliance.request("x", "viewer") == Answer(code, log=log)


@pytest.mark.parametrize("make, reason", [
    case("folder", os.mkdir, "Is a directory"),
    case("nobody writes", os.mkfifo, "Invalid argument"),
    case("endless link", lambda path: path.symlink_to(path), "Too many levels of symbolic links")])
def test_access_with_privileges_that_are_no_file(appliance, make, reason):
    appliance.store(users=None)
    make(appliance.path("users"))
    log = privilege_log(appliance, 61, "access config file ", f" {reason}")
    assert appliance.request("list", "viewer") == Answer(105, log=log)
