"""edit_userdefine: what is refused, what is replaced, what is put back."""
import pytest
from conftest import Answer, case, dangling_link
from every_method import MADE, NEW, NEW_RULE, PASSED, RULE, STORED, edit_of
from faults import daemon_fails, daemon_log, save_fails, save_log
from schedules import OTHER, SHOW, STOP_SHOW, WEEKLY, Schedule

LATER = Schedule("2033-05-17", "20:30", "01:00", "Later", "7@474", "0,0,1,0,0,0,1", "2033-08-01")
DURING = WEEKLY.but(days=None, end_date="1", title="During")
ENDED = SHOW.but(time="20:30", days="1,1,1,1,1,1,1", end_date="2033-05-10")


@pytest.fixture
def stored(appliance):
    """An appliance with SHOW, with WEEKLY and the schedule that it made, and with PASSED."""
    return appliance.store(**STORED)


def edit(appliance, old, new, **changes):
    """Edits a stored schedule into a new one, on a Tuesday."""
    return appliance.request("edit_userdefine", now="2033-05-17 12:00",
                             **edit_of(old, new) | changes)


def commands_of(old, new):
    """Before anything changes, the daemon is asked to reload for a new one-shot schedule."""
    tested = [] if new.is_repeat else ["reload"]
    deleted = [] if old.is_repeat else [STOP_SHOW, "reload"]
    return [*tested, *deleted, "reload"]


@pytest.mark.parametrize("old, new, files, code", [
    case("overlaps", SHOW, OTHER, {"one_shot": [SHOW, OTHER]}, 405),
    case("overlaps a rule", SHOW, DURING, {"one_shot": [SHOW]}, 405),
    case("overlaps on a later day", SHOW, LATER, {"one_shot": [SHOW, OTHER]}, 405),
    case("made one is recording", WEEKLY, DURING, {"one_shot": [MADE | {"status": 2}]}, 405),
    case("another channel", WEEKLY, DURING, {"one_shot": [MADE | {"frequency": 501}]}, 405),
    case("broken store", SHOW, NEW_RULE, {"one_shot": "["}, 100),
    case("store on a volume that is away", SHOW, NEW, {"repeat": dangling_link}, 100)])
def test_edit_userdefine_refused(stored, old, new, files, code):
    assert edit(stored.store(**files), old, new) == Answer(code)


@pytest.mark.parametrize("old, new, before, after", [
    case("one-shot", SHOW, NEW, {}, {"one_shot": [PASSED, MADE, NEW]}),
    case("one-shot to a rule", SHOW, NEW_RULE, {}, {
        "one_shot": [PASSED, MADE], "repeat": [RULE, NEW_RULE]}),
    case("rule to one-shot", WEEKLY, NEW, {}, {"one_shot": [PASSED, SHOW, NEW], "repeat": []}),
    *(case(name, WEEKLY, new, {}, {"one_shot": [PASSED, SHOW], "repeat": [new]})
      for name, new in [
        ("rule", NEW_RULE), ("rule at its own time", WEEKLY.but(time="18:10")),
        ("rule that has ended", ENDED),
        ("end of time", NEW_RULE.but(date="2038-01-15", end_date="2999-01-01"))]),
    case("no one-shot left", WEEKLY, NEW_RULE, {"one_shot": [MADE]}, {
        "one_shot": "null\n", "repeat": [NEW_RULE]}),
    case("no rule in its store", WEEKLY, NEW_RULE, {"repeat": []}, {"repeat": [NEW_RULE]})])
def test_edit_userdefine(stored, old, new, before, after):
    other = WEEKLY if old == SHOW else SHOW
    assert edit(stored.store(**before), old, new) == Answer()
    stored.expect_changes(**after, user_defined=[other, new], commands=commands_of(old, new))


@pytest.mark.parametrize("old, time, files", [
    case("one-shot", SHOW, "22:15", {"one_shot": [PASSED, MADE, SHOW]}),
    case("rule", WEEKLY, "20:00", {"one_shot": [PASSED, SHOW], "repeat": [WEEKLY]})])
@pytest.mark.parametrize("new, changes", [
    case("no channel name", NEW, {"channel_name": None}),
    case("no such channel", NEW, {"id": "x@1"}),
    case("weekday not selected", NEW_RULE, {"weekdaystatus": "1,0,0,0,0,0,0"})])
def test_edit_userdefine_puts_old_schedule_back(stored, old, time, files, new, changes):
    """It keeps its start, although in Berlin the texts of its record mean another one."""
    other = WEEKLY if old == SHOW else SHOW
    assert edit(stored, old, new, zone="Europe/Berlin", orig_start_time=time,
                **changes) == Answer(101)
    stored.expect_changes(**files, user_defined=[other, old], commands=commands_of(old, new))


def test_edit_userdefine_to_channel_and_start_stored_already(stored):
    """No schedule of the old start takes part in the overlap test, so only the create refuses."""
    beside = SHOW.but(channel=OTHER.channel, title="Beside")
    assert edit(stored.store(one_shot=[SHOW, beside]), SHOW, beside) == Answer(401)
    stored.expect_changes(one_shot=[beside, SHOW], user_defined=[WEEKLY, SHOW],
                          commands=commands_of(SHOW, beside))


def test_edit_userdefine_neither_can_be_stored(stored):
    stored.store(user_defined=[SHOW.record(channel_id="x")])
    assert edit(stored, SHOW, NEW_RULE, id="x") == Answer(101)
    stored.expect_changes(user_defined="null\n")


@pytest.mark.parametrize("taken", [0, 1, 2, 3])
def test_edit_userdefine_daemon_ends_one_shots_stay_without_record(stored, taken):
    answer = edit(stored, SHOW, NEW, under=daemon_fails(stored, taken))
    assert (answer.code, set(answer.log)) == (100, set(daemon_log(stored)))
    if taken > 0:
        stored.expect_changes(one_shot=[PASSED, MADE, NEW, SHOW], user_defined=[WEEKLY],
                              commands=commands_of(SHOW, NEW)[:taken])


def test_edit_userdefine_goes_on_after_delete_that_fails(stored):
    answer = edit(stored, SHOW, NEW_RULE, under=save_fails(stored, "one_shot"))
    assert answer == Answer(403, log=save_log(stored, "one_shot"))
    stored.expect_changes(repeat=[RULE, NEW_RULE], user_defined=[WEEKLY, NEW_RULE],
                          commands=["reload"])
    stored.store(**STORED | {"one_shot": [PASSED]})
    assert edit(stored, SHOW, NEW) == Answer(402)
    stored.expect_changes(one_shot=[PASSED, NEW], user_defined=[WEEKLY, NEW],
                          commands=["reload", "reload"])


def test_edit_userdefine_of_rule_not_saved(stored):
    log = f"schedule_recording:1325 Fail to save schedule json. Path is {stored.path('one_shot')}"
    under = save_fails(stored, "one_shot")
    assert edit(stored, WEEKLY, NEW_RULE, under=under) == Answer(100, log=[log])
    assert edit(stored, WEEKLY, NEW, under=save_fails(stored, "repeat")).code == 100
    stored.expect_changes(one_shot=[PASSED, SHOW, NEW], user_defined=[SHOW, WEEKLY, NEW],
                          commands=["reload", "reload"])
