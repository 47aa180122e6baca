#!/usr/bin/env bash
# The settings window from outside: opened by `orvantis show settings`,
# every page screenshotted in English and in Russian (settings-<page>-<lang>.png; the general
# page of a private home without a synced folder says so in English, its Choose… button stores
# one for the next launch, and the Russian run names it), Esc
# (Cancel) after editing leaves the preference file byte for byte as it was, and the window
# goes without ending the program. A capture started while another program holds the keyboard
# ends at once with a message in its button, and the global hotkeys work again.
#
#   settings_window_test.sh [--screen WxH]     (default 1280x800; pictures get a -WxH suffix)
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

[[ ${1:-} == --screen ]] && use_screen "$2"
desktop_up
prefs=$XDG_CONFIG_HOME/orvantis/preferences.plist
# A private home without any synced folder: the English run's general page says so; the folder
# chosen there is the one the Russian run names.
export HOME=$ORVANTIS_DESKTOP_DIR/home
mkdir -p "$HOME"
pages=(general translator layoutSwitcher clipboard pomodoro password snippets textTransformer bonus about)

# choose_sync_folder LANG Y: the general page's Choose… button opens the folder dialog (its
# picture: settings-sync-folder-dialog-LANG); a folder typed there is stored at once for the next
# launch and named under the row.
choose_sync_folder() {
  local lang=$1 y=${2:?the height of the button} title="Synced Folder" chosen dialog
  [[ $lang == ru ]] && title="Синхронизируемая папка"
  chosen=$HOME/Chosen-$lang
  mkdir -p "$chosen"
  sleep 0.4
  xdotool mousemove 937 "$y" click 1
  dialog=$(wait_until 10 xdotool search --onlyvisible --name "^$title\$" >/dev/null &&
    xdotool search --onlyvisible --name "^$title\$" | head -n 1) || fail "the folder dialog did not open ($lang)"
  focus_window "$dialog" || fail "the folder dialog cannot take the focus"
  sleep 0.4
  note "folder dialog ($lang): $(screenshot "settings-sync-folder-dialog-$lang")"
  xdotool key ctrl+a
  xdotool type --delay 20 "$chosen"
  xdotool key Return
  stored() {
    python3 -c "import plistlib,sys; d=plistlib.load(open(sys.argv[1],'rb')); sys.exit(d.get('MOLVEX.Orvantis.syncFolderPath')!=sys.argv[2])" \
      "$prefs" "$chosen" 2>/dev/null
  }
  wait_until 5 stored || fail "the chosen folder was not stored ($lang)"
  sleep 0.4
  note "folder chosen ($lang): $(screenshot "settings-sync-folder-chosen-$lang")"
}

