"""What the service sends, and what the panel then shows; what actions say, and what the service then gets."""

import pathlib
import socket
import threading

import pytest
from lab import DONE, API_KEY, sse, stays_false, wait_until
from lab.actions_window import action, store_actions, stored_actions

E, F = 14, 3  # key codes


def ask(lumiwren):
    lumiwren.press_hotkey()
    return lumiwren.panel.wait_shown()


def test_the_request_is_what_the_service_expects(desktop, service, lumiwren, editor):
    ask(lumiwren)
    request = service.wait_for_requests(1)
    assert (request.method, request.path) == ("POST", "/v1/chat/completions")
    assert request.headers["authorization"] == f"Bearer {API_KEY}"
    assert request.headers["content-type"] == "application/json"
    body = request.json
    assert set(body) == {"model", "messages", "max_tokens", "stream"}
    assert (body["model"], body["max_tokens"], body["stream"]) == ("gpt-4o-mini", 500, True)
    assert [role for role, _ in request.messages] == ["user"]


def test_what_only_requests_need_is_loaded_for_the_first_one(desktop, service, lumiwren, editor):
    memory = pathlib.Path(f"/proc/{lumiwren.process.pid}/maps")
    assert "libcurl" not in memory.read_text()
    ask(lumiwren)
    service.wait_for_requests(1)
    assert "libcurl" in memory.read_text()


def test_the_panel_says_what_it_waits_for(desktop, service, lumiwren, editor):
    go = threading.Event()

    def answer(exchange):
        exchange.until(go)
        exchange.answer("Now.")

    service.answer = answer
    panel = ask(lumiwren)
    panel.wait_for("Getting explanation...")
    panel.wait_for("The selected text")
    assert "enabled" not in panel.field.states
    go.set()
    panel.wait_for("Now.")
    panel.wait_enabled()
    assert not panel.shows("Getting explanation...")


def test_the_answer_grows_while_it_comes(desktop, service, lumiwren, editor):
    steps = [threading.Event() for _ in range(3)]

    def answer(exchange):
        exchange.head()
        for step, text in zip(steps, ("One", " two", " three")):
            exchange.text(text)
            exchange.until(step)
        exchange.send(DONE)
        exchange.end()

    service.answer = answer
    panel = ask(lumiwren)
    for step, text in zip(steps, ("One", "One two", "One two three")):
        wait_until(lambda: panel.answers() == [text], f"the answer {text!r}", interval=0.02)
        step.set()
    panel.wait_enabled()


@pytest.mark.parametrize("status, reason", [(401, "Unauthorized"), (429, "Too Many Requests"),
                                            (500, "Internal Server Error")])
def test_an_error_of_the_service_is_told_by_its_number(desktop, service, lumiwren, editor, status, reason):
    service.answer = lambda exchange: exchange.error(status, reason)
    panel = ask(lumiwren)
    panel.wait_for(f"API error: HTTP {status}")
    assert panel.errors() == [f"API error: HTTP {status}"]
    assert panel.answers() == []
    assert not panel.shows("Not for the user")
    assert not panel.shows("The selected text")
    panel.wait_enabled()


def test_a_refused_connection_is_told(desktop, programs, editor):
    with socket.create_server(("127.0.0.1", 0)) as unused:
        port = unused.getsockname()[1]
    lumiwren = programs.start(desktop, OPENAI_BASE_URL=f"http://127.0.0.1:{port}/v1")
    panel = ask(lumiwren)
    wait_until(panel.errors, "the error")
    assert panel.errors()[0].strip()
    panel.wait_enabled()


def test_a_connection_that_breaks_off_is_told(desktop, service, lumiwren, editor):
    def answer(exchange):
        exchange.head()
        exchange.text("The beginning")
        exchange.reset()

    service.answer = answer
    panel = ask(lumiwren)
    wait_until(panel.errors, "the error")
    assert panel.errors()[0].strip()
    panel.wait_enabled()


def test_an_answer_split_inside_of_characters_is_whole(desktop, service, lumiwren, editor):
    text = "Zaunkönig и 🐦 “quoted”"

    def answer(exchange):
        exchange.head()
        for byte in sse(text) + DONE:
            exchange.send(bytes([byte]))
        exchange.end()

    service.answer = answer
    panel = ask(lumiwren)
    wait_until(lambda: panel.answers() == [text], "the answer", interval=0.02)


