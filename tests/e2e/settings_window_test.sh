#!/usr/bin/env bash
# The settings window from outside: opened at launch (test-only switch until the menu has its
# row), every page screenshotted in English and in Russian (settings-<page>-<lang>.png), Esc
# (Cancel) after editing leaves the preference file byte for byte as it was, and the window
# goes without ending the program.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
prefs=$XDG_CONFIG_HOME/orvantis/preferences.plist
pages=(general translator layoutSwitcher clipboard pomodoro password snippets textTransformer bonus about)

# The settings window: a visible top-level window of the program, 760 wide.
settings_window() {
  local window
  for window in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null); do
    is_top_level "$window" || continue
    window_geometry "$window" || continue
    ((GEOMETRY_W == 760)) || continue
    echo "$window"
    return 0
  done
  return 1
}
no_settings_window() { ! settings_window >/dev/null; }

run_language() {
  local lang=$1 window page
  "$ORVANTIS_BIN" settings set settingsLanguage "\"$lang\"" >/dev/null
  ORVANTIS_E2E_OPEN_SETTINGS=1 start_orvantis "settings-$lang"
  wait_until 15 log_has "settings: window opened" || fail "the settings window did not open ($lang)"
  window=$(wait_until 10 settings_window >/dev/null && settings_window) || fail "no settings window ($lang)"
  # Centre it so that the pictures show it whole.
  xdotool windowmove "$window" 260 100
  focus_window "$window" || fail "the settings window cannot take the focus"
  for page in "${pages[@]}"; do
    sleep 0.4
    note "$page ($lang): $(screenshot "settings-$page-$lang")"
    xdotool key ctrl+Next
  done
}

run_language en
# Cancel: a slider moved with the keyboard, then Esc; the file stays as it was.
"$ORVANTIS_BIN" settings get switchDelayMs >/dev/null
before=$(md5sum "$prefs" 2>/dev/null || echo none)
window=$(settings_window) || fail "the settings window went away"
focus_window "$window" || fail "the settings window cannot take the focus"
xdotool key ctrl+Next ctrl+Next  # the layout switcher page
sleep 0.3
xdotool key Tab Tab Tab End
sleep 0.3
xdotool key Escape
wait_until 5 no_settings_window || fail "Esc did not close the settings window"
sleep 1
after=$(md5sum "$prefs" 2>/dev/null || echo none)
[[ $before == "$after" ]] || fail "Cancel changed the preference file"
process_running "$APP_PID" || fail "closing the settings window ended the program"
kill "$APP_PID"
wait_exit "$APP_PID" 10

run_language ru
kill "$APP_PID"
wait_exit "$APP_PID" 10
note "settings window: every page in both languages; Cancel leaves the file as it was"
