#!/usr/bin/env python3
"""velmo-power as people use it: against the daemon of a simulated Mac, with real commands, signals,
terminals and streams. power_client.py PROGRAMS [unittest's arguments]; the tests of one class run at
once. The random words come from VELMO_SEED."""

import contextlib
import itertools
import json
import os
import random
import re
import resource
import signal
import socket
import subprocess
import sys
import tempfile
import termios
import time
import unittest

sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)) + "/../../lab/instruments")
from terminal import PATIENCE, Terminal, until

PROGRAMS = os.path.abspath(sys.argv.pop(1))
CALLER = os.environ.get("VELMO_CALLER", "velmo-power")  # as a daemon names the process that calls
SHARE = PROGRAMS + "/../share"
SEED = int(os.environ.get("VELMO_SEED", "1"))
SHOW_WORDS = [sys.executable, "-S", "-c",
              "import os, sys; os.write(1, b'\\0'.join(map(os.fsencode, sys.argv[1:])))"]


def has_ended(process):
    """Tells whether a process has ended, also where the first process of a container, which inherits
    it, never waits for it."""
    try:
        with open(f"/proc/{process}/stat") as file:
            return file.read().rpartition(")")[2].split()[0] == "Z"
    except FileNotFoundError:
        return True


class Client:
    """A velmo-power that runs: its lines, and what it is sent."""

    def __init__(self, words, **options):
        self.process = subprocess.Popen(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                        stdin=subprocess.DEVNULL, **options)
        os.set_blocking(self.process.stdout.fileno(), False)
        self.text = ""

    def said(self):
        self.text += (self.process.stdout.read() or b"").decode()
        return self.text

    def wait_for(self, text, times=1):
        until(lambda: self.said().count(text) >= times, lambda: f"'{text}' in '{self.text}'")

    def send(self, number):
        self.process.send_signal(number)

    def end(self):
        status = self.process.wait(PATIENCE)
        self.said()
        return status


class PowerTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(prefix="vp")
        self.addCleanup(self.folder.cleanup)
        self.mac("create")
        self.environment = dict(os.environ, VELMO_MAC=self.folder.name, LC_ALL="C")
        self.start_daemon()
        self.addCleanup(self.end_daemon)

    def end_daemon(self):
        """A daemon that is killed may leave a pmset behind, which still writes into the folder."""
        self.daemon.send_signal(signal.SIGCONT)
        self.daemon.terminate()
        self.daemon.wait(PATIENCE)
        for process in self.behind():
            with contextlib.suppress(ProcessLookupError):
                os.kill(int(process), signal.SIGKILL)

    def behind(self):
        """The processes of this Mac that were started to hold in the background."""
        def read(pid, name):
            try:
                with open(f"/proc/{pid}/{name}", "rb") as file:
                    return file.read()
            except OSError:
                return b""
        return [pid for pid in os.listdir("/proc")
                if b"--ready-descriptor" in read(pid, "cmdline")
                and self.folder.name.encode() in read(pid, "environ")]

    def start_daemon(self):
        self.log = open(self.folder.name + "/log", "a")
        self.addCleanup(self.log.close)
        self.daemon = subprocess.Popen([PROGRAMS + "/VelmoPowerDaemonSimulated", self.folder.name],
                                       stderr=self.log)
        until(lambda: self.power("release").returncode == 0, "the daemon listens")

    def mac(self, verb, *words):
        subprocess.run([PROGRAMS + "/velmo-mac", verb, self.folder.name, *words], check=True,
                       stdout=subprocess.DEVNULL)

    def state(self):
        with open(self.folder.name + "/machine.json") as file:
            return json.load(file)

    def is_held(self):
        return self.state()["sleepDisabled"]

    def words(self, *words):
        return [PROGRAMS + "/velmo-power", *words]

    def power(self, *words, **options):
        return subprocess.run(self.words(*words), env=self.environment, capture_output=True,
                              timeout=PATIENCE, **options)

    def start(self, *words, **options):
        client = Client(self.words(*words), env=self.environment, **options)
        self.addCleanup(lambda: (client.process.kill(), client.process.wait()))
        return client

    def restart_daemon(self):
        self.daemon.wait(PATIENCE)
        self.start_daemon()


class Words(PowerTest):
    """The command's words reach it as they are, whatever they look like."""

    PIECES = [b"[1]", b"[a,b]", b"[]", b"--", b"++", b"-h", b"--help", b"--floor", b"-", b"", b" ",
              b"a b", b"'", b'"', b"\\", b"$HOME", b"*", b"%s", b"\n", b"\xff\xfe", b"=", b"--for=1",
              b"{}", b"//", b"hold", "ü".encode()]

    def test_words_reach_the_command_unchanged(self):
        chance = random.Random(SEED)
        lists = [[piece] for piece in self.PIECES]
        for _ in range(60):
            size = chance.randrange(1, 8)
            lists.append([chance.choice(self.PIECES) if chance.random() < 0.7 else
                          bytes(chance.randrange(1, 256) for _ in range(chance.randrange(6)))
                          for _ in range(size)])
        lists.append([b"x" * 100_000] * 5)
        self.start("hold").wait_for("holding")  # who rides needs no pmset, which is what takes long
        for separator, words in zip(itertools.cycle(([], ["--"])), lists):
            done = self.power("hold", "--quiet", *separator, *SHOW_WORDS, *words)
            self.assertEqual((done.returncode, done.stdout), (0, b"\0".join(words)), words)

    def test_the_command_is_found_as_nice_finds_it(self):
        for words in (["nosuch"], [""], ["/"], ["./nosuch"], ["[1]"], ["/etc/passwd"], ["true"],
                      ["false", "--help"], ["sh", "-c", "exit 200"], ["A=1"]):
            expected = subprocess.run(["nice", "-n", "0", "--", *words], capture_output=True)
            self.assertEqual(self.power("hold", "--", *words).returncode, expected.returncode, words)


