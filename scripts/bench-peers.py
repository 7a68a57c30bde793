#!/usr/bin/env python3
"""Runs the product and the same work elsewhere in turns and prints figures and ratios.

usage: bench-peers.py RELEASE_BUILD OUTPUT.json [--rounds N] [--only TEXT]

Each round runs both sides of each row once, for a few seconds each. A row shows the median and the minimum over
all runs of all rounds, and the ratio peer / ours of the medians and of the minima; "spread" is half the distance
between the smallest and the largest ratio of the rounds' medians, in percent of their middle. Ratios hold only
for both sides measured on the same machine at the same time.
"""
import argparse
import atexit
import functools
import json
import math
import os
import random
import shutil
import statistics
import struct
import subprocess
import sys
import tempfile
import time
import wave
from pathlib import Path

PEERS = Path(__file__).resolve().parent.parent / "Benchmarks" / "peers"
TORCH = PEERS / "torch_peer.py"
RATE = 44100


# ---- What a side of a row runs: functions that return one figure per run.

def ours(program, name, processors=None):
    """Milliseconds of a benchmark; program is its path in the build folder."""

    def run(build):
        command = [build / "Benchmarks/QuillmereCore" / program, f"--benchmark_filter=^{name}$",
                   "--benchmark_format=json", "--benchmark_min_time=0.2", "--benchmark_repetitions=10"]
        if processors is not None:
            command = ["taskset", "--cpu-list", processors, *command]
        report = subprocess.run(command, capture_output=True, text=True, check=True).stdout
        scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}
        times = [b["real_time"] * scale[b["time_unit"]] for b in json.loads(report or "{}").get("benchmarks", [])
                 if b["run_type"] == "iteration"]
        if not times:
            sys.exit(f"bench-peers.py: {program} has no benchmark {name}")
        return times

    return run


def torch(*work):
    def run(_):
        command = [sys.executable, TORCH, *work, "--threads", "2"]
        return json.loads(subprocess.run(command, capture_output=True, text=True, check=True).stdout)

    return run


def numpy_detail(_):
    report = subprocess.run(["taskset", "--cpu-list", "0", sys.executable, PEERS / "detail_peer.py"], capture_output=True,
                            text=True, check=True).stdout
    return json.loads(report)


def beside_a_busy_process(work):
    """The same while another process keeps one core busy."""

    def run(build):
        with subprocess.Popen(["taskset", "--cpu-list", "1", sys.executable, "-c", "while True: pass"]) as busy:
            try:
                time.sleep(0.2)
                return work(build)
            finally:
                busy.kill()

    return run


def write_noise(path, samples, generator):
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(RATE)
        values = (int(32000 * math.exp(-n / 8000) * (2 * generator.random() - 1)) for n in range(samples))
        file.writeframes(struct.pack(f"<{samples}h", *values))


@functools.cache
def folder_of_clips(count, samples):
    """A folder of noise bursts, removed at the end; ten different ones, each copied."""
    folder = Path(tempfile.mkdtemp(prefix="quillmere-peers-"))
    atexit.register(shutil.rmtree, folder, ignore_errors=True)
    generator = random.Random(1)
    for i in range(count):
        path = folder / f"hit {i}.wav"
        if i < 10:
            write_noise(path, samples, generator)
        else:
            shutil.copyfile(folder / f"hit {i % 10}.wav", path)
    return folder


