"""A StatusNotifierWatcher with a host that shows nothing. Writes "registered NAME NANOSECONDS" for each item."""

import sys
import time

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

INTERFACE = "org.kde.StatusNotifierWatcher"
XML = f"""<node><interface name="{INTERFACE}">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
  <signal name="StatusNotifierItemUnregistered"><arg type="s"/></signal>
  <signal name="StatusNotifierHostRegistered"/>
</interface></node>"""
items = {}


def emit(connection, signal, item):
    connection.emit_signal(None, "/StatusNotifierWatcher", INTERFACE, signal, GLib.Variant("(s)", (item,)))


def on_call(connection, sender, _path, _interface, method, arguments, invocation):
    if method == "RegisterStatusNotifierItem":
        now = time.monotonic_ns()
        given = arguments.unpack()[0]
        item = sender + given if given.startswith("/") else given + "/StatusNotifierItem"
        items[item] = Gio.bus_watch_name_on_connection(
            connection, sender, Gio.BusNameWatcherFlags.NONE, None, lambda *_: forget(connection, item))
        print("registered", item, now, flush=True)
        emit(connection, "StatusNotifierItemRegistered", item)
    invocation.return_value(None)


def forget(connection, item):
    if item in items:
        Gio.bus_unwatch_name(items.pop(item))
        print("unregistered", item, time.monotonic_ns(), flush=True)
        emit(connection, "StatusNotifierItemUnregistered", item)


def on_get(_connection, _sender, _path, _interface, name):
    return {"RegisteredStatusNotifierItems": GLib.Variant("as", list(items)),
            "IsStatusNotifierHostRegistered": GLib.Variant("b", True),
            "ProtocolVersion": GLib.Variant("i", 0)}[name]


def on_bus(connection, _name):
    connection.register_object("/StatusNotifierWatcher", Gio.DBusNodeInfo.new_for_xml(XML).interfaces[0],
                               on_call, on_get, None)


Gio.bus_own_name(Gio.BusType.SESSION, INTERFACE, Gio.BusNameOwnerFlags.NONE, on_bus, None,
                 lambda *_: sys.exit("the name is taken"))
GLib.MainLoop().run()
