#!/usr/bin/env python3
"""Draws what each parameter does to one sound: a picture per parameter, with a low, the default and a high value.

Called by draw-guide.sh; ranges and defaults come from the command line, and so does every sound.
"""
import argparse
import json
import math
import subprocess
import tempfile
from pathlib import Path

from PIL import Image

from spectrograms import draw_mel, plt

# Values between are shown where the end of the range is an accident, not an effect.
SHOWN = {
    "pitch": [-12, 0, 12],
    "stretch": [0.5, 1, 2],
    "tilt": [-6, 0, 6],
    "crush-bits": [4, 8, 24],
    "decimate": [1, 4, 16],
    "phase-iterations": [0, 48, 300],
    "decay": [0, 40, 200],
    "normalize": [-24, -12, -1],
}


def shown_values(parameter: dict) -> list[float]:
    """Low, default and high; where the default is an end of the range, that end, the middle and the other end."""
    low, high, default = parameter["lower"], parameter["upper"], parameter["default"]
    if parameter["id"] in SHOWN:
        return SHOWN[parameter["id"]]
    if low < default < high:
        return [low, default, high]
    middle = (low + high) / 2
    return [low, round(middle / parameter["step"]) * parameter["step"], high]


def value_text(parameter: dict, value: float) -> str:
    decimals = max(0, math.ceil(-math.log10(parameter["step"]))) if parameter["step"] < 1 else 0
    text = f"{value:.{decimals}f} {parameter['unit']}".strip()
    return text + (" (default)" if value == parameter["default"] else "")


def save(figure, path: Path) -> None:
    """With few colours, which the eye cannot tell from all of them: a third of the bytes."""
    figure.savefig(path, dpi=100)
    with Image.open(path) as picture:
        picture.convert("RGB").quantize(96).save(path, optimize=True)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--cli", required=True, help="the program quillmere-cli")
    parser.add_argument("--corpus", required=True, help="a folder with a stored model")
    parser.add_argument("--models", required=True, help="the folder of stored models")
    parser.add_argument("--seed", default="1", help="of the sound")
    parser.add_argument("--seconds", type=float, default=0.8, help="length of each spectrogram")
    parser.add_argument("--output", required=True, type=Path, help="the folder for the pictures")
    options = parser.parse_args()

    def quillmere(*arguments: str) -> dict:
        lines = subprocess.run([options.cli, *arguments, "--json"], check=True, capture_output=True,
                               text=True).stdout.splitlines()
        return json.loads(lines[-1])

    options.output.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as temporary:
        sound = Path(temporary) / "sound.wav"
        for parameter in quillmere("parameters")["parameters"]:
            values = shown_values(parameter)
            figure, panels = plt.subplots(1, len(values), figsize=(7.2, 1.7), layout="constrained", sharey=True)
            for axes, value in zip(panels, values):
                quillmere("audition", options.corpus, "--models", options.models, "--output", str(sound), "--seed",
                          options.seed, "--set", f"{parameter['id']}={value:g}")
                draw_mel(axes, sound, value_text(parameter, value), options.seconds)
            panels[0].set_ylabel("mel bands", fontsize=7)
            save(figure, options.output / f"{parameter['id']}.png")
            plt.close(figure)
    print(f"Wrote the pictures of the parameters to {options.output}")


if __name__ == "__main__":
    main()
