#!/usr/bin/env bash
# Scroll reversal from outside: a libinput mouse (the server's test pointer, dressed up) gets
# natural scrolling while the mouse is set to be reversed, its default again when the setting
# goes off, and its default when the program ends.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

[[ -x ${ORVANTIS_LIBINPUT_LOOKALIKE:-} ]] || fail "ORVANTIS_LIBINPUT_LOOKALIKE is not set to the helper"
desktop_up
"$ORVANTIS_LIBINPUT_LOOKALIKE" add || fail "the test pointer cannot carry the properties"
natural() { [[ $("$ORVANTIS_LIBINPUT_LOOKALIKE" natural) == "$1" ]]; }
natural 0 || fail "the lookalike does not start at its default"

"$ORVANTIS_BIN" settings set reverseMouseScroll true >/dev/null
start_orvantis first
wait_until 10 log_has "scrollReverser: active (trackpad=false, mouse=true, magicMouse=false)" || fail "no active line"
wait_until 5 natural 1 || fail "the mouse was not reversed"

"$ORVANTIS_BIN" settings set reverseMouseScroll false >/dev/null
wait_until 5 natural 0 || fail "the mouse stayed reversed with the setting off"
wait_until 5 log_has "scrollReverser: disabled (all toggles off)" || fail "no disabled line"
"$ORVANTIS_BIN" settings set reverseMouseScroll true >/dev/null
wait_until 5 natural 1 || fail "the mouse was not reversed again"

kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
natural 0 || fail "the mouse stayed reversed after the end"
"$ORVANTIS_LIBINPUT_LOOKALIKE" remove
note "PASS"
