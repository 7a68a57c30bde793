#!/usr/bin/env bash
# Divides one large generation among workers, with GNU parallel and as a job array of Slurm, checks that the
# files are those of one run, byte for byte, and measures the throughput. The figures of docs/scale.md.
# usage: scripts/bench-scale.sh [COUNT [SECONDS [WORKERS...]]]
#
# COUNT variations (10000, if nothing is said) of a model whose clips are of so many seconds (0.2), by so many
# workers at once (1, 2 and 4). Needs root for Slurm, and about 150 kB of disk for each second of sound, twice.
set -euo pipefail
cd "$(dirname "$0")/.."

source scripts/program.sh
count=${1:-10000}
seconds=${2:-0.2}
workers=("${@:3}")
((${#workers[@]})) || workers=(1 2 4)
corpus="build/demo/Drum Hits"
models=build/demo/models-$seconds
scripts/setup.sh build demo scale
[[ -x $cli ]] || build_program
[[ -d $corpus ]] || collect_drum_hits "$corpus"
"$cli" train "$corpus" --steps 300 --clip-seconds "$seconds" --models "$models" > /dev/null

work=$(mktemp -d)
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT
# What all workers share is only read.
cp -r --preserve=timestamps "$corpus" "$work/corpus"
cp -r "$models" "$work/models"
mv "$work/corpus" "$work/Drum Hits"
chmod -R a-w "$work/models" "$work/Drum Hits"
export cli="$PWD/$cli" work

# part FOLDER FIRST COUNT THREADS: variations FIRST, FIRST + 1, ... of the job.
part() {
    "$cli" generate "$work/Drum Hits" --models "$work/models" --output "$1" --seed 7 --first "$2" --count "$3" \
        --threads "$4" --no-journal > /dev/null 2>&1
}
export -f part

# timed NAME COMMAND...: a row of the table.
timed() {
    local name=$1 start end
    shift
    start=$(date +%s.%N)
    "$@"
    end=$(date +%s.%N)
    awk -v name="$name" -v count="$count" -v start="$start" -v end="$end" \
        'BEGIN { printf "| %s | %.0f s | %.1f |\n", name, end - start, count / (end - start) }'
}
compare() {
    (cd "$work/$1" && sha256sum --check --quiet "$work/digests") || { echo "$1 differs from one run" >&2; exit 1; }
    [[ $(find "$work/$1" -type f | wc -l) -eq $count ]] || { echo "$1 has other files than one run" >&2; exit 1; }
    rm -r "${work:?}/$1"
}

# parallel_parts WORKERS: parts of 100, so that nobody waits long for the last one.
parallel_parts() {
    seq 1 100 "$count" | parallel --jobs "$1" --halt now,fail=1 \
        'left=$((COUNT - {} + 1)); part "$work/parallel" {} $((left < 100 ? left : 100)) 1'
}
slurm_parts() {
    local parts=$(((count + 99) / 100))
    cat > "$work/job.sh" << 'EOF'
#!/bin/bash
first=$((SLURM_ARRAY_TASK_ID * 100 + 1))
left=$((COUNT - first + 1))
part "$work/slurm" "$first" $((left < 100 ? left : 100)) 1
EOF
    sbatch --quiet --wait --array="0-$((parts - 1))" --output=/dev/null "$work/job.sh"
}
export -f slurm_parts
export COUNT=$count count

echo "$count variations on $(nproc) processors; average load before: $(cut -d' ' -f1 /proc/loadavg)"
echo '| | time | variations per second |'
echo '|---|---|---|'
timed 'one run, all processors' part "$work/whole" 1 "$count" "$(nproc)"
(cd "$work/whole" && sha256sum -- *.wav > "$work/digests")
rm -r "$work/whole"
for number in "${workers[@]}"; do
    timed "GNU parallel, at most $number at once" parallel_parts "$number"
    compare parallel
done
for number in "${workers[@]}"; do
    timed "Slurm, at most $number at once" scripts/slurm-here.sh "$number" bash -c slurm_parts
    compare slurm
done
echo "Every file has the bytes of one run."
