#!/usr/bin/env python3
"""Runs the scripts of packaging/macos with stand-ins for a Mac's tools; with a name, the tests of
that class only."""

import os
import pathlib
import plistlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SCRIPTS = ROOT / "packaging/macos"
TOOLS = ("launchctl pmset codesign plutil install otool xattr id sleep cp mkdir mktemp rm sw_vers sysctl "
         "pkgbuild productbuild productsign xcrun security ioreg sudo uname uuidgen tail "
         "plays-VelmoPowerDaemon plays-velmo-power plays-knock").split()
LABEL = "io.velmo.host.power"
DAEMON = "Library/PrivilegedHelperTools/VelmoPowerDaemon"
CLIENT = "usr/local/bin/velmo-power"
SESSIONS = "usr/local/bin/velmo-session"
PHONE = "usr/local/bin/velmo-phone"
PAGES = tuple(page.format(program) for program in ("velmo-power", "velmo-session", "velmo-phone") for page in (
    "man/man1/{}.1", "bash-completion/completions/{}", "zsh/site-functions/_{}",
    "fish/vendor_completions.d/{}.fish"))
PLIST = f"Library/LaunchDaemons/{LABEL}.plist"
RULE = f"etc/newsyslog.d/{LABEL}.conf"
RECORD = "var/db/velmo/power-daemon.json"
LOG = f"var/log/{LABEL}.log"


class Mac:
    """A Mac in a folder of its own, and beside it a folder `built` with fresh executables."""

    def __init__(self, folder, daemon_signed="VelmoPowerDaemon TEAM1", client_signed="VelmoHelper TEAM1",
                 session_signed="VelmoSession TEAM1", phone_signed="VelmoHelper TEAM1"):
        self.folder = pathlib.Path(folder)
        for name in ("bin", "root/Library", "root/var/log", "built"):
            (self.folder / name).mkdir(parents=True)
        for tool in TOOLS:
            (self.folder / "bin" / tool).symlink_to(ROOT / "lab/mac-tools/tool.sh")
        self.put("clock", "0\n").put("calls", "").put("property", "0\n").put("readings", "0\n")
        for page in PAGES:
            self.put(f"share/{page}", page)
        for name, signed in (("VelmoPowerDaemon", daemon_signed), ("velmo-power", client_signed),
                             ("velmo-session", session_signed), ("velmo-phone", phone_signed)):
            identifier, _, team = signed.partition(" ")
            self.put(f"built/{name}", f'#!/bin/sh\nexec "$MAC_TOOLS/bin/plays-{name}" "$@"\n# Marked=yes\n' + (
                f"# Identifier={identifier}\n# TeamIdentifier={team}\n" if identifier else ""), 0o755)

    def put(self, name, text, mode=0o644):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        path.chmod(mode)
        return self

    def get(self, name):
        path = self.folder / name
        return path.read_text().strip() if path.exists() else None

    def with_pages_of_one_program(self):
        """For what is done at every step: the other programs' pages take the same steps."""
        for page in PAGES[4:]:
            (self.folder / "share" / page).unlink()
        return self

    def with_older(self, loaded):
        self.put(f"root/{DAEMON}", "old daemon", 0o755).put(f"root/{PLIST}", "old list")
        self.put("root/usr/local/bin/velmo-power", "old client", 0o711)
        self.put("root/usr/local/bin/velmo-session", "old sessions", 0o711)
        self.put(f"root/{PHONE}", "old bridge", 0o711)
        self.put(f"root/usr/local/share/{PAGES[0]}", "old page")
        (self.folder / "root/usr/local/bin").chmod(0o775)
        return self.put("job", "7\n").put("started", "0\n") if loaded else self.put("disabled", "")

    def run(self, script, *arguments, fail=None, **environment):
        self.put("calls", "")
        (self.folder / "left").unlink(missing_ok=True)
        if fail:
            self.put("left", f"{fail}\n")
        return subprocess.run(
            [SCRIPTS / script, *map(str, arguments)], capture_output=True, text=True, cwd=self.folder,
            env={"PATH": f"{self.folder}/bin:{os.environ['PATH']}", "REAL_PATH": os.environ["PATH"],
                 "MAC_TOOLS": str(self.folder), "DESTDIR": str(self.folder / "root"), **environment})

    def calls(self):
        return self.get("calls").splitlines()

    def state(self):
        """All that a script may change, times and process ids aside."""
        files = {str(path.relative_to(self.folder)):
                 (path.stat().st_mode, path.read_text() if path.is_file() else "")
                 for path in (self.folder / "root").rglob("*")}
        return files, self.get("sleep") or "0", self.get("job") is not None, self.get("disabled") is not None


