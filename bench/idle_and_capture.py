#!/usr/bin/env python3
"""One run of bench/idle_and_capture.sh, on a virtual desktop that is already up (DISPLAY, the
session bus and the XDG folders come from the environment), and the summary of several runs.

    idle_and_capture.py run PROGRAM OUT.json      start PROGRAM, measure, stop it
    idle_and_capture.py summary OUT.json...       the table of the runs, medians last

Knobs (environment): SETTLE_S (5), IDLE_S (60), COPIES (50), GAP_MS (300), ORVANTIS_CLI (the
command line that reads the history; PROGRAM by default; empty: the history is not read),
QUIET_S (120: how long to wait, after settling, for a moment when no other Qt program runs,
so that idle PSS is taken alone; 0 takes it at once).
"""

import json
import os
import re
import secrets
import signal
import statistics
import subprocess
import sys
import threading
import time

SETTLE_S = float(os.environ.get("SETTLE_S", "5"))
IDLE_S = float(os.environ.get("IDLE_S", "60"))
COPIES = int(os.environ.get("COPIES", "50"))
GAP_MS = float(os.environ.get("GAP_MS", "300"))
QUIET_S = float(os.environ.get("QUIET_S", "120"))
DOCK_LIMIT_S = 20.0


def now():
    return time.monotonic()


def process_tree(root):
    """ROOT and every descendant, by the parent field of /proc/PID/stat."""
    children = {}
    for entry in os.listdir("/proc"):
        if not entry.isdigit():
            continue
        try:
            with open(f"/proc/{entry}/stat") as f:
                stat = f.read()
        except OSError:
            continue
        parent = int(stat.rsplit(")", 1)[1].split()[1])
        children.setdefault(parent, []).append(int(entry))
    tree, queue = [], [root]
    while queue:
        pid = queue.pop()
        tree.append(pid)
        queue.extend(children.get(pid, []))
    return tree


def threads(pids):
    """{(pid, tid): (name, cpu_ns, runs)} from /proc/PID/task/*/schedstat of every live thread."""
    found = {}
    for pid in pids:
        try:
            tids = os.listdir(f"/proc/{pid}/task")
        except OSError:
            continue
        for tid in tids:
            try:
                with open(f"/proc/{pid}/task/{tid}/schedstat") as f:
                    cpu, _, runs = f.read().split()
                with open(f"/proc/{pid}/task/{tid}/comm") as f:
                    name = f.read().strip()
            except (OSError, ValueError):
                continue
            found[(pid, int(tid))] = (name, int(cpu), int(runs))
    return found


def pss_kb(pids):
    total = 0
    for pid in pids:
        try:
            with open(f"/proc/{pid}/smaps_rollup") as f:
                match = re.search(r"^Pss:\s+(\d+) kB", f.read(), re.M)
        except OSError:
            continue
        if match:
            total += int(match.group(1))
    return total


def pss_alone_kb(pids):
    """PSS as it would be without other Qt programs running: the pages of a file that only Qt
    programs map (Qt, its plugins and fonts) count whole, as they would with this program
    alone; files that other programs map too (libc, glib) keep their share. Another copy of a
    Qt program on a busy machine would otherwise halve the figure."""
    own = set(pids)
    shared_with_others = set()
    for entry in os.listdir("/proc"):
        if not entry.isdigit() or int(entry) in own:
            continue
        try:
            with open(f"/proc/{entry}/maps") as f:
                maps = f.read()
        except OSError:
            continue
        if "libQt6Core.so" in maps:
            continue
        for line in maps.splitlines():
            parts = line.split(None, 5)
            if len(parts) == 6 and parts[5].startswith("/"):
                shared_with_others.add(parts[5])
    total = 0
    for pid in pids:
        try:
            with open(f"/proc/{pid}/smaps") as f:
                lines = f.read().splitlines()
        except OSError:
            continue
        path, rss, pss = None, 0, 0
        for line in lines + ["00-00 end"]:
            if re.match(r"^[0-9a-f]+-[0-9a-f]+ ", line):
                if path is not None:
                    total += rss if (path.startswith("/") and path not in shared_with_others) else pss
                parts = line.split(None, 5)
                path = parts[5].strip() if len(parts) == 6 else ""
                rss = pss = 0
            elif line.startswith("Rss:"):
                rss = int(line.split()[1])
            elif line.startswith("Pss:"):
                pss = int(line.split()[1])
    return total


