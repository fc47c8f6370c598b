"""A station's click up to the point where somebody else plays it."""

import os
import shutil
import unittest

from case import Case
from processes import wait_for

BROKEN = "Can't Connect. Error in Datafile"
OFFLINE = "Not Online or Site unreachable"
RECORDER = r"C:\tools\recorder.exe"
SAVED = r"C:\users\{}\AppData\Roaming\ardenware\kes\tmpdata.{}"


class Launch(Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.tools = os.path.join(cls.desktop.prefix.folder, "drive_c/tools")
        os.makedirs(cls.tools)
        shutil.copy(cls.desktop.tool("recorder.exe"), cls.tools)
        # The listener's default player, for all users as its installer would do.
        for kind in "pls", "m3u":
            for key, text in ((rf"Software\Classes\.{kind}", "test.player"),
                              (r"Software\Classes\test.player\shell\open\command",
                               f'"{RECORDER}" /play "%1"')):
                cls.desktop.probe.ask("regset", "HKLM", key, "", text)

    def setUp(self):
        super().setUp()
        self.recorded = os.path.join(self.tools, "recorded.txt")
        if os.path.exists(self.recorded):
            os.remove(self.recorded)

    def click(self, address, **settings):
        """A station of that address is clicked."""
        self.kestrel.write_list("Jazz", [(b"Station", address.encode())])
        if not self.kestrel.running():
            self.start(**settings)
        self.kestrel.choose("Genres", "Jazz", "Station")

    def command_line(self):
        """What the program that was started got."""
        wait_for(lambda: os.path.exists(self.recorded), lambda: f"a command line; {self.kestrel.state()}")
        with open(self.recorded, encoding="utf-8") as file:
            return file.read()

    def saved_path(self, extension="pls"):
        user = self.kestrel.data.split("/users/")[1].split("/")[0]
        return SAVED.format(user, extension)

    def saved(self):
        """The temporary playlists, by extension."""
        names = [n for n in os.listdir(self.kestrel.data) if n.startswith("tmpdata.")]
        found = {}
        for name in names:
            with open(os.path.join(self.kestrel.data, name), "rb") as file:
                found[name[len("tmpdata."):]] = file.read()
        return found

    def playlist(self, name):
        """As the program stores it: every line end with a CR more, and one line end after it."""
        return self.radio.get("/playlist/" + name).replace(b"\n", b"\r\n") + b"\r\n"

    def test_the_default_application_opens_the_playlist(self):
        for extension in "pls", "m3u":
            with self.subTest(extension):
                self.click(f"{self.radio.url}/playlist/jazz-1.{extension}", player=0)
                self.assertEqual(f'"{RECORDER}" /play "{self.saved_path(extension)}"', self.command_line())
                self.assertEqual({extension: self.playlist("jazz-1." + extension)}, self.saved())
                os.remove(self.recorded)
                self.kestrel.kill()

    def test_the_players_command_gets_the_quoted_file(self):
        quoted = f'"{self.saved_path()}"'
        for command, line in ((f'"{RECORDER}" %1', f'"{RECORDER}" {quoted}'),
                              # One file argument: the shell looks for a program of that whole name.
                              (f"{RECORDER} %1", f'"{RECORDER} {quoted}"'),
                              (RECORDER, f'"{RECORDER}"')):
            with self.subTest(command):
                self.click(f"{self.radio.url}/playlist/jazz-1.pls", player=1, playerpath=command)
                self.assertEqual(line, self.command_line())
                os.remove(self.recorded)
                self.kestrel.kill()

    def test_what_windows_would_execute_is_refused(self):
        for extension in "exe", "BAT", "js", "lnk", "hta", "scr", "vbs", "ps1":
            with self.subTest(extension):
                self.click(f"{self.radio.url}/playlist/jazz-1.pls?as=x.{extension}", player=0)
                box = self.kestrel.box()
                self.assertEqual((BROKEN, "Kestrel"), (box.text, box.title))
                box.close()
                self.assertEqual({}, self.saved())
                self.assertFalse(os.path.exists(self.recorded))

    def test_what_cannot_be_loaded_is_said_and_the_last_playlist_stays(self):
        self.click(f"{self.radio.url}/playlist/jazz-1.pls", player=9)
        before = wait_for(self.saved, "the playlist")
        for habit, text in (("reset", OFFLINE), ("short-body", OFFLINE), ("redirect-loop", OFFLINE),
                            ("hang", "Timeout Error")):
            with self.subTest(habit):
                self.radio.switch("playlist", habit)
                self.kestrel.choose("Genres", "Jazz", "Station")
                box = self.kestrel.box(35)
                self.assertEqual(text, box.text)
                box.close()
                self.assertEqual(before, self.saved())
                wait_for(lambda: self.kestrel.form1().text == "Kestrel", "the end of the work")

    def test_an_extension_that_no_file_can_have_counts_as_a_failed_download(self):
        self.click(f"{self.radio.url}/playlist/jazz-1", player=0)
        box = self.kestrel.box()
        self.assertEqual(OFFLINE, box.text)
        box.close()
        self.assertEqual({}, self.saved())


if __name__ == "__main__":
    unittest.main()
