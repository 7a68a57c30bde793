#!/usr/bin/env bash
# check-library.sh BUILD PROJECT COMPILER: installs what BUILD has of the library, compiles each public header alone,
# and builds and runs the example against what was installed, found by CMake and by pkg-config.
set -euo pipefail

build=$1 project=$2 compiler=$3
place=$(mktemp --directory)
trap 'rm -rf "$place"' EXIT
prefix=$place/installed
export CCACHE_DISABLE=1

cmake --install "$build" --prefix "$prefix" --component Development > "$place/install.log"

headers=0
while read -r header; do
    "$compiler" -std=c++20 -fsyntax-only -Wall -Wextra -Werror -I "$prefix/include" -x c++ - <<< "#include <$header>" ||
        { echo "$header does not compile alone"; exit 1; }
    headers=$((headers + 1))
done < <(cd "$prefix/include" && find . -name '*.h' -printf '%P\n' | sort)
((headers > 40)) || { echo "only $headers headers"; exit 1; }
echo "$headers headers compile alone"

cmake -S "$project/Examples/LearnAndGenerate" -B "$place/example" -D CMAKE_PREFIX_PATH="$prefix" \
    -D CMAKE_CXX_COMPILER="$compiler" > "$place/configure.log" || { cat "$place/configure.log"; exit 1; }
cmake --build "$place/example" > "$place/build.log" || { cat "$place/build.log"; exit 1; }

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name quillmere-core.pc)")
export PKG_CONFIG_PATH
read -ra flags <<< "$(pkg-config --cflags --libs quillmere-core)"
"$compiler" -o "$place/by-pkg-config" "$project/Examples/LearnAndGenerate/Main.cpp" "${flags[@]}"
"$place/by-pkg-config" 2> "$place/usage.log" && { echo "no usage error"; exit 1; }
grep --quiet usage "$place/usage.log"

mkdir "$place/sounds"
cp "$project"/Tests/Data/Audio/*.flac "$place/sounds"
HOME=$place VK_ICD_FILENAMES=none "$place/example/learn-and-generate" "$place/sounds" "$place/new" 1
files=("$place"/new/*.wav)
((${#files[@]} == 4)) || { echo "${#files[@]} files"; exit 1; }
