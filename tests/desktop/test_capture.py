"""From a selection in an application to the request that carries it."""

import pytest
from lab import Chromium, Desktop, GtkEditor, QtEditor, QtReader, VteTerminal, XTerm, wait_until
from lab.actions_window import action, store_actions

TEXT = "Zaunkönig и 🐦 “quoted” \\ done"
NOTHING_SELECTED = "No text selected. Please highlight some text and try again."
NO_TEXT = "Clipboard is empty. Please select some text first."


def prompt_with(text):
    return f"\n\nText: {text}"


@pytest.mark.parametrize("application", [GtkEditor, QtReader, Chromium])
def test_text_selected_in_an_application_is_explained(desktop, service, lumiwren, application):
    window = application(desktop, TEXT)
    window.select_all(TEXT)
    lumiwren.press_hotkey()
    assert service.wait_for_requests(1).prompt.endswith(prompt_with(TEXT))
    lumiwren.panel.wait_for("Answer.")
    assert lumiwren.panel.answers() == ["Answer."]
    assert TEXT in lumiwren.panel.texts()


def test_text_selected_where_letters_with_alt_are_typed_is_explained_by_a_hotkey_that_types_nothing(
        desktop, service, programs):
    control_option = 0xC0000
    store_actions(desktop, [action("Mine", "Mine: {text}", 14, control_option)])
    programs.start(desktop, service)
    window = QtEditor(desktop, TEXT)
    window.select_all(TEXT)
    desktop.display.press("Control", "Alt", "e")
    assert service.wait_for_requests(1).prompt == f"Mine: {TEXT}"


@pytest.mark.parametrize("terminal", [XTerm, VteTerminal])
def test_text_selected_in_a_terminal_is_explained_and_its_program_runs_on(desktop, service, lumiwren, terminal):
    window = terminal(desktop, "a line in a terminal")
    window.select_line()
    lumiwren.press_hotkey()
    assert service.wait_for_requests(1).prompt.rstrip().endswith(prompt_with("a line in a terminal"))
    lumiwren.panel.wait_for("Answer.")
    assert not window.interrupted()


@pytest.mark.parametrize("terminal", [XTerm, VteTerminal])
def test_a_terminal_without_a_selection_is_left_alone(desktop, service, lumiwren, editor, terminal):
    # The editor still owns PRIMARY, with a text that is not selected in the application in front.
    window = terminal(desktop, "not selected")
    window.focus()
    lumiwren.press_hotkey()
    lumiwren.panel.wait_for(NOTHING_SELECTED)
    assert not window.interrupted()
    assert service.requests == []


def test_nothing_selected_is_told(desktop, service, lumiwren):
    with_nothing = GtkEditor(desktop, "Nothing of this is selected")
    with_nothing.focus()
    lumiwren.press_hotkey()
    lumiwren.panel.wait_for(NOTHING_SELECTED)
    assert lumiwren.panel.errors() == [NOTHING_SELECTED]
    assert service.requests == []


def test_a_picture_without_text_is_told(desktop, service, lumiwren):
    picture = GtkEditor(desktop, "", what="image")
    picture.focus()
    lumiwren.press_hotkey()
    lumiwren.panel.wait_for(NO_TEXT)
    assert service.requests == []


def test_blanks_are_text(desktop, service, lumiwren):
    blanks = GtkEditor(desktop, "   ")
    blanks.select_all("   ")
    lumiwren.press_hotkey()
    assert service.wait_for_requests(1).prompt.endswith(prompt_with("   "))


def test_a_placeholder_in_the_selected_text_stays_as_it_is(desktop, service, lumiwren):
    braces = GtkEditor(desktop, "format {text} here")
    braces.select_all("format {text} here")
    lumiwren.press_hotkey()
    assert service.wait_for_requests(1).prompt.endswith(prompt_with("format {text} here"))


def check_with_keys_held(desktop, service, lumiwren):
    display = desktop.display
    for key in ("Alt", "Shift", "e"):
        display.key_down(key)
    assert service.wait_for_requests(1).prompt.endswith(prompt_with("The selected text"))
    lumiwren.panel.wait_for("Answer.")
    for key in ("e", "Shift", "Alt"):
        display.key_up(key)
    wait_until(lambda: not display.keys_down() and not display.modifiers(), "all keys to be up")


def test_the_hotkey_may_be_held_down_all_the_time(desktop, service, lumiwren, editor):
    check_with_keys_held(desktop, service, lumiwren)
    # Nothing that is held distorts what is typed afterwards.
    editor.focus()
    desktop.display.type("x")
    wait_until(lambda: editor.typed() == "x", "the typed letter")


