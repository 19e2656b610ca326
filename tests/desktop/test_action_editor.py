"""The form in which an action is made and changed: its fields, its keys, and that what is saved is in the file."""

import time

import pytest
from gi.repository import GLib
from lab import GtkEditor, SettingsPortal, stays_false, wait_until
from lab.accessibility import Gone
from lab.actions_window import ActionsWindow, action, store_actions, stored_actions
from lab.portal import GNOME

DEFAULTS = ["Explain Selected Text", "Explain Screen Region", "Translate to English"]
TRANSLATE = "00000000-0000-0000-0000-000000000003"


@pytest.fixture
def window(lumiwren):
    return ActionsWindow(lumiwren)


def saved(editor):
    """Saves, and waits until the list shows again."""
    editor.press("Save")
    editor.window.wait_editor_gone()


# -- a new action and an edited one ----------------------------------------------------------------------------

def test_a_new_action_starts_with_its_defaults_and_is_saved_as_it_was_typed(desktop, window):
    editor = window.add()
    assert editor.title == "New Action"
    window.wait_focus("text", "Name")
    assert (editor.name.text, editor.prompt.text, editor.hotkey, editor.input) == ("", "", "⌥⇧1", ["Text Selection"])
    desktop.display.type("Summary & more")
    editor.replace(editor.prompt, "Sum up:\n\n{text}\n")
    saved(editor)
    window.wait_names(*DEFAULTS, "Summary & more")
    assert window.row(3) == ["Summary & more", "Text Selection", "⌥⇧1", "Edit", "Delete"]
    new = stored_actions(desktop)[3]
    assert {key: new[key] for key in new if key != "id"} == {
        "name": "Summary & more", "prompt": "Sum up:\n\n{text}\n", "inputType": "Text Selection", "isDefault": False,
        "hotkey": {"keyCode": 18, "modifiers": 0xA0000}}
    assert len({each["id"] for each in stored_actions(desktop)}) == 4


def test_an_edited_default_keeps_its_identifier_and_is_a_default_no_more(desktop, window):
    before = stored_actions(desktop)
    editor = window.edit(2)
    assert editor.title == "Edit Action"
    assert (editor.name.text, editor.hotkey, editor.input) == ("Translate to English", "⌥⇧T", ["Text Selection"])
    assert editor.prompt.text == before[2]["prompt"]
    saved(editor)
    wait_until(lambda: "Default" not in window.row(2), "the row without the badge")
    assert stored_actions(desktop) == before[:2] + [{**before[2], "isDefault": False}]
    wait_until(lambda: window.shows("Restore Defaults"), "the button to restore")


def test_an_editor_that_is_cancelled_changes_nothing(desktop, window):
    before = desktop.user_defaults().read_text()
    for end in (lambda: editor.press("Cancel"), lambda: desktop.display.press("Escape")):
        editor = window.edit(1)
        editor.replace(editor.name, "Changed")
        editor.replace(editor.prompt, "Changed")
        end()
        window.wait_editor_gone()
        assert window.names() == DEFAULTS
        assert desktop.user_defaults().read_text() == before


def test_without_a_prompt_nothing_can_be_saved(desktop, window):
    before = desktop.user_defaults().read_text()
    editor = window.add()
    assert "enabled" not in editor.button("Save").states
    editor.press("Save")
    desktop.display.press("Return")
    assert stays_false(lambda: window.editor is None, 0.3)
    editor.replace(editor.prompt, " ")
    wait_until(lambda: "enabled" in editor.button("Save").states, "the button to be enabled")
    desktop.display.press("BackSpace")
    wait_until(lambda: "enabled" not in editor.button("Save").states, "the button to be disabled")
    assert desktop.user_defaults().read_text() == before
    desktop.display.type("x")
    saved(editor)
    window.wait_names(*DEFAULTS, "Untitled Action")
    assert stored_actions(desktop)[3]["name"] == "Untitled Action"


