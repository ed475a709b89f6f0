# Sourced by ../faults.sh: the second program, whose programs fail, hang, are killed or fill the disk.

programs=(ffprobe ffmpeg spumux dvdauthor genisoimage)

# Programs of these names that do as the real ones, but for one call: the $FAULT_CALL'th of
# $FAULT_PROGRAM does what $FAULT says, a word or a script.
make_faulty_programs() {
    local program
    mkdir -p "$scratch/faulty"
    for program in "${programs[@]}"; do
        cat >"$scratch/faulty/$program" <<EOF
#!/bin/bash
call=1
real=$(command -v "$program")
until mkdir "$scratch/temp/calls/$program.\$call" 2>/dev/null; do call=\$((call + 1)); done
if [ "\$FAULT_PROGRAM \$FAULT_CALL" = "$program \$call" ]; then
    case \$FAULT in
        fail) echo "ERR:  it failed" >&2; exit 1 ;;
        lie) exit 0 ;;
        die) kill -9 \$\$ ;;
        hang) echo \$\$ >"$scratch/temp/hung"; exec sleep 1000 ;;
        gone) kill -9 \$(cat "$scratch/temp/server") ;;
        full) dd if=/dev/zero of="$scratch/disk/other" bs=64k 2>/dev/null ;;
        *) eval "\$FAULT" ;;
    esac
fi
exec "\$real" "\$@"
EOF
        chmod +x "$scratch/faulty/$program"
    done
}

make_films() {
    local i
    for i in 1 2; do
        [ ! -e "$scratch/temp/film$i.mp4" ] || continue
        ffmpeg -v error -nostdin -f lavfi -i "testsrc2=s=320x240:r=25:d=3" \
            -f lavfi -i "sine=$((i * 300)):d=3" -c:v mpeg4 -c:a aac "$scratch/temp/film$i.mp4" ||
            return 1
    done
}

no_calls_yet() {
    rm -rf "$scratch/temp/calls" "$scratch/temp/hung"
    mkdir "$scratch/temp/calls"
}

# run_disc PROGRAM CALL FAULT: runs the program with that fault, its output in $folder.
run_disc() {
    no_calls_yet
    FAULT_PROGRAM=$1 FAULT_CALL=$2 FAULT=$3 PATH=$scratch/faulty:$PATH limit=60 \
        try "$disc" "$scratch/temp/film1.mp4" "$scratch/temp/film2.mp4" -o "$folder/out"
}

# The reason that the last run gives, in $sentence.
find_sentence() {
    sentence=$(grep -a '^tkvDvdDisc: ' <<<"$lines" | tail -n 1)
    sentence=${sentence#tkvDvdDisc: }
}

# A row: the status is one of $2's words, one sentence says why (unless it is 0), nothing of the disc
# is there in part, and no program runs on.
row_of_disc() {
    local answer=1 left
    left=$(pgrep -c '^(ffmpeg|ffprobe|spumux|dvdauthor|genisoimage|sleep)$' 2>/dev/null)
    local made='no disc'
    [ ! -e "$folder/out/disc" ] || made='half a disc'
    [ ! -e "$folder/out/disc/VIDEO_TS/VTS_02_0.IFO" ] || made='a disc'
    [ ! -e "$folder/out/disc.iso" ] || made+=', an image'
    local sentence
    find_sentence
    [[ " $2 " == *" $status "* ]] && [ "$left" -eq 0 ] && answer=0
    [ "$status" -ne 1 ] || [ -n "$sentence" ] || answer=1
    [ "$status" -eq 0 ] || [ "$made" = 'no disc' ] || answer=1
    [ "$status" -ne 0 ] || [ "$made" = 'a disc, an image' ] || answer=1
    [ -z "$(ls -A "$folder/out/work/unfinished" 2>/dev/null)" ] || answer=1
    row "$1" "status $status, $made, $left left running" $answer
    # To be read by a person.
    [ -z "$sentence" ] || echo "    $1: $sentence"
}

faults_of_disc() {
    make_faulty_programs
    make_films || return
    fresh
    run_disc none 0 none
    row_of_disc "nothing wrong" 0
    mv "$folder/out/work" "$scratch/temp/work"
    local program call fault calls
    calls=$(find "$scratch/temp/calls" -name "ffmpeg.*" | wc -l)
    for program in "${programs[@]}"; do
        # Of ffmpeg, which does most, also a call in the middle and the last one.
        local chosen=1
        [ "$program" != ffmpeg ] || chosen="1 $((calls / 2)) $calls"
        for call in $chosen; do
            for fault in fail lie die full gone hang; do
                fault_of_disc "$program" "$call" $fault
            done
        done
    done
    again_after_fault
}

# fault_of_disc PROGRAM CALL FAULT
fault_of_disc() {
    if [ "$3" = gone ]; then
        mount_share || return
        echo "$server" >"$scratch/temp/server"
    else
        small 400m
    fi
    case $1 in
        dvdauthor | genisoimage)
            # What comes before is there already.
            mkdir "$folder/out"
            : >"$folder/out/.tkvDvdDisc"
            cp -a "$scratch/temp/work" "$folder/out/work"
            ;;
    esac
    if [ "$3" = hang ]; then
        hang_disc "$1" "$2"
    else
        run_disc "$@"
        [ "$3" != gone ] || fusermount -uz "$folder" 2>/dev/null || umount -l "$folder"
        # Where no picture comes out of ffmpeg, another moment of the film serves as well; ffprobe is
        # asked once more where it answers nothing. The last call of ffmpeg takes a picture for the
        # cover, which goes without it.
        local statuses=1
        case "$1 $2 $3" in
            ff*' lie' | "ffmpeg $calls fail" | "ffmpeg $calls die") statuses="0 1" ;;
        esac
        row_of_disc "$1, call $2: $3" "$statuses"
    fi
}

# The hung program is ended with the run.
hang_disc() {
    no_calls_yet
    FAULT_PROGRAM=$1 FAULT_CALL=$2 FAULT=hang PATH=$scratch/faulty:$PATH "$disc" \
        "$scratch/temp/film1.mp4" "$scratch/temp/film2.mp4" -o "$folder/out" \
        </dev/null >"$scratch/temp/lines" 2>&1 &
    local run=$! i
    for i in {1..600}; do
        [ ! -s "$scratch/temp/hung" ] || break
        sleep 0.05
    done
    kill -TERM $run
    timeout 10 tail --pid=$run -s 0.05 -f /dev/null || kill -KILL $run
    wait $run 2>/dev/null
    status=$?
    lines=$(cat "$scratch/temp/lines")
    row_of_disc "$1, call $2: hang, SIGTERM" 143
}

# What a fault has left does not spoil the next run.
again_after_fault() {
    small 400m
    run_disc dvdauthor 1 full
    rm -f "$folder/other"
    run_disc none 0 none
    row_of_disc "again, with room now" 0
    chmod -R a-w "$folder/out"
    mount -o remount,ro "$folder"
    run_disc none 0 none
    # Earlier results are still there, so only the status and the sentence count.
    local answer=1
    [ $status -eq 1 ] && grep -q '^tkvDvdDisc: ' <<<"$lines" && answer=0
    row "again, read-only now" "status $status" $answer
}
