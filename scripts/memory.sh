#!/usr/bin/env bash
# Runs a release of both programs under valgrind, once in each mode, and shows what it reports
# besides what scripts/valgrind.supp leaves to libraries; then measures whether the memory of a run
# of frames grows. Fails when valgrind reports anything, or when the memory grows.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" valgrind
cmake --preset release >/dev/null
cmake --build --preset release

bin=$PWD/build/release/bin
media=$PWD/examples/media
suppressions=$PWD/scripts/valgrind.supp
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
isFine=true

# ---- Invalid reads and writes, and leaks

# Makes a small video file with sound.
film() {
    ffmpeg -v error -f lavfi -i testsrc2=size=352x288:rate=25 -f lavfi -i sine \
        -t 4 -c:v mpeg2video -c:a mp2 "$1"
}

# NAME PROGRAM ARGUMENTS…
memcheck() {
    local name=$1 status=0
    shift
    # A program that valgrind does not run itself (ffmpeg) is none of ours.
    valgrind --quiet --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite \
        --suppressions="$suppressions" --error-exitcode=99 --log-file="$name.log" \
        "$@" >"$name.out" 2>&1 || status=$?
    local verdict="nothing to complain of"
    if [ $status -ne 0 ] || [ -s "$name.log" ]; then
        verdict="status $status"
        isFine=false
        cat "$name.log" >&2
    fi
    printf '%-10s %s\n' "$name" "$verdict"
}

thumbs=$media/city.jpg
for number in 0 1 2; do mkdir -p loop && cp "$media/snow.jpg" loop/$number.jpg; done
film film.mpg
page=(-title T -bkg "$media/background.jpg" -dvdBt_menuNext N
    -thumbs "${thumbs}totoCestLePlusBeau$PWD/loop" -captions atotoCestLePlusBeaub)
memcheck preview "$bin/tkvDvdMenuImg" -mode -1 "${page[@]}" -o page.png
memcheck frames "$bin/tkvDvdMenuImg" -mode 0 "${page[@]}" -o frames
memcheck jacket "$bin/tkvDvdMenuImg" -mode 1 -icon "$media/icon.jpg" "${page[@]}" -o jacket.tiff
memcheck overlay "$bin/tkvDvdMenuImg" -v 1 -mode 2 "${page[@]}" -o overlay.gif
memcheck disc "$bin/tkvDvdDisc" --preview film.mpg -o disc

# ---- Memory from pass 75 to the last

# COMMAND…: its resident set in kilobytes at passes 75, 150 and 744.
residents() {
    perl -e '
        use strict;
        pipe my $lines, my $end;
        fcntl $end, 1031, 4096;  # F_SETPIPE_SZ: the run is three passes ahead of its lines at most.
        my $pid = fork;
        if (!$pid) { open STDERR, ">&", $end; exec @ARGV; }
        close $end;
        while (<$lines>) {
            next unless m{pass  .*: (75|150|744)/};
            open my $status, "<", "/proc/$pid/status";
            print map { /^VmRSS:\s*(\d+)/ ? "$1 " : () } <$status>;
        }
        print "\n";
        waitpid $pid, 0;
        exit $? >> 8;' "$@"
}

# LENGTH: the memory of a run whose thumbnails are three loops of that many frames.
flatness() {
    local thumbs="" loop early middle late
    for loop in 1 2 3; do
        mkdir -p "loop$loop-$1"
        ffmpeg -v error -f lavfi -i "testsrc2=size=240x180,hue=h=$loop*90" -frames:v "$1" \
            "loop$loop-$1/%03d.jpg"
        thumbs+=${thumbs:+totoCestLePlusBeau}$PWD/loop$loop-$1
    done
    # A verbose run draws each page, and says so.
    read -r early middle late < <(residents "$bin/tkvDvdMenuImg" -v 1 -mode 0 -thumbs "$thumbs" \
        -captions atotoCestLePlusBeaubtotoCestLePlusBeauc -o "$PWD/frames$1")
    printf '%-10s %9d %9d %9d\n' "$1" "$early" "$middle" "$late"
    # Until pass 150 the run may fill its cache of pictures, up to its budget.
    [ $((late - middle)) -le 2048 ] || isFine=false
}

printf '\nKilobytes at passes 75, 150 and 744 of 749, by the length of the loops\n'
for length in 1 30 75 250 749; do flatness "$length"; done
$isFine
