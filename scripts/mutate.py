#!/usr/bin/env python3
"""Breaks one line at a time and counts how often the tests notice.

mutate.py [--mutants N] [--seed N] [--only TEXT] [--jobs N]

Copies of the working tree, one for each job, are built once in build/mutate. Then, for each of N mutants drawn from the
files below, one line is changed (a comparison, an operator, a number, a condition, a call left out), the tests of that
file are built and run, and the line is restored. A mutant that does not compile is replaced by another one. What no
test has noticed is listed at the end and in build/mutate/survivors.txt: each needs a test, or, in mutate-verdicts.txt,
a reason why the change makes no difference that a test could see.

Takes some ten seconds of a processor for each mutant. What has been tried is kept in build/mutate/outcomes.jsonl, and a
run that was stopped goes on from there. A file's mutants are tried again when it, its tests or what
all tests share has changed.
"""

import argparse
import dataclasses
import hashlib
import json
import os
import pathlib
import queue
import random
import re
import resource
import shutil
import subprocess
import sys
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
PLACE = ROOT / "build" / "mutate"
OUTCOMES = PLACE / "outcomes.jsonl"
VERDICTS = ROOT / "scripts" / "mutate-verdicts.txt"
CORE = "Sources/QuillmereCore/"
# Of the processor and of address space; many times what any of the tests needs.
TEST_SECONDS = 120
TEST_BYTES = 8 << 30

# What is broken, and what should notice: programs, each with a filter of its tests if not all are about the file.
SUBJECTS = {
    CORE + "Generate/LatentSampler.cpp": ["LatentSamplerTest", "GoldenTest Sampler.*"],
    CORE + "Generate/Rendering.cpp": ["RenderingTest", "GoldenTest Render.*"],
    CORE + "Generate/Finishing.cpp": ["FinishingTest", "GoldenTest Finish.*"],
    CORE + "Generate/Detail/Attack.cpp": ["AttackTest", "GoldenTest Detail.*"],
    CORE + "Generate/Detail/Donor.cpp": ["DonorTest", "GoldenTest Detail.*"],
    CORE + "Generate/Detail/FineStructure.cpp": ["FineStructureTest", "GoldenTest Detail.*"],
    CORE + "Generate/Detail/TailCurve.cpp": ["TailCurveTest", "GoldenTest Detail.*"],
    CORE + "Model/ModelStore.cpp": ["ModelStoreTest", "ModelReplaceTest"],
    CORE + "Model/ModelPlace.cpp": ["ModelReplaceTest", "ModelStoreTest"],
    CORE + "Model/Training/Schedule.cpp": ["TrainingTest", "GoldenTest Trainer.*"],
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


@dataclasses.dataclass
class Mutant:
    file: str
    number: int  # of the line, from 0
    line: str  # that takes its place

    def key(self, stamp):
        text = f"{self.file}\0{self.number}\0{self.line}\0{stamp}"
        return hashlib.sha256(text.encode()).hexdigest()[:24]

    def before(self):
        return (ROOT / self.file).read_text(encoding="utf-8").splitlines()[self.number].strip()

    def shown(self):
        return f"{self.file}:{self.number + 1}\n  - {self.before()}\n  + {self.line.strip()}"

    def verdict(self, known):
        """Why it makes no difference; None if nobody has said so."""
        return known.get((self.file, self.before(), self.line.strip()))


def verdicts():
    """Why a change makes no difference, by file, line before and line after.

    Of four lines each, with an empty one between them: file, "- " before, "+ " after, why.
    """
    found = {}
    for block in VERDICTS.read_text(encoding="utf-8").strip().split("\n\n"):
        file, before, after, reason = (line.strip() for line in block.splitlines())
        found[file, before.removeprefix("- "), after.removeprefix("+ ")] = reason
    return found


def tracked():
    listing = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, capture_output=True, check=True).stdout
    return [name for name in listing.decode().split("\0") if (ROOT / name).is_file()]


# What the tests share.
SHARED = {ROOT / "Tests" / name for name in ("Data", "Golden", "Support")}


def stamp(file, noticers):
    """What a file's outcomes depend on, as far as it changes often: itself, the folders whose programs should notice,
    and what all tests share."""
    named = re.compile(r"quillmere_add_test\((" + "|".join(map(program_of, noticers)) + r")\b")
    folders = SHARED | {lists.parent for lists in (ROOT / "Tests").rglob("CMakeLists.txt")
                        if named.search(lists.read_text(encoding="utf-8"))}
    digest = hashlib.sha256((ROOT / file).read_bytes())
    for name in tracked():
        path = ROOT / name
        if path.parent in folders or not SHARED.isdisjoint(path.parents):
            digest.update(name.encode() + b"\0" + path.read_bytes())
    return digest.hexdigest()


# A mutant that never ends, or takes ever more memory, is noticed, too.
def limit_test():
    resource.setrlimit(resource.RLIMIT_CPU, (TEST_SECONDS, TEST_SECONDS))
    resource.setrlimit(resource.RLIMIT_AS, (TEST_BYTES, TEST_BYTES))


def program_of(tests):
    return tests.split()[0]


