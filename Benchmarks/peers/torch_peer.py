#!/usr/bin/env python3
"""The product's heavy work done with PyTorch, for comparison. Prints the milliseconds of each run as JSON.

usage: torch_peer.py WORK [--threads N] [--seconds S]

WORK: step:HxW (one training step, batch 16), decode:HxW (16 latents), griffinlim:NFFT:FRAMES (48 passes),
features:NFFT:FRAMES:MELS (one clip), variation:NFFT:FRAMES:MELS (latent to file, with the parameters of the
preset Balanced). H is the number of mel bands, W the number of frames; the hop is NFFT / 4.

usage: torch_peer.py train FOLDER STEPS [--threads N]

Learns the WAV files of a folder for some steps at 96x192 and prints its largest resident set in KiB.
"""
import argparse
import json
import math
import pathlib
import resource
import tempfile
import time
import wave

import numpy as np
import torch
import torch.nn.functional as F

BATCH, LATENT = 16, 64
ENCODER = [1, 24, 48, 96, 128, 192]
DECODER = [192, 128, 96, 48, 24, 24]


class Network:
    """The variational autoencoder with its Adam update, in channels_last layout unless told otherwise (on a processor
    the faster one)."""

    def __init__(self, height, width, layout=torch.channels_last):
        self.layout = layout
        self.height, self.width = height, width
        self.deep = (height // 32, width // 32)
        flat = 192 * self.deep[0] * self.deep[1]
        self.parameters = []
        self.encoder = [
            (self.normal(o, i, 4, 4, std=math.sqrt(2 / (i * 16))), self.normal(o, std=0))
            for i, o in zip(ENCODER, ENCODER[1:])
        ]
        self.mean = (self.normal(flat, LATENT, std=0.5 / math.sqrt(flat)), self.normal(LATENT, std=0))
        self.log_var = (self.normal(flat, LATENT, std=0.1 / math.sqrt(flat)), self.normal(LATENT, std=0))
        self.dense = (self.normal(LATENT, flat, std=math.sqrt(2 / LATENT)), self.normal(flat, std=0))
        self.decoder = [
            (self.normal(o, i, 3, 3, std=math.sqrt(2 / (i * 9))), self.normal(o, std=0))
            for i, o in zip(DECODER, DECODER[1:])
        ]
        self.output = (self.normal(1, 24, 3, 3, std=0.068), self.normal(1, std=0))
        self.first = [torch.zeros_like(p) for p in self.parameters]
        self.second = [torch.zeros_like(p) for p in self.parameters]

    def normal(self, *shape, std):
        parameter = (torch.randn(*shape) * std).requires_grad_()
        self.parameters.append(parameter)
        return parameter

    def encode(self, x):
        h = x.to(memory_format=self.layout)
        for weight, bias in self.encoder:
            h = F.silu(F.conv2d(h, weight, bias, stride=2, padding=1))
        flat = h.reshape(x.shape[0], -1)
        mean = flat @ self.mean[0] + self.mean[1]
        return mean, (flat @ self.log_var[0] + self.log_var[1]).clamp(-12, 6)

    def decode(self, z):
        h = F.silu(z @ self.dense[0] + self.dense[1]).view(z.shape[0], 192, *self.deep)
        h = h.to(memory_format=self.layout)
        for weight, bias in self.decoder:
            h = F.silu(F.conv2d(F.interpolate(h, scale_factor=2, mode="nearest"), weight, bias, padding=1))
        return F.conv2d(h, *self.output, padding=1)

    def update(self, x, eps, rate=1e-4, kl_weight=0.002):
        """One step. Returns loss, mse and kl as tensors: nothing waits for them."""
        mean, log_var = self.encode(x)
        difference = self.decode(mean + torch.exp(0.5 * log_var) * eps) - x
        weight = 1 + 3 * (x > -0.95).to(x.dtype)
        mse = (difference * difference * weight).mean()
        kl = -0.5 * ((1 + log_var) - (mean * mean + log_var.exp())).mean()
        loss = mse + kl_weight * kl
        gradients = torch.autograd.grad(loss, self.parameters)
        with torch.no_grad():
            torch._foreach_mul_(self.first, 0.9)
            torch._foreach_add_(self.first, gradients, alpha=0.1)
            torch._foreach_mul_(self.second, 0.999)
            torch._foreach_addcmul_(self.second, gradients, gradients, 0.001)
            scale = torch._foreach_sqrt(self.second)
            torch._foreach_add_(scale, 1e-8)
            torch._foreach_addcdiv_(self.parameters, self.first, scale, -rate)
        return loss.detach(), mse.detach(), kl.detach()

    def step(self, x, eps):
        return [scalar.item() for scalar in self.update(x, eps)]


def training_step(height, width):
    network = Network(height, width)
    x = torch.rand(BATCH, 1, height, width) * 2 - 1
    eps = torch.randn(BATCH, LATENT)
    return lambda: network.step(x, eps)


def decode(height, width):
    network = Network(height, width)
    z = torch.randn(BATCH, LATENT)

    def run():
        with torch.inference_mode():
            return network.decode(z)

    return run


def reconstruct(magnitude, size, window, passes=48):
    """magnitude: [bins, frames]. Griffin-Lim with momentum from random phases."""
    hop, frames = size // 4, magnitude.shape[1]

    def inverse(spectrum):
        return torch.istft(spectrum, size, hop, window=window, length=frames * hop - hop)

    estimate = torch.polar(magnitude, torch.rand(magnitude.shape) * 2 * math.pi)
    previous, momentum = torch.zeros_like(estimate), 0.0
    for _ in range(passes):
        projection = torch.stft(inverse(estimate), size, hop, window=window, center=True, pad_mode="constant",
                                return_complex=True)
        moved = projection + (projection - previous) * momentum
        estimate = magnitude * (moved / (moved.abs() + 1e-12))
        previous, momentum = projection, 0.99
    return inverse(estimate)


def griffin_lim(size, frames):
    magnitude = torch.rand(size // 2 + 1, frames) + 0.01
    window = torch.hann_window(size)

    def run():
        with torch.inference_mode():
            return reconstruct(magnitude, size, window)

    return run


def mel_bank(size, mels):
    """Triangles [mels, bins], each with a peak of 1."""
    edges = torch.linspace(0, 2595 * math.log10(1 + 22050 / 700), mels + 2)
    edges = 700 * (10 ** (edges / 2595) - 1)
    frequency = torch.arange(size // 2 + 1) * 44100 / size
    rising = (frequency[None] - edges[:-2, None]) / (edges[1:-1] - edges[:-2])[:, None]
    falling = (edges[2:, None] - frequency[None]) / (edges[2:] - edges[1:-1])[:, None]
    return torch.clamp(torch.minimum(rising, falling), min=0)


def features_of(signal, size, frames, bank, window):
    spectrum = torch.stft(signal, size, size // 4, window=window, center=True, pad_mode="constant",
                          return_complex=True)[:, :frames]
    level = 20 * torch.log10(torch.clamp(bank @ (spectrum.abs() * 4 / size), min=1e-7))
    return (torch.clamp(level, -100, 10) + 50) / 50


def features(size, frames, mels):
    signal = torch.rand(frames * size // 4) * 2 - 1
    window = torch.hann_window(size)
    bank = mel_bank(size, mels)
    bank = bank / bank.sum(1, keepdim=True).clamp(min=1e-6)

    def run():
        with torch.inference_mode():
            return features_of(signal, size, frames, bank, window)

    return run


def block_dc(x, block=256):
    """y[n] = 0.995 y[n - 1] + x[n] - x[n - 1], a block at a time."""
    change = np.diff(x, prepend=np.float32(0))
    change = np.pad(change, (0, -len(x) % block)).reshape(-1, block)
    step = np.arange(block)
    response = np.where(step[:, None] >= step, 0.995 ** np.maximum(step[:, None] - step, 0), 0).astype(np.float32)
    alone = change @ response.T
    carry, carries = 0.0, np.empty(len(alone), np.float32)
    for i, last in enumerate(alone[:, -1]):
        carries[i] = carry
        carry = float(last) + 0.995**block * carry
    return (alone + carries[:, None] * (0.995 ** (step + 1)).astype(np.float32)).reshape(-1)[: len(x)]


def finish(x):
    """Offset, silence, level and fades, as the preset Balanced asks."""
    x = block_dc(x)
    levels = np.sqrt(np.mean(x[: len(x) // 128 * 128].reshape(-1, 128) ** 2, axis=1))
    sounding = np.flatnonzero(levels > 0.0018 * levels.max())
    x = x[max(sounding[0] * 128 - 32, 0) : (sounding[-1] + 1) * 128 + 441]
    x = x * (0.95 / np.abs(x).max())
    x[:44] *= np.arange(44, dtype=np.float32) / 44
    x[-882:] *= np.arange(882, dtype=np.float32)[::-1] / 882
    return x * (10 ** (-1 / 20) / np.abs(x).max())


def write_wav24(x, path):
    whole = np.clip(np.rint(x * 8388608), -8388608, 8388607).astype("<i4")
    with wave.open(path, "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(3)
        file.setframerate(44100)
        file.writeframes(whole.view(np.uint8).reshape(-1, 4)[:, :3].tobytes())


def variation(size, frames, mels):
    network = Network(mels, frames)
    latents = torch.randn(24, LATENT)
    centre = latents.mean(0)
    bank = mel_bank(size, mels)
    covered = bank.sum(0).clamp(min=1e-6)
    window = torch.hann_window(size)
    target = tempfile.NamedTemporaryFile(suffix=".wav")

    def run():
        with torch.inference_mode():
            chosen = latents[torch.randperm(24)[:2]]
            weights = torch.rand(2)
            z = (weights / weights.sum()) @ chosen
            z = z + (torch.randn(24) * 0.4 / math.sqrt(24)) @ (latents - centre)
            image = network.decode(z[None])[0, 0]
            level = torch.clamp(image * 50 - 50, -100, 10)
            magnitude = (bank.T @ 10 ** (level / 20)) / covered[:, None] * (size / 4)
            samples = reconstruct(magnitude, size, window)
        write_wav24(finish(samples.numpy()), target.name)

    return run


def train(folder, steps):
    size, frames, mels = 1024, 192, 96
    window = torch.hann_window(size)
    bank = mel_bank(size, mels)
    bank = bank / bank.sum(1, keepdim=True).clamp(min=1e-6)
    images = []
    for path in sorted(pathlib.Path(folder).rglob("*.wav")):
        with wave.open(str(path)) as file:
            samples = np.frombuffer(file.readframes(file.getnframes()), "<i2").astype(np.float32) / 32768
        signal = torch.from_numpy(np.resize(np.pad(samples, (0, max(0, frames * size // 4 - len(samples)))),
                                            frames * size // 4))
        with torch.inference_mode():
            images.append(features_of(signal, size, frames, bank, window))
    images = torch.stack(images)[:, None].clone()
    network = Network(mels, frames)
    for _ in range(steps):
        network.step(images[torch.randint(len(images), (BATCH,))], torch.randn(BATCH, LATENT))
    return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss


def make(work):
    name, *numbers = work.replace("x", ":").split(":")
    works = {"step": training_step, "decode": decode, "griffinlim": griffin_lim, "features": features,
             "variation": variation}
    return works[name](*map(int, numbers))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("work", nargs="+")
    parser.add_argument("--threads", type=int, default=2)
    parser.add_argument("--seconds", type=float, default=3.0)
    arguments = parser.parse_args()
    torch.manual_seed(0)
    torch.set_num_threads(arguments.threads)
    if arguments.work[0] == "train":
        print(json.dumps([train(arguments.work[1], int(arguments.work[2]))]))
        return
    run = make(arguments.work[0])
    for _ in range(2):
        run()
    times = []
    end = time.perf_counter() + arguments.seconds
    while time.perf_counter() < end or len(times) < 3:
        start = time.perf_counter()
        run()
        times.append((time.perf_counter() - start) * 1e3)
    print(json.dumps(times))


if __name__ == "__main__":
    main()
