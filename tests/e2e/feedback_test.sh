#!/usr/bin/env bash
# The feedback window from outside, in English and in Russian: the About page's Send Feedback…
# button opens it; Ctrl+Return with an empty message shows the empty-message sheet; with no
# mail client (xdg-email and xdg-open both failing) the no-mail-client sheet shows and the text
# stays; with xdg-email working the window closes and xdg-email got the subject, the body, the
# recipient and an attachment that existed at the call and holds no clipboard text. The
# failing xdg-open got the mailto: link. In English the attachment is gone 30 s later.
# Pictures: feedback-window-<lang>, feedback-empty-<lang>, feedback-unavailable-<lang>.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
stubs=$ORVANTIS_DESKTOP_DIR/stubs
calls=$ORVANTIS_DESKTOP_DIR/mail-calls
mkdir -p "$stubs" "$calls"
# Stand-ins for xdg-utils, first on PATH: each records its arguments one per line (the body's
# own line breaks kept, so a record ends with a line "--end--"), copies an attachment it is
# given, and exits with the status in $calls/status (1 when absent).
for tool in xdg-email xdg-open; do
  cat >"$stubs/$tool" <<STUB
#!/usr/bin/env bash
n=\$(ls "$calls" | grep -c "^$tool-" || true)
out="$calls/$tool-\$n"
for a in "\$@"; do printf '%s\n' "\$a"; done >"\$out.args"
echo "--end--" >>"\$out.args"
prev=""
for a in "\$@"; do
  if [[ \$prev == --attach ]]; then
    if [[ -f \$a ]]; then cp "\$a" "\$out.attachment"; else echo missing >"\$out.attachment-missing"; fi
  fi
  prev=\$a
done
exit "\$(cat "$calls/status" 2>/dev/null || echo 1)"
STUB
  chmod +x "$stubs/$tool"
done
export PATH=$stubs:$PATH

secret="clipboard-secret-$RANDOM$RANDOM"

feedback_window() {
  local window
  for window in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null); do
    is_top_level "$window" || continue
    window_geometry "$window" || continue
    ((GEOMETRY_W == 520 && GEOMETRY_H == 460)) || continue
    echo "$window"
    return 0
  done
  return 1
}
no_feedback_window() { ! feedback_window >/dev/null; }
# A sheet: a visible window of the program that is neither the settings nor the feedback window.
sheet_window() {
  local window
  for window in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null); do
    is_top_level "$window" || continue
    window_geometry "$window" || continue
    ((GEOMETRY_W == 760 || GEOMETRY_W == 520 || GEOMETRY_W < 100)) && continue
    echo "$window"
    return 0
  done
  return 1
}
no_sheet() { ! sheet_window >/dev/null; }

