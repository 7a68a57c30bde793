#!/usr/bin/env python3
"""Checks that what the documents link to is there: files, pictures, and headings of the guide."""
import re
import sys
from pathlib import Path


def anchors(text):
    """The names that headings have in the built guide and where the documents are read as they are."""
    headings = re.findall(r"^#+ (.+)$", text, flags=re.M)
    return {re.sub(r"[^\w\- ]", "", heading).strip().lower().replace(" ", "-") for heading in headings}


def main():
    project = Path(sys.argv[1])
    documents = [*project.glob("*.md"), *(project / "docs").rglob("*.md")]
    links, broken = 0, []
    for document in documents:
        text = re.sub(r"^```.*?^```", "", document.read_text(), flags=re.M | re.S)
        for link in re.findall(r"\]\(([^)\s]+)\)", text):
            if re.match(r"[a-z]+:", link):
                continue
            links += 1
            path, _, anchor = link.partition("#")
            target = document if not path else document.parent / path
            if not target.exists():
                broken.append(f"{document.relative_to(project)}: {link}")
            elif anchor and anchor not in anchors(target.read_text()):
                broken.append(f"{document.relative_to(project)}: {link} (no such heading)")
    print("\n".join(broken) or f"{links} links in {len(documents)} documents")
    sys.exit(bool(broken) or links < 20)


if __name__ == "__main__":
    main()
