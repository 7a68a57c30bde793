#!/usr/bin/env bash
# Builds and tests in a fresh system of a Debian release: scripts/test-in-release.sh bookworm|trixie [ctest arguments]
#
# scripts/debian-system.sh makes the system, for the next run, too. It sees this folder, read and write, and builds in a
# folder of its own. Needs root and some 4 GB. Takes as long as scripts/test.sh; the continuous build runs in one
# release only.
set -euo pipefail
cd "$(dirname "$0")/.."

system=$(QUILLMERE_CALLER=test-in-release.sh scripts/debian-system.sh "${1:-}")
shift
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
