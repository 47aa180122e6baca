#!/usr/bin/env bash
# Installs what is needed, builds, and runs every test: unit, simulation and end-to-end
# (the end-to-end tests bring up their own virtual X display).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh --all
ctest --test-dir build --output-on-failure -j "$(nproc)" --timeout 300
