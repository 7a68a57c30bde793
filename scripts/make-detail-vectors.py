#!/usr/bin/env python3
"""Writes Tests/Golden/detail.json, the reference vectors of the rendering with detail.

Every stage is computed here by its definition, in double precision from single-precision inputs, without the
library: an independent second opinion. The file is committed; run this only to change the cases.

    scripts/make-detail-vectors.py [FILE]
"""

import json
import sys
from pathlib import Path

import numpy as np

from detail_recipe import (Bank, Generator, attack, attack_frames, centres, donor, fine_structure, phases, tail,
                           tail_curve)

FILE = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent.parent / "Tests/Golden/detail.json")


# ---- Inputs by formula (Tests/Golden/FORMAT.md)

def values(spec):
    """The single-precision array that an input stands for."""
    kind = spec["kind"]
    if kind == "values":
        return np.array(spec["values"], np.float32)
    if kind == "mix":
        parts = [values(part).astype(np.float64) for part in spec["parts"]]
        return sum(parts).astype(np.float32)
    if kind == "concat":
        return np.concatenate([values(part) for part in spec["parts"]])
    if kind == "pattern":
        rng = Generator(spec["seed"])
        out = []
        for r in range(spec["rows"]):
            for c in range(spec["cols"]):
                noise = spec["noise"] * rng.signed() if spec["noise"] != 0 else 0
                out.append(spec["base"] + spec["depth"] * np.exp(-c / spec["decayCols"])
                           * (0.5 + 0.5 * np.cos(2 * np.pi * r / spec["rowPeriod"])) + noise)
        return np.array(out, np.float32)
    n = np.arange(spec["count"], dtype=np.float64)
    if kind == "zeros":
        return n.astype(np.float32) * 0
    if kind == "constant":
        return np.full(len(n), spec["value"], np.float32)
    if kind == "ramp":
        return (spec["from"] + spec["step"] * n).astype(np.float32)
    if kind == "sine":
        return (spec["amplitude"] * np.sin(2 * np.pi * spec["hz"] * n / spec["rate"]
                                           + spec.get("phase", 0))).astype(np.float32)
    rng = Generator(spec["seed"])
    if kind == "uniform":
        return np.array([spec["low"] + (spec["high"] - spec["low"]) * rng.uniform() for _ in n], np.float32)
    if kind == "burst":
        return np.array([spec["amplitude"] * np.exp(-i / spec["decay"]) * rng.signed() for i in n], np.float32)
    raise ValueError(kind)


def array(result):
    """An expected array: short ones whole, long ones by selected values and sums."""
    flat = np.asarray(result, np.float64).ravel()
    if len(flat) <= 48:
        return {"count": len(flat), "values": [float(v) for v in flat]}
    at = sorted({int(round(i * (len(flat) - 1) / 35)) for i in range(36)} | {int(np.abs(flat).argmax())})
    scale = float(np.abs(flat).sum()) + 1e-6
    squares = float((flat * flat).sum())
    return {"count": len(flat), "sum": float(flat.sum()), "sumTol": float("%.3g" % (scale * 1e-4)),
            "sumSq": squares, "sumSqTol": float("%.3g" % (squares * 1e-3 + 1e-9)), "at": at,
            "values": [float(flat[i]) for i in at]}


# ---- The cases

CASES = []


def case(name, op, given, expect, absolute, relative):
    CASES.append({"name": name, "op": op, "input": given, "expect": expect,
                  "tolerance": {"abs": absolute, "rel": relative}})


def pattern(rows, cols, seed, base=-0.9, depth=1.6, decay=12, period=9.5, noise=0.15):
    return {"kind": "pattern", "rows": rows, "cols": cols, "base": base, "depth": depth, "decayCols": decay,
            "rowPeriod": period, "noise": noise, "seed": seed}


def attack_case(name, hop, frames, weights, amount):
    bands = 24
    count = 2 * attack_frames(hop)
    image = pattern(bands, frames, 401, decay=14)
    sources = [{"image": pattern(bands, count, 402 + i, decay=2 + i, noise=0.1), "weight": w}
               for i, w in enumerate(weights)]
    loaded = [(values(s["image"]).reshape(bands, count), float(np.float32(s["weight"]))) for s in sources]
    result = attack(values(image).reshape(bands, frames), loaded, hop, amount)
    case(name, "attack", {"hop": hop, "bands": bands, "frames": frames, "image": image, "sources": sources,
                          "amount": amount}, {"image": array(result)}, 1e-5, 1e-6)


