#!/usr/bin/env bash
# Takes the texts that people read out of the sources: writes Translations/quillmere.pot and brings the catalogues up to
# date with it. With --extract FILE: only writes the texts to that file. With --keywords: names what the texts stand in.
set -euo pipefail
cd "$(dirname "$0")/.."

# Functions and classes whose argument of that number is a text for people.
keywords=(tr:1 trCounted:2,3 counted:2,3 translatable:1 Message:1 Failure:1 DecodingError:1 CorruptModelError:1
    DeviceError:1 NoDeviceError:1 InvalidParameterError:1 ReadError:1 RecipeError:2)

extract() {
    # The words of the programs that a terminal runs; the window has its own.
    find Sources/QuillmereCore Sources/QuillmereCLI -name '*.h' -o -name '*.cpp' | LC_ALL=C sort |
        xgettext --files-from=- --language=C++ --from-code=UTF-8 --keyword "${keywords[@]/#/--keyword=}" \
            --add-comments=Translators --no-location --no-wrap --package-name=Quillmere --output=- |
        sed -e '/^"POT-Creation-Date:/d' -e '/^#, c-format$/d' -e '1,/^$/{/^#/d}' >"$1"
}

if [[ ${1:-} == --keywords ]]; then
    printf '%s\n' "${keywords[@]}"
    exit
fi
if [[ ${1:-} == --extract ]]; then
    extract "$2"
    exit
fi
extract Translations/quillmere.pot
for catalogue in Translations/*.po; do
    msgmerge --quiet --update --backup=none --no-fuzzy-matching --no-wrap "$catalogue" Translations/quillmere.pot
    msgattrib --no-obsolete --no-wrap --output-file="$catalogue" "$catalogue"
    msgfmt --check --statistics --output-file=/dev/null "$catalogue" 2>&1 | sed "s|^|$catalogue: |"
done
