"""Programs that copy and paste on an X server, on connections of their own and without processes."""
import ctypes
import select
import time

from x11_person import LIBRARY, REPLACE, Handle, Number, Pointer

LIBRARY.XCreateSimpleWindow.restype = Handle
SELECTION_CLEAR, SELECTION_REQUEST, SELECTION_NOTIFY, PROPERTY_NOTIFY = 29, 30, 31, 28
PROPERTY_CHANGES = ctypes.c_long(1 << 22)
ATOM = 4  # The predefined atom of that name.
NEVER = Handle(0)


class Event(ctypes.Structure):
    """What all events begin with, and what those of selections go on with."""
    _fields_ = [("kind", Number), ("serial", Handle), ("sent", Number), ("display", Pointer), ("words", Handle * 19)]


class Program:
    """A window on a connection of its own."""

    def __init__(self, display):
        self.server = Pointer(LIBRARY.XOpenDisplay(display.encode()))
        if not self.server:
            raise AssertionError(f"no X server at {display}")
        self.atoms = {}
        root = Handle(LIBRARY.XDefaultRootWindow(self.server))
        self.window = Handle(LIBRARY.XCreateSimpleWindow(self.server, root, 0, 0, 1, 1, 0, NEVER, NEVER))
        LIBRARY.XSelectInput(self.server, self.window, PROPERTY_CHANGES)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        if self.server:
            LIBRARY.XCloseDisplay(self.server)
            self.server = None

    def atom(self, name):
        if name not in self.atoms:
            self.atoms[name] = Handle(LIBRARY.XInternAtom(self.server, name.encode(), 0))
        return self.atoms[name]

    def set_property(self, window, name, kind, size, data):
        """`data` is bytes, or a list of numbers where `size` is 32."""
        values = data if size == 8 else (Handle * len(data))(*data)
        LIBRARY.XChangeProperty(self.server, Handle(window), name, kind, size, REPLACE, values, len(data))

    def flush(self):
        LIBRARY.XFlush(self.server)

    def next_event(self, patience):
        """The next event, or nothing when none comes in `patience` seconds."""
        if not LIBRARY.XPending(self.server):
            select.select([LIBRARY.XConnectionNumber(self.server)], [], [], max(0, patience))
            if not LIBRARY.XPending(self.server):
                return None
        event = Event()
        LIBRARY.XNextEvent(self.server, ctypes.byref(event))
        return event


class Copier(Program):
    """Owns the clipboard and answers as a well-behaved program; derived ones answer otherwise."""

    def __init__(self, display):
        super().__init__(display)
        self.text = b""

    def copy(self, text):
        self.text = text
        LIBRARY.XSetSelectionOwner(self.server, self.atom("CLIPBOARD"), self.window, NEVER)
        self.flush()

    def wait_until_lost(self, patience):
        """Answers requests until another program has taken the clipboard; the seconds, or nothing after `patience`."""
        begin = time.monotonic()
        while (left := begin + patience - time.monotonic()) > 0:
            event = self.next_event(left)
            if event is not None and event.kind == SELECTION_CLEAR:
                return time.monotonic() - begin
            if event is not None:
                self.handle(event)
        return None

    def handle(self, event):
        if event.kind == SELECTION_REQUEST:
            _owner, requestor, _selection, target, name, _time = event.words[:6]
            self.notify(event, name if self.convert(requestor, Handle(target), Handle(name)) else 0)

    def convert(self, requestor, target, name):
        """Writes the answer into the requestor's property; false when it is refused."""
        if target.value == self.atom("TARGETS").value:
            forms = [self.atom("TARGETS").value, self.atom("UTF8_STRING").value]
            self.set_property(requestor, name, Handle(ATOM), 32, forms)
            return True
        if target.value != self.atom("UTF8_STRING").value:
            return False
        self.set_property(requestor, name, target, 8, self.text)
        return True

    def notify(self, request, name):
        """Tells the requestor that its request has been dealt with."""
        _owner, requestor, selection, target, _name, moment = request.words[:6]
        answer = Event(kind=SELECTION_NOTIFY)
        answer.words[:5] = [requestor, selection, target, name, moment]
        LIBRARY.XSendEvent(self.server, Handle(requestor), 0, ctypes.c_long(0), ctypes.byref(answer))
        self.flush()


class Paster(Program):
    """Pastes as a well-behaved program."""

    def paste(self, target="UTF8_STRING", patience=5):
        """The bytes of the clipboard's text, of texts that are not sent in pieces; nothing when it is refused."""
        self.ask(target)
        end = time.monotonic() + patience
        while (left := end - time.monotonic()) > 0:
            event = self.next_event(left)
            if event is not None and event.kind == SELECTION_NOTIFY:
                return self.taken() if event.words[3] else None
        return None

    def ask(self, target, name="PASTED", moment=NEVER):
        LIBRARY.XConvertSelection(self.server, self.atom("CLIPBOARD"), self.atom(target), self.atom(name), self.window,
                                  moment)
        self.flush()

    def taken(self, name="PASTED"):
        """What the property holds, which is removed."""
        data = ctypes.POINTER(ctypes.c_ubyte)()
        kind, count, rest, size = Handle(), Handle(), Handle(), Number()
        LIBRARY.XGetWindowProperty(self.server, self.window, self.atom(name), ctypes.c_long(0), ctypes.c_long(1 << 20), 1,
                                   Handle(0), ctypes.byref(kind), ctypes.byref(size), ctypes.byref(count),
                                   ctypes.byref(rest), ctypes.byref(data))
        value = ctypes.string_at(data, count.value) if size.value == 8 else b""
        if data:
            LIBRARY.XFree(data)
        return value
