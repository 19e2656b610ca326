"""The welcome, the form for the API key and the About window, with real keys, clicks and a real keyring."""

import threading

import pytest
from lab import API_KEY, WINDOW_MANAGERS, Desktop, GtkEditor, stays_false, wait_until

SUCCESS, FAILURE = "Connection successful!", "Connection failed"
NO_KEY = "No API key configured. Please set your OpenAI API key."


def field(window):
    return window.find("text", "API Key")


def stored(desktop):
    try:
        return desktop.keyring.lookup()
    except RuntimeError:
        return None


def clear(desktop):
    desktop.tool("secret-tool", "clear", "service", "com.lumiwren.app", "account", "openai-api-key")


@pytest.fixture
def keyless(desktop):
    """A desktop whose keyring holds no key."""
    clear(desktop)
    yield desktop
    desktop.keyring.store(API_KEY)


@pytest.fixture
def key_desktop(desktop):
    """A desktop whose keyring is put back after the test."""
    yield desktop
    desktop.keyring.store(API_KEY)


@pytest.fixture
def form(key_desktop, service, programs):
    """The form for the key, with the keyboard."""
    lumiwren = programs.start(key_desktop, service)
    lumiwren.choose("Set API Key...")
    lumiwren.api_key.lumiwren = lumiwren
    return lumiwren.api_key.wait_shown().wait_focused()


@pytest.fixture
def welcome(keyless, service, programs):
    lumiwren = programs.start(keyless, service)
    lumiwren.welcome.lumiwren = lumiwren
    return lumiwren.welcome.wait_shown().wait_focused()


def wait_stored(desktop, key):
    wait_until(lambda: stored(desktop) == key, f"the stored key to be {key!r}", interval=0.05)


def wait_enabled(window, button, enabled=True):
    wait_until(lambda: ("enabled" in window.find("push button", button).states) == enabled,
               f"{button} to be {'enabled' if enabled else 'disabled'}", interval=0.02)


# -- the welcome -----------------------------------------------------------------------------------------------

@pytest.mark.parametrize("manager", WINDOW_MANAGERS)
def test_without_a_key_the_welcome_comes_in_front_of_whatever_the_user_is_doing(service, programs, manager):
    with Desktop(manager, keyring=False) as desktop:
        desktop.start_keyring(key=None)
        editor = GtkEditor(desktop, "The selected text")
        editor.focus()
        lumiwren = programs.start(desktop, service)
        lumiwren.welcome.wait_shown().wait_focused()
        frame = lumiwren.welcome.frame
        assert frame.width == 450
        assert abs(frame.centre[0] - 640) <= 8  # The title bar's frame counts too.
        assert 400 <= frame.height <= 480
        desktop.display.wait_above(lumiwren.welcome.window, editor.window)
        assert lumiwren.terminate() == 0


def test_with_a_key_no_welcome_comes_even_on_the_first_start(desktop, service, lumiwren):
    assert stays_false(lambda: lumiwren.welcome.shown, 1.0)


def test_from_the_first_start_to_the_first_answer(welcome, keyless, service):
    lumiwren = welcome.lumiwren
    wait_enabled(welcome, "Test Connection", False)
    wait_enabled(welcome, "Save & Continue", False)
    keyless.display.type("sk-mine\n")
    welcome.wait_gone()
    assert stored(keyless) == "sk-mine"
    editor = GtkEditor(keyless, "The selected text")
    editor.select_all("The selected text")
    lumiwren.press_hotkey()
    lumiwren.panel.wait_for("Answer.")
    assert service.wait_for_requests(1).headers["authorization"] == "Bearer sk-mine"


def test_the_welcome_keeps_a_key_whose_test_failed(welcome, keyless, service):
    service.answer = lambda exchange: exchange.error(401, "Unauthorized")
    keyless.display.type("sk-wrong")
    wait_enabled(welcome, "Test Connection")
    welcome.click("Test Connection")
    welcome.wait_for(FAILURE)
    assert stored(keyless) == "sk-wrong"
    assert welcome.shown


