"""A window of the program: read as a screen reader reads it, seen as the X server shows it, used as a person does."""

from .accessibility import Gone, Node
from .display import Frame
from .waiting import wait_until


class Window:
    """The window of that title, also while it is not there. `name` is what a screen reader calls it, where that is
    not the title."""

    def __init__(self, program, title, name=None):
        self.program, self.title, self.name = program, title, name or title
        self.display = program.desktop.display

    @property
    def window(self):
        """The viewable X window, or None."""
        return self.display.window(self.title)

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
        """The window without its shadow."""
        window, (left, right, top, bottom) = self.window_frame, self.shadow
        return Frame(window.x + left, window.y + top, window.width - left - right, window.height - top - bottom)

    @property
    def focused(self):
        window = self.window
        return window is not None and self.display.has_focus(window)

    @property
    def node(self) -> Node | None:
        application = self.program.desktop.accessibility.application(self.program.process.pid)
        if application is None:
            return None
        return next((child for child in application.children if child.name == self.name), None)

    def nodes(self, role=None, name=None):
        """The parts of that role and name that are showing, in the order of the tree; none while there is no window."""
        try:
            node = self.node if self.shown else None
            return [] if node is None else [part for part in node.walk() if "showing" in part.states
                                            and role in (None, part.role) and name in (None, part.name)]
        except Gone:
            return []

    def texts(self):
        """Every text and name that is showing, in the order of the tree; empty while there is no window."""
        try:
            return [text for part in self.nodes() for text in [part.text] if text]
        except Gone:
            return []

    def shows(self, text):
        return any(text in shown for shown in self.texts())

    def wait_shown(self, timeout=15.0):
        wait_until(lambda: self.shown, f"the window “{self.title}”", timeout)
        return self

    def wait_gone(self, timeout=15.0):
        wait_until(lambda: not self.shown, f"the end of the window “{self.title}”", timeout)

    def wait_focused(self, timeout=15.0):
        wait_until(lambda: self.focused, f"the window “{self.title}” to have the keyboard", timeout)
        return self

    def wait_for(self, text, timeout=15.0):
        """Waits until the window shows a text."""
        try:
            wait_until(lambda: self.shows(text), f"the window “{self.title}” to show {text!r}", timeout, 0.02)
        except TimeoutError as error:
            raise TimeoutError(f"{error}; it shows {self.texts()}; the program says:\n"
                               f"{self.program.process.output}") from None

    def find(self, role=None, name=None):
        def search():
            try:
                return self.node.find(role, name)
            except (AttributeError, Gone):
                return None
        return wait_until(search, f"{role or 'something'} named {name!r} in “{self.title}”", interval=0.02)

    def place(self, node):
        """Where a part of the window is on the screen. The toolkit can be wrong about where its window is, so only
        the part's place within the window is taken from it; it counts in points."""
        part, root, frame = node.frame, self.node.frame, self.window_frame
        scale = frame.width / root.width
        return Frame(round(frame.x + (part.x - root.x) * scale), round(frame.y + (part.y - root.y) * scale),
                     round(part.width * scale), round(part.height * scale))

    def click(self, node):
        """A part, or the name of a button."""
        if isinstance(node, str):
            node = self.find("push button", node)
        self.display.click(*self.place(node).centre)
