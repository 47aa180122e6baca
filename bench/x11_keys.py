"""Key presses and window queries straight through Xlib and XTest, for the latency scripts.

Starting xdotool costs milliseconds and it waits between the keys of a chord, so a clock
started before it measures xdotool as much as the program. Here the modifiers of a chord go
down first, the caller starts its clock, and only then the last key goes down; a query for
the viewable top-level windows costs microseconds.
"""

import ctypes
import ctypes.util


class XWindowAttributes(ctypes.Structure):
    _fields_ = [("x", ctypes.c_int), ("y", ctypes.c_int), ("width", ctypes.c_int), ("height", ctypes.c_int),
                ("border_width", ctypes.c_int), ("depth", ctypes.c_int), ("visual", ctypes.c_void_p),
                ("root", ctypes.c_ulong), ("c_class", ctypes.c_int), ("bit_gravity", ctypes.c_int),
                ("win_gravity", ctypes.c_int), ("backing_store", ctypes.c_int), ("backing_planes", ctypes.c_ulong),
                ("backing_pixel", ctypes.c_ulong), ("save_under", ctypes.c_int), ("colormap", ctypes.c_ulong),
                ("map_installed", ctypes.c_int), ("map_state", ctypes.c_int), ("all_event_masks", ctypes.c_long),
                ("your_event_mask", ctypes.c_long), ("do_not_propagate_mask", ctypes.c_long),
                ("override_redirect", ctypes.c_int), ("screen", ctypes.c_void_p)]


IS_VIEWABLE = 2


class Display:
    """One connection to the X display of $DISPLAY."""

    def __init__(self):
        self.xlib = xlib = ctypes.cdll.LoadLibrary(ctypes.util.find_library("X11"))
        self.xtst = xtst = ctypes.cdll.LoadLibrary(ctypes.util.find_library("Xtst"))
        xlib.XOpenDisplay.restype = ctypes.c_void_p
        xlib.XOpenDisplay.argtypes = [ctypes.c_char_p]
        xlib.XDefaultRootWindow.restype = ctypes.c_ulong
        xlib.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
        xlib.XQueryTree.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.POINTER(ctypes.c_ulong),
                                    ctypes.POINTER(ctypes.c_ulong), ctypes.POINTER(ctypes.POINTER(ctypes.c_ulong)),
                                    ctypes.POINTER(ctypes.c_uint)]
        xlib.XGetWindowAttributes.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.POINTER(XWindowAttributes)]
        xlib.XFree.argtypes = [ctypes.c_void_p]
        xlib.XKeysymToKeycode.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
        xlib.XKeysymToKeycode.restype = ctypes.c_ubyte
        xlib.XStringToKeysym.argtypes = [ctypes.c_char_p]
        xlib.XStringToKeysym.restype = ctypes.c_ulong
        xlib.XFlush.argtypes = [ctypes.c_void_p]
        xlib.XSync.argtypes = [ctypes.c_void_p, ctypes.c_int]
        xtst.XTestFakeKeyEvent.argtypes = [ctypes.c_void_p, ctypes.c_uint, ctypes.c_int, ctypes.c_ulong]
        self.display = xlib.XOpenDisplay(None)
        if not self.display:
            raise SystemExit("no X display")
        self.root = xlib.XDefaultRootWindow(self.display)

    def keycode(self, keysym_name):
        code = self.xlib.XKeysymToKeycode(self.display, self.xlib.XStringToKeysym(keysym_name.encode()))
        if code == 0:
            raise SystemExit("no key for %s" % keysym_name)
        return code

    def _key(self, name, down):
        self.xtst.XTestFakeKeyEvent(self.display, self.keycode(name), 1 if down else 0, 0)

    def hold(self, *names):
        """Presses the keys `names` and waits until the server has them."""
        for name in names:
            self._key(name, True)
        self.xlib.XSync(self.display, 0)

    def press(self, name):
        """Sends the press of `name` at once, without waiting for anything."""
        self._key(name, True)
        self.xlib.XFlush(self.display)

    def release(self, *names):
        """Lets go of the keys `names`, the last first, and waits until the server has them."""
        for name in reversed(names):
            self._key(name, False)
        self.xlib.XSync(self.display, 0)

    def viewable_top_level(self, min_width=50):
        """The set of top-level windows that are viewable and wider than `min_width`."""
        root_return, parent = ctypes.c_ulong(), ctypes.c_ulong()
        children, count = ctypes.POINTER(ctypes.c_ulong)(), ctypes.c_uint()
        self.xlib.XQueryTree(self.display, self.root, ctypes.byref(root_return), ctypes.byref(parent),
                             ctypes.byref(children), ctypes.byref(count))
        viewable = set()
        attributes = XWindowAttributes()
        for i in range(count.value):
            if self.xlib.XGetWindowAttributes(self.display, children[i], ctypes.byref(attributes)) \
                    and attributes.map_state == IS_VIEWABLE and attributes.width > min_width:
                viewable.add(children[i])
        if children:
            self.xlib.XFree(children)
        return viewable
