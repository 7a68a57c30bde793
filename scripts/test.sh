#!/usr/bin/env bash
# Installs what is missing, builds everything (tests and benchmarks included) and runs every test.
# Further arguments go to ctest, e.g. scripts/test.sh -R Corpus. Ends with ctest's summary.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build app test
cmake --preset release -D QUILLMERE_BUILD_APP=ON -D QUILLMERE_BUILD_TESTS=ON
cmake --build --preset release
exec ctest --preset release --parallel "$(nproc)" "$@"
