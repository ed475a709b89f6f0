#!/usr/bin/env bash
# Installs what is missing, builds everything with sanitizers, and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

install_packages "${build_packages[@]}" "${test_packages[@]}"
cmake --preset test
cmake --build --preset test
ctest --preset test --parallel "$(nproc)"
