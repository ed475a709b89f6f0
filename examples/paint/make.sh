#!/usr/bin/env bash
# Paints the example pictures again, into the folder examples/media.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
media=$(dirname "$here")/media
compiler=${CXX:-g++}

need() {
    command -v "$1" >/dev/null 2>&1 || {
        echo "make.sh: $1 is missing; $2" >&2
        exit 1
    }
}
need "$compiler" "install a C++20 compiler or name one in CXX"
need pkg-config "install pkg-config"
need convert "install ImageMagick"
pkg-config --exists cairo || {
    echo "make.sh: the cairo development files are missing" >&2
    exit 1
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# jpeg PICTURE QUALITY [OPTION...]: a plain JPEG without metadata, its name that of the PNG.
jpeg() {
    local name=$1 quality=$2
    shift 2
    mkdir -p "$(dirname "$media/$name")"
    convert "$work/png/$name.png" "$@" -strip -sampling-factor 4:2:0 -quality "$quality" \
        "$media/$name.jpg"
}

read -r -a cairo <<<"$(pkg-config --cflags --libs cairo)"
"$compiler" -std=c++20 -O2 -Wall -Wextra -Wpedantic -Wshadow -Wconversion \
    "$here"/*.cpp "${cairo[@]}" -o "$work/paint"
"$work/paint" "$work/png"

jpeg cover 82
jpeg icon 85

# Anamorphic: what is shown at 16:9 is painted with square pixels; its files have fewer, wider ones.
jpeg background 82 -resize '2400x1600!'
pal=(-resize '720x576!')
for name in harbour forest city desert; do
    jpeg "$name" 72 "${pal[@]}"
done
jpeg snow 72 "${pal[@]}" -interlace Plane

# Frames are many, and nobody looks at one for long: a little softness keeps them small.
loop() {
    local name=$1 quality=$2 blur=$3 frame
    rm -f "$media/$name"/*.jpg
    for frame in "$work/png/$name"/*.png; do
        jpeg "$name/$(basename "$frame" .png)" "$quality" "${pal[@]}" -blur "0x$blur"
    done
}
loop lighthouse 70 0.5
loop sailing 60 0.5
loop wheel 60 0.7
loop train 58 0.7
