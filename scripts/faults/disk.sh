# Sourced by ../faults.sh: disks that are full, limits of the system.

faults_of_disk() {
    local mode size wanted
    for mode in -1 0 1 2; do
        fresh
        try_mode "$mode"
        row_of_run 0 "nothing wrong, mode $mode"
        # Frames, maps and overlays that cannot be written do not change the status.
        wanted=1
        [ "$mode" = -1 ] || [ "$mode" = 1 ] || wanted=0
        local sizes=(4k 20k)
        [ "$mode" != 0 ] || sizes=(20k)
        for size in "${sizes[@]}"; do
            small $size
            dd if=/dev/zero of="$folder/other" bs=4k count=64 2>/dev/null
            [ $size = 4k ] || truncate -s -8k "$folder/other"
            try_mode $mode
            row_of_run $wanted "disk of $size full, mode $mode"
        done
        for size in 0 4; do
            fresh
            words_of $mode "$folder"
            # shellcheck disable=SC2016
            try bash -c 'ulimit -f '$size'; exec "$@"' - "$tool" "${words[@]}"
            row_of_run $wanted "files of $size KiB at most, mode $mode"
        done
        fresh
        try_mode $mode
        mount --bind "$folder" "$folder"
        mount -o remount,bind,ro "$folder"
        try_mode $mode
        # Frames and maps that are there already cannot be replaced; a picture there counts.
        row_of_run "0 1" "read-only folder that holds them, mode $mode"
        small 1m
        mount -o remount,ro "$folder"
        try_mode $mode
        row_of_run $wanted "read-only folder, mode $mode"
    done
    small 300k
    try_mode 0
    row_of_run 0 "disk full within the frames"
    faults_of_shares
    faults_of_limits
}

# A network share that disappears while it is written to: each call that reaches it fails then.
# mount_share, in $folder; its server is $server.
mount_share() {
    fresh
    rm -rf "$scratch/temp/share"
    mkdir "$scratch/temp/share"
    bindfs -f "$scratch/temp/share" "$folder" >/dev/null 2>&1 &
    server=$!
    local i
    for i in {1..100}; do
        ! mountpoint -q "$folder" || return 0
        sleep 0.05
    done
    kill -9 $server
    return 1
}

faults_of_shares() {
    local mode wanted after
    if ! mount_share; then
        row "network share gone" "not tried: no FUSE here" 0
        return
    fi
    for mode in -1 0 1 2; do
        wanted=1
        [ "$mode" = -1 ] || [ "$mode" = 1 ] || wanted=0
        for after in 0 0.02 0.1; do
            kill -9 "$server" 2>/dev/null
            mount_share
            (sleep $after && kill -9 "$server") &
            words_of "$mode" "$folder"
            try "$tool" "${words[@]}"
            wait $! 2>/dev/null
            fusermount -uz "$folder" 2>/dev/null || umount -l "$folder"
            # The last file may be cut, as nobody can remove it any more.
            look_at "$scratch/temp/share"
            [ "$(wc -w <<<"$damaged")" -gt 1 ] || damaged=''
            count_run "0 $wanted" "after $after s"
        done
        row_of_runs "network share gone, mode $mode"
    done
}

faults_of_limits() {
    local mode count size
    for mode in -1 2; do
        for count in 3 4 5 6 7 8 10 12 16; do
            fresh
            words_of $mode "$folder"
            # shellcheck disable=SC2016
            try bash -c 'ulimit -n '$count'; exec "$@"' - "$tool" "${words[@]}"
            # 127: not even the loader can open the libraries.
            tally "0 1 127" "$count descriptors"
        done
        row_of_runs "3 to 16 descriptors, mode $mode"
        for size in 10 30 50 60 70 80 90 100 120 150 200 300; do
            fresh
            words_of $mode "$folder"
            # shellcheck disable=SC2016
            try bash -c 'ulimit -v '$((size * 1024))'; exec "$@"' - "$tool" "${words[@]}"
            # GLib aborts when an allocation fails, and fontconfig dereferences a null pointer.
            tally "0 1 127 133 134 139" "$size MiB"
        done
        row_of_runs "10 to 300 MiB of addresses, mode $mode"
    done
}
