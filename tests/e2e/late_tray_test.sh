#!/usr/bin/env bash
# Started on a desktop whose tray is not up yet, Orvantis keeps running and its icon docks
# once the tray appears.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up --no-tray
start_orvantis first
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"
wait_until 5 log_has "menuBar: no system tray yet" || fail "the missing tray was not noted"
sleep 1
process_running "$APP_PID" || fail "Orvantis ended without a tray"
tray_icon_window "$APP_PID" >/dev/null && fail "an icon docked without a tray"

"$E2E_DIR/virtual_desktop.sh" start-tray "$ORVANTIS_DESKTOP_DIR" || fail "the tray did not start"
wait_for_tray_icon "$APP_PID" 15
note "icon docked late: $ICON_WINDOW ${ICON_W}x${ICON_H}"

kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
note "PASS"
