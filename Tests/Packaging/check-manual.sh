#!/usr/bin/env bash
# check-manual.sh FOLDER: fails on what mandoc or man has to say of the manual pages in FOLDER.
set -euo pipefail

shopt -s nullglob
pages=("$1"/*.1)
failed=0
for page in "${pages[@]}"; do
    complaints=$(mandoc -T lint -W warning "$page" 2>&1 || true
        LC_ALL=C.UTF-8 man --warnings --local-file "$page" 2>&1 > /dev/null)
    if [[ $complaints ]]; then
        printf '%s\n' "$complaints"
        failed=1
    fi
done
echo "${#pages[@]} pages"
((${#pages[@]} > 0 && !failed))
