# Sourced by ../faults.sh: the second program, with more around it than it can take, or less than it needs.

faults_of_loads() {
    make_faulty_programs
    make_films || return
    local film=$scratch/temp/film1.mp4
    floods "ffmpeg prints 1 GB of lines" ffmpeg 1 64 'yes "[mpeg @ 0x55] an error" | head -c 1G >&2'
    floods "ffmpeg prints a line of 1 GB" ffmpeg 1 64 'head -c 1G /dev/zero >&2'
    floods "ffmpeg reports 1 GB of progress" ffmpeg 2 64 'yes "frame=1" | head -c 1G'
    floods "ffprobe answers 1 GB" ffprobe 1 256 'yes "{\"streams\": []}," | head -c 1G; exit'
    floods "ffprobe answers without end" ffprobe 1 256 'exec yes "{\"streams\": []},"'
    project_files
    full_outputs
    few_descriptors
    few_processes
    paths_of_programs
}

# floods FAULT PROGRAM CALL MEBIBYTES SCRIPT: the run ends by itself, and takes no more memory than that.
floods() {
    local answer=1 peak=0 run now
    fresh
    no_calls_yet
    FAULT_PROGRAM=$2 FAULT_CALL=$3 FAULT=$5 PATH=$scratch/faulty:$PATH timeout -k 1 20 "$disc" --no-menu \
        --no-image "$film" -o "$folder/out" </dev/null >"$scratch/temp/lines" 2>&1 &
    run=$!
    while kill -0 $run 2>/dev/null; do
        # shellcheck disable=SC2016
        now=$(pgrep -x tkvDvdDisc | xargs -I{} awk '/VmHWM/ {print int($2 / 1024)}' /proc/{}/status \
            2>/dev/null | sort -n | tail -n 1)
        [ "${now:-0}" -le "$peak" ] || peak=$now
        sleep 0.05
    done
    wait $run
    status=$?
    read_lines
    [[ $status =~ ^[01]$ ]] && [ "$peak" -gt 0 ] && [ "$peak" -le "$4" ] && answer=0
    row "$1" "status $status, $peak MiB" $answer
}

# says FAULT STATUS SENTENCE COMMAND…: how it ends, and what it says.
says() {
    local answer=1 sentence
    limit=60 try "${@:4}"
    find_sentence
    [ "$status" -eq "$2" ] && [[ $sentence == *"$3"* ]] && answer=0
    row "$1" "status $status, ${sentence:-no sentence}" $answer
}

project_files() {
    fresh
    perl -e 'print "# a line\n" x 2000000' >"$folder/large.toml"
    says "project file of 17 MiB, 64 MiB of memory" 1 "is too large for a project file" \
        prlimit --as=$((64 << 20)) "$disc" --preview "$folder/large.toml" -o "$folder/out"
    perl -e 'print "a", ".a" x 100000, " = 1\n"' >"$folder/deep.toml"
    says "project file with a key of 100000 parts" 1 "" "$disc" --preview "$folder/deep.toml" \
        -o "$folder/out"
}

full_outputs() {
    fresh
    local words
    for words in "--no-menu --no-image $film -o out" "--preview $film -o out" \
        "--write film.toml $film" --help --version; do
        # shellcheck disable=SC2016,SC2086
        says "standard output full, ${words%% *}" 1 "standard output cannot be written to" \
            env -C "$folder" bash -c 'exec "$0" "$@" >/dev/full' "$disc" $words
    done
}

few_descriptors() {
    local count
    for count in {3..16} 20 24; do
        fresh
        # shellcheck disable=SC2016
        limit=60 try bash -c 'ulimit -n '"$count"'; exec "$@"' - "$disc" --no-menu --no-image "$film" \
            -o "$folder/out"
        count_reason "0 1 127" "$count descriptors"
    done
    row_of_runs "3 to 24 descriptors"
}

# count_reason STATUSES RUN: a run that fails gives a reason, and blames nobody else.
count_reason() {
    local sentence
    find_sentence
    damaged=''
    [[ ! $sentence =~ 'Install the package'|'Another run'|'no such film' ]] || damaged='a wrong reason'
    [ "$status" -ne 1 ] || [ -n "$sentence" ] || damaged='no sentence'
    count_run "$@"
    # To be read by a person.
    [ -z "$sentence" ] || echo "    $2: $sentence"
}

few_processes() {
    local count as_other=()
    chmod a+rx "$scratch"
    # For root there is no such limit.
    [ "$(awk '$1 == 0 {print $2}' /proc/self/uid_map)" != 0 ] || as_other=(setpriv --reuid 1)
    for count in {1..12}; do
        fresh
        chmod a+rwx "$folder"
        try prlimit --nproc="$count" "${as_other[@]}" "$disc" --no-menu --no-image "$film" -o "$folder/out"
        # Pango ends a process in which it cannot start a thread.
        count_reason "0 1 133" "$count processes"
    done
    row_of_runs "1 to 12 processes and threads"
}

paths_of_programs() {
    local path calls answer
    for path in faulty :faulty ./faulty temp/../faulty; do
        fresh
        no_calls_yet
        limit=60 try env -C "$scratch" PATH="$path:$PATH" "$disc" --no-menu --no-image "$film" -o disk/out
        calls=$(find "$scratch/temp/calls" -mindepth 1 -printf '%f\n' | cut -d. -f1 | sort -u | xargs)
        answer=1
        [ "$status $calls" = '0 dvdauthor ffmpeg ffprobe' ] && answer=0
        row "PATH of $path" "status $status, of it: $calls" $answer
    done
    says "PATH without programs" 1 "is missing. Install the package" \
        env PATH=/none "$disc" "$film" -o "$folder/out"
}
