# Sourced by ../faults.sh: what is given to the second program as a film and is none.

faults_of_films() {
    make_films || return
    fresh
    make_no_films
    local name
    for name in playlist.m3u8 playlist.mp4 endless.m3u8 concat.mp4 manifest.mpd; do
        no_film "film is $name" "$name"
    done
    no_film "film is a playlist, --preview" --preview playlist.mp4
    no_film "film is a playlist, --write" --write made.toml playlist.mp4
    no_film "film is a playlist in a project file" playlist.toml
    no_film "music is a playlist" --music playlist.m3u8 film.mp4
    no_film "background is a playlist" --background playlist.m3u8 film.mp4
    for name in notes.txt film.nfo film.srt text.mp4 cover.jpg Thumbs.db empty.mp4 pipe.mp4 zero.mp4; do
        no_film "film is $name" "$name"
    done
    no_film "film is a folder" "$folder/private"
    no_film "music is a pipe" --music pipe.mp4 film.mp4
    no_film "project file is a pipe" pipe.toml
    a_folder_of_all
    no_reports
}

# Files that are no films, and a private one that playlists name.
make_no_films() {
    mkdir "$folder/private"
    cp "$scratch/temp/film1.mp4" "$folder/film.mp4"
    (
        cd "$folder" || exit
        ffmpeg -v error -nostdin -i film.mp4 -c:v mpeg2video -c:a mp2 private/film.ts
        ffmpeg -v error -nostdin -i film.mp4 -map 0:v -c copy -f dash private/manifest.mpd
        sed 's|initialization="|&private/|; s|media="|&private/|' private/manifest.mpd >manifest.mpd
        printf '#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:3,\nprivate/film.ts\n' >endless.m3u8
        (cat endless.m3u8 && echo '#EXT-X-ENDLIST') | tee playlist.m3u8 >playlist.mp4
        printf 'ffconcat version 1.0\nfile private/film.ts\n' >concat.mp4
        printf '[[film]]\npath = "playlist.mp4"\n' >playlist.toml
        echo "We went by boat." | tee notes.txt >text.mp4
        printf 'Title: Un été\nRuntime: 3\n%.0s' {1..200} >film.nfo
        printf '1\n00:00:00,000 --> 00:00:02,000\nHello\n\n' >film.srt
        cp "$media/cover.jpg" cover.jpg
        printf '\320\317\021\340\241\261\032\341%04096d' 0 >Thumbs.db
        : >empty.mp4
        mkfifo pipe.mp4 pipe.toml
        ln -s /dev/zero zero.mp4
    )
}

# no_film FAULT WORD…: a run within $folder is refused soon, with a sentence, and reads no private file.
no_film() {
    local answer=1 start=${EPOCHREALTIME/./} took said='a sentence' private='' sentence
    rm -rf "$folder/out" "$folder/made.toml"
    # With such a time the next access to it is noted.
    find "$folder/private" -type f -exec touch -a -d @1 {} +
    limit=10 try env -C "$folder" "$disc" --no-menu --no-image "${@:2}" -o out
    took=$(((${EPOCHREALTIME/./} - start) / 1000))
    [ -z "$(find "$folder/private" -type f -newerat @2)" ] || private=', a private file read'
    find_sentence
    [ -n "$sentence" ] || said='no sentence'
    [ ! -e "$folder/out/disc" ] || said='a disc'
    [ "$status $said$private" = '1 a sentence' ] && [ "$took" -lt 4000 ] && answer=0
    row "$1" "status $status, $said after $took ms$private" $answer
    [ -z "$sentence" ] || echo "    $1: $sentence"
}

# All files of a folder, as a shell lists them: those that are no films are named and passed over.
a_folder_of_all() {
    local answer=1 name titles unnamed=''
    rm -rf "$folder/out" "$folder"/*list* "$folder"/{concat,pipe,zero,empty}.* "$folder"/{endless,manifest}*
    echo '[.ShellClassInfo]' >"$folder/desktop.ini"
    # shellcheck disable=SC2016
    limit=60 try env -C "$folder" bash -c 'exec "$0" --no-menu --no-image *.* -o out' "$disc"
    titles=$(find "$folder/out/disc" -name 'VTS_*_0.IFO' 2>/dev/null | wc -l)
    for name in notes.txt text.mp4 film.nfo film.srt cover.jpg Thumbs.db desktop.ini; do
        [[ $lines == *"$name"* ]] || unnamed+=" $name"
    done
    [ "$status $titles$unnamed" = '0 1' ] && answer=0
    row "texts and pictures beside a film" "status $status, $titles films${unnamed:+, not named:$unnamed}" \
        $answer
}

# $FFREPORT has ffmpeg write a file wherever it says.
no_reports() {
    local answer=1 left report
    for report in "file=$folder/report.txt" level=48; do
        rm -rf "$folder/out"
        limit=60 try env -C "$folder" FFREPORT="$report" "$disc" --no-menu --no-image film.mp4 -o out
        left=$(find "$folder" -name '*report*' -o -name 'ff*-*.log' | wc -l)
        answer=1
        [ "$status $left" = "0 0" ] && answer=0
        row "FFREPORT=${report/$folder\//}" "status $status, $left reports" $answer
    done
}
