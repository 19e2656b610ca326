"""The menu of the status item: what it lists, how it is worked, and what it opens."""

import pytest
from lab import WINDOW_MANAGERS, Desktop, GtkEditor, stays_false, wait_until
from lab.actions_window import action, store_actions

SETTINGS = ["Manage Actions...", "Set API Key...", "Launch at Login", "Check for Updates...", "About Lumiwren", "Quit"]
DEFAULTS = ["Explain Selected Text", "Explain Screen Region", "Translate to English"]


def entries(menu):
    """The entries that are showing, from the top, with what stands at their right end."""
    return [(node.name, node.description) for node in
            sorted(menu.nodes("push button"), key=lambda node: node.frame.y)]


def enabled(menu, name):
    return "enabled" in menu.find("push button", name).states


def focused(menu):
    return next((node.name for node in menu.nodes("push button") if "focused" in node.states), None)


def test_the_actions_then_settings_and_commands_then_quit(desktop, service, lumiwren):
    menu = lumiwren.open_menu()
    wait_until(lambda: ("Set API Key...", "set") in entries(menu), "the mark of the key")
    assert entries(menu) == [
        ("Explain Selected Text", "⌥⇧E"), ("Explain Screen Region", "⌥⇧S"), ("Translate to English", "⌥⇧T"),
        ("Manage Actions...", ""), ("Set API Key...", "set"), ("Launch at Login", "on"), ("Check for Updates...", ""),
        ("About Lumiwren", ""), ("Quit", "")]
    assert not enabled(menu, "Check for Updates...")  # There is nowhere to look for them.


def test_without_actions_an_entry_says_so(desktop, service, programs):
    store_actions(desktop, [])
    menu = programs.start(desktop, service).open_menu()
    menu.wait_focused()
    assert [name for name, _ in entries(menu)] == ["No actions configured"] + SETTINGS
    assert not enabled(menu, "No actions configured")


def test_the_mark_of_the_key_follows_the_keyring(desktop, service, programs):
    desktop.tool("secret-tool", "clear", "service", "com.lumiwren.app", "account", "openai-api-key")
    try:
        lumiwren = programs.start(desktop, service)
        lumiwren.welcome.wait_shown()
        menu = lumiwren.open_menu()
        assert ("Set API Key...", "") in entries(menu)
        desktop.display.press("Escape")
        menu.wait_gone()
    finally:
        desktop.keyring.store("sk-stand-in-0123456789")
    menu = lumiwren.open_menu()
    wait_until(lambda: ("Set API Key...", "set") in entries(menu), "the mark of the key")


def test_it_is_worked_with_the_keys_and_gives_the_keyboard_back(desktop, service, lumiwren, editor):
    menu = lumiwren.open_menu()
    menu.wait_focused()
    for name in [*DEFAULTS, "Manage Actions...", "Set API Key...", "Launch at Login", "About Lumiwren", "Quit",
                 DEFAULTS[0]]:
        desktop.display.press("Down")
        wait_until(lambda: focused(menu) == name, f"{name} to be chosen")
    desktop.display.press("Up")
    wait_until(lambda: focused(menu) == "Quit", "the last entry to be chosen")
    desktop.display.press("Escape")
    menu.wait_gone()
    wait_until(lambda: desktop.display.has_focus(editor.window), "the editor to have the keyboard")


def test_return_chooses_the_entry_that_is_highlighted(desktop, service, lumiwren, editor):
    menu = lumiwren.open_menu()
    menu.wait_focused()
    for _ in range(4):
        desktop.display.press("Down")
    wait_until(lambda: focused(menu) == "Manage Actions...", "the entry")
    desktop.display.press("Return")
    lumiwren.actions.wait_shown().wait_focused()
    assert not menu.shown


def test_clicking_the_icon_twice_opens_and_closes_it(desktop, service, lumiwren):
    menu = lumiwren.open_menu()
    lumiwren.status_item.activate()
    menu.wait_gone()
    lumiwren.open_menu()


@pytest.mark.parametrize("button", [1, 3], ids=["left", "right"])
def test_a_click_into_another_application_closes_it_and_is_that_applications(desktop, service, lumiwren, editor,
                                                                             button):
    editor.focus()
    desktop.display.press("End")
    menu = lumiwren.open_menu(900, 400)
    desktop.display.click(*editor.frame.centre, button=button)
    menu.wait_gone()
    if button == 1:
        wait_until(lambda: desktop.display.has_focus(editor.window), "the editor to have the keyboard")
    else:
        wait_until(lambda: desktop.display.windows_of_type("POPUP_MENU"), "the editor's own menu")
        desktop.display.press("Escape")


def test_where_a_compositor_runs_its_shadow_belongs_to_what_is_below(service, programs):
    with Desktop("xfwm4") as desktop:
        lumiwren = programs.start(desktop, service)
        editor = GtkEditor(desktop, "Below", state="fullscreen")
        menu = lumiwren.open_menu(400, 100).wait_focused()
        assert all(menu.shadow)
        assert menu.frame.y == 104 and menu.frame.centre[0] == 400
        desktop.display.click(menu.frame.centre[0], menu.frame.bottom + 10)
        menu.wait_gone()
        wait_until(lambda: desktop.display.has_focus(editor.window), "the editor to have the keyboard")
        assert lumiwren.terminate() == 0


