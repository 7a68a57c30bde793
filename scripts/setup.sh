#!/usr/bin/env bash
# Installs the Debian packages that Quillmere needs and that are missing. May be run again at any time.
#
#   scripts/setup.sh [GROUP...]          (build, if nothing is named)
#   scripts/setup.sh --list GROUP...     names the packages, a line each, and installs nothing
#
# The groups: build app run test demo lint sanitize coverage releases arm64 package python tarball guide pictures sound peers scale, or all.
#
# For Debian 12 and 13. Needs root, or a user with sudo.
set -euo pipefail

# The one list of packages, by what they are needed for. A # stands for the version that a release puts into the name.
build=(g++ cmake ninja-build ccache pkg-config gettext
       libavformat-dev libavcodec-dev libavutil-dev libsoxr-dev libicu-dev libhwy-dev libtbb-dev libssl-dev libcairo2-dev
       nlohmann-json3-dev libcli11-dev libvulkan-dev glslc)
# The desktop application: what it needs besides to be built, and what it loads when it starts.
app_run=(libqt6core# libqt6dbus6 libqt6gui6 libqt6qml6 libqt6quick6 libqt6quickcontrols2-6
         qml6-module-qtquick qml6-module-qtqml qml6-module-qtqml-workerscript qml6-module-qtquick-controls
         qml6-module-qtquick-templates qml6-module-qtquick-layouts qml6-module-qtquick-dialogs
         qml6-module-qtquick-window qml6-module-qt-labs-folderlistmodel
         libsdl2-2.0-0 fonts-dejavu-core)
app=(qt6-base-dev qt6-declarative-dev qt6-declarative-dev-tools qt6-l10n-tools libsdl2-dev "${app_run[@]}")
run=(libavformat# libavcodec# libavutil# libsoxr0 libicu# libhwy# libtbb# libssl# libcairo2 libvulkan1 "${app_run[@]}")
test=(libgtest-dev libgmock-dev libbenchmark-dev libxml2-dev libpng-dev python3 sonic-pi-samples hydrogen-drumkits
      mesa-vulkan-drivers vulkan-validationlayers fonts-vlgothic
      appstream desktop-file-utils flatpak-builder locales mandoc man-db zsh fish
      qml6-module-qttest xvfb xdotool x11-utils openbox dbus at-spi2-core python3-gi gir1.2-atspi-2.0)
demo=(sonic-pi-samples)
lint=(clang clang-format clang-tidy git python3)
sanitize=(clang libclang-rt-dev llvm)
coverage=(clang libclang-rt-dev llvm python3)
releases=(ccache debootstrap util-linux)
arm64=(g++-aarch64-linux-gnu qemu-user)
package=(dpkg-dev file git gzip lintian)
python=(pybind11-dev python3-dev python3-numpy python3-pytest python3-wheel)
tarball=(dpkg-dev file git make nasm patchelf xz-utils)
guide=(pandoc weasyprint fonts-dejavu-core python3)
pictures=(python3 python3-numpy python3-matplotlib python3-pil flac sonic-pi-samples imagemagick fonts-roboto-unhinted librsvg2-bin)
sound=(python3 python3-numpy python3-scipy sonic-pi-samples hydrogen-drumkits)
peers=(python3 python3-numpy python3-torch ffmpeg util-linux findutils)
scale=(slurm-wlm munge parallel)

die() {
    echo "setup.sh: $*" >&2
    exit 1
}

groups=(build app app_run run test demo lint sanitize coverage releases arm64 package python tarball guide pictures sound peers scale)
only_list=
if [[ ${1:-} == --list ]]; then
    shift
    only_list=yes
fi
chosen=("${@:-build}")
[[ " $* " != *" all "* ]] || chosen=("${groups[@]}")
packages=()
for group in "${chosen[@]}"; do
    [[ " ${groups[*]} " == *" $group "* ]] || die "unknown group '$group'; the groups are ${groups[*]} and all"
    declare -n names=$group
    packages+=("${names[@]}")
done

if [[ $only_list ]]; then
    printf '%s\n' "${packages[@]}"
    exit 0
fi

command -v dpkg-query > /dev/null || die "this is no Debian system; install the equivalents of: ${packages[*]}"

# matching NAME: those of the packages read that are NAME, in which # is a version ("72", "6t64").
matching() {
    local pattern=${1//+/\\+}
    grep --extended-regexp --line-regexp "${pattern//'#'/[0-9]+(t64)?}" || true
}

installed=$(dpkg-query --show --showformat='${db:Status-Status} ${Package}\n' | sed -n 's/^installed //p')
missing=()
for package in "${packages[@]}"; do
    [[ -n $(matching "$package" <<< "$installed") ]] || missing+=("$package")
done
((${#missing[@]})) || exit 0

as_root=()
if (($(id -u) != 0)); then
    command -v sudo > /dev/null || die "run as root (or install sudo): apt-get install ${missing[*]}"
    as_root=(sudo)
fi
apt() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0 "$@" < /dev/null
}

echo "Installing ${#missing[@]} packages: ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# Only now are the release's own names to be had.
install_missing() {
    apt update || return
    local package names=()
    for package in "${missing[@]}"; do
        [[ $package != *'#'* ]] ||
            package=$(apt-cache pkgnames "${package%%'#'*}" | matching "$package" | sort --version-sort | tail -n 1)
        names+=("$package")
    done
    apt install --yes --no-install-recommends "${names[@]}"
}
if ! install_missing > "$log" 2>&1; then
    cat "$log" >&2
    die "the packages could not be installed"
fi
