#!/usr/bin/env bash
# Launch at login from outside: the tray menu's row writes and removes the XDG autostart entry
# ($XDG_CONFIG_HOME/autostart/orvantis.desktop), which passes desktop-file-validate and starts
# this build's binary; `orvantis settings set launchAtLogin` does the same through the running
# program; at launch an entry found with the preference off turns it on, and an entry the
# user hid (Hidden=true) with the preference on turns it off and is removed.
# Pictures: login-item-menu-<lang> (the menu with the row checked).
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
entry=$XDG_CONFIG_HOME/autostart/orvantis.desktop
binary=$(readlink -f "$ORVANTIS_BIN")
preference() { "$ORVANTIS_BIN" settings get launchAtLogin; }
preference_is() { [[ $(preference) == "$1" ]]; }
entry_gone() { [[ ! -e $entry ]]; }

# toggle_row LANG: opens the tray menu and triggers its second row, Launch at login.
toggle_row() {
  click_icon 1
  wait_for_menu "$APP_PID" 5
  xdotool key Down Down
  sleep 0.3
  note "menu ($1): $(screenshot "login-item-menu-$1")"
  xdotool key Return
  wait_until 5 no_menu "$APP_PID" || fail "the menu stayed open"
}

[[ ! -e $entry ]] || fail "an autostart entry exists before the test"
"$ORVANTIS_BIN" settings set launchAtLogin false >/dev/null
start_orvantis login
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis" || fail "the program did not start"
entry_gone || fail "launch wrote an entry with the preference off"

# The tray menu's row: on, then off.
toggle_row en
wait_until 5 test -f "$entry" || fail "the row did not write the autostart entry"
wait_until 5 preference_is true || fail "the row did not turn the preference on"
log_has "Launch: registered with the autostart entry" || fail "no log line for the registration"
desktop-file-validate "$entry" || fail "desktop-file-validate refuses the entry: $(cat "$entry")"
grep -qxF "Exec=$binary" "$entry" || fail "the entry does not start $binary: $(grep ^Exec= "$entry")"
grep -qx "Type=Application" "$entry" || fail "the entry is no application"
note "the row wrote $entry, starting $binary"
# Off again from the Russian menu, in a new run: entry and preference agree at its launch.
kill "$APP_PID"
wait_exit "$APP_PID" 10
"$ORVANTIS_BIN" settings set settingsLanguage '"ru"' >/dev/null
start_orvantis login-ru
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis" || fail "the program did not start again"
[[ -f $entry ]] || fail "the entry went at a launch that agreed with it"
toggle_row ru
wait_until 5 entry_gone || fail "the row did not remove the autostart entry"
wait_until 5 preference_is false || fail "the row did not turn the preference off"
log_has "Launch: unregistered with the autostart entry" || fail "no log line for the removal"
"$ORVANTIS_BIN" settings set settingsLanguage '"en"' >/dev/null

# The command line writes the preference file; the running program follows it.
"$ORVANTIS_BIN" settings set launchAtLogin true >/dev/null
wait_until 10 test -f "$entry" || fail "settings set launchAtLogin true wrote no entry"
"$ORVANTIS_BIN" settings set launchAtLogin false >/dev/null
wait_until 10 entry_gone || fail "settings set launchAtLogin false left the entry"
note "orvantis settings set reaches the running program"
kill "$APP_PID"
wait_exit "$APP_PID" 10

# An entry present at launch with the preference off: the preference becomes true.
mkdir -p "$(dirname "$entry")"
printf '[Desktop Entry]\nType=Application\nName=Orvantis\nExec=orvantis\n' >"$entry"
"$ORVANTIS_BIN" settings set launchAtLogin false >/dev/null
start_orvantis entry-present
wait_until 15 preference_is true || fail "an entry found at launch did not turn the preference on"
wait_until 5 log_has "Launch: registered with the autostart entry" || fail "the registration was not repeated"
grep -qxF "Exec=$binary" "$entry" || fail "the repeated registration did not rewrite the entry"
kill "$APP_PID"
wait_exit "$APP_PID" 10
note "an entry found at launch turns the preference on"

# The user hid the entry in the desktop's startup settings: the preference goes off.
echo "Hidden=true" >>"$entry"
[[ $(preference) == true ]] || fail "the preference should still be on here"
start_orvantis entry-hidden
wait_until 15 preference_is false || fail "a hidden entry did not turn the preference off"
wait_until 5 entry_gone || fail "the hidden entry was not removed with the preference off"
kill "$APP_PID"
wait_exit "$APP_PID" 10
note "a hidden entry turns the preference off at launch"
