"""Starts a demo radio and talks to it, byte by byte where it matters."""

import os
import re
import socket
import subprocess
import tempfile
import time
import urllib.request


class Station:
    def __init__(self, line):
        fields = line.split(b"\t")
        self.genre, self.mount, self.codec = (f.decode() for f in (fields[0], fields[2], fields[3]))
        self.id, self.kbit = int(fields[1]), int(fields[4])
        self.tone, self.sample_rate = float(fields[5]), int(fields[6])  # Hz
        self.name = fields[7]  # bytes, as the station itself sends them


class DemoRadio:
    """A running server; a context manager that ends it."""

    def __init__(self, program, sounds, *options):
        self.folder = tempfile.TemporaryDirectory(prefix="demo-radio-")
        port_file = os.path.join(self.folder.name, "port")
        self.log_file = os.path.join(self.folder.name, "log")
        self.process = subprocess.Popen(
            [program, "--sounds", sounds, "--port-file", port_file, "--log", self.log_file,
             "--with-parent", *options], stdout=subprocess.DEVNULL)
        deadline = time.monotonic() + 20
        while not os.path.exists(port_file):
            if self.process.poll() is not None or time.monotonic() > deadline:
                raise RuntimeError("the demo radio did not start")
            time.sleep(0.01)
        with open(port_file) as file:
            self.port = int(file.read())
        self.url = f"http://127.0.0.1:{self.port}"

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    def stop(self):
        """Ends it as its user would; its exit code."""
        if self.process.poll() is None:
            self.process.terminate()
        code = self.process.wait(10)
        self.folder.cleanup()
        return code

    def get(self, target, timeout=10):
        return urllib.request.urlopen(self.url + target, timeout=timeout).read()

    def log(self):
        return self.get("/control/log")

    def switch(self, kind, habit, count=0):
        return self.get(f"/control?for={kind}&habit={habit}&count={count}")

    def stations(self):
        return [Station(line) for line in self.get("/control/stations").splitlines()]

    def connect(self, target, *headers):
        """A connection on which the request has been sent, target as it stands."""
        client = socket.create_connection(("127.0.0.1", self.port), 10)
        head = [b"GET " + target + b" HTTP/1.0", b"Host: 127.0.0.1:%d" % self.port, *headers]
        client.sendall(b"\r\n".join(head) + b"\r\n\r\n")
        return client

    def raw(self, target, *headers, seconds=5):
        """All bytes that arrive in that time, and how it ended: end, reset, open."""
        return drain(self.connect(target, *headers), seconds)


def drain(client, seconds):
    received, deadline = b"", time.monotonic() + seconds
    with client:
        while True:
            left = deadline - time.monotonic()
            if left <= 0:
                return received, "open"
            client.settimeout(left)
            try:
                piece = client.recv(65536)
            except TimeoutError:
                return received, "open"
            except ConnectionResetError:
                return received, "reset"
            if not piece:
                return received, "end"
            received += piece


def split(answer):
    """Head and body of a raw answer."""
    head, _, body = answer.partition(b"\r\n\r\n")
    return head, body


def header(head, name):
    found = re.search(rb"(?im)^" + name + rb": ?(.*?)\r?$", head)
    return found.group(1) if found else None


MARKER = b"kestrel-playlist.pls"


def links(page):
    """(address, title) of each station, found as a directory client finds them."""
    found, at, low = [], 0, page.lower()
    while (at := low.find(MARKER, at)) >= 0:
        close = page.index(b">", at)
        address = page[at - 6:close - 1]
        anchor = page.index(b">", low.index(b"<a", at + 15)) + 1
        found.append((address, page[anchor:page.index(b"<", anchor)]))
        at += 15
    return found


def untitled(body, interval):
    """Sound and titles of a stream's body; ValueError where a block is no title."""
    sound, titles = b"", []
    while len(body) > interval:
        sound, body = sound + body[:interval], body[interval:]
        length, body = body[0] * 16, body[1:]
        if length > len(body):
            return sound, titles
        block, body = body[:length].rstrip(b"\0"), body[length:]
        if block:
            if not (block.startswith(b"StreamTitle='") and block.endswith(b"';")):
                raise ValueError("no title block")
            titles.append(block[13:block.index(b"';")])
    return sound + body, titles
