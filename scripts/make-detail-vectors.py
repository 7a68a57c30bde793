#!/usr/bin/env python3
"""Writes Tests/Golden/detail.json, the reference vectors of the rendering with detail.

Every stage is computed here by its definition, in double precision from single-precision inputs, without the
library: an independent second opinion. The file is committed; run this only to change the cases.

    scripts/make-detail-vectors.py [FILE]
"""

import heapq
import json
import sys
from pathlib import Path

import numpy as np

FILE = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent.parent / "Tests/Golden/detail.json")
MASK = (1 << 64) - 1


# ---- Inputs by formula (Tests/Golden/FORMAT.md)

class Generator:
    """xoshiro256**, seeded through SplitMix64 whose first output is skipped."""

    def __init__(self, seed):
        self.s = []
        seed += 0x9E3779B97F4A7C15
        for _ in range(4):
            seed = (seed + 0x9E3779B97F4A7C15) & MASK
            z = seed
            z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & MASK
            z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & MASK
            self.s.append(z ^ (z >> 31))

    def next(self):
        def rotated(x, k):
            return ((x << k) | (x >> (64 - k))) & MASK

        s = self.s
        result = (rotated((s[1] * 5) & MASK, 7) * 9) & MASK
        t = (s[1] << 17) & MASK
        s[2] ^= s[0]
        s[3] ^= s[1]
        s[1] ^= s[2]
        s[0] ^= s[3]
        s[2] ^= t
        s[3] = rotated(s[3], 45)
        return result

    def uniform(self):
        return (self.next() >> 40) * 2.0 ** -24

    def signed(self):
        return 2 * self.uniform() - 1


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


# ---- Transform and filter bank

def window(n):
    return 0.5 - 0.5 * np.cos(2 * np.pi * np.arange(n) / n)


