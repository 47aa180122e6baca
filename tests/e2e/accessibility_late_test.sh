#!/usr/bin/env bash
# accessibility_late_test.sh: Orvantis starts on a desktop whose accessibility bus is not
# running and cannot be started on demand. The launch banner says accessibility=missing, the
# log says the keyboard cannot be watched, the icon wears the red "!" badge and the menu opens
# with the permission banner item and its separator above Quit. Then the accessibility bus
# comes up, switched on: within one poll (2 s) the log says "watching the keyboard", the
# banner item is gone from the menu and the icon is the plain keyboard again.
#
# The banner item is never clicked: clicking it switches the bus on from the program itself.
#
# Artifacts: a11y-missing-icon.png, a11y-missing-tooltip.png, a11y-missing-menu.png,
# a11y-back-icon.png, a11y-back-menu.png.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

readonly AMBER="#e09010" RED="#d03030"

desktop_up --no-a11y
xprop -root AT_SPI_BUS 2>/dev/null | grep -q '= "' && fail "the accessibility bus is up"

start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"
banner=$(log_text | grep -F "launch: Orvantis " | tail -n1)
[[ $banner == *"accessibility=missing, inputMonitoring=granted" ]] || fail "permissions misread: $banner"

red_pixels() { icon_colour_pixels "$(screenshot "$1")" "$RED"; }
red_badge() { (($(red_pixels a11y-missing-icon) >= 20)); }
plain_icon() {
  local shot
  shot=$(screenshot a11y-back-icon)
  (($(icon_colour_pixels "$shot" "$RED") < 5 && $(icon_colour_pixels "$shot" "$AMBER") < 5))
}
# open_menu NAME: opens the menu with a plain click, screenshots it as NAME, sets MENU_*.
open_menu() {
  xdotool mousemove 640 400
  wait_until 5 no_tooltip "$APP_PID" || fail "a tool tip stays open"
  click_icon 1
  wait_for_menu "$APP_PID" 5
  sleep 0.3 # let the menu paint
  note "menu $MENU_WINDOW ${MENU_W}x${MENU_H}; screenshot: $(screenshot "$1")"
  xdotool key --clearmodifiers Escape
  wait_until 5 no_menu "$APP_PID" || fail "Escape did not close the menu"
}

wait_until 5 log_has "keyboard: the keyboard cannot be watched; retrying every 2 s" ||
  fail "no word in the log that the keyboard cannot be watched"
wait_until 5 red_badge || fail "no red badge on the icon"
note "icon with the red badge: $ORVANTIS_E2E_ARTIFACTS/a11y-missing-icon.png"

hover_icon
wait_until 5 tooltip_window "$APP_PID" >/dev/null || fail "no tool tip over the icon"
sleep 0.3 # let it paint
tooltip_screenshot a11y-missing-tooltip "$(tooltip_window "$APP_PID")"
note "tool tip ${TIP_W}x${TIP_H}: $TIP_SHOT"

open_menu a11y-missing-menu
banner_menu_height=$MENU_H

# Past a poll and the program's own request to switch the bus on: nothing changes while the
# bus is missing.
sleep 2.5
log_has "keyboard: watching the keyboard" && fail "the keyboard was watched without the accessibility bus"
red_badge || fail "the red badge went away while the bus was missing"

"$E2E_DIR/virtual_desktop.sh" start-a11y "$ORVANTIS_DESKTOP_DIR" || fail "the accessibility bus did not start"
started=$(date +%s%N)
wait_until 4 log_has "keyboard: watching the keyboard" || fail "the keyboard is not watched once the bus is up"
elapsed_ms=$((($(date +%s%N) - started) / 1000000))
note "watching the keyboard ${elapsed_ms} ms after the bus came up"
((elapsed_ms <= 3000)) || fail "the banner took ${elapsed_ms} ms to go"
wait_until 3 plain_icon || fail "the icon did not come back to the plain keyboard"
note "plain icon: $ORVANTIS_E2E_ARTIFACTS/a11y-back-icon.png"

open_menu a11y-back-menu
note "menu height with the banner ${banner_menu_height}, without ${MENU_H}"
# The banner item and its separator: at least a row of text more.
((banner_menu_height >= MENU_H + 15)) || fail "the menu with the banner was not taller"
process_running "$APP_PID" || fail "Orvantis ended"

kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS after SIGTERM"
note "PASS"
