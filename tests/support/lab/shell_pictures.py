"""The states of the program's menu, windows and alerts, each of a program of its own, as `screenshots` draws them."""

import json
import shutil
import threading
import time

from .actions_window import action, store_actions
from .desktop import API_KEY
from .program import Lumiwren
from .updates import InstalledCopy, UpdateFeed
from .waiting import wait_until

MENU_AT = 450, 30
OWN = [action("Summarise in three points", key=1), action("Read a receipt & add it up", key=15, inputType="Screen Capture (OCR)"),
       action("ترجم إلى العربية", key=2),
       action("Rewrite politely, shorter, and without any of the words that a lawyer would use", key=13)]


class Shell:
    """A program as the state needs it: with these stored actions (None for the defaults and `more`), other user
    defaults, and this key."""

    def __init__(self, desktop, service, scale, actions=None, more=(), defaults=None, key=API_KEY, **environment):
        self.desktop, self.service, self.scale = desktop, service, scale
        if key is None:
            desktop.tool("secret-tool", "clear", "service", "com.lumiwren.app", "account", "openai-api-key")
        else:
            desktop.keyring.store(key)
        if actions is not None:
            store_actions(desktop, actions, **(defaults or {}))
        else:
            # Before them come those that every first start adds.
            desktop.user_defaults().write_text(json.dumps({"customActions": json.dumps(list(more)), **(defaults or {})}))
        desktop.display.move(int(880 * scale), int(660 * scale))
        self.lumiwren = Lumiwren(desktop, service, QT_SCALE_FACTOR=str(scale), **environment)
        self.has_key = key is not None

    def past_welcome(self):
        """Closes the welcome, where there is one."""
        if not self.has_key:
            welcome(self)
            self.desktop.display.press("Escape")
            self.lumiwren.welcome.wait_gone()

    def menu(self):
        self.past_welcome()
        return self.lumiwren.open_menu(*(int(part * self.scale) for part in MENU_AT)).wait_focused()

    def open(self, entry, window):
        self.past_welcome()
        self.desktop.display.move(*(int(part * self.scale) for part in MENU_AT))  # The window comes below it.
        self.lumiwren.status_item.choose(entry)
        window.wait_shown().wait_focused()
        self.desktop.display.move(int(880 * self.scale), int(660 * self.scale))
        return window

    def list(self):
        return self.open("Manage Actions...", self.lumiwren.actions)

    def key_form(self):
        return self.open("Set API Key...", self.lumiwren.api_key)

    def close(self):
        assert self.lumiwren.terminate() == 0


def wait_enabled(window, button):
    wait_until(lambda: "enabled" in window.find("push button", button).states, f"{button} to be enabled")
    return window


# -- the menu --------------------------------------------------------------------------------------------------

def menu_marks(shell):
    menu = shell.menu()
    wait_until(lambda: any(node.description == "set" for node in menu.nodes("push button")), "the mark of the key")
    return menu


def menu_highlight(shell):
    menu = menu_marks(shell)
    for _ in range(2):
        shell.desktop.display.press("Down")
    return menu


def menu_plain(shell):
    return shell.menu()


# -- the actions -----------------------------------------------------------------------------------------------

def clicked(state, button, text):
    """The state that follows when `button` is clicked in another one: once the window has the text."""
    def draw(shell):
        window = state(shell)
        window.click(button)
        window.wait_for(text)
        return window
    return draw


def actions_list(shell):
    return shell.list()


def actions_delete(shell):
    window = shell.list()
    window.click("Delete")
    wait_until(lambda: window.shows("Are you sure") or shell.lumiwren.alert("Delete Action").shown, "the alert")
    return window


editor_new = clicked(actions_list, "Add Action", "New Action")
editor_edit = clicked(actions_list, "Edit", "Edit Action")
editor_recording = clicked(editor_edit, "Change", "Press keys...")


def editor_captured(shell):
    window = editor_recording(shell)
    shell.desktop.display.press("Alt", "Shift", "k")
    window.wait_for("⌥⇧K")
    return window


# -- the key ---------------------------------------------------------------------------------------------------

def key_form(shell):
    return wait_enabled(shell.key_form(), "Test Connection")


def key_form_empty(shell):
    return shell.key_form()


def key_form_testing(shell):
    shell.service.answer = lambda exchange: exchange.until(threading.Event())
    window = key_form(shell)
    window.click("Test Connection")
    shell.service.wait_for_requests(1)
    return window


def key_form_refusing(shell):
    shell.service.answer = lambda exchange: exchange.error(401, "Unauthorized")
    return key_form(shell)


def welcome(shell):
    return shell.lumiwren.welcome.wait_shown().wait_focused()


