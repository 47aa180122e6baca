#!/usr/bin/env bash
# Keep-awake from outside: without a screen saver service the hotkey arms nothing and the log
# says why; with a stand-in screen saver (and a stand-in login manager on a private system
# bus) the hotkey and the menu take and give back the inhibition, the tray icon turns red
# (caffeine-red-icon.png), `orvantis caffeine` reports and arms, the master switch off refuses
# the command, and the lid-close mode holds a lid-switch inhibitor until the program ends.
# Screenshots of the menu in both languages: caffeine-menu-en.png, caffeine-menu-ru.png.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

[[ -x ${ORVANTIS_POWER_STANDIN:-} ]] || fail "ORVANTIS_POWER_STANDIN is not set to the stand-in program"

desktop_up
# A private "system" bus for the login manager's stand-in.
dbus-daemon --session --fork --print-address=1 --print-pid=1 >"$ORVANTIS_DESKTOP_DIR/system-bus.out"
DBUS_SYSTEM_BUS_ADDRESS=$(sed -n 1p "$ORVANTIS_DESKTOP_DIR/system-bus.out")
APP_PIDS+=("$(sed -n 2p "$ORVANTIS_DESKTOP_DIR/system-bus.out")")
export DBUS_SYSTEM_BUS_ADDRESS
calls=$ORVANTIS_DESKTOP_DIR/power-calls
: >"$calls"
"$ORVANTIS_POWER_STANDIN" --record "$calls" --logind &
APP_PIDS+=("$!")
wait_until 5 grep -qx ready "$calls" || fail "the login manager stand-in did not start"

"$ORVANTIS_BIN" settings set caffeineLidCloseAlways true >/dev/null
# Without the Pomodoro's rows, Caffeine is the menu's first item.
"$ORVANTIS_BIN" settings set pomodoroEnabled false >/dev/null
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "caffeine: keep-awake and the keyboard lock answer on the session bus" || fail "no bus object"
# The unconditional lid-close mode holds the lid switch from launch on.
wait_until 5 grep -qx "login1 Inhibit handle-lid-switch|Orvantis|Keeping the computer awake with the lid closed|block" "$calls" ||
  fail "no lid-switch inhibitor asked for: $(cat "$calls")"
log_has "caffeine: lid-close disablesleep=1 (automation)" || fail "no lid-close line in the log"

has_red_icon() {
  local shot
  shot=$(screenshot caffeine-probe)
  (($(icon_colour_pixels "$shot" "#ff3b30") > 20))
}

not_red() { ! has_red_icon; }

# No screen saver service: the hotkey arms nothing, and the log says why.
xdotool key --clearmodifiers super+shift+k
wait_until 5 log_has "caffeine: arming aborted — power assertion could not be acquired" ||
  fail "an arm without a screen saver was not refused"
log_has "caffeine: the screen saver service (org.freedesktop.ScreenSaver) refused: org.freedesktop.DBus.Error.ServiceUnknown" ||
  fail "the log does not say that the screen saver is missing"
[[ $("$ORVANTIS_BIN" caffeine status) == $'inactive\t-\treleased' ]] || fail "status after a refused arm"
! has_red_icon || fail "the icon turned red without an assertion"

# The stand-in screen saver on the session bus.
"$ORVANTIS_POWER_STANDIN" --record "$calls" --screensaver &
APP_PIDS+=("$!")
wait_until 5 bash -c "[[ \$(grep -cx ready '$calls') == 2 ]]" || fail "the screen saver stand-in did not start"

xdotool key --clearmodifiers super+shift+k
wait_until 5 grep -qx "Inhibit Orvantis|Orvantis Caffeine -> 1" "$calls" || fail "the hotkey did not inhibit: $(cat "$calls")"
grep -q "^login1 Inhibit idle|Orvantis|Orvantis Caffeine|block$" "$calls" || fail "no idle inhibitor asked for"
wait_until 5 log_has "caffeine: armed globally via hotkey, duration=indefinite" || fail "no armed line"
[[ $("$ORVANTIS_BIN" caffeine status) == $'active\t-\theld' ]] || fail "status while armed: $("$ORVANTIS_BIN" caffeine status)"
wait_until 5 has_red_icon || fail "the tray icon did not turn red"
note "red icon: $(screenshot caffeine-red-icon)"

