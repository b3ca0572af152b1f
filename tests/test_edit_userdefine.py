"""edit_userdefine: what is refused, what is replaced, what is put back."""
import pytest
from conftest import Answer, case
from faults import daemon_fails, failing, not_saved, not_told, unsaved
from schedules import OTHER, SHOW, WEEKLY, Schedule

NEW_SHOW = Schedule("2025-07-04", "21:00", "02:00", "New", "7@474")
NEW_RULE = Schedule("2025-07-04", "20:30", "00:45", "Rule", "7@474", "0,0,0,0,0,1,0", "2025-08-01")
LATER = Schedule("2025-07-01", "20:30", "01:00", "Later", "7@474", "0,0,1,0,0,0,1", "2025-08-01")
RENAMED = SHOW.but(title="Renamed")
STOP = f"stop 0 {SHOW.start} 474 7"
# The one-shot schedule that the rule made last has its service as text.
MADE = WEEKLY.but(days=None).stored(service_id="9")
DURING = WEEKLY.but(days=None, end_date="1", title="During")


def edit(appliance, old, new, user="admin", under=(), **changes):
    """Edits a stored schedule into a new one."""
    return appliance.request("edit_userdefine", user, under=under, **{
        "orig_start_date": old.date, "orig_start_time": old.time, **new.form(), **changes})


def commands_of(new, *commands):
    """Before anything changes, the daemon is asked to reload for a new one-shot schedule."""
    return [*([] if new.is_repeat else ["reload"]), *commands]


@pytest.fixture
def shows(appliance):
    """An appliance with two one-shot schedules, the first one user-defined."""
    return appliance.store(one_shot=[SHOW, OTHER], user_defined=[SHOW])


@pytest.fixture
def rule(appliance):
    """An appliance with a user-defined rule, the one-shot schedule that it made, and another."""
    return appliance.store(one_shot=[MADE, OTHER], user_defined=[WEEKLY],
                           repeat=[WEEKLY.stored(lastcreatetime=WEEKLY.start)])


@pytest.mark.parametrize("changes", [
    {"is_repeat": None}, {"start_date": ""}, {"start_time": "2030"}, {"duration": "00:00"},
    {"duration": "45"}, {"orig_start_date": None}, {"orig_start_time": "20:16"},
    {"isweekly": "x"}, {"end_date": None}, {"weekdaystatus": None}, {"tuner": None},
    {"tuner": 1}], ids=str)
def test_edit_userdefine_bad_parameter(shows, changes):
    assert edit(shows, SHOW, NEW_RULE, **changes) == Answer(101)


@pytest.mark.parametrize("new, repeat", [
    case("one-shot", OTHER, []), case("rule", WEEKLY.but(days=None), [WEEKLY]),
    case("later day of the new rule", LATER, [])])
def test_edit_userdefine_overlap(shows, new, repeat):
    assert edit(shows.store(repeat=repeat), SHOW, new) == Answer(405)


@pytest.mark.parametrize("one_shot, new", [
    case("the made one is recording", [MADE | {"status": 2}], DURING),
    case("another channel", [MADE | {"frequency": 501}], DURING),
    case("a later day", [OTHER], LATER)])
def test_edit_userdefine_of_rule_overlap(rule, one_shot, new):
    assert edit(rule.store(one_shot=one_shot), WEEKLY, new) == Answer(405)


@pytest.mark.parametrize("new, files", [
    case("one-shot", NEW_SHOW, {"one_shot": [OTHER, NEW_SHOW]}),
    case("rule", NEW_RULE, {"one_shot": [OTHER], "repeat": [NEW_RULE]}),
    case("title only", RENAMED, {"one_shot": [OTHER, RENAMED]})])
def test_edit_userdefine_of_one_shot(shows, new, files):
    assert edit(shows, SHOW, new) == Answer()
    shows.expect_changes(**files, user_defined=[new],
                         commands=commands_of(new, STOP, "reload", "reload"))


