"""Who may ask, whatever the method is: the login, the account and the privilege."""
import json
import os

import pytest
from conftest import EMPTY_LIST, Answer, case

DTV = {"1026": {"dtv": True}}


@pytest.mark.parametrize("user, users, code", [
    ("", DTV, 106), ("locked", DTV, 107), ("viewer", DTV, None), ("guest", DTV, 105),
    *(("viewer", users, 105) for users in (
        None, [1, 2], {"1": {"dtv": True}}, {"1026": 1}, {"1026": {"dtv": 1}},
        {"1026": {"dtv": False, "sharing": True, "renderer": True}}))], ids=json.dumps)
def test_access_of_user(appliance, user, users, code):
    answer = appliance.store(users=users).request("list", user, sharing_id="x")
    assert answer == Answer(code, EMPTY_LIST if code is None else None)


def test_access_without_account_is_that_of_uid_0(appliance):
    log = ["privilege:40 no account for login [nobody]"]
    assert appliance.request("list", "nobody") == Answer(100, log=log)
    appliance.store(users={"0": {"dtv": True}})
    assert appliance.request("list", "nobody") == Answer(100, EMPTY_LIST, log)


NO_FILE = "61 failed to access config file [{}] "
NO_JSON = "70 failed to parse json file[{}]"


@pytest.mark.parametrize("users, code, log", [
    case("broken behind the entry", '{"1026":{"dtv":true},', None, NO_JSON),
    case("too deep", '{"1026":{"dtv":true},"x":' + "[" * 100000, 105, NO_JSON),
    case("link to itself", lambda path: path.symlink_to(path), 105,
         NO_FILE + "Too many levels of symbolic links"),
    case("folder", os.mkdir, 105, NO_JSON),
    case("FIFO", os.mkfifo, 105, NO_JSON)])
def test_access_with_privileges_that_cannot_be_read(appliance, users, code, log):
    answer = appliance.store(users=users).request("x", "viewer")
    assert answer == Answer(code, log=["privilege:" + log.format(appliance.path("users"))])
