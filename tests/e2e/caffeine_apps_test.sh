#!/usr/bin/env bash
# Keep-awake's application list under a window manager (openbox; exit 77, a skip, without it):
# activating a listed application's window takes the screen saver's inhibition, activating
# another gives it back; with the app-gated lid-close mode, the listed application's start
# and end take and give back the login manager's lid-switch inhibitor.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

command -v openbox >/dev/null || exit 77
[[ -x ${ORVANTIS_POWER_STANDIN:-} ]] || fail "ORVANTIS_POWER_STANDIN is not set to the stand-in program"

desktop_up
openbox --sm-disable >"$ORVANTIS_DESKTOP_DIR/openbox.log" 2>&1 &
APP_PIDS+=("$!")
wm_running() { xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; }
wait_until 10 wm_running || fail "openbox did not start"
dbus-daemon --session --fork --print-address=1 --print-pid=1 >"$ORVANTIS_DESKTOP_DIR/system-bus.out"
DBUS_SYSTEM_BUS_ADDRESS=$(sed -n 1p "$ORVANTIS_DESKTOP_DIR/system-bus.out")
APP_PIDS+=("$(sed -n 2p "$ORVANTIS_DESKTOP_DIR/system-bus.out")")
export DBUS_SYSTEM_BUS_ADDRESS
calls=$ORVANTIS_DESKTOP_DIR/power-calls
: >"$calls"
"$ORVANTIS_POWER_STANDIN" --record "$calls" --screensaver --logind &
APP_PIDS+=("$!")
wait_until 5 grep -qx ready "$calls" || fail "the stand-in did not start"

# A window that is not listed has the focus first.
xterm -class Other -title other -geometry 40x10+700+450 &
APP_PIDS+=("$!")
other=$(mapped_window --name '^other$')
[[ -n $other ]] || fail "no unlisted window"

"$ORVANTIS_BIN" settings set caffeineActiveApps '["debian-xterm"]' >/dev/null
"$ORVANTIS_BIN" settings set caffeineLidClose true >/dev/null
start_orvantis first
wait_until 10 log_has "caffeine: keep-awake and the keyboard lock answer on the session bus" || fail "no bus object"
xdotool windowactivate --sync "$other"
sleep 0.5
! grep -q "^Inhibit" "$calls" || fail "an unlisted window took the inhibition"
! grep -q "^login1 Inhibit handle-lid-switch" "$calls" || fail "the lid switch is held without a listed application"

# The listed application starts: the lid switch is held.
xterm -title listed -geometry 40x10+40+40 &
listed_pid=$!
APP_PIDS+=("$listed_pid")
listed=$(mapped_window --name '^listed$')
[[ -n $listed ]] || fail "no listed window"
wait_until 5 grep -q "^login1 Inhibit handle-lid-switch" "$calls" || fail "the listed application's start did not hold the lid switch"
wait_until 2 log_has "caffeine: lid-close disablesleep=1 (app-launch)" || fail "no app-launch line"

# Activation arms and disarms.
xdotool windowactivate --sync "$listed"
wait_until 5 grep -qx "Inhibit Orvantis|Orvantis Caffeine -> 1" "$calls" || fail "activating the listed window did not inhibit"
log_has "caffeine: lock acquired (app-switch)" || fail "no app-switch line"
[[ $("$ORVANTIS_BIN" caffeine status) == $'inactive\t-\theld' ]] || fail "status: $("$ORVANTIS_BIN" caffeine status)"
xdotool windowactivate --sync "$other"
wait_until 5 grep -qx "UnInhibit 1" "$calls" || fail "activating another window did not give the inhibition back"
log_has "caffeine: lock released (app-switch)" || fail "no release line"

# The listed application ends: the lid switch goes.
kill "$listed_pid"
wait_until 5 grep -qx "login1 released handle-lid-switch" "$calls" || fail "the lid switch stayed held after the application ended"
wait_until 2 log_has "caffeine: lid-close disablesleep=0 (app-terminate)" || fail "no app-terminate line"
note "calls: $(tr '\n' ';' <"$calls")"
note "PASS"
