#!/usr/bin/env bash
# Builds and runs tests under the sanitizers: asan (addresses and undefined behaviour), then tsan (threads), or the one
# that is named; all tests, or the core library's alone, which need no window; with --fast only those labelled fast.
# Further arguments go to ctest.
#
# scripts/sanitize.sh [asan|tsan] [core|all] [--fast] [ctest arguments]
#
# The thread sanitizer leaves out the programs with a whole desktop below them: GLib's and D-Bus's own threads
# are not instrumented and drown it in reports. The application's own threads belong to AppModel and its parts,
# whose tests stay. Its die_after_fork=0 is for copies that libraries make of a test that has threads, on
# their way to another program.
set -euo pipefail
cd "$(dirname "$0")/.."

presets=(asan tsan)
if [[ ${1:-} == asan || ${1:-} == tsan ]]; then
    presets=("$1")
    shift
fi
app=ON
target=all
selection=()
if [[ ${1:-} == core ]]; then
    app=OFF
    target=core-tests
    selection=(--label-regex '^core$')
fi
if [[ ${1:-} == core || ${1:-} == all ]]; then
    shift
fi
# Labels are those that a test must have: core and fast, when both are given.
if [[ ${1:-} == --fast ]]; then
    shift
    target=fast-${target/#all/tests}
    selection+=(--label-regex '^fast$')
fi

packages=(build test sanitize)
[[ $app == OFF ]] || packages+=(app)
scripts/setup.sh "${packages[@]}"
for preset in "${presets[@]}"; do
    printf '\n== %s\n' "$preset"
    cmake --preset "$preset" -D QUILLMERE_BUILD_APP="$app" -D QUILLMERE_BUILD_TESTS=ON
    cmake --build --preset "$preset" --target "$target"
    desktop=()
    [[ $preset == tsan ]] && desktop=(--exclude-regex '^(Window\.|AppProgramTest|EndToEnd|AppearanceTest|DragTest|MapPointerTest)')
    ctest --preset "$preset" --parallel "$(nproc)" "${selection[@]}" "${desktop[@]}" "$@"
done
