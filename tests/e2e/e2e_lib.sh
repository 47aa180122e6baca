# shellcheck shell=bash
# shellcheck disable=SC2034  # the variables set here are read by the tests
# Shared steps of the end-to-end tests; sourced, not run. Each test brings up its own
# virtual desktop, starts the real program in it and ends both from an EXIT trap.
#
# Environment: ORVANTIS_BIN (the program; default build/src/app/orvantis of the checkout),
# ORVANTIS_E2E_ARTIFACTS (where screenshots go; default build/e2e-screenshots).

set -euo pipefail

E2E_DIR=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
REPO_DIR=$(cd "$E2E_DIR/../.." && pwd)
ORVANTIS_BIN=${ORVANTIS_BIN:-$REPO_DIR/build/src/app/orvantis}
ORVANTIS_E2E_ARTIFACTS=${ORVANTIS_E2E_ARTIFACTS:-$REPO_DIR/build/e2e-screenshots}
E2E_NAME=$(basename "$0" .sh)
E2E_STEP=0.05

APP_PIDS=()
E2E_ENV_FILE=""
E2E_SHOT_SUFFIX=""

# use_screen WxH: the desktop that desktop_up brings up next has a screen of that size, and the
# screenshots' names end in "-WxH" (except at the default 1280x800, so older names stay).
use_screen() {
  export ORVANTIS_DESKTOP_SCREEN="$1x24"
  [[ $1 == 1280x800 ]] && E2E_SHOT_SUFFIX="" || E2E_SHOT_SUFFIX="-$1"
}

note() { echo "== $*"; }

fail() {
  echo "FAIL ($E2E_NAME): $*" >&2
  dump_diagnostics >&2 || true
  exit 1
}

dump_diagnostics() {
  [[ -n ${ORVANTIS_DESKTOP_DIR:-} ]] || return 0
  local file
  for file in "$ORVANTIS_DESKTOP_DIR"/app-*.out "$ORVANTIS_DESKTOP_DIR"/app-*.err $(log_files); do
    [[ -s $file ]] || continue
    echo "--- $file"
    tail -n 40 "$file"
  done
  if [[ -n ${DISPLAY:-} ]]; then
    echo "--- windows on $DISPLAY"
    xwininfo -root -tree 2>/dev/null | head -n 60
  fi
}

# wait_until SECONDS COMMAND...: runs COMMAND until it succeeds, at most SECONDS long.
wait_until() {
  local limit=$1
  shift
  local deadline
  deadline=$(($(date +%s%N) + limit * 1000000000))
  until "$@"; do
    (($(date +%s%N) < deadline)) || return 1
    sleep "$E2E_STEP"
  done
}

# mapped_window SEARCH-ARGS...: the first window that xdotool's search finds once it is mapped,
# waiting at most 10 s. A client names its window before mapping it, and focusing an unmapped
# window is an X error.
mapped_window() {
  timeout 10 xdotool search --sync --onlyvisible "$@" 2>/dev/null | head -n1
}

# focus_window WINDOW: gives WINDOW the input focus, trying again for up to 5 s while the server
# refuses (a window is focusable only once it and its parents are viewable).
focus_window() {
  wait_until 5 timeout 3 xdotool windowfocus --sync "$1" 2>/dev/null
}

# desktop_up [--no-tray]: a fresh virtual desktop for this test, torn down on exit.
# shellcheck disable=SC2120  # the options are optional
desktop_up() {
  E2E_ENV_FILE=$(mktemp "${TMPDIR:-/tmp}/orvantis-e2e-env.XXXXXX")
  trap e2e_cleanup EXIT
  "$E2E_DIR/virtual_desktop.sh" start --env-file "$E2E_ENV_FILE" "$@" || fail "the virtual desktop did not start"
  # shellcheck disable=SC1090
  source "$E2E_ENV_FILE"
  note "virtual desktop on $DISPLAY in $ORVANTIS_DESKTOP_DIR"
}

