"""What was on the clipboard before an action is there after it, byte for byte."""

import os
import time

import pytest
from lab import GtkEditor, wait_until

TEXT_AND_HTML = {
    "UTF8_STRING": "before – tschüß".encode(),
    "text/plain;charset=utf-8": "before – tschüß".encode(),
    "STRING": "before \xe4".encode("latin-1"),
    "text/html": "<p>before – <b>tschüß</b></p>".encode(),
}
PICTURE = {"image/png": b"\x89PNG\r\n\x1a\n" + os.urandom(20_000_000)}
FORTY_TYPES = {f"application/x-type-{number}": os.urandom(number * 1000) for number in range(40)}


def run_action(lumiwren, service):
    lumiwren.press_hotkey()
    request = service.wait_for_requests(1)
    assert request.prompt.endswith("Text: The selected text")
    lumiwren.panel.wait_for("Answer.")


@pytest.mark.parametrize("before", [TEXT_AND_HTML, PICTURE, FORTY_TYPES], ids=["text", "20 MB", "40 types"])
@pytest.mark.parametrize("end", ["running", "quit", "killed"])
def test_the_clipboard_comes_back(desktop, service, lumiwren, editor, before, end):
    owner = desktop.own_selection(before)
    contents = desktop.selections.contents()
    run_action(lumiwren, service)
    assert owner.lost()
    owner.close()
    if end == "quit":
        assert lumiwren.quit() == 0
    elif end == "killed":
        lumiwren.kill()
    after = desktop.selections.contents()
    assert list(after) == list(contents)
    assert after == contents


def test_an_empty_clipboard_stays_empty(desktop, service, lumiwren, editor):
    desktop.selections.clear()
    run_action(lumiwren, service)
    assert desktop.selections.owner() == 0 or desktop.selections.contents() == {}


def test_the_clipboard_comes_back_when_nothing_is_selected(desktop, service, lumiwren):
    owner = desktop.own_selection(TEXT_AND_HTML)
    contents = desktop.selections.contents()
    window = GtkEditor(desktop, "Not selected")
    window.focus()
    lumiwren.press_hotkey()
    lumiwren.panel.wait_for("No text selected.")
    owner.close()
    assert desktop.selections.contents() == contents


def test_the_clipboard_comes_back_when_only_a_picture_was_selected(desktop, service, lumiwren):
    owner = desktop.own_selection(TEXT_AND_HTML)
    contents = desktop.selections.contents()
    window = GtkEditor(desktop, "", what="image")
    window.focus()
    lumiwren.press_hotkey()
    lumiwren.panel.wait_for("Clipboard is empty.")
    owner.close()
    assert desktop.selections.contents() == contents


def test_the_clipboard_comes_back_twice(desktop, service, lumiwren, editor):
    owner = desktop.own_selection(TEXT_AND_HTML)
    contents = desktop.selections.contents()
    run_action(lumiwren, service)
    owner.close()
    lumiwren.press_hotkey("t")
    service.wait_for_requests(2)
    assert desktop.selections.contents() == contents


def test_the_clipboard_comes_back_while_the_answer_is_still_awaited(desktop, service, lumiwren, editor):
    owner = desktop.own_selection(TEXT_AND_HTML)
    contents = desktop.selections.contents()
    service.answer = lambda exchange: exchange.hold()
    lumiwren.press_hotkey()
    service.wait_for_requests(1)
    owner.close()
    assert desktop.selections.contents() == contents


def test_the_owner_of_the_clipboard_may_never_answer(desktop, service, lumiwren, editor):
    desktop.own_selection(TEXT_AND_HTML, silent=["*"])
    pressed = time.monotonic()
    lumiwren.press_hotkey()
    lumiwren.panel.wait_shown()
    assert time.monotonic() - pressed < 2  # it does not wait for the clipboard, which is given two seconds
    asked = time.monotonic()
    assert lumiwren.status_item.get("Id")
    assert lumiwren.panel.texts()
    assert time.monotonic() - asked < 2  # nor does anything else in the program
    assert service.wait_for_requests(1).received_at - pressed < 4
    lumiwren.panel.wait_for("Answer.")


def test_a_type_that_never_comes_is_left_out(desktop, service, lumiwren, editor):
    owner = desktop.own_selection(TEXT_AND_HTML, silent=["text/html"])
    contents = {name: desktop.selections.read(name) for name in TEXT_AND_HTML if name != "text/html"}
    run_action(lumiwren, service)
    owner.close()
    assert desktop.selections.contents() == contents


def test_copy_result_puts_the_answer_on_the_clipboard(desktop, service, lumiwren, editor):
    service.answer = lambda exchange: exchange.answer("**Copied** ", "answer")
    lumiwren.press_hotkey()
    lumiwren.panel.wait_for("Copied answer")
    lumiwren.panel.wait_enabled()
    lumiwren.panel.find("push button", "Copy Result").press()
    wait_until(lambda: desktop.selections.text() == "**Copied** answer", "the answer on the clipboard")
    assert lumiwren.panel.find("push button", "Copied!")
    assert lumiwren.quit() == 0
    assert desktop.selections.text() == "**Copied** answer"
