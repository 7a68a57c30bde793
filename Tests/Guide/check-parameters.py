#!/usr/bin/env python3
"""Checks that the guide has each parameter once, in its order, with its title, help, range and picture.

check-parameters.py CLI CHAPTER: what quillmere-cli says of the parameters is what the chapter has to say.
"""
import json
import re
import subprocess
import sys
from pathlib import Path


def main():
    cli, chapter = sys.argv[1], Path(sys.argv[2])
    answer = subprocess.run([cli, "parameters", "--json"], check=True, capture_output=True, text=True).stdout
    parameters = json.loads(answer.splitlines()[-1])["parameters"]
    sections = re.split(r"^### ", chapter.read_text(), flags=re.M)[1:]
    problems = []
    if [section.splitlines()[0] for section in sections] != [f"{p['title']} (`{p['id']}`)" for p in parameters]:
        problems.append("the headings are not the parameters in their order")
    for parameter, section in zip(parameters, sections):
        pictures = re.findall(r"!\[[^\]]+\]\(([^)]+)\)", section)
        if pictures != [f"pictures/{parameter['id']}.png"]:
            problems.append(f"{parameter['id']}: pictures {pictures}")
        if not (chapter.parent / f"pictures/{parameter['id']}.png").is_file():
            problems.append(f"{parameter['id']}: the picture is missing")
        if parameter["help"] not in section:
            problems.append(f"{parameter['id']}: the help is not that of the program")
    print("\n".join(problems) or f"{len(parameters)} parameters")
    sys.exit(bool(problems) or not parameters)


if __name__ == "__main__":
    main()
