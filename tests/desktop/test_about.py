"""The about box and the language chooser of the first start."""

import os
import shutil
import time
import unittest

from case import Case
from processes import wait_for
from settings_dialog import ABOUT, CB_GETCOUNT, CHOOSER, Dialog

GERMAN = """language:Deutsch
0001:Moment
0002:Erster Start
0003:Zu finden\\nneben der Uhr
0004:Sprache?
1035:Ende
"""


class About(Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.tools = os.path.join(cls.desktop.prefix.folder, "drive_c/tools")
        os.makedirs(cls.tools)
        shutil.copy(cls.desktop.tool("recorder.exe"), cls.tools)
        # The listener's browser.
        for key, name, text in ((r"Software\Classes\http", "URL Protocol", ""),
                                (r"Software\Classes\http\shell\open\command", "",
                                 r'"C:\tools\recorder.exe" "%1"')):
            cls.desktop.probe.ask("regset", "HKLM", key, name, text)
        with open(os.path.join(cls.kestrel.folder, "hosts.cfg"), "a") as hosts:
            hosts.write("website=site.test\r\nupdate=update.test:81\r\ndonate=donate.test\r\n"
                        "directorysite=stations.test\r\naudiosite=audio.test\r\n")

    def setUp(self):
        super().setUp()
        self.recorded = os.path.join(self.tools, "recorded.txt")
        if os.path.exists(self.recorded):
            os.remove(self.recorded)

    def about(self):
        self.kestrel.choose("About")
        return Dialog(self.kestrel, "Form3", ABOUT)

    def browsed(self):
        wait_for(lambda: os.path.exists(self.recorded), lambda: f"a page; {self.kestrel.state()}")
        with open(self.recorded, encoding="utf-8") as file:
            line = file.read()
        os.remove(self.recorded)
        return line.split('"')[3]

    def test_its_links_and_buttons_open_their_pages(self):
        self.start()
        dialog = self.about()
        for name, address in (("Label6", "http://site.test"), ("Label5", "http://stations.test"),
                              ("Label1", "http://stations.test"), ("basslab", "http://audio.test"),
                              ("Label7", "http://donate.test"),
                              ("Label4", "http://update.test:81/update2.php?file=kes&version=1.1.0")):
            with self.subTest(name):
                dialog.click(name)
                self.assertEqual(address.rstrip("/"), self.browsed().rstrip("/"))
        dialog.click("Label2")
        dialog.closed()

    def test_it_says_what_it_is_and_the_keyboard_works_it(self):
        self.start()
        dialog = self.about()
        self.assertEqual("Kestrel 1.1.0", dialog.text("Label3").splitlines()[0])
        self.assertEqual(5, len(dialog.text("Text1").splitlines()))
        place, title = dialog.window().rect, dialog["Label3"].middle
        self.desktop.press(title)
        for step in range(1, 5):
            self.desktop.move((title[0] + 15 * step, title[1] + 10 * step))
        self.desktop.release()
        wait_for(lambda: dialog.window().rect[:2] > place[:2], "it to be dragged by its title")
        seen = [dialog.focus()]
        while seen.count("Label2") < 2 and len(seen) < 12:
            dialog.press("Tab")
            seen.append(wait_for(lambda: (f := dialog.focus()) != seen[-1] and f, "the focus to move"))
        self.assertEqual(["Label2", "Label4", "Label7", "Text1", "Label6", "Label5", "Label1", "basslab", "Label2"], seen)
        dialog.press("Tab", "space")
        self.assertEqual("http://update.test:81/update2.php?file=kes&version=1.1.0", self.browsed())
        dialog.press("Escape")
        dialog.closed()
        dialog = self.about()
        dialog.press("Return")
        dialog.closed()

    def test_a_button_left_while_it_is_held_shows_that_until_an_update_check(self):
        self.start()
        dialog = self.about()
        left, top, _, _ = dialog.window().rect
        elsewhere = left + 200, top + 20

        def look():
            return self.desktop.pixels(dialog["Label7"].rect)

        self.desktop.move(elsewhere)
        before = look()
        self.desktop.press(dialog["Label7"].middle)
        wait_for(lambda: look() != before, "the pressed picture")
        self.desktop.move(elsewhere)
        self.desktop.release()
        time.sleep(0.3)
        self.assertNotEqual(before, look())
        self.assertFalse(os.path.exists(self.recorded))
        dialog.click("Label4")
        self.assertIn("update2.php", self.browsed())
        self.desktop.move(elsewhere)
        wait_for(lambda: look() == before, "the normal picture")

    # --- the language chooser

    def first_start(self):
        folder = os.path.join(self.kestrel.data, "lang")
        os.makedirs(folder)
        for name, text in (("aa.kesl", GERMAN), ("ab.kesl", "author:Nobody\n0002:X\n")):
            with open(os.path.join(folder, name), "w", encoding="utf-8", newline="\r\n") as file:
                file.write(text)
        self.kestrel.process = self.kestrel.launch()
        self.kestrel.pid = wait_for(lambda: self.desktop.probe.ask("processes", "Kestrel.exe"), "a start")[0]
        return Dialog(self.kestrel, "Form4", CHOOSER)

    def texts(self, dialog):
        return tuple(dialog.text(n) for n in ("Frame1", "Label1", "Frame2"))

    def test_the_first_start_asks_for_the_language_before_anything_else(self):
        dialog = self.first_start()
        english = "First Start", "You can find the Program on the Systray!", "Select your Language"
        self.assertEqual(english, self.texts(dialog))
        self.assertIsNone(self.kestrel.icon())
        shipped = len([n for n in os.listdir(os.path.join(self.kestrel.folder, "lang")) if n.endswith(".kesl")])
        self.assertEqual(2 + shipped, dialog.send("ic1", CB_GETCOUNT))
        dialog.choose("ic1", 1)
        wait_for(lambda: self.texts(dialog) == ("Erster Start", "Zu finden\r\nneben der Uhr", "Sprache?"),
                 lambda: f"German; {self.texts(dialog)}")
        self.desktop.picture("chooser-german")
        dialog.choose("ic1", 0)
        wait_for(lambda: self.texts(dialog) == english, "English again")
        dialog.choose("ic1", 1)
        dialog.click("Command1")
        wait_for(self.kestrel.icon, "an icon", 20)
        self.kestrel.start_agent()
        wait_for(lambda: not self.kestrel.windows(class_name="KestrelSplash"), "the splash to go")
        self.kestrel.choose("Ende")
        self.kestrel.wait_end()
        self.assertEqual("aa.kesl", self.kestrel.setting("language"))
        self.kestrel.start("-nos")
        self.assertEqual("Ende", self.kestrel.look().labels[-1])


if __name__ == "__main__":
    unittest.main()