class ScriptsTest(unittest.TestCase):
    def mac(self, **arguments):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        return Mac(folder.name, **arguments)

    def assertInstalled(self, mac):
        for name, place, mode in (("VelmoPowerDaemon", DAEMON, 0o755), ("velmo-power", CLIENT, 0o755),
                                  ("velmo-session", SESSIONS, 0o755), ("velmo-phone", PHONE, 0o755)):
            installed = mac.folder / "root" / place
            self.assertTrue(installed.read_text().startswith("#!/bin/sh\n"))
            self.assertNotIn("Marked", installed.read_text())
            self.assertEqual(installed.stat().st_mode & 0o777, mode)
        for place in (PLIST, RULE):
            installed = mac.folder / "root" / place
            self.assertEqual(installed.read_text(), (SCRIPTS / installed.name).read_text())
        for page in PAGES:
            self.assertEqual(mac.get(f"root/usr/local/share/{page}"), mac.get(f"share/{page}"))
        self.assertTrue(mac.get("job"))
        self.assertIsNone(mac.get("disabled"))
        self.assertEqual([path.name for path in (mac.folder / "root/Library").glob("Velmo*")], [])


class Installing(ScriptsTest):
    def assertDoneWholeOrNotAtAll(self, fresh, bin_mode, every_step):
        mac = fresh()
        done = mac.run("install", "built")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertInstalled(mac)
        self.assertEqual((mac.folder / "root/usr/local/bin").stat().st_mode & 0o777, bin_mode)
        calls = mac.calls()
        failures = 0
        first_change = next(i for i, call in enumerate(calls, 1) if "bootout" in call)
        for number in range(first_change if every_step else len(calls) - 1, len(calls) + 1):
            call = calls[number - 1]
            with self.subTest(fails=call):
                mac = fresh()
                as_it_was = mac.state()
                done = mac.run("install", "built", fail=number)
                if done.returncode == 0:
                    self.assertRegex(call, "^(launchctl (bootout|print) |rm -rf )")
                    if not call.startswith("rm"):
                        self.assertInstalled(mac)
                else:
                    failures += 1
                    self.assertEqual(mac.state(), as_it_was, done.stderr)
        self.assertGreaterEqual(failures, 8 if every_step else 1, calls)

    def test_a_first_installation_is_done_whole_or_not_at_all_whichever_step_fails(self):
        self.assertDoneWholeOrNotAtAll(lambda: self.mac().with_pages_of_one_program(), bin_mode=0o755,
                                       every_step=True)

    def test_an_update_is_done_whole_or_not_at_all_whichever_step_fails(self):
        self.assertDoneWholeOrNotAtAll(lambda: self.mac().with_pages_of_one_program().with_older(loaded=True),
                                       bin_mode=0o775, every_step=True)

    def test_a_failed_update_leaves_a_disabled_service_disabled(self):
        self.assertDoneWholeOrNotAtAll(lambda: self.mac().with_older(loaded=False), bin_mode=0o775, every_step=False)


