#!/usr/bin/env bash
# clipboard_secret_owner_test.sh: a secret's text never leaves its owner. Another client
# (tools: orvantis_selection_owner) owns the clipboard with a text marked secret, either way,
# and writes down every target it is asked for: the program asks for the list of targets and
# for the markers, and never for a text target, neither while the secret is new nor when the
# clipboard popup opens over it. Nothing of the secret enters the history.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

ORVANTIS_SELECTION_OWNER=${ORVANTIS_SELECTION_OWNER:-$REPO_DIR/build/tests/e2e/orvantis_selection_owner}
[[ -x $ORVANTIS_SELECTION_OWNER ]] || fail "no $ORVANTIS_SELECTION_OWNER (build orvantis_selection_owner)"

desktop_up
start_orvantis first
wait_for_tray_icon "$APP_PID" 15
wait_until 10 log_has "clipboard: the history answers on the session bus" || fail "the history is not on the bus"

listing() { "$ORVANTIS_BIN" clipboard list; }
popup_up() { menu_window "$APP_PID" >/dev/null; }
popup_gone() { ! popup_up; }
printf '%s' "an ordinary copy" | xclip -selection clipboard -i
wait_until 2 eval '[[ $(listing | cut -f 3) == "an ordinary copy" ]]' || fail "the ordinary copy is not listed"

for marker in concealed hint; do
  requests=$ORVANTIS_DESKTOP_DIR/requests-$marker
  : >"$requests"
  out=$ORVANTIS_DESKTOP_DIR/owner-$marker.out
  "$ORVANTIS_SELECTION_OWNER" --text "hunter2-$marker" --marker "$marker" --log "$requests" >"$out" 2>&1 &
  owner_pid=$!
  APP_PIDS+=("$owner_pid")
  wait_until 5 grep -q owned "$out" || fail "the secret's owner did not take the clipboard"
  # Past a safety-net poll as well.
  sleep 5.5
  # The clipboard popup opens over the secret, and closes.
  xdotool key super+shift+v
  wait_until 3 popup_up || fail "$marker: no popup after the hotkey"
  sleep 0.5
  xdotool key Escape
  wait_until 3 popup_gone || fail "$marker: the popup stayed open"
  sleep 0.5
  note "$marker: asked for $(cut -f 1 "$requests" | tr '\n' ' ')(by: $(cut -f 2 "$requests" | sort -u | tr '\n' ' '))"
  [[ -s $requests ]] || fail "$marker: the program never looked at the secret's targets"
  asked_for_text=$(cut -f 1 "$requests" | grep -vxF -e TARGETS -e org.nspasteboard.ConcealedType \
    -e x-kde-passwordManagerHint || true)
  [[ -z $asked_for_text ]] || fail "$marker: the owner was asked for $(echo "$asked_for_text" | tr '\n' ' ')"
  listing | grep -q hunter2 && fail "$marker: the secret was taken in"
  kill -TERM "$owner_pid"
  wait_exit "$owner_pid" 5
done
[[ $(listing | cut -f 3) == "an ordinary copy" ]] || fail "the secrets changed the listing: $(listing)"
log_text | grep -qF -- "hunter2" && fail "the log shows the secret"
kill -TERM "$APP_PID"
wait_exit "$APP_PID" 10
[[ $EXIT_STATUS == 0 ]] || fail "exit status $EXIT_STATUS"
note "PASS"
