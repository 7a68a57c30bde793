#!/usr/bin/env bash
# From a clean clone to new drum sounds: installs what is missing, builds the command line, learns the 72 drum
# hits of Debian's sonic-pi-samples (CC0) and writes eight variations each of two presets to ./demo-output.
set -euo pipefail
cd "$(dirname "$0")/.."

source scripts/program.sh
output=demo-output
corpus="build/demo/Drum Hits"
models=build/demo/models

phases=()
started=$SECONDS
phase_done() {
    phases+=("$(printf '%-10s %4d s' "$1" $((SECONDS - started)))")
    started=$SECONDS
}
heading() {
    printf '\n== %s\n' "$*"
}

heading "Installing what is missing"
scripts/setup.sh build demo
phase_done "set-up"

heading "Building"
build_program
phase_done "build"

heading "Collecting 72 drum hits in $corpus"
collect_drum_hits "$corpus"
"$cli" scan "$corpus" --models "$models"
phase_done "corpus"

heading "Learning"
"$cli" train "$corpus" --quality quick --models "$models"
phase_done "learning"

for preset in Balanced Wild; do
    heading "Generating: $preset"
    "$cli" generate "$corpus" --output "$output" --count 8 --preset "$preset" --prefix "Drum Hits $preset" \
        --models "$models"
    phase_done "$preset"
done

heading "Done"
echo "Learned $(find "$corpus" -type f | wc -l) drum hits at quality Quick and wrote 8 variations each of Balanced and Wild."
printf '  %s\n' "${phases[@]}"
echo "The new sounds are in $PWD/$output"
