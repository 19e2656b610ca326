"""Draws every window and state of the real program on a real desktop: python3 -m lab.screenshots PROGRAM FOLDER [WORD...]

Each picture is that of the window and a little of what is around it, named after look, scale and state. Words choose
the pictures whose names hold all of them.
"""

import os
import pathlib
import sys

from . import Desktop, Frame, GtkEditor, Lumiwren, Screencapture, SettingsPortal, StandInService, wait_until
from .shell_pictures import SHELL_DESKTOPS, SHELL_STATES, SHELL_TURNING

MARGIN = 28  # around the panel, in points
SIZE = 900, 680  # of the desktop, in points
POINTER = 220, 40
GROUND = {"light": 0x9FB6CC, "dark": 0x2B3A4A}  # of the desktop

EVERY_KIND = """# Wrens

The **Eurasian wren** is a *very* small bird, ~~a robin~~ with `Troglodytes` as its [Latin name](https://example.org/wren).

## What to know

- It weighs **ten grams** and sings louder than most birds ten times its weight, also in the deepest winter.
- It nests in holes.

1. Listen
2. Look in the ivy

```python
for bird in garden.birds(): print(bird.name, bird.weight_in_grams, bird.song.loudness)
```

### In numbers

| Bird | Weight | Song |
|---|---|---|
| Wren | 10 g | very loud |
| Blackbird | 100 g | flutes from the roof in the evening |
"""
SHORT = "The wren is **small**, and *loud*: its song carries over 500 metres."
ARABIC = """## طائر النمنمة

النمنمة **طائر صغير** بني اللون، وصوته *عالٍ جدًا* (Troglodytes troglodytes).

- يزن عشرة غرامات
- يغني في الشتاء

1. استمع
2. انظر

| الطائر | الوزن |
|---|---|
| النمنمة | 10 غ |
| الشحرور | 100 غ |
"""
JAPANESE = """## ミソサザイ

ミソサザイは**とても小さな鳥**ですが、声は*非常に*大きく、五百メートル先まで届くと言われています。学名は`Troglodytes troglodytes`です。

- 体重は約十グラム
- 冬でもよく鳴く 🐦

| 鳥 | 体重 |
|---|---|
| ミソサザイ | 10 g |
| クロウタドリ | 100 g |
"""
WIDE = "| Species | Weight in grams | Wingspan in centimetres | Conservation | Population | Distribution | Song |\n" \
       "|---|---|---|---|---|---|---|\n" \
       "| Troglodytes troglodytes | 10 | 15 | Least concern | increasing | Eurasia | loud |\n" \
       "| Turdus merula | 100 | 36 | Least concern | stable | Eurasia | fluting |\n\n" \
       "```\n" + "a line of code that is much longer than the panel is wide and has to be scrolled " * 2 + "\n```\n\n" \
       "https://example.org/" + "a-very-long-address-without-any-space-" * 3


class Studio:
    """A desktop in one look and scale."""

    def __init__(self, look, scale, window_manager="xfwm4", text_scale=1.0, **options):
        self.scale = scale
        self.desktop = Desktop(window_manager, size=(int(SIZE[0] * scale), int(SIZE[1] * scale)), **options)
        self.settings = (f"{{'org.freedesktop.appearance': {{'color-scheme': <uint32 {2 if look == 'light' else 1}>}},"
                         f" 'org.gnome.desktop.interface': {{'text-scaling-factor': <{float(text_scale)}>}}}}")
        self.look = look

    def __enter__(self):
        self.desktop.__enter__()
        self.desktop.display.paint_ground(GROUND[self.look])
        SettingsPortal(self.desktop, settings=self.settings)
        self.service = StandInService()
        return self

    def __exit__(self, *exception):
        self.service.close()
        self.desktop.__exit__(*exception)

    def settle(self, panel):
        """Waits until nothing moves on the screen any more, but for what turns."""
        display = self.desktop.display
        seen = []

        def unchanged():
            seen.append(bytes(display.pixels(panel.frame)[0]))
            return len(seen) > 5 and len(set(seen[-6:])) <= 2  # with the caret, and without

        wait_until(unchanged, "the panel to stand still", interval=0.06)

    def picture(self, panel, path, still=True):
        if still:
            self.settle(panel)
        around = int(MARGIN * self.scale)
        frame, display = panel.frame, self.desktop.display
        left, right, top, bottom = display.property(panel.window, "_NET_FRAME_EXTENTS") or (0, 0, 0, 0)
        x, y = max(0, frame.x - left - around), max(0, frame.y - top - around)
        display.screenshot(path, Frame(x, y, frame.right + right + around - x, frame.bottom + bottom + around - y))


