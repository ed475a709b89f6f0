# Sourced by ../faults.sh: standard streams that are closed, full or stalled, and the system's log.

# stream FAULT STATUSES RUNNER: a verbose run of $mode by a function that redirects its streams.
stream() {
    fresh
    words_of "$mode" "$folder"
    "$3" "${words[@]}" -v 1
    status=$?
    row_of_run "$2" "$1, mode $mode"
    [ -z "${damaged}" ] || return
    # No line may have gone into a file that was opened with a closed stream's descriptor.
    if grep -rlq -e "tkvDvdMenuImg\[" "$folder"; then row "no lines in files" "lines in files" 1; fi
}

all_closed() { timeout -k 1 20 "$tool" "$@" <&- >&- 2>&-; }
input_closed() { timeout -k 1 20 "$tool" "$@" <&- 2>"$scratch/temp/lines"; }
errors_full() { timeout -k 1 20 "$tool" "$@" </dev/null 2>/dev/full; }
errors_unread() { timeout -k 1 20 "$tool" "$@" </dev/null 2> >(exec true); }
# A reader that never reads: the run waits for it, and can be ended.
errors_stalled() { timeout --preserve-status -k 5 2 "$tool" "$@" </dev/null 2<>"$silent"; }

faults_of_streams() {
    local mode
    for mode in -1 2; do
        stream "all streams closed" 0 all_closed
        stream "standard input closed" 0 input_closed
        stream "lines to a full disk" 0 errors_full
        stream "lines to a reader that is gone" 0 errors_unread
    done
    mode=0
    stream "lines to a reader that never reads, SIGTERM" 143 errors_stalled
    faults_of_log
}

faults_of_log() {
    fresh
    try_mode 2
    row_of_run 0 "no /dev/log"
    perl -MSocket -e 'socket(LOG, PF_UNIX, SOCK_DGRAM, 0) && bind(LOG, sockaddr_un("/dev/log"))
        && sleep 60' &
    local listener=$!
    for _ in {1..100}; do
        [ ! -S /dev/log ] || break
        sleep 0.05
    done
    [ -S /dev/log ] || row "a listener at /dev/log" "none" 1
    fresh
    try_mode 0
    row_of_run 0 "a stalled /dev/log"
    kill $listener
    wait $listener 2>/dev/null
    fresh
    try_mode 2
    row_of_run 0 "a /dev/log nobody listens to"
    rm -f "$scratch/dev/log"
}
