#!/usr/bin/env bash
# The keyboard lock from outside: the hotkey locks, keys typed into a terminal are swallowed
# (its byte file stays empty) while the full-screen overlay shows (keyboard-lock-overlay-en.png),
# Escape let go after one second keeps the lock and a three-second hold ends it; `orvantis lock`
# locks again and the deadline ends it; in Russian the menu locks
# (keyboard-lock-overlay-ru.png) and the overlay's button unlocks.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
received=$ORVANTIS_DESKTOP_DIR/xterm-bytes
: >"$received"
LC_ALL=C.UTF-8 xterm -u8 -title recorder -geometry 80x24+40+40 -e sh -c "stty raw -echo; exec dd bs=1 of='$received' 2>/dev/null" &
APP_PIDS+=("$!")
terminal=$(mapped_window --name '^recorder$')
[[ -n $terminal ]] || fail "no terminal window"

"$ORVANTIS_BIN" settings set keyboardLockAutoUnlockMinutes 1 >/dev/null
# Without the Pomodoro's rows the menu is Caffeine, the lock and Quit.
"$ORVANTIS_BIN" settings set pomodoroEnabled false >/dev/null
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "caffeine: keep-awake and the keyboard lock answer on the session bus" || fail "no bus object"

# The full-screen overlay of the program: a visible top-level window as large as the screen.
overlay_window() {
  local window
  for window in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null); do
    is_top_level "$window" || continue
    window_geometry "$window" || continue
    ((GEOMETRY_W == 1280 && GEOMETRY_H == 800)) || continue
    echo "$window"
    return 0
  done
  return 1
}
no_overlay() { ! overlay_window >/dev/null; }
bytes() { stat -c %s "$received"; }

focus_window "$terminal" || fail "the terminal cannot take the focus"
xdotool type --delay 20 "ab"
wait_until 5 bash -c "[[ \$(stat -c %s '$received') == 2 ]]" || fail "the terminal does not record keys ($(bytes) bytes)"

# The hotkey locks.
xdotool key --clearmodifiers super+shift+l
wait_until 5 log_has "keyboardLock: engaged via hotkey, auto-unlock in 1 min" || fail "the hotkey did not lock"
wait_until 5 overlay_window >/dev/null || fail "no overlay"
xdotool type --delay 20 "swallowed"
xdotool key Return
sleep 0.5
[[ $(bytes) == 2 ]] || fail "keys reached the terminal while locked: $(tail -c +3 "$received" | od -c | head -3)"
note "overlay: $(screenshot keyboard-lock-overlay-en)"

# Escape let go after one second keeps the lock; held three seconds, it ends it.
xdotool keydown Escape sleep 1 keyup Escape
sleep 0.3
log_has "keyboardLock: released" && fail "a one-second Escape unlocked"
xdotool keydown Escape sleep 3.3 keyup Escape
wait_until 3 log_has "keyboardLock: released via esc-hold" || fail "a three-second Escape hold did not unlock"
wait_until 5 no_overlay || fail "the overlay stayed"
focus_window "$terminal"
xdotool type --delay 20 "ok"
# Escape's autorepeat between the unlock and its release reaches the terminal as escape bytes,
# as any key held after an unlock does; nothing typed while locked does.
text_received() { tr -d '\033' <"$received"; }
has_ok() { [[ $(text_received) == "abok" ]]; }
wait_until 5 has_ok || fail "the terminal received $(od -c "$received" | head -3)"
count=$(bytes)

# The command line locks; the deadline (one minute) unlocks.
"$ORVANTIS_BIN" lock
wait_until 5 log_has "keyboardLock: engaged via command-line, auto-unlock in 1 min" || fail "orvantis lock did not lock"
sleep 2
note "overlay counting down: $(screenshot keyboard-lock-overlay-countdown)"
xdotool type --delay 20 "xy"
wait_until 65 log_has "keyboardLock: released via auto" || fail "the deadline did not unlock"
[[ $(bytes) == "$count" ]] || fail "keys reached the terminal during the second lock"
wait_until 5 no_overlay || fail "the overlay stayed after the deadline"

# With the feature off the command says so.
"$ORVANTIS_BIN" settings set keyboardLockEnabled false >/dev/null
sleep 0.5
if "$ORVANTIS_BIN" lock 2>"$ORVANTIS_DESKTOP_DIR/lock.err"; then fail "orvantis lock succeeded with the lock off"; fi
grep -q "switched off" "$ORVANTIS_DESKTOP_DIR/lock.err" || fail "no reason: $(cat "$ORVANTIS_DESKTOP_DIR/lock.err")"
"$ORVANTIS_BIN" settings set keyboardLockEnabled true >/dev/null
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10

# In Russian, from the menu: the lock item follows Caffeine and its separator.
"$ORVANTIS_BIN" settings set settingsLanguage '"ru"' >/dev/null
start_orvantis second
wait_for_tray_icon "$APP_PID" 15
click_icon 3
wait_for_menu "$APP_PID" 5
# Items: Settings, Launch at login, Caffeine, the lock, Quit (separators are skipped by the keys).
sleep 0.3
xdotool key --clearmodifiers Down Down Down Down Return
wait_until 5 log_has "keyboardLock: engaged via menu, auto-unlock in 1 min" || fail "the menu did not lock"
wait_until 5 overlay_window >/dev/null || fail "no overlay in Russian"
sleep 0.3
shot=$(screenshot keyboard-lock-overlay-ru)
note "overlay: $shot"
# The button is the lowest light object in the middle column of the picture.
button_y=$(convert "$shot" -crop 4x800+638+0 +repage -colorspace Gray -threshold 60% txt:- |
  awk -F'[,: ]+' '/#FFFFFF|white/ && $2 > 400 {y = $2} END {print y}')
[[ -n $button_y ]] || fail "no button found in the overlay"
xdotool mousemove 640 $((button_y - 10)) sleep 0.2 click 1
wait_until 5 log_has "keyboardLock: released via button" || fail "the overlay's button did not unlock"
wait_until 5 no_overlay || fail "the overlay stayed after its button"
note "PASS"
