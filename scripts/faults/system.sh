# Sourced by ../faults.sh: odd surroundings, and many runs at once.

# surroundings FAULT WORD…: each mode in an environment that the words (of env) change.
surroundings() {
    local mode
    for mode in -1 1 2; do
        fresh
        words_of $mode "$folder"
        try env "${@:2}" "$tool" "${words[@]}"
        tally 0
        [ "$whole" -gt 0 ] || odd+=" nothing made"
    done
    row_of_runs "$1"
}

faults_of_system() {
    surroundings "no HOME" -u HOME
    surroundings "HOME that is not there" HOME=/none
    surroundings "empty HOME" HOME=
    surroundings "no environment" -i
    local fonts=$scratch/temp/fonts.conf
    echo '<fontconfig><cachedir>/none</cachedir></fontconfig>' >"$fonts"
    surroundings "no fonts" FONTCONFIG_FILE="$fonts"
    echo '<fontconfig><dir>' >"$fonts"
    surroundings "a broken font setup" FONTCONFIG_FILE="$fonts"
    surroundings "a font setup that is not there" FONTCONFIG_FILE=/none
    local locale
    for locale in xx_YY.UTF-8 tr_TR C "$(printf 'x%.0s' {1..5000})" ../../../etc/passwd $'\xff'; do
        surroundings "locale ${locale:0:24}" LC_ALL="$locale" LANG="$locale"
    done
    local zone
    for zone in :/etc/passwd ABC-14 ../../.. "$(printf 'z%.0s' {1..5000})" ''; do
        surroundings "zone '${zone:0:24}'" TZ="$zone"
    done
    surroundings "a current folder that is gone" sh -c 'd=$(mktemp -d); cd "$d" && rmdir "$d"; exec "$@"' -
    faults_of_crowds
}

faults_of_crowds() {
    fresh
    local i
    for i in {1..100}; do
        mkdir "$folder/$i"
    done
    seq 100 | timeout 120 xargs -P 100 -I{} "$tool" -mode 2 "${page[@]}" -o "$folder/{}/menu.png" \
        2>"$scratch/temp/lines"
    status=$?
    row_of_run 0 "100 runs at once"
    [ "$whole" -eq 400 ] || row "all of their files" "$whole" 1
    fresh
    seq 100 | timeout 120 xargs -P 100 -I{} "$tool" -mode -1 "${page[@]}" -o "$folder/page.png" \
        2>"$scratch/temp/lines"
    status=$?
    # They write over one another; 123: some failed. What matters is that all end, and the page.
    row_of_run "0 123" "100 runs at once into one file"
}
