#!/usr/bin/env bash
# Tries inputs of all kinds on everything that reads what others wrote, each target of Tests/Fuzz for so many seconds
# (60 unless told otherwise), as many targets at once as there are processors. What it learns stays in
# build/fuzz/corpus for the next time. An input that ends a target is kept in build/fuzz/found: mend what it shows, and
# add it, as small as it can be made, to Tests/Fuzz/Corpus.
#
# scripts/fuzz.sh [SECONDS [TARGET...]]
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
targets=("${@:2}")
((${#targets[@]})) || targets=(audio model parameters recipes names catalogues)

scripts/setup.sh build sanitize
cmake --preset asan -D QUILLMERE_BUILD_TESTS=ON
cmake --build --preset asan --target "${targets[@]/#/fuzz-}"
export ASAN_OPTIONS=allocator_may_return_null=0:detect_leaks=0
export UBSAN_OPTIONS=print_stacktrace=1
mkdir -p build/fuzz/found

# try_inputs TARGET
try_inputs() {
    local target=$1 status=0
    local seeds=("Tests/Fuzz/Corpus/$target")
    [[ $target == audio ]] && seeds+=(Tests/Data/Audio)
    mkdir -p "build/fuzz/corpus/$target"
    build/asan/Tests/Fuzz/fuzz-"$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -max_len=16384 \
        -print_final_stats=1 -artifact_prefix="build/fuzz/found/$target-" "build/fuzz/corpus/$target" "${seeds[@]}" \
        2> "build/fuzz/$target.log" || status=1
    local told
    told=$(grep -E '^(==[0-9]+==|SUMMARY|stat::(number_of_executed_units|peak_rss_mb))|DONE' "build/fuzz/$target.log") ||
        told="(nothing)"
    printf '\n== %s\n%s\n' "$target" "$told"
    return $status
}
export -f try_inputs
export seconds
printf '%s\n' "${targets[@]}" | xargs --max-procs="$(nproc)" --replace bash -c 'try_inputs {}'