def welcome_with_key(shell):
    window = welcome(shell)
    shell.desktop.display.type("sk-a-new-key-0123456789")
    return wait_enabled(window, "Test Connection")


# -- new versions ----------------------------------------------------------------------------------------------

NOTES = """<h2>What is new</h2><ul><li>Answers appear while they are being written, also in long tables.</li>
<li>A region can be drawn across several monitors.</li><li>Korean and Japanese text is recognised.</li></ul>
<h2>Mended</h2><ul><li>The panel stays on the screen when a monitor is unplugged.</li></ul>"""


class UpdatingShell(Shell):
    """A copy of the program with a feed that has `version`, of which `held` gives its answer half."""

    def __init__(self, desktop, service, scale, version="9.1", held=None, signed=True):
        folder = desktop.directory / "update"
        folder.mkdir()
        self.feed = UpdateFeed(folder)
        self.feed.version, self.feed.notes = version, NOTES
        if held:
            setattr(self.feed, held, threading.Event())
        if not signed:
            self.feed.served = self.feed.package[::-1]
        copy = InstalledCopy(folder, desktop, self.feed)
        super().__init__(desktop, service, scale, defaults={"SULastCheckTime": str(int(time.time()))},
                         **copy.environment())

    def close(self):
        super().close()
        self.feed.service.close()
        shutil.rmtree(self.feed.folder)


def update(text):
    def draw(shell):
        window = shell.open("Check for Updates...", shell.lumiwren.update)
        window.wait_for(text)
        return window
    return draw


update_checking = update("Checking")
update_found = update("is available")


# -- the rest --------------------------------------------------------------------------------------------------

def about(shell):
    return shell.open("About Lumiwren", shell.lumiwren.about)


def accessibility_alert(shell):
    return shell.lumiwren.alert("Accessibility Permission Required").wait_shown().wait_focused()


def screen_recording_alert(shell):
    shell.lumiwren.status_item.choose("Explain Screen Region")
    return shell.lumiwren.alert("Screen Recording Permission Required").wait_shown().wait_focused()


UNREACHABLE = {"OPENAI_BASE_URL": "http://127.0.0.1:1/v1"}
MANY = [action(f"Action {number}", key=18) for number in range(10, 60)]
# How each state comes about, and what its program is started with.
_STATES = {
    "menu": (menu_marks, {"more": OWN}), "menu-highlight": (menu_highlight, {}),
    "menu-empty": (menu_plain, {"actions": [], "key": None}), "menu-many": (menu_marks, {"actions": OWN + MANY}),
    "actions-empty": (actions_list, {"actions": []}), "actions": (actions_list, {"more": OWN}),
    "actions-many": (actions_list, {"actions": OWN + MANY}), "actions-delete": (actions_delete, {}),
    "editor-new": (editor_new, {}), "editor-edit": (editor_edit, {}), "editor-recording": (editor_recording, {}),
    "editor-captured": (editor_captured, {}),
    "key": (key_form, {}), "key-empty": (key_form_empty, {"key": None}),
    "key-shown": (clicked(key_form, "Show API Key", API_KEY), {}), "key-testing": (key_form_testing, {}),
    "key-success": (clicked(key_form, "Test Connection", "Connection successful!"), {}),
    "key-refused": (clicked(key_form_refusing, "Test Connection", "Connection failed"), {}),
    "key-unreachable": (clicked(key_form, "Test Connection", "onnect to"), UNREACHABLE),
    "welcome": (welcome, {"key": None}),
    "welcome-tested": (clicked(welcome_with_key, "Test Connection", "Connection successful!"), {"key": None}),
    "about": (about, {}), "accessibility-alert": (accessibility_alert, {}),
    "screen-recording-alert": (screen_recording_alert, {}),
}
_UPDATE_STATES = {
    "update-checking": (update_checking, {"held": "hold_feed"}), "update-found": (update_found, {}),
    "update-downloading": (clicked(update_found, "Install", "512.0 kB of 1.0 MB"), {"held": "hold"}),
    "update-ready": (clicked(update_found, "Install", "is ready to be installed"), {}),
    "update-newest": (update("is the newest version"), {"version": "9.0"}),
    "update-failed": (clicked(update_found, "Install", "is not signed"), {"signed": False}),
}
SHELL_STATES = {name: (kind, *state) for kind, states in ((Shell, _STATES), (UpdatingShell, _UPDATE_STATES))
                for name, state in states.items()}
SHELL_TURNING = {key_form_testing, update_checking}  # Something moves in it.
# What is special of the desktop of a state.
SHELL_DESKTOPS = {"accessibility-alert": {"posts_keys": False}, "screen-recording-alert": {"shows_screen": False}}
