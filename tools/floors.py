#!/usr/bin/env python3
"""Checks that no include goes up a floor or sideways into a room that may not be seen.

Every folder with sources has a row: rooms, faces, programs, made content, tests and benches. A test may see its own room
and what that room may see; one that plays a whole engine says so here. What tests share is seen by tests that may see its
room. The rooms up to the window's model know neither a system nor a foreign library: `platform` is their system, and only
the window and the faces see the window library. Includes begin at the root of the repository or name a file beside.
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
    "apps/render": ["base", "platform", "apps/midi"],  # knows the plug-in by its binary interface alone, and its folders
    "apps/song": ["base", "apps/midi"],
    "apps/patch": ["base", "platform", "sound", "samples", "parameters", "patch", "loading", "library"],
    "factory/waves": ["base"],
    "factory/cycles": ["base", "platform", "samples", "factory/waves"],
    "factory/samples": ["base"],
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
    "formats": ["base", "patch", "editor/model", "faces"],
    "window": EVERYTHING,
    "windows": ["base", "platform", "apps/midi", "apps/render"],
    "apps": [*ROOMS],
}


# What tests share, seen by others than the tests of rooms above it.
TESTS_SHARED = {
    "tests/window": ["host"],
    "tests/faces": ["host", "window"],
    "tests/formats": ["host", "window"],
    "tests/windows": ["formats", "host"],
    "tests/fuzz": ["formats"],
    "bench": ["library", "window"],
}

# Rooms that include nothing but each other, the standard library and the processor's own instructions.
NEUTRAL = {*BELOW_LIBRARY, "library", "editor/model"} - {"platform"}
INSTRUCTIONS = {"emmintrin.h", "immintrin.h", "xmmintrin.h"}
STANDARD = re.compile(r"[a-z0-9_]+|experimental/simd")
WINDOW_LIBRARY = ("editor", "faces", "tests/window")

SOURCES = ("*.h", "*.cpp")
# What would hold code as well, and is looked for so that nothing escapes.
OTHER_SOURCES = ("*.c", "*.cc", "*.cxx", "*.c++", "*.hh", "*.hpp", "*.hxx", "*.h++", "*.inl", "*.ipp", "*.ixx", "*.tpp", "*.mm")


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


def place_of(path):
    """The room of a file, or the folder of a test."""
    return room_of(path) or "/".join(path.split("/")[:2])


def sees_tests(path, included):
    """Whether a file may include what the tests of a folder share."""
    folder = included.split("/")[1]
    place = place_of(path)
    if folder in TESTS_SHARED.get(place, []):
        return True
    return path.startswith("tests/") and (folder == path.split("/")[1] or folder in may_see(path))


def is_allowed(path, kind, included):
    """Whether a file may have an include: `kind` is its first mark, < or "."""
    place = place_of(path)
    if ".." in included.split("/") or included.startswith(("/", "./")):
        return False
    if included.startswith("vstgui/"):
        return place in WINDOW_LIBRARY
    if kind == "<":
        return place not in NEUTRAL or included in INSTRUCTIONS or STANDARD.fullmatch(included) is not None
    if included.startswith("tests/"):
        return sees_tests(path, included)
    if "/" not in included:
        return True
    room = room_of(included)
    if room is None:
        return place not in NEUTRAL
    return room in may_see(path)


def files(*patterns):
    listed = ["git", "ls-files", "--cached", "--others", "--exclude-standard", *patterns]
    return [path for path in subprocess.check_output(listed, text=True).split("\n") if path]


def main():
    wrong = 0
    for path in files(*OTHER_SOURCES):
        print(f"{path}: sources end in .h or .cpp")
        wrong += 1
    for path in files(*SOURCES):
        if may_see(path) is None:
            print(f"{path}: its folder has no row in tools/floors.py")
            wrong += 1
            continue
        try:
            lines = open(path, encoding="utf-8").readlines()
        except FileNotFoundError:  # deleted, not yet committed
            continue
        for number, line in enumerate(lines, 1):
            found = re.match(r'\s*#\s*include\s*([<"])([^>"]+)[>"]', line)
            if found and not is_allowed(path, found[1], found[2]):
                print(f"{path}:{number}: may not include {found[2]}")
                wrong += 1
    return 1 if wrong else 0


sys.exit(main())