e2e_cleanup() {
  local status=$?
  local pid
  for pid in "${APP_PIDS[@]}"; do
    if process_running "$pid"; then
      kill -KILL "$pid" 2>/dev/null || true
      wait "$pid" 2>/dev/null || true
    fi
  done
  if [[ -n ${ORVANTIS_DESKTOP_DIR:-} ]]; then
    "$E2E_DIR/virtual_desktop.sh" stop "$ORVANTIS_DESKTOP_DIR" || true
  fi
  [[ -n $E2E_ENV_FILE ]] && rm -f "$E2E_ENV_FILE"
  exit "$status"
}

# True while PID runs (a zombie has ended).
process_running() {
  local state
  state=$(awk '{print $3}' "/proc/$1/stat" 2>/dev/null) || return 1
  [[ -n $state && $state != Z ]]
}

process_ended() { ! process_running "$1"; }

# start_orvantis NAME: starts the program in the background; sets APP_PID. Onboarding counts as
# seen, so that its window stands in no test's way, unless ORVANTIS_E2E_FIRST_RUN is 1.
start_orvantis() {
  local name=$1
  [[ -x $ORVANTIS_BIN ]] || fail "no program at $ORVANTIS_BIN (build the orvantis target first)"
  if [[ ${ORVANTIS_E2E_FIRST_RUN:-0} != 1 ]]; then
    "$ORVANTIS_BIN" settings set hasCompletedOnboarding true >/dev/null || fail "cannot mark onboarding as seen"
  fi
  "$ORVANTIS_BIN" >"$ORVANTIS_DESKTOP_DIR/app-$name.out" 2>"$ORVANTIS_DESKTOP_DIR/app-$name.err" &
  APP_PID=$!
  APP_PIDS+=("$APP_PID")
}

# wait_exit PID SECONDS: waits for the program's end; sets EXIT_STATUS. Fails on time-out.
wait_exit() {
  local pid=$1 limit=$2
  wait_until "$limit" process_ended "$pid" || fail "process $pid still runs after ${limit}s"
  EXIT_STATUS=0
  wait "$pid" || EXIT_STATUS=$?
}

log_files() {
  compgen -G "${XDG_STATE_HOME:-/nonexistent}/orvantis/logs/orvantis-*.log" || true
}

# Every line of the program's log files.
log_text() {
  local file
  for file in $(log_files); do
    cat "$file"
  done
}

# log_has_count TEXT N: at least N lines of the program's log contain TEXT.
log_has_count() {
  (($(log_text | grep -cF -- "$1") >= $2))
}

# log_has TEXT: a line of the program's log contains TEXT.
log_has() {
  local file
  for file in $(log_files); do
    grep -qF -- "$1" "$file" && return 0
  done
  return 1
}

# The window of PID docked in the tray (its parent is not the root window, it is viewable
# and has a non-zero size); prints its id.
tray_icon_window() {
  local pid=$1 window
  for window in $(xdotool search --onlyvisible --pid "$pid" 2>/dev/null); do
    is_top_level "$window" && continue
    window_geometry "$window" || continue
    ((GEOMETRY_W > 0 && GEOMETRY_H > 0)) || continue
    echo "$window"
    return 0
  done
  return 1
}

# A viewable top-level window of PID with a non-zero size: an open menu; prints its id.
menu_window() {
  local pid=$1 window
  for window in $(xdotool search --onlyvisible --pid "$pid" 2>/dev/null); do
    is_top_level "$window" || continue
    window_geometry "$window" || continue
    ((GEOMETRY_W > 1 && GEOMETRY_H > 1)) || continue
    echo "$window"
    return 0
  done
  return 1
}

is_top_level() {
  local root parent
  root=$(xwininfo -root | awk '/Window id:/ {print $4; exit}')
  parent=$(xwininfo -tree -id "$1" 2>/dev/null | awk '/Parent window id:/ {print $4; exit}')
  [[ -n $parent && $((parent)) == $((root)) ]]
}

