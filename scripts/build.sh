#!/usr/bin/env bash
# Configures and builds Orvantis, its tests and benchmarks into ./build.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE="${CMAKE_BUILD_TYPE:-RelWithDebInfo}" >/dev/null
cmake --build build -j "$(nproc)"
