#!/usr/bin/env python3
"""Types at a real shell and presses Tab: check-completions.py bash|zsh|fish FOLDER

FOLDER has the completions of all shells, as the build made them. bash and zsh run in a pseudo-terminal with
quillmere-cli as a function that prints its arguments; fish says itself what it would offer.
"""
import os
import pty
import re
import select
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SECONDS = 20
READY = "__ready__"

# Typed, with a Tab at the end, and what the program is then called with.
COMPLETED = [
    ("quillmere-cli par", ["parameters"]),
    ("quillmere-cli models rem", ["models", "remove"]),
    ("quillmere-cli train --qual", ["train", "--quality"]),
    ("quillmere-cli train --quality thor", ["train", "--quality", "thorough"]),
    ("quillmere-cli train --start fre", ["train", "--start", "fresh"]),
    ("quillmere-cli generate --preset Gho", ["generate", "--preset", "Ghostly"]),
    ("quillmere-cli generate --set phase", ["generate", "--set", "phase-iterations="]),
    ("quillmere-cli generate --set pitch=3 --preset Rob", ["generate", "--set", "pitch=3", "--preset", "Robotic"]),
    ("quillmere-cli scan My", ["scan", "My Kicks"]),
    ("quillmere-cli generate --output My", ["generate", "--output", "My Kicks"]),
    ("quillmere-cli recipe kic", ["recipe", "kick.wav"]),
    ("quillmere-cli generate --like kick.wav sna", ["generate", "--like", "kick.wav", "snare.wav"]),
    ("quillmere-cli models remove Dru", ["models", "remove", "Drum Hits-12ab"]),
    ("quillmere-cli models remove --models other Ot", ["models", "remove", "--models", "other", "Others-34cd"]),
]


class Shell:
    """An interactive shell behind a pseudo-terminal."""

    def __init__(self, command, setup, folder):
        process, self.terminal = pty.fork()
        if process == 0:
            os.chdir(folder)
            environment = {"PATH": os.environ["PATH"], "HOME": str(folder), "TERM": "dumb", "LC_ALL": "C.UTF-8"}
            os.execvpe(command[0], command, environment)
        self.process = process
        self.run(setup)

    def run(self, line):
        """What the shell prints until it has done line."""
        os.write(self.terminal, f"{line}\necho {READY[:4]}''{READY[4:]}\n".encode())
        return self.read_until(READY)

    def read_until(self, text):
        seen = ""
        end = time.monotonic() + SECONDS
        while text not in seen:
            if not select.select([self.terminal], [], [], max(0, end - time.monotonic()))[0]:
                raise SystemExit(f"no answer within {SECONDS} s; so far:\n{seen}")
            seen += os.read(self.terminal, 65536).decode(errors="replace")
        return seen

    def close(self):
        os.close(self.terminal)
        os.waitpid(self.process, 0)


def make_places(folder):
    (folder / "My Kicks").mkdir()
    for name in ("kick.wav", "snare.wav"):
        (folder / name).touch()
    (folder / ".local/share/Quillmere/Models/Drum Hits-12ab").mkdir(parents=True)
    (folder / "other/Others-34cd").mkdir(parents=True)


def arguments_after_tab(shell, typed):
    printed = shell.run(f"{typed}\t")
    # zsh takes the slash behind a folder away when the line is done.
    return [argument.rstrip("/") for argument in re.findall(r"<<(.*?)>>", printed.replace("\r", ""))]


def check_in_terminal(shell):
    failures = []
    for typed, expected in COMPLETED:
        got = arguments_after_tab(shell, typed)
        if got != expected:
            failures.append(f"{typed!r}: {got} instead of {expected}")
    shell.close()
    return failures


def check_bash(completions, folder):
    setup = (f"PS1=; unset HISTFILE; bind 'set enable-bracketed-paste off'; bind 'set bell-style none'; "
             f"source '{completions}/bash/quillmere-cli'; quillmere-cli() {{ printf '<<%s>>' \"$@\"; echo; }}")
    return check_in_terminal(Shell(["bash", "--norc", "--noprofile", "-i"], setup, folder))


def check_zsh(completions, folder):
    setup = (f"PS1=; unsetopt zle_bracketed_paste beep 2> /dev/null; fpath=('{completions}/zsh' $fpath); "
             f"autoload -Uz compinit; compinit -u -D; quillmere-cli() {{ printf '<<%s>>' \"$@\"; echo }}")
    return check_in_terminal(Shell(["zsh", "-f", "-i"], setup, folder))


def check_fish(completions, folder):
    failures = []
    environment = dict(os.environ, HOME=str(folder), XDG_DATA_HOME=str(folder / ".local/share"),
                       XDG_CONFIG_HOME=str(folder / "config"), TERM="dumb", LC_ALL="C.UTF-8")
    for typed, expected in COMPLETED:
        script = f"source '{completions}/fish/quillmere-cli.fish'; complete -C \"{typed}\""
        result = subprocess.run(["fish", "--no-config", "-c", script], cwd=folder, env=environment, text=True,
                                capture_output=True, timeout=SECONDS, check=False)
        offered = [line.split("\t")[0].rstrip("/") for line in result.stdout.splitlines()]
        if offered != [expected[-1]] or result.stderr:
            failures.append(f"{typed!r}: {offered} instead of {expected[-1:]} {result.stderr}")
    return failures


def main():
    shell, completions = sys.argv[1], Path(sys.argv[2]).resolve()
    with tempfile.TemporaryDirectory() as temporary:
        folder = Path(temporary)
        make_places(folder)
        failures = {"bash": check_bash, "zsh": check_zsh, "fish": check_fish}[shell](completions, folder)
    print("\n".join(failures) or f"{len(COMPLETED)} completions")
    sys.exit(bool(failures))


if __name__ == "__main__":
    main()
