"""The tool that lets the user choose a region of the screen: real pointer, real keys, real neighbours."""

import os
import pathlib
import signal
import sys

import pytest
from lab import (WINDOW_MANAGERS, Desktop, Frame, GtkEditor, GtkMenu, QtEditor, Screencapture, screen_pixels,
                 stays_false, wait_until)
from lab.screencapture import binary
from Xlib import X, Xatom

START, END = (300, 200), (419, 259)
REGION = Frame(300, 200, 120, 60)


@pytest.fixture(scope="module")
def shared_desktop():
    with Desktop(keyring=False, tray_host=False) as desktop:
        settings = pathlib.Path(desktop.env["XDG_CONFIG_HOME"], "gtk-3.0/settings.ini")
        settings.parent.mkdir()
        settings.write_text("[Settings]\ngtk-cursor-blink=0\n")
        yield desktop


@pytest.fixture
def desktop(shared_desktop):
    with shared_desktop.scope() as desktop:
        paint_noise(desktop.display)
        desktop.display.move(20, 700)
        still_screen(desktop.display)
        yield desktop
        assert desktop.display.keys_down() == []
        for left in (desktop.directory / "captures").glob("*"):
            left.unlink()


@pytest.fixture
def editor(desktop):
    editor = GtkEditor(desktop, "The text that is on the screen")
    editor.focus()
    desktop.display.move(20, 700)
    wait_until(lambda: has_paper(screen_pixels(desktop.display, editor.frame)), "the drawn editor")
    still_screen(desktop.display)
    return editor


def paint_noise(display):
    """Gives the bare screen a picture in which no two places look the same."""
    root, size = display.root, display.root.get_geometry()
    pixmap = root.create_pixmap(size.width, 16, size.depth)
    context = pixmap.create_gc()
    noise = bytearray(os.urandom(size.width * 16 * 4))
    pixmap.put_image(context, 0, 0, size.width, 16, X.ZPixmap, size.depth, 0, bytes(noise))
    root.change_attributes(background_pixmap=pixmap)
    root.clear_area()
    pixmap.free()
    display.x.sync()


def sizes(display):
    size = display.root.get_geometry()
    return Frame(0, 0, size.width, size.height)


def still_screen(display, frame=None, drawn=lambda pixels: True):
    """Waits until a part of the screen, or all of it, does not change any more; its pixels."""
    seen = []

    def still():
        seen.append(screen_pixels(display, frame or sizes(display)))
        return len(seen) > 2 and len(set(seen[-3:])) == 1 and drawn(seen[-1])

    wait_until(still, "the screen to stand still", interval=0.05)
    return seen[-1]


def has_paper(pixels):
    """Whether an editor's ground is to be seen there."""
    return b"\xff" * 60 in pixels[2]


def typing_reaches(editor, text):
    """Whether keys still get to the editor."""
    editor.display.type(text)
    wait_until(lambda: text in (editor.typed() or ""), "what was typed in the editor")
    return True


# -- choosing --------------------------------------------------------------------------------------------------

def test_the_picture_is_exactly_what_was_on_the_screen(desktop, editor):
    expected = screen_pixels(desktop.display, REGION)
    tool = Screencapture(desktop).wait_shown()
    tool.drag(START, END)
    assert tool.finish() == expected
    assert tool.path.stat().st_mode & 0o7777 == 0o600
    assert tool.left() == ["picture.png"]
    assert desktop.display.has_focus(editor.window)
    assert typing_reaches(editor, "x")


@pytest.mark.parametrize("start, end", [((419, 259), (300, 200)), ((419, 200), (300, 259)), ((300, 259), (419, 200))])
def test_a_drag_in_any_direction_is_the_same_rectangle(desktop, start, end):
    expected = screen_pixels(desktop.display, REGION)
    tool = Screencapture(desktop).wait_shown()
    tool.drag(start, end)
    assert tool.finish() == expected


