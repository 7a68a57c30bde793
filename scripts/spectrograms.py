"""What the scripts that draw sounds share. Needs NumPy and matplotlib (the group "pictures" of setup.sh)."""
import wave
from pathlib import Path

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import numpy as np

WINDOW = 1024
HOP = 128
RANGE_DB = 70
LOWEST_HZ = 50


def read_wav(path: Path) -> tuple[np.ndarray, int]:
    with wave.open(str(path)) as file:
        raw = np.frombuffer(file.readframes(file.getnframes()), dtype=np.uint8)
        width, channels, rate = file.getsampwidth(), file.getnchannels(), file.getframerate()
    # The bytes of each sample go to the upper end of a 32-bit integer.
    padded = np.zeros((raw.size // width, 4), dtype=np.uint8)
    padded[:, 4 - width :] = raw.reshape(-1, width)
    samples = padded.view("<i4").astype(np.float64)[:, 0] / 2**31
    return samples.reshape(-1, channels).mean(axis=1), rate


def power(samples: np.ndarray) -> np.ndarray:
    """Squared magnitudes of the short-time spectrum, [bins, frames]."""
    padded = np.pad(samples, (WINDOW // 2, WINDOW))
    frames = np.lib.stride_tricks.sliding_window_view(padded, WINDOW)[::HOP]
    return np.abs(np.fft.rfft(frames * np.hanning(WINDOW))).T ** 2


def level_db(samples: np.ndarray) -> np.ndarray:
    """Spectrogram in dB below its loudest point, [bins, frames]."""
    magnitude = np.sqrt(power(samples))
    return 20 * np.log10(np.maximum(magnitude / magnitude.max(), 1e-9))


def mel_bank(rate: int, bands: int) -> np.ndarray:
    """Triangular filters, even in mels from LOWEST_HZ to half the rate, [bands, bins]."""
    def mel(hertz):
        return 2595 * np.log10(1 + hertz / 700)

    bins = np.arange(WINDOW // 2 + 1) * rate / WINDOW
    edges = 700 * (10 ** (np.linspace(mel(LOWEST_HZ), mel(rate / 2), bands + 2) / 2595) - 1)
    # No filter is narrower than the distance of two bins.
    below = np.minimum(edges[:-2], edges[1:-1] - rate / WINDOW)[:, None]
    above = np.maximum(edges[2:], edges[1:-1] + rate / WINDOW)[:, None]
    centre = edges[1:-1, None]
    return np.clip(np.minimum((bins - below) / (centre - below), (above - bins) / (above - centre)), 0, None)


def mel_db(samples: np.ndarray, rate: int, bands: int = 96) -> np.ndarray:
    """Mel spectrogram in dB of full scale, [bands, frames]."""
    full_scale = (np.hanning(WINDOW).sum() / 2) ** 2
    return 10 * np.log10(np.maximum(mel_bank(rate, bands) @ power(samples) / full_scale, 1e-12))


def draw(axes, path: Path, title: str, seconds: float) -> None:
    """The spectrogram of a WAV file, with its frequencies on a logarithmic scale."""
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


def draw_mel(axes, path: Path, title: str, seconds: float) -> None:
    """The mel spectrogram of a WAV file, lowest band below."""
    samples, rate = read_wav(path)
    shown = np.full((96, int(seconds * rate / HOP) + 1), -200.0)
    level = mel_db(samples, rate)[:, : shown.shape[1]]
    shown[:, : level.shape[1]] = level
    axes.imshow(shown, origin="lower", aspect="auto", cmap="magma", vmin=-RANGE_DB - 10, vmax=-10,
                extent=(0, seconds, 0, 96), interpolation="nearest")
    axes.set_yticks([])
    axes.tick_params(labelsize=7, length=2)
    axes.set_title(title, fontsize=8)