def test_a_physical_keyboard_may_hold_the_hotkey_down(service, programs):
    with Desktop(physical_keyboard=True) as desktop:
        lumiwren = programs.start(desktop, service)
        editor = GtkEditor(desktop, "The selected text")
        editor.select_all("The selected text")
        check_with_keys_held(desktop, service, lumiwren)
        assert lumiwren.terminate() == 0


def test_no_key_stays_down_when_the_program_is_killed_while_it_copies(desktop, service, lumiwren, editor):
    display = desktop.display
    for key in ("Alt", "Shift", "e"):
        display.key_down(key)
    wait_until(lambda: "Alt" not in display.keys_down(), "the program to let go of the modifiers", interval=0)
    lumiwren.kill()
    for key in ("e", "Shift", "Alt"):
        display.key_up(key)
    wait_until(lambda: not display.keys_down() and not display.modifiers(), "all keys to be up")


def test_caps_lock_does_not_matter(desktop, service, lumiwren, editor):
    desktop.display.press("Caps_Lock")
    lumiwren.press_hotkey()
    service.wait_for_requests(1)
    desktop.display.press("Caps_Lock")


def test_another_modifier_makes_it_another_hotkey(desktop, service, lumiwren, editor):
    desktop.display.press("Control", "Alt", "Shift", "e")
    lumiwren.press_hotkey("t")
    assert service.wait_for_requests(1).prompt.startswith("Translate the following text to English.")
    lumiwren.panel.wait_for("Answer.")
    assert len(service.requests) == 1


@pytest.fixture
def layout(desktop):
    yield desktop.set_layout
    desktop.set_layout("-layout", "us", "-variant", "")


@pytest.mark.parametrize("application", [GtkEditor, QtReader])
@pytest.mark.parametrize("arguments", [["-layout", "ru,us"], ["-layout", "us", "-variant", "dvorak"]],
                         ids=["cyrillic", "dvorak"])
def test_hotkeys_and_the_copy_work_in_every_layout(desktop, service, lumiwren, layout, application, arguments):
    window = application(desktop, TEXT)
    layout(*arguments)
    window.select_all(TEXT)
    lumiwren.press_hotkey()
    assert service.wait_for_requests(1).prompt.endswith(prompt_with(TEXT))


def test_a_window_that_closes_before_the_copy(desktop, service, lumiwren):
    # Saving a clipboard whose owner takes its time leaves the window the time to go.
    owner = desktop.own_selection({"UTF8_STRING": b"before"}, delay=0.1)
    window = GtkEditor(desktop, "gone", what="closing")
    window.select_all("gone")
    lumiwren.press_hotkey()
    lumiwren.panel.wait_for(NOTHING_SELECTED)
    assert desktop.selections.text() == "before"
    owner.close()


def test_a_second_press_takes_the_place_of_the_first(desktop, service, lumiwren, editor):
    exchanges = []
    first_was_abandoned = []

    def answer(exchange):
        exchanges.append(exchange)
        if len(exchanges) == 1:
            exchange.head()
            exchange.text("The first answer")
            exchange.hold()
        else:
            first_was_abandoned.append(exchanges[0].is_abandoned())
            exchange.answer("The second answer")

    service.answer = answer
    lumiwren.press_hotkey()
    lumiwren.panel.wait_for("The first answer")
    lumiwren.press_hotkey("t")
    lumiwren.panel.wait_for("The second answer")
    assert lumiwren.panel.answers() == ["The second answer"]
    assert lumiwren.panel.errors() == []
    assert len(service.requests) == 2
    assert first_was_abandoned == [True]  # before the second was sent


def test_two_presses_at_once_give_one_answer(desktop, service, lumiwren, editor):
    lumiwren.press_hotkey()
    lumiwren.press_hotkey()
    lumiwren.panel.wait_for("Answer.")
    lumiwren.panel.wait_enabled()
    assert lumiwren.panel.answers() == ["Answer."]
    assert lumiwren.panel.errors() == []
    assert len(service.requests) == 1


def test_the_focus_may_follow_the_pointer(service, programs):
    with Desktop(focus_follows_mouse=True) as desktop:
        lumiwren = programs.start(desktop, service)
        editor = GtkEditor(desktop, "The selected text")
        editor.select_all("The selected text")
        lumiwren.press_hotkey()
        lumiwren.panel.wait_for("Answer.")
        # On the way to the field the pointer crosses the panel, and stays in it.
        lumiwren.panel.ask("And why?")
        assert service.wait_for_requests(2).prompt == "And why?"
        assert lumiwren.terminate() == 0
