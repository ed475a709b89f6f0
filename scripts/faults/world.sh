# Sourced by ../faults.sh: the small world in which the programs meet their faults.

media=$checkout/examples/media

# Makes all file systems read-only but the scratch folder, which becomes one in memory, and gives the
# programs a /dev of its own. Nothing runs when one of these steps fails.
make_world() {
    set -e
    local place device
    mkdir -p "$scratch.installed"
    mount --bind "$scratch" "$scratch.installed"
    mount -t tmpfs -o size=3g none "$scratch"
    cp -a "$scratch.installed/." "$scratch"
    umount "$scratch.installed"
    rmdir "$scratch.installed"
    mkdir -p "$scratch"/{dev,home,temp,disk}
    for device in null zero full urandom fuse; do
        [ -e "/dev/$device" ] || continue
        : >"$scratch/dev/$device"
        mount --bind "/dev/$device" "$scratch/dev/$device"
    done
    ln -s /proc/self/fd "$scratch/dev/fd"
    mount --rbind "$scratch/dev" /dev
    findmnt --noheadings --raw --output TARGET | while read -r place; do
        case $place in
            "$scratch" | /dev | /dev/*) ;;
            *) mount -o remount,bind,ro "$(printf '%b' "$place")" 2>"$scratch/temp/refused" || true ;;
        esac
    done
    if touch "$checkout/scripts/writable" 2>/dev/null || touch /tmp/writable 2>/dev/null; then
        echo "The checkout or /tmp can still be written to." >&2
        exit 1
    fi
    cd "$scratch/temp"
    export HOME=$scratch/home TMPDIR=$scratch/temp XDG_DATA_HOME=$scratch/home/data LC_ALL=C.UTF-8
    tool=$scratch/bin/tkvDvdMenuImg
    disc=$scratch/bin/tkvDvdDisc
    spumux=$scratch/share/tkvDvdMenuImg/tools/spumux
    # Opened for both, it has a reader that never reads and a writer that never writes.
    silent=$scratch/temp/silent
    mkfifo "$silent"
    set +e
}

# An empty folder for one fault, in $folder; `small SIZE`: a file system of its own of that size.
fresh() {
    folder=$scratch/disk
    while mountpoint -q "$folder"; do umount -l "$folder"; done
    rm -rf "$scratch/disk"
    mkdir "$folder"
}
small() {
    fresh
    mount -t tmpfs -o "size=$1" none "$folder"
}

thumbs=$media/sailing
captions='la traversée'
for name in wheel city.jpg lighthouse train desert.jpg snow.jpg; do
    thumbs+=totoCestLePlusBeau$media/$name
    captions+=totoCestLePlusBeau$name
done
page=(-bkg "$media/background.jpg" -title "Un été" -thumbs "$thumbs"
    -captions "$captions" -dvdBt_menuNext "Suite")
jacket=(-bkg "$media/cover.jpg" -icon "$media/icon.jpg" -title "Un été" -dvdBt_readAll "52 minutes")

# The words for a mode and its output below a folder: `words_of MODE FOLDER`, in $words.
words_of() {
    case $1 in
        -1) words=(-mode -1 "${page[@]}" -o "$2/page.jpg") ;;
        0) words=(-mode 0 "${page[@]}" -o "$2/frames") ;;
        1) words=(-mode 1 "${jacket[@]}" -o "$2/jacket.png") ;;
        2) words=(-mode 2 "${page[@]}" -o "$2/menu.png") ;;
    esac
}

# Runs a command with $limit seconds at most (20); leaves $status and its lines in $lines.
# 124: it had to be killed.
try() {
    timeout --preserve-status -k 1 "${limit:-20}" "$@" </dev/null >"$scratch/temp/lines" 2>&1
    status=$?
    read_lines
}

# The last of a run's lines, but for those about its progress.
read_lines() {
    lines=$(tr -d '\0' <"$scratch/temp/lines" | grep -av -e '^pourcentage' | tail -n 20)
}

# Runs a mode with its output in $folder.
try_mode() {
    words_of "$1" "$folder"
    try "$tool" "${words[@]}"
}

# Is a file whole, judged by its end?
is_whole() {
    case $1 in
        *.jpg) [ "$(tail -c 2 "$1" | od -An -tx1 | tr -d ' \n')" = ffd9 ] ;;
        *.png) [ "$(tail -c 8 "$1" | head -c 4)" = IEND ] ;;
        *.txt) [ "$(tail -c 14 "$1")" = "</subpictures>" ] ;;
        *) true ;;
    esac
}

# The regular files below a folder that are not whole, in $damaged, and how many are, in $whole.
look_at() {
    local file
    damaged='' whole=0
    while IFS= read -r -d '' file; do
        if is_whole "$file"; then
            whole=$((whole + 1))
        else
            damaged+="${file##*/} "
        fi
    done < <(find "$1" -type f ! -name other -print0)
}
