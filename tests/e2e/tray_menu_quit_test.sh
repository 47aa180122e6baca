#!/usr/bin/env bash
# The tray icon docks, a click opens its menu, and Quit ends the program cleanly: exit
# status 0, the launch banner and "terminating" in the log. Leaves a screenshot of the open
# menu in the artifacts folder (tray-menu.png for the context click, tray-menu-left-click.png).
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
note "tray icon $ICON_WINDOW at ${ICON_X},${ICON_Y} size ${ICON_W}x${ICON_H}"

wait_until 10 log_has "launch: Orvantis " || fail "no launch banner in the log"
banner=$(log_text | grep -F "launch: Orvantis " | tail -n1)
note "banner: $banner"
[[ $banner =~ \[INFO\ \]\ App:\ launch:\ Orvantis\ [^\ ]+\ \(build\ [^\ ]+\)\ on\ .+\;\ accessibility=(granted|missing),\ inputMonitoring=(granted|missing)$ ]] ||
  fail "malformed banner: $banner"
# The virtual desktop has the accessibility bus switched on and an X server with XInput.
[[ $banner == *"accessibility=granted, inputMonitoring=granted" ]] || fail "permissions not seen: $banner"

# A plain click opens the menu as well, below the icon; Escape closes it.
click_icon 1
wait_for_menu "$APP_PID" 5
note "left click opened the menu $MENU_WINDOW at ${MENU_X},${MENU_Y}"
((MENU_Y >= ICON_Y + ICON_H)) || fail "the menu covers the icon"
sleep 0.3 # let the menu paint
note "screenshot: $(screenshot tray-menu-left-click)"
xdotool key --clearmodifiers Escape
wait_until 5 no_menu "$APP_PID" || fail "Escape did not close the menu"

# The context click opens it; the picture shows icon and menu.
click_icon 3
wait_for_menu "$APP_PID" 5
note "menu $MENU_WINDOW at ${MENU_X},${MENU_Y} size ${MENU_W}x${MENU_H}"
sleep 0.3 # let the menu paint
shot=$(screenshot tray-menu)
note "screenshot: $shot"
icon_deviation=$(region_stat "$shot" "$ICON_X" "$ICON_Y" "$ICON_W" "$ICON_H" standard_deviation)
menu_mean=$(region_stat "$shot" "$MENU_X" "$MENU_Y" "$MENU_W" "$MENU_H" mean)
note "icon contrast $icon_deviation, menu brightness $menu_mean"
awk -v d="$icon_deviation" 'BEGIN { exit !(d > 0.05) }' || fail "the tray icon looks blank"
awk -v m="$menu_mean" 'BEGIN { exit !(m > 0.3) }' || fail "the menu looks unpainted"

# Quit: the menu's last item, at its bottom.
xdotool mousemove $((MENU_X + MENU_W / 2)) $((MENU_Y + MENU_H - 12)) sleep 0.1 click 1
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS after Quit"
log_has "App: terminating" || fail "no \"terminating\" in the log"
[[ ! -s $ORVANTIS_DESKTOP_DIR/app-first.out ]] || fail "unexpected output: $(cat "$ORVANTIS_DESKTOP_DIR/app-first.out")"
note "PASS"
