"""Applications in which a user selects text, worked with real keys and clicks."""

import os
import pathlib

from .waiting import wait_until


class Application:
    """A window with text in it. `selected_text()` is what the application itself calls selected."""

    def __init__(self, desktop, argv, title, **environment):
        self.desktop = desktop
        self.display = desktop.display
        self.process = desktop.launch(argv, **environment)
        self._wait([title] if isinstance(title, str) else title)

    def _wait(self, titles):
        def appeared():
            if not self.process.running():
                raise RuntimeError(f"{self.process.name} ended:\n{self.process.output}")
            return next(filter(None, map(self.display.window, titles)), None)
        self.window = wait_until(appeared, f"the window “{titles[0]}”", 30)
        self.frame = self.display.frame(self.window)

    def focus(self):
        """Puts the pointer into the window and the window in front.

        Not with a click: the window manager holds a click back while it raises the window, and a key that is
        pressed right behind it overtakes it.
        """
        self.frame = self.display.frame(self.window)
        self.display.move(*self.frame.centre)
        self.display.activate(self.window)

    def select_all(self, text):
        """Selects everything with Ctrl+A and waits until it is `text` that is selected."""
        self.focus()
        self.display.press("Control", "a")
        self.wait_selected(text)

    def wait_selected(self, text):
        wait_until(lambda: (self.desktop.selections.text("PRIMARY") or "").strip() == text.strip(),
                   f"the selection of {text[:40]!r}")

    def close(self):
        self.process.close()


class GtkEditor(Application):
    """A text view. what: "text"; "image" copies a picture and no text; "closing" closes at Alt+Shift+E."""

    def __init__(self, desktop, text, title="GTK editor", what="text", state="normal", place=(40, 40),
                 **environment):
        helper = pathlib.Path(__file__).parent / "helpers/gtk_editor.py"
        super().__init__(desktop, ["/usr/bin/python3", str(helper), title, text, what, state, *map(str, place)], title,
                         **environment)

    def typed(self):
        """What the window shows now, as a reader of the screen would get it by selecting all."""
        self.focus()
        self.display.press("Control", "a")
        return self.desktop.selections.text("PRIMARY")


class QtEditor(Application):
    """A plain text edit of the toolkit that the program itself uses; built with the tests.

    It types a letter also while Alt is down, over what is selected.
    """

    def __init__(self, desktop, text, *flags, title="Qt editor"):
        super().__init__(desktop, [os.environ["LUMIWREN_QT_EDITOR"], title, text, *flags], title)


class QtReader(QtEditor):
    """The same for text to read and not to write."""

    def __init__(self, desktop, text):
        super().__init__(desktop, text, "read-only", title="Qt reader")


class Mousepad(Application):
    def __init__(self, desktop, path):
        super().__init__(desktop, ["mousepad", "--disable-server", str(path)], f"{path} - Mousepad")


class Chromium(Application):
    """A page of plain text."""

    def __init__(self, desktop, text):
        folder = desktop.directory / "chromium"
        folder.mkdir(exist_ok=True)
        page = folder / "page.html"
        # The title tells when the page has the focus: keys before that would go nowhere.
        page.write_text(f"<!doctype html><meta charset=utf-8><title>Page</title><pre>{text}</pre><script>"
                        "(function wait() { if (document.hasFocus()) document.title = 'Page in front';"
                        " else requestAnimationFrame(wait) })()</script>")
        super().__init__(desktop, ["chromium", "--no-sandbox", "--disable-gpu", "--no-first-run", "--disable-sync",
                                   "--disable-background-networking", "--password-store=basic",
                                   f"--user-data-dir={folder}/profile", f"--app=file://{page}"],
                         ("Page", "Page in front"))

    def focus(self):
        super().focus()
        self.display.wait_for_window("Page in front")


class Terminal(Application):
    """A terminal in which a program runs that must not be interrupted."""

    def __init__(self, desktop, argv, title, text):
        self.record = desktop.directory / f"terminal-{id(self)}"
        self.text = text
        helper = pathlib.Path(__file__).parent / "helpers/terminal_program.py"
        super().__init__(desktop, [*argv, "/usr/bin/python3", str(helper), str(self.record), text], title)
        wait_until(lambda: self.record.exists() and "shown" in self.record.read_text(), "the terminal's text")

    def select_line(self):
        """Selects the first line with a triple click."""
        self.focus()
        frame = self.display.frame(self.window)
        self.display.click(frame.x + 30, frame.y + 10, times=3)
        self.wait_selected(self.text)

    def interrupted(self):
        return "interrupted" in self.record.read_text() or not self.process.running()


class XTerm(Terminal):
    def __init__(self, desktop, text):
        super().__init__(desktop, ["xterm", "-fa", "DejaVu Sans Mono", "-fs", "12", "-T", "xterm", "+sb",
                                   # However long a busy machine takes for it, three clicks are a triple click.
                                   "-xrm", "*multiClickTime: 60000", "-e"], "xterm", text)


class VteTerminal(Terminal):
    def __init__(self, desktop, text):
        helper = pathlib.Path(__file__).parent / "helpers/vte_terminal.py"
        super().__init__(desktop, ["/usr/bin/python3", str(helper), "VTE"], "VTE", text)


class GtkMenu(Application):
    """A window with a menu of four entries. `seen()` is what has reached it."""

    def __init__(self, desktop, place=(100, 100)):
        helper = pathlib.Path(__file__).parent / "helpers/gtk_menu.py"
        super().__init__(desktop, ["/usr/bin/python3", str(helper), "GTK menu", *map(str, place)], "GTK menu")

    def seen(self):
        return self.process.output.splitlines()

    def open(self):
        """Opens the menu; where the first entry is."""
        self.focus()
        x, y = self.frame.x + 50, self.frame.y + 60
        self.display.click(x, y, button=3)
        wait_until(lambda: "opened" in self.seen() and self.seen().count("button-release-event 3") >= 1, "the menu")
        return x + 20, y + 12