@pytest.mark.parametrize("new", [
    case("one-shot", NEW_SHOW), case("its own time", DURING), case("rule", NEW_RULE),
    case("rule that has ended", LATER.but(end_date="2025-06-30")),
    case("end of time", NEW_RULE.but(date="2038-01-15", end_date="2999-01-01"))])
def test_edit_userdefine_of_rule(rule, new):
    files = ({"one_shot": [OTHER], "repeat": [new]} if new.is_repeat else
             {"one_shot": [OTHER, new], "repeat": []})
    assert edit(rule, WEEKLY, new) == Answer()
    rule.expect_changes(**files, user_defined=[new], commands=commands_of(new, "reload"))


def test_edit_userdefine_of_rule_no_one_shot_left(rule):
    moved = WEEKLY.but(time="18:10")
    assert edit(rule.store(one_shot=[MADE]), WEEKLY, moved) == Answer()
    rule.expect_changes(one_shot="null\n", repeat=[moved], user_defined=[moved],
                        commands=["reload"])


@pytest.mark.parametrize("files", [
    case("no rule in the store", {"repeat": []}),
    case("channel without frequency", {"user_defined": [WEEKLY.record(channel_id="9")]})])
def test_edit_userdefine_of_rule_keeps_what_it_did_not_make(rule, files):
    assert edit(rule.store(**files), WEEKLY, NEW_RULE) == Answer()
    rule.expect_changes(repeat=[NEW_RULE], user_defined=[NEW_RULE], commands=["reload"])


@pytest.mark.parametrize("new, changes", [
    case("no channel name", NEW_SHOW, {"channel_name": None}),
    case("no id", NEW_SHOW, {"id": ""}), case("no such channel", NEW_SHOW, {"id": "x@1"}),
    case("weekday not selected", NEW_RULE, {"weekdaystatus": "1,0,0,0,0,0,0"})])
def test_edit_userdefine_puts_old_schedule_back(shows, new, changes):
    assert edit(shows, SHOW, new, **changes) == Answer(101)
    shows.expect_changes(one_shot=[OTHER, SHOW], user_defined=[SHOW],
                         commands=commands_of(new, STOP, "reload", "reload"))
    shows.store(one_shot=[MADE, OTHER], user_defined=[WEEKLY],
                repeat=[WEEKLY.stored(lastcreatetime=WEEKLY.start)])
    assert edit(shows, WEEKLY, new, **changes) == Answer(101)
    shows.expect_changes(one_shot=[OTHER], repeat=[WEEKLY], user_defined=[WEEKLY],
                         commands=commands_of(new, "reload"))


def test_edit_userdefine_to_channel_and_start_stored_already(appliance):
    beside = SHOW.but(channel=OTHER.channel, title="Beside")
    appliance.store(one_shot=[beside, SHOW], user_defined=[SHOW])
    assert edit(appliance, SHOW, SHOW, id=OTHER.channel) == Answer(401)
    appliance.expect_changes(one_shot=[beside, SHOW], user_defined=[SHOW],
                             commands=["reload", STOP, "reload", "reload"])


def test_edit_userdefine_neither_can_be_stored(shows):
    shows.store(user_defined=[SHOW.record(channel_id="x")])
    assert edit(shows, SHOW, NEW_RULE, id="x") == Answer(101)
    shows.expect_changes(user_defined="null\n")


@pytest.mark.parametrize("files", [{"one_shot": "["}, {"repeat": "["}, {"repeat": "{}"}], ids=str)
def test_edit_userdefine_of_broken_store(shows, files):
    for new in NEW_SHOW, NEW_RULE:
        assert edit(shows.store(**files), SHOW, new) == Answer(100)


@pytest.mark.parametrize("user, new, log", [
    ("ghost", NEW_SHOW, "661 Failed to KALDUserGet function."),
    ("nouid", NEW_SHOW, "667 uid is error."),
    ("ghost", NEW_RULE, "856 Failed to KALDUserGet function."),
    ("nouid", NEW_RULE, "862 uid is error.")], ids=str)
