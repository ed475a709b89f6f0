#!/usr/bin/env bash
# Runs a release of the tool on hostile pictures, such as decompression bombs, and prints a table of
# the time and memory that each took. Exits with status 1 when one took more than 3 seconds of
# processor time or a gigabyte, or crashed the tool.
#
#     scripts/hostile.sh [TOOL]    another build of the tool, to compare
set -euo pipefail
tool=${1:+$(realpath "$1")}
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" python3 time
cmake --preset release >/dev/null
cmake --build --preset release
tool=${tool:-$PWD/build/release/bin/tkvDvdMenuImg}
maker=$PWD/scripts/hostile/make.py
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
python3 "$maker"

isFine=true
printf '%-32s %10s %8s %8s %7s\n' file bytes seconds MiB status
for picture in *.jpg; do
    status=0
    /usr/bin/time -q -o figures -f '%U %S %M' timeout 60 \
        "$tool" -mode -1 -thumbs "$picture" -o page.png >log 2>&1 || status=$?
    read -r user system memory < <(tail -n 1 figures)
    seconds=$(awk "BEGIN { print $user + $system }")
    memory=$((memory / 1024))
    verdict=
    if [ $status -ne 0 ] || [ "${seconds%.*}" -ge 3 ] || [ $memory -ge 1024 ]; then
        verdict="  too much"
        isFine=false
    fi
    printf '%-32s %10d %8s %8d %7d%s\n' "${picture%.jpg}" "$(stat -c %s "$picture")" "$seconds" \
        $memory $status "$verdict"
done
$isFine
