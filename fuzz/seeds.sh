#!/usr/bin/env bash
# Makes the inputs that fuzzing begins with: a folder for each run of a target, in the folder named.
# They are small: a fuzzer changes a few bytes at a time. Every run makes the same ones
# (deterministic).
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
seeds=${1:?"usage: seeds.sh FOLDER"}
rm -rf "$seeds"
mkdir -p "$seeds"
cd "$seeds"
for run in jpeg jpeg2000 png gif tiff bmp webp others exif profile encoders text helpers removal \
    heif_items words pages project_file film_answer subtitles plan png_made tiff_made heif_made \
    heif_items_made profile_made picture_title; do
    mkdir "$run"
done
convert=$(command -v magick || command -v convert)

# ---- Pictures, each program started once or twice, since starting takes most of the time.
{
    $convert -respect-parentheses -size 24x17 -depth 8 gradient:red-blue -type TrueColor -write PNG24:png/rgb.png \
        -write jpeg/baseline.jpg -write bmp/24.bmp -write others/a.ppm -write others/a.tga \
        \( -clone 0 -interlace JPEG -quality 80 -write jpeg/progressive.jpg \) \
        \( -clone 0 -sampling-factor 2x2 -quality 60 -write jpeg/coarse.jpg \) \
        \( -clone 0 -colorspace CMYK -type ColorSeparation -write jpeg/inks.jpg -write tiff/inks.tif \) \
        \( -clone 0 -colorspace Gray -type Grayscale -write jpeg/grey.jpg -write others/a.pgm \
        -write png/grey.png \) \
        \( -clone 0 -interlace PNG -depth 16 -write PNG48:png/interlaced.png \) \
        \( -clone 0 -compress none -write tiff/plain.tif \) \
        \( -clone 0 -compress LZW -write tiff/lzw.tif \) \
        \( -clone 0 -colors 7 -type Palette -write gif/still.gif -write PNG8:png/palette.png -write others/a.xpm \
        -write bmp/8.bmp \) \
        \( -clone 0 -monochrome -type Bilevel -write bmp/1.bmp -write others/a.xbm -write others/a.pbm \) \
        \( -clone 0 -resize 16x16 -write others/a.ico \) null: &
    $convert -size 20x14 -depth 8 'gradient:#f008-#00ff' -type TrueColorAlpha -write PNG32:png/alpha.png -write tiff/alpha.tif \
        -write webp/lossy.webp \( -clone 0 -define webp:lossless=true -write webp/lossless.webp \) \
        -write heif_items/alpha.heic -write heif_items/alpha.avif \
        \( +clone \( -clone 0 -negate \) -write gif/moving.gif -write webp/moving.webp \) \
        null: &
    wait
}
head -c 204 /dev/zero | tr '\0' '\200' >raw.raw
opj_compress -i others/a.ppm -o jpeg2000/a.jp2 -n 3 >/dev/null
opj_compress -i others/a.ppm -o jpeg2000/a.j2k -r 20 -n 3 -t 16,16 >/dev/null
opj_compress -i raw.raw -F 17,12,1,8,u -o jpeg2000/grey.jp2 -n 2 -I -p RPCL >/dev/null
rm raw.raw
cat >others/a.svg <<'END'
<svg xmlns="http://www.w3.org/2000/svg" width="9" height="6"><path d="M0 0h9v6z" fill="#0af"/></svg>
END

# ---- What pictures carry: orientations and colour profiles
tiff_header='II*\0\010\0\0\0'
for side in 1 6; do
    printf "$tiff_header"'\1\0\022\001\3\0\1\0\0\0\'$side'\0\0\0\0\0\0\0' >exif/$side
    printf 'Exif\0\0' | cat - exif/$side >exif/marked$side
done
printf 'MM\0*\0\0\0\010\0\2\001\017\0\2\0\0\0\4abc\0\001\022\0\3\0\0\0\1\0\3\0\0\0\0\0\0' >exif/big
printf '<x:xmpmeta><dc:title><rdf:Alt><rdf:li xml:lang="x-default">A &amp; B</rdf:li></rdf:Alt></dc:title>' \
    >picture_title/xmp
