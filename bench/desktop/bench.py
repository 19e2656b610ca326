"""Runs measurements and prints a table: bench.py BUILD-FOLDER [ID...]

The rows of the whole program are measured here, on a desktop of the lab, each beside its reference in the same
run. All others come from the programs bench_* of the build, which write a line of JSON for each row.
Exit status 1 when a row does not hold, 2 for a row that nobody knows.
"""

import json
import os
import pathlib
import select
import statistics
import subprocess
import sys
import threading
import time

from lab import Desktop, GtkEditor, Lumiwren, Screencapture, StandInService, wait_until
from lab.process import leftovers
from Xlib import X
from Xlib.ext import damage

BUILD = pathlib.Path(sys.argv[1]).resolve()
os.environ["LUMIWREN_BIN"] = str(BUILD / "bin/lumiwren")
START_ROUNDS, HOTKEY_ROUNDS, WIRE_ROUNDS, CAPTURE_ROUNDS = 15, 20, 20, 12
IDLE_SECONDS = 30
CAPTURE_WAIT = 150  # ms; the fixed wait of every capture
GOLDENDICT = """<config><preferences>
<enableTrayIcon>1</enableTrayIcon><startToTray>1</startToTray><enableMainWindowHotkey>0</enableMainWindowHotkey>
<enableClipboardHotkey>1</enableClipboardHotkey><clipboardHotkey>Ctrl+F12</clipboardHotkey>
<enableScanPopup>1</enableScanPopup><checkForNewReleases>0</checkForNewReleases>
</preferences></config>"""


def row(name, unit, values, budget, reference=None, reference_values=()):
    """A measured row. With a reference the budget is for the ratio of the medians, else for the value."""
    value = statistics.median(values)
    against = statistics.median(reference_values) if reference_values else None
    ratio = value / against if against else None
    return {"id": name, "value": round(value, 3), "unit": unit, "reference": reference,
            "reference_value": against and round(against, 3), "ratio": ratio and round(ratio, 3), "budget": budget,
            "holds": (value if ratio is None else ratio) <= budget, "p99": round(max(values), 3)}


# -- starting --------------------------------------------------------------------------------------------------

def time_to_status_item(desktop, argv, environment):
    """Milliseconds from exec to the registration of a status item; the program is ended again."""
    known = desktop.tray_host.output
    env = {**desktop.env, "LUMIWREN_LAB": desktop.mark, **environment}
    with open(os.devnull, "w") as null:
        # Spawned without a hook of ours in the child: what counts is the program's own time.
        started = time.monotonic_ns()
        child = subprocess.Popen(argv, env=env, stdin=null, stdout=null, stderr=null, process_group=0)
    try:
        line = wait_until(lambda: next((line for line in desktop.tray_host.output[len(known):].splitlines()
                                        if line.startswith("registered")), None), f"the status item of {argv[0]}")
        return (int(line.split()[2]) - started) / 1e6
    finally:
        child.terminate()
        child.wait()
        wait_until(lambda: desktop.tray_host.output.count("unregistered")
                   == desktop.tray_host.output.count("\nregistered") + 1, "the end of the status item")


def measure_start():
    programs = {"lumiwren": [str(BUILD / "bin/lumiwren")], "bare": [str(BUILD / "bin/reference_tray")],
                "copyq": ["copyq"]}
    times = {name: [] for name in programs}
    with Desktop() as desktop:
        for _ in range(START_ROUNDS + 1):
            for name, argv in programs.items():
                times[name].append(time_to_status_item(desktop, argv, {}))
    for values in times.values():
        del values[0]  # the first one also reads everything from the disk
    return [row("start", "ms", times["lumiwren"], 1.5, "bare Qt 6 tray program", times["bare"]),
            row("start-peer", "ms", times["lumiwren"], 0.6, "copyq", times["copyq"])]


# -- from the hotkey to the panel ------------------------------------------------------------------------------

