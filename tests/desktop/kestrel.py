"""The program as its user has it: an icon, menus, message boxes, a player window."""

import os
import shutil
import subprocess

from processes import wait_for
from probe import middle

PROGRAM = os.environ["KESTREL_PROGRAM"]  # the built program folder
LEFT, RIGHT = 1, 3
# Controls of the player window, by id.
PLAYER = {"play": 1001, "stop": 1002, "name": 1003, "station": 1004, "song": 1005, "bitrate": 1006,
          "format": 1007, "record": 1008, "volume": 1009, "pin": 1010, "mini": 1011, "hide": 1012}


class Item:
    def __init__(self, fields):
        self.text, self.separator = fields["text"], fields["separator"]
        self.checked, self.greyed, self.lit = fields["checked"], fields["greyed"], fields["lit"]
        self.submenu, self.rect = fields["submenu"], tuple(fields["rect"])

    @property
    def middle(self):
        return middle(self.rect)

    @property
    def label(self):
        """Text without what marks its letter."""
        return self.text.replace("&&", "\0").replace("&", "").replace("\0", "&")

    def __repr__(self):
        marks = "".join(m for m, on in (("v", self.checked), ("-", self.greyed), (">", self.submenu)) if on)
        return f"<{'----' if self.separator else self.text} {marks}>"


class Popup:
    def __init__(self, fields):
        self.window, self.menu, self.rect = fields["window"], fields["menu"], tuple(fields["rect"])
        self.items = [Item(i) for i in fields["items"]]

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

    def close(self):
        self.kestrel.desktop.click(self.buttons[0].middle)
        wait_for(lambda: self.window.handle not in [w.handle for w in self.kestrel.windows()],
                 "the box to close")


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
            file.write(b"".join(b"%s%%#$%s\r\n" % record for record in stations))

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
        return dict(line.split(b"=", 1) for line in self.settings().split(b"\r\n")
                    if b"=" in line)[name.encode()].decode()

    # --- coming and going

    def launch(self, *arguments):
        return self.desktop.prefix.start(
            "C:\\Kestrel\\Kestrel.exe", *arguments, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def start(self, *arguments):
        self.process = self.launch(*arguments)
        wait_for(self.icon, lambda: f"an icon in the tray; {self.state()}", 30)
        self.start_agent()
        return self

    def start_agent(self):
        """Eyes for the menus of the running program, once its start is over."""
        self.pid = self.probe.ask("processes", "Kestrel.exe")[0]
        # The start's last step; a box instead says what stands in the way.
        wait_for(lambda: self.label("name") == "stop" or self.boxes(), "the end of the start")
        self.inject_agent()

    def inject_agent(self):
        self.probe.ask("inject", self.pid, self.desktop.prefix.windows_path(self.desktop.tool("agent.dll")))

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

    def form1(self):
        """The hidden main window; its caption is the icon's tooltip."""
        return self.windows(class_name="KestrelForm1")[0]

    # --- the menus

    def popups(self):
        """The open ones, in the order in which they were opened."""
        try:
            return [Popup(p) for p in self.probe.ask("menus", self.pid)]
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

    def boxes(self):
        return [Box(self, w) for w in self.windows(class_name="#32770", visible=True)]

    def box(self, seconds=20):
        return wait_for(self.boxes, lambda: f"a message box; {self.state()}", seconds)[0]

    def player(self):
        """The player window; None while it is hidden."""
        return next(iter(self.windows(class_name="frmNetRadio", visible=True)), None)

    def label(self, name):
        """Text of a player window's control, also while that is hidden."""
        return self.control(name).text

    def control(self, name):
        window = self.windows(class_name="frmNetRadio")[0]
        return next(c for c in self.probe.children(window) if c.id == PLAYER[name])

    def wait_label(self, name, condition, seconds=20):
        return wait_for(lambda: (t := self.label(name)) and condition(t) and t,
                        lambda: f"{name}; now {self.label(name)!r}, {[b.text for b in self.boxes()]}", seconds)
