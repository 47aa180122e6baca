#!/usr/bin/env bash
# shell_test.sh: the shell's windows from outside. A first run shows the onboarding window
# (English, then Russian); once closed, a later run does not. The tray menu is read row by row
# through the accessibility tree in both languages. `orvantis show help` opens the help window
# and a second call raises the same one; `orvantis show settings` opens the settings window and
# a second call raises the same one; the hotkey overlay shows while Super+Shift+H is held and goes on release;
# `orvantis show` without a running program exits 1 with a message.
#
# Artifacts: shell-onboarding-en.png, shell-onboarding-ru.png, shell-menu-en.png,
# shell-menu-ru.png, shell-help-en.png, shell-help-ru.png, shell-overlay-en.png, shell-overlay-ru.png,
# shell-overlay-released.png; with --screen WxH (default 1280x800) their names end in -WxH.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

[[ ${1:-} == --screen ]] && use_screen "$2"
desktop_up
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1

# No program yet: `show` says so.
set +e
out=$("$ORVANTIS_BIN" show help 2>&1)
status=$?
set -e
((status == 1)) || fail "show without a running program exited $status"
[[ $out == "orvantis: show: Orvantis is not running; start it first" ]] || fail "unexpected message: $out"

a11y_address() {
  gdbus call --session --dest org.a11y.Bus --object-path /org/a11y/bus --method org.a11y.Bus.GetAddress \
    2>/dev/null | sed -n "s/^('\(.*\)',)$/\1/p"
}
a11y_name() { # ADDRESS DEST PATH
  atspi_call "$1" "$2" "$3" org.freedesktop.DBus.Properties.Get org.a11y.atspi.Accessible Name |
    sed -n "s/^(<[\"']\(.*\)[\"']>,)$/\1/p"
}
a11y_children() { # ADDRESS DEST PATH
  atspi_call "$1" "$2" "$3" org.a11y.atspi.Accessible.GetChildren | grep -o "'/org/a11y/atspi/accessible/[^']*'" |
    tr -d "'" || true
}
# a11y_states ADDRESS DEST PATH: the first word of the state set, a number.
a11y_states() {
  atspi_call "$1" "$2" "$3" org.a11y.atspi.Accessible.GetState | sed -n 's/^(\[uint32 \([0-9]*\),.*/\1/p' 
}
a11y_role() { # ADDRESS DEST PATH
  atspi_call "$1" "$2" "$3" org.a11y.atspi.Accessible.GetRoleName | sed -n "s/^('\(.*\)',)$/\1/p"
}
# menu_rows: the open tray menu read from the accessibility tree, one visible row a line: the
# role, a tab, the name, and a tab and "checked" for a checked row. Qt leaves popup menus out of the application's children, so the menu's node is
# found by its number: Qt numbers its nodes upwards from 2^31, and the menu is among the first
# few hundred. False while no menu of Orvantis is there.
menu_rows() {
  local address app id path item found=""
  address=$(a11y_address)
  [[ -n $address ]] || return 1
  for app in $(atspi_call "$address" org.a11y.atspi.Registry /org/a11y/atspi/accessible/root \
    org.a11y.atspi.Accessible.GetChildren | grep -o "':[0-9.]*'" | tr -d "'"); do
    [[ $(a11y_name "$address" "$app" /org/a11y/atspi/accessible/root) == Orvantis ]] || continue
    for ((id = 2147483648; id < 2147483648 + 300; ++id)); do
      path=/org/a11y/atspi/accessible/$id
      [[ $(a11y_role "$address" "$app" "$path") == "popup menu" ]] || continue
      [[ -n $(a11y_children "$address" "$app" "$path") ]] || continue
      found=$path  # the newest menu: a rebuilt one has a higher number
    done
    [[ -n $found ]] || return 1
    local states
    for item in $(a11y_children "$address" "$app" "$found"); do
      states=$(a11y_states "$address" "$app" "$item")
      (((states >> 30) & 1)) || continue # not visible: a Pomodoro row of another state
      printf '%s\t%s%s\n' "$(a11y_role "$address" "$app" "$item")" "$(a11y_name "$address" "$app" "$item")" \
        "$( (((states >> 4) & 1)) && printf '\tchecked')"
    done
    return 0
  done
  return 1
}

# a11y_tree: the program's accessibility tree to depth 3, for the diagnostics of a failure.
a11y_tree() {
  local address app path child
  address=$(a11y_address)
  for app in $(atspi_call "$address" org.a11y.atspi.Registry /org/a11y/atspi/accessible/root \
    org.a11y.atspi.Accessible.GetChildren | grep -o "':[0-9.]*'" | tr -d "'"); do
    echo "app $app: $(a11y_name "$address" "$app" /org/a11y/atspi/accessible/root)"
    for path in $(a11y_children "$address" "$app" /org/a11y/atspi/accessible/root); do
      echo "  $path $(a11y_role "$address" "$app" "$path"): $(a11y_name "$address" "$app" "$path")"
      for child in $(a11y_children "$address" "$app" "$path" | head -n 20); do
        echo "    $child $(a11y_role "$address" "$app" "$child"): $(a11y_name "$address" "$app" "$child")"
      done
    done
  done
}

