#!/usr/bin/env bash
# layout_switch_xterm_test.sh: in a terminal, which shows no text to the accessibility bus, the
# layout switcher retypes from what it saw typed. "ghbdtn" and Shift+Backspace: the terminal
# receives six deletes and "привет"; pressed again after the retype interval: six deletes and
# "ghbdtn".
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
received=$ORVANTIS_DESKTOP_DIR/xterm-bytes
: >"$received"
LC_ALL=C.UTF-8 xterm -u8 -geometry 60x8+0+0 -e sh -c "stty raw -echo; exec dd bs=1 of='$received' 2>/dev/null" &
APP_PIDS+=("$!")
terminal=$(mapped_window --class XTerm)
[[ -n $terminal ]] || fail "no terminal window"

start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"
log_has "keyboard: no X display" && fail "the program found no keyboard"
focus_window "$terminal" || fail "the terminal took no focus"

bytes() { od -An -c "$received" | tr -s ' \n' ' '; }
has_text() { grep -q "$1" "$received"; }
# The number of delete bytes (DEL or BS) the terminal received.
deletes() { LC_ALL=C tr -cd '\010\177' <"$received" | wc -c; }

xdotool type --delay 15 ghbdtn
wait_until 3 has_text ghbdtn || fail "the terminal did not receive the typing: $(bytes)"
xdotool key shift+BackSpace
wait_until 3 has_text "привет" || fail "no retyped word: $(bytes)"
[[ $(deletes) == 6 ]] || fail "expected 6 deletes before the retyped word: $(bytes)"
note "first press: $(bytes)"

sleep 0.4  # past the retype interval
xdotool key shift+BackSpace
at_least_deletes() { (($(deletes) >= $1)); }
word_count_at_least() { (($(grep -ao ghbdtn "$received" | wc -l) >= $1)); }
wait_until 3 at_least_deletes 12 || fail "the second press deleted nothing: $(bytes)"
wait_until 3 word_count_at_least 2 || fail "the word did not come back: $(bytes)"
sleep 0.4  # a stray third conversion would come at the end of the retype interval
note "second press: $(bytes)"
# Typing goes on as before: no modifier was left down by the retyping.
xdotool type --delay 15 " abc"
wait_until 3 has_text "ghbdtn abc" || fail "typing after the retype: $(bytes)"
# The retyped characters never count as typing: no stray character was added.
[[ $(LC_ALL=C tr -d '\010\177' <"$received") == "ghbdtnприветghbdtn abc" ]] || fail "unexpected bytes: $(bytes)"

kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
note "PASS"
