#!/usr/bin/env bash
# installed_vs_tree.sh DEB [BUILD_PROGRAM]: start to tray docked and idle PSS of the program
# unpacked from the package (dpkg -x, as apt would install it) against the build tree's, runs
# alternating between the two (RUNS pairs, default 20), each on a fresh private desktop through
# idle_and_capture.sh. Prints the medians. Not part of the tests: it measures, it does not judge.
set -euo pipefail

BENCH_DIR=$(cd "$(dirname "$0")" && pwd)
deb=$(realpath "$1")
tree_program=${2:-$BENCH_DIR/../build/src/app/orvantis}
RUNS=${RUNS:-20}
out=${BENCH_OUT:-$(mktemp -d "${TMPDIR:-/tmp}/installed-bench.XXXXXX")}
mkdir -p "$out"
root=$out/root
dpkg -x "$deb" "$root"

for ((i = 1; i <= RUNS; i++)); do
  for name in tree installed; do
    program=$tree_program
    [[ $name == installed ]] && program=$root/usr/bin/orvantis
    RUNS=1 SETTLE_S=2 IDLE_S=1 COPIES=1 GAP_MS=100 BENCH_OUT=$out/$name/$i \
      "$BENCH_DIR/idle_and_capture.sh" "$program" >/dev/null 2>>"$out/bench.log"
  done
done

python3 - "$out" <<'PY'
import glob, json, statistics, sys
out = sys.argv[1]
for name in ("tree", "installed"):
    runs = [json.load(open(p)) for p in sorted(glob.glob(f"{out}/{name}/*/run1.json"))]
    start = [r["tray_docked_ms"] for r in runs if r.get("tray_docked_ms") is not None]
    pss = [r["pss_kb"] / 1024 for r in runs]
    alone = [r["pss_alone_kb"] / 1024 for r in runs]
    print(f"{name:9} runs {len(runs):2}  start to tray median {statistics.median(start):6.1f} ms "
          f"(min {min(start):.1f}, max {max(start):.1f})  idle PSS median {statistics.median(pss):.1f} MB, "
          f"without other Qt programs {statistics.median(alone):.1f} MB")
PY
echo "(per-run figures in $out)" >&2
