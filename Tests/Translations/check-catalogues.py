#!/usr/bin/env python3
"""Checks the catalogues of Translations: check-catalogues.py PROJECT

Every text of the sources must be in each, with as many plural forms as the language has, the same places and commands
as the source, and nothing else; quillmere.pot must be what the sources have, whatever takes a text in them be a keyword
of scripts/update-translations.sh, and no failure be glued from pieces.
"""
import re
import subprocess
import sys
import tempfile
import unicodedata
from pathlib import Path

import catalogue

# Languages, and how many plural forms each has here.
LANGUAGES = {"de": 2, "es": 2, "fr": 2, "ja": 1}
PLACE = re.compile(r"\{\d\}")
# What a reader types: options, commands, names of files and of their values. It is the same in every language.
TYPED = re.compile(r"--[a-z-]+|\.(?:wav|png|svg)\b|\b(?:SFZ|SVG|JSON|WAV|Hydrogen|Vulkan|SHA256SUMS|NaN)\b|\"\w+\""
                   r"|quillmere-cli \w+|\((?:phaseIterations|stretch|stretchJitter)\)"
                   r"|'(?:map|models|models remove|report|presets|parameters|devices|recipe|verify)'")

# Labels of lists, by the columns that they have.
LABELS = {9: ("type", "driver", "memory", "groups", "unusable", "corpus", "trained", "size", "remains", "damaged",
              "unreadable"),
          10: ("known from", "made by", "model", "seed", "character", "blend", "way", "fitted", "format", "again"),
          12: ("samples", "sample rate", "clip length", "training", "fingerprint")}

# What is thrown, with the arguments.
THROWN = re.compile(r"\bthrow\s+[\w:]*(?:Failure|Error)\s*\(((?:[^();]|\((?:[^();]|\([^()]*\))*\))*)\)")
GLUED = re.compile(r'"\s*\+|\+\s*"')

# What takes a pattern: a function or a constructor, by its parameter, or a class that inherits its constructors.
TAKES_PATTERN = re.compile(r"\b(\w+)\((?:[^(){};]|\([^()]*\))*?\b(?:Singular)?Pattern<sizeof")
INHERITS = re.compile(r"\bclass (\w+)[^;{]*\{\s*public:\s*using (\w+)::\2;")
# An object with a name, whose text xgettext does not see behind it.
NAMED = re.compile(r"\b(?:Message|Failure|\w+Error) \w+[({]\s*\"")


def columns(text: str) -> int:
    return sum(2 if unicodedata.east_asian_width(character) in "WF" else 1 for character in text)


def places(text: str) -> set[str]:
    return set(PLACE.findall(text))


def typed(text: str) -> list[str]:
    return sorted(word.strip("'") for word in TYPED.findall(text))


def problems_of(entry: catalogue.Entry, forms: int):
    shown = f'"{entry.singular}"'
    expected = forms if entry.plural is not None else 1
    if len(entry.translations) != expected:
        yield f"{shown} has {len(entry.translations)} forms, not {expected}"
    if "fuzzy" in entry.flags:
        yield f"{shown} is fuzzy"
    source = entry.plural or entry.singular
    for form, text in enumerate(entry.translations):
        if not text:
            yield f"{shown} is not translated"
            continue
        # The first of several forms, "one", may do without the number.
        one = expected > 1 and form == 0
        missing = places(source) - places(text) - ({"{0}"} if one else set())
        if missing or places(text) - places(source):
            yield f"{shown} has other places: {text}"
        for word in typed(source):
            if word not in text:
                yield f"{shown} lacks {word}: {text}"
        room = next((width for width, labels in LABELS.items() if source in labels), None)
        if room and columns(text) > room:
            yield f"{shown} has {room} columns: {text}"
        if source.endswith("…") != text.endswith("…") or source[:1].isspace() != text[:1].isspace():
            yield f"{shown} ends or begins otherwise: {text}"
        if re.search(r"[\x00-\x1f\u200b-\u200f\u2028-\u202e]", text):
            yield f"{shown} has characters that a terminal would not show: {text!r}"


