"""A desktop in a box: what the tests, the demonstration and the measurements need to use the real program as a
person does, on a machine without a screen."""

from .applications import Chromium, GtkEditor, GtkMenu, Mousepad, QtEditor, QtReader, VteTerminal, XTerm
from .desktop import API_KEY, WINDOW_MANAGERS, Desktop, LeftBehind
from .display import Frame
from .portal import GnomeSettings, SettingsPortal
from .process import Process, leftovers
from .program import Lumiwren, Panel
from .resolution import Resolution
from .screencapture import Screencapture, read_png, screen_pixels
from .service import DONE, Exchange, StandInService, sse
from .waiting import stays_false, wait_until
from .window import Window

__all__ = ["API_KEY", "DONE", "WINDOW_MANAGERS", "Chromium", "Desktop", "Exchange", "Frame", "GnomeSettings", "GtkEditor",
           "GtkMenu", "LeftBehind", "Lumiwren", "Mousepad", "Panel", "Process", "QtEditor", "QtReader", "Resolution",
           "Screencapture", "SettingsPortal", "StandInService", "VteTerminal", "Window", "XTerm", "leftovers",
           "read_png", "screen_pixels", "sse", "stays_false", "wait_until"]
