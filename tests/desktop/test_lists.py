"""Reload of all genres, search and favourites, by mouse and by keyboard."""

import os
import time
import unittest

import sound
from case import Case
from kestrel import records
from processes import wait_for
from settings_dialog import SettingsDialog

IDOK, IDCANCEL = 1, 2
HEADING, STATUS, COUNT, BAR, ABORT = range(1001, 1006)  # of the reload window
SEARCH_WORDS = 1002
LIST, REMOVE = 1001, 1002  # of the organiser
WM_CLOSE = 0x10
KEYS = ("TopTen", "Alternative", "Classical", "Comedy", "Country", "Dance", "Funk")


def genres(*visible):
    return ";".join("1" if i in visible else "0" for i in range(20))


class Lists(Case):
    def wait_form(self, name):
        window = self.kestrel.wait_window(name)
        self.kestrel.point(window)
        return window

    def wait_no_form(self, name):
        wait_for(lambda: not self.kestrel.window(name), f"{name} to go", 30)

    def control(self, form, number):
        window = self.kestrel.window(form)
        return next(c for c in self.desktop.probe.children(window) if c.id == number)

    def click(self, form, number):
        self.desktop.click(self.control(form, number).middle)

    def genres_asked(self):
        return [r.split(b"sgenre=")[1].split(b"&")[0].decode() for r in self.requests() if b"sgenre=" in r]

    def wait_asked(self, count):
        wait_for(lambda: len(self.genres_asked()) >= count, lambda: f"{count} genres; {self.genres_asked()}", 20)

    def reload_all(self):
        self.kestrel.choose("Genres", "Reload all")


class Reload(Lists):
    def test_the_window_tells_how_far_it_is_and_goes(self):
        self.start(genre=genres(0, 1, 3, 19))
        self.radio.switch("directory", "slow-drip-2000")
        self.reload_all()
        self.wait_form("reloadform")
        self.wait_asked(2)
        wait_for(lambda: self.control("reloadform", COUNT).text == "2 / 3", "the second of three")
        self.assertEqual("Reload Entrys for all Genres", self.control("reloadform", HEADING).text)
        self.assertEqual("Loading Data for Alternative", self.control("reloadform", STATUS).text)
        self.assertEqual("Cancel", self.control("reloadform", IDCANCEL).text)
        self.assertEqual("Loading Data", self.kestrel.form1().text)
        self.desktop.picture("reload-all")
        self.radio.switch("directory", "none")
        self.wait_no_form("reloadform")
        self.kestrel.wait_idle()
        self.assertEqual(["TopTen", "Alternative", "Comedy"], self.genres_asked())
        for key in "TopTen", "Alternative", "Comedy":
            page = self.station_list(f"sgenre={key}&maxbitrate=999&numresult=20")
            self.assertEqual(records(page), self.kestrel.read_list(key))
        self.assertFalse(os.path.exists(self.kestrel.list_file("Classical")))
        self.assertEqual(22, len(self.kestrel.look("Genres", "Comedy").items))

    def wait_abort(self):
        wait_for(lambda: self.control("reloadform", ABORT).text == "Reload Aborted - Please Wait!", "the abort")

    def test_cancel_by_keyboard_in_the_fifth_genre_and_afresh(self):
        self.start()
        self.radio.switch("directory", "hold")
        self.reload_all()
        self.wait_form("reloadform")
        for genre in range(1, 5):
            self.wait_asked(genre)
            self.radio.switch("directory", "hold")  # this one may come, the next is held
        self.wait_asked(5)
        self.desktop.key("Escape")
        self.wait_abort()
        self.assertFalse(self.control("reloadform", IDCANCEL).enabled)
        self.radio.switch("directory", "none")
        self.wait_no_form("reloadform")
        self.kestrel.wait_tip("Kestrel")
        self.assertEqual(list(KEYS[:5]), self.genres_asked())
        self.assertTrue(os.path.exists(self.kestrel.list_file("Country")))  # the fifth is still finished
        self.radio.switch("directory", "hold")
        self.reload_all()
        self.wait_form("reloadform")
        self.assertEqual("", self.control("reloadform", ABORT).text)
        self.assertTrue(self.control("reloadform", IDCANCEL).enabled)
        self.desktop.probe.post(self.kestrel.window("reloadform"), WM_CLOSE)
        self.wait_abort()

    def test_while_it_shows_it_speaks_a_new_language_and_stays_behind_others(self):
        self.kestrel.write_language("aa.kesl", "language:Deutsch\n4001:Alle Genres\n")
        self.start()
        self.radio.switch("directory", "hold")
        self.reload_all()
        self.wait_form("reloadform")
        dialog = SettingsDialog(self.kestrel)
        dialog.choose("ic1", 1)
        dialog.ok()
        wait_for(lambda: self.control("reloadform", HEADING).text == "Alle Genres", "the new heading")
        self.kestrel.wait_tip("Loading Data")
        self.reload_all()  # takes over
        wait_for(lambda: self.genres_asked() == ["TopTen", "TopTen"], "it to begin anew")
        self.assertNotEqual(self.kestrel.window("reloadform").handle, self.desktop.probe.ask("foreground")["window"])

    def test_a_station_plays_meanwhile_and_it_goes_on(self):
        self.kestrel.write_list("Rock", [self.station("The Station")])
        self.start(player=2, genre=genres(0, 1, 2, 13))
        self.radio.switch("directory", "hang", 1)
        self.reload_all()
        self.wait_asked(1)
        self.kestrel.choose("Genres", "Rock", "The Station")
        wait_for(lambda: sound.loudness(self.desktop.speakers.listen(0.2)) > 0.01, "sound")
        self.wait_no_form("reloadform")
        self.assertEqual(["TopTen", "TopTen", "Alternative", "Classical", "Rock"], self.genres_asked())
        self.assertEqual([], self.kestrel.boxes())

    def test_at_the_start_if_the_settings_say_so(self):
        self.radio.switch("directory", "hold")
        self.start(reloadonstartup=1, genre=genres(0, 1))
        self.wait_form("reloadform")
        self.radio.switch("directory", "none")
        self.wait_no_form("reloadform")
        self.assertEqual(["TopTen", "Alternative"], self.genres_asked())


