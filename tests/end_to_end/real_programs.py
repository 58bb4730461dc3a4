#!/usr/bin/env python3
"""Real programs in terminal sessions, looked at as a person sees them: on the screen of a terminal
that tmux plays. real_programs.py PROGRAMS [unittest's arguments]; what is not installed is skipped."""

import os
import random
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)) + "/../../lab/instruments")
from terminal import until

PROGRAM = os.path.abspath(sys.argv.pop(1)) + "/velmo-session"
DETACH = ("C-]", "d")
os.environ.pop("TMUX", None)


def needs(*programs):
    missing = [program for program in programs if not shutil.which(program)]
    return unittest.skipIf(missing, f"not installed: {' '.join(missing)}")


class Screen:
    """A terminal with velmo-session in it."""

    def __init__(self, world, words, cols=80, rows=24):
        self.world = world
        self.name = f"screen{len(world.screens)}"
        world.screens.append(self)
        self.tmux("new-session", "-d", "-s", self.name, "-x", str(cols), "-y", str(rows),
                  f"{PROGRAM} {words}; echo ended with $?; exec sleep 1000")

    def tmux(self, *words):
        return subprocess.run(["tmux", "-S", self.world.socket, "-f", "/dev/null", *words],
                              env=self.world.environment, check=True, capture_output=True,
                              text=True, errors="replace").stdout

    def type(self, *keys):
        self.tmux("send-keys", "-t", self.name, *keys)

    def run(self, line):
        self.type("-l", line)
        self.type("Enter")

    def command(self, line):
        """Types a line into the shell once that has its prompt: earlier it would lose some of it."""
        self.becomes(lambda lines: lines[-1] == "ready>", "the prompt")
        self.run(line)

    def resize(self, cols, rows):
        self.tmux("resize-window", "-t", self.name, "-x", str(cols), "-y", str(rows))

    def lines(self):
        return self.tmux("capture-pane", "-p", "-t", self.name).rstrip("\n").split("\n")

    def shows(self, pattern):
        """Waits for a line of which the pattern is the whole, and returns the screen."""
        return self.becomes(lambda lines: any(re.fullmatch(pattern, line) for line in lines), pattern)

    def becomes(self, condition, what):
        return until(lambda: condition(lines := self.lines()) and lines,
                     lambda: "\n".join([what, *self.lines()]), pause=0.05)


