#!/usr/bin/env python3
"""Terminal sessions on real terminals: tmux, and xterm on a display without a screen. Looks at what
reaches the program, and at what is left on the terminal. real_terminals.py PROGRAMS [unittest's
arguments]; what is not installed is skipped."""

import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)) + "/../../lab/instruments")
from terminal import until

PROGRAM = os.path.abspath(sys.argv.pop(1)) + "/velmo-session"
os.environ.pop("TMUX", None)

# Where the cursor is, what the terminal is and can, its colours, clipboard, modes and sizes; and to report
# the focus, which many terminals do at once.
QUERIES = (r"\033[?1004h\033[6n\033[?6n\033[5n\033[c\033[>c\033[=c\005\033Z\033[x\033[>q\033[?u\033[18t"
           r"\033[14t\033[21t\033[?1$p\033]10;?\a\033]4;1;?\a\033]52;c;?\a\033P+q544e\033\\\033P$qm\033\\"
           r"\033[?1004l\033[?1004h\033[1*y\033[?1004h")


def needs(*programs):
    missing = [program for program in programs if not shutil.which(program)]
    return unittest.skipIf(missing, f"not installed: {' '.join(missing)}")


class Tmux:
    """A terminal that tmux plays, with a script in it."""

    def __init__(self, world, script):
        self.world = world
        self.socket = world.place.name + "/tmux"
        self.tmux("new-session", "-d", "-x", "80", "-y", "24", script, ";", "set", "-g", "focus-events", "on")

    def tmux(self, *words):
        return subprocess.run(["tmux", "-S", self.socket, "-f", "/dev/null", *words],
                              env=self.world.environment, cwd=self.world.place.name, check=True,
                              capture_output=True, text=True).stdout

    def key(self, *keys):
        for key in keys:
            self.tmux("send-keys", {"ctrl+bracketright": "C-]", "ctrl+g": "C-g"}.get(key, key))

    def close(self):
        self.tmux("kill-server")


class Xterm:
    """An xterm on a display of its own, with a script in it."""

    def __init__(self, world, script):
        self.world = world
        read, write = os.pipe()
        self.display = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "800x600x24"],
                                        pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as number:
            self.environment = world.environment | {"DISPLAY": ":" + number.readline().strip()}
        self.xterm = subprocess.Popen(["xterm", "-xrm", "*allowWindowOps: true", "-geometry", "80x24",
                                       "-e", "sh", "-c", script],
                                      env=self.environment, cwd=world.place.name,
                                      stderr=subprocess.DEVNULL)

    def key(self, *keys):
        def typed():
            found = subprocess.run(["xdotool", "search", "--class", "xterm", "windowfocus", "--sync"],
                                   env=self.environment, capture_output=True, check=False)
            return found.returncode == 0

        until(typed, "xterm has the focus")
        subprocess.run(["xdotool", "key", *keys], env=self.environment, check=True)

    def close(self):
        for process in (self.xterm, self.display):
            process.terminate()
            process.wait()


