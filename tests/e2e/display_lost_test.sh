#!/usr/bin/env bash
# display_lost_test.sh: when the X display goes away under the running program, it ends with
# exit status 1 rather than a crash, says why in its log and still runs its end sequence, so
# the log and the settings reach the disk. Without a display at all, a launch says so and
# leaves with status 1.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

launch_without_display() { # EXPECTED-MESSAGE ENV-ARGS...
  local expected=$1 status=0 message
  shift
  message=$(env "$@" timeout 20 "$ORVANTIS_BIN" 2>&1 >/dev/null) || status=$?
  note "launch with $*: status $status, \"$message\""
  [[ $status == 1 ]] || fail "launch with $*: exit status $status"
  [[ $message == "$expected" ]] || fail "launch with $*: said \"$message\""
}
launch_without_display "Orvantis: no X display (DISPLAY is not set); it runs in an X11 desktop session" -u DISPLAY
launch_without_display "Orvantis: cannot open the X display \":1999\"" DISPLAY=:1999

desktop_up
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"

# A write to the gone server must fail and be handled, not end the process: whichever
# connection writes first after the server went away would otherwise take it down with SIGPIPE.
ignored=$(awk '$1 == "SigIgn:" {print $2}' "/proc/$APP_PID/status")
(( (16#$ignored >> 12) & 1 )) || fail "SIGPIPE is not ignored (SigIgn $ignored)"

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
