"""Speaks to probe.exe, which looks at windows and sends messages from outside."""

import json
import queue
import subprocess
import threading
from types import SimpleNamespace

import processes


class Seen(SimpleNamespace):
    """Something on the screen as it was when it was looked at."""

    @property
    def middle(self):
        left, top, right, bottom = self.rect
        return (left + right) // 2, (top + bottom) // 2


class Window(Seen):
    """`text` of a child is what a screen reader gets."""


class Probe:
    def __init__(self, prefix, program):
        self.process = prefix.start(program, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                    stderr=subprocess.DEVNULL)
        self.answers = queue.Queue()
        threading.Thread(target=self._read, daemon=True).start()

    def close(self):
        processes.end(self.process)

    def ask(self, *words, seconds=30):
        self.process.stdin.write("\t".join(str(w) for w in words).encode() + b"\n")
        self.process.stdin.flush()
        line = self.answers.get(timeout=seconds)
        if not line:
            raise RuntimeError("the probe has ended")
        answer = json.loads(line)
        if "error" in answer:
            raise RuntimeError(f"{words[0]}: {answer['error']}")
        return answer["value"]

    def windows(self, process=None, class_name=None, text=None, visible=None):
        return [w for w in (Window(**fields) for fields in self.ask("windows"))
                if process in (None, w.process) and class_name in (None, w.class_name)
                and text in (None, w.text) and visible in (None, w.visible)]

    def children(self, window):
        return [Window(**fields) for fields in self.ask("children", window.handle)]

    def send(self, window, message, wparam=0, lparam=0):
        return self.ask("send", window.handle, message, wparam, lparam)

    def post(self, window, message, wparam=0, lparam=0):
        self.ask("post", window.handle, message, wparam, lparam)

    def _read(self):
        for line in self.process.stdout:
            self.answers.put(line)
        self.answers.put(b"")