class WindowWatch:
    """Sees, over a connection of its own, when a window is mapped and when it is first drawn to."""

    SMALLEST = 200, 100

    def __init__(self, display):
        from lab.display import Display
        self.display = Display(display.name)
        self.x = self.display.x
        self.root = self.display.root
        self.x.damage_query_version()
        self.root.change_attributes(event_mask=X.SubstructureNotifyMask)
        self.root.damage_create(damage.DamageReportRawRectangles)
        self.x.sync()

    def events(self, timeout=10.0):
        deadline = time.monotonic() + timeout
        while time.monotonic() < deadline:
            while self.x.pending_events():
                yield self.x.next_event(), time.monotonic()
            select.select([self.x], [], [], 0.1)
        raise TimeoutError("no window appeared")

    def appearance(self, press):
        """Milliseconds from `press` to the map of a window and to its first pixels; None when it went before that."""
        while self.x.pending_events():
            self.x.next_event()
        before = self.display.pixels(self._everything())[0]
        began = time.monotonic()
        press()
        mapped = place = window = None
        for event, now in self.events():
            if event.type == X.MapNotify and mapped is None:
                frame = self.display.frame(event.window)
                if frame.width >= self.SMALLEST[0] and frame.height >= self.SMALLEST[1]:
                    mapped, place, window = now, frame, event.window
            elif event.type == X.UnmapNotify and event.window == window:
                return None
            elif mapped and event.type == self.x.extension_event.DamageNotify and self._drawn(before, place):
                return (mapped - began) * 1000, (now - began) * 1000

    def _everything(self):
        from lab import Frame
        size = self.root.get_geometry()
        return Frame(0, 0, size.width, size.height)

    def _drawn(self, before, place):
        """Whether the middle row of the place is another one than before."""
        from lab import Frame
        width = self._everything().width
        y = place.centre[1]
        x, right = max(place.x, 0), min(place.right, width)
        now = self.display.pixels(Frame(x, y, right - x, 1))[0]
        return now != before[(y * width + x) * 4:(y * width + right) * 4]

    def close(self):
        self.display.close()


def measure_hotkey():
    """Goldendict's popup now and then goes as soon as it has come; such a round has no figures of it."""
    ours, theirs = ([], []), ([], [])
    with Desktop() as desktop, StandInService(lambda exchange: exchange.hold()) as service:
        configuration = pathlib.Path(desktop.env["XDG_CONFIG_HOME"], "goldendict/config")
        configuration.parent.mkdir()
        configuration.write_text(GOLDENDICT)
        desktop.launch(["goldendict"])
        editor = GtkEditor(desktop, "wren")
        lumiwren = Lumiwren(desktop, service, accessible=False)
        wait_until(lambda: "goldendict" in " ".join(desktop.tray_host.output.split()) or
                   desktop.tray_host.output.count("registered") >= 2, "goldendict's status item", 30)
        editor.select_all("wren")
        desktop.display.press("Control", "c")
        wait_until(lambda: desktop.selections.text() == "wren", "the word on the clipboard")
        # Over the bare screen, where everything that is drawn is a difference.
        desktop.display.move(660, 320)
        watch = WindowWatch(desktop.display)
        wait_until(lambda: quiet(desktop), "both programs to listen to their hotkeys")
        for number in range(HOTKEY_ROUNDS + 1):
            for times, keys in ((ours, ("Alt", "Shift", "e")), (theirs, ("Control", "F12"))):
                appearance = watch.appearance(lambda: desktop.display.press(*keys))
                if appearance is None:
                    assert times is theirs, "the panel went before it was drawn"
                elif number:  # the first time both make their window
                    times[0].append(appearance[0])
                    times[1].append(appearance[1])
                desktop.display.press("Escape")
                wait_until(lambda: not desktop.display.windows("Lumiwren") and not desktop.display.windows("Dialog"),
                           "the window's end")
                wait_until(lambda: quiet(desktop), "both programs to be idle")
        watch.close()
    return [row("hotkey-map", "ms", ours[0], 0.35, "goldendict's scan popup", theirs[0]),
            row("hotkey-pixel", "ms", ours[1], 0.5, "goldendict's scan popup", theirs[1])]


