"""The engine over TLS, with nginx as the server: what is heard, what is refused, and
that it goes on.  https_test.py PROBE FOLDER RADIO
    PROBE    the built engine_probe; engine_probe.exe is run under Wine
    FOLDER   the program folder with both libraries (Windows)
    RADIO    folder of the built demo radio"""

import array
import hashlib
import os
import socket
import ssl
import struct
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import processes
from demo_radio import DemoRadio
from engine_probe import Probe
from nginx import Authority, Line, Nginx, ScriptedServer, free_ports, listening
from sound import RATE, level
from wine import Prefix

PROBE, FOLDER, RADIO = (os.path.abspath(word) for word in sys.argv[1:4])
WINDOWS = PROBE.endswith(".exe")
MP3, AAC = "10005", "10b00"
REFUSED, STOPPED, TIMEOUT, NO_SOUND = 2, 5, 40, 41
# What may be more at the end than at first; memory in KiB. A sanitizer counts it itself,
# and Windows takes it in large pieces.
LIMITS = {"handles": 4, "memory": 600} if WINDOWS else {"handles": 4, "threads": 2, "memory": 60}
HEAD = b"HTTP/1.0 200 OK\r\nContent-Type: audio/mpeg\r\nicy-name:Here\r\n\r\n"


def hears(recording, kind, tone):
    """Whether a recording, decoded by somebody else, has that tone. It may begin within a
    frame, by which its kind is not always known."""
    sound = array.array("h", processes.run(
        ["ffmpeg", "-nostdin", "-loglevel", "quiet", "-f", {MP3: "mp3", AAC: "aac"}[kind], "-i", recording,
         "-ac", "1", "-ar", str(RATE), "-f", "s16le", "-"], stdout=subprocess.PIPE).stdout)
    return len(sound) > RATE / 2 and level(sound, tone) > 4 * level(sound, tone * 1.06)


