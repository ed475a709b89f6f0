#!/usr/bin/env bash
# Makes a DVD-Video disc of the example media: a main menu and a chapter menu, both animated, and
# the nine short films that they lead to.
#
#   examples/dvd/make-dvd.sh [OUTPUT-FOLDER]        out/dvd below the checkout unless named
#
# makes in that folder
#   disc/      VIDEO_TS and AUDIO_TS, to be played or burnt
#   disc.iso   the same as a disc image
#   maps/      the tool's button maps and overlay pictures, of which the menus' buttons were made
#
# TKV_TOOL names another tool than the one in build/release. MENU_FRAMES shortens the menus' clips,
# for quick trials.
set -euo pipefail

fail() {
    echo "${0##*/}: $*" >&2
    exit 1
}

# need PROGRAM PACKAGE
need() {
    command -v "$1" >/dev/null || fail "$1 is missing; install the package $2"
}

need ffmpeg ffmpeg
need spumux dvdauthor
need dvdauthor dvdauthor
# Players open disc images by their UDF file system, which xorriso does not write.
need genisoimage genisoimage
export VIDEO_FORMAT=PAL

checkout=$(realpath "$(dirname "$0")/../..")
media=$checkout/examples/media
tool=$(realpath -m "${TKV_TOOL:-$checkout/build/release/bin/tkvDvdMenuImg}")
[ -x "$tool" ] ||
    fail "no tool at $tool; build it: cmake --preset release && cmake --build --preset release"
menu_frames=${MENU_FRAMES:-749}
[[ $menu_frames =~ ^[1-9][0-9]{0,2}$ && $menu_frames -le 749 ]] ||
    fail "MENU_FRAMES is '$menu_frames', no number from 1 to 749"
film_frames=100

out=$(realpath -m "${1:-$checkout/out/dvd}")
results=(maps disc disc.iso)
for result in "${results[@]}"; do
    [ ! -e "$out/$result" ] || [ -e "$out/maps/main_169.txt" ] ||
        fail "$out/$result is somebody else's; name another folder"
done
mkdir -p "$out"
work=$(mktemp -d "$out/work-XXXXXX")
trap 'rm -rf "$work"' EXIT
# What is made has relative names: ffmpeg counts where a name has a %, and spumux and dvdauthor
# read XML, in which an & of the folder's name would be an error.
cd "$work"
mkdir maps
ln -s "$media" media

# The films in the order of the disc, what they are called, and which of them a menu shows.
films=(sailing harbour.jpg lighthouse forest.jpg wheel city.jpg train desert.jpg snow.jpg)
captions=("la traversée" "le port" "le phare" "la forêt" "la grande roue" "la ville"
    "le train de nuit" "le désert" "la neige")
declare -A shown=([main]="1 5 6 3" [chapters]="1 2 3 4 5 6 7 8 9")

# Runs a program and shows its output only when it fails.
quietly() {
    "$@" >log 2>&1 || {
        cat log >&2
        fail "failed: $*"
    }
}

# Joins its arguments as the -thumbs and -captions options take them.
list() {
    local joined=$1 item
    for item in "${@:2}"; do joined+=totoCestLePlusBeau$item; done
    printf '%s' "$joined"
}

# compose_menu MENU OPTION...: the menu's frames, its button maps and overlay pictures.
compose_menu() {
    local film thumbs=() texts=()
    for film in ${shown[$1]}; do
        thumbs+=("$media/${films[film - 1]}")
        texts+=("${captions[film - 1]}")
    done
    local page=("${@:2}" -bkg "$media/background.jpg" -dvdBt_readAll "Tout lire"
        -thumbs "$(list "${thumbs[@]}")" -captions "$(list "${texts[@]}")")
    quietly "$tool" -mode 0 "${page[@]}" -o "$1"
    quietly "$tool" -mode 2 "${page[@]}" -o "maps/$1.png"
}

# encode ASPECT FRAMES CLIP INPUT-OPTION...: pictures become a clip with the sound of a quiet sea.
encode() {
    local sea="anoisesrc=color=brown:amplitude=0.1:sample_rate=48000,tremolo=f=0.1:d=0.6"
    quietly ffmpeg -nostdin -framerate 25 "${@:4}" \
        -f lavfi -i "$sea,atrim=end_sample=$(($2 * 48000 / 25))" \
        -target pal-dvd -vf scale=720:576 -aspect "$1" -frames:v "$2" -ac 2 -b:a 192k "$3"
}

