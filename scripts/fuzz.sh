#!/usr/bin/env bash
# Runs the fuzz targets for some time and prints a table of the results. The corpus is kept in
# build/fuzz/corpus, and the next run continues from there.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

usage="usage: fuzz.sh SECONDS [TARGET]
SECONDS are those of all targets together; as many run side by side as there are processors."
seconds=${1:?"$usage"}
only=${2:-}
[[ $seconds =~ ^[0-9]+$ ]] || { echo "$usage" >&2; exit 2; }

install_packages "${build_packages[@]}" "${fuzz_packages[@]}"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
build=$PWD/build/fuzz
fuzz/seeds.sh "$build/fuzz/seeds"

# The documented limit is 1 GiB; here the sanitizers' memory counts too. That which is allocated but
# never written to costs nothing: readers of pictures with 32-bit lengths in their headers allocate
# up to 4 GiB before they notice that the file is shorter. Targets measure the processor time
# themselves; the timeout is for what never ends, on however busy a machine.
limits=(-rss_limit_mb=1536 -malloc_limit_mb=4096 -timeout=60)
export ASAN_OPTIONS=allocator_may_return_null=1:quarantine_size_mb=64
export UBSAN_OPTIONS=print_stacktrace=1
export TMPDIR=$build/fuzz/scratch
mkdir -p "$build/crashes" "$build/logs" "$TMPDIR"
trap 'rm -rf "$TMPDIR"' EXIT

# Runs a target for some seconds, restarting it after each crash; writes its row of the table.
fuzz_target() {
    local run=$1 program=$2 most_bytes=$3 until=$((SECONDS + $4))
    local log=$build/logs/$run.log row=$build/logs/$run.row
    local corpus=$build/corpus/$run dictionary=fuzz/dictionaries/$run.dict folder
    local words=("${limits[@]}" -max_len=$most_bytes -print_final_stats=1)
    words+=(-artifact_prefix="$build/crashes/$run-")
    # A recipe need not be long to make a large file.
    [[ $run != *_made ]] || words+=(-len_control=0)
    local folders=("$corpus") executions=0 crashes=0 began=$SECONDS status
    mkdir -p "$corpus"
    for folder in "$build/fuzz/seeds/$run" "fuzz/found/$run"; do
        [ ! -d "$folder" ] || folders+=("$folder")
    done
    [ ! -f "$dictionary" ] || words+=(-dict="$dictionary")
    : >"$log"
    while [ $SECONDS -lt $until ] && [ $crashes -lt 10 ]; do
        status=0
        "$build/bin/$program" "${words[@]}" -max_total_time=$((until - SECONDS)) \
            "${folders[@]}" >"$log.part" 2>&1 || status=$?
        cat "$log.part" >>"$log"
        executions=$((executions + $(sed -n 's/^stat::number_of_executed_units: *//p' "$log.part" |
            tail -1 | grep . || echo 0)))
        [ $status -eq 0 ] || crashes=$((crashes + 1))
    done
    rm -f "$log.part"
    printf '%-15s %12d %8d %9s %8d\n' "$run" $executions $((SECONDS - began)) \
        "$(grep -o 'cov: [0-9]*' "$log" | tail -1 | grep -o '[0-9]*' || echo 0)" $crashes >"$row"
}

mapfile -t targets < <(awk -v only="$only" 'only == "" || only == $1' "$build/fuzz/targets")
[ ${#targets[@]} -gt 0 ] || {
    echo "There is no target $only; there are:" $(cut -d ' ' -f 1 "$build/fuzz/targets") >&2
    exit 2
}
share=$((seconds / ${#targets[@]}))
[ $share -gt 0 ] || share=1
rm -f "$build"/logs/*.row
touch "$build/began"
for target in "${targets[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n; done
    fuzz_target $target $share &
done
wait

printf '%-15s %12s %8s %9s %8s\n' target executions seconds edges crashes
for target in "${targets[@]}"; do cat "$build/logs/${target%% *}.row"; done
mapfile -t found < <(find "$build/crashes" -type f -newer "$build/began" | sort)
for input in "${found[@]}"; do
    run=$(basename "$input")
    program=$(awk -v run="${run%%-*}" '$1 == run { print $2 }' "$build/fuzz/targets")
    echo "Crash: $input"
    echo "  run again: ASAN_OPTIONS=$ASAN_OPTIONS ${build@Q}/bin/$program ${limits[*]} ${input@Q}"
done
! awk '{ crashes += $NF } END { exit crashes == 0 }' "$build"/logs/*.row
