#!/usr/bin/python3
"""Fails on an include that runs up or across: each folder may include itself and
the folders named here, and what those may."""

import os
import re
import subprocess
import sys

TOP = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))

# Folder: those right below it. Tests and benchmarks may see everything.
BELOW = {
    "base": [],
    "res": [],
    "engine/abi": [],
    "engine/time": ["base"],
    "engine/text": [],
    "engine/net": ["engine/time", "engine/text"],
    "engine/codec": ["base", "engine/abi", "engine/text"],
    "engine/sound": ["engine/abi", "engine/time", "engine/net"],
    "engine/hls": ["engine/net", "engine/codec"],
    "engine": ["engine/hls", "engine/sound"],
    "menu": ["base"],
    "window": ["base"],
    "app": ["menu"],
    "directory": ["app", "window"],
    "player": ["app", "window", "res", "engine/abi"],
    "tray": ["directory", "window", "res"],
    "dialogs": ["directory", "player", "window", "res"],
    "program": ["dialogs", "tray", "player"],
    "demo_radio": [],
}
FREE = ("tests/", "bench/")
INCLUDE = re.compile(r'^#include "([^"]+)"', re.M)


def reachable(folder, path=()):
    """The folder with all that it may include; a circle among them is an error."""
    if folder in path:
        sys.exit("a circle: " + " -> ".join((*path, folder)))
    found = {folder}
    for below in BELOW[folder]:
        found |= reachable(below, (*path, folder))
    return found


def main():
    allowed = {folder: reachable(folder) for folder in BELOW}
    files = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "*.h", "*.cpp"],
                           cwd=TOP, check=True, capture_output=True, text=True).stdout.split()
    wrong = []
    for file in files:
        if file.startswith(FREE) or not os.path.exists(os.path.join(TOP, file)):
            continue
        folder = os.path.dirname(file)
        if folder not in BELOW:
            wrong.append(f"{file}: the folder {folder} has no floor")
            continue
        with open(os.path.join(TOP, file), encoding="utf-8") as source:
            for name in INCLUDE.findall(source.read()):
                if os.path.dirname(name) not in allowed[folder]:
                    wrong.append(f"{file}: includes {name}")
    print("\n".join(wrong) if wrong else f"{len(files)} files include nothing above them")
    return bool(wrong)


if __name__ == "__main__":
    sys.exit(main())
