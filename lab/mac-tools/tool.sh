#!/bin/sh
# Stands in for a Mac's tools on any POSIX system, under whose names it is linked to: it plays them
# on the Mac in the folder $MAC_TOOLS as far as the scripts of packaging/macos go, and writes down
# every call in $MAC_TOOLS/calls, one a line. The call whose number is $FAIL fails. $REAL_PATH leads to
# the real tools.
#
#     root/       the file system, for DESTDIR
#     sleep       the sleep setting, 0 or 1; "stuck" in its place: pmset does nothing, says 1
#     job         process id of the daemon that launchd has loaded; "-" once it has ended by itself
#     started     when that was, on the clock
#     disabled    launchd may not load the daemon
#     clock       seconds that scripts have slept
#
# With HANGS set, the daemon ignores SIGTERM.
#
# An executable is a text file; lines in it that begin with "# " are what codesign, otool and xattr
# say of it: "# Identifier=", "# TeamIdentifier=", "# Loads=", "# Marked=".
set -u

mac=$MAC_TOOLS
tool=${0##*/}
PATH=$REAL_PATH
echo "$tool $*" >>"$mac/calls"
if [ -n "${FAIL:-}" ] && [ "$(wc -l <"$mac/calls")" -eq "$FAIL" ]; then
    echo "$tool: made to fail" >&2
    exit 1
fi

label=io.velmo.host.power
log=$mac/root/var/log/$label.log
record=$mac/root/var/db/velmo/power-daemon.json
last() { for word in "$@"; do :; done && echo "$word"; }
fact() { sed -n "s/^# $1=//p" "$2"; }
say() { echo "VelmoPowerDaemon: $1" >>"$log"; }

# What the daemon does at its start.
start_daemon() {
    echo $(($(cat "$mac/job" 2>/dev/null || echo 100) + 1)) >"$mac/job"
    cat "$mac/clock" >"$mac/started"
    [ ! -e "$record" ] && return
    say "a hold was left behind; sleep back"
    if grep -q '"previous":false' "$record"; then echo 0 >"$mac/sleep"; fi
    rm "$record"
    say "sleep enabled again (recovered)"
}

launchctl_print() {
    [ -e "$mac/job" ] || exit 113
    read -r now <"$mac/clock"
    read -r started <"$mac/started"
    read -r process <"$mac/job"
    if [ $((now - started)) -gt 60 ] && [ "$process" != - ]; then process=- && echo - >"$mac/job"; fi
    if [ "$process" = - ]; then
        printf '\tstate = not running\n\tlast exit code = 0\n'
    else
        printf '\tstate = running\n\tpid = %s\n' "$process"
    fi
}

play_launchctl() {
    case "$1 ${2:-}" in
    "bootstrap system")
        [ ! -e "$mac/job" ] && [ ! -e "$mac/disabled" ] && [ -e "$3" ] || exit 5
        start_daemon
        ;;
    "bootout system/$label") [ -e "$mac/job" ] && { [ -n "${HANGS:-}" ] || rm "$mac/job"; } ;;
    "print system/$label") launchctl_print ;;
    "print-disabled system")
        if [ -e "$mac/disabled" ]; then printf '\t"%s" => disabled\n' "$label"; fi
        ;;
    "enable system/$label") rm -f "$mac/disabled" ;;
    "disable system/$label") touch "$mac/disabled" ;;
    "kill SIGKILL") start_daemon ;;
    "kill SIGTERM") echo - >"$mac/job" ;;
    *) exit 64 ;;
    esac
}

play_pmset() {
    case "$*" in
    -g)
        case $(cat "$mac/sleep") in 0) set -- 0 ;; *) set -- 1 ;; esac
        printf 'System-wide power settings:\n SleepDisabled\t\t%s\nCurrently in use:\n sleep 1\n' "$1"
        ;;
    "-a disablesleep "[01]) [ "$(cat "$mac/sleep")" = stuck ] || echo "$3" >"$mac/sleep" ;;
    *) exit 64 ;;
    esac
}

# One of the forms that the requirements of packaging/macos/daemon.sh have.
satisfies() {
    identifier=$(fact Identifier "$1")
    team=$(fact TeamIdentifier "$1")
    case $2 in
    *"leaf[subject.OU] = \"$team\" and"*"identifier \"$identifier\""*) return 0 ;;
    *) return 3 ;;
    esac
}

play_codesign() {
    file=$(last "$@")
    case "$*" in
    --display*)
        [ -n "$(fact Identifier "$file")" ] || exit 1
        sed -n 's/^# \(Identifier=\|TeamIdentifier=\)/\1/p' "$file" >&2
        ;;
    "--verify -R "*) satisfies "$file" "${3#=}" ;;
    --verify*) [ -n "$(fact Identifier "$file")" ] ;;
    *" --sign "*)
        sed -i.unsigned -e '/^# Identifier=/d' -e '/^# TeamIdentifier=/d' "$file"
        rm "$file.unsigned"
        team="not set"
        case $6 in *"("*) team=${6##*\(} && team=${team%)} ;; esac
        printf '# Identifier=%s\n# TeamIdentifier=%s\n' "$8" "$team" >>"$file"
        ;;
    *) exit 64 ;;
    esac
}

case $tool in
launchctl | pmset | codesign) "play_$tool" "$@" ;;
id) echo "${STANDS_FOR_UID:-0}" ;;
sleep) read -r now <"$mac/clock" && echo $((now + $1)) >"$mac/clock" ;;
otool)
    echo "$2:"
    printf '\t/usr/lib/libSystem.B.dylib (compatibility version 1.0.0)\n'
    loads=$(fact Loads "$2")
    if [ -n "$loads" ]; then printf '\t%s\n' "$loads"; fi
    ;;
xattr)
    case $1 in
    -d) sed -i.marked '/^# Marked=/d' "$3" && rm "$3.marked" ;;
    *) if [ -n "$(fact Marked "$1")" ]; then echo com.apple.quarantine; fi ;;
    esac
    ;;
plutil) sed -n 's/.*"previous":\(true\|false\).*/\1/p' "$(last "$@")" | grep . ;;
# Nobody here is root, and there may be no such group.
install)
    [ "$1" = -d ] && mode="-d -m $7" && shift || mode="-m $6"
    shift 6
    # shellcheck disable=SC2086
    exec install $mode "$@"
    ;;
cp | mkdir | mktemp | rm) exec "$tool" "$@" ;;
sw_vers) echo "ProductVersion: 14.5" ;;
sysctl) echo 0 ;;
pkgbuild | productbuild) echo "$*" >"$(last "$@")" ;;
xcrun | newsyslog | security) ;;
*) exit 64 ;;
esac