def others_mapping(library, own):
    """How many processes outside `own` map `library`: they share its pages, and lower PSS."""
    count = 0
    for entry in os.listdir("/proc"):
        if not entry.isdigit() or int(entry) in own:
            continue
        try:
            with open(f"/proc/{entry}/maps") as f:
                if library in f.read():
                    count += 1
        except OSError:
            continue
    return count


def tray_panel():
    out = subprocess.run(["xdotool", "search", "--classname", "^panel$"], capture_output=True, text=True).stdout
    ids = out.split()
    return int(ids[0]) if ids else None


def docked_icon(panel):
    """A window inside the tray's panel that belongs to another X client: a docked icon. The
    client of a window is in the bits above the resource-id mask (21 bits on Xvfb)."""
    out = subprocess.run(["xwininfo", "-tree", "-id", str(panel)], capture_output=True, text=True).stdout
    for match in re.finditer(r"^\s+(0x[0-9a-f]+)", out, re.M):
        window = int(match.group(1), 16)
        if (window >> 21) != (panel >> 21):
            return window
    return None


class Copy:
    """One `xclip -verbose` owner of the clipboard: when it owned the selection and when it
    handed over its data."""

    def __init__(self, text):
        self.text = text
        self.started = now()
        self.owned = None
        self.fetches = []
        self.process = subprocess.Popen(["xclip", "-selection", "clipboard", "-verbose", "-i"],
                                        stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.PIPE, text=True)
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()
        self.process.stdin.write(text)
        self.process.stdin.close()

    def _read(self):
        for line in self.process.stderr:
            stamp = now()
            if "Waiting for selection requests" in line and self.owned is None:
                self.owned = stamp
            match = re.search(r"request number (\d+)", line)
            # "request number K+1" follows the K-th answered request.
            if match and int(match.group(1)) > 1:
                self.fetches.append(stamp)

    def first_fetch_ms(self):
        if self.owned is None or not self.fetches:
            return None
        return (self.fetches[0] - self.owned) * 1000.0

    def end(self):
        if self.process.poll() is None:
            self.process.terminate()
        try:
            self.process.wait(timeout=2)
        except subprocess.TimeoutExpired:
            self.process.kill()
        self.reader.join(timeout=1)


def history_texts(cli):
    if not cli:
        return None
    result = subprocess.run([cli, "clipboard", "list", "--json"], capture_output=True, text=True, timeout=10)
    if result.returncode != 0:
        return None
    try:
        items = json.loads(result.stdout)
    except json.JSONDecodeError:
        return None
    if isinstance(items, dict):
        items = items.get("items", [])
    return [item.get("text", "") if isinstance(item, dict) else str(item) for item in items]


