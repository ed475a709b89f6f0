#!/usr/bin/env bash
# Takes docs/highlighted-film.jpg and docs/highlighted-chapter.jpg: VLC plays the example disc on a
# screen of its own, and both menus are photographed after an arrow key.
#
#   examples/dvd/snapshot.sh [DISC [FOLDER]]
set -euo pipefail

checkout=$(realpath "$(dirname "$0")/../..")
source "$checkout/examples/dvd/player.sh"
disc=$(realpath "${1:-$checkout/out/dvd/disc.iso}")
pictures=$(realpath "${2:-$checkout/docs}")

has_player
work=$(mktemp -d)
trap 'close_player; rm -rf "$work"' EXIT
open_player "$disc" "$work"
photograph "$pictures/highlighted-film.jpg" Right
photograph "$pictures/highlighted-chapter.jpg" Left Return Right
