"""Helper processes that never outlive the test, however it ends."""

import ctypes
import os
import signal
import subprocess
import sys
import time

LIBC = ctypes.CDLL(None)
PR_SET_PDEATHSIG = 1


def with_parent():
    LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


def start(command, **options):
    """Popen of a program that ends with this one."""
    return subprocess.Popen(command, preexec_fn=with_parent, **options)


def end(process, patience=5):
    """Asks it to end, then makes it."""
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(patience)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
    for stream in process.stdin, process.stdout, process.stderr:
        if stream:
            stream.close()


def run(command, seconds=60, **options):
    return subprocess.run(command, check=True, timeout=seconds, **options)


def wait_for(condition, what, seconds=20, pause=0.03):
    """The condition's first true result; an AssertionError that says what did not come."""
    deadline = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {seconds} s: {what() if callable(what) else what}")
        time.sleep(pause)


# An ended test run cleans up like an interrupted one.
signal.signal(signal.SIGTERM, lambda *_: sys.exit(os.EX_TEMPFAIL))
