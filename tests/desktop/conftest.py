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