class Birth(PowerTest):
    """The command finds what it would have found without us."""

    LOOK = ("grep -E '^(Sig(Ign|Blk|Cgt)|Umask)' /proc/self/status; ls /proc/self/fd; pwd; "
            "ps -o pgid=,sid=,tty= -p $$; ulimit -a; env | sort")

    def test_the_command_inherits_what_the_client_inherited(self):
        def ignoring(*numbers):
            return lambda: [signal.signal(each, signal.SIG_IGN) for each in numbers]

        def blocking(*numbers):
            return lambda: signal.pthread_sigmask(signal.SIG_BLOCK, numbers)

        def closing(*descriptors):
            return lambda: [os.close(each) for each in descriptors]

        extra = os.open("/dev/null", os.O_RDONLY)
        self.addCleanup(os.close, extra)
        cases = {
            "as it comes": {},
            "ignored": {"preexec_fn": ignoring(signal.SIGHUP, signal.SIGPIPE, signal.SIGCHLD,
                                               signal.SIGTTOU, signal.SIGINT, signal.SIGUSR1)},
            "blocked": {"preexec_fn": blocking(signal.SIGTERM, signal.SIGUSR2, signal.SIGPIPE)},
            "no standard input": {"preexec_fn": closing(0)},
            "no standard error": {"preexec_fn": closing(2)},
            "neither": {"preexec_fn": closing(0, 2)},
            "more descriptors": {"pass_fds": [extra]},
            "a group of its own": {"preexec_fn": os.setpgrp},
            "another folder": {"cwd": "/usr"},
        }
        for name, options in cases.items():
            results = []
            for before in ([], self.words("hold", "--quiet", "--")):
                done = subprocess.run([*before, "sh", "-c", self.LOOK], env=self.environment,
                                      stdout=subprocess.PIPE, timeout=PATIENCE, **options)
                # Two signals are the C library's own, and one variable the counter's of coverage.
                text = re.sub(r"^(Sig\w+:\s+)([0-9a-f]+)$",
                              lambda found: f"{found[1]}{int(found[2], 16) & ~(3 << 31):x}",
                              done.stdout.decode(), flags=re.M)
                text = re.sub(r"^__LLVM_PROFILE.*\n", "", text, flags=re.M)
                # The group and session are numbers of the processes themselves.
                results.append(re.sub(r"^ *\d+ +(\d+ .*)$", r"PGID \1", text, flags=re.M)
                               if "own" in name else text)
            if name != "as it comes" or results[0] != results[1]:
                self.assertEqual(results[1], results[0], name)

    def test_the_command_inherits_shared_descriptors(self):
        script = (f"{PROGRAMS}/velmo-power hold --quiet -- sh -c 'cat \"$1\"; echo three >&3' sh "
                  "<(echo two) 3>&1")
        done = subprocess.run(["bash", "-c", script], env=self.environment, capture_output=True)
        self.assertEqual(done.stdout, b"two\nthree\n")

    def test_the_client_runs_under_make_and_xargs(self):
        with open(self.folder.name + "/Makefile", "w") as file:
            file.write("all: a b c\na b c:\n\t@+velmo-power hold --quiet -- $(MAKE) -s leaf\n"
                       "leaf:\n\t@echo $(MAKEFLAGS) | grep -c jobserver\n")
        environment = dict(self.environment, PATH=PROGRAMS + ":" + os.environ["PATH"])
        done = subprocess.run(["make", "-s", "-j3", "-C", self.folder.name], env=environment,
                              capture_output=True, timeout=PATIENCE)
        self.assertEqual((done.stdout.split(), done.stderr), ([b"1"] * 3, b""))
        done = subprocess.run(["xargs", "-P3", "-n1", "velmo-power", "hold", "--quiet", "--", "echo"],
                              env=environment, input=b"a b c", capture_output=True)
        self.assertEqual(sorted(done.stdout.split()), [b"a", b"b", b"c"])


