#!/usr/bin/env bash
# Installs what is missing, builds everything (tests and benchmarks included) and runs every test.
# With --fast: builds and runs only the tests that are labelled fast, for work in between.
# Further arguments go to ctest, e.g. scripts/test.sh -R Corpus. Ends with ctest's summary.
set -euo pipefail
cd "$(dirname "$0")/.."

target=all
selection=()
if [[ ${1:-} == --fast ]]; then
    shift
    target=fast-tests
    selection=(--label-regex '^fast$')
fi

scripts/setup.sh build app test
cmake --preset release -D QUILLMERE_BUILD_APP=ON -D QUILLMERE_BUILD_TESTS=ON
cmake --build --preset release --target "$target"
exec ctest --preset release --parallel "$(nproc)" "${selection[@]}" "$@"