def measure_menu():
    """From the click that the tray tells of to the menu's first pixels."""
    times = []
    with Desktop() as desktop, StandInService() as service:
        lumiwren = Lumiwren(desktop, service, accessible=False)
        item = lumiwren.status_item
        desktop.display.move(1200, 700)
        watch = WindowWatch(desktop.display)
        for _ in range(HOTKEY_ROUNDS + 1):
            # Without waiting for the answer, which comes when the menu is shown.
            times.append(watch.appearance(threading.Thread(target=item.activate, args=(600, 300)).start)[1])
            lumiwren.menu.wait_focused()
            desktop.display.press("Escape")
            lumiwren.menu.wait_gone()
            wait_until(lambda: quiet(desktop), "the program to be idle")
        watch.close()
    return [row("menu", "ms", times[1:], 50)]


# -- from the hotkey to the region, and from the region to its picture ----------------------------------------

def measure_overlay():
    """Until the frozen screen can be seen. The reference is started as its own shortcut would start it."""
    ours, theirs = [], []
    with Desktop() as desktop, StandInService() as service:
        GtkEditor(desktop, "wren")
        lumiwren = Lumiwren(desktop, service, accessible=False)
        desktop.display.move(660, 320)
        watch = WindowWatch(desktop.display)

        def start_reference():
            with open(os.devnull, "w") as null:
                children.append(subprocess.Popen(["flameshot", "gui"], env={**desktop.env, "LUMIWREN_LAB": desktop.mark},
                                                 stdin=null, stdout=null, stderr=null, process_group=0))

        children = []
        for number in range(CAPTURE_ROUNDS + 1):
            for times, start in ((ours, lambda: lumiwren.press_hotkey("s")), (theirs, start_reference)):
                appearance = watch.appearance(start)
                if number:  # the first time both are read from the disk
                    times.append(appearance[1])
                wait_until(lambda: quiet(desktop), "the overlay to be drawn")
                desktop.display.press("Escape")
                for child in children:
                    child.wait()
                children.clear()
                wait_until(lambda: quiet(desktop), "both programs to be idle")
        watch.close()
    return [row("overlay", "ms", ours, 0.3, "flameshot gui", theirs)]


def measure_capture_png():
    """From letting the button go to the complete file."""
    results = []
    for name, corner, budget in (("capture-png", (899, 499), 15), ("capture-png-4k", (3939, 2259), 150)):
        times = []
        with Desktop(size=(3940, 2260), keyring=False, tray_host=False) as desktop:
            GtkEditor(desktop, "The selected text " * 200, state="fullscreen")
            for _ in range(CAPTURE_ROUNDS + 1):
                tool = Screencapture(desktop).wait_shown()
                tool.drag((100, 100), corner)
                wait_until(lambda: quiet(desktop), "the rectangle to be drawn")
                let_go = time.monotonic()
                desktop.display.button_up()
                wait_until(tool.path.exists, "the picture", interval=0.0002)
                times.append((time.monotonic() - let_go) * 1000)
                assert tool.process.wait() == 0
                tool.path.unlink()
        results.append(row(name, "ms", times[1:], budget))
    return results


