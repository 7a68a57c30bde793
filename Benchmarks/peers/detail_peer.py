#!/usr/bin/env python3
"""Rendering with detail done with NumPy and Python's heap, for comparison. Prints the milliseconds of each run as JSON.

usage: detail_peer.py [--seconds S]

One variation of 320 frames (FFT 1024, hop 256, 96 bands, 44.1 kHz) with all detail, from its decoded image to samples:
what DetailBenchmark's detailed/percussive does.
"""
import argparse
import json
import sys
import time
from pathlib import Path

import numpy as np

sys.path.insert(0, str(Path(__file__).resolve().parent.parent.parent / "scripts"))
from detail_recipe import Bank, attack, centres, fine_structure, phases, spectrum, window  # noqa: E402

RATE, FFT, HOP, BANDS, FRAMES, REFINEMENTS, KNOWN = 44100, 1024, 256, 96, 320, 8, 4
DECIBELS = 50  # of 1 in an image


def drum(seconds):
    rng = np.random.default_rng(5)
    n = np.arange(HOP * FRAMES) / RATE
    return np.exp(-n / seconds) * (0.6 * np.sin(2 * np.pi * 90 * n) + 0.4 * rng.uniform(-1, 1, len(n)))


def inverse(spectra):
    frames = np.fft.irfft(spectra, axis=1) * window(FFT)
    count = HOP * (FRAMES - 1) + FFT
    total, weight = np.zeros(count), np.zeros(count)
    for t, frame in enumerate(frames):
        total[t * HOP:t * HOP + FFT] += frame
        weight[t * HOP:t * HOP + FFT] += window(FFT) ** 2
    return (total / np.maximum(weight, 0.2 * 0.375 * FFT / HOP))[FFT // 2:FFT // 2 + HOP * FRAMES]


class Scene:
    def __init__(self):
        self.bank = Bank(RATE, FFT, BANDS)
        self.donor = drum(0.08)
        self.scale = 2 / window(FFT).sum()
        magnitudes = np.abs(spectrum(self.donor, [t * HOP for t in range(FRAMES)], FFT)) * self.scale
        levels = np.maximum(self.bank.forward(magnitudes), 1e-12)
        self.image = np.maximum(20 * np.log10(levels / levels.max()), -DECIBELS).T / DECIBELS

    def variation(self):
        image = attack(self.image, [(self.image, 1)], HOP, 1)
        levels = 10 ** (image.T * DECIBELS / 20) / self.scale
        at = centres(FRAMES, HOP, len(self.donor), 9)
        trust, magnitudes = fine_structure(self.bank.inverse(levels), self.donor, at, self.bank, FFT, 1)
        magnitudes = self.bank.refine(magnitudes, levels, REFINEMENTS).astype(np.float32)
        # In turns.
        starts = np.random.default_rng(9).uniform(0, 1, magnitudes.shape)
        first = np.angle(spectrum(self.donor, at[:KNOWN], FFT)) / (2 * np.pi)
        known = np.where(trust[:KNOWN] > 0.5, first, np.nan)
        turns = phases(magnitudes, known, starts, FFT, HOP)
        return inverse(magnitudes * np.exp(2j * np.pi * turns))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seconds", type=float, default=5)
    arguments = parser.parse_args()
    scene = Scene()
    times, start = [], time.perf_counter()
    while not times or time.perf_counter() - start < arguments.seconds:
        before = time.perf_counter()
        if not np.isfinite(scene.variation()).all():
            sys.exit("detail_peer.py: a sample is no number")
        times.append(1000 * (time.perf_counter() - before))
    print(json.dumps(times))


if __name__ == "__main__":
    main()
