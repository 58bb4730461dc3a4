# What the scripts of this folder share: where everything lies on a Mac, which programs may talk to
# each other, and how the daemon is stopped. DESTDIR is put before every path, as usual.

label=io.velmo.host.power
daemon=${DESTDIR:-}/Library/PrivilegedHelperTools/VelmoPowerDaemon
client=${DESTDIR:-}/usr/local/bin/velmo-power
sessions=${DESTDIR:-}/usr/local/bin/velmo-session
phone=${DESTDIR:-}/usr/local/bin/velmo-phone
plist=${DESTDIR:-}/Library/LaunchDaemons/$label.plist
log_rule=${DESTDIR:-}/etc/newsyslog.d/$label.conf
log=${DESTDIR:-}/var/log/$label.log
share=${DESTDIR:-}/usr/local/share
record_folder=${DESTDIR:-}/var/db/velmo
record=$record_folder/power-daemon.json

refuse() {
    echo "$(basename "$0"): $1" >&2
    exit 1
}

# each_file COMMAND: calls the command with the name, place and mode of every file that is
# installed.
each_file() {
    each_executable "$1"
    "$1" "$label.plist" "$plist" 644
    "$1" "$label.conf" "$log_rule" 644
    each_page "$1"
}

# In a script with a folder of executables, the one that not every build has is left out if it is not there.
each_executable() {
    "$1" VelmoPowerDaemon "$daemon" 755
    "$1" velmo-power "$client" 755
    "$1" velmo-session "$sessions" 755
    if [ -z "${folder:-}" ] || [ -e "$folder/velmo-phone" ]; then "$1" velmo-phone "$phone" 755; fi
}

# The same for the manual pages and the completions, which a cross build does not make.
each_page() {
    for program in velmo-power velmo-session velmo-phone; do
        "$1" $program.1 "$share/man/man1/$program.1" 644
        "$1" $program.bash "$share/bash-completion/completions/$program" 644
        "$1" _$program "$share/zsh/site-functions/_$program" 644
        "$1" $program.fish "$share/fish/vendor_completions.d/$program.fish" 644
    done
}

# page_source FOLDER NAME PLACE: prints where a page comes from, beside a build's executables or
# among the files of a package.
page_source() {
    built=$1/../share/${3#"$share"/}
    if [ -e "$built" ]; then echo "$built"; else echo "$1/$2"; fi
}

# The texts by which daemon and clients recognise each other, the same as those in their code.
client_requirement() {
    echo "$(signed_by "$1") and (identifier \"VelmoHelper\" or identifier \"io.velmo.host\")"
}

daemon_requirement() {
    echo "$(signed_by "$1") and identifier \"VelmoPowerDaemon\""
}

# No program checks the identity of velmo-session when it runs; it must only come from the team.
session_requirement() {
    echo "$(signed_by "$1") and identifier \"VelmoSession\""
}

signed_by() {
    echo "anchor apple generic and certificate leaf[subject.OU] = \"$1\""
}

is_loaded() {
    launchctl print "system/$label" >/dev/null 2>&1
}

# Stops the daemon by SIGTERM, which makes it put sleep back first. Fails if the daemon does not
# end.
stop_daemon() {
    launchctl bootout "system/$label" 2>/dev/null || true
    seconds=0
    while is_loaded; do
        [ "$seconds" -lt 100 ] || return 1
        sleep 1
        seconds=$((seconds + 1))
    done
}

# Prints 1 or 0; fails if pmset fails. A setting that was never changed has no line, and means 0.
sleep_disabled() {
    settings=$(pmset -g) || return 1
    echo "$settings" | awk '$1 == "SleepDisabled" && NF > 1 { disabled = $2 == "1"; exit }
        END { print disabled + 0 }'
}

# Looks more than once, because the power service follows pmset late.
enable_sleep() {
    pmset -a disablesleep 0 || return 1
    for _ in 1 2 3; do
        [ "$(sleep_disabled)" != 0 ] || return 0
        sleep 1
    done
    return 1
}
