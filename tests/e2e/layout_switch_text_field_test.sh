#!/usr/bin/env bash
# layout_switch_text_field_test.sh qt|gtk: the layout switcher in a text field that shows its
# text on the accessibility bus (a Qt line edit, or a GTK entry from zenity), with layouts us,ru
# and the hotkey Shift+Backspace:
#   - "ok Ghbdtn", hotkey: the word before the caret becomes "Привет": "ok Привет";
#   - "Ghbdtn vbh" selected, hotkey: the selection is converted in place: "Привет мир";
#   - a password field with "ghbdtn", hotkey: nothing changes.
# The Qt field writes its text to a file on every change; zenity prints it when Return ends it.
# Every case gets a fresh field.
#
# Environment: ORVANTIS_TEXT_TARGET (the Qt field; default build/tests/e2e/orvantis_text_target).
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

toolkit=${1:-}
[[ $toolkit == qt || $toolkit == gtk ]] || fail "usage: $0 qt|gtk"
ORVANTIS_TEXT_TARGET=${ORVANTIS_TEXT_TARGET:-$REPO_DIR/build/tests/e2e/orvantis_text_target}
if [[ $toolkit == qt ]]; then
  [[ -x $ORVANTIS_TEXT_TARGET ]] || fail "no text target at $ORVANTIS_TEXT_TARGET (build orvantis_text_target)"
else
  command -v zenity >/dev/null || fail "zenity is not installed (scripts/install-deps.sh)"
fi

desktop_up
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"
log_has "keyboard: no X display" && fail "the program found no keyboard"

# shellcheck source=text_field_lib.sh
source "$(dirname "$0")/text_field_lib.sh"

# expect_field TEXT: the field settles on TEXT; ends the field.
expect_field() {
  local expected=$1
  if [[ $toolkit == qt ]]; then
    wait_until 3 field_is "$expected" || fail "field $field_count: expected '$expected', got '$(field_text)'"
    # Past the retype interval: a stray second conversion would show by now.
    sleep 0.5
    field_is "$expected" || fail "field $field_count: changed again to '$(field_text)'"
    kill -TERM "$FIELD_PID"
    wait_exit "$FIELD_PID" 5
  else
    sleep 1
    xdotool key Return
    wait_exit "$FIELD_PID" 5
    [[ $EXIT_STATUS == 0 ]] || fail "field $field_count: zenity ended with $EXIT_STATUS"
    field_is "$expected" || fail "field $field_count: expected '$expected', got '$(field_text)'"
  fi
  note "field $field_count: $expected"
}

# The word before the caret.
open_field
typed "ok Ghbdtn"
xdotool key shift+BackSpace
expect_field "ok Привет"

# A selection, converted in place. The field holds nothing else: without an accessibility
# write the switcher deletes one character per selected character.
sleep 0.4
open_field
typed "Ghbdtn vbh"
xdotool key shift+Home
sleep 0.2
xdotool key shift+BackSpace
expect_field "Привет мир"

# A password field is never read nor retyped.
sleep 0.4
open_field --password
typed ghbdtn
xdotool key shift+BackSpace
expect_field ghbdtn

# Nothing the fields held reached the log.
for secret in Ghbdtn ghbdtn Привет "vbh" "мир"; do
  log_text | grep -qF -- "$secret" && fail "the log shows field text: $secret"
done

kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
note "PASS"