def test_the_whole_screen_can_be_drawn(desktop, editor):
    everything = sizes(desktop.display)
    expected = screen_pixels(desktop.display, everything)
    tool = Screencapture(desktop).wait_shown()
    tool.drag((0, 0), (everything.right - 1, everything.bottom - 1))
    assert tool.finish() == expected


def press_escape(tool):
    tool.display.press("Escape")


def press_escape_in_the_drag(tool):
    tool.drag(START, END)
    tool.display.press("Escape")
    wait_until(lambda: tool.window is None, "the overlay's end")
    tool.display.button_up()


def right_click(tool):
    tool.display.click(500, 300, button=3)


def click(tool):
    tool.display.click(500, 300)


def shake(tool):
    tool.drag((500, 300), (502, 299))
    tool.display.button_up()


@pytest.mark.parametrize("cancel", [press_escape, press_escape_in_the_drag, right_click, click, shake])
def test_cancelled_there_is_no_file(desktop, editor, cancel):
    tool = Screencapture(desktop).wait_shown()
    cancel(tool)
    assert tool.process.wait() == 1
    assert tool.process.output == ""
    assert tool.left() == []
    assert desktop.display.has_focus(editor.window)
    assert typing_reaches(editor, "x")


@pytest.mark.parametrize("key", ["Return", "KP_Enter"])
def test_return_accepts_what_is_drawn_and_nothing_before(desktop, key):
    expected = screen_pixels(desktop.display, REGION)
    tool = Screencapture(desktop).wait_shown()
    desktop.display.press(key)
    tool.drag(START, END)
    desktop.display.press(key)
    wait_until(lambda: tool.path.exists(), "the picture")
    assert tool.finish() == expected


def test_arrows_move_the_rectangle_and_with_shift_its_corner(desktop):
    expected = screen_pixels(desktop.display, Frame(302, 199, 121, 58))
    tool = Screencapture(desktop).wait_shown()
    tool.drag(START, END)
    desktop.display.press("Right")
    desktop.display.press("Right")
    desktop.display.press("Up")
    desktop.display.press("Shift", "Right")
    desktop.display.press("Shift", "Up")
    desktop.display.press("Shift", "Up")
    assert tool.finish() == expected


def test_arrows_move_the_pointer_before_the_drag(desktop):
    tool = Screencapture(desktop).wait_shown()
    desktop.display.move(300, 200)
    for key, place in (("Right", (301, 200)), ("Down", (301, 201)), ("Left", (300, 201)), ("Up", (300, 200))):
        desktop.display.press(key)
        wait_until(lambda place=place: desktop.display.pointer() == place, f"the pointer at {place}")
    desktop.display.press("Escape")
    assert tool.process.wait() == 1


def test_locks_and_layouts_do_not_disturb_the_keys(desktop):
    desktop.set_layout("-layout", "us,ru", "-option", "caps:escape")
    try:
        for lock in ("Num_Lock", None):
            if lock:
                desktop.display.press(lock)
            expected = screen_pixels(desktop.display, Frame(301, 200, 120, 60))
            tool = Screencapture(desktop, desktop.directory / f"captures-{lock}.png").wait_shown()
            tool.drag(START, END)
            desktop.display.press("Right")
            assert tool.finish() == expected
            if lock:
                desktop.display.press(lock)
        # The key that is Escape now.
        tool = Screencapture(desktop).wait_shown()
        desktop.display.press("Caps_Lock")
        assert tool.process.wait() == 1
    finally:
        desktop.set_layout("-layout", "us", "-option", "")


def test_a_key_that_is_held_does_not_repeat_in_the_program_below(desktop, editor):
    tool = Screencapture(desktop).wait_shown()
    desktop.display.key_down("Escape")
    wait_until(lambda: tool.window is None, "the overlay's end")
    assert stays_false(lambda: not tool.process.running(), 0.2)
    desktop.display.key_up("Escape")
    assert tool.process.wait() == 1


# -- what is in the picture ------------------------------------------------------------------------------------

