#!/usr/bin/env python3
"""Runs the product's benchmarks and the same work in PyTorch in turns and prints times and ratios.

usage: bench-peers.py BENCHMARK_FOLDER OUTPUT.json [--rounds N] [--only TEXT]

Each round runs each side once for a few seconds. A row shows the median and the minimum over all runs of
all rounds, and the ratio peer / ours of the medians and of the minima. Ratios hold only for both sides
measured on the same machine at the same time.
"""
import argparse
import json
import os
import statistics
import subprocess
import sys

PEER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Benchmarks", "peers", "torch_peer.py")

# label, benchmark program, exact benchmark name, peer's work, processors ours may use
ROWS = [
    ("training step 96x192", "NetworkBenchmark", "trainingStep/mels:96/frames:192/real_time", "step:96x192", None),
    ("training step 384x96", "NetworkBenchmark", "trainingStep/mels:384/frames:96/real_time", "step:384x96", None),
    ("training step 96x192, AVX2", "NetworkBenchmark", "trainingStepAVX2/mels:96/frames:192/real_time",
     "step:96x192", None),
    ("decode of 16, 96x192", "NetworkBenchmark", "decode16/mels:96/frames:192/real_time", "decode:96x192", None),
    ("decode of 16, 384x96", "NetworkBenchmark", "decode16/mels:384/frames:96/real_time", "decode:384x96", None),
    ("Griffin-Lim 1024, 192 frames, one core", "GriffinLimBenchmark", "GriffinLim/reconstruct/nFFT:1024/frames:192/passes:48",
     "griffinlim:1024:192", "0"),
    ("Griffin-Lim 4096, 96 frames, one core", "GriffinLimBenchmark", "GriffinLim/reconstruct/nFFT:4096/frames:96/passes:48",
     "griffinlim:4096:96", "0"),
    ("features of one clip, 192 frames", "FeaturesBenchmark", "FeatureExtractor/features/nFFT:1024/nMels:96/frames:192",
     "features:1024:192:96", "0"),
]


def run_ours(folder, program, name, processors):
    path = subprocess.run(["find", folder, "-name", program, "-type", "f"], capture_output=True, text=True,
                          check=True).stdout.split()
    if not path:
        sys.exit(f"bench-peers.py: no program {program} below {folder}")
    command = [path[0], f"--benchmark_filter=^{name}$", "--benchmark_format=json", "--benchmark_min_time=0.2",
               "--benchmark_repetitions=10"]
    if processors is not None:
        command = ["taskset", "--cpu-list", processors] + command
    output = subprocess.run(command, capture_output=True, text=True, check=True).stdout
    scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}
    times = [b["real_time"] * scale[b["time_unit"]] for b in json.loads(output)["benchmarks"]
             if b["run_type"] == "iteration"]
    if not times:
        sys.exit(f"bench-peers.py: {program} has no benchmark {name}")
    return times


def run_peer(work):
    output = subprocess.run([sys.executable, PEER, work, "--threads", "2"], capture_output=True, text=True,
                            check=True).stdout
    return json.loads(output)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("output")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--only", default="")
    arguments = parser.parse_args()
    rows = [row for row in ROWS if arguments.only in row[0]]
    ours = {row[0]: [] for row in rows}
    peers = {row[0]: [] for row in rows}
    for _ in range(arguments.rounds):
        for label, program, name, work, processors in rows:
            ours[label] += run_ours(arguments.folder, program, name, processors)
            peers[label] += run_peer(work)

    print(f"{'work':42} {'ours ms':>16} {'PyTorch ms':>16} {'ratio':>14}")
    print(f"{'':42} {'median':>8}{'min':>8} {'median':>8}{'min':>8} {'median':>7}{'min':>7}")
    results = []
    for label, *_ in rows:
        a, b = ours[label], peers[label]
        median, least = statistics.median(b) / statistics.median(a), min(b) / min(a)
        print(f"{label:42} {statistics.median(a):8.2f}{min(a):8.2f} {statistics.median(b):8.1f}{min(b):8.1f}"
              f" {median:6.1f}x{least:6.1f}x")
        results.append({"work": label, "ours": a, "peer": b})
    with open(arguments.output, "w", encoding="utf-8") as file:
        json.dump(results, file)


if __name__ == "__main__":
    main()
