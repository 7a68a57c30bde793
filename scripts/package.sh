#!/usr/bin/env bash
# Builds the Debian package of the programs for this release of Debian, into build/package, and has lintian examine it.
#
# Two runs on one commit give the same bytes: dates are that of the commit, or SOURCE_DATE_EPOCH.
set -euo pipefail
cd "$(dirname "$0")/.."
# What is in the package, and the entries of its archive, have the permissions that the mask leaves.
umask 022

scripts/setup.sh build app package
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
export SOURCE_DATE_EPOCH

# What the window loads when it starts, and no library names.
depends=$(scripts/setup.sh --list app_run | grep --extended-regexp '^(qml6|fonts)-' | paste --serial --delimiters=, |
    sed 's/,/, /g')
build=(-D QUILLMERE_BUILD_APP=ON -D QUILLMERE_PACKAGE_DEPENDS="$depends")
[[ -f build/release/build.ninja ]] || build+=(-D QUILLMERE_BUILD_TESTS=OFF -D QUILLMERE_BUILD_BENCHMARKS=OFF)
cmake --preset release "${build[@]}"
cmake --build --preset release --target quillmere quillmere-cli reference
rm -rf build/package
cpack --config build/release/CPackConfig.cmake -B build/package

package=(build/package/quillmere_*.deb)
lintian --fail-on error,warning "${package[@]}"
echo "The package is $PWD/${package[0]}"
