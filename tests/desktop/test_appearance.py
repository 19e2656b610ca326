"""The program looks as the user has told the desktop, and follows while its panel is open."""

import pytest
from gi.repository import GLib
from lab import Desktop, GnomeSettings, GtkEditor, Resolution, SettingsPortal, stays_false, wait_until
from lab.portal import GNOME

ANSWER = "# Answer\n\nA paragraph.\n\n- one\n- two\n"


@pytest.fixture
def portal(desktop):
    return SettingsPortal(desktop)


def open_panel(desktop, service, lumiwren):
    service.answer = lambda exchange: exchange.answer(ANSWER)
    desktop.display.move(300, 200)
    lumiwren.press_hotkey()
    panel = lumiwren.panel.wait_shown()
    panel.wait_for("two")
    panel.wait_enabled()
    return panel


def brightness(panel):
    """The mean of the panel's pixels, from 0 to 255."""
    data, width, height = panel.display.pixels(panel.frame)
    data = data if isinstance(data, bytes) else data.encode("latin-1")
    return sum(data[0::4] + data[1::4] + data[2::4]) / (3 * width * height)


def wait_dark(panel):
    wait_until(lambda: brightness(panel) < 90, "a dark panel", interval=0.02)


def wait_light(panel):
    wait_until(lambda: brightness(panel) > 180, "a light panel", interval=0.02)


def test_an_open_panel_turns_dark_and_light_again_and_keeps_its_conversation(desktop, service, portal, lumiwren,
                                                                             editor):
    panel = open_panel(desktop, service, lumiwren)
    service.answer = lambda exchange: exchange.answer("Second answer.")
    panel.ask("And then?")
    panel.wait_for("Second answer.")
    panel.wait_enabled()
    conversation = panel.answers(), panel.questions()
    wait_light(panel)

    portal.set_color_scheme(1)
    wait_dark(panel)
    assert (panel.answers(), panel.questions()) == conversation
    portal.set_color_scheme(2)
    wait_light(panel)
    portal.set_color_scheme(1)
    wait_dark(panel)
    portal.set_color_scheme(0)
    wait_light(panel)
    assert (panel.answers(), panel.questions()) == conversation
    assert panel.shown
    assert len(service.requests) == 2


def test_a_program_that_starts_on_a_dark_desktop_is_dark(desktop, service, programs, editor):
    SettingsPortal(desktop, settings="{'org.freedesktop.appearance': {'color-scheme': <uint32 1>}}")
    wait_dark(open_panel(desktop, service, programs.start(desktop, service)))


def test_a_portal_that_comes_later_or_again_is_heard(desktop, service, lumiwren, editor):
    panel = open_panel(desktop, service, lumiwren)
    wait_light(panel)
    dark = "{'org.freedesktop.appearance': {'color-scheme': <uint32 1>}}"
    portal = SettingsPortal(desktop, settings=dark)
    wait_dark(panel)
    portal.end()
    SettingsPortal(desktop, settings="{'org.freedesktop.appearance': {'color-scheme': <uint32 2>}}")
    wait_light(panel)


@pytest.mark.parametrize("behaviour", ["silent", "refusing", "wrong"])
def test_a_portal_that_does_not_answer_changes_nothing(desktop, service, programs, editor, behaviour):
    SettingsPortal(desktop, behaviour)
    lumiwren = programs.start(desktop, service)
    wait_light(open_panel(desktop, service, lumiwren))
    assert lumiwren.terminate() == 0


def test_the_text_scale_reaches_an_open_panel(desktop, service, portal, lumiwren, editor):
    panel = open_panel(desktop, service, lumiwren)
    assert panel.find("push button", "Copy Result").frame.height == 24
    portal.set(GNOME, "text-scaling-factor", GLib.Variant("d", 1.5))
    wait_until(lambda: panel.find("push button", "Copy Result").frame.height == 36, "a larger button", interval=0.02)
    portal.set(GNOME, "text-scaling-factor", GLib.Variant("d", 1.0))
    wait_until(lambda: panel.find("push button", "Copy Result").frame.height == 24, "the usual button", interval=0.02)


def test_a_text_scale_that_is_in_the_resolution_too_counts_once(desktop, service, portal, programs, editor):
    resolution = Resolution(desktop)
    lumiwren = programs.start(desktop, service)
    panel = open_panel(desktop, service, lumiwren)
    button = panel.find("push button", "Copy Result")
    assert button.frame.height == 24
    assert panel.frame.width == 400
    # What GNOME's settings do for large text: the setting itself, and the resolution with it.
    portal.set(GNOME, "text-scaling-factor", GLib.Variant("d", 1.25))
    wait_until(lambda: button.frame.height == 30, "a larger button", interval=0.02)
    resolution.set(120)
    # In points, each of which is larger now.
    wait_until(lambda: button.frame.height == 24, "a button that is not scaled twice", interval=0.02)
    desktop.display.press("Escape")
    panel.wait_gone()
    editor.select_all("The selected text")
    assert open_panel(desktop, service, lumiwren).frame.width == 500


def test_nothing_turns_where_motion_is_reduced(desktop, service, portal, lumiwren, editor):
    service.answer = lambda exchange: exchange.hold()
    lumiwren.press_hotkey()
    panel = lumiwren.panel.wait_shown()
    service.wait_for_requests(1)
    wheel = panel.place(panel.find("progress bar", "Loading"))
    desktop.display.move(5, 5)

    def pixels():
        return desktop.display.pixels(wheel)[0]

    def turns():
        before = pixels()
        wait_until(lambda: pixels() != before, "the wheel to turn")

    turns()
    portal.set(GNOME, "enable-animations", GLib.Variant("b", False))
    wait_until(lambda: stays_false(lambda before=pixels(): pixels() != before, 0.4), "the wheel to stand")
    portal.set(GNOME, "enable-animations", GLib.Variant("b", True))
    turns()


def test_follows_gnome_settings_through_the_real_portal(service, programs):
    with Desktop() as desktop:
        settings = GnomeSettings(desktop)
        lumiwren = programs.start(desktop, service)
        editor = GtkEditor(desktop, "The selected text")
        editor.select_all("The selected text")
        panel = open_panel(desktop, service, lumiwren)
        wait_light(panel)
        settings.set("color-scheme", "prefer-dark")
        wait_dark(panel)
        settings.set("text-scaling-factor", "1.5")
        wait_until(lambda: panel.find("push button", "Copy Result").frame.height == 36, "a larger button",
                   interval=0.02)
        settings.set("color-scheme", "default")
        wait_light(panel)
        assert panel.answers() != []
