#!/usr/bin/env python3
"""Breaks one line at a time and counts how often the tests notice.

mutate.py [--mutants N] [--seed N] [--only TEXT] [--jobs N]

A copy of the working tree in build/mutate is built once. Then, for each of N mutants drawn from the files below, one
line is changed there (a comparison, an operator, a number, a condition, a call left out), the tests of that file are
built and run, and the line is restored. A mutant that does not compile is replaced by another one. What no test has
noticed is listed at the end and in build/mutate/survivors.txt: each needs a test, or a reason why the change makes no
difference.
"""

import argparse
import pathlib
import random
import re
import resource
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
COPY = ROOT / "build" / "mutate" / "tree"
BUILD = COPY / "build" / "no-window"
CORE = "Sources/QuillmereCore/"
# Of the processor and of address space; many times what any of the tests needs.
TEST_SECONDS = 120
TEST_BYTES = 8 << 30

# What is broken, and the programs that should notice.
SUBJECTS = {
    CORE + "Generate/LatentSampler.cpp": ["LatentSamplerTest", "GoldenTest"],
    CORE + "Generate/Rendering.cpp": ["RenderingTest", "GoldenTest"],
    CORE + "Generate/Finishing.cpp": ["FinishingTest", "GoldenTest"],
    CORE + "Model/ModelStore.cpp": ["ModelStoreTest", "ModelReplaceTest"],
    CORE + "Model/ModelPlace.cpp": ["ModelReplaceTest", "ModelStoreTest"],
    CORE + "Model/Training/Schedule.cpp": ["ScheduleTest", "GoldenTest"],
    CORE + "Util/AtomicFile.cpp": ["AtomicFileTest", "DurabilityTest"],
    CORE + "Origin/Journal.cpp": ["JournalTest", "JournalProcessTest"],
}

# Each replaces one match.
CHANGES = [
    (re.compile(r"(?<![<>=!+\-*/&|-])<(?![<=>\w:])"), "<="),
    (re.compile(r" > "), " >= "),
    (re.compile(r" <= "), " < "),
    (re.compile(r" >= "), " > "),
    (re.compile(r" == "), " != "),
    (re.compile(r" != "), " == "),
    (re.compile(r" && "), " || "),
    (re.compile(r" \|\| "), " && "),
    (re.compile(r" \+ "), " - "),
    (re.compile(r" - "), " + "),
    (re.compile(r" \* "), " / "),
    (re.compile(r" / "), " * "),
    (re.compile(r"\+= "), "-= "),
    (re.compile(r"\btrue\b"), "false"),
    (re.compile(r"\bfalse\b"), "true"),
    (re.compile(r"\bif \((?!const|auto)"), "if (!"),
    (re.compile(r"std::max\b"), "std::min"),
    (re.compile(r"std::min\b"), "std::max"),
    (re.compile(r"\b0\b(?![.xX])"), "1"),
    (re.compile(r"\b1\b(?![.xX])"), "2"),
    (re.compile(r"\b2\b(?![.xX])"), "3"),
]
STATEMENT = re.compile(r"^\s+(?!return|throw|const|auto|static|using|break|continue|std::\w+ \w+;)[\w.:\->\[\]]+\(.*\);$")


def candidates(file):
    """All (line number, changed line) of a file."""
    found = []
    for number, line in enumerate((ROOT / file).read_text(encoding="utf-8").splitlines()):
        code = line.split("//")[0]
        if code.lstrip().startswith("#") or '"' in code or "template" in code or "static_assert" in code:
            continue
        for pattern, replacement in CHANGES:
            for match in pattern.finditer(code):
                changed = code[: match.start()] + replacement + code[match.end() :]
                if replacement == "if (!":
                    end = changed.rfind(") ") if not changed.rstrip().endswith("{") else changed.rfind(") {")
                    if end < 0:
                        continue
                    changed = changed[: match.end() + 1] + "(" + changed[match.end() + 1 : end] + ")" + changed[end:]
                found.append((number, changed))
        if STATEMENT.match(code):
            found.append((number, ";"))
    return found


def copy_tree():
    """The files of the working tree that git knows; those that are as they were keep their times."""
    listing = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, capture_output=True, check=True).stdout
    for name in listing.decode().split("\0"):
        source, target = ROOT / name, COPY / name
        if not source.is_file() or (target.is_file() and target.read_bytes() == source.read_bytes()):
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(source, target)


def run(command, **options):
    return subprocess.run(command, cwd=COPY, capture_output=True, check=False, **options).returncode


# A mutant that never ends, or takes ever more memory, is noticed, too.
def limit_test():
    resource.setrlimit(resource.RLIMIT_CPU, (TEST_SECONDS, TEST_SECONDS))
    resource.setrlimit(resource.RLIMIT_AS, (TEST_BYTES, TEST_BYTES))


def build(programs, jobs):
    return run(["cmake", "--build", str(BUILD), f"-j{jobs}", "--target", *programs]) == 0


def is_noticed(programs):
    for program in programs:
        binary = next(path for path in BUILD.glob(f"Tests/**/{program}") if path.is_file())
        if run([str(binary), "--gtest_brief=1"], preexec_fn=limit_test) != 0:
            return True
    return False


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--mutants", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", default="", help="files whose path holds this text")
    parser.add_argument("--jobs", type=int, default=2)
    options = parser.parse_args()

    subjects = {file: tests for file, tests in SUBJECTS.items() if options.only in file}
    programs = sorted({test for tests in subjects.values() for test in tests})
    copy_tree()
    if run(["cmake", "--preset", "no-window", "-D", "QUILLMERE_BUILD_TESTS=ON", "-D", "QUILLMERE_BUILD_BENCHMARKS=OFF"]):
        sys.exit("The copy cannot be configured.")
    if not build(programs, options.jobs):
        sys.exit("The copy does not build.")
    for program in programs:
        if is_noticed([program]):
            sys.exit(f"{program} fails before anything is broken.")

    pool = [(file, number, line) for file in subjects for number, line in candidates(file)]
    random.Random(options.seed).shuffle(pool)
    noticed, survivors, start = 0, [], time.monotonic()
    while pool and noticed + len(survivors) < options.mutants:
        file, number, line = pool.pop()
        original = (ROOT / file).read_text(encoding="utf-8")
        lines = original.splitlines(keepends=True)
        lines[number] = line + "\n"
        (COPY / file).write_text("".join(lines), encoding="utf-8")
        if build(subjects[file], options.jobs):
            if is_noticed(subjects[file]):
                noticed += 1
            else:
                survivors.append(f"{file}:{number + 1}\n  - {original.splitlines()[number].strip()}\n  + {line.strip()}")
                print(survivors[-1], flush=True)
        (COPY / file).write_text(original, encoding="utf-8")
        done = noticed + len(survivors)
        if done and done % 10 == 0:
            print(f"{done} mutants, {noticed} noticed, {time.monotonic() - start:.0f} s", flush=True)
    (ROOT / "build" / "mutate" / "survivors.txt").write_text("\n".join(survivors) + "\n", encoding="utf-8")
    total = noticed + len(survivors)
    print(f"{noticed} of {total} mutants noticed ({100 * noticed / max(1, total):.1f} %)")


if __name__ == "__main__":
    main()
