"""From a click on a station to its sound, its texts, and silence again."""

import os
import threading
import time
import unittest

import sound
from case import Case
from demo_radio import header, split, untitled
from desktop import PICTURES
from processes import wait_for

LOUD, SILENT = 0.01, 0.001  # root mean square


def text(raw):
    try:
        return raw.decode()
    except UnicodeDecodeError:
        return raw.decode("cp1252")


class Player(Case):
    radio_options = ("--song-seconds", "2")

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.stations = {s.mount: s for s in cls.radio.stations()}
        cls.tones = sorted({s.tone for s in cls.stations.values()})

    def play(self, mount="jazz-1", wait=True, **settings):
        """The only station of a genre is clicked."""
        self.kestrel.write_list("Jazz", [self.station("The Station", mount + ".pls")])
        if not self.kestrel.running():
            self.start(player=2, **settings)
        self.kestrel.choose("Genres", "Jazz", "The Station")
        if wait:
            name = text(self.stations[mount].name).strip()
            self.kestrel.wait_label("name", lambda shown: shown.strip() == name)

    def hear(self, seconds=1.0):
        return self.desktop.speakers.listen(seconds)

    def wait_sound(self, seconds=20):
        wait_for(lambda: sound.loudness(self.hear(0.1)) > LOUD, "sound", seconds)

    def wait_connection(self):
        wait_for(lambda: any(r.startswith(b"/stream/") for r in self.requests()), "the connection")

    def wait_silence(self, seconds=20):
        wait_for(lambda: sound.loudness(self.hear(0.3)) < SILENT, "silence", seconds)

    def assert_tone(self, mount):
        self.wait_sound()
        heard = self.hear()
        sound.keep(heard, os.path.join(PICTURES, "heard.wav"))
        self.assertGreater(sound.loudness(heard), LOUD)
        self.assertEqual(self.stations[mount].tone, sound.loudest(heard, self.tones),
                         f"loudness {sound.loudness(heard):.4f}; kept in {PICTURES}/heard.wav")

    def test_the_stations_own_sound_and_texts_in_both_formats_and_stop(self):
        for mount in (next(m for m, s in self.stations.items() if s.codec == codec and s.kbit > 50)
                      for codec in ("mp3", "aac")):
            with self.subTest(mount):
                station = self.stations[mount]
                self.play(mount)
                self.assert_tone(mount)
                self.assertEqual((f"bitrate: {station.kbit}", station.codec, "The Station"),
                                 tuple(self.kestrel.label(n) for n in ("bitrate", "format", "station")))
                self.kestrel.choose("Player", "Stop")
                self.wait_silence()
                self.assertEqual("stop", self.kestrel.label("name"))
                self.kestrel.kill()

    def test_titles_follow_the_stream(self):
        self.play("jazz-1")
        answers = []
        listener = threading.Thread(target=lambda: answers.append(
            self.radio.raw(b"/bad/burst-300000/stream/jazz-1", b"Icy-MetaData: 1", seconds=6)[0]))
        listener.start()
        seen, deadline = set(), time.monotonic() + 5
        while time.monotonic() < deadline:
            seen.add(self.kestrel.label("song"))
            time.sleep(0.1)
        listener.join()
        head, body = split(answers[0])
        sent = {text(t) for t in untitled(body, int(header(head, b"icy-metaint")))[1]}
        self.assertGreaterEqual(len(seen), 2)
        self.assertLessEqual(seen, sent)

    def test_old_servers_and_such_without_a_burst_play_too(self):
        for habit in "icy", "no-burst", "no-type":
            with self.subTest(habit):
                self.radio.switch("stream", habit)
                self.play("jazz-1")
                self.assert_tone("jazz-1")
                self.kestrel.kill()

    def test_a_stream_that_never_opens_is_reported(self):
        for habit, more in (("not-found", False), ("icy-error", False), ("html", True)):
            with self.subTest(habit):
                self.radio.switch("stream", habit)
                self.play(wait=False)
                box = self.kestrel.box(20)
                self.assertEqual("Error", box.title)
                self.assertRegex(box.text, r"^Can't play the stream\s+Error Code : \d+")
                self.assertEqual(more, "Error Code : 41" in box.text and box.text.endswith(
                    "Unsupported Fileformat\r\nStream not Online or Unsupported Fileformat"), box.text)
                self.assertEqual("not playing", self.kestrel.label("song"))
                self.desktop.click(self.kestrel.icon())
                time.sleep(0.3)
                self.assertEqual([], self.kestrel.popups())  # first it is answered
                box.close()

    def test_without_the_plug_in_aac_is_unsupported_and_mp3_plays(self):
        self.without("bass_aac.dll")
        aac = next(m for m, s in self.stations.items() if s.codec == "aac")
        self.kestrel.write_list("Jazz", [self.station(m, m + ".pls") for m in (aac, "jazz-1")])
        self.start(player=2)
        box = self.kestrel.box()
        self.assertEqual(("bass_aac.dll", "bass_aac.dll not found. AAC support disabled"), (box.title, box.text))
        box.close()
        self.kestrel.choose("Genres", "Jazz", aac)
        box = self.kestrel.box()
        self.assertIn("Error Code : 41", box.text)
        box.close()
        self.kestrel.choose("Genres", "Jazz", "jazz-1")
        self.assert_tone("jazz-1")

    def test_quit_is_quick_and_silent_whatever_the_server_does(self):
        for habit, connected in (("none", self.wait_sound), ("hang", self.wait_connection)):
            with self.subTest(habit):
                self.radio.switch("stream", habit)
                self.radio.get("/control/log?clear=1")
                self.play(wait=False)
                connected()
                begin = time.monotonic()
                self.assertEqual(0, self.kestrel.quit())
                self.assertLess(time.monotonic() - begin, 8)  # a dead server is waited for longer
                self.wait_silence()

    def test_the_volume_of_the_settings_is_heard(self):
        heard = []
        for volume in 10000, 2500:
            self.play(volume=volume)
            self.wait_sound()
            heard.append(sound.loudness(self.hear(2)))
            self.kestrel.kill()
        self.assertAlmostEqual(4, heard[0] / heard[1], delta=1)


if __name__ == "__main__":
    unittest.main()
