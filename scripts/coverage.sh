#!/usr/bin/env bash
# Counts the lines and branches of the sources that the tests reach, in the core library and in the application's models
# (the window itself is QML). Arguments go to ctest. The details per file stay in build/coverage/*.txt.
#
# Clang counts what is written: the branches that GCC counts are mostly those that it made itself, for objects that are
# cleaned up and for each set of instructions that vector code is compiled for. Here there is one such set: passes over
# a file for others would be taken for headers of the system, in which nothing is counted.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build app test coverage
cmake --preset coverage -D QUILLMERE_BUILD_APP=ON -D QUILLMERE_BUILD_TESTS=ON
cmake --build --preset coverage
rm -rf build/coverage/profiles
# Processes of one program add to one of two files of it.
export LLVM_PROFILE_FILE=$PWD/build/coverage/profiles/%2m.profraw
failed=0
ctest --preset coverage --parallel "$(nproc)" "$@" || failed=$?

printf '\n'
scripts/coverage.py build/coverage core 'Sources/QuillmereCore/'
scripts/coverage.py build/coverage models 'Sources/QuillmereApp/([^/]*|Controllers/.*)$'
exit "$failed"
