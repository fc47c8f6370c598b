"""Measures the program against the yardsticks beside it, on one desktop in one run.

  bench.py BUILD RADIO [--rounds N] [--seconds N] [PART...]
      BUILD    the Windows build, e.g. build/win64
      RADIO    folder of the demo radio, e.g. build/native/demo_radio
      PART     size start caches menus reload playing sound; all without any

Times and loads of a shared machine say little; their ratios within one run do.
"""

import argparse
import os
import shutil
import subprocess
import sys
import time
from statistics import median

FOLDER = os.path.dirname(os.path.abspath(__file__))
sys.path.append(os.path.join(FOLDER, "../tests/support"))
PARTS = "size start caches menus reload playing sound".split()

parser = argparse.ArgumentParser(usage=__doc__)
parser.add_argument("build", type=os.path.abspath)
parser.add_argument("radio")
parser.add_argument("parts", nargs="*", default=[])
parser.add_argument("--rounds", type=int, default=9)
parser.add_argument("--seconds", type=int, default=20)
OPTIONS = parser.parse_intermixed_args()
os.environ["KESTREL_PROGRAM"] = os.path.join(OPTIONS.build, "kestrel")
os.environ["KESTREL_TOOLS"] = os.path.join(OPTIONS.build, "desktop-tools")

from demo_radio import DemoRadio  # noqa: E402
from desktop import Desktop  # noqa: E402
from kestrel import LEFT, RIGHT, Kestrel  # noqa: E402
from page_server import PageServer  # noqa: E402
from processes import wait_for  # noqa: E402
from system import Ear, private_memory, process_named, processor_seconds  # noqa: E402

GENRES = ("TopTen Alternative Classical Comedy Country Dance Funk Jazz Metal Mixed Pop Rap RnB "
          "Rock Talk Techno 80s 70s World search").split()
MEGABYTE = 1e6



def row(what, figure, goal="", good=None):
    mark = {True: "ok", False: "MISSED", None: ""}[good]
    print(f"{what:<58} {figure:>24}  {goal:<18} {mark}", flush=True)
    return good is not False