class Ends(PowerTest):
    """How it ends, and what its exit status means."""

    def test_each_exit_status(self):
        for words, status, text in (
                (["--help"], 0, "Usage: velmo-power [VERB]"), (["hold", "-h"], 0, "--end-on-loss"),
                (["--version"], 0, "velmo-power "), ([], 0, "mac      simulated, in /"),
                (["nonsense"], 2, "unknown verb 'nonsense'; there are hold, release, status and doctor"),
                (["hold", "--floor"], 2, "--floor needs a value"),
                (["hold", "--floor", "5"], 2, "--floor 5: 10 to 95 would do"),
                (["hold", "--floor", "x", "--", "true"], 125, "10 to 95"),
                (["hold", "--floor", "20%", "true"], 0, "released"),
                (["hold", "--nonsense", "--", "true"], 125, "unknown option '--nonsense'"),
                (["hold", "--nonsense", "true"], 125, "unknown option '--nonsense'"),
                (["hold", "--floor", "20", "--nonsense"], 2, "unknown option '--nonsense'"),
                (["hold", "--"], 125, "a command is missing behind --"),
                (["hold", "--for", "0", "true"], 125, "2h30m"),
                (["hold", "--pid", "999999999", "true"], 125, "there is no such process"),
                (["hold", "--or-run"], 2, "needs a COMMAND"), (["status", "x"], 2, "unexpected"),
                (["--mac", "", "status"], 2, "an empty name names no folder"),
                (["--mac", "/nonexistent", "hold", "--", "true"], 125, "in /nonexistent"),
                (["hold", "sh", "-c", "exit 9"], 9, "released"),
                (["hold", "true"], 0, "velmo-power: this Mac is simulated, in /"),
                (["hold", "--no-wait", "--for", "1"], 0, "the time is over")):
            done = self.power(*words)
            lines = done.stderr.decode() + done.stdout.decode()
            self.assertEqual(done.returncode, status, (words, lines))
            self.assertIn(text, lines, words)
            if status not in (0, 9):
                self.assertRegex(done.stderr.decode(),
                                 r"\A(velmo-power: this Mac is simulated, in .*\n)?velmo-power: [^\n]*\n\Z",
                                 words)

    def test_the_client_dies_by_the_signal_that_ended_its_command(self):
        for number in (signal.SIGKILL, signal.SIGTERM, signal.SIGSEGV, signal.SIGHUP,
                       signal.SIGPIPE, signal.SIGQUIT):
            self.assertEqual(self.power("hold", "sh", "-c", f"kill -{number} $$").returncode,
                             -number)
        self.assertFalse(self.is_held())

    def test_a_refused_hold_runs_no_command(self):
        for change, words, text in (
                (["--mains", "off", "--battery", "12"], [], "battery is below the floor"),
                (["--mains", "on", "--thermal", "serious"], [], "too hot"),
                (["--thermal", "nominal", "--pmset", "fails"], [], "pmset")):
            self.mac("set", *change)
            self.assertEqual(self.power("hold").returncode, 1)
            done = self.power("hold", "touch", self.folder.name + "/ran")
            self.assertEqual(done.returncode, 125)
            self.assertIn(text, done.stderr.decode())
            self.assertFalse(os.path.exists(self.folder.name + "/ran"))
            done = self.power("hold", "--or-run", "sh", "-c", "exit 4")
            self.assertEqual(done.returncode, 4)
            self.assertIn("running sh without a hold", done.stderr.decode())

    def test_verbs_fail_without_a_daemon(self):
        self.daemon.terminate()
        self.daemon.wait()
        for words, status in ((["hold"], 3), (["release"], 3), (["hold", "true"], 125),
                              (["hold", "--or-run", "true"], 0), (["status"], 3), ([], 3)):
            self.assertEqual(self.power(*words).returncode, status, words)

    def test_a_signal_ends_the_wait_for_a_daemon_that_hangs(self):
        self.daemon.send_signal(signal.SIGSTOP)
        self.addCleanup(self.daemon.send_signal, signal.SIGCONT)
        client = self.start("hold", "touch", self.folder.name + "/ran")
        client.wait_for("waiting for the power daemon to answer")
        client.send(signal.SIGTERM)
        self.assertEqual(client.end(), -signal.SIGTERM)
        self.assertFalse(os.path.exists(self.folder.name + "/ran"))

    def test_a_command_may_end_while_its_hold_is_given_up(self):
        other = subprocess.Popen(["sleep", "100"])
        self.addCleanup(other.kill)
        client = self.start("hold", "--pid", str(other.pid), "sleep", "100")
        client.wait_for("holding")
        self.daemon.send_signal(signal.SIGSTOP)
        other.kill()
        other.wait()
        client.wait_for("sleep runs on")
        client.send(signal.SIGTERM)
        client.wait_for("waiting for the power daemon to enable sleep again")
        self.daemon.send_signal(signal.SIGCONT)
        self.assertEqual(client.end(), -signal.SIGTERM)

    def test_success_means_that_sleep_is_as_it_was(self):
        client = self.start("hold")
        client.wait_for("holding")
        self.daemon.kill()
        client.wait_for("went away")
        client.send(signal.SIGINT)
        self.assertEqual(client.end(), 1)
        self.assertIn("sleep may still be disabled", client.text)
        self.restart_daemon()
        client = self.start("hold")
        client.wait_for("holding")
        self.mac("set", "--pmset", "fails")
        client.send(signal.SIGINT)
        self.assertEqual(client.end(), 1)
        self.mac("set", "--pmset", "none")
        until(lambda: not self.is_held(), "the daemon tries again")
        client = self.start("hold")
        client.wait_for("holding")
        self.daemon.kill()
        client.wait_for("went away")
        self.mac("set", "--sleep-disabled", "off")
        client.send(signal.SIGINT)
        self.assertEqual(client.end(), 0, "the setting itself tells")

    def test_killed_at_any_moment_it_leaves_sleep_enabled(self):
        for wait in (0, 0.002, 0.005, 0.01, 0.02, 0.05, 0.2):
            client = self.start("hold", "--quiet", "sleep", "0.05")
            time.sleep(wait)
            client.process.kill()
            client.process.wait()
            until(lambda: not self.is_held(), f"sleep is enabled, killed after {wait} s")


