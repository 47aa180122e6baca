#!/usr/bin/env bash
# clipboard_on_change_test.sh: copies are taken up as soon as the X server tells of them, well
# within the poll interval. A text copied with xclip is listed by `orvantis clipboard list`
# run 100 ms after the moment xclip owns the clipboard (xclip -verbose says when it does), 25
# times; ten texts copied 100 ms apart are all listed, in order. Figures printed: the time
# from xclip's claim to the program's first request to xclip (the capture's start), and to the
# end of the first of back-to-back listings that shows the text (an upper bound, which
# includes the run of one listing: printed too).
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

E2E_STEP=0.01
desktop_up
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "clipboard: the history answers on the session bus" || fail "the history is not on the bus"

listing() { "$ORVANTIS_BIN" clipboard list; }
listed() { listing | cut -f 3 | grep -qxF -- "$1"; }
# Microseconds since the epoch, without a process.
now_us() { local t=$EPOCHREALTIME; echo "${t/./}"; }

# copy_owned TEXT: xclip takes the clipboard with TEXT and stays in the foreground (-verbose);
# returns once it says that it owns the selection, with OWNED_US set to that moment. A reader
# in the background writes each of its lines to XCLIP_LINES, after the moment it came.
copy_owned() {
  local n=$((${COPIES:-0} + 1))
  COPIES=$n
  XCLIP_LINES=$ORVANTIS_DESKTOP_DIR/xclip-$n.lines
  : >"$XCLIP_LINES"
  # shellcheck disable=SC2016  # expanded by the reader
  { printf '%s' "$1" | xclip -verbose -selection clipboard -i 2>&1 |
    while IFS= read -r line; do echo "${EPOCHREALTIME/./} $line"; done >"$XCLIP_LINES"; } &
  APP_PIDS+=("$!")
  owned_line() { grep -m1 ' Waiting for selection requests' "$XCLIP_LINES"; }
  wait_until 5 owned_line >/dev/null || fail "xclip did not say that it owns the clipboard"
  OWNED_US=$(owned_line | cut -d ' ' -f 1)
}
# first_request_us: the moment xclip had answered its first request (it then waits for the
# second); fails when it has not.
first_request_us() {
  local line
  line=$(grep -m1 'selection request number 2' "$XCLIP_LINES") || return 1
  echo "${line%% *}"
}
median() { printf '%s\n' "$@" | sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
largest() { printf '%s\n' "$@" | sort -n | tail -n 1; }

# The time of one listing alone, for reading the figures below.
durations=()
for i in $(seq 1 5); do
  start=$(now_us)
  listing >/dev/null
  durations+=($((($(now_us) - start) / 1000)))
done
note "one listing takes $(median "${durations[@]}") ms (median of 5)"

# (a) Listed 100 ms after the claim, 25 times.
fetches=()
for i in $(seq 1 25); do
  text="latency probe $i"
  copy_owned "$text"
  wait_for=$((OWNED_US + 100000 - $(now_us)))
  ((wait_for > 0)) && sleep "$(printf '0.%06d' "$wait_for")"
  listed "$text" || fail "copy $i was not listed 100 ms after the claim: $(listing | head -n 3)"
  wait_until 2 first_request_us >/dev/null || fail "copy $i: the program never asked xclip for the clipboard"
  fetches+=($((($(first_request_us) - OWNED_US) / 1000)))
done
note "claim to first request, ms: ${fetches[*]}"
note "claim to first request: median $(median "${fetches[@]}") ms, slowest $(largest "${fetches[@]}") ms"

# The same by back-to-back listings, 25 times.
uppers=()
for i in $(seq 1 25); do
  text="listing probe $i"
  copy_owned "$text"
  found=""
  while (($(now_us) - OWNED_US < 2000000)); do
    if listed "$text"; then
      found=$(now_us)
      break
    fi
  done
  [[ -n $found ]] || fail "copy $i was not listed within 2 s: $(listing | head -n 3)"
  uppers+=($(((found - OWNED_US) / 1000)))
done
note "claim to listed (upper bounds), ms: ${uppers[*]}"
note "claim to listed: median $(median "${uppers[@]}") ms, slowest $(largest "${uppers[@]}") ms"

# (b) Ten texts 100 ms apart: all of them, newest first.
for i in $(seq 0 9); do
  printf '%s' "burst $i" | xclip -selection clipboard -i
  sleep 0.1
done
all_ten() { (($(listing | cut -f 3 | grep -c '^burst ') == 10)); }
wait_until 2 all_ten || fail "not all ten copies were listed: $(listing | cut -f 3 | grep '^burst ' | tr '\n' '|')"
order=$(listing | cut -f 3 | grep '^burst ' | tr '\n' '|')
[[ $order == "burst 9|burst 8|burst 7|burst 6|burst 5|burst 4|burst 3|burst 2|burst 1|burst 0|" ]] ||
  fail "wrong order: $order"

log_text | grep -qF -e "latency probe" -e "listing probe" && fail "the log shows clipboard text"
log_text | grep -qF -- "burst" && fail "the log shows clipboard text"
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
note "PASS"
