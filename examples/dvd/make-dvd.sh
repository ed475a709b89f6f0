#!/usr/bin/env bash
# Makes a DVD-Video disc of the example media: four short films, one of them with nine chapters.
#
#   examples/dvd/make-dvd.sh [OUTPUT-FOLDER]        out/dvd below the checkout unless named
#
# The films are made in out/films, next to a copy of disc.toml; the disc is a call of tkvDvdDisc.
# TKV_DISC names another program than the one in build/release.
set -euo pipefail

checkout=$(realpath "$(dirname "$0")/../..")
media=$checkout/examples/media
films=$checkout/out/films
out=$(realpath -m "${1:-$checkout/out/dvd}")
program=${TKV_DISC:-$checkout/build/release/bin/tkvDvdDisc}
[ -x "$program" ] || {
    echo "${0##*/}: no program at $program; build it: cmake --preset release && cmake --build --preset release" >&2
    exit 1
}

# film NAME SECONDS SOURCE...: the pictures, or the loops of the pictures in folders, one after
# another, each as long, with the sound of a quiet sea.
film() {
    local source inputs=() joined="" count=$(($# - 2)) i=0
    [ ! -e "$films/$1.mp4" ] || return 0
    for source in "${@:3}"; do
        [ ! -d "$media/$source" ] || source+=/%03d.jpg
        inputs+=(-framerate 25 -loop 1 -t "$2" -i "$media/$source")
        # The pictures are anamorphic 16:9.
        joined+="[$i]scale=1280:720,setsar=1[v$i];"
        i=$((i + 1))
    done
    for ((i = 0; i < count; ++i)); do joined+="[v$i]"; done
    ffmpeg -nostdin -v error -y "${inputs[@]}" \
        -f lavfi -i "anoisesrc=color=brown:amplitude=0.1:sample_rate=48000,tremolo=f=0.1:d=0.6" \
        -filter_complex "${joined}concat=n=$count[v]" -map '[v]' -map "$count:a" \
        -t $(($2 * count)) -c:v libx264 -preset veryfast -crf 18 -pix_fmt yuv420p \
        -c:a aac -f mp4 "$films/$1.part"
    mv "$films/$1.part" "$films/$1.mp4"
}

mkdir -p "$films"
film journey 6 sailing harbour.jpg lighthouse forest.jpg wheel city.jpg train desert.jpg snow.jpg
for name in wheel city.jpg lighthouse; do film "${name%.jpg}" 12 "$name"; done
ffmpeg -nostdin -v error -y -i "$media/background.jpg" -vf scale=2844:1600 -q:v 2 \
    "$films/background.jpg"
cp "$checkout/examples/dvd/disc.toml" "$films"

"$program" "$films/disc.toml" -o "$out"
