"""The engine's two libraries as Windows loads them, heard through a sound system of
their own.  wine_test.py FOLDER PROBE OBJDUMP RADIO
    FOLDER   the program folder with both libraries
    PROBE    engine_probe.exe
    RADIO    folder of the built demo radio"""

import functools
import http.server
import os
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import own_network
import processes
from demo_radio import DemoRadio
from engine_probe import Probe
from sound import Speakers, level, loudness
from wine import Prefix

FOLDER, PROBE, OBJDUMP, RADIO = sys.argv[1:5]
# What every Windows has; anything else would have to be installed with the program.
SYSTEM = {"bcrypt.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "user32.dll", "winhttp.dll",
          "ws2_32.dll"}


def tables(library):
    return processes.run([OBJDUMP, "-p", os.path.join(FOLDER, library)], stdout=subprocess.PIPE,
                         text=True).stdout


class Files(http.server.ThreadingHTTPServer):
    """A web server of the files that ffmpeg makes in a folder."""

    def __init__(self, folder):
        self.folder = folder
        handler = functools.partial(http.server.SimpleHTTPRequestHandler, directory=folder)
        super().__init__(("127.0.0.1", 0), handler)
        self.url = f"http://127.0.0.1:{self.server_port}/"
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def make(self, frequency, *words):
        processes.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i",
                       f"sine=frequency={frequency}:duration=6", *words], cwd=self.folder)


class Libraries(unittest.TestCase):
    def test_need_nothing_but_windows(self):
        for library in "bass.dll", "bass_aac.dll":
            needed = {n.lower() for n in re.findall(r"DLL Name: (\S+)", tables(library))}
            self.assertIn("kernel32.dll", needed)
            self.assertLessEqual(needed, SYSTEM)

    def test_together_stay_small(self):
        size = sum(os.path.getsize(os.path.join(FOLDER, n)) for n in ("bass.dll", "bass_aac.dll"))
        self.assertLessEqual(size, 4_000_000)


class Sound(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.has_own_network = own_network.enter()
        folder = tempfile.TemporaryDirectory(prefix="kestrel-engine-")
        cls.addClassCleanup(folder.cleanup)
        cls.radio = DemoRadio(os.path.join(RADIO, "demo_radio"), os.path.join(RADIO, "sounds"))
        cls.addClassCleanup(cls.radio.stop)
        cls.speakers = Speakers(os.path.join(folder.name, "sound"))
        cls.addClassCleanup(cls.speakers.close)
        environment = {**cls.speakers.environment, "DISPLAY": ""}
        cls.prefix = Prefix(os.path.join(folder.name, "prefix"), environment)
        cls.addClassCleanup(cls.prefix.close)

    def probe(self, url, seconds):
        process = self.prefix.start(os.path.abspath(PROBE), self.prefix.windows_path(os.path.abspath(FOLDER)),
                                    url, str(seconds), stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(processes.end, process)
        return Probe(process)

    def start_radio(self, *options):
        radio = DemoRadio(os.path.join(RADIO, "demo_radio"), os.path.join(RADIO, "sounds"), *options)
        self.addCleanup(radio.stop)
        return radio

    def play(self, radio, codec="mp3", seconds=60):
        """A probe that plays a station, which is returned as well."""
        station = next(s for s in radio.stations() if s.codec == codec and s.sample_rate == 44100)
        probe = self.probe(radio.url + "/stream/" + station.mount, seconds)
        probe.read_until("type")
        return probe, station

    def assert_heard(self, tone, seconds):
        sound = self.speakers.listen(seconds)
        self.assertGreater(loudness(sound), 0.01)
        # On a quiet machine five to fifteen times; the holes of a busy one blur it.
        self.assertGreater(level(sound, tone), 2.5 * level(sound, tone * 1.06))

    def test_plays_stations_and_tells_their_headers(self):
        for codec, kind in ("mp3", "10005"), ("aac", "10b00"):
            probe, station = self.play(self.radio, codec, 4)
            time.sleep(1)
            self.assert_heard(station.tone, 2)
            probe.finish()
            self.assertIn("version 203", probe.lines)
            self.assertIn(f"type {kind} rate 44100", probe.lines)
            self.assertIn("header icy-name:" + station.name.decode(), probe.lines)

    def test_plays_containers_and_live_streaming_with_their_titles(self):
        folder = tempfile.TemporaryDirectory(prefix="kestrel-engine-")
        self.addCleanup(folder.cleanup)
        files = Files(folder.name)
        self.addCleanup(files.server_close)
        self.addCleanup(files.shutdown)
        title = ("-metadata", "artist=Band", "-metadata", "title=Song")
        for name, kind, tone, words in (
                ("x.ogg", "10002", 440, (*title, "-c:a", "libvorbis")),
                ("x.opus", "10002", 550, (*title, "-c:a", "libopus")),
                ("x.flac", "10900", 660, (*title, "-c:a", "flac")),
                ("x.m3u8", "10b00", 880, ("-c:a", "aac", "-f", "hls", "-hls_time", "2", "-hls_playlist_type", "vod"))):
            files.make(tone, *words, name)
            probe = self.probe(files.url + name, 3)
            probe.read_until("type")
            time.sleep(1)
            self.assert_heard(tone, 1)
            probe.finish()
            self.assertEqual(kind, probe.first("type").split()[0])
            self.assertEqual(None if name == "x.m3u8" else "StreamTitle='Band - Song';", probe.first("title"))

    def test_goes_on_when_the_sound_system_is_back(self):
        _, station = self.play(self.radio)
        self.assertGreater(loudness(self.speakers.listen(2)), 0.01)
        self.speakers.restart(1)
        processes.wait_for(lambda: loudness(self.speakers.listen(1)) > 0.01, "its sound")
        self.assert_heard(station.tone, 2)

    def test_tries_again_when_the_network_changes(self):
        if not self.has_own_network:
            self.skipTest("only root may have a network of its own")
        radio = self.start_radio()
        self.play(radio)
        radio.stop()
        with socket.create_server(("127.0.0.1", radio.port)) as server:
            server.settimeout(20)
            for _ in range(4):  # half a second later, then one, two and four seconds
                server.accept()[0].close()
            server.settimeout(4)  # and not only in eight
            own_network.add_address("10.9.9.9")
            server.accept()[0].close()

    def test_goes_on_after_a_sleep_that_cost_it_its_connection(self):
        no_burst = ("--burst", "0")
        radio = self.start_radio(*no_burst)
        _, station = self.play(radio)
        self.assertGreater(loudness(self.speakers.listen(2)), 0.01)
        self.prefix.signal(signal.SIGSTOP)
        try:
            radio.stop()
            time.sleep(12)
            self.assertLess(loudness(self.speakers.listen(1)), 0.01)
            self.start_radio(*no_burst, "--port", str(radio.port))
        finally:
            self.prefix.signal(signal.SIGCONT)
        processes.wait_for(lambda: level(self.speakers.listen(1), station.tone) > 0.01, "its tone", 20)
        self.assertGreater(loudness(self.speakers.listen(4)), 0.01)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[5:]])
