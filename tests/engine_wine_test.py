"""The engine's two libraries as Windows loads them, heard through a sound system of
their own.  engine_wine_test.py FOLDER PROBE OBJDUMP RADIO
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

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [HERE, os.path.join(HERE, "desktop")]

import own_network  # noqa: E402
import processes  # noqa: E402
from demo_radio import DemoRadio  # noqa: E402
from sound import Speakers, level, loudness  # noqa: E402
from wine import Prefix  # noqa: E402

FOLDER, PROBE, OBJDUMP, RADIO = sys.argv[1:5]
# What every Windows has; anything else would have to be installed with the program.
SYSTEM = {"bcrypt.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "user32.dll", "winhttp.dll",
          "ws2_32.dll"}
EXPORTS = """BASS_ChannelGetInfo BASS_ChannelGetTags BASS_ChannelPlay BASS_ChannelSetAttributes
BASS_ChannelSetSync BASS_ChannelStop BASS_ErrorGetCode BASS_Free BASS_GetVersion BASS_Init
BASS_PluginFree BASS_PluginLoad BASS_SetConfig BASS_StreamCreateURL BASS_StreamFree
BASS_StreamGetFilePosition""".split()


def tables(library):
    return processes.run([OBJDUMP, "-p", os.path.join(FOLDER, library)], stdout=subprocess.PIPE,
                         text=True).stdout


class Files:
    """A web server of the files that ffmpeg makes in a folder."""

    def __init__(self, folder):
        self.folder = folder
        handler = functools.partial(QuietHandler, directory=folder)
        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler)
        self.url = f"http://127.0.0.1:{self.server.server_port}"
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def make(self, frequency, *words):
        processes.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i",
                       f"sine=frequency={frequency}:duration=6", *words], cwd=self.folder)

    def close(self):
        self.server.shutdown()
        self.server.server_close()


class QuietHandler(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass


class Libraries(unittest.TestCase):
    def test_need_nothing_but_windows(self):
        for library in "bass.dll", "bass_aac.dll":
            needed = {n.lower() for n in re.findall(r"DLL Name: (\S+)", tables(library))}
            self.assertIn("kernel32.dll", needed)
            self.assertLessEqual(needed, SYSTEM)

    def test_export_exactly_the_interface_undecorated(self):
        self.assertEqual(EXPORTS, re.findall(r"^\s+\[ *\d+\] (?:\+base\[ *\d+\] +[0-9a-f]+ )?([A-Za-z]\S+)$",
                                             tables("bass.dll"), re.M))

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

    def station(self, codec):
        return next(s for s in self.radio.stations() if s.codec == codec and s.sample_rate == 44100)

    def probe(self, path, seconds, server=None, rounds=1, pause=0):
        folder = self.prefix.windows_path(os.path.abspath(FOLDER))
        return self.prefix.start(os.path.abspath(PROBE), folder, (server or self.radio.url) + path, str(seconds),
                                 str(rounds), str(pause), stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)

    def read_until(self, process, word):
        lines = []
        for line in process.stdout:
            lines.append(line.rstrip())
            if line.startswith(word):
                return lines
        self.fail(f"no {word} in {lines}")

    @staticmethod
    def rest(process):
        """What it still writes until it has ended."""
        lines = process.stdout.read().splitlines()
        process.stdout.close()
        process.wait(10)
        return lines

    def test_plays_the_station_and_tells_its_headers(self):
        for codec, kind in ("mp3", "10005"), ("aac", "10b00"):
            station = self.station(codec)
            process = self.probe("/stream/" + station.mount, 4)
            lines = self.read_until(process, "type")
            time.sleep(1)
            sound = self.speakers.listen(2)
            lines += self.rest(process)
            self.assertEqual(0, process.returncode, lines)
            self.assertIn("version 203", lines)
            self.assertIn(f"type {kind} rate 44100", lines)
            self.assertIn("header icy-name:" + station.name.decode(), lines)
            self.assertGreater(loudness(sound), 0.01)
            self.assertGreater(level(sound, station.tone), 4 * level(sound, station.tone * 1.06))

    def test_plays_containers_and_live_streaming_with_their_titles(self):
        with tempfile.TemporaryDirectory(prefix="kestrel-engine-") as folder:
            files = Files(folder)
            self.addCleanup(files.close)
            title = ("-metadata", "artist=Band", "-metadata", "title=Song")
            files.make(440, *title, "-c:a", "libvorbis", "x.ogg")
            files.make(550, *title, "-c:a", "libopus", "x.opus")
            files.make(660, *title, "-c:a", "flac", "x.flac")
            files.make(880, "-c:a", "aac", "-f", "hls", "-hls_time", "2", "-hls_playlist_type", "vod", "x.m3u8")
            for name, kind, tone in (("x.ogg", "10002", 440), ("x.opus", "10002", 550),
                                     ("x.flac", "10900", 660), ("x.m3u8", "10b00", 880)):
                process = self.probe("/" + name, 3, files.url)
                lines = self.read_until(process, "type")
                time.sleep(1)
                sound = self.speakers.listen(1)
                lines += self.rest(process)
                self.assertEqual(0, process.returncode, lines)
                self.assertTrue(any(line.startswith(f"type {kind} ") for line in lines), lines)
                self.assertGreater(level(sound, tone), 4 * level(sound, tone * 1.06), name)
                if name != "x.m3u8":
                    self.assertIn("title StreamTitle='Band - Song';", lines)

    def test_goes_on_when_the_sound_system_is_back(self):
        station = self.station("mp3")
        process = self.probe("/stream/" + station.mount, 30)
        self.read_until(process, "type")
        self.assertGreater(loudness(self.speakers.listen(2)), 0.01)
        self.speakers.restart(1)
        sound = self.speakers.listen(1)
        end = time.monotonic() + 20
        while loudness(sound) < 0.01 and time.monotonic() < end:
            sound = self.speakers.listen(1)
        sound = self.speakers.listen(2)
        processes.end(process)
        process.stdout.close()
        self.assertGreater(loudness(sound), 0.01)
        self.assertGreater(level(sound, station.tone), 4 * level(sound, station.tone * 1.06))

    def start_radio(self, *options):
        radio = DemoRadio(os.path.join(RADIO, "demo_radio"), os.path.join(RADIO, "sounds"), *options)
        self.addCleanup(radio.stop)
        return radio

    def test_tries_again_when_the_network_changes(self):
        if not self.has_own_network:
            self.skipTest("only root may have a network of its own")
        radio = self.start_radio()
        process = self.probe("/stream/" + self.station("mp3").mount, 60, radio.url)
        self.read_until(process, "type")
        radio.stop()
        with socket.create_server(("127.0.0.1", radio.port)) as server:
            server.settimeout(20)
            for _ in range(4):  # half a second later, then one, two and four seconds
                server.accept()[0].close()
            server.settimeout(4)  # and not only in eight
            own_network.add_address("10.9.9.9")
            server.accept()[0].close()
        processes.end(process)
        process.stdout.close()

    def test_goes_on_after_a_sleep_that_cost_it_its_connection(self):
        no_burst = ("--burst", "0")
        radio = self.start_radio(*no_burst)
        station = self.station("mp3")
        process = self.probe("/stream/" + station.mount, 60, radio.url)
        self.read_until(process, "type")
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
        processes.end(process)
        process.stdout.close()

    def test_changes_the_station_without_keeping_handles(self):
        process = self.probe("/stream/" + self.station("mp3").mount, 0.02, rounds=30, pause=300)
        handles = [int(line.split()[1]) for line in process.stdout if line.startswith("handles")]
        process.stdout.close()
        self.assertEqual(0, process.wait(10))
        # While the sound of the last station fades there are some more.
        self.assertLess(min(handles[-5:]), min(handles[5:10]) + 5, handles)
        self.assertGreater(handles[0], 0)

    def test_ends_at_once_while_a_server_keeps_it_waiting(self):
        process = self.probe("/bad/hang-body-2500/stream/" + self.station("mp3").mount, 0)
        lines = self.rest(process)
        self.assertEqual(0, process.returncode)
        self.assertNotIn("playing", "".join(lines))
        freed = next(float(line.split()[1]) for line in lines if line.startswith("freed"))
        self.assertLess(freed, 1000)  # ms; the silence would be waited for 15 times as long

    def test_tells_why_a_stream_does_not_open(self):
        process = self.probe("/bad/not-found/stream/" + self.station("mp3").mount, 0)
        lines = self.rest(process)
        self.assertIn("error 2", lines)
        process = self.probe("/bad/html/stream/" + self.station("mp3").mount, 0)
        self.assertIn("error 41", self.rest(process))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v", *sys.argv[5:]])
