#!/usr/bin/env bash
# Checks the format of all C++ files and runs the static analysis over them. Without arguments: everything;
# else only the files given. With --format as the first argument: only the format, in seconds. A source that was
# clean is analysed again only when it, what it includes or the checks have changed. Fix the format with:
# clang-format -i FILE
set -euo pipefail
cd "$(dirname "$0")/.."

format_only=
if [[ ${1:-} == --format ]]; then
    shift
    format_only=yes
    scripts/setup.sh lint
else
    scripts/setup.sh build app test lint
fi
if (($#)); then
    files=("$@")
else
    mapfile -t files < <(git ls-files '*.h' '*.cpp')
fi

clang-format --dry-run -Werror "${files[@]}"
[[ -z $format_only ]] || exit 0

# The sources include what Qt's moc makes of them, and the shaders. CMake's own target for the former would compile the
# libraries first, which no analysis reads; what is made for resources is not read either.
cmake --preset clang -D QUILLMERE_BUILD_APP=ON -D QUILLMERE_BUILD_TESTS=ON > /dev/null
cmake --build --preset clang --target QuillmereShaders > /dev/null
find build/clang -path '*_autogen.dir/AutogenInfo.json' -not -regex '.*_\(qmlcache\|resources_[0-9]+\|init\)_autogen.dir/.*' \
    -print0 | xargs --null --max-procs="$(nproc)" --replace cmake -E cmake_autogen {} Release
mapfile -t sources < <(printf '%s\n' "${files[@]}" | grep '\.cpp$' | grep --invert-match '^Sources/QuillmerePython/')
failed=0
((${#sources[@]} == 0)) || scripts/tidy.py build/clang "${sources[@]}" || failed=1

# The module for Python is no part of other builds.
mapfile -t module < <(printf '%s\n' "${files[@]}" | grep '^Sources/QuillmerePython/.*\.cpp$')
if ((${#module[@]})); then
    scripts/setup.sh python
    cmake --preset clang -B build/clang-python -D QUILLMERE_BUILD_PYTHON=ON -D QUILLMERE_BUILD_APP=OFF \
        -D QUILLMERE_BUILD_TESTS=OFF -D Python_EXECUTABLE=/usr/bin/python3 > /dev/null
    scripts/tidy.py build/clang-python "${module[@]}" || failed=1
fi
exit "$failed"
