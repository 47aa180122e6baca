#!/usr/bin/env python3
"""Holds the X keyboard the way a screen locker or another program's open menu does: an active
XGrabKeyboard on the root window, until standard input closes or the process is ended. Prints
"grabbed" once the server granted the grab, or "refused <status>" and exits 1.

Talks to libX11 through ctypes, so it needs nothing beyond the library itself."""
import ctypes
import ctypes.util
import sys

GRAB_MODE_ASYNC = 1
CURRENT_TIME = 0


def main() -> int:
    xlib = ctypes.cdll.LoadLibrary(ctypes.util.find_library("X11") or "libX11.so.6")
    xlib.XOpenDisplay.restype = ctypes.c_void_p
    xlib.XOpenDisplay.argtypes = [ctypes.c_char_p]
    xlib.XDefaultRootWindow.restype = ctypes.c_ulong
    xlib.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
    xlib.XGrabKeyboard.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_int, ctypes.c_int,
                                   ctypes.c_ulong]
    xlib.XSync.argtypes = [ctypes.c_void_p, ctypes.c_int]
    xlib.XUngrabKeyboard.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
    display = xlib.XOpenDisplay(None)
    if not display:
        print("refused no-display", flush=True)
        return 1
    status = xlib.XGrabKeyboard(display, xlib.XDefaultRootWindow(display), 0, GRAB_MODE_ASYNC, GRAB_MODE_ASYNC,
                                CURRENT_TIME)
    xlib.XSync(display, 0)
    if status != 0:
        print(f"refused {status}", flush=True)
        return 1
    print("grabbed", flush=True)
    sys.stdin.read()  # held until the test closes the pipe or ends the process
    xlib.XUngrabKeyboard(display, CURRENT_TIME)
    xlib.XSync(display, 0)
    return 0


if __name__ == "__main__":
    sys.exit(main())
