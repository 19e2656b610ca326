"""Owns an X selection as the folder's what.json says; writes "owned", "asked TARGET" and "lost"."""

import json
import pathlib
import sys
import time

import Xlib.display
from Xlib import X, Xatom

INCREMENT = 200_000  # the library sends requests of at most 256 KB
where = pathlib.Path(sys.argv[1])
what = json.loads((where / "what.json").read_text())
contents = {target: (where / name).read_bytes() for target, name in what["contents"].items()}
x = Xlib.display.Display()
window = x.screen().root.create_window(0, 0, 1, 1, 0, X.CopyFromParent, event_mask=X.PropertyChangeMask)
selection, TARGETS, TIMESTAMP, INCR = map(x.get_atom, (what["selection"], "TARGETS", "TIMESTAMP", "INCR"))
transfers = {}  # (requestor id, property): (window, type, rest of the bytes)


def say(*words):
    print(*words, flush=True)


# A timestamp of the server's own, as the conventions ask of an owner.
window.change_property(Xatom.WM_NAME, Xatom.STRING, 8, b"owner")
owned_at = x.next_event().time
window.set_selection_owner(selection, owned_at)
if x.get_selection_owner(selection).id != window.id:
    sys.exit("could not own the selection")
say("owned")


def put(requestor, prop, target):
    """Writes the answer to a property, or starts to write it in parts; False refuses."""
    if target == TARGETS:
        offered = [TARGETS, TIMESTAMP] + [x.get_atom(name) for name in contents]
        requestor.change_property(prop, Xatom.ATOM, 32, offered)
    elif target == TIMESTAMP:
        requestor.change_property(prop, Xatom.INTEGER, 32, [owned_at])
    elif x.get_atom_name(target) in contents:
        data = contents[x.get_atom_name(target)]
        if len(data) > INCREMENT:
            requestor.change_attributes(event_mask=X.PropertyChangeMask)
            requestor.change_property(prop, INCR, 32, [len(data)])
            transfers[requestor.id, prop] = (requestor, target, memoryview(data))
        else:
            requestor.change_property(prop, target, 8, data)
    else:
        return False
    return True


def on_request(event):
    name = x.get_atom_name(event.target)
    say("asked", name)
    if "*" in what["silent"] or name in what["silent"]:
        return
    time.sleep(what["delay"])
    prop = event.property or event.target
    done = put(event.requestor, prop, event.target)
    event.requestor.send_event(Xlib.protocol.event.SelectionNotify(
        time=event.time, requestor=event.requestor, selection=event.selection, target=event.target,
        property=prop if done else X.NONE))


def on_deleted(event):
    key = (event.window.id, event.atom)
    if key in transfers:
        requestor, target, rest = transfers.pop(key)
        requestor.change_property(event.atom, target, 8, bytes(rest[:INCREMENT]))
        if rest:
            transfers[key] = (requestor, target, rest[INCREMENT:])


while True:
    event = x.next_event()
    if event.type == X.SelectionRequest:
        on_request(event)
    elif event.type == X.PropertyNotify and event.state == X.PropertyDelete:
        on_deleted(event)
    elif event.type == X.SelectionClear:
        say("lost")
    x.flush()
