#!/usr/bin/env bash
# Tries inputs of all kinds on everything that reads what others wrote, each target of Tests/Fuzz for so many seconds
# (60 unless told otherwise), as many targets at once as there are processors. What it learns stays in
# build/fuzz/corpus for the next time. An input that ends a target is kept in build/fuzz/found: mend what it shows, and
# add it, as small as it can be made, to Tests/Fuzz/Corpus.
#
# With --ffmpeg as the first argument the samples alone, and FFmpeg's own libraries, built for that from Debian's source,
# are watched by the sanitizer, too: it sees what goes wrong inside of them, and the fuzzer which of their code it has
# reached. That is for hours; building takes some minutes.
#
# scripts/fuzz.sh [--ffmpeg] [SECONDS [TARGET...]]
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/asan
all=(audio model parameters recipes names catalogues)
configure=(-D QUILLMERE_BUILD_TESTS=ON)
groups=(build sanitize)
if [[ ${1:-} == --ffmpeg ]]; then
    shift
    build=build/asan-ffmpeg
    all=(audio)
    groups+=(tarball)
fi
seconds=${1:-60}
targets=("${@:2}")
((${#targets[@]})) || targets=("${all[@]}")

scripts/setup.sh "${groups[@]}"
export ASAN_OPTIONS=allocator_may_return_null=0:detect_leaks=0
export UBSAN_OPTIONS=print_stacktrace=1
if [[ $build == build/asan-ffmpeg ]]; then
    place=$PWD/build/ffmpeg-sanitized
    # Without assembly, in which the sanitizer sees nothing.
    scripts/build-ffmpeg.sh "$place" --prefix="$place/installed" --cc=clang --disable-asm --disable-stripping \
        --extra-cflags='-g1 -fsanitize=address,fuzzer-no-link' --extra-ldflags='-fsanitize=address'
    export PKG_CONFIG_PATH=$place/installed/lib/pkgconfig
    configure+=(-D QUILLMERE_BUILD_APP=OFF)
fi
cmake --preset asan -B "$build" "${configure[@]}"
cmake --build "$build" --target "${targets[@]/#/fuzz-}"
mkdir -p build/fuzz/found

# try_inputs TARGET
try_inputs() {
    local target=$1 status=0
    local seeds=("Tests/Fuzz/Corpus/$target")
    [[ $target == audio ]] && seeds+=(Tests/Data/Audio)
    mkdir -p "build/fuzz/corpus/$target"
    "$build/Tests/Fuzz/fuzz-$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -max_len=16384 \
        -print_final_stats=1 -artifact_prefix="build/fuzz/found/$target-" "build/fuzz/corpus/$target" "${seeds[@]}" \
        2> "build/fuzz/$target.log" || status=1
    local told
    told=$(grep -E '^(==[0-9]+==|SUMMARY|stat::(number_of_executed_units|peak_rss_mb))|DONE' "build/fuzz/$target.log") ||
        told="(nothing)"
    printf '\n== %s\n%s\n' "$target" "$told"
    return $status
}
export -f try_inputs
export seconds build
printf '%s\n' "${targets[@]}" | xargs --max-procs="$(nproc)" --replace bash -c 'try_inputs {}'
