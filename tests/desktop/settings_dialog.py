"""The settings dialog, the about box and the language chooser as their user sees them."""

import time

from kestrel import plain
from processes import wait_for

NAMES = """List2 Frame1 Frame2 Frame3 Frame4 Frame5 Frame6 Check1 Check2 Check3 Check4 Check5 Option1(0) Option1(1)
Option1(2) Text1 Text2 Text3 Text4 Text5 Label2 Label3 Label4 Label5 Label6 Label7 Label9 Label12 Image1_2 Image4_3
ic1 Combo1 Combo2 List1 ListView1 Command1 Command2 Command5 Command6 Command7 Command8 Command9 Command10""".split()
SETTINGS = {name: 1001 + i for i, name in enumerate(NAMES)} | {"Command3": 1, "Command4": 2}
ABOUT = {name: 1001 + i for i, name in enumerate("Label3 Text1 Label6 Label5 Label1 basslab Label4 Label7".split())} | {
    "Label2": 1}
CHOOSER = {name: 1001 + i for i, name in enumerate("Picture1 Label2 Frame1 Label1 Frame2 ic1".split())} | {"Command1": 1}
PAGES = ["Frame3", "Frame4", "Frame2", "Frame5", "Frame6"]

BM_GETCHECK = 0xF0
LB_GETSEL, LB_GETSELCOUNT = 0x187, 0x190
LB_GETCARETINDEX, LB_GETITEMHEIGHT = 0x19F, 0x1A1
CB_GETCURSEL, CB_GETCOUNT, CB_GETDROPPEDSTATE = 0x147, 0x146, 0x157
LVM_GETITEMCOUNT = 0x1004


class Dialog:
    def __init__(self, kestrel, class_name, ids):
        self.kestrel, self.desktop, self.probe = kestrel, kestrel.desktop, kestrel.probe
        self.class_name, self.ids = class_name, ids
        wait_for(self.window, lambda: f"{class_name}; {kestrel.state()}")

    def window(self):
        return self.kestrel.window(self.class_name)

    def controls(self):
        names = {number: name for name, number in self.ids.items()}
        return {names[c.id]: c for c in self.probe.children(self.window()) if c.id in names}

    def __getitem__(self, name):
        return self.controls()[name]

    def text(self, name):
        """Of a caption what is to be read."""
        control = self[name]
        return plain(control.text).rstrip() if control.class_name in ("Button", "Static") else control.text

    def click(self, name):
        self.desktop.click(self[name].middle)

    def send(self, name, message, wparam=0, lparam=0):
        return self.probe.send(self[name], message, wparam, lparam)

    def focus(self):
        handle = self.probe.ask("foreground")["focus"]
        return next((n for n, c in self.controls().items() if c.handle == handle), None)

    def press(self, *keys):
        self.kestrel.press(self.window(), *keys)

    def tab_through(self, count):
        """The controls that have the focus one after the other, from the one that has it now."""
        seen = [wait_for(self.focus, "a focus")]
        while len(seen) < count:
            self.press("Tab")
            seen.append(wait_for(lambda: (f := self.focus()) != seen[-1] and f, "the focus to move"))
        return seen

    def choose(self, combo, index):
        """Opens a combo box and picks an entry by keys."""
        time.sleep(0.6)  # a second click soon after the first would be a double click
        self.click(combo)
        wait_for(lambda: self.send(combo, CB_GETDROPPEDSTATE), f"the list of {combo}")
        self.desktop.key("Home", *["Down"] * index, "Return")
        wait_for(lambda: self.send(combo, CB_GETCURSEL) == index, f"entry {index} of {combo}")

    def wait_text(self, name, text):
        wait_for(lambda: self.text(name) == text, lambda: f"{text!r} in {name}; now {self.text(name)!r}")

    def write(self, name, text):
        self.click(name)
        self.desktop.key("ctrl+a", "BackSpace")
        self.desktop.type(text)
        self.wait_text(name, text)

    def closed(self):
        wait_for(lambda: not self.window(), f"{self.class_name} to close")


class SettingsDialog(Dialog):
    def __init__(self, kestrel, entry="Settings"):
        kestrel.choose(entry)
        super().__init__(kestrel, "Form2", SETTINGS)

    def click_row(self, box, number):
        """Of a list box."""
        left, top, _, _ = self[box].rect
        height = self.send(box, LB_GETITEMHEIGHT)
        self.desktop.click((left + 20, top + 2 + height * number + height // 2))

    def page(self, number):
        self.click_row("List2", number)
        wait_for(lambda: self[PAGES[number]].visible, f"page {number}")

    def checked(self, name):
        return self.send(name, BM_GETCHECK) == 1

    def ok(self):
        self.click("Command3")
        self.closed()

    def cancel(self):
        self.click("Command4")
        self.closed()
