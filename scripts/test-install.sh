#!/usr/bin/env bash
# Tests the Debian package where nothing else is: scripts/test-install.sh bookworm|trixie [PACKAGE]
#
# In a copy of a fresh system of the release, and as a user of it: installs the package, starts both programs, learns a
# folder, generates from it, and removes the package with all that came along. Fails where anything but the user's own
# data is left. PACKAGE is one that was built on that release (build/package/quillmere_*.deb unless it is given). Needs
# root and a Debian mirror; takes a few minutes and 1 GB, which is given back. scripts/debian-system.sh says where.
set -euo pipefail
cd "$(dirname "$0")/.."

die() {
    echo "test-install.sh: $*" >&2
    exit 1
}

packages=("${2:-build/package}"/quillmere_*.deb)
[[ -f ${2:-} ]] && packages=("$2")
[[ -f ${packages[0]} ]] || die "there is no package; scripts/package.sh makes it"
bare=$(QUILLMERE_CALLER=test-install.sh scripts/debian-system.sh "${1:-}" "bare-${1:-}")
system=$(mktemp --directory --tmpdir="$(dirname "$bare")" install.XXXXXX)
trap 'rm -rf --one-file-system "$system"' EXIT
cp --archive --reflink=auto "$bare/." "$system"
cp /etc/resolv.conf "$system/etc/"
cp "${packages[0]}" "$system/quillmere.deb"
mkdir "$system/samples"
cp Tests/Data/Audio/*.flac "$system/samples"

# With mounts and processes of its own: both end with the last command.
unshare --mount --pid --fork --kill-child bash -euo pipefail -c '
    mount -t proc proc "$1/proc"
    mount -t tmpfs devices "$1/dev"
    for device in null zero full random urandom tty; do
        touch "$1/dev/$device"
        mount --bind "/dev/$device" "$1/dev/$device"
    done
    exec env --ignore-environment HOME=/root LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin \
        DEBIAN_FRONTEND=noninteractive chroot "$1" bash -euo pipefail -s
' test-install "$system" <<'INSIDE'
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
        -o -path /var/lib/dpkg -o -path /samples \) -prune -o -print | sort
}

useradd --create-home --shell /bin/bash musician
apt update
everything > /tmp/before
packages() { dpkg-query --show --showformat='${Installed-Size}\n' | awk "$1"; }
kibibytes=$(packages '{ sum += $1 } END { print sum }') number=$(packages 'END { print NR }')

apt install --yes --no-install-recommends /quillmere.deb
dpkg --listfiles quillmere | sort > /tmp/files
echo "installed: $(wc -l < /tmp/files) files and folders," \
    "$(dpkg-query --show --showformat='${Installed-Size}' quillmere) KiB; with what it depends on" \
    "$(($(packages 'END { print NR }') - number)) packages," \
    "$((($(packages '{ sum += $1 } END { print sum }') - kibibytes) / 1024)) MiB"

as_user 'quillmere-cli --version && quillmere --version'
as_user 'quillmere-cli train /samples --steps 20 --seed 1 && quillmere-cli generate /samples --output New --count 4 --seed 7'
(($(as_user 'ls New/*.wav | wc -l') == 4)) || fail "no four files"
as_user 'quillmere-cli verify New'
as_user 'QT_QPA_PLATFORM=offscreen QUILLMERE_SNAPSHOT=$HOME/window.png quillmere /samples'
(($(as_user 'wc --bytes < window.png') > 20000)) || fail "no picture of the window"
echo 'used: learned, generated, verified; the window opened'

apt purge --yes quillmere
apt autoremove --yes --purge
while read -r file; do
    [[ -d $file || ! -e $file ]] || fail "$file is left"
done < /tmp/files
everything > /tmp/after
left=$(comm -13 /tmp/before /tmp/after)
as_user 'ls .local/share/Quillmere/Models' > /dev/null || fail "the user's models are gone"
echo "removed: $(grep --count '^/home/musician/' <<< "$left") files and folders of the user stay"
others=$(grep --invert-match '^/home/musician/' <<< "$left" || true)
[[ -z $others ]] || fail "these stay, too:"$'\n'"$others"
INSIDE
