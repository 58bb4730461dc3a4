#!/usr/bin/env python3
"""The bridge of velmo-phone, before a client that sends what it likes. phone_bridge.py PROGRAMS
[unittest's arguments]. Every request goes over a socket of its own, byte by byte as written here."""

import json
import os
import re
import resource
import socket
import struct
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)) + "/../../lab/instruments")
from phone_peer import BINARY, CLOSE, PATIENCE, Peer
from terminal import until

PROGRAMS = os.path.abspath(sys.argv.pop(1))


class Bridged(unittest.TestCase):
    def setUp(self):
        self.place = tempfile.TemporaryDirectory(prefix="velmo-phone-")
        self.environment = {"HOME": self.place.name, "LANG": "C.UTF-8",
                            "PATH": os.environ["PATH"], "SHELL": "/bin/bash", "TERM": "xterm-256color"}
        with open(self.place.name + "/.bash_profile", "w") as profile:
            profile.write("PS1='ready> '\n")
        self.serve()

    def tearDown(self):
        self.stop()
        for session in json.loads(self.run_program("velmo-session", "list", "--json")):
            if "exitCode" not in session:
                self.run_program("velmo-session", "end", session["id"])
        lock = self.place.name + "/.velmo/velmo-term/host.lock"
        if os.path.exists(lock):
            with open(lock) as file:
                os.kill(int(file.read()), 15)
            until(lambda: not os.path.exists(self.place.name + "/.velmo/velmo-term/control.sock"), "the host ends")
        self.place.cleanup()

    def serve(self, *words):
        self.bridge = subprocess.Popen([PROGRAMS + "/velmo-phone", *words], env=self.environment,
                                       stdout=subprocess.PIPE, text=True)
        self.address = self.bridge.stdout.readline().strip()
        self.state = self.place.name + "/.velmo/velmo-phone"
        with open(self.state + "/phone.json") as file:
            self.port = json.load(file)["port"]
        self.origin = f"http://127.0.0.1:{self.port}"

    def stop(self):
        self.bridge.terminate()
        self.bridge.stdout.close()
        self.assertEqual(self.bridge.wait(PATIENCE), 0)

    def run_program(self, program, *words, status=0):
        done = subprocess.run([f"{PROGRAMS}/{program}", *words], env=self.environment, timeout=PATIENCE,
                              capture_output=True, text=True)
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stdout

    def phone(self, *words, **more):
        return self.run_program("velmo-phone", *words, **more)

    def ask(self, method, target, body=b"", **headers):
        with Peer(self.port) as peer:
            return peer.ask(method, target, body, **headers)

    def admit(self, address):
        with Peer(self.port) as peer:
            return peer.admit(address)

    def let_in(self, *words):
        status, headers, _ = self.admit(self.phone("admit", *words).strip())
        self.assertEqual(status, 200)
        return headers["set-cookie"].split(";")[0]

    def page(self, cookie=None):
        peer = Peer(self.port)
        self.addCleanup(peer.socket.close)
        self.assertEqual(peer.upgrade(Cookie=cookie or self.let_in()), 101)
        self.assertEqual(peer.event("hello")["device"][:3], "raw")
        return peer

    def watching(self, name="work"):
        page = self.page()
        page.call(call="start", cols=80, rows=24, name=name)
        page.call(call="watch", session=page.event("started")["session"])
        page.event("watching")
        return page

    def shows(self, page, text):
        """Waits for a text in the output, which may be cut between frames anywhere."""
        frames = shown = b""
        while text not in shown:
            kind, content = page.next()
            self.assertNotEqual(kind, CLOSE, shown[-200:])
            frames += content if kind == BINARY else b""
            while len(frames) >= 5 and len(frames) >= 5 + (size := int.from_bytes(frames[1:5], "big")):
                shown += frames[5:5 + size] if frames[0] == 1 else b"<ended>" if frames[0] == 3 else b""
                frames = frames[5 + size:]

    def run_line(self, page, line, text):
        page.message(BINARY, b"\1" + struct.pack(">I", len(line) + 1) + line + b"\r")
        self.shows(page, text)


