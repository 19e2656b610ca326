"""Settings portals: how programs learn what the user wants the desktop to look like."""

from gi.repository import GLib

NAME = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"
APPEARANCE = "org.freedesktop.appearance"
GNOME = "org.gnome.desktop.interface"


class SettingsPortal:
    """A stand-in; see helpers/settings_portal.py for behaviours and settings."""

    def __init__(self, desktop, behaviour="plain", settings="{}"):
        self.desktop = desktop
        self.process = desktop.helper("settings_portal", behaviour, settings)
        desktop.bus.wait_for_name(NAME)

    def set(self, group, key, value):
        """`value` is a GLib.Variant."""
        self.desktop.bus.call(NAME, PATH, "lumiwren.test.Portal", "Set", GLib.Variant("(ssv)", (group, key, value)))

    def set_color_scheme(self, number):
        """0 for no preference, 1 for dark, 2 for light."""
        self.set(APPEARANCE, "color-scheme", GLib.Variant("u", number))

    def end(self):
        self.process.kill()


class GnomeSettings:
    """The real portal with GTK's backend, and the settings behind it."""

    _ENVIRONMENT = {"GSETTINGS_BACKEND": "dconf", "XDG_CURRENT_DESKTOP": "GNOME"}

    def __init__(self, desktop):
        self.desktop = desktop
        for program, name in (("dconf-service", "ca.desrt.dconf"),
                              ("xdg-desktop-portal-gtk", "org.freedesktop.impl.portal.desktop.gtk"),
                              ("xdg-desktop-portal", NAME)):
            desktop.launch([f"/usr/libexec/{program}"], **self._ENVIRONMENT)
            desktop.bus.wait_for_name(name)

    def set(self, key, value):
        """`value` as gsettings takes it."""
        process = self.desktop.launch(["gsettings", "set", GNOME, key, value], **self._ENVIRONMENT)
        if process.wait() != 0:
            raise RuntimeError(f"gsettings: {process.output}")
