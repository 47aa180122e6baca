#!/usr/bin/env bash
# text_tools_window_test.sh: the text tools window as a user drives it, once with the interface
# in English and once in Russian. Another program (xclip) copies a text; Super+Shift+T opens the
# window with that text as the input and its Base64 as the result. Typing replaces the selected
# input and recomputes at every key; the picker opens from the transform button, its search
# narrows the list, Down and Return choose "Hex decode"; an input that is no hex shows the error
# in the status line and an empty result; corrected, Copy puts the result on the clipboard and
# `orvantis clipboard list` shows that the history took it. The window's texts are read from the
# accessibility bus, as a screen reader reads them; no clipboard text reaches the log.
# Last, the count shows a result of four lines.
# Screenshots: text-tools-<en|ru>-open.png, -picker.png, -search.png, -error.png, -copied.png,
# -lines.png.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

command -v python3 >/dev/null || fail "python3 is not installed (scripts/install-deps.sh)"
desktop_up
# The window's widgets on the accessibility bus, for reading the input, the result and the status.
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1

atspi() { python3 "$E2E_DIR/tools/atspi_query.py" Orvantis "$@"; }
input_text() { atspi text --editable text; }
result_text() { atspi text --read-only text; }
result_is() { [[ $(result_text) == "$1" ]]; }
# The status line is the label whose text is the error; an empty status has no such label.
status_shows() { [[ $(atspi label count --name "$1") -ge 1 ]]; }
clipboard_is() { [[ $(xclip -o -selection clipboard 2>/dev/null) == "$1" ]]; }
# The history lists its entries as "N<tab>pin<tab>preview".
history_has() { "$ORVANTIS_BIN" clipboard list 2>/dev/null | cut -f 3- | grep -qxF -- "$1"; }

# The picker: a top-level window of the program of 320 by 292.
picker_window() {
  local window
  for window in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null); do
    is_top_level "$window" || continue
    window_geometry "$window" || continue
    ((GEOMETRY_W == 320 && GEOMETRY_H == 292)) || continue
    echo "$window"
    return 0
  done
  return 1
}
picker_up() { picker_window >/dev/null; }
picker_gone() { ! picker_up; }

# click_widget ROLE NAME: a click in the middle of the program's widget.
click_widget() {
  local centre
  centre=$(atspi "$1" center --name "$2") || fail "no $1 \"$2\" on the accessibility bus"
  # shellcheck disable=SC2086  # "x y"
  xdotool mousemove $centre sleep 0.1 click 1
}