def test_edit_userdefine_without_user_or_folder(shows, user, new, log):
    answer = Answer(100, log=[f"schedule_recording:{log}"])
    assert edit(shows, SHOW, new, user) == answer
    shows.store(folders=[])
    assert edit(shows, SHOW, new, user) == (answer if new.is_repeat else Answer(406))
    assert edit(shows, SHOW, new) == Answer(406)


@pytest.mark.parametrize("after", [0, 1, 2, 3])
def test_edit_userdefine_daemon_ends_one_shots_stay_without_record(shows, after):
    answer = edit(shows, SHOW, NEW_SHOW, under=daemon_fails(shows, after))
    assert (answer.code, set(answer.log)) == (100, set(not_told(shows)))
    shows.expect_changes(**{} if after == 0 else {
        "one_shot": [OTHER, NEW_SHOW, SHOW], "user_defined": "null\n",
        "commands": ["reload", STOP, "reload"][:after]})


def test_edit_userdefine_daemon_ends_rule_stays_with_record(shows):
    assert edit(shows, SHOW, NEW_RULE, under=daemon_fails(shows, after=2)) == Answer(
        100, log=not_told(shows))
    shows.expect_changes(one_shot=[OTHER], repeat=[NEW_RULE], user_defined=[NEW_RULE],
                         commands=[STOP, "reload"])


def test_edit_userdefine_goes_on_after_delete_that_fails(shows):
    under = failing("openat", shows.path("commands"), at=2)  # the stop of the recording
    assert edit(shows, SHOW, NEW_SHOW, under=under) == Answer(100, log=not_told(shows))
    after = {"one_shot": [OTHER, NEW_SHOW], "user_defined": [NEW_SHOW]}
    shows.expect_changes(**after, commands=["reload", "reload"])
    shows.store(one_shot=[OTHER], user_defined=[SHOW])
    assert edit(shows, SHOW, NEW_SHOW) == Answer(402)
    shows.expect_changes(**after, commands=["reload", "reload"])


@pytest.mark.parametrize("name, after", [
    ("repeat", {"one_shot": [OTHER, SHOW], "user_defined": [SHOW],
                "commands": [STOP, "reload", "reload"]}),
    ("one_shot", {"repeat": [NEW_RULE], "user_defined": [NEW_RULE], "commands": ["reload"]})])
def test_edit_userdefine_to_rule_not_saved(shows, name, after):
    answer = edit(shows, SHOW, NEW_RULE, under=unsaved(shows, name))
    assert answer == Answer(403, log=not_saved(shows, name))
    shows.expect_changes(**after)


def test_edit_userdefine_of_rule_not_saved(rule):
    log = f"schedule_recording:1325 Fail to save schedule json. Path is {rule.path('one_shot')}"
    assert edit(rule, WEEKLY, NEW_RULE, under=unsaved(rule, "one_shot")) == Answer(100, log=[log])
    log = ("schedule_recording:1051 Fail to save repeat schedule json. Path is "
           f"{rule.path('repeat')}")
    assert edit(rule, WEEKLY, NEW_SHOW, under=unsaved(rule, "repeat")) == Answer(100, log=[log])
    rule.expect_changes(one_shot=[OTHER, NEW_SHOW], user_defined=[WEEKLY, NEW_SHOW],
                        commands=["reload", "reload"])


def test_edit_userdefine_restores_the_start_under_another_daylight_saving(appliance):
    july = Schedule("2025-07-15", "20:15", "01:00", "Show", "7@474")
    appliance.store(one_shot=[july.stored(start_time=1752606900)],  # 20:15 by the clock of winter
                    user_defined=[july.record(start_time=1752606900)])
    answer = appliance.request("edit_userdefine", zone="Europe/Berlin", orig_start_date=july.date,
                               orig_start_time="21:15", **july.form() | {"channel_name": ""})
    assert answer == Answer(101)
    appliance.expect_changes(
        one_shot=[july.stored(start_time=1752606900)], commands=[
            "reload", "stop 0 1752606900 474 7", "reload", "reload"],
        user_defined=[july.record(start_time=1752606900)])
