# Sourced by ../faults.sh: the second program is ended, and what it has kept is spoilt; the next run makes
# the same disc.

faults_of_ends() {
    make_faulty_programs
    make_films || return
    ends_while_computing
    local film=$scratch/temp/film1.mp4
    programs_end TERM 143 "hangs" 'exec sleep 1000'
    programs_end TERM 143 "hangs, its script waits" 'sleep 1000'
    programs_end TERM 143 "ignores SIGTERM" "trap '' TERM; exec sleep 1000"
    programs_end KILL 137 "hangs" 'exec sleep 1000'
    # shellcheck disable=SC2016
    programs_end KILL 137 "encodes" 'exec nice "$real" -re "$@"'
    again_after_ends
}

# The time until a process is gone, in milliseconds, in $took; it gets ten seconds.
time_end() {
    local start=${EPOCHREALTIME/./}
    timeout 10 tail --pid="$1" -s 0.02 -f /dev/null || kill -KILL "$1"
    wait "$1" 2>/dev/null
    status=$?
    took=$(((${EPOCHREALTIME/./} - start) / 1000))
}

# A project file whose tables are looked for one by one takes more than 20 seconds.
ends_while_computing() {
    local run took answer signals
    fresh
    perl -e 'print "a$_.b = 1\n" for 1 .. 600000; print "a$_.c = 1\n" for reverse 1 .. 600000' |
        head -c 15000000 >"$folder/slow.toml"
    for signals in 1 2; do
        "$disc" --preview "$folder/slow.toml" -o "$folder/out" </dev/null >"$scratch/temp/lines" 2>&1 &
        run=$!
        sleep 2
        kill -TERM $run
        [ $signals = 1 ] || { sleep 0.3 && kill -TERM $run; }
        time_end $run
        read_lines
        answer=1
        [ "$status" -eq 143 ] && [ "$took" -le $((signals == 1 ? 2500 : 500)) ] && answer=0
        row "$signals SIGTERM while it computes" "status $status after $took ms" $answer
    done
}

# programs_end SIGNAL STATUS WHAT SCRIPT: a run is ended while its ffmpeg does so, and a second later none
# of its programs is left.
programs_end() {
    local run took answer=1 left i
    fresh
    no_calls_yet
    FAULT_PROGRAM=ffmpeg FAULT_CALL=1 FAULT="touch '$scratch/temp/hung'; $4" PATH=$scratch/faulty:$PATH \
        "$disc" --no-menu --no-image "$film" -o "$folder/out" </dev/null >"$scratch/temp/lines" 2>&1 &
    run=$!
    for i in {1..200}; do
        [ ! -e "$scratch/temp/hung" ] || break
        sleep 0.05
    done
    sleep 0.2
    kill "-$1" $run
    time_end $run
    read_lines
    sleep 1
    left=$(pgrep '^(ffmpeg|ffprobe|sleep)$' 2>/dev/null)
    [ -z "$left" ] || xargs kill -KILL <<<"$left"
    [ "$status:$left" = "$2:" ] && [ "$took" -le 2500 ] && [ -e "$scratch/temp/hung" ] && answer=0
    row "ffmpeg $3, SIG$1" "status $status after $took ms, $(wc -w <<<"$left") left running" $answer
}

# What is spoilt or ended here is of films so short that a run takes a second, or with a menu some.
again_after_ends() {
    local i options length='' start made
    for i in 1 2; do
        ffmpeg -v error -nostdin -y -f lavfi -i "testsrc2=s=160x120:r=25:d=1" \
            -f lavfi -i "sine=$((i * 300)):d=1" -c:v mpeg4 -c:a aac "$scratch/temp/short$i.mp4" || return
    done
    for options in --no-menu ''; do
        fresh
        start=${EPOCHREALTIME/./}
        try_short "$options"
        length+="$(((${EPOCHREALTIME/./} - start) / 1000)) "
        [ "$status" -eq 0 ] || row "a disc of short films, $options" "status $status" 1
        rm -rf "$scratch/temp/first$options"
        cp -a "$folder/out" "$scratch/temp/first$options"
    done
    spoilt_results
    # shellcheck disable=SC2086
    rounds_of_ends $length
}

# short_words OPTION: the words of such a run, in $words.
short_words() {
    words=(--no-image "$scratch/temp/short1.mp4" "$scratch/temp/short2.mp4" -o "$folder/out")
    [ -z "$1" ] || words+=("$1")
}

try_short() {
    short_words "$1"
    limit=60 try "$disc" "${words[@]}"
}

