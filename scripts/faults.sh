#!/usr/bin/env bash
# Fault injection: does to both programs what disks, systems and users do, and prints a table of
# what happened. Ends with status 1 when something is not as it should be.
#
#     scripts/faults.sh [GROUP]...    groups: disk paths signals streams system disc
#
# All of it runs in namespaces of its own, where every file system but the scratch folder is
# read-only and /dev is a small one of ours, so that nothing else can be damaged.
set -uo pipefail
cd "$(dirname "$0")/.."

if [ "${FAULTS_INSIDE:-}" != yes ]; then
    set -e
    source scripts/packages.sh
    install_packages "${build_packages[@]}" "${fault_packages[@]}"
    cmake --preset release >/dev/null
    cmake --build --preset release
    scratch=$(mktemp -d /tmp/tkv-faults-XXXXXX)
    trap 'rm -rf --one-file-system "$scratch"' EXIT
    cmake --install build/release --prefix "$scratch" >/dev/null # only so that it can be written to
    if ! unshare --user --map-root-user --mount --pid --fork true 2>/dev/null; then
        echo "The kernel forbids user namespaces here, and without them this is too dangerous." >&2
        exit 1
    fi
    status=0
    FAULTS_INSIDE=yes unshare --user --map-root-user --mount --pid --fork --mount-proc \
        --kill-child "$0" "$scratch" "$@" || status=$?
    exit $status
fi

scratch=$1
shift
checkout=$PWD
for part in world table disk paths signals streams system disc; do
    source "scripts/faults/$part.sh"
done

make_world
[ $# -gt 0 ] || set -- disk paths signals streams system disc
for name in "$@"; do
    in_group "$name"
    "faults_of_$name"
done
show_table
