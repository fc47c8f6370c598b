"""A genre's "Reload": what the directory is asked, and what its answers do."""

import time
import unittest

from case import Case
from kestrel import plain, records
from processes import wait_for

OLD = [(b"Old Station", b"http://127.0.0.1:9/old.pls")]
OFFLINE = "Not Online or Site unreachable"


def query(word, value, bitrate=999, results="20"):
    return f"{word}={value}&maxbitrate={bitrate}&numresult={results}"


def target(*arguments, **options):
    return b"/directory/index.phtml?" + query(*arguments, **options).encode()


def shown(title):
    """A station's title as bytes, as a menu shows it."""
    try:
        text = title.decode()
    except UnicodeDecodeError:
        text = title.decode("cp1252")
    return text if len(text) <= 50 else text[:46] + " ..."


class Directory(Case):
    def reload(self, genre="Jazz"):
        self.kestrel.choose("Genres", genre, "Reload")

    def wait_requests(self, count):
        wait_for(lambda: len(self.requests()) >= count, lambda: f"{count} requests; {self.requests()}")
        self.kestrel.wait_idle()
        return self.requests()

    def wait_box(self, seconds=20):
        box = self.kestrel.box(seconds)
        self.assertEqual((OFFLINE, ["OK"]), (box.text, [plain(b.text) for b in box.buttons]))
        return box

    def has_old_station_only(self):
        self.assertEqual(["Old Station", "-", "Reload"], self.kestrel.look("Genres", "Jazz").labels)
        self.assertEqual(records(OLD), self.kestrel.read_list("Jazz"))

    def test_reload_asks_for_its_genre_and_fills_menu_and_cache_byte_for_byte(self):
        self.start()
        for caption, key in (("Jazz", "Jazz"), ("Dance and House", "Dance"), ("Top 25 Streams", "TopTen"),
                             ("The 80s", "80s"), ("World", "World")):
            with self.subTest(caption):
                self.radio.get("/control/log?clear=1")
                self.reload(caption)
                self.assertEqual([target("sgenre", key)], self.wait_requests(1))
                stations = self.station_list(query("sgenre", key))
                self.assertEqual(20, len(stations))
                self.assertEqual([shown(title) for title, _ in stations] + ["-", "Reload"],
                                 self.kestrel.look("Genres", caption).labels)
                self.assertEqual(records(stations), self.kestrel.read_list(key))

    def test_pages_that_are_none_change_nothing_and_say_nothing(self):
        self.kestrel.write_list("Jazz", OLD)
        self.start()
        for habit in "no-stations", "empty", "garbage", "html", "not-found", "server-error":
            with self.subTest(habit):
                self.radio.get("/control/log?clear=1")
                self.radio.switch("directory", habit)
                self.reload()
                self.assertEqual([target("sgenre", "Jazz"), target("s", "Jazz")], self.wait_requests(2))
                self.assertEqual([], self.kestrel.boxes())
                self.has_old_station_only()

    def test_broken_answers_are_reported_once_and_change_nothing(self):
        self.kestrel.write_list("Jazz", OLD)
        self.start()
        for habit in "reset", "short-body", "huge", "redirect-loop":
            with self.subTest(habit):
                self.radio.switch("directory", habit)
                self.reload()
                self.wait_box().close()
                self.kestrel.wait_idle()
                self.assertEqual([], self.kestrel.boxes())
                self.has_old_station_only()

    def test_a_moved_page_is_found(self):
        self.start()
        self.radio.switch("directory", "redirect")
        self.reload()
        wait_for(lambda: len(self.kestrel.look("Genres", "Jazz").items) == 22, "the stations")

    def test_a_silent_directory_is_given_up_and_quit_does_not_wait_for_it(self):
        self.kestrel.write_list("Jazz", OLD)
        self.start()
        self.desktop.move((20, 20))
        idle_icon = self.kestrel.icon_picture()
        self.radio.switch("directory", "hang")
        self.reload()
        wait_for(lambda: self.kestrel.form1().text == "Loading Data", "the tooltip's text")
        wait_for(lambda: self.kestrel.icon_picture() != idle_icon, "the working icon")
        self.has_old_station_only()  # the menus live meanwhile
        self.wait_box(35).close()
        self.assertEqual([target("sgenre", "Jazz")], self.wait_requests(1))
        wait_for(lambda: self.kestrel.icon_picture() == idle_icon, "the normal icon")
        self.reload()
        wait_for(lambda: not self.kestrel.idle(), "the work to begin")
        begin = time.monotonic()
        self.kestrel.quit()
        self.assertLess(time.monotonic() - begin, 8)  # a dead server is waited for longer
        self.assertEqual("20", self.kestrel.setting("maxentry"))

    def test_a_refused_connection_is_reported(self):
        self.without_directory()
        self.start()
        self.reload()
        box = self.wait_box()
        self.desktop.picture("not-online")
        box.close()
        self.assertEqual(["Reload"], self.kestrel.look("Genres", "Jazz").labels)


if __name__ == "__main__":
    unittest.main()
