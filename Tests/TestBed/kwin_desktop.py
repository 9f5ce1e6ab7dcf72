"""KWin without a screen, with XWayland; pictures of it need python3-dbus."""
import os
import subprocess

import wayland_person
from wayland_desktop import WaylandDesktop
from x11_desktop import SIZE, TIMEOUT, wait_until

AUTHENTICATE, MOVE, BUTTON, MOVE_TO, KEY = 0, 1, 2, 9, 10
FIXED_POINT = 256


class Person(wayland_person.Person):
    """By KWin's own protocol for input that is not real."""

    def plug_in(self):
        self.input = self.bind("org_kde_kwin_fake_input", 4)
        self.send(self.input, AUTHENTICATE, "velmora-test", "test")

    def move(self, point):
        self.send(self.input, MOVE_TO, int(point[0] * FIXED_POINT), int(point[1] * FIXED_POINT))
        self.wait()

    def press(self, button, isDown):
        self.send(self.input, BUTTON, wayland_person.BUTTONS[button], int(isDown))
        self.wait()

    def press_key(self, name, isDown):
        self.send(self.input, KEY, wayland_person.KEYS[name], int(isDown))
        self.wait()


class KwinDesktop(WaylandDesktop):
    """`bar`: the edge at which waybar shows icons; `screens` side by side, each of `scale`."""

    def __init__(self, program, bar=None, scale=1, screens=1):
        super().__init__(program, "KDE")
        self.tray_kind, self.bar, self.scale = "sni" if bar else "none", bar, scale
        self.env.update(KWIN_WAYLAND_NO_PERMISSION_CHECKS="1", KWIN_SCREENSHOT_NO_PERMISSION_CHECKS="1", KWIN_COMPOSE="O2")
        try:
            self.start_bus()
            self.start_kwin(scale, screens)
            self.person = Person(self.env, SIZE)
            if bar:
                self.start_waybar(bar)
        except BaseException:
            self.close()
            raise

    def start_kwin(self, scale, screens):
        """Only KWin knows its displays, so a program that it starts writes them down."""
        names, report = self.folder / "displays", self.folder / "report"
        report.write_text('#!/bin/sh\nprintf "%s\\n" "$WAYLAND_DISPLAY" "$DISPLAY" "$XAUTHORITY" '
                          f'> {names}.new; mv {names}.new {names}\n')
        report.chmod(0o755)
        self.kwin = self.start("kwin", "kwin_wayland", "--virtual", "--width", str(round(SIZE[0] * scale)), "--height",
                               str(round(SIZE[1] * scale)), "--scale", str(scale), "--output-count", str(screens),
                               "--no-lockscreen", "--no-global-shortcuts", "--xwayland", "--socket", "wayland-0", str(report))
        wait_until("KWin", lambda: names.exists() or self.kwin.poll() is not None)
        if self.kwin.poll() is not None:
            raise AssertionError("KWin has ended:\n" + self.log("kwin"))
        self.env["WAYLAND_DISPLAY"], self.env["DISPLAY"], self.env["XAUTHORITY"] = names.read_text().splitlines()
        wait_until("XWayland", lambda: "screen #0" in self.ask("xdpyinfo"))

    def take_picture(self, path):
        import dbus  # pylint: disable=import-outside-toplevel  # Only pictures need it.
        bus = dbus.bus.BusConnection(self.env["DBUS_SESSION_BUS_ADDRESS"])
        reading, writing = os.pipe()
        screen = bus.get_object("org.kde.KWin", "/org/kde/KWin/ScreenShot2")
        facts = screen.CaptureWorkspace(dbus.Dictionary({"native-resolution": True}, signature="sv"),
                                        dbus.types.UnixFd(writing), dbus_interface="org.kde.KWin.ScreenShot2")
        os.close(writing)
        with os.fdopen(reading, "rb") as pipe:
            data = pipe.read()
        subprocess.run(["convert", "-size", f"{int(facts['stride']) // 4}x{int(facts['height'])}", "-depth", "8", "bgra:-",
                        "-alpha", "off", path], input=data, check=True, timeout=TIMEOUT)