@needs("bash")
class RealTerminals(unittest.TestCase):
    def setUp(self):
        self.place = tempfile.TemporaryDirectory(prefix="velmo-real-")
        self.addCleanup(self.place.cleanup)
        self.addCleanup(self.end_host)
        self.file = lambda name: f"{self.place.name}/{name}"
        self.environment = {"HOME": self.place.name, "LANG": "C.UTF-8",
                            "PATH": os.environ["PATH"], "SHELL": "/bin/bash", "TERM": "xterm-256color"}
        subprocess.run([PROGRAM, "start", "--detached", "--name", "work", "--", "bash"],
                       env=self.environment, cwd=self.place.name, check=True, capture_output=True)

    def end_host(self):
        with open(self.file(".velmo/velmo-term/host.lock")) as file:
            os.kill(int(file.read()), 15)
        until(lambda: not os.path.exists(self.file(".velmo/velmo-term/control.sock")), "the host ends")

    def open(self, terminal, script):
        opened = terminal(self, script)
        self.addCleanup(opened.close)
        return opened

    def stream(self, line):
        """Types a line without a terminal."""
        until(lambda: self.listed()["bytesOut"] > 0, "the prompt")
        data = (line + "\r").encode()
        subprocess.run([PROGRAM, "stream", "work"], env=self.environment, check=True, capture_output=True,
                       input=b"\1" + len(data).to_bytes(4, "big") + data)

    def listed(self):
        told = subprocess.run([PROGRAM, "list", "--json"], env=self.environment, check=True,
                              capture_output=True).stdout
        return json.loads(told)[0]

    def content(self, name):
        try:
            with open(self.file(name), "rb") as file:
                return file.read()
        except FileNotFoundError:
            return b""

    def run_asking_program(self):
        """The program has asked its terminal everything, notes what is typed, and asks once more upon a
        signal: that answer comes after all others. Until a viewer comes, the host answers some of it."""
        with open(self.file("program"), "w") as file:
            file.write("stty raw -echo\n"
                       "(trap \"printf '\\033[5n'\" USR1; echo $BASHPID >pid; while kill -0 $$; do sleep 0.1; done) &\n"
                       f"printf '{QUERIES}'\n"
                       "printf '\\033[>4;2m\\033[4 q\\033[3;9r\\033[4h'\n"
                       "touch asked; cat >typed\n")
        self.stream(". ./program")
        until(lambda: os.path.exists(self.file("asked")) and self.content("pid").strip(), "it has asked")
        until(lambda: self.listed()["viewers"] == 0, "no viewer is left")
        os.kill(int(self.content("pid")), signal.SIGUSR1)
        # The host answers it, behind all that was asked before if it answers that at all.
        until(lambda: self.content("typed").endswith(b"c\033[0n") or self.content("typed") == b"\033[0n",
              "the host's answers")

    def check_that_a_replay_types_nothing(self, terminal):
        self.run_asking_program()
        before = self.content("typed")
        self.open(terminal, f"{PROGRAM} attach work")
        until(lambda: self.listed()["viewers"] == 1, "it is attached")
        os.kill(int(self.content("pid")), signal.SIGUSR1)
        until(lambda: self.content("typed")[len(before):], "an answer")
        self.assertEqual(self.content("typed")[len(before):], b"\033[0n")

    @needs("tmux")
    def test_a_replay_types_nothing_from_tmux(self):
        self.check_that_a_replay_types_nothing(Tmux)

    @needs("Xvfb", "xterm")
    def test_a_replay_types_nothing_from_xterm(self):
        self.check_that_a_replay_types_nothing(Xterm)

    @needs("tmux")
    def test_tmux_is_given_back_as_it_was(self):
        self.run_asking_program()
        state = ("#{insert_flag} #{origin_flag} #{wrap_flag} #{scroll_region_upper} #{scroll_region_lower} "
                 "#{alternate_on} #{keypad_cursor_flag}")
        terminal = self.open(Tmux, f"{PROGRAM} attach work; exec sleep 1000")
        shown = lambda: terminal.tmux("display-message", "-p", state).strip()
        until(lambda: shown() == "1 0 1 2 8 0 0", lambda: "the program's state: " + shown())
        terminal.key("ctrl+bracketright", "d")
        until(lambda: shown() == "0 0 1 0 23 0 0", lambda: "the terminal's own state: " + shown())

    @needs("Xvfb", "xterm", "xdotool")
    def test_an_xterm_with_keys_spelt_out_detaches_and_is_given_back(self):
        self.run_asking_program()
        before = self.content("typed")
        terminal = self.open(Xterm, f"{PROGRAM} attach work; echo $? >ended; stty raw; head -c 1 >after; "
                                    "touch done; exec sleep 1000")
        until(lambda: self.listed()["viewers"] == 1, "it is attached")
        os.kill(int(self.content("pid")), signal.SIGUSR1)
        until(lambda: self.content("typed")[len(before):].endswith(b"0n"), "the replay is shown")
        terminal.key("ctrl+g")
        until(lambda: b"\033[27;5;103~" in self.content("typed"), "the program gets keys spelt out")
        terminal.key("ctrl+bracketright", "d")
        until(lambda: self.content("ended"), "it has detached")
        self.assertEqual(self.content("ended"), b"0\n")
        until(lambda: terminal.key("ctrl+g") or os.path.exists(self.file("done")), "a key")
        self.assertEqual(self.content("after"), b"\a")


unittest.main()
