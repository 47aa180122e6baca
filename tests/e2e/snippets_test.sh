#!/usr/bin/env bash
# snippets_test.sh qt|gtk: the snippet expander in a text field that shows its text on the
# accessibility bus (a Qt line edit, or a GTK entry from zenity), with the entries "sig" and
# "addr" and the hotkey Super+Shift+Backspace:
#   - the clipboard holds text; "hello sig", hotkey: the field reads "hello Best regards,";
#     0.35 s later the clipboard holds the text again, and the clipboard history never took
#     the expansion;
#   - the clipboard holds an image (PNG); "to addr", hotkey: the field reads
#     "to 221B Baker Street"; 0.35 s later the image is back byte for byte;
#   - the clipboard holds 50 MB of text; "big sig", hotkey: the field expands and all 50 MB
#     come back;
#   - a password field with "sig", hotkey: nothing changes and the clipboard is untouched.
# With qt the time from the hotkey to the pasted text is measured (it must stay under 100 ms).
# No field or clipboard text reaches the log.
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
# The snippet list, as the settings window stores it: a data value holding the JSON array.
mkdir -p "$XDG_CONFIG_HOME/orvantis"
python3 - "$XDG_CONFIG_HOME/orvantis/preferences.plist" <<'PY'
import json, plistlib, sys
entries = [
    {"id": "E621E1F8-C36C-495A-93FC-0C247A3E6E5F", "shortcut": "sig", "expansion": "Best regards,"},
    {"id": "0A1B2C3D-4E5F-4A6B-8C7D-8E9FA0B1C2D3", "shortcut": "addr", "expansion": "221B Baker Street"},
]
blob = json.dumps(entries, separators=(",", ":")).encode()
with open(sys.argv[1], "wb") as f:
    plistlib.dump({"MOLVEX.Orvantis.snippetExpanderEntries": blob,
                   "MOLVEX.Orvantis.hasCompletedOnboarding": True}, f)
PY
snapshot=$XDG_DATA_HOME/orvantis/clipboard.json
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"
log_has "snippets: no keyboard monitor" && fail "the snippet hotkey is off"

# shellcheck source=text_field_lib.sh
source "$(dirname "$0")/text_field_lib.sh"

# expect_field TEXT: the field holds TEXT; ends the field.
expect_field() {
  local expected=$1
  if [[ $toolkit == qt ]]; then
    wait_until 3 field_is "$expected" || fail "field $field_count: expected '$expected', got '$(field_text)'"
    kill -TERM "$FIELD_PID"
    wait_exit "$FIELD_PID" 5
  else
    xdotool key Return
    wait_exit "$FIELD_PID" 5
    [[ $EXIT_STATUS == 0 ]] || fail "field $field_count: zenity ended with $EXIT_STATUS"
    field_is "$expected" || fail "field $field_count: expected '$expected', got '$(field_text)'"
  fi
  note "field $field_count: $expected"
}

clipboard_text() { xclip -selection clipboard -o 2>/dev/null; }
clipboard_is() { [[ $(clipboard_text) == "$1" ]]; }
clipboard_targets() { xclip -selection clipboard -o -t TARGETS 2>/dev/null; }

# 1. Text on the clipboard; the token before the caret expands, the text comes back.
printf '%s' "the user's own text" | xclip -selection clipboard -i
wait_until 3 clipboard_is "the user's own text" || fail "xclip did not take the clipboard"
sleep 0.6
open_field
typed "hello sig"
start=$(date +%s%N)
xdotool key super+shift+BackSpace
if [[ $toolkit == qt ]]; then
  until field_is "hello Best regards,"; do
    (($(date +%s%N) - start < 3000000000)) || fail "no expansion: '$(field_text)'"
    sleep 0.002
  done
  elapsed_ms=$((($(date +%s%N) - start) / 1000000))
  note "hotkey to pasted text: ${elapsed_ms} ms"
  ((elapsed_ms < 100)) || fail "the expansion took ${elapsed_ms} ms"
fi
wait_until 3 clipboard_is "the user's own text" || fail "the clipboard did not come back: '$(clipboard_text)'"
restored_ms=$((($(date +%s%N) - start) / 1000000))
note "clipboard back after ${restored_ms} ms"
((restored_ms >= 350)) || fail "the clipboard came back too early (${restored_ms} ms)"
expect_field "hello Best regards,"
sleep 0.5
[[ -f $snapshot ]] && grep -qF "Best regards" "$snapshot" && fail "the expansion entered the clipboard history"

# 2. An image on the clipboard comes back byte for byte.
image=$ORVANTIS_DESKTOP_DIR/picture.png
convert -size 24x16 gradient:red-blue "png:$image"
xclip -selection clipboard -t image/png -i "$image"
wait_until 3 bash -c "xclip -selection clipboard -o -t TARGETS 2>/dev/null | grep -q image/png" ||
  fail "xclip did not offer the image"
sleep 0.6
open_field
typed "to addr"
xdotool key super+shift+BackSpace
sleep 0.2
image_back() { clipboard_targets | grep -q '^image/png$'; }
wait_until 3 image_back || fail "the image did not come back: $(clipboard_targets | tr '\n' ' ')"
xclip -selection clipboard -o -t image/png >"$ORVANTIS_DESKTOP_DIR/back.png"
cmp -s "$image" "$ORVANTIS_DESKTOP_DIR/back.png" || fail "the image came back changed"
clipboard_targets | grep -q 'ConcealedType' && fail "the restored clipboard still carries the secret marker"
expect_field "to 221B Baker Street"

# 3. A clipboard of 50 MB: the expansion works, and all of it comes back.
big=$ORVANTIS_DESKTOP_DIR/big.txt
python3 -c "import sys; sys.stdout.write(('0123456789abcdefghijklmnopqrstuvwxyz' * 1456355)[:50 * 1024 * 1024])" >"$big"
xclip -selection clipboard -i "$big"
sleep 0.6
open_field
typed "big sig"
start=$(date +%s%N)
xdotool key super+shift+BackSpace
sleep 0.5
big_back() { xclip -selection clipboard -o >"$ORVANTIS_DESKTOP_DIR/big-back.txt" 2>/dev/null && cmp -s "$big" "$ORVANTIS_DESKTOP_DIR/big-back.txt"; }
wait_until 20 big_back || fail "the 50 MB clipboard did not come back whole ($(stat -c %s "$ORVANTIS_DESKTOP_DIR/big-back.txt") bytes)"
note "50 MB clipboard back whole after $((($(date +%s%N) - start) / 1000000)) ms"
expect_field "big Best regards,"
process_running "$APP_PID" || fail "the program ended"

# 4. A password field is left alone, and so is the clipboard.
printf '%s' "kept" | xclip -selection clipboard -i
sleep 0.6
open_field --password
typed sig
xdotool key super+shift+BackSpace
sleep 0.8
clipboard_is "kept" || fail "the clipboard changed at a password field: '$(clipboard_text)'"
expect_field sig

for secret in "Best regards" "Baker" "the user's own text" "hello sig"; do
  log_text | grep -qF -- "$secret" && fail "the log shows text: $secret"
done
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
note "PASS"