run_language() {
  local lang=$1 window feedback sheet args attachment
  rm -f "$calls"/*
  "$ORVANTIS_BIN" settings set settingsLanguage "\"$lang\"" >/dev/null
  start_orvantis "feedback-$lang"
  wait_until 15 log_has "keyboard: watching the keyboard" || true
  # Something private on the clipboard, which the attachment must not carry.
  printf '%s' "$secret" | xclip -selection clipboard
  wait_until 15 "$ORVANTIS_BIN" show settings 2>/dev/null || fail "orvantis show settings failed ($lang)"
  window=$(wait_until 10 settings_window >/dev/null && settings_window) || fail "no settings window ($lang)"
  xdotool windowmove "$window" 260 100
  focus_window "$window" || fail "the settings window cannot take the focus"
  for _ in 1 2 3 4 5 6 7 8 9; do xdotool key ctrl+Next; done  # the About page
  sleep 0.6
  window_geometry "$window"
  # Send Feedback…: the button across the Feedback card, under the header.
  xdotool mousemove $((GEOMETRY_X + 372)) $((GEOMETRY_Y + 207)) sleep 0.1 click 1
  wait_until 10 log_has "feedback: window opened" || fail "Send Feedback… opened nothing ($lang)"
  feedback=$(wait_until 10 feedback_window >/dev/null && feedback_window) || fail "no feedback window ($lang)"
  xdotool windowmove "$feedback" 380 170
  focus_window "$feedback" || fail "the feedback window cannot take the focus"
  sleep 0.5
  note "feedback window ($lang): $(screenshot "feedback-window-$lang")"

  # An empty message: the empty-message sheet.
  xdotool key ctrl+Return
  sheet=$(wait_until 5 sheet_window >/dev/null && sheet_window) || fail "no empty-message sheet ($lang)"
  sleep 0.4
  note "empty-message sheet ($lang): $(screenshot "feedback-empty-$lang")"
  [[ -z $(ls "$calls") ]] || fail "an empty message reached a mail tool ($lang)"
  focus_window "$sheet" || true
  xdotool key Return
  wait_until 5 no_sheet || fail "OK did not close the empty-message sheet ($lang)"

  # No mail client: both tools fail; the sheet shows and the text stays.
  focus_window "$feedback" || fail "the feedback window cannot take the focus again"
  xdotool type --delay 15 "Hello & welcome"
  xdotool key Return
  xdotool type --delay 15 "second line"
  echo 1 >"$calls/status"
  xdotool key ctrl+Return
  sheet=$(wait_until 15 sheet_window >/dev/null && sheet_window) || fail "no no-mail-client sheet ($lang)"
  sleep 0.4
  note "no-mail-client sheet ($lang): $(screenshot "feedback-unavailable-$lang")"
  [[ -f $calls/xdg-email-0.args ]] || fail "xdg-email was not tried ($lang)"
  [[ -f $calls/xdg-open-0.args ]] || fail "xdg-open was not tried after xdg-email failed ($lang)"
  head -n1 "$calls/xdg-open-0.args" | grep -qx 'mailto:feedback@orvantis.org?subject=[^&]*&body=Hello%20%26%20welcome%0D%0Asecond%20line' ||
    fail "xdg-open got $(head -n1 "$calls/xdg-open-0.args") ($lang)"
  attachment=$(awk 'p {print; exit} $0 == "--attach" {p = 1}' "$calls/xdg-email-0.args")
  [[ -n $attachment && ! -e $attachment ]] || fail "the attachment stayed after the fallback: $attachment ($lang)"
  focus_window "$sheet" || true
  xdotool key Return
  wait_until 5 no_sheet || fail "OK did not close the no-mail-client sheet ($lang)"
  feedback_window >/dev/null || fail "the feedback window closed after a failed send ($lang)"

  # A mail client: xdg-email succeeds and the window closes.
  rm -f "$calls"/xdg-*
  echo 0 >"$calls/status"
  focus_window "$feedback" || fail "the feedback window cannot take the focus for the send"
  xdotool key ctrl+Return
  wait_until 15 no_feedback_window || fail "the feedback window stayed after a successful send ($lang)"
  args=$calls/xdg-email-0.args
  [[ -f $args ]] || fail "xdg-email was not called ($lang)"
  local subject
  subject=$([[ $lang == ru ]] && echo "Отзыв об Orvantis" || echo "Orvantis feedback")
  diff <(sed -n '1,6p' "$args") <(printf '%s\n' --subject "$subject" --body "Hello & welcome" "second line" --attach) ||
    fail "xdg-email's arguments ($lang): $(cat "$args")"
  attachment=$(sed -n 7p "$args")
  [[ $(sed -n 8p "$args") == feedback@orvantis.org && $(sed -n 9p "$args") == --end-- ]] ||
    fail "the recipient is not the last argument ($lang): $(cat "$args")"
  [[ $attachment == */Orvantis-feedback-*.txt ]] || fail "the attachment is called $attachment ($lang)"
  [[ -f $calls/xdg-email-0.attachment ]] || fail "the attachment did not exist when xdg-email ran ($lang)"
  head -n1 "$calls/xdg-email-0.attachment" | grep -qx "Orvantis feedback diagnostics" || fail "the attachment's head"
  grep -q "^UI language:   $lang$" "$calls/xdg-email-0.attachment" || fail "the attachment's language ($lang)"
  grep -q "^------- LOG (last 3 days, from " "$calls/xdg-email-0.attachment" || fail "the attachment has no log"
  grep -q "feedback: window opened" "$calls/xdg-email-0.attachment" || fail "the attachment's log is not the program's"
  grep -qF "$secret" "$calls/xdg-email-0.attachment" && fail "the attachment carries the clipboard's text"
  log_text | grep -qF "$secret" && fail "the log carries the clipboard's text"
  log_text | grep -q "welcome" && fail "the log carries the message"
  [[ -f $attachment ]] || fail "the attachment went before its 30 s ($lang)"
  if [[ $lang == en ]]; then
    wait_until 40 test ! -e "$attachment" || fail "the attachment is still there after 30 s"
    note "the attachment went 30 s after the composer opened"
  fi
  kill "$APP_PID"
  wait_exit "$APP_PID" 10
}

run_language en
run_language ru
note "feedback: both sheets and the window in both languages; xdg-email, then xdg-open"
