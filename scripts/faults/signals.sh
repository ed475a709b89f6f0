# Sourced by ../faults.sh: runs that are ended from outside.

# kill_at SECONDS SIGNAL COMMAND…: ends the command after so long, if it still runs.
kill_at() {
    # timeout is no job in the background here, where the shell would have it ignore SIGINT.
    timeout --preserve-status -k 5 -s "$2" "$1" "${@:3}" </dev/null >"$scratch/temp/lines" 2>&1
    status=$?
}

faults_of_signals() {
    local signal mode number moment
    for signal in TERM INT HUP; do
        number=$(kill -l $signal)
        for mode in -1 0 1 2; do
            for moment in 1 2 3 5 8 12 16 20 25 30 40 50 65 80 100 150 200; do
                fresh
                words_of $mode "$folder"
                kill_at "$(printf '0.%03d' $moment)" $signal "$tool" "${words[@]}"
                tally "0 $((128 + number))" "${moment}ms"
            done
            row_of_runs "SIG$signal after 1 to 200 ms, mode $mode"
        done
    done
    # A multiplexer that hangs, or prints without end, holds a run for ten seconds at most.
    faulty_multiplexer "hangs" "exec sleep 1000" "1[0-9]"
    faulty_multiplexer "prints without end" "exec yes version" "[01]"
    faulty_multiplexer "is killed" "kill -9 \$\$" "0"
    faulty_multiplexer "reads" "cat; echo version 0.7.2" "0"
}

# faulty_multiplexer WHAT SCRIPT SECONDS
faulty_multiplexer() {
    fresh
    mv "$spumux" "$spumux.real"
    printf '#!/bin/sh\n%s\n' "$2" >"$spumux"
    chmod +x "$spumux"
    local start=$SECONDS answer=1
    words_of 2 "$folder"
    # Its own input is one that nobody writes to.
    timeout -k 1 30 "$tool" "${words[@]}" <>"$silent" >"$scratch/temp/lines" 2>&1
    status=$?
    local took=$((SECONDS - start))
    mv "$spumux.real" "$spumux"
    look_at "$folder"
    [[ $took =~ ^$3$ ]] && [ $status -eq 0 ] && [ $whole -eq 4 ] && answer=0
    row "multiplexer $1" "status $status, $whole whole files, ${took} s" $answer
}
