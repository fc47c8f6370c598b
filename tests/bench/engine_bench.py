"""Measures the engine alone, without a program around it, in one run.

  engine_bench.py BUILD RADIO [--rounds N] [--seconds N] [--changes N]
      BUILD    the Windows build, e.g. build/win64
      RADIO    folder of the demo radio, e.g. build/native/service
"""

import argparse
import os
import statistics
import subprocess
import sys
import tempfile
import time

FOLDER = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [FOLDER, os.path.join(FOLDER, "../desktop"), os.path.join(FOLDER, "..")]

import processes  # noqa: E402
from demo_radio import DemoRadio  # noqa: E402
from sound import Speakers  # noqa: E402
from system import Ear, private_memory, process_named, processor_seconds  # noqa: E402
from wine import Prefix  # noqa: E402


def threads(pid):
    return len(os.listdir(f"/proc/{pid}/task"))


class Bench:
    def __init__(self, options, folder):
        self.options = options
        self.radio = DemoRadio(os.path.join(options.radio, "demo_radio"),
                               os.path.join(options.radio, "sounds"))
        self.mount = next(s for s in self.radio.stations() if s.codec == "mp3" and s.kbit == 128).mount
        self.speakers = Speakers(os.path.join(folder, "sound"))
        self.prefix = Prefix(os.path.join(folder, "prefix"), {**self.speakers.environment, "DISPLAY": ""})
        self.ear = Ear(self.speakers)

    def close(self):
        self.ear.close()
        self.prefix.close()
        self.speakers.close()
        self.radio.stop()

    def probe(self, path, seconds, rounds, pause=1500):
        engine = self.prefix.windows_path(os.path.join(self.options.build, "kestrel"))
        return self.prefix.start(os.path.join(self.options.build, "tests/engine_probe.exe"), engine,
                                 self.radio.url + path, str(seconds), str(rounds), str(pause),
                                 stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)

    def sound(self):
        """From the open to the first sound at the ear, and to the player's play."""
        for what, habit in ("bursting", ""), ("not bursting", "/bad/no-burst"):
            heard, playing, freed = [], [], []
            process = self.probe(f"{habit}/stream/{self.mount}", 1.5, self.options.rounds + 1)
            opened = 0
            for line in process.stdout:
                word, *rest = line.split()
                if word == "opening":
                    opened = time.monotonic()
                elif word == "playing":
                    playing.append(float(rest[0]))
                    heard.append((self.ear.wait_sound() - opened) * 1000)
                elif word == "freed":
                    freed.append(float(rest[0]))
                    if len(freed) <= self.options.rounds:
                        self.ear.wait_silence(0.3)
            process.stdout.close()
            process.wait(20)
            for name, times in ("play called", playing), ("first sound", heard), ("stop and free", freed):
                times = times[1:]  # the first round fills the system's caches
                print(f"{what + ': ' + name:<40} {statistics.median(times):6.1f} ms "
                      f"({min(times):.0f} to {max(times):.0f})", flush=True)

    def changes(self):
        """What many changes of the station leave behind."""
        process = self.probe("/stream/" + self.mount, 0.02, self.options.changes, 200)
        sizes = []
        for line in process.stdout:
            word, *rest = line.split()
            if word == "handles":
                pid = process_named(self.prefix, "engine_probe.exe") if len(sizes) in (20, self.options.changes - 2) else 0
                sizes.append((int(rest[0]), private_memory(pid), threads(pid)) if pid else (int(rest[0]), 0, 0))
        process.stdout.close()
        process.wait(20)
        for when in 20, self.options.changes - 2:
            handles, memory, running = sizes[when]
            print(f"after {when} changes: {handles} handles, {memory / 1e6:.2f} MB, {running} threads", flush=True)

    def load(self):
        pids = list(self.prefix.processes())
        before, begin = processor_seconds(pids), time.monotonic()
        time.sleep(self.options.seconds)
        return (processor_seconds(pids) - before) / (time.monotonic() - begin) * 60

    def playing(self):
        silent, loud, memory = [], [], []
        for _ in range(self.options.turns):
            player = self.prefix.start(os.path.join(self.options.build, "bench/silence_player.exe"),
                                       stderr=subprocess.DEVNULL)
            time.sleep(3)
            silent.append(self.load())
            quiet_memory = private_memory(process_named(self.prefix, "silence_player.exe"))
            processes.end(player)
            probe = self.probe("/stream/" + self.mount, self.options.seconds + 5, 1)
            self.ear.wait_silence(0.3)
            self.ear.wait_sound()
            time.sleep(3)
            loud.append(self.load())
            memory.append(private_memory(process_named(self.prefix, "engine_probe.exe")))
            probe.stdout.read()
            probe.stdout.close()
            probe.wait(20)
        quiet, load = statistics.median(silent), statistics.median(loud)
        print(f"{'load, silence':<40} {quiet:6.2f} s/min\n{'load, engine':<40} {load:6.2f} s/min = "
              f"{load / quiet:.2f} x")
        print(f"{'private memory, silence':<40} {quiet_memory / 1e6:6.2f} MB\n"
              f"{'private memory, engine':<40} {max(memory) / 1e6:6.2f} MB")


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("build")
    parser.add_argument("radio")
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--seconds", type=int, default=20)
    parser.add_argument("--changes", type=int, default=0, help="only this many changes of the station")
    parser.add_argument("--turns", type=int, default=2)
    options = parser.parse_args()
    options.build = os.path.abspath(options.build)
    with tempfile.TemporaryDirectory(prefix="kestrel-engine-") as folder:
        bench = Bench(options, folder)
        try:
            if options.changes:
                bench.changes()
            else:
                bench.sound()
                bench.playing()
        finally:
            bench.close()


if __name__ == "__main__":
    main()
