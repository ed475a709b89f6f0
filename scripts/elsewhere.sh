#!/usr/bin/env bash
# Tries the last commit on a release of Debian as its users meet it: in a bare system of its own,
# made with debootstrap and removed at the end. Needs root and about half an hour.
#
#   scripts/elsewhere.sh SUITE [COMMAND]
#
# SUITE is bookworm, trixie or sid. Runs scripts/demo.sh and scripts/test.sh, makes the packages, and
# in a second bare system installs them, makes a disc as an ordinary user, and purges them. With a
# COMMAND only that runs, in the checkout. What was printed stays in build/elsewhere/SUITE, with the
# checksums of the example pages: those are to be the same on every release.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

[ $# -ge 1 ] || {
    sed -n '2,/^set/ s/^# \{0,1\}//p' "$0" >&2
    exit 2
}
[ "$(id -u)" -eq 0 ] || {
    echo "${0##*/}: only root can make a system of its own" >&2
    exit 1
}
install_packages debootstrap git util-linux

suite=$1
logs=$PWD/build/elsewhere/$suite
rm -rf "$logs"
mkdir -p "$logs"
# Beside the checkout's other results rather than in /tmp, which may be memory.
systems=$(mktemp -d "$PWD/build/elsewhere-XXXXXX")
# Their mounts are gone already, with the commands that made them.
trap 'rm -rf --one-file-system "$systems"' EXIT

# in_system SYSTEM COMMAND: runs it in /checkout there. Its mounts and processes end with it.
in_system() {
    unshare --mount --pid --fork --kill-child bash -euc '
        mount -t proc proc "$1/proc"
        mount -t devpts -o newinstance,ptmxmode=666 devpts "$1/dev/pts"
        mount -t tmpfs tmpfs "$1/dev/shm"
        mkdir -p "$1/checkout"
        exec chroot "$1" /usr/bin/env -i HOME=/root LANG=C.UTF-8 TERM=dumb PATH="$PATH" \
            bash -euc "cd /checkout; $2"' - "$systems/$1" "$2"
}

failed=0
# step NAME SYSTEM COMMAND
step() {
    local begin=$SECONDS status=0
    in_system "$2" "$3" >"$logs/$1.log" 2>&1 </dev/null || status=$?
    printf '%-8s %-10s status %d, %d:%02d\n' "$suite" "$1" "$status" \
        $(((SECONDS - begin) / 60)) $(((SECONDS - begin) % 60))
    grep -hE '^(Need to get|After this operation)|tests passed|\(Skipped\)' "$logs/$1.log" || true
    [ "$status" -eq 0 ] || {
        tail -n 20 "$logs/$1.log"
        failed=1
    }
}

debootstrap --variant=minbase --include=git "$suite" "$systems/builder" >"$logs/debootstrap.log"
# A mirror's copy of sid may be older than its list of packages is valid.
echo 'Acquire::Check-Valid-Until "false";' >"$systems/builder/etc/apt/apt.conf.d/90any-age"
git clone -q --no-hardlinks . "$systems/builder/checkout"
if [ $# -gt 1 ]; then
    in_system builder "${*:2}"
    exit
fi
cp -a "$systems/builder" "$systems/user"
rm -rf "$systems/user/checkout"

step demo builder scripts/demo.sh
(cd "$systems/builder/checkout/out" && find . \( -path ./dvd -o -path ./films \) -prune -o -type f -print0 | sort -z |
    xargs -0 -r sha256sum) >"$logs/pages.sha256"
step test builder scripts/test.sh
step package builder 'scripts/package.sh --check'
mkdir "$systems/user/packages"
cp "$systems"/builder/checkout/build/packages/*.deb "$systems/user/packages" || failed=1
step install user 'apt-get install -q -y /packages/*.deb'
step use user '
    useradd -m somebody
    exec runuser -u somebody -- bash -euc "
        cd
        ffmpeg -v error -f lavfi -i testsrc2=duration=12 -f lavfi -i sine=duration=12 film.mkv
        tkvDvdDisc film.mkv -o disc </dev/null
        tkvDvdMenuImg -mode -1 -title Été -o page.png
        ls -l disc page.png"'
step purge user '
    apt-get purge -q -y tkvdvdmenuimg tkvdvddisc tkvdvdcheck
    find / -xdev \( -path /home -o -path /packages \) -prune -o -iname "*tkvdvd*" -print | tee left
    [ ! -s left ]'
exit $failed
