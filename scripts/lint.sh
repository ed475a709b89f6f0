#!/usr/bin/env bash
# Checks which folder includes which, the format of every source and header, and looks for faults in
# them with cppcheck and clang-tidy.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" "${test_packages[@]}" "${lint_packages[@]}"

# Includes run downwards. `climbs PREFIX FLOOR...` prints those that do not: floors from the top down,
# folders that stand beside each other joined by commas.
climbs() {
    local prefix=$1 seen='' floor folder others
    for floor in "${@:2}"; do
        for folder in ${floor//,/ }; do
            others=$(tr , '\n' <<<"$seen$floor" | grep -vx "$folder" | paste -sd '|')
            [ -z "$others" ] || grep -rnE "#include \"$prefix($others)/" "src/$prefix$folder" || true
        done
        seen+=$floor,
    done
}
climbing=$(
    climbs '' cli,disc,desktop,check composer imaging utils graphics system
    climbs disc/ author,burn make plan subtitle film project run
)
[ -z "$climbing" ] || {
    printf 'These includes climb a floor:\n%s\n' "$climbing" >&2
    exit 1
}

find src tests fuzz bench examples -name '*.cpp' -o -name '*.h' | xargs clang-format --dry-run --Werror
# (cppcheck bails out of one path in bench/floor.cpp, and reports that.)
cppcheck -j "$(nproc)" --quiet -I src -I tests -I fuzz --std=c++20 \
    --enable=warning,performance,portability --library=googletest --inline-suppr \
    --suppress=cppcheckError:bench/floor.cpp --error-exitcode=1 src tests fuzz bench
# Files are joined (a unity build) for clang-tidy, since their headers cost more than they do. Its
# analyzer looks into joined files where their path says "UnifiedSource"; clang-tidy looks for a
# folder's .clang-tidy beside the file that joins its files.
cmake --preset lint >/dev/null
joined=build/lint/UnifiedSource
for folder in tests fuzz bench; do
    cp $folder/.clang-tidy $joined/$folder/
done
log=build/lint/clang-tidy.log
run-clang-tidy -quiet -p $joined >$log 2>&1 || {
    grep -vE '^clang-tidy|^[0-9]+ warnings|^$' $log >&2
    exit 1
}
read -ra cairo <<<"$(pkg-config --cflags cairo)"
printf '%s\n' examples/paint/*.cpp | xargs -P "$(nproc)" -I FILE \
    clang-tidy --quiet FILE -- -std=c++20 "${cairo[@]}" 2>/dev/null
echo "Checked: nothing to complain of."
