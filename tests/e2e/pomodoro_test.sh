#!/usr/bin/env bash
# The Pomodoro end to end, in the language given (en or ru): started from the tray menu, the
# icon's tool tip counts down; a skip writes one record of the configured length, posts the
# phase's notification to a stand-in notification service and runs the Focus commands; sleep
# and wake sent by a stand-in login manager on a private system bus pause and resume; the
# dashboard shows the record and its heat-map tooltip. Screenshots: pomodoro-<lang>-*.png.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

LANGUAGE=${1:-en}
STANDIN=${ORVANTIS_POMODORO_STANDIN:-$REPO_DIR/build/tests/e2e/orvantis_pomodoro_standin}
[[ -x $STANDIN ]] || fail "no stand-in at $STANDIN (build orvantis_pomodoro_standin)"

desktop_up
STANDIN_PIDS=()
stop_standins() {
  local status=$? pid
  for pid in "${STANDIN_PIDS[@]}"; do kill "$pid" 2>/dev/null || true; done
  if [[ -n ${SYSTEM_BUS_PID:-} ]]; then kill "$SYSTEM_BUS_PID" 2>/dev/null || true; fi
  (exit "$status")
  e2e_cleanup
}
trap stop_standins EXIT

# A private bus stands in for the system bus, with a login manager on it.
bus_out=$(dbus-daemon --session --fork --print-address=1 --print-pid=1)
DBUS_SYSTEM_BUS_ADDRESS=$(sed -n 1p <<<"$bus_out")
export DBUS_SYSTEM_BUS_ADDRESS
SYSTEM_BUS_PID=$(sed -n 2p <<<"$bus_out")
mkfifo "$ORVANTIS_DESKTOP_DIR/logind.fifo"
"$STANDIN" logind "$ORVANTIS_DESKTOP_DIR/logind.fifo" >"$ORVANTIS_DESKTOP_DIR/logind.out" 2>&1 &
STANDIN_PIDS+=($!)
# The notification service on the desktop's session bus.
NOTES=$ORVANTIS_DESKTOP_DIR/notifications.txt
: >"$NOTES"
"$STANDIN" notifications "$NOTES" >"$ORVANTIS_DESKTOP_DIR/notifications.out" 2>&1 &
STANDIN_PIDS+=($!)
wait_until 5 grep -q ready "$ORVANTIS_DESKTOP_DIR/logind.out" || fail "the login manager stand-in did not start"
wait_until 5 grep -q ready "$ORVANTIS_DESKTOP_DIR/notifications.out" || fail "the notification stand-in did not start"

# Focus commands that leave a mark, and Focus on.
FOCUS=$XDG_CONFIG_HOME/orvantis/focus
mkdir -p "$FOCUS"
printf '#!/bin/sh\necho on >> "%s/focus.txt"\n' "$ORVANTIS_DESKTOP_DIR" >"$FOCUS/Orvantis Focus On"
printf '#!/bin/sh\necho off >> "%s/focus.txt"\n' "$ORVANTIS_DESKTOP_DIR" >"$FOCUS/Orvantis Focus Off"
chmod +x "$FOCUS/Orvantis Focus On" "$FOCUS/Orvantis Focus Off"
"$ORVANTIS_BIN" settings set pomodoroToggleDND true >/dev/null
"$ORVANTIS_BIN" settings set settingsLanguage "\"$LANGUAGE\"" >/dev/null
"$ORVANTIS_BIN" settings set hasCompletedOnboarding true >/dev/null

status() { "$ORVANTIS_BIN" pomodoro status; }

export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
start_orvantis "$LANGUAGE"
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "following sleep and wake through the login manager" || fail "logind is not followed"
[[ $(status) == $'idle\t1\t0' ]] || fail "not idle at start: $(status)"