def ffprobe_each(_):
    """Milliseconds for the thousand files of the other side, two processes at a time."""
    folder = folder_of_clips(1000, RATE // 2)
    start = time.perf_counter()
    subprocess.run("find . -name '*.wav' -print0 | xargs -0 -n 1 -P 2 "
                   "ffprobe -v quiet -show_entries stream=sample_rate,duration -of csv=p=0",
                   shell=True, cwd=folder, stdout=subprocess.DEVNULL, check=True)
    return [(time.perf_counter() - start) * 1e3]


def largest_resident_set(command):
    """MiB."""
    child = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        sys.exit(f"bench-peers.py: {command} failed")
    return [usage.ru_maxrss / 1024]


TRAINING_CLIP = round(1.1 * RATE)  # 192 frames of 256 samples


def our_training_memory(build):
    with tempfile.TemporaryDirectory() as models:
        return largest_resident_set([build / "Sources/QuillmereCLI/quillmere-cli", "train",
                                     folder_of_clips(100, TRAINING_CLIP), "--steps", "20", "--analysis", "percussive",
                                     "--clip-seconds", "1.1", "--device", "cpu", "--models", models])


def torch_training_memory(_):
    return largest_resident_set([sys.executable, TORCH, "train", folder_of_clips(100, TRAINING_CLIP), "20",
                                 "--threads", "2"])


def training_step(size):
    return ours("Network/NetworkBenchmark", f"trainingStep/mels:{size[0]}/frames:{size[1]}/real_time")


# label, unit, our side, the peer's
ROWS = [
    ("training step, 96x192", "ms", training_step((96, 192)), torch("step:96x192")),
    ("training step, 384x96", "ms", training_step((384, 96)), torch("step:384x96")),
    ("training step, 96x192, AVX2", "ms",
     ours("Network/NetworkBenchmark", "trainingStepAVX2/mels:96/frames:192/real_time"), torch("step:96x192")),
    ("training step, busy core (peer: undisturbed)", "ms", beside_a_busy_process(training_step((96, 192))),
     training_step((96, 192))),
    ("decode of 16, 96x192", "ms", ours("Network/NetworkBenchmark", "decode16/mels:96/frames:192/real_time"),
     torch("decode:96x192")),
    ("decode of 16, 384x96", "ms", ours("Network/NetworkBenchmark", "decode16/mels:384/frames:96/real_time"),
     torch("decode:384x96")),
    ("Griffin-Lim 1024, 192 frames, one core", "ms",
     ours("DSP/GriffinLimBenchmark", "GriffinLim/reconstruct/nFFT:1024/frames:192/passes:48", "0"),
     torch("griffinlim:1024:192")),
    ("Griffin-Lim 4096, 96 frames, one core", "ms",
     ours("DSP/GriffinLimBenchmark", "GriffinLim/reconstruct/nFFT:4096/frames:96/passes:48", "0"),
     torch("griffinlim:4096:96")),
    ("variation, Balanced, 192 frames, one core", "ms",
     ours("Generate/GenerationBenchmark", "latentToFile/percussive/Balanced/real_time", "0"),
     torch("variation:1024:192:96")),
    ("variation with detail, 320 frames, one core", "ms",
     ours("Generate/DetailBenchmark", "detailed/percussive", "0"), numpy_detail),
    ("features of one clip, 192 frames, one core", "ms",
     ours("Model/FeaturesBenchmark", "FeatureExtractor/features/nFFT:1024/nMels:96/frames:192", "0"),
     torch("features:1024:192:96")),
    ("scan of 1,000 files (ffprobe for each)", "ms", ours("Model/CorpusBenchmark", "scan/2/real_time"), ffprobe_each),
    ("peak memory, 100 clips, 96x192", "MiB", our_training_memory, torch_training_memory),
]


def print_table(results):
    print(f"{'work':44} {'ours':>18} {'peer':>18} {'ratio':>16}")
    print(f"{'':44} {'median':>9}{'min':>9} {'median':>9}{'min':>9} {'median':>8}{'min':>8} {'spread':>7}")
    for row in results:
        a, b = sum(row["ours"], []), sum(row["peer"], [])
        rounds = [statistics.median(y) / statistics.median(x) for x, y in zip(row["ours"], row["peer"])]
        spread = (max(rounds) - min(rounds)) / (max(rounds) + min(rounds))
        print(f"{row['work'] + ', ' + row['unit']:44} {statistics.median(a):9.2f}{min(a):9.2f}"
              f" {statistics.median(b):9.1f}{min(b):9.1f}"
              f" {statistics.median(b) / statistics.median(a):7.2f}x{min(b) / min(a):7.2f}x {100 * spread:6.1f}%")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=Path)
    parser.add_argument("output")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--only", default="", help="rows whose label contains this")
    arguments = parser.parse_args()
    rows = [row for row in ROWS if arguments.only in row[0]]
    if not rows:
        sys.exit(f"bench-peers.py: no row contains '{arguments.only}'")
    results = [{"work": label, "unit": unit, "ours": [], "peer": []} for label, unit, *_ in rows]
    for _ in range(arguments.rounds):
        for result, (_, _, our_side, peer) in zip(results, rows):
            result["ours"].append(our_side(arguments.build))
            result["peer"].append(peer(arguments.build))
    print_table(results)
    with open(arguments.output, "w", encoding="utf-8") as file:
        json.dump(results, file)


if __name__ == "__main__":
    main()
