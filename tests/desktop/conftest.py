"""What all tests of the whole program share: a desktop per file, a fresh service and a fresh program per test."""

import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))

from lab import Desktop, GtkEditor, Lumiwren, StandInService  # noqa: E402


class Programs:
    """Starts programs, and ends those that still run when their desktop does, as the end of a session would."""

    def start(self, desktop, service=None, **kwargs):
        program = Lumiwren(desktop, service, **kwargs)
        desktop.before_end(self._finish, program)
        return program

    @staticmethod
    def _finish(program):
        if program.process.running():
            assert program.terminate() == 0, program.process.output
        assert program.sanitizer_report() is None


@pytest.fixture(scope="module")
def shared_desktop():
    with Desktop() as desktop:
        yield desktop


@pytest.fixture
def desktop(shared_desktop):
    """A desktop with openbox, as a first start of the program finds it."""
    with shared_desktop.scope() as desktop:
        desktop.user_defaults().unlink(missing_ok=True)
        desktop.selections.clear("PRIMARY")
        yield desktop
        assert desktop.display.keys_down() == []


@pytest.fixture
def service():
    with StandInService() as service:
        yield service
        assert service.failures == []


@pytest.fixture
def programs():
    return Programs()


@pytest.fixture
def lumiwren(desktop, service, programs):
    return programs.start(desktop, service)


@pytest.fixture
def editor(desktop):
    """An editor in front, in which all text is selected."""
    editor = GtkEditor(desktop, "The selected text")
    editor.select_all("The selected text")
    return editor


def pytest_assertrepr_compare(op, left, right):
    """Where two pictures (width, height, pixels of three bytes each) differ, instead of their bytes."""
    if op != "==" or not all(isinstance(each, tuple) and len(each) == 3 and isinstance(each[2], bytes)
                             for each in (left, right)) or left[:2] != right[:2]:
        return None
    width = left[0]
    places = [number for number in range(len(left[2]) // 3)
              if left[2][number * 3:number * 3 + 3] != right[2][number * 3:number * 3 + 3]]
    columns, rows = {number % width for number in places}, {number // width for number in places}
    return [f"two pictures of {width} x {left[1]}: {len(places)} pixels differ, "
            f"from {min(columns)}, {min(rows)} to {max(columns)}, {max(rows)}",
            *(f"{number % width}, {number // width}: {left[2][number * 3:number * 3 + 3].hex()} is not "
              f"{right[2][number * 3:number * 3 + 3].hex()}" for number in places[:5])]
