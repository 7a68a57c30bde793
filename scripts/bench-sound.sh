#!/usr/bin/env bash
# Measures how good new sounds are (docs/sound.md): learns each corpus with every fourth sample held out, generates sets
# with and without detail, and writes build/sound/sound.html with players, sound.md and sound.json.
#
#   scripts/bench-sound.sh [--qualities quick,standard] [--presets Balanced,Wild] [--count N] [CORPUS...]
#
# A corpus is a folder of samples. Without one: 72 drum hits of sonic-pi-samples and every fourth one-shot of
# hydrogen-drumkits. On two processors each takes some minutes; models are kept in build/sound. See bench-sound.py for
# the other options.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build demo sound
source scripts/program.sh
build_program
cmake --build --preset release --target quillmere-soundcheck

options=()
corpora=()
while (($# > 0)); do
    case $1 in
        --no-baselines) options+=("$1") ;;
        --*) options+=("$1" "$2") && shift ;;
        *) corpora+=("$1") ;;
    esac
    shift
done
if ((${#corpora[@]} == 0)); then
    corpora=("build/sound/corpora/Drum Hits" "build/sound/corpora/Kits")
    collect_drum_hits "${corpora[0]}"
    collect_kits "${corpora[1]}"
fi
# The system's Python, whose packages setup.sh installs.
/usr/bin/python3 scripts/bench-sound.py build/release build/sound "${corpora[@]}" "${options[@]}"
