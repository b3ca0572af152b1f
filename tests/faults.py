"""Commands that run the program with a system call that fails, by strace."""


def failing(calls, *paths, at="1+", error="EIO"):
    """Fails calls of a name, or of several with commas; `at` is strace's when: 2, or 2+ from there
    on. With paths only calls that name one first, or use a descriptor of one, count."""
    only = [word for path in paths for word in ("-P", str(path))]
    return ["strace", "-f", "-qq", "-o", "/dev/null", *only,
            "-e", f"inject={calls}:error={error}:when={at}"]


def unsaved(appliance, name):
    """Fails every save of a file: its temporary file does not get the file's name."""
    path = appliance.path(name)
    return failing("rename,renameat,renameat2", path, f"{path}.tmp")


def daemon_fails(appliance, after):
    """The tuner daemon takes that many commands and no more."""
    return failing("openat", appliance.path("commands"), at=f"{after + 1}+")
