"""The API key: there, missing, locked away, or kept by a service that does not answer."""

import pathlib
import time

import pytest
from lab import API_KEY, Desktop, GtkEditor, wait_until
from lab.keyring import PASSWORD

PROMPT = "Unlock Login Keyring"
NO_KEY = "API key not configured. Click the menu bar icon to set up your API key."


@pytest.fixture(scope="module")
def desktop_without_secrets():
    with Desktop(keyring=False) as desktop:
        yield desktop


@pytest.fixture
def bare_desktop(desktop_without_secrets):
    """A desktop on which nobody keeps secrets until the test starts somebody."""
    with desktop_without_secrets.scope() as desktop:
        yield desktop


@pytest.fixture
def selected(bare_desktop):
    editor = GtkEditor(bare_desktop, "The selected text")
    editor.select_all("The selected text")
    return editor


def start_in_time(programs, desktop, service):
    started = time.monotonic()
    lumiwren = programs.start(desktop, service)
    assert lumiwren.status_item
    assert time.monotonic() - started < 5
    return lumiwren


def press_and_be_told(lumiwren, service):
    lumiwren.press_hotkey()
    lumiwren.panel.wait_for(NO_KEY)
    assert lumiwren.panel.errors() == [NO_KEY]
    assert service.requests == []


def test_no_keyring(bare_desktop, selected, service, programs):
    press_and_be_told(start_in_time(programs, bare_desktop, service), service)


def test_a_keyring_without_the_key(bare_desktop, selected, service, programs):
    bare_desktop.start_keyring(key=None)
    press_and_be_told(start_in_time(programs, bare_desktop, service), service)


@pytest.mark.parametrize("behaviour", ["silent", "dismissed"])
def test_a_keyring_that_does_not_give_the_key(bare_desktop, selected, service, programs, behaviour):
    bare_desktop.start_fake_keyring(behaviour)
    press_and_be_told(start_in_time(programs, bare_desktop, service), service)


@pytest.mark.parametrize("behaviour", ["silent", "ignored"])
def test_waiting_for_the_keyring_freezes_nothing_and_does_not_delay_the_end(bare_desktop, selected, service, programs,
                                                                            behaviour):
    bare_desktop.start_fake_keyring(behaviour)
    lumiwren = start_in_time(programs, bare_desktop, service)
    lumiwren.press_hotkey()
    asked = time.monotonic()
    assert lumiwren.status_item.get("Id")
    assert time.monotonic() - asked < 5  # which the keyring is given to answer
    asked = time.monotonic()
    assert lumiwren.quit() == 0
    assert time.monotonic() - asked < 5


def test_the_prompt_of_a_locked_keyring_is_answered(service, programs):
    with Desktop() as desktop:
        desktop.keyring.lock()
        lumiwren = start_in_time(programs, desktop, service)
        editor = GtkEditor(desktop, "The selected text")
        editor.select_all("The selected text")
        lumiwren.press_hotkey()
        prompt = desktop.display.wait_for_window(PROMPT)
        wait_until(lambda: desktop.display.has_focus(prompt), "the prompt to have the keyboard")
        desktop.display.type(PASSWORD + "\n")
        wait_until(lambda: not desktop.keyring.locked(), "the keyring to be unlocked")
        wait_until(lambda: not desktop.display.window(PROMPT), "the prompt to be gone")
        editor.select_all("The selected text")
        lumiwren.press_hotkey()
        assert service.wait_for_requests(1).headers["authorization"] == f"Bearer {API_KEY}"
        assert lumiwren.terminate() == 0


def test_the_prompt_of_a_locked_keyring_is_turned_down(service, programs):
    with Desktop() as desktop:
        desktop.keyring.lock()
        lumiwren = start_in_time(programs, desktop, service)
        lumiwren.press_hotkey()
        prompt = desktop.display.wait_for_window(PROMPT)
        wait_until(lambda: desktop.display.has_focus(prompt), "the prompt to have the keyboard")
        desktop.display.press("Escape")
        lumiwren.panel.wait_for(NO_KEY)
        assert lumiwren.terminate() == 0


def test_a_key_set_while_it_runs_is_used(service, programs):
    with Desktop(keyring=False) as desktop:
        desktop.keyring = desktop.start_keyring(key=None)
        lumiwren = start_in_time(programs, desktop, service)
        lumiwren.welcome.wait_shown().wait_focused()
        desktop.display.press("Escape")
        lumiwren.welcome.wait_gone()
        editor = GtkEditor(desktop, "The selected text")
        editor.select_all("The selected text")
        press_and_be_told(lumiwren, service)
        desktop.keyring.store("sk-later")
        lumiwren.press_hotkey()
        assert service.wait_for_requests(1).headers["authorization"] == "Bearer sk-later"
        assert lumiwren.terminate() == 0


def test_the_key_is_nowhere_to_be_read(desktop, service, lumiwren, editor):
    lumiwren.press_hotkey()
    lumiwren.panel.wait_for("Answer.")
    for process, _ in lumiwren.processes():
        for name in ("environ", "cmdline"):
            assert API_KEY.encode() not in pathlib.Path(f"/proc/{process}/{name}").read_bytes()
    written = [path for path in pathlib.Path(desktop.env["HOME"]).rglob("*")
               if path.is_file() and API_KEY.encode() in path.read_bytes()]
    assert written == []
    for secret in (API_KEY, "The selected text", "Answer."):
        assert secret not in lumiwren.process.output