def test_everything_is_frozen_as_it_was_at_the_start(desktop, editor):
    frame = editor.frame
    expected = screen_pixels(desktop.display, frame)
    tool = Screencapture(desktop).wait_shown()
    editor.close()
    wait_until(lambda: desktop.display.window("GTK editor") is None, "the editor's end")
    assert screen_pixels(desktop.display, frame) != expected, "the overlay dims what is below"
    tool.drag((frame.x, frame.y), (frame.right - 1, frame.bottom - 1))
    assert tool.finish() == expected


def test_windows_without_a_window_manager_are_in_the_picture(desktop):
    display = desktop.display
    window = display.root.create_window(320, 210, 50, 20, 0, X.CopyFromParent, background_pixel=0xFF8000,
                                        override_redirect=True)
    window.map()
    expected = still_screen(display, REGION, lambda pixels: b"\xff\x80\x00" * 50 in pixels[2])
    tool = Screencapture(desktop).wait_shown()
    window.destroy()
    display.x.sync()
    tool.drag(START, END)
    assert tool.finish() == expected


def test_monitors_left_of_and_above_the_primary_one_and_the_gap_between_them(desktop, editor):
    monitors = {"LEFT": Frame(0, 300, 400, 500), "ABOVE": Frame(400, 0, 880, 240), "MAIN": Frame(400, 240, 880, 560)}
    for name, frame in monitors.items():
        desktop.tool("xrandr", "--setmonitor", ("*" if name == "MAIN" else "") + name,
                     f"{frame.width}/200x{frame.height}/150+{frame.x}+{frame.y}",
                     "screen" if name == "MAIN" else "none")
    try:
        whole = Frame(350, 180, 250, 300)
        desktop.display.wait_for_manager()  # It draws its frames again.
        width, height, pixels = still_screen(desktop.display, whole)
        expected = bytearray(pixels)
        for y in range(height):
            for x in range(width):
                if not any(frame.contains(whole.x + x, whole.y + y) for frame in monitors.values()):
                    expected[(y * width + x) * 3:(y * width + x) * 3 + 3] = b"\0\0\0"
        tool = Screencapture(desktop).wait_shown()
        assert desktop.display.frame(tool.window) == sizes(desktop.display)
        tool.drag((whole.x, whole.y), (whole.right - 1, whole.bottom - 1))
        assert tool.finish() == (width, height, bytes(expected))
    finally:
        for name in monitors:
            desktop.tool("xrandr", "--delmonitor", name)
        desktop.display.wait_for_manager()


@pytest.mark.parametrize("window_manager", WINDOW_MANAGERS)
def test_above_a_full_screen_window_with_every_window_manager(window_manager):
    with Desktop(window_manager, keyring=False, tray_host=False) as desktop:
        display = desktop.display
        editor = GtkEditor(desktop, "The text that is on the screen " * 40, state="fullscreen")
        editor.focus()
        wait_until(lambda: display.frame(editor.window) == sizes(display), "the full-screen window")
        display.move(600, 600)
        expected = still_screen(display, Frame(0, 0, 300, 60),
                                lambda pixels: len(set(pixels[2])) > 8 and has_paper(pixels))
        tool = Screencapture(desktop).wait_shown()
        wait_until(lambda: tool.colour(250, 600) != (255, 255, 255), "the dimmed window")
        tool.drag((0, 0), (299, 59))
        assert tool.finish() == expected
        wait_until(lambda: tool.colour(250, 600) == (255, 255, 255), "the window as it was")
        assert display.has_focus(editor.window)


