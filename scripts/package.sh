#!/usr/bin/env bash
# Builds the Debian package of the programs for this release of Debian, into build/package, and has lintian examine it.
#
# Two runs on one commit give the same bytes: dates are that of the commit, or SOURCE_DATE_EPOCH.
set -euo pipefail
cd "$(dirname "$0")/.."
# What is in the package, and the entries of its archive, have the permissions that the mask leaves.
umask 022

scripts/setup.sh build app package

# What the window loads when it starts, and no library names.
depends=$(scripts/setup.sh --list app_run | grep --extended-regexp '^(qml6|fonts)-' | paste --serial --delimiters=, |
    sed 's/,/, /g')
source scripts/program.sh
build_for_package -D QUILLMERE_PACKAGE_DEPENDS="$depends"
rm -rf build/package
cpack --config build/release/CPackConfig.cmake -B build/package

package=(build/package/quillmere_*.deb)
lintian --fail-on error,warning "${package[@]}"
echo "The package is $PWD/${package[0]}"
