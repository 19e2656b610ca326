"""Hosts for status items, and a status item as its host sees it."""

from gi.repository import GLib

from .waiting import wait_until

WATCHER = "org.kde.StatusNotifierWatcher"
_ITEM = "org.kde.StatusNotifierItem"
_MENU = "com.canonical.dbusmenu"

PANEL_CONFIGURATION = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=8;x={x};y={y}"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="28"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/><value type="int" value="2"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="tasklist"/>
    <property name="plugin-2" type="string" value="systray"/>
  </property>
</channel>
"""


class StatusItem:
    """A registered status item, by its D-Bus address."""

    def __init__(self, connection, address):
        self.connection = connection
        self.name, _, path = address.partition("/")
        self.path = "/" + path

    def get(self, name):
        return self.connection.get(self.name, self.path, _ITEM, name)

    def activate(self, x=0, y=0):
        self.connection.call(self.name, self.path, _ITEM, "Activate", GLib.Variant("(ii)", (x, y)))

    def entries(self):
        """What a panel shows for its menu: the id and the properties of each entry, by its label."""
        path = self.get("Menu")
        self.connection.call(self.name, path, _MENU, "AboutToShow", GLib.Variant("(i)", (0,)))
        _revision, (_id, _properties, children) = self.connection.call(
            self.name, path, _MENU, "GetLayout", GLib.Variant("(iias)", (0, -1, [])))
        return {properties.get("label", "").replace("_", ""): (number, properties) for number, properties, _ in children}

    def choose(self, label):
        self.connection.call(
            self.name, self.get("Menu"), _MENU, "Event",
            GLib.Variant("(isvu)", (self.entries()[label][0], "clicked", GLib.Variant("s", ""), 0)))


def items(connection):
    """The registered items; none where there is no watcher."""
    try:
        return [StatusItem(connection, address) for address in
                connection.get(WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisteredStatusNotifierItems")]
    except GLib.Error:
        return []


def wait_for_item(connection, pid, timeout=15.0):
    """The status item of a process."""
    def find():
        for item in items(connection):
            try:
                if connection.pid_of(item.name) == pid:
                    return item
            except GLib.Error:
                continue
        return None
    return wait_until(find, f"a status item of process {pid}", timeout)
