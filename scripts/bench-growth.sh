#!/usr/bin/env bash
# Measures how the cost grows with the size of the work (a few minutes), writes the figures to build/growth.json
# and draws the plots of docs/performance.md from them.
# usage: scripts/bench-growth.sh [--draw-only]
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build test pictures
if [[ ${1:-} != --draw-only ]]; then
    cmake --preset release > /dev/null
    cmake --build --preset release --target GrowthBenchmark PeakBenchmark
    results=$(mktemp -d)
    trap 'rm -rf "$results"' EXIT
    for subject in step generate phases features scan prepare; do
        build/release/Benchmarks/QuillmereCore/GrowthBenchmark --benchmark_filter="^$subject/" \
            --benchmark_out="$results/$subject.json" --benchmark_out_format=json
    done
    build/release/Benchmarks/QuillmereCore/Network/PeakBenchmark \
        --benchmark_out="$results/peak.json" --benchmark_out_format=json
    scripts/bench-summary.py build/growth.json "$results"/*.json > /dev/null
fi
# The system's Python, whose packages setup.sh installs.
/usr/bin/python3 scripts/draw-growth.py build/growth.json docs/pictures
