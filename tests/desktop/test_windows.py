"""Every window in three languages on screens of three densities, and in all others on two:
no text is cut, nothing lies over anything else, all of it is on the screen. What is seen in
the three is kept as pictures."""

import os
import unittest

from case import Case
from kestrel import PROGRAM
from processes import wait_for
from settings_dialog import CHOOSER, Dialog, SettingsDialog

FILES = os.path.join(PROGRAM, "lang")
ENGLISH = {"1002": "Genres", "1023": "Reload all", "1024": "Favorites", "1033": "Settings", "1034": "About",
           "1038": "Search", "1039": "New Search", "1041": "Player", "1048": "Volume", "5001": "Organize Favorites"}
LANGUAGES = {"english": None, "german": "german.kesl", "russian": "russian.kesl"}
PAGE_NAMES = "program", "player", "genres", "own", "systray"
IDCANCEL = 2


def texts(file):
    if not file:
        return ENGLISH
    with open(os.path.join(FILES, file), encoding="utf-8") as lines:
        return dict(line.rstrip("\r\n").split(":", 1) for line in lines if ":" in line)


def place_of(file):
    """Its entry in the lists of languages."""
    return 1 + sorted(os.listdir(FILES)).index(file) if file else 0


def apart(a, b):
    return a[2] <= b[0] or b[2] <= a[0] or a[3] <= b[1] or b[3] <= a[1]


def within(inner, outer):
    return inner[0] >= outer[0] and inner[1] >= outer[1] and inner[2] <= outer[2] and inner[3] <= outer[3]


def faults(measures, screen):
    """What is wrong with a window, in words."""
    client, title = measures["client"], measures["title"]
    controls = measures["controls"]
    if not within(client, screen):
        yield f"{client} reaches over the screen"
    if title["needed"] > title["room"]:
        yield f"its title needs {title['needed']} of {title['room']}"
    for control in controls:
        if not within(control["rect"], client):
            yield f"control {control['id']} {control['rect']} reaches over {client}"
        for text in control["texts"]:
            if text["needed"][0] > text["room"][0] or text["needed"][1] > text["room"][1]:
                yield f"control {control['id']} cuts {text}"
    for i, a in enumerate(controls):
        for b in controls[i + 1:]:
            holds = (a["group"] and within(b["rect"], a["rect"])) or (b["group"] and within(a["rect"], b["rect"]))
            if not holds and not apart(a["rect"], b["rect"]):
                yield f"controls {a['id']} and {b['id']} lie over each other: {a['rect']}, {b['rect']}"


