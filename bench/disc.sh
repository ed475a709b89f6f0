# Sourced by compare.sh: the workload D1, from films to a disc.
#
# Three films of two minutes in 1080p, one of them with a chapter menu, against ffmpeg encoding
# the same films with the same settings, one after another.

# Slow camera moves over painted pictures, with film grain: what an H.264 camera file holds.
make_films() { # FOLDER
    local i=0 still
    for still in harbour city forest; do
        ffmpeg -nostdin -v error -loop 1 -framerate 25 -t 20 -i "$media/$still.jpg" \
            -f lavfi -i "anoisesrc=color=pink:amplitude=0.1:sample_rate=48000:duration=20" \
            -vf "scale=2560:1440,setsar=1,crop=1920:1080:x=(iw-ow)*(0.5+0.5*sin(n/80+$i)):
                y=(ih-oh)*(0.5+0.5*cos(n/63+$i)),noise=alls=3:allf=t,format=yuv420p" \
            -c:v libx264 -preset veryfast -crf 22 -c:a aac "$1/part.mp4"
        printf "file part.mp4\n%.0s" 1 2 3 4 5 6 >"$1/list"
        ffmpeg -nostdin -v error -f concat -i "$1/list" -c copy "$1/$i.mp4"
        rm "$1/part.mp4" "$1/list"
        i=$((i + 1))
    done
    for i in 1 2 3 4 5 6 7 8 9; do ln -s "$((i % 3)).mp4" "$1/preview-$i.mp4"; done
    cat >"$1/disc.toml" <<END
title = "Trois films"
format = "pal"
[[film]]
path = "0.mp4"
caption = "Le port"
chapters = ["0:00", "0:15", "0:30", "0:45", "1:00", "1:15", "1:30", "1:45"]
[[film]]
path = "1.mp4"
[[film]]
path = "2.mp4"
END
}

# Sets `elapsed`, microseconds, and `memory`, the peak resident size in KiB, child processes not
# counted.
time_disc() { # WORDS...
    local start=${EPOCHREALTIME/./} process status
    "$bin/tkvDvdDisc" "$@" --quiet >"$log" 2>&1 &
    process=$!
    while status=$(awk '/VmHWM/ { print $2 }' "/proc/$process/status" 2>/dev/null); do
        memory=${status:-$memory}
        sleep 0.1
    done
    wait "$process" || {
        cat "$log" >&2
        exit 1
    }
    elapsed=$((${EPOCHREALTIME/./} - start))
}

time_floor() {
    local start=${EPOCHREALTIME/./} film
    for film in 0 1 2; do
        ffmpeg -nostdin -v error -y -i "$data/films/$film.mp4" -filter_complex \
            "scale=720:576:flags=bicubic+accurate_rnd:in_color_matrix=bt709:out_color_matrix=bt601" \
            -c:v mpeg2video -trellis 1 -bf 2 -g 15 -flags +cgop -sc_threshold 1000000000 -r 25 \
            -b:v 8000k -maxrate 9608k -bufsize 1835008 -aspect 16:9 -c:a ac3 -ar 48000 -ac 2 \
            -b:a 192k -f dvd -muxrate 10080000 -packetsize 2048 "$data/floor.mpg"
    done
    elapsed=$((${EPOCHREALTIME/./} - start))
    rm "$data/floor.mpg"
}

disc_rows() {
    local floor whole again preview memory=0 most
    rm -rf "$data/disc" "$data/preview"
    echo "D1 floor" >&2
    time_floor
    floor=$elapsed
    echo "D1 disc" >&2
    time_disc "$data/films/disc.toml" -o "$data/disc"
    whole=$elapsed most=$memory
    again=$(for caption in 'La rade' 'Le quai' 'Les bateaux'; do
        sed "s/Le port/$caption/" "$data/films/disc.toml" >"$data/films/other.toml"
        time_disc "$data/films/other.toml" -o "$data/disc"
        echo "$elapsed"
    done | sort -n | sed -n 2p)
    time_disc "$data"/films/preview-?.mp4 --preview -o "$data/preview"
    preview=$elapsed
    rm -rf "$data/disc" "$data/preview"
    cat <<END

| | disc | floor | disc / floor | another caption | of the first run | preview of nine | MiB |
|-|-|-|-|-|-|-|-|
| D1 | $(seconds "$whole") | $(seconds "$floor") | $(quotient "$whole" "$floor" '<= 1.15') |\
 $(seconds "$again") | $(quotient "$again" "$whole" '<= 0.1') |\
 $(seconds "$preview")$([ "$preview" -lt 5000000 ] && echo ' (< 5 s: met)' || echo ' (< 5 s: missed)') |\
 $(quotient "$most" 1024 '< 100') |
END
}
