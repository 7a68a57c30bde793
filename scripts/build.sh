#!/usr/bin/env bash
# Builds everything in other ways than the tests are run, each a preset of CMake, every warning an error:
# clang (the other compiler), no-vulkan (without graphics processors), no-window (without the application).
# All three, or those that are named.
set -euo pipefail
cd "$(dirname "$0")/.."

(($#)) || set -- clang no-vulkan no-window

scripts/setup.sh build app test lint
for preset in "$@"; do
    printf '\n== %s\n' "$preset"
    app=(-D QUILLMERE_BUILD_APP=ON)
    [[ $preset == no-window ]] && app=()
    cmake --preset "$preset" -D QUILLMERE_BUILD_TESTS=ON "${app[@]}"
    cmake --build --preset "$preset"
done