def tail_cases():
    decoded = {"kind": "uniform", "seed": 411, "low": -1.25, "high": 0.4, "count": 900}
    real = {"kind": "mix", "parts": [decoded, {"kind": "uniform", "seed": 412, "low": -0.5, "high": 0.2,
                                               "count": 900}]}
    curve = tail_curve(values(decoded), values(real))
    case("tail curve of many frames", "tailCurve", {"decoded": decoded, "real": real},
         {"curve": array(curve)}, 1e-5, 1e-6)
    few = {"kind": "uniform", "seed": 413, "low": -1.2, "high": 0, "count": 90}
    low = {"kind": "constant", "value": -1, "count": 90}
    case("tail curve of few frames", "tailCurve", {"decoded": few, "real": low},
         {"curve": array(tail_curve(values(few), values(low)))}, 1e-5, 1e-6)
    image = pattern(16, 40, 414, base=-1.1, noise=0.05)
    for amount in (1, 0.5):
        given = {"decoded": decoded, "real": real, "rows": 16, "cols": 40, "image": image, "amount": amount}
        case("tail, amount %g" % amount, "tail", given,
             {"image": array(tail(values(image).reshape(16, 40), curve, amount))}, 1e-5, 1e-6)


def burst(seed, count, decay, amplitude=0.8):
    return {"kind": "burst", "seed": seed, "count": count, "decay": decay, "amplitude": amplitude}


def tone(hz, count, amplitude=0.5, rate=8000):
    return {"kind": "sine", "amplitude": amplitude, "hz": hz, "rate": rate, "count": count}


def donor_cases():
    clips = [burst(421, 900, 120), tone(310, 1400), {"kind": "mix", "parts": [burst(422, 700, 60), tone(95, 700)]}]
    for name, weights, ratio in (("one source", [1.0], 1.0), ("three sources", [0.5, 0.3, 0.2], 1.0),
                                 ("two octaves up", [0.6, 0.4], 4.0), ("two octaves down", [0.6, 0.4], 0.25),
                                 ("a fifth up", [0.2, 0.3, 0.5], 2 ** (7 / 12))):
        sources = [{"samples": c, "weight": w} for c, w in zip(clips, weights)]
        loaded = [(values(s["samples"]), float(np.float32(s["weight"]))) for s in sources]
        case("donor, " + name, "donor", {"sources": sources, "length": 1024, "ratio": ratio},
             {"samples": array(donor(loaded, 1024, ratio))}, 2e-6, 1e-5)
    for name, frames, hop, length in (("as it is", 32, 64, 2048.0), ("stretched by eight", 256, 64, 2048.0),
                                      ("shortened", 8, 64, 2048.0), ("wider hop", 40, 1024, 81920.0),
                                      ("two octaves up", 32, 64, 512.0), ("shorter than the attack", 8, 256, 300.0)):
        case("centres, " + name, "donorCentres", {"frames": frames, "hop": hop, "length": length, "seed": 7},
             {"centres": centres(frames, hop, length, 7)}, 0, 0)


BANKS = {"percussive": (8000, 256, 32, 64), "wide": (44100, 1024, 96, 256)}


def bank_input(name):
    rate, n, bands, _ = BANKS[name]
    return {"sampleRate": rate, "nFFT": n, "nMels": bands}


def fine_cases():
    loud = {"kind": "mix", "parts": [burst(431, 1500, 300), tone(440, 1500, 0.3)]}
    quiet_end = {"kind": "concat", "parts": [burst(432, 500, 90), burst(433, 1000, 1e9, 2e-4)]}
    for name, samples, amount, bank_name, at in (
            ("noise and a partial", loud, 1.0, "percussive", [64 * t for t in range(16)]),
            ("half the amount", loud, 0.5, "percussive", [64 * t for t in range(16)]),
            ("a noise floor is not trusted", quiet_end, 1.0, "percussive", [64 * t for t in range(24)]),
            ("any centres", loud, 1.0, "wide", [0, 100, 117, 600, 601, 1499, 1900, 3000])):
        rate, n, bands, _ = BANKS[bank_name]
        bins = n // 2 + 1
        magnitudes = {"kind": "uniform", "seed": 434, "low": 0.001, "high": 2, "count": len(at) * bins}
        trust, result = fine_structure(values(magnitudes).reshape(len(at), bins).astype(np.float64),
                                       values(samples), at, Bank(rate, n, bands), n, amount)
        case("fine structure, " + name, "fineStructure",
             {"bank": bank_input(bank_name), "donor": samples, "centres": at, "magnitude": magnitudes,
              "amount": amount}, {"trust": array(trust), "magnitude": array(result)}, 2e-4, 2e-3)