# The menu: Caffeine, checked, is the third item after Settings and Launch at login; it disarms.
click_icon 3
wait_for_menu "$APP_PID" 5
sleep 0.3
note "menu: $(screenshot caffeine-menu-en)"
xdotool key --clearmodifiers Down Down Down Return
wait_until 5 grep -qx "UnInhibit 1" "$calls" || fail "the menu did not give the inhibition back"
wait_until 5 grep -qx "login1 released idle" "$calls" || fail "the idle inhibitor was kept"
log_has "caffeine: global arm off via menu" || fail "no off line for the menu"
wait_until 5 not_red || fail "the icon stayed red"

# The menu arms again.
click_icon 3
wait_for_menu "$APP_PID" 5
sleep 0.3
xdotool key --clearmodifiers Down Down Down Return
wait_until 5 grep -qx "Inhibit Orvantis|Orvantis Caffeine -> 2" "$calls" || fail "the menu did not inhibit"
"$ORVANTIS_BIN" caffeine off
wait_until 5 grep -qx "UnInhibit 2" "$calls" || fail "caffeine off did not give the inhibition back"

# The command line arms for 30 minutes.
"$ORVANTIS_BIN" caffeine on 30
status=$("$ORVANTIS_BIN" caffeine status)
note "status after caffeine on 30: $status"
[[ $status =~ ^active$'\t'(1799|1800)$'\t'held$ ]] || fail "status of a 30 minute arm: $status"
log_has "caffeine: armed globally via command-line, duration=30 min" || fail "no armed line for the command"
"$ORVANTIS_BIN" caffeine off

# The master switch off: the command says so and fails.
"$ORVANTIS_BIN" settings set caffeineEnabled false >/dev/null
sleep 0.5
if "$ORVANTIS_BIN" caffeine on 2>"$ORVANTIS_DESKTOP_DIR/caffeine-off.err"; then fail "caffeine on succeeded with the switch off"; fi
grep -q "switched off" "$ORVANTIS_DESKTOP_DIR/caffeine-off.err" || fail "no reason given: $(cat "$ORVANTIS_DESKTOP_DIR/caffeine-off.err")"
# ... and lid-close sleep comes back.
wait_until 5 grep -qx "login1 released handle-lid-switch" "$calls" || fail "the lid switch stayed held with the switch off"
"$ORVANTIS_BIN" settings set caffeineEnabled true >/dev/null
wait_until 5 bash -c "[[ \$(grep -c '^login1 Inhibit handle-lid-switch' '$calls') == 2 ]]" ||
  fail "the lid switch was not held again"

# The end lets the lid switch go.
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
wait_until 5 bash -c "[[ \$(grep -c '^login1 released handle-lid-switch' '$calls') == 2 ]]" ||
  fail "the lid switch was held past the end"

# Without any running program the commands say so.
if "$ORVANTIS_BIN" caffeine status 2>"$ORVANTIS_DESKTOP_DIR/none.err"; then fail "status without a program"; fi
grep -q "Orvantis is not running" "$ORVANTIS_DESKTOP_DIR/none.err" || fail "no message without a program"

# The menu in Russian.
"$ORVANTIS_BIN" settings set settingsLanguage '"ru"' >/dev/null
start_orvantis second
wait_for_tray_icon "$APP_PID" 15
click_icon 3
wait_for_menu "$APP_PID" 5
sleep 0.3
note "menu: $(screenshot caffeine-menu-ru)"
xdotool key Escape
note "calls: $(tr '\n' ';' <"$calls")"
note "PASS"
