#!/usr/bin/env bash
# Draws the pictures of the guide anew, into docs/guide/pictures: what each parameter does to one sound. Learns the
# drum hits of the demo at standard quality for that, unless that model is stored already.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build demo pictures
source scripts/program.sh
build_program
corpus="build/demo/Drum Hits"
models=build/pictures/models
collect_drum_hits "$corpus"

"$cli" train "$corpus" --quality standard --models "$models"
# The system's Python, whose packages setup.sh installs.
/usr/bin/python3 scripts/draw-parameters.py --cli "$cli" --corpus "$corpus" --models "$models" --seed 9 \
    --output docs/guide/pictures
