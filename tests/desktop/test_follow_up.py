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
    go = threading.Event()
    panel = first_answer(lumiwren)

    def answer(exchange):
        exchange.until(go)
        exchange.answer("Late.")

    service.answer = answer
    panel.ask("Slow?")
    request = service.wait_for_requests(2)
    desktop.display.press("Escape")
    panel.wait_gone()
    go.set()
    assert request.answered.wait(15)
    assert request.closed_at is None
