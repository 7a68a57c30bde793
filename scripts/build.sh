#!/usr/bin/env bash
# Builds everything in other ways than the tests are run, each a preset of CMake, every warning an error:
# clang (the other compiler), no-vulkan (without graphics processors), no-window (without the application).
# All three, or those that are named. With --programs as the first argument: the two programs without the tests.
set -euo pipefail
cd "$(dirname "$0")/.."

programs_only=
if [[ ${1:-} == --programs ]]; then
    shift
    programs_only=yes
fi
(($#)) || set -- clang no-vulkan no-window

scripts/setup.sh build app test lint
for preset in "$@"; do
    printf '\n== %s\n' "$preset"
    app=(-D QUILLMERE_BUILD_APP=ON)
    targets=(quillmere-cli quillmere)
    if [[ $preset == no-window ]]; then
        app=()
        targets=(quillmere-cli)
    fi
    [[ -n $programs_only ]] || targets=(all)
    cmake --preset "$preset" -D QUILLMERE_BUILD_TESTS=ON "${app[@]}"
    cmake --build --preset "$preset" --target "${targets[@]}"
done
