"""Reading X selections, and programs that own them in every manner, good and bad."""

import json
import select
import sys
import time
from dataclasses import dataclass

import Xlib.display
import Xlib.protocol.request
from Xlib import X

from .process import Process
from .waiting import wait_until

META_TARGETS = {"TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS", "DELETE"}


@dataclass(frozen=True)
class Value:
    """What one target of a selection holds."""
    data: bytes
    format: int
    type: str


class SelectionReader:
    """Reads selections as a pasting program does, over a connection of its own."""

    def __init__(self, display_name):
        self.x = Xlib.display.Display(display_name)
        self.window = self.x.screen().root.create_window(0, 0, 1, 1, 0, X.CopyFromParent,
                                                         event_mask=X.PropertyChangeMask)
        self.property = self.x.get_atom("LUMIWREN_TEST")

    def _event(self, wanted, deadline):
        while True:
            while self.x.pending_events():
                event = self.x.next_event()
                if wanted(event):
                    return event
            remaining = deadline - time.monotonic()
            if remaining <= 0:
                raise TimeoutError("the selection's owner does not answer")
            select.select([self.x], [], [], remaining)

    def owner(self, selection="CLIPBOARD"):
        """The owner's window id, 0 when there is none."""
        owner = self.x.get_selection_owner(self.x.get_atom(selection))
        return owner if isinstance(owner, int) else owner.id

    def read(self, target, selection="CLIPBOARD", timeout=20.0):
        """A Value, or None when the owner refuses or there is no owner."""
        deadline = time.monotonic() + timeout
        self.window.delete_property(self.property)
        self.window.convert_selection(self.x.get_atom(selection), self.x.get_atom(target), self.property,
                                      X.CurrentTime)
        notify = self._event(lambda event: event.type == X.SelectionNotify, deadline)
        if notify.property == X.NONE:
            return None
        incremental = self.x.get_atom("INCR")
        value = self.window.get_full_property(self.property, X.AnyPropertyType)
        if value.property_type != incremental:
            self.window.delete_property(self.property)
            return self._value(value)
        pieces = []
        self.window.delete_property(self.property)
        while True:
            self._event(lambda event: event.type == X.PropertyNotify and event.atom == self.property
                        and event.state == X.PropertyNewValue, deadline)
            piece = self._value(self.window.get_full_property(self.property, X.AnyPropertyType, 1 << 22))
            self.window.delete_property(self.property)
            if not piece.data:
                return Value(b"".join(pieces), piece.format, piece.type)
            pieces.append(piece.data)

    def _value(self, value):
        data = value.value
        if not isinstance(data, bytes):
            data = data.tobytes() if hasattr(data, "tobytes") else bytes(data)
        return Value(data, value.format, self.x.get_atom_name(value.property_type))

    def targets(self, selection="CLIPBOARD", timeout=20.0):
        """The names of what the owner offers, in its order; empty when there is no owner."""
        value = self.read("TARGETS", selection, timeout)
        if value is None:
            return []
        atoms = memoryview(value.data).cast("I" if len(value.data) % 8 or value.format == 32 else "L")
        return [self.x.get_atom_name(atom) for atom in atoms if atom]

    def contents(self, selection="CLIPBOARD"):
        """Every type with its Value, meta targets left out."""
        return {target: self.read(target, selection) for target in self.targets(selection)
                if target not in META_TARGETS}

    def text(self, selection="CLIPBOARD", timeout=20.0):
        value = self.read("UTF8_STRING", selection, timeout)
        return None if value is None else value.data.decode()

    def clear(self, selection="CLIPBOARD"):
        """Takes the selection away from its owner; nobody owns it then."""
        Xlib.protocol.request.SetSelectionOwner(display=self.x.display, window=X.NONE,
                                                selection=self.x.get_atom(selection), time=X.CurrentTime)
        wait_until(lambda: not self.owner(selection), "an unowned selection")

    def close(self):
        self.x.close()


class SelectionOwner(Process):
    """A program that owns a selection and offers `contents` (type: bytes).

    `silent` are the targets that it never answers, "*" for all; `delay` are the seconds before each answer.
    """

    def __init__(self, env, directory, contents, mark, selection="CLIPBOARD", silent=(), delay=0.0):
        where = directory / f"owner-{time.monotonic_ns()}"
        where.mkdir()
        names = {}
        for index, (target, data) in enumerate(contents.items()):
            names[target] = f"{index}.bin"
            (where / names[target]).write_bytes(data)
        (where / "what.json").write_text(json.dumps(
            {"selection": selection, "contents": names, "silent": list(silent), "delay": delay}))
        helper = str(__file__).replace("selections.py", "helpers/selection_owner.py")
        super().__init__([sys.executable, helper, str(where)], env, where / "log", mark=mark)
        wait_until(lambda: "owned" in self.output or not self.running(), "the owner of the selection")
        if not self.running():
            raise RuntimeError(self.output)

    def lost(self):
        """Whether somebody else has become the owner."""
        return "lost" in self.output

    def asked(self):
        """The targets that were asked for, in order."""
        return [line.split(" ", 1)[1] for line in self.output.splitlines() if line.startswith("asked ")]
