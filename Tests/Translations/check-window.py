#!/usr/bin/env python3
"""Checks the catalogues of the window (Translations/window_*.ts): check-window.py PROJECT

Every text of the sources must be in each, translated, with as many plural forms as the language has and the places of
the source, and nothing else. That of English has only some of them.
"""
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass, field
from pathlib import Path

# Languages, and how many plural forms each has.
LANGUAGES = {"de": 2, "es": 2, "fr": 2, "ja": 1}
ENGLISH_FORMS = 2
PLACE = re.compile(r"%(?:\d|n)")
# What a reader types: keys that are letters, commands, formats.
TYPED = re.compile(r"\((?:[A-Z]|[+−])\)|quillmere-cli [a-z ]+|\b(?:WAV|AIFF|FLAC|MP3|M4A)\b")
# French punctuation has a no-break space before it, guillemets have one within.
FRENCH = re.compile(r"[ \w][:;?](?:\s|$)|« | »|\d? %(?![\dn])|«(?!\xa0)|(?<!\xa0)»")


@dataclass
class Text:
    is_plural: bool
    forms: list[str] = field(default_factory=list)
    kind: str = ""  # "unfinished", "obsolete", "vanished" or nothing


def read(file: Path) -> dict[tuple[str, str, str], Text]:
    """By context, source and what tells two alike apart."""
    texts = {}
    for context in ElementTree.parse(file).getroot().findall("context"):
        for message in context.findall("message"):
            translation = message.find("translation")
            text = Text(message.get("numerus") == "yes", kind=translation.get("type", ""))
            text.forms = ([form.text or "" for form in translation.findall("numerusform")] if text.is_plural
                          else [translation.text or ""])
            key = (context.findtext("name"), message.findtext("source"), message.findtext("comment") or "")
            texts[key] = text
    return texts


def form_problems(language: str, source: str, text: str):
    if not text.strip() and source.strip():
        yield "is not translated"
        return
    if sorted(PLACE.findall(source)) != sorted(PLACE.findall(text)):
        yield f"has other places: {text}"
    for word in TYPED.findall(source):
        if word not in text:
            yield f"lacks {word}: {text}"
    if source.endswith("…") != text.endswith("…"):
        yield f"ends otherwise: {text}"
    if text != text.strip() and source == source.strip():
        yield f"has a blank too many: {text!r}"
    if language == "fr" and FRENCH.search(text):
        yield f"lacks a no-break space: {text}"


def text_problems(language: str, forms: int, source: str, text: Text):
    if text.kind:
        yield f"is {text.kind}"
    if len(text.forms) != (forms if text.is_plural else 1):
        yield f"has {len(text.forms)} forms"
    for form in text.forms:
        yield from form_problems(language, source, form)


def catalogue_problems(language: str, forms: int, found, sources):
    for key in sorted(set(found) - set(sources)):
        yield f"{language}: {key[0]} has {key[1]!r}, which no source has"
    for key, text in found.items():
        if key in sources and text.is_plural != sources[key].is_plural:
            yield f"{language}: {key[0]} has {key[1]!r} with a count or without one, the sources the other way"
        for problem in text_problems(language, forms, key[1], text):
            yield f'{language}: "{key[1]}" of {key[0]} {problem}'


def main():
    project = Path(sys.argv[1])
    folder = project / "Translations"
    with tempfile.TemporaryDirectory() as place:
        fresh = Path(place) / "window.ts"
        subprocess.run([project / "scripts/update-translations.sh", "--extract-window", fresh], check=True)
        sources = read(fresh)
    problems = []
    if {file.stem for file in folder.glob("*.ts")} != {f"window_{language}" for language in (*LANGUAGES, "en")}:
        problems.append(f"the catalogues are not {', '.join(LANGUAGES)} and en")
    for language, forms in LANGUAGES.items():
        found = read(folder / f"window_{language}.ts")
        problems += [f"{language}: {key[0]} lacks {key[1]!r}" for key in sorted(set(sources) - set(found))]
        problems += catalogue_problems(language, forms, found, sources)
    problems += catalogue_problems("en", ENGLISH_FORMS, read(folder / "window_en.ts"), sources)
    print("\n".join(problems) or f"{len(sources)} texts in {len(LANGUAGES)} languages")
    sys.exit(bool(problems))


if __name__ == "__main__":
    main()