class Windows(Case):
    languages = LANGUAGES
    keeps_pictures = True
    maxDiff = None

    def setUp(self):
        super().setUp()
        self.found = []

    def see(self, name, window):
        """Looks at an open window."""
        name = f"{name}-{self.language}-{self.density}"
        measures = self.desktop.probe.ask("measure", self.kestrel.pid, window.handle)
        self.assertTrue(measures["controls"], name)
        self.found += [f"{name}: {fault}" for fault in faults(measures, self.desktop.rect)]
        self.keep(name, window)

    def keep(self, name, window):
        if self.keeps_pictures:
            self.desktop.picture(name, window.rect)

    def wait_window(self, class_name):
        return wait_for(lambda: next(iter(self.kestrel.windows(class_name=class_name, visible=True)), None),
                        lambda: f"{class_name}; {self.kestrel.state()}")

    def wait_gone(self, window):
        wait_for(lambda: window.handle not in [w.handle for w in self.kestrel.windows(visible=True)],
                 f"{window} to go")

    def open(self, *ids):
        self.kestrel.choose(*(self.words[i] for i in ids))

    def press(self, window, *keys):
        """Where keys reach it and the pointer does nothing."""
        left, top, _, _ = window.rect
        self.desktop.move((left + 20, top + 8))
        self.desktop.key(*keys)

    def close(self, window):
        self.press(window, "Escape")
        self.wait_gone(window)

    # --- each window

    def see_player(self):
        self.see("player", self.kestrel.player())
        whole = self.kestrel.player().rect
        self.desktop.click(self.kestrel.control("mini").middle)
        wait_for(lambda: self.kestrel.player().rect[3] - self.kestrel.player().rect[1] < 80 * self.density / 96,
                 "one line")
        self.see("mini", self.kestrel.player())
        self.desktop.click(self.kestrel.control("mini").middle)
        wait_for(lambda: self.kestrel.player().rect == whole, "the whole window")

    def see_volume(self):
        self.open("1041", "1048")
        popup = self.wait_window("volform")
        self.keep(f"volume-{self.language}-{self.density}", popup)
        self.close(popup)

    def see_settings(self):
        dialog = SettingsDialog(self.kestrel, self.words["1033"])
        for number, name in enumerate(PAGE_NAMES):
            dialog.page(number)
            self.see("settings-" + name, dialog.window())
            if name == "own":
                self.see_entries(dialog)
        dialog.press("Escape")
        dialog.closed()

    def see_entries(self, dialog):
        row = self.desktop.probe.children(dialog["ListView1"])[0].rect  # the header; below it the first one
        self.desktop.click((row[0] + 20, row[3] + 8 * self.density // 96))
        wait_for(lambda: dialog["Command8"].enabled, "a selection")
        for button, name in (("Command6", "new-entry"), ("Command8", "edit-entry")):
            dialog.click(button)
            window = self.wait_window("KestrelEntryForm")
            self.see(name, window)
            self.close(window)

    def see_about(self):
        self.open("1034")
        window = self.wait_window("Form3")
        self.see("about", window)
        self.close(window)

    def see_organiser(self):
        self.open("1002", "1024", "5001")
        window = self.wait_window("editfavs")
        self.see("organiser", window)
        self.close(window)

    def see_search(self):
        self.open("1002", "1038", "1039")
        window = self.wait_window("searchform")
        self.see("search", window)
        self.close(window)

    def see_reload(self):
        self.radio.switch("directory", "hold")
        self.open("1002", "1023")
        window = self.wait_window("reloadform")
        self.see("reload", window)
        self.press(window, "Escape")
        cancel = next(c for c in self.desktop.probe.children(window) if c.id == IDCANCEL)
        wait_for(lambda: not self.window_enabled(window, cancel), "the abort")
        self.see("reload-aborted", window)
        self.radio.switch("directory", "none")
        self.wait_gone(window)
        wait_for(lambda: self.kestrel.form1().text == "Kestrel", "the end of the reload")

    def window_enabled(self, window, control):
        return next(c for c in self.desktop.probe.children(window) if c.handle == control.handle).enabled

    def speak(self, language):
        """Through the settings, in force at once."""
        file = self.languages[language]
        if file:
            dialog = SettingsDialog(self.kestrel, self.words["1033"])
            dialog.choose("ic1", place_of(file))
            dialog.ok()
        self.language, self.words = language, texts(file)

    def test_every_window(self):
        self.kestrel.write_list("favs", [(b"Half Moon Jazz", b"http://127.0.0.1/1.pls"),
                                         ("Радио Полынья & Co".encode(), b"http://127.0.0.1/2.pls")])
        self.kestrel.write_list("special", [(b"My own station", b"http://127.0.0.1/live")])
        self.start(playerstart=1, genre=";".join("1" if i in (0, 1, 19) else "0" for i in range(20)))
        self.words = ENGLISH
        for language in self.languages:
            self.speak(language)
            self.see_player()
            self.see_volume()
            self.see_settings()
            self.see_about()
            self.see_organiser()
            self.see_search()
            self.see_reload()
        self.assertEqual("", "\n".join(self.found))

    def test_the_first_start(self):
        self.kestrel.process = self.kestrel.launch()
        self.kestrel.pid = wait_for(lambda: self.desktop.probe.ask("processes", "Kestrel.exe"), "a start")[0]
        dialog = Dialog(self.kestrel, "Form4", CHOOSER)
        self.kestrel.inject_agent()
        for self.language, file in self.languages.items():
            if file:
                dialog.choose("ic1", place_of(file))
                wait_for(lambda: dialog.text("Frame1") == texts(file)["0002"], self.language)
            self.see("chooser", dialog.window())
        self.assertEqual("", "\n".join(self.found))

    def test_the_splash_window(self):
        # Without its audio library the program's start stops at a message box.
        library = os.path.join(self.kestrel.folder, "bass.dll")
        os.rename(library, library + ".away")
        self.addCleanup(os.rename, library + ".away", library)
        for self.language, file in self.languages.items():
            self.kestrel.write_settings(language=file or "0")
            self.kestrel.process = self.kestrel.launch()
            self.kestrel.pid = wait_for(lambda: self.desktop.probe.ask("processes", "Kestrel.exe"), "a start")[0]
            self.kestrel.box()
            self.kestrel.inject_agent()
            self.see("splash", self.wait_window("KestrelSplash"))
            self.kestrel.kill()
        self.assertEqual("", "\n".join(self.found))


class Windows150(Windows):
    density = 144


class Windows200(Windows):
    density = 192


class OtherLanguages(Windows):
    languages = {f[:-5]: f for f in sorted(os.listdir(FILES)) if f not in LANGUAGES.values()}
    keeps_pictures = False  # which take most of the time
    test_the_first_start = test_the_splash_window = None


class OtherLanguages200(OtherLanguages):
    density = 192


if __name__ == "__main__":
    unittest.main()
