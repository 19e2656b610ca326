"""The program under test and its windows."""

import itertools
import os
import re

from .accessibility import Gone
from .process import leftovers
from .tray import wait_for_item
from .waiting import stays_false, wait_until
from .window import Window

_numbers = itertools.count(1)
TITLE = "Lumiwren"
_SANITIZER = re.compile(r"ERROR: \w+Sanitizer|runtime error:|SUMMARY: \w+Sanitizer")


def binary():
    return os.environ["LUMIWREN_BIN"]


class Panel(Window):
    """The floating panel with the conversation."""

    def __init__(self, program):
        super().__init__(program, TITLE)

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

    def wait_for_clicks_to_count(self):
        """A click elsewhere closes the panel half a second after it was shown, by the clock of a program that may be
        slow; meanwhile it stays."""
        assert stays_false(lambda: not self.shown, 1.5)

    def ask(self, question):
        """Clicks into the follow-up field, types and presses Return."""
        self.wait_enabled()
        self.click(self.field)
        wait_until(lambda: self.display.has_focus(self.window), "the panel to have the keyboard")
        self.display.type(question + "\n")


class Lumiwren:
    """The running program, ready for use. Measurements do without accessibility, which has its own costs."""

    def __init__(self, desktop, service=None, accessible=True, program=None, **environment):
        self.desktop = desktop
        if service is not None:
            environment.setdefault("OPENAI_BASE_URL", service.url)
        if accessible:
            environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        self.mark = f"{desktop.mark}-program{next(_numbers)}"
        self.process = desktop.launch([program or binary()], mark=self.mark, **environment)
        self.panel = Panel(self)
        self.menu = Window(self, "Lumiwren menu")
        self.actions = Window(self, "Actions")
        self.api_key = Window(self, "OpenAI API Key")
        self.welcome = Window(self, "Welcome to Lumiwren")
        self.about = Window(self, "About Lumiwren")
        self.update = Window(self, "Software Update")
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

    def open_menu(self, x=600, y=300):
        """Clicks the status item, as the tray tells it; the menu, which has the keyboard."""
        self.status_item.activate(x, y)
        return self.menu.wait_shown()

    def choose(self, entry):
        """Clicks an entry of the menu."""
        self.open_menu().click(entry)
        self.menu.wait_gone()

    def alert(self, message):
        """The alert with that message."""
        return Window(self, TITLE, message)

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
