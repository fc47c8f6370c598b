"""The tray icon's menus under a user's hands."""

import shutil
import time
import unittest

from case import Case
from kestrel import LEFT, RIGHT
from processes import wait_for

GENRES = ["Top 25 Streams", "Alternative", "Classical", "Comedy", "Country", "Dance and House", "Funk",
          "Jazz", "Metal", "Mixed", "Pop", "Rap", "RnB", "Rock", "Talk", "Techno", "The 80s", "The 70s",
          "World", "Search"]
BANDWIDTHS = ["all bitrates", "28.8 Modem", "33.6 Modem", "56k Modem", "128k ISDN", "DSL/Cable/Lan"]
PLAYER = ["Play", "Stop", "-", "Volume", "-", "Open Window"]
ICON, WM_KEYDOWN, WM_LBUTTONUP, WM_RBUTTONUP = 512, 0x100, 0x202, 0x205
VK_DOWN, VK_RIGHT, VK_LEFT, VK_ESCAPE = 0x28, 0x27, 0x25, 0x1B
FIRST = {0: "Genres", 1: "Top 25 Streams", 2: "Play"}  # line of the menu that a mouse action opens


def stations(count):
    return [(b"Station %d" % n, b"http://127.0.0.1:9/%d.pls" % n) for n in range(1, count + 1)]


class Menus(Case):
    def test_the_main_menu(self):
        self.start()
        menu = self.kestrel.open_menu()
        self.assertEqual(["Genres", "Bandwidth", "-", "Player", "-", "Settings", "-", "About", "-", "Quit"],
                         menu.labels)
        self.assertEqual([], [i.label for i in menu.items if i.greyed])
        genres = self.kestrel.hover(menu, "Genres")
        self.assertEqual([*GENRES, "-", "Favorites", "-", "Reload all"], genres.labels)
        self.assertEqual(["Reload"], self.kestrel.hover(genres, "Jazz").labels)
        self.assertEqual(["New Search"], self.kestrel.hover(genres, "Search").labels)
        self.assertEqual(["Add Actual Selection", "Organize Favorites", "-"],
                         self.kestrel.hover(genres, "Favorites").labels)
        bandwidth = self.kestrel.hover(menu, "Bandwidth")
        self.assertEqual(BANDWIDTHS, bandwidth.labels)
        self.assertEqual(["all bitrates"], [i.label for i in bandwidth.items if i.checked])
        player = self.kestrel.hover(menu, "Player")
        self.assertEqual(PLAYER, player.labels[:len(PLAYER)])
        self.assertEqual(["Play", "Stop"], [i.label for i in player.items if i.greyed])  # nothing to play yet
        self.kestrel.close_menus()

    def test_each_button_opens_the_menu_that_the_settings_say_when_it_is_released(self):
        for left, right in ((0, 1), (1, 2), (2, 0), (3, -1)):
            self.start(leftmouse=left, rightmouse=right)
            for button, action in ((LEFT, left), (RIGHT, right)):
                with self.subTest(button=button, action=action):
                    self.desktop.press(self.kestrel.icon(), button)
                    time.sleep(0.3)
                    self.assertEqual([], self.kestrel.popups())
                    self.desktop.release(button)
                    if action in FIRST:
                        self.assertEqual(FIRST[action], wait_for(self.kestrel.popups, "the menu")[0].labels[0])
                        self.kestrel.close_menus()
                    else:
                        time.sleep(0.3)
                        self.assertEqual([], self.kestrel.popups())
            self.kestrel.kill()

    def click_icon(self, button_up):
        """Without the pointer, which would close an open menu on its way."""
        self.desktop.probe.post(self.kestrel.form1(), ICON, 1, button_up)

    def wait_menu(self, first):
        wait_for(lambda: [p.labels[:1] for p in self.kestrel.popups()] == [[first]], f"the menu {first!r} alone")

    def test_a_click_on_the_icon_while_its_menu_is_open_opens_the_new_one(self):
        self.start(rightmouse=2)
        self.kestrel.browse("Genres")
        self.click_icon(WM_RBUTTONUP)
        self.wait_menu("Play")
        self.kestrel.close_menus()

    def test_a_click_on_a_line_that_is_no_longer_there_does_nothing(self):
        self.kestrel.write_list("special", stations(3))
        self.start(player=9)
        old = self.kestrel.browse("Genres", "Own")
        self.kestrel.write_list("special", [(b"New", b"http://127.0.0.1:9/new.pls")] * 3)
        self.desktop.probe.ask("copydata", self.kestrel.windows(text="kesziel")[0].handle, 1, "")
        self.desktop.click(old["Station 2"].middle)
        wait_for(lambda: not self.kestrel.popups(), "the menus to close")
        self.kestrel.choose("Genres", "Favorites", "Add Actual Selection")  # the station clicked last
        self.assertEqual("-", self.kestrel.look("Genres", "Favorites").labels[-1])
        self.assertEqual([], self.kestrel.boxes())

    def test_hundreds_of_openings_leave_nothing_behind(self):
        for genre in "TopTen", "Alternative":
            self.kestrel.write_list(genre, stations(25))
        self.start(leftmouse=1, rightmouse=2)
        form1, resources = self.kestrel.form1(), []
        for rounds in 10, 100:
            self.desktop.move((500, 400))
            for _ in range(rounds):
                self.click_icon(WM_LBUTTONUP)
                # Into the first two submenus and out of all of it.
                for key in VK_DOWN, VK_RIGHT, VK_LEFT, VK_DOWN, VK_RIGHT, VK_ESCAPE, VK_ESCAPE:
                    self.desktop.probe.post(form1, WM_KEYDOWN, key)
            self.click_icon(WM_RBUTTONUP)
            self.wait_menu("Play")
            self.kestrel.close_menus()
            resources.append(self.kestrel.ask_agent("resources"))
        before, after = resources
        self.assertGreater(before["graphics"], 0)
        for kind in before:  # they wander a little; one lost in each round would be far more
            self.assertLess(after[kind], before[kind] + 50, resources)

    def test_escape_closes_one_menu_after_the_other(self):
        self.start()
        self.kestrel.browse("Genres", "Jazz")
        for left in 2, 1, 0:
            self.desktop.move(self.kestrel.popups()[-1].border)
            self.desktop.key("Escape")
            wait_for(lambda: len(self.kestrel.popups()) == left, f"{left} menus left")
        self.assertEqual("Quit", self.kestrel.look().labels[-1])

    def test_the_keyboard_chooses_a_bandwidth_which_is_kept(self):
        self.start()
        menu = self.kestrel.open_menu()
        self.desktop.move(menu.border)
        self.desktop.key("Down", "Down", "Right")
        wait_for(lambda: len(self.kestrel.popups()) == 2, "the bandwidths")
        self.desktop.key("Down", "Down", "Down", "Return")
        wait_for(lambda: not self.kestrel.popups(), "the menus to close")
        checked = [i.label for i in self.kestrel.look("Bandwidth").items if i.checked]
        self.assertEqual(["56k Modem"], checked)
        self.kestrel.quit()
        self.assertEqual("3", self.kestrel.setting("bitrate"))

    def test_titles_show_as_their_stations_wrote_them(self):
        titles = ((b"Rock & Roll", "Rock & Roll"), (b"&&", "&&"), ("Žižkov für".encode(), "Žižkov für"),
                  (b"Caf\xe9 M\xfcller", "Café Müller"), (b"Tab\there\b\x7f", "Tab here  "),
                  (b"x" * 50, "x" * 50), (b"y" * 51, "y" * 46 + " ..."), ("ü".encode() * 50, "ü" * 50),
                  (b"-", "-"))
        self.kestrel.write_list("Jazz", [(title, b"http://127.0.0.1:9/1") for title, _ in titles])
        self.start()
        menu = self.kestrel.look("Genres", "Jazz")
        self.assertEqual([shown for _, shown in titles] + ["-", "Reload"], menu.labels)

    def test_lists_of_the_data_folder_and_else_of_the_programs_fill_the_menus_at_the_start(self):
        self.kestrel.write_list("Jazz", [*stations(2), (b"", b"http://x"), (b"No address", b"")])
        self.kestrel.write_list("search", stations(1))
        self.kestrel.write_list("favs", [(b"Favourite", b"http://127.0.0.1:9/f.pls")])
        beside = self.kestrel.folder + "/data"
        self.kestrel.write_list("Rock", stations(3), beside)
        self.addCleanup(shutil.rmtree, beside)
        self.start()
        genres = self.kestrel.browse("Genres")
        for genre, expected in (("Jazz", ["Station 1", "Station 2", "-", "Reload"]),
                                ("Rock", ["Station 1", "Station 2", "Station 3", "-", "Reload"]),
                                ("Search", ["Station 1", "-", "New Search"]),
                                ("Favorites", ["Add Actual Selection", "Organize Favorites", "-",
                                               "Favourite"])):
            with self.subTest(genre):
                self.assertEqual(expected, self.kestrel.hover(genres, genre).labels)
        self.kestrel.close_menus()


