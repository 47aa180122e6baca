#!/usr/bin/env bash
# passwords_test.sh: the password hotkey (Super+Shift+P) in its three modes, a Qt line edit in
# the focus throughout:
#   - popup: a 380x230 panel above the centre of the screen while the field keeps the focus;
#     Space makes a new password, Return closes it and the password is typed into the field;
#     in Russian it opens again and a click outside closes it without typing anything, and
#     Ctrl+C copies the password (with the toast) without typing anything;
#   - copyOnly with a wipe of 3 s: a toast at the top of the screen; the clipboard holds the
#     password with both secret markers and is empty after 3 s; a second password that the user
#     copies over within the 3 s is not wiped;
#   - autoPaste: the password is typed into the field and the "Password typed" toast shows.
# No password enters the clipboard history or the log.
# Screenshots: password-popup-en.png, password-popup-ru.png, password-toast-ru.png,
# password-toast-en.png, password-toast-typed-en.png.
#
# Environment: ORVANTIS_TEXT_TARGET (the Qt field; default build/tests/e2e/orvantis_text_target).
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

ORVANTIS_TEXT_TARGET=${ORVANTIS_TEXT_TARGET:-$REPO_DIR/build/tests/e2e/orvantis_text_target}
[[ -x $ORVANTIS_TEXT_TARGET ]] || fail "no text target at $ORVANTIS_TEXT_TARGET (build orvantis_text_target)"

desktop_up
mkdir -p "$XDG_CONFIG_HOME/orvantis"
python3 - "$XDG_CONFIG_HOME/orvantis/preferences.plist" <<'PY'
import plistlib, sys
with open(sys.argv[1], "wb") as f:
    plistlib.dump({"MOLVEX.Orvantis.hasCompletedOnboarding": True}, f)
PY
snapshot=$XDG_DATA_HOME/orvantis/clipboard.json
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"
log_has "password: no keyboard monitor" && fail "the password hotkey is off"

setting() { "$ORVANTIS_BIN" settings set "$1" "$2" >/dev/null || fail "settings set $1 $2"; sleep 0.3; }

