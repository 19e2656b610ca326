"""What a command line, a script or a desktop's shortcut can have the running program do."""

import json
import os
import signal
import time

import pytest
from lab import Desktop, stays_false, wait_until
from lab.program import binary

DEFAULTS = ["Explain Selected Text", "Explain Screen Region", "Translate to English"]


def run(desktop, *arguments, **environment):
    """The exit status of a command, and what it says, both streams together."""
    process = desktop.launch([binary(), *arguments], **environment)
    return process.wait(), process.output


def test_the_menu(desktop, service, lumiwren):
    desktop.display.move(400, 200)
    assert run(desktop, "--menu") == (0, "")
    assert lumiwren.menu.wait_shown().wait_focused().frame.centre[0] == 400


def test_the_settings(desktop, service, lumiwren):
    assert run(desktop, "--settings") == (0, "")
    lumiwren.actions.wait_shown().wait_focused()


def test_an_action_runs_as_by_its_hotkey(desktop, service, lumiwren, editor):
    assert run(desktop, "--run-action", "Translate to English") == (0, "")
    request = service.wait_for_requests(1)
    lumiwren.panel.wait_for("Answer.")
    desktop.display.press("Escape")
    lumiwren.panel.wait_gone()
    lumiwren.press_hotkey("t")
    assert service.wait_for_requests(2).prompt == request.prompt
    assert "The selected text" in request.prompt


def test_an_action_is_found_by_its_identifier(desktop, service, lumiwren, editor):
    status, listed = run(desktop, "--actions")
    assert status == 0
    lines = [line.split("\t") for line in listed.splitlines()]
    assert [name for _, _, name in lines] == DEFAULTS
    assert [hotkey for _, hotkey, _ in lines] == ["⌥⇧E", "⌥⇧S", "⌥⇧T"]
    assert run(desktop, "--run-action", lines[0][0]) == (0, "")
    assert "The selected text" in service.wait_for_requests(1).prompt


def test_the_actions_as_json_hold_no_prompt(desktop, service, lumiwren):
    status, listed = run(desktop, "--actions", "--json")
    assert status == 0
    actions = json.loads(listed)
    assert [action["name"] for action in actions] == DEFAULTS
    assert all(set(action) == {"id", "name", "hotkey", "inputType"} for action in actions)


@pytest.mark.parametrize("name", ["no such action", "00000000-0000-4000-8000-000000000000", "", "--quit", "-", "{text}"])
def test_an_action_that_does_not_exist_is_an_error_and_does_nothing(desktop, service, lumiwren, editor, name):
    for arguments in (["--run-action", name], [f"--run-action={name}"]):
        assert run(desktop, *arguments) == (1, "lumiwren: no action has this name or identifier\n")
    assert stays_false(lambda: lumiwren.panel.shown or service.requests, 0.3)
    assert lumiwren.process.running()


def test_quit_ends_it(desktop, service, lumiwren):
    assert run(desktop, "--quit") == (0, "")
    assert lumiwren.process.wait() == 0


@pytest.mark.parametrize("arguments", [["--menu"], ["--settings"], ["--run-action", "x"], ["--actions"], ["--quit"]],
                         ids=lambda arguments: arguments[0])
def test_without_a_program_a_command_is_an_error(desktop, arguments):
    assert run(desktop, *arguments) == (1, "lumiwren: it is not running\n")


def test_without_a_bus_a_command_is_an_error(desktop):
    assert run(desktop, "--menu", DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent") == (
        1, "lumiwren: it is not running\n")


def test_commands_need_no_display(desktop, service, lumiwren):
    status, listed = run(desktop, "--actions", DISPLAY=None, QT_QPA_PLATFORM=None)
    assert status == 0 and "Explain Selected Text" in listed


@pytest.mark.parametrize("arguments", [["--run-action"], ["--actions", "--xml"], ["--quit", "now"], ["Shorten"]],
                         ids=" ".join)
def test_what_is_no_command_is_an_error(desktop, service, lumiwren, arguments):
    status, output = run(desktop, *arguments)
    assert status == 2 and output.startswith("usage: lumiwren")
    assert lumiwren.process.running()


@pytest.mark.parametrize("arguments", [[], ["--menu"], ["--actions"], ["--quit"]], ids=lambda each: " ".join(each))
def test_a_program_that_hangs_is_told_of_within_two_seconds(desktop, service, lumiwren, arguments):
    begin = time.monotonic()
    assert run(desktop, "--version")[0] == 0
    start = time.monotonic() - begin
    lumiwren.process.popen.send_signal(signal.SIGSTOP)
    try:
        begin = time.monotonic()
        status, output = run(desktop, *arguments)
        assert time.monotonic() - begin < start + 2
        assert status == 1 and output.endswith("but does not answer\n") and output.count("\n") == 1
    finally:
        lumiwren.process.popen.send_signal(signal.SIGCONT)


def test_a_start_during_the_quit_of_another_leaves_one(desktop, service, programs):
    for _ in range(5):
        first = programs.start(desktop, service, accessible=False)
        first.process.popen.send_signal(signal.SIGTERM)
        second = desktop.launch([binary()], OPENAI_BASE_URL=service.url)
        first.process.wait()
        # Either it has taken over, or the first was asked while it could still answer, and both are gone.
        wait_until(lambda: not second.running() or run(desktop, "--actions")[0] == 0, "the second to be up or gone", 20)
        if second.running():
            assert run(desktop, "--quit") == (0, "")
        assert second.wait() == 0, second.output


def test_the_program_of_another_session_is_not_reached(desktop, service, lumiwren):
    with Desktop(window_manager=None, keyring=False) as other:
        assert run(other, "--quit") == (1, "lumiwren: it is not running\n")
    assert lumiwren.process.running()


def test_another_user_cannot_reach_it(desktop, service, lumiwren):
    assert os.getuid() == 0, "the test needs to be another user for a moment"
    desktop.directory.chmod(0o755)
    reached = desktop.launch(["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups", "gdbus", "call", "--session",
                              "--dest", "com.lumiwren.app", "--object-path", "/com/lumiwren/app", "--method",
                              "com.lumiwren.Control.Quit"])
    assert reached.wait() != 0
    assert lumiwren.process.running()


def test_a_desktop_file_action_runs_one(desktop, service, lumiwren, editor):
    desktop.tool("gdbus", "call", "--session", "--dest", "com.lumiwren.app", "--object-path", "/com/lumiwren/app",
                 "--method", "org.freedesktop.Application.ActivateAction", "run-action", "[<'Explain Selected Text'>]", "{}")
    assert "The selected text" in service.wait_for_requests(1).prompt
