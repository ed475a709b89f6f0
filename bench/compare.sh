#!/usr/bin/env bash
# Times the tool against its peers, all on the same inputs, and prints a table:
#
#   bench/compare.sh [WORKLOAD...]      # W1 to W7 and D1; all of them by default
#
#   W1  frames: nine loops of 75 pictures    W4  preview: nine photographs, six of them progressive
#   W2  frames: nine loops of 749            W5  frames: as W1, the first loop zoomed behind the page
#   W3  frames: nine stills                  W6  overlay of nine thumbnails       W7  usage only
#   D1  a whole disc of three films, against the bare encoding of the films (disc.sh)
#
# ffmpeg        one filter graph; its background is scaled to the page and dimmed beforehand
# ffmpeg tuned  the same page; decodes at reduced size and caches scaled frames
# ImageMagick   one command per frame with the JPEG size hint; 20 frames are timed
# floor         the lower bound: bare decoding, encoding and writing of files (floor.cpp)
#
# For W4 all get the photograph itself as background. W6 is compared with `spumux -h`, W7 with an
# empty process. Inputs are made once, in build/bench-data, some 400 MB; delete the folder to have
# them made again.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh
export LC_ALL=C.UTF-8

bin=$PWD/build/bench/bin
data=$PWD/build/bench-data
out=$data/out
log=$data/last-run.log
source bench/inputs.sh
source bench/peers.sh
source bench/disc.sh

# Runs a peer and sets `elapsed`, microseconds.
timed() { # PEER
    rm -rf "$out"
    mkdir "$out"
    local start=${EPOCHREALTIME/./}
    "run_$1" "$out" >"$log" 2>&1 || {
        echo "$1 failed:" >&2
        tail "$log" >&2
        exit 1
    }
    elapsed=$((${EPOCHREALTIME/./} - start))
}

