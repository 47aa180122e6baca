#!/usr/bin/env bash
# retype_latency.sh [RUNS]: how long the layout hotkey takes on a real X desktop, from the
# hotkey press to the last retyped character arriving in a terminal, for a retype delay of
# 0 and 100 ms; the median of RUNS (default 20) presses each. Not part of the tests: it
# measures, it does not judge.
#
# Each run types "ghbdtn" into an xterm, waits past the retype interval, presses
# Shift+Backspace and times the arrival of the last letter of "привет". The keys are pressed
# through XTest from within the script, Shift first and the clock started just before Backspace
# goes down; both are let go at once. (The retyping waits for held keys to be let go, so a
# hotkey held longer adds its hold time.) The same is timed for a plain key press ("the echo"),
# which is what the X server and the terminal cost by themselves; the difference is the
# program's.
#
# Needs the build (ORVANTIS_BIN, default build/src/app/orvantis), python3 and the packages of
# scripts/install-deps.sh.
set -euo pipefail

RUNS=${1:-20}
BENCH_DIR=$(cd "$(dirname "$0")" && pwd)
E2E_DIR=$BENCH_DIR/../tests/e2e
# shellcheck source=../tests/e2e/e2e_lib.sh
source "$E2E_DIR/e2e_lib.sh"
command -v python3 >/dev/null || fail "python3 is needed (apt-get install python3)"

desktop_up --no-tray
received=$ORVANTIS_DESKTOP_DIR/arrivals
: >"$received"
# The terminal's input, one line per byte: the monotonic time it arrived and the byte.
LC_ALL=C.UTF-8 xterm -u8 -geometry 60x8+0+0 -e sh -c "stty raw -echo; exec python3 -c '
import os, sys, time
out = open(sys.argv[1], \"a\", buffering=1)
while True:
    b = os.read(0, 1)
    if not b: break
    out.write(\"%.6f %d\\n\" % (time.monotonic(), b[0]))
' '$received'" &
APP_PIDS+=("$!")
terminal=$(mapped_window --class XTerm)
[[ -n $terminal ]] || fail "no terminal window"

PYTHONPATH=$BENCH_DIR python3 - "$ORVANTIS_BIN" "$received" "$terminal" "$RUNS" "$ORVANTIS_DESKTOP_DIR" <<'PYTHON'
import os, statistics, subprocess, sys, time
from x11_keys import Display

program, received, terminal, runs, desktop = sys.argv[1], sys.argv[2], sys.argv[3], int(sys.argv[4]), sys.argv[5]
# The last byte of "привет" in UTF-8 (т is d1 82).
LAST_BYTE = 0x82

def lines():
    with open(received) as f:
        return [l.split() for l in f if l.strip()]

def wait_for(predicate, limit=5.0):
    deadline = time.monotonic() + limit
    while time.monotonic() < deadline:
        seen = lines()
        found = predicate(seen)
        if found is not None:
            return found
        time.sleep(0.002)
    state = subprocess.run(["xinput", "query-state", "Virtual core XTEST keyboard"], capture_output=True, text=True).stdout
    raise SystemExit("time-out: %r\n%s" % (lines()[-12:], state))

x = Display()

def xdotool(*args):
    subprocess.run(["xdotool", *args], check=True)

def echo_latency():
    start_count = len(lines())
    t0 = time.monotonic()
    x.press("a")
    x.release("a")
    return wait_for(lambda seen: float(seen[start_count][0]) - t0 if len(seen) > start_count else None)

def retype_latency():
    xdotool("type", "--delay", "15", "ghbdtn")
    wait_for(lambda seen: True if len(seen) >= 6 and int(seen[-1][1]) == ord("n") else None)
    time.sleep(0.35)  # past the retype interval of an earlier run
    start_count = len(lines())
    x.hold("Shift_L")
    t0 = time.monotonic()
    x.press("BackSpace")
    x.release("Shift_L", "BackSpace")
    # Six deletes and twelve bytes of "привет".
    def done(seen):
        new = seen[start_count:]
        if len(new) >= 18 and int(new[17][1]) == LAST_BYTE:
            return float(new[17][0]) - t0
        return None
    latency = wait_for(done)
    time.sleep(0.35)
    xdotool("key", "space")
    return latency

def run_program(delay):
    env = dict(os.environ)
    subprocess.run([program, "settings", "set", "switchDelayMs", str(delay)], check=True, env=env)
    out = open(os.path.join(desktop, "bench-app-%d.out" % delay), "w")
    app = subprocess.Popen([program], stdout=out, stderr=subprocess.STDOUT, env=env)
    time.sleep(2.0)  # launch, grabs and the first permission check
    try:
        xdotool("windowfocus", "--sync", terminal)
        retype_latency()  # a warm-up
        return [retype_latency() for _ in range(runs)]
    finally:
        app.terminate()
        app.wait(10)

xdotool("windowfocus", "--sync", terminal)
echo = [echo_latency() for _ in range(runs)]
print("echo (key press to arrival):        median %6.1f ms  (min %.1f, max %.1f)" %
      (statistics.median(echo) * 1e3, min(echo) * 1e3, max(echo) * 1e3))
for delay in (0, 100):
    values = run_program(delay)
    print("hotkey to last letter, delay %3d ms: median %6.1f ms  (min %.1f, max %.1f, %d runs)" %
          (delay, statistics.median(values) * 1e3, min(values) * 1e3, max(values) * 1e3, len(values)))
PYTHON
