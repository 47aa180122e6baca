#!/usr/bin/env bash
# settings_race_test.sh: the command line and the running program share one preference file.
# A change written by the command line reaches the running program within a second; two
# command lines racing 200 writes each lose no key and leave no damaged file; the program's
# own end does not undo them.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
start_orvantis first
wait_until 15 log_has "launch: Orvantis " || fail "no launch banner"

cli() { "$ORVANTIS_BIN" "$@"; }
prefs_dir=$XDG_CONFIG_HOME/orvantis

cli settings set switchDelayMs 250 || fail "settings set failed"
start=$(date +%s%N)
wait_until 2 log_has "settings: took 1 changed key(s) from a write by another process" ||
  fail "the running program did not notice the change"
note "noticed after $((($(date +%s%N) - start) / 1000000)) ms"

race() {
  local key=$1 prefix=$2 i
  for i in $(seq 1 200); do
    cli settings set "$key" "\"$prefix$i\"" 2>>"$ORVANTIS_DESKTOP_DIR/race-$prefix.err" || return 1
  done
}
race translatorPrimaryLanguage a & first=$!
race translatorSecondaryLanguage b & second=$!
wait "$first" || fail "the first writer failed"
wait "$second" || fail "the second writer failed"
[[ ! -s $ORVANTIS_DESKTOP_DIR/race-a.err && ! -s $ORVANTIS_DESKTOP_DIR/race-b.err ]] ||
  fail "a writer complained: $(cat "$ORVANTIS_DESKTOP_DIR"/race-*.err)"

check_values() {
  [[ $(cli settings get translatorPrimaryLanguage) == '"a200"' ]] || fail "first writer's key lost ($1)"
  [[ $(cli settings get translatorSecondaryLanguage) == '"b200"' ]] || fail "second writer's key lost ($1)"
  [[ $(cli settings get switchDelayMs) == 250 ]] || fail "the earlier key was lost ($1)"
  compgen -G "$prefs_dir/preferences.plist.corrupt-*" >/dev/null && fail "a damaged file was set aside ($1)"
  compgen -G "$prefs_dir/preferences.plist.tmp-*" >/dev/null && fail "a temporary file was left ($1)"
  return 0
}
check_values "after the race"
process_running "$APP_PID" || fail "the program ended during the race"

kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
check_values "after the program ended"
note "PASS"
