# Sourced by compare.sh: makes what the workloads are composed of, below the folder $data.

media=$PWD/examples/media

# Nine slow camera moves over painted pictures, with texture and film grain: 40 to 70 KB a frame.
make_loops() { # FOLDER FRAMES
    local i=0 still
    for still in harbour city forest desert snow background cover lighthouse/000 wheel/000; do
        mkdir "$1/$i"
        ffmpeg -nostdin -v error -i "$media/$still.jpg" -vf "scale=720:576,noise=alls=8,
            scale=1080:864,loop=-1:1,crop=720:576:x=(iw-ow)*(0.5+0.5*sin(n/30+$i)):
            y=(ih-oh)*(0.5+0.5*cos(n/23+$i)),noise=c0s=4:c0f=t" \
            -frames:v "$2" -pix_fmt yuvj420p -q:v 4 -start_number 0 "$1/$i/%03d.jpg"
        i=$((i + 1))
    done
}

# A painted picture with noise of three sizes, so that every progressive scan carries detail.
make_photo() { # FILE PICTURE WIDTH HEIGHT INTERLACE
    ffmpeg -nostdin -v error -i "$media/$2.jpg" -vf "scale=$3/4:$4/4,noise=alls=14,
        scale=$3/2:$4/2,noise=alls=10,scale=$3:$4,noise=alls=6" -c:v ppm -f image2pipe - |
        "$magick" ppm:- -sampling-factor 4:2:0 -quality 90 -interlace "$5" "$1"
}

make_photos() { # FOLDER
    make_photo "$1/background.jpg" background 4000 3000 none
    "$magick" "$1/background.jpg" -resize '720x540!' -fill black -colorize 40 -quality 95 \
        "$1/page.jpg"
    local i=0 still width height interlace
    while read -r still width height interlace; do
        make_photo "$1/$i.jpg" "$still" "$width" "$height" "$interlace"
        i=$((i + 1))
    done <<END
harbour 4000 3000 Plane
city 4000 3000 none
forest 3000 2000 Plane
desert 3264 2448 Plane
snow 3872 2592 none
background 4000 3000 Plane
cover 3264 2448 Plane
lighthouse/000 3000 2000 none
wheel/000 4000 3000 Plane
END
}

once() { # NAME MAKER [ARGUMENT...]: existing inputs are reused; an interrupted run leaves none.
    local folder=$data/$1
    [ ! -d "$folder" ] || return 0
    echo "Making $folder" >&2
    rm -rf "$folder.part"
    mkdir -p "$folder.part"
    "$2" "$folder.part" "${@:3}"
    mv "$folder.part" "$folder"
}
