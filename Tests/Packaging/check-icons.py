#!/usr/bin/env python3
"""Checks that the icons have the sizes of their names, with transparency, and are all installed: check-icons.py FOLDER"""
import re
import struct
import sys
from pathlib import Path

# Those of the icon theme that every desktop falls back on.
SIZES = {16, 22, 24, 32, 48, 64, 96, 128, 256, 512}
TRANSPARENT = 6


def problems(folder: Path):
    icons = {int(re.search(r"-(\d+)", file.stem).group(1)): file for file in (folder / "icons").glob("*.png")}
    icons[128] = folder / "quillmere.png"
    if set(icons) != SIZES:
        yield f"icons of the sizes {sorted(icons)} instead of {sorted(SIZES)}"
    for size, file in icons.items():
        width, height, depth, colour = struct.unpack(">II2B", file.read_bytes()[16:26])
        if (width, height, depth, colour) != (size, size, 8, TRANSPARENT):
            yield f"{file.name} is {width} by {height}, of {depth} bits and kind {colour}"
    listed = re.search(r"set\(icon_sizes ([\d ]+)\)", (folder / "CMakeLists.txt").read_text())
    if not listed or {int(size) for size in listed.group(1).split()} | {128} != SIZES:
        yield "CMakeLists.txt does not install them all"


def main():
    found = list(problems(Path(sys.argv[1])))
    print("\n".join(found) or f"{len(SIZES)} icons")
    sys.exit(bool(found))


if __name__ == "__main__":
    main()
