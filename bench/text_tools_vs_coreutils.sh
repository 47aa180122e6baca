#!/usr/bin/env bash
# text_tools_vs_coreutils.sh [BUILD_DIR]: the throughput of the digests, Base64 and hex of the
# text tools beside the coreutils tools, on the same 100 MB text in one run. Prints, per
# operation, the best of three wall-clock times (taken to the microsecond; /usr/bin/time's
# hundredths are too coarse for runs of 60 ms) of the tool and of `orvantis transform` on the
# file (for hex, coreutils' basenc --base16, in upper case), and then the in-process figures of
# text_tools_bench. Not part of the tests: it measures, it does not judge.
set -euo pipefail

BUILD=${1:-build}
ORVANTIS=$BUILD/src/app/orvantis
BENCH=$BUILD/bench/text_tools_bench
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# 100 MB of printable ASCII with blanks and line breaks, and its Base64.
python3 - "$work/text" <<'PY'
import random, sys
random.seed(7)
alphabet = bytes(range(33, 127)) * 2 + b' ' * 30 + b'\n' * 2
chunk = bytes(random.choice(alphabet) for _ in range(1 << 20))
with open(sys.argv[1], 'wb') as f:
    for i in range(100):
        f.write(chunk[i:] + chunk[:i])
PY
base64 -w 0 "$work/text" >"$work/text.b64"

best_of_three() {  # prints the best wall time of "$@" in seconds, to the microsecond
    local best=999999 start end
    for _ in 1 2 3; do
        start=$(date +%s%N)
        "$@" >/dev/null
        end=$(date +%s%N)
        best=$(python3 -c "print(min($best, ($end - $start) / 1e9))")
    done
    echo "$best"
}

size=$(stat -c %s "$work/text")
b64size=$(stat -c %s "$work/text.b64")
row() {  # name, input size, tool time, our time
    python3 -c "
n, s, a, b = '$1', $2, $3, $4
mb = s / 1e6
print(f'{n:14} tool {a:7.3f} s {mb/a if a else 0:8.0f} MB/s   orvantis {b:7.3f} s {mb/b if b else 0:8.0f} MB/s   ratio {a/b if b else 0:5.2f}')"
}
row sha256 "$size" "$(best_of_three sh -c "sha256sum <'$work/text'")" "$(best_of_three sh -c "$ORVANTIS transform sha256 <'$work/text'")"
row md5 "$size" "$(best_of_three sh -c "md5sum <'$work/text'")" "$(best_of_three sh -c "$ORVANTIS transform md5 <'$work/text'")"
row base64Encode "$size" "$(best_of_three sh -c "base64 -w 0 <'$work/text'")" "$(best_of_three sh -c "$ORVANTIS transform base64Encode <'$work/text'")"
row base64Decode "$b64size" "$(best_of_three sh -c "base64 -d <'$work/text.b64'")" "$(best_of_three sh -c "$ORVANTIS transform base64Decode <'$work/text.b64'")"
row hexEncode "$size" "$(best_of_three sh -c "basenc --base16 -w 0 <'$work/text'")" "$(best_of_three sh -c "$ORVANTIS transform hexEncode <'$work/text'")"
echo
"$BENCH" --benchmark_filter="${BENCH_FILTER:-.}"
