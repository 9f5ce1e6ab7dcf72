"""A user of an X server: sees windows and pixels, moves the pointer. One connection and no processes, so it is fast."""
import ctypes
import typing

import person

LIBRARY, TESTING, EXTENSIONS = (ctypes.CDLL(f"lib{name}.so.6") for name in ("X11", "Xtst", "Xext"))
VIEWABLE = 2
INPUT_SHAPE = 2
REPLACE = 0
ANY_PROPERTY, Z_PIXMAP, ALL_PLANES = 0, 2, ctypes.c_ulong(-1)
MOST_WORDS = 1 << 20  # Of a property; icons are large.

Handle, Number, Pointer = ctypes.c_ulong, ctypes.c_int, ctypes.c_void_p
LIBRARY.XOpenDisplay.restype = Pointer
for function in ("XDefaultRootWindow", "XInternAtom", "XGetSelectionOwner", "XStringToKeysym", "XCreatePixmap"):
    getattr(LIBRARY, function).restype = Handle
LIBRARY.XCreateGC.restype = EXTENSIONS.XShapeGetRectangles.restype = Pointer


class Attributes(ctypes.Structure):
    _fields_ = [(name, Number) for name in ("x", "y", "width", "height", "border", "depth")] + [
        ("visual", Pointer), ("root", Handle)] + [
        (name, Number) for name in ("kind", "bits", "gravity", "backing")] + [
        ("planes", Handle), ("pixel", Handle), ("save_under", Number), ("colormap", Handle),
        ("colormap_installed", Number), ("map_state", Number), ("masks", ctypes.c_long * 3),
        ("override_redirect", Number), ("screen", Pointer)]


class ClassHint(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("kind", ctypes.c_char_p)]


class Image(ctypes.Structure):
    _fields_ = [(name, Number) for name in ("width", "height", "offset", "format")] + [("data", Pointer)] + [
        (name, Number) for name in ("byte_order", "unit", "bit_order", "pad", "depth", "row_bytes", "pixel_bits")]


LIBRARY.XGetImage.restype = ctypes.POINTER(Image)


@ctypes.CFUNCTYPE(Number, Pointer, Pointer)
def overlook(_display, _error):
    """A window may be destroyed while it is examined: then the result is empty."""
    return 0


LIBRARY.XSetErrorHandler(overlook)


class Rect:
    def __init__(self, x, y, width, height):
        self.x, self.y, self.width, self.height = x, y, width, height

    @property
    def right(self):
        return self.x + self.width

    @property
    def bottom(self):
        return self.y + self.height

    @property
    def center(self):
        return self.x + self.width // 2, self.y + self.height // 2

    def inside(self, other):
        return self.x >= other.x and self.y >= other.y and self.right <= other.right and self.bottom <= other.bottom

    def within(self, other):
        """The intersection with the other one; its size is not positive when there is none."""
        left, top = max(self.x, other.x), max(self.y, other.y)
        return Rect(left, top, min(self.right, other.right) - left, min(self.bottom, other.bottom) - top)

    def __eq__(self, other):
        return isinstance(other, Rect) and vars(self) == vars(other)

    def __repr__(self):
        return f"{self.width}x{self.height}+{self.x}+{self.y}"


class Window(typing.NamedTuple):
    """A window on screen."""
    number: int
    kind: tuple  # Its program's name and class.
    rect: Rect