class Signals(PowerTest):
    COUNT = ("n=0; trap 'n=$((n+1)); echo got $n' INT QUIT USR1 USR2 HUP; trap 'exit 3' TERM; "
             "echo ready; while :; do sleep 0.05; done")

    def test_what_a_process_sends_is_passed_on(self):
        client = self.start("hold", "--quiet", "sh", "-c", self.COUNT)
        client.wait_for("ready")
        for count, number in enumerate((signal.SIGINT, signal.SIGQUIT, signal.SIGUSR1,
                                        signal.SIGUSR2, signal.SIGHUP), 1):
            client.send(number)
            client.wait_for(f"got {count}\n")
        client.send(signal.SIGTERM)
        self.assertEqual(client.end(), 3)

    def test_what_the_terminal_sends_reaches_the_command_once(self):
        # A shell would see two that come at once as one.
        count = ("import os, signal, sys, time\n"
                 "def got(*_): got.times += 1; os.write(1, b'got %d.' % got.times)\n"
                 "got.times = 0\n"
                 "for each in signal.SIGINT, signal.SIGQUIT: signal.signal(each, got)\n"
                 "signal.signal(signal.SIGTERM, lambda *_: os._exit(3))\n"
                 "os.write(1, b'ready')\n"
                 "while True: pass")
        terminal = Terminal(self.words("hold", "--quiet", sys.executable, "-S", "-c", count),
                            self.environment)
        self.addCleanup(terminal.close)
        terminal.shows("ready")
        for times, key in enumerate(("\x03", "\x1c", "\x03"), 1):
            terminal.type(key)
            terminal.shows(f"got {times}.")
        time.sleep(0.3)
        self.assertNotIn("got 4", terminal.text())
        os.kill(terminal.pid, signal.SIGTERM)
        self.assertEqual(terminal.end(), 3)

    def test_ignored_signals_stay_ignored(self):
        client = Client(["nohup", *self.words("hold", "sleep", "1")], env=self.environment)
        client.wait_for("holding")
        client.send(signal.SIGHUP)
        self.assertEqual(client.end(), 0, client.text)
        client = self.start("hold",
                            preexec_fn=lambda: signal.signal(signal.SIGTSTP, signal.SIG_IGN))
        client.wait_for("holding")
        client.send(signal.SIGTSTP)
        client.send(signal.SIGINT)
        self.assertEqual(client.end(), 0)
        self.assertNotIn("stopped", client.text)

    def test_a_doubled_signal_does_not_end_the_release(self):
        # timeout sends what ends it to its command, and once more to the whole group.
        client = Client(["timeout", str(PATIENCE), *self.words("hold")], env=self.environment)
        client.wait_for("holding")
        client.send(signal.SIGTERM)
        self.assertEqual(client.end(), 0, client.text)
        self.assertIn("released\n", client.text)
        self.mac("set", "--lateness", "500")  # the second one comes during the release
        client = self.start("hold")
        client.wait_for("holding")
        client.send(signal.SIGTERM)
        time.sleep(0.1)
        client.send(signal.SIGTERM)
        self.assertEqual(client.end(), 0, client.text)

    def test_stopped_it_gives_the_hold_up_and_takes_it_again(self):
        mark = self.folder.name + "/end"
        for command in [], ["sh", "-c", f"until test -e {mark}; do sleep .1; done"]:
            client = self.start("hold", *command, preexec_fn=os.setpgrp)
            for times in 2, 3:
                client.wait_for("holding", times=times - 1)
                self.stop_and_continue(client)
                client.wait_for("holding", times=times)
            self.assertRegex(client.text, "stopped: the hold is given up meanwhile\n.*going on: ")
            if command:
                open(mark, "w").close()
            else:
                client.send(signal.SIGINT)
            self.assertEqual(client.end(), 0)


    def test_a_command_that_stops_itself_stops_all(self):
        client = self.start("hold", "sh", "-c", "kill -TSTP $$; echo back", preexec_fn=os.setpgrp)
        self.until_stopped(client)
        self.assertFalse(self.is_held())
        client.send(signal.SIGCONT)
        self.assertEqual(client.end(), 0)
        self.assertIn("going on: ", client.text)
        self.assertIn("back\n", client.text)

    def test_a_terminal_that_closes_ends_command_and_hold(self):
        mark = self.folder.name + "/command"
        script = f"echo $$ > {mark}1; mv {mark}1 {mark}; exec sleep 30"
        terminal = Terminal(self.words("hold", "sh", "-c", script), self.environment)
        until(lambda: os.path.exists(mark), "the command runs")
        os.close(terminal.descriptor)
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(terminal.pid, 0)[1]), -signal.SIGHUP)
        self.assertFalse(self.is_held())
        with open(mark) as file:
            self.assertTrue(has_ended(int(file.read())))

    def test_the_command_is_waited_for_though_a_parent_blocks_its_signal(self):
        done = self.power("hold", "--quiet", "grep", "SigBlk", "/proc/self/status",
                          preexec_fn=lambda: signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGCHLD}))
        self.assertEqual(done.returncode, 0)
        self.assertEqual(int(done.stdout.split()[1], 16), 1 << (signal.SIGCHLD - 1),
                         "the command is born with the same mask")

    def test_a_released_hold_is_not_asked_for_after_a_stop(self):
        client = self.start("hold", "sleep", "30", preexec_fn=os.setpgrp)
        client.wait_for("holding")
        self.power("release")
        client.wait_for("sleep runs on")
        self.stop_and_continue(client)
        client.send(signal.SIGTERM)
        self.assertEqual(client.end(), -signal.SIGTERM)
        self.assertNotIn("going on", client.text)

    def until_stopped(self, client):
        until(lambda: os.waitid(os.P_PID, client.process.pid,
                                os.WSTOPPED | os.WNOHANG | os.WNOWAIT), "it is stopped")

    def stop_and_continue(self, client):
        client.send(signal.SIGTSTP)
        self.until_stopped(client)
        self.assertFalse(self.is_held())
        client.send(signal.SIGCONT)


def leave_the_foreground():
    """Runs between fork and exec: another group takes the foreground, and others may not write."""
    signal.signal(signal.SIGTTOU, signal.SIG_IGN)
    leader = os.fork()
    if leader == 0:
        os.setpgrp()
        time.sleep(PATIENCE)
        os._exit(0)
    os.setpgid(leader, leader)
    os.tcsetpgrp(0, leader)
    modes = termios.tcgetattr(0)
    modes[3] |= termios.TOSTOP
    termios.tcsetattr(0, termios.TCSANOW, modes)
    signal.signal(signal.SIGTTOU, signal.SIG_DFL)


