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
        return [element for element in map(self.describe, self._places()) if element]

    def all_named(self, name):
        places = (place for place in self._places() if self._asked(place, self._name) == name)
        return [element for element in map(self.describe, places) if element]

    def named(self, name, role=None):
        return next((element for element in self.all_named(name) if role in (None, element.role)), None)

    def control(self, name):
        """What is called so and can be pressed."""
        return next((element for element in self.all_named(name) if "enabled" in element.states
                     and {"Press", "Toggle"} & set(element.actions)), None)

    def focused(self):
        """The names of what has the keyboard."""
        places = (place for place in self._places() if "focused" in (self._asked(place, self._states) or ()))
        return [self._asked(place, self._name) for place in places]

    def _places(self):
        desktop = ("org.a11y.atspi.Registry", ROOT)
        waiting = [desktop]
        while waiting:
            place = waiting.pop()
            if place != desktop:
                yield place
            waiting += reversed(self._asked(place, self._children) or [])

    def describe(self, place):
        """None when the element is gone."""
        return self._asked(place, lambda place: Element(
            place, self._ask(place, ACCESSIBLE, "GetRoleName")[0], self._name(place),
            self._property(place, "Description"), self._states(place), self._actions(place)))

    @staticmethod
    def _asked(place, question):
        """The answer of an element, None when it is gone."""
        try:
            return question(place)
        except GLib.Error:
            return None

    def _children(self, place):
        return self._ask(place, ACCESSIBLE, "GetChildren")[0]

    def _name(self, place):
        return self._property(place, "Name")

    def _states(self, place):
        low, _ = self._ask(place, ACCESSIBLE, "GetState")[0]
        return frozenset(name for bit, name in STATES.items() if low >> bit & 1)

    def _actions(self, place):
        if ACTION not in self._ask(place, ACCESSIBLE, "GetInterfaces")[0]:
            return ()
        return tuple(name for name, _, _ in self._ask(place, ACTION, "GetActions")[0])

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
        self.elements()  # A program answers after it has dealt with being listened to.

    def _hear(self, _bus, sender, path, _interface, event, values):
        self.events.append((event, values[0], values[1], self.describe((sender, path))))

    def heard(self):
        """The events so far: what happened, of which kind, its number, and the element as it was when it was heard of."""
        while GLib.MainContext.default().iteration(False):
            pass
        return self.events
