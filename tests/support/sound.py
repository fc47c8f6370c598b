"""A sound system of the test's own: what is played into it can be listened to."""

import array
import cmath
import math
import os
import subprocess
import threading
import time
import wave

import processes

RATE = 11025  # Hz, mono: enough for the stations' tones
PIECE = RATE // 5  # neighbouring semitones are 13 Hz apart and more


class Speakers:
    """A PulseAudio server with one silent output."""

    def __init__(self, folder):
        os.makedirs(folder, mode=0o700)
        self.socket = os.path.join(folder, "native")
        self.folder = folder
        self.environment = {"XDG_RUNTIME_DIR": folder, "PULSE_SERVER": "unix:" + self.socket,
                            "PULSE_COOKIE": os.path.join(folder, "cookie")}
        self._start()

    def _start(self):
        folder = self.folder
        self.process = processes.start(
            ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--log-target=stderr",
             "-L", f"module-native-protocol-unix socket={self.socket} auth-anonymous=1",
             "-L", "module-null-sink sink_name=kestrel"],
            env={**os.environ, **self.environment, "HOME": folder}, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        processes.wait_for(lambda: os.path.exists(self.socket), "a sound server")

        # Listens all the time: whoever comes later hears nothing for two seconds.
        self.recorder = processes.start(
            ["parec", "-d", "kestrel.monitor", "--raw", "--format=s16le", f"--rate={RATE}",
             "--channels=1", "--latency-msec=20"],
            env={**os.environ, **self.environment}, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.heard = bytearray()
        self.listener = threading.Thread(target=self._listen, daemon=True)
        self.listener.start()

    def close(self):
        processes.end(self.process)
        self.listener.join(5)
        processes.end(self.recorder)

    def restart(self, pause):
        """Gone for some seconds, and back."""
        self.close()
        time.sleep(pause)
        self._start()

    def listen(self, seconds):
        """What is heard from now on, as samples."""
        begin = len(self.heard) // 2 * 2
        end = begin + int(seconds * RATE) * 2
        processes.wait_for(lambda: len(self.heard) >= end, "the sound server's silence at least", seconds + 20)
        return array.array("h", bytes(self.heard[begin:end]))

    def _listen(self):
        while piece := self.recorder.stdout.read1(4096):
            self.heard += piece


def keep(sound, file):
    """As a WAV file, for somebody who wants to hear what went wrong."""
    with wave.open(file, "wb") as out:
        out.setparams((1, 2, RATE, 0, "NONE", ""))
        out.writeframes(sound.tobytes())


def loudness(sound):
    """Root mean square, full scale 1."""
    return math.sqrt(sum(s * s for s in sound) / max(1, len(sound))) / 32768


def level(sound, hertz):
    """How much of one frequency is in the sound, taken in short pieces: Wine's output
    has a hole of some 25 ms half a second after it starts, whoever plays, and what
    follows it has another phase."""
    turn, total = cmath.exp(-2j * math.pi * hertz / RATE), 0
    for begin in range(0, len(sound) - PIECE + 1, PIECE):
        now, piece = 1, 0
        for sample in sound[begin:begin + PIECE]:
            piece += sample * now
            now *= turn
        total += abs(piece)
    return total / max(1, len(sound)) / 32768


def loudest(sound, candidates):
    return max(candidates, key=lambda hertz: level(sound, hertz))
