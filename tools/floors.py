#!/usr/bin/env python3
"""Checks that no include goes up a floor or sideways into a room that may not be seen.

Every folder with sources has a row: rooms, faces, programs, made content, tests and benches. A test may see its own room
and what that room may see; one that plays a whole engine says so here.
"""
import re
import subprocess
import sys

ROOMS = {
    "base": [],
    "platform": [],
    "sound": ["base"],
    "effects": ["base", "platform"],
    "samples": ["base", "platform", "sound"],
    "voice": ["base", "sound", "effects", "samples"],
    "parameters": ["base", "sound", "effects"],
    "patch": ["base", "platform", "sound", "samples", "parameters"],
    "loading": ["base", "platform", "sound", "samples", "parameters", "patch"],
    "engine": ["base", "platform", "sound", "effects", "samples", "voice", "parameters", "patch", "loading"],
}
BELOW_LIBRARY = [*ROOMS]
ROOMS["library"] = BELOW_LIBRARY
ROOMS["editor/model"] = [*BELOW_LIBRARY, "library"]
ROOMS["editor"] = [*BELOW_LIBRARY, "library", "editor/model"]
EVERYTHING = [*ROOMS, "faces"]
ROOMS["faces"] = [*ROOMS]

# Programs and made content: what each is made of.
ROOMS |= {
    "apps/midi": [],
    "apps/render": ["base", "apps/midi"],  # knows the plug-in by its binary interface alone
    "apps/song": ["base", "apps/midi"],
    "apps/patch": ["base", "platform", "sound", "samples", "parameters", "patch", "loading", "library"],
    "factory/waves": ["base"],
    "factory/cycles": ["base", "platform", "samples", "factory/waves"],
    "factory/patches": ["base", "platform", "engine", "apps/render"],
    "bench": [*EVERYTHING, "apps/render"],
}

# Tests that see more than their room does.
TESTS_MORE = {
    "platform": ["base"],
    "samples": ["platform"],
    "patch": ["engine"],
    "loading": ["engine"],
    "editor": ["base"],
    "threads": ["base", "platform", "sound", "samples", "engine"],
    "bindings": EVERYTHING,
    "golden_runner": [],
    "fuzz": EVERYTHING,
    "faces": ["apps/midi", "apps/render"],
    "host": ["base", "effects", "engine", "faces"],
    "formats": ["base", "faces"],
    "window": EVERYTHING,
    "windows": ["base", "apps/midi", "apps/render"],
    "apps": [*ROOMS],
}


def room_of(path):
    """The row that a file or an include belongs to: the longest one that its folders begin with."""
    parts = path.split("/")
    for length in (2, 1):
        if "/".join(parts[:length]) in ROOMS and len(parts) > length:
            return "/".join(parts[:length])
    return None


def may_see(path):
    """The rooms that a file may include, its own among them; None for a folder without a row."""
    room = room_of(path)
    if room:
        return {room, *ROOMS[room]}
    folders = path.split("/")
    if folders[0] != "tests":
        return None
    name = folders[1]
    if name in ROOMS:
        return {name, *ROOMS[name], *TESTS_MORE.get(name, [])}
    return set(TESTS_MORE[name]) if name in TESTS_MORE else None


def main():
    wrong = 0
    listed = ["git", "ls-files", "--cached", "--others", "--exclude-standard", "*.h", "*.cpp"]
    for path in subprocess.check_output(listed, text=True).split("\n"):
        if not path:
            continue
        allowed = may_see(path)
        if allowed is None:
            print(f"{path}: its folder has no row in tools/floors.py")
            wrong += 1
            continue
        try:
            lines = open(path, encoding="utf-8").readlines()
        except FileNotFoundError:  # deleted, not yet committed
            continue
        for number, line in enumerate(lines, 1):
            found = re.match(r'\s*#\s*include\s+"([^"]+/[^"]+)"', line)
            room = room_of(found[1]) if found else None
            if room and room not in allowed:
                print(f"{path}:{number}: may not include {found[1]}")
                wrong += 1
    return 1 if wrong else 0


sys.exit(main())
