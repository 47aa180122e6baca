#!/usr/bin/env bash
# translator_popup_latency.sh [RUNS]: how long the translator takes on a real X desktop from
# the variants hotkey to its popup being on screen (the loading row), the median of RUNS
# (default 20) presses. The translation itself is held back by a stand-in endpoint that answers
# after three seconds, so only the popup's own road is timed. Not part of the tests.
#
# The popup counts as on screen once X reports a new viewable top-level window; the script asks
# the server in a tight loop, so the figures include the start of xdotool itself (timed alone
# as "xdotool start").
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

python3 - "$APP_PID" "$field" "$RUNS" <<'PYTHON'
import statistics, subprocess, sys, time

pid, field, runs = sys.argv[1], sys.argv[2], int(sys.argv[3])

# Polled in-process through Xlib, so a poll costs microseconds rather than a process start.
import ctypes, ctypes.util
xlib = ctypes.cdll.LoadLibrary(ctypes.util.find_library("X11"))

class XWindowAttributes(ctypes.Structure):
    _fields_ = [("x", ctypes.c_int), ("y", ctypes.c_int), ("width", ctypes.c_int), ("height", ctypes.c_int),
                ("border_width", ctypes.c_int), ("depth", ctypes.c_int), ("visual", ctypes.c_void_p),
                ("root", ctypes.c_ulong), ("c_class", ctypes.c_int), ("bit_gravity", ctypes.c_int),
                ("win_gravity", ctypes.c_int), ("backing_store", ctypes.c_int), ("backing_planes", ctypes.c_ulong),
                ("backing_pixel", ctypes.c_ulong), ("save_under", ctypes.c_int), ("colormap", ctypes.c_ulong),
                ("map_installed", ctypes.c_int), ("map_state", ctypes.c_int), ("all_event_masks", ctypes.c_long),
                ("your_event_mask", ctypes.c_long), ("do_not_propagate_mask", ctypes.c_long),
                ("override_redirect", ctypes.c_int), ("screen", ctypes.c_void_p)]

xlib.XOpenDisplay.restype = ctypes.c_void_p
xlib.XOpenDisplay.argtypes = [ctypes.c_char_p]
xlib.XDefaultRootWindow.restype = ctypes.c_ulong
xlib.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
xlib.XQueryTree.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.POINTER(ctypes.c_ulong), ctypes.POINTER(ctypes.c_ulong),
                            ctypes.POINTER(ctypes.POINTER(ctypes.c_ulong)), ctypes.POINTER(ctypes.c_uint)]
xlib.XGetWindowAttributes.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.POINTER(XWindowAttributes)]
xlib.XFree.argtypes = [ctypes.c_void_p]
display = xlib.XOpenDisplay(None)
root = xlib.XDefaultRootWindow(display)

def viewable_top_level():
    root_return, parent = ctypes.c_ulong(), ctypes.c_ulong()
    children, count = ctypes.POINTER(ctypes.c_ulong)(), ctypes.c_uint()
    xlib.XQueryTree(display, root, ctypes.byref(root_return), ctypes.byref(parent), ctypes.byref(children), ctypes.byref(count))
    viewable = set()
    attributes = XWindowAttributes()
    for i in range(count.value):
        if xlib.XGetWindowAttributes(display, children[i], ctypes.byref(attributes)) and attributes.map_state == 2 \
                and attributes.width > 50:
            viewable.add(children[i])
    if children:
        xlib.XFree(children)
    return viewable

def popup_visible():
    return bool(viewable_top_level() - before)

def run(cmd):
    subprocess.run(cmd, check=True)

start = []
for _ in range(runs):
    t0 = time.monotonic(); run(["xdotool", "getmouselocation"]); start.append(time.monotonic() - t0)

values = []
for _ in range(runs + 1):
    run(["xdotool", "windowfocus", "--sync", field])
    run(["xdotool", "key", "ctrl+a"])
    time.sleep(0.3)
    before = viewable_top_level()
    t0 = time.monotonic()
    run(["xdotool", "key", "super+shift+x"])
    while not popup_visible():
        if time.monotonic() - t0 > 3:
            raise SystemExit("no popup")
    values.append(time.monotonic() - t0)
    run(["xdotool", "key", "Escape"])
    time.sleep(0.4)
values = values[1:]  # the first press warms up
print("xdotool start:                 median %6.1f ms" % (statistics.median(start) * 1e3))
print("hotkey to popup on screen:     median %6.1f ms  (min %.1f, max %.1f, %d runs)" %
      (statistics.median(values) * 1e3, min(values) * 1e3, max(values) * 1e3, len(values)))
PYTHON
