#!/usr/bin/env bash
# one_layout_test.sh: a session with one keyboard layout (us). Shift+Backspace after "ghbdtn"
# in a terminal sends nothing to it (no deletes, no retyped word), and the tray icon takes the
# amber "?" badge with a tool tip that asks for a second layout. The program keeps running and
# ends cleanly on SIGTERM.
#
# The program finds out that there is no second layout when the hotkey is pressed, not at
# launch: until then the icon is the plain keyboard. That first state is reported, not checked.
#
# Artifacts: one-layout-at-launch.png (the screen before the hotkey), one-layout-icon.png (the
# screen with the badged icon), one-layout-tooltip.png (the icon and its tool tip, cut out).
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

readonly AMBER="#e09010" RED="#d03030"
readonly WANTED_TIP="Add a second keyboard layout in System Settings → Keyboard → Input Sources"

desktop_up
setxkbmap -layout us
[[ $(xprop -root _XKB_RULES_NAMES) == *'"us", ""'* ]] || fail "the session still has more layouts: $(xprop -root _XKB_RULES_NAMES)"

received=$ORVANTIS_DESKTOP_DIR/xterm-bytes
: >"$received"
LC_ALL=C.UTF-8 xterm -u8 -geometry 60x8+0+0 -e sh -c "stty raw -echo; exec dd bs=1 of='$received' 2>/dev/null" &
APP_PIDS+=("$!")
terminal=$(mapped_window --class XTerm)
[[ -n $terminal ]] || fail "no terminal window"

# The tool tip is read back through the accessibility tree of the program.
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"
log_has "keyboard: no X display" && fail "the program found no keyboard"

amber_badge() { (($(icon_colour_pixels "$(screenshot one-layout-icon)" "$AMBER") >= 20)); }

shot=$(screenshot one-layout-at-launch)
hover_icon
wait_until 5 tooltip_window "$APP_PID" >/dev/null || fail "no tool tip over the icon at launch"
note "at launch: amber pixels $(icon_colour_pixels "$shot" "$AMBER"), tool tip \"$(tooltip_text || true)\""
xdotool mousemove 640 400
wait_until 5 no_tooltip "$APP_PID" || fail "the tool tip stayed"

bytes() { od -An -c "$received" | tr -s ' \n' ' '; }
has_text() { grep -q "$1" "$received"; }
focus_window "$terminal" || fail "the terminal took no focus"
xdotool type --delay 15 ghbdtn
wait_until 3 has_text ghbdtn || fail "the terminal did not receive the typing: $(bytes)"
xdotool key shift+BackSpace
wait_until 5 amber_badge || fail "no amber badge on the icon after the hotkey"
# Past the retype delay and interval: anything the press sent has arrived by now.
sleep 1
[[ $(cat "$received") == ghbdtn ]] || fail "the terminal received more than the typing: $(bytes)"
shot=$ORVANTIS_E2E_ARTIFACTS/one-layout-icon.png
note "screenshot: $shot"
amber=$(icon_colour_pixels "$shot" "$AMBER")
red=$(icon_colour_pixels "$shot" "$RED")
note "icon: $amber amber pixels, $red red pixels"
((red < 5)) || fail "the icon shows the red permission badge"
process_running "$APP_PID" || fail "Orvantis ended"

# The tool tip over the badged icon asks for a second layout.
hover_icon
wait_until 5 tooltip_window "$APP_PID" >/dev/null || fail "no tool tip over the icon"
tip=$(tooltip_window "$APP_PID")
sleep 0.3 # let it paint
tooltip_screenshot one-layout-tooltip "$tip"
note "tool tip window $tip, ${TIP_W}x${TIP_H}; screenshot: $TIP_SHOT"
contrast=$(region_stat "$TIP_SHOT" "$TIP_X" "$TIP_Y" "$TIP_W" "$TIP_H" standard_deviation)
awk -v d="$contrast" 'BEGIN { exit !(d > 0.05) }' || fail "the tool tip looks blank"
text=$(tooltip_text) || fail "the tool tip is not in the program's accessibility tree"
note "tool tip: \"$text\""
[[ $text == "$WANTED_TIP" ]] || fail "unexpected tool tip \"$text\""
xdotool mousemove 640 400

kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS after SIGTERM"
note "PASS"
