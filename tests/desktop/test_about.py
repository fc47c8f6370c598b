"""The about box and the language chooser of the first start."""

import os
import time
import unittest

from case import Case, Recorder
from processes import wait_for
from settings_dialog import ABOUT, CB_GETCOUNT, CHOOSER, Dialog

UPDATE = "http://update.test:81/update2.php?file=kes&version=1.1.0"
LINKS = {"Label6": "http://site.test", "Label5": "http://stations.test", "Label1": "http://stations.test",
         "basslab": "http://audio.test", "Label7": "http://donate.test", "Label4": UPDATE}
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
        cls.browser = Recorder(cls.desktop)
        cls.browser.register("http", '"%1"')
        with open(os.path.join(cls.kestrel.folder, "hosts.cfg"), "a") as hosts:
            hosts.write("website=site.test\r\nupdate=update.test:81\r\ndonate=donate.test\r\n"
                        "directorysite=stations.test\r\naudiosite=audio.test\r\n")

    def open(self):
        self.kestrel.choose("About")
        return Dialog(self.kestrel, "Form3", ABOUT)

    def browsed(self):
        return self.browser.take().split('"')[3].rstrip("/")

    def test_its_links_and_buttons_open_their_pages_and_one_that_is_left_shows_it(self):
        self.start()
        dialog = self.open()

        def look():
            self.kestrel.point(dialog.window())
            return self.desktop.pixels(dialog["Label7"].rect)

        before = look()
        for name, address in LINKS.items():
            with self.subTest(name):
                dialog.click(name)
                self.assertEqual(address, self.browsed())
        self.desktop.press(dialog["Label7"].middle)
        wait_for(lambda: look() != before, "the pressed picture")
        self.desktop.release()
        time.sleep(0.3)
        self.assertNotEqual(before, look())
        self.assertFalse(self.browser.called())
        dialog.click("Label4")  # an update check ends that
        self.assertEqual(UPDATE, self.browsed())
        wait_for(lambda: look() == before, "the normal picture")
        dialog.click("Label2")
        dialog.closed()

    def test_it_says_what_it_is_and_the_keyboard_works_it(self):
        self.start()
        dialog = self.open()
        self.assertEqual("Kestrel 1.1.0", dialog.text("Label3").splitlines()[0])
        self.assertEqual(5, len(dialog.text("Text1").splitlines()))
        place = dialog.window().rect
        self.desktop.drag(dialog["Label3"].middle, (60, 40))
        wait_for(lambda: dialog.window().rect[:2] > place[:2], "it to be dragged by its title")
        self.assertEqual(["Label2", "Label4", "Label7", "Text1", "Label6", "Label5", "Label1", "basslab", "Label2"],
                         dialog.tab_through(9))
        dialog.press("Tab", "space")
        self.assertEqual(UPDATE, self.browsed())
        dialog.press("Escape")
        dialog.closed()
        dialog = self.open()
        dialog.press("Return")
        dialog.closed()

    def test_the_first_start_asks_for_the_language_before_anything_else(self):
        self.kestrel.write_language("aa.kesl", GERMAN)
        self.kestrel.write_language("ab.kesl", "author:Nobody\n0002:X\n")
        self.kestrel.begin()
        dialog = Dialog(self.kestrel, "Form4", CHOOSER)

        def texts():
            return tuple(dialog.text(n) for n in ("Frame1", "Label1", "Frame2"))

        english = "First Start", "You can find the Program on the Systray!", "Select your Language"
        self.assertEqual(english, texts())
        self.assertIsNone(self.kestrel.icon())
        shipped = len([n for n in os.listdir(os.path.join(self.kestrel.folder, "lang")) if n.endswith(".kesl")])
        self.assertEqual(2 + shipped, dialog.send("ic1", CB_GETCOUNT))
        dialog.choose("ic1", 1)
        wait_for(lambda: texts() == ("Erster Start", "Zu finden\r\nneben der Uhr", "Sprache?"),
                 lambda: f"German; {texts()}")
        dialog.choose("ic1", 0)
        wait_for(lambda: texts() == english, "English again")
        dialog.choose("ic1", 1)
        dialog.click("Command1")
        self.kestrel.wait_start()
        self.kestrel.choose("Ende")
        self.kestrel.wait_end()
        self.assertEqual("aa.kesl", self.kestrel.setting("language"))
        self.kestrel.start("-nos")
        self.assertEqual("Ende", self.kestrel.look().labels[-1])


if __name__ == "__main__":
    unittest.main()