def test_a_taskbar_is_in_the_picture_and_below_the_overlay():
    with Desktop("xfwm4", keyring=False) as desktop:
        panel = desktop.start_panel()
        bar = Frame(0, desktop.size[1] - 28, 200, 28)
        desktop.display.move(600, 300)
        still_screen(desktop.display, bar, lambda pixels: len(set(pixels[2])) > 2)
        # It draws one part after the other, and on a busy machine a part may come at any time.
        panel.signal_group(signal.SIGSTOP)
        try:
            expected = still_screen(desktop.display, bar)
            tool = Screencapture(desktop).wait_shown()
            wait_until(lambda: screen_pixels(desktop.display, bar) != expected, "the dimmed taskbar")
            tool.drag((bar.x, bar.y), (bar.right - 1, bar.bottom - 1))
            assert tool.finish() == expected
        finally:
            panel.signal_group(signal.SIGCONT)


def test_lines_are_as_wide_as_the_scale(desktop):
    display = desktop.display
    display.root.change_property(Xatom.RESOURCE_MANAGER, Xatom.STRING, 8, b"Xft.dpi:\t192\n")
    try:
        for environment, width in (({}, 2), ({"QT_SCALE_FACTOR": "1.5"}, 3)):
            expected = screen_pixels(display, REGION)
            tool = Screencapture(desktop, desktop.directory / f"scale-{width}.png", **environment).wait_shown()
            tool.drag(START, END)
            wait_until(lambda width=width, tool=tool: tool.colour(350, 200 - width) == (255, 255, 255), "the outline")
            assert tool.colour(350, 200 - width - 1) != (255, 255, 255)
            assert tool.finish() == expected
    finally:
        display.root.delete_property(Xatom.RESOURCE_MANAGER)


# -- other programs --------------------------------------------------------------------------------------------

def test_what_comes_above_later_is_covered_again(desktop):
    display = desktop.display
    tool = Screencapture(desktop).wait_shown()
    before = tool.colour(600, 400)
    window = display.root.create_window(500, 300, 200, 200, 0, X.CopyFromParent, background_pixel=0x00ff00,
                                        override_redirect=True)
    window.map()
    display.x.sync()
    wait_until(lambda: display.stacking(tool.window) > display.stacking(window) and tool.colour(600, 400) == before,
               "the overlay above the other window")
    window.destroy()
    display.press("Escape")
    assert tool.process.wait() == 1


def test_two_windows_that_want_to_be_above_do_not_fight_for_ever(desktop):
    code = ("import sys, Xlib.display\nfrom Xlib import X\n"
            "x = Xlib.display.Display(); root = x.screen().root\n"
            "w = root.create_window(500, 300, 200, 200, 0, X.CopyFromParent, override_redirect=True,"
            " event_mask=X.VisibilityChangeMask)\nw.map()\nprint('shown', flush=True)\n"
            "while True:\n"
            "    if x.next_event().state != 0:\n"
            "        w.configure(stack_mode=X.Above)\n        print('raised', flush=True)\n")
    tool = Screencapture(desktop).wait_shown()
    other = desktop.launch([sys.executable, "-c", code])
    wait_until(lambda: "raised" in other.output, "the fight")
    counts = []

    def over():
        counts.append(other.output.count("raised"))
        return len(counts) > 3 and len(set(counts[-3:])) == 1

    wait_until(over, "the fight's end", interval=0.1)
    desktop.display.press("Escape")
    assert tool.process.wait() == 1


def check_an_open_menu_is_left_alone(desktop, tool, screen):
    """Draws a rectangle over an open menu, keys included; then everything is as it was."""
    display = desktop.display
    tool.drag(START, END, follows=False)
    wait_until(lambda: tool.colour(350, 199) == (255, 255, 255), "the outline")
    display.press("Return")
    assert tool.finish() == screen_pixels_of(screen, REGION)
    assert tool.process.output == ""
    assert still_screen(display) == screen


def screen_pixels_of(screen, frame):
    """A part of the pixels of the whole screen."""
    width, _, pixels = screen
    rows = [pixels[(y * width + frame.x) * 3:(y * width + frame.right) * 3] for y in range(frame.y, frame.bottom)]
    return frame.width, frame.height, b"".join(rows)


