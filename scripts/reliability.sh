#!/usr/bin/env bash
# The long forms of the tests in Tests/Reliability, which every build runs briefly: each call of each command fails
# with each error, 200 kills at random of each command and of two programs in the same folders, power cuts, 20,000
# samples and 10,000 variations within the same limits; and 1,000 sets of parameters whose files are made again from
# their recipes. Prints what each has done. Then scripts/fuzz.sh tries inputs of all kinds for so many seconds each;
# with 0 it does not.
#
# scripts/reliability.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-600}

scripts/setup.sh build test
cmake --preset no-window -D QUILLMERE_BUILD_TESTS=ON
cmake --build --preset no-window --target ReliabilityTest BudgetTest HardeningTest FuzzCorpusTest RemakeTest
export QUILLMERE_EVERY_ERROR=1 QUILLMERE_KILLS=200 QUILLMERE_MANY=20000 QUILLMERE_REMAKE_SETS=1000
ctest --preset no-window --parallel "$(nproc)" --timeout 14400 --verbose \
    --tests-regex '(Fault|Kill|TwoPrograms|PowerCut|Isolation|Budget|Hardening|FuzzCorpus)Test|Remake\.' \
    | grep --line-buffered -E 'faults|kills|remains|Failure|FAILED|Passed|\*\*\*|tests passed|tests failed'
((seconds == 0)) || scripts/fuzz.sh "$seconds"
