"""Commands that run the program with a system call that fails, by strace."""


def failing(calls, *paths, at="1+", fault="error=EIO"):
    """Injects a fault into calls of a name, or of several with commas; `at` is strace's when: 2, or
    2+ from there on. With paths only calls that name one first, or use a descriptor of one, count.
    """
    only = [word for path in paths for word in ("-P", str(path))] or ["--seccomp-bpf"]
    return ["strace", "-f", "-qq", "-o", "/dev/null", *only,
            "-e", f"inject={calls}:{fault}:when={at}"]


def save_log(appliance, name, reason="Operation not permitted"):
    """The log of a store under save_fails()."""
    return [f"cannot save {appliance.path(name)}: {reason}"]


def daemon_log(appliance):
    """The log of a daemon under daemon_fails()."""
    return [f"cannot tell the tuner daemon by {appliance.path('commands')}: Input/output error"]


def save_fails(appliance, name):
    """Fails every save of a file: its temporary file cannot be created."""
    return failing("openat", f"{appliance.path(name)}.tmp", fault="error=EPERM")


def daemon_fails(appliance, after):
    """The tuner daemon takes that many commands and no more."""
    return failing("openat", appliance.path("commands"), at=f"{after + 1}+")


def calls_of(trace, path):
    """The calls of a strace -y from the first that names the path: each name, which call of that
    name it is, and the whole line."""
    counts, calls = {}, []
    for line in trace.splitlines():
        name = line.split(maxsplit=1)[1].partition("(")[0]
        if name.isidentifier():
            counts[name] = counts.get(name, 0) + 1
            if calls or path in line:
                calls.append((name, counts[name], line))
    return calls
