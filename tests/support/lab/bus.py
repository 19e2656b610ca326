"""A D-Bus session of one's own, without services that would be started unasked."""

import os

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from .process import Process  # noqa: E402
from .waiting import wait_until  # noqa: E402

_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <keep_umask/>
  <listen>unix:dir={directory}</listen>
  <servicedir>{directory}/services</servicedir>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


class Connection:
    """A connection to a bus; calls wait for their answer."""

    def __init__(self, address):
        self.bus = Gio.DBusConnection.new_for_address_sync(
            address,
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None, None)
        self.bus.set_exit_on_close(False)

    def call(self, name, path, interface, method, arguments=None, timeout=5.0):
        """`arguments` is a GLib.Variant tuple; the result is the tuple of plain values."""
        answer = self.bus.call_sync(name, path, interface, method, arguments, None, Gio.DBusCallFlags.NO_AUTO_START,
                                    int(timeout * 1000), None)
        return answer.unpack()

    def get(self, name, path, interface, prop):
        return self.call(name, path, "org.freedesktop.DBus.Properties", "Get",
                         GLib.Variant("(ss)", (interface, prop)))[0]

    def owner(self, name):
        """The unique name of who owns `name`, or None."""
        try:
            return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                             "GetNameOwner", GLib.Variant("(s)", (name,)))[0]
        except GLib.Error:
            return None

    def pid_of(self, name):
        return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                         "GetConnectionUnixProcessID", GLib.Variant("(s)", (name,)))[0]

    def wait_for_name(self, name, timeout=15.0):
        return wait_until(lambda: self.owner(name), f"{name} on the bus", timeout)

    def close(self):
        if not self.bus.is_closed():
            self.bus.close_sync(None)


class Bus:
    """The bus; it starts only the services that are described in the folder's `services`."""

    def __init__(self, directory, env, log, mark):
        configuration = directory / "bus.conf"
        configuration.write_text(_CONFIGURATION.format(directory=directory))
        reading, writing = os.pipe()
        self.process = Process(["dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile",
                                f"--print-address={writing}"], env, log, pass_fds=[writing], mark=mark)
        os.close(writing)
        with open(reading) as lines:
            self.address = lines.readline().strip()
        if not self.address:
            raise RuntimeError(f"dbus-daemon did not start:\n{self.process.output}")

    def close(self):
        self.process.close()
