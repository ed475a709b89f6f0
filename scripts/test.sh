#!/usr/bin/env bash
# Builds everything with sanitizers, checks the format, and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" "${test_packages[@]}"

find src tests bench -name '*.cpp' -o -name '*.h' | xargs clang-format --dry-run --Werror
cmake --preset debug
cmake --build --preset debug
ctest --preset debug --parallel "$(nproc)"
