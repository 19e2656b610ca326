"""A settings portal: settings_portal.py BEHAVIOUR [SETTINGS]

SETTINGS is a dictionary a{sa{sv}} as GLib writes it. The behaviours:
  plain     answers
  nested    answers with each value in a variant in a variant, as the first portals did
  silent    never answers
  refusing  answers with an error
  wrong     answers with something else
Set(ssv) of the interface lumiwren.test.Portal changes a setting and tells everybody.
"""

import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

BEHAVIOUR = sys.argv[1]
SETTINGS = sys.argv[2] if len(sys.argv) > 2 else "{}"
PATH = "/org/freedesktop/portal/desktop"
INTERFACE = "org.freedesktop.portal.Settings"
XML = f"""<node>
<interface name="{INTERFACE}">
  <method name="ReadAll"><arg type="as" direction="in"/>
    <arg type="{'s' if BEHAVIOUR == 'wrong' else 'a{sa{sv}}'}" direction="out"/></method>
  <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface>
<interface name="lumiwren.test.Portal">
  <method name="Set"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="in"/></method>
</interface>
</node>"""


def parsed(text):
    """Plain dictionaries down to the values, which keep their types."""
    groups = GLib.Variant.parse(GLib.VariantType("a{sa{sv}}"), text)
    return {group: {key: values.lookup_value(key) for key in values.keys()}
            for group in groups.keys() for values in [groups.lookup_value(group)]}


settings = parsed(SETTINGS)


def on_call(connection, _sender, _path, _interface, method, arguments, invocation):
    if method == "Set":
        group, key = arguments.get_child_value(0).get_string(), arguments.get_child_value(1).get_string()
        value = arguments.get_child_value(2).get_variant()
        settings.setdefault(group, {})[key] = value
        connection.emit_signal(None, PATH, INTERFACE, "SettingChanged", GLib.Variant("(ssv)", (group, key, value)))
        invocation.return_value(None)
    elif BEHAVIOUR == "refusing":
        invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "no")
    elif BEHAVIOUR == "wrong":
        invocation.return_value(GLib.Variant("(s)", ("dark",)))
    elif BEHAVIOUR != "silent":
        wanted = arguments.unpack()[0]
        nested = BEHAVIOUR == "nested"
        invocation.return_value(GLib.Variant("(a{sa{sv}})", ({
            group: {key: GLib.Variant("v", value) if nested else value for key, value in values.items()}
            for group, values in settings.items() if group in wanted},)))


def on_bus(connection, _name):
    for interface in Gio.DBusNodeInfo.new_for_xml(XML).interfaces:
        connection.register_object(PATH, interface, on_call, None, None)


Gio.bus_own_name(Gio.BusType.SESSION, "org.freedesktop.portal.Desktop", Gio.BusNameOwnerFlags.NONE, on_bus,
                 lambda *_: print("ready", flush=True), lambda *_: sys.exit("the name is taken"))
GLib.MainLoop().run()