# window_geometry WINDOW: sets GEOMETRY_X, GEOMETRY_Y (absolute), GEOMETRY_W, GEOMETRY_H.
window_geometry() {
  local info
  info=$(xwininfo -id "$1" 2>/dev/null) || return 1
  GEOMETRY_X=$(awk '/Absolute upper-left X:/ {print $4}' <<<"$info")
  GEOMETRY_Y=$(awk '/Absolute upper-left Y:/ {print $4}' <<<"$info")
  GEOMETRY_W=$(awk '/Width:/ {print $2}' <<<"$info")
  GEOMETRY_H=$(awk '/Height:/ {print $2}' <<<"$info")
  [[ -n $GEOMETRY_X && -n $GEOMETRY_Y && -n $GEOMETRY_W && -n $GEOMETRY_H ]]
}

# The settings window: a visible top-level window of the program, 760 wide.
settings_window() {
  local window
  for window in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null); do
    is_top_level "$window" || continue
    window_geometry "$window" || continue
    ((GEOMETRY_W == 760)) || continue
    echo "$window"
    return 0
  done
  return 1
}
no_settings_window() { ! settings_window >/dev/null; }

# wait_for_tray_icon PID SECONDS: sets ICON_WINDOW and its geometry ICON_X/Y/W/H.
wait_for_tray_icon() {
  local pid=$1 limit=$2
  wait_until "$limit" tray_icon_window "$pid" >/dev/null || fail "no tray icon of process $pid after ${limit}s"
  ICON_WINDOW=$(tray_icon_window "$pid")
  window_geometry "$ICON_WINDOW"
  ICON_X=$GEOMETRY_X ICON_Y=$GEOMETRY_Y ICON_W=$GEOMETRY_W ICON_H=$GEOMETRY_H
}

# wait_for_menu PID SECONDS: sets MENU_WINDOW and MENU_X/Y/W/H.
wait_for_menu() {
  local pid=$1 limit=$2
  wait_until "$limit" menu_window "$pid" >/dev/null || fail "no menu of process $pid after ${limit}s"
  MENU_WINDOW=$(menu_window "$pid")
  window_geometry "$MENU_WINDOW"
  MENU_X=$GEOMETRY_X MENU_Y=$GEOMETRY_Y MENU_W=$GEOMETRY_W MENU_H=$GEOMETRY_H
}

no_menu() { ! menu_window "$1" >/dev/null; }

# click_icon BUTTON: clicks the middle of the tray icon.
click_icon() {
  # No --sync: it waits for a motion event, and there is none when the pointer is already there.
  xdotool mousemove $((ICON_X + ICON_W / 2)) $((ICON_Y + ICON_H / 2)) sleep 0.1 click "$1"
}

# screenshot NAME: the whole screen into the artifacts folder; prints the path.
screenshot() {
  mkdir -p "$ORVANTIS_E2E_ARTIFACTS"
  local path=$ORVANTIS_E2E_ARTIFACTS/$1$E2E_SHOT_SUFFIX.png
  import -window root "$path" || fail "screenshot failed"
  echo "$path"
}

# region_stat IMAGE X Y W H FX: an ImageMagick fx value (mean, standard_deviation) of a region.
region_stat() {
  convert "$1" -crop "$4x$5+$2+$3" +repage -colorspace Gray -format "%[fx:$6]" info:
}

# icon_colour_pixels IMAGE COLOUR: how many pixels of the tray icon's region (ICON_X/Y/W/H) in
# IMAGE are close to COLOUR ("#e09010").
icon_colour_pixels() {
  convert "$1" -crop "${ICON_W}x${ICON_H}+${ICON_X}+${ICON_Y}" +repage -alpha off -fuzz 12% \
    -fill black +opaque "$2" -fill white -opaque "$2" -colorspace Gray -format "%[fx:round(mean*w*h)]" info:
}

