"""Recording an action's hotkey with real keys: what is taken, what is not, and who gets the keys meanwhile."""

import pytest
from lab import GtkEditor, stays_false, wait_until
from lab.actions_window import ActionsWindow, stored_actions
from lab.display import KEYS
from Xlib import X

DEFAULTS = ["Explain Selected Text", "Explain Screen Region", "Translate to English"]
NOTHING = "Press keys..."
LONG_ENOUGH = 0.3


@pytest.fixture
def window(lumiwren):
    return ActionsWindow(lumiwren)


@pytest.fixture
def recording(window):
    """The editor of the first action, recording its hotkey."""
    editor = window.edit(0)
    editor.record()
    return editor


def stays(editor, text):
    return stays_false(lambda: editor.hotkey != text, LONG_ENOUGH)


def test_what_is_pressed_is_shown_and_saved(desktop, window):
    editor = window.edit(0)
    for keys, text, stored in (
            (["Alt", "Shift", "k"], "⌥⇧K", {"keyCode": 40, "modifiers": 0xA0000}),
            (["Control", "Alt", "Super", "Shift", "1"], "⌃⌥⇧⌘1", {"keyCode": 18, "modifiers": 0x1E0000}),
            (["Shift", "a"], "⇧A", {"keyCode": 0, "modifiers": 0x20000}),
            (["Alt", "F5"], "⌥?", {"keyCode": 96, "modifiers": 0x80000})):
        editor.record()
        assert editor.hotkey_buttons() == ["Cancel"]
        desktop.display.press(*keys)
        editor.wait_hotkey(text)
        assert editor.hotkey_buttons() == ["Save", "Cancel"]
        editor.press_hotkey_button("Save")
        wait_until(lambda: editor.hotkey_buttons() == ["Change"], "the end of the recording", interval=0.02)
        assert (editor.hotkey, editor.name.text) == (text, DEFAULTS[0])
        editor.press("Save")
        window.wait_editor_gone()
        wait_until(lambda: text in window.row(0), "the hotkey in the list")
        assert stored_actions(desktop)[0]["hotkey"] == stored
        editor = window.edit(0)


def test_a_later_combination_replaces_the_one_before_and_cancel_forgets_both(desktop, window, recording):
    for keys, text in ((["Alt", "Shift", "k"], "⌥⇧K"), (["Control", "j"], "⌃J"), (["Alt", "Shift", "k"], "⌥⇧K")):
        desktop.display.press(*keys)
        recording.wait_hotkey(text)
    recording.press_hotkey_button("Cancel")
    recording.wait_hotkey("⌥⇧E")
    assert recording.hotkey_buttons() == ["Change"]
    recording.record()
    assert recording.hotkey_buttons() == ["Cancel"]


def test_plain_typing_goes_to_the_field_and_is_not_recorded(desktop, window, recording):
    recording.enter(recording.prompt)
    desktop.display.press("Control", "a")
    recording.wait_hotkey("⌃A")
    desktop.display.press("End")
    desktop.display.type("xyz")
    wait_until(lambda: "xyz" in recording.prompt.text, "the typed letters")
    assert recording.hotkey == "⌃A"


def test_a_modifier_alone_is_not_recorded(desktop, window, recording):
    for keys in ("Shift",), ("Shift_R",), ("Control",), ("Control_R",), ("Alt",), ("Alt_R",), ("Super",), ("Alt", "Shift"):
        desktop.display.press(*keys)
    desktop.display.press("Caps_Lock")
    try:
        assert stays(recording, NOTHING)
        # It is no part of what is recorded either.
        desktop.display.press("Alt", "k")
        recording.wait_hotkey("⌥K")
    finally:
        desktop.display.press("Caps_Lock")


def test_a_held_combination_is_recorded_once_and_types_nothing(desktop, window, recording):
    before = recording.name.text
    recording.enter(recording.name)
    desktop.display.key_down("Shift")
    desktop.display.key_down("k")
    recording.wait_hotkey("⇧K")
    # Longer than it takes until keys repeat.
    assert stays_false(lambda: recording.name.text != before, 1)
    desktop.display.key_up("k")
    desktop.display.key_up("Shift")
    assert stays(recording, "⇧K")
    assert recording.name.text == before


def test_the_combination_of_an_action_runs_it_only_when_nothing_is_recorded(desktop, service, lumiwren, recording):
    lumiwren.press_hotkey("t")
    recording.wait_hotkey("⌥⇧T")
    assert stays_false(lambda: lumiwren.panel.shown or service.requests, LONG_ENOUGH)
    recording.press_hotkey_button("Cancel")
    recording.wait_hotkey("⌥⇧E")
    recording.press("Cancel")
    recording.window.wait_editor_gone()
    recording.window.press("Done")
    recording.window.wait_gone()
    editor = GtkEditor(desktop, "The selected text")
    editor.select_all("The selected text")
    lumiwren.press_hotkey("t")
    lumiwren.panel.wait_shown().wait_for("Answer.")
    assert len(service.requests) == 1