run_language() {
  local lang=$1 window page
  "$ORVANTIS_BIN" settings set settingsLanguage "\"$lang\"" >/dev/null
  start_orvantis "settings-$lang"
  wait_until 15 "$ORVANTIS_BIN" show settings 2>/dev/null || fail "orvantis show settings failed ($lang)"
  wait_until 15 log_has "settings: window opened" || fail "the settings window did not open ($lang)"
  window=$(wait_until 10 settings_window >/dev/null && settings_window) || fail "no settings window ($lang)"
  # Centre it so that the pictures show it whole.
  xdotool windowmove "$window" 260 100
  focus_window "$window" || fail "the settings window cannot take the focus"
  # The folder chosen in the English run is the one in use from the next launch on.
  if [[ $lang == ru ]]; then
    log_has "init: synced folder found, target=$HOME/Chosen-en/Orvantis" || fail "the chosen folder is not in use"
  fi
  if [[ $lang == ru ]]; then choose_sync_folder ru 573; else choose_sync_folder en 559; fi
  focus_window "$window" || fail "the settings window cannot take the focus after the folder dialog"
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

# The Russian run finds both Focus commands, so its Pomodoro page shows them found; its Open
# Folder button hands the commands' folder to xdg-open (a stand-in that writes down its argument).
focus_dir=$XDG_CONFIG_HOME/orvantis/focus
mkdir -p "$focus_dir" "$ORVANTIS_DESKTOP_DIR/bin"
for command in "Orvantis Focus On" "Orvantis Focus Off"; do
  printf '#!/bin/sh\nexit 0\n' >"$focus_dir/$command"
  chmod +x "$focus_dir/$command"
done
opened=$ORVANTIS_DESKTOP_DIR/xdg-open-args
printf '#!/bin/sh\nprintf "%%s\\n" "$*" >>"%s"\n' "$opened" >"$ORVANTIS_DESKTOP_DIR/bin/xdg-open"
chmod +x "$ORVANTIS_DESKTOP_DIR/bin/xdg-open"
PATH="$ORVANTIS_DESKTOP_DIR/bin:$PATH" run_language ru
for _ in 1 2 3 4; do xdotool key ctrl+Next; done  # from the first page to the Pomodoro page
sleep 0.4
xdotool mousemove 925 424 click 1  # Открыть папку
wait_until 5 test -s "$opened" || fail "Open Folder did not call xdg-open"
grep -qF "$focus_dir" "$opened" || fail "Open Folder opened something else: $(cat "$opened")"
note "Open Folder hands $(cat "$opened") to xdg-open"
kill "$APP_PID"
wait_exit "$APP_PID" 10

# A hotkey captured and saved reaches the monitor: the text tools hotkey becomes Super+Alt+Y;
# the new combination opens the text tools window, the old one (Super+Shift+T) no longer does.
"$ORVANTIS_BIN" settings set settingsLanguage '"en"' >/dev/null
start_orvantis capture
wait_until 15 "$ORVANTIS_BIN" show settings 2>/dev/null || fail "orvantis show settings failed for the capture"
wait_until 15 log_has "settings: window opened" || fail "the settings window did not open for the capture"
window=$(wait_until 10 settings_window >/dev/null && settings_window) || fail "no settings window for the capture"
xdotool windowmove "$window" 260 100
focus_window "$window" || fail "the settings window cannot take the focus"
for _ in 1 2 3 4 5 6 7; do xdotool key ctrl+Next; done  # the text tools page
sleep 0.4
xdotool mousemove 850 242 click 1
wait_until 5 log_has "settings: hotkey capture; the global hotkeys are suspended" || fail "the capture did not start"
note "capturing: $(screenshot settings-capture-en)"
xdotool key super+alt+y
wait_until 5 log_has "settings: hotkey capture ended; the global hotkeys are back" || fail "the capture did not end"
note "captured: $(screenshot settings-captured-en)"
xdotool key Return
wait_until 5 log_has "settings: saved" || fail "Return did not save"
wait_until 5 no_settings_window || fail "the window stayed after Save"
[[ $("$ORVANTIS_BIN" settings get textTransformerHotkey) == '{"keyCode":16,"modifiers":786432}' ]] ||
  fail "the captured hotkey was not stored: $("$ORVANTIS_BIN" settings get textTransformerHotkey)"
# Another program holds the keyboard (as a screen locker or its open menu would) when a
# capture starts: the capture ends at once, says so in its button, and the hotkeys are back.
wait_until 15 "$ORVANTIS_BIN" show settings 2>/dev/null || fail "orvantis show settings failed for the grab"
window=$(wait_until 10 settings_window >/dev/null && settings_window) || fail "no settings window for the grab"
xdotool windowmove "$window" 260 100
focus_window "$window" || fail "the settings window cannot take the focus"
for _ in 1 2 3 4 5 6 7; do xdotool key ctrl+Next; done  # the text tools page
sleep 0.4
coproc GRABBER { exec python3 "$E2E_DIR/tools/keyboard_grabber.py"; }
APP_PIDS+=("$GRABBER_PID")
read -r -t 5 grabbed <&"${GRABBER[0]}" || fail "the keyboard grabber said nothing"
[[ $grabbed == grabbed ]] || fail "the keyboard grabber could not grab: $grabbed"
xdotool mousemove 850 242 click 1
wait_until 5 log_has "settings: hotkey capture cancelled, another program holds the keyboard" ||
  fail "a capture without the keyboard was not cancelled"
wait_until 5 log_has_count "settings: hotkey capture ended; the global hotkeys are back" 2 ||
  fail "the global hotkeys were not given back after the interrupted capture"
note "interrupted: $(screenshot settings-capture-interrupted-en)"
grabber_in=${GRABBER[1]}
exec {grabber_in}>&-  # the grabber lets go
wait_exit "$GRABBER_PID" 5
focus_window "$window" || fail "the settings window cannot take the focus after the grab"
xdotool key Escape
wait_until 5 no_settings_window || fail "Esc did not close the settings window after the grab"
[[ $("$ORVANTIS_BIN" settings get textTransformerHotkey) == '{"keyCode":16,"modifiers":786432}' ]] ||
  fail "the interrupted capture changed the hotkey"
note "a capture interrupted by another program's grab is cancelled; the hotkeys below prove them back"
text_tools_window() {
  local w
  for w in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null); do
    is_top_level "$w" || continue
    window_geometry "$w" || continue
    ((GEOMETRY_W == 640)) && { echo "$w"; return 0; }
  done
  return 1
}
xdotool key super+shift+t
sleep 1
text_tools_window >/dev/null && fail "the old hotkey still opens the text tools"
xdotool key super+alt+y
wait_until 5 text_tools_window >/dev/null || fail "the new hotkey does not open the text tools"
note "a captured hotkey reaches the monitor"
kill "$APP_PID"
wait_exit "$APP_PID" 10
note "settings window: every page in both languages; Cancel leaves the file as it was"
