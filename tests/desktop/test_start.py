"""One program in a session, launch at login, and what a start may show."""

import json
import pathlib

import pytest
from lab import Desktop, program, stays_false, wait_until
from lab.program import Lumiwren

ACCESSIBILITY = "Accessibility Permission Required"
SCREEN_RECORDING = "Screen Recording Permission Required"


def start_again(desktop, **environment):
    """The exit status and what it says of another start of the program."""
    process = desktop.launch([program.binary()], **environment)
    return process.wait(), process.output


def autostart(desktop):
    return pathlib.Path(desktop.env["XDG_CONFIG_HOME"], "autostart", "lumiwren.desktop")


def login_commands(desktop):
    """What a desktop would start at login, of all that is in the folder."""
    entry = autostart(desktop)
    return [line for line in entry.read_text().splitlines() if line.startswith("Exec=")] if entry.exists() else []


@pytest.fixture
def fresh(desktop):
    """A desktop on which the program has never run."""
    autostart(desktop).unlink(missing_ok=True)
    yield desktop
    autostart(desktop).unlink(missing_ok=True)


# -- one program -----------------------------------------------------------------------------------------------

def test_where_no_tray_is_a_second_start_opens_the_menu(service, programs):
    with Desktop(tray_host=False) as desktop:
        lumiwren = programs.start(desktop, service)
        desktop.display.move(500, 300)
        assert start_again(desktop) == (0, "")
        menu = lumiwren.menu.wait_shown().wait_focused()
        assert menu.frame.y == 304 and menu.frame.centre[0] == 500
        menu.click("About Lumiwren")
        lumiwren.about.wait_shown().wait_focused()
        assert lumiwren.terminate() == 0


def test_ten_starts_at_once_leave_one(desktop, service):
    processes = [desktop.launch([program.binary()], OPENAI_BASE_URL=service.url) for _ in range(10)]
    wait_until(lambda: sum(process.running() for process in processes) == 1, "all but one to end", 30)
    assert stays_false(lambda: sum(process.running() for process in processes) != 1, 0.5)
    (left,) = [process for process in processes if process.running()]
    assert all(process.wait() == 0 and process.output == "" for process in processes if process is not left)
    left.popen.terminate()
    assert left.wait() == 0, left.output


def test_a_start_after_the_end_of_another_is_the_first_again(desktop, service, programs):
    for _ in range(3):
        assert programs.start(desktop, service).quit() == 0


def test_a_start_after_a_crash_is_the_first_again(desktop, service, programs):
    lumiwren = Lumiwren(desktop, service)
    lumiwren.kill()
    wait_until(lambda: not lumiwren.process.running(), "its end")
    assert programs.start(desktop, service).quit() == 0


def test_a_program_that_hangs_is_told_of(desktop, service, programs):
    lumiwren = programs.start(desktop, service)
    lumiwren.process.popen.send_signal(19)  # SIGSTOP
    try:
        status, output = start_again(desktop)
        assert status == 1
        assert output == "lumiwren: it is running already, but does not answer\n"
    finally:
        lumiwren.process.popen.send_signal(18)  # SIGCONT
    lumiwren.menu.wait_shown()  # What it was asked for while it hung.


# -- launch at login -------------------------------------------------------------------------------------------

def test_the_first_start_registers_the_program_for_login(fresh, service, programs):
    lumiwren = programs.start(fresh, service)
    assert json.loads(fresh.user_defaults().read_text())["hasLaunchedBefore"] is True
    assert login_commands(fresh) == [f'Exec="{program.binary()}"']
    assert ("Launch at Login", "on") in [(node.name, node.description)
                                         for node in lumiwren.open_menu().nodes("push button")]


def test_later_starts_never_register_by_themselves(fresh, service, programs):
    lumiwren = programs.start(fresh, service)
    lumiwren.open_menu().click("Launch at Login")
    wait_until(lambda: not login_commands(fresh), "the entry to be gone")
    assert lumiwren.terminate() == 0
    lumiwren = programs.start(fresh, service)
    assert lumiwren.status_item
    assert login_commands(fresh) == []
    menu = lumiwren.open_menu()
    assert ("Launch at Login", "") in [(node.name, node.description) for node in menu.nodes("push button")]
    menu.click("Launch at Login")
    wait_until(lambda: login_commands(fresh), "the entry to be back")


def test_a_registry_that_refuses_is_told_of_and_freezes_nothing(fresh, service, programs):
    autostart(fresh).parent.parent.mkdir(parents=True, exist_ok=True)
    folder = autostart(fresh).parent
    if folder.exists():
        folder.rmdir()
    folder.write_text("a file where the folder should be")
    try:
        lumiwren = programs.start(fresh, service)
        wait_until(lambda: "Failed to enable launch at login: " in lumiwren.process.output, "the message")
        wait_until(lambda: lumiwren.process.output.count("Failed to enable launch at login: ") > 2, "more attempts")
        menu = lumiwren.open_menu().wait_focused()  # Nothing is held up meanwhile.
    finally:
        folder.unlink()

    def told():
        return lumiwren.process.output.count("Failed to ")

    wait_until(lambda: (before := told()) and stays_false(lambda: told() != before, 2.5), "an end of the attempts", 30)
    wait_until(lambda: bool(login_commands(fresh)) ==
               (("Launch at Login", "on") in [(node.name, node.description) for node in menu.nodes("push button")]),
               "the mark that is true")


# -- permissions -----------------------------------------------------------------------------------------------

def test_without_the_means_to_post_keys_an_alert_says_what_is_missing(service, programs):
    with Desktop(posts_keys=False) as desktop:
        lumiwren = programs.start(desktop, service)
        alert = lumiwren.alert(ACCESSIBILITY)
        alert.wait_shown().wait_focused()
        alert.wait_for("Lumiwren needs accessibility permission to copy selected text. Please grant access in "
                       "System Settings > Privacy & Security > Accessibility.")
        assert {node.name for node in alert.nodes("push button")} == {"Open System Settings", "Later"}
        alert.click("Later")
        alert.wait_gone()
        assert stays_false(lambda: alert.shown, 0.5)
        # An action on selected text asks again; Return presses its default button.
        lumiwren.status_item.choose("Explain Selected Text")
        alert.wait_shown().wait_focused()
        assert not lumiwren.panel.shows("Getting text...")
        desktop.display.press("Return")
        alert.wait_gone()
        assert lumiwren.terminate() == 0


def test_without_a_screen_to_see_an_alert_says_what_is_missing(service, programs):
    with Desktop(shows_screen=False) as desktop:
        lumiwren = programs.start(desktop, service)
        lumiwren.choose("Explain Screen Region")
        alert = lumiwren.alert(SCREEN_RECORDING).wait_shown().wait_focused()
        alert.wait_for("Lumiwren needs screen recording permission to capture screen regions for OCR. Please grant "
                       "access in System Settings > Privacy & Security > Screen Recording.")
        desktop.display.press("Escape")  # As "Later" does.
        alert.wait_gone()
        lumiwren.choose("Explain Screen Region")
        alert.wait_shown().wait_focused()
        desktop.display.press("Return")
        # This desktop has no settings program to open.
        advice = lumiwren.alert("No System Settings Found").wait_shown()
        wait_until(lambda: advice.shows("X11 sessions"), "what to do instead")
        assert advice.focused
        desktop.display.press("Return")
        advice.wait_gone()
        assert lumiwren.terminate() == 0