def measure_capture_text():
    """From letting the button go to the request with the text, which the panel has been given before. The reference
    reads the same picture."""
    lines = ["The wren sings in the hedge at dawn,", "and nobody who walks along the river",
             "has ever seen more of it than a tail.", "It weighs less than 12 grams."]
    ours, theirs = [], []
    with Desktop() as desktop, StandInService() as service:
        # The caret stands on a line of its own.
        editor = GtkEditor(desktop, "\n".join([*lines, "", ""]))
        lumiwren = Lumiwren(desktop, service, accessible=False)
        start, end = (editor.frame.x, editor.frame.y), (editor.frame.right - 1, editor.frame.bottom - 1)
        for number in range(CAPTURE_ROUNDS + 1):
            lumiwren.press_hotkey("s")
            wait_until(lambda: desktop.display.windows_of_class("lumiwren-screencapture"), "the overlay")
            desktop.display.move(*start)
            desktop.display.button_down()
            desktop.display.move(*end)
            wait_until(lambda: quiet(desktop), "the rectangle to be drawn")
            let_go = time.monotonic()
            desktop.display.button_up()
            request = service.wait_for_requests(number + 1)
            ours.append((request.received_at - let_go) * 1000)
            assert "\n".join(lines) in request.prompt, request.prompt
            assert request.answered.wait(10)
            lumiwren.panel.wait_shown()
            desktop.display.press("Escape")
            lumiwren.panel.wait_gone()
            wait_until(lambda: quiet(desktop), "the program to be idle")
        tool = Screencapture(desktop).wait_shown()
        tool.drag(start, end)
        tool.finish()
        for _ in range(CAPTURE_ROUNDS):
            began = time.monotonic()
            subprocess.run(["tesseract", str(tool.path), "stdout"], check=True, capture_output=True,
                           env={**os.environ, "OMP_THREAD_LIMIT": "1"})
            theirs.append((time.monotonic() - began) * 1000)
    # The first time the engine is loaded; by the time of the others it waits.
    return [row("capture-text", "ms", ours[1:], 0.75, "tesseract with one thread, the same picture", theirs)]


def cpu_times(pids):
    """Nanoseconds that each thread of the processes has run so far."""
    return {schedstat: int(schedstat.read_text().split()[0]) for pid in pids
            for schedstat in pathlib.Path(f"/proc/{pid}/task").glob("*/schedstat")}


def gained(before, after):
    """The sum over all threads that are there after; one that has ended takes what it had along."""
    return sum(value - before.get(thread, 0) for thread, value in after.items())


def quiet(desktop):
    """Whether none of the desktop's programs runs for a tenth of a second."""
    pids = [pid for pid, _ in leftovers(desktop.mark)]
    before = cpu_times(pids)
    time.sleep(0.1)
    return gained(before, cpu_times(pids)) < 2_000_000


def measure_wire():
    """The first request also makes the connection; the rows after it are what a user meets."""
    times = []
    with Desktop() as desktop, StandInService() as service:
        editor = GtkEditor(desktop, "The selected text")
        lumiwren = Lumiwren(desktop, service, accessible=False)
        desktop.own_selection({"UTF8_STRING": b"before", "text/html": b"<b>before</b>"})
        editor.select_all("The selected text")
        for number in range(WIRE_ROUNDS):
            pressed = time.monotonic()
            lumiwren.press_hotkey()
            request = service.wait_for_requests(number + 1)
            times.append((request.received_at - pressed) * 1000 - CAPTURE_WAIT)
            assert request.answered.wait(10)
            desktop.display.press("Escape")
            lumiwren.panel.wait_gone()
    return [row("press-to-wire", "ms", times, 10)]


# -- being there -----------------------------------------------------------------------------------------------

def resident(processes):
    """Megabytes of all processes together."""
    return sum(int(line.split()[1]) for pid, _ in processes
               for line in pathlib.Path(f"/proc/{pid}/status").read_text().splitlines()
               if line.startswith("VmRSS:")) / 1024


def wake_ups(pids):
    """How often each thread of the processes has slept so far."""
    return {status: int(line.split()[1]) for pid in pids
            for status in pathlib.Path(f"/proc/{pid}/task").glob("*/status")
            for line in status.read_text().splitlines() if line.startswith("voluntary_ctxt_switches:")}


def idle(lumiwren):
    """Wake-ups and milliseconds of CPU time of the program while nobody does anything."""
    pids = [pid for pid, _ in lumiwren.processes()]
    woken, run = wake_ups(pids), cpu_times(pids)
    time.sleep(IDLE_SECONDS)
    return gained(woken, wake_ups(pids)), gained(run, cpu_times(pids)) / 1e6