def test_return_saves_from_the_name_and_ends_a_line_in_the_prompt(desktop, window):
    for number, key in enumerate(("Return", "KP_Enter"), 3):
        editor = window.add()
        editor.replace(editor.prompt, "One")
        desktop.display.press(key)
        desktop.display.type("two")
        wait_until(lambda: editor.prompt.text == "One\ntwo", "two lines")
        editor.replace(editor.name, key)
        desktop.display.press(key)
        window.wait_editor_gone()
        wait_until(lambda: window.names()[number:] == [key], "the new action")
        assert stored_actions(desktop)[number]["prompt"] == "One\ntwo"


def test_tab_goes_through_the_editor_and_no_further(desktop, window):
    window.edit(0)
    stops = [("text", "Name"), ("push button", "Change"), ("radio button", "Text Selection"), ("text", "Prompt"),
             ("push button", "Cancel"), ("push button", "Save")]
    window.check_tab_order(stops)


def test_an_action_is_made_with_the_keyboard_alone(desktop, window):
    display = desktop.display
    for _ in range(3):
        display.press("Tab")
    window.wait_focus("push button", "Add Action")
    display.press("space")
    editor = window.wait_editor()
    display.type("By keys")
    for stop in (("push button", "Change"), ("radio button", "Text Selection")):
        display.press("Tab")
        window.wait_focus(*stop)
    display.press("Right")
    window.wait_focus("radio button", "Screen Capture")
    assert editor.input == ["Screen Capture"]
    display.press("Tab")
    display.type("Read {text}")
    display.press("Tab")
    display.press("Tab")
    window.wait_focus("push button", "Save")
    display.press("Return")
    window.wait_editor_gone()
    window.wait_names(*DEFAULTS, "By keys")
    assert window.row(3)[1:3] == ["Screen Capture (OCR)", "⌥⇧1"]
    # The keyboard is where it was before.
    window.wait_focus("push button", "Add Action")


def test_the_kinds_of_input_are_chosen_by_mouse_and_say_what_they_are(desktop, window):
    editor = window.add()
    for name, tooltip in (("Screen Capture", "Captures a screen region and extracts text using OCR"),
                          ("Text Selection", "Uses currently highlighted text from any application")):
        tile = editor.part("radio button", name)
        assert tile.description == tooltip
        place = window.place(tile)
        desktop.display.click(place.x + 4, place.y + 4)
        wait_until(lambda: editor.input == [name], "the chosen tile")
        # A tooltip comes where the pointer rests; a click puts it off.
        desktop.display.move(place.x + 6, place.y + 6)
        desktop.display.move(place.x + 12, place.y + 8)
        wait_until(lambda: shown_tooltips(window) == [tooltip], "the tooltip")
        desktop.display.move(window.frame.x + 20, window.frame.bottom + 60)
        wait_until(lambda: not shown_tooltips(window), "the end of the tooltip")
    editor.press("Cancel")
    window.wait_editor_gone()


def shown_tooltips(window):
    if not window.display.windows_of_type("TOOLTIP"):
        return []
    application = window.program.desktop.accessibility.application(window.program.process.pid)
    try:
        return [part.name for part in application.children if part.role == "tool tip" and "showing" in part.states]
    except Gone:
        return []


def test_a_click_right_behind_the_end_of_the_editor_is_not_lost(desktop, window):
    window.add()
    done = window.place(window.control("push button", "Done")).centre
    desktop.display.move(*done)
    desktop.display.press("Escape")
    wait_until(lambda: window.editor is None, "the end of the editor", interval=0)
    desktop.display.click(*done)
    window.wait_gone(1)


# -- text of every kind ----------------------------------------------------------------------------------------

ANY_TEXT = "Fünf größere 🐦‍⬛ Vögel\n日本語のテキスト {text}\nعربي\t<b>&amp;</b>\u00a0…\n"