field_out=$ORVANTIS_DESKTOP_DIR/field.out
: >"$field_out"
QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 "$ORVANTIS_TEXT_TARGET" --title Field --out "$field_out" 2>/dev/null &
field_pid=$!
APP_PIDS+=("$field_pid")
field=$(mapped_window --pid "$field_pid")
[[ -n $field ]] || fail "no Qt field"
focus_window "$field" || fail "the Qt field took no focus"
sleep 0.3
field_text() { cat "$field_out"; }
field_length_is() { [[ ${#1} -gt 0 && $(field_text | wc -c) == "$1" ]]; }

# window_of_size W H: the program's top-level window of that size; prints its id.
window_of_size() {
  local window
  for window in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null); do
    is_top_level "$window" || continue
    window_geometry "$window" || continue
    ((GEOMETRY_W == $1 && GEOMETRY_H == $2)) || continue
    echo "$window"
    return 0
  done
  return 1
}
popup_up() { window_of_size 380 230 >/dev/null; }
popup_gone() { ! popup_up; }
toast_up() { window_of_size 320 56 >/dev/null; }
toast_gone() { ! toast_up; }
passwords=()

# 1. The popup, in English.
xdotool key super+shift+p
wait_until 3 popup_up || fail "no popup after the hotkey"
window_geometry "$(window_of_size 380 230)"
note "popup at ${GEOMETRY_X},${GEOMETRY_Y}"
((GEOMETRY_X == (1280 - 380) / 2 && GEOMETRY_Y == 400 - 115 - 80)) || fail "the popup stands at ${GEOMETRY_X},${GEOMETRY_Y}"
sleep 0.3
note "popup: $(screenshot password-popup-en)"
xdotool key space
sleep 0.2
popup_up || fail "Space closed the popup"
[[ -z $(field_text) ]] || fail "a key reached the field: '$(field_text)'"
xdotool key Return
wait_until 3 popup_gone || fail "Return did not close the popup"
wait_until 3 field_length_is 16 || fail "no password typed into the field: '$(field_text)'"
typed=$(field_text)
[[ $typed =~ ^[A-Za-z0-9]{16}$ ]] || fail "the typed password has other characters: '$typed'"
passwords+=("$typed")
note "popup's password typed into the field"

# 2. The popup in Russian; a click outside closes it and types nothing.
setting settingsLanguage '"ru"'
xdotool key super+shift+p
wait_until 3 popup_up || fail "no popup the second time"
sleep 0.3
note "popup ru: $(screenshot password-popup-ru)"
xdotool mousemove 40 700 click 1
wait_until 3 popup_gone || fail "a click outside did not close the popup"
sleep 0.3
[[ $(field_text) == "$typed" ]] || fail "the field changed after a click outside: '$(field_text)'"

# Ctrl+C in the popup copies, with the copied toast, and types nothing.
xdotool key super+shift+p
wait_until 3 popup_up || fail "no popup the third time"
sleep 0.3
xdotool key ctrl+c
wait_until 3 popup_gone || fail "Ctrl+C did not close the popup"
wait_until 3 toast_up || fail "no toast after Ctrl+C"
copied=$(xclip -selection clipboard -o)
[[ $copied =~ ^[A-Za-z0-9]{16}$ ]] || fail "Ctrl+C put '$copied' on the clipboard"
passwords+=("$copied")
[[ $(field_text) == "$typed" ]] || fail "the field changed after Ctrl+C: '$(field_text)'"
wait_until 5 toast_gone || fail "the toast stayed"

# 3. copyOnly with a wipe of 3 s: the toast, both secret markers, and the wipe.
setting passwordMode '"copyOnly"'
setting passwordClipboardClearSeconds 3
xdotool key super+shift+p
wait_until 3 toast_up || fail "no toast after the copy"
window_geometry "$(window_of_size 320 56)"
((GEOMETRY_X == (1280 - 320) / 2 && GEOMETRY_Y == 24)) || fail "the toast stands at ${GEOMETRY_X},${GEOMETRY_Y}"
note "toast ru: $(screenshot password-toast-ru)"
copied=$(xclip -selection clipboard -o)
[[ $copied =~ ^[A-Za-z0-9]{16}$ ]] || fail "the clipboard holds '$copied'"
passwords+=("$copied")
targets=$(xclip -selection clipboard -o -t TARGETS)
grep -q '^org.nspasteboard.ConcealedType$' <<<"$targets" || fail "no concealed type: $targets"
grep -q '^x-kde-passwordManagerHint$' <<<"$targets" || fail "no password manager hint: $targets"
[[ $(xclip -selection clipboard -o -t x-kde-passwordManagerHint) == secret ]] || fail "the hint is not 'secret'"
wait_until 5 toast_gone || fail "the toast stayed"
wiped() { [[ -z $(xclip -selection clipboard -o 2>/dev/null) ]]; }
wait_until 3 wiped || fail "the password was not wiped"
note "the copied password was wiped"

# A password that the user copies over before the wipe: the user's text stays.
setting settingsLanguage '"en"'
xdotool key super+shift+p
wait_until 3 toast_up || fail "no toast the second time"
note "toast en: $(screenshot password-toast-en)"
passwords+=("$(xclip -selection clipboard -o)")
printf '%s' "the user's own text" | xclip -selection clipboard -i
sleep 4
[[ $(xclip -selection clipboard -o) == "the user's own text" ]] || fail "the user's copy was wiped"

# 4. autoPaste types into the field, with its toast.
setting passwordMode '"autoPaste"'
before=$(field_text)
xdotool key super+shift+p
wait_until 3 toast_up || fail "no toast when typing"
note "toast typed: $(screenshot password-toast-typed-en)"
grew() { (($(field_text | wc -c) == ${#before} + 16)); }
wait_until 3 grew || fail "nothing typed: '$(field_text)'"
auto=$(field_text)
auto=${auto:${#before}}
[[ $auto =~ ^[A-Za-z0-9]{16}$ ]] || fail "typed '$auto'"
passwords+=("$auto")
[[ $(xclip -selection clipboard -o) == "the user's own text" ]] || fail "typing touched the clipboard"

# No password in the clipboard history or the log.
sleep 0.5
for secret in "${passwords[@]}"; do
  [[ -f $snapshot ]] && grep -qF -- "$secret" "$snapshot" && fail "a password entered the clipboard history"
  log_text | grep -qF -- "$secret" && fail "a password reached the log"
done
note "${#passwords[@]} passwords, none in the history or the log"
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
note "PASS"
