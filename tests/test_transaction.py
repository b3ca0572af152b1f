"""One change at a time, all of it or none: the lock, the journal, and what a save keeps."""
import fcntl
import os

import pytest
from conftest import ETC, FOLDER, Answer, case, needs_root
from faults import failing, save_log
from schedules import SHOW, STOP_SHOW
from test_create import create, made

LOCK, JOURNAL = f"{ETC}/.schedules.lock", f"{ETC}/.schedules.journal"


def change(appliance, **options):
    """A request that changes nothing here, but counts as one that may."""
    return appliance.request("delete_passed", tuner=9, **options)


@pytest.mark.slow
def test_lock_held_by_another_is_waited_for_ten_seconds(appliance):
    appliance.store(**{LOCK: ""})
    with open(appliance.path(LOCK), "rb") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        assert appliance.request("list").code is None  # and does not wait
        log = f"another request has held {appliance.path(LOCK)} for 10 seconds"
        assert change(appliance, now=None) == Answer(100, log=[log])
    assert change(appliance) == Answer()


def test_lock_that_was_replaced_while_it_was_waited_for_is_waited_for_again(appliance):
    """Of the looks at the file every third one is whether the lock is still the one at its path."""
    lock = appliance.store(**{LOCK: ""}).path(LOCK)
    for at, code, log in ("3", None, []), (
            "3+3", 100, [f"cannot lock {lock}: it is deleted again and again"]):
        under = failing("newfstatat", lock, at=at, fault="error=ENOENT")
        assert change(appliance, under=under) == Answer(code, log=log)


@pytest.mark.parametrize("spoil, reason", [
    case("link", lambda lock: lock.symlink_to("x"), "Too many levels of symbolic links"),
    case("of all", lambda lock: (lock.touch(), lock.chmod(0o666)), "Operation not permitted"),
    case("of another user", lambda lock: (lock.touch(), os.chown(lock, 1234, -1)),
         "Operation not permitted", marks=needs_root)])
def test_lock_of_somebody_else_refuses_changes(appliance, spoil, reason):
    spoil(appliance.path(LOCK))
    log = f"cannot lock {appliance.path(LOCK)}: {reason}"
    assert change(appliance) == Answer(100, log=[log])


def test_journal_left_behind_is_rolled_back_by_the_next_change(appliance):
    old, later = '[{"title":"old"}]', appliance.path(f"{ETC}/later")
    appliance.store(one_shot=[SHOW], user_defined=[SHOW], **{str(later): "", JOURNAL: (
        f"{len(old)} dtvschedules/0dtv_schedule.json\n{old}-1 later\n"
        "-1 dtvuserdefineschedules.json\n")})
    appliance.path(JOURNAL).chmod(0o600)
    os.utime(later, (0, appliance.path(JOURNAL).stat().st_mtime + 62))
    assert appliance.request("list").data["schedules"][0]["title"] == SHOW.title
    assert change(appliance) == Answer(log=[
        f"{later} was changed after the unfinished request and is kept",
        "rolled back an unfinished request"])
    appliance.expect_changes(one_shot=old, user_defined="(no file)", commands=["reload"])
    assert change(appliance) == Answer()


@pytest.mark.parametrize("text", ["x", "1\nx", "2 x\ny", "-1 ../users\n", "1 a\nb1 c"])
def test_journal_that_is_broken_refuses_changes(appliance, text):
    appliance.store(**{JOURNAL: text}).path(JOURNAL).chmod(0o600)
    log = f"cannot roll back an unfinished request from {appliance.path(JOURNAL)}: Invalid argument"
    for _ in "once", "again":
        assert change(appliance) == Answer(100, log=[log])


@pytest.mark.parametrize("call", ["rename", "fsync"])
def test_change_without_room_is_rolled_back(appliance, call):
    appliance.store(one_shot=[SHOW], user_defined=[SHOW])
    path = appliance.path("user_defined")
    paths = [path, f"{path}.tmp"] if call == "rename" else [path]
    under = failing(call, *paths, at="1", fault="error=ENOSPC")
    answer = appliance.request("delete_userdefine", tuner=0, id=SHOW.start, under=under)
    log = save_log(appliance, "user_defined", "No space left on device") if call == "rename" else []
    assert answer == Answer(100, log=[
        *log, "a device failed or is full: the request is rolled back",
        "rolled back an unfinished request"])
    appliance.expect_changes(commands=[STOP_SHOW, "reload", "reload"])


@pytest.mark.slow  # and the sanitizers need more room than these limits leave
def test_change_that_runs_out_of_memory_is_rolled_back_at_once(appliance):
    rolled_back = 0
    for mebibytes in range(10, 60, 2):
        appliance.store(one_shot=[SHOW], user_defined=[SHOW, {"text_name": "x" * 4_000_000}])
        answer = appliance.request("delete_userdefine", tuner=0, id=SHOW.start,
                                   under=["prlimit", f"--as={mebibytes << 20}"])
        appliance.forget()
        assert appliance.stored().one_shot == ([] if answer == Answer() else [SHOW.stored()])
        rolled_back += "rolled back an unfinished request" in answer.log
    assert rolled_back > 0 and answer == Answer()


@pytest.mark.parametrize("call, path", [
    ("openat", "user_defined"), ("openat", "etc/group"), ("fsync", f"{ETC}/dtvschedules"),
    ("fsync", f"{ETC}/dtvschedules/0dtv_schedule.json.tmp")])
@pytest.mark.parametrize("stored", [None, [SHOW]])
def test_change_of_one_file_is_refused_if_a_device_fails(appliance, call, path, stored):
    under = failing(call, appliance.store(one_shot=stored).path(path))
    log = save_log(appliance, "one_shot", "Input/output error")
    assert create(appliance, user="viewer", under=under) == Answer(403, log=log)


def test_recording_folder_whose_device_failed_is_no_reason_while_there_is_another(appliance):
    appliance.store(folders=[FOLDER | {"subpath": "x"}, FOLDER])
    under = failing("newfstatat", appliance.path(f"volume1/{FOLDER['share']}/x"))
    assert create(appliance, under=under) == Answer()
    appliance.expect_changes(one_shot=[made()], commands=["reload"])


def test_save_keeps_mode_and_owner(appliance):
    path, own = appliance.path("one_shot"), (os.geteuid(), os.getegid())
    owner, owner_of_folder = ((1234, 5678), (12, 13)) if own[0] == 0 else (own, own)
    appliance.store(**{f"{path}.tmp": "left by a process that was killed"})
    os.chown(path.parent, *owner_of_folder)
    for start, mode, expected in (1000, 0o640, owner_of_folder), (2000, 0o604, owner):
        assert create(appliance, start_time=start) == Answer()
        appliance.forget()
        info = path.stat()
        assert (info.st_mode & 0o7777, info.st_uid, info.st_gid) == (mode, *expected)
        os.chown(path, *owner)
        path.chmod(0o604)
