#!/usr/bin/env python3
"""The training step, encode and decode in PyTorch on a graphics card, for comparison. Prints a table.

usage: torch_gpu_peer.py [--device cuda] [--steps N] [--tf32]

Ways: eager (channels first), channels_last, and channels_last with the whole step captured as one graph. As in the
product, every step copies images and noise to the card and reads the loss back. On cards that have it, TF32 is
off unless asked for: the product computes in single precision.
"""
import argparse
import statistics
import time

import torch
import torch.nn.functional as F

from torch_peer import BATCH, LATENT, Network


class CardNetwork(Network):
    """The same network with a choice of memory format, and a step without a wait in it."""

    def __init__(self, height, width, device, memory_format):
        super().__init__(height, width)
        self.format = memory_format
        with torch.no_grad():
            for parameter in self.parameters:
                layout = memory_format if parameter.dim() == 4 else torch.contiguous_format
                parameter.data = parameter.data.to(device, memory_format=layout)
        self.first = [torch.zeros_like(p) for p in self.parameters]
        self.second = [torch.zeros_like(p) for p in self.parameters]

    def encode(self, x):
        h = x.to(memory_format=self.format)
        for weight, bias in self.encoder:
            h = F.silu(F.conv2d(h, weight, bias, stride=2, padding=1))
        flat = h.reshape(h.shape[0], -1)
        mean = flat @ self.mean[0] + self.mean[1]
        return mean, (flat @ self.log_var[0] + self.log_var[1]).clamp(-12, 6)

    def decode(self, z):
        h = F.silu(z @ self.dense[0] + self.dense[1]).view(z.shape[0], 192, *self.deep)
        h = h.to(memory_format=self.format)
        for weight, bias in self.decoder:
            h = F.silu(F.conv2d(F.interpolate(h, scale_factor=2, mode="nearest"), weight, bias, padding=1))
        return F.conv2d(h, *self.output, padding=1)

    def update(self, x, eps, scalars, rate=1e-4, kl_weight=0.002):
        """One step; leaves loss, mse and kl in scalars."""
        mean, log_var = self.encode(x)
        difference = self.decode(mean + torch.exp(0.5 * log_var) * eps) - x
        mse = (difference * difference * (1 + 3 * (x > -0.95).to(x.dtype))).mean()
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
            scalars.copy_(torch.stack([loss, mse, kl]))


class Step:
    def __init__(self, network, height, width, device):
        on_card = device != "cpu"
        self.network = network
        self.host = [torch.rand(BATCH, 1, height, width) * 2 - 1, torch.randn(BATCH, LATENT)]
        if on_card:
            self.host = [tensor.pin_memory() for tensor in self.host]
        self.inputs = [tensor.to(device) for tensor in self.host]
        self.scalars = torch.zeros(3, device=device)
        self.graph = None

    def capture(self):
        stream = torch.cuda.Stream()
        stream.wait_stream(torch.cuda.current_stream())
        with torch.cuda.stream(stream):
            for _ in range(3):
                self.network.update(*self.inputs, self.scalars)
        torch.cuda.current_stream().wait_stream(stream)
        self.graph = torch.cuda.CUDAGraph()
        with torch.cuda.graph(self.graph):
            self.network.update(*self.inputs, self.scalars)

    def __call__(self):
        for host, tensor in zip(self.host, self.inputs):
            tensor.copy_(host, non_blocking=True)
        if self.graph:
            self.graph.replay()
        else:
            self.network.update(*self.inputs, self.scalars)
        return self.scalars.tolist()


def inference(function, values):
    def run():
        with torch.inference_mode():
            result = function(values)
            return (result[0] if isinstance(result, tuple) else result).cpu()

    return run


def median(run, steps):
    for _ in range(5):
        run()
    times = []
    for _ in range(steps):
        start = time.perf_counter()
        run()
        times.append((time.perf_counter() - start) * 1e3)
    return statistics.median(times)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--device", default="cuda")
    parser.add_argument("--steps", type=int, default=50)
    parser.add_argument("--tf32", action="store_true")
    arguments = parser.parse_args()
    torch.backends.cudnn.benchmark = True
    torch.backends.cudnn.allow_tf32 = torch.backends.cuda.matmul.allow_tf32 = arguments.tf32
    name = torch.cuda.get_device_name() if arguments.device != "cpu" else "CPU"
    print(f"PyTorch {torch.__version__} on {name}, TF32 {'on' if arguments.tf32 else 'off'}")
    for height, width in ((96, 192), (384, 96)):
        for way in ("eager", "channels_last", "graph"):
            if way == "graph" and arguments.device == "cpu":
                continue
            torch.manual_seed(0)
            layout = torch.contiguous_format if way == "eager" else torch.channels_last
            network = CardNetwork(height, width, arguments.device, layout)
            step = Step(network, height, width, arguments.device)
            if way == "graph":
                step.capture()
            line = f"{height}x{width} {way:14} step {median(step, arguments.steps):8.3f} ms"
            if way != "graph":
                x, z = step.inputs
                line += f"  encode {median(inference(network.encode, x), arguments.steps):8.3f} ms"
                line += f"  decode {median(inference(network.decode, z), arguments.steps):8.3f} ms"
            print(line, flush=True)


if __name__ == "__main__":
    main()
