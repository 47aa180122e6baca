#!/usr/bin/env bash
# Two computers sharing one synced folder: two instances of the program, each on its own
# virtual desktop (X display, session bus, XDG folders) with its own home, whose ~/Sync both
# lead to one folder. A setting changed on A reaches B within ~7 s and B does not write it back
# (the file's date stays); the same from B to A; a text copied on A appears in B's history with
# clipboard sync on; conflict copies dropped into the folder change nothing.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

desktop_up
shared=$ORVANTIS_DESKTOP_DIR/shared
mkdir -p "$shared"
home_a=$ORVANTIS_DESKTOP_DIR/home-a
mkdir -p "$home_a"
ln -s "$shared" "$home_a/Sync"
export HOME=$home_a

# The second desktop, B, torn down with the first.
B_ENV=$(mktemp "${TMPDIR:-/tmp}/orvantis-e2e-env-b.XXXXXX")
"$E2E_DIR/virtual_desktop.sh" start --env-file "$B_ENV" --no-a11y || fail "the second virtual desktop did not start"
B_DIR=$(sed -n "s/^export ORVANTIS_DESKTOP_DIR='\(.*\)'$/\1/p" "$B_ENV")
cleanup_both() {
  local status=$?
  [[ -n ${B_DIR:-} ]] && "$E2E_DIR/virtual_desktop.sh" stop "$B_DIR" >/dev/null 2>&1
  rm -f "$B_ENV"
  (exit "$status")
  e2e_cleanup
}
trap cleanup_both EXIT
home_b=$B_DIR/home-b
mkdir -p "$home_b"
ln -s "$shared" "$home_b/Sync"
note "second virtual desktop in $B_DIR"

# on_b COMMAND...: runs COMMAND in B's session.
on_b() (
  # shellcheck disable=SC1090
  source "$B_ENV"
  export HOME=$home_b
  "$@"
)
b_log_has() { grep -qF -- "$1" "$B_DIR"/state/orvantis/logs/orvantis-*.log 2>/dev/null; }
count_in_logs() { cat "$1"/orvantis/logs/orvantis-*.log 2>/dev/null | grep -cF -- "$2"; }

settings_file=$shared/Orvantis/settings.json
clipboard_file=$shared/Orvantis/clipboard.json

for side in a b; do
  run=("$ORVANTIS_BIN")
  [[ $side == b ]] && run=(on_b "$ORVANTIS_BIN")
  "${run[@]}" settings set hasCompletedOnboarding true >/dev/null || fail "cannot prepare $side"
  "${run[@]}" settings set iCloudSyncClipboardEnabled true >/dev/null || fail "cannot turn clipboard sync on ($side)"
done

start_orvantis a
on_b "$ORVANTIS_BIN" >"$B_DIR/app-b.out" 2>"$B_DIR/app-b.err" &
B_PID=$!
APP_PIDS+=("$B_PID")
wait_until 15 log_has "iCloud: start: settingsSync=true, clipboardSync=true, syncFolderAvailable=true" ||
  fail "A did not start its sync"
wait_until 15 b_log_has "iCloud: start: settingsSync=true, clipboardSync=true, syncFolderAvailable=true" ||
  fail "B did not start its sync"
log_has "init: synced folder found, target=$home_a/Sync/Orvantis" || fail "A did not name its folder"
wait_until 15 on_b "$ORVANTIS_BIN" clipboard list >/dev/null 2>&1 || fail "B's history is not on its bus"

# A → B.
started=$(date +%s%N)
"$ORVANTIS_BIN" settings set workDurationMinutes 50 >/dev/null || fail "cannot change a setting on A"
b_has_work() { [[ $(on_b "$ORVANTIS_BIN" settings get workDurationMinutes) == 50 ]]; }
wait_until 9 b_has_work || fail "the setting did not reach B: $(on_b "$ORVANTIS_BIN" settings get workDurationMinutes)"
note "A → B: $((($(date +%s%N) - started) / 1000000)) ms"
[[ -f $settings_file ]] || fail "no settings file in the shared folder"
python3 -c "import plistlib,sys; r=plistlib.load(open(sys.argv[1],'rb')); assert r['values']['MOLVEX.Orvantis.workDurationMinutes']==50" \
  "$settings_file" || fail "the settings file does not hold the new value"
