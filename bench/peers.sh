# Sourced by compare.sh: the workloads, and how the tool and each of its peers is run on one. A
# run_PEER writes the frames of the page that `define` has set into the folder it is given; $meter
# stands before each program that is timed.

title=CHAPITRES
captions=("La Traversée" "Le Port" "Le Phare" "La Forêt" "La Grande Roue" "La Ville"
    "Le Train De Nuit" "Le Désert" "La Neige")
columns=(110 280 450) # The grid of thumbnails, 160 x 120 each, from the page's top left.
rows=(65 199 333)

# Sets what the workload is made of.
define() { # WORKLOAD
    mode=0 frames=749 length=1 page=720x540 runs=5 peers=(tool ffmpeg tuned magick floor)
    background=$data/photos/background.jpg
    pictures=("$data"/loops-75/?/000.jpg)
    case $1 in
    W1) length=75 pictures=("$data"/loops-75/?) ;;
    W2) length=749 pictures=("$data"/loops-749/?) ;;
    W3) ;;
    W4) mode=-1 frames=1 page=640x360 pictures=("$data"/photos/?.jpg) ;;
    W5) length=75 pictures=("$data"/loops-75/?) background=${pictures[0]} ;;
    W6) mode=2 runs=31 peers=(tool spumux) ;;
    W7) runs=31 peers=(usage empty) ;;
    esac
    zoomed=$([ "$background" != "${pictures[0]}" ] || echo yes)
    sample=$((frames < 20 ? frames : 20))
    texts=(-title "$title" -dvdBt_readAll "Tout lire" -dvdBt_menuPrev Retour
        -dvdBt_menuMain "Menu principal" -dvdBt_menuNext Suite -captions "$(list "${captions[@]}")")
    thumbs=$(list "${pictures[@]}")
}

list() { # ITEM...
    local joined=$1 item
    for item in "${@:2}"; do joined+=totoCestLePlusBeau$item; done
    printf '%s' "$joined"
}

run_tool() {
    local output=$1
    [ "$mode" = 0 ] || output+=/000.jpg
    "${meter[@]}" "$bin/tkvDvdMenuImg" -mode "$mode" -bkg "$background" "${texts[@]}" \
        -thumbs "$thumbs" -o "$output"
}

# Calls DRAW SIZE COLOUR ALIGNMENT X Y TEXT for each text of the page; X is its left edge, centre
# or right edge, Y its cap line.
for_each_text() { # DRAW
    local i x=(130 360 590) alignment=(left centre right)
    "$1" 16 white left 130 46 "$title"
    for i in {0..8}; do
        "$1" 11 white "${alignment[i % 3]}" "${x[i % 3]}" $((rows[i / 3] + 121)) "${captions[i]}"
    done
    "$1" 11 '#FF8000' centre 530 49 "TOUT LIRE"
    "$1" 11 '#FF8000' centre 190 483 RETOUR
    "$1" 11 '#FF8000' centre 360 483 "MENU PRINCIPAL"
    "$1" 11 '#FF8000' centre 530 483 SUITE
}

drawtext() {
    local -A x=([left]=$4 [centre]=$4-tw/2 [right]=$4-tw)
    graph+=",drawtext=fontfile=$font:text='$6':fontsize=$1:fontcolor=$2:x=${x[$3]}:y=$5:"
    graph+="shadowcolor=black:shadowy=1"
}

# If tuned, ffmpeg's filter that buffers the frames of a loop instead of decoding them again.
kept() { # FRAMES
    [ -z "$tuned" ] || [ "$1" -ge "$frames" ] || printf ',loop=-1:%d' "$1"
}