def measure_rest(rows):
    with Desktop() as desktop:
        folder = desktop.directory / "certificate"
        folder.mkdir()
        with StandInService(lambda exchange: exchange.answer("# Answer\n", "- one\n- two\n"), folder) as service:
            peer_mark = f"{desktop.mark}-peer"
            desktop.launch(["copyq"], mark=peer_mark)
            lumiwren = Lumiwren(desktop, service, accessible=False, SSL_CERT_DIR=str(folder))
            wait_until(lambda: desktop.tray_host.output.count("registered") >= 2, "copyq's status item", 30)
            wait_until(lambda: quiet(desktop), "both programs to be idle")
            peer = resident(leftovers(peer_mark))
            memory_at_start = resident(lumiwren.processes())
            idle_rows = {"idle-wakeups", "idle-cpu"} & rows
            after_start = idle(lumiwren) if idle_rows else (0, 0)
            editor = GtkEditor(desktop, "The selected text")
            editor.select_all("The selected text")
            lumiwren.press_hotkey()
            assert service.wait_for_requests(1).answered.wait(10)
            lumiwren.panel.wait_shown()
            desktop.display.press("Escape")
            lumiwren.panel.wait_gone()
            wait_until(lambda: quiet(desktop), "both programs to be idle")
            memory_after_use = resident(lumiwren.processes())
            after_answer = idle(lumiwren) if idle_rows else (0, 0)
    return [row("memory-idle", "MB", [memory_at_start], 0.5, "copyq", [peer]),
            row("memory-used", "MB", [memory_after_use], 0.65, "copyq", [peer]),
            row("idle-wakeups", "in 30 s", [max(after_start[0], after_answer[0])], 1),
            row("idle-cpu", "ms in 30 s", [max(after_start[1], after_answer[1])], 1)]


# -- all of them -----------------------------------------------------------------------------------------------

HERE = {"start": measure_start, "start-peer": measure_start, "hotkey-map": measure_hotkey,
        "hotkey-pixel": measure_hotkey, "menu": measure_menu, "press-to-wire": measure_wire, "memory-idle": measure_rest,
        "memory-used": measure_rest, "overlay": measure_overlay,
        "capture-text": measure_capture_text, "capture-png": measure_capture_png, "capture-png-4k": measure_capture_png, "idle-wakeups": measure_rest,
        "idle-cpu": measure_rest}


def from_programs(wanted):
    """The rows of the benchmark programs: all of them, or the wanted ones."""
    for program in sorted((BUILD / "bin").glob("bench_*")):
        done = subprocess.run([program, *wanted], stdout=subprocess.PIPE, text=True, check=False)
        rows = [json.loads(line) for line in done.stdout.splitlines() if line.startswith("{")]
        if done.returncode not in (0, 1):
            sys.exit(f"{program.name} failed with {done.returncode}")
        yield from rows


def shown(value):
    return "–" if value is None else f"{value:.3g}" if isinstance(value, float) else str(value)


def main():
    wanted = sys.argv[2:]
    rows = []
    for measure in dict.fromkeys(HERE.values()):
        names = {name for name in HERE if HERE[name] is measure and (not wanted or name in wanted)}
        if names:
            measured = measure(names) if measure is measure_rest else measure()
            rows += [result for result in measured if result["id"] in names]
    elsewhere = [name for name in wanted if name not in HERE]
    if elsewhere or not wanted:
        rows += from_programs(elsewhere)

    titles = ("id", "value", "unit", "against", "its value", "ratio", "budget", "")
    table = [titles] + [(result["id"], shown(result["value"]), result["unit"], result.get("reference") or "–",
                         shown(result.get("reference_value")), shown(result.get("ratio")), shown(result["budget"]),
                         "holds" if result["holds"] else "DOES NOT HOLD") for result in rows]
    widths = [max(len(line[column]) for line in table) for column in range(len(titles))]
    for line in table:
        print("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip())
    results = BUILD / "results.json"
    results.write_text(json.dumps(rows, indent=1) + "\n")
    unknown = set(wanted) - {result["id"] for result in rows}
    if unknown:
        print(f"no such row: {', '.join(sorted(unknown))}", file=sys.stderr)
        return 2
    return 0 if all(result["holds"] for result in rows) else 1


if __name__ == "__main__":
    sys.exit(main())