def test_an_open_gtk_menu_is_in_the_picture_and_notices_nothing(desktop):
    menu = GtkMenu(desktop)
    x, y = menu.open()
    wait_until(lambda: len(set(screen_pixels(desktop.display, Frame(x, y, 40, 60))[2])) > 8, "the drawn menu")
    screen = still_screen(desktop.display)
    seen = menu.seen()
    tool = Screencapture(desktop).wait_pointer_drawn()
    check_an_open_menu_is_left_alone(desktop, tool, screen)
    assert menu.seen() == seen
    # Mouse and keyboard are the menu's again.
    desktop.display.press("Down")
    desktop.display.press("Return")
    wait_until(lambda: "activated One" in menu.seen(), "the menu's entry")
    assert stays_false(lambda: "activated Two" in menu.seen(), 0.1)


def test_modifiers_of_the_hotkey_are_not_left_down_in_an_open_menu(desktop):
    menu = GtkMenu(desktop)
    menu.open()
    desktop.display.key_down("Control")
    tool = Screencapture(desktop).wait_shown()
    assert stays_false(lambda: not tool.process.running(), 0.3)
    desktop.display.key_up("Control")
    wait_until(lambda: "key-release-event 37" in menu.seen(), "the release in the program that saw the press")
    tool.wait_pointer_drawn()

    # The keyboard is taken within the next hundredths of a second; until then a key is still the menu's.
    wait_until(lambda: not keyboard_is_free(desktop), "the keyboard to be taken")
    seen = menu.seen()
    desktop.display.press("Escape")
    assert tool.process.wait() == 1
    assert menu.seen() == seen
    assert desktop.display.modifiers() == 0


def keyboard_is_free(desktop):
    """Whether a key gets to the session's keyboard."""
    desktop.display.key_down("F12")
    try:
        return "F12" in desktop.display.keys_down()
    finally:
        desktop.display.key_up("F12")


def test_an_open_qt_menu_is_in_the_picture_and_notices_nothing(desktop):
    editor = QtEditor(desktop, "The text")
    editor.focus()
    display = desktop.display
    before = still_screen(display)
    display.click(editor.frame.x + 40, editor.frame.y + 60, button=3)
    screen = still_screen(display, drawn=lambda pixels: pixels != before)
    tool = Screencapture(desktop).wait_pointer_drawn()
    check_an_open_menu_is_left_alone(desktop, tool, screen)
    display.press("Escape")
    wait_until(lambda: screen_pixels(display, editor.frame) != screen_pixels_of(screen, editor.frame),
               "the menu's end")


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGKILL])
def test_signals_end_it_and_nothing_is_left(desktop, editor, number):
    tool = Screencapture(desktop).wait_shown()
    tool.drag(START, END)
    os.kill(tool.process.pid, number)
    assert tool.process.wait() == (-number if number == signal.SIGKILL else 1)
    desktop.display.button_up()
    assert tool.window is None
    assert tool.left() == []
    assert typing_reaches(editor, "x")


def test_killed_over_an_open_menu_it_leaves_mouse_and_keyboard_to_the_menu(desktop):
    menu = GtkMenu(desktop)
    menu.open()
    tool = Screencapture(desktop).wait_pointer_drawn()
    tool.process.kill()
    wait_until(lambda: tool.window is None, "the overlay's end")
    desktop.display.press("Down")
    desktop.display.press("Return")
    wait_until(lambda: "activated One" in menu.seen(), "the menu's entry")


def test_it_ends_with_the_program_that_has_started_it(desktop):
    tool = Screencapture(desktop)
    tool.process.kill()
    parent = desktop.launch([sys.executable, "-c", "import subprocess, sys; subprocess.run(sys.argv[1:])",
                             str(binary()), "-i", "-s", str(tool.path)])
    tool.process = parent
    tool.wait_shown()
    parent.kill()
    wait_until(lambda: tool.window is None, "the overlay's end")
    assert tool.left() == []


