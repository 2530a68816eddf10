#!/usr/bin/env python3
"""Writes docs/library.md, the page of the factory patches, from their texts, and docs/library/, their pictures.

    tools/library_page.py MEASURES  MEASURES: what `measure-patches --page` prints (build it on demand; it takes some minutes)
    tools/library_page.py --texts   renews what stands in the texts, and keeps the figures and pictures that are there
    tools/library_page.py --check   fails if a patch, its line or its tags are not on the page as they stand in the text, or if the
                                    tags are not of factory/patches/tags.txt

A picture shows the first four seconds of a chord that is let go after three: time to the right, third octaves from 50 Hz upwards.
"""
import base64
import html
import json
import pathlib
import struct
import sys
import zlib

ROOT = pathlib.Path(__file__).resolve().parent.parent
PATCHES, PAGE, PICTURES = ROOT / "factory/patches", ROOT / "docs/library.md", ROOT / "docs/library"
MOST_TAGS = 6
COLUMNS = ["Patch", "", "Tags", "LUFS", "Ten keys, dBFS", "Tail, s", "Cost, %"]


def texts():
    """Category -> list of (name, about, tags), both sorted."""
    library = {}
    for path in sorted(PATCHES.glob("*/*.json")):
        patch = json.loads(path.read_text())
        line = (path.stem, " ".join(patch.get("about", "").split()).replace("|", "/"), ", ".join(patch.get("tags", [])))
        library.setdefault(path.parent.name, []).append(line)
    return library


def measures(path):
    """ "Category/Name" -> (LUFS, dBFS of ten keys, seconds of the tail, cost, picture), as texts."""
    rows = (line.split("\t") for line in pathlib.Path(path).read_text().splitlines())
    return {name: values for name, *values in rows}


def figures_on_page():
    """ "Category/Name" -> the figures of its row on the page."""
    found, category = {}, ""
    for line in PAGE.read_text().splitlines():
        if line.startswith("## "):
            category = line[3:]
        elif line.startswith("| **"):
            cells = [cell.strip() for cell in line.strip("| ").split(" | ")]
            found[f"{category}/{cells[0].strip('*')}"] = cells[3:7]
    return found


def row_start(patch):
    name, about, tags = patch
    return f"| **{name}** | {about} | {tags} |"


def page(library, figures):
    count = sum(len(patches) for patches in library.values())
    lines = ["# The library", "",
             f"{count} patches in {len(library)} categories, made from the texts in `factory/patches` by `tools/library_page.py`. "
             "Levels are those of the chord C4 E4 G4 C5 at velocity 100 (the loudest 0.4 s) and of ten keys at 127; the tail is the time "
             "from the release to -72 dBFS, at most 12 s; the cost is the chord's, of one core of the machine that wrote this page. The "
             "pictures show the chord, held for three seconds of four: time to the right, third octaves from 50 Hz upwards.", ""]
    lines += [f"- [{category}](#{category.lower()}): {len(patches)}" for category, patches in library.items()]
    for category, patches in library.items():
        lines += ["", f"## {category}", "", f"![The sounds of {category}](library/{category}.svg)", "",
                  "| " + " | ".join(COLUMNS) + " |", "|---" * len(COLUMNS) + "|"]
        for patch in patches:
            values = figures.get(f"{category}/{patch[0]}", [""] * 4)[:4]
            lines.append(row_start(patch) + "".join(f" {value} |" for value in values))
    return "\n".join(lines) + "\n"


