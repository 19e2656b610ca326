"""The window in which the user's actions are listed and changed, and the file in which they are kept."""

import json
import uuid

from .accessibility import Gone
from .waiting import wait_until
from .window import Window

ALT_SHIFT = 0xA0000


def action(name, prompt="{text}", key=9, modifiers=ALT_SHIFT, identifier=None, **more):
    """An action as it is stored; the key is V unless given, which no default action has."""
    return {"id": identifier or str(uuid.uuid4()).upper(), "name": name, "prompt": prompt, "isDefault": False,
            "hotkey": {"keyCode": key, "modifiers": modifiers}, "inputType": "Text Selection", **more}


def store_actions(desktop, actions, **more):
    """Leaves the actions, or a text that is none, for a program that is started later."""
    text = actions if isinstance(actions, str) else json.dumps(actions)
    desktop.user_defaults().write_text(json.dumps(
        {"customActions": text, "hasInitializedDefaultActions": True, "hasUpdatedDefaultPrompts_v1.4": True, **more}))


def stored_actions(desktop):
    """What the file says now; an error where it is not whole."""
    return json.loads(json.loads(desktop.user_defaults().read_text())["customActions"])


class ActionsWindow(Window):
    """The open window."""

    def __init__(self, program):
        """Opens it from the menu, or brings it to the front."""
        super().__init__(program, "Actions")
        program.status_item.choose("Manage Actions...")
        self.wait_shown().wait_focused()

    def controls(self):
        """The showing parts in the order of the tree, without those of the list."""
        def walk(node):
            yield node
            if node.role != "list":
                for child in node.children:
                    yield from walk(child)
        return [part for part in walk(self.node) if "showing" in part.states] if self.shown else []

    def control(self, role, name):
        """That part of the window itself, or None."""
        return next((part for part in self.controls() if (part.role, part.name) == (role, name)), None)

    def press(self, name):
        """Clicks a button of the header or the footer."""
        self.click(wait_until(lambda: self.control("push button", name), f"the button “{name}”"))

    # -- the list ------------------------------------------------------------------------------------------

    def rows(self):
        try:
            listing = next((part for part in self.controls() if part.role == "list"), None)
            return [] if listing is None else listing.children
        except Gone:
            return []

    def names(self):
        return [row.name for row in self.rows()]

    def row(self, number):
        """The texts and buttons of a row that show: the name, perhaps the badge, the kind of input, the hotkey."""
        return [part.name for part in self.rows()[number].children if part.name and "showing" in part.states]

    def wait_names(self, *names):
        wait_until(lambda: self.names() == list(names), f"the actions {names}; they are {self.names()}")

    def wait_row_focus(self, number):
        """Quicker than wait_focus() where there are many rows."""
        wait_until(lambda: "focused" in self.rows()[number].states, f"the keyboard in row {number}", interval=0.02)

    def press_in_row(self, number, button):
        self.click(self.rows()[number].find("push button", button))

    @property
    def question(self):
        """Whether an action is to be deleted."""
        return self.program.alert("Delete Action")

    def ask_to_delete(self, number):
        self.press_in_row(number, "Delete")
        return self.question.wait_shown().wait_focused()

    # -- the keyboard --------------------------------------------------------------------------------------

    def focus(self):
        """Role and name of what has the keyboard, or None."""
        try:
            focused = [part for part in self.nodes() if {"focused", "focusable"} <= part.states]
            return (focused[-1].role, focused[-1].name) if focused else None
        except Gone:
            return None

    def wait_focus(self, role, name):
        def there():
            return self.focus() == (role, name)
        try:
            wait_until(there, f"the keyboard in the {role} “{name}”", interval=0.02)
        except TimeoutError as error:
            raise TimeoutError(f"{error}; it is in {self.focus()}") from None

    def check_tab_order(self, stops):
        """That Tab goes through the stops, each a role and a name, round and round, and Shift and Tab back."""
        self.wait_focus(*stops[0])
        for stop in stops[1:] + stops[:1]:
            self.display.press("Tab")
            self.wait_focus(*stop)
        for stop in reversed(stops):
            self.display.press("Shift", "Tab")
            self.wait_focus(*stop)

    # -- the editor ----------------------------------------------------------------------------------------

    @property
    def editor(self):
        """The open editor, or None."""
        try:
            return next((Editor(self, part) for part in self.controls() if part.role == "dialog"), None)
        except Gone:
            return None

    def wait_editor(self):
        """The editor, once it stands still."""
        editor = wait_until(lambda: self.editor, "the editor", interval=0.02)
        middle = self.window_frame.centre[1]
        wait_until(lambda: abs(self.place(editor.node).centre[1] - middle) <= 1, "the editor in its place")
        return editor

    def edit(self, number):
        self.press_in_row(number, "Edit")
        return self.wait_editor()

    def add(self):
        self.press("Add Action")
        return self.wait_editor()

    def wait_editor_gone(self):
        wait_until(lambda: self.editor is None, "the end of the editor", interval=0.02)


class Editor:
    """The form for one action."""

    def __init__(self, window, node):
        self.window, self.node = window, node
        self.display = window.display

    def part(self, role, name):
        return next(part for part in self.node.walk() if (part.role, part.name) == (role, name))

    @property
    def title(self):
        return self.node.name

    @property
    def name(self):
        return self.part("text", "Name")

    @property
    def prompt(self):
        return self.part("text", "Prompt")

    @property
    def input(self):
        """The chosen kind of input."""
        return [part.name for part in self.node.walk() if part.role == "radio button" and "checked" in part.states]

    def _hotkey_parts(self, role):
        return [part for part in self.node.walk()
                if part.role == role and part.description == "Hotkey" and "showing" in part.states]

    @property
    def hotkey(self):
        """What the box of the hotkey says."""
        return self._hotkey_parts("label")[0].name

    def hotkey_buttons(self):
        return [part.name for part in self._hotkey_parts("push button")]

    def press_hotkey_button(self, name):
        button = wait_until(lambda: next((part for part in self._hotkey_parts("push button") if part.name == name),
                                         None), f"the button “{name}” of the hotkey", interval=0.02)
        self.window.click(button)

    def wait_hotkey(self, text):
        wait_until(lambda: self.hotkey == text, f"the hotkey {text}", interval=0.02)

    def record(self):
        self.press_hotkey_button("Change")
        self.wait_hotkey("Press keys...")

    def button(self, name):
        """Of those at the bottom."""
        return [part for part in self.node.walk() if (part.role, part.name) == ("push button", name)][-1]

    def press(self, name):
        self.window.click(self.button(name))

    def enter(self, field):
        """Clicks into a field, unless it has the keyboard: a key that is pressed right behind a click can overtake
        it."""
        if "focused" not in field.states:
            self.window.click(field)
            wait_until(lambda: "focused" in field.states, "the keyboard in the field", interval=0.02)

    def replace(self, field, text):
        """Types over what is in a field."""
        self.enter(field)
        self.display.press("Control", "a")
        self.display.type(text)
        wait_until(lambda: field.text == text, f"{text!r} in the field", interval=0.02)