onboarding_window() { xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -n1; }

# --- A first run: the onboarding window, English.
ORVANTIS_E2E_FIRST_RUN=1 start_orvantis first-run
wait_for_tray_icon "$APP_PID" 15
wait_until 10 onboarding_window "Getting Started" >/dev/null || fail "no onboarding window on the first run"
window=$(onboarding_window "Getting Started")
sleep 0.5 # let the notification service answer and the window paint
window_geometry "$window"
note "onboarding ${GEOMETRY_W}x${GEOMETRY_H} at ${GEOMETRY_X},${GEOMETRY_Y}: $(screenshot shell-onboarding-en)"
((GEOMETRY_W == 520 && GEOMETRY_H == 560)) || fail "onboarding is ${GEOMETRY_W}x${GEOMETRY_H}"
log_has "launch: first run; onboarding shows" || fail "no first-run line"
# The rest of the column, scrolled into view.
xdotool mousemove $((GEOMETRY_X + GEOMETRY_W / 2)) $((GEOMETRY_Y + 200)) click --repeat 15 5
sleep 0.3
note "onboarding scrolled: $(screenshot shell-onboarding-en-scrolled)"
# Get Started, the default button, by Return: it counts as seen and closes the window.
focus_window "$window" || fail "cannot focus the onboarding window"
xdotool key --clearmodifiers Return
wait_until 5 log_has "onboarding: closed; it counts as seen" || fail "closing onboarding was not noticed"
wait_until 5 bash -c "[[ \$('$ORVANTIS_BIN' settings get hasCompletedOnboarding) == true ]]" ||
  fail "onboarding not marked as seen"

# --- The tray menu through the accessibility tree, English.
xdotool mousemove 640 400
click_icon 1
wait_for_menu "$APP_PID" 5
sleep 0.3
note "menu: $(screenshot shell-menu-en)"
wait_until 5 menu_rows >/dev/null || { a11y_tree; fail "the menu is not in the accessibility tree"; }
rows_en=$(menu_rows)
note "menu rows (en):"$'\n'"$rows_en"
expected_en=$(printf '%s\n' $'menu item\tSettings…' $'separator\t' $'menu item\tLaunch at login' $'separator\t' \
  $'menu item\tOpen Pomodoro Dashboard…' $'menu item\tStart Pomodoro' $'separator\t' $'menu item\tCaffeine' \
  $'separator\t' $'menu item\tLock Keyboard for Cleaning' $'separator\t' $'menu item\tQuit Orvantis')
xdotool key --clearmodifiers Escape
wait_until 5 no_menu "$APP_PID" || fail "Escape did not close the menu"

# --- `orvantis show help`, twice: one window.
"$ORVANTIS_BIN" show help || fail "show help failed"
wait_until 5 onboarding_window "Orvantis Help" >/dev/null || fail "no help window"
help=$(onboarding_window "Orvantis Help")
sleep 0.3
window_geometry "$help"
note "help ${GEOMETRY_W}x${GEOMETRY_H}: $(screenshot shell-help-en)"
((GEOMETRY_W == 420 && GEOMETRY_H == 360)) || fail "help is ${GEOMETRY_W}x${GEOMETRY_H}"
"$ORVANTIS_BIN" show help || fail "the second show help failed"
sleep 0.3
(($(xdotool search --onlyvisible --name "^Orvantis Help\$" | wc -l) == 1)) || fail "a second help window"
[[ $(onboarding_window "Orvantis Help") == "$help" ]] || fail "the second show made another window"
xdotool windowunmap "$help"

# --- `orvantis show settings` opens the settings window; a second call raises the same one.
"$ORVANTIS_BIN" show settings || fail "show settings failed"
wait_until 5 log_has "settings: window opened" || fail "show settings opened no settings window"
"$ORVANTIS_BIN" show settings || fail "the second show settings failed"
sleep 0.5
(($(log_text | grep -c "settings: window opened") == 1)) || fail "the second show settings made another window"
# Esc (Cancel) closes the settings window before the overlay's turn.
settings=$(wait_until 5 settings_window >/dev/null && settings_window) || fail "no settings window to be seen"
focus_window "$settings" || fail "the settings window cannot take the focus"
xdotool key Escape
wait_until 5 no_settings_window || fail "Esc did not close the settings window"
set +e
"$ORVANTIS_BIN" show dashboard 2>/dev/null
status=$?
set -e
((status == 2)) || fail "an unknown window exited $status"

