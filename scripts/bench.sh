#!/usr/bin/env bash
# Builds the benchmarks, runs them one after the other, prints their tables and writes all figures to
# build/bench.json. Arguments go to every benchmark program, e.g. --benchmark_filter=STFT. How the cost grows is
# measured by bench-growth.sh.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build test
cmake --preset release -D QUILLMERE_BUILD_TESTS=ON > /dev/null
cmake --build --preset release

results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
mapfile -t programs < <(find build/release/Benchmarks -type f -name '*Benchmark' ! -name GrowthBenchmark -executable | sort)
for program in "${programs[@]}"; do
    name=$(basename "$program")
    printf '\n== %s\n' "$name"
    "$program" --benchmark_out="$results/$name.json" --benchmark_out_format=json "$@"
done
scripts/bench-summary.py build/bench.json "$results"/*.json
