#!/usr/bin/env bash
# Formats the QML files with qmlformat, or with --check says which are not formatted (status 1).
#
# qmlformat of Qt 6.4 cannot write "pragma ComponentBehavior: Bound", so that line is kept away from it.
set -euo pipefail
cd "$(dirname "$0")/.."

qmlformat=$(command -v qmlformat || echo /usr/lib/qt6/bin/qmlformat)
pragma="pragma ComponentBehavior: Bound"
body=$(mktemp --suffix=.qml)
formatted=$(mktemp --suffix=.qml)
trap 'rm -f "$body" "$formatted"' EXIT

status=0
while IFS= read -r file; do
    grep -vxF "$pragma" "$file" | sed '/./,$!d' > "$body"
    {
        if grep -qxF "$pragma" "$file"; then printf '%s\n\n' "$pragma"; fi
        "$qmlformat" "$body"
    } > "$formatted"
    cmp -s "$formatted" "$file" && continue
    if [ "${1:-}" = --check ]; then
        echo "not formatted: $file"
        status=1
    else
        cp "$formatted" "$file"
    fi
done < <(find Sources Tests -name '*.qml' | sort)
exit $status