class ManyStations(Case):
    """A menu of 500 lines on a screen with room for 46."""

    def setUp(self):
        super().setUp()
        self.kestrel.write_list("Jazz", stations(500))
        self.start(player=9)  # a station's click fetches its playlist and does no more
        self.menu = self.kestrel.browse("Genres", "Jazz")

    def now(self):
        return self.kestrel.popups()[-1]

    def lit(self):
        return next((i for i, item in enumerate(self.now().items) if item.lit), -1)

    def visible(self):
        return [i.label for i in self.now().items if self.menu.shows(i)]

    def test_it_opens_within_the_screen_and_the_mouse_scrolls_it(self):
        left, top, right, bottom = self.menu.rect
        self.assertTrue(0 <= top and bottom <= 768)
        self.assertEqual(("Station 1", 502), (self.visible()[0], len(self.menu.items)))
        for _ in range(3):
            self.desktop.click(((left + right) // 2, bottom - 6))
        wait_for(lambda: "Station 1" not in self.visible(), "the list to move")
        self.assertEqual(3, len(self.kestrel.popups()))

    def test_keys_reach_its_end_and_a_station_there_is_the_one_that_is_clicked(self):
        self.desktop.move(self.menu.items[3].middle)
        wait_for(lambda: self.lit() == 3, "the entry under the pointer")
        self.desktop.key("Next")
        page = wait_for(lambda: self.lit() > 15 and self.lit(), "a page further")
        self.assertLess(page, 60)
        self.desktop.key("Next", "Prior")
        wait_for(lambda: self.lit() == page, "a page further and back")
        self.desktop.key("End", "Next")  # which leads no further
        wait_for(lambda: self.now()["Reload"].lit and "Reload" in self.visible(), "its end")
        self.desktop.picture("menu-500-end")
        self.desktop.click(self.now()["Station 497"].middle)
        self.kestrel.box().close()  # nobody is there
        self.kestrel.choose("Genres", "Favorites", "Add Actual Selection")
        self.assertEqual("Station 497", self.kestrel.look("Genres", "Favorites").labels[-1])


if __name__ == "__main__":
    unittest.main()