# --- The overlay while Super+Shift+H is held.
overlay_window() {
  local window
  for window in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null); do
    is_top_level "$window" || continue
    window_geometry "$window" || continue
    ((GEOMETRY_W >= 420 && GEOMETRY_H > 200)) || continue
    echo "$window"
    return 0
  done
  return 1
}
no_overlay() { ! overlay_window >/dev/null; }
hold_overlay() { # NAME
  xdotool keydown super keydown shift keydown h
  wait_until 5 overlay_window >/dev/null || { xdotool keyup h keyup shift keyup super; fail "no overlay while held"; }
  sleep 0.3
  window_geometry "$(overlay_window)"
  note "overlay ${GEOMETRY_W}x${GEOMETRY_H}: $(screenshot "$1")"
  xdotool keyup h keyup shift keyup super
  wait_until 5 no_overlay || fail "the overlay stayed after the release"
}
hold_overlay shell-overlay-en
note "released: $(screenshot shell-overlay-released)"

kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10

# --- A later run: no onboarding.
ORVANTIS_E2E_FIRST_RUN=1 start_orvantis second-run
wait_for_tray_icon "$APP_PID" 15
sleep 1.5
[[ -z $(onboarding_window "Getting Started") ]] || fail "onboarding shown again on a later run"
log_has "launch: first run" && (($(log_text | grep -cF "launch: first run") == 1)) || fail "the later run counted as a first run"
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10

# --- Russian: a first run again, then the menu and the overlay.
"$ORVANTIS_BIN" settings set settingsLanguage '"ru"' >/dev/null
"$ORVANTIS_BIN" settings set hasCompletedOnboarding false >/dev/null
"$ORVANTIS_BIN" settings set launchAtLogin true >/dev/null
# The row shows the login item's state: an autostart entry makes it checked (without one, launch
# would set the preference back to false).
mkdir -p "$XDG_CONFIG_HOME/autostart"
printf '[Desktop Entry]\nType=Application\nName=Orvantis\nExec=orvantis\n' >"$XDG_CONFIG_HOME/autostart/orvantis.desktop"
ORVANTIS_E2E_FIRST_RUN=1 start_orvantis russian
wait_for_tray_icon "$APP_PID" 15
wait_until 10 onboarding_window "Начало работы" >/dev/null || fail "no Russian onboarding window"
sleep 0.5
note "onboarding (ru): $(screenshot shell-onboarding-ru)"
window=$(onboarding_window "Начало работы")
window_geometry "$window"
xdotool mousemove $((GEOMETRY_X + GEOMETRY_W / 2)) $((GEOMETRY_Y + 200)) click --repeat 15 5
sleep 0.3
note "onboarding (ru) scrolled: $(screenshot shell-onboarding-ru-scrolled)"
focus_window "$window" || fail "cannot focus the Russian onboarding window"
xdotool key --clearmodifiers Return
wait_until 5 bash -c "[[ -z \$(xdotool search --onlyvisible --name '^Начало работы\$' 2>/dev/null) ]]" ||
  fail "Return did not close the Russian onboarding window"
xdotool mousemove 640 400
click_icon 1
wait_for_menu "$APP_PID" 5
sleep 0.3
note "menu: $(screenshot shell-menu-ru)"
wait_until 5 menu_rows >/dev/null || fail "the Russian menu is not in the accessibility tree"
rows_ru=$(menu_rows)
note "menu rows (ru):"$'\n'"$rows_ru"
xdotool key --clearmodifiers Escape
wait_until 5 no_menu "$APP_PID" || fail "Escape did not close the menu"
hold_overlay shell-overlay-ru
"$ORVANTIS_BIN" show help || fail "show help failed in Russian"
wait_until 5 onboarding_window "Orvantis Help" >/dev/null || fail "no Russian help window"
sleep 0.3
note "help (ru): $(screenshot shell-help-ru)"

lock_ru=$(grep -F 'menuKeyboardLockItem =' "$REPO_DIR/src/core/strings/settings_strings_ru.cpp" | sed 's/.*= "\(.*\)",/\1/')
[[ $rows_en == "$expected_en" ]] || fail "the English menu rows differ from the expected ones"
expected_ru=$(printf '%s\n' $'menu item\tНастройки…' $'separator\t' $'menu item\tЗапускать при входе в систему\tchecked' \
  $'separator\t' $'menu item\tОткрыть дашборд Помодоро…' $'menu item\tЗапустить помодоро' $'separator\t' \
  $'menu item\tКофеин' $'separator\t' $'menu item\t'"$lock_ru" $'separator\t' $'menu item\tВыйти из Orvantis')
[[ $rows_ru == "$expected_ru" ]] || fail "the Russian menu rows differ from the expected ones"
note "PASS"
