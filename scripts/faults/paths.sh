# Sourced by ../faults.sh: odd output paths, and inputs that change.

# path NAME STATUSES [LEFT]: an output of that name, from within $folder. LEFT has to be there and
# unchanged afterwards.
path() {
    local before=''
    [ -z "${3:-}" ] || before=$(stat -c '%F %i %s' -- "$3")
    try "$tool" -mode -1 "${page[@]}" -o "$1"
    look_at "$folder"
    local answer=1
    [[ " $2 " == *" $status "* ]] && [ -z "$damaged" ] && answer=0
    if [ -n "${3:-}" ] && [ "$before" != "$(stat -c '%F %i %s' -- "$3" 2>&1)" ]; then answer=1; fi
    local shown=${1//$'\n'/\\n}
    [ ${#shown} -le 24 ] || shown="${shown:0:12}… (${#1} bytes)"
    row "output '$shown'" "status $status, $whole whole files" $answer
}

faults_of_paths() {
    fresh
    cd "$folder" || return
    mkdir full.jpg empty.jpg others home
    echo x >full.jpg/file
    echo x >others/kept.txt.bak
    ln -s none.jpg nothing.jpg
    ln -s loop.jpg loop.jpg
    ln -s others link
    mkfifo fifo.jpg
    : >device && mount --bind /dev/full device
    local long
    long=$(printf 'n%.0s' {1..251})
    path nothing.jpg "0 1"
    path loop.jpg "0 1"
    # What is there already counts as written.
    path fifo.jpg "0 1" fifo.jpg
    path device "0 1" device
    path missing/page.jpg 1
    path "$long.jpg" 0
    path "n$long.jpg" 1
    path "$long$long.jpg" 1
    path "$(printf '../disk/%.0s' {1..620})page.jpg" 1
    path "" "0 1" others
    path . "0 1" others
    path .. "0 1" others
    path ./ "0 1" others
    path / "0 1" others
    path /page.jpg 1
    path '~' "0 1" "$HOME"
    path '~/page.jpg' 0
    path '~nobody we know' "0 1"
    path $'new\nline.jpg' 0
    path $'\xff\xfe.jpg' 0
    path '*.jpg' 0 others
    path 'x*.jpg' 0
    path link/page.jpg 0 others/kept.txt.bak
    path others/kept.txt.bak/page.jpg 1 others/kept.txt.bak
    path page.jpg/ "0 1"
    path -1.jpg 0
    umount device
    cd "$scratch/temp" || return
    faults_of_inputs
}

# Inputs that are replaced, cut, emptied and removed while they are read.
faults_of_inputs() {
    local copies=$scratch/temp/copies round
    for round in {1..3}; do
        fresh
        rm -rf "$copies"
        cp -r "$media" "$copies"
        (
            while :; do
                cp "$media/snow.jpg" "$copies/city.jpg"
                mv "$copies/wheel" "$copies/gone" 2>/dev/null
                truncate -s 5000 "$copies"/train/*
                : >"$copies/city.jpg"
                mv "$copies/gone" "$copies/wheel"
                rm -f "$copies"/sailing/*1*
                cp "$media"/sailing/* "$media"/train/* "$copies/sailing"
            done 2>/dev/null
        ) &
        local changer=$!
        words_of 0 "$folder"
        try "$tool" "${words[@]//$media/$copies}"
        kill $changer
        wait $changer 2>/dev/null
        tally "0 1"
    done
    row_of_runs "inputs replaced, cut and removed meanwhile"
}
