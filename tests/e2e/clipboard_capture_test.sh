#!/usr/bin/env bash
# clipboard_capture_test.sh: texts another program copies (xclip) are captured within a second
# and saved to the snapshot file, newest first; a copy made just before the program is told to
# quit is on disk when it has ended; an image is not taken in while non-text capture is off.
# (Secrets are the unit tests' and the clipboard commands' test's.)
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
snapshot=$XDG_DATA_HOME/orvantis/clipboard.json
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "launch: Orvantis " || fail "no launch banner"

copy() { printf '%s' "$1" | xclip -selection clipboard -i "${@:2}"; }
saved() { [[ -f $snapshot ]] && grep -qF -- "$1" "$snapshot"; }

copy "первый текст"
wait_until 2 saved "первый текст" || fail "the first copy was not saved: $(cat "$snapshot" 2>/dev/null)"
copy "second text"
wait_until 2 saved "second text" || fail "the second copy was not saved"
# The newest first.
order=$(grep -o 'second text\|первый текст' "$snapshot" | tr '\n' '|')
[[ $order == "second text|первый текст|" ]] || fail "wrong order: $order"

# With non-text capture off (the default) an image is not taken in.
printf '\x89PNG\r\n\x1a\nnot really an image' | xclip -selection clipboard -t image/png -i
sleep 1.2  # well past its notice and two polls
[[ $("$ORVANTIS_BIN" clipboard list | wc -l) == 2 ]] || fail "the image was taken in: $("$ORVANTIS_BIN" clipboard list)"

# A copy just before quitting is saved by the end sequence. The copy is taken up as soon as the
# X server tells of it, and its save waits 0.2 s: the quit comes 0.05 s after the copy, while
# the save is still waiting.
copy "copied at the last moment"
sleep 0.05
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
saved "copied at the last moment" || fail "the last copy was lost at quit: $(cat "$snapshot")"
for secret in "первый текст" "second text" "copied at the last moment"; do
  log_text | grep -qF -- "$secret" && fail "the log shows clipboard text: $secret"
done
note "PASS"
