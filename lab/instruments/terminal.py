"""Waiting for what other processes do, and a terminal with a program in it, for scripts that test or
measure the real programs."""

import fcntl
import os
import pty
import select
import signal
import struct
import sys
import termios
import time

PATIENCE = 120  # seconds: far beyond what anything here needs
KEPT = 65536  # bytes of what a program has shown


def session_program(bin_folder):
    """The velmo-session of a build that keeps its private folder below HOME: on a Mac not the one that
    ships, which would reach the sessions of whoever runs this."""
    name = "velmo-session-under-test" if sys.platform == "darwin" else "velmo-session"
    return os.path.join(os.path.abspath(bin_folder), name)


def until(condition, what, pause=0.02):
    """Returns the condition's value once it is true. Fails when the patience ends, with the text `what`;
    a function makes that text at the end, from what is there then."""
    end = time.monotonic() + PATIENCE
    while not (value := condition()):
        if time.monotonic() > end:
            raise AssertionError("in vain: " + (what() if callable(what) else what))
        time.sleep(pause)
    return value


class Terminal:
    """A pseudo-terminal, the program that leads its session, and the last that was shown there."""

    def __init__(self, words, environment, columns=80, preexec_fn=lambda: None):
        self.shown = b""
        self.is_open = True
        self.status = None  # once `has_ended` has been true: the exit status, or the signal's number below 0
        self.pid, self.descriptor = pty.fork()
        if self.pid == 0:
            self.descriptor = 0
            self.resize(columns, 24)
            preexec_fn()
            os.execvpe(words[0], words, environment)
        os.set_inheritable(self.descriptor, False)  # else the programs of later terminals would keep it open

    def fileno(self):
        return self.descriptor

    def type(self, text):
        os.write(self.descriptor, text.encode())

    def resize(self, columns, rows):
        fcntl.ioctl(self.descriptor, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))

    def read(self, seconds=PATIENCE):
        """Reads a piece of output, and returns whether one came in time."""
        if not self.is_open or not select.select([self], [], [], seconds)[0]:
            return False
        try:
            new = os.read(self.descriptor, KEPT)
        except OSError:
            new = b""  # every program has closed the terminal
        self.is_open = bool(new)
        self.shown = (self.shown + new)[-KEPT:]
        return self.is_open

    def read_until_silent(self, seconds=0):
        while self.read(seconds):
            pass

    def text(self):
        self.read_until_silent()
        return self.shown.decode(errors="replace")

    def shows(self, text):
        """Waits for the text without a pause, so that a measurement may begin with it."""
        end = time.monotonic() + PATIENCE
        while text.encode() not in self.shown:
            if not self.is_open or time.monotonic() > end:
                raise AssertionError(f"in vain: {text!r} is shown; {self.shown[-300:]!r}")
            self.read(1)

    def has_ended(self):
        self.read_until_silent()  # a terminal that is not read keeps its programs from ending
        pid, status = os.waitpid(self.pid, os.WNOHANG)
        if pid:
            self.status = os.waitstatus_to_exitcode(status)
        return pid != 0

    def end(self):
        until(self.has_ended, lambda: f"the program ends; {self.shown[-300:]!r}")
        return self.status

    def close(self):
        if self.status is None:
            os.kill(self.pid, signal.SIGKILL)
            os.waitpid(self.pid, 0)
        os.close(self.descriptor)
