"""A Secret Service with one locked item; prints what happens to it. The behaviours are those of lab/keyring.py."""

import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

BEHAVIOUR = sys.argv[1]
ROOT = "/org/freedesktop/secrets"
COLLECTION = ROOT + "/collection/login"
ITEM = COLLECTION + "/1"
PROMPT = ROOT + "/prompt/1"
SECRET = "org.freedesktop.Secret."
XML = f"""<node>
<interface name="{SECRET}Service">
  <method name="OpenSession"><arg type="s" direction="in"/><arg type="v" direction="in"/>
    <arg type="v" direction="out"/><arg type="o" direction="out"/></method>
  <method name="SearchItems"><arg type="a{{ss}}" direction="in"/>
    <arg type="ao" direction="out"/><arg type="ao" direction="out"/></method>
  <method name="Unlock"><arg type="ao" direction="in"/><arg type="ao" direction="out"/>
    <arg type="o" direction="out"/></method>
  <method name="GetSecrets"><arg type="ao" direction="in"/><arg type="o" direction="in"/>
    <arg type="a{{o(oayays)}}" direction="out"/></method>
  <method name="ReadAlias"><arg type="s" direction="in"/><arg type="o" direction="out"/></method>
  <property name="Collections" type="ao" access="read"/>
</interface>
<interface name="{SECRET}Collection">
  <property name="Items" type="ao" access="read"/><property name="Label" type="s" access="read"/>
  <property name="Locked" type="b" access="read"/><property name="Created" type="t" access="read"/>
  <property name="Modified" type="t" access="read"/>
</interface>
<interface name="{SECRET}Item">
  <property name="Locked" type="b" access="read"/><property name="Attributes" type="a{{ss}}" access="read"/>
  <property name="Label" type="s" access="read"/><property name="Created" type="t" access="read"/>
  <property name="Modified" type="t" access="read"/>
</interface>
<interface name="{SECRET}Prompt">
  <method name="Prompt"><arg type="s" direction="in"/></method><method name="Dismiss"/>
  <signal name="Completed"><arg type="b"/><arg type="v"/></signal>
</interface>
</node>"""
PROPERTIES = {
    "Collections": GLib.Variant("ao", [COLLECTION]), "Items": GLib.Variant("ao", [ITEM]),
    "Label": GLib.Variant("s", "login"), "Locked": GLib.Variant("b", True), "Created": GLib.Variant("t", 0),
    "Modified": GLib.Variant("t", 0),
    "Attributes": GLib.Variant("a{ss}", {"service": "com.lumiwren.app", "account": "openai-api-key"}),
}


def on_call(connection, sender, _path, _interface, method, arguments, invocation):
    if BEHAVIOUR == "silent":
        return
    if method == "OpenSession":
        algorithm, _input = arguments.unpack()
        if algorithm == "plain":
            invocation.return_value(GLib.Variant("(vo)", (GLib.Variant("s", ""), ROOT + "/session/1")))
        else:
            invocation.return_dbus_error("org.freedesktop.DBus.Error.NotSupported", "plain sessions only")
    elif method == "SearchItems":
        invocation.return_value(GLib.Variant("(aoao)", ([], [ITEM])))
    elif method == "Unlock":
        if BEHAVIOUR != "unlock-silent":
            invocation.return_value(GLib.Variant("(aoo)", ([], PROMPT)))
    elif method == "GetSecrets":
        secrets = {ITEM: (ROOT + "/session/1", b"", b"sk-unlocked", "text/plain")} if BEHAVIOUR == "unlocked" else {}
        invocation.return_value(GLib.Variant("(a{o(oayays)})", (secrets,)))
    elif method == "ReadAlias":
        invocation.return_value(GLib.Variant("(o)", (COLLECTION,)))
    elif method == "Prompt":
        print("prompt", flush=True)
        invocation.return_value(None)
        if BEHAVIOUR == "dismissed":
            completed(connection, sender, dismissed=True)
        elif BEHAVIOUR == "unlocked":
            completed(connection, sender, dismissed=False)
    elif method == "Dismiss":
        print("withdrawn", flush=True)
        if BEHAVIOUR != "stuck":
            invocation.return_value(None)
            completed(connection, sender, dismissed=True)


def completed(connection, receiver, dismissed):
    connection.emit_signal(receiver, PROMPT, SECRET + "Prompt", "Completed",
                           GLib.Variant("(bv)", (dismissed, GLib.Variant("ao", [] if dismissed else [ITEM]))))


def on_bus(connection, _name):
    interfaces = {interface.name.removeprefix(SECRET): interface for interface in
                  Gio.DBusNodeInfo.new_for_xml(XML).interfaces}
    for path, name in ((ROOT, "Service"), (COLLECTION, "Collection"), (ITEM, "Item"), (PROMPT, "Prompt")):
        if BEHAVIOUR == "silent":
            # Not even the properties, which the library would answer by itself.
            connection.add_filter(lambda _c, message, incoming: None if incoming and message.get_message_type() ==
                                  Gio.DBusMessageType.METHOD_CALL else message)
        connection.register_object(path, interfaces[name], on_call,
                                   lambda _c, _s, _p, _i, prop: PROPERTIES[prop], None)


Gio.bus_own_name(Gio.BusType.SESSION, "org.freedesktop.secrets", Gio.BusNameOwnerFlags.NONE, on_bus,
                 lambda *_: print("ready", flush=True), lambda *_: sys.exit("the name is taken"))
GLib.MainLoop().run()