def spectrum(signal, centres, n):
    """Frames centred on the given samples; DC and Nyquist, which no band covers, are 0."""
    padded = np.concatenate([np.zeros(n), signal.astype(np.float64), np.zeros(n + max(centres))])
    frames = np.array([padded[c + n // 2:c + n // 2 + n] * window(n) for c in centres])
    result = np.fft.rfft(frames, axis=1)
    result[:, 0] = result[:, -1] = 0
    return result


class Bank:
    def __init__(self, rate, n, bands):
        bins = n // 2 + 1
        hz = np.arange(bins) * rate / n
        top = 2595 * np.log10(1 + 0.5 * rate / 700)
        edges = 700 * (10 ** (np.arange(bands + 2) * top / (bands + 1) / 2595) - 1)
        raw = np.zeros((bands, bins))
        for m in range(bands):
            left, centre, right = edges[m:m + 3]
            up, down = (hz - left) / (centre - left), (right - hz) / (right - centre)
            raw[m] = np.where((hz > left) & (hz <= centre), up, np.where((hz > centre) & (hz < right), down, 0))
            if not raw[m].any():
                raw[m, min(bins - 1, int(np.floor(centre / (rate / n) + 0.5)))] = 1
        self.rows = raw / raw.sum(axis=1, keepdims=True)
        total = raw.sum(axis=0)
        self.back = np.zeros((bins, bands))
        held = np.zeros(bands)
        for k in range(bins):
            if total[k] > 1e-6:
                held = raw[:, k] / total[k]
            self.back[k] = held
        self.covered = total > 1e-9

    def forward(self, magnitudes):
        return magnitudes @ self.rows.T

    def inverse(self, levels):
        return levels @ self.back.T

    def refine(self, magnitudes, levels, rounds):
        a = magnitudes.astype(np.float64)
        column = np.maximum(self.rows.sum(axis=0), 1e-12)
        for _ in range(rounds):
            factor = (levels / np.maximum(self.forward(a), 1e-12)) @ self.rows / column
            a = np.where(self.covered, a * factor, a)
        return a


# ---- The stages

def attack_frames(hop):
    return min(6, max(2, 6 * 256 // hop))


def attack(image, sources, hop, amount):
    k = f = attack_frames(hop)
    count = min(k + f, image.shape[1])
    course = sum(w * (x[:, :k + f] - x[:, :k].max(axis=1, keepdims=True)) for x, w in sources)[:, :count]
    share = amount * np.minimum(1, (k + f - np.arange(count)) / f)
    out = image.astype(np.float64)
    loudest = out[:, :k].max(axis=1, keepdims=True)
    out[:, :count] = share * (loudest + course) + (1 - share) * out[:, :count]
    return out


MIDDLES = -1.2 + (np.arange(32) + 0.5) * (1.2 / 32)


def tail_curve(decoded, real):
    cell = np.clip(np.floor((decoded.astype(np.float64) + 1.2) / (1.2 / 32)), 0, 31).astype(int)
    g = []
    for c, middle in enumerate(MIDDLES):
        levels = real[cell == c].astype(np.float64)
        value = min(np.median(levels), middle) if len(levels) >= 8 else -1 if middle < -0.9 else middle
        g.append(middle if middle >= -0.3 else value)
    return np.minimum(np.maximum.accumulate(g), np.maximum(MIDDLES, -1))


def tail(image, curve, amount):
    peak = image.max(axis=0).astype(np.float64)
    change = np.where(peak < MIDDLES[-1], np.minimum(0, np.interp(peak, MIDDLES, curve) - peak), 0)
    return image + amount * change


def donor(sources, length, ratio):
    y = np.zeros(length)
    for samples, weight in sources:
        count = min(length, len(samples))
        y[:count] += weight * samples[:count].astype(np.float64)
    if ratio == 1:
        return y
    position = np.arange(max(1, int(length / ratio))) * ratio
    i = np.floor(position).astype(int)
    f = position - i
    z = np.pad(y, (1, 3))
    a, b, c, d = z[i], z[i + 1], z[i + 2], z[i + 3]
    return b + 0.5 * f * (c - a + f * (2 * a - 5 * b + 4 * c - d + f * (3 * (b - c) + d - a)))


def centres(frames, hop, length, seed):
    lock = min(4, frames - 1)
    start = lock * hop
    step = max(0, (length - start) / max(1, frames - lock))
    rng = Generator(seed)
    slower = 0 < step < 0.999 * hop

    def leash():
        return (0.5 + rng.uniform()) * min(8, hop / step - 1) * hop

    found = [t * hop for t in range(lock + 1)][:frames]
    position, direction, reach = start, 1, leash() if slower else 0
    for t in range(lock + 1, frames):
        place = start + (t - lock) * step
        if slower:
            position += direction * hop
            if direction * (position - place) > reach or position <= start:
                direction, reach = -direction, leash()
            position = max(position, start)
            place = position
        found.append(place)
    return [int(np.floor(place + 0.5)) for place in found]


def fine_structure(magnitudes, samples, at, bank, n, amount):
    s = np.abs(spectrum(samples, at, n))
    levels = bank.forward(s)
    ratio = np.clip(np.log(np.maximum(s, 1e-12) / np.maximum(bank.inverse(levels), 1e-12)), -4.6, 2.3)
    q = np.clip((20 * np.log10(np.maximum(levels, 1e-12) / levels.max()) + 80) / 20, 0, 1)
    trust = np.clip(bank.inverse(q), 0, 1)
    return trust, np.maximum(magnitudes * np.exp(amount * trust * ratio), 1e-9)


def phases(magnitudes, known, starts, n, hop):
    """In turns. known: phases of the bins of the first frames, or NaN; starts: of all bins."""
    a = magnitudes.copy()
    a[:, 0], a[:, -1] = a[:, 1], a[:, -2]
    frames, bins = a.shape
    loudest = a.max()
    logs = np.log(np.maximum(a.astype(np.float64), float(loudest) * 1e-5 + 1e-12))
    g = 0.25645 * n * n
    along_bins = np.gradient(logs, axis=1)
    along_time = np.gradient(logs, axis=0) if frames > 1 else 0 * logs
    time_step = np.arange(bins) * hop / n + hop * n / g * along_bins / (2 * np.pi)
    bin_step = -0.5 - g / (n * hop) * along_time / (2 * np.pi)
    phase = starts.astype(np.float64).copy()
    left = (a > np.float32(loudest * np.float32(1e-4))).ravel()
    flat = a.ravel()
    heap = []

    def settle(i):
        left[i] = False
        heapq.heappush(heap, (-float(flat[i]), i))

    def spread():
        while heap:
            _, i = heapq.heappop(heap)
            t, k = divmod(i, bins)
            for u, v in ((t + 1, k), (t - 1, k), (t, k + 1), (t, k - 1)):
                if not (0 <= u < frames and 0 <= v < bins and left[u * bins + v]):
                    continue
                if v == k:
                    phase[u, v] = phase[t, k] + (u - t) * 0.5 * (time_step[t, k] + time_step[u, v])
                else:
                    phase[u, v] = phase[t, k] + (v - k) * 0.5 * (bin_step[t, k] + bin_step[u, v])
                settle(u * bins + v)

    for i, value in enumerate(known.ravel()):
        if not np.isnan(value):
            phase[divmod(i, bins)] = value
            if left[i]:
                settle(i)
    spread()
    for i in sorted(np.flatnonzero(left), key=lambda i: (-float(flat[i]), i)):
        if left[i]:
            settle(i)
            spread()
    return phase


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
