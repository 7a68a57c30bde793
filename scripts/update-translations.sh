#!/usr/bin/env bash
# Takes the texts that people read out of the sources: writes Translations/quillmere.pot and brings the catalogues up to
# date with it, then those of the window (window_*.ts). With --extract FILE or --extract-window FILE: only writes the
# texts to that file. With --keywords: names what the texts stand in.
set -euo pipefail
cd "$(dirname "$0")/.."

# Functions and classes whose argument of that number is a text for people.
keywords=(tr:1 trCounted:2,3 counted:2,3 translatable:1 Message:1 Failure:1 DecodingError:1 CorruptModelError:1
    DeviceError:1 NoDeviceError:1 InvalidParameterError:1 ReadError:1 RecipeError:2)

# Which formats the tool takes the patterns for depends on its version; they are of no format that it knows.
extract() {
    # The words of the programs that a terminal runs, and what the window says there; else it has its own.
    {
        find Sources/QuillmereCore Sources/QuillmereCLI -name '*.h' -o -name '*.cpp' | LC_ALL=C sort
        echo Sources/QuillmereApp/App.cpp
    } |
        xgettext --files-from=- --language=C++ --from-code=UTF-8 --keyword "${keywords[@]/#/--keyword=}" \
            --add-comments=Translators --no-location --no-wrap --package-name=Quillmere --output=- |
        sed -e '/^"POT-Creation-Date:/d' -e '1,/^$/{/^#/d}' \
            -e '/^#, \(c\|c++\)-format\(, \(c\|c++\)-format\)*$/d' >"$1"
}

# extract_window LANGUAGE FILE: brings the catalogue up to date; what is translated in it stays.
extract_window() {
    local sources tools
    tools=$(qtpaths6 --query QT_INSTALL_BINS):$(qtpaths6 --query QT_INSTALL_LIBEXECS)
    mapfile -t sources < <(find Sources/QuillmereApp -name '*.h' -o -name '*.cpp' -o -name '*.qml' | LC_ALL=C sort)
    PATH=$tools:$PATH lupdate -silent "${sources[@]}" -I Sources -locations none -no-obsolete \
        -disable-heuristic similartext -source-language en -target-language "$1" -ts "$2"
}

case ${1:-} in
    --keywords) printf '%s\n' "${keywords[@]}" && exit ;;
    --extract) extract "$2" && exit ;;
    --extract-window) extract_window de "$2" && exit ;;
esac
extract Translations/quillmere.pot
for catalogue in Translations/*.po; do
    msgmerge --quiet --update --backup=none --no-fuzzy-matching --no-wrap "$catalogue" Translations/quillmere.pot
    msgattrib --no-obsolete --no-wrap --output-file="$catalogue" "$catalogue"
    msgfmt --check --statistics --output-file=/dev/null "$catalogue" 2>&1 | sed "s|^|$catalogue: |"
done
# English has only what is called otherwise where the window runs, by hand.
for language in de es fr ja; do
    extract_window "$language" "Translations/window_$language.ts"
done
