"""list: merged, sorted, paged and made ready for display."""
from conftest import Answer

EMPTY = {"schedules": [], "start": 0, "total": 0}


def test_nothing_stored(appliance):
    assert appliance.request("list") == Answer(data=EMPTY)


def test_server(web_server):
    assert len(web_server.appliance.stored().one_shot) == 9
