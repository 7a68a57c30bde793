"""The stages of the rendering with detail, each by its definition in double precision, without the library.

make-detail-vectors.py takes reference vectors from them, Benchmarks/peers/detail_peer.py the time that they take.
"""

import heapq

import numpy as np

MASK = (1 << 64) - 1


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