class Person(person.Person):
    def __init__(self, display):
        self.display = Pointer(LIBRARY.XOpenDisplay(display.encode()))
        if not self.display:
            raise AssertionError(f"no X server at {display}")
        self.root = Handle(LIBRARY.XDefaultRootWindow(self.display))

    def close(self):
        LIBRARY.XCloseDisplay(self.display)

    # Seeing

    def atom(self, name):
        return Handle(LIBRARY.XInternAtom(self.display, name.encode(), 0))

    def owns_selection(self, name):
        return LIBRARY.XGetSelectionOwner(self.display, self.atom(name)) != 0

    def keyboard_owner(self):
        """The number of the window that gets what is typed."""
        window, revert = Handle(), Number()
        LIBRARY.XGetInputFocus(self.display, ctypes.byref(window), ctypes.byref(revert))
        return window.value

    def words(self, name, window=None):
        """The numbers of a window's property, the root window's without one; none when it is missing."""
        return self._property(name, window or self.root.value, 32)

    def _property(self, name, window, size):
        data = ctypes.POINTER(ctypes.c_ubyte if size == 8 else Handle)()
        kind, count, rest, found = Handle(), Handle(), Handle(), Number()
        LIBRARY.XGetWindowProperty(self.display, Handle(window), self.atom(name), ctypes.c_long(0), ctypes.c_long(MOST_WORDS),
                                   0, Handle(ANY_PROPERTY), ctypes.byref(kind), ctypes.byref(found),
                                   ctypes.byref(count), ctypes.byref(rest), ctypes.byref(data))
        values = data[:count.value] if found.value == size else []
        if data:
            LIBRARY.XFree(data)
        return values

    def windows(self):
        """All windows on screen as they are at one moment, lower ones first."""
        found = []
        LIBRARY.XGrabServer(self.display)
        self._collect(self.root, 0, 0, found)
        LIBRARY.XUngrabServer(self.display)
        LIBRARY.XSync(self.display, 0)
        return found

    def _collect(self, parent, left, top, found):
        root, above, children, count = Handle(), Handle(), ctypes.POINTER(Handle)(), ctypes.c_uint()
        if not LIBRARY.XQueryTree(self.display, parent, ctypes.byref(root), ctypes.byref(above), ctypes.byref(children),
                                  ctypes.byref(count)):
            return
        numbers = children[:count.value]
        if children:
            LIBRARY.XFree(children)
        for number in numbers:
            attributes = Attributes()
            if not LIBRARY.XGetWindowAttributes(self.display, Handle(number), ctypes.byref(attributes)):
                continue
            if attributes.map_state != VIEWABLE:
                continue
            x, y = left + attributes.x + attributes.border, top + attributes.y + attributes.border
            found.append(Window(number, self._kind(number), Rect(x, y, attributes.width, attributes.height)))
            self._collect(Handle(number), x, y, found)

    def _kind(self, number):
        hint = ClassHint()
        if not LIBRARY.XGetClassHint(self.display, Handle(number), ctypes.byref(hint)):
            return "", ""
        return (hint.name or b"").decode(), (hint.kind or b"").decode()

    def titled(self, title):
        """The number of a visible window with that title."""
        return next((window.number for window in self.windows() if self.title(window.number) == title), None)

    def title(self, number):
        modern = bytes(self._property("_NET_WM_NAME", number, 8))
        return (modern or bytes(self._property("WM_NAME", number, 8))).decode(errors="replace")

    def takes_clicks(self, number):
        """Whether any of a window's area is one for the pointer."""
        count, order = Number(), Number()
        areas = EXTENSIONS.XShapeGetRectangles(self.display, Handle(number), INPUT_SHAPE, ctypes.byref(count),
                                               ctypes.byref(order))
        if areas:
            LIBRARY.XFree(Pointer(areas))
        return count.value > 0

    def picture(self, rect):
        """Rows of (red, green, blue)."""
        image = LIBRARY.XGetImage(self.display, self.root, rect.x, rect.y, rect.width, rect.height, ALL_PLANES, Z_PIXMAP)
        if not image:
            raise AssertionError(f"no picture of {rect}")
        stride = image.contents.row_bytes
        data = ctypes.string_at(image.contents.data, stride * rect.height)
        LIBRARY.XFree(Pointer(image.contents.data))
        LIBRARY.XFree(image)
        return [[(data[at + 2], data[at + 1], data[at]) for at in range(row * stride, row * stride + 4 * rect.width, 4)]
                for row in range(rect.height)]

    # Pointer: when these return, the server has sent the event to the window under the pointer.

    def move(self, point):
        TESTING.XTestFakeMotionEvent(self.display, -1, point[0], point[1], Handle(0))
        LIBRARY.XSync(self.display, 0)

    def press(self, button, down):
        TESTING.XTestFakeButtonEvent(self.display, button, int(down), Handle(0))
        LIBRARY.XSync(self.display, 0)

    def paint_background(self, color):
        """Paints the root window in a way that compositors notice, too; until this connection is closed."""
        size = Attributes()
        LIBRARY.XGetWindowAttributes(self.display, self.root, ctypes.byref(size))
        pixmap = LIBRARY.XCreatePixmap(self.display, self.root, size.width, size.height, size.depth)
        context = Pointer(LIBRARY.XCreateGC(self.display, Handle(pixmap), Handle(0), None))
        LIBRARY.XSetForeground(self.display, context, Handle(color))
        LIBRARY.XFillRectangle(self.display, Handle(pixmap), context, 0, 0, size.width, size.height)
        LIBRARY.XSetWindowBackgroundPixmap(self.display, self.root, Handle(pixmap))
        LIBRARY.XClearWindow(self.display, self.root)
        LIBRARY.XChangeProperty(self.display, self.root, self.atom("_XROOTPMAP_ID"), self.atom("PIXMAP"), 32, REPLACE,
                                ctypes.byref(Handle(pixmap)), 1)
        LIBRARY.XSync(self.display, 0)

    def press_key(self, name, isDown):
        key = LIBRARY.XKeysymToKeycode(self.display, Handle(LIBRARY.XStringToKeysym(name.encode())))
        TESTING.XTestFakeKeyEvent(self.display, key, int(isDown), Handle(0))
        LIBRARY.XSync(self.display, 0)
