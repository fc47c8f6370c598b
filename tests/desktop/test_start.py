"""The program comes and goes: folders, settings file, one instance, splash."""

import os
import time
import unittest

from case import Case
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
        self.kestrel.begin(*arguments)
        seen, deadline = None, time.monotonic() + 20
        while not self.kestrel.icon() and time.monotonic() < deadline:
            if not seen and (splash := self.kestrel.window("KestrelSplash")):
                seen = [c.text for c in self.desktop.probe.children(splash)]
        self.kestrel.wait_start()
        return seen

    def test_the_first_start_asks_for_the_language_makes_the_folders_and_quit_writes_the_settings(self):
        self.kestrel.begin()
        chooser = self.kestrel.wait_window("Form4")
        self.assertEqual(["data", "lang"], sorted(os.listdir(self.kestrel.data)))
        self.assertEqual(sorted(os.listdir(os.path.join(self.kestrel.folder, "lang"))),
                         sorted(os.listdir(os.path.join(self.kestrel.data, "lang"))))
        self.kestrel.press(chooser, "Return")
        self.kestrel.wait_start()
        self.assertEqual(0, self.kestrel.quit())
        place = tuple(self.kestrel.setting(k).encode() for k in ("playerwin_left", "playerwin_top"))
        self.assertTrue(all(int(p) >= 0 for p in place))
        self.assertEqual(DEFAULTS % place, self.kestrel.settings())
        self.assertEqual([], os.listdir(os.path.join(self.kestrel.data, "data")))

    def test_a_second_start_ends_silently(self):
        self.start()
        before = self.kestrel.windows()
        second = self.kestrel.launch()
        self.assertEqual(0, second.wait(10))
        self.assertEqual([self.kestrel.pid], self.desktop.probe.ask("processes", "Kestrel.exe"))
        self.assertEqual(before, self.kestrel.windows())
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

    def test_old_language_files_show_their_letters_and_hostile_ones_do_no_harm(self):
        self.kestrel.write_language("old.kesl", "1033:Größe & Co\n1034:-\n1035:Fin\0e\t\n1002".encode("cp1252"))
        self.start(language="old.kesl")
        menu = self.kestrel.look()
        self.assertEqual(["Größe & Co", "About", "Fin e"], [menu.labels[i] for i in (5, 7, 9)])
        self.kestrel.kill()
        self.kestrel.write_language("noise.kesl", bytes(range(256)) * 2000 + b"\n1035:" + b"x" * 100000)
        self.start(language="noise.kesl")
        self.assertEqual(0, self.kestrel.quit())

    def test_a_broken_icon_file_is_reported_and_replaced(self):
        self.kestrel.write_settings(showsplash=0)
        with open(os.path.join(self.kestrel.data, "data", "kesnormal.ico"), "wb") as file:
            file.write(b"no icon")
        self.kestrel.begin()
        box = self.kestrel.box()
        self.assertEqual(["The Icon File ist not Correct!", "Use Internal Icon"], box.text.splitlines())
        box.close()
        self.kestrel.wait_start()
        self.kestrel.choose("Genres", "Jazz", "Reload")  # which changes the picture twice
        wait_for(lambda: os.path.exists(self.kestrel.list_file("Jazz")), "the stations")

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

    def test_the_end_of_the_session_saves_everything_whatever_is_open_and_a_cancelled_one_nothing(self):
        def message():
            self.kestrel.choose("Genres", "Jazz", "Reload")
            self.kestrel.box()

        self.without_directory()
        self.kestrel.write_list("favs", [(b"Mine", b"http://127.0.0.1/1")])
        for opened in lambda: None, lambda: self.kestrel.browse("Genres", "Jazz"), message:
            self.start(maxentry=33)
            opened()
            form1 = self.kestrel.form1()
            self.assertEqual(1, self.desktop.probe.send(form1, WM_QUERYENDSESSION))
            self.desktop.probe.send(form1, WM_ENDSESSION, 0)
            self.assertTrue(self.kestrel.running())
            os.remove(self.kestrel.list_file("favs"))
            os.remove(os.path.join(self.kestrel.data, "settings.cfg"))
            self.desktop.probe.send(form1, WM_ENDSESSION, 1)
            # Windows ends the process when the message returns: all is written by then.
            self.assertEqual("33", self.kestrel.setting("maxentry"))
            self.assertEqual(b"Mine%#$http://127.0.0.1/1\r\n", self.kestrel.read_list("favs"))
            self.assertEqual(0, self.kestrel.wait_end())
            wait_for(lambda: not self.kestrel.icon(), "the icon to go")

    def test_without_its_audio_library_it_says_so_and_ends(self):
        self.without("bass.dll")
        self.kestrel.write_settings(showsplash=0)
        self.kestrel.begin()
        box = self.kestrel.box()
        self.assertEqual(("BASS.DLL", "BASS.DLL does not exists"), (box.title, box.text))
        box.close()
        self.kestrel.wait_end()


if __name__ == "__main__":
    unittest.main()
