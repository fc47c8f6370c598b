"""What Linux knows of a prefix's processes, and when a sound begins."""

import array
import os
import subprocess
import threading
import time

import processes

TICK = os.sysconf("SC_CLK_TCK")
RATE = 44100


def process_named(prefix, program):
    """The Linux id of the prefix's process whose command begins with this program."""
    for pid in prefix.processes():
        with open(f"/proc/{pid}/cmdline", "rb") as file:
            command = file.read().split(b"\0")[0].strip(b'"').replace(b"/", b"\\")
        if command.rsplit(b"\\", 1)[-1].lower() == program.lower().encode():
            return pid
    raise RuntimeError(f"{program} does not run")


def private_memory(pid):
    """Bytes of the process that no file stands behind and nobody shares."""
    # Wine itself tells nothing of other processes.
    with open(f"/proc/{pid}/status") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("RssAnon")) * 1024


def processor_seconds(pids):
    total = 0
    for pid in pids:
        try:
            with open(f"/proc/{pid}/stat") as file:
                fields = file.read().rsplit(") ", 1)[1].split()
            total += int(fields[11]) + int(fields[12])
        except OSError:
            pass
    return total / TICK


class Ear:
    """Listens all the time and says when it next hears something. Times are time.monotonic()."""

    THRESHOLD = 200  # of 32768

    def __init__(self, speakers):
        self.recorder = processes.start(
            ["parec", "-d", "kestrel.monitor", "--raw", "--format=s16le", f"--rate={RATE}",
             "--channels=1", "--latency-msec=2", "--process-time-msec=1"],
            env={**os.environ, **speakers.environment}, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL)
        self.loud_since = None
        self.last_loud = 0
        self.changed = threading.Condition()
        threading.Thread(target=self._listen, daemon=True).start()

    def close(self):
        processes.end(self.recorder)

    def wait_silence(self, seconds=1.0, patience=20):
        deadline = time.monotonic() + patience
        while time.monotonic() - self.last_loud < seconds:
            if time.monotonic() > deadline:
                raise AssertionError("it does not become silent")
            time.sleep(0.05)
        with self.changed:
            self.loud_since = None

    def wait_sound(self, patience=15):
        """When the first sound since wait_silence was heard."""
        with self.changed:
            if not self.changed.wait_for(lambda: self.loud_since, patience):
                raise AssertionError("no sound came")
            return self.loud_since

    def _listen(self):
        descriptor = self.recorder.stdout.fileno()
        while piece := os.read(descriptor, 65536):
            arrived = time.monotonic()
            sound = array.array("h", piece[:len(piece) // 2 * 2])
            first = next((i for i, s in enumerate(sound) if abs(s) > self.THRESHOLD), None)
            if first is None:
                continue
            self.last_loud = arrived
            with self.changed:
                # The silent output mixes a piece just before its time has come.
                self.loud_since = self.loud_since or arrived + first / RATE
                self.changed.notify_all()