mtime=$(stat -c %Y.%N "$settings_file")
sleep 8
[[ $(stat -c %Y.%N "$settings_file") == "$mtime" ]] || fail "B wrote the setting back"
((${#mtime} > 0 && $(count_in_logs "$B_DIR/state" "push settings: wrote") == 0)) || fail "B pushed after a pull"

# B → A.
started=$(date +%s%N)
on_b "$ORVANTIS_BIN" settings set breakDurationMinutes 7 >/dev/null || fail "cannot change a setting on B"
a_has_break() { [[ $("$ORVANTIS_BIN" settings get breakDurationMinutes) == 7 ]]; }
wait_until 9 a_has_break || fail "the setting did not reach A: $("$ORVANTIS_BIN" settings get breakDurationMinutes)"
note "B → A: $((($(date +%s%N) - started) / 1000000)) ms"
pushes_a=$(count_in_logs "$XDG_STATE_HOME" "push settings: wrote")
mtime=$(stat -c %Y.%N "$settings_file")
sleep 8
[[ $(stat -c %Y.%N "$settings_file") == "$mtime" ]] || fail "A wrote the setting back"
(($(count_in_logs "$XDG_STATE_HOME" "push settings: wrote") == pushes_a)) || fail "A pushed after a pull"
[[ $(on_b "$ORVANTIS_BIN" settings get workDurationMinutes) == 50 ]] || fail "B lost A's earlier value"

# A copied text reaches B's history.
started=$(date +%s%N)
printf 'synced through the folder' | xclip -selection clipboard -i
b_has_text() { on_b "$ORVANTIS_BIN" clipboard list | grep -qF "synced through the folder"; }
wait_until 9 b_has_text || fail "the copied text did not reach B: $(on_b "$ORVANTIS_BIN" clipboard list)"
note "clipboard A → B: $((($(date +%s%N) - started) / 1000000)) ms"
python3 -c "import json,sys; d=json.load(open(sys.argv[1])); assert d['unpinned'][0]['text']=='synced through the folder'" \
  "$clipboard_file" || fail "the clipboard file does not hold the copied text"

# Conflict copies left by sync clients change nothing on either side.
python3 - "$shared/Orvantis" <<'PY'
import json, plistlib, sys, uuid
folder = sys.argv[1]
values = {"MOLVEX.Orvantis.workDurationMinutes": 90, "MOLVEX.Orvantis.breakDurationMinutes": 30}
for name in ("settings (conflicted copy).json", "settings.sync-conflict-20261123-101010-ABCDEFG.json"):
    with open(f"{folder}/{name}", "wb") as f:
        plistlib.dump({"version": 1, "writtenAt": "2026-11-23T10:10:10Z", "values": values}, f, fmt=plistlib.FMT_BINARY)
entry = {"id": str(uuid.uuid4()).upper(), "timestamp": 815616000, "text": "from a conflict copy", "isPinned": False}
for name in ("clipboard (conflicted copy).json", "clipboard.sync-conflict-20261123-101010-ABCDEFG.json"):
    with open(f"{folder}/{name}", "w") as f:
        json.dump({"pinned": [], "unpinned": [entry]}, f, separators=(",", ":"))
PY
settings_before=$(md5sum <"$settings_file")
clipboard_before=$(md5sum <"$clipboard_file")
sleep 11
[[ $("$ORVANTIS_BIN" settings get workDurationMinutes) == 50 ]] || fail "A took a conflict copy"
[[ $(on_b "$ORVANTIS_BIN" settings get breakDurationMinutes) == 7 ]] || fail "B took a conflict copy"
"$ORVANTIS_BIN" clipboard list | grep -qF "from a conflict copy" && fail "A listed a conflict copy's entry"
on_b "$ORVANTIS_BIN" clipboard list | grep -qF "from a conflict copy" && fail "B listed a conflict copy's entry"
[[ $(md5sum <"$settings_file") == "$settings_before" && $(md5sum <"$clipboard_file") == "$clipboard_before" ]] ||
  fail "a conflict copy made a program write"
process_running "$APP_PID" && process_running "$B_PID" || fail "a program ended"

kill "$APP_PID" "$B_PID"
wait_exit "$APP_PID" 10
wait_exit "$B_PID" 10
note "sync: settings both ways and the clipboard from A to B through one folder, no echo, conflict copies ignored"
