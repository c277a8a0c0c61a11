#!/usr/bin/env python3
"""The window follows what the user has told the desktop: without animations screens fade where they stand instead of
sliding, at once when the user changes his mind. A settings portal of the test's own speaks for the desktop.

Usage: comfort_walk.py WINDOW-PROGRAM SOURCE-DIR (status 77: something needed is not installed)
"""
import pathlib
import sys
import tempfile
import threading
import time

import window_session

PORTAL = """<node><interface name="org.freedesktop.portal.Settings">
  <method name="Read">
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/>
  </method>
  <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>"""
DESKTOP, ANIMATIONS = "org.gnome.desktop.interface", "enable-animations"


class Portal:
    """Answers on the session's bus from a thread of its own."""

    def __init__(self):
        from gi.repository import Gio, GLib
        self.gio, self.glib = Gio, GLib
        self.settings = {(DESKTOP, ANIMATIONS): GLib.Variant("b", True)}
        self.bus = None
        ready = threading.Event()
        threading.Thread(target=self.run, args=(ready,), daemon=True).start()
        assert ready.wait(10), "the portal does not start"

    def run(self, ready):
        context = self.glib.MainContext.new()
        context.push_thread_default()
        address = self.gio.dbus_address_get_for_bus_sync(self.gio.BusType.SESSION, None)
        flags = self.gio.DBusConnectionFlags
        self.bus = self.gio.DBusConnection.new_for_address_sync(
            address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)
        description = self.gio.DBusNodeInfo.new_for_xml(PORTAL).interfaces[0]
        self.bus.register_object("/org/freedesktop/portal/desktop", description, self.answer, None, None)
        self.bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                           self.glib.Variant("(su)", ("org.freedesktop.portal.Desktop", 4)), None,
                           self.gio.DBusCallFlags.NONE, -1, None)
        ready.set()
        self.glib.MainLoop.new(context, False).run()

    def answer(self, bus, sender, path, interface, method, arguments, invocation):
        value = self.settings.get(tuple(arguments.unpack()))
        if value is None:
            invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "no such setting")
        else:  # in a variant within a variant, as portals do
            invocation.return_value(self.glib.Variant("(v)", (self.glib.Variant("v", value),)))

    def set(self, animates):
        value = self.glib.Variant("b", animates)
        self.settings[(DESKTOP, ANIMATIONS)] = value
        self.bus.emit_signal(None, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings",
                             "SettingChanged", self.glib.Variant("(ssv)", (DESKTOP, ANIMATIONS, value)))
        self.bus.flush_sync(None)


def seen_sliding(session, row):
    """Opens the gallery of the row and tells whether it was seen coming in from the side; goes back again."""
    session.settle(row)
    time.sleep(0.5)  # what was there before has left
    session.press(row)
    places = []
    frame = None
    end = time.monotonic() + 0.8
    while time.monotonic() < end:
        try:
            frame = frame or session.find("upright.png")
            if frame is not None:
                places.append(frame.queryComponent().getExtents(session.atspi.DESKTOP_COORDS).x)
        except Exception:  # the tree changes while it is read
            frame = None
    assert places, "the gallery has not come"
    resting = session.settle("upright.png")[0].queryComponent().getExtents(session.atspi.DESKTOP_COORDS).x
    session.press("Back")
    session.expect_gone("upright.png")
    return any(place > resting for place in places)


def slides(session, row):
    """A slide is short and may pass between two looks, so there are several."""
    return any(seen_sliding(session, row) for _ in range(6))


def visit(program, source, folder, portal, *options):
    session = window_session.Session(program, folder, "--resources", str(source / "tests/fixtures/catalogue"), *options)
    try:
        session.expect("Options")
        row = "Phones"
        if options:
            portal.set(True)
            assert not slides(session, row), "asked not to move, it slides"
            return
        portal.set(True)
        time.sleep(0.5)
        assert slides(session, row), "where animations are wanted nothing slides"
        portal.set(False)
        time.sleep(0.5)
        assert not slides(session, row), "it slides though the user has just forbidden it"
    finally:
        session.close()


def starts_still(program, source, folder, portal):
    portal.set(False)
    session = window_session.Session(program, folder, "--resources", str(source / "tests/fixtures/catalogue"))
    try:
        session.expect("Options")
        assert not slides(session, "Phones"), "it slides though the desktop said not to"
    finally:
        session.close()


def walk(program, source, folder):
    portal = Portal()
    visit(program, source, folder / "changing", portal)
    print("the window follows a change of mind")
    starts_still(program, source, folder / "still", portal)
    print("and what was said before it started")
    visit(program, source, folder / "asked", portal, "--reduce-motion")
    print("and its own option")


if __name__ == "__main__":
    window_session.rerun_privately()
    with tempfile.TemporaryDirectory(prefix="quillomat-comfort-") as scratch:
        walk(sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(scratch))
