"""SelectionGTKClient.py own text|image | show: the clipboard of a GTK 3 application.

own   puts a text or a picture there and prints "ready"
show  prints each type with its form, size and digest
"""

import hashlib
import os
import sys

# Where there is no session bus the toolkit would start one, which stays.
os.environ["DBUS_SESSION_BUS_ADDRESS"] = "disabled:"
os.environ["NO_AT_BRIDGE"] = "1"

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, GdkPixbuf, Gtk

clipboard = Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD)

if sys.argv[1] == "own":
    if sys.argv[2] == "text":
        clipboard.set_text("grün and 日本語", -1)
    else:
        pixels = bytes((x * 7 + y * 13 + c * 29) % 256 for y in range(300) for x in range(400) for c in range(3))
        clipboard.set_image(
            GdkPixbuf.Pixbuf.new_from_data(pixels, GdkPixbuf.Colorspace.RGB, False, 8, 400, 300, 1200)
        )
    # The toolkit takes the selection with the next trip to the server.
    Gdk.Display.get_default().sync()
    print("ready", flush=True)
    Gtk.main()
else:
    _, targets = clipboard.wait_for_targets()
    for target in targets or []:
        if target.name() in ("TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS"):
            continue
        data = clipboard.wait_for_contents(target)
        # A type that is offered may yet not be given.
        if data is not None:
            raw = data.get_data()
            print(target.name(), data.get_data_type().name(), data.get_format(), len(raw),
                  hashlib.sha256(raw).hexdigest())
    sys.stdout.flush()