class Bench:
    def __init__(self):
        self.desktop = Desktop()
        self.radio = DemoRadio(os.path.join(OPTIONS.radio, "demo_radio"),
                               os.path.join(OPTIONS.radio, "sounds"))
        self.ear = Ear(self.desktop.speakers)
        self.stations = self.radio.stations()
        self.kestrel = Kestrel(self.desktop, f"127.0.0.1:{self.radio.port}")
        self.kestrel.write_settings(showsplash=0, player=2, leftmouse=1, rightmouse=2, volume=10000)
        for number, genre in enumerate(GENRES):
            self.kestrel.write_list(genre, self.list_of(number))

    def close(self):
        self.ear.close()
        self.radio.stop()
        self.desktop.close()

    def list_of(self, number):
        """100 stations; the first of all is one that plays MP3 at 128 kbit/s."""
        best = next(s for s in self.stations if s.codec == "mp3" and s.kbit == 128)
        offset = number * 20
        own = [best] + [self.stations[(offset + i) % len(self.stations)] for i in range(99)]
        return [(s.name, b"%s/sbin/kestrel-playlist.pls?rn=%d&file=filename.pls" %
                 (self.radio.url.encode(), s.id)) for s in own]

    def tool(self, name):
        """A yardstick where the programs of the prefix find it."""
        copy = os.path.join(self.desktop.prefix.folder, "drive_c", name)
        if not os.path.exists(copy):
            shutil.copy(os.path.join(OPTIONS.build, "bench", name), copy)
        return "C:\\" + name

    def memory_of(self, program):
        return private_memory(process_named(self.desktop.prefix, program))

    # --- starting

    def start_once(self, program, *arguments):
        """Milliseconds to its icon, and its private memory three seconds later."""
        pid, microseconds = self.desktop.probe.ask("whenready", " ".join((program, *arguments)), seconds=60)
        time.sleep(3)
        memory = self.memory_of(program.rsplit("\\", 1)[-1])
        self.desktop.probe.ask("terminate", pid)
        self.wait_no_icon()
        return microseconds / 1000, memory

    def end(self, player):
        for pid in self.desktop.probe.ask("processes", "silence_player.exe"):
            self.desktop.probe.ask("terminate", pid)
        player.wait(10)

    def wait_no_icon(self):
        wait_for(lambda: not self.kestrel.icon(), "the icon to go", 20)

    def in_turns(self, *starts):
        """What each of them measured; the first round fills the system's caches."""
        rounds = [[start() for start in starts] for _ in range(OPTIONS.rounds + 1)]
        return zip(*rounds[1:])

    def start(self):
        results = list(self.in_turns(lambda: self.start_once(self.tool("minimal_tray.exe")), self.start_kestrel_once))
        times = [median([t for t, _ in r]) for r in results]
        memory = [median([m for _, m in r]) for r in results]
        row("start to icon, minimal program", f"{times[0]:.0f} ms")
        fast = row("start to icon, Kestrel with 20 lists of 100 stations",
                   f"{times[1]:.0f} ms = {times[1] / times[0]:.2f} x", "at most 1.5 x", times[1] <= 1.5 * times[0])
        row("idle private memory, minimal program", f"{memory[0] / MEGABYTE:.2f} MB")
        more = memory[1] - memory[0]
        return row("idle private memory, Kestrel", f"{memory[1] / MEGABYTE:.2f} MB = +{more / MEGABYTE:.2f} MB",
                   "at most +4 MB", more <= 4 * MEGABYTE) and fast

    def write_lists(self, stations):
        for number, genre in enumerate(GENRES):
            self.kestrel.write_list(genre, (self.list_of(number) * 10)[:stations])

    def start_kestrel_once(self):
        return self.start_once("C:\\Kestrel\\Kestrel.exe", "-nos")

    def start_with(self, stations):
        self.write_lists(stations)
        return self.start_kestrel_once()[0]

    def caches(self):
        """Starts with few and with many stations, in turn."""
        few, many = (median(times) for times in self.in_turns(lambda: self.start_with(100), lambda: self.start_with(1000)))
        self.write_lists(100)
        row("start to icon with 20 lists of 100 stations", f"{few:.0f} ms")
        return row("start to icon with 20 lists of 1000 stations", f"{many:.0f} ms = {many / few:.2f} x",
                   "at most 1.3 x", many <= 1.3 * few)

    def reload(self):
        """All genres again, seen by the server, against one client's same requests."""
        genres, page = 19, self.radio.get("/directory/index.phtml?sgenre=Jazz&maxbitrate=999&numresult=200")
        server = PageServer((page * (20_000 // len(page) + 1))[:20_000])
        self.kestrel.direct_to(f"127.0.0.1:{server.port}")
        self.kestrel.start("-nos")
        own, client, written = [], [], []
        for _ in range(OPTIONS.rounds):
            self.kestrel.choose("Reload all", button=LEFT)
            wait_for(lambda: len(server.times) == genres and self.kestrel.form1().text == "Kestrel",
                     lambda: f"{genres} requests, not {len(server.times)}", 30)
            written.append((time.monotonic() - server.times[0]) * 1000)
            own.append(server.take_span())
            self.desktop.prefix.start(self.tool("keep_alive.exe"), str(server.port), str(genres)).wait(30)
            client.append(server.take_span())
        self.kestrel.kill()
        self.wait_no_icon()
        self.kestrel.direct_to(f"127.0.0.1:{self.radio.port}")
        server.shutdown()
        self.write_lists(100)  # the reload has put its own in their place
        ratio = median(own) / median(client)
        row("19 pages of 20 kB, one client on the same library", f"{median(client):.1f} ms")
        row("19 pages of 20 kB, until all lists are written and the icon rests", f"{median(written):.1f} ms")
        return row("19 pages of 20 kB, Reload all", f"{median(own):.1f} ms = {ratio:.2f} x", "at most 1.5 x",
                   ratio <= 1.5)

    def menus(self):
        """Our own work when a genre's menu opens."""
        bench = self.desktop.prefix.start(self.tool("menu_bench.exe"), stdout=subprocess.PIPE, text=True)
        print(bench.communicate(timeout=60)[0].strip(), flush=True)
        return bench.returncode == 0

    # --- playing

    def load(self):
        """Processor seconds a minute of everything in the prefix."""
        pids = list(self.desktop.prefix.processes())
        before, begin = processor_seconds(pids), time.monotonic()
        time.sleep(OPTIONS.seconds)
        return (processor_seconds(pids) - before) / (time.monotonic() - begin) * 60

    def play(self, genre="Jazz"):
        """Clicks the genre's first station; the time of the click."""
        popup = self.kestrel.browse(genre, button=LEFT)
        station = popup.items[0]
        self.desktop.press(station.middle)
        clicked = time.monotonic()
        self.desktop.release()
        return clicked

    def start_kestrel(self):
        """Starts it for use; the bytes that the test's own tools take up in it."""
        self.kestrel.begin("-nos")
        wait_for(self.kestrel.icon, "the icon", 30)
        time.sleep(2)
        alone = self.memory_of("Kestrel.exe")
        self.kestrel.wait_start()
        self.kestrel.popups()
        return self.memory_of("Kestrel.exe") - alone

    def stop(self):
        self.kestrel.choose("Stop", button=RIGHT)

    def playing(self):
        silent, loud = [], []
        for turn in range(2):
            player = self.desktop.prefix.start(self.tool("silence_player.exe"))
            time.sleep(3)
            silent.append(self.load())
            output_memory = self.memory_of("silence_player.exe")
            self.end(player)
            tools = self.start_kestrel()
            self.play()
            self.ear.wait_sound()
            time.sleep(3)
            loud.append(self.load())
            soon = self.memory_of("Kestrel.exe") - tools
            if turn == 1:
                time.sleep(90)  # the system's pool threads that fetched the playlist are gone
            memory = self.memory_of("Kestrel.exe") - tools
            self.kestrel.kill()
            self.ear.wait_silence()
        idle = self.load()
        row("load of the desktop alone", f"{idle:.2f} s/min")
        row("load, silence through the same output", f"{median(silent):.2f} s/min")
        light = row("load, Kestrel playing MP3 at 128 kbit/s",
                    f"{median(loud):.2f} s/min = {median(loud) / median(silent):.2f} x",
                    "at most 1.25 x", median(loud) <= 1.25 * median(silent))
        row("private memory, silence through the same output", f"{output_memory / MEGABYTE:.2f} MB")
        row("private memory soon after the click", f"{soon / MEGABYTE:.2f} MB")
        return row("private memory while playing", f"{memory / MEGABYTE:.2f} MB", "at most 14 MB",
                   memory <= 14 * MEGABYTE) and light

    # --- from the click to the sound

    def output_delay(self):
        """Milliseconds from a program's first written sample to the ear."""
        delays = []
        for _ in range(OPTIONS.rounds):
            self.ear.wait_silence()
            player = self.desktop.prefix.start(self.tool("silence_player.exe"), "--tone", "1000",
                                               stdout=subprocess.PIPE)
            player.stdout.readline()
            written = time.monotonic()
            delays.append((self.ear.wait_sound() - written) * 1000)
            self.end(player)
            player.stdout.close()
        return delays

    def sound(self):
        delays = self.output_delay()
        row("written to heard, a tone through the same output", f"{median(delays):.0f} ms")
        self.start_kestrel()
        good = True
        for habit, goal in ("none", 150), ("no-burst", 500):
            self.radio.switch("stream", habit)
            times = []
            for turn in range(OPTIONS.rounds + 1):
                self.ear.wait_silence()
                clicked = self.play()
                heard = self.ear.wait_sound()
                if turn > 0:
                    times.append((heard - clicked) * 1000)
                time.sleep(1)
                self.stop()
            server = "bursting" if habit == "none" else "not bursting"
            good &= row(f"click to first sound, server {server}",
                        f"{median(times):.0f} ms ({min(times):.0f} to {max(times):.0f})",
                        f"at most {goal} ms", median(times) <= goal)
        self.kestrel.kill()
        return good

    # --- size

    def size(self):
        def bytes_of(name):
            return os.path.getsize(os.path.join(OPTIONS.build, "kestrel", name))
        program, engine = bytes_of("Kestrel.exe"), bytes_of("bass.dll") + bytes_of("bass_aac.dll")
        small = row("size of Kestrel.exe", f"{program / MEGABYTE:.2f} MB", "at most 1 MB", program <= MEGABYTE)
        return row("size of bass.dll and bass_aac.dll", f"{engine / MEGABYTE:.2f} MB", "at most 4 MB",
                   engine <= 4 * MEGABYTE) and small


def main():
    bench = Bench()
    try:
        good = [getattr(bench, part)() for part in OPTIONS.parts or PARTS]
    finally:
        bench.close()
    return 0 if all(good) else 1


if __name__ == "__main__":
    sys.exit(main())
