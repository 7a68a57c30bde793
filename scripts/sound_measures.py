"""Measures of short sounds, and of sets of them: how sharp, how textured, how far apart, how new.

Sounds are mono arrays at RATE; files of another rate are brought to it. Sets are compared by estimates that do not
depend on their size: the unbiased squared maximum mean discrepancy (Gretton, Borgwardt, Rasch, Schölkopf, Smola: A
kernel two-sample test, 2012) and coverage (Naeem, Oh, Uh, Choi, Yoo: Reliable fidelity and diversity metrics for
generative models, 2020). Intervals are bootstrap intervals of the median (Efron, 1979).
"""
import math

import numpy as np
import scipy.fft
import scipy.io.wavfile
import scipy.signal

RATE = 44100
NEIGHBOURS = 5  # coverage: a sample is covered if a new sound lies within its distance to this many others
SECONDS_COMPARED = 2.0
RANGE_DB = 60  # below the loudest point; what is softer does not count in distances

DESCRIPTORS = ("log rise", "log half height", "log length", "centroid", "spread", "rolloff", "tilt", "flatness",
               "fine deviation", "ripple", "partials", "crest", "log decay", "temporal centroid", "low share",
               "high share", "flux", "zero crossings")


def read(path):
    """A WAV file as numbers within ±1, at RATE."""
    rate, samples = scipy.io.wavfile.read(path)
    if samples.dtype.kind == "i":
        samples = samples / -float(np.iinfo(samples.dtype).min)
    samples = samples.astype(np.float64)
    if rate == RATE:
        return samples
    common = math.gcd(rate, RATE)
    return scipy.signal.resample_poly(samples, RATE // common, rate // common)


def spectrogram(samples, size, hop):
    """Magnitudes [frames, bins]; frame t is centred on sample t * hop."""
    frames = max(1, len(samples) // hop + 1)
    padded = np.zeros(frames * hop + size)
    count = min(len(samples), len(padded) - size // 2)
    padded[size // 2:size // 2 + count] = samples[:count]
    windows = np.lib.stride_tricks.sliding_window_view(padded, size)[:frames * hop:hop]
    hann = 0.5 - 0.5 * np.cos(2 * np.pi * np.arange(size) / size)
    return np.abs(scipy.fft.rfft((windows * hann).astype(np.float32), axis=1))


def aligned(samples):
    """From 1 ms before the first sample at 1 % of the peak, with a peak of 1."""
    peak = np.abs(samples).max()
    start = int(np.argmax(np.abs(samples) >= 0.01 * peak)) - RATE // 1000
    samples = samples[start:] if start >= 0 else np.concatenate([np.zeros(-start), samples])
    return samples / peak


# ---- One sound

def envelope(samples):
    """RMS over 1.5 ms, centred."""
    width = int(0.0015 * RATE)
    sums = np.concatenate([[0], np.cumsum(samples ** 2)])
    at = np.arange(len(samples))
    first, last = np.maximum(0, at - width // 2), np.minimum(len(samples), at + width // 2)
    return np.sqrt((sums[last] - sums[first]) / width)


def attack(samples):
    """Milliseconds from a tenth to nine tenths of the maximum, and until half of it."""
    course = envelope(samples)
    loudest = course.max()
    tenth, half = np.argmax(course >= 0.1 * loudest), np.argmax(course >= 0.5 * loudest)
    rise = np.argmax(course[tenth:] >= 0.9 * loudest)
    return rise / RATE * 1e3, half / RATE * 1e3


def texture(samples, size=1024, hop=256):
    """Over cells within 45 dB of the loudest: deviation between neighbouring bins in dB (5.6 for Gaussian noise, less
    where a spectrum is smooth, more where partials stand apart), flatness across bins in dB, and the ripple of the
    levels over time in dB."""
    spectrum = spectrogram(samples, size, hop)
    edges = np.concatenate([[0], np.geomspace(80, RATE / 2, 24)]) / RATE * size
    deviations, flatness, levels = [], [], []
    for first, last in zip(edges[:-1].round().astype(int), edges[1:].round().astype(int)):
        if last - first < 6:
            continue
        power = spectrum[:, first:last] ** 2 + 1e-14
        decibels = 10 * np.log10(power)
        mean = decibels.mean(axis=1)
        position = np.linspace(-1, 1, last - first)
        slope = (decibels * position).sum(axis=1) / (position ** 2).sum()
        deviations.append((decibels - mean[:, None] - slope[:, None] * position).std(axis=1))
        levels.append(10 * np.log10(power.mean(axis=1)))
        flatness.append(mean - levels[-1])
    deviations, flatness, levels = np.array(deviations), np.array(flatness), np.array(levels)
    loud = levels > levels.max() - 45
    steady = loud[:, 2:] & loud[:, 1:-1] & loud[:, :-2]
    ripple = np.abs(np.diff(levels, 2, axis=1))[steady].mean() if steady.any() else 0
    return deviations[loud].mean(), flatness[loud].mean(), ripple


def loud_frames(spectrum, share):
    """The first 24 frames with more than that share of the loudest one's energy: magnitudes, levels in dB, and the bins
    that stand above their neighbours."""
    energy = (spectrum ** 2).sum(axis=1)
    for frame in spectrum[energy > energy.max() * share][:24]:
        level = 20 * np.log10(frame + 1e-9)
        yield frame, level, np.nonzero((level[1:-1] > level[:-2]) & (level[1:-1] >= level[2:]))[0] + 1


def partials(samples, size=8192, hop=2048):
    """How far the ten loudest peaks of the loud frames stand above the median of the critical band around them, in dB:
    the median."""
    heights = []
    for _, level, peaks in loud_frames(spectrogram(samples, size, hop), 1e-3):
        peaks = peaks[peaks > 10]
        for peak in peaks[np.argsort(-level[peaks])[:10]]:
            bandwidth = 24.7 * (4.37 * peak * RATE / size / 1000 + 1)  # Glasberg and Moore, 1990
            around = int(max(5, 0.5 * bandwidth * size / RATE))
            heights.append(level[peak] - np.median(level[max(0, peak - around):peak + around + 1]))
    return float(np.median(heights)) if heights else 0.0


def frame_rate(samples, hop=256):
    """How far the modulation at a renderer's frame rate stands out of its surroundings in the spectrum of the
    envelope, in dB. Few dB for samples; from about ten on it is heard as a buzz."""
    spacing = hop // 16
    course = envelope(samples)[::spacing]
    if len(course) < 256:
        return 0.0
    power = np.abs(scipy.fft.rfft((course - course.mean()) * np.hanning(len(course)))) ** 2 + 1e-18
    offset = np.abs(np.arange(len(power)) * RATE / spacing / len(course) - RATE / hop) * hop / RATE
    at, around = offset < 0.03, (offset >= 0.03) & (offset < 0.3)
    return float(10 * np.log10(power[at].mean() / np.median(power[around])))


def beating(samples, size=2048, hop=128):
    """How much the levels of critical bands go up and down, four to thirty times a second, where a sound lasts: RMS
    in dB, weighted by the bands' maxima; not a number for a sound that nowhere lasts for 0.4 s. Partials that are a few
    hertz apart beat."""
    power = spectrogram(samples, size, hop) ** 2
    band = np.floor(21.4 * np.log10(4.37 * np.arange(power.shape[1]) / size * RATE / 1000 + 1))  # Glasberg and Moore
    levels = [10 * np.log10(power[:, band == i].sum(axis=1) + 1e-12) for i in range(3, 28)]
    loudest = max(level.max() for level in levels)
    width = int(0.25 * RATE / hop) | 1
    found, weights = [], []
    for level in levels:
        lasting = longest_run(level > level.max() - 25)
        if level.max() < loudest - 30 or len(lasting) < 1.5 * width:
            continue
        course = level[lasting]
        slow = np.convolve(np.pad(course, width // 2, mode="edge"), np.full(width, 1 / width), mode="valid")
        found.append(np.sqrt(((course - slow)[width // 3:-(width // 3)] ** 2).mean()))
        weights.append(10 ** (level.max() / 20))
    return float(np.average(found, weights=weights)) if found else np.nan


def longest_run(chosen):
    """Indices of the longest stretch of true values."""
    places = np.flatnonzero(chosen)
    return max(np.split(places, np.flatnonzero(np.diff(places) > 1) + 1), key=len)


def roughness(samples, size=8192, hop=2048):
    """Sensory dissonance of the 24 loudest peaks of a spectrum (Sethares: Local consonance and the relationship between
    timbre and scale, 1993), relative to their energy: the median of the loud frames. Two sets of partials at once are
    rougher than one."""
    values = []
    for frame, level, peaks in loud_frames(spectrogram(samples, size, hop), 1e-2):
        peaks = peaks[(peaks > 8) & (level[peaks] > level.max() - 40)]
        peaks = peaks[np.argsort(-level[peaks])[:24]]
        frequency, strength = peaks * RATE / size, frame[peaks]
        i, j = np.triu_indices(len(peaks), 1)
        apart = np.abs(frequency[i] - frequency[j]) * 0.24 / (0.0207 * np.minimum(frequency[i], frequency[j]) + 18.96)
        pairs = np.minimum(strength[i], strength[j]) * 5 * (np.exp(-3.51 * apart) - np.exp(-5.75 * apart))
        values.append(pairs.sum() * strength.max() / (strength ** 2).sum() if len(peaks) else 0)
    return float(np.median(values)) if values else 0.0


def descriptors(samples):
    """The numbers that DESCRIPTORS names."""
    rise, half = attack(samples)
    sound = aligned(samples)
    power = spectrogram(sound, 1024, 256) ** 2
    kilohertz = np.arange(power.shape[1]) / 1024 * RATE / 1000
    mean = power.mean(axis=0) + 1e-12
    octave = np.log2(np.maximum(kilohertz, 0.03))
    centroid = (mean * octave).sum() / mean.sum()
    spread = np.sqrt((mean * (octave - centroid) ** 2).sum() / mean.sum())
    rolloff = octave[np.argmax(np.cumsum(mean) / mean.sum() >= 0.95)]
    tilt = np.polyfit(octave[4:400], 10 * np.log10(mean[4:400]), 1)[0]
    deviation, flatness, ripple = texture(sound)
    course = envelope(sound)
    loudest = int(course.argmax())
    soft = np.nonzero(course[loudest:] < 0.1 * course[loudest])[0]
    decay = (soft[0] if len(soft) else len(course) - loudest) / RATE
    energy = course ** 2
    middle = (energy * np.arange(len(energy))).sum() / energy.sum() / RATE
    crest = 20 * np.log10(1 / (np.sqrt((sound[:RATE // 20] ** 2).mean()) + 1e-9))
    low = 10 * np.log10(mean[kilohertz < 0.2].sum() / mean.sum() + 1e-5)
    high = 10 * np.log10(mean[kilohertz > 5].sum() / mean.sum() + 1e-5)
    levels = np.maximum(10 * np.log10((power + 1e-9) / (power.max() + 1e-9)), -70)
    flux = np.abs(np.diff(levels, axis=0)).mean() if len(levels) > 1 else 0
    crossings = (np.diff(np.sign(sound)) != 0).mean()
    log = lambda value, least: np.log(max(value, least))
    return np.array([log(rise, 0.3), log(half, 0.3), log(len(samples) / RATE, 0.01), centroid, spread, rolloff, tilt,
                     flatness, deviation, ripple, partials(sound), crest, log(decay, 0.002), log(middle, 0.002), low,
                     high, flux, log(crossings, 1e-3)])


# ---- Distances

def band_image(samples, size=1024, hop=512, bands=48):
    """Levels of bands of equal width on a logarithmic scale, dB below the loudest, at most RANGE_DB: [frames, bands] of
    SECONDS_COMPARED."""
    power = spectrogram(samples[:int(SECONDS_COMPARED * RATE)], size, hop) ** 2
    edges = np.unique((np.geomspace(60, RATE / 2, bands + 1) / RATE * size).round().astype(int))
    levels = 10 * np.log10(np.add.reduceat(power, edges[:-1], axis=1) + 1e-12)
    image = np.full((int(SECONDS_COMPARED * RATE / hop) + 1, len(edges) - 1), -float(RANGE_DB), np.float32)
    image[:len(levels)] = np.maximum(levels - levels.max(), -RANGE_DB)
    return image


def distances(some, others):
    """[some, others]: root mean square difference in dB over the frames in which either sounds."""
    some, others = np.asarray(some), np.asarray(others)
    sounding = (others > -RANGE_DB).any(axis=2)
    result = np.empty((len(some), len(others)))
    for i, image in enumerate(some):
        either = sounding | (image > -RANGE_DB).any(axis=1)
        per_frame = np.sqrt(((others - image) ** 2).mean(axis=2))
        result[i] = (per_frame * either).sum(axis=1) / np.maximum(either.sum(axis=1), 1)
    return result


def wave_spectrum(samples, seconds=0.5):
    """Of the first half second, for correlations()."""
    count = int(seconds * RATE)
    padded = np.zeros(2 * count, np.float32)
    padded[:min(count, len(samples))] = samples[:count]
    return scipy.fft.rfft(padded / max(np.sqrt((padded ** 2).sum()), 1e-9))


def correlations(spectrum, bank):
    """Largest normalised cross correlation, within ±10 ms, with each sound of a bank of spectra."""
    course = scipy.fft.irfft(np.conj(bank) * spectrum, axis=1)
    lags = RATE // 100
    return np.abs(np.concatenate([course[:, :lags], course[:, -lags:]], axis=1)).max(axis=1)


# ---- Sets

def discrepancy(a, b, width):
    """Unbiased squared maximum mean discrepancy, Gaussian kernel."""
    kernel = lambda u, v: np.exp(-((u[:, None] - v[None]) ** 2).sum(axis=2) / (2 * width * width))
    m, n = len(a), len(b)
    within = (kernel(a, a).sum() - m) / (m * (m - 1)) + (kernel(b, b).sum() - n) / (n * (n - 1))
    return within - 2 * kernel(a, b).mean()


def discrepancy_and_deviation(a, b, width, rounds=60):
    """With its deviation over subsamples of half of each set: drawn without replacement, for equal sounds in a
    bootstrap sample would count as likeness."""
    generator = np.random.default_rng(0)
    half = lambda values: values[generator.permutation(len(values))[:max(2, len(values) // 2)]]
    values = [discrepancy(half(a), half(b), width) for _ in range(rounds)]
    return discrepancy(a, b, width), float(np.std(values) / np.sqrt(2))


def median_width(values):
    """The median distance: the usual width of the kernel."""
    apart = np.sqrt(((values[:, None] - values[None]) ** 2).sum(axis=2))
    return float(np.median(apart[np.triu_indices(len(values), 1)]))


def coverage(between, within):
    """Share of the samples that have a new sound nearer than their NEIGHBOURS-th neighbour among themselves. between:
    [new, samples], within: [samples, samples]."""
    others = np.sort(within + np.diag(np.full(len(within), np.inf)), axis=1)
    reach = others[:, min(NEIGHBOURS, len(within) - 1) - 1]
    return float((between.min(axis=0) <= reach).mean())


def mean_apart(within):
    return float(within[np.triu_indices(len(within), 1)].mean())


def median_interval(values, rounds=400):
    """The median and a bootstrap interval that holds it nine times out of ten."""
    generator = np.random.default_rng(0)
    values = np.asarray(values)
    medians = [np.median(values[generator.integers(0, len(values), len(values))]) for _ in range(rounds)]
    return float(np.median(values)), float(np.percentile(medians, 5)), float(np.percentile(medians, 95))