@needs("tmux", "bash")
class RealPrograms(unittest.TestCase):
    def setUp(self):
        self.place = tempfile.TemporaryDirectory(prefix="velmo-real-")
        self.home = self.place.name + "/home"
        os.mkdir(self.home)
        self.write(".bash_profile", "PS1='ready> '\nunset HISTFILE\n")
        self.socket = self.place.name + "/tmux"
        self.environment = {"HOME": self.home, "LANG": "C.UTF-8",
                            "PATH": os.environ["PATH"], "SHELL": "/bin/bash", "TERM": "xterm-256color"}
        self.screens = []
        self.screen = Screen(self, "start --name work -- bash")
        self.screen.shows("ready>")

    def tearDown(self):
        self.screen.tmux("kill-server")
        folder = self.home + "/.velmo/velmo-term"
        with open(folder + "/host.lock") as file:
            os.kill(int(file.read()), 15)
        until(lambda: not os.path.exists(folder + "/control.sock"), "the host ends")
        self.place.cleanup()

    def write(self, name, content):
        with open(f"{self.home}/{name}", "wb") as file:
            file.write(content.encode() if isinstance(content, str) else content)

    def attach(self, *size):
        return Screen(self, "attach work", *size)

    def detach(self):
        self.screen.type(*DETACH)
        self.screen.shows("ended with 0")

    def continued(self, *size):
        """Detaches, and goes on in another window."""
        self.detach()
        self.screen = self.attach(*size)
        return self.screen

    def test_a_shell_has_its_history_its_keys_and_its_jobs(self):
        self.screen.command("echo sum $((40 + 2))")
        self.screen.shows("sum 42")
        self.screen.command("clear")
        self.screen.becomes(lambda lines: lines == ["ready>"], "the screen is clear")
        self.screen.type("Up", "Up", "Enter")
        self.screen.shows("sum 42")
        job = f"sleep {100000 + os.getpid()}"  # a name that no other process has
        self.screen.command(job)
        self.type_to(job, "C-c")
        self.screen.command(job)
        self.type_to(job, "C-z")
        self.screen.shows(f".*Stopped +{job}")
        again = self.continued()
        again.shows("sum 42")
        again.shows(f".*Stopped +{job}")
        again.command("fg")
        self.type_to(job, "C-c")
        again.command("jobs | wc -l")
        again.shows("0")
        again.command("exit 9")
        again.shows(r"The program ended \(code 9\)\.")
        again.shows("ended with 9")

    def type_to(self, job, key):
        """Once the job has the terminal: before, the key would go to the shell, which then drops what is
        typed next."""
        def has_terminal():
            every = subprocess.run(["ps", "-axo", "stat,args"], check=True, capture_output=True, text=True)
            return any("+" in state and words == job for state, words in
                       (line.split(maxsplit=1) for line in every.stdout.splitlines()))
        until(has_terminal, f"{job} has the terminal")
        self.screen.type(key)

    @needs("vim")
    def test_an_editor_is_drawn_anew_and_follows_the_window(self):
        self.write("text", "alpha\nbeta\n")
        self.screen.command("vim -u NONE -N text")
        self.screen.becomes(lambda lines: lines[:3] == ["alpha", "beta", "~"], "vim has drawn")
        self.screen.type("o", "gamma", "Escape")
        again = self.continued(80, 24)
        again.becomes(lambda lines: lines[:4] == ["alpha", "gamma", "beta", "~"], "vim draws anew")
        again.resize(60, 12)
        again.becomes(lambda lines: lines[3:11] == ["~"] * 8 and len(lines) <= 12, "vim has 12 lines")
        again.run(":q!")
        again.shows("ready>")
        self.assertNotIn("~", again.lines(), "the shell's screen is back")

    @needs("less")
    def test_a_pager_stays_on_its_page(self):
        self.write("numbers", "".join(f"line {i}\n" for i in range(1000)))
        self.screen.command("less numbers")
        self.screen.shows("line 22")
        self.screen.type("Space")
        page = self.screen.shows("line 45")
        again = self.continued()
        again.becomes(lambda lines: lines == page, "the page is shown again")
        again.resize(80, 10)
        again.becomes(lambda lines: lines[8] == "line 31" and len(lines) == 10, "less has 10 lines")
        again.type("q")
        again.shows("ready>")

    @needs("top")
    def test_a_program_that_draws_all_the_time_goes_on(self):
        self.screen.command("top -d 0.2")
        self.screen.shows(r" +PID USER.*")
        watching = self.attach(100, 30)
        clock = watching.shows(r" +PID USER.*")[0]
        watching.becomes(lambda lines: lines[0].startswith("top - ") and lines[0] != clock, "top goes on")
        watching.type("q")
        self.screen.shows("ready>")

    def test_cat_gives_back_what_is_typed(self):
        self.screen.command("echo begun; cat")
        self.screen.shows("begun")
        self.screen.run("grüße, 世界")
        self.screen.becomes(lambda lines: lines.count("grüße, 世界") == 2, "the echo, and cat's answer")
        self.screen.type("C-d")
        self.screen.shows("ready>")

    def test_a_multiplexer_runs_inside(self):
        self.screen.command("TMUX_TMPDIR=$HOME tmux -f /dev/null new-session 'cat; exit'")
        self.screen.shows(r"\[0\].*")
        self.screen.run("within")
        again = self.continued()
        again.becomes(lambda lines: lines.count("within") == 2, "its screen is shown again")
        again.resize(70, 20)
        again.becomes(lambda lines: len(lines) == 20 and lines[19].startswith("[0]"), "it follows the size")
        again.type("C-d")
        again.shows(r"\[exited\]")

    def test_characters_that_are_cut_between_writes_are_whole(self):
        second = self.attach()
        second.shows("ready>")
        self.screen.command(r"printf '\n<\342'; sleep 0.2; printf '\202'; sleep 0.2; printf '\254>\n'")
        for screen in (self.screen, second, self.attach()):
            screen.shows("<€>")

    def test_binary_output_leaves_the_session_usable(self):
        second = self.attach()
        second.shows("ready>")
        # Without what makes any terminal answer: that would be typed into the shell, as anywhere.
        noise = re.sub(rb"[\x05\x1b\x90-\x9f\x0e\x0f]", b"", random.Random(7).randbytes(300000))
        self.write("noise", noise)
        self.screen.command("cat noise; echo; echo end-$((1))")
        for screen in (self.screen, second, self.attach()):
            screen.shows("end-1")
        self.screen.command("echo fine-$((2))")
        second.shows("fine-2")
        second.type(*DETACH)
        second.shows("ended with 0")

    def test_the_screen_comes_back_whatever_came_before(self):
        """Where a MiB of output has no line feed, after a full-screen program of more than a MiB, and
        above a block that is drawn again and again."""
        fill = "head -c 1500000 /dev/zero | tr '\\0' {}"
        for line in (fill.format("'\\r'"),
                     r"printf '\e[?1049h'; " + fill.format("z") + r"; printf '\e[?1049l'",
                     r"for i in $(seq 60000); do printf '\rstep %d\e[K\n\e[1A more' $i; done"):
            self.screen.command("clear; echo ab''ove")
            self.screen.command(line + "; echo; echo end''ed")
            self.screen.shows("ended")
            self.screen.becomes(lambda lines: lines[-1] == "ready>", "the prompt")
            before = self.screen.lines()
            self.continued().becomes(lambda lines: lines == before and "above" in lines, "\n".join(before))


unittest.main()