# Fails unless the last run made the right number of pictures of the right size.
check() { # PEER
    local expected
    case $1 in
    spumux | usage | empty) return ;;
    magick) expected="$sample $page" ;;
    *) expected="$frames $page" ;;
    esac
    [ "$mode" != 2 ] || expected="2 720x576"
    local made
    made=$("$identify" -format '%wx%h\n' "$out"/*.[jp][pn]g | sort | uniq -c | xargs)
    [ "$made" = "$expected" ] || {
        echo "$1 made '$made' instead of '$expected'" >&2
        exit 1
    }
}

# Sets `median` (microseconds) and `memory` (peak resident size, KiB) of each peer. The first round
# is a warm-up: its output is checked and its memory measured. The timed rounds are interleaved.
measure() { # WORKLOAD
    define "$1"
    local peer round times=() sorted
    local -A rounds=() all=()
    for peer in "${peers[@]}"; do
        echo "$1 $peer" >&2
        meter=(/usr/bin/time -f %M -o "$data/memory")
        timed "$peer"
        meter=()
        check "$peer"
        memory[$peer]=$(tail -n 1 "$data/memory")
        rounds[$peer]=$((elapsed > 60000000 ? 1 : runs))
    done
    for ((round = 0; round < runs; ++round)); do
        for peer in "${peers[@]}"; do
            [ "$round" -lt "${rounds[$peer]}" ] || continue
            timed "$peer"
            all[$peer]+="$elapsed "
        done
    done
    for peer in "${peers[@]}"; do
        read -ra times <<<"${all[$peer]}"
        mapfile -t sorted < <(printf '%s\n' "${times[@]}" | sort -n)
        median[$peer]=${sorted[${#sorted[@]} / 2]}
        [ "${#sorted[@]}" -eq "$runs" ] || notes+=("$1 $peer: one run, it takes over a minute")
    done
}

seconds() { # MICROSECONDS
    awk -v us="$1" 'BEGIN { if (us < 1e6) printf "%.1f ms", us / 1e3; else printf "%.2f s", us / 1e6 }'
}

# A ratio, with its target if there is one: "12.3 (>= 10: met)".
quotient() { # DIVIDEND DIVISOR [TARGET]
    awk -v a="$1" -v b="$2" -v target="${3:-}" 'BEGIN {
        q = a / b
        split(target, part, " ")
        met = part[1] == ">=" ? q >= part[2] : part[1] == "<" ? q < part[2] : q <= part[2]
        printf "%.*f", q < 10 ? 2 : 1, q
        if (target != "") printf " (%s: %s)", target, met ? "met" : "missed"
    }'
}

# Measures a workload and adds its row to the table.
row() { # WORKLOAD FLOOR-TARGET MEMORY-TARGET
    local -A median=() memory=()
    measure "$1"
    local tool=${peers[0]} last=${peers[-1]}
    local t=${median[$tool]} f=${median[$last]} cells m
    cells=("$1" "$(seconds "$t")")
    if [ "$last" = floor ]; then
        m=$((median[magick] * frames / sample))
        cells+=("$(seconds "${median[ffmpeg]}")" "$(seconds "${median[tuned]}")" "$(seconds "$m")"
            "$(seconds "$f")" "$(quotient "${median[ffmpeg]}" "$t")"
            "$(quotient "${median[tuned]}" "$t")" "$(quotient "$m" "$t")"
            "$(quotient "$t" "$f" "$2")")
    else
        cells+=("" "" "" "$(seconds "$f") ($last)" "" "" ""
            "+$(quotient $((t - f)) 1000 "$2 ms")")
    fi
    cells+=("$(quotient "${memory[$tool]}" 1024 "$3")"
        "${memory[ffmpeg]:+$((memory[ffmpeg] / 1024))}")
    printf -v m '| %s ' "${cells[@]}"
    table+=("$m|")
}

load() { cut -d ' ' -f 1-3 /proc/loadavg; }

main() {
    install_packages "${build_packages[@]}" "${bench_packages[@]}"
    cmake --preset bench >/dev/null
    cmake --build --preset bench >&2
    magick=$(type -P convert-im6.q16 || type -P convert)
    identify=$(type -P identify-im6.q16 || type -P identify)
    font=$(fc-match -f '%{file}' 'DejaVu Sans')
    local workload workloads=("$@") table=() notes=() before
    [ $# -gt 0 ] || workloads=(W1 W2 W3 W4 W5 W6 W7 D1)
    before=$(load)
    for workload in "${workloads[@]}"; do
        if [ "$workload" != W7 ]; then
            once photos make_photos
            once loops-75 make_loops 75
        fi
        case $workload in
        W1) row W1 '<= 1.5' '<= 64' ;;
        W2)
            once loops-749 make_loops 749
            row W2 '<= 1.4' '<= 64'
            ;;
        W3) row W3 '<= 1.5' '<= 64' ;;
        W4) row W4 '< 1' '<= 96' ;;
        W5) row W5 '<= 2' '<= 64' ;;
        W6) row W6 '<= 15' '<= 64' ;;
        W7) row W7 '<= 3' '<= 64' ;;
        D1) once films make_films ;;
        *) echo "compare.sh: no workload '$workload'" >&2 && exit 2 ;;
        esac
    done
    rm -rf "$out"
    cat <<END
Medians of 5 runs (W6 and W7: 31), the peers in turn. Times include writing to the disk cache.
$(nproc) processors ($(awk -F ': ' '/model name/ { print $2; exit }' /proc/cpuinfo)); load averages \
$before before, $(load) after.
ffmpeg $(ffmpeg -version | awk 'NR == 1 { print $3 }'), \
ImageMagick $("$magick" -version | awk 'NR == 1 { print $3 }').$(printf '\n%s' "${notes[@]}")

| | tool | ffmpeg | ffmpeg tuned | ImageMagick | floor | ffmpeg / tool | tuned / tool |\
 ImageMagick / tool | tool / floor | tool MiB | ffmpeg MiB |
|-|-|-|-|-|-|-|-|-|-|-|-|
$(printf '%s\n' "${table[@]}")
END
    [[ " ${workloads[*]} " != *" D1 "* ]] || disc_rows
}

main "$@"
