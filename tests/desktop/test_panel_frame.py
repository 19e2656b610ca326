"""The panel's edges: its shadow, its round corners, moving it and resizing it, under several window managers."""

import contextlib

import pytest
from lab import Desktop, Frame, GtkEditor, stays_false, wait_until

WIDTH, HEIGHT = 400, 300
POINTER = (340, 200)
WINDOW_MANAGERS = ["openbox", "xfwm4", "kwin_x11"]
WHITE = (255, 255, 255)


def open_panel(lumiwren, pointer=POINTER):
    lumiwren.desktop.display.move(*pointer)
    lumiwren.press_hotkey()
    panel = lumiwren.panel.wait_shown()
    panel.wait_for("Answer.")
    panel.wait_enabled()
    return panel


@contextlib.contextmanager
def running(service, programs, window_manager, **environment):
    """The program on a desktop with that window manager, with a white window behind everything."""
    with Desktop(window_manager) as desktop:
        paper = desktop.launch(["xterm", "-T", "paper", "-bg", "white", "-fg", "white", "-cr", "white", "+sb",
                                "-geometry", "220x70+0+0", "-e", "sleep", "3600"])
        desktop.display.wait_for_window("paper")
        lumiwren = programs.start(desktop, service, **environment)
        editor = GtkEditor(desktop, "The selected text", place=(900, 600))
        editor.select_all("The selected text")
        yield desktop, lumiwren, editor
        assert paper.running()
        assert lumiwren.terminate() == 0


class Picture:
    def __init__(self, display, frame):
        data, self.width, self.height = display.pixels(frame)
        self.data = data if isinstance(data, bytes) else data.encode("latin-1")

    def at(self, x, y):
        start = 4 * (y * self.width + x)
        return self.data[start + 2], self.data[start + 1], self.data[start]


def around(panel, reach=30):
    frame = panel.frame
    return Picture(panel.display, Frame(frame.x - reach, frame.y - reach, frame.width + 2 * reach,
                                        frame.height + 2 * reach))


def take_selection(display, name):
    """Becomes the owner of a selection, as a compositor does when it starts; a function that gives it up."""
    window = display.root.create_window(-1, -1, 1, 1, 0, 0)
    window.set_selection_owner(display.x.get_atom(name), 0)
    display.x.sync()

    def give_up():
        window.destroy()
        display.x.sync()
    return give_up