def test_the_welcome_keeps_a_key_that_could_not_be_tested(keyless, programs):
    lumiwren = programs.start(keyless, OPENAI_BASE_URL="http://127.0.0.1:1/v1")
    welcome = lumiwren.welcome.wait_shown().wait_focused()
    keyless.display.type("sk-untested")
    wait_enabled(welcome, "Test Connection")
    welcome.click("Test Connection")
    wait_enabled(welcome, "Test Connection")
    wait_until(lambda: welcome.shows("onnect"), "the reason")
    assert stored(keyless) == "sk-untested"


def test_the_welcome_can_be_closed_and_the_program_goes_on(welcome, keyless, service):
    keyless.display.press("Escape")
    welcome.wait_gone()
    assert stored(keyless) is None
    assert "Quit" in welcome.lumiwren.status_item.entries()


# -- the form for the key --------------------------------------------------------------------------------------

def test_the_stored_key_is_there_masked_and_shown_on_demand(form):
    wait_loaded(form)
    assert API_KEY not in form.texts()
    assert "org.a11y.atspi.Text" not in field(form).interfaces
    form.click("Show API Key")
    form.wait_for(API_KEY)
    form.click("Hide API Key")
    wait_until(lambda: API_KEY not in form.texts(), "the key to be hidden")


def test_the_masked_key_cannot_be_copied(form, key_desktop):
    wait_loaded(form)
    key_desktop.selections.clear("CLIPBOARD")
    for keys in (("Control", "a"), ("Control", "c"), ("Control", "x"), ("Control", "Insert")):
        key_desktop.display.press(*keys)
    form.click("Show API Key")
    form.wait_for(API_KEY)  # Whole: it was not cut either; and all keys have been dealt with.
    assert key_desktop.selections.text("CLIPBOARD") is None
    assert key_desktop.selections.text("PRIMARY") is None


def replace(desktop, text):
    desktop.display.press("Control", "a")
    desktop.display.type(text)


def wait_loaded(form):
    """Until the stored key is in the field: with it there is something to test."""
    wait_enabled(form, "Test Connection")


def test_return_saves_what_was_typed_to_the_letter(form, key_desktop):
    wait_loaded(form)
    replace(key_desktop, " sk-new \n")
    form.wait_gone()
    assert stored(key_desktop) == " sk-new "


def test_escape_and_cancel_save_nothing(form, key_desktop):
    wait_loaded(form)
    replace(key_desktop, "sk-typed")
    key_desktop.display.press("Escape")
    form.wait_gone()
    form.lumiwren.choose("Set API Key...")
    form.wait_shown().wait_focused()
    wait_loaded(form)
    form.click("Show API Key")
    form.wait_for(API_KEY)
    replace(key_desktop, "sk-typed")
    form.click("Cancel")
    form.wait_gone()
    assert stored(key_desktop) == API_KEY


def test_save_with_an_empty_field_stores_an_empty_key(form, key_desktop):
    wait_loaded(form)
    key_desktop.display.press("Control", "a")
    key_desktop.display.press("BackSpace")
    wait_enabled(form, "Test Connection", False)
    form.click("Save")
    form.wait_gone()
    assert stored(key_desktop) == ""


def test_remove_key_removes_it_and_vanishes(form, key_desktop):
    wait_loaded(form)
    form.click("Remove Key")
    wait_until(lambda: not form.nodes("push button", "Remove Key"), "the button to vanish")
    assert stored(key_desktop) is None
    assert form.shown
    wait_enabled(form, "Test Connection", False)


def test_a_test_stores_the_typed_key_and_keeps_it_when_it_is_accepted_or_refused(form, key_desktop, service):
    wait_loaded(form)
    replace(key_desktop, "sk-good")
    form.click("Test Connection")
    form.wait_for(SUCCESS)
    assert stored(key_desktop) == "sk-good"
    service.answer = lambda exchange: exchange.error(401, "Unauthorized")
    replace(key_desktop, "sk-bad")
    form.click("Test Connection")
    form.wait_for(FAILURE)
    assert stored(key_desktop) == "sk-bad"


