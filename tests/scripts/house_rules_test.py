#!/usr/bin/env python3
"""Breaks each rule of scripts/check-rooms and scripts/count-lines in a small tree, which must be refused."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

SCRIPTS = pathlib.Path(__file__).resolve().parent.parent.parent / "scripts"

ROOMS = "core/support:\nsessions: core/support\nplatform/posix: core/support\n"
LAYERS = "## Rooms\n\n```\n  1   platform/posix sessions\n  0   core/support\n```\n"
SOUND = {
    "scripts/rooms": ROOMS,
    "docs/architecture.md": LAYERS,
    "CMakeLists.txt": "add_library(all core/support/A.cpp sessions/B.cpp platform/posix/C.cpp )\n",
    "core/support/A.h": "#include <vector>\n",
    "core/support/A.cpp": '#include "core/support/A.h"\n#include <simdjson.h>\n',
    "sessions/B.cpp": '#include "core/support/A.h"\n',
    "platform/posix/C.cpp": '#include "core/support/A.h"\n#include <unistd.h>\n#ifdef __linux__\n#endif\n',
}
SYSTEM = "portable code may not include:"

# What is broken, the files that are other, and what is said.
ROOM_CASES = [
    ("nothing", {}, ""),
    ("an include that no row allows", {"sessions/B.cpp": '#include "core/support/A.h"\n#include "platform/posix/D.h"\n',
                                       "platform/posix/D.h": ""}, "not allowed by scripts/rooms:"),
    ("a row that nobody needs", {"sessions/B.cpp": ""}, "allowed by scripts/rooms, and needed by nobody:"),
    ("a folder without a row", {"tools/D.h": '#include "core/support/A.h"\n'}, "no row in scripts/rooms:"),
    ("a circle", {"scripts/rooms": ROOMS.replace("support:\n", "support: sessions\n", 1), "sessions/D.h": "",
                  "core/support/A.h": '#include "sessions/D.h"\n'}, "folders that include each other in a circle:"),
    ("a source that is not built", {"sessions/D.cpp": ""}, "in no CMakeLists.txt:"),
    ("the system outside platform", {"sessions/D.h": "#if defined(__APPLE__)\n#endif\n"},
     "an #if on the system outside platform/:"),
    ("another picture", {"docs/architecture.md": LAYERS.replace("  0   ", "  2   ")},
     "docs/architecture.md draws other layers than these:"),
] + [(f"{header} in {folder}", {f"{folder}/D.h": f"#include <{header}>\n"}, SYSTEM)
     for header in ("unistd.h", "csignal", "asio.hpp")
     for folder in ("core/support", "machine", "client", "daemon", "sessions")]

# Lines of the library, of tests and of fuzz targets, and whether that is refused.
SHARES = [(70, 30, 0, False), (69, 31, 0, True), (65, 30, 5, False), (65, 29, 7, True)]


class HouseRules(unittest.TestCase):
    def run_in(self, files, script):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            subprocess.run(["git", "init", "-q", folder], check=True)
            for name, text in files.items():
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).write_text(text)
            (root / "scripts").mkdir(exist_ok=True)
            for name in (script, "sources"):
                shutil.copy(SCRIPTS / name, root / "scripts" / name)
            return subprocess.run([root / "scripts" / script], capture_output=True, text=True)

    def test_each_rule_about_rooms_refuses_what_breaks_it(self):
        for broken, files, said in ROOM_CASES:
            with self.subTest(broken):
                result = self.run_in(SOUND | files, "check-rooms")
                self.assertEqual(result.returncode, 1 if said else 0, result.stdout + result.stderr)
                self.assertIn(said, result.stdout)

    def test_too_many_tests_are_refused(self):
        scripts = sum(bool(line.strip()) and not line.lstrip().startswith("#")
                      for name in ("count-lines", "sources") for line in (SCRIPTS / name).read_text().splitlines())
        for library, tests, fuzz, refused in SHARES:
            with self.subTest(tests=tests, fuzz=fuzz):
                files = {"core/a/A.cpp": "x\n" * (library * 10 - scripts), "tests/T.cpp": "x\n" * (tests * 10),
                         "fuzz/F.cpp": "x\n" * (fuzz * 10)}
                result = self.run_in(files, "count-lines")
                self.assertEqual(result.returncode != 0, refused, result.stdout + result.stderr)


if __name__ == "__main__":
    unittest.main()
