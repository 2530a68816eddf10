#!/usr/bin/env python3
"""Checks that no include goes up a floor or sideways into a room that may not be seen."""
import re
import subprocess
import sys

MAY_SEE = {
    "base": [],
    "platform": [],
    "vst": [],
    "sound": ["base"],
    "effects": ["base", "platform"],
    "samples": ["base", "platform", "sound"],
    "voice": ["base", "sound", "effects", "samples"],
    "engine": ["base", "platform", "vst", "sound", "effects", "samples", "voice"],
    "library": ["base", "platform", "sound", "effects", "samples", "voice", "engine"],
    "editor": ["base", "platform", "vst", "sound", "effects", "samples", "voice", "engine", "library"],
}

wrong = 0
for path in subprocess.check_output(["git", "ls-files", "*.h", "*.cpp"], text=True).split():
    room = path.split("/")[0]
    if room not in MAY_SEE:
        continue
    for number, line in enumerate(open(path), 1):
        found = re.match(r'\s*#\s*include\s+"([^"/]+)/', line)
        if found and found[1] != room and found[1] not in MAY_SEE[room]:
            print(f"{path}:{number}: {room} may not include {found[1]}")
            wrong += 1
sys.exit(1 if wrong else 0)
