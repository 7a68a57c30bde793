#!/usr/bin/env bash
# Takes the pictures of the window in every state for docs/pictures (app-*.png), and makes a film of four of them: some
# minutes. Arguments: beginnings of names, for only these pictures. With --language LANGUAGE first: that of the window,
# and the pictures go to build/pictures/LANGUAGE.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build app test pictures
cmake --preset dev -DQUILLMERE_BUILD_APP=ON > /dev/null
cmake --build --preset dev --target quillmere-pictures

pictures=build/dev/Tests/QuillmereApp/qml/quillmere-pictures
if [[ ${1:-} == --language ]]; then
    "$pictures" --language "$2" "build/pictures/$2" "${@:3}"
    exit
fi
# In the English of an English desktop, not in that of the sources.
"$pictures" --language en docs/pictures "$@"

# One window on a screen of 3840 x 2160 pixels.
if (($# == 0)); then
    folder=$(mktemp -d)
    trap 'rm -rf "$folder"' EXIT
    QT_SCALE_FACTOR=2 "$pictures" --language en "$folder" results-1080p
    convert "$folder/app-results-1080p.png" -strip +dither -colors 255 PNG8:docs/pictures/app-results-4k.png
fi

# From a folder to a sound that is kept.
cd docs/pictures
convert -delay 250 -loop 0 app-untrained-dark.png app-candidates-dark.png app-inspector-dark.png app-kept-dark.png \
    +dither -layers Optimize app-film.gif
