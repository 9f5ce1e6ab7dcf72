"""What assistive tools see of the programs of a desktop and do there: its accessibility bus, as the desktop provides it."""
import typing

from gi.repository import Gio, GLib

TIME_LIMIT = 5000  # Milliseconds for an answer.
ROOT = "/org/a11y/atspi/accessible/root"
ACCESSIBLE, ACTION = "org.a11y.atspi.Accessible", "org.a11y.atspi.Action"
# The states that matter here, by their number in the protocol.
STATES = {4: "checked", 7: "editable", 8: "enabled", 11: "focusable", 12: "focused", 23: "selected", 25: "showing"}


class Element(typing.NamedTuple):
    """One of a program's: a window, a control, a text."""
    place: tuple  # The program's name on the bus, and the path of the object.
    depth: int
    role: str
    name: str
    description: str
    states: frozenset
    actions: tuple


def connect(address):
    kind = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    return Gio.DBusConnection.new_for_address_sync(address, kind, None, None)


class AccessibilityBus:
    """Switched on for the programs of the session, as a screen reader does when it starts."""

    def __init__(self, session_address):
        self.session = connect(session_address)
        self.session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set",
                               GLib.Variant("(ssv)", ("org.a11y.Status", "IsEnabled", GLib.Variant("b", True))), None,
                               Gio.DBusCallFlags.NONE, TIME_LIMIT, None)
        address, = self.session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                                          Gio.DBusCallFlags.NONE, TIME_LIMIT, None).unpack()
        self.bus = connect(address)
        self.events = []

    def close(self):
        self.bus.close_sync(None)
        self.session.close_sync(None)

    # Seeing

    def elements(self):
        """All that there is, seen or not, parents first."""
        found = []
        for program in self._children(("org.a11y.atspi.Registry", ROOT)):
            self._collect(program, 0, found)
        return found

    def named(self, name, role=None):
        return next((element for element in self.elements() if element.name == name and role in (None, element.role)), None)

    def control(self, name):
        """What is called so and can be pressed."""
        return next((element for element in self.elements() if element.name == name and "enabled" in element.states
                     and {"Press", "Toggle"} & set(element.actions)), None)

    def _collect(self, place, depth, found):
        element = self.describe(place, depth)
        if element is None:
            return
        found.append(element)
        for child in self._children(place):
            self._collect(child, depth + 1, found)

    def describe(self, place, depth=0):
        """None when the element is gone."""
        try:
            low, _ = self._ask(place, ACCESSIBLE, "GetState")[0]
            actions = tuple(name for name, _, _ in self._ask(place, ACTION, "GetActions")[0]) if self._is_action(place) else ()
            return Element(place, depth, self._ask(place, ACCESSIBLE, "GetRoleName")[0], self._property(place, "Name"),
                           self._property(place, "Description"),
                           frozenset(name for bit, name in STATES.items() if low >> bit & 1), actions)
        except GLib.Error:
            return None

    def _is_action(self, place):
        return ACTION in self._ask(place, ACCESSIBLE, "GetInterfaces")[0]

    def _children(self, place):
        try:
            return self._ask(place, ACCESSIBLE, "GetChildren")[0]
        except GLib.Error:
            return []

    def _property(self, place, name):
        return self._ask(place, "org.freedesktop.DBus.Properties", "Get", "(ss)", (ACCESSIBLE, name))[0]

    # Doing

    def press(self, element):
        """Does what the element is there for."""
        number = element.actions.index("Press" if "Press" in element.actions else "Toggle")
        return self._ask(element.place, ACTION, "DoAction", "(i)", (number,))[0]

    def give_keyboard(self, element):
        return self._ask(element.place, "org.a11y.atspi.Component", "GrabFocus")[0]

    def _ask(self, place, interface, method, signature=None, values=()):
        arguments = GLib.Variant(signature, values) if signature else None
        return self.bus.call_sync(*place, interface, method, arguments, None, Gio.DBusCallFlags.NONE, TIME_LIMIT,
                                  None).unpack()

    # Hearing

    def listen(self):
        """From now on `heard` knows what comes up."""
        self.bus.signal_subscribe(None, "org.a11y.atspi.Event.Object", None, None, None, Gio.DBusSignalFlags.NONE, self._hear)
        self._ask(("org.a11y.atspi.Registry", "/org/a11y/atspi/registry"), "org.a11y.atspi.Registry", "RegisterEvent",
                  "(sass)", ("object:", [], ""))

    def _hear(self, _bus, sender, path, _interface, event, values):
        self.events.append((event, values[0], values[1], self.describe((sender, path))))

    def heard(self):
        """The events so far: what happened, of which kind, its number, and the element as it was when it was heard of."""
        while GLib.MainContext.default().iteration(False):
            pass
        return self.events
