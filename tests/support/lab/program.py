"""The program under test and its panel."""

import itertools
import os
import re

from .accessibility import Gone, Node
from .display import Frame
from .process import leftovers
from .tray import wait_for_item
from .waiting import wait_until

_numbers = itertools.count(1)
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
    def window_frame(self):
        return self.display.frame(self.window)

    @property
    def shadow(self):
        """How far the shadow reaches into the window: left, right, top, bottom."""
        return tuple(self.display.property(self.window, "_GTK_FRAME_EXTENTS") or (0, 0, 0, 0))

    @property
    def frame(self):
        """The panel without its shadow."""
        window, (left, right, top, bottom) = self.window_frame, self.shadow
        return Frame(window.x + left, window.y + top, window.width - left - right, window.height - top - bottom)

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

    def turns(self, name):
        """The texts of the conversation's rows of one name, oldest first."""
        try:
            node = self.node if self.shown else None
            return [] if node is None else [part.text for part in node.walk() if part.name == name
                                            and "visible" in part.states
                                            and "org.a11y.atspi.Text" in part.interfaces]
        except Gone:
            return []

    def answers(self):
        return self.turns("Answer")

    def questions(self):
        return self.turns("Question")

    def errors(self):
        return self.turns("Error")

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
        the part's place within the window is taken from it; it counts in points."""
        part, root, frame = node.frame, self.node.frame, self.window_frame
        scale = frame.width / root.width
        return Frame(round(frame.x + (part.x - root.x) * scale), round(frame.y + (part.y - root.y) * scale),
                     round(part.width * scale), round(part.height * scale))

    def click(self, node):
        self.display.click(*self.place(node).centre)

    def ask(self, question):
        """Clicks into the follow-up field, types and presses Return."""
        self.wait_enabled()
        self.click(self.field)
        wait_until(lambda: self.display.has_focus(self.window), "the panel to have the keyboard")
        self.display.type(question + "\n")


class Lumiwren:
    """The running program, ready for use. Measurements do without accessibility, which has its own costs."""

    def __init__(self, desktop, service=None, accessible=True, **environment):
        self.desktop = desktop
        if service is not None:
            environment.setdefault("OPENAI_BASE_URL", service.url)
        if accessible:
            environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        self.mark = f"{desktop.mark}-program{next(_numbers)}"
        self.process = desktop.launch([binary()], mark=self.mark, **environment)
        self.panel = Panel(self)
        # Whoever answers has been set up: both are answered by the main loop.
        if accessible:
            self._wait_accessible()
        else:
            self.status_item.get("Id")

    def _wait_accessible(self):
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

    def processes(self):
        """What runs of the program, helpers included: (pid, command line) of each."""
        return leftovers(self.mark)

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

    def terminate(self):
        """Ends the program as the end of a session does; the exit status."""
        self.process.popen.terminate()
        return self.process.wait()

    def kill(self):
        """Ends the program as a crash does."""
        self.process.kill()
