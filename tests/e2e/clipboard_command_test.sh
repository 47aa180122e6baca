#!/usr/bin/env bash
# clipboard_command_test.sh: `orvantis clipboard` against the running program over the session
# bus, and against the snapshot file once it has ended. Texts copied with xclip (Cyrillic, a
# megabyte, a text of blanks) and an image are listed within a second, newest first; --json
# parses; search filters; clear empties the history. A damaged snapshot leaves the program
# with an empty history and the file where it is, named by the command.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
snapshot=$XDG_DATA_HOME/orvantis/clipboard.json
work=$ORVANTIS_DESKTOP_DIR/clipboard-command
mkdir -p "$work"
"$ORVANTIS_BIN" settings set clipboardStoreNonText true >/dev/null || fail "could not turn non-text capture on"

start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "clipboard: the history answers on the session bus" || fail "the history is not on the bus"

copy() { printf '%s' "$1" | xclip -selection clipboard -i; }
listing() { "$ORVANTIS_BIN" clipboard list; }
# first_is PREVIEW: the first line of the listing is an unpinned entry with this preview.
first_is() { [[ $(listing | head -n 1) == "1"$'\t'"-"$'\t'"$1" ]]; }
json_check() { # PYTHON: runs PYTHON on the parsed --json listing, bound to `d`
  "$ORVANTIS_BIN" clipboard list --json | python3 -c "import json,sys; d=json.load(sys.stdin); $1"
}

[[ -z $(listing) ]] || fail "a fresh history is not empty: $(listing)"

copy "первый текст"
wait_until 1 first_is "первый текст" || fail "the Cyrillic copy is not listed: $(listing)"
copy "second text"
wait_until 1 first_is "second text" || fail "the second copy is not listed: $(listing)"

# A megabyte whose first line is the preview.
{ printf 'big text head\n'; head -c 1048576 /dev/zero | tr '\0' 'x'; } >"$work/big.txt"
xclip -selection clipboard -i "$work/big.txt"
wait_until 1 first_is "big text head" || fail "the megabyte text is not listed: $(listing | cut -c 1-80)"
json_check "assert len(d[0]['text']) == 1048590, len(d[0]['text'])" || fail "the megabyte text did not come whole"

# A text of blanks is its own preview, and stays on its line.
copy "   "
wait_until 1 first_is "   " || fail "the text of blanks is not listed: $(listing | cat -A | head -n 3)"

# An image: in the running program's memory only.
printf '\x89PNG\r\n\x1a\nnot really an image' | xclip -selection clipboard -t image/png -i
image_first() { json_check "assert d[0]['isText'] is False and 'text' not in d[0]" 2>/dev/null; }
wait_until 1 image_first || fail "the image is not listed: $(listing | head -n 2)"

[[ $(listing | wc -l) == 5 ]] || fail "five entries expected: $(listing | cut -c 1-60)"
order=$(listing | cut -f 3 | tail -n 4 | tr '\n' '|')
[[ $order == "   |big text head|second text|первый текст|" ]] || fail "wrong order: $order"
json_check "assert [e['isPinned'] for e in d] == [False]*5 and all(len(e['id']) == 36 and e['id'] == e['id'].upper() for e in d)" \
  || fail "the --json listing is not as it should be"
json_check "assert d[4]['text'] == 'первый текст' and d[4]['preview'] == 'первый текст'" || fail "the Cyrillic text changed"

# Secrets, marked either way by their owner, are never taken in.
ORVANTIS_TEXT_TARGET=${ORVANTIS_TEXT_TARGET:-$REPO_DIR/build/tests/e2e/orvantis_text_target}
for marker in concealed hint; do
  "$ORVANTIS_TEXT_TARGET" --title "Secret $marker" --copy-secret "hunter2-$marker" --marker "$marker" 2>/dev/null &
  secret_pid=$!
  APP_PIDS+=("$secret_pid")
  timeout 10 xdotool search --sync --onlyvisible --pid "$secret_pid" >/dev/null || fail "the secret's owner did not start"
  [[ $(xclip -selection clipboard -o) == "hunter2-$marker" ]] || fail "the secret is not on the clipboard"
  sleep 1.2  # two polls
  listing | grep -q "hunter2" && fail "a secret marked by $marker was taken in"
  kill -TERM "$secret_pid"
