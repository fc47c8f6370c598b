"""What other tests rely on in the demo radio.  demo_radio_test.py PROGRAM SOUNDS"""

import array
import concurrent.futures
import math
import os
import subprocess
import sys
import time
import unittest

from demo_radio import DemoRadio, header, links, split, untitled
from sound import RATE, loudest

GENRES = ("TopTen Alternative Classical Comedy Country Dance Funk Jazz Metal Mixed Pop Rap RnB "
          "Rock Talk Techno 80s 70s World").split()
PAGE = b"/directory/index.phtml?sgenre=Jazz&maxbitrate=999&numresult=5"
WITH_TITLES = b"Icy-MetaData: 1"


class Case(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.radio = DemoRadio(PROGRAM, SOUNDS, "--song-seconds", "1")
        cls.stations = {s.mount: s for s in cls.radio.stations()}

    @classmethod
    def tearDownClass(cls):
        code = cls.radio.stop()
        assert code == 0, f"the server ended with {code}"

    def page(self, query):
        return links(self.radio.get("/directory/index.phtml?" + query))


class Directory(Case):
    def test_numresult_and_maxbitrate_are_honoured(self):
        by_id = {s.id: s for s in self.stations.values()}
        for kbit in 24, 32, 56, 128:
            found = self.page(f"sgenre=Rock&maxbitrate={kbit}&numresult=500")
            stations = [by_id[int(a.split(b"rn=")[1].split(b"&")[0])] for a, _ in found]
            self.assertEqual(sorted(s.id for s in by_id.values() if s.genre == "Rock" and s.kbit <= kbit),
                             sorted(s.id for s in stations))
            self.assertTrue(stations)
        self.assertEqual(7, len(self.page("sgenre=Rock&maxbitrate=999&numresult=7")))

    def test_every_genre_lists_names_of_all_kinds_whose_links_end_in_pls(self):
        found = []
        for genre in GENRES:
            stations = self.page(f"sgenre={genre}&maxbitrate=999&numresult=500")
            self.assertEqual(25, len(stations), genre)
            found += stations if genre != "TopTen" else []  # which are the others' best
        titles = [title for _, title in found]
        for address, title in found:
            self.assertRegex(address, rb"^/sbin/kestrel-playlist\.pls\?rn=\d+&file=.*\.pls$")
            self.assertTrue(title.strip() and b"%#$" not in title)
        self.assertEqual(len(titles), len(set(titles)))
        valid = [t for t in titles if not t.isascii() and t.decode("utf-8", "ignore").encode() == t]
        self.assertTrue(valid)
        self.assertTrue([t for t in titles if not t.isascii() and t not in valid])
        for part in b"&amp;", b"'":
            self.assertTrue([t for t in titles if part in t])
        self.assertTrue([t for t in titles if len(t) > 50])

    def test_the_log_holds_the_request_as_it_came(self):
        self.radio.get("/control/log?clear=1")
        target = b"/directory/index.phtml?s=caf\xe9 +%41&maxbitrate=24&numresult=9"
        self.radio.raw(target, b"User-Agent: Some/1.0", WITH_TITLES)
        line = b"GET\t" + target + b"\tSome/1.0\t1\n"
        self.assertEqual(line, self.radio.log())
        with open(self.radio.log_file, "rb") as file:
            self.assertTrue(file.read().endswith(line))


class Playlists(Case):
    def test_a_directory_link_gives_a_playlist_whose_streams_play(self):
        address, title = self.page("sgenre=Jazz&maxbitrate=999&numresult=1")[0]
        lines = self.radio.get(address.decode()).splitlines()
        self.assertEqual(b"[playlist]", lines[0])
        files = [line.split(b"=") for line in lines if b"file" in line.lower()]
        self.assertTrue(3 <= len(files) <= 6)
        for name, url in files:  # two pieces: no address holds "="
            self.assertRegex(name, rb"^File\d$")
            body, _ = self.radio.raw(url[len(self.radio.url):], seconds=0.5)
            self.assertEqual(title, header(split(body)[0], b"icy-name"))


class Streams(Case):
    def test_headers_name_the_station_and_titles_stand_exactly_every_metaint_bytes_if_asked_for(self):
        station = self.stations["jazz-1"]
        begin = time.monotonic()
        head, body = split(self.radio.raw(b"/stream/jazz-1", WITH_TITLES, seconds=2.5)[0])
        second = station.kbit * 125
        self.assertAlmostEqual(65536 + second * (time.monotonic() - begin), len(body), delta=second)
        self.assertTrue(head.startswith(b"HTTP/1.0 200 OK"))
        self.assertEqual(station.name, header(head, b"icy-name"))
        self.assertEqual(b"128", header(head, b"icy-br"))
        self.assertEqual(b"audio/mpeg", header(head, b"content-type"))
        sound, titles = untitled(body, int(header(head, b"icy-metaint")))
        self.assertGreater(len(titles), 3)
        self.assertEqual(len(titles), len(set(titles)))
        semitone = round(12 * math.log2(station.tone / 220))
        with open(os.path.join(SOUNDS, f"bells-{semitone:02}.mp3"), "rb") as file:
            loop = file.read()
        self.assertIn(sound, loop * (len(sound) // len(loop) + 2))

        head, body = split(self.radio.raw(b"/stream/jazz-1", seconds=0.3)[0])
        self.assertIsNone(header(head, b"icy-metaint"))
        self.assertNotIn(b"StreamTitle", body)

    def test_each_format_decodes_without_a_fault_to_the_stations_tone(self):
        formats = {(s.codec, s.kbit, s.sample_rate): s for s in self.stations.values()}
        self.assertEqual(8, len(formats))
        for station in formats.values():
            with self.subTest(station.mount):
                # More than a loop, so that its seam is in it.
                run = subprocess.run(
                    ["ffmpeg", "-v", "error", "-t", "9", "-i",
                     f"{self.radio.url}/bad/burst-300000/stream/{station.mount}",
                     "-ac", "1", "-ar", str(RATE), "-f", "s16le", "-"], capture_output=True)
                faults = [line for line in run.stderr.splitlines() if b"Header missing" not in line]
                self.assertLessEqual(len(faults), 2, run.stderr)  # it starts within a frame
                sound = array.array("h", run.stdout)[-RATE:]
                self.assertEqual(RATE, len(sound))
                scale = [station.tone * 2 ** (n / 12) for n in range(-12, 25)]
                self.assertAlmostEqual(station.tone, loudest(sound, scale), delta=0.5)


# target, how the connection ends (within 1.5 s), and what must hold of the answer
PAGE_HABITS = (
    (b"hang", "open", lambda a: a == b""),
    (b"hang-headers", "open", lambda a: a.startswith(b"HTTP/1.1 200") and b"\r\n\r\n" not in a),
    (b"hang-body", "open", lambda a: len(split(a)[1]) == announced(a) // 2),
    (b"reset", "reset", lambda a: len(split(a)[1]) == announced(a) // 2),
    (b"short-body", "end", lambda a: len(split(a)[1]) == announced(a) - 4096 and links(a)),
    (b"slow-drip", "open", lambda a: 10 < len(split(a)[1]) <= 40),
    (b"empty", "end", lambda a: announced(a) == 0 and a.endswith(b"\r\n\r\n")),
    (b"garbage", "end", lambda a: a.startswith(b"HTTP/1.1 200") and not links(a)),
    (b"not-found", "end", lambda a: a.startswith(b"HTTP/1.1 404")),
    (b"server-error", "end", lambda a: a.startswith(b"HTTP/1.1 500")),
    (b"html", "end", lambda a: a.startswith(b"HTTP/1.1 200") and not links(a)),
    (b"no-stations", "end", lambda a: b"Harbour Station Directory" in a and not links(a)),
    (b"redirect", "end", lambda a: a.startswith(b"HTTP/1.1 302") and
     header(a, b"location").endswith(b"/good" + PAGE)),
    (b"redirect-loop", "end", lambda a: header(a, b"location").endswith(b"/bad/redirect-loop" + PAGE)),
)
STREAM_HABITS = (
    (b"hang", "open", lambda a: a == b""),
    (b"hang-headers", "open", lambda a: a and b"\r\n\r\n" not in a),
    (b"hang-body", "open", lambda a: len(split(a)[1]) == 20000),
    (b"reset-30000", "reset", lambda a: len(split(a)[1]) == 30000),
    (b"drop-1", "end", lambda a: len(split(a)[1]) > 65536),
    (b"short-body", "end", lambda a: (announced(a), len(split(a)[1])) == (1000000, 50000)),
    (b"slow-drip-1000", "open", lambda a: 500 < len(split(a)[1]) < 1700),
    (b"garbage", "open", lambda a: header(a, b"content-type") == b"audio/aacp" and
     split(a)[1].count(b"\xff\xf1") < 10),
    (b"icy", "open", lambda a: a.startswith(b"ICY 200 OK\r\n") and header(a, b"icy-name")),
    (b"icy,no-burst", "open", lambda a: a.startswith(b"ICY 200") and len(split(a)[1]) < 30000),
    (b"icy-error", "end", lambda a: a.startswith(b"ICY 401")),
    (b"no-type", "open", lambda a: header(a, b"icy-name") and not header(a, b"content-type")),
    (b"not-found", "end", lambda a: a.startswith(b"HTTP/1.1 404")),
    (b"empty", "end", lambda a: split(a)[1] == b""),
    (b"redirect", "end", lambda a: header(a, b"location").endswith(b"/good/stream/pop-0")),
)


def announced(answer):
    return int(header(answer, b"content-length"))


class BadHabits(Case):
    def check(self, cases, target):
        with concurrent.futures.ThreadPoolExecutor(len(cases)) as pool:
            answers = list(pool.map(lambda c: self.radio.raw(b"/bad/" + c[0] + target, seconds=1.5), cases))
        for (habit, ending, holds), (answer, ended) in zip(cases, answers):
            with self.subTest(habit):
                self.assertEqual(ending, ended)
                self.assertTrue(holds(answer), answer[:300])

    def test_pages(self):
        self.check(PAGE_HABITS, PAGE)

    def test_streams(self):
        self.check(STREAM_HABITS, b"/stream/pop-0")

    def test_titles_late_by_the_wrong_metaint_are_not_where_they_should_be(self):
        answer, _ = self.radio.raw(b"/bad/wrong-metaint-500/stream/pop-0", WITH_TITLES, seconds=0.5)
        head, body = split(answer)
        self.assertEqual(b"8192", header(head, b"icy-metaint"))
        self.assertTrue(body[8692 + 1:].startswith(b"StreamTitle='"))

    def test_a_stall_is_silent_for_its_time_and_then_goes_on(self):
        client = self.radio.connect(b"/bad/stall-2,no-burst/stream/pop-0")
        client.recv(65536)
        gap, last, end = 0, time.monotonic(), time.monotonic() + 20
        while gap < 1.8 and last < end:
            self.assertTrue(client.recv(65536))
            gap, last = time.monotonic() - last, time.monotonic()
        client.close()
        self.assertGreater(gap, 1.8)

    def test_the_huge_page_has_20000_stations_in_64_mib(self):
        page = self.radio.get("/bad/huge" + PAGE.decode(), timeout=60)
        self.assertEqual(64 << 20, len(page))
        self.assertEqual(20000, page.count(b"kestrel-playlist.pls"))

    def test_an_unknown_habit_or_address_is_refused(self):
        for target, status in ((b"/bad/kindness/stream/pop-0", b"400"), (b"/stream/nowhere", b"404"),
                               (b"/playlist/nowhere.pls", b"404"), (b"/control?for=x", b"400"),
                               (b"/sbin/kestrel-playlist.pls?rn=1", b"404"), (b"/", b"404")):
            self.assertEqual(status, self.radio.raw(target)[0][9:12], target)


class Ending(unittest.TestCase):
    def test_it_ends_with_its_parent(self):
        command = [PROGRAM, "--sounds", SOUNDS, "--with-parent"]
        parent = subprocess.Popen([sys.executable, "-c", f"import subprocess; subprocess.run({command})"],
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.assertIn(b"listening", parent.stdout.readline())
        parent.kill()
        parent.communicate(timeout=20)  # until nobody is left who could write


if __name__ == "__main__":
    PROGRAM, SOUNDS = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
