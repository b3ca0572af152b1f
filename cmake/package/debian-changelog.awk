# Turns CHANGELOG.md into the form of a Debian changelog: awk -v maintainer=... -f this CHANGELOG.md
function finish() {
    if (version != "") {
        command = "LC_ALL=C date --utc --rfc-email --date=" day
        command | getline stamp
        close(command)
        printf "\n -- %s  %s\n", maintainer, stamp
    }
}

/^## \[[0-9.]+\] - [0-9-]+$/ {
    finish()
    if (version != "")
        print ""
    version = substr($2, 2, length($2) - 2)
    day = $4
    printf "schedule-recording (%s) unstable; urgency=medium\n", version
    next
}
version == "" { next }
/^### / { printf "\n  [ %s ]\n", substr($0, 5) }
/^- / { print "  * " substr($0, 3) }
/^  / { print "  " $0 }
END { finish() }