class Streams(PowerTest):
    def terminal(self, *words, **options):
        environment = dict(self.environment, **options.pop("environment", {}))
        terminal = Terminal(self.words(*words), environment, **options)
        self.addCleanup(terminal.close)
        return terminal

    def test_the_status_line_is_redrawn(self):
        terminal = self.terminal("hold", "--floor", "30", "--for", "1h")
        terminal.shows("nominal")
        self.assertIn("\r\x1b[Kawake for 0:00:", terminal.text())
        self.assertIn(", for 0:59:", terminal.text())
        self.assertIn(" | mains, battery 80% (floor 30%) | nominal", terminal.text())
        self.mac("set", "--sleep-disabled", "off")
        terminal.shows("sleep is enabled although the hold is in force")
        terminal.shows("\r\x1b[Kheld, but sleep is enabled")
        terminal.type("\x03")
        terminal.shows("released\r\n")
        self.assertEqual(terminal.end(), 0)

    def test_no_status_line_on_a_dumb_terminal_or_in_the_background(self):
        for options in ({"environment": {"TERM": "dumb"}}, {"preexec_fn": leave_the_foreground}):
            terminal = self.terminal("hold", "--for", "2", **options)
            terminal.shows("is over")
            self.assertNotIn("awake for", terminal.text(), options)
            self.assertNotIn("\x1b", terminal.text(), options)

    def test_the_line_never_wraps(self):
        terminal = self.terminal("hold", columns=20)
        terminal.shows("awake for")
        os.kill(terminal.pid, signal.SIGINT)
        terminal.shows("released")
        drawn = re.findall("\r\x1b\\[K(awake[^\r]*)", terminal.text())
        self.assertTrue(drawn and all(len(line) == 19 for line in drawn), drawn)

    def test_unread_output_does_not_delay_the_release(self):
        terminal = self.terminal("hold")
        terminal.shows("awake for")
        terminal.type("\x13")  # Ctrl-S
        time.sleep(2.5)
        os.kill(terminal.pid, signal.SIGTERM)
        until(lambda: not self.is_held(), "the hold is released")
        until(terminal.has_ended, "it ends with a terminal that is stopped")

        reading, writing = os.pipe()
        self.addCleanup(os.close, reading)
        os.set_blocking(writing, False)
        try:
            while os.write(writing, b"x" * 65536):
                pass
        except BlockingIOError:
            os.set_blocking(writing, True)
        process = subprocess.Popen(self.words("hold", "--for", "1"), env=self.environment,
                                   stdout=writing, stderr=writing)
        os.close(writing)
        self.assertEqual(process.wait(PATIENCE), 0)

    def test_closed_or_full_streams_do_not_change_the_status(self):
        for streams in ("<&-", ">&-", "2>&-", "<&- >&- 2>&-", ">/dev/full", "2>/dev/full",
                        ">/dev/full 2>&1", "| true"):
            script = f"{PROGRAMS}/velmo-power hold sh -c 'exit 6' {streams}; echo ${{PIPESTATUS[0]}}"
            done = subprocess.run(["bash", "-c", script], env=self.environment,
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                  timeout=PATIENCE)
            self.assertEqual(done.stdout[-2:], b"6\n", streams)

    def test_a_background_job_of_a_shell(self):
        told = self.folder.name + "/told"
        script = (f"{PROGRAMS}/velmo-power hold -- sleep 1 & wait $!; echo status $?; "
                  f"{PROGRAMS}/velmo-power hold >{told} 2>&1 & until grep -qs holding: {told}; do sleep .05; done; "
                  "kill $!; wait $!; echo status $?")
        done = subprocess.run(["bash", "-c", script], env=self.environment, capture_output=True,
                              timeout=PATIENCE)
        self.assertEqual(done.stdout.count(b"status 0"), 2, done)


class Options(PowerTest):
    OPTIONS = [["--floor", "30"], ["--for", "1h"], ["--until", "0:00"], ["--pid", str(os.getpid())],
               ["--ac-only"], ["--until-lid-opens"], ["--display-off"], ["--no-wait"], ["--or-run"],
               ["--persist"], ["--end-on-loss"], ["--background"], ["--quiet"]]

    def test_each_option_and_each_pair_works(self):
        mark = self.folder.name + "/ran"
        for several in itertools.chain(([each] for each in self.OPTIONS),
                                       itertools.combinations(self.OPTIONS, 2)):
            options = list(itertools.chain(*several))
            done = self.power("hold", *options, "sh", "-c", f"echo x >> {mark}; exit 5")
            in_background = ["--background"] in several
            self.assertEqual(done.returncode, 0 if in_background else 5, (options, done))
            if in_background:
                self.assertRegex(done.stdout, rb"\A\d+\n\Z", options)
                until(lambda: not self.is_held(), f"the end of {options}")
            self.assertFalse(self.is_held(), options)
            with open(mark) as file:
                self.assertEqual(file.read(), "x\n", options)
            os.remove(mark)

    def test_each_limit_ends_a_hold(self):
        other = subprocess.Popen(["sleep", "100"])
        self.addCleanup(other.kill)

        def opens_lid():
            for lid in "shut", "open":
                self.mac("set", "--lid", lid)
                time.sleep(1.5)  # the lid is looked at every second

        for words, act, why in (
                (["--for", "100"], lambda: self.mac("set", "--elapse", "101"), "the time is over"),
                (["--pid", str(other.pid)], lambda: (other.kill(), other.wait()),
                 f"process {other.pid} has ended"),
                (["--ac-only"], lambda: self.mac("set", "--mains", "off"), "runs on its battery"),
                (["--until-lid-opens"], lambda: until(lambda: opens_lid() or "lid is open" in alone.said()
                                                      and "lid is open" in with_command.said(),
                                                      "both see the lid open"), "lid is open")):
            alone = self.start("hold", *words)
            alone.wait_for("holding")
            with_command = self.start("hold", *words, "sleep", "30")
            with_command.wait_for("held awake already, by " + CALLER)
            act()
            self.assertEqual(alone.end(), 0)
            self.assertRegex(alone.text, f"the hold is over: .*{why}")
            with_command.wait_for(why + "; sleep runs on")
            self.assertIsNone(with_command.process.poll())
            with_command.send(signal.SIGTERM)
            self.assertEqual(with_command.end(), -signal.SIGTERM)
            self.assertFalse(self.is_held())
        done = self.power("hold", "--ac-only", "true")
        self.assertEqual(done.returncode, 125)
        self.mac("set", "--lid", "none")
        self.assertEqual(self.power("hold", "--until-lid-opens").returncode, 2)

    def test_the_display_goes_off_with_the_lid(self):
        client = self.start("hold", "--display-off")
        client.wait_for("holding")
        self.mac("set", "--lid", "shut")
        until(lambda: self.state()["displayIsOff"], "the display is off")

        def is_off_again():
            self.mac("set", "--lid", "open")
            time.sleep(1.5)  # the lid is looked at every second
            self.mac("set", "--lid", "shut")
            time.sleep(2.5)
            return self.state()["displayIsOff"]
        until(is_off_again, "it goes off each time")
        client.send(signal.SIGINT)
        self.assertEqual(client.end(), 0)

    def test_a_background_hold_starts_ends_and_can_be_cancelled(self):
        done = self.power("hold", "--background")
        self.assertEqual(done.returncode, 0)
        self.assertTrue(self.is_held())
        self.assertEqual(os.getsid(int(done.stdout)), int(done.stdout), "no terminal ends it")
        self.assertIn(f"{CALLER} ({int(done.stdout)})", self.power().stdout.decode())
        self.assertIn(f"({int(done.stdout)})", self.power("release").stdout.decode())
        until(lambda: has_ended(int(done.stdout)), "release ends it for good")
        mark = self.folder.name + "/descriptors"
        self.power("hold", "--background", "sh", "-c", f"ls /proc/self/fd > {mark}1; mv {mark}1 {mark}")
        until(lambda: os.path.exists(mark), "the command has looked")
        with open(mark) as file:
            self.assertEqual(file.read().split(), ["0", "1", "2", "3"])
        until(lambda: not self.is_held(), "its end")
        self.daemon.send_signal(signal.SIGSTOP)
        client = Client(self.words("hold", "--background"), env=self.environment)
        client.wait_for("waiting for the power daemon to answer")
        client.send(signal.SIGINT)
        client.end()
        self.daemon.send_signal(signal.SIGCONT)
        until(lambda: not self.behind(), "nothing is left behind a front that was cancelled")
        until(lambda: not self.is_held(), "the daemon has read what it was asked, and that the client went")
        self.mac("set", "--thermal", "critical")
        done = self.power("hold", "--background")
        self.assertEqual((done.returncode, done.stdout), (1, b""))
        self.assertIn(b"too hot", done.stderr)


