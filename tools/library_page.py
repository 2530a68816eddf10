#!/usr/bin/env python3
"""Writes docs/library.md, the page of the factory patches, from their texts.

    tools/library_page.py [MEASURES]  MEASURES: what measure-patches prints (build it on demand; it takes some minutes);
                                      without them the page has no levels
    tools/library_page.py --check     fails if a patch, its line or its tags are not on the page as they stand in the text

Of the measures the page takes loudness of a chord, highest level of ten keys and length of the tail.
"""
import json
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PATCHES, PAGE = ROOT / "factory/patches", ROOT / "docs/library.md"


def texts():
    """Category -> list of (name, about, tags), both sorted."""
    library = {}
    for path in sorted(PATCHES.glob("*/*.json")):
        patch = json.loads(path.read_text())
        line = (path.stem, " ".join(patch.get("about", "").split()).replace("|", "/"), ", ".join(patch.get("tags", [])))
        library.setdefault(path.parent.name, []).append(line)
    return library


def measures(path):
    """ "Category/Name" -> (LUFS of the chord, dBFS of ten keys, seconds of the tail), as texts."""
    found = {}
    for line in pathlib.Path(path).read_text().splitlines():
        cells = [cell.strip() for cell in line.strip("| \n").split("|")]
        if len(cells) == 10 and "/" in cells[0] and not cells[0].startswith("-"):
            found[cells[0]] = (cells[1].split(" / ")[0], cells[6], cells[8])
    return found


def row_start(patch):
    name, about, tags = patch
    return f"| **{name}** | {about} | {tags} |"


LEVELS = """ Levels are those of the chord C4 E4 G4 C5 at velocity 100 (the loudest 0.4 s) and of ten
keys at 127; the tail is the time from the release to -72 dBFS, at most 12 s."""


def page(library, measured):
    count = sum(len(patches) for patches in library.values())
    columns = ["Patch", "", "Tags"] + (["LUFS", "Ten keys, dBFS", "Tail, s"] if measured else [])
    lines = ["# The library", "",
             f"{count} patches in {len(library)} categories, made from the texts in `factory/patches` by `tools/library_page.py`."
             + (LEVELS if measured else ""), ""]
    lines += [f"- [{category}](#{category.lower()}): {len(patches)}" for category, patches in library.items()]
    for category, patches in library.items():
        lines += ["", f"## {category}", "", "| " + " | ".join(columns) + " |", "|---" * len(columns) + "|"]
        for patch in patches:
            values = measured.get(f"{category}/{patch[0]}", ("", "", "")) if measured else ()
            lines.append(row_start(patch) + "".join(f" {value} |" for value in values))
    return "\n".join(lines) + "\n"


def main():
    arguments = sys.argv[1:]
    if len(arguments) > 1:
        sys.exit(__doc__)
    library = texts()
    if arguments != ["--check"]:
        PAGE.write_text(page(library, measures(arguments[0]) if arguments else {}))
        return
    there = PAGE.read_text()
    missing = [f"{category}/{patch[0]}" for category, patches in library.items() for patch in patches if row_start(patch) not in there]
    rows = there.count("\n| **")
    if rows != sum(len(patches) for patches in library.values()):
        missing.append(f"the page has {rows} patches")
    if missing:
        sys.exit("docs/library.md is not that of the texts (tools/library_page.py): " + ", ".join(missing[:5]))


main()
