"""A screen with a taskbar and a tray, speakers, hands and eyes: all of the test's own."""

import contextlib
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


def start_screen(parts):
    """Its name; it ends with the parts."""
    reading, writing = os.pipe()
    screen = processes.start(
        ["Xvfb", "-displayfd", str(writing), "-screen", "0", f"{WIDTH}x{HEIGHT}x24", "-nolisten", "tcp"],
        pass_fds=[writing], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    parts.callback(processes.end, screen)
    os.close(writing)
    with os.fdopen(reading) as pipe:
        number = pipe.readline().strip()
    if not number:
        raise RuntimeError("no screen: Xvfb did not start")
    return ":" + number


class Desktop:
    rect = 0, 0, WIDTH, HEIGHT

    def __init__(self, density=96):
        with contextlib.ExitStack() as parts:
            def keep(part):
                return parts.enter_context(contextlib.closing(part))

            self.folder = parts.enter_context(
                tempfile.TemporaryDirectory(prefix="kestrel-desktop-", ignore_cleanup_errors=True))
            display = start_screen(parts)
            self.speakers = keep(Speakers(os.path.join(self.folder, "sound")))
            self.environment = {"DISPLAY": display, **self.speakers.environment}
            self.prefix = keep(Prefix(os.path.join(self.folder, "prefix"), self.environment, density))
            self.probe = keep(Probe(self.prefix, self.tool("probe.exe")))
            processes.wait_for(lambda: self.probe.windows(class_name="Shell_TrayWnd"), "a taskbar", 60)
            self.close = parts.pop_all().close

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

    def drag(self, start, by):
        """Holds what is there and takes it along, in steps as a hand does."""
        self.press(start)
        for step in range(1, 6):
            self.move((start[0] + by[0] * step // 5, start[1] + by[1] * step // 5))
        self.release()

    def wheel(self, down, steps=1):
        self._x11("xdotool", "click", "--repeat", str(steps), "--delay", "10", "5" if down else "4")

    def key(self, *names):
        """Keys go to the window under the pointer."""
        self._x11("xdotool", "key", "--delay", "15", *names)

    def type(self, text):
        """To the window under the pointer, as key() does."""
        self._x11("xdotool", "type", "--delay", "15", text)

    def _x11(self, *words, **options):
        return processes.run(words, 60, env={**os.environ, **self.environment}, **options)
