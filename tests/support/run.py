"""Runs a Windows program on a desktop of its own.  run.py PROGRAM [ARGUMENT...]"""

import subprocess
import sys

from desktop import Desktop


def main():
    desktop = Desktop()
    try:
        # Through a pipe: Wine's console is slow on anything else.
        program = desktop.prefix.start(*sys.argv[1:], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                       stderr=subprocess.STDOUT)
        for line in program.stdout:
            sys.stdout.buffer.write(line)
            sys.stdout.buffer.flush()
        return program.wait()
    finally:
        desktop.close()


if __name__ == "__main__":
    sys.exit(main())
