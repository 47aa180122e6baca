#!/usr/bin/env python3
"""Reads the sync files that sync_file_writer wrote with Python's own parsers."""
import json
import plistlib
import re
import subprocess
import sys
import tempfile
from pathlib import Path

KEYS = """hotkey switchDelayMs layoutSwitchEnabled translationEnabled translationHotkey
directTranslationHotkey settingsLanguage clipboardHistoryEnabled clipboardHistoryHotkey clipboardHistorySize
clipboardStoreNonText clipboardPersistEnabled clipboardIgnoredApps pomodoroEnabled pomodoroHotkey
workDurationMinutes breakDurationMinutes longBreakDurationMinutes pomodoroToggleDND passwordEnabled
passwordHotkey passwordMode passwordLength passwordIncludeUppercase passwordIncludeLowercase
passwordIncludeDigits passwordIncludeSymbols passwordClipboardClearSec snippetExpanderEnabled
snippetExpanderHotkey snippetExpanderEntries translatorPrimaryLanguage translatorSecondaryLanguage
textTransformerEnabled textTransformerHotkey hotkeyOverlayHotkey keyboardLockHotkey keyboardLockAutoUnlockMin
reverseTrackpadScroll reverseMouseScroll reverseMagicMouseScroll menuBarHiderEnabled
menuBarHiderAutoCollapseSec menuBarHiderHotkey caffeineHotkey caffeineDefaultDurationMin caffeineEnabled
caffeineActiveApps caffeineLidClose caffeineLidCloseAlways keyboardLockEnabled finderCutEnabled""".split()
PREFIX = "MOLVEX.Orvantis."


def fail(message):
    print("FAIL: " + message)
    sys.exit(1)


def main():
    assert len(KEYS) == 52
    with tempfile.TemporaryDirectory() as tmp:
        subprocess.run([sys.argv[1], tmp], check=True)
        folder = Path(tmp) / "home" / "Sync" / "Orvantis"
        raw = (folder / "settings.json").read_bytes()
        if not raw.startswith(b"bplist00"):
            fail("settings.json is not a binary property list")
        root = plistlib.loads(raw, fmt=plistlib.FMT_BINARY)
        if list(root.keys()) != ["version", "writtenAt", "values"]:
            fail("root keys are %r" % list(root.keys()))
        if root["version"] != 1 or type(root["version"]) is not int:
            fail("version is %r" % root["version"])
        if not re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", root["writtenAt"]):
            fail("writtenAt is %r" % root["writtenAt"])
        values = root["values"]
        names = [k[len(PREFIX):] for k in values]
        if not all(k.startswith(PREFIX) for k in values) or any(n not in KEYS for n in names):
            fail("keys outside the list: %r" % [n for n in names if n not in KEYS])
        if names != [k for k in KEYS if k in names]:
            fail("keys out of order")
        for never in ("iCloudSyncSettingsEnabled", "iCloudSyncClipboardEnabled", "syncFolderPath"):
            if PREFIX + never in values:
                fail(never + " was synced")
        expect = {
            "switchDelayMs": (int, 180), "workDurationMinutes": (int, 45), "finderCutEnabled": (bool, True),
            "settingsLanguage": (str, "ru"), "clipboardIgnoredApps": (list, ["org.keepassxc.KeePassXC", "Терминал"]),
        }
        for name, (kind, value) in expect.items():
            got = values.get(PREFIX + name)
            if type(got) is not kind or got != value:
                fail("%s is %r" % (name, got))
        hotkey = values[PREFIX + "hotkey"]
        if type(hotkey) is not bytes or json.loads(hotkey) != {"keyCode": 49, "modifiers": 0x60000}:
            fail("hotkey is %r" % hotkey)
        snippets = values[PREFIX + "snippetExpanderEntries"]
        if type(snippets) is not bytes or json.loads(snippets)[0]["text"] != "Привет":
            fail("snippetExpanderEntries is %r" % snippets)

        clip_raw = (folder / "clipboard.json").read_bytes()
        clip = json.loads(clip_raw)
        if list(clip.keys()) != ["pinned", "unpinned"]:
            fail("clipboard keys are %r" % list(clip.keys()))
        if [i["text"] for i in clip["pinned"]] != ['pinned "quoted"/slash']:
            fail("pinned is %r" % clip["pinned"])
        if [i["text"] for i in clip["unpinned"]] != ["line one\nline two\tтаб"]:
            fail("unpinned is %r" % clip["unpinned"])
        if clip["unpinned"][0]["sourceBundleID"] != "org.gnome.Terminal" or "sourceBundleID" in clip["pinned"][0]:
            fail("sourceBundleID wrong")
        if b"\n" in clip_raw or b'": ' in clip_raw:
            fail("clipboard.json is not compact")
        if clip_raw != (Path(tmp) / "local-clipboard.json").read_bytes():
            fail("clipboard.json differs from the local snapshot of the same history")
    print("ok: settings.json and clipboard.json read back by plistlib and json")


main()
