"""Reading, selecting and asking on, from the first answer to the end of the panel."""

import threading

import pytest
from lab import GtkEditor, stays_false, wait_until

SENTENCES = ["Wrens are small birds.", "They sing loudly.", "They nest in holes."]


def test_a_conversation_from_the_first_answer_to_the_end(desktop, service, lumiwren, editor):
    display = desktop.display
    go = threading.Event()

    def first(exchange):
        exchange.head()
        exchange.text("# Wrens\n\nSmall ")
        exchange.until(go)
        exchange.text("birds.")
        exchange.end()

    service.answer = first
    lumiwren.press_hotkey()
    panel = lumiwren.panel.wait_shown()
    panel.wait_for("Small")
    place = panel.frame
    assert display.has_focus(editor.window)
    assert "enabled" not in panel.field.states
    go.set()
    panel.wait_for("Small birds.")
    panel.wait_enabled()
    assert display.has_focus(editor.window)

    service.answer = lambda exchange: exchange.answer("Insects", " and spiders.")
    panel.ask("What do they eat?")
    panel.wait_for("Insects and spiders.")
    panel.wait_enabled()

    seen = threading.Event()

    def breaks_off(exchange):
        exchange.head()
        exchange.text("In hol")
        exchange.until(seen)
        exchange.reset()

    service.answer = breaks_off
    panel.ask("Where do they nest?")
    panel.wait_for("In hol")
    seen.set()
    wait_until(lambda: len(panel.errors()) == 1, "the failure")
    panel.wait_enabled()
    assert panel.answers() == ["Wrens\nSmall birds.", "Insects and spiders."]
    assert panel.questions() == ["What do they eat?", "Where do they nest?"]

    service.answer = lambda exchange: exchange.answer("In holes.")
    panel.ask("Again, please")
    panel.wait_for("In holes.")
    panel.wait_enabled()
    assert panel.errors() == []
    assert service.wait_for_requests(4).messages[1:] == [
        ("assistant", "# Wrens\n\nSmall birds."), ("user", "What do they eat?"),
        ("assistant", "Insects and spiders."), ("user", "Where do they nest?"), ("user", "Again, please")]

    service.answer = lambda exchange: exchange.answer("Something else.")
    display.activate(editor.window)
    wait_until(lambda: display.has_focus(editor.window), "the editor to have the keyboard")
    lumiwren.press_hotkey()
    panel.wait_for("Something else.")
    assert panel.frame == place
    assert panel.answers() == ["Something else."]
    assert panel.questions() == []
    panel.wait_enabled()
    panel.click(panel.field)
    wait_until(lambda: display.has_focus(panel.window), "the panel to have the keyboard")
    display.press("Escape")
    panel.wait_gone()
    wait_until(lambda: display.has_focus(editor.window), "the keyboard back in the editor")


def test_an_answer_is_announced_by_the_sentence(desktop, service, lumiwren, editor):
    announcements = desktop.accessibility.events("announcement")
    insertions = desktop.accessibility.events("text-changed", "insert")
    text = " ".join(SENTENCES)

    def slowly(exchange):
        exchange.head()
        for index in range(0, len(text), 3):
            exchange.text(text[index:index + 3])
            exchange.pause(0.02)
        exchange.end()

    service.answer = slowly
    lumiwren.press_hotkey()
    lumiwren.panel.wait_shown().wait_for(text)
    wait_until(lambda: " ".join(announcements.values()) == text, "all sentences to be announced")
    polite = 1
    assert {politeness for politeness, _, _ in announcements.seen} == {polite}
    # One frame may bring more than a sentence, never a part of one.
    for value in announcements.values():
        assert value.endswith(".") and value[0].isupper(), value
    assert "".join(insertions.values()) == text
    for value in insertions.values():
        assert value.strip().endswith("."), value
    announcements.close()
    insertions.close()


def test_a_failure_is_announced(desktop, service, lumiwren, editor):
    announcements = desktop.accessibility.events("announcement")
    service.answer = lambda exchange: exchange.error(500, "Internal Server Error")
    lumiwren.press_hotkey()
    lumiwren.panel.wait_shown()
    wait_until(lambda: announcements.values() == ["API error: HTTP 500"], "the failure to be announced")
    announcements.close()


@pytest.fixture
def answered(desktop, service, lumiwren, editor):
    service.answer = lambda exchange: exchange.answer("The first line.\n\n", "The second line.")
    lumiwren.press_hotkey()
    panel = lumiwren.panel.wait_shown()
    panel.wait_for("The first line.\nThe second line.")
    panel.wait_enabled()
    return panel


def test_text_is_selected_with_the_mouse_and_goes_to_primary(desktop, answered, editor):
    place = answered.place(answered.find(name="Answer"))
    desktop.display.drag((place.x + 1, place.y + 5), (place.right - 2, place.bottom - 3))
    wait_until(lambda: desktop.selections.owner("PRIMARY") is not None
               and desktop.selections.text("PRIMARY") == "The first line.\nThe second line.",
               "the selection to be offered as PRIMARY")
    assert desktop.display.has_focus(editor.window)
    assert answered.shown


def test_what_is_selected_is_copied_by_the_keyboard_once_the_panel_has_it(desktop, answered):
    answered.click(answered.field)
    wait_until(lambda: desktop.display.has_focus(answered.window), "the panel to have the keyboard")
    place = answered.place(answered.find(name="Answer"))
    desktop.display.click(place.x + 30, place.y + 5, times=2)
    desktop.display.press("Control", "c")
    wait_until(lambda: desktop.selections.text() == "first", "the word on the clipboard")


def test_the_selection_and_the_caret_survive_what_streams_in(desktop, service, answered):
    selected = threading.Event()

    def slowly(exchange):
        exchange.head()
        exchange.text("Word ")
        exchange.until(selected)
        for number in range(20):
            exchange.text(f"Word{number} ")
            exchange.pause(0.02)
        exchange.text("end.")
        exchange.end()

    service.answer = slowly
    answered.ask("More?")
    answered.wait_for("Word")
    place = answered.place(answered.find(name="Answer"))
    assert place.y >= answered.frame.y + 45, "the first answer is out of sight"
    desktop.display.click(place.x + 30, place.bottom - 5, times=2)
    wait_until(lambda: desktop.selections.text("PRIMARY") == "second", "the selected word")
    selected.set()
    answered.wait_for("end.")
    answered.wait_enabled()
    assert desktop.selections.text() != "second"
    desktop.display.press("Control", "c")
    wait_until(lambda: desktop.selections.text() == "second", "the word on the clipboard")


def test_a_reader_who_scrolls_back_is_left_there(desktop, service, lumiwren, editor):
    go = threading.Event()

    def long(exchange):
        exchange.head()
        for number in range(60):
            exchange.text(f"Line {number}\n\n")
        exchange.until(go)
        for number in range(60, 120):
            exchange.text(f"Line {number}\n\n")
        exchange.end()

    service.answer = long
    lumiwren.press_hotkey()
    panel = lumiwren.panel.wait_shown()
    panel.wait_for("Line 59")

    def top():
        return panel.place(panel.find(name="Answer")).y

    def at_end():
        return panel.place(panel.find(name="Answer")).bottom <= panel.frame.bottom

    wait_until(at_end, "the end of the answer in sight")
    before = top()
    x, y = panel.frame.centre
    for _ in range(3):
        desktop.display.click(x, y, button=4)
    wait_until(lambda: top() > before, "the answer to be scrolled back")
    place = top()
    go.set()
    panel.wait_for("Line 119")
    panel.wait_enabled()
    assert stays_false(lambda: top() != place, 0.6)
