#!/usr/bin/env bash
# Builds the core and the command line for 64-bit ARM and tests them: scripts/test-arm64.sh [ctest arguments]
#
# With Debian's cross compiler, in a system of its own (scripts/debian-system.sh) that has the libraries of both
# machines, and under an emulator, which shows what the instructions compute and not how fast they are. Without arguments
# the reference vectors and the core's fast tests. QEMU_CPU is the processor that is emulated: cortex-a72 if it is not
# set; "max" has all that the emulator knows. QUILLMERE_JOBS says how many jobs to run at once, one per processor if it
# is not set. Needs root and some 3 GB.
set -euo pipefail
cd "$(dirname "$0")/.."

system=$(QUILLMERE_CALLER=test-arm64.sh scripts/debian-system.sh bookworm arm64)
cache=$(ccache --get-config cache_dir)
mkdir -p build "$cache" "$system/$PWD" "$system"/{build,ccache}
cp /etc/resolv.conf "$system/etc/"

# With mounts and processes of its own: both end with the last command.
unshare --mount --pid --fork --kill-child bash -euo pipefail -c '
    system=$1 project=$2 cache=$3
    shift 3
    mount --bind "$project" "$system/$project"
    mount --bind "$system/build" "$system/$project/build"
    mount --bind "$cache" "$system/ccache"
    mount --rbind /dev "$system/dev"
    mount -t proc proc "$system/proc"
    exec env --ignore-environment HOME=/root LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin \
        DEBIAN_FRONTEND=noninteractive CCACHE_DIR=/ccache CCACHE_BASEDIR="$project" \
        QEMU_CPU="${QEMU_CPU:-cortex-a72}" JOBS="${QUILLMERE_JOBS:-$(nproc)}" \
        chroot "$system" bash -euo pipefail -s "$project" "$@"
' test-arm64 "$system" "$PWD" "$cache" "$@" << 'INSIDE'
cd "$1"
shift
apt() {
    apt-get -qq -o Dpkg::Use-Pty=0 "$@" < /dev/null > /var/log/test-arm64 2>&1 || { cat /var/log/test-arm64; exit 1; }
}

# Of what building and testing takes, libraries are for the other machine, and what runs while building is for this one.
if [[ ! -e /installed ]]; then
    dpkg --add-architecture arm64
    apt update
    packages=()
    for package in $(scripts/setup.sh --list build arm64) $(scripts/setup.sh --list test | grep '^lib.*-dev$'); do
        [[ $package != g++ ]] || continue
        [[ $package != lib*-dev || $(apt-cache show --no-all-versions "$package") == *'Architecture: all'* ]] ||
            package+=:arm64
        packages+=("$package")
    done
    apt install --yes --no-install-recommends "${packages[@]}"
    touch /installed
fi

cmake --preset arm64 > build/configured.log || { cat build/configured.log; exit 1; }

# build TARGET...
build() {
    cmake --build --preset arm64 --parallel "$JOBS" --target "$@"
}
# run CTEST-ARGUMENT...
run() {
    ctest --preset arm64 --parallel "$JOBS" "$@"
}
# The core's tests that have been built, a program at a time instead of a case: to start one costs the emulator more than
# most cases take. Without those that start themselves again, to die: the system does not know the emulator.
run_programs() {
    export VK_ICD_FILENAMES=none LC_ALL=C.UTF-8 LANGUAGE='' GTEST_BRIEF=1 GTEST_FILTER='-*DeathTest*'
    local program said failed=0
    while read -r program; do
        said=$(cd "${program%/*}" && qemu-aarch64 "./${program##*/}" 2>&1 < /dev/null) || failed=1
        echo "${program##*/}: $said"
    done < <(find build/arm64/Tests/QuillmereCore -type f -executable -name '*Test' | sort)
    return "$failed"
}

build GoldenTest quillmere-cli
echo "vector code for:" $(aarch64-linux-gnu-nm --demangle build/arm64/Sources/QuillmereCore/libQuillmereCore.a |
    grep --only-matching '\bN_[A-Z0-9_]*' | sort --unique)
if (($#)); then
    build fast-core-tests
    run "$@"
else
    run --tests-regex '^GoldenTest$'
    build fast-core-tests
    run_programs
fi
INSIDE
