"""Where the panel appears, that it takes nothing from the application in front, and how it goes away."""

import pytest
from lab import Desktop, Frame, GtkEditor, stays_false, wait_until

WIDTH, HEIGHT = 400, 300


def open_panel(lumiwren):
    lumiwren.press_hotkey()
    panel = lumiwren.panel.wait_shown()
    panel.wait_for("Answer.")
    return panel


@pytest.mark.parametrize("pointer, origin", [
    ((300, 200), (310, 210)),
    ((1250, 200), (1280 - WIDTH - 10, 210)),
    ((300, 700), (310, 700 - 20 - HEIGHT)),
    ((1270, 790), (1280 - WIDTH - 10, 790 - 20 - HEIGHT)),
    ((0, 0), (10, 10)),
], ids=["below right", "right edge", "lower edge", "corner", "origin"])
def test_the_panel_is_beside_the_pointer_and_on_the_screen(desktop, service, lumiwren, editor, pointer, origin):
    desktop.display.move(*pointer)
    assert open_panel(lumiwren).frame == Frame(*origin, WIDTH, HEIGHT)


def test_the_panel_keeps_off_a_task_bar(service, programs):
    with Desktop(tray_host=False) as desktop:
        desktop.start_panel()
        bar = desktop.display.frame(desktop.display.wait_for_window("xfce4-panel"))
        wait_until(lambda: (desktop.display.property(desktop.display.root, "_NET_WORKAREA") or [0] * 4)[3] <= bar.y,
                   "the work area without the bar")
        lumiwren = programs.start(desktop, service)
        editor = GtkEditor(desktop, "The selected text")
        editor.select_all("The selected text")
        # Below this pointer there is room on the screen, but not above the bar.
        desktop.display.move(300, bar.y - HEIGHT - 5)
        assert open_panel(lumiwren).frame.bottom == bar.y - HEIGHT - 5 - 20
        assert lumiwren.terminate() == 0


@pytest.mark.parametrize("editor_at, pointer, origin", [
    ((1400, 60), (1600, 200), (1610, 210)),
    ((1400, 60), (2290, 600), (1280 + 1024 - WIDTH - 10, 600 - 20 - HEIGHT)),
    ((60, 60), (1600, 200), (1280 - WIDTH - 10, 210)),
], ids=["second monitor", "its corner", "pointer elsewhere than the focus"])
def test_the_panel_is_on_the_monitor_of_the_focused_window(service, programs, editor_at, pointer, origin):
    with Desktop(monitors=[(1280, 800), (1024, 768)]) as desktop:
        lumiwren = programs.start(desktop, service)
        editor = GtkEditor(desktop, "The selected text", place=editor_at)
        editor.select_all("The selected text")
        assert editor.frame.x >= editor_at[0]
        desktop.display.move(*pointer)
        assert open_panel(lumiwren).frame == Frame(*origin, WIDTH, HEIGHT)
        assert lumiwren.terminate() == 0


def test_the_application_in_front_keeps_the_keyboard(desktop, service, lumiwren, editor):
    panel = open_panel(lumiwren)
    assert desktop.display.has_focus(editor.window)
    # A click on the answer is no reason to take it either.
    desktop.display.click(*panel.place(panel.find(name="Answer")).centre)
    desktop.display.type("typed")
    wait_until(lambda: editor.typed() == "typed", "the typed text in the editor")
    assert panel.shown


def test_the_panel_is_above_a_full_screen_application(desktop, service, lumiwren):
    editor = GtkEditor(desktop, "The selected text", state="fullscreen")
    wait_until(lambda: desktop.display.frame(editor.window) == Frame(0, 0, *desktop.size), "the full screen")
    editor.select_all("The selected text")
    panel = open_panel(lumiwren)
    assert desktop.display.stacking(panel.window) > desktop.display.stacking(editor.window)
    assert desktop.display.has_focus(editor.window)
    # It stays there when the application is clicked, as long as it is there.
    desktop.display.click(*panel.place(panel.find(name="Answer")).centre)
    assert desktop.display.stacking(panel.window) > desktop.display.stacking(editor.window)


def test_escape_in_another_application_closes_the_panel(desktop, service, lumiwren, editor):
    panel = open_panel(lumiwren)
    desktop.display.press("Escape")
    panel.wait_gone()


def test_escape_in_the_panel_closes_it_and_gives_the_keyboard_back(desktop, service, lumiwren, editor):
    panel = open_panel(lumiwren)
    panel.wait_enabled()
    panel.click(panel.field)
    wait_until(lambda: desktop.display.has_focus(panel.window), "the keyboard in the panel")
    desktop.display.press("Escape")
    panel.wait_gone()
    wait_until(lambda: desktop.display.has_focus(editor.window), "the keyboard back in the editor")


def test_the_close_button_closes_the_panel(desktop, service, lumiwren, editor):
    panel = open_panel(lumiwren)
    panel.click(panel.find("push button", "Close"))
    panel.wait_gone()


def test_a_click_elsewhere_closes_the_panel_but_not_the_click_that_opened_it(desktop, service, lumiwren, editor):
    desktop.display.move(20, 20)
    lumiwren.press_hotkey()
    panel = lumiwren.panel.wait_shown()
    desktop.display.click(20, 20)
    panel.wait_for_clicks_to_count()
    desktop.display.click(*panel.frame.centre)
    assert stays_false(lambda: not panel.shown, 0.2)
    desktop.display.click(20, 20)
    panel.wait_gone()


def test_a_closed_panel_opens_again_at_the_pointer_and_empty(desktop, service, lumiwren, editor):
    desktop.display.move(100, 100)
    panel = open_panel(lumiwren)
    desktop.display.press("Escape")
    panel.wait_gone()
    service.answer = lambda exchange: exchange.answer("Another.")
    desktop.display.move(500, 300)
    lumiwren.press_hotkey()
    panel.wait_shown()
    panel.wait_for("Another.")
    assert panel.frame == Frame(510, 310, WIDTH, HEIGHT)
    assert panel.answers() == ["Another."]


def test_a_new_action_uses_the_open_panel_where_it_is(desktop, service, lumiwren, editor):
    desktop.display.move(100, 100)
    panel = open_panel(lumiwren)
    frame = panel.frame
    service.answer = lambda exchange: exchange.answer("Another.")
    desktop.display.move(600, 400)
    lumiwren.press_hotkey("t")
    panel.wait_for("Another.")
    assert panel.frame == frame
    assert panel.answers() == ["Another."]
    assert panel.errors() == []


def test_a_long_answer_can_be_scrolled_and_its_end_is_in_sight(desktop, service, lumiwren, editor):
    service.answer = lambda exchange: exchange.answer(*(f"Line {number}\n\n" for number in range(100)), "The end.")
    lumiwren.press_hotkey()
    panel = lumiwren.panel.wait_shown()
    panel.wait_for("The end.")

    def end_in_sight():
        answer = panel.place(panel.find(name="Answer"))
        return panel.frame.y < answer.bottom <= panel.frame.bottom

    wait_until(end_in_sight, "the end of the answer in sight")
