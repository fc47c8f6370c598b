"""What the desktop tests share: one desktop and one radio for a class, the
program started anew for each case with the settings that the case asks for."""

import os
import sys
import unittest

from demo_radio import DemoRadio, links
from desktop import Desktop
from kestrel import Kestrel
from processes import wait_for

RADIO = os.environ["KESTREL_RADIO"]  # folder of the built demo radio


class Case(unittest.TestCase):
    radio_options = ()
    density = 96  # dots per inch

    @classmethod
    def setUpClass(cls):
        cls.radio = DemoRadio(os.path.join(RADIO, "demo_radio"), os.path.join(RADIO, "sounds"),
                              *cls.radio_options)
        cls.addClassCleanup(cls.radio.stop)
        cls.desktop = Desktop(cls.density)
        cls.addClassCleanup(cls.desktop.close)
        cls.kestrel = Kestrel(cls.desktop, f"127.0.0.1:{cls.radio.port}")

    def setUp(self):
        self.kestrel.forget_everything()
        self.radio.get("/control/log?clear=1")
        self.addCleanup(self._leave)

    def run(self, result=None):
        """Wine's desktop now and then loses a key or a click on a busy machine: a case that
        fails begins once more from nothing, and only then it counts."""
        failures, errors = len(result.failures), len(result.errors)
        super().run(result)
        again = result.failures[failures:] + result.errors[errors:]
        del result.failures[failures:], result.errors[errors:]
        for _, trace in again:
            print(f"{self.id()} is tried again after\n{trace}", file=sys.stderr, flush=True)
        return super().run(result) if again else result

    def start(self, *arguments, **settings):
        """With an existing settings file, so that nothing is asked at the start."""
        self.kestrel.write_settings(**{"showsplash": 0, **settings})
        return self.kestrel.start(*arguments)

    def without(self, name):
        """Takes a file out of the program folder for the case."""
        file = os.path.join(self.kestrel.folder, name)
        os.rename(file, file + ".away")
        self.addCleanup(os.rename, file + ".away", file)

    def without_directory(self):
        """Nobody is there at its address."""
        self.kestrel.direct_to("127.0.0.1:9")
        self.addCleanup(self.kestrel.direct_to, f"127.0.0.1:{self.radio.port}")

    def requests(self):
        """Targets that the radio was asked for, in order; its own control ones aside."""
        lines = self.radio.log().splitlines()
        return [t for t in (line.split(b"\t")[1] for line in lines) if not t.startswith(b"/control")]

    def station(self, title, playlist="jazz-1.pls"):
        """A list's record of one that plays."""
        return title.encode(), f"{self.radio.url}/playlist/{playlist}".encode()

    def station_list(self, query):
        """(title, address) of the stations on a directory page, as a cache file holds them."""
        page = self.radio.get("/directory/index.phtml?" + query)
        return [(title, self.radio.url.encode() + path) for path, title in links(page)]

    def _leave(self):
        result = self._outcome.result
        if any(self in (test, getattr(test, "test_case", None)) for test, _ in result.failures + result.errors):
            self.desktop.picture("failed-" + self.id().replace("__main__.", ""))
        for kind in "directory", "playlist", "stream":
            self.radio.switch(kind, "none")
        process = self.kestrel.process
        boxes = [box.text for box in self.kestrel.boxes()] if process else []
        ended = process.poll() if process else None
        self.kestrel.kill()
        self.assertIsNone(ended, "the program ended by itself")
        self.assertEqual([], boxes, "left open")


class Recorder:
    """A program that takes the place of the listener's player or browser and notes its command line."""

    def __init__(self, desktop):
        self.desktop, self.file = desktop, os.path.join(desktop.folder, "recorded.txt")
        self.program = desktop.prefix.windows_path(desktop.tool("recorder.exe"))

    def register(self, kind, arguments):
        """As what opens this kind of file or address, for all users as its installer would do."""
        for key, name, text in ((kind, "URL Protocol", ""),
                                (kind + r"\shell\open\command", "", f'"{self.program}" {arguments}')):
            self.desktop.probe.ask("regset", "HKLM", "Software\\Classes\\" + key, name, text)

    def called(self):
        return os.path.exists(self.file)

    def take(self):
        """The command line that came, which is forgotten then."""
        wait_for(self.called, "a command line")
        with open(self.file, encoding="utf-8") as file:
            line = file.read()
        os.remove(self.file)
        return line
