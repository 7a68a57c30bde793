#!/usr/bin/env python3
"""Runs every command of the guide: run-commands.py CLI CHAPTER...

The blocks marked sh of the chapters, in their order, each line in one shell session that ends at the first failure.
The folders that the guide names are there, with a few short sounds. Learning takes two steps, so that the session
takes seconds; all else is as a reader runs it.
"""
import math
import os
import random
import re
import subprocess
import sys
import tempfile
import wave
from pathlib import Path

RATE = 22050
FOLDERS = {"Kicks": 60, "Snares": 180, "Hats": 7000, "Drums": 120, "Found": 300}
# Short clips and small batches; a --clip-seconds of the guide's own is too long for a test.
TINY = "--steps 2 --batch-size 2 --clip-seconds 0.1"


def write_sound(path, hertz, noise, seconds=0.15):
    samples = bytearray()
    for i in range(int(RATE * seconds)):
        level = math.exp(-i / RATE * 20) * (math.sin(2 * math.pi * hertz * i / RATE) * (1 - noise)
                                            + noise * random.uniform(-1, 1))
        samples += int(level * 30000).to_bytes(2, "little", signed=True)
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, RATE, 0, "NONE", ""))
        file.writeframes(bytes(samples))


def make_folders(place):
    random.seed(1)
    for name, hertz in FOLDERS.items():
        (place / name).mkdir()
        for number in range(4):
            write_sound(place / name / f"{name} {number}.wav", hertz * (1 + number / 10), number / 5)


def make_program(place, cli):
    """quillmere-cli, but that train takes moments and that nothing is learned on the way to something else."""
    program = place / "bin" / "quillmere-cli"
    program.parent.mkdir()
    program.write_text(f"""#!/usr/bin/env bash
set -euo pipefail
if [[ $1 == train ]]; then
    arguments=()
    while (($#)); do
        if [[ $1 == --clip-seconds ]]; then shift; else arguments+=("$1"); fi
        shift
    done
    exec '{cli}' "${{arguments[@]}}" {TINY}
fi
exec '{cli}' "$@"
""")
    program.chmod(0o755)
    return program.parent


def commands_of(chapters):
    return [block for chapter in chapters
            for block in re.findall(r"^```sh\n(.*?)^```", Path(chapter).read_text(), flags=re.M | re.S)]


def main():
    cli, chapters = Path(sys.argv[1]).resolve(), sys.argv[2:]
    blocks = commands_of(chapters)
    with tempfile.TemporaryDirectory() as temporary:
        place = Path(temporary)
        programs = make_program(place, cli)
        work = place / "work"
        work.mkdir()
        make_folders(work)
        environment = {"PATH": f"{programs}:{os.environ['PATH']}", "HOME": str(place), "LC_ALL": "C.UTF-8",
                       "VK_ICD_FILENAMES": "none"}
        # What the sanitizers pass over, in a build that has them.
        environment |= {name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}
        # Without -v, a failure would not say which command it was.
        result = subprocess.run(["bash", "-euvo", "pipefail"], input="\n".join(blocks), cwd=work, env=environment,
                                text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        models = list((place / ".local/share/Quillmere/Models").iterdir())
    commands = sum(block.count("quillmere-cli ") for block in blocks)
    if result.returncode != 0 or commands < 30:
        sys.exit("\n".join(result.stdout.splitlines()[-25:]) + f"\nexit code {result.returncode}")
    if re.search(r"Training model… \d{3,} steps", result.stdout):
        sys.exit("something is learned in full: the guide generates before it trains")
    trained = len(re.findall(r"^quillmere-cli train", "\n".join(blocks), flags=re.M))
    print(f"{commands} commands, {trained} of them train, {len(models)} models")


if __name__ == "__main__":
    main()
