#!/usr/bin/env python3
"""Checks that docs/guide/messages.md has every message that the sources can show; with --strict, and no other.

A message is what the sources hand to a failure, a usage error or a note, and any other sentence in them; what is
filled in stands as … between its literal parts. In the guide a message is a code span in the first column of a table.
With --list: prints the messages and where they are from.
"""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
GUIDE = ROOT / "docs/guide/messages.md"
# What takes a message, wherever in its arguments.
SINK = re.compile(r"\b(?:Failure|[A-Z]\w*Error(?:::unreadable)?|throwUsageError|fail|refuse|note|setError)\s*\(")
STRING = r'"(?:[^"\\\n]|\\.)*"'
LITERAL = re.compile(STRING)
SENTENCE = re.compile(r"[A-Z\s].*\w.*[.]\s*")
# A reason that stands in another message: "it is too long".
REASON = re.compile(r"(?:; )?(?:it|its) \w")
# Sentences that tell of no trouble.
TELLS = re.compile(
    r"^ ?(Learns the character|Learn |Reads |to get the same|from the |with the model|Use --retrain|Minutes-ish|Balanced"
    r"|Longest|Automatic picks|No model for this|Choose a folder of WAV|Render a single|Render twelve|All discarded|Nobody knows any more|Select a candidate|Return renames|Existing folder|Folder will be"
    r"|The variations of|Enter a number|Learns and generates|Looking for|variations written|makes of the folder"
    r"|How much of|Detail then works|End the learning and keep|You can listen in|The model is stored|No folder has been learned"
    r"|Space plays|Return opens a run|The nearest sounds of|How loud it is|How the sound was|How far it is|The samples that|The next runs take|The loss says|Near one another|. of the differences|Click a point"
    r"|Samples of the same names|The same samples were|Another model has made it|”. With the present one|A head start begins|Before learning|off on average|s that are learned of each|samples; a few dozen|Options of 'train'"
    r"|The journal is o|While this file is|That bought|(% of the error with|more steps\b.*|steps to|dB before,|dB after\.)$"
    r"|Went on from|Stored in|Drawn in|Made of|No models are stored|A model of this folder is|The sounds (will|are)"
    r"|; use --seed|s per sample\)|Verdict: |steps, loss|, reconstruction error|Held back:|off; those learned"
    r"|The page is|The model has |Samples that it has not|instead of$|\): it knows these|There are$"
    r"|The places of the pattern)")
# The manual's own words, what the parameters do, and docstrings: no trouble either.
NO_MESSAGES = "Sources/QuillmereCLI/Reference/"
NO_SENTENCES = ("Sources/QuillmereCore/Generate/Aesthetics.cpp", "Sources/QuillmerePython/")


def without_comments(text: str) -> str:
    def blank(match: re.Match) -> str:
        return match.group(0) if match.group(0).startswith('"') else " "

    return re.sub(STRING + r"|//[^\n]*|/\*.*?\*/", blank, text, flags=re.S)


def in_plural(text: str) -> str:
    """counted(n, "{0} file has", "{0} files have") as counted("{0} files have"): one form stands for both."""
    inside = r"(?:[^()]|\([^()]*\))*?"
    texts = rf"{STRING}(?:\s*{STRING})*"
    return re.sub(rf"\b((?:trC|c)ounted)\({inside},\s*{texts},\s*({texts})", r"\1(\2", text)


def code_of(path: Path) -> str:
    return in_plural(without_comments(path.read_text()))


def arguments_from(text: str, start: int) -> str:
    """The text between the parenthesis at start and its partner."""
    depth = 0
    for match in re.compile(STRING + r"|[()]").finditer(text, start):
        depth += {"(": 1, ")": -1}.get(match.group(0), 0)
        if depth == 0:
            return text[start + 1:match.start()]
    return text[start + 1:]


def plain(literal: str) -> str:
    text = literal[1:-1].replace('\\"', '"').replace("\\n", " ").replace("\\\\", "\\")
    return re.sub(r"%\d|\{\d\}", "…", text)


def joined(code: str) -> str:
    """The literals of code: one text where they stand side by side, else with … between."""
    text, last = "", None
    for match in LITERAL.finditer(code):
        if last is not None and code[last:match.start()].strip(" \n+"):
            text += "…"
        text += plain(match.group(0))
        last = match.end()
    return text


def pieces(message: str) -> list[str]:
    """The literal parts that say something: two words at least."""
    return [piece.strip() for piece in message.split("…") if len(re.findall(r"[A-Za-z]{2,}", piece)) >= 2]


def adjacent_literals(text: str):
    for match in re.finditer(rf"{STRING}(?:\s*\+?\s*{STRING})*", text):
        yield joined(match.group(0))


def messages() -> dict[str, str]:
    """Each literal part of a message, with the place it is from."""
    found: dict[str, str] = {}
    for path in sorted((ROOT / "Sources").rglob("*")):
        name = str(path.relative_to(ROOT))
        if path.suffix not in (".cpp", ".h", ".qml") or name.startswith(NO_MESSAGES):
            continue
        text = code_of(path)
        candidates = []
        if path.suffix != ".qml":
            candidates += [joined(arguments_from(text, match.end() - 1)) for match in SINK.finditer(text)]
        if not name.startswith(NO_SENTENCES):
            candidates += [message for message in adjacent_literals(text)
                           if (SENTENCE.fullmatch(message) or REASON.match(message)) and len(message.split()) > 2]
        for message in candidates:
            for piece in pieces(message):
                if not TELLS.match(piece):
                    found.setdefault(piece, name)
    return found


def entries() -> list[str]:
    rows = [line for line in GUIDE.read_text().splitlines() if line.startswith("| `")]
    return [span for row in rows for span in re.findall(r"`([^`]+)`", row.split(" | ")[0])]


def main() -> None:
    shown = messages()
    if "--list" in sys.argv:
        print("\n".join(f"{place}\t{piece}" for piece, place in shown.items()))
        return
    explained = entries()
    everything = "\n".join(explained)
    sources = "\n".join(joined(code_of(path)) for path in (ROOT / "Sources").rglob("*")
                        if path.suffix in (".cpp", ".h", ".qml"))
    missing = [f"{place}: not in the guide: {piece}" for piece, place in shown.items() if piece not in everything]
    stale = [f"{GUIDE.name}: not in the sources: {piece}" for entry in explained for piece in pieces(entry)
             if piece not in sources]
    print("\n".join(missing + stale) or f"{len(shown)} messages in {len(explained)} entries")
    if missing:
        print("Explain them there; what tells of no trouble belongs to TELLS in scripts/check-messages.py.")
    sys.exit(bool(missing or (stale and "--strict" in sys.argv)))


if __name__ == "__main__":
    main()
