"""The program under test and its panel."""

import os
import re

from .accessibility import Gone, Node
from .display import Frame
from .tray import wait_for_item
from .waiting import wait_until

TITLE = "Lumiwren"
_SANITIZER = re.compile(r"ERROR: \w+Sanitizer|runtime error:|SUMMARY: \w+Sanitizer")


def binary():
    return os.environ["LUMIWREN_BIN"]


class Panel:
    """The floating panel, read as a screen reader reads it and seen as the X server shows it."""

    def __init__(self, program):
        self.program = program
        self.display = program.desktop.display

    @property
    def window(self):
        """The viewable X window, or None."""
        return self.display.window(TITLE)

    @property
    def shown(self):
        return self.window is not None

    @property
    def frame(self):
        return self.display.frame(self.window)

    @property
    def node(self) -> Node | None:
        application = self.program.desktop.accessibility.application(self.program.process.pid)
        if application is None:
            return None
        return next((child for child in application.children if child.name == TITLE), None)

    def texts(self):
        """Every text and name that is showing, in the order of the tree; empty while there is no panel."""
        try:
            node = self.node if self.shown else None
            return [] if node is None else [text for part in node.walk() if "showing" in part.states
                                            for text in [part.text] if text]
        except Gone:
            return []

    def shows(self, text):
        return any(text in shown for shown in self.texts())

    def wait_shown(self, timeout=15.0):
        wait_until(lambda: self.shown, "the panel", timeout)
        return self

    def wait_gone(self, timeout=15.0):
        wait_until(lambda: not self.shown, "the panel's end", timeout)

    def wait_for(self, text, timeout=15.0):
        """Waits until the panel shows a text."""
        try:
            wait_until(lambda: self.shows(text), f"the panel to show {text!r}", timeout, 0.02)
        except TimeoutError as error:
            raise TimeoutError(f"{error}; it shows {self.texts()}; the program says:\n"
                               f"{self.program.process.output}") from None

    def find(self, role=None, name=None):
        def search():
            try:
                return self.node.find(role, name)
            except Gone:
                return None
        return wait_until(search, f"{role or 'something'} named {name!r} in the panel", interval=0.02)

    @property
    def field(self):
        """The follow-up field."""
        def search():
            try:
                return next((node for node in self.node.walk() if "editable" in node.states), None)
            except Gone:
                return None
        return wait_until(search, "the follow-up field", interval=0.02)

    def wait_enabled(self):
        """Waits until a follow-up can be typed."""
        wait_until(lambda: "enabled" in self.field.states, "the end of loading", interval=0.02)

    def place(self, node):
        """Where a part of the panel is on the screen. The toolkit can be wrong about where its window is, so only
        the part's place within the window is taken from it."""
        part, root, frame = node.frame, self.node.frame, self.frame
        return Frame(frame.x + part.x - root.x, frame.y + part.y - root.y, part.width, part.height)

    def click(self, node):
        self.display.click(*self.place(node).centre)

    def ask(self, question):
        """Clicks into the follow-up field, types and presses Return."""
        self.wait_enabled()
        self.click(self.field)
        wait_until(lambda: self.display.has_focus(self.window), "the panel to have the keyboard")
        self.display.type(question + "\n")


class Lumiwren:
    """A running program. It is ready when its status item, or else its accessible root, answers."""

    def __init__(self, desktop, service=None, arguments=(), wait=True, **environment):
        self.desktop = desktop
        if service is not None:
            environment.setdefault("OPENAI_BASE_URL", service.url)
        self.process = desktop.launch([binary(), *arguments], QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", NO_AT_BRIDGE=None,
                                      **environment)
        self.panel = Panel(self)
        if wait:
            self.wait_ready()

    def wait_ready(self):
        def ready():
            if not self.process.running():
                raise RuntimeError(f"the program ended with {self.process.popen.returncode}:\n{self.process.output}")
            try:
                application = self.desktop.accessibility.application(self.process.pid)
                return application is not None and application.role
            except Gone:
                return False
        wait_until(ready, "the program to be ready")

    @property
    def status_item(self):
        return wait_for_item(self.desktop.bus, self.process.pid)

    def press_hotkey(self, key="e"):
        """Alt+Shift and the key, all at once, as quick as fingers never are."""
        self.desktop.display.press("Alt", "Shift", key)

    def sanitizer_report(self):
        found = _SANITIZER.search(self.process.output)
        return self.process.output[found.start():] if found else None

    def quit(self):
        """Chooses Quit in the status item's menu and waits for the end; the exit status."""
        self.status_item.choose("Quit")
        return self.process.wait()

    def close(self):
        self.process.close()
