#!/usr/bin/env bash
# Checks the format of all C++ files and runs the static analysis over them. Without arguments: everything;
# else only the files given. Fix the format with: clang-format -i FILE
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build app test lint
if (($#)); then
    files=("$@")
else
    mapfile -t files < <(git ls-files '*.h' '*.cpp')
fi

clang-format --dry-run -Werror "${files[@]}"

cmake --preset dev -D QUILLMERE_BUILD_APP=ON > /dev/null
cmake --build --preset dev --target autogen > /dev/null
printf '%s\n' "${files[@]}" | grep '\.cpp$' |
    xargs --max-args=1 --max-procs="$(nproc)" \
        clang-tidy -p build/dev --quiet --extra-arg=-Wno-unknown-warning-option
echo "No findings in ${#files[@]} files."
