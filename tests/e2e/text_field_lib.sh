# shellcheck shell=bash
# shellcheck disable=SC2154  # $toolkit is set by the test that sources this
# Text fields of a real toolkit for the end-to-end tests that type into one: the Qt test target
# ($ORVANTIS_TEXT_TARGET) when $toolkit is qt, a zenity (GTK) entry otherwise. Sourced after
# e2e_lib.sh.

FIELD_PID=""
FIELD_OUT=""
field_count=0

# open_field [--password]: a fresh field with the keyboard focus; sets FIELD_PID and FIELD_OUT.
open_field() {
  field_count=$((field_count + 1))
  FIELD_OUT=$ORVANTIS_DESKTOP_DIR/field-$field_count.out
  : >"$FIELD_OUT"
  if [[ $toolkit == qt ]]; then
    QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 "$ORVANTIS_TEXT_TARGET" --title "Field $field_count" --out "$FIELD_OUT" "$@" \
      2>"$ORVANTIS_DESKTOP_DIR/field-$field_count.err" &
  elif [[ ${1:-} == --password ]]; then
    zenity --password --title "Field $field_count" >"$FIELD_OUT" 2>"$ORVANTIS_DESKTOP_DIR/field-$field_count.err" &
  else
    zenity --entry --title "Field $field_count" --text "Text" >"$FIELD_OUT" \
      2>"$ORVANTIS_DESKTOP_DIR/field-$field_count.err" &
  fi
  FIELD_PID=$!
  APP_PIDS+=("$FIELD_PID")
  local window
  window=$(mapped_window --pid "$FIELD_PID")
  [[ -n $window ]] || fail "field $field_count: no window"
  focus_window "$window" || fail "field $field_count: no focus"
  # The field takes the focus once its window is active.
  sleep 0.3
}

field_text() { cat "$FIELD_OUT"; }
field_is() { [[ $(field_text) == "$1" ]]; }

# typed TEXT: types TEXT into the field and waits until the field has it.
typed() {
  xdotool type --delay 15 "$1"
  if [[ $toolkit == qt ]]; then
    wait_until 3 field_is "$1" || fail "field $field_count: the typing did not arrive: '$(field_text)'"
  else
    sleep 0.3
  fi
}