run_ffmpeg() { # FOLDER [tuned]
    local tuned=${2:-} files=("$data/photos/page.jpg" "${pictures[@]}") lowres=(0 2) first=1
    local graph="[0:v]null" inputs=() loop=() i
    local dim="lutyuv=y=val*0.6:u=(val-128)*0.6+128:v=(val-128)*0.6+128"
    if [ "$zoomed" ]; then
        files=("${pictures[@]}") first=0
        graph="[0:v]split[t0][zoom];[zoom]crop=400:320,scale=720:540,$dim$(kept "$length")"
    elif [ "$mode" != 0 ]; then
        files[0]=$background lowres=(2 3)
        graph="[0:v]scale=720:540,$dim"
    else
        graph+=$(kept 1)
    fi
    [ "$tuned" ] || [ "$frames" = 1 ] || loop=(-loop 1)
    for i in "${!files[@]}"; do
        inputs+=("${loop[@]}" -framerate 25)
        [ -z "$tuned" ] || inputs+=(-lowres "${lowres[i > 0]}")
        inputs+=(-i "${files[i]}$([ ! -d "${files[i]}" ] || echo /%03d.jpg)")
    done
    graph+="[page];[page]"
    for i in {0..8}; do
        graph+="null[p$i];[$([ "$zoomed$i" = yes0 ] && echo t0 || echo $((i + first)):v)]"
        graph+="scale=160:120:out_range=full,format=yuva420p$(kept "$length")[s$i];"
        graph+="[p$i][s$i]overlay=${columns[i % 3]}:${rows[i / 3]},"
    done
    graph+=null
    for_each_text drawtext
    graph+=",scale=${page/x/:},format=yuvj420p"
    "${meter[@]}" ffmpeg -nostdin -v error "${inputs[@]}" -filter_complex "$graph" \
        -frames:v "$frames" -q:v 2 -start_number 0 "$1/%03d.jpg"
}

run_tuned() { run_ffmpeg "$1" tuned; }

annotate() {
    local -A at=([left]="NorthWest +$4" [centre]="North $(printf %+d $(($4 - 360)))"
        [right]="NorthEast +$((720 - $4))")
    local y=$(($5 - $1 / 5)) place=${at[$3]} # It places text by the font's ascent.
    command+=(-gravity "${place% *}" -pointsize "$1" -fill black
        -annotate "${place#* }+$((y + 1))" "$6" -fill "$2" -annotate "${place#* }+$y" "$6")
}

run_magick() { # FOLDER
    local number i picture command
    for ((number = 0; number < sample; ++number)); do
        printf -v picture '%03d.jpg' $((number % length))
        if [ "$zoomed" ]; then
            command=("$background/$picture" -crop 400x320+160+128 +repage)
        elif [ "$mode" = 0 ]; then
            command=("$data/photos/page.jpg")
        else
            command=(-define jpeg:size=720x540 "$background")
        fi
        [ "$zoomed$mode" = 0 ] || command+=(-resize '720x540!' -fill black -colorize 40)
        command+=(-define jpeg:size=160x120)
        for i in {0..8}; do
            command+=('(' "${pictures[i]}$([ ! -d "${pictures[i]}" ] || echo "/$picture")"
                -resize '160x120!' ')' -geometry "+${columns[i % 3]}+${rows[i / 3]}" -composite)
        done
        command+=(-font "$font")
        for_each_text annotate
        [ "$page" = 720x540 ] || command+=(-resize "$page!")
        command+=(-sampling-factor 4:2:0 -quality 90)
        printf -v picture '%03d.jpg' "$number"
        "${meter[@]}" "$magick" "${command[@]}" "$1/$picture" || return
    done
}

run_floor() { # FOLDER
    local inputs=("$page+0+0=$background") width=${page%x*} height=${page#*x} i
    [ -z "$zoomed" ] || inputs=("1296x972+0+0=$background")
    for i in {0..8}; do
        [ "$zoomed$i" = yes0 ] || inputs+=("$((160 * width / 720))x$((120 * height / 540))+$((
            columns[i % 3] * width / 720))+$((rows[i / 3] * height / 540))=${pictures[i]}")
    done
    "${meter[@]}" "$bin/codec_floor" "$1" "$frames" "$page" "${inputs[@]}"
}

# These two print their usage and exit with an error status.
run_spumux() { "${meter[@]}" spumux -h || true; }
run_usage() { "${meter[@]}" "$bin/tkvDvdMenuImg" || [ $? = 1 ]; }
run_empty() { "${meter[@]}" "$(type -P true)"; }