class Others(PowerTest):
    """Several clients, and the hold that ends."""

    def test_release_ends_every_riding_client(self):
        alone = self.start("hold")
        alone.wait_for("holding")
        rides = self.start("hold")
        rides.wait_for(f"already, by {CALLER} ({alone.process.pid})")
        self.assertIn(f"{CALLER} ({alone.process.pid})",
                      self.power("release").stdout.decode())
        self.assertEqual(rides.end(), 0)
        self.assertIn("released by another client", rides.text)
        alone.wait_for("released by another client")
        self.assertEqual(alone.end(), 0)
        self.assertFalse(self.is_held())
        self.assertIn("nobody held", self.power("release").stdout.decode())
        self.assertIn("released by another client", self.power().stdout.decode())

        runs_on = self.start("hold", "sleep", "30")
        runs_on.wait_for("holding")
        self.power("release")
        runs_on.wait_for("sleep runs on")
        runs_on.process.kill()
        ends = self.start("hold", "--end-on-loss", "sleep", "30")
        ends.wait_for("holding")
        self.power("release")
        self.assertEqual(ends.end(), -signal.SIGTERM)
        persists = self.start("hold", "--persist")
        persists.wait_for("holding")
        self.power("release")
        persists.wait_for("holding", times=2)
        persists.send(signal.SIGINT)
        self.assertEqual(persists.end(), 0)

    def test_the_end_of_a_hold_is_told_with_its_reason(self):
        client = self.start("hold")
        client.wait_for("holding")
        self.mac("set", "--mains", "off", "--battery", "12")
        client.wait_for("the battery fell below the floor; asking again")
        client.wait_for("refused: the battery is below the floor")
        self.mac("set", "--mains", "on")
        client.wait_for("holding", times=2)
        self.mac("set", "--elapse", "60")
        client.wait_for("its client was silent for too long; asking again")
        client.process.kill()
        client.process.wait()
        until(lambda: "its client went away" in self.power().stdout.decode(), "why it ended")
        report = json.loads(self.power("status", "--json").stdout)
        self.assertEqual(report["holds"]["lastEnd"]["how"], "client gone")

    def test_sleep_that_stays_disabled_is_reported(self):
        self.mac("set", "--sleep-disabled", "on")
        client = self.start("hold", "--for", "1")
        self.assertEqual(client.end(), 0)
        self.assertIn("sleep stays disabled, as it was before this hold", client.text)
        client = self.start("hold")
        client.wait_for("holding")
        self.assertRegex(self.power("release").stdout, rb"released .*; sleep stays disabled, as it was")
        client.end()
        self.assertEqual(self.power("release").stdout,
                         b"nobody held; sleep stays disabled, and not by the power daemon\n")

    def test_no_wait_is_refused_where_another_holds(self):
        client = self.start("hold")
        client.wait_for("holding")
        done = self.power("hold", "--no-wait", "true")
        self.assertEqual(done.returncode, 125)
        self.assertIn("another client holds", done.stderr.decode())
        client.process.kill()

    def test_many_ride_on_one_hold_and_take_over_one_after_the_other(self):
        count = int(os.environ.get("VELMO_RIDERS", "12"))
        self.mac("set", "--lid", "shut")
        clients = [self.start("hold", "sleep", str(3 + 0.25 * i)) for i in range(count)]
        while any(client.process.poll() is None for client in clients):
            self.assertFalse(self.state()["asleep"])
            time.sleep(0.05)
        self.assertEqual([client.end() for client in clients], [0] * count)
        self.assertFalse(self.is_held())

    def test_the_status_tells_what_the_holder_runs(self):
        for words, command in ((["sh", "-c", "sleep 60"], "sh -c sleep 60"), (["--background"], None)):
            holder = self.start("hold", "--floor", "30", *words)
            until(lambda: b"floor 30%" in self.power("status").stdout, "the status tells of the hold")
            status = self.power("status").stdout.decode()
            if CALLER != "velmo-power":
                command = None  # another program's words are not read
            self.assertEqual(re.findall(r"floor 30%(?:, for (.*))?\n", status), [command or ""])
            self.assertEqual(json.loads(self.power("status", "--json").stdout).get("command"), command)
            os.kill(json.loads(self.power("status", "--json").stdout)["holds"]["holder"]["processId"], signal.SIGTERM)
            until(lambda: not self.is_held(), "the hold ends")

    def test_one_client_too_many_is_told_so(self):
        address = self.folder.name + "/var/run/power.sock"
        others = []
        for _ in range(256):
            others.append(socket.socket(socket.AF_UNIX))
            others[-1].connect(address)
        for words, status in (("hold",), 3), (("hold", "true"), 125), (("release",), 3), (("status",), 3):
            done = self.power(*words)
            self.assertEqual(done.returncode, status, words)
            said = (done.stderr + done.stdout).decode()
            self.assertEqual(said.count("the power daemon has too many clients"), 1, words)
            self.assertNotIn("can't be reached", said, words)
        for other in others:
            other.close()
        until(lambda: self.power("release").returncode == 0, "there is room again")

    def test_the_doctor_tells_a_dead_daemon_from_one_that_ended(self):
        client = self.start("hold")
        client.wait_for("holding")
        self.daemon.kill()
        self.daemon.wait()
        client.process.kill()
        client.process.wait()
        start = f"-> start VelmoPowerDaemonSimulated {self.folder.name}"
        dead = self.power("doctor").stdout.decode()
        self.assertIn("the power daemon can't be reached\n         " + start, dead)
        self.assertIn(f"whose record is still on disk\n         {start}, which puts sleep back\n", dead)
        self.start_daemon()
        self.assertFalse(self.is_held())
        self.mac("set", "--elapse", "100")
        self.daemon.wait(PATIENCE)
        idle = self.power("doctor").stdout.decode()
        self.assertIn(f"the power daemon can't be reached\n         {start}, which ends by itself", idle)
        self.assertEqual(idle.count("WRONG"), 1, idle)

    def test_the_status_is_watched(self):
        watcher = self.start("status", "--watch", "--json")
        watcher.wait_for('"holds"')
        client = self.start("hold")
        watcher.wait_for(f'"processId":{client.process.pid}')
        client.send(signal.SIGINT)
        client.end()
        watcher.wait_for('"how":"released"')
        watcher.send(signal.SIGTERM)
        watcher.end()
        for line in watcher.text.splitlines():
            json.loads(line)
        self.assertEqual(subprocess.run(
            ["bash", "-c", f"timeout {PATIENCE} {PROGRAMS}/velmo-power status --watch | head -1 >&2; "
             "exit ${PIPESTATUS[0]}"], env=self.environment, stderr=subprocess.DEVNULL).returncode, 1)
        with open("/dev/full", "w") as full:
            self.assertEqual(subprocess.run(self.words("status"), env=self.environment, stdout=full,
                                            stderr=subprocess.DEVNULL).returncode, 1)