class Others(ScriptsTest):
    def test_programs_with_unfit_signatures_are_not_installed(self):
        signed = {"daemon_signed": "VelmoPowerDaemon TEAM1", "client_signed": "VelmoHelper TEAM1"}
        for change, complaint in (
                ({"daemon_signed": ""}, "VelmoPowerDaemon is not signed properly|not signed by a team"),
                ({"daemon_signed": "VelmoPowerDaemon not set"}, "not signed by a team"),
                ({"daemon_signed": 'VelmoPowerDaemon T" or "'}, "not signed by a team"),
                ({"daemon_signed": "Other TEAM1"}, "VelmoPowerDaemon does not satisfy"),
                ({"client_signed": "VelmoHelper TEAM2"}, "velmo-power does not satisfy"),
                ({"client_signed": ""}, "velmo-power is not signed properly"),
                ({"client_signed": "VelmoPowerDaemon TEAM1"}, "velmo-power does not satisfy"),
                ({"session_signed": ""}, "velmo-session is not signed properly"),
                ({"session_signed": "VelmoSession TEAM2"}, "velmo-session does not satisfy"),
                ({"phone_signed": ""}, "velmo-phone is not signed properly"),
                ({"phone_signed": "VelmoSession TEAM1"}, "velmo-phone does not satisfy")):
            mac = self.mac(**{**signed, **change})
            as_it_was = mac.state()
            done = mac.run("install", "built")
            self.assertEqual(done.returncode, 1, change)
            self.assertRegex(done.stderr, complaint)
            self.assertEqual(mac.state(), as_it_was)
        ad_hoc = self.mac(daemon_signed="VelmoPowerDaemon not set", client_signed="VelmoHelper not set",
                          session_signed="VelmoSession not set", phone_signed="VelmoHelper not set")
        self.assertEqual(ad_hoc.run("install", "--without-team", "built").returncode, 0)
        self.assertInstalled(ad_hoc)
        without = self.mac()
        (without.folder / "built/velmo-phone").unlink()
        for script in (["sign", "Developer ID Application: Somebody (TEAM9)"], ["install"]):
            self.assertEqual(without.run(*script, "built").returncode, 0)
        self.assertFalse((without.folder / "root" / PHONE).exists())
        for script, arguments, environment in (("install", [], {}), ("install", ["a", "b"], {}),
                                               ("install", ["built"], {"STANDS_FOR_UID": "501"}),
                                               ("uninstall", [], {"STANDS_FOR_UID": "501"})):
            self.assertEqual(self.mac().run(script, *arguments, **environment).returncode, 1)

    def test_a_daemon_that_does_not_end_is_left_as_it_is(self):
        for script in ("install", "uninstall"):
            mac = self.mac().with_older(loaded=True)
            as_it_was = mac.state()
            done = mac.run(script, *(["built"] if script == "install" else []), HANGS="yes")
            self.assertEqual(done.returncode, 1)
            self.assertEqual(mac.state(), as_it_was)

    def test_removal_never_leaves_sleep_disabled_on_the_daemons_behalf(self):
        ours, others, damaged = '{"previous":false,"since":1}', '{"previous":true,"since":1}', "{"
        for record, sleep, after, removed, deaf in (
                (None, "0", "0", True, ""), (None, "1", "1", True, ""), (ours, "1", "0", True, ""),
                (others, "1", "1", True, ""), (damaged, "1", "0", True, ""), (ours, "1", "1", False, "yes")):
            with self.subTest(record=record, sleep=sleep):
                mac = self.mac().with_older(loaded=True).put("sleep", sleep)
                mac.put(f"root/{LOG}", "").put(f"root/{LOG}.0", "")
                if record:
                    mac.put(f"root/{RECORD}", record)
                done = mac.run("uninstall", DEAF=deaf)
                self.assertEqual(done.returncode == 0, removed, done.stderr)
                self.assertEqual(mac.get("sleep"), after)
                self.assertEqual("sudo pmset" in done.stdout, removed and after == "1")
                for place in (DAEMON, CLIENT, SESSIONS, PHONE, PLIST, LOG, LOG + ".0", "usr/local/share/" + PAGES[0]):
                    self.assertEqual((mac.folder / "root" / place).exists(), not removed, place)
        for number in range(1, 31):
            mac = self.mac().with_older(loaded=True).put("sleep", "1").put(f"root/{RECORD}", ours)
            done = mac.run("uninstall", fail=number)
            self.assertTrue(mac.get("sleep") == "0" or mac.get(f"root/{RECORD}"))
        self.assertEqual(done.returncode, 0, "there are more steps")

    def test_signing_refuses_what_loads_a_library_that_is_not_the_systems(self):
        identity = "Developer ID Application: Somebody (TEAM9)"
        mac = self.mac(daemon_signed="", client_signed="")
        self.assertEqual(mac.run("sign", identity, "built").returncode, 0)
        for identifier, name in (("VelmoHelper", "velmo-power"), ("VelmoSession", "velmo-session"),
                                 ("VelmoHelper", "velmo-phone")):
            self.assertIn(f"codesign --force --timestamp --options runtime --sign {identity} "
                          f"--identifier {identifier} built/{name}", mac.calls())
        self.assertEqual(mac.run("install", "built").returncode, 0)
        for fail in range(1, 10):
            mac = self.mac(daemon_signed="", client_signed="")
            self.assertNotEqual(mac.run("sign", identity, "built", fail=fail).returncode, 0, fail)
        mac = self.mac(daemon_signed="", client_signed="")
        mac.put("built/velmo-power", "# Loads=/opt/homebrew/lib/libsimdjson.dylib\n")
        self.assertEqual(mac.run("sign", identity, "built").returncode, 1)
        self.assertFalse([call for call in mac.calls() if call.startswith("codesign")])
        mac = self.mac(daemon_signed="", client_signed="")
        self.assertEqual(mac.run("sign", "-", "built").returncode, 0)
        self.assertEqual(mac.run("install", "built").returncode, 1)

    def test_verifying_a_mac_leaves_it_unchanged(self):
        def verify(mac, *arguments, **environment):
            self.addCleanup(lambda: mac.folder.joinpath("bin/plays-velmo-power").unlink())
            mac.put("built/knock", '#!/bin/sh\nexec "$MAC_TOOLS/bin/plays-knock"\n', 0o755)
            for folder in ("Library/PrivilegedHelperTools", "Library/LaunchDaemons", "etc/newsyslog.d",
                           "usr/local/bin", "var/db"):
                (mac.folder / "root" / folder).mkdir(parents=True)
            as_it_was = mac.state()
            done = mac.run("verify", *arguments, "built", **environment)
            self.assertEqual(mac.state(), as_it_was, done.stdout + done.stderr)
            return done, re.findall(r"^(ok|not here|FAILED)", done.stdout, re.M)

        for setting in None, "0", "1":  # None: this Mac has never disabled sleep
            mac = self.mac()
            if setting:
                mac.put("sleep", setting)
            done, verdicts = verify(mac)
            self.assertEqual((done.returncode, verdicts), (0, ["ok"] * 17), done.stdout)
        done, verdicts = verify(self.mac(daemon_signed=""), DEAF="yes")
        self.assertEqual((done.returncode, verdicts.count("not here")), (0, 3), done.stdout)
        mac = self.mac(daemon_signed="")
        mac.put("built/VelmoPowerDaemon", "#!/bin/sh\n", 0o755)
        done, verdicts = verify(mac)
        self.assertEqual((done.returncode, verdicts.count("FAILED")), (1, 1), done.stdout)
        self.assertIn("FAILED", mac.get("velmo-report.txt"))
        self.assertEqual(verify(self.mac(), "--start", STANDS_FOR_UID="501")[0].returncode, 0)
        installed = self.mac().with_older(loaded=True)
        self.assertEqual(installed.run("verify", "built").returncode, 1)

    def test_the_delay_of_pmset_is_measured_and_the_setting_put_back(self):
        measure = ROOT / "scripts/measure-pmset-delay"
        for before in ("0", "1"):
            mac = self.mac().put("sleep", before).put("property", before + "\n")
            done = mac.run(measure, 3, LATE="2")
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertRegex(done.stdout, "3 changes;(.|\n)*least +[1-9](.|\n)*most")
            self.assertEqual(mac.get("sleep"), before)
            self.assertEqual(sum(call.startswith("ioreg") for call in mac.calls()), 9)
            steps = len(mac.calls())
            for number in range(2, steps + 1, 2 if before == "0" else 7):
                done = mac.run(measure, 3, fail=number, LATE="2")
                self.assertEqual(done.returncode == 0, number == steps)
                self.assertEqual(mac.get("sleep"), before)
        mac = self.mac().put(f"root/{RECORD}", "{")
        self.assertEqual(mac.run(measure).returncode, 1)
        self.assertEqual(mac.calls(), [])

    def test_a_package_brings_what_installs_it(self):
        for environment, shipped in (({}, False), ({"VELMO_INSTALLER_IDENTITY": "Developer ID Installer: S",
                                                    "VELMO_NOTARY_PROFILE": "velmo"}, True)):
            mac = self.mac()
            done = mac.run("package", "built", **environment)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertTrue((mac.folder / "built/Velmo.pkg").exists())
            for number in range(2, 10):
                self.assertNotEqual(self.mac().run("package", "built", fail=number, **environment).returncode, 0)
            tools = [call.split()[0] for call in mac.calls() if call.startswith(("p", "x"))]
            self.assertEqual(tools, ["pkgbuild", "productbuild"] + ["productsign", "xcrun", "xcrun"] * shipped)
            done = mac.run(mac.folder / "unpacked/postinstall")
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertInstalled(mac)
        self.assertNotEqual(self.mac(daemon_signed="").run("package", "built").returncode, 0)

    def test_a_hosted_mac_gets_the_certificate_into_a_keychain_of_its_own(self):
        mac = self.mac()
        done = mac.run("import-certificate", VELMO_CERTIFICATE="Y2VydA==", VELMO_CERTIFICATE_PASSWORD="p w")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual([call.split()[1] for call in mac.calls() if call.startswith("security")],
                         ["create-keychain", "set-keychain-settings", "unlock-keychain", "import",
                          "set-key-partition-list", "list-keychains"])
        self.assertRegex(mac.get("calls"), "-P p w -T /usr/bin/codesign(.|\n)*\nrm -f /")

    def test_the_log_is_shown_with_times(self):
        shown = self.mac().run("follow-log").stdout.splitlines()
        self.assertEqual(len(shown), 2)
        for line, said in zip(shown, ("one", "two")):
            self.assertRegex(line, rf"^\d{{4}}-\d\d-\d\d \d\d:\d\d:\d\d VelmoPowerDaemon: {said}$")

    def test_every_documented_command_is_tested(self):
        """Of the manual and the workflow: a script or verb that exists, or a Mac's tool called as a
        script of ours calls it, each of which the tests run over the stand-ins."""
        page = (ROOT / "docs/operations.md").read_text()
        workflow = (ROOT / ".github/workflows/check.yml").read_text()
        commands = re.findall(r"^    (\S.*)$", page, re.M) + re.findall(r" run: ([^|\n].*)", workflow)
        commands += "".join(re.findall(r" run: \|\n((?: {10}.*\n)+)", workflow)).splitlines()
        self.assertGreater(len(commands), 30)
        scripts = "\n".join(
            re.sub(r"^\s*#.*", "", path.read_text(), flags=re.M)
            for folder in (SCRIPTS, ROOT / "scripts") for path in folder.iterdir()
            if path.is_file() and path.suffix in ("", ".sh"))
        makefile = (ROOT / "Makefile").read_text()
        power = (ROOT / "tools/velmo-power/main.cpp").read_text()
        # Of any system, and what asks a person for a password.
        known = {"cat", "tail", "grep", "rm", "apt-get", "git", "chmod"}
        asks = {"xcrun notarytool store-credentials"}
        for command in commands:
            for part in re.split(r" \| | && ", command.partition(" #")[0]):
                words = [word for word in part.split() if word != "sudo" and not re.match(r"[A-Z_]+=", word)]
                with self.subTest(command=part):
                    if words[0] == "make":
                        self.assertRegex(makefile, rf"(?m)^{words[1]}:")
                    elif words[0] == "velmo-power":
                        self.assertTrue(words[1] in power)
                    elif "/" in words[0]:
                        self.assertTrue(os.access(ROOT / words[0], os.X_OK))
                    elif words[0] not in known and " ".join(words[:3]) not in asks:
                        self.assertTrue(" ".join(words[:2]) in scripts)

    def test_the_lists_agree_with_scripts_and_daemon(self):
        listed = plistlib.loads((SCRIPTS / f"{LABEL}.plist").read_bytes())
        self.assertEqual(listed["Label"], LABEL)
        self.assertEqual(listed["ProgramArguments"], ["/" + DAEMON])
        self.assertEqual(listed["MachServices"], {LABEL: True})
        self.assertEqual(listed["StandardErrorPath"], "/" + LOG)
        self.assertNotIn("AbandonProcessGroup", listed)
        rules = [line.split() for line in (SCRIPTS / f"{LABEL}.conf").read_text().splitlines()
                 if not line.startswith("#")]
        # Flag N and nothing after it: no pid file, no signal.
        self.assertEqual([(rule[0], rule[6:]) for rule in rules], [("/" + LOG, ["N"])])


if __name__ == "__main__":
    unittest.main(verbosity=2)
