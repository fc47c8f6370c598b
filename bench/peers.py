"""Measures the engine beside other players of this machine, in one run, all of them native.

  peers.py BUILD [--rounds N] [--seconds N]
      BUILD    the native build, e.g. build/native

A player is measured when it is installed (packages mpv, mpg123, vlc-bin with
vlc-plugin-base). Times are from the start of its process to the first sound.
"""

import argparse
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

FOLDER = os.path.dirname(os.path.abspath(__file__))
sys.path.append(os.path.join(FOLDER, "../tests/support"))

import processes  # noqa: E402
from demo_radio import DemoRadio  # noqa: E402
from sound import Speakers  # noqa: E402
from system import Ear, private_memory, processor_seconds  # noqa: E402

# It does not run as root.
VLC = (["runuser", "-u", "nobody", "--"] if os.geteuid() == 0 else []) + [
    "cvlc", "-I", "dummy", "--aout=pulse", "--no-video", "--quiet"]


def family(pid):
    """A process and its children."""
    with open(f"/proc/{pid}/task/{pid}/children") as file:
        return [pid, *(p for child in file.read().split() for p in family(int(child)))]


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("build")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--seconds", type=int, default=15)
    options = parser.parse_args()
    players = {"the engine": [os.path.join(options.build, "bench/play_url")],
               "mpg123": ["mpg123", "-q", "-o", "pulse"],
               "mpv": ["mpv", "--no-config", "--no-video", "--ao=pulse", "--really-quiet"],
               "VLC": VLC}
    players = {name: words for name, words in players.items() if shutil.which("cvlc" if words == VLC else words[0])}
    radio = DemoRadio(os.path.join(options.build, "demo_radio/demo_radio"), os.path.join(options.build, "demo_radio/sounds"))
    mount = next(s for s in radio.stations() if s.codec == "mp3" and s.kbit == 128).mount
    with tempfile.TemporaryDirectory(prefix="kestrel-peers-") as folder:
        os.chmod(folder, 0o755)
        speakers = Speakers(os.path.join(folder, "sound"))
        os.chmod(os.path.join(folder, "sound"), 0o755)
        ear = Ear(speakers)
        environment = {**os.environ, **speakers.environment, "HOME": folder}

        def play(words, path):
            return processes.start([*words, radio.url + path], env=environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

        # The very first sound wakes the output, which takes a while.
        player = play(players["the engine"], f"/stream/{mount}")
        ear.wait_sound()
        processes.end(player)
        print(f"{'':<12}{'bursting':>22}{'not bursting':>22}{'load':>12}{'private':>10}")
        for name, words in players.items():
            row = f"{name:<12}"
            for habit in "", "/bad/no-burst":
                times = []
                for _ in range(options.rounds):
                    ear.wait_silence(0.5)
                    begin = time.monotonic()
                    player = play(words, f"{habit}/stream/{mount}")
                    times.append((ear.wait_sound() - begin) * 1000)
                    processes.end(player)
                row += f"{statistics.median(times):8.0f} ms ({min(times):4.0f}-{max(times):4.0f})"
            ear.wait_silence(0.5)
            player = play(words, f"/stream/{mount}")
            ear.wait_sound()
            time.sleep(3)
            pids = family(player.pid)
            before, begin = processor_seconds(pids), time.monotonic()
            time.sleep(options.seconds)
            load = (processor_seconds(pids) - before) / (time.monotonic() - begin) * 60
            memory = sum(map(private_memory, pids))
            processes.end(player)
            print(f"{row}{load:7.2f} s/min{memory / 1e6:7.1f} MB", flush=True)
        ear.close()
        speakers.close()
    radio.stop()


if __name__ == "__main__":
    main()
