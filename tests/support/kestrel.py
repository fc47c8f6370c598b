"""The program as its user has it: an icon, menus, message boxes, a player window."""

import os
import shutil
import subprocess
import time

from processes import wait_for
from probe import Seen

PROGRAM = os.environ["KESTREL_PROGRAM"]  # the built program folder
LANGUAGES = sorted(os.listdir(os.path.join(PROGRAM, "lang")))  # files as shipped
LEFT, RIGHT = 1, 3
# Controls of the player window, by id.
PLAYER = {"play": 1001, "stop": 1002, "name": 1003, "station": 1004, "song": 1005, "bitrate": 1006,
          "format": 1007, "record": 1008, "volume": 1009, "pin": 1010, "mini": 1011, "hide": 1012}


def texts(language):
    """A shipped file's entries by id."""
    with open(os.path.join(PROGRAM, "lang", language), encoding="utf-8") as file:
        return dict(line.rstrip("\n").split(":", 1) for line in file if ":" in line and line[0] not in "#'")


def plain(text):
    """A caption's text without what marks its letter."""
    return text.replace("&&", "\0").replace("&", "").replace("\0", "&")


def records(stations):
    """A list file's bytes."""
    return b"".join(b"%s%%#$%s\r\n" % record for record in stations)


class Item(Seen):
    @property
    def label(self):
        return plain(self.text)


class Popup:
    def __init__(self, menu, rect, items):
        self.menu, self.rect = menu, rect
        self.items = [Item(**item) for item in items]

    def __getitem__(self, label):
        for item in self.items:
            if item.label == label:
                return item
        raise KeyError(f"no {label!r} in {self.labels}")

    @property
    def labels(self):
        return ["-" if i.separator else i.label for i in self.items]

    @property
    def border(self):
        """A point where keys reach it and no entry is lit."""
        return self.rect[0] + 1, self.rect[1] + 1

    def shows(self, item):
        return item.rect[1] >= self.rect[1] and item.rect[3] <= self.rect[3]


class Box:
    """An open message box."""

    def __init__(self, kestrel, window):
        self.kestrel, self.window, self.title = kestrel, window, window.text
        parts = kestrel.probe.children(window)
        self.buttons = [c for c in parts if c.class_name == "Button"]
        self.text = "\n".join(c.text for c in parts if c.class_name == "Static" and c.text)

    def close(self, button=0):
        self.kestrel.desktop.click(self.buttons[button].middle)
        self.kestrel.wait_gone(self.window)


