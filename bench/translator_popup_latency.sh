#!/usr/bin/env bash
# translator_popup_latency.sh [RUNS]: how long the translator takes on a real X desktop from
# the variants hotkey to its popup being on screen (the loading row), the median of RUNS
# (default 20) presses. The translation itself is held back by a stand-in endpoint that answers
# after three seconds, so only the popup's own road is timed. Not part of the tests.
#
# The hotkey is pressed from within the script through XTest (Super and Shift first, then the
# clock starts and X goes down), and the popup counts as on screen once X reports a new viewable
# top-level window; the script asks the server in a tight loop, so a poll costs microseconds.
#
# Needs the build (ORVANTIS_BIN, default build/src/app/orvantis), python3, and the packages of
# scripts/install-deps.sh.
set -euo pipefail

RUNS=${1:-20}
BENCH_DIR=$(cd "$(dirname "$0")" && pwd)
E2E_DIR=$BENCH_DIR/../tests/e2e
ORVANTIS_TEXT_TARGET=${ORVANTIS_TEXT_TARGET:-$BENCH_DIR/../build/tests/e2e/orvantis_text_target}
# shellcheck source=../tests/e2e/e2e_lib.sh
source "$E2E_DIR/e2e_lib.sh"
command -v python3 >/dev/null || fail "python3 is needed (apt-get install python3)"

desktop_up
requests=$ORVANTIS_DESKTOP_DIR/translation-requests
port_file=$ORVANTIS_DESKTOP_DIR/translation-port
python3 "$E2E_DIR/tools/canned_translation_server.py" "$port_file" "$requests" &
APP_PIDS+=("$!")
wait_until 5 test -s "$port_file" || fail "the translation stand-in did not start"
"$ORVANTIS_BIN" settings set translationEndpoint "\"http://127.0.0.1:$(cat "$port_file")\"" >/dev/null

out=$ORVANTIS_DESKTOP_DIR/field.out
QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 "$ORVANTIS_TEXT_TARGET" --title Field --out "$out" --text "медленно" 2>/dev/null &
APP_PIDS+=("$!")
field=$(mapped_window --name '^Field$')
[[ -n $field ]] || fail "no field"
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
sleep 1

PYTHONPATH=$BENCH_DIR python3 - "$field" "$RUNS" <<'PYTHON'
import statistics, subprocess, sys, time
from x11_keys import Display

field, runs = sys.argv[1], int(sys.argv[2])
x = Display()

values = []
for _ in range(runs + 1):
    subprocess.run(["xdotool", "windowfocus", "--sync", field], check=True)
    subprocess.run(["xdotool", "key", "ctrl+a"], check=True)
    time.sleep(0.3)
    before = x.viewable_top_level()
    x.hold("Super_L", "Shift_L")
    t0 = time.monotonic()
    x.press("x")
    while not x.viewable_top_level() - before:
        if time.monotonic() - t0 > 3:
            raise SystemExit("no popup")
    values.append(time.monotonic() - t0)
    x.release("Super_L", "Shift_L", "x")
    time.sleep(0.1)
    subprocess.run(["xdotool", "key", "Escape"], check=True)
    time.sleep(0.4)
values = values[1:]  # the first press warms up
print("hotkey to popup on screen:     median %6.1f ms  (min %.1f, max %.1f, %d runs)" %
      (statistics.median(values) * 1e3, min(values) * 1e3, max(values) * 1e3, len(values)))
PYTHON