class Limits(PowerTest):
    """A system that lacks what is needed; the sanitizers need some of it themselves."""

    def test_too_few_descriptors_are_refused_cleanly(self):
        for limit in range(5, 12):
            self.check("-n", limit)

    def test_too_little_memory_and_too_few_processes_are_refused_cleanly(self):
        for limit in (("-v", 20000), ("-v", 24000), ("-v", 30000), ("-u", 2)):  # kilobytes; root has any number
            self.check(*limit)

    def check(self, *limit):
        for words, statuses in (("hold true", (0, 125, 126)), ("status", (0, 1, 3))):
            done = subprocess.run(["bash", "-c", f"ulimit {limit[0]} {limit[1]}; exec {PROGRAMS}/velmo-power {words}"],
                                  env=self.environment, capture_output=True)
            self.assertIn(done.returncode, statuses, (limit, done))


class Pages(unittest.TestCase):
    """Manual pages and completions, which are made of what the help is made of."""

    SECTIONS = ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXIT STATUS", "ENVIRONMENT", "FILES", "EXAMPLES",
                "SEE ALSO"]

    def test_every_option_is_in_every_page_and_completion(self):
        for page in os.listdir(SHARE + "/man/man1"):
            program = page.removesuffix(".1")
            pages = {}
            for place in (f"man/man1/{page}", f"bash-completion/completions/{program}",
                          f"zsh/site-functions/_{program}",
                          f"fish/vendor_completions.d/{program}.fish"):
                with open(f"{SHARE}/{place}") as file:
                    pages[place] = file.read().replace("\\-", "-").replace(" -l ", " --")

            def helps(*words):
                return subprocess.check_output([f"{PROGRAMS}/{program}", *words]).decode()

            top = helps("--help")
            verbs = re.findall(r"^  ([a-z-]+)  ", top.partition("\nVerbs:")[2].partition("\n\n")[0],
                               re.M)
            options = set(re.findall(r"^  (--[a-z-]+)", top, re.M))
            for verb in verbs:
                options |= set(re.findall(r"^  (--[a-z-]+)", helps(verb, "--help"), re.M))
            self.assertGreater(len(options), 1, program)
            for place, text in pages.items():
                for word in [*verbs, *options]:
                    self.assertIn(word, text, place)

    def test_a_manual_page_has_every_section_and_status(self):
        sources = os.path.dirname(os.path.realpath(__file__)) + "/../../tools"
        statuses = {"velmo-phone": "velmo-phone/PhoneExit.h", "velmo-power": "velmo-power/ExitStatus.h",
                    "velmo-session": "velmo-session/SessionExit.h"}
        for page in os.listdir(SHARE + "/man/man1"):
            program = page.removesuffix(".1")
            with open(f"{SHARE}/man/man1/{page}") as file:
                text = file.read()
            self.assertEqual(re.findall(r"^\.SH (.*)", text, re.M), self.SECTIONS, page)
            numbers = {"0", "1", "2"}
            if program in statuses:
                with open(f"{sources}/{statuses[program]}") as file:
                    numbers = set(re.findall(r"constexpr int \w+ = (\d+);", file.read())) - {"128"}
            told = text.partition(".SH EXIT STATUS")[2].partition(".SH ENVIRONMENT")[0]
            self.assertEqual(set(re.findall(r"^\.B (\d+)$", told, re.M)), numbers, page)
            self.assertIn("\n.B \\-h, \\-\\-help\n", text)
        self.assertIn("\n.B velmo\\-power [OPTION...]\n",
                      open(SHARE + "/man/man1/velmo-power.1").read())