def test_lines_that_are_no_chunks_are_passed_over(desktop, service, lumiwren, editor):
    def answer(exchange):
        exchange.head()
        exchange.send(b": a comment\r\n\r\nevent: ping\ndata:{}\ndata: not json\ndata: {}\n"
                      b'data: {"choices":[]}\ndata: {"choices":[{"delta":{"role":"assistant"}}]}\n\n')
        exchange.text("Only this.")
        exchange.send(DONE)
        exchange.end()

    service.answer = answer
    panel = ask(lumiwren)
    panel.wait_for("Only this.")
    panel.wait_enabled()
    assert panel.answers() == ["Only this."]


def test_the_sentinel_does_not_end_the_answer_but_the_end_of_the_body_does(desktop, service, lumiwren, editor):
    end = threading.Event()

    def answer(exchange):
        exchange.head()
        exchange.text("All of it.")
        exchange.send(DONE)
        exchange.until(end)
        exchange.end()

    service.answer = answer
    panel = ask(lumiwren)
    panel.wait_for("All of it.")
    assert stays_false(lambda: "enabled" in panel.field.states, 0.3)
    end.set()
    panel.wait_enabled()
    assert panel.answers() == ["All of it."]


def test_an_answer_is_never_taken_for_markup_of_another_kind(desktop, service, lumiwren, editor):
    text = '<b>bold</b> <img src="file:///etc/passwd"> **bold**'
    service.answer = lambda exchange: exchange.answer(text)
    panel = ask(lumiwren)
    wait_until(lambda: panel.answers() == [text.replace("**", "")], "the answer as it is", interval=0.02)


def test_the_next_request_uses_the_same_connection(desktop, service, lumiwren, editor):
    ask(lumiwren).wait_enabled()
    service.wait_for_requests(1)
    lumiwren.press_hotkey("t")
    service.wait_for_requests(2)
    assert service.connections == 1


# -- actions as a user has edited them in the file -------------------------------------------------------------

@pytest.mark.parametrize("prompt, filled", [
    ("First {text}, then {text}.", "First The selected text, then The selected text."),
    ("Say hello.", "Say hello."),
    ("{TEXT} {text", "{TEXT} {text"),
])
def test_the_prompt_is_filled_where_it_says_so(desktop, service, programs, editor, prompt, filled):
    store_actions(desktop, [action("Mine", prompt, E)])
    ask(programs.start(desktop, service))
    assert service.wait_for_requests(1).prompt == filled


def test_the_first_of_two_actions_with_one_hotkey_is_run(desktop, service, programs, editor):
    store_actions(desktop, [action("Mine", "one {text}", E), action("Mine", "two {text}", E)])
    ask(programs.start(desktop, service)).wait_enabled()
    assert [request.prompt for request in service.requests] == ["one The selected text"]


def test_an_action_can_have_any_key(desktop, service, programs, editor):
    store_actions(desktop, [action("Mine", "by F {text}", F)])
    programs.start(desktop, service).press_hotkey("f")
    assert service.wait_for_requests(1).prompt == "by F The selected text"


def test_stored_actions_without_the_mark_of_the_first_start_come_after_the_defaults(desktop, service, programs):
    store_actions(desktop, [action("Mine", "mine {text}", F)], hasInitializedDefaultActions=False)
    programs.start(desktop, service)
    assert [entry["name"] for entry in stored_actions(desktop)] == ["Explain Selected Text", "Explain Screen Region",
                                                                    "Translate to English", "Mine"]


@pytest.mark.parametrize("actions", ["[{\"id\": 1}]", "not json", [action("Mine", inputType="textSelection")]],
                         ids=["incomplete", "no list", "unknown input"])
def test_a_list_that_cannot_be_read_is_told_and_harms_nothing(desktop, service, programs, editor, actions):
    store_actions(desktop, actions, hasLaunchedBefore=True)
    before = desktop.user_defaults().read_text()
    lumiwren = programs.start(desktop, service)
    assert "Failed to load custom actions: " in lumiwren.process.output
    lumiwren.press_hotkey()
    assert stays_false(lambda: lumiwren.panel.shown, 0.3)
    assert desktop.user_defaults().read_text() == before


def test_a_settings_file_that_is_no_settings_file_is_set_aside(desktop, service, programs, editor):
    desktop.user_defaults().write_text("{ half a file")
    ask(programs.start(desktop, service)).wait_for("Answer.")
    aside = [path for path in desktop.user_defaults().parent.iterdir() if path.name.endswith(".unreadable")]
    assert [path.read_text() for path in aside] == ["{ half a file"]
    aside[0].unlink()
