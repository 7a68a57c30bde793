#!/usr/bin/env bash
# Builds the Python module for Debian's Python, tests it, and packs it as a wheel: build/python/wheel/quillmere-*.whl
#
# It is linked with the libraries of this system. Two runs on one commit give the same bytes.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build python
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
export SOURCE_DATE_EPOCH

cmake --preset python > /dev/null
cmake --build --preset python --target python-package
ctest --preset python --tests-regex '^Python\.'
wheel=$PWD/build/python/wheel
rm -rf "$wheel"
cmake --install build/python --component Python --strip --prefix "$wheel/unpacked" > /dev/null
/usr/bin/python3 -m wheel pack "$wheel/unpacked" --dest-dir "$wheel" > /dev/null

# As it is when somebody has installed it.
packed=("$wheel"/*.whl)
installed=$(mktemp --directory)
trap 'rm -rf "$installed"' EXIT
/usr/bin/python3 -m zipfile --extract "${packed[0]}" "$installed"
(cd / && PYTHONPATH=$installed PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 -c 'import quillmere; quillmere.head_start()')
echo "The wheel is ${packed[0]}: $(stat --format=%s "${packed[0]}") bytes"