class PhoneBridge(Bridged):
    def test_it_lets_a_browser_in_and_relays_a_session(self):
        status, headers, page = self.ask("GET", "/", Origin=None)
        self.assertEqual((status, headers["content-encoding"], page[:2]), (200, "gzip", b"\x1f\x8b"))
        self.assertIn("default-src 'none'", headers["content-security-policy"])
        self.assertEqual(headers["cache-control"], "no-cache")
        self.assertEqual(self.ask("GET", "/device")[1]["cache-control"], "no-store")
        self.assertEqual(self.ask("GET", "/", If_None_Match=headers["etag"])[0], 304)
        with Peer(self.port) as peer:
            self.assertEqual(peer.ask("HEAD", "/")[0], 200)
            self.assertEqual(peer.ask("GET", "/device")[0], 401)
        self.assertEqual(self.admit(self.address)[0], 200)
        self.assertEqual(self.admit(self.address)[0], 403)
        page = self.watching()
        self.shows(page, b"ready> ")
        self.run_line(page, b"echo $((6 * 7))", b"\r42\r\n")
        page.call(call="list")
        (session,) = page.event("sessions")["sessions"]
        self.assertEqual((session["name"], session["viewers"]), ("work", 1))
        self.run_line(page, b"exit", b"<ended>")
        page.event("gone")
        page.call(call="start", cols=80, rows=24, folder="/etc")
        self.assertEqual(page.event("refused")["reason"], "folder")

    def test_it_remembers_its_port_and_its_devices_and_nothing_that_lets_in(self):
        cookie = self.let_in()
        port = self.port
        self.assertEqual(os.stat(self.state).st_mode & 0o777, 0o700)
        with open(self.state + "/phone.json") as file:
            self.assertNotIn(cookie.split("=")[1], file.read())
        self.watching()  # in a session host that the bridge has started, and that outlives it
        self.stop()
        self.phone("admit", status=124)
        self.serve("--url", "https://mac.example.net")
        self.assertEqual(self.port, port)
        self.assertTrue(self.address.startswith("https://mac.example.net/#"))
        self.assertEqual(self.ask("GET", "/device", Cookie=cookie.replace("velmo", "__Host-velmo"),
                                  Host="mac.example.net", Origin="https://mac.example.net")[0], 200)
        self.stop()
        self.serve("--no-url")
        self.assertEqual(self.ask("GET", "/device", Cookie=cookie)[0], 200)
        self.assertEqual(self.ask("GET", "/device", Cookie=cookie, Host="mac.example.net")[0], 421)
        self.phone("revoke", "nothing", status=123)
        self.phone("revoke", status=122)
        self.phone("revoke", "raw")
        self.assertEqual(self.ask("GET", "/device", Cookie=cookie)[0], 401)
        self.let_in()
        self.stop()
        with open(self.state + "/phone.json") as file:
            record = json.load(file)
        record["devices"] = [record["devices"][0] | {"name": f"device {number}"} for number in range(30)]
        with open(self.state + "/phone.json", "w") as file:
            json.dump(record, file)
        self.serve()
        self.assertEqual(len(json.loads(self.phone("devices", "--json"))), 30)

    def test_it_says_what_keeps_it_from_serving(self):
        def says(status, text, *words, **more):
            done = subprocess.run([PROGRAMS + "/velmo-phone", *words], env=self.environment | more,
                                  timeout=PATIENCE, capture_output=True, text=True)
            self.assertEqual((done.returncode, text in done.stderr), (status, True), done.stderr)
        says(123, "serves already")
        for words in (["admit"], ["devices", "--json"], ["--help"]):
            with open("/dev/full", "w") as full:
                self.assertEqual(subprocess.call([PROGRAMS + "/velmo-phone", *words], env=self.environment,
                                                 stdout=full, stderr=subprocess.DEVNULL), 125)
        self.stop()
        says(122, "exclude each other", "--url", "https://mac", "--no-url")
        says(123, "no home folder", HOME="elsewhere")
        os.remove(self.state + "/phone.lock")
        os.mkdir(self.state + "/phone.lock")
        says(123, "can't be opened")
        os.rmdir(self.state + "/phone.lock")
        with open(self.state + "/phone.json", "w") as file:
            file.write("[]")
        says(123, "can't be read")
        os.remove(self.state + "/phone.json")
        os.mkdir(self.state + "/phone.json.new")
        says(123, "can't be written to")
        os.rmdir(self.state + "/phone.json.new")
        os.rename(self.state, self.place.name + "/elsewhere")
        os.symlink("../elsewhere", self.state)
        says(123, "is a link or a file, not a folder")
        self.phone("devices", status=124)
        os.remove(self.state)
        os.rename(self.place.name + "/elsewhere", self.state)
        says(123, "can't be made", HOME=self.place.name + "/.bash_profile")
        if os.getuid() == 0:
            os.chown(self.state, 65534, -1)
            says(123, "belongs to another user")
            os.chown(self.state, 0, -1)
        read_only = subprocess.run(["unshare", "-rm", "sh", "-c", "mount -t tmpfs -o ro none \"$1\" && exec \"$2\"", "sh",
                                    self.state, PROGRAMS + "/velmo-phone"], env=self.environment, timeout=PATIENCE,
                                   capture_output=True, text=True)
        if "velmo-phone:" in read_only.stderr:  # not so where a user may mount nothing
            self.assertEqual((read_only.returncode, read_only.stderr),
                             (123, f"velmo-phone: {self.state} can't be written to\n"))
        os.chmod(self.state, 0o755)
        self.serve()
        self.assertEqual(os.stat(self.state).st_mode & 0o777, 0o700)

    def test_it_listens_on_loopback_alone(self):
        listening = set()
        for table in ("tcp", "tcp6"):
            with open(f"/proc/{self.bridge.pid}/net/{table}") as file:
                rows = [line.split() for line in file][1:]
            listening |= {row[1] for row in rows if row[3] == "0A" and row[1].endswith(f":{self.port:04X}")}
        loopback = {"0100007F", "00000000000000000000000001000000"}  # as the kernel spells them
        self.assertIn(f"0100007F:{self.port:04X}", listening)
        self.assertEqual({address.split(":")[0] for address in listening} - loopback, set())

    def test_another_host_or_origin_and_no_cookie_are_refused(self):
        cookie = self.let_in()
        for headers, status in [
                ({"Host": "evil.example"}, 421), ({"Host": f"evil.example:{self.port}"}, 421),
                ({"Host": None}, 421), ({"Origin": "http://evil.example"}, 403),
                ({"Origin": None}, 403), ({"Origin": "null"}, 403), ({"Cookie": None}, 401),
                ({"Cookie": "velmo-phone=" + "0" * 64}, 401), ({"Sec_WebSocket_Version": "12"}, 426),
                ({}, 101)]:
            with self.subTest(headers=headers), Peer(self.port) as peer:
                self.assertEqual(peer.upgrade(**({"Cookie": cookie} | headers)), status)
        for doubled in ("Host: evil.example", "Origin: http://evil.example"):
            with self.subTest(doubled=doubled), Peer(self.port) as peer:
                peer.send(f"GET /device HTTP/1.1\r\nHost: 127.0.0.1:{self.port}\r\nOrigin: {self.origin}\r\n"
                          f"{doubled}\r\nCookie: {cookie}\r\n\r\n".encode())
                self.assertIn(peer.reply()[0], (400, 403, 421))

    def test_ten_thousand_guesses_get_nowhere(self):
        guess = json.dumps({"code": "0" * 32, "name": ""}).encode()
        answers = {}
        half = Peer(self.port)
        half.send(b"POST /admit HTTP/1.1\r\n")
        command = socket.socket(socket.AF_UNIX)
        command.settimeout(PATIENCE)
        command.connect(self.state + "/phone.sock")
        command.send(b"{")
        with Peer(self.port) as peer:
            for _ in range(10_000):
                status = peer.ask("POST", "/admit", guess, Content_Type="application/json")[0]
                answers[status] = answers.get(status, 0) + 1
        self.assertEqual(set(answers), {403, 429})
        self.assertLess(answers[403], answers[429])
        # Neither goes on, and their time is over.
        for waiting in (half.socket, command):
            self.assertEqual(waiting.recv(1), b"")
            waiting.close()

    def test_halves_and_floods_are_dropped_and_memory_stays(self):
        page = self.watching()
        self.shows(page, b"ready> ")
        silent = [Peer(self.port) for _ in range(20)]
        for peer, start in zip(silent, [b"G", b"GET / HTTP/1.1\r\n", b"POST /admit HTTP/1.1\r\nContent-Length: 9\r\n"] * 7):
            peer.send(start)
        with Peer(self.port) as peer:
            peer.send(b"GET / HTTP/1.1\r\nX: " + b"x" * 100_000 + b"\r\n\r\n")
            self.assertNotEqual(peer.reply()[0], 200)
        with Peer(self.port) as peer:
            self.assertNotEqual(peer.ask("POST", "/admit", b"x" * 100_000)[0], 200)
        before = self.memory()
        flood = self.page()
        try:
            flood.send(b"\x82\xff" + struct.pack(">Q", 100 << 20) + bytes(4))
            for _ in range(100):
                flood.send(bytes(1 << 20))
        except (BrokenPipeError, ConnectionResetError):
            pass  # as it should
        self.assertIn(flood.closing(), (0, 1009))
        soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
        resource.setrlimit(resource.RLIMIT_NOFILE, (min(hard, 4096), hard))
        crowd = [Peer(self.port) for _ in range(1000)]
        self.assertEqual(self.ask("GET", "/")[0], 200)
        self.assertLess(self.descriptors(), 100)
        for peer in crowd + silent:
            peer.socket.close()
        self.assertLess(self.memory() - before, 32 << 20)
        self.run_line(page, b"echo $((6 * 7))", b"\r42\r\n")

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.bridge.pid}/fd"))

    def memory(self):
        with open(f"/proc/{self.bridge.pid}/status") as file:
            return int(re.search(r"VmRSS:\s*(\d+)", file.read()).group(1)) * 1024

    def test_a_page_gets_a_window_of_output_until_it_has_shown_it(self):
        page = self.watching()
        self.shows(page, b"ready> ")
        self.run_line(page, b"head -c 4000000 /dev/zero | tr '\\0' x", b"xxxx")
        got = 0
        page.socket.settimeout(2)
        with self.assertRaises(TimeoutError):
            while True:
                got += len(page.next()[1])
        self.assertLess(got, 300_000)
        page.socket.settimeout(PATIENCE)
        page.received = b""
        page.call(call="list")
        page.event("sessions")
        page.socket.close()
        until(lambda: json.loads(self.run_program("velmo-session", "list", "--json"))[0]["viewers"] == 0, "it is gone")

    def test_a_device_that_may_only_view_changes_nothing_and_a_revoked_one_is_gone(self):
        before = self.descriptors()
        page = self.watching()
        cookie = self.let_in("--view-only")
        viewer = self.page(cookie)
        viewer.call(call="watch", session="work")
        self.shows(viewer, b"ready> ")
        for call in ({"call": "start", "cols": 80, "rows": 24}, {"call": "end", "session": "work"}):
            viewer.call(**call)
            self.assertEqual(viewer.event("refused")["reason"], "rights")
        viewer.message(BINARY, b"\1\0\0\0\1x")
        self.assertEqual(viewer.closing(), 4000)
        again = self.page(cookie)
        self.phone("revoke", "--all")
        self.assertEqual(again.closing(), 4001)
        self.assertEqual(page.closing(), 4001)
        self.assertEqual(self.phone("devices"), "")
        # None of the pages has answered, nor closed its end.
        until(lambda: self.descriptors() == before, "the connections are gone")


    def test_a_revoked_page_that_reads_nothing_is_gone(self):
        before = self.descriptors()
        page = self.page()
        page.socket.setsockopt(socket.SOL_SOCKET, socket.SO_SNDBUF, 1 << 14)
        page.socket.settimeout(2)
        call = b'{"call":"power"}'
        with self.assertRaises(TimeoutError):  # once the events fill all that is between the two
            while True:
                page.send((b"\x81" + bytes([128 | len(call)]) + bytes(4) + call) * 100)
        self.phone("revoke", "--all")
        until(lambda: self.descriptors() == before, "the connection is gone")

    def test_a_revocation_that_does_not_last_says_so(self):
        page = self.page(cookie := self.let_in())
        os.mkdir(self.state + "/phone.json.new")  # in the way of the record, as a full disk is
        self.phone("revoke", "raw", status=123)
        self.assertEqual(page.closing(), 4001)
        self.phone("revoke", "--all", status=123)
        os.rmdir(self.state + "/phone.json.new")
        self.phone("revoke", "raw")
        self.stop()
        self.serve()
        self.assertEqual(self.ask("GET", "/device", Cookie=cookie)[0], 401)


