#!/usr/bin/env bash
# Fault injection: does to both programs what disks, systems and users do, and prints a table of
# what happened. Ends with status 1 when something is not as it should be.
#
#     [INSTALLED=FOLDER] scripts/faults.sh [GROUP]...
#
# Groups: disk paths signals streams system (the tool), disc places films loads ends (the disc). They
# happen to the programs installed in that folder, or else to those of this checkout. `ends` ends
# $ROUNDS runs (30) at moments that follow from $SEED (1).
#
# All of it runs in namespaces of its own, where every file system but the scratch folder is
# read-only and /dev is a small one of ours, so that nothing else can be damaged.
set -uo pipefail
cd "$(dirname "$0")/.."

if [ "${FAULTS_INSIDE:-}" != yes ]; then
    set -e
    source scripts/packages.sh
    install_packages "${build_packages[@]}" "${fault_packages[@]}"
    scratch=$(mktemp -d /tmp/tkv-faults-XXXXXX)
    trap 'rm -rf --one-file-system "$scratch"' EXIT
    # A copy, so that it can be written to.
    if [ -n "${INSTALLED:-}" ]; then
        cp -a "$INSTALLED/." "$scratch"
    else
        cmake --preset release >/dev/null
        cmake --build --preset release
        cmake --install build/release --prefix "$scratch" >/dev/null
    fi
    if ! unshare --user --map-root-user --mount --pid --fork true 2>/dev/null; then
        echo "The kernel forbids user namespaces here, and without them this is too dangerous." >&2
        exit 1
    fi
    status=0
    namespace=(unshare --user --map-root-user)
    if [ "$(id -u)" -eq 0 ]; then
        # A second user, for limits that do not hold for root.
        unshare --user sleep 10 >/dev/null 2>&1 &
        until [ "$(readlink /proc/$!/ns/user)" != "$(readlink /proc/self/ns/user)" ]; do sleep 0.05; done
        echo "0 0 2" | tee /proc/$!/uid_map >/proc/$!/gid_map
        namespace=(nsenter --user="/proc/$!/ns/user" -- unshare)
    fi
    FAULTS_INSIDE=yes "${namespace[@]}" --mount --pid --fork --mount-proc --kill-child \
        "$0" "$scratch" "$@" || status=$?
    exit $status
fi

scratch=$1
shift
checkout=$PWD
groups=(disk paths signals streams system disc places films loads ends)
for part in world table "${groups[@]}"; do
    source "scripts/faults/$part.sh"
done

make_world
[ $# -gt 0 ] || set -- "${groups[@]}"
for name in "$@"; do
    in_group "$name"
    "faults_of_$name"
done
show_table
