"""The program behind a real web server: what docs/ shows, with its answers."""
import json
import os
import re
import subprocess
import sys

import pytest
from answers import observe
from conftest import SOURCE, program_environment, sample_server

PAGE, CLIENTS = ((SOURCE / "docs" / name).read_text(encoding="utf-8")
                 for name in ("api.md", "clients.md"))
EXAMPLE = re.compile(r"^```sh\n(.*?)^```\n\n^```json\n(.*?)^```$", re.DOTALL | re.MULTILINE)


def block(page, language):
    """The one block of that language in a page."""
    [text] = re.findall(rf"^```{language}\n(.*?)^```$", page, re.DOTALL | re.MULTILINE)
    return text


def output_of(code, server, *interpreter):
    """What a program of the documents prints if it asks this server."""
    run = subprocess.run(interpreter, input=code.replace("http://127.0.0.1:8080", server.url),
                         text=True, capture_output=True, env=os.environ | {"no_proxy": "*"})
    assert (run.returncode, run.stderr) == (0, ""), run.stdout
    return run.stdout


def test_over_http_examples_of_the_documentation(web_server):
    examples = EXAMPLE.findall(PAGE)
    assert len(examples) == PAGE.count("curl "), "an example of docs/api.md has no answer"
    for command, text in examples:
        shown, answer = json.loads(text), json.loads(output_of(command, web_server, "bash"))
        for document in shown, answer:
            observe({"method": re.search(r"method=(\w+)", command)[1]}, document)
        assert (command, answer.keys(), answer.get("error")) == (
            command, shown.keys(), shown.get("error"))


@pytest.mark.parametrize("language, interpreter", [
    ("bash", ["bash"]), ("python", [sys.executable]),
    ("javascript", ["node", "--no-warnings", "--input-type=module"])])
def test_client_lists_creates_edits_handles_an_error_and_deletes(web_server, language, interpreter):
    printed = output_of(block(CLIENTS, language), web_server, *interpreter)
    rest = printed
    for words in "Harbour", "wetter", "10:40", "Tea & scones", "overlap", "stays":
        _, found, rest = rest.partition(words)
        assert found, f"'{words}' is missing, or not where it belongs, in:\n{printed}"
    assert language != "python" or printed.count("12:30:00 Mittagswetter") == 6  # a rule's days
    assert b"Tea & scones" not in b"".join(web_server.appliance.snapshot().values())


def test_clock_reading_names_the_exact_start_beyond_a_change_of_the_clocks(build, tmp_path):
    # The client is in New York and the appliance in Berlin; it is winter, and the start in summer.
    berlin, new_york = (
        ["env", *map("=".join, program_environment("2026-11-24 20:23", zone, True).items())]
        for zone in ("Europe/Berlin", "America/New_York"))
    with sample_server(build, tmp_path, under=berlin) as server:
        printed = output_of(block(PAGE, "python"), server, *new_york, sys.executable)
    assert printed == block(PAGE, "text")
