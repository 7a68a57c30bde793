#!/usr/bin/env bash
# Draws the pictures of the documents anew, into docs/pictures: learns the drum hits of the demo at standard
# quality, unless that model is stored already, and shows some of them next to what the model makes of them.
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
draw() {
    /usr/bin/python3 scripts/draw-spectrograms.py --cli "$cli" --corpus "$corpus" --models "$models" \
        --clips bd_haus.flac sn_dub.flac drum_cymbal_closed.flac perc_bell.flac "$@"
}
draw --output docs/pictures/spectrograms.png
draw --detail 0 1 --output docs/pictures/detail.png
