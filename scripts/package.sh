#!/usr/bin/env bash
# Makes the Debian packages of all programs, into build/packages.
#
#   scripts/package.sh [--check]
#
# --check then has lintian and hardening-check look at them, makes them again in another folder, as
# another user if that is possible, and compares.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" "${package_packages[@]}"

# In the folder where it runs.
make_packages() {
    rm -rf build/packages
    cmake --preset package
    cmake --build --preset package
    # A package's outer archive records the modes of cpack's intermediate files.
    (umask 022 && cpack --preset package)
    rm -rf build/packages/_CPack_Packages
}

# The same from copies of the sources, with the most restrictive umask and as another user if
# possible.
make_again() {
    local as=() time
    time=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
    git ls-files -z | xargs -0 cp --parents -t "$other"
    if [ "$(id -u)" -eq 0 ]; then
        chown -R nobody "$other"
        as=(runuser -u nobody --)
    fi
    (
        cd "$other"
        umask 077
        export -f make_packages
        "${as[@]}" env -u CMAKE_CXX_COMPILER_LAUNCHER HOME="$other" SOURCE_DATE_EPOCH="$time" \
            bash -euc make_packages
    )
}

make_packages >&2
ls build/packages/*.deb
[ "${1-}" = --check ] || exit 0

install_packages "${package_check_packages[@]}"
lintian --fail-on error,warning build/packages/*.deb
# The C library's startup objects are not marked for control-flow protection, so no program of
# Debian 12 is as a whole. Our own objects are checked instead.
unchecked=(--nocfprotection)
# Newer versions ask for the same of other processors.
answer=$(hardening-check --nobranchprotection /bin/sh 2>&1) || true
[[ $answer == *'nknown option'* ]] || unchecked+=(--nobranchprotection)
hardening-check "${unchecked[@]}" build/package/bin/tkvDvd* \
    "$(find build/package/lib -name tkv_desktop.so)"
find build/package/src -name '*.o' | while read -r object; do
    readelf -n "$object" | grep -qE 'IBT, SHSTK|BTI, PAC' || {
        echo "$object is not protected." >&2
        exit 1
    }
done
other=$(mktemp -d)
trap 'rm -rf "$other"' EXIT
make_again >"$other/make.log" 2>&1 || {
    cat "$other/make.log" >&2
    exit 1
}
for package in build/packages/*.deb; do
    cmp "$package" "$other/$package"
    sha256sum "$package"
done
echo "The same from another folder."
