#!/usr/bin/env bash
# Builds the programs, composes every kind of page from the example media, and makes a disc of short
# films, all into out/.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}"
cmake --preset release >/dev/null
cmake --build --preset release

tool=$PWD/build/release/bin/tkvDvdMenuImg
media=$PWD/examples/media
out=$PWD/out
mkdir -p "$out"

# Joins its arguments as the -thumbs and -captions options take them.
list() {
    local joined=$1 item
    for item in "${@:2}"; do joined+=totoCestLePlusBeau$item; done
    printf '%s' "$joined"
}

main_menu=(
    -isMainMenu 1 -bkg "$media/background.jpg" -title "Un été au bord de l'eau"
    -dvdBt_readAll "Tout lire" -dvdBt_menuNext "Chapitres"
    -thumbs "$(list "$media/sailing" "$media/wheel" "$media/city.jpg" "$media/lighthouse")"
    -captions "$(list "la traversée" "la grande roue" "la ville" "le phare")"
)
submenu=(
    -bkg "$media/background.jpg" -title "Chapitres"
    -dvdBt_readAll "Tout lire" -dvdBt_menuPrev "Retour" -dvdBt_menuMain "Menu principal"
    -dvdBt_menuNext "Suite"
    -thumbs "$(list "$media/sailing" "$media/harbour.jpg" "$media/lighthouse" "$media/forest.jpg" \
        "$media/wheel" "$media/city.jpg" "$media/train" "$media/desert.jpg" "$media/snow.jpg")"
    -captions "$(list "la traversée" "le port" "le phare" "la forêt" "la grande roue" "la ville" \
        "le train de nuit" "le désert" "la neige")"
)

# Runs the tool and shows its lines only when it fails.
compose() {
    "$tool" "$@" 2>"$out/last-run.log" || {
        cat "$out/last-run.log" >&2
        return 1
    }
}

compose -mode -1 "${main_menu[@]}" -o "$out/main-preview.jpg"
compose -mode -1 "${submenu[@]}" -o "$out/submenu-preview.png"
compose -mode 0 "${main_menu[@]}" -o "$out/main-frames"
compose -mode 0 "${submenu[@]}" -o "$out/submenu-frames"
compose -mode 1 -bkg "$media/cover.jpg" -icon "$media/icon.jpg" -title "Un été au bord de l'eau" \
    -dvdBt_readAll "Film de famille, 52 minutes" -o "$out/jacket.jpg"
mkdir -p "$out/main-overlay" "$out/submenu-overlay"
compose -mode 2 "${main_menu[@]}" -o "$out/main-overlay/menu.png"
compose -mode 2 "${submenu[@]}" -v 1 -o "$out/submenu-overlay/menu.png"
rm -f "$out/last-run.log"
examples/dvd/make-dvd.sh

cat <<EOF

Made, in $out:
  main-preview.jpg     the main menu as the author sees it while editing: four big thumbnails
  submenu-preview.png  a submenu: the grid of nine, captions, title, navigation labels
  main-frames/         $(ls "$out/main-frames" | wc -l) pictures, one a video frame; leaf through them: the thumbnails move
  submenu-frames/      $(ls "$out/submenu-frames" | wc -l) pictures, stills and loops of different lengths side by side
  main-overlay/        menu_169.txt and menu_43.txt, the button maps for wide and for 4:3 displays, and
  submenu-overlay/     the pictures a player shows over a button; menu.png marks where the buttons are
  jacket.jpg           the cover: title, today's date, icon, one line of text
  dvd/                 a disc of four films with animated menus; to play it: vlc $(printf %q "dvd://$out/dvd/disc.iso")
EOF
