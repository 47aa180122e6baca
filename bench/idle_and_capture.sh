#!/usr/bin/env bash
# idle_and_capture.sh [PROGRAM]: what the tray program costs while nothing happens, and how it
# takes up copies, on a private virtual desktop (tests/e2e/virtual_desktop.sh: Xvfb, a session
# bus, the accessibility bus, trayer). Not part of the tests: it measures, it does not judge.
#
# Per run, on a fresh desktop and profile:
#   - start to tray docked: from starting PROGRAM until a window of its own sits in trayer's panel;
#   - idle PSS: Pss of /proc/PID/smaps_rollup summed over PROGRAM and its descendants, SETTLE_S
#     after the icon docked (measure alone: PSS splits shared pages among every process that
#     maps them, so another copy of the program running beside it lowers the figure);
#   - idle CPU: time on CPU of every thread of the tree (/proc/PID/task/*/schedstat) over IDLE_S,
#     and how often threads ran, per thread as well;
#   - capture: COPIES texts put on the clipboard with `xclip -verbose`, GAP_MS apart; from xclip
#     owning the selection to the program's first fetch of the data, and how many of the texts
#     `orvantis clipboard list --json` shows at the end.
# RUNS runs (default 1) print their table with medians.
#
# Knobs: RUNS (1), SETTLE_S (5), IDLE_S (60), COPIES (50), GAP_MS (300), ORVANTIS_CLI (reads the
# history; PROGRAM by default, empty to skip), BENCH_OUT (folder of the per-run JSON files),
# DESKTOP_OPTIONS (passed to virtual_desktop.sh start, e.g. --no-a11y), QUIET_S (120: the
# longest wait, after settling, for a moment when no other Qt program runs, so that PSS is
# taken as if alone; 0 takes it at once).
#
# Needs python3, xclip, xdotool, x11-utils and the packages of scripts/install-deps.sh.
set -euo pipefail

BENCH_DIR=$(cd "$(dirname "$0")" && pwd)
REPO_DIR=$(cd "$BENCH_DIR/.." && pwd)
DESKTOP=$REPO_DIR/tests/e2e/virtual_desktop.sh
PROGRAM=${1:-$REPO_DIR/build/src/app/orvantis}
RUNS=${RUNS:-1}
[[ -x $PROGRAM ]] || PROGRAM=$(command -v "$PROGRAM") || { echo "no program $1" >&2; exit 1; }
command -v python3 >/dev/null || { echo "python3 is needed" >&2; exit 1; }
export ORVANTIS_CLI=${ORVANTIS_CLI-$PROGRAM}
OUT=${BENCH_OUT:-$(mktemp -d "${TMPDIR:-/tmp}/idle-bench.XXXXXX")}
mkdir -p "$OUT"

env_file=""
cleanup() {
  if [[ -n $env_file && -f $env_file ]]; then
    "$DESKTOP" stop "$env_file" || true
    rm -f "$env_file"
  fi
}
trap cleanup EXIT

results=()
for ((run = 1; run <= RUNS; run++)); do
  env_file=$(mktemp "${TMPDIR:-/tmp}/idle-bench-env.XXXXXX")
  # shellcheck disable=SC2086  # options are words
  "$DESKTOP" start --env-file "$env_file" ${DESKTOP_OPTIONS:-}
  (
    # shellcheck disable=SC1090
    source "$env_file"
    echo "== run $run/$RUNS on $DISPLAY: $PROGRAM" >&2
    python3 "$BENCH_DIR/idle_and_capture.py" run "$PROGRAM" "$OUT/run$run.json"
    cp "$ORVANTIS_DESKTOP_DIR/program.log" "$OUT/run$run.log" 2>/dev/null || true
  )
  cleanup
  env_file=""
  results+=("$OUT/run$run.json")
done
python3 "$BENCH_DIR/idle_and_capture.py" summary "${results[@]}" | tee "$OUT/summary.md"
echo "(per-run figures in $OUT)" >&2