class Kill(Lists):
    """The program is ended from outside, whatever it is doing."""

    favourites = [(b"Mine", b"http://127.0.0.1:9/1")]

    def begin(self):
        stations = [(b"Old %d" % i, b"http://127.0.0.1:9/%d" % i) for i in range(200)]
        self.old = records(stations)
        for key in KEYS:
            self.kestrel.write_list(key, stations)
        self.kestrel.write_list("favs", self.favourites)
        self.radio.get("/control/log?clear=1")
        self.start(genre=genres(*range(len(KEYS))), volume=1234)

    def check(self):
        """Every list is wholly the old one or the new one; how many are new."""
        new = 0
        for key in KEYS:
            page = self.station_list(f"sgenre={key}&maxbitrate=999&numresult=20")
            now = self.kestrel.read_list(key)
            self.assertIn(now, (self.old, records(page)), key)
            new += now != self.old
        self.assertEqual(records(self.favourites), self.kestrel.read_list("favs"))
        self.assertEqual("1234", self.kestrel.setting("volume"))
        return new

    def test_in_a_reload_and_while_it_ends(self):
        for asked in 1, 4, 7:
            self.begin()
            self.reload_all()
            self.wait_asked(asked)
            self.kestrel.kill()
            self.check()
        for wait in 0, 0.005, 0.02:
            self.begin()
            self.desktop.click(self.kestrel.open_menu()["Quit"].middle)
            time.sleep(wait)
            self.kestrel.kill()
            self.assertEqual(0, self.check())


