"""A window with a menu, which says on standard output what reaches it: gtk_menu.py TITLE X Y"""

import sys

import gi

gi.require_version("Gtk", "3.0")
gi.require_version("Gdk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402

ITEMS = "One", "Two", "Three", "Four"
title, x, y = sys.argv[1:]


def say(*words):
    print(*words, flush=True)


menu = Gtk.Menu()
for name in ITEMS:
    item = Gtk.MenuItem(label=name)
    item.connect("activate", lambda _item, name: say("activated", name), name)
    menu.append(item)
menu.show_all()
menu.connect("map-event", lambda *_: say("opened"))
menu.connect("deactivate", lambda *_: say("closed"))

window = Gtk.Window(title=title)
window.set_default_size(300, 200)
area = Gtk.EventBox()
area.connect("button-press-event", lambda _area, event: menu.popup_at_pointer(event) if event.button == 3 else None)
window.add(area)
for widget in (window, menu):
    for signal in ("key-press-event", "key-release-event"):
        widget.connect(signal, lambda _widget, event, kind: say(kind, event.hardware_keycode), signal)
    for signal in ("button-press-event", "button-release-event"):
        widget.connect(signal, lambda _widget, event, kind: say(kind, event.button), signal)
    widget.add_events(Gdk.EventMask.POINTER_MOTION_MASK)
    widget.connect("motion-notify-event", lambda *_: say("moved"))
window.connect("destroy", Gtk.main_quit)
window.move(int(x), int(y))
window.show_all()
Gtk.main()
