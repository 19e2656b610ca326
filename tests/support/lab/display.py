"""X servers without a screen, and what is to be seen and pressed on them."""

import os
import struct
import subprocess
import zlib
from dataclasses import dataclass

import Xlib.display
import Xlib.error
from Xlib import X, XK, Xatom
from Xlib.ext import xtest

from .process import Process
from .waiting import wait_until

# Physical keys by the name of what an ANSI keyboard prints on them: evdev key code + 8.
_ROWS = {
    9: ["Escape"], 10: list("1234567890-="), 22: ["BackSpace", "Tab"], 24: list("qwertyuiop[]"),
    36: ["Return", "Control"], 38: list("asdfghjkl;'`"), 50: ["Shift", "\\"], 52: list("zxcvbnm,./"),
    62: ["Shift_R"], 64: ["Alt", "space", "Caps_Lock"], 67: [f"F{n}" for n in range(1, 11)], 77: ["Num_Lock"],
    95: ["F11", "F12"], 105: ["Control_R"], 108: ["Alt_R"], 118: ["Insert", "Delete"], 133: ["Super"],
}
KEYS = {name: first + index for first, names in _ROWS.items() for index, name in enumerate(names)}
KEYS.update({"KP_Enter": 104, "Home": 110, "Up": 111, "Left": 113, "Right": 114, "End": 115, "Down": 116})


@dataclass(frozen=True)
class Frame:
    """A rectangle in the X server's coordinates."""
    x: int
    y: int
    width: int
    height: int

    @property
    def right(self):
        return self.x + self.width

    @property
    def bottom(self):
        return self.y + self.height

    @property
    def centre(self):
        return self.x + self.width // 2, self.y + self.height // 2

    def contains(self, x, y):
        return self.x <= x < self.right and self.y <= y < self.bottom


