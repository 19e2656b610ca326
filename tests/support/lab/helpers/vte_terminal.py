"""A window with a VTE terminal that runs a command: vte_terminal.py TITLE COMMAND..."""

import sys

import gi

gi.require_version("Gtk", "3.0")
gi.require_version("Vte", "2.91")
from gi.repository import GLib, Gtk, Vte  # noqa: E402

# The class by which a terminal of this kind is known.
GLib.set_prgname("gnome-terminal-server")
Gtk.init(None)
# However long a busy machine takes for it, three clicks are a triple click.
Gtk.Settings.get_default().set_property("gtk-double-click-time", 60000)
window = Gtk.Window(title=sys.argv[1])
window.set_wmclass("gnome-terminal-server", "Gnome-terminal")
terminal = Vte.Terminal()
terminal.spawn_async(Vte.PtyFlags.DEFAULT, None, sys.argv[2:], None, GLib.SpawnFlags.DEFAULT, None, None, -1, None,
                     None)
terminal.connect("child-exited", Gtk.main_quit)
window.add(terminal)
window.connect("destroy", Gtk.main_quit)
window.show_all()
Gtk.main()
