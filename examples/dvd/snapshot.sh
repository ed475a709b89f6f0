#!/usr/bin/env bash
# Takes docs/highlighted.jpg: VLC plays the example disc on a screen of its own, the arrow key down
# is pressed once, and the screen is photographed.
#
#   examples/dvd/snapshot.sh [DISC [PICTURE]]
#
# Needs the packages vlc-bin, vlc-plugin-base, vlc-plugin-video-output, xvfb, xdotool and
# imagemagick; VLC does not run as root.
set -euo pipefail

checkout=$(realpath "$(dirname "$0")/../..")
disc=$(realpath "${1:-$checkout/out/dvd/disc.iso}")
picture=$(realpath -m "${2:-$checkout/docs/highlighted.jpg}")

trap 'kill $(jobs -p) 2>/dev/null || true' EXIT
exec {number}<> <(:)
Xvfb -displayfd "$number" -screen 0 1024x576x24 2>/dev/null &
read -r screen <&"$number"
export DISPLAY=:$screen

vlc -I dummy --fullscreen --vout xcb_x11 --no-audio --no-osd --no-video-title-show \
    "dvdnav://$disc" >/dev/null 2>&1 &
sleep 6
xdotool key Down
sleep 1
import -window root -quality 88 "$picture"
