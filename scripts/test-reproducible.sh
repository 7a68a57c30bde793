#!/usr/bin/env bash
# Builds the Debian package of the last commit twice and compares the bytes.
#
# In two clones in folders of other names ($TMPDIR), with other time zones, languages and masks of permissions. A
# compiler's cache would hide what the folder's name does to a program: without CCACHE_DISABLE=0 there is none. Takes as
# long as two builds of the programs.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build app package
place=$(mktemp --directory)
trap 'rm -rf "$place"' EXIT
export CCACHE_DISABLE=${CCACHE_DISABLE:-1}
[[ $CCACHE_DISABLE != 0 ]] || unset CCACHE_DISABLE

# build FOLDER TZ LANGUAGE MASK
build() {
    git clone --quiet --no-local . "$place/$1"
    (
        umask "$4"
        cd "$place/$1"
        TZ=$2 LC_ALL=$3 scripts/package.sh > "$place/$1.log" 2>&1
    ) || { tail --lines=50 "$place/$1.log"; exit 1; }
}
build one UTC C 022
build somewhere-else Pacific/Kiritimati C.UTF-8 002
packages=("$place"/*/build/package/quillmere_*.deb)
sha256sum "${packages[@]}"
cmp "${packages[@]}" && echo "The same ${packages[0]##*/}, $(stat --format=%s "${packages[0]}") bytes."
