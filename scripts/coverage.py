#!/usr/bin/env python3
"""Tells which share of some sources the tests have reached: coverage.py BUILD NAME PATTERN.

BUILD is a build folder of the preset "coverage" with the profiles of a run of its tests in it, PATTERN what the paths
of the sources begin with, relative to the working tree. The files, those that lack most first, are listed in
BUILD/NAME.txt.

A line or branch of a template counts as reached if it was in any of its forms; what is decided when it is compiled (if
constexpr) is no branch.
"""

import collections
import dataclasses
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


@dataclasses.dataclass
class Source:
    """What there is in a file, and what of it was reached."""
    lines: set = dataclasses.field(default_factory=set)
    lines_reached: set = dataclasses.field(default_factory=set)
    branches: set = dataclasses.field(default_factory=set)
    branches_reached: set = dataclasses.field(default_factory=set)

    def missed(self) -> int:
        return len(self.lines) - len(self.lines_reached) + len(self.branches) - len(self.branches_reached)


def programs(build: pathlib.Path) -> list[pathlib.Path]:
    """All that was linked and can have counted."""
    def is_linked(path: pathlib.Path) -> bool:
        if not path.is_file() or path.is_symlink() or not path.stat().st_mode & 0o100:
            return False
        with path.open("rb") as file:
            return file.read(4) == b"\x7fELF"

    return sorted(path for path in build.rglob("*") if "CMakeFiles" not in path.parts and is_linked(path))


def exported(build: pathlib.Path) -> list[dict]:
    """The counts of each source; kept beside the profiles, for they take a while."""
    kept = build / "profiles" / "counts.json"
    if not kept.exists():
        profile = build / "profiles" / "all.profdata"
        profiles = sorted(build.glob("profiles/*.profraw"))
        subprocess.run(["llvm-profdata", "merge", "-sparse", "-o", profile, *profiles], check=True)
        first, *others = programs(build)
        objects = [argument for other in others for argument in ("-object", other)]
        export = ["llvm-cov", "export", "-skip-functions", "-skip-expansions", "-instr-profile", profile]
        counts = subprocess.run([*export, first, *objects], check=True, stdout=subprocess.PIPE).stdout
        kept.write_bytes(counts)
    return json.loads(kept.read_text())["data"][0]["files"]


def add_lines(source: Source, segments: list[list]) -> None:
    """A segment is where the count changes: line, column, count, has a count, begins a region, is a gap in one."""
    starting = collections.defaultdict(list)
    for line, _, count, counts, begins, is_gap in segments:
        starting[line].append((count, counts, begins, is_gap))
    before = None  # the last segment of the lines above
    for line in range(min(starting, default=0), max(starting, default=-1) + 1):
        here = starting[line]
        begun = [count for count, counts, begins, is_gap in here if counts and begins and not is_gap]
        wrapped = before[0] if before and before[1] else None
        skipped = here and here[0][2] and not here[0][1]
        if not skipped and (begun or wrapped is not None):
            source.lines.add(line)
            if max([*begun, wrapped or 0]) > 0:
                source.lines_reached.add(line)
        before = here[-1] if here else before


def add_branches(source: Source, branches: list[list], text: list[str]) -> None:
    for first, column, last, end, when_true, when_false, *_ in branches:
        if "if constexpr" in text[first - 1]:
            continue
        for outcome, count in ((True, when_true), (False, when_false)):
            branch = (first, column, last, end, outcome)
            source.branches.add(branch)
            if count > 0:
                source.branches_reached.add(branch)


def sources(build: pathlib.Path, pattern: re.Pattern) -> dict[str, Source]:
    result = collections.defaultdict(Source)
    for file in exported(build):
        # The compiler was given some names relative to its folder, and other names of the same files.
        path = os.path.relpath(os.path.normpath(file["filename"]), ROOT)
        if pattern.match(path):
            add_lines(result[path], file["segments"])
            add_branches(result[path], file["branches"], (ROOT / path).read_text().splitlines())
    return result


def described(chosen: list[Source]) -> str:
    def share(what: str) -> str:
        count, reached = (sum(len(getattr(source, name)) for source in chosen) for name in (what, what + "_reached"))
        return f"{100 * reached / max(count, 1):.1f} % of {count} {what}"

    return f"{share('lines')}, {share('branches')}"


def main() -> None:
    build, name = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2]
    chosen = sources(build, re.compile(sys.argv[3]))
    with (build / f"{name}.txt").open("w") as report:
        for path, source in sorted(chosen.items(), key=lambda item: item[1].missed(), reverse=True):
            print(f"{path}: {described([source])}", file=report)
    print(f"{name}: {described(list(chosen.values()))}")


if __name__ == "__main__":
    main()