# hover_icon: the pointer leaves the icon, then moves within it and rests, so that its tool
# tip comes anew (after the first tool tip, a jump straight onto the icon shows none).
hover_icon() {
  xdotool mousemove 640 400 sleep 0.2 mousemove $((ICON_X + 3)) $((ICON_Y + 3)) sleep 0.1 \
    mousemove $((ICON_X + ICON_W / 2)) $((ICON_Y + ICON_H / 2))
}

# tooltip_text: the text of the tool tip that the program shows, read from its accessibility
# tree (start it with QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1); false while it shows none.
tooltip_text() {
  local address app path
  address=$(gdbus call --session --dest org.a11y.Bus --object-path /org/a11y/bus \
    --method org.a11y.Bus.GetAddress 2>/dev/null | sed -n "s/^('\(.*\)',)$/\1/p")
  [[ -n $address ]] || return 1
  for app in $(atspi_call "$address" org.a11y.atspi.Registry /org/a11y/atspi/accessible/root \
    org.a11y.atspi.Accessible.GetChildren | grep -o "':[0-9.]*'" | tr -d "'"); do
    [[ $(atspi_call "$address" "$app" /org/a11y/atspi/accessible/root org.freedesktop.DBus.Properties.Get \
      org.a11y.atspi.Accessible Name) == "(<'Orvantis'>,)" ]] || continue
    for path in $(atspi_call "$address" "$app" /org/a11y/atspi/accessible/root \
      org.a11y.atspi.Accessible.GetChildren | grep -o "objectpath '[^']*'" | sed "s/^objectpath '//; s/'$//"); do
      [[ $(atspi_call "$address" "$app" "$path" org.a11y.atspi.Accessible.GetRoleName) == "('tool tip',)" ]] || continue
      atspi_call "$address" "$app" "$path" org.freedesktop.DBus.Properties.Get org.a11y.atspi.Accessible Name |
        sed -n "s/^(<[\"']\(.*\)[\"']>,)$/\1/p"
      return 0
    done
  done
  return 1
}

atspi_call() { # ADDRESS DEST PATH METHOD ARGS...
  local address=$1 dest=$2 path=$3 method=$4
  shift 4
  gdbus call --address "$address" --dest "$dest" --object-path "$path" --method "$method" "$@" 2>/dev/null
}

# A viewable top-level window of PID that is a tool tip; prints its id.
tooltip_window() {
  local pid=$1 window
  for window in $(xdotool search --onlyvisible --pid "$pid" 2>/dev/null); do
    is_top_level "$window" || continue
    xprop -id "$window" _NET_WM_WINDOW_TYPE 2>/dev/null | grep -q '_NET_WM_WINDOW_TYPE_TOOLTIP' || continue
    echo "$window"
    return 0
  done
  return 1
}

no_tooltip() { ! tooltip_window "$1" >/dev/null; }

# tooltip_screenshot NAME WINDOW: the strip of the screen from its top down to the tool tip
# WINDOW, wide enough for the tray icon too, into the artifacts folder. Sets TIP_SHOT to its
# path and TIP_X/Y/W/H to the tool tip's place in it.
tooltip_screenshot() {
  local name=$1 window=$2 whole left right
  window_geometry "$window" || fail "no tool tip window $window"
  whole=$(screenshot "$name-screen")
  left=$((GEOMETRY_X < ICON_X ? GEOMETRY_X : ICON_X))
  right=$((GEOMETRY_X + GEOMETRY_W > ICON_X + ICON_W ? GEOMETRY_X + GEOMETRY_W : ICON_X + ICON_W))
  TIP_SHOT=$ORVANTIS_E2E_ARTIFACTS/$name.png
  convert "$whole" -crop "$((right - left))x$((GEOMETRY_Y + GEOMETRY_H))+${left}+0" +repage "$TIP_SHOT" ||
    fail "cannot cut the tool tip out of $whole"
  rm -f "$whole"
  TIP_X=$((GEOMETRY_X - left)) TIP_Y=$GEOMETRY_Y TIP_W=$GEOMETRY_W TIP_H=$GEOMETRY_H
}
