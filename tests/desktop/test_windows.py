"""Every window in three languages on screens of three densities, and in all others on two:
no text is cut, nothing lies over anything else, all of it is on the screen. What is seen in
the three is kept as pictures."""

import unittest

from case import Case
from kestrel import LANGUAGES, texts
from processes import wait_for
from settings_dialog import CHOOSER, Dialog, SettingsDialog

ENGLISH = {"1002": "Genres", "1023": "Reload all", "1024": "Favorites", "1033": "Settings", "1034": "About",
           "1038": "Search", "1039": "New Search", "1041": "Player", "1048": "Volume", "5001": "Organize Favorites"}
PICTURED = {"english": None, "german": "german.kesl", "russian": "russian.kesl"}
PAGE_NAMES = "program", "player", "genres", "own", "systray"
IDCANCEL = 2


def place_of(file):
    """Its entry in the lists of languages."""
    return 1 + LANGUAGES.index(file) if file else 0


def apart(a, b):
    return a[2] <= b[0] or b[2] <= a[0] or a[3] <= b[1] or b[3] <= a[1]


def within(inner, outer):
    return inner[0] >= outer[0] and inner[1] >= outer[1] and inner[2] <= outer[2] and inner[3] <= outer[3]


def faults(measures, screen):
    """What is wrong with a window, in words."""
    client, controls = measures["client"], measures["controls"]
    if not within(client, screen):
        yield f"{client} reaches over the screen"
    if measures["cut"]:
        yield "its title is cut"
    for control in controls:
        if not within(control["rect"], client):
            yield f"control {control['id']} {control['rect']} reaches over {client}"
        yield from (f"control {control['id']} cuts {text!r}" for text in control["texts"])
    for i, a in enumerate(controls):
        for b in controls[i + 1:]:
            holds = (a["group"] and within(b["rect"], a["rect"])) or (b["group"] and within(a["rect"], b["rect"]))
            if not holds and not apart(a["rect"], b["rect"]):
                yield f"controls {a['id']} and {b['id']} lie over each other: {a['rect']}, {b['rect']}"


