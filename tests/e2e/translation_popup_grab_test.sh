#!/usr/bin/env bash
# translation_popup_grab_test.sh: the translation popup takes the keyboard and the pointer
# without taking the focus. A terminal that records every byte it receives has the focus while
# a probe program shows the popup and drives it with xdotool: Down Return confirms the second
# option, Escape dismisses, a click outside dismisses, a double click confirms a row. The
# terminal receives none of those keys, and typing reaches it again once the popup is closed.
#
#   translation_popup_grab_test.sh [--window-manager]
#
# --window-manager runs the same under openbox (exit 77, a skip, when it is not installed),
# and adds a second terminal whose activation must close the popup.
#
# Environment: ORVANTIS_POPUP_PROBE (the probe program), ORVANTIS_POPUP_SCREENSHOTS (where the
# screenshot of the popup goes; default the artifacts folder).
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

PROBE=${ORVANTIS_POPUP_PROBE:-$REPO_DIR/build/src/orvantis_popup_probe}
SHOTS=${ORVANTIS_POPUP_SCREENSHOTS:-$ORVANTIS_E2E_ARTIFACTS}
[[ -x $PROBE ]] || fail "no probe at $PROBE (build the orvantis_popup_probe target first)"

with_wm=0
[[ ${1:-} == --window-manager ]] && with_wm=1
if ((with_wm)) && ! command -v openbox >/dev/null; then
  echo "SKIP: openbox is not installed"
  exit 77
fi

desktop_up --no-tray --no-a11y
probe_args=()
shot_name=translation-popup
if ((with_wm)); then
  openbox --sm-disable >"$ORVANTIS_DESKTOP_DIR/openbox.log" 2>&1 &
  APP_PIDS+=("$!")
  wm_running() { xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; }
  wait_until 10 wm_running || fail "openbox did not start"
  xterm -geometry 40x10+700+450 -title other &
  APP_PIDS+=("$!")
  other=$(mapped_window --name '^other$')
  [[ -n $other ]] || fail "no second terminal"
  probe_args+=(--activate "$other")
  shot_name=translation-popup-openbox
fi
received=$ORVANTIS_DESKTOP_DIR/xterm-bytes
: >"$received"
LC_ALL=C.UTF-8 xterm -u8 -title recorder -geometry 80x24+40+40 -e sh -c "stty raw -echo; exec dd bs=1 of='$received' 2>/dev/null" &
APP_PIDS+=("$!")
terminal=$(mapped_window --name '^recorder$')
[[ -n $terminal ]] || fail "no terminal window"
if ((with_wm)); then
  xdotool windowactivate --sync "$terminal"
else
  focus_window "$terminal" || fail "the terminal took no focus"
fi
sleep 0.2

bytes() { od -An -c "$received" | tr -s ' \n' ' '; }
has_text() { grep -q "$1" "$received"; }

mkdir -p "$SHOTS"
"$PROBE" --screenshot "$SHOTS/$shot_name.png" "${probe_args[@]}" >"$ORVANTIS_DESKTOP_DIR/app-probe.out" 2>"$ORVANTIS_DESKTOP_DIR/app-probe.err" &
probe_pid=$!
APP_PIDS+=("$probe_pid")
wait "$probe_pid" && status=0 || status=$?
cat "$ORVANTIS_DESKTOP_DIR/app-probe.out"
[[ $status == 0 ]] || fail "the probe failed with status $status"

if ((with_wm)); then
  # The last step activated the other terminal on purpose.
  xdotool windowactivate --sync "$terminal"
else
  [[ $(xdotool getwindowfocus) == "$terminal" ]] || fail "the terminal lost the focus"
fi
sleep 0.2
[[ ! -s $received ]] || fail "the terminal received keys meant for the popup: $(bytes)"
# The grab is gone: typing reaches the terminal again.
xdotool type --delay 15 after
wait_until 3 has_text after || fail "typing after the popup did not reach the terminal: $(bytes)"
note "screenshots: $SHOTS/$shot_name.png, $SHOTS/$shot_name-loading.png"
note "PASS"
