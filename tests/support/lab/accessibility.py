"""Reading and using windows through the accessibility bus, as a screen reader does.

Spoken directly over D-Bus rather than through a client library: every answer is fresh, every call has a limit,
and any number of sessions can be looked at from one process.
"""

from gi.repository import Gio, GLib

from .bus import Connection
from .display import Frame

_ACCESSIBLE = "org.a11y.atspi.Accessible"
_REGISTRY = "org.a11y.atspi.Registry"
_ROOT = "/org/a11y/atspi/accessible/root"
_STATES = {"active": 1, "checked": 4, "editable": 7, "enabled": 8, "focusable": 11, "focused": 12, "sensitive": 24,
           "showing": 25, "visible": 30}


class Gone(Exception):
    """The thing is no longer there."""


class Node:
    def __init__(self, bus, address):
        self.bus = bus
        self.name_on_bus, self.path = address

    def _call(self, interface, method, arguments=None):
        try:
            return self.bus.call(self.name_on_bus, self.path, interface, method, arguments)
        except GLib.Error as error:
            raise Gone(f"{method}: {error.message}") from None

    def _get(self, interface, prop):
        return self._call("org.freedesktop.DBus.Properties", "Get", GLib.Variant("(ss)", (interface, prop)))[0]

    @property
    def name(self):
        return self._get(_ACCESSIBLE, "Name")

    @property
    def description(self):
        return self._get(_ACCESSIBLE, "Description")

    @property
    def role(self):
        return self._call(_ACCESSIBLE, "GetRoleName")[0]

    @property
    def children(self):
        return [Node(self.bus, address) for address in self._call(_ACCESSIBLE, "GetChildren")[0]]

    @property
    def interfaces(self):
        return self._call(_ACCESSIBLE, "GetInterfaces")[0]

    @property
    def states(self):
        low, high = self._call(_ACCESSIBLE, "GetState")[0]
        bits = low | high << 32
        return {name for name, bit in _STATES.items() if bits & 1 << bit}

    @property
    def text(self):
        """The text of what holds text, else the name."""
        if "org.a11y.atspi.Text" in self.interfaces:
            return self._call("org.a11y.atspi.Text", "GetText", GLib.Variant("(ii)", (0, -1)))[0]
        return self.name

    @property
    def frame(self):
        """In what the application takes for the coordinates of the screen."""
        return Frame(*self._call("org.a11y.atspi.Component", "GetExtents", GLib.Variant("(u)", (0,)))[0])

    def press(self):
        """Does the node's first action; it takes effect some time later."""
        self._call("org.a11y.atspi.Action", "DoAction", GLib.Variant("(i)", (0,)))

    def walk(self):
        """This node and all below it, in the order of the tree."""
        yield self
        for child in self.children:
            yield from child.walk()

    def find(self, role=None, name=None):
        for node in self.walk():
            if (role is None or node.role == role) and (name is None or node.name == name):
                return node
        return None

    def describe(self, depth=0):
        """The tree as text, for a failed test's message."""
        lines = [f"{'  ' * depth}{self.role} “{self.name}” {self.text!r} {sorted(self.states)}"]
        return "\n".join(lines + [child.describe(depth + 1) for child in self.children])


class Events:
    """The accessibility events of one kind, as they come: ("announcement", "") or ("text-changed", "insert")."""

    def __init__(self, bus, kind):
        self.bus = bus
        self.seen = []  # each one's numbers and its value
        name, detail = kind
        member = "".join(part.capitalize() for part in name.split("-"))
        self.subscription = bus.bus.signal_subscribe(
            None, "org.a11y.atspi.Event.Object", member, None, None, Gio.DBusSignalFlags.NONE,
            lambda *signal: self._note(detail, signal[5].unpack()))
        # Applications send most events only while somebody listens.
        bus.call(_REGISTRY, "/org/a11y/atspi/registry", _REGISTRY, "RegisterEvent",
                 GLib.Variant("(sass)", (f"object:{name}:{detail}", [], "")))

    def _note(self, detail, arguments):
        if detail in ("", arguments[0]):
            self.seen.append((arguments[1], arguments[2], arguments[3]))

    def values(self):
        """The values so far."""
        while GLib.MainContext.default().iteration(False):
            pass
        return [value for _, _, value in self.seen]

    def close(self):
        self.bus.bus.signal_unsubscribe(self.subscription)


class Accessibility:
    """The accessibility bus of a session."""

    def __init__(self, session_bus):
        address = session_bus.call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0]
        self.bus = Connection(address)

    def applications(self):
        return Node(self.bus, (_REGISTRY, _ROOT)).children

    def application(self, pid):
        """The root node of a process, or None."""
        for node in self.applications():
            try:
                if self.bus.pid_of(node.name_on_bus) == pid:
                    return node
            except (GLib.Error, Gone):
                continue
        return None

    def events(self, name, detail=""):
        return Events(self.bus, (name, detail))

    def close(self):
        self.bus.close()