# A picture, or the loop of the pictures in a folder.
encode_film() {
    local source=media/${films[$1 - 1]}
    [ ! -d "$source" ] || source+=/%03d.jpg
    encode 4:3 "$film_frames" "film-$1.mpg" -loop 1 -i "$source"
}

# Wide displays show the whole page, 4:3 displays its middle: a button map each, and so a
# subpicture stream each.
add_buttons() {
    local map
    for map in "$1_169" "$1_43"; do
        sed 's/<spu /&image="dot.png" /' "maps/$map.txt" >"$map.xml"
    done
    spumux -s 0 "$1_169.xml" <"$1-clip.mpg" | spumux -s 1 "$1_43.xml" >"$1-menu.mpg"
}

# A subpicture without any mark is one that VLC crops to nothing, the highlights with it. The mark
# is a dot in the corner, next to invisible.
draw_dot() {
    quietly ffmpeg -nostdin -f lavfi -i color=black@0.07:s=2x2,format=rgba -frames:v 1 \
        -vf pad=720:576:color=black@0 dot.png
}

# plan_menu MENU NUMBER ENTRY BUTTON OTHER-NUMBER: BUTTON leads to the other menu. The register g0
# is the number of the menu to come back to, g1 is 1 while the films follow each other.
plan_menu() {
    local film index=0
    echo "<pgc entry='$3'><pre>{ g0 = $2; g1 = 0; }</pre><vob file='$1-menu.mpg'/>"
    for film in ${shown[$1]}; do
        echo "<button name='BT_$((index++))'>jump title $film;</button>"
    done
    echo "<button name='dvdBt_readAll'>{ g1 = 1; jump title 1; }</button>"
    echo "<button name='$4'>jump menu $5;</button>"
    echo "<post>jump cell 1;</post></pgc>"
}

plan_film() {
    echo "<pgc><vob file='film-$1.mpg'/><post>{"
    [ "$1" -eq ${#films[@]} ] || echo "if (g1 eq 1) jump title $(($1 + 1));"
    echo "if (g0 eq 2) call menu entry ptt; call menu entry root; }</post></pgc>"
}

plan_disc() {
    local film
    echo "<dvdauthor dest='disc'><vmgm>"
    echo "<fpc>jump titleset 1 menu entry root;</fpc>"
    echo "<menus><pgc entry='title'><pre>jump titleset 1 menu entry root;</pre></pgc></menus>"
    echo "</vmgm><titleset><menus lang='fr'>"
    echo "<video format='pal' aspect='16:9' widescreen='noletterbox'/>"
    echo "<subpicture>"
    echo "<stream id='0' mode='widescreen'/><stream id='1' mode='panscan'/>"
    echo "</subpicture>"
    plan_menu main 1 root dvdBt_menuNext 2
    plan_menu chapters 2 ptt dvdBt_menuMain 1
    echo "</menus><titles><video format='pal' aspect='4:3'/>"
    for film in "${!films[@]}"; do plan_film $((film + 1)); done
    echo "</titles></titleset></dvdauthor>"
}

echo "Composing the main menu"
compose_menu main -isMainMenu 1 -title "Un été au bord de l'eau" -dvdBt_menuNext "Chapitres"
echo "Composing the chapter menu"
compose_menu chapters -title "Chapitres" -dvdBt_menuMain "Menu principal"
echo "Encoding the menus and adding their buttons"
draw_dot
for menu in main chapters; do
    encode 16:9 "$menu_frames" "$menu-clip.mpg" -i "$menu/%03d.jpg"
    quietly add_buttons "$menu"
done
echo "Encoding the films"
for film in "${!films[@]}"; do encode_film $((film + 1)); done
echo "Authoring the disc"
plan_disc >plan.xml
quietly dvdauthor -x plan.xml
echo "Writing the disc image"
quietly genisoimage -quiet -dvd-video -udf -V UN_ETE -o disc.iso disc

(cd "$out" && rm -rf "${results[@]}")
mv "${results[@]}" "$out"
echo "Made $out/disc and $out/disc.iso"
