"""Screen capture actions of the real program: the real tool, a real pointer, real recognition."""

import os
import pathlib
import signal
import time

import pytest
from lab import GtkEditor, leftovers, stays_false, wait_until

TOOL = "lumiwren-screencapture"
LINES = ["The wren sings in the hedge", "and nobody knows where it is."]


def captures():
    """The files of captures."""
    return sorted(pathlib.Path("/tmp").glob("glintnote_capture_*"))


def tools(lumiwren):
    return [pid for pid, command in lumiwren.processes() if TOOL in command]


@pytest.fixture(autouse=True)
def nothing_left():
    assert captures() == []
    yield
    assert captures() == []


@pytest.fixture
def text(desktop):
    """An editor in front with two lines to read."""
    # The caret stands on a line of its own.
    editor = GtkEditor(desktop, "\n".join([*LINES, "", ""]))
    editor.focus()
    return editor


def overlay(display):
    """The window of the tool, or None."""
    return next(iter(display.windows_of_class(TOOL)), None)


def begin(lumiwren):
    """Presses the capture action's hotkey and waits for the overlay."""
    lumiwren.press_hotkey("s")
    wait_until(lambda: overlay(lumiwren.desktop.display), "the overlay")


def wait_overlay_gone(lumiwren):
    wait_until(lambda: overlay(lumiwren.desktop.display) is None, "the overlay's end")
    wait_until(lambda: not tools(lumiwren), "the tool's end")


def draw(lumiwren, frame):
    lumiwren.desktop.display.drag((frame.x, frame.y), (frame.right, frame.bottom))


def test_the_text_in_a_region_is_recognised_and_answered(desktop, service, lumiwren, text):
    desktop.own_selection({"UTF8_STRING": b"on the clipboard"})
    begin(lumiwren)
    draw(lumiwren, text.frame)
    panel = lumiwren.panel.wait_shown()
    request = service.wait_for_requests(1)
    assert "\n".join(LINES) in request.prompt
    panel.wait_for("Answer.")
    panel.wait_for(LINES[0])
    panel.wait_enabled()
    assert captures() == []
    assert desktop.selections.text("CLIPBOARD") == "on the clipboard"
    assert desktop.display.has_focus(text.window)
    assert lumiwren.process.output == ""


def test_escape_shows_nothing_and_leaves_nothing(desktop, service, lumiwren, text):
    begin(lumiwren)
    desktop.display.press("Escape")
    wait_overlay_gone(lumiwren)
    assert stays_false(lambda: lumiwren.panel.shown, 0.3)
    assert service.requests == []
    assert desktop.display.has_focus(text.window)
    # And the next one works.
    begin(lumiwren)
    draw(lumiwren, text.frame)
    lumiwren.panel.wait_shown().wait_for("Answer.")


def test_a_region_without_text_says_so(desktop, service, lumiwren):
    begin(lumiwren)
    desktop.display.drag((500, 500), (700, 600))
    lumiwren.panel.wait_shown().wait_for("No text found in the selected region.")
    assert service.requests == []


def test_a_second_press_while_the_user_draws_changes_nothing(desktop, service, lumiwren, text):
    begin(lumiwren)
    first = tools(lumiwren)
    lumiwren.press_hotkey("s")
    assert stays_false(lambda: lumiwren.panel.shown, 0.3)
    wait_until(lambda: tools(lumiwren) == first, "the second tool's end")
    draw(lumiwren, text.frame)
    lumiwren.panel.wait_shown().wait_for("Answer.")
    assert len(service.requests) == 1


def test_a_captures_answer_replaces_what_the_panel_shows(desktop, service, lumiwren, text):
    lumiwren.press_hotkey("e")
    panel = lumiwren.panel.wait_shown()
    panel.wait_for("No text selected.")
    begin(lumiwren)
    draw(lumiwren, text.frame)
    panel.wait_for("Answer.")
    assert len(service.requests) == 1


def test_a_killed_tool_shows_nothing_and_leaves_nothing(desktop, service, lumiwren, text):
    begin(lumiwren)
    desktop.display.button_down()
    desktop.display.move(*text.frame.centre)
    for pid in tools(lumiwren):
        os.kill(pid, signal.SIGKILL)
    wait_overlay_gone(lumiwren)
    desktop.display.button_up()
    assert stays_false(lambda: lumiwren.panel.shown, 0.3)
    assert service.requests == []


@pytest.mark.parametrize("ending", ["quit", "terminate", "kill"])
def test_the_tool_ends_with_the_program(desktop, service, programs, text, ending):
    lumiwren = programs.start(desktop, service)
    begin(lumiwren)
    ended = time.monotonic()
    if ending == "kill":
        lumiwren.kill()
    elif ending == "terminate":
        assert lumiwren.terminate() == 0
    else:
        desktop.display.press("Escape")
        wait_overlay_gone(lumiwren)
        assert lumiwren.quit() == 0
    wait_until(lambda: not [each for each in leftovers(lumiwren.mark) if TOOL in each[1]], "the tool's end")
    assert time.monotonic() - ended < 10
    assert overlay(desktop.display) is None


def test_what_a_killed_run_left_is_removed_at_the_next_start(desktop, service, programs):
    stale = pathlib.Path("/tmp/glintnote_capture_0F0E0D0C-0B0A-4908-8706-050403020100.png")
    stale.write_bytes(b"\x89PNG")
    programs.start(desktop, service)
    wait_until(lambda: not stale.exists(), "the end of the stale file")
