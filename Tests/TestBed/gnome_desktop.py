"""GNOME Shell without a screen, with XWayland; needs python3-dbus."""
import pathlib
import re

import dbus

import person
from wayland_desktop import WaylandDesktop
from wayland_person import BUTTONS, KEYS
from x11_desktop import SIZE, wait_until

SHELL = "org.gnome.Shell"
DEVICES = "org.gnome.Mutter.RemoteDesktop"
INDICATORS = "ubuntu-appindicators@ubuntu.com"
SHIFT = 42
FAR = 9999.0  # Beyond each edge of the screen.
SYSTEM_BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>system</type><listen>unix:path={socket}</listen><auth>EXTERNAL</auth>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy>
</busconfig>
"""
SETTINGS = """[org/gnome/shell]
enabled-extensions=[{extensions}]
disable-user-extensions=false
welcome-dialog-last-shown-version='999'
[org/gnome/desktop/interface]
enable-animations=false
enable-hot-corners=false
[org/gnome/desktop/lockdown]
disable-lock-screen=true
[org/gnome/desktop/session]
idle-delay=uint32 0
"""


class Person(person.Person):
    """By the shell's remote desktop: without its devices no program there gets the keyboard."""

    def __init__(self, address):
        self.bus = dbus.bus.BusConnection(address)
        devices = dbus.Interface(self.bus.get_object(DEVICES, "/org/gnome/Mutter/RemoteDesktop"), DEVICES)
        self.session = dbus.Interface(self.bus.get_object(DEVICES, devices.CreateSession()), DEVICES + ".Session")
        self.session.Start()
        self.move((0, 0))
        for state in (True, False):  # The devices come with their first use.
            self.session.NotifyKeyboardKeycode(SHIFT, state)

    def close(self):
        self.bus.close()

    def move(self, point):
        """By the lower right corner: this knows no places, only ways."""
        self.session.NotifyPointerMotionRelative(FAR, FAR)
        self.session.NotifyPointerMotionRelative(point[0] + 1.0 - SIZE[0], point[1] + 1.0 - SIZE[1])

    def press(self, button, isDown):
        self.session.NotifyPointerButton(BUTTONS[button], isDown)

    def press_key(self, name, isDown):
        self.session.NotifyKeyboardKeycode(KEYS[name], isDown)


class GnomeDesktop(WaylandDesktop):
    """`has_indicators`: whether the extension that shows icons is switched on."""

    def __init__(self, program, has_indicators=True):
        super().__init__(program, "GNOME")
        self.tray_kind = "sni" if has_indicators else "none"
        self.env["GSETTINGS_BACKEND"] = "keyfile"
        try:
            self.write_settings(has_indicators)
            self.start_bus()
            self.start_system_bus()
            self.start_shell(has_indicators)
            self.person = Person(self.env["DBUS_SESSION_BUS_ADDRESS"])
        except BaseException:
            self.close()
            raise

    def write_settings(self, has_indicators):
        folder = pathlib.Path(self.env["XDG_CONFIG_HOME"]) / "glib-2.0/settings"
        folder.mkdir(parents=True)
        (folder / "keyfile").write_text(SETTINGS.format(extensions=f"'{INDICATORS}'" if has_indicators else ""))

    def start_system_bus(self):
        """The shell wants one, and copes with nobody being on it."""
        socket, configuration = self.folder / "system-bus", self.folder / "system-bus.conf"
        configuration.write_text(SYSTEM_BUS.format(socket=socket))
        self.env["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={socket}"
        self.start("system-bus", "dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile", "--nosyslog")
        wait_until("the system bus", socket.exists)

    def start_shell(self, has_indicators):
        self.shell = self.start("shell", "gnome-shell", "--headless", "--wayland", "--wayland-display", "wayland-0",
                                "--virtual-monitor", f"{SIZE[0]}x{SIZE[1]}", "--unsafe-mode")
        self.env["WAYLAND_DISPLAY"] = "wayland-0"
        wait_until("the shell", lambda: self.has_owner(SHELL))
        display = wait_until("the X display", self.x_display)
        cookies = list(pathlib.Path(self.env["XDG_RUNTIME_DIR"]).glob(".mutter-Xwaylandauth.*"))
        self.env.update(DISPLAY=display, **({"XAUTHORITY": str(cookies[0])} if cookies else {}))
        wait_until("XWayland", lambda: "screen #0" in self.ask("xdpyinfo"))
        if has_indicators:
            wait_until("the extension", lambda: "boolean true" in self.watcher_property("IsStatusNotifierHostRegistered"))
        wait_until("the desktop instead of the overview", self.has_left_overview)

    def x_display(self):
        """Known from the sockets on which the shell itself listens."""
        found = re.search(rf"/tmp/\.X11-unix/X(\d+) .*pid={self.shell.pid},", self.ask("ss", "-xlpH"))
        return found and f":{found[1]}"

    def has_left_overview(self):
        properties = "org.freedesktop.DBus.Properties."
        self.call(SHELL, "/org/gnome/Shell", properties + "Set", f"string:{SHELL}", "string:OverviewActive",
                  "variant:boolean:false")
        return "boolean false" in self.call(SHELL, "/org/gnome/Shell", properties + "Get", f"string:{SHELL}",
                                            "string:OverviewActive")

    def take_picture(self, path):
        self.call("org.gnome.Shell.Screenshot", "/org/gnome/Shell/Screenshot", "org.gnome.Shell.Screenshot.Screenshot",
                  "boolean:false", "boolean:false", f"string:{path}")
