#!/usr/bin/env bash
# hotkey_held_elsewhere_test.sh: another X client (xbindkeys) holds Shift+Backspace before
# Orvantis starts. Orvantis logs a warning that names the hotkey, keeps running and leaves the
# key to its holder, and still ends cleanly on SIGTERM.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

command -v xbindkeys >/dev/null || fail "xbindkeys is not installed (scripts/install-deps.sh)"
desktop_up

# The other program: one binding, Shift+Backspace, that counts its presses in a file.
presses=$ORVANTIS_DESKTOP_DIR/other-program-presses
: >"$presses"
config=$ORVANTIS_DESKTOP_DIR/xbindkeysrc
printf '"echo pressed >>%s"\n  shift + BackSpace\n' "$presses" >"$config"
# HOME too: it would read its files from the real one.
HOME=$ORVANTIS_DESKTOP_DIR xbindkeys --nodaemon --file "$config" >"$ORVANTIS_DESKTOP_DIR/app-xbindkeys.err" 2>&1 &
holder=$!
APP_PIDS+=("$holder")

press_count() { wc -l <"$presses"; }
at_least_presses() { (($(press_count) >= $1)); }
# The grab is in place once a press reaches the other program.
held_by_other() {
  local before
  before=$(press_count)
  xdotool key shift+BackSpace
  wait_until 1 at_least_presses $((before + 1))
}
wait_until 10 held_by_other || fail "xbindkeys never took Shift+Backspace"
note "xbindkeys (pid $holder) holds Shift+Backspace"

start_orvantis first
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"
warning="keyboard: Shift+BackSpace is held by another program; that hotkey does not work until it lets go"
wait_until 5 log_has "$warning" || fail "no warning naming the held hotkey"
note "$(log_text | grep -F "held by another program")"
[[ $(log_text | grep -F "$warning" | grep -c "\[WARN \]") == 1 ]] || fail "the warning is not one WARN line"
# Only that hotkey is in conflict.
[[ $(log_text | grep -cF "held by another program") == 1 ]] || fail "other hotkeys reported held: $(log_text)"
wait_for_tray_icon "$APP_PID" 15

# The key still belongs to the other program, and Orvantis lives on.
before=$(press_count)
xdotool key shift+BackSpace
wait_until 3 at_least_presses $((before + 1)) || fail "the other program lost Shift+Backspace"
sleep 1
process_running "$APP_PID" || fail "Orvantis ended"
process_running "$holder" || fail "xbindkeys ended"

kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS after SIGTERM"
log_has "App: terminating" || fail "no \"terminating\" in the log"
note "PASS"
