#!/usr/bin/env python3
"""Draws a picture of what a model makes of its corpus: originals, their reconstructions, and new variations.

Called by draw-pictures.sh; every sound in the picture comes from the command line. A generation with one
source and no drift, mutation or push decodes the latent vector of exactly one sample of the corpus: that is
the sample's reconstruction. Which sample a seed chooses is the seed's first random number.
"""
import argparse
import json
import subprocess
import tempfile
from pathlib import Path

from spectrograms import draw, plt

WORD = (1 << 64) - 1
GOLDEN_GAMMA = 0x9E3779B97F4A7C15


def split_mix(z: int) -> int:
    z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & WORD
    z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & WORD
    return z ^ (z >> 31)


def first_random_number(seed: int) -> int:
    """The first output of SeededRNG(seed): rotl(s1 * 5, 7) * 9."""
    s1 = split_mix((seed + 3 * GOLDEN_GAMMA) & WORD)
    product = (s1 * 5) & WORD
    rotated = ((product << 7) | (product >> 57)) & WORD
    return (rotated * 9) & WORD


def seed_that_chooses(clip: int, clips: int) -> int:
    return next(seed for seed in range(1_000_000) if first_random_number(seed) % clips == clip)


def as_wav(sample: Path, folder: Path) -> Path:
    if sample.suffix.lower() == ".wav":
        return sample
    target = folder / (sample.stem + ".wav")
    subprocess.run(["flac", "--decode", "--silent", "--force", "-o", target, sample], check=True)
    return target


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--cli", required=True, help="the program quillmere-cli")
    parser.add_argument("--corpus", required=True, type=Path, help="a folder with a stored model")
    parser.add_argument("--models", required=True, help="the folder of stored models")
    parser.add_argument("--clips", required=True, nargs="+", help="names of the samples to show")
    parser.add_argument("--detail", type=float, nargs="+", default=[0], help="amounts, one group of columns for each")
    parser.add_argument("--seconds", type=float, default=0.8, help="length of each spectrogram")
    parser.add_argument("--output", required=True, type=Path, help="the picture to write")
    options = parser.parse_args()

    def quillmere(*arguments: str) -> dict:
        command = [options.cli, *arguments, "--models", options.models, "--json"]
        lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
        return json.loads(lines[-1])

    model = Path(quillmere("scan", str(options.corpus))["modelFolder"])
    clip_names = json.loads((model / "model.json").read_text())["metadata"]["clipNames"]

    columns = len(options.clips)
    width = 2.6 if len(options.detail) == 1 else 1.7
    figure = plt.figure(figsize=(width * columns * len(options.detail), 7.2), layout="constrained")
    groups = figure.subfigures(1, len(options.detail), wspace=0.02, squeeze=False)[0]
    for group, detail in zip(groups, options.detail):
        if len(options.detail) > 1:
            group.suptitle(f"with detail {detail:g}" if detail else "without detail", fontsize=10)
        draw_group(group.subplots(4, columns, sharey=True), quillmere, options, clip_names, detail)
    options.output.parent.mkdir(parents=True, exist_ok=True)
    figure.savefig(options.output, dpi=110)
    print(f"Wrote {options.output}")


def draw_group(grid, quillmere, options, clip_names, detail) -> None:
    """Four rows: samples, their reconstructions, and two presets."""
    columns = len(options.clips)
    with tempfile.TemporaryDirectory() as temporary:
        folder = Path(temporary)
        for column, name in enumerate(options.clips):
            seed = seed_that_chooses(clip_names.index(name), len(clip_names))
            reconstruction = folder / f"reconstruction{column}.wav"
            quillmere("audition", str(options.corpus), "--output", str(reconstruction), "--seed", str(seed),
                      "--set", "sources=1", "--set", "drift=0", "--detail", str(detail))
            draw(grid[0, column], as_wav(options.corpus / name, folder), Path(name).stem, options.seconds)
            draw(grid[1, column], reconstruction, f"{Path(name).stem},\nreconstructed", options.seconds)
        for row, preset in ((2, "Balanced"), (3, "Wild")):
            result = quillmere("generate", str(options.corpus), "--output", str(folder / preset), "--count",
                               str(columns), "--preset", preset, "--seed", "1", "--detail", str(detail))
            for column, file in enumerate(result["files"]):
                draw(grid[row, column], Path(file["path"]), f"{preset} {column + 1}", options.seconds)
    for axes in grid[:, 0]:
        axes.set_ylabel("Hz", fontsize=7)
    for axes in grid[3, :]:
        axes.set_xlabel("seconds", fontsize=7)


if __name__ == "__main__":
    main()
