#!/usr/bin/env bash
# translator_test.sh qt|gtk|xterm: the translator on the selection of another application,
# against a local stand-in for the translation endpoint (tools/canned_translation_server.py).
#   qt, gtk: a text field showing its text on the accessibility bus.
#     - "имя пользователя" selected, Super+Shift+X: the popup opens at once (loading), then
#       shows the eleven names of "user name"; Return puts "userName" over the selection.
#     - the same, and once the synonyms have come, Tab and Return: "titleUser".
#     - Esc while the translation is still loading: the popup closes, the text stays.
#     - Super+Alt+X on "пользователя": one translation, "of the user", and Return takes it.
#   xterm: a terminal has no accessibility: the selection (PRIMARY) goes the clipboard route
#     and Return pastes "userName" into the terminal.
# Screenshots: translator-<mode>-loading.png, translator-<mode>-names.png.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

mode=${1:-}
[[ $mode == qt || $mode == gtk || $mode == xterm ]] || fail "usage: $0 qt|gtk|xterm"
ORVANTIS_TEXT_TARGET=${ORVANTIS_TEXT_TARGET:-$REPO_DIR/build/tests/e2e/orvantis_text_target}
command -v python3 >/dev/null || fail "python3 is not installed (scripts/install-deps.sh)"

desktop_up
requests=$ORVANTIS_DESKTOP_DIR/translation-requests
port_file=$ORVANTIS_DESKTOP_DIR/translation-port
: >"$requests"
python3 "$E2E_DIR/tools/canned_translation_server.py" "$port_file" "$requests" &
APP_PIDS+=("$!")
wait_until 5 test -s "$port_file" || fail "the translation stand-in did not start"
"$ORVANTIS_BIN" settings set translationEndpoint "\"http://127.0.0.1:$(cat "$port_file")\"" ||
  fail "could not set the endpoint"

start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"
log_has "keyboard: the keyboard cannot be watched" && fail "the keyboard is not watched"

popup_up() { menu_window "$APP_PID" >/dev/null; }
popup_gone() { ! popup_up; }
# The popup is taller than a few rows: the eleven names are in.
popup_tall() {
  popup_up || return 1
  window_geometry "$(menu_window "$APP_PID")" && ((GEOMETRY_H > 200))
}
requested() { grep -qF -- "$1" "$requests"; }
request_count() { grep -cF -- "$1" "$requests" || true; }

FIELD_PID="" FIELD_OUT="" field_count=0
# open_field TEXT: a fresh field holding TEXT, focused, all of it selected.
open_field() {
  field_count=$((field_count + 1))
  FIELD_OUT=$ORVANTIS_DESKTOP_DIR/field-$field_count.out
  : >"$FIELD_OUT"
  if [[ $mode == qt ]]; then
    QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 "$ORVANTIS_TEXT_TARGET" --title "Field $field_count" --out "$FIELD_OUT" \
      --text "$1" 2>"$ORVANTIS_DESKTOP_DIR/field-$field_count.err" &
  else
    zenity --entry --title "Field $field_count" --text "Text" --entry-text "$1" >"$FIELD_OUT" \
      2>"$ORVANTIS_DESKTOP_DIR/field-$field_count.err" &
  fi
  FIELD_PID=$!
  APP_PIDS+=("$FIELD_PID")
  local window
  window=$(mapped_window --pid "$FIELD_PID")
  [[ -n $window ]] || fail "field $field_count: no window"
  focus_window "$window" || fail "field $field_count: no focus"
  sleep 0.3
  xdotool key ctrl+a
  sleep 0.2
}

field_is() { [[ $(cat "$FIELD_OUT") == "$1" ]]; }
# expect_field TEXT: the field ends up holding TEXT; closes it.
expect_field() {
  if [[ $mode == qt ]]; then
    wait_until 3 field_is "$1" || fail "field $field_count: expected '$1', got '$(cat "$FIELD_OUT")'"
    kill -TERM "$FIELD_PID"
    wait_exit "$FIELD_PID" 5
  else
    sleep 0.5
    xdotool key Return
    wait_exit "$FIELD_PID" 5
    field_is "$1" || fail "field $field_count: expected '$1', got '$(cat "$FIELD_OUT")'"
  fi
  note "field $field_count: $1"
}

# names_shown: after the hotkey, the popup was up before the reply and then grew to the names.
names_shown() {
  wait_until 3 popup_up || fail "no popup after the hotkey"
  wait_until 5 requested "q=$1" || fail "no request for '$1': $(cat "$requests")"
  wait_until 5 popup_tall || fail "the names did not come"
}

if [[ $mode == xterm ]]; then
  received=$ORVANTIS_DESKTOP_DIR/xterm-bytes
  : >"$received"
  LC_ALL=C.UTF-8 xterm -u8 -geometry 60x8+0+0 \
    -e sh -c "printf 'имя пользователя\n'; stty raw -echo; exec dd bs=1 of='$received' 2>/dev/null" &
  APP_PIDS+=("$!")
  terminal=$(mapped_window --class XTerm)
  [[ -n $terminal ]] || fail "no terminal window"
  focus_window "$terminal" || fail "the terminal took no focus"
  sleep 0.3
  # A triple click selects the first line.
  xdotool mousemove 20 8 click --repeat 3 --delay 80 1
  sleep 0.3
  xdotool key super+shift+x
  names_shown "имя пользователя"
  note "popup: $(screenshot translator-xterm-names)"
  xdotool key Return
  has_paste() { grep -q userName "$received"; }
  wait_until 3 has_paste || fail "the terminal did not get the name: $(od -c "$received" | head)"
  note "terminal received: $(cat "$received")"
else
  # The names of the translation replace the selection.
  open_field "имя пользователя"
  xdotool key super+shift+x
  wait_until 3 popup_up || fail "no popup after the hotkey"
  note "loading: $(screenshot "translator-$mode-loading")"
  names_shown "имя пользователя"
  note "names: $(screenshot "translator-$mode-names")"
  xdotool key Return
  wait_until 3 popup_gone || fail "the popup stayed after Return"
  expect_field userName

  # Tab walks the synonyms once both words' alternatives have come.
  sleep 0.3
  : >"$requests"
  open_field "имя пользователя"
  xdotool key super+shift+x
  names_shown "имя пользователя"
  both_alternates() { (($(request_count "dt=at") >= 2)); }
  wait_until 5 both_alternates || fail "no synonym requests: $(cat "$requests")"
  sleep 0.3
  xdotool key Tab
  sleep 0.2
  xdotool key Return
  expect_field titleUser

  # Esc while loading leaves the text as it was.
  sleep 0.3
  open_field "медленно"
  xdotool key super+shift+x
  wait_until 3 popup_up || fail "no popup after the hotkey"
  wait_until 3 requested "q=медленно" || fail "no request"
  xdotool key Escape
  wait_until 2 popup_gone || fail "Esc did not close the popup"
  sleep 3.2  # past the slow reply
  popup_gone || fail "the late reply opened the popup again"
  expect_field "медленно"

  # The direct hotkey: one translation.
  sleep 0.3
  open_field "пользователя"
  xdotool key super+alt+x
  wait_until 3 popup_up || fail "no popup after the direct hotkey"
  wait_until 5 requested "q=пользователя" || fail "no request"
  sleep 0.5
  xdotool key Return
  expect_field "of the user"
fi

for secret in "имя пользователя" userName "медленно"; do
  log_text | grep -qF -- "$secret" && fail "the log shows selected text: $secret"
done
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
note "PASS"