done
[[ $(listing | wc -l) == 5 ]] || fail "the secrets changed the listing: $(listing | cut -c 1-60)"

# A copied file: its name with 📄, in memory only.
printf 'file:///tmp/Quarterly%%20report.pdf\r\n' | xclip -selection clipboard -t text/uri-list -i
wait_until 1 first_is "📄 Quarterly report.pdf" || fail "the file is not listed: $(listing | head -n 2)"
sleep 0.5
grep -q "Quarterly" "$snapshot" && fail "the file reached the snapshot"

# Search: the popup's filter, through the whole text and whatever the case.
[[ $("$ORVANTIS_BIN" clipboard search "ПЕРВЫЙ") == "1"$'\t'"-"$'\t'"первый текст" ]] || fail "search for ПЕРВЫЙ"
[[ $("$ORVANTIS_BIN" clipboard search "xxxxxxxx" | cut -f 3) == "big text head" ]] || fail "search beyond the preview"
[[ -z $("$ORVANTIS_BIN" clipboard search "nowhere to be found") ]] || fail "search for an absent text"
"$ORVANTIS_BIN" clipboard search --json "second" | python3 -c \
  "import json,sys; d=json.load(sys.stdin); assert [e['text'] for e in d] == ['second text']" || fail "search --json"

# Clear: everything goes, at once.
"$ORVANTIS_BIN" clipboard clear || fail "clear failed"
[[ -z $(listing) ]] || fail "the history is not empty after clear: $(listing | cut -c 1-60)"
log_has "clipboard: history cleared from the command line" || fail "the clear is not in the log"

# What is copied next outlives the program, in the file.
copy "after the clear"
wait_until 1 first_is "after the clear" || fail "a copy after the clear is not listed"
copy "последний"
wait_until 1 first_is "последний" || fail "the last copy is not listed"
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
[[ $(listing) == "1"$'\t'"-"$'\t'"последний"$'\n'"2"$'\t'"-"$'\t'"after the clear" ]] \
  || fail "the file does not list the last copies: $(listing)"
json_check "assert [e['text'] for e in d] == ['последний', 'after the clear']" || fail "the file's --json listing"
[[ $("$ORVANTIS_BIN" clipboard search "AFTER" | cut -f 3) == "after the clear" ]] || fail "search in the file"

# A restart brings the history back into the program.
start_orvantis restarted
wait_for_tray_icon "$APP_PID" 15
answers_from_program() { [[ $(log_text | grep -c "clipboard: the history answers on the session bus") -ge 2 ]]; }
wait_until 10 answers_from_program || fail "the restarted program is not on the bus"
[[ $(listing) == "1"$'\t'"-"$'\t'"последний"$'\n'"2"$'\t'"-"$'\t'"after the clear" ]] \
  || fail "the restarted program does not have the history: $(listing)"
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10

for secret in "первый текст" "second text" "big text head" "after the clear" "последний" hunter2; do
  log_text | grep -qF -- "$secret" && fail "the log shows clipboard text: $secret"
done

# A damaged snapshot: the program starts with an empty history and leaves the file alone.
printf '{"pinned":[{"id":' >"$snapshot"
start_orvantis second
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "loadSnapshot failed at $snapshot" || fail "no error line for the damaged file"
# The file alone would fail the command: an answer is the running program's.
wait_until 10 listing >/dev/null 2>&1 || fail "the running program does not answer"
[[ -z $(listing) ]] || fail "the damaged file gave entries: $(listing)"
[[ $(cat "$snapshot") == '{"pinned":[{"id":' ]] || fail "the damaged file was changed"
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
status=0
"$ORVANTIS_BIN" clipboard list >"$work/out" 2>"$work/err" || status=$?
[[ $status == 1 ]] || fail "list of a damaged file: exit $status"
grep -qF -- "$snapshot" "$work/err" || fail "the message does not name the file: $(cat "$work/err")"
[[ ! -s $work/out ]] || fail "list of a damaged file printed entries"
[[ $(cat "$snapshot") == '{"pinned":[{"id":' ]] || fail "the damaged file was changed by the command"
note "PASS"
