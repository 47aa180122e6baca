#!/usr/bin/env bash
# signal_test.sh TERM|INT: the signal ends Orvantis through its end sequence: exit status 0
# and "terminating" in the log after the banner.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

signal=${1:-TERM}
desktop_up
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"
log_has "App: terminating" && fail "\"terminating\" logged before the signal"

kill -"$signal" "$APP_PID"
wait_exit "$APP_PID" 10
note "SIG$signal: exit status $EXIT_STATUS"
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS after SIG$signal"
log_has "App: quit requested by SIG$signal" || fail "the signal was not noted in the log"
# Flushed before the exit: the line is there at once, after the banner.
last=$(log_text | tail -n1)
[[ $last == *"[INFO ] App: terminating" ]] || fail "last log line is \"$last\""
note "PASS"