class Display:
    """A connection to an X server. Keys and the pointer are those of `input_display` (this one unless given)."""

    def __init__(self, name, input_display=None):
        self.name = name
        self.x = Xlib.display.Display(name)
        self.root = self.x.screen().root
        self.input = (input_display or self).x if input_display else self.x

    # -- keyboard and pointer ------------------------------------------------------------------------------

    def _fake(self, *args, **kwargs):
        xtest.fake_input(self.input, *args, **kwargs)
        self.input.sync()

    def key_down(self, name):
        self._fake(X.KeyPress, KEYS[name])

    def key_up(self, name):
        self._fake(X.KeyRelease, KEYS[name])

    def press(self, *names):
        """Presses the keys in order and lets them go in reverse order, as fast as the server takes it."""
        for name in names:
            xtest.fake_input(self.input, X.KeyPress, KEYS[name])
        for name in reversed(names):
            xtest.fake_input(self.input, X.KeyRelease, KEYS[name])
        self.input.sync()

    def type(self, text):
        """Types ASCII text with the keys that produce it in the current layout."""
        # Nobody tells this connection of a change of the layout unless it asks for events.
        self.x.refresh_keyboard_mapping(Xlib.protocol.event.MappingNotify(
            request=X.MappingKeyboard, first_keycode=8, count=248))
        for character in text:
            keysym = XK.string_to_keysym({"\n": "Return", " ": "space"}.get(character, "")) or ord(character)
            code = self.x.keysym_to_keycode(keysym)
            if not code:
                raise ValueError(f"no key types {character!r}")
            shifted = self.x.keycode_to_keysym(code, 0) != keysym
            if shifted:
                xtest.fake_input(self.input, X.KeyPress, KEYS["Shift"])
            xtest.fake_input(self.input, X.KeyPress, code)
            xtest.fake_input(self.input, X.KeyRelease, code)
            if shifted:
                xtest.fake_input(self.input, X.KeyRelease, KEYS["Shift"])
        self.input.sync()

    def keys_down(self):
        """Names (or codes) of the keys that the server believes to be down."""
        names = {code: name for name, code in KEYS.items()}
        bits = self.x.query_keymap()
        return [names.get(code, code) for code in range(8, 256) if bits[code >> 3] & 1 << (code & 7)]

    def modifiers(self):
        """The modifier mask without locks and buttons."""
        return self.root.query_pointer().mask & (X.ShiftMask | X.ControlMask | X.Mod1Mask | X.Mod4Mask)

    def move(self, x, y, follows=True):
        """`follows`: the session's pointer goes along, as it does unless a program has taken the mouse itself."""
        self._fake(X.MotionNotify, x=x, y=y)
        if follows:
            wait_until(lambda: self.pointer() == (x, y), f"the pointer at {x}, {y}")

    def pointer(self):
        place = self.root.query_pointer()
        return place.root_x, place.root_y

    def click(self, x, y, button=1, times=1):
        self.move(x, y)
        for _ in range(times):
            xtest.fake_input(self.input, X.ButtonPress, button)
            xtest.fake_input(self.input, X.ButtonRelease, button)
        self.input.sync()

    def button_down(self, button=1):
        self._fake(X.ButtonPress, button)

    def button_up(self, button=1):
        self._fake(X.ButtonRelease, button)

    def drag(self, start, end):
        self.move(*start)
        self.button_down()
        self.move(*((a + b) // 2 for a, b in zip(start, end)))
        self.move(*end)
        self.button_up()

    # -- windows -------------------------------------------------------------------------------------------

    def windows(self, title):
        """The viewable windows with that title, wherever the window manager has put them, lowest first."""
        found = []

        def look_at(window, depth):
            try:
                if window.get_attributes().map_state != X.IsViewable:
                    return
                if self.title(window) == title:
                    found.append(window)
                elif depth:
                    for child in window.query_tree().children:
                        look_at(child, depth - 1)
            except Xlib.error.XError:
                pass  # This one is gone meanwhile; the others are not.

        look_at(self.root, 4)
        return found

    def window(self, title):
        return next(iter(self.windows(title)), None)

    def wait_for_window(self, title, timeout=15.0):
        return wait_until(lambda: self.window(title), f"a window “{title}”", timeout)

    def windows_of_type(self, kind):
        """The viewable windows below the root that say they are of that kind, such as TOOLTIP, lowest first."""
        wanted = self.x.get_atom(f"_NET_WM_WINDOW_TYPE_{kind}")
        found = []
        for window in self.root.query_tree().children:
            try:
                viewable = window.get_attributes().map_state == X.IsViewable
            except Xlib.error.XError:
                continue
            if viewable and wanted in (self.property(window, "_NET_WM_WINDOW_TYPE") or []):
                found.append(window)
        return found

    def windows_of_class(self, name):
        """The viewable windows below the root whose program calls itself that, lowest first."""
        found = []
        for window in self.root.query_tree().children:
            try:
                if window.get_attributes().map_state == X.IsViewable and name in (window.get_wm_class() or ()):
                    found.append(window)
            except Xlib.error.XError:
                continue
        return found

    def stacking(self, window):
        """How high a window is, or the one it is in, among all that are on the screen."""
        while window.query_tree().parent.id != self.root.id:
            window = window.query_tree().parent
        return [child.id for child in self.root.query_tree().children].index(window.id)

    def wait_above(self, upper, lower):
        """A window manager may give a window the keyboard first and its place among the others afterwards."""
        wait_until(lambda: self.stacking(upper) > self.stacking(lower),
                   f"“{self.title(upper)}” to be above “{self.title(lower)}”")

    def title(self, window):
        name = self.property(window, "_NET_WM_NAME")
        if name is None:
            name = window.get_full_property(Xatom.WM_NAME, X.AnyPropertyType)
            name = name and name.value
        return name.decode(errors="replace") if isinstance(name, bytes) else name

    def property(self, window, name):
        """The value of a property: bytes or a list of numbers; None when there is none."""
        try:
            value = window.get_full_property(self.x.get_atom(name), X.AnyPropertyType)
        except Xlib.error.XError:
            return None
        return value and (value.value if isinstance(value.value, bytes) else list(value.value))

    def frame(self, window):
        geometry = window.get_geometry()
        origin = window.translate_coords(self.root, 0, 0)
        return Frame(-origin.x, -origin.y, geometry.width, geometry.height)

    def active_window(self):
        """The id of the window with the keyboard focus, as the window manager says; else the server's focus."""
        active = self.property(self.root, "_NET_ACTIVE_WINDOW")
        if active:
            return active[0]
        focus = self.x.get_input_focus().focus
        return focus if isinstance(focus, int) else focus.id

    def has_focus(self, window):
        """Whether keys go to the window or to a window inside it."""
        focus = self.x.get_input_focus().focus
        while not isinstance(focus, int) and focus.id != self.root.id:
            if focus.id == window.id:
                return True
            focus = focus.query_tree().parent
        return False

    def send_to_root(self, window, message, data, source_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask):
        event = Xlib.protocol.event.ClientMessage(
            window=window, client_type=self.x.get_atom(message), data=(32, (list(data) + [0] * 5)[:5]))
        self.root.send_event(event, event_mask=source_mask)
        self.x.sync()

    def activate(self, window):
        """Gives a window the focus as a task bar would."""
        self.send_to_root(window, "_NET_ACTIVE_WINDOW", [2, X.CurrentTime])
        # The window may have the focus for another reason: what is done next is not to be overtaken by this.
        self.wait_for_manager()
        wait_until(lambda: self.has_focus(window), "the focus")

    def wait_for_manager(self):
        """Waits until the window manager has done all that it was asked for: it does one thing after the other."""
        window = self.root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        window.configure(width=2)  # which it decides about
        wait_until(lambda: window.get_geometry().width == 2, "the window manager")
        window.destroy()

    def paint_ground(self, color):
        """Fills the desktop, for compositors too."""
        size = self.root.get_geometry()
        pixmap = self.root.create_pixmap(size.width, size.height, size.depth)
        pixmap.fill_rectangle(pixmap.create_gc(foreground=color), 0, 0, size.width, size.height)
        for name in ("_XROOTPMAP_ID", "ESETROOT_PMAP_ID"):
            self.root.change_property(self.x.get_atom(name), Xatom.PIXMAP, 32, [pixmap.id])
        self.root.change_attributes(background_pixmap=pixmap)
        self.root.clear_area()
        self.x.sync()

    # -- pixels --------------------------------------------------------------------------------------------

    def pixels(self, frame):
        """Rows of BGRX bytes, clipped to the screen."""
        x, y = max(frame.x, 0), max(frame.y, 0)
        size = self.root.get_geometry()
        width, height = min(frame.right, size.width) - x, min(frame.bottom, size.height) - y
        return self.root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF).data, width, height

    def screenshot(self, path, frame=None):
        """Writes the screen, or a part of it, as PNG."""
        size = self.root.get_geometry()
        data, width, height = self.pixels(frame or Frame(0, 0, size.width, size.height))
        data = data if isinstance(data, bytes) else data.encode("latin-1")
        rgb = bytearray(width * height * 3)
        rgb[0::3], rgb[1::3], rgb[2::3] = data[2::4], data[1::4], data[0::4]
        rows = b"".join(b"\0" + rgb[row * width * 3:(row + 1) * width * 3] for row in range(height))

        def chunk(kind, body):
            return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

        with open(path, "wb") as file:
            file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
                       + chunk(b"IDAT", zlib.compress(rows, 6)) + chunk(b"IEND", b""))

    def close(self):
        self.x.close()


