#!/usr/bin/env bash
# Measures the network on a graphics processor: step, encode and decode, the time of every operation of a step, the
# step's time for many tiles, and the same work in PyTorch's CUDA build where that is installed. Everything is
# printed and kept in build/bench-gpu.txt.
#
#   scripts/bench-gpu.sh [DEVICE]     (as for --device; the first real graphics processor, if none is named)
set -euo pipefail
cd "$(dirname "$0")/.."
device=${1:-gpu}

scripts/setup.sh build test
cmake --preset release -D QUILLMERE_VULKAN=ON > /dev/null
cmake --build --preset release --target VulkanBenchmark VulkanProfile quillmere-cli
programs=build/release/Benchmarks/QuillmereCore/Network

measure() {
    build/release/Sources/QuillmereCLI/quillmere-cli devices
    printf '\n== Step, encode, decode\n'
    QUILLMERE_BENCHMARK_DEVICE=$device "$programs/VulkanBenchmark"
    for size in '96 192' '384 96'; do
        read -r mels frames <<< "$size"
        printf '\n== Operations of a step, %s x %s\n' "$mels" "$frames"
        "$programs/VulkanProfile" --device "$device" --mels "$mels" --frames "$frames"
        printf '\n== Tiles, %s x %s\n' "$mels" "$frames"
        "$programs/VulkanProfile" --device "$device" --mels "$mels" --frames "$frames" --tiles
    done
    printf '\n== PyTorch\n'
    if python3 -c 'import sys, torch; sys.exit(not torch.cuda.is_available())' 2> /dev/null; then
        python3 Benchmarks/peers/torch_gpu_peer.py
        python3 Benchmarks/peers/torch_gpu_peer.py --tf32
    else
        echo "There is no PyTorch with CUDA here."
    fi
}
measure 2>&1 | tee build/bench-gpu.txt