class Https(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="kestrel-https-")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = folder.name
        cls.radio = DemoRadio(os.path.join(RADIO, "demo_radio"), os.path.join(RADIO, "sounds"))
        cls.addClassCleanup(cls.radio.stop)
        cls.station = next(s for s in cls.radio.stations() if s.codec == "mp3" and s.sample_rate == 44100)
        cls.stream = "/radio/stream/" + cls.station.mount
        cls.scripted = ScriptedServer()
        cls.addClassCleanup(cls.scripted.close)
        Authority(cls.folder)
        cls.nginx = Nginx(cls.folder, cls.radio.port, cls.scripted.port)
        cls.addClassCleanup(cls.nginx.close)
        cls.prefix = None
        if WINDOWS:
            # A sound server by path: a name would be looked up, and Wine waits for that
            # with its loader locked.
            cls.prefix = Prefix(os.path.join(cls.folder, "prefix"),
                                {"DISPLAY": "", "PULSE_SERVER": "unix:" + cls.folder + "/none"})
            cls.addClassCleanup(cls.prefix.close)
            cls.trust_authority()
        cls.recordings = 0

    @classmethod
    def trust_authority(cls):
        """Puts its certificate where the present user's Windows keeps those it trusts."""
        with open(os.path.join(cls.folder, "authority.pem")) as file:
            certificate = ssl.PEM_cert_to_DER_cert(file.read())
        # Property 32 is the certificate itself; the name is its SHA-1.
        blob = struct.pack("<III", 32, 1, len(certificate)) + certificate
        key = r"HKCU\Software\Microsoft\SystemCertificates\Root\Certificates" + "\\"
        adding = cls.prefix.start(
            "reg", "add", key + hashlib.sha1(certificate).hexdigest().upper(), "/v", "Blob", "/t",
            "REG_BINARY", "/d", blob.hex(), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        assert adding.wait(60) == 0

    @classmethod
    def path(cls, name):
        path = os.path.join(cls.folder, name)
        return cls.prefix.windows_path(path) if WINDOWS else path

    @classmethod
    def start(cls, *words):
        options = {"stdout": subprocess.PIPE, "text": True, "errors": "replace"}
        if WINDOWS:
            return cls.prefix.start(PROBE, *words, stderr=subprocess.DEVNULL, **options)
        environment = {**os.environ, "SSL_CERT_FILE": cls.path("authority.pem")}
        return processes.start([PROBE, *words], env=environment, **options)

    def probe(self, url, seconds, *words):
        """A started probe, and where its recording will be."""
        type(self).recordings += 1
        name = f"recording-{self.recordings}"
        folder = self.prefix.windows_path(FOLDER) if WINDOWS else FOLDER
        process = self.start(folder, url, str(seconds), *words, "--record", self.path(name))
        self.addCleanup(processes.end, process)
        return Probe(process), os.path.join(self.folder, name)

    def put(self, name, text):
        with open(os.path.join(self.folder, "files", name), "w") as file:
            file.write(text)
        return "/files/" + name

    def make_hls(self, name, tone, *words):
        folder = os.path.join(self.folder, "files", name)
        os.mkdir(folder)
        with open(os.path.join(folder, "key"), "w") as key:
            key.write("0123456789abcdef")
        with open(os.path.join(folder, "info"), "w") as info:
            info.write("key\nkey\n")
        processes.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i",
                       f"sine=frequency={tone}:duration=4", *words, "-f", "hls", "-hls_time", "1",
                       "-hls_playlist_type", "vod", "list.m3u8"], cwd=folder)
        return f"/files/{name}/list.m3u8"

    def test_is_heard(self):
        url, tone = self.nginx.url, self.station.tone
        cases = {
            "a stream": (url(self.stream), MP3, tone),
            "a list of it": (url(self.put("list.m3u", "#EXTM3U\n.." + self.stream + "\n")), MP3, tone),
            "a list on an open server": (
                url(self.put("list.pls", "[playlist]\nFile1=" + url(self.stream) + "\n"), "http"), MP3, tone),
            "redirects to and fro": (
                url("/to/" + url("/to/" + url("/to/" + url(self.stream)), "http")), MP3, tone),
            "transport streams": (url(self.make_hls("ts", 550, "-c:a", "aac")), AAC, 550),
            "encrypted ones": (
                url(self.make_hls("aes", 660, "-c:a", "aac", "-hls_key_info_file", "info")), AAC, 660),
            "fragments": (
                url(self.make_hls("mp4", 770, "-c:a", "aac", "-hls_segment_type", "fmp4")), AAC, 770),
        }
        # Two seconds of sound, however long that takes.
        started = {name: self.probe(case[0], 20, "--until", "30000") for name, case in cases.items()}
        for name, (_, kind, frequency) in cases.items():
            with self.subTest(name):
                probe, recording = started[name]
                probe.finish()
                self.assertEqual(kind, (probe.first("type") or "").split(" ")[0], probe.lines)
                self.assertGreaterEqual(os.path.getsize(recording), 30_000, probe.lines)
                self.assertTrue(hears(recording, kind, frequency))
                if kind == MP3:
                    self.assertIn("icy-name:" + self.station.name.decode(), probe.all("header"))

    def cut(self, how):
        """Address of a server that goes away in the middle of its answer's head."""
        listener = listening()
        self.addCleanup(listener.close)
        certificate = os.path.join(self.folder, "good")
        threading.Thread(target=close_in_head, args=(listener, certificate, how), daemon=True).start()
        return f"https://localhost:{listener.getsockname()[1]}/"

    def test_tells_what_is_wrong_with_a_server(self):
        url = self.nginx.url
        silent = listening()
        self.addCleanup(silent.close)
        hasty = listening()
        self.addCleanup(hasty.close)
        threading.Thread(target=close_all, args=(hasty,), daemon=True).start()
        silent_url = f"https://localhost:{silent.getsockname()[1]}/"
        bad = self.put("bad.m3u", url(self.stream, "expired") + "\n")
        quiet = "/radio/bad/hang/stream/" + self.station.mount
        silent_soon = quiet.replace("hang", "hang-body-2500")
        cases = {
            "expired": (url(self.stream, "expired"), REFUSED),
            "for another host": (url(self.stream, "wrong-host"), REFUSED),
            "from an unknown authority": (url(self.stream, "unknown"), REFUSED),
            "signed by itself": (url(self.stream, "self-signed"), REFUSED),
            "for a name, asked by address": (url(self.stream).replace("localhost", "127.0.0.1"), REFUSED),
            "redirects to an expired one": (url("/to/" + url(self.stream, "expired")), REFUSED),
            "lists an expired one": (url(bad), REFUSED),
            "speaks no TLS": (url(self.stream, "http").replace("http:", "https:"), REFUSED),
            "closes at once": (f"https://localhost:{hasty.getsockname()[1]}/", REFUSED),
            "breaks off in its head": (self.cut("close"), REFUSED),
            "is reset in its head": (self.cut("reset"), REFUSED),
            "is not there": (f"https://localhost:{free_ports(1)[0]}/", REFUSED),
            "has nobody behind it": (url("/dead/"), REFUSED),
            "knows no such file": (url("/files/none"), REFUSED),
            "redirects for ever": (url("/loop"), REFUSED),
            "knows no such file, without TLS": (url("/files/none", "http"), REFUSED),
            "shows a page": (url("/page"), NO_SOUND),
            "never shakes hands": (silent_url, TIMEOUT),
            "never shakes hands, until stopped": (silent_url, STOPPED),
            "never answers, until stopped": (url(quiet), STOPPED),
            "never answers, until stopped, without TLS": (url(quiet, "http"), STOPPED),
            "falls silent after its first sound": (url(silent_soon), None),
            "falls silent after its first sound, without TLS": (url(silent_soon, "http"), None),
        }
        started = {name: self.probe(case[0], 0, *(("--stop-opening", "1500") if case[1] == STOPPED else ()))
                   for name, case in cases.items()}
        for name, (_, code) in cases.items():
            with self.subTest(name):
                probe, _ = started[name]
                probe.finish()
                self.assertEqual(str(code), str(probe.first("error")), probe.lines)
                self.assertIsNone(probe.first("playing"))
                # Milliseconds; without a stop it would be ten times as long.
                self.assertLess(float(probe.first("stopped" if code == STOPPED else "freed")), 1000)

    def test_goes_on_after_every_loss(self):
        line = Line(self.nginx.ports["good"])
        self.addCleanup(line.close)
        with open(os.path.join(RADIO, "sounds/bells-00.mp3"), "rb") as file:
            parts = [file.read(40_000) for _ in range(4)]  # 2.5 s each
        everything = b"".join(parts) + parts[0]
        probe, recording = self.probe(f"https://localhost:{line.port}/scripted/", 60,
                                      "--until", str(len(everything)))
        scripted = self.scripted

        def arrived(count):
            """Half of the last one of so many parts is played; it all came long before."""
            processes.wait_for(lambda: os.path.exists(recording) and
                               os.path.getsize(recording) >= (count - 0.5) * len(parts[0]), f"part {count}")

        scripted.answer(HEAD + parts[0])
        scripted.leave()
        scripted.answer(HEAD + parts[1])
        arrived(2)
        self.nginx.kill()
        self.assertTrue(self.nginx.start())
        scripted.answer(HEAD + parts[2])
        arrived(3)
        line.break_next.set()
        scripted.send(parts[3])
        scripted.answer(HEAD + parts[3] + 4 * parts[0])
        probe.finish()
        self.assertEqual(4, probe.lines.count("status HTTP/1.1 200 OK"), probe.lines)
        self.assertGreaterEqual(probe.lines.count("status reconnecting..."), 3)
        with open(recording, "rb") as file:
            self.assertTrue(file.read(len(everything)) == everything, "other bytes than were sent")

    def test_leaves_nothing_behind(self):
        schemes = "good", "http"
        started = [self.probe(self.nginx.url(self.stream, name), 0, "--rounds", "13") for name in schemes]
        for (probe, _), scheme in zip(started, schemes):
            probe.finish()
            for what, more in LIMITS.items():
                figures = [int(figure) for figure in probe.all(what)]
                self.assertEqual(13, len(figures), probe.lines)
                # Nothing counts before the fifth: what stays is made at first. Old sound may
                # still fade beside the next, so the least of three.
                self.assertLessEqual(min(figures[-3:]), min(figures[4:7]) + more, (scheme, what, figures))


def close_in_head(listener, certificate, how):
    """Speaks TLS, and ends in the middle of the head of its answer."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate + ".pem", certificate + ".key")
    try:
        while True:
            with context.wrap_socket(listener.accept()[0], server_side=True) as client:
                client.recv(4096)
                client.sendall(HEAD[:-8])
                time.sleep(0.2)  # it is to arrive before the reset
                if how == "reset":
                    client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    except OSError:
        pass


def close_all(listener):
    """Takes what a client says first, and closes."""
    try:
        while True:
            with listener.accept()[0] as client:
                client.recv(4096)
    except OSError:
        pass


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[4:]])
