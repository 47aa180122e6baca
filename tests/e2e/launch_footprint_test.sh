#!/usr/bin/env bash
# launch_footprint_test.sh: what the idle program holds once launch is over. The libraries that
# are loaded at their first use (the language detector and the word lists, the HTML parser,
# libcurl, libcrypto and libssl) are not in its memory, and the pages of its own code and
# read-only data that launch mapped have been given back (two seconds after launch), so that
# less than a third of them stay mapped. The program keeps running and ends cleanly on SIGTERM.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

readonly DEFERRED=(libcld2.so libaspell.so libgumbo.so libcurl.so libcrypto.so libssl.so)

desktop_up
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"

program=$(readlink -f "/proc/$APP_PID/exe")
# "RSS SIZE" in KiB of the program's own read-only mappings (code, constants, symbols).
own_read_only() {
  awk -v exe="$program" '
    /^[0-9a-f]+-[0-9a-f]+ / { counted = ($6 == exe && substr($2, 2, 1) != "w"); next }
    counted && /^Size:/ { size += $2 }
    counted && /^Rss:/ { rss += $2 }
    END { print rss + 0, size + 0 }' "/proc/$APP_PID/smaps"
}
given_back() {
  local rss size
  read -r rss size < <(own_read_only)
  ((size > 0 && rss * 3 < size))
}
wait_until 10 given_back || fail "the program's own pages stay mapped after launch: $(own_read_only) (resident, size KiB)"
note "own code and read-only data: $(own_read_only) (resident, size KiB)"

process_running "$APP_PID" || fail "Orvantis ended"
for library in "${DEFERRED[@]}"; do
  if grep -q "/$library" "/proc/$APP_PID/maps"; then
    fail "$library is loaded at launch: $(grep "/$library" "/proc/$APP_PID/maps" | awk '{print $6}' | sort -u | tr '\n' ' ')"
  fi
done
note "none of ${DEFERRED[*]} is loaded"

kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
note "PASS"
