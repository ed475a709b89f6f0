#!/usr/bin/env bash
# Draws the menus of discs with more and more of your films, as a wide display and as one of 4:3
# (pan-scan) shows them, and puts the pictures into one page: what the program makes of other films
# than the examples', and beside it what another build of it makes.
#
#   examples/menu_sheet.sh FOLDER_OF_FILMS [SHEET [OTHER_PROGRAM]]
#
# The page is SHEET/index.html, in out/menu-sheet below the checkout unless named. Of one, two and
# nine films the disc itself is made too, for what is printed for it, and for its menu in a player
# with one button and another lit, where there is one (see examples/dvd/player.sh).
# TKV_DISC names another program than the one in build/release.
set -euo pipefail

checkout=$(realpath "$(dirname "$0")/..")
source "$checkout/scripts/packages.sh"
source "$checkout/examples/dvd/player.sh"
install_packages imagemagick poppler-utils

folder=$(realpath "$1")
sheet=$(realpath -m "${2:-$checkout/out/menu-sheet}")
programs=("${TKV_DISC:-$checkout/build/release/bin/tkvDvdDisc}" ${3:+"$(realpath "$3")"})
mapfile -d '' -t films < <(find "$folder" -maxdepth 1 -type f ! -name '.*' -print0 | sort -zV)
work=$(mktemp -d)
trap 'close_player; rm -rf "$work"' EXIT
mkdir -p "$sheet"
plays=$(has_player && echo yes || echo no)

show() { # FILE HEADING: a picture of the sheet
    printf '<figure><img src="%s"><figcaption>%s</figcaption></figure>\n' "$1" "$2"
}

# previews NUMBER COUNT: the menus of the first films.
previews() {
    local out=$work/$1-$2 picture name
    "${programs[$1]}" --quiet --preview -o "$out" "${films[@]:0:$2}"
    for picture in "$out"/menus/*.jpg; do
        name=$1-$2-$(basename "$picture" .jpg)
        cp "$picture" "$sheet/$name.jpg"
        convert "$picture" -gravity center -crop 75x100% +repage "$sheet/$name-43.jpg"
        show "$name.jpg" "$2: ${picture##*/}"
        show "$name-43.jpg" "on a 4:3 display"
    done
}

# disc NUMBER COUNT: what is printed for a disc of the first films, and its menu in a player.
disc() {
    local out=$work/$1-$2-disc
    "${programs[$1]}" --quiet --no-image -o "$out" "${films[@]:0:$2}"
    cp "$out/jacket.jpg" "$sheet/$1-$2-jacket.jpg"
    show "$1-$2-jacket.jpg" "$2: jacket.jpg"
    if [ -e "$out/cover.pdf" ]; then
        pdftoppm -r 100 -png -singlefile "$out/cover.pdf" "$sheet/$1-$2-cover"
        show "$1-$2-cover.png" "$2: cover.pdf"
    fi
    if [ "$plays" = yes ]; then
        open_player "$out/disc" "$work"
        for key in "" Right Up Down; do
            photograph "$sheet/$1-$2-player$key.jpg" $key
            show "$1-$2-player$key.jpg" "$2: in a player${key:+, after the key $key}"
        done
        close_player
    fi
    rm -r "$out"
}

{
    echo '<!doctype html><meta charset="utf-8"><title>Menus</title>'
    echo '<style>body{background:#333;color:#ddd;font:14px sans-serif}figure{display:inline-block;margin:4px}</style>'
    for count in 1 2 3 4 5 9 10 14; do
        [ "$count" -le ${#films[@]} ] || continue
        for number in "${!programs[@]}"; do
            echo "<h2>$count of $folder, ${programs[$number]}</h2>"
            previews "$number" "$count"
            case $count in 1 | 2 | 9) disc "$number" "$count" ;; esac
        done
    done
} >"$sheet/index.html"
echo "$sheet/index.html"