def test_a_second_start_is_cancelled_at_once(desktop):
    expected = screen_pixels(desktop.display, REGION)
    tool = Screencapture(desktop).wait_shown()
    second = Screencapture(desktop, desktop.directory / "captures/second.png")
    assert second.process.wait() == 1
    tool.drag(START, END)
    assert tool.finish() == expected
    assert tool.left() == ["picture.png"]


def test_a_change_of_the_monitors_cancels():
    with Desktop(window_manager=None, keyring=False, tray_host=False, physical_keyboard=True) as desktop:
        tool = Screencapture(desktop).wait_shown()
        desktop.tool("xrandr", "-s", "800x600")
        assert tool.process.wait() == 1
        assert tool.left() == []


# -- the command line ------------------------------------------------------------------------------------------

@pytest.mark.parametrize("arguments", [[], ["-i"], ["-i", "-s"], ["-s", "-i", "PATH"], ["-i", "-s", ""],
                                       ["-i", "-s", "PATH", "PATH"], ["--help"]])
def test_anything_else_is_answered_by_the_usage(desktop, tmp_path, arguments):
    arguments = [str(tmp_path / "x.png") if argument == "PATH" else argument for argument in arguments]
    process = desktop.launch([str(binary()), *arguments])
    assert process.wait() == 2
    assert process.output == "usage: lumiwren-screencapture -i -s PATH\n"
    assert list(tmp_path.iterdir()) == []


def test_without_a_display_it_says_so(desktop, tmp_path):
    process = desktop.launch([str(binary()), "-i", "-s", str(tmp_path / "x.png")], DISPLAY=":9999")
    assert process.wait() == 1
    assert process.output == "lumiwren-screencapture: the display cannot be reached\n"
    assert list(tmp_path.iterdir()) == []


def test_where_no_file_can_be_made_it_says_so_before_anything_is_drawn(desktop, tmp_path):
    mine = tmp_path / "mine.png"
    mine.write_text("mine")
    link = tmp_path / "link.png"
    link.symlink_to(tmp_path / "target.png")
    for path, reason in ((tmp_path / "none/x.png", "No such file or directory"), (mine, "File exists"),
                         (link, "File exists"), (f"{tmp_path}/", "Is a directory")):
        process = desktop.launch([str(binary()), "-i", "-s", str(path)])
        assert process.wait() == 1
        assert process.output == f"lumiwren-screencapture: the file cannot be written: {reason}\n"
    assert mine.read_text() == "mine"
    assert sorted(entry.name for entry in tmp_path.iterdir()) == ["link.png", "mine.png"]


def test_a_file_that_comes_meanwhile_stays(desktop):
    tool = Screencapture(desktop).wait_shown()
    tool.path.write_text("mine")
    tool.drag(START, END)
    desktop.display.button_up()
    assert tool.process.wait() == 1
    assert tool.process.output == "lumiwren-screencapture: the file cannot be written: File exists\n"
    assert tool.path.read_text() == "mine"
    assert tool.left() == ["picture.png"]


def test_in_a_folder_for_everybody_an_ordinary_user_gets_a_picture(desktop):
    folder = desktop.directory / "captures"
    folder.mkdir(exist_ok=True)
    expected = screen_pixels(desktop.display, REGION)
    # The way there is the test's own, which other users may not go: theirs begins in the folder.
    folder.chmod(0o1777)
    argv = ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups", str(binary()), "-i", "-s", "picture.png"]
    tool = Screencapture(desktop, folder / "root.png")
    tool.wait_shown()
    desktop.display.press("Escape")
    assert tool.process.wait() == 1
    tool.path = folder / "picture.png"
    tool.process = desktop.launch(argv, cwd=folder)
    tool.wait_shown()
    # The memory of a process that may leave a core file belongs to its user.
    assert os.stat(f"/proc/{tool.process.pid}/maps").st_uid == 0
    tool.drag(START, END)
    assert tool.finish() == expected
    assert pathlib.Path(tool.path).stat().st_mode & 0o7777 == 0o600
