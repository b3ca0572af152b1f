"""Runs the programs of docs/clients.md and the one of docs/api.md, as they stand there."""
import contextlib
import io
import os
import re
import subprocess
import sys
import time
import types
from pathlib import Path

import pytest
import requests

import api_description

DOCS = Path(__file__).parent.parent / "docs"
INTERPRETERS = {"bash": ["bash"], "python": [sys.executable],
                "javascript": ["node", "--input-type=module"]}


def program(page, language):
    """The one block of that language in a page."""
    [block] = re.findall(rf"^```{language}\n(.*?)^```$", (DOCS / page).read_text(encoding="utf-8"),
                         re.DOTALL | re.MULTILINE)
    return block


def schedules(site):
    answer = requests.get(f"{site}/webapi/schedule_recording?method=list&tuner=1",
                          auth=("viewer", "viewer")).json()
    api_description.observe("list", {"tuner": "1"}, answer)
    return answer["data"]["schedules"]


@pytest.mark.parametrize("language", INTERPRETERS)
def test_client_lists_creates_edits_handles_an_error_and_deletes(web_server, language):
    before = schedules(web_server)
    code = program("clients.md", language).replace("http://127.0.0.1:8080", web_server)
    run = subprocess.run(INTERPRETERS[language], input=code, text=True, capture_output=True,
                         env={**os.environ, "no_proxy": "*"})
    assert (run.returncode, run.stderr) == (0, "")
    expected = ["The Quiet Harbour", "Mittagswetter", "10:40", "Tea & scones", "overlap", "stays"]
    assert re.search(".*".join(expected), run.stdout, re.DOTALL), run.stdout
    assert schedules(web_server) == before


def test_clock_reading_gives_the_exact_start_beyond_a_change_of_the_clocks(appliance, monkeypatch):
    """The example of docs/api.md, on an appliance in Berlin in winter."""
    def post(_address, auth, data):
        method, parameters = data["method"], {**data}
        del parameters["method"]
        answer = appliance.request(method, user=auth[0], now="2026-11-24 21:23:00",
                                   zone="Europe/Berlin", **parameters)
        return types.SimpleNamespace(json=lambda: {"success": answer.code is None,
                                                   "data": answer.data})

    monkeypatch.setattr(requests, "post", post)
    monkeypatch.setattr(time, "time", lambda: 1795551780)  # the same moment
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed):
        exec(program("api.md", "python"), {})
    assert printed.getvalue() == program("api.md", "text").replace("}", ", 'data': None}")