# compare_disc OPTION: is the disc that of an undisturbed run? $made says it.
compare_disc() {
    made='the same disc'
    diff -rq "$scratch/temp/first$1/disc" "$folder/out/disc" >/dev/null 2>&1 || made='another disc'
}

# first_results OPTION PATTERN…: what an undisturbed run has left, but the disc and such files in work/.
first_results() {
    fresh
    cp -a "$scratch/temp/first$1" "$folder/out"
    # shellcheck disable=SC2048,SC2086
    (cd "$folder/out/work" && rm -r ../disc ${*:2})
}

# Of each kind of kept results one is spoilt, and the next run makes it again. It says so of those that
# take long.
spoilt_results() {
    local path name kind seen='' option part made said answer
    first_results '' 'menu-*' 'background-*' 'dot-*' 'picture-*' 'answer-*' 'counts-*'
    try_short ''
    compare_disc ''
    row "results removed" "status $status, $made" "$([ "$made" = 'the same disc' ]; echo $?)"
    for path in "$scratch"/temp/first--no-menu/work/*-* \
        "$scratch"/temp/first/work/{background,dot,excerpt,menu}-*; do
        name=${path##*/} kind=${name%%-*} option=--no-menu
        [[ $path != */first/* ]] || option=''
        [[ "$seen " != *" $kind "* ]] || continue
        seen+=" $kind"
        for part in half none; do
            # Nor is there what was made of it, or it is not looked at.
            if [[ $kind =~ ^(background|dot|excerpt)$ ]]; then
                first_results "$option" 'menu-*'
            else
                first_results "$option"
            fi
            spoil "$folder/out/work/$name" $part
            try_short "$option"
            said='says nothing'
            ! grep -aqiE '\b(again|anew|damaged)\b' "$scratch/temp/lines" || said='says so'
            compare_disc "$option"
            [ "$kind $made" != 'excerpt another disc' ] || compare_with_cut "$name"
            answer=1
            [ "$status $made" = '0 the same disc' ] && answer=0
            [[ ! $kind =~ ^(film|excerpt|menu)$ ]] || [ "$said" = 'says so' ] || answer=1
            row "of a kept $kind there is $part" "status $status, $made, $said" $answer
        done
    done
}

# compare_with_cut EXCERPT: one that is missing is cut from the encoded film, which costs it some quality.
compare_with_cut() {
    local status lines
    mv "$folder/out/disc" "$scratch/temp/made-disc"
    first_results '' 'menu-*' "$1"
    try_short ''
    made='another disc'
    ! diff -rq "$scratch/temp/made-disc" "$folder/out/disc" >/dev/null || made='the same disc'
    rm -r "$scratch/temp/made-disc"
}

# spoil PATH PART: only half of a file's bytes or of a folder's files is left, or no byte of any.
spoil() {
    local files=("$1")
    [ ! -d "$1" ] || files=("$1"/*)
    if [ "$2" = none ]; then
        truncate -s 0 "${files[@]}"
    elif [ -d "$1" ]; then
        rm "${files[@]:${#files[@]}/2}"
    else
        truncate -s $(($(stat -c %s "$1") / 2)) "$1"
    fi
}

# rounds_of_ends MILLISECONDS…: runs of about that length, without and with a menu, end at random moments.
rounds_of_ends() {
    local round signal option run made moment took ended=0
    RANDOM=${SEED:=1}
    echo "    ${ROUNDS:=30} rounds of $1 or $2 ms, seed $SEED"
    for ((round = 1; round <= ROUNDS; ++round)); do
        signal=TERM option=--no-menu moment=$((RANDOM % $1)) damaged=''
        ((round % 3)) || signal=KILL
        ((round % 5)) || { option='' && moment=$((RANDOM % $2)); }
        fresh
        short_words "$option"
        "$disc" "${words[@]}" </dev/null >"$scratch/temp/lines" 2>&1 &
        run=$!
        sleep "$((moment / 1000)).$(printf '%03d' $((moment % 1000)))"
        kill -$signal $run 2>/dev/null
        time_end $run 2>/dev/null
        [ "$status" -eq 0 ] || ended=$((ended + 1))
        [[ $status =~ ^(0|137|143)$ ]] || damaged="ends with $status "
        # A disc that is there already is whole.
        made=''
        [ ! -e "$folder/out/disc" ] || compare_disc "$option"
        [ "$made" != 'another disc' ] || damaged+="half a disc "
        try_short "$option"
        compare_disc "$option"
        [ "$made" = 'the same disc' ] || damaged+=$made
        count_run 0 "round $round, SIG$signal after $moment ms"
    done
    [ $ended -gt 0 ] || odd+=" none ended"
    row_of_runs "again after SIGTERM or SIGKILL ($ended ended)"
}
