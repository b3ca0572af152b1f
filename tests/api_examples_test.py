#!/usr/bin/env python3
"""Runs the examples of docs/api.md against a fresh appliance and compares what comes back.

Usage: api_examples_test.py PROGRAM APPLIANCE    APPLIANCE is the program's, and is laid out anew
"""
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import time

SOURCE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
EXAMPLE = re.compile(r"^```sh\n(.*?)^```\n\n^```json\n(.*?)^```$", re.DOTALL | re.MULTILINE)


def shape(value, key=""):
    """What must not differ: members, types and outcome. Texts, times and lengths may."""
    if isinstance(value, dict):
        return {name: shape(member, name) for name, member in value.items()}
    if isinstance(value, list):
        return sorted({json.dumps(shape(element), sort_keys=True) for element in value})
    return value if key in ("success", "code") else type(value).__name__


def serve(program, appliance):
    """Starts the web server on a port that was free a moment ago; the process and the port."""
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        port = probe.getsockname()[1]
    web = {"WEB_PORT": str(port), "WEB_PROGRAM": program, "WEB_LOGINS": appliance + "/etc/logins",
           "WEB_ACCESS_LOG": "/dev/null", "PATH": os.environ["PATH"] + ":/usr/sbin"}
    server = subprocess.Popen(["setpriv", "--pdeathsig", "TERM", "lighttpd", "-D", "-f",
                               SOURCE + "/dev/lighttpd.conf"], env={**os.environ, **web})
    while server.poll() is None:
        with socket.socket() as client:
            if client.connect_ex(("127.0.0.1", port)) == 0:
                return server, port
        time.sleep(0.05)
    sys.exit("lighttpd has ended")


def main(program, appliance):
    shutil.rmtree(appliance, ignore_errors=True)
    subprocess.run([SOURCE + "/dev/lay-out", appliance], check=True)
    with open(SOURCE + "/docs/api.md", encoding="utf-8") as page:
        text = page.read()
    examples = EXAMPLE.findall(text)
    failed = len(examples) != text.count("curl ")  # each has an answer
    server, port = serve(program, appliance)
    for command, answer in examples:
        command = command.replace("127.0.0.1:8080", f"127.0.0.1:{port}")
        output = subprocess.run(["bash", "-c", command], stdout=subprocess.PIPE, check=True).stdout
        if shape(json.loads(output)) != shape(json.loads(answer)):
            failed = True
            print(f"{command}answers {output.decode()}instead of {answer}")
    server.terminate()
    server.wait()
    print(len(examples), "examples")
    return failed


sys.exit(main(*sys.argv[1:]))
