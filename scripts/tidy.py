#!/usr/bin/env python3
"""Runs clang-tidy over C++ sources, several at a time, and leaves out what has not changed since it was clean.

    scripts/tidy.py BUILD_FOLDER FILE...

What clang-tidy can find depends on the preprocessed source with its comments (NOLINT is one), the command that
compiles it, the checks and clang-tidy itself. Their hash names an empty file in the cache, one for each source that
had no finding. Entries that went unused for a month are removed.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import shlex
import subprocess
import sys
import time

CACHE = pathlib.Path(os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache") / "quillmere-tidy"
MONTH = 30 * 24 * 3600


def output_of(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, check=True, **options).stdout


def preprocessed(entry):
    """The source of a compilation with everything that it includes and all comments, but without its objects."""
    command = shlex.split(entry["command"])
    if pathlib.Path(command[0]).name == "ccache":
        command = command[1:]
    del command[command.index("-o"):command.index("-o") + 2]
    return output_of([*command, "-E", "-C"], cwd=entry["directory"])


class Analysis:
    def __init__(self, folder):
        self.folder = folder
        self.tool = output_of(["clang-tidy", "--version"])
        entries = json.loads((folder / "compile_commands.json").read_text())
        self.compilations = {pathlib.Path(entry["file"]): entry for entry in entries}

    def stamp(self, source):
        entry = self.compilations[source]
        checks = [(folder / ".clang-tidy").read_bytes() for folder in source.parents if (folder / ".clang-tidy").exists()]
        digest = hashlib.sha256(b"".join([self.tool, *checks, entry["command"].encode(), preprocessed(entry)]))
        return CACHE / digest.hexdigest()

    def findings(self, source):
        """What clang-tidy says of a source, empty if it is clean; None if it is not asked."""
        if source not in self.compilations:
            print(f"{source}: not analysed, because nothing in {self.folder} compiles it", flush=True)
            return None
        stamp = self.stamp(source)
        if stamp.exists():
            stamp.touch()
            return None
        result = subprocess.run(["clang-tidy", "-p", self.folder, "--quiet", source],
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        if result.returncode == 0:
            stamp.touch()
            return ""
        return result.stdout + result.stderr


def remove_old_stamps():
    for stamp in CACHE.iterdir():
        if stamp.stat().st_mtime < time.time() - MONTH:
            stamp.unlink()


def main():
    analysis = Analysis(pathlib.Path(sys.argv[1]))
    sources = [pathlib.Path(name).resolve() for name in sys.argv[2:]]
    CACHE.mkdir(parents=True, exist_ok=True)
    remove_old_stamps()
    skipped = failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for findings in pool.map(analysis.findings, sources):
            skipped += findings is None
            if findings:
                failed += 1
                print(findings, end="", flush=True)
    print(f"clang-tidy: {len(sources)} sources, {skipped} of them left out, {failed} with findings.")
    return failed > 0


sys.exit(main())