class Windows(Case):
    languages = PICTURED
    keeps_pictures = True
    maxDiff = None

    def setUp(self):
        super().setUp()
        self.found = []

    def see(self, name, window):
        """Looks at an open window."""
        name = f"{name}-{self.language}-{self.density}"
        measures = self.kestrel.ask_agent(f"measure {window.handle}")
        self.assertTrue(measures["controls"], name)
        self.found += [f"{name}: {fault}" for fault in faults(measures, self.desktop.rect)]
        self.keep(name, window)

    def keep(self, name, window):
        if self.keeps_pictures:
            self.desktop.picture(name, window.rect)

    def open(self, *ids):
        self.kestrel.choose(*(self.words[i] for i in ids))

    def see_dialog(self, name, class_name, *ids):
        """One that a menu's entry opens and Esc closes."""
        self.open(*ids)
        window = self.kestrel.wait_window(class_name)
        self.see(name, window)
        self.close(window)

    def close(self, window):
        self.kestrel.press(window, "Escape")
        self.kestrel.wait_gone(window)

    # --- each window

    def see_player(self):
        self.see("player", self.kestrel.player())
        whole = self.kestrel.player().rect
        self.assertGreater(whole[2] - whole[0], 300 * self.density / 96)
        self.desktop.click(self.kestrel.control("mini").middle)
        wait_for(lambda: self.kestrel.player().rect[3] - self.kestrel.player().rect[1] < 80 * self.density / 96,
                 "one line")
        self.see("mini", self.kestrel.player())
        self.desktop.click(self.kestrel.control("mini").middle)
        wait_for(lambda: self.kestrel.player().rect == whole, "the whole window")

    def see_menus(self):
        """Every one has the language's texts, letter by letter."""
        def names(*ids):
            return [self.words[str(i)] for i in ids]

        if self.words is ENGLISH:
            return
        self.assertEqual(names(6005, 6006), [self.kestrel.control(name).text for name in ("pin", "mini")])
        menu = self.kestrel.open_menu()
        self.assertEqual(names(1002, 1026, 1041, 1033, 1034, 1035), [label for label in menu.labels if label != "-"])
        self.assertEqual(names(1042, 1043, 1048, 1045),
                         [t for t in self.kestrel.hover(menu, names(1041)[0]).labels if t in self.words.values()])
        self.assertEqual(names(*range(1027, 1033)), self.kestrel.hover(menu, names(1026)[0]).labels)
        genres = self.kestrel.hover(menu, names(1002)[0])
        self.assertEqual(names(*range(1003, 1022), 1038, 1037, 1024, 1023),
                         [label for label in genres.labels if label != "-"])
        for entry, texts_inside in ((1038, names(1039)), (1024, names(1025, 5001)), (1003, names(1022))):
            inside = self.kestrel.hover(genres, names(entry)[0]).labels
            self.assertLessEqual(set(texts_inside), set(inside))
        self.kestrel.close_menus()

    def see_volume(self):
        self.open("1041", "1048")
        popup = self.kestrel.wait_window("volform")
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
            window = self.kestrel.wait_window("KestrelEntryForm")
            self.see(name, window)
            self.close(window)

    def see_reload(self):
        self.radio.switch("directory", "hold")
        self.open("1002", "1023")
        window = self.kestrel.wait_window("reloadform")
        self.see("reload", window)
        self.kestrel.press(window, "Escape")
        wait_for(lambda: not next(c for c in self.desktop.probe.children(window) if c.id == IDCANCEL).enabled,
                 "the abort")
        self.see("reload-aborted", window)
        self.radio.switch("directory", "none")
        self.kestrel.wait_gone(window)
        self.kestrel.wait_idle()

    def speak(self, language):
        """Through the settings, in force at once."""
        file = self.languages[language]
        if file:
            dialog = SettingsDialog(self.kestrel, self.words["1033"])
            dialog.choose("ic1", place_of(file))
            dialog.ok()
        self.language, self.words = language, texts(file) if file else ENGLISH

    def test_every_window(self):
        self.kestrel.write_list("favs", [(b"Half Moon Jazz", b"http://127.0.0.1/1.pls"),
                                         ("Радио Полынья & Co".encode(), b"http://127.0.0.1/2.pls")])
        self.kestrel.write_list("special", [(b"My own station", b"http://127.0.0.1/live")])
        self.start(playerstart=1)
        self.words = ENGLISH
        for language in self.languages:
            self.speak(language)
            self.see_player()
            self.see_menus()
            self.see_volume()
            self.see_settings()
            self.see_dialog("about", "Form3", "1034")
            self.see_dialog("organiser", "editfavs", "1002", "1024", "5001")
            self.see_dialog("search", "searchform", "1002", "1038", "1039")
            self.see_reload()
        self.assertEqual("", "\n".join(self.found))

    def test_the_first_start(self):
        self.kestrel.begin()
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
        self.without("bass.dll")
        for self.language, file in self.languages.items():
            self.kestrel.write_settings(language=file or "0")
            self.kestrel.begin()
            self.kestrel.box()
            self.kestrel.inject_agent()
            splash = self.kestrel.wait_window("KestrelSplash")
            self.see("splash", splash)
            if file:
                self.assertIn(texts(file)["0001"], [child.text for child in self.desktop.probe.children(splash)])
            self.kestrel.kill()
        self.assertEqual("", "\n".join(self.found))


class Windows150(Windows):
    density = 144


class Windows200(Windows):
    density = 192


class OtherLanguages(Windows):
    languages = {f[:-5]: f for f in LANGUAGES if f not in PICTURED.values()}
    keeps_pictures = False  # which take most of the time
    test_the_first_start = test_the_splash_window = None


class OtherLanguages200(OtherLanguages):
    density = 192


if __name__ == "__main__":
    unittest.main()
