#!/usr/bin/env bash
# Runs Orvantis from the build tree (it builds nothing; build first).
#
#   scripts/run.sh            on a working $DISPLAY: runs the program there.
#                             Without one: brings up a virtual desktop, starts the program,
#                             opens its tray menu, takes a screenshot, says where it is, quits
#                             the program through its menu and exits 0.
#   scripts/run.sh --stay     the same, but keeps the program running until Ctrl+C.
#   scripts/run.sh ARGS...    any other arguments go to the program's command line.
#
# ORVANTIS_BIN overrides the program (default build/src/app/orvantis); screenshots go to
# build/screenshots (ORVANTIS_E2E_ARTIFACTS overrides).
set -euo pipefail

REPO_DIR=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export ORVANTIS_BIN=${ORVANTIS_BIN:-$REPO_DIR/build/src/app/orvantis}
export ORVANTIS_E2E_ARTIFACTS=${ORVANTIS_E2E_ARTIFACTS:-$REPO_DIR/build/screenshots}

stay=0
if [[ ${1:-} == --stay ]]; then
  stay=1
  shift
fi

if [[ ! -x $ORVANTIS_BIN ]]; then
  echo "run.sh: no program at $ORVANTIS_BIN; build it first (cmake --build build)" >&2
  exit 1
fi

# A command of the command line, or a real display: nothing to arrange.
if (($#)); then
  exec "$ORVANTIS_BIN" "$@"
fi
if [[ -n ${DISPLAY:-} ]] && xdpyinfo >/dev/null 2>&1; then
  exec "$ORVANTIS_BIN"
fi

# No display: a virtual desktop of our own.
# shellcheck source-path=SCRIPTDIR source=../tests/e2e/e2e_lib.sh
source "$REPO_DIR/tests/e2e/e2e_lib.sh"
desktop_up
start_orvantis run
wait_for_tray_icon "$APP_PID" 15
click_icon 1 # opens the menu below the icon, which leaves the icon in the picture
wait_for_menu "$APP_PID" 5
sleep 0.3 # let the menu paint
shot=$(screenshot tray-menu)
echo "Orvantis is running on a virtual display; screenshot: $shot"

if ((stay)); then
  xdotool key Escape
  echo "Display $DISPLAY, log folder $XDG_STATE_HOME/orvantis/logs. Ctrl+C ends it."
  trap 'kill -TERM "$APP_PID" 2>/dev/null || true' INT TERM
  # wait returns early when the trap runs; go on until the program has ended.
  while process_running "$APP_PID"; do
    wait "$APP_PID" || true
  done
  exit 0
fi

# Quit through the menu, as a user would: Quit is its last item, at its bottom.
xdotool mousemove $((MENU_X + MENU_W / 2)) $((MENU_Y + MENU_H - 12)) sleep 0.1 click 1
wait_exit "$APP_PID" 10
if [[ $EXIT_STATUS != 0 ]]; then
  echo "run.sh: Orvantis ended with status $EXIT_STATUS" >&2
  exit "$EXIT_STATUS"
fi
echo "Orvantis quit cleanly."
