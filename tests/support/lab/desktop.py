"""A whole desktop session in a folder of its own: X server, bus, window manager, keyring, tray host."""

import contextlib
import itertools
import os
import pathlib
import pwd
import shutil
import sys
import tempfile

from . import keyring, tray
from .accessibility import Accessibility
from .bus import Bus, Connection
from .display import Display, Xephyr, XServer, run_tool
from .process import RUN, Process, folder_prefix, wait_for_end
from .selections import SelectionOwner, SelectionReader
from .waiting import wait_until

HELPERS = pathlib.Path(__file__).parent / "helpers"
API_KEY = "sk-stand-in-0123456789"
WINDOW_MANAGERS = {
    "openbox": ["openbox", "--config-file", "{home}/openbox.xml"],
    "xfwm4": ["xfwm4", "--compositor=on"],
    "metacity": ["metacity"],
    "kwin_x11": ["kwin_x11"],
    "mutter": ["mutter", "--x11"],
}
# Started by the bus when somebody calls them; every other service is absent unless a test starts it.
_SERVICES = ["org.xfce.Xfconf", "org.gnome.keyring.SystemPrompter"]
_OPENBOX = """<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><followMouse>{follow}</followMouse><focusDelay>0</focusDelay><focusNew>yes</focusNew></focus>
  <desktops><number>2</number></desktops>
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
    </context>
    <context name="Titlebar"><mousebind button="Left" action="Drag"><action name="Move"/></mousebind></context>
  </mouse>
</openbox_config>
"""
_numbers = itertools.count(1)


class LeftBehind(AssertionError):
    """Processes that outlived their desktop."""


