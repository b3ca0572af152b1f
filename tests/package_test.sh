#!/usr/bin/env bash
# Makes the Debian package of a build and runs the examples of docs/api.md with the program in it:
# package_test.sh BUILD-FOLDER APPLIANCE-OF-THE-BUILD
set -euo pipefail
build=$1 appliance=$2
package="$build/package_test"

fail() {
    echo "package: $*" >&2
    exit 1
}

rm -rf "$package"
cpack --config "$build/CPackConfig.cmake" -B "$package" >"$build/package_test.log" ||
    fail "cpack fails: $(<"$build/package_test.log")"
deb=$(echo "$package"/schedule-recording_*.deb)
dpkg -x "$deb" "$package/root"
for file in copyright README.md docs/api.md; do
    [[ -s "$package/root/usr/share/doc/schedule-recording/$file" ]] || fail "$file is not in $deb"
done
# The libraries that the program loads are those of the packages it depends on.
depends=$(dpkg-deb --field "$deb" Depends)
for library in libc6 libjsoncpp liburiparser; do
    [[ "$depends" == *"$library"* ]] || fail "$deb depends on '$depends', not on $library"
done
program="$package/root/usr/lib/cgi-bin/schedule_recording"
exec "$(dirname "$0")/api_examples_test.py" "$program" "$appliance"