class XServer:
    """Xvfb; its display number is its own choice, so any number of them run side by side."""

    argv = ["Xvfb", "-screen", "0", "{width}x{height}x24", "-nolisten", "tcp", "-noreset", "-dpi", "96"]

    def __init__(self, size, env, log, mark, arguments=()):
        reading, writing = os.pipe()
        width, height = size
        argv = [word.format(width=width, height=height) for word in self.argv] + [*arguments, "-displayfd", str(writing)]
        self.process = Process(argv, env, log, pass_fds=[writing], mark=mark)
        os.close(writing)
        with open(reading) as numbers:
            number = numbers.readline().strip()
        if not number:
            raise RuntimeError(f"{argv[0]} did not start:\n{self.process.output}")
        self.name = f":{number}"

    def close(self):
        self.process.close()


class Xephyr(XServer):
    """An X server in a window of another one: that one's keyboard and pointer are its physical devices."""

    argv = ["Xephyr", "-screen", "{width}x{height}", "-nolisten", "tcp", "-noreset", "-dpi", "96"]


def run_tool(argv, env, **kwargs):
    """A tool that does its work and ends; its standard output."""
    done = subprocess.run(argv, env=env, capture_output=True, text=True, timeout=20, **kwargs)
    if done.returncode:
        raise RuntimeError(f"{' '.join(argv)}: exit {done.returncode}: {done.stderr.strip()}")
    return done.stdout