def sources_of(project: Path):
    for room in ("QuillmereCore", "QuillmereCLI"):
        for file in sorted((project / "Sources" / room).rglob("*")):
            if file.suffix in (".h", ".cpp"):
                yield file.name, file.read_text(encoding="utf-8")


def glued_failures(project: Path):
    """The compiler refuses a pattern that is no literal, but takes a sentence that is ready, as the window has them."""
    for name, text in sources_of(project):
        for match in THROWN.finditer(text):
            if GLUED.search(match.group(1)):
                yield f"{name} throws a sentence that is glued from pieces: {match.group(1)}"


def unknown_to_the_script(project: Path):
    """Texts that would never reach a catalogue."""
    listed = subprocess.run([project / "scripts/update-translations.sh", "--keywords"], encoding="utf-8",
                            capture_output=True, check=True).stdout.split()
    keywords = {keyword.split(":")[0] for keyword in listed}
    takers = set()
    for name, text in sources_of(project):
        takers |= set(TAKES_PATTERN.findall(text)) | {kind for kind, base in INHERITS.findall(text)
                                                      if base == "Failure" or base.endswith("Error")}
        for match in NAMED.finditer(text):
            yield f"{name} has a text behind a name, where xgettext does not see it: {match.group()}"
    for taker in sorted(takers - keywords):
        yield f"{taker} takes texts and is no keyword of scripts/update-translations.sh"
    for keyword in sorted(keywords - takers - {"translatable"}):
        yield f"{keyword} is a keyword of scripts/update-translations.sh and takes no text"


def statistics(file: Path) -> str:
    return subprocess.run(["msgfmt", "--check", "--statistics", "--output-file=/dev/null", file], text=True,
                          capture_output=True, env={"PATH": "/usr/bin:/bin", "LC_ALL": "C"}, check=False).stderr.strip()


def main():
    project = Path(sys.argv[1])
    folder = project / "Translations"
    problems = [*glued_failures(project), *unknown_to_the_script(project)]
    with tempfile.TemporaryDirectory() as place:
        fresh = Path(place) / "quillmere.pot"
        subprocess.run([project / "scripts/update-translations.sh", "--extract", fresh], check=True)
        if fresh.read_bytes() != (folder / "quillmere.pot").read_bytes():
            problems.append("quillmere.pot is not what the sources have; run scripts/update-translations.sh")
    sources = {(entry.singular, entry.plural) for entry in catalogue.read(folder / "quillmere.pot")}
    # One of English would hold only what another platform calls otherwise.
    if {file.stem for file in folder.glob("*.po")} - {"en"} != set(LANGUAGES):
        problems.append(f"the catalogues are not {', '.join(LANGUAGES)}")
    for language, forms in LANGUAGES.items():
        file = folder / f"{language}.po"
        header, *entries = catalogue.read(file)
        found = {(entry.singular, entry.plural) for entry in entries} | {("", None)}
        problems += [f"{language}: lacks {source[0]!r}" for source in sources - found]
        problems += [f"{language}: has {source[0]!r}, which no source has" for source in found - sources]
        said = header.translations[0]
        if f"nplurals={forms};" not in said or f"Language: {language}\n" not in said:
            problems.append(f"{language}: the header names another language or number of plural forms")
        problems += [f"{language}: {problem}" for entry in entries for problem in problems_of(entry, forms)]
        counted = statistics(file)
        if not re.fullmatch(r"\d+ translated messages?\.", counted):
            problems.append(f"{language}: {counted}")
    print("\n".join(problems) or f"{len(sources) - 1} texts in {len(LANGUAGES)} languages")
    sys.exit(bool(problems))


if __name__ == "__main__":
    main()
