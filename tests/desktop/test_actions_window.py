"""The window of the actions: where it stands, that it is in front, how it goes, and what its list shows."""

import pytest
from lab import WINDOW_MANAGERS, Desktop, Frame, GtkEditor, stays_false, wait_until
from lab.actions_window import ActionsWindow, action, store_actions, stored_actions

WIDTH, HEIGHT = 480, 500
MARGIN = 10
ALL_DESKTOPS = 0xFFFFFFFF
DEFAULTS = ["Explain Selected Text", "Explain Screen Region", "Translate to English"]


def cover_the_screen(editor):
    display = editor.display
    wait_until(lambda: display.frame(editor.window) == Frame(0, 0, *editor.desktop.size), "the full screen")
    display.activate(editor.window)


# -- in front --------------------------------------------------------------------------------------------------

@pytest.mark.parametrize("window_manager", WINDOW_MANAGERS)
def test_the_window_comes_to_the_front_and_stays_above_ordinary_windows(service, programs, window_manager):
    with Desktop(window_manager) as desktop:
        display = desktop.display
        lumiwren = programs.start(desktop, service)
        full = GtkEditor(desktop, "Full", title="Full", state="fullscreen")
        cover_the_screen(full)
        window = ActionsWindow(lumiwren)
        display.wait_above(window.window, full.window)
        wait_until(lambda: display.property(window.window, "_NET_WM_DESKTOP") == [ALL_DESKTOPS], "every desktop")

        # The user goes to the other program and asks again.
        display.activate(full.window)
        shown = window.window.id
        lumiwren.status_item.choose("Manage Actions...")
        window.wait_focused()
        assert [each.id for each in display.windows("Actions")] == [shown]
        display.wait_above(window.window, full.window)

        # The question is in front of the window, and the window gets the keyboard back.
        question = window.ask_to_delete(0)
        display.wait_above(question.window, window.window)
        display.activate(full.window)
        lumiwren.status_item.choose("Manage Actions...")
        question.wait_focused()
        display.wait_above(question.window, window.window)
        display.press("Escape")
        question.wait_gone()
        window.wait_focused()

        full.close()
        ordinary = GtkEditor(desktop, "Ordinary", title="Ordinary", place=(window.frame.x + 300, 60))
        display.activate(ordinary.window)
        assert window.shown
        display.wait_above(window.window, ordinary.window)
        start = window.frame
        display.drag((start.x + 200, start.y + 20), (start.x + 140, start.y + 75))
        moved = Frame(start.x - 60, start.y + 55, WIDTH, HEIGHT)
        wait_until(lambda: window.frame == moved, f"the moved window; it is at {window.frame}, was at {start}")
        window.press("Done")
        window.wait_gone()
        assert lumiwren.terminate() == 0


def test_asked_for_many_times_there_is_one_window(desktop, lumiwren):
    for _ in range(5):
        lumiwren.status_item.choose("Manage Actions...")
    lumiwren.actions.wait_shown().wait_focused()
    assert stays_false(lambda: len(desktop.display.windows("Actions")) != 1, 0.5)


def test_the_window_is_on_every_desktop(desktop, lumiwren, editor):
    window = ActionsWindow(lumiwren)
    display = desktop.display
    try:
        display.send_to_root(display.root, "_NET_CURRENT_DESKTOP", [1, 0])
        wait_until(lambda: display.window("GTK editor") is None, "the other desktop")
        assert window.shown
        window.click("Done")
        window.wait_gone()
    finally:
        display.send_to_root(display.root, "_NET_CURRENT_DESKTOP", [0, 0])
        display.wait_for_window("GTK editor")


# -- its place -------------------------------------------------------------------------------------------------

def test_the_window_is_at_the_top_of_the_screen_with_its_middle_at_the_pointer(desktop, lumiwren):
    for x, left in ((640, 400), (0, 10), (249, 10), (251, 11), (1279, 790), (1029, 789), (1031, 790)):
        desktop.display.move(x, 600)
        window = ActionsWindow(lumiwren)
        assert window.frame == Frame(left, MARGIN, WIDTH, HEIGHT), x
        desktop.display.press("Escape")
        window.wait_gone()


