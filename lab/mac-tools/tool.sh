#!/bin/sh
# Stands in for a Mac's tools on any POSIX system: links under the tools' names lead to it. Plays
# the tools on the Mac in the folder $MAC_TOOLS as far as the scripts of packaging/macos go, and
# writes down every call in $MAC_TOOLS/calls, one a line. $REAL_PATH leads to the real tools.
#
#     root/       the file system, for DESTDIR
#     sleep       the sleep setting, 0 or 1; absent until pmset is first told to change it
#     job         process id of the daemon that launchd has loaded; "-" once it has ended by itself
#     started     when that was, on the clock
#     disabled    launchd may not load the daemon
#     clock       seconds that scripts have slept
#     property    what the power service says of the sleep setting: it follows after $LATE readings
#     holder      process id of the client that has the hold
#     left        the call that many calls from now fails
#
# With HANGS set, the daemon ignores SIGTERM; with DEAF set, pmset changes nothing, and a reading of
# the property takes half a second, because scripts read it again and again until it follows.
#
# An executable is a text file; lines in it that begin with "# " are what codesign, otool and xattr
# say of it: "# Identifier=", "# TeamIdentifier=", "# Loads=", "# Marked=".
set -u

mac=$MAC_TOOLS
tool=${0##*/}
PATH=$REAL_PATH
echo "$tool $*" >>"$mac/calls"
if [ -e "$mac/left" ]; then
    read -r left <"$mac/left" && echo $((left - 1)) >"$mac/left"
    if [ "$left" -eq 1 ]; then
        echo "$tool: made to fail" >&2
        exit 1
    fi
fi

label=io.velmo.host.power
log=$mac/root/var/log/$label.log
record=$mac/root/var/db/velmo/power-daemon.json
sleep_setting() { cat "$mac/sleep" 2>/dev/null || echo 0; }
last() { for word in "$@"; do :; done && echo "$word"; }
fact() { while read -r line; do case $line in "# $1="*) echo "${line#*=}" ;; esac; done <"$2"; }
say() { echo "VelmoPowerDaemon: $1" >>"$log"; }

# Does what the daemon does at its start.
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
    "kill SIGTERM")
        echo - >"$mac/job"
        if [ -e "$mac/holder" ]; then end_hold stopping; fi
        ;;
    "kickstart system/$label") start_daemon ;;
    *) exit 64 ;;
    esac
}

# Ends the hold, for a reason.
end_hold() {
    rm -f "$mac/holder"
    echo 0 >"$mac/sleep"
    say "sleep enabled again ($1)"
}

play_pmset() {
    if [ -e "$mac/holder" ] && ! kill -0 "$(cat "$mac/holder")" 2>/dev/null; then end_hold "client gone"; fi
    case "$*" in
    -g)
        # A setting that was never changed has no line (show_system_power_settings in pmset.c).
        echo 'System-wide power settings:'
        [ ! -e "$mac/sleep" ] || printf ' SleepDisabled\t\t%s\n' "$(sleep_setting)"
        printf 'Currently in use:\n sleep 1\n'
        ;;
    "-a disablesleep "[01]) [ -n "${DEAF:-}" ] || echo "$3" >"$mac/sleep" ;;
    *) exit 64 ;;
    esac
}

# Tells whether an executable satisfies a requirement in one of the forms of
# packaging/macos/daemon.sh.
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
        sed -n -E 's/^# ((Team)?Identifier=)/\1/p' "$file" >&2
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

play_ioreg() {
    [ -z "${DEAF:-}" ] || sleep 0.5
    read -r says <"$mac/property"
    read -r readings <"$mac/readings"
    readings=$((readings + 1))
    if [ "$says" = "$(sleep_setting)" ]; then
        readings=0
    elif [ "$readings" -gt "${LATE:-0}" ]; then
        sleep_setting >"$mac/property"
        readings=0
    fi
    echo "$readings" >"$mac/readings"
    case $(cat "$mac/property") in 1) echo '    "SleepDisabled" = Yes' ;; 0) echo '    "SleepDisabled" = No' ;; esac
}

# velmo-power hold [-- COMMAND...]
play_client() {
    if [ "${2:-}" = -- ]; then
        shift 2
        echo 1 >"$mac/sleep"
        PATH=$mac/bin:$PATH "$@"
        end_hold released
        return
    fi
    # Whole, because other tools read it meanwhile, and first: once the setting has changed, a script
    # may end the hold.
    echo $$ >"$mac/holder.new" && mv "$mac/holder.new" "$mac/holder"
    echo 1 >"$mac/sleep"
    while :; do sleep 0.05; done
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
plutil) sed -n -E 's/.*"previous":(true|false).*/\1/p' "$(last "$@")" | grep . ;;
# Without owner and group: the user here is not root, and the group may not exist.
install)
    [ "$1" = -d ] && mode="-d -m $7" && shift || mode="-m $6"
    shift 6
    # shellcheck disable=SC2086
    exec install $mode "$@"
    ;;
cp | mkdir | mktemp | rm) exec "$tool" "$@" ;;
sw_vers) echo "ProductVersion: 14.5" ;;
sysctl) echo 0 ;;
pkgbuild) cp -R "$3" "$mac/unpacked" && touch "$(last "$@")" ;;
productbuild) touch "$(last "$@")" ;;
productsign) cp "$4" "$5" ;;
uname) echo Darwin ;;
uuidgen) echo 00000000-0000-0000-0000-000000000000 ;;
tail) printf 'VelmoPowerDaemon: one\nVelmoPowerDaemon: two\n' ;;
xcrun | security) ;;
ioreg) play_ioreg ;;
sudo) shift 2 && exec "$@" ;;
plays-VelmoPowerDaemon) echo "VelmoPowerDaemon: must run as root (launchd)" >&2 && exit 1 ;;
plays-velmo-power) play_client "$@" ;;
plays-knock) say "unsigned daemon: refusing every caller" && echo refused && exit 1 ;;
*) exit 64 ;;
esac
