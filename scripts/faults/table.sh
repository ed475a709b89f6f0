# Sourced by ../faults.sh: what happened, row by row.

rows=()
failures=0
group=''

in_group() {
    group=$1
    echo "== $group"
}

# row FAULT WHAT_HAPPENED ANSWER: 0 when it is as expected.
row() {
    local mark=yes
    if [ "$3" -ne 0 ]; then
        mark=NO
        failures=$((failures + 1))
        printf '%s\n' "--- $1: $2" "${lines:-}"
    fi
    rows+=("$(printf '%-8s %-52s %-52s %s' "$group" "$1" "$2" "$mark")")
}

# A row about the last run: it ended by itself with one of the statuses (words of $1), and left no
# damaged file below $folder.
row_of_run() {
    look_at "$folder"
    local answer=1
    [[ " $1 " == *" $status "* ]] && [ -z "$damaged" ] && answer=0
    row "$2" "status $status, $whole whole files${damaged:+, damaged: $damaged}" $answer
}

# The same for many runs in one row: `tally STATUSES` after each, `row_of_runs FAULT` at the end.
runs=0 odd='' seen=''
tally() {
    look_at "$folder"
    count_run "$@"
}
count_run() {
    runs=$((runs + 1))
    [[ " $seen " == *" $status "* ]] || seen+=" $status"
    [[ " $1 " == *" $status "* ]] && [ -z "$damaged" ] || odd+=" ${2:-run $runs}:$status:$damaged"
}
row_of_runs() {
    local answer=0
    [ -z "$odd" ] || answer=1
    row "$1" "$runs runs, statuses$seen${odd:+; odd:$odd}" $answer
    runs=0 odd='' seen=''
}

show_table() {
    printf '\n%-8s %-52s %-52s %s\n' group fault "what happened" "as wanted"
    printf '%s\n' "${rows[@]}"
    printf '\n%d faults, %d not as wanted\n' ${#rows[@]} "$failures"
    [ "$failures" -eq 0 ]
}