def test_a_combination_that_another_program_keeps_for_itself_is_not_recorded(desktop, window, recording):
    display = desktop.display
    code = KEYS["F7"]
    display.root.grab_key(code, X.Mod1Mask, False, X.GrabModeAsync, X.GrabModeAsync)
    display.x.sync()
    try:
        display.press("Alt", "F7")
        wait_until(lambda: display.x.pending_events() and display.x.next_event().type == X.KeyRelease,
                   "the key where it belongs")
        assert stays(recording, NOTHING)
        display.press("Alt", "F6")
        recording.wait_hotkey("⌥?")
    finally:
        display.root.ungrab_key(code, X.Mod1Mask)
        display.x.sync()


def test_the_window_managers_combination_to_close_a_window_closes_it(desktop, service, lumiwren, recording):
    desktop.display.press("Alt", "F4")
    recording.window.wait_gone()
    window = ActionsWindow(lumiwren)
    assert window.edit(0).hotkey == "⌥⇧E"


def test_a_hotkey_that_was_saved_works_at_once_and_the_old_one_no_more(desktop, service, lumiwren, recording):
    window = recording.window
    lumiwren.press_hotkey("k")
    recording.wait_hotkey("⌥⇧K")
    recording.press_hotkey_button("Save")
    recording.wait_hotkey("⌥⇧K")
    recording.press("Save")
    window.wait_editor_gone()
    # The window of the actions stays open.
    editor = GtkEditor(desktop, "The selected text", place=(700, 520))
    editor.select_all("The selected text")
    lumiwren.press_hotkey("e")
    assert stays_false(lambda: lumiwren.panel.shown, LONG_ENOUGH)
    editor.select_all("The selected text")
    lumiwren.press_hotkey("k")
    lumiwren.panel.wait_shown().wait_for("Answer.")
    assert window.shown


def test_escape_ends_the_recording_then_the_editor_then_the_window(desktop, window, recording):
    desktop.display.press("Alt", "k")
    recording.wait_hotkey("⌥K")
    desktop.display.press("Escape")
    recording.wait_hotkey("⌥⇧E")
    assert window.editor is not None
    desktop.display.press("Escape")
    window.wait_editor_gone()
    assert window.shown
    desktop.display.press("Escape")
    window.wait_gone()


def end_by_save(editor):
    editor.press("Save")
    editor.window.wait_editor_gone()


def end_by_cancel(editor):
    editor.press("Cancel")
    editor.window.wait_editor_gone()


def end_by_the_window_manager(editor):
    window = editor.window
    window.display.send_to_root(window.window, "_NET_CLOSE_WINDOW", [0, 2])
    window.wait_gone()


@pytest.mark.parametrize("end", [end_by_save, end_by_cancel, end_by_the_window_manager])
def test_the_recording_ends_with_the_editor(desktop, service, lumiwren, recording, end):
    lumiwren.press_hotkey("k")
    recording.wait_hotkey("⌥⇧K")
    end(recording)
    # What was recorded and not saved is forgotten.
    assert stored_actions(desktop)[0]["hotkey"] == {"keyCode": 14, "modifiers": 0xA0000}
    editor = GtkEditor(desktop, "The selected text", place=(700, 520))
    editor.select_all("The selected text")
    lumiwren.press_hotkey("e")
    lumiwren.panel.wait_shown().wait_for("Answer.")


def test_the_hotkey_is_recorded_with_the_keyboard_alone(desktop, window):
    display = desktop.display
    display.press("Return")
    editor = window.wait_editor()
    display.press("Tab")
    window.wait_focus("push button", "Change")
    display.press("space")
    editor.wait_hotkey(NOTHING)
    window.wait_focus("push button", "Cancel")
    display.press("Alt", "Shift", "k")
    editor.wait_hotkey("⌥⇧K")
    window.wait_focus("push button", "Save")
    display.press("Return")
    window.wait_focus("push button", "Change")
    assert editor.hotkey == "⌥⇧K"


def test_a_hotkey_that_is_not_recorded_types_nothing_over_what_is_selected(desktop, lumiwren, window):
    editor = window.edit(0)
    for field in (editor.prompt, editor.name):
        before = field.text
        editor.enter(field)
        desktop.display.press("Control", "a")
        lumiwren.press_hotkey("k")
        desktop.display.press("Super", "Shift", "k")
        lumiwren.press_hotkey("e")
        # It runs its action all the same.
        lumiwren.panel.wait_shown()
        desktop.display.press("Escape")
        lumiwren.panel.wait_gone()
        assert field.text == before


def test_keys_pressed_in_another_program_are_not_recorded(desktop, service, lumiwren, recording):
    editor = GtkEditor(desktop, "The selected text", place=(700, 520))
    editor.select_all("The selected text")
    desktop.display.press("Alt", "k")
    assert stays(recording, NOTHING)
    # There, the hotkeys are what they always are.
    lumiwren.press_hotkey("e")
    lumiwren.panel.wait_shown().wait_for("Answer.")
    assert recording.hotkey == NOTHING
