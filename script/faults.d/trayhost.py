"""A tray host on the session bus, which writes down who registers an icon."""

import sys

INTERFACE = """<node><interface name="org.kde.StatusNotifierWatcher">
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
<method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
<property name="RegisteredStatusNotifierItems" type="as" access="read"/>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<property name="ProtocolVersion" type="i" access="read"/>
</interface></node>"""
NAME = "org.kde.StatusNotifierWatcher"


def main():
    from gi.repository import Gio, GLib

    items = []
    kinds = {"RegisteredStatusNotifierItems": ("as", items), "IsStatusNotifierHostRegistered": ("b", True),
             "ProtocolVersion": ("i", 0)}

    def call(connection, sender, path, interface, method, arguments, invocation):
        if method == "RegisterStatusNotifierItem":
            items.append(sender + arguments[0])
            print(items[-1], flush=True)
        invocation.return_value(None)

    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    bus.register_object("/StatusNotifierWatcher", Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0], call,
                        lambda *asked: GLib.Variant(*kinds[asked[4]]))
    Gio.bus_own_name_on_connection(bus, NAME, Gio.BusNameOwnerFlags.NONE, None, None)
    GLib.MainLoop().run()


if __name__ == "__main__":
    sys.exit(main())
