"""A field for a secret, on a real accessibility bus and with the real clipboard."""

import os

import pytest

from lab.accessibility import Gone
from lab.waiting import wait_until


@pytest.fixture
def application(desktop):
    """The accessibility tree of a window with a field and a button that shows what is in it."""
    program = desktop.launch([os.environ["LUMIWREN_SECURE_FIELD"]], QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")

    def found():
        assert program.running(), program.output
        try:
            tree = desktop.accessibility.application(program.pid)
            return tree if tree and tree.find(name="Secret") else None
        except Gone:
            return None
    tree = wait_until(found, "the window's accessibility tree")
    window = desktop.display.wait_for_window("Secure field")
    desktop.display.activate(window)
    wait_until(lambda: desktop.display.has_focus(window), "the window to have the keyboard")
    return tree


def test_a_masked_secret_reaches_neither_the_accessibility_bus_nor_a_clipboard(desktop, application):
    desktop.selections.clear("CLIPBOARD")
    inserted = desktop.accessibility.events("text-changed", "insert")
    removed = desktop.accessibility.events("text-changed", "delete")
    changed = desktop.accessibility.events("property-change", "accessible-value")
    field = application.find(name="Secret")
    desktop.display.type("qzj")
    desktop.display.press("Control", "a")
    desktop.display.press("Control", "c")
    desktop.display.press("Control", "Insert")
    assert "org.a11y.atspi.Text" not in field.interfaces
    # With keys, as they come behind the others.
    desktop.display.press("Tab")
    desktop.display.press("space")
    wait_until(lambda: field.text == "qzj", "the secret to be shown")
    desktop.display.press("End")
    desktop.display.type("w")
    wait_until(lambda: "w" in inserted.values(), "what is typed in the clear to be told")
    told = inserted.values() + removed.values() + changed.values()
    assert told == ["w"]
    assert desktop.selections.text("CLIPBOARD") is None
    assert desktop.selections.text("PRIMARY") is None