class Search(Lists):
    stations = [(b"Old Result", b"http://127.0.0.1:9/old.pls")]

    def setUp(self):
        super().setUp()
        self.kestrel.write_list("search", self.stations)
        self.start(player=9)

    def open(self):
        self.kestrel.choose("Genres", "Search", "New Search")
        return self.wait_form("searchform")

    def asked(self):
        # Wine's library encodes a blank even when told not to.
        return [r.replace(b"%20", b" ") for r in self.requests() if b"?s=" in r]

    def wait_results(self, words):
        wait_for(self.asked, "the request")
        self.kestrel.wait_idle()
        self.assertEqual([b"/directory/index.phtml?s=" + words + b"&maxbitrate=999&numresult=20"], self.asked())
        self.assertEqual("New Search", self.kestrel.look("Genres", "Search").labels[-1])

    def test_enter_and_the_button_search_and_the_words_stay(self):
        self.open()
        self.desktop.type("night jazz")
        self.desktop.key("Return")
        self.wait_no_form("searchform")
        self.wait_results(b"night jazz")
        page = self.station_list("s=night%20jazz&maxbitrate=999&numresult=20")
        self.assertEqual(len(page), len(self.kestrel.read_list("search").splitlines()))
        for leave in lambda: self.click("searchform", IDOK), lambda: self.desktop.key("Tab", "space"):
            self.radio.get("/control/log?clear=1")
            self.open()
            self.assertEqual("night jazz", self.control("searchform", SEARCH_WORDS).text)
            self.desktop.type("night jazz")  # takes the place of what is selected
            leave()
            self.wait_results(b"night jazz")


class Favourites(Lists):
    four = [(b"One", b"http://127.0.0.1:9/1"), (b"Two", b"http://127.0.0.1:9/2"),
            (b"Three & more", b"http://127.0.0.1:9/3"), ("Österreich".encode(), b"http://127.0.0.1:9/4")]

    def begin(self, favourites):
        self.kestrel.write_list("favs", favourites)
        self.start(player=9)

    def organise(self):
        self.kestrel.choose("Genres", "Favorites", "Organize Favorites")
        return self.wait_form("editfavs")

    def titles(self):
        return self.kestrel.look("Genres", "Favorites").labels[3:]

    def row(self, number):
        """Middle of a row's check box."""
        left, top, _, _ = self.control("editfavs", LIST).rect
        return left + 11, top + 24 + number * 14

    def confirmed(self, *titles):
        self.wait_no_form("editfavs")
        self.assertEqual(list(titles), self.titles())
        self.kestrel.quit()
        by_title = {t.decode(): (t, u) for t, u in self.four}
        self.assertEqual(records(by_title[t] for t in titles), self.kestrel.read_list("favs"))
        self.kestrel.start()
        self.assertEqual(list(titles), self.titles())
        self.kestrel.kill()

    def test_the_station_clicked_last_is_added_and_kept(self):
        self.kestrel.write_list("Jazz", [self.station("My Station")])
        self.begin(self.four[:1])
        self.kestrel.choose("Genres", "Favorites", "Add Actual Selection")
        self.assertEqual(["One"], self.titles())  # nothing was chosen yet
        self.kestrel.choose("Genres", "Jazz", "My Station")
        self.kestrel.wait_idle()
        self.kestrel.choose("Genres", "Favorites", "Add Actual Selection")
        self.kestrel.quit()
        self.kestrel.start()
        self.assertEqual(["One", "My Station"], self.titles())

    def test_checked_ones_are_removed_by_mouse(self):
        self.begin(self.four)
        self.organise()
        self.assertEqual("Organize Favorites", self.kestrel.window("editfavs").text)
        self.assertFalse(self.control("editfavs", REMOVE).enabled)
        self.desktop.click(self.row(0))
        self.desktop.click(self.row(2))
        self.click("editfavs", REMOVE)
        self.click("editfavs", IDOK)
        self.confirmed("Two", "Österreich")

    def test_the_keyboard_moves_checks_removes_and_cancels(self):
        for keys, titles in ((("Down", "alt+Down", "Home", "space", "alt+Down", "End", "Delete", "Return"),
                              ("Three & more", "Two", "Österreich")),
                             (("ctrl+a", "Delete", "Escape"), ("One", "Two", "Three & more", "Österreich"))):
            with self.subTest(keys):
                self.begin(self.four)
                self.organise()
                self.desktop.key(*keys)
                self.confirmed(*titles)

    def test_thousands_are_organised(self):
        many = [(b"Station %d" % i, b"http://127.0.0.1:9/%d" % i) for i in range(5000)]
        self.begin(many)
        self.organise()
        self.desktop.key("space", "End", "space", "Delete", "Return")
        self.wait_no_form("editfavs")
        self.kestrel.quit()
        self.assertEqual(records(many[1:-1]), self.kestrel.read_list("favs"))


if __name__ == "__main__":
    unittest.main()
