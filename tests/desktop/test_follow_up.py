"""Asking on in the panel, under each window manager."""

import threading

import pytest
from lab import WINDOW_MANAGERS, Desktop, GtkEditor, wait_until


@pytest.mark.parametrize("window_manager", WINDOW_MANAGERS)
def test_a_follow_up_is_asked_by_a_click_and_typing(service, programs, window_manager):
    with Desktop(window_manager) as desktop:
        service.answer = lambda exchange: exchange.answer("Answer ", f"{len(exchange.request.messages)}.")
        lumiwren = programs.start(desktop, service)
        editor = GtkEditor(desktop, "The selected text")
        editor.select_all("The selected text")
        lumiwren.press_hotkey()
        panel = lumiwren.panel.wait_shown()
        panel.wait_for("Answer 1.")
        assert desktop.display.has_focus(editor.window)

        panel.ask("What does it mean?")
        request = service.wait_for_requests(2)
        assert request.messages == [
            ("system", "You are a helpful assistant that explains text. The user originally asked about the "
                       "following text:\n\n\"The selected text\"\n\nContinue the conversation and answer any "
                       "follow-up questions about this text."),
            ("assistant", "Answer 1."), ("user", "What does it mean?")]
        panel.wait_for("Answer 3.")
        panel.wait_enabled()
        assert panel.questions() == ["What does it mean?"]
        assert panel.answers() == ["Answer 1.", "Answer 3."]

        # The field has kept the keyboard through the answer.
        panel.ask("And then?")
        panel.wait_for("Answer 5.")
        assert service.wait_for_requests(3).messages[1:] == [
            ("assistant", "Answer 1."), ("user", "What does it mean?"), ("assistant", "Answer 3."),
            ("user", "And then?")]

        desktop.display.press("Escape")
        panel.wait_gone()
        wait_until(lambda: desktop.display.has_focus(editor.window), "the keyboard back in the editor")
        desktop.display.type("typed on")
        wait_until(lambda: editor.typed() == "typed on", "the text typed into the editor")
        assert lumiwren.terminate() == 0


def first_answer(lumiwren):
    lumiwren.press_hotkey()
    panel = lumiwren.panel.wait_shown()
    panel.wait_for("Answer.")
    panel.wait_enabled()
    return panel


def ask_slowly(panel, service, text):
    """A question and the event that lets its answer come."""
    go = threading.Event()

    def answer(exchange):
        exchange.until(go)
        exchange.answer(text)

    service.answer = answer
    panel.ask("Slow?")
    return service.wait_for_requests(2), go


def test_return_in_the_empty_field_asks_nothing(desktop, service, lumiwren, editor):
    panel = first_answer(lumiwren)
    panel.ask("")
    panel.ask("x")
    assert service.wait_for_requests(2).prompt == "x"


def test_a_follow_up_that_fails_leaves_the_question(desktop, service, lumiwren, editor):
    panel = first_answer(lumiwren)
    service.answer = lambda exchange: exchange.error(500, "Internal Server Error")
    panel.ask("Why?")
    panel.wait_for("API error: HTTP 500")
    panel.wait_enabled()
    assert panel.answers() == ["Answer."]
    assert panel.questions() == ["Why?"]
    service.answer = lambda exchange: exchange.answer("Because.")
    panel.ask("Again?")
    panel.wait_for("Because.")
    assert panel.errors() == []


def test_a_follow_up_runs_on_without_the_panel(desktop, service, lumiwren, editor):
    panel = first_answer(lumiwren)
    request, go = ask_slowly(panel, service, "Late.")
    desktop.display.press("Escape")
    panel.wait_gone()
    go.set()
    assert request.answered.wait(15)
    assert not request.abandoned


def take_keyboard(panel):
    panel.wait_enabled()
    panel.click(panel.field)
    wait_until(lambda: panel.display.has_focus(panel.window), "the panel to have the keyboard")


def wait_typed(panel, text):
    wait_until(lambda: panel.field.text == text, f"{text!r} in the field", interval=0.02)