class PanelStudio(Studio):
    """The same with the program in front of a text."""

    def __enter__(self):
        super().__enter__()
        self.editor = None
        self.lumiwren = Lumiwren(self.desktop, self.service, QT_SCALE_FACTOR=str(self.scale))
        return self

    def __exit__(self, *exception):
        self.lumiwren.terminate()
        super().__exit__(*exception)

    def open(self, answer, selected="What the user selected in a text that he was reading"):
        """Presses the hotkey over a fresh selection; the panel."""
        self.service.answer = answer
        self.editor = GtkEditor(self.desktop, selected, state="fullscreen")
        self.editor.select_all(selected)
        self.desktop.display.move(*(int(part * self.scale) for part in POINTER))
        self.lumiwren.press_hotkey()
        return self.lumiwren.panel.wait_shown()

    def close(self):
        self.desktop.display.press("Escape")
        self.lumiwren.panel.wait_gone()
        self.editor.close()

    def grow(self, panel, width, height):
        """Drags the panel's lower right corner."""
        frame = panel.frame
        corner = frame.right - 5, frame.bottom - 5  # inside of the round
        self.desktop.display.drag(corner, (corner[0] + int(width * self.scale) - frame.width,
                                           corner[1] + int(height * self.scale) - frame.height))
        wait_until(lambda: panel.frame.height >= int(height * self.scale) - 4, "the larger panel")


def answered(text):
    return lambda exchange: exchange.answer(text)


def loading(studio):
    return studio.open(lambda exchange: exchange.hold())


def first_chunk(studio):
    def answer(exchange):
        exchange.head()
        exchange.text("The wr")
        exchange.hold()
    panel = studio.open(answer)
    panel.wait_for("The wr")
    return panel


def every_kind(studio):
    panel = studio.open(answered(EVERY_KIND))
    panel.wait_for("Blackbird")
    panel.wait_enabled()
    studio.grow(panel, 460, 600)
    return panel


def long_answer(studio):
    panel = studio.open(answered(EVERY_KIND), "A long source text, which is cut after a hundred characters, and which "
                                              "stands on two lines in the header of the panel, ending in dots")
    panel.wait_for("Blackbird")
    panel.wait_enabled()
    return panel


def asked(studio, answer):
    """A short answer, and a question about it that the service meets in its own way."""
    panel = studio.open(answered(SHORT))
    panel.wait_enabled()
    studio.service.answer = answer
    panel.ask("What does it eat?")
    return panel


def follow_up(studio):
    panel = asked(studio, answered("Insects and spiders, mostly:\n\n- beetles\n- small flies"))
    panel.wait_for("small flies")
    panel.wait_enabled()
    studio.desktop.display.type("And in winter")
    return panel


def disabled_field(studio):
    panel = asked(studio, lambda exchange: exchange.hold())
    wait_until(lambda: "enabled" not in panel.field.states, "the field to be disabled")
    return panel


def error_alone(studio):
    panel = studio.open(lambda exchange: exchange.error(401, "Unauthorized"))
    wait_until(panel.errors, "the failure")
    panel.wait_enabled()
    return panel


def error_below(studio):
    panel = asked(studio, lambda exchange: exchange.error(429, "Too Many Requests"))
    wait_until(panel.errors, "the failure")
    panel.wait_enabled()
    return panel


def copied(studio):
    panel = studio.open(answered(SHORT))
    panel.wait_enabled()
    panel.click(panel.find(name="Copy Result"))
    panel.wait_for("Copied!")
    return panel


def selected(studio):
    panel = studio.open(answered(SHORT + "\n\nA second paragraph."))
    panel.wait_enabled()
    place = panel.place(panel.find(name="Answer"))
    studio.desktop.display.drag((place.x + int(60 * studio.scale), place.y + 5), (place.right - 40, place.bottom - 4))
    return panel


def arabic(studio):
    panel = studio.open(answered(ARABIC), "النمنمة طائر صغير")
    panel.wait_enabled()
    studio.grow(panel, 400, 460)
    return panel


def japanese(studio):
    panel = studio.open(answered(JAPANESE), "ミソサザイは小さな鳥です")
    panel.wait_enabled()
    studio.grow(panel, 400, 440)
    return panel


def wide(studio):
    panel = studio.open(answered(WIDE))
    panel.wait_enabled()
    studio.grow(panel, 400, 420)
    return panel


# Of the choice of a region: where the pointer is first, and where the drag ends if there is one (in points).
REGION_STATES = {"region-crosshair": ((330, 214), None), "region-drawn": ((96, 118), (480, 260)),
                 "region-corner": ((640, 520), (899, 679)), "region-in-menu": ((400, 300), (600, 430))}


