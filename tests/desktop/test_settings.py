"""The settings dialog: each of its rules by mouse or keyboard, and what becomes of OK."""

import os
import shutil
import time
import unittest

from case import Case
from kestrel import RIGHT, records
from processes import wait_for
from settings_dialog import (CB_GETCURSEL, LB_GETCARETINDEX, LB_GETSEL, LB_GETSELCOUNT, LVM_GETITEMCOUNT, PAGES,
                             SettingsDialog)

GERMAN = """language:Deutsch
author:Anna
2009:Autor
1002:Genres!
1003:Die besten 25
1033:Einstellungen
2001:Kestrel-Einstellungen
2006:Startbild zeigen
"""
WM_ENDSESSION = 0x16
IDOK = 1
EMPTY_ICON = b"\0\0\1\0"


class Settings(Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.shortcut = os.path.join(cls.desktop.prefix.appdata,
                                    "Microsoft/Windows/Start Menu/Programs/StartUp/Kestrel.lnk")

    def open(self, **settings):
        if not self.kestrel.running():
            self.start(**settings)
        return SettingsDialog(self.kestrel)

    def stored(self, *names, **how):
        self.kestrel.quit(**how)
        return [self.kestrel.setting(name) for name in names]

    def answer_file_dialog(self, path):
        """Types a file's name into the system's own file dialog."""
        box = self.kestrel.box()
        edit = next(c for c in self.desktop.probe.children(box.window) if c.class_name == "Edit" and c.visible)
        self.desktop.click(edit.middle)
        self.desktop.type(path)
        self.desktop.key("Return")
        self.kestrel.wait_gone(box.window)

    def test_ok_stores_everything_for_the_next_start_and_shows_it_again(self):
        dialog = self.open(player=0)
        for name in "Check1", "Check2", "Check4":
            dialog.click(name)
        dialog.write("Text1", "77")
        dialog.write("Text2", "61")
        dialog.page(1)
        dialog.click("Option1(2)")
        dialog.click("Check5")
        dialog.ok()
        self.assertEqual(["1", "0", "1", "77", "61", "2", "1", "-"], self.stored(
            "showsplash", "showreloadallwindow", "reloadonstartup", "maxentry", "maxchar", "player", "playerstart",
            "playerpath"))
        self.kestrel.start("-nos")
        self.assertIsNotNone(self.kestrel.player())
        dialog = SettingsDialog(self.kestrel)
        self.assertEqual([True, False, True, True, True], [
            dialog.checked(n) for n in ("Check1", "Check2", "Check4", "Check5", "Option1(2)")])
        self.assertEqual(("77", "61"), (dialog.text("Text1"), dialog.text("Text2")))

    def test_the_next_start_goes_by_what_ok_stored(self):
        self.kestrel.write_language("de.kesl", GERMAN + "1010:Dschäss\n")
        dialog = self.open(rightmouse=2)
        dialog.choose("ic1", 1)
        dialog.page(2)
        dialog.click("Command2")
        self.assertEqual(0, dialog.send("List1", LB_GETCARETINDEX))
        dialog.click("Command1")
        dialog.page(4)
        dialog.choose("Combo1", 1)
        dialog.choose("Combo2", 2)  # which gives the left button its main menu back
        self.assertEqual((0, 2), (dialog.send("Combo1", CB_GETCURSEL), dialog.send("Combo2", CB_GETCURSEL)))
        dialog.choose("Combo1", 1)
        dialog.ok()
        self.assertEqual(["de.kesl", "1", "0"], self.stored("language", "leftmouse", "rightmouse", button=RIGHT))
        self.kestrel.start("-nos")
        genres = self.kestrel.look()
        self.assertEqual(("Die besten 25", True), (genres.labels[0], "Dschäss" in genres.labels))
        self.assertIn("Einstellungen", self.kestrel.look(button=RIGHT).labels)

    def test_cancel_and_esc_apply_nothing(self):
        self.kestrel.write_list("special", [(b"Mine", b"http://127.0.0.1/1")])
        for leave in (lambda: dialog.cancel(), lambda: (dialog.press("Escape"), dialog.closed())):
            dialog = self.open(maxentry=33)
            dialog.click("Check1")
            dialog.write("Text1", "44")
            dialog.page(2)
            dialog.click("Command2")
            dialog.page(3)
            self.click_row(dialog, 0)
            self.remove_row(dialog, 0, left=0)
            dialog.page(4)
            dialog.choose("Combo1", 2)
            leave()
            self.assertIn("Jazz", self.kestrel.look("Genres").labels)
            self.assertIn("Mine", self.kestrel.look("Genres", "Own").labels)
        self.assertEqual(["0", "33", "0"], self.stored("showsplash", "maxentry", "leftmouse"))
        self.assertEqual(b"Mine%#$http://127.0.0.1/1\r\n", self.kestrel.read_list("special"))

    def test_the_keyboard_reaches_every_control_and_enter_confirms(self):
        dialog = self.open()
        self.assertEqual(["List2", "Check1", "Check2", "Check4", "Check3", "Text1", "Text2", "ic1", "Command3",
                          "Command4", "List2"], dialog.tab_through(11))
        for number in range(1, 5):
            dialog.press("Down")
            wait_for(lambda: dialog[PAGES[number]].visible, f"page {number}")
            self.assertEqual([PAGES[number]], [p for p in PAGES if dialog[p].visible])
        dialog.press(*["Up"] * 4, "Tab", "space", "alt+m")
        wait_for(lambda: dialog.focus() == "Text1", "the field whose letter it is")
        dialog.press("Return")
        dialog.closed()
        self.assertEqual(["1"], self.stored("showsplash"))

    def test_the_pictures_step_once_or_on_while_held_and_stop_at_their_limits(self):
        dialog = self.open(maxentry=50, maxchar=42)
        for image, field, up, once, start, held in (("Image1_2", "Text1", True, "51", "98", "100"),
                                                    ("Image1_2", "Text1", False, "49", "22", "20"),
                                                    ("Image4_3", "Text2", True, "51", "98", "100"),
                                                    ("Image4_3", "Text2", False, "49", "42", "40")):
            with self.subTest(field=field, up=up):
                left, top, right, bottom = dialog[image].rect
                place = (left + right) // 2, (top * 3 + bottom) // 4 if up else (top + bottom * 3) // 4
                dialog.write(field, "50")
                self.desktop.click(place)
                dialog.wait_text(field, once)
                time.sleep(0.5)
                self.assertEqual(once, dialog.text(field), "a click is one step")
                dialog.write(field, start)
                self.desktop.press(place)
                dialog.wait_text(field, held)
                time.sleep(0.5)
                self.desktop.release()
                self.assertEqual(held, dialog.text(field))
                self.desktop.click(place)
                time.sleep(0.3)
                self.assertEqual(held, dialog.text(field))

    def test_a_field_that_is_left_without_a_number_gets_the_stored_one_back(self):
        dialog = self.open(maxentry=35, maxchar=45)
        dialog.write("Text1", "many")
        dialog.click("Text2")
        dialog.wait_text("Text1", "35")
        dialog.write("Text2", "1x")
        dialog.press("Return")  # never left, and yet no number
        dialog.closed()
        self.assertEqual(["35", "45"], self.stored("maxentry", "maxchar"))

    def test_only_the_selected_genres_are_shown(self):
        dialog = self.open(genre="1;0;1;1;1;1;1;1;1;1;1;1;1;1;1;1;1;1;1;1")
        dialog.page(2)
        self.assertEqual((19, 0), (dialog.send("List1", LB_GETSELCOUNT), dialog.send("List1", LB_GETSEL, 1)))
        dialog.click("Command1")
        self.assertEqual(20, dialog.send("List1", LB_GETSELCOUNT))
        dialog.click("Command2")
        self.assertEqual(0, dialog.send("List1", LB_GETSELCOUNT))
        dialog.click_row("List1", 7)
        wait_for(lambda: dialog.send("List1", LB_GETSEL, 7) == 1, "a selection")
        dialog.ok()
        self.assertEqual(["Jazz"], [g for g in self.kestrel.look("Genres").labels if g in ("Jazz", "Pop", "World")])
        self.assertEqual([";".join("1" if i == 7 else "0" for i in range(20))], self.stored("genre"))

    def test_a_player_is_chosen_in_a_file_dialog(self):
        shutil.copy(self.desktop.tool("recorder.exe"), os.path.join(self.desktop.prefix.folder, "drive_c", "player.exe"))
        dialog = self.open()
        dialog.page(1)
        dialog.click("Command5")
        self.answer_file_dialog(r"C:\player.exe")
        dialog.wait_text("Text3", r"C:\player.exe")
        dialog.click("Command5")
        self.kestrel.box()
        self.desktop.key("Escape")
        wait_for(lambda: not self.kestrel.boxes(), "the file dialog to close")
        self.assertEqual(r"C:\player.exe", dialog.text("Text3"))

    def test_a_language_is_in_force_at_once_and_english_at_the_next_start(self):
        self.kestrel.write_language("de.kesl", GERMAN)
        self.kestrel.write_language("nameless.kesl", "author:Nobody\n1002:X\n")
        dialog = self.open()
        dialog.choose("ic1", 1)
        dialog.wait_text("Label2", "Autor: Anna")
        dialog.ok()
        self.assertEqual("Genres!", self.kestrel.look().labels[0])
        dialog = SettingsDialog(self.kestrel, "Einstellungen")
        self.assertEqual(("Startbild zeigen", "Autor: Anna", "Kestrel-Einstellungen"),
                         (dialog.text("Check1"), dialog.text("Label2"), dialog.window().text))
        dialog.page(2)
        self.desktop.picture("settings-german-genres")
        dialog.page(0)
        dialog.choose("ic1", 0)
        dialog.wait_text("Label2", "Please Restart the Program!")
        dialog.ok()
        self.assertEqual("Genres!", self.kestrel.look().labels[0])
        self.assertEqual(["0"], self.stored("language"))

    def click_row(self, dialog, row):
        left, top, _, _ = dialog["ListView1"].rect
        header = next(c for c in self.desktop.probe.children(dialog["ListView1"]) if c.class_name == "SysHeader32")
        self.desktop.click((left + 20, header.rect[3] + 8 + 17 * row))

    def remove_row(self, dialog, button, left):
        """Asks for it and answers what comes then."""
        dialog.click("Command7")
        box = self.kestrel.box()
        self.assertEqual("Delete this Entry?", box.text)
        box.close(button)
        wait_for(lambda: dialog.send("ListView1", LVM_GETITEMCOUNT) == left, f"{left} rows")

    def entry(self, dialog, button, title):
        """Opens the dialog of one entry."""
        dialog.click(button)
        window = self.kestrel.wait_window("KestrelEntryForm")
        self.assertEqual(title, window.text)
        self.kestrel.point(window)
        return window

    def can_confirm(self, window):
        return next(c for c in self.desktop.probe.children(window) if c.id == IDOK).enabled

    def test_own_entries_are_made_edited_and_removed(self):
        old = "Österreich 1 ".encode(), b"  http://127.0.0.1/?a=b&c"
        self.kestrel.write_list("special", [old, (b"Two", b"http://127.0.0.1/2"), (b"Three", b"http://127.0.0.1/3")])
        dialog = self.open()
        dialog.page(3)
        self.assertFalse(dialog["Command7"].enabled or dialog["Command8"].enabled)
        window = self.entry(dialog, "Command6", "Add Own Entry")
        for key, complete in (("A", False), ("Return", False), ("Tab", False), ("B", True), ("BackSpace", False),
                              ("C", True)):
            self.desktop.key(key)
            wait_for(lambda: self.can_confirm(window) == complete, lambda: f"after {key}: {complete}")
        self.desktop.key("Return")
        self.kestrel.wait_gone(window)
        self.assertTrue(dialog["Command7"].enabled and dialog["Command8"].enabled)
        self.click_row(dialog, 1)
        self.remove_row(dialog, 1, left=4)
        self.remove_row(dialog, 0, left=3)
        self.assertFalse(dialog["Command7"].enabled or dialog["Command8"].enabled)
        for row, keys in ((0, ["Tab", "Tab", "space"]), (1, ["X", "Escape"]), (1, ["F", "Return"])):
            self.click_row(dialog, row)
            wait_for(lambda: dialog["Command8"].enabled, "a selection")
            window = self.entry(dialog, "Command8", "Edit Entry")
            self.assertTrue(self.can_confirm(window))
            self.desktop.key(*keys)
            self.kestrel.wait_gone(window)
        dialog.ok()
        self.assertEqual(records([old, (b"F", b"http://127.0.0.1/3"), (b"A", b"C")]), self.kestrel.read_list("special"))
        self.assertEqual(["Österreich 1 ", "F", "A"], self.kestrel.look("Genres", "Own").labels[:3])

    def test_launch_at_startup_is_a_shortcut_and_shown_as_what_is_true(self):
        def change(leave):
            dialog = SettingsDialog(self.kestrel)
            was = dialog.checked("Check3")
            dialog.click("Check3")
            leave(dialog)
            return was

        self.start()
        self.assertFalse(change(SettingsDialog.ok))
        with open(self.shortcut, "rb") as file:
            self.assertIn("-nos".encode("utf-16-le"), file.read())
        self.assertTrue(change(SettingsDialog.cancel))
        self.assertTrue(os.path.exists(self.shortcut))
        self.assertTrue(change(SettingsDialog.ok))
        self.assertFalse(os.path.exists(self.shortcut))
        os.makedirs(self.shortcut)  # no file of that name can be made
        self.addCleanup(os.rmdir, self.shortcut)
        self.assertFalse(change(lambda dialog: dialog.click("Command3")))
        box = self.kestrel.box()
        self.assertEqual("The Startup Folder could not be changed!", box.text)
        box.close()

    def test_a_chosen_icon_shows_at_once_and_a_broken_one_is_refused(self):
        drive = os.path.join(self.desktop.prefix.folder, "drive_c")
        good = os.path.join(os.path.dirname(__file__), "../../res/icons/kestrel-work.ico")
        shutil.copy(good, os.path.join(drive, "good.ico"))
        with open(os.path.join(drive, "bad.ico"), "wb") as file:
            file.write(EMPTY_ICON)
        self.start()
        before = self.kestrel.icon_picture()
        dialog = self.open()
        self.assertEqual(before, self.kestrel.icon_picture())
        dialog.page(4)
        self.assertEqual(("not yet", "not yet"), (dialog.text("Text4"), dialog.text("Text5")))
        dialog.click("Command9")
        self.answer_file_dialog(r"C:\bad.ico")
        box = self.kestrel.box()
        self.assertEqual("The Icon File ist not Correct!", box.text)
        box.close()
        self.assertEqual("not yet", dialog.text("Text4"))
        dialog.click("Command9")
        self.answer_file_dialog(r"C:\good.ico")
        dialog.wait_text("Text4", r"C:\good.ico")
        self.assertEqual([], os.listdir(os.path.join(self.kestrel.data, "data")))
        dialog.ok()
        with open(good, "rb") as file, open(os.path.join(self.kestrel.data, "data/kesnormal.ico"), "rb") as copy:
            self.assertEqual(file.read(), copy.read())
        wait_for(lambda: self.kestrel.icon_picture() != before, "the new icon")

    def test_a_click_on_the_icon_leads_to_it_and_the_end_of_the_session_closes_it_without_its_changes(self):
        dialog = self.open(maxentry=33)
        self.desktop.click(self.kestrel.icon())
        time.sleep(0.5)
        self.assertEqual([], self.kestrel.popups())
        wait_for(lambda: self.desktop.probe.ask("foreground")["window"] == dialog.window().handle, "the dialog in front")
        dialog.write("Text1", "44")
        dialog.page(3)
        dialog.click("Command6")  # and one more dialog on top
        self.kestrel.wait_window("KestrelEntryForm")
        self.desktop.probe.send(self.kestrel.form1(), WM_ENDSESSION, 1)
        self.assertEqual(0, self.kestrel.wait_end())
        self.assertEqual("33", self.kestrel.setting("maxentry"))


if __name__ == "__main__":
    unittest.main()
