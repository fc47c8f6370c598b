"""A screen with a taskbar and a tray, speakers, hands and eyes: all of the test's own."""

import os
import shutil
import subprocess
import tempfile

import processes
from probe import Probe
from sound import Speakers
from wine import Prefix

TOOLS = os.environ["KESTREL_TOOLS"]  # probe.exe, agent.dll, recorder.exe
PICTURES = os.environ.get("KESTREL_PICTURES", "build/pictures")
WIDTH, HEIGHT = 1024, 768


def area(rect):
    left, top, right, bottom = rect
    return f"{right - left}x{bottom - top}+{left}+{top}"


class Desktop:
    rect = 0, 0, WIDTH, HEIGHT

    def __init__(self, density=96):
        self.folder = tempfile.mkdtemp(prefix="kestrel-desktop-")
        self._parts = []
        try:
            self.screen, display = self._start_screen()
            self.speakers = self._keep(Speakers(os.path.join(self.folder, "sound")))
            self.environment = {"DISPLAY": display, **self.speakers.environment}
            self.prefix = self._keep(Prefix(os.path.join(self.folder, "prefix"), self.environment, density))
            self.probe = self._keep(Probe(self.prefix, self.tool("probe.exe")))
            processes.wait_for(lambda: self.probe.windows(class_name="Shell_TrayWnd"), "a taskbar", 60)
        except BaseException:
            self.close()
            raise

    def close(self):
        while self._parts:
            self._parts.pop().close()
        shutil.rmtree(self.folder, ignore_errors=True)

    def tool(self, name):
        """A tool where the programs of the prefix find it."""
        copy = os.path.join(self.folder, name)
        if not os.path.exists(copy):
            shutil.copy(os.path.join(TOOLS, name), copy)
        return copy

    # --- eyes

    def picture(self, name, rect=None):
        """The screen or a part of it as a PNG file."""
        os.makedirs(PICTURES, exist_ok=True)
        file = os.path.join(PICTURES, name + ".png")
        crop = ["-crop", area(rect), "+repage"] if rect else []
        self._x11("import", "-window", "root", *crop, file)
        return file

    def pixels(self, rect):
        """What a part of the screen looks like, for comparing."""
        return self._x11("import", "-window", "root", "-crop", area(rect), "ppm:-", stdout=subprocess.PIPE).stdout

    # --- hands

    def move(self, point):
        self._x11("xdotool", "mousemove", *map(str, point))

    def click(self, point, button=1):
        self._x11("xdotool", "mousemove", *map(str, point), "click", str(button))

    def press(self, point, button=1):
        self._x11("xdotool", "mousemove", *map(str, point), "mousedown", str(button))

    def release(self, button=1):
        self._x11("xdotool", "mouseup", str(button))

    def wheel(self, down, steps=1):
        self._x11("xdotool", "click", "--repeat", str(steps), "--delay", "10", "5" if down else "4")

    def key(self, *names):
        """Keys go to the window under the pointer."""
        self._x11("xdotool", "key", "--delay", "15", *names)

    def type(self, text):
        """To the window under the pointer, as key() does."""
        self._x11("xdotool", "type", "--delay", "15", text)

    # --- making it

    def _keep(self, part):
        self._parts.append(part)
        return part

    def _start_screen(self):
        reading, writing = os.pipe()
        screen = processes.start(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", f"{WIDTH}x{HEIGHT}x24", "-nolisten", "tcp"],
            pass_fds=[writing], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self._keep(_Ended(screen))
        os.close(writing)
        with os.fdopen(reading) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise RuntimeError("no screen: Xvfb did not start")
        return screen, ":" + number

    def _x11(self, *words, **options):
        return processes.run(words, 60, env={**os.environ, **self.environment}, **options)


class _Ended:
    def __init__(self, process):
        self.process = process

    def close(self):
        processes.end(self.process)
