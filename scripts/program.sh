# Shared by the scripts that run the program. Sourced from the project's folder; defines $cli.

cli=build/release/Sources/QuillmereCLI/quillmere-cli

# Builds the program alone, optimised. That needs neither GoogleTest nor Google Benchmark; a build folder that
# was configured with them stays as it is.
build_program() {
    [[ -f build/release/build.ninja ]] ||
        cmake --preset release -D QUILLMERE_BUILD_TESTS=OFF -D QUILLMERE_BUILD_BENCHMARKS=OFF
    cmake --build --preset release --target quillmere-cli
}

# Builds the programs and their pages for a package: with the date of the commit, or SOURCE_DATE_EPOCH, in them,
# whatever was built before. Arguments go to the configuration.
build_for_package() {
    local settings=(-D QUILLMERE_BUILD_APP=ON "$@")
    SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
    export SOURCE_DATE_EPOCH
    if [[ -f build/release/build.ninja ]]; then
        # They have the dates of the views' files, or that of another commit. In .rcc or, with newer Qt, .qt/rcc.
        find build/release/Sources -path '*rcc/qrc_*.cpp' ! -name '*_init.cpp' -delete
    else
        settings+=(-D QUILLMERE_BUILD_TESTS=OFF -D QUILLMERE_BUILD_BENCHMARKS=OFF)
    fi
    cmake --preset release "${settings[@]}"
    cmake --build --preset release --target quillmere quillmere-cli reference
}

# Copies the 72 drum hits of Debian's sonic-pi-samples (CC0) to the folder $1. Copies, because links are not
# scanned; with their times, because these are part of the fingerprint.
collect_drum_hits() {
    mkdir -p "$1"
    dpkg-query --listfiles sonic-pi-samples | grep -E '/(drum|bd|sn|perc|elec)_[^/]*\.flac$' |
        xargs -d '\n' cp --preserve=timestamps --target-directory="$1"
}

# Copies every fourth one-shot of Debian's hydrogen-drumkits to the folder $1, each under a number of its own.
collect_kits() {
    local file number=0
    mkdir -p "$1"
    while IFS= read -r file; do
        if ((number % 4 == 0)); then
            cp --preserve=timestamps --no-clobber "$file" "$1/$(printf %03d "$number")-${file##*/}"
        fi
        number=$((number + 1))
    done < <(dpkg-query --listfiles hydrogen-drumkits | grep -E '\.(wav|flac)$' | sort)
}
