#!/usr/bin/env bash
# Configures Orvantis into ./build and builds it.
#
#   scripts/build.sh          the program and its manual page, nothing else
#   scripts/build.sh --all    everything: the program, its tests and benchmarks
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE="${CMAKE_BUILD_TYPE:-RelWithDebInfo}" >/dev/null
if [[ ${1:-} == --all ]]; then
  cmake --build build -j "$(nproc)"
else
  cmake --build build -j "$(nproc)" --target orvantis orvantis_manual
fi
