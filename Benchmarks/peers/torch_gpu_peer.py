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

from torch_peer import BATCH, LATENT, Network


def move(network, device):
    """The network's parameters to the card, in its memory layout."""
    for parameter in network.parameters:
        layout = network.layout if parameter.dim() == 4 else torch.contiguous_format
        parameter.data = parameter.data.to(device, memory_format=layout)
    network.first = [torch.zeros_like(p) for p in network.parameters]
    network.second = [torch.zeros_like(p) for p in network.parameters]
    return network


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

    def update(self):
        self.scalars.copy_(torch.stack(self.network.update(*self.inputs)))

    def capture(self):
        stream = torch.cuda.Stream()
        stream.wait_stream(torch.cuda.current_stream())
        with torch.cuda.stream(stream):
            for _ in range(3):
                self.update()
        torch.cuda.current_stream().wait_stream(stream)
        self.graph = torch.cuda.CUDAGraph()
        with torch.cuda.graph(self.graph):
            self.update()

    def __call__(self):
        for host, tensor in zip(self.host, self.inputs):
            tensor.copy_(host, non_blocking=True)
        if self.graph:
            self.graph.replay()
        else:
            self.update()
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
            network = move(Network(height, width, layout), arguments.device)
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