@pytest.mark.parametrize("window_manager", ["xfwm4", "mutter"])
def test_where_a_compositor_runs_the_panel_has_a_soft_shadow(service, programs, window_manager):
    with running(service, programs, window_manager) as (desktop, lumiwren, editor):
        panel = open_panel(lumiwren)
        assert panel.frame == Frame(POINTER[0] + 10, POINTER[1] + 10, WIDTH, HEIGHT)
        assert all(panel.shadow)
        reach = 30
        middle = reach + HEIGHT // 2

        def fades():
            picture = around(panel, reach)
            row = [picture.at(x, middle) for x in range(reach)]
            column = [picture.at(reach + WIDTH // 2, reach + HEIGHT + y) for y in range(reach)]
            return (row[0] == WHITE and 200 < row[-1][0] < 245 and sorted(row, reverse=True) == row
                    and column[-1] == WHITE and 200 < column[0][0] < 245 and sorted(column) == column)

        wait_until(fades, "a shadow that fades to the left and below")
        # The corner itself is round: what is there is shadow and not panel.
        corner = around(panel, 0).at(0, 0)
        assert corner[0] > 200 and max(corner) - min(corner) < 4


def test_without_a_compositor_the_corners_are_cut_and_the_outline_follows_them(service, programs):
    with running(service, programs, "openbox") as (desktop, lumiwren, editor):
        panel = open_panel(lumiwren)
        assert panel.window_frame == panel.frame
        wait_until(lambda: around(panel, 1).at(1, 100) != WHITE, "the outline")
        picture = around(panel, 0)
        outline, inside = picture.at(0, HEIGHT // 2), picture.at(4, HEIGHT // 2)
        assert outline != inside
        for flip_x in (False, True):
            for flip_y in (False, True):
                for y in range(14):
                    row = [picture.at(WIDTH - 1 - x if flip_x else x, HEIGHT - 1 - y if flip_y else y)
                           for x in range(16)]
                    white = next(x for x, colour in enumerate(row) if colour != WHITE)
                    # Outside nothing of the panel, then its outline at once (where the curve leaves most of
                    # a pixel inside, most of it), then nothing darker than that.
                    assert row[white][0] < (outline[0] + inside[0]) / 2, (flip_x, flip_y, y, row)
                    assert all(min(colour) >= min(outline) - 3 for colour in row)
                    assert white <= 12 and (white > 0 or y > 7)


def test_a_click_on_the_shadow_goes_to_the_window_below_and_closes_the_panel(service, programs):
    with running(service, programs, "xfwm4") as (desktop, lumiwren, editor):
        below = GtkEditor(desktop, "Below", title="Below", place=(300, 400))
        editor.select_all("The selected text")
        panel = open_panel(lumiwren)
        frame = panel.frame
        place = (frame.x + 100, frame.bottom + 10)
        assert panel.window_frame.contains(*place) and desktop.display.frame(below.window).contains(*place)
        # Next to the edge it is the panel's: that is where it is resized.
        panel.wait_for_clicks_to_count()
        desktop.display.click(frame.x + 100, frame.bottom + 3)
        assert stays_false(lambda: not panel.shown, 0.2)
        assert desktop.display.has_focus(editor.window)
        desktop.display.click(*place)
        panel.wait_gone()
        wait_until(lambda: desktop.display.has_focus(below.window), "the window below in front")


def test_the_look_follows_a_compositor_that_starts_and_ends(service, programs):
    with running(service, programs, "openbox") as (desktop, lumiwren, editor):
        frame = Frame(POINTER[0] + 10, POINTER[1] + 10, WIDTH, HEIGHT)
        panel = open_panel(lumiwren)
        assert panel.shadow == (0, 0, 0, 0)
        give_up = take_selection(desktop.display, "_NET_WM_CM_S0")
        wait_until(lambda: all(panel.shadow), "the shadow")
        wait_until(lambda: panel.frame == frame, "the panel where it was")
        give_up()
        wait_until(lambda: panel.window_frame == frame and not any(panel.shadow), "the panel without a shadow")
        # The same while it is hidden.
        desktop.display.press("Escape")
        panel.wait_gone()
        give_up = take_selection(desktop.display, "_NET_WM_CM_S0")
        open_panel(lumiwren)
        assert all(panel.shadow) and panel.frame == frame
        desktop.display.press("Escape")
        panel.wait_gone()
        give_up()
        open_panel(lumiwren)
        assert panel.window_frame == frame


@pytest.mark.parametrize("window_manager", WINDOW_MANAGERS)
def test_the_panel_is_moved_by_everything_that_is_neither_control_nor_text(service, programs, window_manager):
    with running(service, programs, window_manager) as (desktop, lumiwren, editor):
        panel = open_panel(lumiwren)
        label = panel.place(panel.find("label", "The selected text"))
        field = panel.place(panel.field)
        button = panel.place(panel.find("push button", "Copy Result"))
        start = panel.frame
        places = {
            "above the source text": (start.x + 150, start.y + 8), "the source text": (label.x + 20, label.centre[1]),
            "the empty conversation": (start.x + 200, start.y + 180),
            "beside the field": (start.x + 8, field.centre[1]), "the footer": (button.right + 100, button.centre[1])}
        for name, (x, y) in places.items():
            desktop.display.drag((x, y), (x + 120, y + 90))
            moved = Frame(start.x + 120, start.y + 90, WIDTH, HEIGHT)
            wait_until(lambda: panel.frame == moved, f"the panel to follow by {name}")
            desktop.display.drag((x + 120, y + 90), (x, y))
            wait_until(lambda: panel.frame == start, f"the panel to come back by {name}")
        assert desktop.display.has_focus(editor.window)
        # No jump at the first move: one pixel is one pixel.
        x, y = start.x + 150, start.y + 8
        desktop.display.drag((x, y), (x + 1, y))
        wait_until(lambda: panel.frame == Frame(start.x + 1, start.y, WIDTH, HEIGHT), "one pixel")


EDGES = {"left": (-1, 0), "right": (1, 0), "top": (0, -1), "bottom": (0, 1), "top left": (-1, -1),
         "top right": (1, -1), "bottom left": (-1, 1), "bottom right": (1, 1)}


@pytest.mark.parametrize("window_manager", WINDOW_MANAGERS)
def test_the_panel_is_resized_by_its_edges_within_its_limits(service, programs, window_manager):
    with running(service, programs, window_manager) as (desktop, lumiwren, editor):
        panel = open_panel(lumiwren)
        start = panel.frame

        def grip(frame, dx, dy):
            """On the outline; a corner is round, so a little inwards."""
            inset = 4 if dx and dy else 1
            x = {-1: frame.x + inset, 0: frame.centre[0], 1: frame.right - 1 - inset}[dx]
            y = {-1: frame.y + inset, 0: frame.centre[1], 1: frame.bottom - 1 - inset}[dy]
            return x, y

        def resized(dx, dy, width, height):
            """The start with that size; what is not dragged stays."""
            return Frame(start.right - width if dx < 0 else start.x, start.bottom - height if dy < 0 else start.y,
                         width if dx else WIDTH, height if dy else HEIGHT)

        for name, (dx, dy) in EDGES.items():
            held = grip(start, dx, dy)
            desktop.display.drag(held, (held[0] + 40 * dx, held[1] + 30 * dy))
            larger = resized(dx, dy, WIDTH + 40, HEIGHT + 30)
            wait_until(lambda: panel.frame == larger, f"a larger panel by {name}")
            held = grip(larger, dx, dy)
            desktop.display.drag(held, (held[0] - 330 * dx, held[1] - 260 * dy))
            smallest = resized(dx, dy, 300, 200)
            wait_until(lambda: panel.frame == smallest, f"the smallest panel by {name}")
            held = grip(smallest, dx, dy)
            desktop.display.drag(held, (held[0] + 100 * dx, held[1] + 100 * dy))
            wait_until(lambda: panel.frame == start, f"the panel as it was by {name}")
        assert desktop.display.has_focus(editor.window)


def test_the_panel_grows_no_larger_than_its_limit(service, programs):
    with running(service, programs, "openbox") as (desktop, lumiwren, editor):
        panel = open_panel(lumiwren)
        start = panel.frame
        desktop.display.drag((start.right - 5, start.centre[1]), (1279, start.centre[1]))
        wait_until(lambda: panel.frame.width > WIDTH, "a wider panel")
        assert stays_false(lambda: panel.frame.width > 800, 0.1)
        assert panel.frame == Frame(start.x, start.y, 800, HEIGHT)
        desktop.display.drag((start.x + 400, start.bottom - 2), (start.x + 400, 799))
        wait_until(lambda: panel.frame == Frame(start.x, start.y, 800, 799 - start.y + 2), "a higher panel")


@pytest.mark.parametrize("scale", ["1.25", "1.5", "2"])
def test_at_other_scales_the_panel_keeps_the_edges_that_are_not_held(service, programs, scale):
    with running(service, programs, "xfwm4", QT_SCALE_FACTOR=scale) as (desktop, lumiwren, editor):
        panel = open_panel(lumiwren, pointer=(201, 83))
        start = panel.frame
        assert (start.width, start.height) == (WIDTH * float(scale), HEIGHT * float(scale))
        for top in (True, False):
            held = (start.x + 3, start.y + 3 if top else start.bottom - 4)
            for distance in (7, 20, 33):
                desktop.display.drag(held, (held[0] + distance, held[1] + (distance if top else -distance)))
                wait_until(lambda: panel.frame.width < start.width and panel.frame.height < start.height,
                           "a smaller panel")
                frame = panel.frame
                assert frame.right == start.right
                assert frame.bottom == start.bottom if top else frame.y == start.y
                desktop.display.drag((held[0] + frame.x - start.x, held[1] + frame.y - start.y
                                      + frame.bottom - start.bottom), held)
                wait_until(lambda: panel.frame == start, "the panel as it was")
        # Moved by its background it stays under the pointer.
        grip = (start.x + 200, start.y + 10)
        desktop.display.drag(grip, (grip[0] + 101, grip[1] + 53))
        wait_until(lambda: abs(panel.frame.x - start.x - 101) <= 1 and abs(panel.frame.y - start.y - 53) <= 1,
                   "the panel under the pointer")
        assert (panel.frame.width, panel.frame.height) == (start.width, start.height)


@pytest.mark.parametrize("held", ["background", "edge"])
def test_a_panel_that_goes_while_it_is_dragged_leaves_nothing_behind(service, programs, held):
    with running(service, programs, "openbox") as (desktop, lumiwren, editor):
        display = desktop.display
        panel = open_panel(lumiwren)
        start = panel.frame
        grip = (start.x + 150, start.y + 8) if held == "background" else (start.right - 2, start.centre[1])
        display.move(*grip)
        display.button_down()
        display.move(grip[0] + 30, grip[1] + 20)
        wait_until(lambda: panel.frame != start, "the drag")
        display.press("Escape")
        panel.wait_gone()
        display.button_up()
        open_panel(lumiwren)
        assert panel.frame == start
        display.move(start.x + 200, start.y + 150)
        display.move(start.x + 260, start.y + 200)
        assert stays_false(lambda: panel.frame != start, 0.3)
        display.drag((start.x + 150, start.y + 8), (start.x + 170, start.y + 18))
        wait_until(lambda: panel.frame == Frame(start.x + 20, start.y + 10, WIDTH, HEIGHT), "another drag")


def test_a_drag_from_the_answer_to_outside_does_not_close_the_panel(service, programs):
    with running(service, programs, "openbox") as (desktop, lumiwren, editor):
        panel = open_panel(lumiwren)
        panel.wait_for_clicks_to_count()
        answer = panel.place(panel.find(name="Answer"))
        desktop.display.drag((answer.x + 5, answer.y + 8), (40, 40))
        assert stays_false(lambda: not panel.shown, 0.3)
        desktop.display.click(40, 40)
        panel.wait_gone()


def test_the_close_buttons_tooltip_is_shown_though_the_panel_has_no_keyboard(service, programs):
    with running(service, programs, "openbox") as (desktop, lumiwren, editor):
        panel = open_panel(lumiwren)
        close = panel.place(panel.find("push button", "Close"))
        display = desktop.display
        display.move(close.x + 3, close.y + 3)
        display.move(*close.centre)
        tooltip = wait_until(lambda: next(iter(display.windows_of_type("TOOLTIP")), None), "the tooltip")
        assert display.stacking(tooltip) > display.stacking(panel.window)
        assert display.has_focus(editor.window)