# Start from the menu: after Settings, Launch at login and the dashboard item, Start Pomodoro.
click_icon 1
wait_for_menu "$APP_PID" 5
sleep 0.3
note "screenshot: $(screenshot "pomodoro-$LANGUAGE-menu-idle")"
xdotool key --clearmodifiers Down Down Down Down Return
wait_until 5 bash -c "[[ \$('$ORVANTIS_BIN' pomodoro status) == running* ]]" || fail "the menu did not start a session: $(status)"
note "status: $(status)"
wait_until 5 grep -q on "$ORVANTIS_DESKTOP_DIR/focus.txt" || fail "Focus On did not run"

# The icon's tool tip counts down.
hover_icon
wait_until 5 tooltip_text >/dev/null || fail "no tool tip on the icon"
first=$(tooltip_text)
note "tool tip: $first"
[[ $first =~ ^🍅\ 2[45]:[0-5][0-9]$ ]] || fail "unexpected tool tip: $first"
if window=$(tooltip_window "$APP_PID"); then
  tooltip_screenshot "pomodoro-$LANGUAGE-tooltip" "$window"
  note "screenshot: $TIP_SHOT"
fi
sleep 2
second=""
for _ in 1 2 3 4 5 6 7 8; do
  hover_icon
  sleep 0.7
  second=$(tooltip_text || true)
  [[ -n $second && $second != "$first" ]] && break
done
note "tool tip later: $second"
[[ -n $second && $second < $first ]] || fail "the tool tip did not count down: $first then $second"

# The menu now offers pause and stop.
click_icon 1
wait_for_menu "$APP_PID" 5
sleep 0.3
note "screenshot: $(screenshot "pomodoro-$LANGUAGE-menu-running")"
xdotool key --clearmodifiers Escape

# Sleep pauses with the seconds it had; wake resumes.
echo sleep >"$ORVANTIS_DESKTOP_DIR/logind.fifo"
wait_until 5 bash -c "[[ \$('$ORVANTIS_BIN' pomodoro status) == paused* ]]" || fail "sleep did not pause: $(status)"
paused=$(status)
sleep 1.5
[[ $(status) == "$paused" ]] || fail "the countdown moved while asleep: $paused then $(status)"
echo wake >"$ORVANTIS_DESKTOP_DIR/logind.fifo"
wait_until 5 bash -c "[[ \$('$ORVANTIS_BIN' pomodoro status) == running* ]]" || fail "wake did not resume: $(status)"
note "slept at: $paused; woke: $(status)"

# Skip: one record of the configured length, the notification, Focus Off.
"$ORVANTIS_BIN" pomodoro skip
wait_until 5 test -s "$XDG_DATA_HOME/orvantis/pomodoro-history.json" || fail "no history file"
python3 - "$XDG_DATA_HOME/orvantis/pomodoro-history.json" <<'PY' || fail "the history file is not one record of 25 minutes"
import json, sys, uuid
data = json.load(open(sys.argv[1]))
assert len(data) == 1 and data[0]["durationMinutes"] == 25, data
assert data[0]["id"] == str(uuid.UUID(data[0]["id"])).upper(), data
assert isinstance(data[0]["completedAt"], float), data
PY
[[ $(status) == $'running\tbreakTime\t300\t1\t1' ]] || fail "after the skip: $(status)"
if [[ $LANGUAGE == ru ]]; then expected=$'Orvantis\tПерерыв!\tВремя отдохнуть.'; else
  expected=$'Orvantis\tBreak time!\tGreat work! Time for a short break.'; fi
wait_until 5 grep -qxF "$expected" "$NOTES" || fail "the notification did not arrive: $(cat "$NOTES")"
wait_until 5 grep -q off "$ORVANTIS_DESKTOP_DIR/focus.txt" || fail "Focus Off did not run"