def choose_region(look, scale, wanted, folder):
    """Draws the states of the choice of a region, over a text in front of a plain desktop."""
    with Desktop(size=(int(SIZE[0] * scale), int(SIZE[1] * scale)), keyring=False, tray_host=False) as desktop:
        display = desktop.display
        display.paint_ground(GROUND[look])
        editor = GtkEditor(desktop, EVERY_KIND, place=(int(40 * scale), int(40 * scale)),
                           GTK_THEME="Adwaita:dark" if look == "dark" else "Adwaita", GDK_SCALE=str(scale))
        wait_until(lambda: len(set(bytes(display.pixels(editor.frame)[0]))) > 20, "the editor's text")

        def settle():
            seen = []

            def still():
                seen.append(bytes(display.pixels(Frame(0, 0, *desktop.size))[0]))
                return len(seen) > 2 and len(set(seen[-3:])) == 1

            wait_until(still, "the screen to stand still", interval=0.06)

        for state, name in wanted.items():
            start, end = (point and tuple(int(part * scale) for part in point) for point in REGION_STATES[state])
            display.move(*start)
            menu = state == "region-in-menu"
            if menu:
                display.click(*(int(part * scale) for part in (120, 100)), button=3)
                wait_until(lambda: display.windows_of_type("POPUP_MENU"), "the menu")
            tool = Screencapture(desktop, QT_SCALE_FACTOR=str(scale)).wait_shown()
            if menu:
                tool.wait_pointer_drawn()
            if end:
                tool.drag(start, end, follows=not menu)
            settle()
            display.screenshot(folder / f"{name}.png")
            print(folder / f"{name}.png", flush=True)
            display.press("Escape")
            tool.process.wait()
            if end:
                display.button_up()
            if menu:
                display.press("Escape")


TURNING = {loading}
STATES = {"loading": loading, "first-chunk": first_chunk, "every-kind": every_kind, "long-answer": long_answer,
          "follow-up": follow_up, "disabled-field": disabled_field, "error-alone": error_alone,
          "error-below": error_below, "copied": copied, "selected": selected, "arabic": arabic, "japanese": japanese,
          "wide": wide}
FEW = "every-kind", "follow-up", "error-below"
# What is drawn on which desktop: look, scale, the states, and what is special.
SERIES = [(look, scale, tuple(STATES), "", {}) for look in ("light", "dark") for scale in (1, 2)] + [
    ("light", 1.25, FEW, "", {}), ("light", 1.5, FEW, "", {}),
    ("light", 1, FEW, "no-compositor-", {"window_manager": "openbox"}),
    ("dark", 1, FEW, "no-compositor-", {"window_manager": "openbox"}),
    ("light", 1, FEW, "large-text-", {"text_scale": 1.4})]


def draw_shell(look, scale, wanted, folder):
    """Draws the states of the menu, the windows and the alerts, by the names of their pictures."""
    for state, name in wanted.items():
        with Studio(look, scale, **SHELL_DESKTOPS.get(state, {})) as studio:
            kind, draw, needs = SHELL_STATES[state]
            shell = kind(studio.desktop, studio.service, scale, **needs)
            studio.picture(draw(shell), folder / f"{name}.png", draw not in SHELL_TURNING)
            print(folder / f"{name}.png", flush=True)
            shell.close()


def main():
    os.environ["LUMIWREN_BIN"] = str(pathlib.Path(sys.argv[1]).resolve())
    folder = pathlib.Path(sys.argv[2])
    words = sys.argv[3:]
    folder.mkdir(parents=True, exist_ok=True)
    for look, scale, states, special, options in SERIES:
        names = {state: f"{look}-{scale:g}x-{special}{state}" for state in states}
        wanted = {state: name for state, name in names.items() if all(word in name for word in words)}
        if not wanted:
            continue
        with PanelStudio(look, scale, **options) as studio:
            for state, name in wanted.items():
                panel = STATES[state](studio)
                studio.picture(panel, folder / f"{name}.png", STATES[state] not in TURNING)
                print(folder / f"{name}.png", flush=True)
                studio.close()

    for look in ("light", "dark"):
        for scale in (1, 2):
            for states, draw in ((SHELL_STATES, draw_shell), (REGION_STATES, choose_region)):
                names = {state: f"{look}-{scale}x-{state}" for state in states}
                wanted = {state: name for state, name in names.items() if all(word in name for word in words)}
                if wanted:
                    draw(look, scale, wanted, folder)


if __name__ == "__main__":
    main()