def run(program, out_path):
    cli = os.environ.get("ORVANTIS_CLI", program)
    if cli:
        # Room for every copy (the default history keeps 20).
        subprocess.run([cli, "settings", "set", "clipboardHistorySize", "200"], capture_output=True)
    panel = tray_panel()
    result = {"program": program}

    started = now()
    log = open(os.path.join(os.environ.get("ORVANTIS_DESKTOP_DIR", "/tmp"), "program.log"), "w")
    process = subprocess.Popen([program], stdout=log, stderr=subprocess.STDOUT)
    try:
        docked = None
        while panel is not None and now() - started < DOCK_LIMIT_S and process.poll() is None:
            if docked_icon(panel) is not None:
                docked = now()
                break
            time.sleep(0.02)
        result["tray_docked_ms"] = round((docked - started) * 1000.0, 1) if docked else None

        time.sleep(SETTLE_S)
        # Another Qt program (a test of someone else's on a shared machine) shares Qt's pages
        # and lowers PSS: wait for a moment without one.
        waited = now()
        while QUIET_S > 0 and others_mapping("libQt6Core.so", set(process_tree(process.pid))) > 0 \
                and now() - waited < QUIET_S:
            time.sleep(0.2)
        result["quiet_wait_s"] = round(now() - waited, 1)
        tree = process_tree(process.pid)
        result["processes"] = len(tree)
        result["pss_kb"] = pss_kb(tree)
        result["others_mapping_qt"] = others_mapping("libQt6Core.so", set(tree))
        result["pss_alone_kb"] = pss_alone_kb(tree)
        before = threads(tree)
        time.sleep(IDLE_S)
        after = threads(process_tree(process.pid))
        per_thread = {}
        cpu_ns = runs = 0
        for key, (name, cpu, count) in after.items():
            _, cpu0, count0 = before.get(key, (name, 0, 0))
            cpu_ns += cpu - cpu0
            runs += count - count0
            label = f"{name}[{key[1]}]"
            per_thread[label] = {"cpu_ms": round((cpu - cpu0) / 1e6, 3), "runs": count - count0}
        result["idle_cpu_ms"] = round(cpu_ns / 1e6, 3)
        result["idle_runs"] = runs
        result["idle_threads"] = per_thread

        token = secrets.token_hex(3)
        texts = [f"idle-bench {token} copy {n:02d}" for n in range(COPIES)]
        copies = []
        for text in texts:
            copies.append(Copy(text))
            time.sleep(GAP_MS / 1000.0)
        time.sleep(0.5)  # the last copy's fetch, and a save if there is one
        latencies = [c.first_fetch_ms() for c in copies]
        fetched = [value for value in latencies if value is not None]
        history = history_texts(cli)
        result["pss_after_kb"] = pss_kb(process_tree(process.pid))
        result["pss_alone_after_kb"] = pss_alone_kb(process_tree(process.pid))
        for copy in copies:
            copy.end()
        result["copies"] = COPIES
        result["fetched"] = len(fetched)
        result["fetch_ms_median"] = round(statistics.median(fetched), 1) if fetched else None
        result["fetch_ms_max"] = round(max(fetched), 1) if fetched else None
        result["captured"] = None if history is None else len(set(history) & set(texts))
    finally:
        process.send_signal(signal.SIGTERM)
        try:
            process.wait(timeout=10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
    with open(out_path, "w") as f:
        json.dump(result, f, indent=1)


def summary(paths):
    runs = []
    for path in paths:
        with open(path) as f:
            runs.append(json.load(f))
    columns = [
        ("start to tray docked, ms", "tray_docked_ms"),
        ("waited for no other Qt program, s", "quiet_wait_s"),
        ("idle PSS, all processes, MB", "pss_kb"),
        ("  the same without other Qt programs (estimate), MB", "pss_alone_kb"),
        ("PSS after the copies, MB", "pss_after_kb"),
        ("  the same without other Qt programs (estimate), MB", "pss_alone_after_kb"),
        (f"idle CPU over {IDLE_S:g} s, ms", "idle_cpu_ms"),
        (f"thread runs over {IDLE_S:g} s", "idle_runs"),
        ("copy to first fetch, median ms", "fetch_ms_median"),
        ("copy to first fetch, max ms", "fetch_ms_max"),
        (f"copies fetched (of {COPIES})", "fetched"),
        (f"copies in the history (of {COPIES})", "captured"),
    ]

    def shown(key, value):
        if value is None:
            return "-"
        if key.startswith("pss_"):
            return f"{value / 1024.0:.1f}"
        return f"{value:g}" if isinstance(value, float) else str(value)

    header = ["figure"] + [f"run {i + 1}" for i in range(len(runs))] + (["median"] if len(runs) > 1 else [])
    rows = []
    for title, key in columns:
        values = [run.get(key) for run in runs]
        row = [title] + [shown(key, v) for v in values]
        if len(runs) > 1:
            present = [v for v in values if v is not None]
            row.append(shown(key, statistics.median(present)) if present else "-")
        rows.append(row)
    print(f"program: {runs[0]['program']}")
    print("| " + " | ".join(header) + " |")
    print("|" + "---|" * len(header))
    for row in rows:
        print("| " + " | ".join(row) + " |")
    sharing = [run.get("others_mapping_qt", 0) for run in runs]
    if any(sharing):
        print(f"note: other processes mapped Qt at the time ({sharing}): PSS reads lower than alone;"
              " the estimate counts the pages that only Qt programs map as if this one were alone")
    print()
    print("idle CPU by thread (last run), ms and runs:")
    for name, figures in sorted(runs[-1].get("idle_threads", {}).items(), key=lambda kv: -kv[1]["cpu_ms"]):
        print(f"  {name:32} {figures['cpu_ms']:9.3f} ms {figures['runs']:6} runs")


def main():
    if len(sys.argv) >= 4 and sys.argv[1] == "run":
        run(sys.argv[2], sys.argv[3])
    elif len(sys.argv) >= 3 and sys.argv[1] == "summary":
        summary(sys.argv[2:])
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
