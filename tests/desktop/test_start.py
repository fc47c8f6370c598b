"""The program comes and goes: folders, settings file, one instance, splash."""

import os
import shutil
import time
import unittest

from case import Case
from kestrel import RIGHT
from processes import wait_for

DEFAULTS = b"""#config for kestrel 1.0.68+
#do not edit

genre=1;1;1;1;1;1;1;1;1;1;1;1;1;1;1;1;1;1;1;1
bitrate=0
showsplash=1
showreloadallwindow=1
maxentry=20
maxchar=50
reloadonstartup=0
language=0
playerwin_left=%s
playerwin_top=%s
player=0
playerpath=-
volume=10000
leftmouse=0
rightmouse=0
playerstart=0
""".replace(b"\n", b"\r\n")

WM_QUERYENDSESSION, WM_ENDSESSION = 0x11, 0x16


class Start(Case):
    def splash_texts(self, *arguments):
        """Starts; the texts of the splash that showed on the way, None without one."""
        self.kestrel.process, seen = self.kestrel.launch(*arguments), None
        deadline = time.monotonic() + 20
        while not self.kestrel.icon() and time.monotonic() < deadline:
            for splash in self.desktop.probe.windows(class_name="KestrelSplash", visible=True):
                seen = seen or [c.text for c in self.desktop.probe.children(splash)]
        self.kestrel.start_agent()
        wait_for(lambda: not self.kestrel.windows(class_name="KestrelSplash"), "the splash to go")
        return seen

    def box_at_start(self):
        """Starts, and waits for a message instead of an icon."""
        self.kestrel.process = self.kestrel.launch()
        self.kestrel.pid = wait_for(lambda: self.desktop.probe.ask("processes", "Kestrel.exe"), "a start")[0]
        return self.kestrel.box()

    def test_the_first_start_asks_for_the_language_makes_the_folders_and_quit_writes_the_settings(self):
        self.kestrel.process = self.kestrel.launch()
        chooser = wait_for(lambda: self.desktop.probe.windows(class_name="Form4", visible=True), "the chooser")[0]
        self.assertEqual(["data", "lang"], sorted(os.listdir(self.kestrel.data)))
        self.assertEqual(sorted(os.listdir(os.path.join(self.kestrel.folder, "lang"))),
                         sorted(os.listdir(os.path.join(self.kestrel.data, "lang"))))
        self.assertIsNone(self.kestrel.icon())
        self.desktop.picture("first-start")
        self.desktop.move((chooser.rect[0] + 5, chooser.rect[1] + 5))
        self.desktop.key("Return")
        wait_for(self.kestrel.icon, "the icon")
        self.kestrel.start_agent()
        self.assertEqual(0, self.kestrel.quit())
        place = tuple(self.kestrel.setting(k).encode() for k in ("playerwin_left", "playerwin_top"))
        self.assertTrue(all(int(p) >= 0 for p in place))
        self.assertEqual(DEFAULTS % place, self.kestrel.settings())
        self.assertEqual([], os.listdir(os.path.join(self.kestrel.data, "data")))

    def test_an_own_folder_without_ours_is_left_as_it_is(self):
        folder = os.path.dirname(self.kestrel.data)
        os.makedirs(folder)
        self.kestrel.start("-nos")  # asks nothing
        self.assertEqual(0, self.kestrel.quit())
        self.assertEqual([], os.listdir(folder))

    def test_a_second_start_ends_silently(self):
        self.start()
        before = self.kestrel.windows()
        second = self.kestrel.launch()
        self.assertEqual(0, second.wait(10))
        self.assertEqual([self.kestrel.pid], self.desktop.probe.ask("processes", "Kestrel.exe"))
        self.assertEqual([repr(w) for w in before], [repr(w) for w in self.kestrel.windows()])
        self.assertEqual("Quit", self.kestrel.look().labels[-1])

    def test_the_splash_shows_as_the_settings_and_the_command_line_say(self):
        for value, arguments, expected in ((1, (), True), ("yes", (), True), (0, (), False),
                                           (2, (), False), (-1, (), False), (1, ("-nos",), False),
                                           (1, ("-NOS",), True)):
            with self.subTest(value=value, arguments=arguments):
                self.kestrel.write_settings(showsplash=value)
                texts = self.splash_texts(*arguments)
                self.assertEqual(expected, texts is not None)
                self.assertTrue(texts is None or "1.1.0" in texts, texts)
                self.kestrel.quit()

    def test_settings_beside_the_program_serve_the_start_only(self):
        beside = os.path.join(self.kestrel.folder, "settings.cfg")
        self.addCleanup(os.remove, beside)
        with open(beside, "w") as file:
            file.write("showsplash=0\r\nmaxentry=77\r\nrightmouse=2\r\n")
        self.assertIsNone(self.splash_texts())
        self.assertEqual("Genres", self.kestrel.look(button=RIGHT).labels[0])
        self.kestrel.quit()
        self.assertEqual(("0", "20", "0"), tuple(
            self.kestrel.setting(k) for k in ("showsplash", "maxentry", "rightmouse")))

    def test_settings_come_back_as_they_were_read(self):
        values = {"genre": "1;0;1;1;1;1;1;1;1;1;1;1;1;1;1;1;1;1;0;1", "bitrate": "3", "showsplash": "0",
                  "showreloadallwindow": "0", "maxentry": "0035", "maxchar": "80", "reloadonstartup": "0",
                  "language": "0", "playerwin_left": "1500", "playerwin_top": "3000", "player": "2",
                  "playerpath": r"C:\Player\play.exe -x=1 %1", "volume": "5000", "leftmouse": "1",
                  "rightmouse": "0", "playerstart": "0"}
        self.start(**values)
        self.kestrel.quit(RIGHT)
        self.assertEqual(values, {k: self.kestrel.setting(k) for k in values})

    def test_the_language_of_the_settings_is_copied_and_speaks_from_the_splash(self):
        language = b"# a comment\r\n0000: nothing\r\n0001:\tEinen Moment, bitte \r\n0001: too late\r\n"
        beside = os.path.join(self.kestrel.folder, "lang", "test.kesl")
        self.addCleanup(os.remove, beside)
        with open(beside, "wb") as file:
            file.write(language)
        self.kestrel.write_settings(language="test.kesl")
        self.assertIn("Einen Moment, bitte", self.splash_texts())
        with open(os.path.join(self.kestrel.data, "lang", "test.kesl"), "rb") as file:
            self.assertEqual(language, file.read())
        self.kestrel.quit()
        self.assertEqual("test.kesl", self.kestrel.setting("language"))

    def test_a_language_that_is_nowhere_becomes_the_built_in_one(self):
        for name in "gone.kesl", r"..\..\secret.kesl", "x":
            self.start(language=name)
            self.kestrel.quit()
            self.assertEqual("0" if len(name) > 1 else name, self.kestrel.setting("language"))

    def test_a_broken_icon_file_is_reported_and_replaced(self):
        self.kestrel.write_settings(showsplash=0)
        with open(os.path.join(self.kestrel.data, "data", "kesnormal.ico"), "wb") as file:
            file.write(b"no icon")
        box = self.box_at_start()
        self.assertEqual(["The Icon File ist not Correct!", "Use Internal Icon"], box.text.splitlines())
        box.close()
        wait_for(self.kestrel.icon, "an icon")

    def test_the_session_ends_while_a_message_or_a_menu_is_open(self):
        def message():
            self.kestrel.choose("Genres", "Jazz", "Reload")
            self.kestrel.box()

        self.kestrel.direct_to("127.0.0.1:9")  # nobody is there
        self.addCleanup(self.kestrel.direct_to, f"127.0.0.1:{self.radio.port}")
        for opened in lambda: self.kestrel.browse("Genres", "Jazz"), message:
            self.start()
            opened()
            os.remove(os.path.join(self.kestrel.data, "settings.cfg"))
            self.desktop.probe.send(self.kestrel.form1(), WM_ENDSESSION, 1)
            self.assertEqual("20", self.kestrel.setting("maxentry"))
            self.kestrel.wait_end()
            wait_for(lambda: not self.kestrel.icon(), "the icon to go")

    def test_broken_settings_leave_the_defaults(self):
        self.start(MaxChar="60", genre="1;2;x", bitrate="9", maxentry="abc", volume="loud", player="",
                   leftmouse="7e99", unknown="=")
        self.kestrel.quit()
        place = tuple(self.kestrel.setting(k).encode() for k in ("playerwin_left", "playerwin_top"))
        expected = DEFAULTS.replace(b"showsplash=1", b"showsplash=0").replace(b"maxchar=50", b"maxchar=60")
        self.assertEqual(expected % place, self.kestrel.settings())

    def test_a_changed_specials_file_is_read_when_another_program_says_so(self):
        self.start()
        target = self.kestrel.windows(text="kesziel")[0].handle
        self.assertNotIn("Own", self.kestrel.look("Genres").labels)
        self.kestrel.write_list("special", [(b"My Radio", b"http://127.0.0.1/1"), (b"Other", b"http://127.0.0.1/2")])
        self.assertEqual(0, self.desktop.probe.ask("copydata", target, 2, "ignored"))
        self.assertNotIn("Own", self.kestrel.look("Genres").labels)
        self.desktop.probe.ask("copydata", target, 1, "")
        self.assertEqual(["My Radio", "Other"], self.kestrel.look("Genres", "Own").labels[:2])

    def test_a_new_taskbar_gets_the_icon_again(self):
        self.start()
        self.desktop.probe.ask("forgeticon", self.kestrel.form1().handle, 1)
        wait_for(lambda: not self.kestrel.icon(), "the icon to go")
        self.desktop.probe.ask("broadcast", "TaskbarCreated")
        wait_for(self.kestrel.icon, "the icon to come back")
        self.assertEqual("Quit", self.kestrel.look().labels[-1])

    def test_the_end_of_the_session_saves_everything_and_a_cancelled_one_nothing(self):
        self.kestrel.write_list("favs", [(b"Mine", b"http://127.0.0.1/1")])
        self.start(maxentry=33)
        os.remove(self.kestrel.list_file("favs"))
        form1 = self.kestrel.form1()
        self.assertEqual(1, self.desktop.probe.send(form1, WM_QUERYENDSESSION))
        self.desktop.probe.send(form1, WM_ENDSESSION, 0)
        self.assertTrue(self.kestrel.running())
        os.remove(os.path.join(self.kestrel.data, "settings.cfg"))
        self.desktop.probe.send(form1, WM_ENDSESSION, 1)
        # Windows ends the process when the message returns: all is written by then.
        self.assertEqual("33", self.kestrel.setting("maxentry"))
        self.assertEqual(b"Mine%#$http://127.0.0.1/1\r\n", self.kestrel.read_list("favs"))
        self.assertEqual(0, self.kestrel.wait_end())
        wait_for(lambda: not self.kestrel.icon(), "the icon to go")

    def test_without_its_audio_library_it_says_so_and_ends(self):
        library = os.path.join(self.kestrel.folder, "bass.dll")
        os.rename(library, library + ".away")
        self.addCleanup(os.rename, library + ".away", library)
        self.kestrel.write_settings(showsplash=0)
        box = self.box_at_start()
        self.assertEqual(("BASS.DLL", "BASS.DLL does not exists"), (box.title, box.text))
        box.close()
        self.kestrel.wait_end()

    def test_without_the_aac_plug_in_it_says_so_and_goes_on(self):
        plug_in = os.path.join(self.kestrel.folder, "bass_aac.dll")
        shutil.move(plug_in, plug_in + ".away")
        self.addCleanup(shutil.move, plug_in + ".away", plug_in)
        self.start()
        box = self.kestrel.box()
        self.assertEqual(("bass_aac.dll", "bass_aac.dll not found. AAC support disabled"), (box.title, box.text))
        box.close()
        self.assertEqual("Quit", self.kestrel.look().labels[-1])


if __name__ == "__main__":
    unittest.main()