def refine_cases():
    for name, bank_name, frames, rounds in (("one round", "percussive", 7, 1), ("eight rounds", "percussive", 20, 8),
                                            ("a wide bank", "wide", 3, 8)):
        rate, n, bands, _ = BANKS[bank_name]
        bins = n // 2 + 1
        magnitudes = {"kind": "uniform", "seed": 441, "low": 0, "high": 1, "count": frames * bins}
        levels = {"kind": "uniform", "seed": 442, "low": 0, "high": 3, "count": frames * bands}
        result = Bank(rate, n, bands).refine(values(magnitudes).reshape(frames, bins),
                                             values(levels).reshape(frames, bands), rounds)
        case("refine, " + name, "refine", {"bank": bank_input(bank_name), "magnitude": magnitudes,
                                           "levels": levels, "rounds": rounds}, {"magnitude": array(result)}, 1e-5, 1e-4)


def phase_case(name, n, hop, frames, magnitudes, known_frames=0, known_every=1):
    bins = n // 2 + 1
    starts = {"kind": "uniform", "seed": 451, "low": 0, "high": 1, "count": frames * bins}
    first = values(starts).reshape(frames, bins)
    known = np.full((known_frames, bins), np.nan)
    for i in range(0, known.size, known_every):
        known.ravel()[i] = first.ravel()[i]
    result = 2 * np.pi * phases(values(magnitudes).reshape(frames, bins), known, first, n, hop)
    case("phases, " + name, "phases",
         {"nFFT": n, "hop": hop, "frames": frames, "magnitude": magnitudes, "starts": starts,
          "knownFrames": known_frames, "knownEvery": known_every},
         {"cosine": array(np.cos(result)), "sine": array(np.sin(result))}, 4e-3, 0)


def phase_cases():
    noisy = {"kind": "uniform", "seed": 452, "low": 0.0001, "high": 1, "count": 24 * 129}
    phase_case("rough magnitudes", 256, 64, 24, noisy)
    phase_case("some known ones", 256, 64, 24, noisy, known_frames=4, known_every=3)
    phase_case("the whole beginning known", 256, 64, 24, noisy, known_frames=4)
    phase_case("a wider hop", 64, 32, 12, {"kind": "uniform", "seed": 453, "low": 0.01, "high": 1, "count": 12 * 33})
    phase_case("all equal: by their index", 32, 8, 6, {"kind": "constant", "value": 0.5, "count": 6 * 17})
    islands = {"kind": "concat", "parts": [
        {"kind": "uniform", "seed": 454, "low": 0.1, "high": 1, "count": 4 * 33},
        {"kind": "constant", "value": 1e-6, "count": 2 * 33},
        {"kind": "uniform", "seed": 455, "low": 0.1, "high": 0.9, "count": 4 * 33}]}
    phase_case("two regions, silence between", 64, 16, 10, islands)
    phase_case("a single frame", 64, 16, 1, {"kind": "uniform", "seed": 456, "low": 0.1, "high": 1, "count": 33})


def main():
    attack_case("attack of one source", 256, 40, [1.0], 1.0)
    attack_case("attack of three sources", 256, 40, [0.5, 0.3, 0.2], 1.0)
    attack_case("attack, half the amount", 256, 40, [0.7, 0.3], 0.5)
    attack_case("attack with a wide hop", 1024, 32, [0.7, 0.3], 1.0)
    attack_case("attack of eight sources", 256, 40, [0.125] * 8, 1.0)
    attack_case("attack longer than the image", 256, 8, [1.0], 1.0)
    tail_cases()
    donor_cases()
    fine_cases()
    refine_cases()
    phase_cases()
    lines = ",\n".join(json.dumps(c) for c in CASES)
    FILE.write_text('{"area": "detail", "version": 1, "cases": [\n' + lines + "\n]}\n")
    print("%d cases in %s" % (len(CASES), FILE))


if __name__ == "__main__":
    main()
