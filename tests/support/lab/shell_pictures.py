"""The states of the program's menu, windows and alerts, each of a program of its own, as `screenshots` draws them."""

import json
import threading

from .actions_window import action, store_actions
from .desktop import API_KEY
from .program import Lumiwren
from .waiting import wait_until

MENU_AT = 450, 30


OWN = [action("Summarise in three points", key=1), action("Read a receipt & add it up", key=15, inputType="Screen Capture (OCR)"),
       action("ترجم إلى العربية", key=2),
       action("Rewrite politely, shorter, and without any of the words that a lawyer would use", key=13)]


class Shell:
    """A program as the state needs it: with these stored actions (None for the defaults), and this key."""

    def __init__(self, desktop, service, scale, actions=None, more=(), key=API_KEY, **environment):
        self.desktop, self.service, self.scale = desktop, service, scale
        if key is None:
            desktop.tool("secret-tool", "clear", "service", "com.lumiwren.app", "account", "openai-api-key")
        else:
            desktop.keyring.store(key)
        if actions is not None:
            store_actions(desktop, actions)
        else:
            # Before them come those that every first start adds.
            desktop.user_defaults().write_text(json.dumps({"customActions": json.dumps(list(more))}))
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

def actions_list(shell):
    return shell.list()


def actions_delete(shell):
    window = shell.list()
    window.click("Delete")
    wait_until(lambda: window.shows("Are you sure") or shell.lumiwren.alert("Delete Action").shown, "the alert")
    return window


def editor_new(shell):
    window = shell.list()
    window.click("Add Action")
    window.wait_for("New Action")
    return window


def editor_edit(shell):
    window = shell.list()
    window.click("Edit")
    window.wait_for("Edit Action")
    return window


def editor_recording(shell):
    window = editor_edit(shell)
    window.click("Change")
    window.wait_for("Press keys...")
    return window


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


def key_form_shown(shell):
    window = key_form(shell)
    window.click("Show API Key")
    window.wait_for(API_KEY)
    return window


def key_form_testing(shell):
    shell.service.answer = lambda exchange: exchange.until(threading.Event())
    window = key_form(shell)
    window.click("Test Connection")
    shell.service.wait_for_requests(1)
    return window


def key_form_success(shell):
    window = key_form(shell)
    window.click("Test Connection")
    window.wait_for("Connection successful!")
    return window


def key_form_refused(shell):
    shell.service.answer = lambda exchange: exchange.error(401, "Unauthorized")
    window = key_form(shell)
    window.click("Test Connection")
    window.wait_for("Connection failed")
    return window


def key_form_unreachable(shell):
    window = key_form(shell)
    window.click("Test Connection")
    wait_until(lambda: window.shows("onnect to"), "the reason")
    return window


def welcome(shell):
    return shell.lumiwren.welcome.wait_shown().wait_focused()


def welcome_tested(shell):
    window = welcome(shell)
    shell.desktop.display.type("sk-a-new-key-0123456789")
    wait_enabled(window, "Test Connection").click("Test Connection")
    window.wait_for("Connection successful!")
    return window


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
SHELL_STATES = {
    "menu": (menu_marks, {"more": OWN}), "menu-highlight": (menu_highlight, {}),
    "menu-empty": (menu_plain, {"actions": [], "key": None}), "menu-many": (menu_marks, {"actions": OWN + MANY}),
    "actions-empty": (actions_list, {"actions": []}), "actions": (actions_list, {"more": OWN}),
    "actions-many": (actions_list, {"actions": OWN + MANY}), "actions-delete": (actions_delete, {}),
    "editor-new": (editor_new, {}), "editor-edit": (editor_edit, {}), "editor-recording": (editor_recording, {}),
    "editor-captured": (editor_captured, {}),
    "key": (key_form, {}), "key-empty": (key_form_empty, {"key": None}), "key-shown": (key_form_shown, {}),
    "key-testing": (key_form_testing, {}), "key-success": (key_form_success, {}), "key-refused": (key_form_refused, {}),
    "key-unreachable": (key_form_unreachable, UNREACHABLE),
    "welcome": (welcome, {"key": None}), "welcome-tested": (welcome_tested, {"key": None}),
    "about": (about, {}), "accessibility-alert": (accessibility_alert, {}),
    "screen-recording-alert": (screen_recording_alert, {}),
}
SHELL_TURNING = {key_form_testing}  # Something moves in it.
# What is special of the desktop of a state.
SHELL_DESKTOPS = {"accessibility-alert": {"posts_keys": False}, "screen-recording-alert": {"shows_screen": False}}
