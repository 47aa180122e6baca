#!/bin/bash
# Runs the fuzz programs of the text tools' parsing transforms one after another, each for
# SECONDS (default 600), at the lowest CPU priority, and keeps one log per transform.
#
#   fuzz/run_transform_fuzzers.sh BUILD_DIR LOG_DIR [SECONDS] [TRANSFORM...]
#
# BUILD_DIR is a clang build configured with -DORVANTIS_BUILD_FUZZERS=ON. Each program keeps its
# work corpus in BUILD_DIR/fuzz/corpus/transform_NAME (seeded from fuzz/corpus/transform_NAME) and
# writes crash, leak and timeout inputs to LOG_DIR/NAME-*. At the end a table gives, per transform,
# the executions, the coverage (edges and features), the corpus size and the findings. With
# SUMMARY_ONLY=1 it only prints that table from the logs already in LOG_DIR.
set -u
here=$(cd "$(dirname "$0")" && pwd)
build=${1:?build directory}
logs=${2:?log directory}
seconds=${3:-600}
shift $(( $# < 3 ? $# : 3 ))
transforms=("$@")
if [ ${#transforms[@]} -eq 0 ]; then
  transforms=(hexDecode urlDecode unicodeUnescape jsonPretty jsonMinify unixToISO isoToUnix htmlUnescape
              base64Decode)
fi
mkdir -p "$logs"
logs=$(cd "$logs" && pwd)

for t in "${transforms[@]}"; do
  [[ ${SUMMARY_ONLY:-0} == 1 ]] && break
  program="$build/fuzz/transform_${t}_fuzz"
  nice -n 19 ninja -C "$build" -j1 "transform_${t}_fuzz" >"$logs/$t.build.log" 2>&1 || {
    echo "$t: build failed, see $logs/$t.build.log"; continue; }
  corpus="$build/fuzz/corpus/transform_$t"
  mkdir -p "$corpus"
  echo "$(date -u +%H:%M:%S) fuzzing $t for $seconds s"
  nice -n 19 "$program" -max_total_time="$seconds" -max_len=16384 -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="$logs/$t-" "$corpus" "$here/corpus/transform_$t" \
    >"$logs/$t.log" 2>&1
  echo "$? exit" >>"$logs/$t.log"
done

printf '%-16s %12s %8s %8s %8s %s\n' transform executions edges features corpus findings
for t in "${transforms[@]}"; do
  log="$logs/$t.log"
  [ -f "$log" ] || continue
  execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  last=$(grep -E '^#[0-9]+' "$log" | tail -1)
  edges=$(sed -n 's/.* cov: \([0-9]*\).*/\1/p' <<<"$last")
  features=$(sed -n 's/.* ft: \([0-9]*\).*/\1/p' <<<"$last")
  corpus=$(sed -n 's/.* corp: \([0-9]*\/[0-9a-zA-Z]*\).*/\1/p' <<<"$last")
  findings=$(find "$logs" -maxdepth 1 -name "$t-*" | wc -l)
  printf '%-16s %12s %8s %8s %8s %s\n' "$t" "${execs:-?}" "${edges:-?}" "${features:-?}" "${corpus:-?}" "$findings"
done
