"""A station's click up to the point where somebody else plays it."""

import os
import unittest

from case import Case, Recorder
from processes import wait_for

BROKEN = "Can't Connect. Error in Datafile"
OFFLINE = "Not Online or Site unreachable"
SAVED = r"C:\users\{}\AppData\Roaming\ardenware\kes\tmpdata.{}"


class Launch(Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.recorder = Recorder(cls.desktop)
        cls.recorder.register("test.player", '/play "%1"')
        for kind in "pls", "m3u":
            cls.desktop.probe.ask("regset", "HKLM", rf"Software\Classes\.{kind}", "", "test.player")

    def start_with(self, *playlists, **settings):
        """With a station for each of these, called by it."""
        self.kestrel.write_list("Jazz", [self.station(p, p) for p in playlists])
        self.start(**settings)

    def click(self, playlist):
        self.kestrel.choose("Genres", "Jazz", playlist)

    def saved_path(self, extension="pls"):
        user = self.kestrel.data.split("/users/")[1].split("/")[0]
        return SAVED.format(user, extension)

    def saved(self):
        """The temporary playlists, by extension."""
        found = {}
        for name in os.listdir(self.kestrel.data):
            if name.startswith("tmpdata."):
                with open(os.path.join(self.kestrel.data, name), "rb") as file:
                    found[name[len("tmpdata."):]] = file.read()
        return found

    def assert_refused(self, text, seconds=20):
        box = self.kestrel.box(seconds)
        self.assertEqual((text, "Kestrel"), (box.text, box.title))
        box.close()

    def test_the_default_application_opens_the_playlist(self):
        for extension in "pls", "m3u":
            with self.subTest(extension):
                self.start_with("jazz-1." + extension, player=0)
                self.click("jazz-1." + extension)
                self.assertEqual(f'"{self.recorder.program}" /play "{self.saved_path(extension)}"',
                                 self.recorder.take())
                # Every line end has a CR more, and one line end comes after it.
                playlist = self.radio.get("/playlist/jazz-1." + extension).replace(b"\n", b"\r\n") + b"\r\n"
                self.assertEqual({extension: playlist}, self.saved())
                self.kestrel.kill()

    def test_the_players_command_gets_the_quoted_file(self):
        program, quoted = self.recorder.program, f'"{self.saved_path()}"'
        for command, line in ((f'"{program}" %1', f'"{program}" {quoted}'),
                              # One file argument: the shell looks for a program of that whole name.
                              (f"{program} %1", f'"{program} {quoted}"'),
                              (program, f'"{program}"')):
            with self.subTest(command):
                self.start_with("jazz-1.pls", player=1, playerpath=command)
                self.click("jazz-1.pls")
                self.assertEqual(line, self.recorder.take())
                self.kestrel.kill()

    def test_what_windows_would_execute_and_what_no_file_can_be_called_is_refused(self):
        texts = {f"jazz-1.pls?as=x.{extension}": BROKEN for extension in
                 ("exe", "BAT", "js", "lnk", "hta", "scr", "vbs", "ps1")} | {"jazz-1": OFFLINE}
        self.start_with(*texts, player=0)
        for playlist, text in texts.items():
            with self.subTest(playlist):
                self.click(playlist)
                self.assert_refused(text)
                self.assertEqual({}, self.saved())
                self.assertFalse(self.recorder.called())

    def test_what_cannot_be_loaded_is_said_and_the_last_playlist_stays(self):
        self.start_with("jazz-1.pls", player=9)
        self.click("jazz-1.pls")
        before = wait_for(self.saved, "the playlist")
        for habit, text in (("reset", OFFLINE), ("short-body", OFFLINE), ("redirect-loop", OFFLINE),
                            ("hang", "Timeout Error")):
            with self.subTest(habit):
                self.radio.switch("playlist", habit)
                self.click("jazz-1.pls")
                self.assert_refused(text, 35)
                self.assertEqual(before, self.saved())
                self.kestrel.wait_idle()


if __name__ == "__main__":
    unittest.main()