def test_opened_from_the_menu_the_window_is_where_the_click_was(desktop, lumiwren):
    for x in (30, 640, 1250):
        menu = lumiwren.open_menu(x, 300)
        entry = menu.find("push button", "Manage Actions...")
        clicked = menu.place(entry).centre[0]
        menu.click(entry)
        window = lumiwren.actions.wait_shown().wait_focused()
        left = max(MARGIN, min(1280 - MARGIN - WIDTH, clicked - WIDTH // 2))
        assert window.frame == Frame(left, MARGIN, WIDTH, HEIGHT)
        window.click("Done")
        window.wait_gone()


def test_with_two_monitors_the_window_is_where_the_user_works(service, programs):
    with Desktop(monitors=[(1280, 800), (1024, 768)]) as desktop:
        lumiwren = programs.start(desktop, service)
        editors = [GtkEditor(desktop, "Text", title=f"Editor {x}", place=(x, 560)) for x in (60, 1400)]
        for focused, pointer, left in ((0, 640, 400), (0, 1900, 790), (1, 1600, 1360), (1, 2303, 1814), (1, 3, 1290)):
            desktop.display.activate(editors[focused].window)
            desktop.display.move(pointer, 650)
            window = ActionsWindow(lumiwren)
            assert window.frame == Frame(left, MARGIN, WIDTH, HEIGHT), (focused, pointer)
            desktop.display.press("Escape")
            window.wait_gone()
        assert lumiwren.terminate() == 0


def test_at_another_scale_the_window_has_the_same_place_in_points(service, programs):
    with Desktop(size=(1920, 1200)) as desktop:
        lumiwren = programs.start(desktop, service, QT_SCALE_FACTOR="1.5")
        for x, left in ((0, 15), (960, 600), (1919, 1920 - 15 - 720)):
            desktop.display.move(x, 1000)
            window = ActionsWindow(lumiwren)
            assert window.frame == Frame(left, 15, 720, 750)
            desktop.display.drag((left + 300, 40), (left + 240, 100))
            wait_until(lambda: window.frame == Frame(left - 60, 75, 720, 750), "the moved window")
            window.press("Done")
            window.wait_gone()
        assert lumiwren.terminate() == 0


# -- moving and closing ----------------------------------------------------------------------------------------

def test_the_window_is_moved_by_its_background(desktop, lumiwren):
    window = ActionsWindow(lumiwren)
    for x, y in ((200, 20), (240, 380), (30, 480)):  # the header, below the list, the footer
        start = window.frame
        held = (start.x + x, start.y + y)
        desktop.display.drag(held, (held[0] - 77, held[1] + 51))
        moved = Frame(start.x - 77, start.y + 51, WIDTH, HEIGHT)
        wait_until(lambda: window.frame == moved, "the moved window")
        # Let go, it stays.
        desktop.display.move(held[0] + 50, held[1] + 50)
        assert stays_false(lambda: window.frame != moved, 0.1)
    window.press("Close")
    window.wait_gone()
    # The next one is at its place again.
    assert ActionsWindow(lumiwren).frame.y == MARGIN


def test_a_window_that_goes_while_it_is_dragged_leaves_nothing_behind(desktop, lumiwren):
    window = ActionsWindow(lumiwren)
    start = window.frame
    desktop.display.move(start.x + 200, start.y + 20)
    desktop.display.button_down()
    desktop.display.move(start.x + 220, start.y + 60)
    wait_until(lambda: window.frame.y == start.y + 40, "the drag")
    desktop.display.press("Escape")
    window.wait_gone()
    desktop.display.button_up()
    window = ActionsWindow(lumiwren)
    again = window.frame
    desktop.display.move(again.x + 100, again.y + 20)
    desktop.display.move(again.x + 150, again.y + 70)
    assert stays_false(lambda: window.frame != again, 0.2)
    window.press("Done")
    window.wait_gone()


def close_by_the_window_manager(window):
    window.display.send_to_root(window.window, "_NET_CLOSE_WINDOW", [0, 2])


CLOSING = {
    "close button": lambda window: window.press("Close"),
    "Done": lambda window: window.press("Done"),
    "Escape": lambda window: window.display.press("Escape"),
    "window manager": close_by_the_window_manager,
}


def test_the_window_is_closed_and_gives_the_keyboard_back(desktop, lumiwren, editor):
    for close in CLOSING.values():
        window = ActionsWindow(lumiwren)
        close(window)
        window.wait_gone()
        wait_until(lambda: desktop.display.has_focus(editor.window), "the keyboard in the editor")
    assert lumiwren.process.running()


def test_the_next_window_knows_nothing_of_an_editor_that_was_open(desktop, lumiwren):
    window = ActionsWindow(lumiwren)
    editor = window.add()
    editor.replace(editor.name, "Half an action")
    close_by_the_window_manager(window)
    window.wait_gone()
    window = ActionsWindow(lumiwren)
    assert window.editor is None
    assert window.names() == DEFAULTS
    window.wait_focus("list item", DEFAULTS[0])
    assert window.add().name.text == ""


# -- the list --------------------------------------------------------------------------------------------------

def test_the_default_actions_are_listed_with_badge_input_and_hotkey(desktop, lumiwren):
    window = ActionsWindow(lumiwren)
    assert [window.row(number) for number in range(3)] == [
        ["Explain Selected Text", "Default", "Text Selection", "⌥⇧E", "Edit", "Delete"],
        ["Explain Screen Region", "Default", "Screen Capture (OCR)", "⌥⇧S", "Edit", "Delete"],
        ["Translate to English", "Default", "Text Selection", "⌥⇧T", "Edit", "Delete"],
    ]
    assert not window.shows("Restore")


def test_names_are_shown_as_they_are_whatever_is_in_them(desktop, service, programs):
    names = ["<b>x</b><img src=x>", "Save && Close & more", "%1 %n &amp; \\n", "مرحبا بالعالم (English) שלום", "日本語🐦👩‍👩‍👧",
             "long " * 200, "A\tB\nC", "\u202eoverride", ""]
    store_actions(desktop, [action(name) for name in names])
    window = ActionsWindow(programs.start(desktop, service))
    assert window.names() == names
    for number, name in enumerate(names):
        assert window.row(number)[-4:] == ["Text Selection", "⌥⇧V", "Edit", "Delete"]
        # Whatever the name, the buttons are in their places.
        for button in ("Edit", "Delete"):
            part = window.rows()[number].find("push button", button)
            assert part.description == name
            assert window.frame.x < window.place(part).x and window.place(part).right < window.frame.right
    question = window.ask_to_delete(0)
    question.wait_for(f'Are you sure you want to delete "{names[0]}"? This action cannot be undone.')


def test_two_hundred_actions_are_scrolled_by_wheel_and_by_keys_and_the_last_one_can_be_edited(
        desktop, service, programs):
    store_actions(desktop, [action(f"Action {number}") for number in range(200)])
    window = ActionsWindow(programs.start(desktop, service))
    display = desktop.display

    def visible(number):
        place = window.place(window.rows()[number])
        return window.frame.y + 40 < place.y and place.bottom < window.frame.bottom - 40

    assert visible(0) and not visible(199)
    display.move(window.frame.x + 200, window.frame.y + 200)
    display.click(window.frame.x + 200, window.frame.y + 200, button=5, times=300)
    wait_until(lambda: visible(199), "the end of the list")
    display.click(window.frame.x + 200, window.frame.y + 200, button=4, times=300)
    wait_until(lambda: visible(0), "its beginning")
    window.wait_row_focus(0)
    for key, number in (("End", 199), ("Up", 198), ("Home", 0), ("Down", 1)):
        display.press(key)
        window.wait_row_focus(number)
        assert visible(number)
    display.press("End")
    window.wait_row_focus(199)
    display.press("Return")
    editor = window.wait_editor()
    assert editor.name.text == "Action 199"
    editor.replace(editor.name, "The last")
    editor.press("Save")
    window.wait_editor_gone()
    wait_until(lambda: window.rows()[199].name == "The last", "the new name")
    window.wait_row_focus(199)
    assert visible(199)
    assert [each["name"] for each in stored_actions(desktop)][197:] == ["Action 197", "Action 198", "The last"]


def test_tab_goes_through_the_window_from_top_to_bottom_and_back(desktop, lumiwren):
    window = ActionsWindow(lumiwren)
    stops = [("list item", DEFAULTS[0]), ("push button", "Edit"), ("push button", "Delete"),
             ("push button", "Add Action"), ("push button", "Done"), ("push button", "Close")]
    window.check_tab_order(stops)
    # The arrows take Tab along.
    desktop.display.press("Down")
    window.wait_focus("list item", DEFAULTS[1])
    desktop.display.press("Tab")
    desktop.display.press("Return")
    assert window.wait_editor().name.text == DEFAULTS[1]


# -- deleting and restoring ------------------------------------------------------------------------------------

def test_deleting_is_asked_about_and_done_at_once(desktop, lumiwren):
    window = ActionsWindow(lumiwren)
    question = window.ask_to_delete(1)
    assert [part.name for part in question.nodes() if part.role in ("label", "push button")] == [
        "Delete Action", 'Are you sure you want to delete "Explain Screen Region"? This action cannot be undone.',
        "Delete", "Cancel"]
    # While it is asked, the window can do nothing else.
    window.display.click(*window.place(window.control("push button", "Done")).centre)
    assert stays_false(lambda: not window.shown, 0.2)
    question.click("Delete")
    question.wait_gone()
    window.wait_names(DEFAULTS[0], DEFAULTS[2])
    assert [each["name"] for each in stored_actions(desktop)] == [DEFAULTS[0], DEFAULTS[2]]
    window.wait_focused()
    window.wait_focus("list item", DEFAULTS[2])


KEEPING = {
    "Cancel": lambda question: question.click("Cancel"),
    "Escape": lambda question: question.display.press("Escape"),
    "Return": lambda question: question.display.press("Return"),
    "Enter": lambda question: question.display.press("KP_Enter"),
    "window manager": close_by_the_window_manager,
}


def test_without_a_clear_yes_nothing_is_deleted(desktop, lumiwren):
    window = ActionsWindow(lumiwren)
    before = desktop.user_defaults().read_text()
    for way, answer in KEEPING.items():
        desktop.display.press("Delete")
        question = window.question.wait_shown().wait_focused()
        answer(question)
        question.wait_gone()
        window.wait_focused()
        window.wait_focus("list item", DEFAULTS[0])
        assert window.names() == DEFAULTS, way
        assert desktop.user_defaults().read_text() == before
    # With the keyboard alone it takes two keys.
    desktop.display.press("Delete")
    question.wait_shown().wait_focused()
    desktop.display.press("Tab")
    desktop.display.press("space")
    question.wait_gone()
    window.wait_names(*DEFAULTS[1:])
    window.wait_focus("list item", DEFAULTS[1])


def test_deleted_defaults_come_back_with_restore_defaults(desktop, lumiwren):
    window = ActionsWindow(lumiwren)
    window.ask_to_delete(0).click("Delete")
    window.wait_names(*DEFAULTS[1:])
    window.press("Restore Defaults")
    window.wait_names(*DEFAULTS)
    wait_until(lambda: not window.shows("Restore Defaults"), "the end of the button")
    assert [each["name"] for each in stored_actions(desktop)] == DEFAULTS


def test_with_the_last_action_gone_the_empty_state_offers_the_defaults(desktop, lumiwren):
    window = ActionsWindow(lumiwren)
    for left in ([*DEFAULTS[1:]], [DEFAULTS[2]], []):
        desktop.display.press("Delete")
        question = window.question.wait_shown().wait_focused()
        desktop.display.press("Tab")
        desktop.display.press("space")
        question.wait_gone()
        window.wait_focused()
        window.wait_names(*left)
    for text in ("No Actions", "Create actions with your own hotkeys and prompts.", "Restore Default Actions",
                 "Restore Defaults"):
        window.wait_for(text)
    assert stored_actions(desktop) == []
    # The keyboard goes on: by Tab to the button, which goes when it is pressed.
    assert window.focus() is not None
    while window.focus() != ("push button", "Restore Default Actions"):
        before = window.focus()
        desktop.display.press("Tab")
        wait_until(lambda: window.focus() not in (before, None), "the next stop")
    desktop.display.press("space")
    window.wait_names(*DEFAULTS)
    wait_until(lambda: not window.shows("Restore") and not window.shows("No Actions"), "the list")
    wait_until(window.focus, "something that has the keyboard")
    desktop.display.press("Escape")
    window.wait_gone()


def test_without_actions_the_empty_state_goes_while_one_is_added(desktop, service, programs):
    store_actions(desktop, [])
    window = ActionsWindow(programs.start(desktop, service))
    window.wait_for("No Actions")
    editor = window.add()
    assert not window.shows("No Actions")
    editor.press("Cancel")
    window.wait_editor_gone()
    window.wait_for("No Actions")
    editor = window.add()
    editor.replace(editor.prompt, "Say {text}")
    editor.press("Save")
    window.wait_names("Untitled Action")
    assert not window.shows("No Actions")
    wait_until(lambda: window.shows("Restore Defaults"), "the button to restore")


def test_two_actions_with_one_identifier_are_edited_and_deleted_as_one(desktop, lumiwren):
    window = ActionsWindow(lumiwren)
    editor = window.edit(2)
    editor.replace(editor.name, "Mine")
    editor.press("Save")
    window.wait_names(*DEFAULTS[:2], "Mine")
    window.press("Restore Defaults")
    window.wait_names(*DEFAULTS, "Mine")
    assert len({each["id"] for each in stored_actions(desktop)}) == 3

    # The first of the two is the one that is changed.
    editor = window.edit(3)
    assert editor.name.text == "Mine"
    editor.replace(editor.name, "Other")
    editor.press("Save")
    window.wait_names(*DEFAULTS[:2], "Other", "Mine")
    wait_until(lambda: window.shows("Restore Defaults"), "the button to restore")

    window.ask_to_delete(3).click("Delete")
    window.wait_names(*DEFAULTS[:2])
    assert [each["name"] for each in stored_actions(desktop)] == DEFAULTS[:2]
