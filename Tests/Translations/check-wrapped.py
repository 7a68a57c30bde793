#!/usr/bin/env python3
"""Checks that no text of the window is shown as it stands in the sources: check-wrapped.py PROJECT

Every text that people read goes through qsTr, tr, Words::tr, QT_TR_NOOP or, where the core's catalogues have it, Message;
and none of these is glued to something else, because other languages have another order.
"""
import re
import sys
from pathlib import Path

STRING = r'"(?:[^"\\\n]|\\.)*"'
STRINGS = rf"{STRING}(?:\s*{STRING})*"
COMMENT = re.compile(rf"({STRING})|//[^\n]*|/\*.*?\*/", re.S)

# What takes a text for the catalogues.
WRAPPED_QML = re.compile(rf"\bqsTr\(\s*{STRINGS}(?:\s*,\s*{STRING})?")
WRAPPED_CPP = re.compile(rf"\b(?:tr|QT_TR_NOOP|Message)\(\s*{STRINGS}(?:\s*,\s*{STRING})?")
GLUED = re.compile(r'\b(?:qsTr|tr)\((?:[^()]|\([^()]*\))*\)\s*\+(?!\+)|[^+]\+\s*(?:qsTr|tr|Words::tr)\(')

# Properties of QML that people read, whatever stands in them.
SHOWN = re.compile(r"^\s*(?:readonly property string )?(?:text|tip|title|label|labels|hint|help|absent|explanation|detail"
                   r"|placeholderText|acceptLabel|valueText|Accessible\.(?:name|description))\s*:(.*)$", re.M)
# Elsewhere what has words: two and more, or a sentence's capital and end.
WORDS = re.compile(r"[A-Za-z]{2,}\s+[A-Za-z(“]|^[A-Z][a-z]+(?: |$|…|\.)|[a-z]{2}[.…?]$")

# The same in every language: names, units, keys as Qt reads them, values that are compared.
SAME = re.compile(r"^(?:Quillmere| – Quillmere| dB| %| MB|%1 (?:dB|kHz|%)|Space|Menu|Shift\+F10|(?:Ctrl\+\S+))$")
# Lines of C++ whose texts are for the desktop, for a terminal, for programmers, or no texts.
NOT_SHOWN = re.compile(r"#include|QML_UNCREATABLE|\bfatal\(|\brequire\(|\bcli\.|CLI::App|fprintf|SDL_SetHint|hasFamily"
                       r"|const char\* family|name\.contains|Q_DECLARE_TR_FUNCTIONS|EditHistory history_|\" Kit\""
                       r"|setStyle|candidatePrefix|mapEnding|QStringList generic|QStringLiteral\(\"(?:Serif|Sans Serif|yyyy-MM-dd HH:mm|Read|ShowItems"
                       r"|ShowFolders|SettingChanged)\"\)|formatter->label")


def without_comments(text: str) -> str:
    return COMMENT.sub(lambda match: match.group(1) or re.sub(r"[^\n]", " ", match.group(0)), text)


def blanked(pattern: re.Pattern, text: str) -> str:
    return pattern.sub(lambda match: re.sub(r"[^\n]", " ", match.group(0)), text)


def contents(text: str):
    for match in re.finditer(STRING, text):
        yield match.start(), match.group(0)[1:-1]


def line_of(text: str, position: int) -> int:
    return text.count("\n", 0, position) + 1


def bare_in_qml(text: str):
    text = blanked(WRAPPED_QML, text)
    shown = [match.span(1) for match in SHOWN.finditer(text)]
    for start, content in contents(text):
        line = text[text.rfind("\n", 0, start) + 1:start]
        if re.match(r"\s*(?:import|pragma)\b", line) or re.search(r"(?:objectName|iconName|color)\s*:", line):
            continue
        # A value that something is compared with is not shown.
        is_compared = re.search(r"[=!]==?\s*$", text[:start])
        is_shown = any(begin <= start < end for begin, end in shown) and re.search(r"[A-Za-z]{2}", content)
        if (is_shown or WORDS.search(content)) and not is_compared and not SAME.match(content):
            yield start, content


def bare_in_cpp(text: str):
    text = blanked(WRAPPED_CPP, text)
    for start, content in contents(text):
        begin = text.rfind("\n", 0, start) + 1
        # A call may break before its text.
        line = text[max(0, text.rfind("\n", 0, begin - 1)):text.find("\n", start)]
        if WORDS.search(content) and not SAME.match(content) and not NOT_SHOWN.search(line):
            yield start, content


def main():
    sources = Path(sys.argv[1]) / "Sources/QuillmereApp"
    problems = []
    files = sorted(file for file in sources.rglob("*") if file.suffix in (".qml", ".cpp", ".h"))
    for file in files:
        text = without_comments(file.read_text())
        bare = bare_in_qml(text) if file.suffix == ".qml" else bare_in_cpp(text)
        name = file.relative_to(sources)
        problems += [f"{name}:{line_of(text, start)}: not for the catalogues: {content}" for start, content in bare]
        problems += [f"{name}:{line_of(text, match.start())}: glued: {match.group(0)}" for match in GLUED.finditer(text)]
    print("\n".join(problems) or f"{len(files)} files")
    sys.exit(bool(problems))


if __name__ == "__main__":
    main()
