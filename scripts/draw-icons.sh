#!/usr/bin/env bash
# Draws the icons of Packaging/icons from Packaging/quillmere.svg and, where that would blur, quillmere-small.svg. The
# one of 128 pixels is Packaging/quillmere.png, which the window has within it, too.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh pictures
mkdir -p Packaging/icons
for size in 16 22 24 32 48 64 96 128 256 512; do
    drawing=quillmere
    ((size > 24)) || drawing=quillmere-small
    icon=icons/quillmere-$size.png
    ((size != 128)) || icon=quillmere.png
    rsvg-convert --width=$size --height=$size --output=Packaging/$icon Packaging/$drawing.svg
done
