# Sourced by ../faults.sh: what the second program has not made, where it puts what it makes.

# What lies below a folder, by name and content, but for the marks that the program sets.
contents_of() {
    (cd "$1" && find . ! -name .tkvDvdDisc \
        \( -type f -exec md5sum {} + -o -type l -printf '%l %p\n' -o -print \)) | sort
}

# How much of earlier contents is not below the folder any more, in $lost.
count_lost() { lost=$(comm -23 <(echo "$1") <(contents_of "$2") | wc -l); }

# keeps FAULT STATUS SENTENCE FOLDER WORD…: a run within $folder that leaves all that is in FOLDER. One
# that is refused is so before it starts any program.
keeps() {
    local before lost calls answer=1
    before=$(contents_of "$folder/$4")
    no_calls_yet
    limit=60 try env -C "$folder" PATH="$scratch/faulty:$PATH" "$disc" "${@:5}"
    count_lost "$before" "$folder/$4"
    calls=$(find "$scratch/temp/calls" -mindepth 1 | wc -l)
    [ "$status $lost" = "$2 0" ] && [[ $lines == *"$3"* ]] && answer=0
    [ "$status" -eq 0 ] || [ "$calls" -eq 0 ] || answer=1
    row "$1" "status $status, $lost lost, $calls programs started" $answer
}

# A disc that a run has made in $folder/out, and what others have put there.
made_disc() {
    fresh
    cp -a "$scratch/temp/made" "$folder/out"
    mkdir -p "$folder"/{others/unfinished,out/menus}
    cp "$film" "$folder/out/work/a.mp4"
    cp "$film" "$folder/out/menus/a.mp4"
    ln -s out/work/a.mp4 "$folder/link.mp4"
    echo Dear >"$folder/others/letter"
    cp "$folder/others/letter" "$folder/others/unfinished"
    : >"$folder/others/.tkvDvdDisc"
}

faults_of_places() {
    make_faulty_programs
    make_films || return
    local film=$scratch/temp/film1.mp4 words name option
    fresh
    try "$disc" --no-menu --no-image "$film" -o "$folder/out"
    rm -rf "$scratch/temp/made"
    cp -a "$folder/out" "$scratch/temp/made"
    for option in --no-menu --preview --clean; do
        made_disc
        rm -r "$folder/out/work"
        ln -s ../others "$folder/out/work"
        keeps "work/ is a link, $option" 1 "is no folder of its own" others $option "$film" -o out
    done
    for words in out/work/a.mp4 link.mp4 out/disc "$film --music out/menus/a.mp4" \
        "$film --background out/jacket.jpg" "--preview out/work/a.mp4"; do
        made_disc
        # shellcheck disable=SC2086
        keeps "in its own results: ${words//$film /}" 1 "lies where a run puts" . $words -o out
    done
    for option in --no-image --clean; do
        made_disc
        mv "$folder/others" "$folder/out/work/notes-0123456789abcde"
        mkdir "$folder/mine"
        mv "$folder/out/work/"{a.mp4,notes*} "$folder/mine"
        cp -a "$folder/mine/." "$folder/out/work"
        keep_in_work $option
    done
    for name in disc work menus; do
        made_disc
        mount -t tmpfs none "$folder/out/$name"
        echo Dear >"$folder/out/$name/letter"
        keeps "$name is a mount point" 1 "is a mount point" . "$film" -o out
        umount "$folder/out/$name"
    done
    for name in ffmpeg dvdauthor genisoimage; do
        moved_meanwhile $name
    done
}

# keep_in_work OPTION: other files in work/ stay, whatever else goes. They are in mine/, too.
keep_in_work() {
    local mine lost answer=1
    mine=$(contents_of "$folder/mine")
    limit=60 try "$disc" --no-menu "$1" "$scratch/temp/film2.mp4" -o "$folder/out"
    count_lost "$mine" "$folder/out/work"
    [ "$status $lost" = "0 0" ] && answer=0
    row "files of others in work/, $1" "status $status, $lost lost" $answer
}

# moved_meanwhile PROGRAM: the output folder is moved, and another disc's put in its place.
moved_meanwhile() {
    made_disc
    mv "$folder/out" "$folder/other"
    touch "$folder/other/disc.iso"
    local before lost answer=1
    before=$(contents_of "$folder/other")
    run_disc "$1" 1 "mv '$folder/out' '$folder/moved'; mv '$folder/other' '$folder/out'"
    count_lost "$before" "$folder/out"
    [ "$status $lost" = "1 0" ] && [[ $lines == *"tkvDvdDisc: "* ]] && answer=0
    row "output folder moved while $1 runs" "status $status, $lost of another's lost" $answer
}
