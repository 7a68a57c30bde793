#!/usr/bin/env bash
# check-languages.sh BUILD PROJECT: installs what BUILD has of the programs, as packages do, and expects the command line
# to speak every language of PROJECT's Translations from there.
set -euo pipefail

build=$1 project=$2
place=$(mktemp --directory)
trap 'rm -rf "$place"' EXIT
prefix=$place/installed
cmake --install "$build" --prefix "$prefix" --component Programs > "$place/install.log"

languages=0
for catalogue in "$project"/Translations/*.po; do
    language=$(basename "$catalogue" .po)
    [[ -f $prefix/share/locale/$language/LC_MESSAGES/quillmere.mo ]] || { echo "$language is not installed"; exit 1; }
    # The text as the catalogue has it.
    expected=$(sed -n '/^msgid "Try --help."$/{n;s/^msgstr "\(.*\)"$/\1/p}' "$catalogue")
    said=$(env --unset=LC_ALL --unset=LC_MESSAGES --unset=LC_CTYPE LANGUAGE="$language" LANG=C.UTF-8 \
        "$prefix/bin/quillmere-cli" scan 2>&1) || true
    [[ -n $expected && $said == *"$expected"* ]] || { echo "In $language it says: $said"; exit 1; }
    languages=$((languages + 1))
done
((languages >= 4)) || { echo "only $languages languages"; exit 1; }
echo "$languages languages"
