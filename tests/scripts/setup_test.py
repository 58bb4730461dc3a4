#!/usr/bin/env python3
"""Runs scripts/setup on systems made of stand-ins that lack something and in clones, and the hook that it
installs there."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

SETUP = pathlib.Path(__file__).resolve().parent.parent.parent / "scripts/setup"
HOOK = SETUP.parent / "hooks/commit-msg"
REAL = "bash cat dirname env grep sed sort true xargs".split()
# Knows std::expected, and finds every header but one.
COMPILER = """case "$*$(cat)" in *'<version>') echo '#define __cpp_lib_expected 202202L';;
*'<uriparser/Uri.h>'*) exit 1;; esac"""

DEBIAN = {"uname": "echo Linux", "id": "echo 0", "c++": COMPILER, "cmake": "echo cmake version 3.25.1",
          "dpkg-query": 'for name in "$@"; do echo "/$name installed/"; done', "apt-get": 'echo "$@" >&2'}
LACKING = DEBIAN | {"dpkg-query": "echo '/g++ installed/'"}
USER = LACKING | {"id": "echo 1000"}
MAC = {"uname": "echo Darwin", "xcode-select": "", "brew": '[ "$1" = list ]', "c++": COMPILER,
       "cmake": "echo cmake version 4.0.0"}
OTHER = {"uname": "echo Linux", "c++": COMPILER, "cmake": "echo cmake version 3.30.2", "ninja": ""}

INSTALLED = "install .*--no-install-recommends cmake ninja-build .* procps"
OLD = {"c++": "echo g++ 11.4.0"}
TOO_OLD = r"g\+\+ 11\.4\.0 is too old, .* GCC 12 .*, Clang 19, .* CXX may name it\."
NOT_RUN = r"c\+\+ can't be run\. Install GCC 12 .*"
LACKED = r"Missing: cmake ninja-build .* procps\. "

# What it is, what it consists of, the jobs, CXX, the exit status and the last line.
CASES = [
    ("all is there", DEBIAN, "build test clang", "", 0, ""),
    ("all is there for a user", DEBIAN | {"id": "echo 1000"}, "build test", "", 0, ""),
    ("root installs", LACKING, "build test", "", 0, INSTALLED),
    ("a user installs", USER | {"sudo": '"$@"; echo by sudo >&2'}, "build test", "", 0, "by sudo"),
    ("one list is out of reach", LACKING | {"apt-get": '[ $1 = install ] && echo "$@" >&2'}, "build test", "", 0,
     INSTALLED),
    ("no sudo", USER, "build test", "", 1, LACKED + "There is no sudo; as root, run: scripts/setup build test"),
    ("sudo refuses", USER | {"sudo": "exit 1"}, "build test", "", 1, LACKED + "sudo refuses; as root, run: .*"),
    ("no network", LACKING | {"apt-get": "exit 100"}, "build test", "", 1, LACKED + r".* check the network, .*"),
    ("packages unknown", LACKING | {"apt-get": "[ $1 = update ]"}, "build test", "", 1, LACKED + ".* Debian 12 .*"),
    ("old compiler", DEBIAN | OLD, "build", "", 1, TOO_OLD),
    ("old compiler, not used", DEBIAN | OLD, "clang", "", 0, ""),
    ("old compiler, another named", DEBIAN | OLD | {"new": COMPILER}, "build", "new -m64", 0, ""),
    ("old compiler named", DEBIAN | {"old": "echo g++ 11.4.0"}, "build", "old", 1, TOO_OLD),
    ("no compiler", DEBIAN | {"c++": None}, "build", "", 1, NOT_RUN),
    ("no such compiler", DEBIAN, "build", "/no/c++", 1, "/no/" + NOT_RUN),
    ("old cmake", DEBIAN | {"cmake": "echo cmake version 3.9.6"}, "build", "", 1,
     r"cmake 3\.9\.6 is too old\. Install CMake 3\.\d+ or later\."),
    ("no cmake", DEBIAN | {"cmake": None}, "build", "", 1, r"cmake can't be run\. .*"),
    ("Mac", MAC, "build test", "", 0, ""),
    ("Mac installs", MAC | {"brew": '[ $1 = install ] && echo "$@"'}, "build", "", 0, "install --quiet asio"),
    ("Mac without tools", MAC | {"xcode-select": "exit 2"}, "build", "", 1, "Missing: .*xcode-select --install"),
    ("Mac without brew", MAC | {"brew": None}, "build", "", 1, "Missing: brew. Install Homebrew, .*"),
    ("Mac without network", MAC | {"brew": "exit 1"}, "build", "", 1, "Missing: cmake. .* network.*"),
    ("old Mac", MAC | OLD, "build", "", 1, TOO_OLD),
    ("other system, all is there", OTHER, "build", "", 0, ""),
    ("other system, no ninja", OTHER | {"ninja": None}, "build", "", 1, r"Missing: ninja\. Neither .* by hand\."),
    ("other system, a header and programs are not there", OTHER, "build test", "", 1,
     r"Missing: python3 uriparser/Uri\.h tmux vim less zsh fish ps\. Neither apt-get nor brew .*"),
    ("other system, no compiler", OTHER | {"c++": None}, "build", "", 1, NOT_RUN),
    ("other system, old compiler, not used", OTHER | OLD | {f"clang{tool}-19": "" for tool in ("++", "-format", "-tidy")}
     | {"llvm-cov-19": ""}, "clang", "", 0, ""),
    ("other system, for a Mac", OTHER, "build macos", "", 1, r"Missing: apt-get\. .*"),
]

# What a folder is, how it became so, where in it the project lies, and the hooks that git uses then.
CLONES = [
    ("a clone", "git init -q .", ".", "scripts/hooks"),
    ("a clone with a hook", "git init -q .; touch .git/hooks/pre-push; chmod +x .git/hooks/pre-push", ".", ""),
    ("a clone with a folder for hooks", "git init -q .; git config core.hooksPath mine", ".", "mine"),
    ("a part of another clone", "git init -q .; mkdir part", "part", ""),
    ("no clone", "", ".", ""),
]

# A message, and whether it is refused.
MESSAGES = [
    ("s" * 72, False), ("s" * 73, True), ("\u00fc" * 72, False), ("\u00fc" * 73, True),
    ("Short\n\n" + "body " * 20, False), ("\n# " + "of git " * 12 + "\nShort", False), ("", False),
    ("\n" + "s" * 73 + "\n# of git", True), ("fixup! squash! " + "s" * 72, False), ("fixup! " + "s" * 73, True),
]


class Setup(unittest.TestCase):
    def test_the_last_line_says_what_is_missing(self):
        for name, tools, jobs, cxx, status, last in CASES:
            with self.subTest(name), tempfile.TemporaryDirectory() as folder:
                for tool in REAL:
                    pathlib.Path(folder, tool).symlink_to(shutil.which(tool))
                for tool in filter(lambda tool: tools[tool] is not None, tools):
                    path = pathlib.Path(folder, tool)
                    path.write_text(f"#!/bin/sh\n{tools[tool]}\n")
                    path.chmod(0o755)
                done = subprocess.run([SETUP, *jobs.split()], env={"PATH": folder, "CXX": cxx}, text=True,
                                      stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                self.assertEqual(done.returncode, status, done.stdout)
                self.assertRegex((done.stdout.splitlines() or [""])[-1], f"^{last}$")

    def test_a_clone_uses_the_hooks_of_the_project_unless_it_has_some(self):
        for name, make, part, used in CLONES:
            with self.subTest(name), tempfile.TemporaryDirectory() as folder:
                environment = os.environ | {"HOME": folder, "GIT_CEILING_DIRECTORIES": os.path.dirname(folder)}
                for outer in [each for each in environment if each.startswith("GIT_") and "CEILING" not in each]:
                    del environment[outer] # where a hook runs the tests
                subprocess.run(make, shell=True, check=True, cwd=folder, env=environment)
                scripts = pathlib.Path(folder, part, "scripts")
                scripts.mkdir()
                shutil.copy(SETUP, scripts)
                for _ in range(2):
                    done = subprocess.run([scripts / "setup"], env=environment, stdout=subprocess.PIPE,
                                          stderr=subprocess.STDOUT)
                    self.assertEqual((done.returncode, done.stdout), (0, b""))
                found = subprocess.run(["git", "config", "core.hooksPath"], cwd=folder, env=environment,
                                       stdout=subprocess.PIPE, text=True)
                self.assertEqual(found.stdout.strip(), used)

    def test_a_subject_that_is_too_long_is_refused(self):
        for message, is_refused in MESSAGES:
            with self.subTest(message), tempfile.NamedTemporaryFile() as file:
                pathlib.Path(file.name).write_text(message, encoding="utf-8")
                done = subprocess.run([HOOK, file.name], stderr=subprocess.PIPE)
                self.assertEqual((done.returncode, done.stderr != b""), (int(is_refused), is_refused))


if __name__ == "__main__":
    unittest.main(verbosity=2)
