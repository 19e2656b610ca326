"""Shows the program at work on a desktop of its own: python3 -m lab.demo PROGRAM FOLDER

A stand-in answers in place of the service, so that no key and no network is needed; everything else is real.
"""

import os
import pathlib
import sys
import time

from . import API_KEY, Desktop, Lumiwren, Mousepad, StandInService, leftovers, wait_until

SELECTED = ("Der Zaunkönig (Troglodytes troglodytes) wiegt kaum zehn Gramm und singt doch lauter als die meisten "
            "größeren Vögel.")
QUESTION = "Which of its words is the longest?"
CLIPBOARD = {
    "UTF8_STRING": "What was copied before – tschüß".encode(),
    "text/plain;charset=utf-8": "What was copied before – tschüß".encode(),
    "text/html": "<p>What was <b>copied</b> before – tschüß</p>".encode(),
    "image/png": b"\x89PNG\r\n\x1a\n" + bytes(range(256)) * 3000,
    "application/x-demo": bytes(range(256)),
}
BOLD, DIM, GREEN, RED, PLAIN = ("\033[1m", "\033[2m", "\033[32m", "\033[31m", "\033[0m") if sys.stdout.isatty() \
    else ("",) * 5


class Different(Exception):
    """What was shown is not what was to be shown."""


def answer_blocks(prompt):
    """The answer to an action as (Markdown, the texts that it shows) of each block."""
    text = prompt.partition("Text: ")[2]
    words = sorted({word.strip("().,") for word in text.split()}, key=len, reverse=True)
    rows = [(word, str(len(word))) for word in words[:3]]
    return [
        ("## What the stand-in received", ["What the stand-in received"]),
        ("No model was asked: this comes from the **stand-in service** of the demonstration, which read your "
         "request and *counts* its words.",
         ["No model was asked: this comes from the stand-in service of the demonstration, which read your "
          "request and counts its words."]),
        (f"- The prompt begins with “{prompt[:26]}”.\n- The selected text has **{len(text)} characters** in "
         f"{len(text.split())} words.\n- Its last word is `{text.split()[-1]}`",
         ["•", f"The prompt begins with “{prompt[:26]}”.", "•",
          f"The selected text has {len(text)} characters in {len(text.split())} words.", "•",
          f"Its last word is {text.split()[-1]}"]),
        ("| Word | Letters |\n|---|---|\n" + "\n".join(f"| {word} | {count} |" for word, count in rows),
         ["Word", "Letters", *(cell for row in rows for cell in row)]),
        ("1. Read it aloud.\n2. Look it up.", ["1.", "Read it aloud.", "2.", "Look it up."]),
        (f'```python\ntext = "{text[:24]}…"\nfor word in text.split():\n    print(len(word), word)\n```',
         ["python", f'text = "{text[:24]}…"\nfor word in text.split():\n    print(len(word), word)']),
    ]


def follow_up_blocks(messages):
    roles = ", ".join(role for role, _ in messages)
    longest = max((word.strip("().,") for word in SELECTED.split()), key=len)
    return [
        (f"“{longest}” has **{len(longest)}** letters.", [f"“{longest}” has {len(longest)} letters."]),
        (f"This time {len(messages)} messages came: `{roles}`.", [f"This time {len(messages)} messages came: {roles}."]),
    ]


def markdown(blocks):
    return "\n\n".join(source for source, _ in blocks)


def compare(shown, blocks):
    """Walks through what is shown: block by block, text by text, with nothing but white space between them."""
    rest = shown
    for source, texts in blocks:
        for text in texts:
            rest = rest.lstrip()
            if not rest.startswith(text):
                raise Different(f"of {source!r} the text {text!r} was to be shown here: {rest[:120]!r}")
            rest = rest[len(text):]
    if rest.strip():
        raise Different(f"shown, but not streamed: {rest.strip()[:200]!r}")


class Answers:
    """What the stand-in says, and what it must look like."""

    def __init__(self):
        self.blocks = []

    def __call__(self, exchange):
        messages = exchange.request.messages
        blocks = answer_blocks(messages[0][1]) if len(messages) == 1 else follow_up_blocks(messages)
        self.blocks.append(blocks)
        text = markdown(blocks)
        exchange.answer(*(text[start:start + 6] for start in range(0, len(text), 6)), pace=0.012)


def say(text, detail=""):
    print(f"  {GREEN}✓{PLAIN} {text}{'  ' + DIM + detail + PLAIN if detail else ''}", flush=True)


