"""The display's resolution, as a desktop's settings daemon tells it."""

import struct

import Xlib.display
from Xlib import X
from Xlib.protocol import event

_NAME = b"Xft/DPI"


class Resolution:
    """An XSETTINGS manager with nothing but the dots per inch, which it tells programs that start later, too."""

    def __init__(self, desktop, dots_per_inch=96):
        self.x = Xlib.display.Display(desktop.display.name)
        desktop.before_end(self.x.close)
        self.root = self.x.screen().root
        self.window = self.root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        self.serial = 0
        self.set(dots_per_inch)
        selection = self.x.get_atom("_XSETTINGS_S0")
        self.window.set_selection_owner(selection, X.CurrentTime)
        self.root.send_event(event.ClientMessage(window=self.root, client_type=self.x.get_atom("MANAGER"),
                                                 data=(32, [X.CurrentTime, selection, self.window.id, 0, 0])),
                             event_mask=X.StructureNotifyMask)
        self.x.sync()

    def set(self, dots_per_inch):
        self.serial += 1
        settings = self.x.get_atom("_XSETTINGS_SETTINGS")
        self.window.change_property(settings, settings, 8, b"".join([
            struct.pack("<BxxxII", 0, self.serial, 1), struct.pack("<BxH", 0, len(_NAME)), _NAME,
            b"\0" * (-len(_NAME) % 4), struct.pack("<Ii", self.serial, dots_per_inch * 1024)]))
        self.x.sync()
