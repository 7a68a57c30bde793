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
import wave
from pathlib import Path

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import numpy as np

WORD = (1 << 64) - 1
GOLDEN_GAMMA = 0x9E3779B97F4A7C15
WINDOW = 1024
HOP = 128
RANGE_DB = 70
LOWEST_HZ = 50


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


def read_wav(path: Path) -> tuple[np.ndarray, int]:
    with wave.open(str(path)) as file:
        raw = np.frombuffer(file.readframes(file.getnframes()), dtype=np.uint8)
        width, channels, rate = file.getsampwidth(), file.getnchannels(), file.getframerate()
    # The bytes of each sample go to the upper end of a 32-bit integer.
    padded = np.zeros((raw.size // width, 4), dtype=np.uint8)
    padded[:, 4 - width :] = raw.reshape(-1, width)
    samples = padded.view("<i4").astype(np.float64)[:, 0] / 2**31
    return samples.reshape(-1, channels).mean(axis=1), rate


def level_db(samples: np.ndarray) -> np.ndarray:
    """Spectrogram in dB below its loudest point, [bins, frames]."""
    padded = np.pad(samples, (WINDOW // 2, WINDOW))
    frames = np.lib.stride_tricks.sliding_window_view(padded, WINDOW)[::HOP]
    magnitude = np.abs(np.fft.rfft(frames * np.hanning(WINDOW))).T
    return 20 * np.log10(np.maximum(magnitude / magnitude.max(), 1e-9))


def draw(axes, path: Path, title: str, seconds: float) -> None:
    samples, rate = read_wav(path)
    level = level_db(samples)[:, : int(seconds * rate / HOP) + 1]
    times = np.arange(level.shape[1]) * HOP / rate
    frequencies = np.maximum(np.arange(level.shape[0]) * rate / WINDOW, 1)
    axes.set_facecolor(plt.get_cmap("magma")(0.0))
    axes.pcolormesh(times, frequencies, level, vmin=-RANGE_DB, vmax=0, cmap="magma", shading="nearest", rasterized=True)
    axes.set_yscale("log")
    axes.set_ylim(LOWEST_HZ, rate / 2)
    axes.set_xlim(0, seconds)
    axes.set_yticks([100, 1000, 10000], ["100", "1k", "10k"])
    axes.minorticks_off()
    axes.tick_params(labelsize=7, length=2)
    axes.set_title(title, fontsize=8)


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
    figure, grid = plt.subplots(4, columns, figsize=(2.6 * columns, 7.2), layout="constrained", sharey=True)
    with tempfile.TemporaryDirectory() as temporary:
        folder = Path(temporary)
        for column, name in enumerate(options.clips):
            seed = seed_that_chooses(clip_names.index(name), len(clip_names))
            reconstruction = folder / f"reconstruction{column}.wav"
            quillmere("audition", str(options.corpus), "--output", str(reconstruction), "--seed", str(seed),
                      "--set", "sources=1", "--set", "drift=0")
            draw(grid[0, column], as_wav(options.corpus / name, folder), Path(name).stem, options.seconds)
            draw(grid[1, column], reconstruction, f"{Path(name).stem}, reconstructed", options.seconds)
        for row, preset in ((2, "Balanced"), (3, "Wild")):
            result = quillmere("generate", str(options.corpus), "--output", str(folder / preset), "--count",
                               str(columns), "--preset", preset, "--seed", "1")
            for column, file in enumerate(result["files"]):
                draw(grid[row, column], Path(file["path"]), f"{preset} {column + 1}", options.seconds)
    for axes in grid[:, 0]:
        axes.set_ylabel("Hz", fontsize=7)
    for axes in grid[3, :]:
        axes.set_xlabel("seconds", fontsize=7)
    options.output.parent.mkdir(parents=True, exist_ok=True)
    figure.savefig(options.output, dpi=110)
    print(f"Wrote {options.output}")


if __name__ == "__main__":
    main()
