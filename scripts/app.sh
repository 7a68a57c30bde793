#!/usr/bin/env bash
# Installs what is missing, builds the desktop application and opens its window. A folder as argument is opened
# as the corpus.
set -euo pipefail
project=$(cd "$(dirname "$0")/.." && pwd)

(
    cd "$project"
    scripts/setup.sh build app
    [[ -f build/release/build.ninja ]] ||
        cmake --preset release -D QUILLMERE_BUILD_TESTS=OFF -D QUILLMERE_BUILD_BENCHMARKS=OFF
    cmake --preset release -D QUILLMERE_BUILD_APP=ON
    cmake --build --preset release --target quillmere
)
exec "$project/build/release/Sources/QuillmereApp/quillmere" "$@"
