#!/usr/bin/env bash
# convert_command_test.sh: `orvantis convert` reads the layouts of the running X session, so
# the phonetic Russian layout gives other letters than the fixed table; with one layout only it
# says that the fixed table was used.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up --no-tray
err=$ORVANTIS_DESKTOP_DIR/convert.err

expect_output() { # EXPECTED ARGS...
  local expected=$1 actual
  shift
  actual=$("$ORVANTIS_BIN" convert "$@" 2>"$err") || fail "convert $* exited $?: $(cat "$err")"
  [[ $actual == "$expected" ]] || fail "convert $*: expected '$expected', got '$actual'"
}

setxkbmap -layout us,ru -variant ,phonetic
expect_output "гхбдтн" ghbdtn
expect_output "гхбдтн" --table system ghbdtn
expect_output "привет" --table fixed ghbdtn
expect_output "Привет мир" --table fixed "Ghbdtn vbh"

setxkbmap -layout us,ru
expect_output "привет" ghbdtn
expect_output "hello" "руддщ"

setxkbmap -layout us
expect_output "привет" ghbdtn
grep -q "fixed table was used" "$err" || fail "no word that the fixed table was used: $(cat "$err")"

# Without a display, asking for the session's layouts fails and says so.
status=0
DISPLAY=:999 "$ORVANTIS_BIN" convert --table system ghbdtn >/dev/null 2>"$err" || status=$?
[[ $status == 1 ]] || fail "expected exit 1 without a display, got $status"
grep -q -- "--table fixed" "$err" || fail "no hint at --table fixed: $(cat "$err")"
note "PASS"
