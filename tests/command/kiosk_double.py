#!/usr/bin/python3
"""Stands for the kiosk on the session bus and writes each request as a line into $KIOSK_REQUESTS."""

import os
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

if os.environ.get("KIOSK_ENDS_WITH"):
    sys.exit(int(os.environ["KIOSK_ENDS_WITH"]))

INTERFACES = """<node>
  <interface name="org.freedesktop.Application">
    <method name="Activate"><arg type="a{sv}" direction="in"/></method>
    <method name="Open"><arg type="as" direction="in"/><arg type="a{sv}" direction="in"/></method>
  </interface>
  <interface name="com.lumo.LumoBrowser.Services">
    <method name="SearchFromPasteboard">
      <arg type="as" direction="in"/><arg type="as" direction="in"/>
      <arg type="s" direction="in"/><arg type="s" direction="in"/>
    </method>
  </interface>
</node>"""


def called(_bus, _sender, _path, interface, method, arguments, invocation):
    with open(os.environ["KIOSK_REQUESTS"], "a", encoding="utf-8") as file:
        file.write(f"{interface}.{method}{arguments.unpack()}\n")
    if "refuse" in str(arguments):
        invocation.return_dbus_error("org.freedesktop.DBus.Error.InvalidArgs", "not that one")
    else:
        invocation.return_value(None)


# A session of its own, as a program has that outlives the terminal from which it was started.
assert os.getsid(0) == os.getpid()
bus = Gio.bus_get_sync(Gio.BusType.SESSION)
for description in Gio.DBusNodeInfo.new_for_xml(INTERFACES).interfaces:
    bus.register_object("/com/lumo/LumoBrowser", description, called)
Gio.bus_own_name_on_connection(bus, "com.lumo.LumoBrowser", Gio.BusNameOwnerFlags.NONE)
# It never outlives the bus of the test, nor a test that hangs.
bus.connect("closed", lambda *_: os._exit(0))
GLib.timeout_add_seconds(120, lambda: os._exit(1))
GLib.MainLoop().run()
