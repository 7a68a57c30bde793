#!/usr/bin/env python3
"""Checks what software centres are told of the programs: check-metadata.py METAINFO PROJECT VERSION

The languages must be those of the catalogues, with how much of each is translated; the release must be this one, on a
day of the calendar; the home page must be named, and the programs and the window's entry must be there to be found.
Catalogues are read as the tests of Translations do, whose folder is to be in PYTHONPATH.
"""
import datetime
import re
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

import catalogue

SOURCE_LANGUAGE = "en"


def texts_of(window: ElementTree.Element):
    for message in window.iter("message"):
        translation = message.find("translation")
        if translation.get("type") not in ("vanished", "obsolete"):
            yield bool("".join(translation.itertext()).strip()) and translation.get("type") != "unfinished"


def entries_of(entries: list[catalogue.Entry]):
    for entry in entries[1:]:  # the first is the catalogue's header
        yield all(entry.translations) and "fuzzy" not in entry.flags


def catalogues_of(project: Path):
    """Percentages by language, rounded down as translators' tools do."""
    folder = project / "Translations"
    by_language = {}
    for file in folder.glob("*.po"):
        by_language.setdefault(file.stem, []).extend(entries_of(catalogue.read(file)))
    for file in folder.glob("window_*.ts"):
        by_language.setdefault(file.stem.removeprefix("window_"), []).extend(texts_of(ElementTree.parse(file).getroot()))
    # What English has are its plurals alone; the texts are in the sources.
    return {language: 100 if language == SOURCE_LANGUAGE else 100 * sum(texts) // len(texts)
            for language, texts in by_language.items()}


def language_problems(component: ElementTree.Element, project: Path):
    told = {lang.text: int(lang.get("percentage", 100)) for lang in component.iterfind("languages/lang")}
    catalogues = catalogues_of(project)
    for language in sorted(set(told) | set(catalogues)):
        if told.get(language) != catalogues.get(language):
            yield f"{language}: {told.get(language)} percent are told, the catalogues have {catalogues.get(language)}"
    if len(told) < 5:
        yield f"only {len(told)} languages"


def release_problems(component: ElementTree.Element, version: str):
    releases = component.findall("releases/release")
    if [release.get("version") for release in releases] != [version]:
        yield f"the releases are not {version} alone"
    for release in releases:
        datetime.date.fromisoformat(release.get("date"))


def address_problems(component: ElementTree.Element, project: Path):
    if not re.fullmatch(r"https://\S+", component.findtext("url[@type='homepage']", "")):
        yield "there is no home page"
    entry = component.findtext("launchable[@type='desktop-id']", "")
    if not entry or not (project / "Packaging" / entry).is_file():
        yield f"there is no entry for the desktop '{entry}'"
    programs = {binary.text for binary in component.iterfind("provides/binary")}
    if programs != {"quillmere", "quillmere-cli"}:
        yield f"the programs are {programs}"


def main():
    metainfo, project, version = sys.argv[1:]
    component = ElementTree.parse(metainfo).getroot()
    problems = [*language_problems(component, Path(project)), *release_problems(component, version),
                *address_problems(component, Path(project))]
    print("\n".join(problems) or "The metadata are true.")
    sys.exit(bool(problems))


if __name__ == "__main__":
    main()