class Workshop:
    """A copy of the tree, to break something in."""

    def __init__(self, number):
        self.tree = PLACE / f"tree-{number}"
        self.build = self.tree / "build" / "no-window"

    def run(self, command, **options):
        environment = {**os.environ, "CCACHE_BASEDIR": str(self.tree)}
        return subprocess.run(command, cwd=self.tree, env=environment, capture_output=True, check=False,
                              **options).returncode

    def prepare(self, programs, jobs):
        """Files that are as they were keep their times."""
        for name in tracked():
            source, target = ROOT / name, self.tree / name
            if target.is_file() and target.read_bytes() == source.read_bytes():
                continue
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)
        if self.run(["cmake", "--preset", "no-window", "-D", "QUILLMERE_BUILD_TESTS=ON", "-D",
                     "QUILLMERE_BUILD_BENCHMARKS=OFF"]):
            sys.exit("The copy cannot be configured.")
        if not self.builds(programs, jobs):
            sys.exit("The copy does not build.")

    def builds(self, programs, jobs=1):
        return self.run(["cmake", "--build", str(self.build), f"-j{jobs}", "--target", *programs]) == 0

    def fails(self, tests):
        program = program_of(tests)
        selection = tests.removeprefix(program).strip() or "*"
        (binary,) = (path for path in self.build.glob(f"Tests/**/{program}") if path.is_file())
        arguments = ["--gtest_brief=1", f"--gtest_filter={selection}"]
        return self.run([str(binary), *arguments], preexec_fn=limit_test) != 0

    def outcome(self, mutant, noticers):
        """"invalid", "noticed" or "survived"."""
        original = (ROOT / mutant.file).read_text(encoding="utf-8")
        lines = original.splitlines(keepends=True)
        lines[mutant.number] = mutant.line + "\n"
        broken = self.tree / mutant.file
        broken.write_text("".join(lines), encoding="utf-8")
        try:
            for tests in noticers:
                if not self.builds([program_of(tests)]):
                    return "invalid"
                if self.fails(tests):
                    return "noticed"
            return "survived"
        finally:
            broken.write_text(original, encoding="utf-8")


class Survey:
    """Tries mutants in their order until enough have been tried. Any thread."""

    def __init__(self, pool, wanted, subjects):
        self.subjects = subjects
        self.wanted = wanted
        self.stamps = {file: stamp(file, noticers) for file, noticers in subjects.items()}
        self.known = {}
        if OUTCOMES.exists():
            for line in OUTCOMES.read_text().splitlines():
                entry = json.loads(line)
                self.known[entry["key"]] = entry["outcome"]
        self.outcomes = {}  # by place in the order
        self.pool = pool
        self.todo = queue.SimpleQueue()
        for place in range(len(pool)):
            self.todo.put(place)
        self.lock = threading.Lock()
        self.start = time.monotonic()

    def tried(self):
        """The first ones that were wanted, as (mutant, outcome)."""
        valid = [(self.pool[place], self.outcomes[place]) for place in sorted(self.outcomes)
                 if self.outcomes[place] != "invalid"]
        return valid[:self.wanted]

    def work(self, workshop):
        while True:
            with self.lock:
                if self.todo.empty() or len(self.tried()) >= self.wanted:
                    return
                place = self.todo.get()
            mutant = self.pool[place]
            key = mutant.key(self.stamps[mutant.file])
            outcome = self.known.get(key)
            if outcome is None:
                outcome = workshop.outcome(mutant, self.subjects[mutant.file])
            with self.lock:
                self.note(place, mutant, key, outcome)

    def note(self, place, mutant, key, outcome):
        self.outcomes[place] = outcome
        if key not in self.known:
            with OUTCOMES.open("a") as file:
                file.write(json.dumps({"key": key, "outcome": outcome}) + "\n")
        if outcome == "survived":
            print(mutant.shown(), flush=True)
        tried = self.tried()
        if outcome != "invalid" and len(tried) % 10 == 0:
            noticed = sum(outcome == "noticed" for _, outcome in tried)
            print(f"{len(tried)} mutants, {noticed} noticed, {time.monotonic() - self.start:.0f} s", flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--mutants", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", default="", help="files whose path holds this text")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    options = parser.parse_args()

    subjects = {file: tests for file, tests in SUBJECTS.items() if options.only in file}
    noticers = sorted({tests for several in subjects.values() for tests in several})
    programs = sorted({program_of(tests) for tests in noticers})
    workshops = [Workshop(number) for number in range(options.jobs)]
    for workshop in workshops:
        workshop.prepare(programs, options.jobs)
    for tests in noticers:
        if workshops[0].fails(tests):
            sys.exit(f"{tests} fails before anything is broken.")

    pool = [Mutant(file, number, line) for file in subjects for number, line in candidates(file)]
    random.Random(options.seed).shuffle(pool)
    survey = Survey(pool, options.mutants, subjects)
    threads = [threading.Thread(target=survey.work, args=(workshop,)) for workshop in workshops]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()

    tried = survey.tried()
    survivors = [mutant for mutant, outcome in tried if outcome == "survived"]
    known = verdicts()
    alike = [mutant for mutant in survivors if mutant.verdict(known)]
    lost = [mutant for mutant in survivors if not mutant.verdict(known)]
    listed = [f"{mutant.shown()}\n  {mutant.verdict(known)}" for mutant in alike]
    listed += [f"{mutant.shown()}\n  Needs a test." for mutant in lost]
    (PLACE / "survivors.txt").write_text("\n".join(listed) + "\n", encoding="utf-8")
    print("\n" + "\n".join(listed) + "\n")
    noticed = len(tried) - len(survivors)
    different = max(1, len(tried) - len(alike))
    print(f"{noticed} of {len(tried)} mutants noticed ({100 * noticed / max(1, len(tried)):.1f} %), {len(alike)} make no "
          f"difference; of the others {100 * noticed / different:.1f} % noticed")


if __name__ == "__main__":
    main()
