#!/usr/bin/env python3
"""Asks the program over a web server what docs/api.md shows, and what the page does not show."""
# Usage: over_http.py PROGRAM|BUILD APPLIANCE    APPLIANCE is the program's, and is laid out anew
# Of a build's folder it makes the Debian package, and asks the program in that.
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import time
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent
EXAMPLE = re.compile(r"^```sh\n(.*?)^```\n\n^```json\n(.*?)^```$", re.DOTALL | re.MULTILINE)
END = "\n application/json; charset=utf-8 200"
DONE = '{"success":true}' + END
FAILED = '{"error":{"code":%d},"success":false}' + END
PAGE = '{"data":{"schedules":[{"channel_name":"%s...}],"start":%d,"total":%d},"success":true}' + END

# What curl is given, with /webapi for the address that asks for a login and /open for the one that
# does not; the body, type and status of the answer, with "..." for anything.
ROWS = [
    # both kinds, the other tuner, a form, and a form with a query string, which counts first
    ("-u viewer:viewer /webapi?method=list", PAGE % ('Kanal Ahorn","description":"Fernseh', 0, 12)),
    ("-u admin:admin /webapi?method=LIST&tuner=1&start=3&limit=9", PAGE % ("Channel Cedar", 3, 4)),
    ("-u viewer:viewer /webapi -d method=list&limit=1", PAGE % ("Kanal Ahorn", 0, 12)),
    ("-u admin:admin /webapi?method=list&start=3 -d start=0&tuner=1", PAGE % ("Channel C", 3, 4)),
    ("-u viewer:viewer /webapi -d method=create&tuner=1&id=9@8&start_time=2000000000", DONE),
    ("-u viewer:viewer /webapi?method=list&tuner=1&start=4&limit=1",
     PAGE % ('","description":"","duration":1800,"id":"9@8', 4, 5)),
    ("-u viewer:viewer /webapi -d method=delete&tuner=1&id=2000000000&channel_id=9@8", DONE),
    ("-u viewer:viewer /webapi?method=nonsense", DONE),
    ("-u viewer:admin /webapi?method=list", "... 401"),
    ("-u nobody: /webapi?method=list", "... 401"),
    # no header makes a login: neither one of that name, nor one for an address that asks for none
    ("-H Remote-User:admin /webapi?method=list", "... 401"),
    ("-H Remote-User:admin -u guest:guest /webapi?method=list", FAILED % 105),
    ("-H Remote-User:admin /open?method=list", FAILED % 106),
    ("-u admin:admin /open?method=list", FAILED % 106),
    ("-u admin:admin /webapi/../schedule?method=list", "... 404"),
]


def output_of(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout


def packed_program(build):
    """The program in the build's package, which has its documents and names its libraries."""
    package = build / "over_http_package"
    shutil.rmtree(package, ignore_errors=True)
    output_of("cpack", "--config", build / "CPackConfig.cmake", "-B", package)
    [deb] = package.glob("schedule-recording_*.deb")
    output_of("dpkg", "-x", deb, package / "root")
    for file in ("copyright", "README.md", "docs/api.md"):
        assert (package / "root/usr/share/doc/schedule-recording" / file).read_bytes(), file
    depends = output_of("dpkg-deb", "--field", deb, "Depends")
    assert all(library in depends for library in ("libc6", "libjsoncpp", "liburiparser")), depends
    return package / "root/usr/lib/cgi-bin/schedule_recording"


def serve(program, appliance):
    """A web server that ends with this process at the latest, and its port, free a moment ago."""
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        port = probe.getsockname()[1]
    os.environ.update(WEB_PORT=str(port), WEB_PROGRAM=str(program), WEB_ACCESS_LOG="/dev/null",
                      WEB_PAGE=f"{SOURCE}/web", WEB_LOGINS=f"{appliance}/etc/logins", PATH=os.environ["PATH"] + ":/usr/sbin")
    server = subprocess.Popen(["setpriv", "--pdeathsig", "TERM", "lighttpd", "-D", "-f",
                               SOURCE / "dev/lighttpd.conf"])
    while socket.socket().connect_ex(("127.0.0.1", port)) != 0:
        assert server.poll() is None, "lighttpd has ended"
        time.sleep(0.05)
    return server, port


def shape(value, key=""):
    """What must not differ: members, types and outcome. Texts, times and lengths may."""
    if isinstance(value, dict):
        return {name: shape(member, name) for name, member in value.items()}
    if isinstance(value, list):
        return sorted({json.dumps(shape(element), sort_keys=True) for element in value})
    return value if key in ("success", "code") else type(value).__name__


def differences(site):
    """What is answered otherwise than it should be."""
    for request, expected in ROWS:
        command = re.sub("/(webapi|open)", rf"{site}/\1/schedule_recording", request).split()
        answer = output_of("curl", "-s", "-w", " %{content_type} %{http_code}", *command)
        if not re.fullmatch(".*".join(map(re.escape, expected.split("..."))), answer, re.DOTALL):
            yield f"{request} answers {answer} instead of {expected}"
    page = (SOURCE / "docs/api.md").read_text(encoding="utf-8")
    examples = EXAMPLE.findall(page)
    assert len(examples) == page.count("curl "), "an example of docs/api.md has no answer"
    for command, example in examples:
        answer = output_of("bash", "-c", command.replace("http://127.0.0.1:8080", site))
        if shape(json.loads(answer)) != shape(json.loads(example)):
            yield f"{command}answers {answer}instead of {example}"


def main(what, appliance):
    program = packed_program(Path(what)) if os.path.isdir(what) else what
    shutil.rmtree(appliance, ignore_errors=True)
    output_of(SOURCE / "dev/make-sample-appliance", appliance)
    os.environ["no_proxy"] = "*"
    server, port = serve(program, appliance)
    failed = 0
    for failed, difference in enumerate(differences(f"http://127.0.0.1:{port}"), 1):
        print(difference)
    server.terminate()
    server.wait()
    sys.exit(failed)


main(*sys.argv[1:])
