"""Child processes that never outlive the one who started them.

Every child carries a mark in its environment, and so does whatever it starts in turn. A watchdog process ends
all that bear the mark when this process is gone, however it went; `leftovers()` shows what is still there.
"""

import atexit
import contextlib
import ctypes
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import uuid

from .waiting import wait_until

MARK = "LUMIWREN_LAB"
RUN = uuid.uuid4().hex[:12]
_PR_SET_PDEATHSIG = 1
_libc = ctypes.CDLL(None)
_watchdog = None


def _marked(mark):
    """The processes that bear the mark or one that continues it after a hyphen."""
    needle = f"{MARK}={mark}".encode()
    found = []
    for entry in os.listdir("/proc"):
        if not entry.isdigit() or int(entry) == os.getpid():
            continue
        try:
            environment = pathlib.Path("/proc", entry, "environ").read_bytes()
            if any(variable == needle or variable.startswith(needle + b"-") for variable in environment.split(b"\0")):
                if pathlib.Path("/proc", entry, "stat").read_text().rpartition(")")[2].split()[0] != "Z":
                    found.append(int(entry))
        except OSError:
            continue  # ended meanwhile, or another user's
    return found


def command_line(pid):
    try:
        return pathlib.Path(f"/proc/{pid}/cmdline").read_bytes().replace(b"\0", b" ").decode(errors="replace").strip()
    except OSError:
        return ""


def leftovers(mark=RUN):
    """The processes (pid, command line) that bear the mark and still run."""
    return [(pid, command_line(pid)) for pid in _marked(mark)]


def kill_marked(mark=RUN):
    """Until there are none: one that is ended may just have started another."""
    while pids := _marked(mark):
        for pid in pids:
            with contextlib.suppress(ProcessLookupError):
                os.kill(pid, signal.SIGKILL)
        time.sleep(0.005)


def folder_prefix(mark=RUN):
    """How the names of all temporary folders of this process begin."""
    return f"lumiwren-lab-{mark}-"


def clean_up(mark):
    """Ends the processes and removes the folders that a process has left which could not do it itself."""
    kill_marked(mark)
    for folder in pathlib.Path(tempfile.gettempdir()).glob(folder_prefix(mark) + "*"):
        shutil.rmtree(folder, ignore_errors=True)


def _start_watchdog():
    """A process that reads from a pipe which nobody writes to: the end of the pipe is the end of this process."""
    global _watchdog
    if _watchdog is None:
        reading, _watchdog = os.pipe()
        code = ("import os,sys,signal\n"
                "signal.signal(signal.SIGINT, signal.SIG_IGN)\n"
                "sys.path.insert(0, sys.argv[1])\n"
                "from lab import process\n"
                "os.read(int(sys.argv[2]), 1)\n"
                "process.clean_up(sys.argv[3])\n")
        support = str(pathlib.Path(__file__).resolve().parents[1])
        watchdog = subprocess.Popen(
            [sys.executable, "-c", code, support, str(reading), RUN], pass_fds=[reading], start_new_session=True,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            env={key: value for key, value in os.environ.items() if key != MARK})
        os.close(reading)
        atexit.register(lambda: (os.close(_watchdog), watchdog.wait()))


class Process:
    """A running program in a process group of its own. `log` holds what it wrote, both streams."""

    def __init__(self, argv, env, log, stdin=None, pass_fds=(), cwd=None, stdout=None, mark=RUN, user=None):
        _start_watchdog()
        self.name = os.path.basename(argv[0])
        self.log = pathlib.Path(log)
        parent = os.getpid()

        def in_child():
            _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)
            if os.getppid() != parent:
                os._exit(1)

        with open(self.log, "ab") as output:
            self.popen = subprocess.Popen(
                argv, env={**env, MARK: mark}, stdin=subprocess.PIPE if stdin is not None else subprocess.DEVNULL,
                stdout=stdout or output, stderr=output, start_new_session=True, pass_fds=pass_fds, cwd=cwd,
                user=user, preexec_fn=in_child)
        self.pid = self.popen.pid
        self._closed = False
        if stdin is not None:
            self.popen.stdin.write(stdin)
            self.popen.stdin.close()

    @property
    def output(self):
        return self.log.read_text(errors="replace")

    def running(self):
        return self.popen.poll() is None

    def wait(self, timeout=15.0):
        """The exit status; negative is the signal that ended it."""
        try:
            return self.popen.wait(timeout)
        except subprocess.TimeoutExpired:
            raise TimeoutError(f"{self.name} did not end within {timeout:g} s") from None

    def signal_group(self, number):
        try:
            os.killpg(self.pid, number)
        except ProcessLookupError:
            pass

    def kill(self):
        """SIGKILL to the program alone, as a crash would end it."""
        if self.running():
            self.popen.send_signal(signal.SIGKILL)
        self.popen.wait()

    def close(self):
        """Ends the whole group, politely first. Once: later the number may be another group's."""
        if self._closed:
            return
        self._closed = True
        if self.running():
            self.signal_group(signal.SIGTERM)
            try:
                self.popen.wait(3)
            except subprocess.TimeoutExpired:
                pass
        self.signal_group(signal.SIGKILL)
        self.popen.wait()
        if self.popen.stdout:
            self.popen.stdout.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()


def wait_for_end(mark=RUN, timeout=5.0):
    """Waits until nothing bears the mark; what is left after `timeout` is ended and returned."""
    try:
        wait_until(lambda: not _marked(mark), "the end of all processes", timeout)
        return []
    except TimeoutError:
        left = leftovers(mark)
        kill_marked(mark)
        return left