class Desktop(contextlib.ExitStack):
    """Use as a context manager; everything that was started in it ends with it.

    monitors: (width, height) of monitors side by side, instead of one of `size`
    physical_keyboard: keys are pressed on a keyboard that the session's own programs cannot inject into
    shows_screen: False for the X server of a Wayland session, whose screen is not X's to see
    posts_keys: False for a session whose programs cannot post keys at all (which has a physical keyboard)
    keyring: True (unlocked, with a key), False (none on the bus)
    tray_host: True for a status item watcher from the start
    """

    def __init__(self, window_manager="openbox", size=(1280, 800), monitors=(), physical_keyboard=False,
                 posts_keys=True, shows_screen=True, keyring=True, tray_host=True, focus_follows_mouse=False, directory=None):
        super().__init__()
        self.window_manager = window_manager
        self.size = (sum(width for width, _ in monitors), max(height for _, height in monitors)) if monitors else size
        self.monitors = monitors
        self.physical_keyboard = physical_keyboard or not posts_keys
        self.posts_keys, self.shows_screen = posts_keys, shows_screen
        self.with_keyring, self.with_tray_host = keyring, tray_host
        self.focus_follows_mouse = focus_follows_mouse
        self.directory = directory
        self.mark = f"{RUN}-{next(_numbers)}"
        self._logs = itertools.count(1)
        self._scope = self

    def __enter__(self):
        try:
            self._start()
        except BaseException:
            self.__exit__(*sys.exc_info())
            raise
        return self

    def _start(self):
        # Removed last: only when every process is gone does nothing write there any more.
        if self.directory is None:
            self.directory = pathlib.Path(tempfile.mkdtemp(prefix=folder_prefix()))
            self.callback(shutil.rmtree, self.directory, ignore_errors=True)
        self.directory = pathlib.Path(self.directory)
        self.callback(self._check_nothing_left)
        self.env = self._environment()
        self.display = self._start_display()
        self.env["DISPLAY"] = self.display.name
        self.selections = SelectionReader(self.display.name)
        self.callback(self.selections.close)
        self._start_bus()
        if self.with_tray_host:
            self.start_tray_host()
        self.keyring = self.start_keyring() if self.with_keyring else None
        if self.window_manager:
            self._start_window_manager()

    def _environment(self):
        home = self.directory / "home"
        runtime = self.directory / "run"
        env = {
            "PATH": "/usr/local/bin:/usr/bin:/bin", "LANG": "C.UTF-8", "HOME": str(home),
            "USER": pwd.getpwuid(os.getuid()).pw_name, "XDG_RUNTIME_DIR": str(runtime), "TMPDIR": str(self.directory),
            "XDG_CONFIG_HOME": str(home / ".config"), "XDG_DATA_HOME": str(home / ".local/share"),
            "XDG_CACHE_HOME": str(home / ".cache"), "XDG_STATE_HOME": str(home / ".local/state"),
            "XDG_DATA_DIRS": "/usr/local/share:/usr/share", "XDG_CONFIG_DIRS": "/etc/xdg",
            "XDG_SESSION_TYPE": "x11", "GSETTINGS_BACKEND": "memory", "NO_AT_BRIDGE": "1",
            "LIBGL_ALWAYS_SOFTWARE": "1", "QT_QPA_PLATFORM": "xcb",
        }
        for folder in (home, runtime, *(pathlib.Path(env[f"XDG_{kind}_HOME"])
                                        for kind in ("CONFIG", "DATA", "CACHE", "STATE"))):
            folder.mkdir(parents=True, exist_ok=True)
        runtime.chmod(0o700)
        for name in ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"):
            if name in os.environ:
                env[name] = os.environ[name]
        (home / "openbox.xml").write_text(_OPENBOX.format(follow="yes" if self.focus_follows_mouse else "no"))
        return env

    def _log(self, name):
        return self.directory / f"{next(self._logs):02}-{name}.log"

    def _start_display(self):
        server = self._own(XServer(self.size, self.env, self._log("xvfb"), mark=self.mark))
        display = self._own(Display(server.name))
        if self.monitors:
            left = 0
            for number, (width, height) in enumerate(self.monitors):
                run_tool(["xrandr", "--display", server.name, "--setmonitor", f"monitor{number}",
                          f"{width}/{width // 4}x{height}/{height // 4}+{left}+0",
                          "screen" if number == 0 else "none"], self.env)
                left += width
        if not self.shows_screen:
            width, height = self.size
            run_tool(["xrandr", "--display", server.name, "--setmonitor", "XWAYLAND0",
                      f"{width}/{width // 4}x{height}/{height // 4}+0+0", "screen"], self.env)
        if not self.physical_keyboard:
            return display
        # The outer server has no window manager: keys go to the window under the pointer, which is all of it.
        inner = self._own(Xephyr(self.size, {**self.env, "DISPLAY": server.name}, self._log("xephyr"),
                                 mark=self.mark, arguments=() if self.posts_keys else ("-extension", "XTEST")))
        return self._own(Display(inner.name, input_display=display))

    def _start_bus(self):
        services = self.directory / "services"
        services.mkdir(exist_ok=True)
        for name in _SERVICES:
            shutil.copy(f"/usr/share/dbus-1/services/{name}.service", services)
        self.bus_daemon = self._own(Bus(self.directory, self.env, self._log("bus"), mark=self.mark))
        self.env["DBUS_SESSION_BUS_ADDRESS"] = self.bus_daemon.address
        self.bus = self._own(Connection(self.bus_daemon.address))
        self.launch(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])
        self.bus.wait_for_name("org.a11y.Bus")
        self.accessibility = self._own(Accessibility(self.bus))

    def _start_window_manager(self):
        argv = [word.format(home=self.env["HOME"]) for word in WINDOW_MANAGERS[self.window_manager]]
        process = self.launch(argv, KWIN_COMPOSE="N")

        def up():
            if not process.running():
                raise RuntimeError(f"{argv[0]} ended:\n{process.output}")
            check = self.display.property(self.display.root, "_NET_SUPPORTING_WM_CHECK")
            return check and self.display.property(self.display.root, "_NET_SUPPORTED")

        wait_until(up, argv[0])

    def _own(self, thing):
        self._scope.callback(thing.close)
        return thing

    @contextlib.contextmanager
    def scope(self):
        """What is started within ends with it, the desktop stays."""
        with contextlib.ExitStack() as stack:
            outer, self._scope = self._scope, stack
            try:
                yield self
            finally:
                self._scope = outer

    def _check_nothing_left(self):
        left = wait_for_end(self.mark)
        if left:
            raise LeftBehind(f"still running after the desktop's end: {left}")

    # -- what tests and the demonstration ask for ----------------------------------------------------------

    def launch(self, argv, stdin=None, stdout=None, cwd=None, mark=None, **environment):
        """Starts a program in the session; a value of None takes a variable out of its environment."""
        env = {key: value for key, value in {**self.env, **environment}.items() if value is not None}
        name = os.path.basename(argv[0])
        return self._own(Process(argv, env, self._log(name), stdin=stdin, stdout=stdout, cwd=cwd,
                                 mark=mark or self.mark))

    def before_end(self, callback, *arguments):
        """Has something done at the end of the desktop, or of its open scope, while all it has started still runs."""
        self._scope.callback(callback, *arguments)

    def helper(self, name, *arguments, **environment):
        """Starts one of the helper programs that are written in Python."""
        return self.launch([sys.executable, str(HELPERS / f"{name}.py"), *map(str, arguments)], **environment)

    def tool(self, *argv, **kwargs):
        return run_tool(list(argv), self.env, **kwargs)

    def start_tray_host(self):
        self.tray_host = self.helper("watcher")
        self.bus.wait_for_name(tray.WATCHER)
        return self.tray_host

    def start_second_display(self):
        """Another X server, with nothing on it."""
        return self._own(XServer(self.size, self.env, self._log("xvfb"), mark=self.mark))

    def start_panel(self):
        """A taskbar with a tray for both kinds of status items, along the lower edge."""
        folder = pathlib.Path(self.env["XDG_CONFIG_HOME"], "xfce4/xfconf/xfce-perchannel-xml")
        folder.mkdir(parents=True, exist_ok=True)
        width, height = self.size
        (folder / "xfce4-panel.xml").write_text(tray.PANEL_CONFIGURATION.format(x=width // 2, y=height - 14))
        panel = self.launch(["xfce4-panel", "--disable-wm-check"])
        self.bus.wait_for_name(tray.WATCHER)
        return panel

    def start_keyring(self, key=API_KEY):
        service = keyring.Keyring(self)
        if key is not None:
            service.store(key)
        return service

    def start_fake_keyring(self, behaviour):
        return keyring.FakeKeyring(self, behaviour)

    def own_selection(self, contents, **kwargs):
        """A program that owns the clipboard, or another selection; see SelectionOwner."""
        return self._own(SelectionOwner(self.env, self.directory, contents, mark=self.mark, **kwargs))

    def user_defaults(self):
        """The file in which the program keeps its settings; its folder is there."""
        folder = pathlib.Path(self.env["XDG_CONFIG_HOME"], "lumiwren")
        folder.mkdir(parents=True, exist_ok=True)
        return folder / "defaults.json"

    def set_layout(self, *arguments):
        """Arguments as setxkbmap takes them."""
        run_tool(["setxkbmap", "-display", self.display.name, *arguments], self.env)