@pytest.mark.parametrize("before", [API_KEY, None], ids=["a key", "no key"])
def test_a_test_that_cannot_be_made_puts_back_what_was_stored(key_desktop, programs, before):
    if before is None:
        clear(key_desktop)
    lumiwren = programs.start(key_desktop, OPENAI_BASE_URL="http://127.0.0.1:1/v1")
    if before is None:
        lumiwren.welcome.wait_shown()
    lumiwren.choose("Set API Key...")
    form = lumiwren.api_key.wait_shown().wait_focused()
    if before is not None:
        wait_loaded(form)
    replace(key_desktop, "sk-unreachable")
    wait_enabled(form, "Test Connection")
    form.click("Test Connection")
    wait_until(lambda: form.shows("onnect to"), "the reason")
    wait_stored(key_desktop, before)


def test_closing_the_form_during_a_test_is_safe(form, key_desktop, service):
    go = threading.Event()

    def answer(exchange):
        exchange.until(go)
        exchange.answer("Yes.")

    service.answer = answer
    wait_loaded(form)
    replace(key_desktop, "sk-in-flight")
    form.click("Test Connection")
    service.wait_for_requests(1)
    assert form.nodes("progress bar", "Loading") or form.nodes(None, "Loading")
    key_desktop.display.press("Escape")
    form.wait_gone()
    form.lumiwren.choose("Set API Key...")
    form.wait_shown().wait_focused()
    go.set()
    assert service.requests[0].answered.wait(10)
    assert stays_false(lambda: form.shows(SUCCESS), 0.3)
    assert stored(key_desktop) == "sk-in-flight"


def test_a_keyring_that_refuses_leaves_the_form_open(programs, service):
    with Desktop(keyring=False) as desktop:
        lumiwren = programs.start(desktop, service)
        welcome = lumiwren.welcome.wait_shown().wait_focused()
        desktop.display.type("sk-mine")
        wait_enabled(welcome, "Save & Continue")
        welcome.click("Save & Continue")
        assert stays_false(lambda: not welcome.shown, 0.5)
        wait_enabled(welcome, "Test Connection")
        welcome.click("Test Connection")
        welcome.wait_for("API key")
        assert service.requests == []
        assert lumiwren.terminate() == 0


def test_every_control_of_the_form_is_reached_with_tab(form, key_desktop):
    wait_loaded(form)
    seen = []
    for _ in range(6):
        seen.append(wait_until(lambda: next((node.name for node in form.nodes() if "focused" in node.states), None),
                               "a control with the keyboard"))
        before = seen[-1]
        key_desktop.display.press("Tab")
        wait_until(lambda: next((node.name for node in form.nodes() if "focused" in node.states), before) != before,
                   f"what comes after {before}")
    assert seen == ["API Key", "Show API Key", "Test Connection", "Remove Key", "Cancel", "Save"]


# -- About -----------------------------------------------------------------------------------------------------

def test_about_says_what_the_program_is_and_its_version(desktop, service, lumiwren):
    lumiwren.choose("About Lumiwren")
    about = lumiwren.about.wait_shown().wait_focused()
    assert about.frame.width == 340 and about.frame.height >= 300
    texts = about.texts()
    assert "Lumiwren" in texts and any(text.startswith("Version 0.") for text in texts)
    desktop.display.press("Return")
    about.wait_gone()


def test_about_comes_back_where_it_was_left(desktop, service, lumiwren):
    lumiwren.choose("About Lumiwren")
    about = lumiwren.about.wait_shown().wait_focused()
    frame = about.frame
    assert abs(frame.centre[0] - 640) <= 2
    desktop.tool("xdotool", "windowmove", str(about.window.id), str(frame.x - 200), str(frame.y + 120))
    wait_until(lambda: about.frame.x < frame.x - 150, "the window at its new place")
    left_at = about.frame
    about.click("Close")
    about.wait_gone()
    lumiwren.choose("About Lumiwren")
    about.wait_shown().wait_focused()
    wait_until(lambda: about.frame == left_at, "the window where it was left")
