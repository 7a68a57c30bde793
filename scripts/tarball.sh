#!/usr/bin/env bash
# Makes the tarball that runs anywhere: build/tarball/quillmere-VERSION-x86_64.tar.xz
#
# The programs with every library but those of the C and C++ compilers: the system's are as new as ours wherever glibc
# is, and graphics drivers need them as new as they are. To be made on the oldest system that it shall run on.
#
# FFmpeg is built here, from Debian's source, by Packaging/ffmpeg.options. Debian's own binaries bring a hundred
# libraries that no sample needs, and x264, x265 and others put them under the GPL, which would then bind whoever passes
# the programs on with them. Loading FFmpeg only where a system has one was the other way: versions differ in ABI, and a
# bare system would read no sample.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/program.sh

die() {
    echo "tarball.sh: $*" >&2
    exit 1
}

# shellcheck source=/dev/null
release=$(. /etc/os-release && echo "$VERSION_CODENAME")
[[ $release == bookworm ]] || die "Debian 12 is the oldest system that it shall run on; make it there"
scripts/setup.sh build app tarball

place=$PWD/build/tarball
mkdir -p "$place"
triplet=$(dpkg-architecture --query DEB_HOST_MULTIARCH)
qt=/usr/lib/$triplet/qt6
# What has to fit the desktop and its drivers: the system's comes first.
desktop='^lib(X11|X11-xcb|Xau|Xdmcp|Xext|xcb|xcb-(dri2|dri3|glx|present|randr|shm|sync|xfixes)|EGL|GL|GLX|GLdispatch|OpenGL'
desktop+='|drm|gbm|wayland-(client|cursor|egl|server)|asound)\.so'
# What comes with the compilers.
never='^(ld-linux.*|lib(c|m|dl|rt|pthread|resolv|util|stdc\+\+|gcc_s))\.so'

# What a file is linked with, by name and place, but what comes with the compilers.
libraries_of() {
    LD_LIBRARY_PATH=$place/ffmpeg/installed/usr/lib ldd "$@" | sed -nE 's/^\t(\S+) => (\/\S+) .*/\1 \2/p' |
        grep --invert-match --extended-regexp "$never" | sort --unique
}

copy_qt() {
    local plugin file
    for plugin in platforms/libqxcb platforms/libqoffscreen platforms/libqminimal xcbglintegrations/libqxcb-egl-integration \
        xcbglintegrations/libqxcb-glx-integration platforminputcontexts/libcomposeplatforminputcontextplugin; do
        install -D --mode=644 "$qt/plugins/$plugin.so" "$root/lib/qt6/plugins/$plugin.so"
    done
    # Of the styles of controls the window has one.
    while read -r file; do
        [[ ! -f $file ]] || install -D --mode=644 "$file" "$root/lib/qt6/${file#"$qt"/}"
    done < <(scripts/setup.sh --list app_run | grep '^qml6-' | xargs dpkg-query --listfiles | grep "^$qt/qml/" |
        grep --invert-match --extended-regexp '\.qmltypes$|/Controls/(Fusion|Imagine|Material|Universal|designer)/')
    install -D --mode=644 Packaging/tarball/qt.conf "$root/libexec/qt.conf"
}

copy_libraries() {
    local objects name path to
    mapfile -t objects < <(find "$root/bin" "$root/libexec" "$root/lib" -type f \( -name '*.so*' -o -name 'quillmere*' \) |
        xargs file | sed -n 's/: *ELF .*//p')
    mkdir -p "$root/lib/desktop"
    while read -r name path; do
        to=$root/lib
        [[ ! $name =~ $desktop ]] || to=$root/lib/desktop
        install --mode=644 "$path" "$to/$name"
        echo "$name $path"
    done < <(libraries_of "${objects[@]}") > "$place/libraries"
    patchelf --force-rpath --set-rpath "\$ORIGIN/../lib:\$ORIGIN/../lib/desktop" "$root/bin/quillmere-cli"
    patchelf --force-rpath --set-rpath "\$ORIGIN/../lib" "$root/libexec/quillmere"
    # A library that names a folder of the system for its own would not look beside itself.
    find "$root/lib" -name '*.so*' -exec patchelf --remove-rpath {} +
}

