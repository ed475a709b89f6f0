# Sourced by the scripts of the examples: VLC plays a disc on a screen of its own, and is
# photographed. Needs the packages vlc-bin, vlc-plugin-base, vlc-plugin-video-output, xvfb, xdotool
# and imagemagick; VLC does not run as root.

# Tells what is missing, and fails then.
has_player() {
    local program
    [ "$(id -u)" -ne 0 ] || {
        echo "${0##*/}: VLC does not run as root" >&2
        return 1
    }
    for program in Xvfb vlc xdotool import; do
        command -v "$program" >/dev/null || {
            echo "${0##*/}: $program is missing; see examples/dvd/player.sh for the packages" >&2
            return 1
        }
    done
}

# open_player DISC FOLDER: the folder is for the player's own files.
open_player() {
    local number
    mkfifo "$2/screen"
    Xvfb -displayfd 3 -screen 0 1024x576x24 3>"$2/screen" 2>/dev/null &
    read -r number <"$2/screen"
    rm "$2/screen"
    export DISPLAY=:$number
    vlc -I dummy --fullscreen --vout xcb_x11 --no-audio --no-osd --no-video-title-show \
        "dvdnav://$1" >/dev/null 2>&1 &
    xdotool search --sync --onlyvisible --name . >/dev/null
    sleep 5 # until the menu is there, which nothing tells
}

# photograph FILE KEY...: the screen after these keys.
photograph() {
    local key
    for key in "${@:2}"; do
        xdotool key "$key"
        sleep 2
    done
    import -window root -quality 85 "$1"
}

close_player() {
    # shellcheck disable=SC2046 # one word for each job
    kill $(jobs -p) 2>/dev/null || true
    wait
}
