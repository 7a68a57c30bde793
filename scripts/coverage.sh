#!/usr/bin/env bash
# Counts the lines and branches that the tests reach in the core library and in the application's models (the
# window itself is QML). Arguments go to ctest. The details per file stay in build/coverage/report.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build app test coverage
cmake --preset coverage -D QUILLMERE_BUILD_APP=ON -D QUILLMERE_BUILD_TESTS=ON
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
failed=0
ctest --preset coverage --parallel "$(nproc)" "$@" || failed=$?

# report NAME PATTERN: what was reached in the files whose paths match.
report() {
    mkdir -p build/coverage/report
    gcovr --root . --object-directory build/coverage --filter "$2" --exclude-throw-branches \
        --exclude-unreachable-branches --gcov-ignore-parse-errors -j "$(nproc)" --json-summary build/coverage/report/"$1".json \
        --txt build/coverage/report/"$1".txt build/coverage > /dev/null
    python3 - "$1" build/coverage/report/"$1".json <<'PYTHON'
import json
import sys
name, path = sys.argv[1:]
with open(path, encoding="utf-8") as file:
    summary = json.load(file)
print(f"{name}: {summary['line_percent']} % of {summary['line_total']} lines, "
      f"{summary['branch_percent']} % of {summary['branch_total']} branches")
PYTHON
}

printf '\n'
report core 'Sources/QuillmereCore/'
report models 'Sources/QuillmereApp/([^/]*|Controllers/.*)$'
exit "$failed"
