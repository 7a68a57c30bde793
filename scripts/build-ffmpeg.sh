#!/usr/bin/env bash
# Builds FFmpeg from the source package of this Debian release, by Packaging/ffmpeg.options, and installs it below
# FOLDER/installed: scripts/build-ffmpeg.sh FOLDER [OPTION...]
#
# The options go to FFmpeg's configure. It knows itself as being in /usr, to be packed, unless one of them is a --prefix.
# Nothing of the system's changes, its lists of packages neither. What is there is kept as long as all options are the
# same.
set -euo pipefail
cd "$(dirname "$0")/.."

place=$1
shift
# shellcheck source=/dev/null
release=$(. /etc/os-release && echo "$VERSION_CODENAME")

if [[ ! -d $place/source ]]; then
    apt=$place/apt
    mkdir -p "$apt"/{lists/partial,cache/archives/partial}
    echo "deb-src ${QUILLMERE_MIRROR:-http://deb.debian.org/debian} $release main" > "$apt/sources.list"
    own=(-qq -o "Dir::Etc::SourceList=$apt/sources.list" -o Dir::Etc::SourceParts=- -o "Dir::State::Lists=$apt/lists"
        -o "Dir::Cache=$apt/cache" -o APT::Sandbox::User=)
    apt-get "${own[@]}" update
    (cd "$place" && apt-get "${own[@]}" source ffmpeg)
    mv "$place"/ffmpeg-*/ "$place/source"
fi

mapfile -t options < <(grep '^--' Packaging/ffmpeg.options)
options+=("$@")
destination=()
if [[ $* != *--prefix=* ]]; then
    options+=(--prefix=/usr)
    destination=("DESTDIR=$place/installed")
fi
wanted=$(printf '%s\n' "${options[@]}")
[[ ! -f $place/built || $(< "$place/built") != "$wanted" ]] || exit 0
rm -rf "$place"/{build,installed,built}
mkdir "$place/build"
(
    cd "$place/build"
    ../source/configure "${options[@]}"
    make --jobs="${QUILLMERE_JOBS:-$(nproc)}"
    make install "${destination[@]}"
) > "$place/log" 2>&1 || { tail --lines=30 "$place/log"; echo "build-ffmpeg.sh: FFmpeg could not be built" >&2; exit 1; }
printf '%s\n' "$wanted" > "$place/built"
