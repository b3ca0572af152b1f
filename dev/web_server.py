"""Runs lighttpd on the loopback interface, for the tests, script/bench and script/load."""
import contextlib
import os
import socket
import subprocess
import time
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent


@contextlib.contextmanager
def lighttpd(program, logins, log, configuration="dev/lighttpd.conf", **environment):
    """Serves a program until the block ends. Gives the server's process and its port, once it
    listens. The file `log` gets what the server and the program write to standard error; see the
    configuration for its environment."""
    with socket.create_server(("127.0.0.1", 0)) as listener:
        port = listener.getsockname()[1]
    environment = os.environ | {
        "PATH": f"{os.environ['PATH']}:/usr/sbin", "WEB_PORT": str(port),
        "WEB_PROGRAM": str(program), "WEB_LOGINS": str(logins), "WEB_PAGE": str(SOURCE / "web"),
        "WEB_ACCESS_LOG": "/dev/null"} | environment
    with open(log, "wb") as output:
        server = subprocess.Popen(
            ["setpriv", "--pdeathsig", "TERM", "lighttpd", "-D", "-f", SOURCE / configuration],
            cwd=SOURCE, stderr=output, env=environment)
    try:
        while socket.socket().connect_ex(("127.0.0.1", port)) != 0:
            if server.poll() is not None:
                raise RuntimeError(f"lighttpd has stopped: {Path(log).read_text()}")
            time.sleep(0.02)
        yield server, port
    finally:
        server.terminate()
        server.wait()