def test_text_of_every_kind_is_pasted_and_saved_as_it_is(desktop, window):
    editor = window.add()
    desktop.own_selection({"UTF8_STRING": ANY_TEXT.encode(), "text/html": b"<h1>Not this</h1>"})
    for field in (editor.prompt, editor.name):
        editor.enter(field)
        desktop.display.press("Control", "v")
    wait_until(lambda: editor.prompt.text == ANY_TEXT, "the pasted prompt")
    wait_until(lambda: editor.name.text == ANY_TEXT.replace("\n", " "), "the pasted name, on one line")
    saved(editor)
    wait_until(lambda: len(window.rows()) == 4, "the new action")
    new = stored_actions(desktop)[3]
    assert new["prompt"] == ANY_TEXT
    assert new["name"] == ANY_TEXT.replace("\n", " ")
    # What was saved is shown and saved again without a change.
    saved(window.edit(3))
    assert stored_actions(desktop)[3] == new


def test_umlauts_and_composed_letters_are_typed_as_the_layout_has_them(desktop, window):
    editor = window.add()
    desktop.set_layout("de")
    try:
        desktop.display.type("äÖüß ")
        # The toolkit's composing overtakes letters that are still on their way.
        wait_until(lambda: editor.name.text == "äÖüß ", "the letters that have a key")
        desktop.display.press("=")  # a dead acute accent there
        desktop.display.type("e")
        wait_until(lambda: editor.name.text == "äÖüß é", "the composed letter")
    finally:
        desktop.set_layout("us")


# -- nothing is lost -------------------------------------------------------------------------------------------

def test_a_change_that_is_seen_outlives_the_program(desktop, service, programs, window):
    editor = window.edit(0)
    editor.replace(editor.name, "Renamed")
    editor.press("Save")
    wait_until(lambda: window.names()[0] == "Renamed", "the change", interval=0)
    window.program.kill()
    assert stored_actions(desktop)[0]["name"] == "Renamed"
    again = ActionsWindow(programs.start(desktop, service))
    assert again.names() == ["Renamed", *DEFAULTS[1:]]
    question = again.ask_to_delete(0)
    question.click("Delete")
    wait_until(lambda: len(again.names()) == 2, "the change", interval=0)
    again.program.kill()
    assert [each["name"] for each in stored_actions(desktop)] == DEFAULTS[1:]


def test_whenever_the_program_is_killed_the_file_is_the_old_or_the_new_one(desktop, service, programs):
    long = "word " * 20000
    store_actions(desktop, [action("Old", prompt=long)])
    before = stored_actions(desktop)
    seen = set()
    for delay in (0.001, 0.003, 0.006, 0.012):
        program = programs.start(desktop, service)
        window = ActionsWindow(program)
        editor = window.edit(0)
        editor.replace(editor.name, "New")
        editor.press("Save")
        time.sleep(delay)  # The moment of the crash.
        program.kill()
        after = stored_actions(desktop)
        assert after in (before, [{**before[0], "name": "New"}])
        seen.add(after[0]["name"])
        store_actions(desktop, before)
    assert seen <= {"Old", "New"}
    programs.start(desktop, service)  # It removes what was half written.
    assert [path.name for path in desktop.user_defaults().parent.iterdir()] == ["defaults.json"]


# -- what assistive technology knows ---------------------------------------------------------------------------

def test_every_control_has_a_name_and_a_role(desktop, window):
    def check():
        for part in window.nodes():
            if "focusable" in part.states:
                assert part.name, part.describe()
                assert part.role in ("push button", "text", "radio button", "list item", "dialog"), part.describe()

    check()
    names = [(part.role, part.name, part.description) for part in window.nodes("list item")]
    assert names[0] == ("list item", "Explain Selected Text", "⌥⇧E, Text Selection")
    editor = window.edit(0)
    check()
    assert editor.prompt.description == "Use {text} where the selected text should be inserted"
    editor.record()
    check()


