"""Reads a catalogue of GNU gettext, as far as ours go: entries between blank lines, texts as quoted strings."""
import ast
import re
from dataclasses import dataclass, field
from pathlib import Path

STRING = re.compile(r'^"(?:[^"\\]|\\.)*"$')


@dataclass
class Entry:
    singular: str = ""
    plural: str | None = None
    translations: list[str] = field(default_factory=list)
    flags: str = ""


def unquoted(text: str) -> str:
    # As C has them; of these, ours use \", \\ and \n, which Python reads alike.
    return ast.literal_eval(text)


def read(file: Path) -> list[Entry]:
    """The first entry is the header, whose source is empty."""
    entries = []
    for block in re.split(r"\n\s*\n", file.read_text(encoding="utf-8")):
        entry = Entry()
        kind = None
        texts: dict[str, str] = {}
        for line in block.splitlines():
            if line.startswith("#,"):
                entry.flags += line[2:]
            match = re.match(r"(msgid|msgid_plural|msgstr(?:\[\d\])?)\s+(.*)", line)
            if match:
                kind, line = match.groups()
                texts[kind] = ""
            if kind and STRING.match(line):
                texts[kind] += unquoted(line)
        if "msgid" not in texts:
            continue
        entry.singular = texts["msgid"]
        entry.plural = texts.get("msgid_plural")
        entry.translations = [text for name, text in texts.items() if name.startswith("msgstr")]
        entries.append(entry)
    return entries
