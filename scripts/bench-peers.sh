#!/usr/bin/env bash
# Compares the product's speed with the same work elsewhere (PyTorch's CPU build, NumPy, ffprobe), both measured in
# turns on this machine. Prints medians, minima and ratios; all figures go to build/bench-peers.json.
# Arguments go to bench-peers.py, e.g. --rounds 5 --only step.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build test peers
cmake --preset release > /dev/null
cmake --build --preset release
/usr/bin/python3 scripts/bench-peers.py build/release build/bench-peers.json "$@"