def png(rows, palette):
    """Bytes of an indexed image; rows from the top down."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    header = struct.pack(">IIBBBBB", len(rows[0]), len(rows), 8, 3, 0, 0, 0)
    pixels = zlib.compress(b"".join(b"\0" + bytes(row) for row in rows), 9)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"PLTE", bytes(sum(palette, ()))) + chunk(b"IDAT", pixels)
            + chunk(b"IEND", b""))


def palette():
    """36 colours from the dark ground over blue and amber to near white, 2 dB a step."""
    stops = [(16, 18, 26), (38, 52, 110), (150, 70, 120), (240, 160, 70), (255, 250, 225)]
    colours = []
    for step in range(36):
        at = step / 35 * (len(stops) - 1)
        low = min(int(at), len(stops) - 2)
        colours.append(tuple(round(a + (b - a) * (at - low)) for a, b in zip(stops[low], stops[low + 1])))
    return colours


def sheet(category, patches, measured):
    """The pictures of a category's patches with their names, as SVG."""
    across, width, height, bands = 4, 230, 116, 25
    deep = -(-len(patches) // across) * height + 10
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{across * width + 10}" height="{deep}" font-family="sans-serif" '
             'font-size="13">', '<rect width="100%" height="100%" fill="#f4f4f0"/>']
    for i, (name, _, _) in enumerate(patches):
        digits = [int(c, 36) for c in measured[f"{category}/{name}"][4]]
        times = [digits[t:t + bands] for t in range(0, len(digits), bands)]
        image = base64.b64encode(png([[column[band] for column in times] for band in reversed(range(bands))], palette())).decode()
        x, y = 10 + i % across * width, 10 + i // across * height
        lines.append(f'<image x="{x}" y="{y}" width="{width - 10}" height="{height - 30}" preserveAspectRatio="none" '
                     f'href="data:image/png;base64,{image}"/>')
        lines.append(f'<text x="{x}" y="{y + height - 15}" fill="#222">{html.escape(name)}</text>')
    return "\n".join(lines + ["</svg>"]) + "\n"


def vocabulary():
    """Tag -> its kind, in the order in which a patch has the kinds."""
    kinds = (line.split(": ") for line in (PATCHES / "tags.txt").read_text().splitlines())
    return {tag: kind for kind, tags in kinds for tag in tags.split(", ")}


def tag_faults(tags, kinds):
    """What is wrong with the tags of one patch: every kind has to be there, one after the other, and no word twice."""
    faults = [f'"{tag}" is not in tags.txt' for tag in tags if tag not in kinds]
    order = list(dict.fromkeys(kinds.values()))
    there = [order.index(kinds[tag]) for tag in tags if tag in kinds]
    faults += [f"no {kind}" for i, kind in enumerate(order) if i not in there]
    if there != sorted(there):
        faults.append("kinds out of order")
    if len(set(tags)) != len(tags) or len(tags) > MOST_TAGS:
        faults.append(f"a tag twice, or more than {MOST_TAGS}")
    return faults


def check_tags(library):
    kinds = vocabulary()
    patches = [(f"{category}/{name}", tags.split(", ")) for category, patches in library.items() for name, _, tags in patches]
    faults = [f"{patch}: {fault}" for patch, tags in patches for fault in tag_faults(tags, kinds)]
    idle = set(kinds) - {tag for _, tags in patches for tag in tags}
    faults += [f'tags.txt: no patch has "{tag}"' for tag in sorted(idle)]
    if faults:
        sys.exit("Tags (factory/patches/README.md): " + "; ".join(faults[:5]))


def check(library):
    there = PAGE.read_text()
    missing = [f"{category}/{patch[0]}" for category, patches in library.items() for patch in patches if row_start(patch) not in there]
    rows = there.count("\n| **")
    if rows != sum(len(patches) for patches in library.values()):
        missing.append(f"the page has {rows} patches")
    for category, patches in library.items():
        drawn = PICTURES / f"{category}.svg"
        drawing = drawn.read_text() if drawn.exists() else ""
        missing += [f"picture of {category}/{name}" for name, _, _ in patches if f">{html.escape(name)}</text>" not in drawing]
    if missing:
        sys.exit("docs/library.md is not that of the texts (tools/library_page.py): " + ", ".join(missing[:5]))


def main():
    arguments, library = sys.argv[1:], texts()
    if arguments == ["--check"]:
        check_tags(library)
        check(library)
    elif arguments == ["--texts"]:
        PAGE.write_text(page(library, figures_on_page()))
    elif len(arguments) == 1 and not arguments[0].startswith("-"):
        measured = measures(arguments[0])
        PAGE.write_text(page(library, measured))
        PICTURES.mkdir(exist_ok=True)
        for category, patches in library.items():
            (PICTURES / f"{category}.svg").write_text(sheet(category, patches, measured))
    else:
        sys.exit(__doc__)


main()
