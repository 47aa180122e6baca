#!/usr/bin/env python3
"""Reads an application's widgets from the accessibility bus, as a screen reader sees them.

    atspi_query.py APP ROLE [--name NAME] [--editable | --read-only] [--index N] WHAT

APP is the application's accessible name ("Orvantis"); ROLE a role name ("text", "push button",
"label"). Of the objects of APP with that role (and NAME, and the editable state when asked), in
the order of a walk of the tree, the N-th (default 0) is taken, and WHAT is printed:
  text      its text (the Text interface)
  name      its accessible name
  extents   "x y width height" on the screen
  center    "x y", the middle of it on the screen
  count     how many objects match (no object needs to exist)
Exits 1 when no object matches. ROLE "*" also lists every object (role, name, path) on standard
error, to see what a window shows. Talks to the bus through gdbus, so it needs no Python bindings.
"""

import argparse
import ast
import re
import subprocess
import sys

STATE_EDITABLE = 7


def gdbus(address, dest, path, method, *args):
    out = subprocess.run(
        ["gdbus", "call", "--address", address, "--dest", dest, "--object-path", path, "--method", method, *args],
        capture_output=True, text=True, timeout=10)
    if out.returncode != 0:
        raise RuntimeError(out.stderr.strip())
    return out.stdout.strip()


def gvariant_string(printed):
    """The first string of a printed GVariant such as "(<'x'>,)" or "('x',)"."""
    match = re.match(r"^\(<?(['\"].*['\"])>?,\)$", printed, re.S)
    if not match:
        raise RuntimeError("not a string: " + printed)
    return ast.literal_eval(match.group(1))


def children(address, dest, path):
    printed = gdbus(address, dest, path, "org.a11y.atspi.Accessible.GetChildren")
    return re.findall(r"\('([^']*)', (?:objectpath )?'([^']*)'\)", printed)


def bus_address():
    printed = subprocess.run(
        ["gdbus", "call", "--session", "--dest", "org.a11y.Bus", "--object-path", "/org/a11y/bus",
         "--method", "org.a11y.Bus.GetAddress"], capture_output=True, text=True, timeout=10).stdout.strip()
    return gvariant_string(printed)


def name_of(address, dest, path):
    return gvariant_string(gdbus(address, dest, path, "org.freedesktop.DBus.Properties.Get",
                                 "org.a11y.atspi.Accessible", "Name"))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("app")
    parser.add_argument("role")
    parser.add_argument("what", choices=["text", "name", "extents", "center", "count"])
    parser.add_argument("--name")
    parser.add_argument("--index", type=int, default=0)
    group = parser.add_mutually_exclusive_group()
    group.add_argument("--editable", action="store_true")
    group.add_argument("--read-only", action="store_true")
    args = parser.parse_args()

    address = bus_address()
    app = None
    for dest, path in children(address, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"):
        try:
            if name_of(address, dest, path) == args.app:
                app = (dest, path)
                break
        except (RuntimeError, subprocess.TimeoutExpired):
            continue
    if app is None:
        print(f"no application {args.app} on the accessibility bus", file=sys.stderr)
        return 1

    found = []
    queue = [app]
    seen = set()
    while queue:
        dest, path = queue.pop(0)
        if (dest, path) in seen or len(seen) > 2000:
            continue
        seen.add((dest, path))
        try:
            role = gvariant_string(gdbus(address, dest, path, "org.a11y.atspi.Accessible.GetRoleName"))
            if args.role == "*":
                print(role, repr(name_of(address, dest, path)), path, file=sys.stderr)
            if role == args.role and (args.name is None or name_of(address, dest, path) == args.name):
                editable = True
                if args.editable or args.read_only:
                    words = [int(w) for w in re.findall(r"\b\d+\b", gdbus(address, dest, path,
                                                                      "org.a11y.atspi.Accessible.GetState"))]
                    editable = bool(words and words[0] & (1 << STATE_EDITABLE))
                if (not args.editable or editable) and (not args.read_only or not editable):
                    found.append((dest, path))
            queue.extend(children(address, dest, path))
        except (RuntimeError, subprocess.TimeoutExpired):
            continue

    if args.what == "count":
        print(len(found))
        return 0
    if args.index >= len(found):
        return 1
    dest, path = found[args.index]
    if args.what == "text":
        sys.stdout.write(gvariant_string(gdbus(address, dest, path, "org.a11y.atspi.Text.GetText", "0", "int32 -1")))
    elif args.what == "name":
        sys.stdout.write(name_of(address, dest, path))
    else:
        x, y, w, h = (int(v) for v in re.findall(r"-?\d+", gdbus(address, dest, path,
                                                                 "org.a11y.atspi.Component.GetExtents", "0")))
        print(f"{x} {y} {w} {h}" if args.what == "extents" else f"{x + w // 2} {y + h // 2}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
