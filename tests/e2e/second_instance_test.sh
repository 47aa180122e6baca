#!/usr/bin/env bash
# While Orvantis runs, a second launch says so on stdout and leaves with status 0; the first
# instance goes on running and keeps its single icon.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
start_orvantis first
first=$APP_PID
wait_for_tray_icon "$first" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner from the first instance"

status=0
output=$(timeout 20 "$ORVANTIS_BIN" 2>"$ORVANTIS_DESKTOP_DIR/app-second.err") || status=$?
note "second launch: status $status, output \"$output\""
[[ $status == 0 ]] || fail "second launch exit status $status"
[[ $output == "Orvantis is already running" ]] || fail "second launch printed \"$output\""

process_running "$first" || fail "the first instance ended"
banners=$(log_text | grep -cF "launch: Orvantis ")
[[ $banners == 1 ]] || fail "$banners launch banners: the second launch went too far"
# Docked windows of class orvantis: nested below the root's children in the window tree.
icons=$(xwininfo -root -tree | grep -cE '^ {6,}0x[0-9a-f]+ .*\("orvantis" "Orvantis"\)') || true
[[ $icons == 1 ]] || fail "$icons docked icons"

kill -TERM "$first"
wait_exit "$first" 10
[[ $EXIT_STATUS == 0 ]] || fail "first instance exit status $EXIT_STATUS"

# With the first instance gone, a new launch runs.
start_orvantis third
wait_for_tray_icon "$APP_PID" 15
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "relaunch exit status $EXIT_STATUS"
note "PASS"
