#!/usr/bin/env bash
# Builds and tests in a fresh system of a Debian release: scripts/test-in-release.sh bookworm|trixie [ctest arguments]
#
# The system is made with debootstrap in $QUILLMERE_SYSTEMS (~/.cache/quillmere-systems), reused by the next run, and
# may be removed at any time. It sees this folder, read and write, and builds in a folder of its own. Needs root and
# some 4 GB. Takes as long as scripts/test.sh; the continuous build runs in one release only.
set -euo pipefail
cd "$(dirname "$0")/.."

die() {
    echo "test-in-release.sh: $*" >&2
    exit 1
}

release=${1:-}
[[ $release == bookworm || $release == trixie ]] || die "name a release: bookworm or trixie"
shift
(($(id -u) == 0)) || die "only root can change into another system"

system=${QUILLMERE_SYSTEMS:-$HOME/.cache/quillmere-systems}/$release
scripts/setup.sh releases
if [[ ! -e $system/complete ]]; then
    rm -rf --one-file-system "$system"
    mkdir -p "$system"
    debootstrap --variant=minbase "$release" "$system" "${QUILLMERE_MIRROR:-http://deb.debian.org/debian}"
    touch "$system/complete"
fi
cache=$(ccache --get-config cache_dir)
mkdir -p build "$cache" "$system/$PWD" "$system"/{build,ccache}
cp /etc/resolv.conf "$system/etc/"

# With mounts and processes of its own: both end with the last command.
exec unshare --mount --pid --fork --kill-child bash -euo pipefail -c '
    system=$1 project=$2 cache=$3
    shift 3
    mount --bind "$project" "$system/$project"
    mount --bind "$system/build" "$system/$project/build"
    mount --bind "$cache" "$system/ccache"
    mount --rbind /dev "$system/dev"
    mount --rbind /sys "$system/sys"
    mount -t proc proc "$system/proc"
    exec env --ignore-environment HOME=/root LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin CCACHE_DIR=/ccache \
        chroot "$system" "$project/scripts/test.sh" "$@"
' test-in-release "$system" "$PWD" "$cache" "$@"