def test_accents_are_composed_with_a_dead_key_and_with_the_compose_key(service, programs):
    with Desktop() as desktop:
        lumiwren = programs.start(desktop, service)
        editor = GtkEditor(desktop, "The selected text")
        editor.select_all("The selected text")
        panel = first_answer(lumiwren)
        take_keyboard(panel)
        desktop.set_layout("us", "-variant", "intl")
        desktop.display.press("'")
        desktop.display.press("e")
        wait_typed(panel, "é")
        desktop.set_layout("us", "-variant", "", "-option", "compose:ralt")
        for key in ("Alt_R", "'", "a"):
            desktop.display.press(key)
        wait_typed(panel, "éá")
        desktop.display.type("x")
        wait_typed(panel, "éáx")
        # A sequence that Escape would break off is no reason to keep the panel.
        desktop.display.press("Escape")
        panel.wait_gone()
        assert lumiwren.terminate() == 0


def test_text_is_pasted_by_key_and_by_the_middle_button_and_undone(desktop, service, lumiwren, editor):
    panel = first_answer(lumiwren)
    owner = desktop.own_selection({"UTF8_STRING": b"from the clipboard"})
    take_keyboard(panel)
    desktop.display.press("Control", "v")
    wait_typed(panel, "from the clipboard")
    desktop.display.press("Control", "z")
    wait_typed(panel, "")
    desktop.display.press("Control", "Shift", "z")
    wait_typed(panel, "from the clipboard")
    desktop.display.press("Control", "a")
    desktop.display.press("BackSpace")
    wait_typed(panel, "")
    owner.close()
    # The editor's selection is what the middle button pastes.
    primary = desktop.own_selection({"UTF8_STRING": b"from the editor"}, selection="PRIMARY")
    field = panel.place(panel.field)
    desktop.display.click(*field.centre, button=2)
    wait_typed(panel, "from the editor")
    primary.close()


def test_the_keypads_enter_sends(desktop, service, lumiwren, editor):
    panel = first_answer(lumiwren)
    take_keyboard(panel)
    desktop.display.type("x")
    desktop.display.press("KP_Enter")
    assert service.wait_for_requests(2).prompt == "x"


def test_tab_reaches_the_buttons_and_space_presses_them(desktop, service, lumiwren, editor):
    panel = first_answer(lumiwren)
    take_keyboard(panel)

    def focused():
        return next((node.name for node in panel.node.walk() if "focused" in node.states), None)

    def tab(name, *keys):
        desktop.display.press(*keys)
        wait_until(lambda: focused() == name, f"the focus on {name}", interval=0.02)

    tab("Copy Result", "Tab")
    desktop.display.press("space")
    panel.find("push button", "Copied!")
    assert desktop.selections.text("CLIPBOARD") == "Answer."
    tab("Close", "Tab")
    tab("Conversation", "Tab")
    tab("Follow-up question", "Tab")
    tab("Conversation", "Shift", "Tab")
    tab("Close", "Shift", "Tab")
    desktop.display.press("Return")
    panel.wait_gone()
    wait_until(lambda: desktop.display.has_focus(editor.window), "the keyboard back in the editor")


def test_typing_goes_on_after_the_answer_without_another_click(desktop, service, lumiwren, editor):
    panel = first_answer(lumiwren)
    _, go = ask_slowly(panel, service, "Second.")
    wait_until(lambda: "enabled" not in panel.field.states, "the field to be disabled", interval=0.02)
    go.set()
    panel.wait_for("Second.")
    panel.wait_enabled()
    desktop.display.type("and")
    wait_typed(panel, "and")


def test_a_hotkey_types_nothing_into_the_field(desktop, service, lumiwren, editor):
    panel = first_answer(lumiwren)
    take_keyboard(panel)
    desktop.display.type("ab")
    wait_typed(panel, "ab")
    desktop.display.press("Alt", "Shift", "k")
    desktop.display.type("c")
    wait_typed(panel, "abc")
