#!/usr/bin/python3
"""A desktop portal on the session bus with the one interface that the window asks, ruled by lines on standard input.

    set GROUP KEY VALUE       sets and announces it; VALUE is in GVariant text form, such as "uint32 1" or "false"

Says "ready" when it can be asked, and "done" after every line.
"""

import sys
import threading

from gi.repository import Gio, GLib

NAME = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"
INTERFACE = """
<node>
  <interface name="org.freedesktop.portal.Settings">
    <method name="ReadAll">
      <arg type="as" direction="in"/>
      <arg type="a{sa{sv}}" direction="out"/>
    </method>
    <signal name="SettingChanged">
      <arg type="s"/>
      <arg type="s"/>
      <arg type="v"/>
    </signal>
  </interface>
</node>
"""

settings = {}


def answer(_connection, _sender, _path, _interface, _method, parameters, invocation):
    wanted = parameters.unpack()[0]
    groups = {group: values for group, values in settings.items() if not wanted or group in wanted}
    invocation.return_value(GLib.Variant("(a{sa{sv}})", (groups,)))


def obey(connection, line):
    _, group, key, text = line.split(" ", 3)
    value = GLib.Variant.parse(None, text.strip(), None, None)
    settings.setdefault(group, {})[key] = value
    connection.emit_signal(None, PATH, "org.freedesktop.portal.Settings", "SettingChanged",
                           GLib.Variant("(ssv)", (group, key, value)))
    connection.flush_sync()
    print("done", flush=True)


def main():
    loop = GLib.MainLoop()
    connection = Gio.bus_get_sync(Gio.BusType.SESSION)
    connection.register_object(PATH, Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0], answer)

    def listen():
        for line in sys.stdin:
            GLib.idle_add(obey, connection, line)
        GLib.idle_add(loop.quit)

    def begin(*_):
        print("ready", flush=True)
        threading.Thread(target=listen, daemon=True).start()

    Gio.bus_own_name_on_connection(connection, NAME, Gio.BusNameOwnerFlags.NONE, begin, None)
    loop.run()


main()