class PhonePower(Bridged):
    def test_it_keeps_a_simulated_mac_awake_as_long_as_a_session_runs(self):
        mac = self.place.name + "/mac"
        self.run_program("velmo-mac", "create", mac)
        daemon = subprocess.Popen([PROGRAMS + "/VelmoPowerDaemonSimulated", mac], stderr=subprocess.DEVNULL)
        self.addCleanup(daemon.wait)
        self.addCleanup(daemon.terminate)
        self.stop()
        self.serve("--mac", mac)
        page = self.watching()

        def is_held():
            with open(mac + "/machine.json") as file:
                return json.load(file)["sleepDisabled"]

        def power(**wanted):
            while True:
                told = page.event("power")["power"]
                if wanted.items() <= told.items():
                    return told
        until(lambda: page.call(call="power") or page.event("power")["power"]["hasDaemon"], "the daemon serves")
        page.call(call="awake", on=True)
        self.assertEqual(power(keeps=True, isAwake=True)["holder"], "velmo-phone")
        self.assertTrue(is_held())
        page.message(BINARY, b"\1\0\0\0\5exit\r")
        self.assertEqual(power(keeps=False)["why"], "no session")
        until(lambda: not is_held(), "sleep is enabled again")
        self.watching("more").call(call="awake", on=True)
        until(is_held, "it is held again")
        self.stop()
        told = json.loads(self.run_program("velmo-power", "status", "--mac", mac, "--json"))
        self.assertEqual(told["holds"]["lastEnd"]["how"], "released")
        self.serve("--mac", mac)


if __name__ == "__main__":
    unittest.main()
