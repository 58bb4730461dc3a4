"""A client of velmo-phone that sends what it likes, byte by byte as written here."""

import base64
import json
import socket
import struct

PATIENCE = 60  # seconds for any answer
TEXT, BINARY, CLOSE = 1, 2, 8


class Peer:
    """A connection to the bridge."""

    def __init__(self, port, host="127.0.0.1"):
        self.port = port
        self.socket = socket.create_connection((host, port), PATIENCE)
        self.received = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.socket.close()

    def send(self, content):
        self.socket.sendall(content)

    def more(self):
        """Reads a piece; b"" once the bridge has closed the connection."""
        try:
            piece = self.socket.recv(1 << 16)
        except ConnectionResetError:
            piece = b""
        self.received += piece
        return piece

    def take(self, count):
        while len(self.received) < count and self.more():
            pass
        taken, self.received = self.received[:count], self.received[count:]
        return taken

    def reply(self, has_body=True):
        """The status, the headers and the body of the next reply; (0, {}, b"") without one."""
        while b"\r\n\r\n" not in self.received:
            if not self.more():
                return 0, {}, b""
        head, self.received = self.received.split(b"\r\n\r\n", 1)
        status, *lines = head.decode().split("\r\n")
        headers = dict(line.lower().split(": ", 1) if "cookie" not in line.lower() else
                       (line.split(": ", 1)[0].lower(), line.split(": ", 1)[1]) for line in lines)
        return int(status.split()[1]), headers, self.take(int(headers.get("content-length", 0)) * has_body)

    def message(self, kind, content):
        """Sends a WebSocket message; the mask is 0, so that the bytes go as they are."""
        size = len(content)
        length = bytes([128 | size]) if size < 126 else \
            struct.pack(">BH", 254, size) if size < 65536 else struct.pack(">BQ", 255, size)
        self.send(bytes([128 | kind]) + length + bytes(4) + content)

    def call(self, **call):
        self.message(TEXT, json.dumps(call).encode())

    def next(self):
        """The kind and the content of the next message; (CLOSE, b"") when the connection is gone."""
        head = self.take(2)
        if len(head) < 2:
            return CLOSE, b""
        size = head[1]
        if size >= 126:
            size = int.from_bytes(self.take(2 if size == 126 else 8), "big")
        return head[0] & 15, self.take(size)

    def event(self, name):
        """The next event of this name; what comes before it is dropped."""
        while True:
            kind, content = self.next()
            if kind == CLOSE:
                raise AssertionError(f"closed before the event {name}: {content!r}")
            if kind == TEXT and json.loads(content)["event"] == name:
                return json.loads(content)

    def closing(self):
        """The code with which the bridge closes the connection; 0 if it just drops it."""
        while True:
            kind, content = self.next()
            if kind == CLOSE:
                return int.from_bytes(content[:2], "big")

    def ask(self, method, target, body=b"", **headers):
        """Makes a request with the headers of our page; a header that is None is left out."""
        headers = {"Host": f"127.0.0.1:{self.port}", "Origin": f"http://127.0.0.1:{self.port}",
                   "Content-Length": str(len(body)) if body else None} | headers
        lines = [f"{name.replace('_', '-')}: {value}" for name, value in headers.items() if value is not None]
        self.send("\r\n".join([f"{method} {target} HTTP/1.1", *lines, "", ""]).encode() + body)
        return self.reply(method != "HEAD")

    def admit(self, address, name="raw"):
        body = json.dumps({"code": address.split("#")[1], "name": name}).encode()
        return self.ask("POST", "/admit", body, Content_Type="application/json")

    def upgrade(self, **headers):
        """Opens the WebSocket and returns the status."""
        key = base64.b64encode(bytes(16)).decode()
        return self.ask("GET", "/socket", **({"Connection": "Upgrade", "Upgrade": "websocket",
                        "Sec_WebSocket_Version": "13", "Sec_WebSocket_Key": key} | headers))[0]
