#!/usr/bin/env bash
# settings_window_open.sh [--screen WxH]: how fast the settings window opens from the tray menu
# and switches pages, and what it leaves behind in memory, with the real program on a private
# virtual desktop (tests/e2e/virtual_desktop.sh: Xvfb, session and accessibility buses, trayer).
# Not part of the tests: it measures, it does not judge.
#
# ROUNDS times (default 20): the tray icon is clicked, the menu's first row (Settings…) is
# clicked with xdotool, and the time runs until the program logs the first paint of the
# window's first page ("settings: window painted"); then every page is visited once, and one
# more Ctrl+Page Down is timed to the paint of the page it chose; Esc closes the window.
#
# Two figures each:
#   - from outside: the script's clock (date +%s%N) just before `xdotool click` or `xdotool key`,
#     to the time stamp of the program's log line (milliseconds, cut). It includes starting the
#     xdotool process, whose own cost is measured and printed beside it;
#   - from inside: what the program logs, from openSettings() (or selectSection()) to that paint.
# Memory: Rss and Pss of /proc/PID/smaps_rollup once the program settled with the window never
# opened (the tray menu opened and closed once), after the first close, and after the last, each SETTLE_S (default 3) after the close;
# Anonymous beside them separates the heap from the pages of libraries, fonts and the program's
# own code that the first opening reads in from disk (clean, shared, and kept by any process
# that has used them once). Pss splits shared pages among every process that maps them: with
# other Qt programs starting and ending beside it, Pss moves by megabytes; Rss does not.
#
# Needs xdotool, x11-utils, python3 and the packages of scripts/install-deps.sh; the program at
# build/src/app/orvantis (or ORVANTIS_BIN).
# shellcheck source-path=SCRIPTDIR source=../tests/e2e/e2e_lib.sh
source "$(dirname "$0")/../tests/e2e/e2e_lib.sh"

ROUNDS=${ROUNDS:-20}
SETTLE_S=${SETTLE_S:-3}
[[ ${1:-} == --screen ]] && use_screen "$2"

# ms since the epoch of the N-th log line containing TEXT (its "YYYY-MM-DD HH:MM:SS.mmm" stamp).
log_stamp_ms() { # TEXT N
  local line
  line=$(log_text | grep -F -- "$1" | sed -n "$2p")
  date -d "$(cut -c1-23 <<<"$line")" +%s%3N
}
# The figure "<n> ms" of the N-th log line containing TEXT.
log_figure() { # TEXT N
  log_text | grep -F -- "$1" | sed -n "$2p" | sed -E 's/.* ([0-9.]+) ms .*/\1/'
}
memory_kb() { # FIELD (Rss or Pss)
  awk -v f="$1:" '$1 == f {print $2}' "/proc/$APP_PID/smaps_rollup"
}
stats() { # numbers on stdin: median, min, max
  python3 -c '
import statistics, sys
v = [float(x) for x in sys.stdin.read().split()]
print(f"median {statistics.median(v):.1f}  min {min(v):.1f}  max {max(v):.1f}  (n={len(v)})")'
}

desktop_up
start_orvantis bench
wait_for_tray_icon "$APP_PID" 15
wait_until 15 "$ORVANTIS_BIN" show --help >/dev/null 2>&1 || true
sleep "$SETTLE_S"
# The tray menu once, so that the baseline holds what the way to the window costs by itself.
click_icon 1
wait_for_menu "$APP_PID" 5
xdotool key Escape
wait_until 5 no_menu "$APP_PID" || fail "Esc did not close the tray menu"
sleep "$SETTLE_S"
rss0=$(memory_kb Rss) pss0=$(memory_kb Pss) anon0=$(memory_kb Anonymous)

# What starting xdotool costs, to set beside the figures from outside.
xdotool_ms=()
for ((i = 0; i < 20; i++)); do
  s=$(date +%s%N)
  xdotool getmouselocation >/dev/null
  xdotool_ms+=($((($(date +%s%N) - s) / 1000)))
done

open_outside=() open_inside=() switch_outside=() switch_inside=()
for ((round = 1; round <= ROUNDS; round++)); do
  click_icon 1
  wait_for_menu "$APP_PID" 5
  xdotool mousemove $((MENU_X + MENU_W / 2)) $((MENU_Y + 11))
  sleep 0.2
  start=$(date +%s%N)
  xdotool click 1
  wait_until 5 log_has_count "settings: window painted" "$round" || fail "round $round: no paint after the click"
  open_outside+=($(($(log_stamp_ms "settings: window painted" "$round") - start / 1000000)))
  open_inside+=("$(log_figure "settings: window painted" "$round")")
  window=$(settings_window) || fail "round $round: no settings window"
  focus_window "$window" || fail "round $round: the window takes no focus"
  # Every page once, back to the first: from now on pages are built.
  for _ in 1 2 3 4 5 6 7 8 9 10; do xdotool key ctrl+Next; done
  wait_until 5 log_has_count "page painted" $((round * 11 - 1)) || fail "round $round: the pages did not all paint"
  sleep 0.2
  start=$(date +%s%N)
  xdotool key ctrl+Next
  wait_until 5 log_has_count "page painted" $((round * 11)) || fail "round $round: no paint after the switch"
  switch_outside+=($(($(log_stamp_ms "page painted" $((round * 11))) - start / 1000000)))
  switch_inside+=("$(log_figure "page painted" $((round * 11)))")
  xdotool key Escape
  wait_until 5 no_settings_window || fail "round $round: Esc did not close the window"
  if ((round == 1)); then
    sleep "$SETTLE_S"
    rss1=$(memory_kb Rss) pss1=$(memory_kb Pss) anon1=$(memory_kb Anonymous)
  fi
done
sleep "$SETTLE_S"
rssN=$(memory_kb Rss) pssN=$(memory_kb Pss) anonN=$(memory_kb Anonymous)

echo "screen ${ORVANTIS_DESKTOP_SCREEN:-1280x800x24}, $ROUNDS rounds"
echo "xdotool start, ms (us/1000):      $(printf '%s\n' "${xdotool_ms[@]}" | awk '{print $1 / 1000}' | stats)"
echo "open, click to first paint, ms:   $(printf '%s\n' "${open_outside[@]}" | stats)"
echo "open, inside the program, ms:     $(printf '%s\n' "${open_inside[@]}" | stats)"
echo "page switch, key to paint, ms:    $(printf '%s\n' "${switch_outside[@]}" | stats)"
echo "page switch, inside, ms:          $(printf '%s\n' "${switch_inside[@]}" | stats)"
echo "memory, kB       Rss    Pss   Anonymous   (growth Rss / Pss / Anonymous)"
echo "never opened    $rss0  $pss0  $anon0"
printf 'after 1 close   %s  %s  %s   (%+d / %+d / %+d)\n' "$rss1" "$pss1" "$anon1" $((rss1 - rss0)) $((pss1 - pss0)) $((anon1 - anon0))
printf 'after %s closes %s  %s  %s   (%+d / %+d / %+d)\n' "$ROUNDS" "$rssN" "$pssN" "$anonN" $((rssN - rss0)) $((pssN - pss0)) $((anonN - anon0))
kill "$APP_PID"
wait_exit "$APP_PID" 10