# For each library the copyright of the Debian package that it is from.
copy_licences() {
    local to=$root/share/doc/quillmere/licences name path package
    mkdir -p "$to/ffmpeg"
    cp "$place"/ffmpeg/source/{COPYING.LGPLv2.1,LICENSE.md} Packaging/ffmpeg.options "$to/ffmpeg"
    {
        echo "Library, and the Debian package of $release that it is from:"
        while read -r name path; do
            if [[ $path == "$place"/* ]]; then
                echo "$name built by ffmpeg.options from the source package ffmpeg" \
                    "$(sed -nE '1s/.*\((.*)\).*/\1/p' "$place/ffmpeg/source/debian/changelog")"
                continue
            fi
            package=$(dpkg-query --search "$(realpath "$path")" 2> /dev/null || dpkg-query --search "*/${path##*/}")
            package=${package%%:*}
            mkdir -p "$to/$package"
            cp "/usr/share/doc/$package/copyright" "$to/$package/"
            echo "$name $package $(dpkg-query --show --showformat='${Version}' "$package")"
        done < "$place/libraries"
        for package in qml6-module-qtquick libqt6gui6 fonts-dejavu-core; do
            mkdir -p "$to/$package"
            cp "/usr/share/doc/$package/copyright" "$to/$package/"
        done
        echo "lib/qt6: Qt's plugins and QML modules, as libqt6gui6 and qml6-module-qtquick"
        echo "share/quillmere/fonts: fonts-dejavu-core"
    } > "$to/INDEX"
    for name in x264 x265 xvidcore postproc mfx readline; do
        [[ -z $(find "$root" -name "lib$name*") ]] || die "$name must not be in it"
    done
}

# Every kind of file that the tests have gives the same numbers with this FFmpeg as with Debian's: the same model.
check_decoders() {
    local folder=$place/check cli
    rm -rf "$folder"
    for cli in build/release/Sources/QuillmereCLI/quillmere-cli "$root/bin/quillmere-cli"; do
        XDG_DATA_HOME=$folder/$(wc -c <<< "$cli") VK_ICD_FILENAMES=none "$cli" train Tests/Data/Audio --steps 2 --seed 1 \
            > "$place/check.log" 2>&1 || { cat "$place/check.log"; die "$cli does not learn"; }
    done
    (($(find "$folder" -name weights.bin -exec sha256sum {} + | cut --fields=1 --delimiter=' ' | sort --unique | wc -l) == 1)) ||
        die "with this FFmpeg samples give other numbers"
}

check_languages() {
    [[ $(LC_ALL=de_DE.UTF-8 LANGUAGE= "$root/bin/quillmere-cli" scan 2>&1) == *"FOLDER ist erforderlich"* ]] ||
        die "the programs speak English only"
}

build_for_package
scripts/build-ffmpeg.sh "$place/ffmpeg"
grep --quiet '^License: LGPL version 2.1 or later' "$place/ffmpeg/log" || die "FFmpeg has another licence"
version=$(sed -nE 's/^project\(Quillmere VERSION (\S+) .*/\1/p' CMakeLists.txt)
name=quillmere-$version-$(uname --machine)
root=$place/$name
rm -rf "$root"
cmake --install build/release --component Programs --strip --prefix "$root" > /dev/null
mkdir "$root/libexec"
mv "$root/bin/quillmere" "$root/libexec/quillmere"
install --mode=755 Packaging/tarball/quillmere "$root/bin/quillmere"
install --mode=644 Packaging/tarball/README "$root/README"
install -D --mode=644 Packaging/tarball/fonts.conf "$root/share/quillmere/fonts/fonts.conf"
install --mode=644 /usr/share/fonts/truetype/dejavu/DejaVuSans{,-Bold,Mono}.ttf "$root/share/quillmere/fonts"
copy_qt
copy_libraries
copy_licences
chmod --recursive go-w "$root"
check_decoders
check_languages

tar --create --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner --directory="$place" "$name" |
    xz --threads=2 > "$place/$name.tar.xz"
echo "The tarball is $place/$name.tar.xz: $(stat --format=%s "$place/$name.tar.xz") bytes," \
    "$(du --summarize --block-size=M "$root" | cut --fields=1) unpacked, $(wc -l < "$place/libraries") libraries"
