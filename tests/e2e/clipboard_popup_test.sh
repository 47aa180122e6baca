#!/usr/bin/env bash
# clipboard_popup_test.sh: three texts copied by another program (xclip) come back through the
# clipboard popup. Super+Shift+V opens it at the pointer while a terminal keeps the focus; typed
# letters go to its search field and narrow the list; Return pastes the chosen text into the
# terminal. Ctrl+P pins and Ctrl+Backspace deletes while the popup stays open, as the snapshot
# file shows; Esc closes. Ctrl+2 pastes the second row into a Qt line edit. No clipboard text
# reaches the log.
# Screenshots: clipboard-popup-open.png, clipboard-popup-search.png, clipboard-popup-pinned.png.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
snapshot=$XDG_DATA_HOME/orvantis/clipboard.json
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"
log_has "keyboard: the keyboard cannot be watched" && fail "the keyboard is not watched"

copy() { printf '%s' "$1" | xclip -selection clipboard -i; }
saved() { [[ -f $snapshot ]] && grep -qF -- "$1" "$snapshot"; }
# entry_state TEXT: "pinned", "unpinned" or "absent" in the snapshot.
entry_state() {
  python3 - "$snapshot" "$1" <<'EOF'
import json, sys
snapshot = json.load(open(sys.argv[1]))
found = [name for name in ("pinned", "unpinned")
         for item in snapshot.get(name, []) if item.get("text") == sys.argv[2]]
print(found[0] if found else "absent")
EOF
}
state_is() { [[ $(entry_state "$1") == "$2" ]]; }

for text in "alpha one" "beta two" "gamma three"; do
  copy "$text"
  wait_until 3 saved "$text" || fail "the copy '$text' was not captured: $(cat "$snapshot" 2>/dev/null)"
done

received=$ORVANTIS_DESKTOP_DIR/xterm-bytes
: >"$received"
LC_ALL=C.UTF-8 xterm -u8 -geometry 60x8+0+0 \
  -e sh -c "stty raw -echo; exec dd bs=1 of='$received' 2>/dev/null" &
APP_PIDS+=("$!")
terminal=$(mapped_window --class XTerm)
[[ -n $terminal ]] || fail "no terminal window"
focus_window "$terminal" || fail "the terminal took no focus"
xdotool mousemove 300 200
sleep 0.3

popup_up() { menu_window "$APP_PID" >/dev/null; }
popup_gone() { ! popup_up; }
popup_height_is() {
  popup_up || return 1
  window_geometry "$(menu_window "$APP_PID")" && ((GEOMETRY_H == $1))
}

xdotool key super+shift+v
wait_until 3 popup_up || fail "no popup after the hotkey"
window_geometry "$(menu_window "$APP_PID")"
((GEOMETRY_X == 300 && GEOMETRY_Y == 208 && GEOMETRY_W == 440 && GEOMETRY_H == 66 + 3 * 36)) ||
  fail "popup at ${GEOMETRY_X},${GEOMETRY_Y} ${GEOMETRY_W}x${GEOMETRY_H}"
sleep 0.2
note "open: $(screenshot clipboard-popup-open)"

# Typing goes to the search field although the terminal keeps the focus.
xdotool type --delay 40 "beta"
wait_until 3 popup_height_is $((66 + 36)) || fail "the search did not narrow the list to one row; the terminal got: $(od -c "$received" | head -3)"
sleep 0.2
note "search: $(screenshot clipboard-popup-search)"
xdotool key Return
wait_until 3 popup_gone || fail "the popup stayed open after Return"
has_paste() { grep -qF "beta two" "$received"; }
wait_until 3 has_paste || fail "the terminal did not get the text: $(od -c "$received" | head)"
note "terminal received: $(cat "$received")"
[[ $(entry_state "beta two") == unpinned ]] || fail "the pasted entry changed"

# Pin the newest entry, then delete the second row; the popup stays open throughout.
xdotool key super+shift+v
wait_until 3 popup_up || fail "no popup the second time"
sleep 0.2
xdotool key ctrl+p
wait_until 3 state_is "gamma three" pinned || fail "Ctrl+P did not pin: $(cat "$snapshot")"
popup_up || fail "the popup closed on Ctrl+P"
sleep 0.2
note "pinned: $(screenshot clipboard-popup-pinned)"
xdotool key Down ctrl+BackSpace
wait_until 3 state_is "beta two" absent || fail "Ctrl+Backspace did not delete: $(cat "$snapshot")"
wait_until 3 popup_height_is $((66 + 2 * 36)) || fail "the popup did not follow the deletion"
state_is "gamma three" pinned || fail "the pin was lost"
state_is "alpha one" unpinned || fail "the wrong entry went"
xdotool key Escape
wait_until 3 popup_gone || fail "Esc did not close the popup"

# Nothing but the paste reached the terminal.
[[ $(cat "$received") == "beta two" ]] || fail "the terminal got more: $(od -c "$received" | head)"

# Ctrl+2 pastes the second row into a Qt line edit.
ORVANTIS_TEXT_TARGET=${ORVANTIS_TEXT_TARGET:-$REPO_DIR/build/tests/e2e/orvantis_text_target}
field_out=$ORVANTIS_DESKTOP_DIR/field.out
"$ORVANTIS_TEXT_TARGET" --title Field --out "$field_out" --text "pasted: " 2>/dev/null &
field_pid=$!
APP_PIDS+=("$field_pid")
field=$(mapped_window --pid "$field_pid")
[[ -n $field ]] || fail "no Qt field"
focus_window "$field" || fail "the Qt field took no focus"
sleep 0.3
xdotool key End super+shift+v
wait_until 3 popup_up || fail "no popup over the Qt field"
sleep 0.2
xdotool key ctrl+2
wait_until 3 popup_gone || fail "Ctrl+2 did not close the popup"
field_has() { [[ $(cat "$field_out") == "pasted: alpha one" ]]; }
wait_until 3 field_has || fail "the Qt field holds '$(cat "$field_out")'"
for secret in "alpha one" "beta two" "gamma three"; do
  log_text | grep -qF -- "$secret" && fail "the log shows clipboard text: $secret"
done
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
note "PASS"
