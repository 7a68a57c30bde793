#!/usr/bin/env bash
# Tests a package where nothing else is: scripts/test-install.sh bookworm|trixie [PACKAGE]
#
# PACKAGE is a Debian package that was built on that release (build/package/quillmere_*.deb unless one is given) or the
# tarball. In a copy of a fresh system of the release, and as a user of it: installs or unpacks it, starts both programs,
# learns a folder, generates from it, and removes what came, with all that came along. Fails where anything but the
# user's own data is left. Needs root and a Debian mirror; takes a few minutes and 1 GB, which is given back.
# scripts/debian-system.sh says where.
set -euo pipefail
cd "$(dirname "$0")/.."

die() {
    echo "test-install.sh: $*" >&2
    exit 1
}

packages=(build/package/quillmere_*.deb)
package=${2:-${packages[0]}}
[[ -f $package ]] || die "there is no package; scripts/package.sh makes it"
kind=debian
[[ $package != *.tar.xz ]] || kind=tarball
bare=$(QUILLMERE_CALLER=test-install.sh scripts/debian-system.sh "${1:-}" "bare-${1:-}")
system=$(mktemp --directory --tmpdir="$(dirname "$bare")" install.XXXXXX)
trap 'rm -rf --one-file-system "$system"' EXIT
cp --archive --reflink=auto "$bare/." "$system"
cp /etc/resolv.conf "$system/etc/"
install -D --mode=644 "$package" "$system/package/quillmere.${package##*.}"
if [[ $kind == tarball ]]; then
    mkdir "$system/package/unpacked"
    tar --extract --file="$package" --directory="$system/package/unpacked" --strip-components=1 --no-same-owner
fi
cp --recursive Tests/Data/Audio "$system/samples"

# With mounts and processes of its own: both end with the last command.
unshare --mount --pid --fork --kill-child bash -euo pipefail -c '
    mount -t proc proc "$1/proc"
    mount -t tmpfs devices "$1/dev"
    for device in null zero full random urandom tty; do
        touch "$1/dev/$device"
        mount --bind "/dev/$device" "$1/dev/$device"
    done
    exec env --ignore-environment KIND="$2" HOME=/root LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin \
        DEBIAN_FRONTEND=noninteractive chroot "$1" bash -euo pipefail -s
' test-install "$system" "$kind" <<'INSIDE'
fail() {
    echo "test-install.sh: $*" >&2
    exit 1
}
as_user() {
    su --login musician --command "$1" < /dev/null
}
apt() {
    apt-get -qq -o Dpkg::Use-Pty=0 "$@" < /dev/null > /var/log/test-install 2>&1 ||
        { cat /var/log/test-install; fail "apt-get $* failed"; }
}
# All that there is, but what the tools of packages keep of their own work, and the test.
everything() {
    find / -xdev \( -path /proc -o -path /dev -o -path /tmp -o -path /var/log -o -path /var/cache -o -path /var/lib/apt \
        -o -path /var/lib/dpkg -o -path /samples -o -path /package \) -prune -o -print | sort
}

sizes() { dpkg-query --show --showformat='${Installed-Size}\n' | awk "$1"; }

install_debian() {
    local kibibytes number
    apt update
    everything > /tmp/before
    kibibytes=$(sizes '{ sum += $1 } END { print sum }') number=$(sizes 'END { print NR }')
    apt install --yes --no-install-recommends /package/quillmere.deb
    dpkg --listfiles quillmere | sort > /tmp/files
    echo "installed: $(wc -l < /tmp/files) files and folders," \
        "$(dpkg-query --show --showformat='${Installed-Size}' quillmere) KiB; with what it depends on" \
        "$(($(sizes 'END { print NR }') - number)) packages," \
        "$((($(sizes '{ sum += $1 } END { print sum }') - kibibytes) / 1024)) MiB"
}
remove_debian() {
    apt purge --yes quillmere
    # Nor what the bare system would have liked to have.
    apt autoremove --yes --purge -o APT::AutoRemove::RecommendsImportant=false \
        -o APT::AutoRemove::SuggestsImportant=false
    while read -r file; do
        [[ -d $file || ! -e $file ]] || fail "$file is left"
    done < /tmp/files
}

install_tarball() {
    # Unpacked elsewhere: a bare system has no xz.
    everything > /tmp/before
    as_user 'mkdir Programs && cp --recursive /package/unpacked Programs/Quillmere'
    as_user 'echo "PATH=\$HOME/Programs/Quillmere/bin:\$PATH" >> .profile'
    echo "installed: $(as_user 'find Programs/Quillmere | wc -l') files and folders," \
        "$(as_user 'du --summarize --block-size=M Programs/Quillmere | cut --fields=1'); no package"
}
remove_tarball() {
    as_user 'rm -r Programs'
}

useradd --create-home --shell /bin/bash musician
"install_$KIND"

as_user 'quillmere-cli --version && quillmere --version'
as_user 'quillmere-cli train /samples --steps 20 --seed 1 && quillmere-cli generate /samples --output New --count 4 --seed 7'
(($(as_user 'ls New/*.wav | wc -l') == 4)) || fail "no four files"
as_user 'quillmere-cli verify New'
as_user 'QT_QPA_PLATFORM=offscreen QUILLMERE_SNAPSHOT=$HOME/window.png quillmere /samples'
(($(as_user 'wc --bytes < window.png') > 20000)) || fail "no picture of the window"
echo 'used: learned, generated, verified; the window opened'

"remove_$KIND"
everything > /tmp/after
left=$(comm -13 /tmp/before /tmp/after)
as_user 'ls .local/share/Quillmere/Models' > /dev/null || fail "the user's models are gone"
echo "removed: $(grep --count '^/home/musician/' <<< "$left") files and folders of the user stay"
others=$(grep --invert-match '^/home/musician/' <<< "$left" || true)
[[ -z $others ]] || fail "these stay, too:"$'\n'"$others"
INSIDE
