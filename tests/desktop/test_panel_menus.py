"""Menus of the panel, which has no window manager to put them in front and no focus to open them with."""

import pytest
from lab import WINDOW_MANAGERS, Desktop, GtkEditor, stays_false, wait_until


def open_panel(lumiwren):
    """A panel with an answer, beside the editor whose text it is about."""
    desktop = lumiwren.desktop
    editor = GtkEditor(desktop, "The selected text")
    editor.select_all("The selected text")
    desktop.display.move(300, 200)
    lumiwren.press_hotkey()
    panel = lumiwren.panel.wait_shown()
    panel.wait_for("Answer.")
    panel.wait_enabled()
    panel.wait_for_clicks_to_count()
    return editor, panel


def menu_of(display):
    """What the program shows above its panel."""
    return display.window("lumiwren")  # It has no title of its own.


def open_menu(panel, part, column):
    """Columns differ from one call to the next: two clicks at one place would be a double click."""
    place = panel.place(part)
    panel.display.click(place.x + 10 + 30 * column, place.centre[1], button=3)
    menu = wait_until(lambda: menu_of(panel.display), "the menu")
    assert panel.display.stacking(menu) > panel.display.stacking(panel.window)
    return panel.display.frame(menu)


def wait_no_menu(display):
    wait_until(lambda: menu_of(display) is None, "the menu's end")


@pytest.mark.parametrize("window_manager", WINDOW_MANAGERS)
def test_the_answers_menu_works_though_the_panel_has_no_keyboard(service, programs, window_manager):
    with Desktop(window_manager) as desktop:
        display = desktop.display
        lumiwren = programs.start(desktop, service)
        editor, panel = open_panel(lumiwren)
        answer = panel.find(name="Answer")
        # Two entries of one height: Copy, Select All.
        menu = open_menu(panel, answer, 1)
        display.click(menu.centre[0], menu.y + menu.height * 3 // 4)
        wait_no_menu(display)
        assert panel.shown
        menu = open_menu(panel, answer, 2)
        display.click(menu.centre[0], menu.y + menu.height // 4)
        wait_no_menu(display)
        wait_until(lambda: desktop.selections.text("CLIPBOARD") == "Answer.", "the copied answer")
        assert panel.shown
        assert display.has_focus(editor.window)
        # Escape and a click elsewhere close the menu first, and only then the panel.
        open_menu(panel, answer, 3)
        display.press("Escape")
        wait_no_menu(display)
        assert stays_false(lambda: not panel.shown, 0.2)
        open_menu(panel, answer, 4)
        display.click(20, 780)
        wait_no_menu(display)
        assert stays_false(lambda: not panel.shown, 0.2)
        display.click(20, 780)
        panel.wait_gone()
        assert lumiwren.terminate() == 0


@pytest.mark.parametrize("window_manager", WINDOW_MANAGERS)
def test_the_fields_menu_pastes_and_escape_closes_it_alone(service, programs, window_manager):
    with Desktop(window_manager) as desktop:
        display = desktop.display
        lumiwren = programs.start(desktop, service)
        editor, panel = open_panel(lumiwren)
        desktop.own_selection({"UTF8_STRING": b"pasted"})
        open_menu(panel, panel.field, 0)
        display.press("Escape")
        wait_no_menu(display)
        assert stays_false(lambda: not panel.shown, 0.2)
        open_menu(panel, panel.field, 1)
        display.press("p")  # the mnemonic of Paste
        wait_until(lambda: panel.field.text == "pasted", "the pasted text", interval=0.02)
        wait_no_menu(display)
        # The keyboard is the field's, as if it had been clicked.
        wait_until(lambda: display.has_focus(panel.window), "the panel to have the keyboard")
        display.type("!")
        wait_until(lambda: panel.field.text == "pasted!", "what was typed", interval=0.02)
        display.press("Escape")
        panel.wait_gone()
        wait_until(lambda: display.has_focus(editor.window), "the keyboard back in the editor")
        assert lumiwren.terminate() == 0
