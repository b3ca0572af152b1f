"""Runs the programs of docs/clients.md, and the one of docs/api.md, as they stand there."""
import json
import os
import re
import subprocess
import sys

import pytest
from conftest import SOURCE, Appliance, WebServer

INTERPRETERS = {"bash": ["bash"], "python": [sys.executable],
                "javascript": ["node", "--no-warnings", "--input-type=module"]}


def block(page, language):
    """The one block of that language in a page."""
    text = (SOURCE / "docs" / page).read_text(encoding="utf-8")
    [code] = re.findall(rf"^```{language}\n(.*?)^```$", text, re.DOTALL | re.MULTILINE)
    return code


def output_of(server, page, language, interpreter):
    """What a program of a page prints if it asks that server."""
    code = block(page, language).replace("http://127.0.0.1:8080", server.url)
    run = subprocess.run(interpreter, input=code, text=True, capture_output=True,
                         env=os.environ | {"no_proxy": "*"})
    assert (run.returncode, run.stderr) == (0, ""), run.stdout
    return run.stdout


def schedules(server):
    files = server.appliance.snapshot()
    return [json.loads(files[name]) for name in ("one_shot_of_1", "repeat_of_1", "user_defined")]


@pytest.mark.parametrize("language", INTERPRETERS)
def test_client_lists_creates_edits_handles_an_error_and_deletes(web_server, language):
    before = schedules(web_server)
    printed = output_of(web_server, "clients.md", language, INTERPRETERS[language])
    assert re.search("(?s)Harbour.*wetter.*10:40.*Tea & scones.*overlap.*stays", printed), printed
    assert schedules(web_server) == before


def test_clock_reading_names_the_exact_start_beyond_a_change_of_the_clocks(build, tmp_path):
    # The client is in New York and the appliance in Berlin; it is winter, and the start in summer.
    program = tmp_path / "schedule_recording"
    program.write_text("#!/bin/sh\nexec env TZ=Europe/Berlin ASAN_OPTIONS=verify_asan_link_order=0 "
                       f"faketime '2026-11-24 21:23' '{build.program}'\n")
    program.chmod(0o700)
    client = ["env", "TZ=America/New_York", "faketime", "2026-11-24 15:23", sys.executable]
    with WebServer(program, Appliance(build), tmp_path) as server:
        printed = output_of(server, "api.md", "python", client)
    assert printed == block("api.md", "text")
