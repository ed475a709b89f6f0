#!/usr/bin/env bash
# Takes docs/highlighted-film.jpg and docs/highlighted-chapter.jpg: VLC plays the example disc on a
# screen of its own, and both menus are photographed after an arrow key.
#
#   examples/dvd/snapshot.sh [DISC [FOLDER]]
#
# Needs the packages vlc-bin, vlc-plugin-base, vlc-plugin-video-output, xvfb, xdotool and
# imagemagick; VLC does not run as root.
set -euo pipefail

checkout=$(realpath "$(dirname "$0")/../..")
disc=$(realpath "${1:-$checkout/out/dvd/disc.iso}")
pictures=$(realpath "${2:-$checkout/docs}")

for program in Xvfb vlc xdotool import; do
    command -v "$program" >/dev/null || {
        echo "${0##*/}: $program is missing; see the packages above" >&2
        exit 1
    }
done

work=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$work"' EXIT
mkfifo "$work/screen"
Xvfb -displayfd 3 -screen 0 1024x576x24 3>"$work/screen" 2>/dev/null &
read -r screen <"$work/screen"
export DISPLAY=:$screen

vlc -I dummy --fullscreen --vout xcb_x11 --no-audio --no-osd --no-video-title-show \
    "dvdnav://$disc" >/dev/null 2>&1 &
xdotool search --sync --onlyvisible --name . >/dev/null
sleep 5 # until the menu is there, which nothing tells
photograph_after() { # NAME KEY...
    local key
    for key in "${@:2}"; do
        xdotool key "$key"
        sleep 2
    done
    import -window root -quality 85 "$pictures/highlighted-$1.jpg"
}
photograph_after film Right
photograph_after chapter Left Return Right