def follow(panel, number, on_lines=lambda count: None):
    """Prints an answer while it grows, and returns it when the panel has finished loading.

    The last two lines wait: until the line below a table's head has come, the head is still an ordinary line.
    """
    printed = 0
    while True:
        # Asked before the text is read: what is complete then is complete in the text.
        finished = "enabled" in panel.field.states
        shown = (panel.answers() + [""] * number)[number - 1]
        lines = shown.split("\n")
        complete = len(lines) if finished and shown else len(lines) - 2
        for line in lines[printed:complete]:
            print(f"  {DIM}│{PLAIN} " + line.replace("\t", f" {DIM}│{PLAIN} "), flush=True)
        printed = max(printed, complete)
        on_lines(printed)
        if finished and shown:
            return shown
        time.sleep(0.01)


def run(program, pictures):
    os.environ["LUMIWREN_BIN"] = str(program)
    answers = Answers()
    print(f"\n{BOLD}Lumiwren{PLAIN}  select text, press a hotkey, read the answer\n")
    with Desktop(keyring=False) as desktop, StandInService(answers) as service:
        display = desktop.display

        def picture(name):
            path = pictures / f"{name}.png"
            display.screenshot(path)
            return path

        desktop.keyring = desktop.start_keyring(key=None)
        say("A desktop without a screen", f"Xvfb {display.name}, openbox, D-Bus, gnome-keyring, stand-in service")
        setter = desktop.launch([str(program), "--set-api-key"], stdin=f"{API_KEY}\n".encode())
        if setter.wait() != 0 or desktop.keyring.lookup() != API_KEY:
            raise Different(f"the API key was not stored: {setter.output}")
        say("An API key in its keyring", "lumiwren --set-api-key")

        desktop.own_selection(CLIPBOARD)
        clipboard = desktop.selections.contents()
        note = desktop.directory / "wren.txt"
        note.write_text(SELECTED)
        editor = Mousepad(desktop, note)
        lumiwren = Lumiwren(desktop, service)
        editor.select_all(SELECTED)
        picture("1-selected")
        say("Text selected in Mousepad", f"{SELECTED[:44]}…")

        pressed = time.monotonic()
        lumiwren.press_hotkey("e")
        wait_until(lambda: lumiwren.panel.shown, "the panel", interval=0.0005)
        say("Pressed Alt+Shift+E", f"the panel was there after {(time.monotonic() - pressed) * 1000:.0f} ms\n")
        request = service.wait_for_requests(1)
        if request.headers["authorization"] != f"Bearer {API_KEY}" or not request.prompt.endswith(SELECTED):
            raise Different("the request does not carry the key and the selected text")

        streaming = []

        def while_streaming(count):
            if count >= 4 and not streaming:
                streaming.append(picture("2-streaming"))

        shown = follow(lumiwren.panel, 1, while_streaming)
        picture("3-answer")
        compare(shown, answers.blocks[0])

        print(f"\n  {BOLD}{QUESTION}{PLAIN}  {DIM}clicked into the field and typed{PLAIN}\n")
        lumiwren.panel.ask(QUESTION)
        service.wait_for_requests(2)
        wait_until(lambda: "enabled" not in lumiwren.panel.field.states or len(lumiwren.panel.answers()) == 2,
                   "the second answer's beginning")
        shown = follow(lumiwren.panel, 2)
        picture("4-follow-up")
        compare(shown, answers.blocks[1])
        if lumiwren.panel.questions() != [QUESTION]:
            raise Different(f"the panel shows other questions: {lumiwren.panel.questions()}")
        print()
        count = sum(len(texts) for blocks in answers.blocks for _, texts in blocks)
        say("The panel shows what was streamed", f"{count} texts in {sum(map(len, answers.blocks))} blocks compared")

        status = lumiwren.quit()
        if status != 0:
            raise Different(f"Quit ended the program with {status}: {lumiwren.process.output}")
        after = desktop.selections.contents()
        if after != clipboard:
            differing = [name for name in {*after, *clipboard} if after.get(name) != clipboard.get(name)]
            raise Different(f"the clipboard is not what it was: {differing}")
        say("The clipboard is what it was", f"{len(after)} types, {sum(len(v.data) for v in after.values())} bytes")
    if leftovers():
        raise Different(f"still running: {leftovers()}")
    say("Nothing is left running")
    say("Pictures", f"{os.path.relpath(pictures)}/{{1-selected,2-streaming,3-answer,4-follow-up}}.png\n")


def main():
    program, pictures = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    pictures.mkdir(parents=True, exist_ok=True)
    for old in pictures.glob("*.png"):
        old.unlink()
    try:
        run(program, pictures)
    except KeyboardInterrupt:
        return 130
    except (Different, TimeoutError, RuntimeError, AssertionError) as failure:
        print(f"\n  {RED}✗ {failure}{PLAIN}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
