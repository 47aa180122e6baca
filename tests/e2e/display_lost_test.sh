#!/usr/bin/env bash
# display_lost_test.sh: when the X display goes away under the running program, it ends with
# exit status 1 rather than a crash, says why in its log and still runs its end sequence, so
# the log and the settings reach the disk.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"

xvfb=$(awk '$1 == "xvfb" {print $2}' "$ORVANTIS_DESKTOP_DIR/pids")
[[ -n $xvfb ]] || fail "no X server recorded"
kill -TERM "$xvfb"
wait_exit "$APP_PID" 10
note "exit status $EXIT_STATUS after the display went away"
# 128 and above: ended by a signal (a crash or an abort).
[[ $EXIT_STATUS == 1 ]] || fail "exit status $EXIT_STATUS"
log_has "display: the connection to the X display broke; Orvantis ends" || fail "no word of the display in the log"
last=$(log_text | tail -n1)
[[ $last == *"[INFO ] App: terminating" ]] || fail "last log line is \"$last\""
note "PASS"
