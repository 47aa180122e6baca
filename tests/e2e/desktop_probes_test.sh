#!/usr/bin/env bash
# desktop_probes_test.sh TEST_PROGRAM FILTER [TEST_PROGRAM FILTER ...]: runs the unit tests
# of the desktop backends that need a live X server and session bus (and skip without them)
# inside a virtual desktop, so that they run for real.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

(($# >= 2 && $# % 2 == 0)) || fail "usage: $0 TEST_PROGRAM FILTER..."
desktop_up
while (($#)); do
  program=$1 filter=$2
  shift 2
  [[ -x $program ]] || fail "no test program $program"
  note "$(basename "$program") --gtest_filter=$filter"
  output=$("$program" --gtest_filter="$filter" 2>&1) || { echo "$output"; fail "$(basename "$program") failed"; }
  echo "$output" | grep -E '^\[ *(OK|SKIPPED|FAILED) *\]' || true
  # Inside the desktop nothing may be skipped for want of a display or a bus.
  if grep -q '^\[  SKIPPED \]' <<<"$output"; then
    fail "tests were skipped inside the virtual desktop"
  fi
done
note "PASS"
