"""A window to select text in: gtk_editor.py TITLE TEXT text|image|closing normal|fullscreen X Y"""

import sys

import gi

gi.require_version("Gtk", "3.0")
gi.require_version("Gdk", "3.0")
from gi.repository import Gdk, GdkPixbuf, Gtk  # noqa: E402

title, text, what, state, x, y = sys.argv[1:]
window = Gtk.Window(title=title)
window.set_default_size(420, 260)
view = Gtk.TextView(wrap_mode=Gtk.WrapMode.WORD)
view.get_buffer().set_text(text)
scrolled = Gtk.ScrolledWindow()
scrolled.add(view)
window.add(scrolled)


def on_key(_widget, event):
    control = event.state & Gdk.ModifierType.CONTROL_MASK
    if what == "image" and control and event.hardware_keycode == 54:
        picture = GdkPixbuf.Pixbuf.new(GdkPixbuf.Colorspace.RGB, False, 8, 16, 16)
        picture.fill(0x8C59D9FF)
        Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD).set_image(picture)
        return True
    if what == "closing" and event.hardware_keycode == 26 and event.state & Gdk.ModifierType.MOD1_MASK:
        window.destroy()
        return True
    return False


window.connect("key-press-event", on_key)
window.connect("destroy", Gtk.main_quit)
if state == "fullscreen":
    window.fullscreen()
window.move(int(x), int(y))
window.show_all()
Gtk.main()
