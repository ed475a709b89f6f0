#!/usr/bin/env bash
# Makes the golden pages and the transcripts of the tests anew, from what the programs do now.
# Look at every picture and every line that `git diff` shows before you commit them.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" "${test_packages[@]}"
cmake --preset debug >/dev/null
cmake --build --preset debug
TKV_RENEW=1 build/debug/bin/tkv_tests --gtest_filter='Golden.*:*ToTheLetter*' >/dev/null
git status --short tests/golden tests/transcripts
