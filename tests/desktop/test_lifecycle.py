"""Starting, being in the tray, and ending without a trace."""

import signal

import pytest
from lab import Desktop, program, stays_false, tray, wait_until


def items_of(desktop, lumiwren):
    return [item for item in tray.items(desktop.bus) if desktop.bus.pid_of(item.name) == lumiwren.process.pid]


def test_the_status_item_has_a_menu_with_quit(desktop, service, lumiwren):
    assert "Quit" in lumiwren.status_item.entries()
    assert lumiwren.quit() == 0
    wait_until(lambda: not lumiwren.processes(), "the end of all its processes")


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
def test_a_signal_ends_it_cleanly(desktop, service, lumiwren, number):
    lumiwren.process.popen.send_signal(number)
    assert lumiwren.process.wait() == 0
    wait_until(lambda: not lumiwren.processes(), "the end of all its processes")


@pytest.mark.parametrize("when", ["loading", "streaming", "answered"])
def test_it_ends_cleanly_in_the_middle_of_an_answer(desktop, service, lumiwren, editor, when):
    def answer(exchange):
        if when == "loading":
            exchange.hold()
        if when == "streaming":
            exchange.head()
            exchange.text("Answer.")
            exchange.hold()
        exchange.answer("Answer.")

    service.answer = answer
    lumiwren.press_hotkey()
    request = service.wait_for_requests(1)
    if when != "loading":
        lumiwren.panel.wait_for("Answer.")
    assert lumiwren.terminate() == 0
    assert request.answered.wait(15)


def test_it_ends_cleanly_while_it_waits_for_the_clipboard(desktop, service, lumiwren, editor):
    desktop.own_selection({"UTF8_STRING": b"never"}, silent=["*"])
    lumiwren.press_hotkey()
    lumiwren.panel.wait_shown()
    assert lumiwren.terminate() == 0


def test_it_runs_without_a_tray_and_joins_one_that_comes_later(service, programs):
    with Desktop(tray_host=False) as desktop:
        lumiwren = programs.start(desktop, service)
        desktop.start_tray_host()
        assert "Quit" in lumiwren.status_item.entries()
        assert lumiwren.quit() == 0


def test_it_joins_a_tray_that_starts_anew(service, programs):
    with Desktop() as desktop:
        lumiwren = programs.start(desktop, service)
        assert lumiwren.status_item
        desktop.tray_host.close()
        desktop.start_tray_host()
        assert "Quit" in lumiwren.status_item.entries()
        assert lumiwren.quit() == 0


def test_it_has_one_icon_in_a_task_bar(service, programs):
    with Desktop(tray_host=False) as desktop:
        desktop.start_panel()
        lumiwren = programs.start(desktop, service)
        assert lumiwren.status_item.get("Title") == "Lumiwren"
        assert len(items_of(desktop, lumiwren)) == 1
        assert lumiwren.quit() == 0


def test_it_survives_the_end_of_the_bus(service, programs):
    with Desktop() as desktop:
        lumiwren = programs.start(desktop, service)
        desktop.bus_daemon.close()
        assert stays_false(lambda: not lumiwren.process.running(), 0.5)
        assert lumiwren.terminate() == 0


def test_it_ends_with_the_display(desktop, service, programs):
    display = desktop.start_second_display()
    # A process that ends in the orderly way, which destroys what threads still use, says so.
    lumiwren = programs.start(desktop, service, DISPLAY=display.name, ASAN_OPTIONS="atexit=1")
    display.close()
    assert lumiwren.process.wait() == 1
    assert "exit stats" not in lumiwren.process.output


def test_starting_takes_no_focus_and_shows_no_window(desktop, service, editor, lumiwren):
    assert desktop.display.has_focus(editor.window)
    assert not lumiwren.panel.shown


# -- the command line ------------------------------------------------------------------------------------------

def run(desktop, *arguments, stdin=b"", **environment):
    process = desktop.launch([program.binary(), *arguments], stdin=stdin, **environment)
    return process.wait(), process.output


@pytest.mark.parametrize("url", ["http://example.invalid/v1", "http://192.0.2.1:8080/v1", "ftp://127.0.0.1/v1",
                                 "127.0.0.1:8080", "http://127.0.0.1.example.invalid/v1"])
def test_an_address_that_would_send_the_key_in_the_clear_is_refused(desktop, url):
    status, output = run(desktop, OPENAI_BASE_URL=url)
    assert status == 1
    assert output.startswith("lumiwren: ") and "OPENAI_BASE_URL" in output
    assert len(output.splitlines()) == 1


def test_without_a_display_it_says_so(desktop):
    status, output = run(desktop, DISPLAY=None)
    assert status != 0
    assert "display" in output


def test_the_key_is_read_from_standard_input(desktop):
    assert run(desktop, "--set-api-key", stdin=b"  sk-from-stdin \n") == (0, "")
    try:
        assert desktop.keyring.lookup() == "sk-from-stdin"
    finally:
        desktop.keyring.store("sk-stand-in-0123456789")


@pytest.mark.parametrize("stdin", [b"", b"\n", b"   \n", b"x" * 5000])
def test_no_key_on_standard_input_is_an_error(desktop, stdin):
    status, output = run(desktop, "--set-api-key", stdin=stdin)
    assert status == 1
    assert output.startswith("lumiwren: ")
    assert desktop.keyring.lookup() == "sk-stand-in-0123456789"


def test_an_unknown_option_is_an_error(desktop):
    status, output = run(desktop, "--unknown")
    assert status == 2
    assert "usage: lumiwren" in output


def test_its_version_and_its_options_are_told(desktop):
    assert run(desktop, "--version")[0] == 0
    status, output = run(desktop, "--help")
    assert status == 0
    assert "--set-api-key" in output


def test_a_hundred_conversations_leave_nothing_behind(desktop, service, programs, editor):
    # Checked at the end by the sanitizer; in slices it would not see what is lost.
    lumiwren = programs.start(desktop, service, accessible=False, G_SLICE="always-malloc")
    service.answer = lambda exchange: exchange.answer("# Answer\n\n- one\n", "- [two](https://example.org)\n",
                                                      "```c\nint a;\n```\n| a | b |\n|---|---|\n| 1 | 2 |")
    for number in range(1, 101):
        lumiwren.press_hotkey()
        lumiwren.panel.wait_shown()
        assert service.wait_for_requests(number).answered.wait(10)
        desktop.display.press("Escape")
        lumiwren.panel.wait_gone()
    assert lumiwren.terminate() == 0, lumiwren.process.output
