#!/usr/bin/env python3
"""Draws the plots of docs/performance.md from the figures of bench-growth.sh and prints the share of the
processors' peak that a training step reaches.

usage: draw-growth.py GROWTH.json OUTPUT_FOLDER
"""
import json
import re
import statistics
import sys
from pathlib import Path

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt

COLOURS = {"1": "#3b6ea8", "2": "#d1713c"}
MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}


def read_figures(path: Path) -> list[dict]:
    """One record a benchmark: subject, arguments by name, milliseconds, operations a second."""
    figures = []
    for b in json.loads(path.read_text())["benchmarks"]:
        if b.get("run_type") == "aggregate" or "real_time" not in b:
            continue
        subject, *parts = b["name"].split("/")
        arguments = dict(part.split(":") for part in parts if re.fullmatch(r"[a-z]+:\d+", part))
        figures.append({"subject": subject, **{k: int(v) for k, v in arguments.items()},
                        "ms": b["real_time"] * MILLISECONDS[b["time_unit"]], "flops": b.get("FLOPS")})
    return figures


def select(figures: list[dict], subject: str, **wanted: int) -> list[dict]:
    return [f for f in figures if f["subject"] == subject and all(f.get(k) == v for k, v in wanted.items())]


def curve(axes, points: list[dict], quantity: str, label: str | None = None, colour: str = COLOURS["1"],
          scale: float = 1.0) -> None:
    points = sorted(points, key=lambda f: f[quantity])
    axes.plot([f[quantity] * scale for f in points], [f["ms"] for f in points], "o-", color=colour, label=label,
              markersize=3.5, linewidth=1.2)


def by_threads(axes, figures: list[dict], subject: str, quantity: str, **wanted: int) -> None:
    for threads in (1, 2):
        curve(axes, select(figures, subject, threads=threads, **wanted), quantity,
              f"{threads} thread{'s' if threads > 1 else ''}", COLOURS[str(threads)])
    axes.legend(fontsize=7, frameon=False)


def finish(axes, title: str, quantity: str, logarithmic: bool = False) -> None:
    axes.set_title(title, fontsize=9)
    axes.set_xlabel(quantity, fontsize=7)
    axes.set_ylabel("ms", fontsize=7)
    axes.tick_params(labelsize=7, length=2)
    axes.grid(alpha=0.25, linewidth=0.5)
    axes.spines[["top", "right"]].set_visible(False)
    if logarithmic:
        axes.set_xscale("log")
        axes.set_yscale("log")
    else:
        axes.set_xlim(left=0)
        axes.set_ylim(bottom=0)


def save(figure, path: Path) -> None:
    path.parent.mkdir(parents=True, exist_ok=True)
    figure.savefig(path, dpi=110)
    plt.close(figure)
    print(f"Wrote {path}")


def draw_learning(figures: list[dict], folder: Path) -> None:
    figure, grid = plt.subplots(2, 2, figsize=(8.4, 6.2), layout="constrained")
    by_threads(grid[0, 0], figures, "scan", "clips")
    finish(grid[0, 0], "Scan of a corpus", "clips", logarithmic=True)
    by_threads(grid[0, 1], figures, "prepare", "clips")
    finish(grid[0, 1], "Training's work for each clip, one step", "clips", logarithmic=True)
    by_threads(grid[1, 0], figures, "step", "frames", mels=96)
    finish(grid[1, 0], "Training step, 96 bands, batch 16", "frames")
    curve(grid[1, 1], select(figures, "features"), "milliseconds", scale=1e-3)
    finish(grid[1, 1], "Features of one clip, one core", "seconds of audio")
    save(figure, folder / "growth-learning.png")


def draw_generating(figures: list[dict], folder: Path) -> None:
    figure, grid = plt.subplots(1, 3, figsize=(8.4, 2.9), layout="constrained")
    curve(grid[0], select(figures, "phases", passes=48), "frames")
    finish(grid[0], "Phases, 48 passes, one core", "frames")
    curve(grid[1], select(figures, "phases", frames=192), "passes")
    finish(grid[1], "Phases, 192 frames, one core", "passes")
    by_threads(grid[2], figures, "generate", "variations")
    finish(grid[2], "Latents to files, 192 frames", "variations", logarithmic=True)
    save(figure, folder / "growth-generating.png")


def draw_peak(figures: list[dict], folder: Path) -> None:
    peaks = {n: statistics.median(f["flops"] for f in select(figures, "peak", threads=n)) for n in (1, 2)}
    figure, axes = plt.subplots(figsize=(5.2, 3.0), layout="constrained")
    for threads in (1, 2):
        points = sorted(select(figures, "step", mels=96, threads=threads), key=lambda f: f["frames"])
        axes.plot([f["frames"] for f in points], [100 * f["flops"] / peaks[threads] for f in points], "o-",
                  color=COLOURS[str(threads)], label=f"{threads} thread{'s' if threads > 1 else ''}", markersize=3.5,
                  linewidth=1.2)
        for f in select(figures, "step", threads=threads):
            print(f"step {f['mels']}x{f['frames']}, {threads} threads: {f['flops'] / 1e9:.0f} of "
                  f"{peaks[threads] / 1e9:.0f} GFLOP/s, {100 * f['flops'] / peaks[threads]:.0f} %")
    axes.legend(fontsize=7, frameon=False)
    finish(axes, "Share of the measured FMA peak, training step, 96 bands", "frames")
    axes.set_ylabel("%", fontsize=7)
    axes.set_ylim(0, 100)
    save(figure, folder / "growth-peak.png")


def main() -> None:
    figures = read_figures(Path(sys.argv[1]))
    folder = Path(sys.argv[2])
    draw_learning(figures, folder)
    draw_generating(figures, folder)
    draw_peak(figures, folder)


if __name__ == "__main__":
    main()
