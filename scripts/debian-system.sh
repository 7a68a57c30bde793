#!/usr/bin/env bash
# Makes a fresh system of a Debian release, once, and prints its folder: scripts/debian-system.sh bookworm|trixie [NAME]
#
# With debootstrap, in $QUILLMERE_SYSTEMS/NAME (~/.cache/quillmere-systems; NAME is the release if none is given), from
# $QUILLMERE_MIRROR. It may be removed at any time. Needs root.
set -euo pipefail
cd "$(dirname "$0")/.."

die() {
    echo "${QUILLMERE_CALLER:-debian-system.sh}: $*" >&2
    exit 1
}

release=${1:-}
[[ $release == bookworm || $release == trixie ]] || die "name a release: bookworm or trixie"
(($(id -u) == 0)) || die "only root can change into another system"

system=${QUILLMERE_SYSTEMS:-$HOME/.cache/quillmere-systems}/${2:-$release}
scripts/setup.sh releases >&2
if [[ ! -e $system/complete ]]; then
    rm -rf --one-file-system "$system"
    mkdir -p "$system"
    debootstrap --variant=minbase "$release" "$system" "${QUILLMERE_MIRROR:-http://deb.debian.org/debian}" >&2
    touch "$system/complete"
fi
echo "$system"