def test_a_click_on_the_icon_in_a_task_bar_opens_it_above_the_bar_and_another_closes_it(service, programs):
    with Desktop(tray_host=False) as desktop:
        desktop.start_panel()
        bar = desktop.display.frame(desktop.display.wait_for_window("xfce4-panel"))
        lumiwren = programs.start(desktop, service, accessible=False)
        assert lumiwren.status_item
        icon = wait_until(lambda: icon_in(desktop, bar), "the icon in the bar")
        for _ in range(2):
            desktop.display.click(*icon)
            lumiwren.menu.wait_shown()
            assert lumiwren.menu.frame.bottom <= bar.y
            desktop.display.click(*icon)
            lumiwren.menu.wait_gone()
            assert stays_false(lambda: lumiwren.menu.shown, 0.6)
        assert lumiwren.terminate() == 0


def icon_in(desktop, bar):
    """The middle of what is purple in a bar, or None."""
    data, width, height = desktop.display.pixels(bar)
    data = data if isinstance(data, bytes) else data.encode("latin-1")
    found = [number for number in range(width * height)
             if data[number * 4] > data[number * 4 + 2] + 30 > data[number * 4 + 1] + 60]
    columns, rows = sorted(number % width for number in found), sorted(number // width for number in found)
    return (bar.x + columns[len(found) // 2], bar.y + rows[len(found) // 2]) if found else None


def test_an_action_runs_on_what_is_selected(desktop, service, lumiwren, editor):
    lumiwren.open_menu(900, 300).click("Explain Selected Text")
    assert "The selected text" in service.wait_for_requests(1).prompt
    lumiwren.panel.wait_for("Answer.")
    assert not lumiwren.menu.shown


def test_no_hotkey_and_no_click_is_lost_while_it_is_open(desktop, service, lumiwren, editor):
    lumiwren.open_menu(900, 300).wait_focused()
    desktop.display.press("Escape")
    lumiwren.menu.wait_gone()
    wait_until(lambda: desktop.display.has_focus(editor.window), "the editor to have the keyboard")
    lumiwren.press_hotkey()
    assert "The selected text" in service.wait_for_requests(1).prompt


WINDOWS = [("Manage Actions...", "actions"), ("Set API Key...", "api_key"), ("About Lumiwren", "about")]


@pytest.mark.parametrize("manager", WINDOW_MANAGERS)
def test_what_it_opens_is_in_front_with_the_keyboard_and_comes_forward_again(service, programs, manager):
    with Desktop(manager) as desktop:
        lumiwren = programs.start(desktop, service)
        editor = GtkEditor(desktop, "The selected text")
        for entry, name in WINDOWS:
            window = getattr(lumiwren, name)
            editor.focus()
            lumiwren.choose(entry)
            window.wait_shown().wait_focused()
            first = window.window.id
            # What is above: drawn over the editor.
            display = desktop.display
            wait_until(lambda: display.stacking(window.window) > display.stacking(editor.window), "the window above")
            editor.focus()
            lumiwren.choose(entry)
            window.wait_focused()
            assert window.window.id == first
            wait_until(lambda: display.stacking(window.window) > display.stacking(editor.window), "the window above")
            display.press("Escape")
            window.wait_gone()
        assert lumiwren.terminate() == 0


HOSTILE = ["<b>bold</b><img src='http://127.0.0.1:1/x.png'>", "Fish & Chips", "&Amp && _under_", "اشرح النص المحدد",
           "A name that is so long that it can never stand in a menu that is 220 points wide " * 3, "", "\u202eabc"]


def test_two_hundred_actions_scroll_and_their_names_are_only_names(desktop, service, programs):
    names = [f"Action {number}" for number in range(200 - len(HOSTILE))]
    store_actions(desktop, [action(name) for name in HOSTILE + names])
    lumiwren = programs.start(desktop, service)
    desktop.display.move(1200, 400)
    menu = lumiwren.open_menu(640, 4)
    frame = menu.frame
    assert frame.y >= 0 and frame.bottom <= 800
    assert frame.width == 222
    quit_place = menu.place(menu.find("push button", "Quit"))
    assert quit_place.bottom <= frame.bottom
    actions = [node for node in menu.node.walk() if node.role == "push button"][:200]
    assert [node.name for node in actions] == HOSTILE + names
    # Upwards from nowhere: the commands, then the last action, which the list scrolls to.
    menu.wait_focused()
    for _ in range(6):
        desktop.display.press("Up")
    wait_until(lambda: focused(menu) == names[-1], "the last action")
    place = menu.place(menu.find("push button", names[-1]))
    assert place.y >= frame.y and place.bottom < quit_place.y
    desktop.display.move(*menu.place(menu.find("push button", names[-1])).centre)
    for _ in range(120):
        desktop.display.click(*desktop.display.pointer(), button=4)  # The wheel, upwards.
    desktop.display.move(frame.centre[0], frame.y + 20)
    wait_until(lambda: focused(menu) == HOSTILE[0], "the first action below the pointer")
    assert lumiwren.process.running()


def test_the_menu_of_the_tray_lists_the_same(desktop, service, lumiwren):
    assert [label for label in lumiwren.status_item.entries() if label] == DEFAULTS + SETTINGS
    lumiwren.status_item.choose("About Lumiwren")
    lumiwren.about.wait_shown().wait_focused()