def test_the_keyboard_goes_to_the_name_and_comes_back_to_where_it_was(desktop, window):
    window.wait_focus("list item", DEFAULTS[0])
    desktop.display.press("Down")
    window.wait_focus("list item", DEFAULTS[1])
    desktop.display.press("Return")
    window.wait_editor()
    window.wait_focus("text", "Name")
    desktop.display.press("Escape")
    window.wait_editor_gone()
    window.wait_focus("list item", DEFAULTS[1])
    # The same by mouse, from another row.
    window.edit(2)
    window.wait_focus("text", "Name")
    desktop.display.press("Return")
    window.wait_editor_gone()
    window.wait_focus("list item", DEFAULTS[2])


def test_the_editor_keeps_what_is_typed_while_the_user_is_in_another_program(desktop, window):
    other = GtkEditor(desktop, "Other", title="Other", place=(700, 560))
    editor = window.add()
    window.wait_focused()
    editor.replace(editor.name, "Half")
    desktop.display.activate(other.window)
    window.program.status_item.choose("Manage Actions...")
    window.wait_focused()
    window.wait_focus("text", "Name")
    desktop.display.type("way")
    wait_until(lambda: window.editor and window.editor.name.text == "Halfway", "what was typed")


# -- hands that are not exact ----------------------------------------------------------------------------------

@pytest.fixture
def ten(desktop, service, programs):
    """The window with ten actions, in which nothing slides."""
    portal = SettingsPortal(desktop)
    portal.set(GNOME, "enable-animations", GLib.Variant("b", False))
    store_actions(desktop, [action(f"Action {number}", prompt="Say {text}") for number in range(10)])
    return ActionsWindow(programs.start(desktop, service))


def test_a_double_click_on_edit_only_opens_the_editor(desktop, ten):
    # Where a tile comes to be, and where Save does.
    for number in (3, 7):
        desktop.display.click(*ten.place(ten.rows()[number].find("push button", "Edit")).centre, times=2)
        editor = ten.wait_editor()
        assert stays_false(lambda: ten.editor is None or editor.input != ["Text Selection"], 0.3)
        desktop.display.press("Escape")
        ten.wait_editor_gone()


def test_a_double_click_on_save_opens_nothing_that_is_below(desktop, ten):
    editor = ten.edit(0)
    desktop.display.click(*ten.place(editor.button("Save")).centre, times=2)
    ten.wait_editor_gone()
    assert stays_false(lambda: ten.editor, 0.3)


def test_a_double_click_on_change_starts_the_recording(desktop, ten):
    editor = ten.edit(0)
    desktop.display.click(*ten.place(editor.button("Change")).centre, times=2)
    editor.wait_hotkey("Press keys...")
    assert stays_false(lambda: editor.hotkey != "Press keys...", 0.3)


def test_return_that_is_held_opens_and_no_more(desktop, ten):
    # On the row itself, on its Edit, and on its Delete.
    for opened in ("editor", "editor", "question"):
        desktop.display.key_down("Return")
        try:
            wait_until(lambda: ten.editor if opened == "editor" else ten.question.focused, f"the {opened}")
            # Longer than it takes until keys repeat.
            assert stays_false(lambda: (ten.editor is None) == (opened == "editor")
                               or ten.question.shown != (opened == "question"), 1)
        finally:
            desktop.display.key_up("Return")
        desktop.display.press("Escape")
        ten.wait_focused()
        ten.wait_editor_gone()
        desktop.display.press("Tab")


def test_escape_that_is_held_ends_one_thing(desktop, ten):
    editor = ten.edit(0)
    editor.record()
    desktop.display.key_down("Escape")
    try:
        editor.wait_hotkey("⌥⇧V")
        assert stays_false(lambda: ten.editor is None, 1)
    finally:
        desktop.display.key_up("Escape")
