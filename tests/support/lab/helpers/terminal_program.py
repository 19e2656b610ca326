"""Shows a line in a terminal and runs on; FILE records "shown" once the terminal has it, and "interrupted"."""

import os
import signal
import sys
import termios
import tty

record, text = sys.argv[1:]


def say(word):
    with open(record, "a") as file:
        print(word, file=file, flush=True)


signal.signal(signal.SIGINT, lambda *_: say("interrupted"))
before = termios.tcgetattr(0)
tty.setraw(0)
# The terminal answers where the cursor is only after it has worked off the text before the question.
os.write(1, text.encode() + b"\r\n\x1b[6n")
answer = b""
while not answer.endswith(b"R"):
    answer += os.read(0, 1)
termios.tcsetattr(0, termios.TCSANOW, before)
say("shown")
while True:
    signal.pause()