# run_in LANGUAGE TITLE BASE64-NAME HEX-NAME SEARCH COPY-LABEL COUNT-SEARCH, with the count's
# labels in COUNT_LABELS.
run_in() {
  local lang=$1 title=$2 base64_name=$3 hex_name=$4 search=$5 copy_label=$6 count_search=$7
  note "interface language $lang"
  "$ORVANTIS_BIN" settings set settingsLanguage "\"$lang\"" || fail "could not set the language"
  start_orvantis "$lang"
  wait_for_tray_icon "$APP_PID" 15
  wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"
  log_has "keyboard: the keyboard cannot be watched" && fail "the keyboard is not watched"

  # Pre-filled from the clipboard, all selected, and the result is the text's Base64.
  local copied="Привет, мир 😀"
  printf '%s' "$copied" | xclip -selection clipboard -i
  wait_until 3 history_has "$copied" || fail "the copy was not captured"
  xdotool key super+shift+t
  local window
  window=$(mapped_window --pid "$APP_PID" --name "^$title\$")
  [[ -n $window ]] || fail "no window \"$title\" after the hotkey"
  window_geometry "$window"
  ((GEOMETRY_W == 640 && GEOMETRY_H == 540)) || fail "window of ${GEOMETRY_W}x${GEOMETRY_H}"
  local expected
  expected=$(printf '%s' "$copied" | base64 -w 0)
  wait_until 5 result_is "$expected" || fail "result '$(result_text)', not the clipboard's Base64"
  [[ $(input_text) == "$copied" ]] || fail "input '$(input_text)'"
  atspi "push button" count --name "$base64_name" | grep -qx 1 || fail "the transform button does not show $base64_name"
  sleep 0.2
  note "open: $(screenshot "text-tools-$lang-open")"

  # Typing replaces the selection and recomputes at every key.
  xdotool type --delay 60 "48"
  wait_until 3 result_is "NDg=" || fail "after typing '48' the result is '$(result_text)'"
  [[ $(input_text) == 48 ]] || fail "the selection was not replaced: '$(input_text)'"
  xdotool type --delay 60 " 69"
  wait_until 3 result_is "NDggNjk=" || fail "after typing ' 69' the result is '$(result_text)'"

  # The picker: its search narrows the list, Down moves, Return chooses.
  click_widget "push button" "$base64_name"
  wait_until 3 picker_up || fail "no picker after a click on the transform button"
  sleep 0.2
  note "picker: $(screenshot "text-tools-$lang-picker")"
  # Qt keeps popups off the accessibility tree: the choice shows what the search left. Of the
  # three decoders that it leaves, the first is selected and two steps down is Hex decode; in the
  # whole list, two steps down from the first row would be another transform.
  xdotool type --delay 60 "$search"
  sleep 0.2
  xdotool key Down
  xdotool key Down
  sleep 0.2
  note "search: $(screenshot "text-tools-$lang-search")"
  xdotool key Return
  wait_until 3 picker_gone || fail "the picker stayed open after Return"
  wait_until 3 result_is "Hi" || fail "hex decode of '48 69' shows '$(result_text)'"
  atspi "push button" count --name "$hex_name" | grep -qx 1 || fail "the transform button does not show $hex_name"

  # An input that is no hex: the error in the status line, an empty result. The focus went back
  # to the input.
  xdotool key ctrl+a
  xdotool type --delay 60 "zz"
  wait_until 3 status_shows "Invalid input for Hex." || fail "no error in the status line"
  result_is "" || fail "a result beside the error: '$(result_text)'"
  sleep 0.2
  note "error: $(screenshot "text-tools-$lang-error")"

  # Corrected: the error goes; Copy puts the result on the clipboard, and the history takes it.
  local word="Orvantis $lang"
  local hex
  hex=$(printf '%s' "$word" | od -An -v -tx1 | tr -d ' \n')
  xdotool key ctrl+a
  xdotool type --delay 30 "$hex"
  wait_until 3 result_is "$word" || fail "hex decode of $hex shows '$(result_text)'"
  status_shows "Invalid input for Hex." && fail "the error stayed"
  click_widget "push button" "$copy_label"
  wait_until 3 clipboard_is "$word" || fail "the clipboard holds '$(xclip -o -selection clipboard 2>/dev/null)'"
  wait_until 3 history_has "$word" || fail "the history did not take the copied result: $("$ORVANTIS_BIN" clipboard list 2>&1)"
  sleep 0.2
  note "copied: $(screenshot "text-tools-$lang-copied")"

  # A result of several lines, the count of the input: characters, words, lines and bytes.
  click_widget "push button" "$hex_name"
  wait_until 3 picker_up || fail "no picker the second time"
  xdotool type --delay 60 "$count_search"
  sleep 0.2
  xdotool key Return
  wait_until 3 picker_gone || fail "the picker stayed open after choosing the count"
  local counted
  counted=$(printf '%s%s\n%s1\n%s1\n%s%s' "${COUNT_LABELS[0]}" "${#hex}" "${COUNT_LABELS[1]}" "${COUNT_LABELS[2]}" \
    "${COUNT_LABELS[3]}" "${#hex}")
  wait_until 3 result_is "$counted" || fail "the count shows '$(result_text)', not '$counted'"
  sleep 0.2
  note "lines: $(screenshot "text-tools-$lang-lines")"

  for secret in "$copied" "$word" "$hex" "$expected"; do
    log_text | grep -qF -- "$secret" && fail "the log shows text of the window: $secret"
  done
  kill -TERM "$APP_PID"
  wait_exit "$APP_PID" 10
  [[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
}

COUNT_LABELS=("Characters:  " "Words:       " "Lines:       " "UTF-8 bytes: ")
run_in en "Text Tools" "Base64 encode" "Hex decode" "decode" "Copy Result" "count"
COUNT_LABELS=("Символов:    " "Слов:        " "Строк:       " "Байт (UTF-8): ")
run_in ru "Текстовые инструменты" "Base64 — закодировать" "Hex — декодировать" "декод" "Скопировать результат" "подсч"
note "PASS"