class Kestrel:
    controls = tuple(PLAYER)

    def __init__(self, desktop, directory="127.0.0.1:9"):
        self.desktop, self.probe = desktop, desktop.probe
        self.folder = os.path.join(desktop.prefix.folder, "drive_c/Kestrel")
        self.data = os.path.join(desktop.prefix.appdata, "ardenware/kes")
        self.process = None  # while it should be running
        self.pid = None
        shutil.copytree(PROGRAM, self.folder, dirs_exist_ok=True)
        self.direct_to(directory)

    # --- its files

    def direct_to(self, directory):
        """Which host and port it asks for stations, from its next start on."""
        with open(os.path.join(self.folder, "hosts.cfg"), "w") as hosts:
            hosts.write(f"directory={directory}\n")

    def forget_everything(self):
        shutil.rmtree(os.path.dirname(self.data), ignore_errors=True)

    def write_settings(self, **values):
        os.makedirs(os.path.join(self.data, "data"), exist_ok=True)
        with open(os.path.join(self.data, "settings.cfg"), "wb") as file:
            file.write(b"".join(b"%s=%s\r\n" % (k.encode(), str(v).encode()) for k, v in values.items()))

    def write_list(self, name, stations, folder=None):
        """A cache, favourites or specials file of (title, address) records, bytes."""
        folder = folder or os.path.join(self.data, "data")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, name + ".dat"), "wb") as file:
            file.write(records(stations))

    def write_language(self, name, text):
        """A language file beside the shipped ones: text, or bytes as they are."""
        folder = os.path.join(self.data, "lang")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, name), "wb") as file:
            file.write(text if isinstance(text, bytes) else text.replace("\n", "\r\n").encode())

    def list_file(self, name):
        return os.path.join(self.data, "data", name + ".dat")

    def read_list(self, name):
        with open(self.list_file(name), "rb") as file:
            return file.read()

    def settings(self):
        """The written file's bytes."""
        with open(os.path.join(self.data, "settings.cfg"), "rb") as file:
            return file.read()

    def setting(self, name):
        lines = self.settings().decode().split("\r\n")
        return next(line for line in lines if line.startswith(name + "=")).split("=", 1)[1]

    # --- coming and going

    def launch(self, *arguments):
        return self.desktop.prefix.start(
            "C:\\Kestrel\\Kestrel.exe", *arguments, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def begin(self, *arguments):
        """Starts it; a dialog or a message may come before the icon."""
        self.process = self.launch(*arguments)
        self.pid = wait_for(lambda: self.probe.ask("processes", "Kestrel.exe"), "a start")[0]

    def start(self, *arguments):
        self.begin(*arguments)
        self.wait_start()

    def wait_start(self):
        """The rest of the start; then there are eyes for the menus."""
        wait_for(self.icon, lambda: f"an icon in the tray; {self.state()}", 30)
        # The start's last step; a box instead says what stands in the way.
        wait_for(lambda: self.label("name") == "stop" or self.boxes(), "the end of the start")
        wait_for(lambda: not self.window("KestrelSplash"), "the splash to go")
        self.inject_agent()

    def inject_agent(self):
        self.probe.ask("inject", self.pid, self.desktop.prefix.windows_path(self.desktop.tool("agent.dll")))

    def ask_agent(self, request):
        return self.probe.ask("agent", self.pid, request)

    def state(self):
        ended = self.process and self.process.poll()
        return f"ended with {ended}" if ended is not None else f"windows {self.probe.windows(visible=True)}"

    def running(self):
        return bool(self.probe.ask("processes", "Kestrel.exe"))

    def wait_end(self, seconds=20):
        code = self.process.wait(seconds)
        self.process = None
        wait_for(lambda: not self.running(), "the program to end", seconds)
        return code

    def quit(self, button=LEFT):
        """Through the main menu; its exit code."""
        self.choose("Quit", button=button)
        code = self.wait_end()
        wait_for(lambda: not self.icon(), "the icon to go")
        return code

    def kill(self):
        """Ends it whatever it is doing; nothing is saved."""
        for pid in self.probe.ask("processes", "Kestrel.exe"):
            self.probe.ask("terminate", pid)
        if self.process:
            self.process.wait(20)
            self.process = None
        wait_for(lambda: not self.icon(), "the icon to go", 20)

    # --- the icon

    def icon(self):
        """Where it is; None without one. (The taskbar shows only while it has an icon.)"""
        bars = self.probe.windows(class_name="Shell_TrayWnd", visible=True)
        if not bars:
            return None
        _, top, right, bottom = bars[0].rect
        half = (bottom - top) // 2
        return right - half, top + half

    def icon_picture(self):
        """What it looks like. The taskbar is there before it is painted: until then there is one colour."""
        x, y = self.icon()

        def painted():
            pixels = self.desktop.pixels((x - 8, y - 8, x + 8, y + 8))
            return len({pixels[i:i + 6] for i in range(-6 * 256, -6, 6)}) > 1 and pixels

        return wait_for(painted, "the icon's picture")

    def wait_tip(self, text):
        """Points at the icon, from elsewhere, until the taskbar says this about it."""
        def tip():
            self.desktop.move((500, 400))
            time.sleep(0.2)
            self.desktop.move(self.icon())
            time.sleep(1)  # for that long the pointer rests
            tips = self.probe.windows(class_name="tooltips_class32", visible=True)
            return text in [self.probe.ask("text", t.handle) for t in tips]

        wait_for(tip, f"the tip {text!r}")

    def form1(self):
        """The hidden main window; its caption is the icon's tooltip."""
        return self.windows(class_name="KestrelForm1")[0]

    def idle(self):
        return self.form1().text == "Kestrel"

    def wait_idle(self):
        wait_for(self.idle, "the end of the work", 30)

    # --- the menus

    def popups(self):
        """The open ones, in the order in which they were opened."""
        try:
            return [Popup(**popup) for popup in self.ask_agent("menus")]
        except RuntimeError:
            if self.running():
                raise
            return []

    def open_menu(self, button=LEFT):
        self.desktop.click(self.icon(), button)
        return wait_for(self.popups, lambda: f"a menu; {self.state()}")[0]

    def close_menus(self):
        """As one does who changed his mind: a click elsewhere."""
        self.desktop.click((20, 20))
        wait_for(lambda: not self.popups(), "the menus to close")

    def hover(self, popup, label):
        """Moves to an entry; the submenu that opens, if it has one."""
        item = popup[label]
        self.desktop.move(item.middle)
        if not item.submenu:
            return None
        return wait_for(lambda: next((p for p in self.popups() if p.menu == item.submenu and p.items), None),
                        lambda: f"the submenu {label!r}; open: {[p.labels for p in self.popups()]}")

    def browse(self, *labels, button=LEFT):
        """Opens menu after menu; the last one."""
        popup = self.open_menu(button)
        for label in labels:
            popup = self.hover(popup, label)
        return popup

    def choose(self, *labels, button=LEFT):
        """Opens menu after menu and clicks the last entry."""
        popup = self.browse(*labels[:-1], button=button)
        self.desktop.click(popup[labels[-1]].middle)
        wait_for(lambda: not self.popups(), "the menus to close")

    def look(self, *labels, button=LEFT):
        """A menu as it is now, closed again."""
        popup = self.browse(*labels, button=button)
        self.close_menus()
        return popup

    # --- windows

    def windows(self, **which):
        return self.probe.windows(process=self.pid, **which)

    def window(self, class_name):
        """The one that shows; None without one."""
        return next(iter(self.windows(class_name=class_name, visible=True)), None)

    def wait_window(self, class_name):
        return wait_for(lambda: self.window(class_name), lambda: f"{class_name}; {self.state()}")

    def wait_gone(self, window):
        wait_for(lambda: window.handle not in [w.handle for w in self.windows(visible=True)], f"{window} to go")

    def point(self, window):
        """At a place where keys reach the window and the pointer does nothing."""
        left, top, _, _ = window.rect
        self.desktop.move((left + 20, top + 8))

    def press(self, window, *keys):
        self.point(window)
        self.desktop.key(*keys)

    def boxes(self):
        return [Box(self, w) for w in self.windows(class_name="#32770", visible=True)]

    def box(self, seconds=20):
        return wait_for(self.boxes, lambda: f"a message box; {self.state()}", seconds)[0]

    def player(self):
        """The player window; None while it is hidden."""
        return self.window("frmNetRadio")

    def label(self, name):
        """Text of a player window's control, also while that is hidden."""
        return self.control(name).text

    def control(self, name):
        window = self.windows(class_name="frmNetRadio")[0]
        return next(c for c in self.probe.children(window) if c.id == PLAYER[name])

    def wait_label(self, name, condition, seconds=20):
        return wait_for(lambda: (t := self.label(name)) and condition(t) and t,
                        lambda: f"{name}; now {self.label(name)!r}, {[b.text for b in self.boxes()]}", seconds)