# The dashboard, the menu's first Pomodoro item.
click_icon 1
wait_for_menu "$APP_PID" 5
xdotool key --clearmodifiers Down Down Down Return
dashboard_window() {
  local window
  for window in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null); do
    is_top_level "$window" || continue
    window_geometry "$window" || continue
    ((GEOMETRY_W >= 300 && GEOMETRY_H >= 400)) || continue
    echo "$window"
    return 0
  done
  return 1
}
wait_until 5 dashboard_window >/dev/null || fail "no dashboard window"
DASH=$(dashboard_window)
window_geometry "$DASH"
note "dashboard $DASH at ${GEOMETRY_X},${GEOMETRY_Y} size ${GEOMETRY_W}x${GEOMETRY_H}"
DX=$GEOMETRY_X DY=$GEOMETRY_Y DW=$GEOMETRY_W DH=$GEOMETRY_H
sleep 0.5
shot=$(screenshot "pomodoro-$LANGUAGE-dashboard-screen")
convert "$shot" -crop "${DW}x${DH}+${DX}+${DY}" +repage "$ORVANTIS_E2E_ARTIFACTS/pomodoro-$LANGUAGE-dashboard.png"
rm -f "$shot"
note "screenshot: $ORVANTIS_E2E_ARTIFACTS/pomodoro-$LANGUAGE-dashboard.png"

# Hover today's cell of the heat map: its place follows from the window's layout (the map
# spans the width inside margins of 20 and ends 16 above the bottom).
cell=$(awk -v w="$DW" 'BEGIN { c = (w - 40 - 50) / 26; if (c < 4) c = 4; printf "%.3f", c }')
weekday=$(date -u +%u) # 1 Monday … 7 Sunday (the stand-in desktop runs in UTC)
row=$((weekday - 1))
map_h=$(awk -v c="$cell" 'BEGIN { printf "%d", 7 * c + 12 + 0.999 }')
hx=$(awk -v x="$DX" -v c="$cell" 'BEGIN { printf "%d", x + 20 + 25 * (c + 2) + c / 2 }')
hy=$(awk -v y="$DY" -v h="$DH" -v mh="$map_h" -v c="$cell" -v r="$row" 'BEGIN { printf "%d", y + h - 16 - mh + r * (c + 2) + c / 2 }')
xdotool mousemove "$hx" "$((hy - 40))" sleep 0.2 mousemove "$hx" "$hy" sleep 0.5
shot=$(screenshot "pomodoro-$LANGUAGE-heatmap-tooltip")
note "screenshot: $shot (pointer at $hx,$hy)"

# Without the Focus Off command a start shows the alert, and the session starts all the same.
xdotool mousemove 900 600
xdotool windowunmap --sync "$DASH" 2>/dev/null || true # out of the way: this desktop has no window manager
"$ORVANTIS_BIN" pomodoro stop
rm "$FOCUS/Orvantis Focus Off"
"$ORVANTIS_BIN" pomodoro start
if [[ $LANGUAGE == ru ]]; then title="Команды для Фокуса не настроены"; else title="Focus shortcuts not configured"; fi
wait_until 5 xdotool search --onlyvisible --pid "$APP_PID" --name "$title" >/dev/null || fail "no alert \"$title\""
ALERT=$(xdotool search --onlyvisible --pid "$APP_PID" --name "$title" | head -n1)
[[ $(status) == running* ]] || fail "the session did not start beside the alert: $(status)"
xdotool windowraise "$ALERT"
sleep 0.5
window_geometry "$ALERT"
note "alert $ALERT \"$(xdotool getwindowname "$ALERT")\" at ${GEOMETRY_X},${GEOMETRY_Y} size ${GEOMETRY_W}x${GEOMETRY_H}"
shot=$(screenshot "pomodoro-$LANGUAGE-focus-alert-screen")
convert "$shot" -crop "${GEOMETRY_W}x${GEOMETRY_H}+${GEOMETRY_X}+${GEOMETRY_Y}" +repage \
  "$ORVANTIS_E2E_ARTIFACTS/pomodoro-$LANGUAGE-focus-alert.png"
rm -f "$shot"
note "screenshot: $ORVANTIS_E2E_ARTIFACTS/pomodoro-$LANGUAGE-focus-alert.png"
log_has "pomodoro: the Focus commands are missing" || fail "the missing commands are not logged"

kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
note "PASS"
