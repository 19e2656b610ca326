"""The tool that lets the user choose a region of the screen."""

import os
import pathlib
import subprocess

import Xlib.error
from Xlib import X

from .display import Frame
from .waiting import wait_until


def binary():
    return pathlib.Path(os.environ["LUMIWREN_BIN"]).with_name("lumiwren-screencapture")


class Screencapture:
    """The running tool, started as the program starts it. `path` is where the picture will be."""

    def __init__(self, desktop, path=None, **environment):
        self.desktop, self.display = desktop, desktop.display
        self.folder = desktop.directory / "captures"
        self.folder.mkdir(exist_ok=True)
        self.path = pathlib.Path(path or self.folder / "picture.png")
        self.process = desktop.launch([str(binary()), "-i", "-s", str(self.path)], **environment)

    @property
    def window(self):
        """The viewable overlay, or None."""
        for window in self.display.root.query_tree().children:
            try:
                if (window.get_wm_class() or ("",))[0] == "lumiwren-screencapture" \
                        and window.get_attributes().map_state == X.IsViewable:
                    return window
            except Xlib.error.XError:
                continue  # gone meanwhile
        return None

    def wait_shown(self):
        def shown():
            if not self.process.running():
                raise RuntimeError(f"the tool ended with {self.process.wait()}: {self.process.output}")
            return self.window
        wait_until(shown, "the overlay")
        return self

    def wait_pointer_drawn(self):
        """Waits until the tool has the mouse, though another program has the session's pointer."""
        self.wait_shown()
        x, y = self.display.pointer()
        wait_until(lambda: self.colour(x - 9, y) == (255, 255, 255), "the drawn pointer")
        return self

    def colour(self, x, y):
        blue, green, red = bytes(self.display.pixels(Frame(x, y, 1, 1))[0])[:3]
        return red, green, blue

    def drag(self, start, end, follows=True):
        """Draws a rectangle; the button stays down."""
        self.display.move(*start, follows)
        self.display.button_down()
        self.display.move(*((a + b) // 2 for a, b in zip(start, end)), follows)
        self.display.move(*end, follows)

    def finish(self):
        """Lets the button go, and waits for the picture: its size and its pixels, three bytes each."""
        self.display.button_up()
        assert self.process.wait() == 0, self.process.output
        return read_png(self.path)

    def left(self):
        """What is in the folder of the pictures."""
        return sorted(entry.name for entry in self.folder.iterdir())


def read_png(path):
    """Size and pixels of a picture, as an ordinary decoder reads them."""
    def convert(*arguments):
        return subprocess.run(["convert", f"png:{path}", *arguments], check=True, capture_output=True,
                              timeout=20).stdout
    width, height = map(int, convert("-format", "%w %h", "info:-").split())
    return width, height, convert("-depth", "8", "rgb:-")


def screen_pixels(display, frame):
    """The same of a part of the screen."""
    data, width, height = display.pixels(frame)
    data = data if isinstance(data, bytes) else data.encode("latin-1")
    rgb = bytearray(width * height * 3)
    rgb[0::3], rgb[1::3], rgb[2::3] = data[2::4], data[1::4], data[0::4]
    return width, height, bytes(rgb)