printf 'Photoshop 3.0\0008BIM\4\4\0\0\0\0\0\022\034\2\031\0\1x\034\2\5\0\7Le port' >picture_title/iptc
printf 'Exif\0\0'"$tiff_header"'\2\0\016\1\2\0\4\0\0\0Pic\0\233\234\1\0\4\0\0\0A\0B\0\0\0\0\0' \
    >picture_title/exif

# Big-endian 32-bit numbers.
numbers() {
    local number
    for number; do
        printf "\\x$(printf %08x $((number & 0xFFFFFFFF)) | sed 's/../&\\x/g; s/\\x$//')"
    done
}
d50() { numbers 0xF6D6 0x10000 0xD32D; }
# profile SPACE CONNECTION TAG FILE...: an ICC profile (ICC.1:2001) of these tags' data.
profile() {
    local space=$1 connection=$2 tags=$(($# / 2 - 1)) at size=0 body
    shift 2
    at=$((132 + 12 * tags))
    body=$(mktemp)
    numbers $tags >"$body"
    for ((i = 1; i < 2 * tags; i += 2)); do
        size=$(stat -c %s "${@:i+1:1}")
        { printf '%s' "${@:i:1}"; numbers $at $size; } >>"$body"
        at=$((at + size))
    done
    for ((i = 2; i <= 2 * tags; i += 2)); do cat "${@:i:1}" >>"$body"; done
    numbers $at 0 0x02400000
    printf 'mntr%s%s' "$space" "$connection"
    head -c 12 /dev/zero
    printf acsp
    head -c 28 /dev/zero
    d50
    head -c 48 /dev/zero
    cat "$body"
    rm "$body"
}
parts=$(mktemp -d -p .)
trap 'rm -rf "$parts"' EXIT
{ printf 'XYZ \0\0\0\0'; d50; } >$parts/white
{ printf 'XYZ \0\0\0\0'; numbers 0x5000 0x6000 0x4000; } >$parts/color
{ printf 'curv\0\0\0\0'; numbers 1; printf '\2\x33\0\0'; } >$parts/gamma
{ printf 'curv\0\0\0\0'; numbers 4 0x1000 0x4000FFFF; } >$parts/curve
printf '\0\1\2\3\4\5\6\7\10\11\12\13\14\15\16\17%.0s' {1..16} >$parts/table
{
    printf 'mft1\0\0\0\0\4\3\2\0'
    numbers 0x10000 0 0 0 0x10000 0 0 0 0x10000
    cat $parts/table{,,,}
    head -c 48 $parts/table
    cat $parts/table{,,}
} >$parts/lut
profile 'GRAY' 'XYZ ' wtpt $parts/white kTRC $parts/gamma >profile/grey
profile 'RGB ' 'XYZ ' wtpt $parts/white rXYZ $parts/color gXYZ $parts/color bXYZ $parts/color \
    rTRC $parts/gamma gTRC $parts/curve bTRC $parts/gamma >profile/rgb
profile 'CMYK' 'Lab ' wtpt $parts/white A2B0 $parts/lut >profile/inks
exiftool -q -overwrite_original '-icc_profile<=profile/rgb' -n -Orientation=6 jpeg/coarse.jpg

# ---- Recipes, each of which makes a valid file
printf '\6\6\3\2\0\0' >png_made/plain
printf '\6\6\3\3\1\0\12\0\0\0\3\x55' >png_made/palette
printf '\6\6\3\6\0\0\0\1\1\4\12\1\1\2\4\12\3\0\1\4\14' >png_made/texts
printf '\0\0\0\0\0\36\36\6\0\12\x55\0\5\5' >tiff_made/plain
printf '\0\0\0\0\2\36\36\6\4\12\0\5\5' >tiff_made/deflated
# The configuration of HEVC and a slice of 64 x 64 grey pixels, each after its length.
coded=$(sed 's/../\\x&/g' <<'END' | tr -d '\n'
5d0100000000000000000000000000000000000000000303200001001740010c01ffff01600000030090000003
0000030078f024210001001a420101016000000300900000030000030078a0208105fe49308222000100064401
c07180120e0000000a2601af00000300000300
END
)
printf "$coded"'\0\0\0\0\0\6\6\0\0\0\0' >heif_made/one
printf "$coded"'\1\0\0\2\0\7\7\1\1\1\1\0\0\0\0\6\6\0\0\0\0' >heif_made/grid
printf "$coded"'\1\0\0\0\0\6\6\0\0\0\0\0\0\6\6\0\0\1\5\x80\0\0\0\0\1\1\0\0\0' >heif_made/alpha
cp heif_made/* heif_items_made
printf '\1\0\2\0\5\0\0\0' >profile_made/grey
printf '\0\0\6\0\7\0\0\0\2\16\16\16\15\0\0\7\1\0\10\1\0\3\0\5\0\0\0\4\1\3\5\1\3' >profile_made/rgb
printf '\2\1\0\0\0\x43\1\0' >profile_made/inks
printf '\0\0\0\0\2\x33\1\0\2' >profile_made/stages
printf '\0\0\20\0\7\0\0\0\2\16\16\16\15\0\0\1\0\4\x33\1\0\0\0' >profile_made/elements

# ---- Texts
printf '\200\0\0\x60\0\x70\0\x90\0\x40\0\0\x40\0\x40\0\1Un été à Αθήνα' >text/point
printf '\x40\0\2\x70\0\x90\0\x50\0\x60\0\x30\0\0\xa0\0\x80\0שלום\nعربى 日本語 👩‍👩‍👧 ﬁ ß' >text/rectangle
printf '\x30\0\1\0\0\0\0\0\0\x40\0\x80\0\1\tÿ\xff\xfe \x1b[0m\r\n\n …' >text/bytes
printf '\x80\0\x17\x0b\0\0\1abcdefgh' >encoders/opaque
printf '\xff\xff\x05\x05\1\0\0\xff\x80\x40\x20' >encoders/alpha
printf '\1\x80\5 -2147483649.12.3' >helpers/number
printf '\0\x80\0~/a.eyetv/b.mpg/c.tar.gz' >helpers/path
printf '\0\x40\0~nobody/x.iMovieProject/Shared Movies/iDVD/a\u2028b\u0085' >helpers/movie
for path in / /home/ann /Users/ann/ '/*' ~/a /TKVauthoring/x /a/b.eyetv/c /tmp/x/. /home; do
    printf '\2\1%s\0ann\0ann\0%s\0' "$path" /home/ann/disk >"removal/$(echo "$path" | tr / _)"
done

# ---- Command lines, each argument NUL-terminated
mark=totoCestLePlusBeau
words() {
    local file=$1
    shift
    printf '%s\0' "$@" | tee "words/$file" >"pages/$file"
}
words usage -v 1 -h
words preview -v 1 -mode -1 -o p.png -isMainMenu 1 -bkg in/a.jpg -title T -dvdBt_readAll All \
    -thumbs "in/a.jpg${mark}in/loop" -captions "one${mark}two" -isPal 1
words submenu -mode -1 -o x/p.jp2 -dvdBt_menuPrev P -dvdBt_menuMain M -dvdBt_menuNext N \
    -thumbs "in/b.png${mark}in/c.jp2${mark}nothing${mark}in/loop${mark}in/a.jpg" \
    -captions "${mark}b${mark}${mark}d" -bkg in/b.png
words jacket -mode 1 -o j.tif -icon in/b.png -bkg in/a.jpg -title 'A film' -dvdBt_readAll '98 min'
words overlay -mode 2 -o map.jpg -dvdBt_readAll R -dvdBt_menuMain M -thumbs "in/a.jpg${mark}in/loop"
words frames -mode 0 -o frames/ -v 1 -thumbs in/loop -bkg in/a.jpg
words all -mode 0 -o all -title all -thumbs in/loop -bkg in/loop/0.jpg
words same -mode -1 -o in/a.jpg -thumbs in/a.jpg -bkg in/a.jpg -isMainMenu 1

# ---- The second program
cat >project_file/all.toml <<'END'
title = "Our \"summer\""
background = "none"
music = "../m.flac"
format = "ntsc"
size = "dvd9"
chapters = "every=1:30"
volume = "even"
language = "fr"
first-film = true
menu = false
[labels]
play-all = "Tout"
chapter = "{} x"
[[film]]
path = "~/a.mp4"
caption = 'Été'
excerpt = 83.5
chapters = ["0:00 Departure", "12:34"]
[[film]]
path = "/d/VIDEO_TS"
excerpt = "1h2m3.5s"
chapters = []
END
printf 'film = [{path = "a"}, {path = "b_c.mkv", caption = """\nx"""}]\nlanguage = "xx"\n' \
    >project_file/inline.toml
cat >film_answer/film.json <<'END'
{"streams": [{"index": 0, "codec_name": "h264", "profile": "High", "codec_type": "video",
"width": 1920, "height": 1080, "sample_aspect_ratio": "1:1", "pix_fmt": "yuv420p", "level": 40,
"color_range": "tv", "color_space": "bt709", "field_order": "tt", "r_frame_rate": "50/1",
"avg_frame_rate": "25/1", "start_time": "0.040000", "duration": "N/A",
"disposition": {"default": 1, "attached_pic": 0, "timed_thumbnails": 0}, "tags": {"rotate": "90"},
"side_data_list": [{"rotation": -90, "max_bitrate": 9000000}]}, {"index": 1, "codec_name": "aac",
"codec_type": "audio", "sample_rate": "48000", "channels": 6, "bit_rate": "128000", "tags":
{"language": "fra"}}, {"index": 2, "codec_name": "dvd_nav_packet", "codec_type": "data"}],
"chapters": [{"start_time": "0.5", "tags": {"title": "One"}}, {"start_time": "99.5"}],
"format": {"format_name": "matroska,webm", "start_time": "0.0", "duration": "100.080000",
"tags": {"TITLE": "A film"}}}
END
echo '{"streams": [{"codec_name": "png", "codec_type": "video", "width": 9, "height": 9}]}' \
    >film_answer/picture.json
# Blu-ray: of a canvas of 64 x 36, three pixels of two colours are shown, and go.
{
    printf 'PG\0\0\0\1\0\0\0\0\x16\0\x13\0\x40\0\x24\x10\0\0\x80\0\0\1\0\1\0\0\0\2\0\4'
    printf 'PG\0\0\0\1\0\0\0\0\x14\0\x0c\0\0\1\x10\x80\x80\xff\2\xeb\x80\x80\xff'
    printf 'PG\0\0\0\1\0\0\0\0\x15\0\x11\0\1\0\xc0\0\0\x0a\0\3\0\1\1\0\x82\2\0\0'
    printf 'PG\0\0\0\1\0\0\0\0\x80\0\0'
    printf 'PG\0\0\1\0\0\0\0\0\x16\0\x0b\0\x40\0\x24\x10\0\0\x80\0\0\0'
    printf 'PG\0\0\1\0\0\0\0\0\x80\0\0'
} >subtitles/film.sup
{
    # A file of the format Matroska with colours and one unit, of four rows of four pixels.
    printf '\x16\x54\xae\x6b\x9f\xae\x9d\x63\xa2\x9asize: 8x8\npalette: 0, ffff'
    printf '\x1f\x43\xb6\x75\xb7\xe7\x81\x01\xa0\xb2\xa1\xac\x81\0\0\0'
    printf '\0\x28\0\x0a\x01\x40\x90\x90\x90\x90\0\0\0\x22'
    printf '\x01\x03\x32\x10\x04\xff\xf0\x05\0\0\x03\0\0\x03\x06\0\4\0\6\xff\0\x10\0\x22\x02\xff'
    printf '\x9b\x82\0\x64'
} >subtitles/film.mks
printf '1\n00:00:01,000 --> 00:00:02,000\n\xa3\xf3d\xbc, Za\xbf\xf3\xb3\xe6\n' >subtitles/film.srt
for count in 0 1 4 9 20; do
    { printf "\\$(printf %o $count)"; head -c 700 "$here/../examples/media/snow.jpg"; } >plan/$count
    { printf "\\$(printf %o $count)"; head -c 300 /dev/zero | tr '\0' "\\$count"; } >plan/few$count
done