class Completions(unittest.TestCase):
    """The completions, in each shell itself."""

    # What each shell offers; of a path its last part.
    OFFERED = [("velmo-power ho", {"hold"}),
               ("velmo-power --j", {"--json"}),
               ("velmo-power status --w", {"--watch"}),
               ("velmo-power hold --fl", {"--floor"}),
               ("velmo-power hold --w", set()),
               ("velmo-power --mac ho hold --fl", {"--floor"}),
               ("velmo-power --mac FOLDER/some", {"some folder"}),
               ("velmo-power hold --floor ", set()),
               ("velmo-power hold our-to", {"our-tool"}),
               ("velmo-power hold --quiet --floor 30 our-to", {"our-tool"}),
               ("velmo-power hold -- our-to", {"our-tool"}),
               ("velmo-power hold -- our-tool FOLDER/some", {"some folder", "somefile"}),
               ("velmo-power hold our-tool FOLDER/some", {"some folder", "somefile"}),
               ("velmo-power hold -- our-tool --fl", set()),
               ("velmo-power hold our-tool --fl", set()),
               ("velmo-power hold --quiet -- our-tool -- --fl", set()),
               ("velmo-power hold -- --floor our-tool FOLDER/some", {"some folder", "somefile"}),
               ("velmo-power release some", set()),
               ("velmo-mac set --thermal ", {"nominal", "fair", "serious", "critical"}),
               ("velmo-mac set --battery 1", set()),
               ("velmo-mac show FOLDER/some", {"some folder"}),
               ("VelmoPowerDaemonSimulated FOLDER/some", {"some folder"}),
               ("VelmoPowerDaemonSimulated --ver", {"--version"}),
               ("velmo-session at", {"attach"}),
               ("velmo-session start our-to", {"our-tool"}),
               ("velmo-session start -A some our-to", {"our-tool"}),
               ("velmo-session attach --detach", {"--detach-key"}),
               ("velmo-session pty-attach --ticket-file FOLDER/somef", {"somefile"})]

    ZSH = """
fpath=($SHARE/zsh/site-functions $fpath)
autoload -Uz compinit
compinit -u -D
compadd() {
    local -a offered
    [[ " $*" == *" -"[OAD]" "* ]] || { builtin compadd -O offered "$@"; print -rl -- $offered >>$FOUND }
    builtin compadd "$@"
}
show() { _main_complete }
zle -C show complete-word show
zle-line-init() { zle show; BUFFER=exit; zle accept-line }
zle -N zle-line-init
print -z -- $LINE
"""

    BASH = """
PS1='ready> '
source "$SHARE/bash-completion/completions/$PROGRAM"
wrapped=_${PROGRAM//-/_}
wrapper() { $wrapped "$@"; printf '%s\n' "${COMPREPLY[@]}" >"$FOUND"; }
complete -F wrapper "$PROGRAM"
"""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="vp")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        os.mkdir(self.folder + "/some folder")
        for name in ("somefile", "our-tool"):
            open(f"{self.folder}/{name}", "w").close()
        os.chmod(self.folder + "/our-tool", 0o755)
        self.found = self.folder + "/found"

    def environment(self, line):
        return {"PATH": f"{self.folder}:{PROGRAMS}:{os.environ['PATH']}", "HOME": self.folder, "TERM": "xterm",
                "ZDOTDIR": self.folder, "LC_ALL": "C.UTF-8", "SHARE": os.path.realpath(SHARE), "LINE": line,
                "FOUND": self.found, "PROGRAM": line.partition(" ")[0]}

    def write(self, name, text):
        with open(f"{self.folder}/{name}", "w") as file:
            file.write(text)

    def run_in_terminal(self, line, words, typed=None):
        """Returns what the shell that the words start has written into the file for what it found."""
        open(self.found, "w").close()
        shell = Terminal(words, self.environment(line))
        self.addCleanup(shell.close)
        if typed:
            shell.shows("ready> ")
            shell.type(typed)
        self.assertEqual(shell.end(), 0, line)
        with open(self.found) as file:
            return file.read().splitlines()

    def zsh(self, line):
        self.write(".zshrc", self.ZSH)
        return self.run_in_terminal(line, ["zsh", "-i"])

    def bash(self, line):
        self.write("rc", self.BASH)
        return self.run_in_terminal(line, ["bash", "--rcfile", self.folder + "/rc", "-i"],
                                    line + "\t\x15exit\n")  # Control-U removes the line

    def fish(self, line):
        script = 'source "$SHARE/fish/vendor_completions.d/$PROGRAM.fish"; complete --do-complete="$LINE"'
        done = subprocess.run(["fish", "--no-config", "-c", script], env=self.environment(line),
                              capture_output=True, check=True)
        self.assertEqual(done.stderr, b"", line)
        found = [offered.partition("\t")[0] for offered in done.stdout.decode().splitlines()]
        # Newer releases also list options with the word inside.
        option = line.rpartition(" ")[2]
        return [each for each in found if not option.startswith("--") or each.startswith(option)]

    def check(self, complete):
        for line, offered in self.OFFERED:
            found = complete(line.replace("FOLDER", self.folder))
            names = {os.path.basename(each.rstrip("/ ")).replace("\\ ", " ") for each in found if each}
            self.assertEqual(names, offered, line)
        self.assertNotIn("--floor", complete("velmo-power hold -- --fl"))

    def test_bash_completes(self):
        self.check(self.bash)

    def test_zsh_completes(self):
        self.check(self.zsh)

    def test_fish_completes(self):
        self.check(self.fish)


def run_at_once(subject):
    """Each test in a process of its own: what they do is wait, most of the time."""
    names = unittest.defaultTestLoader.getTestCaseNames(globals()[subject])
    tests = [subprocess.Popen([sys.executable, __file__, PROGRAMS, f"{subject}.{name}"])
             for name in names]
    return any([test.wait() != 0 for test in tests])


if __name__ == "__main__":
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    if len(sys.argv) == 2 and sys.argv[1] in globals():
        sys.exit(run_at_once(sys.argv[1]))
    unittest.main(verbosity=2, warnings="ignore")
