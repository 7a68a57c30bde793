#!/usr/bin/env bash
# Builds and runs every test under the sanitizers: asan (addresses and undefined behaviour), then tsan
# (threads). Name one of them to run it alone, and then "core" for the core library's tests alone; further arguments
# go to ctest.
#
# The thread sanitizer leaves out the programs with a whole desktop below them: GLib's and D-Bus's own threads
# are not instrumented and drown it in reports. The application's own threads belong to AppModel and its parts,
# whose tests stay.
set -euo pipefail
cd "$(dirname "$0")/.."

presets=(asan tsan)
if [[ ${1:-} == asan || ${1:-} == tsan ]]; then
    presets=("$1")
    shift
fi
target=all
selection=()
if [[ ${1:-} == core ]]; then
    shift
    target=core-tests
    selection=(--label-regex '^core$')
fi

scripts/setup.sh build app test
for preset in "${presets[@]}"; do
    printf '\n== %s\n' "$preset"
    cmake --preset "$preset" -D QUILLMERE_BUILD_APP=ON
    cmake --build --preset "$preset" --target "$target"
    desktop=()
    [[ $preset == tsan ]] && desktop=(--exclude-regex '^(Window\.|AppProgramTest|EndToEnd|AppearanceTest)')
    ctest --preset "$preset" --parallel "$(nproc)" "${selection[@]}" "${desktop[@]}" "$@"
done
