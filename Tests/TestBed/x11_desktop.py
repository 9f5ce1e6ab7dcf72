"""A private X11 desktop without a screen, and what a user sees and does on it.

Everything is started for one test and ended with it: X server, session bus, window manager, compositor, panel or
tray, and the program under test. Nothing waits for a fixed time: every wait ends with what it waits for, and what
several programs do together has ended when none of them runs any more.
"""
import contextlib
import os
import pathlib
import re
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import time

from x11_person import Person, Rect

TIMEOUT = 20  # Seconds before a wait is given up; a loaded machine needs some.
SIZE = (1280, 800)
SCREEN = Rect(0, 0, *SIZE)
PANEL = 32  # Thickness of the panel or tray.
EDGES = {"top": "p=6;x=0;y=0", "bottom": "p=8;x=0;y=0", "left": "p=5;x=0;y=0", "right": "p=1;x=0;y=0"}
WATCHER = "org.kde.StatusNotifierWatcher"
QUIET = 0.15  # Seconds without any thread running after which the desktop counts as idle.
TRAY_ICONS = {"sni": ("wrapper-2.0", "Wrapper-2.0"), "xembed": ("velmora", "Velmora")}  # Windows that hold our icon.


def wait_until(what, condition, patience=TIMEOUT):
    """Returns the first true result of `condition`."""
    end = time.monotonic() + patience
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise AssertionError(f"waited {patience} s in vain for: {what}")
        time.sleep(0.02)


class Desktop:
    """tray: "sni" is a panel that knows StatusNotifierItem, "xembed" a plain notification area, which may be dark, "none"
    neither."""
    screen = SCREEN

    def __init__(self, program, tray="sni", edge="top", compositor=True, bus=True, dark_tray=False):
        self.program, self.tray_kind, self.edge = program, tray, edge
        self.tray_look = ["--transparent", "true", "--alpha", "0", "--tint", "0x101014"] if dark_tray else []
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="velmora-desktop-"))
        self.processes, self.person = [], None
        self.env = {name: os.environ[name] for name in ("PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "LSAN_OPTIONS")
                    if name in os.environ}
        self.env.update(HOME=str(self.folder), VELMORA_TEST_DESKTOP=str(self.folder), LC_ALL="C.UTF-8",
                        XDG_SESSION_TYPE="x11", XDG_CURRENT_DESKTOP="XFCE" if tray == "sni" else "X-Generic",
                        QT_QPA_PLATFORM="xcb", GDK_BACKEND="x11", NO_AT_BRIDGE="1", LIBGL_ALWAYS_SOFTWARE="1")
        for name in ("RUNTIME_DIR", "CONFIG_HOME", "CACHE_HOME", "DATA_HOME", "STATE_HOME"):
            path = self.folder / name.lower()
            path.mkdir(mode=0o700)
            self.env["XDG_" + name] = str(path)
        try:
            if bus:
                self.start_bus()
            self.start_server()
            self.start("openbox", "openbox")
            wait_until("the window manager", lambda: self.person.words("_NET_SUPPORTING_WM_CHECK"))
            self.settle()
            if compositor:
                self.start_compositor()
                self.settle()
            self.start_tray()
            self.settle()
        except BaseException:
            self.close()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    # Processes

    def start(self, name, *command, **options):
        with open(self.folder / f"{name}.log", "ab") as log:
            process = subprocess.Popen(command, env={**self.env, **options.pop("env", {})}, stdin=subprocess.DEVNULL,
                                       stdout=log, stderr=subprocess.STDOUT, **options)
        process.name = name
        self.processes.append(process)
        return process

    def log(self, name):
        path = self.folder / f"{name}.log"
        return path.read_text(errors="replace") if path.exists() else ""

    def complaints(self):
        """What the program has written, without what newer Qt says of its surroundings: that the locale of a test is not
        installed, and that a screen reader asks about something that was there a moment ago."""
        said = re.sub(r"Detected locale .*\n(Qt depends .*\n)(If this .*\n)(for more .*\n)", "", self.log("velmora"))
        return re.sub(r"qt\.accessibility\.atspi: Could not find accessible on path: .*\n", "", said)

    def state(self):
        """For the report of a failure: processes, windows and output."""
        lines = [f"{process.name}: {process.args}, status {process.poll()}" for process in self.processes]
        lines += [f"window {window.number:#x} {window.kind} {window.rect}" for window in self.person.windows()]
        for path in sorted(self.folder.glob("*.log")):
            lines += [f"{path.stem}: {line}" for line in self.log(path.stem).splitlines()[-15:]]
        return "\n".join(lines)

    def ask(self, *command, patience=TIMEOUT):
        return subprocess.run([str(word) for word in command], env=self.env, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, timeout=patience, check=False).stdout.decode(errors="replace")

    def stop(self, process, how=signal.SIGTERM):
        if process.poll() is None:
            process.send_signal(how)
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
        process.wait()
        self.processes.remove(process)

    def close(self):
        if self.person:
            self.person.close()
            self.person = None
        for process in reversed(list(self.processes)):
            self.stop(process)
        for pid in self.stragglers():
            os.kill(pid, signal.SIGKILL)
        shutil.rmtree(self.folder, ignore_errors=True)

    def stragglers(self):
        """What our programs started on their own, such as services of the bus."""
        mark = f"VELMORA_TEST_DESKTOP={self.folder}".encode()
        for environment in pathlib.Path("/proc").glob("[0-9]*/environ"):
            try:
                if mark in environment.read_bytes().split(b"\0"):
                    yield int(environment.parent.name)
            except OSError:
                continue

    def activity(self):
        """How often each thread of the desktop has been scheduled; nothing while one is running or runnable."""
        counts = {}
        for pid in self.stragglers():
            for status in pathlib.Path(f"/proc/{pid}/task").glob("*/status"):
                try:
                    fields = dict(line.split(":\t", 1) for line in status.read_text().splitlines() if ":\t" in line)
                except OSError:
                    return None
                if fields["State"][0] not in "SIZT":
                    return None
                counts[status.parent.name] = fields["voluntary_ctxt_switches"], fields["nonvoluntary_ctxt_switches"]
        return counts

    def settle(self):
        """Waits until every program of the desktop is idle."""
        def is_quiet():
            before = self.activity()
            time.sleep(QUIET)
            return before and before == self.activity()

        wait_until("a quiet desktop", is_quiet)

    def start_bus(self):
        socket = pathlib.Path(self.env["XDG_RUNTIME_DIR"]) / "bus"
        self.env["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={socket}"
        self.start("bus", "dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address=unix:path={socket}")
        wait_until("the session bus", socket.exists)

    def start_server(self):
        reading, writing = os.pipe()
        self.start("server", "Xvfb", "-displayfd", str(writing), "-screen", "0", f"{SIZE[0]}x{SIZE[1]}x24", "-dpi",
                   "96", "-nolisten", "tcp", "-noreset", pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as pipe:
            self.env["DISPLAY"] = ":" + pipe.readline().strip()
        self.person = Person(self.env["DISPLAY"])
        # A keyboard's first key makes the server announce the keyboard, and programs then grab their keys again:
        # the first key that counts is not to fall into that.
        self.person.tap_key("Shift_L")

    def start_compositor(self):
        # Newer ones draw by themselves what has changed only, and leave what is around it black now and then.
        self.compositor = self.start("picom", "picom", "--backend", "xrender", "--config", "/dev/null", "--no-use-damage")
        wait_until("the compositor", lambda: self.person.owns_selection("_NET_WM_CM_S0"))

    # Panel and tray

    def start_tray(self):
        if self.tray_kind == "sni":
            self.write_panel_settings()
            self.tray = self.start("panel", "xfce4-panel", "--disable-wm-check")
            wait_until("the panel's host", lambda: "boolean true" in self.watcher_property("IsStatusNotifierHostRegistered"))
        elif self.tray_kind == "xembed":
            self.tray = self.start("panel", "trayer", "--edge", self.edge, "--align", "right", "--widthtype", "pixel",
                                   "--width", "200", "--heighttype", "pixel", "--height", str(PANEL), "--SetDockType",
                                   "true", "--SetPartialStrut", "true", "--expand", "false", *self.tray_look)
            wait_until("the tray", lambda: self.person.owns_selection("_NET_SYSTEM_TRAY_S0"))

    def stop_tray(self):
        self.stop(self.tray)
        if self.tray_kind == "sni":
            wait_until("the end of the panel's host", lambda: not self.has_owner(WATCHER))

    def write_panel_settings(self):
        folder = pathlib.Path(self.env["XDG_CONFIG_HOME"]) / "xfce4/xfconf/xfce-perchannel-xml"
        folder.mkdir(parents=True, exist_ok=True)
        (folder / "xfce4-panel.xml").write_text(f"""<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array"><value type="int" value="1"/>
    <property name="panel-1" type="empty">
      {self.panel_place()}
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="{PANEL}"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/><value type="int" value="2"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/><property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="systray"/>
  </property>
</channel>
""")

    def panel_place(self):
        """The panel's properties that say where it stands."""
        mode = '<property name="mode" type="uint" value="1"/>' if self.edge in ("left", "right") else ""
        return f'<property name="position" type="string" value="{EDGES[self.edge]}"/>{mode}'

    # The bus

    def call(self, service, path, method, *arguments):
        return self.ask("dbus-send", "--session", "--print-reply", f"--dest={service}", path, method, *arguments)

    def has_owner(self, service):
        return "boolean true" in self.call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                           "org.freedesktop.DBus.NameHasOwner", f"string:{service}")

    def watch_bus(self, rule):
        """Records the bus messages that match the rule; `heard` returns them."""
        self.start("monitor", "stdbuf", "-oL", "dbus-monitor", "--session", "--profile", rule)
        wait_until("the monitor of the bus", lambda: "NameLost" in self.log("monitor"))

    def heard(self, member):
        """The times, in seconds, of the messages of that name."""
        return [float(line.split("\t")[1]) for line in self.log("monitor").splitlines() if line.split("\t")[-1] == member]

    def watcher_property(self, name):
        return self.call(WATCHER, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties.Get", f"string:{WATCHER}",
                         f"string:{name}")

    def item_property(self, name):
        return self.call("app.velmora.Velmora", "/StatusNotifierItem", "org.freedesktop.DBus.Properties.Get",
                         "string:org.kde.StatusNotifierItem", f"string:{name}")

    def catch_up(self):
        """Returns when the program has run its event loop once: what was due before this call has happened."""
        for _ in range(2):
            if "string" not in self.item_property("Id"):
                raise AssertionError("the program does not answer")

    def menu(self):
        """The exported menu: titles by number, in order."""
        layout = self.call("app.velmora.Velmora", "/StatusMenu", "com.canonical.dbusmenu.GetLayout", "int32:0", "int32:-1",
                           "array:string:label")
        return {title: int(number) for number, title in
                re.findall(r'int32 (\d+)\s+array \[\s+dict entry\(\s+string "label"\s+variant\s+string "([^"]*)"', layout)}

    def is_checked(self, title):
        return "int32 1" in self.call("app.velmora.Velmora", "/StatusMenu", "com.canonical.dbusmenu.GetProperty",
                                      f"int32:{self.menu()[title]}", "string:toggle-state")

    def choose(self, title):
        self.call("app.velmora.Velmora", "/StatusMenu", "com.canonical.dbusmenu.Event", f"int32:{self.menu()[title]}",
                  "string:clicked", "variant:int32:0", "uint32:0")

    # The program

    def start_velmora(self, **environment):
        self.velmora = self.start("velmora", self.program, env=environment)
        return self.velmora

    def wait_for_velmora(self):
        """Its name on the bus comes earlier: what is copied then was there before it looked."""
        wait_until("the program", lambda: "string" in self.item_property("Id"))

    def store(self, **values):
        """Changes stored settings while the program does not run but has run before."""
        path = pathlib.Path(self.env["XDG_DATA_HOME"]) / "velmora/defaults.sqlite"
        with contextlib.closing(sqlite3.connect(path)) as connection, connection:
            for key, value in values.items():
                connection.execute("INSERT OR REPLACE INTO defaults(key, type, value) VALUES(?, 'bool', ?)", (key, value))

    # What is to be seen

    def windows(self):
        """The visible windows of the program under test, menus of ours included."""
        return [window for window in self.person.windows() if window.kind[0] == "velmora"]

    def window_of_width(self, fits):
        return next((window.rect for window in self.windows() if fits(window.rect.width)), None)

    def popover(self):
        return self.window_of_width(lambda width: width == 306)

    def popover_for_keys(self):
        """The popover, once it has the keyboard and the knob of its switch is drawn. It is never at rest."""
        owner = self.person.keyboard_owner()
        rect = next((window.rect for window in self.windows() if window.rect.width == 306 and window.number == owner), None)
        return rect if rect and min(self.picture(Rect(rect.right - 29, rect.y + 33, 1, 1))[0][0]) > 200 else None

    def toast(self):
        return self.window_of_width(lambda width: width == 342)

    def settings_window(self):
        return self.window_of_width(lambda width: width >= 640)

    def picture(self, rect):
        return self.person.picture(rect)

    def icon(self):
        """Where the icon is drawn, and how strongly it stands out (0 to 255); nothing while there is none."""
        areas = (window.rect.within(self.screen) for window in self.person.windows()
                 if window.kind == TRAY_ICONS[self.tray_kind])
        area = next((area for area in areas if 8 < area.width <= 2 * PANEL and 8 < area.height <= 2 * PANEL), None)
        if area is None:
            return None
        rows = self.picture(area)
        pixels = [pixel for row in rows for pixel in row]
        ground = max(set(pixels), key=pixels.count)
        marked = [(x, y, contrast) for y, row in enumerate(rows) for x, pixel in enumerate(row)
                  if (contrast := max(abs(a - b) for a, b in zip(pixel, ground))) > 24]
        if len(marked) < 8:
            return None
        xs, ys = [x for x, _, _ in marked], [y for _, y, _ in marked]
        place = Rect(area.x + min(xs), area.y + min(ys), max(xs) - min(xs) + 1, max(ys) - min(ys) + 1)
        return place, max(contrast for _, _, contrast in marked)

    def wait_for_icon(self):
        """Where the icon stands when everything that moves it has come to rest."""
        wait_until("the icon", self.icon)
        self.settle()
        return wait_until("the icon", self.icon)[0]

    def panel_menu(self):
        """The menu that the panel draws, while it is open."""
        return next((window.rect for window in self.person.windows()
                     if window.kind == TRAY_ICONS["sni"] and window.rect.height > 60), None)

    # What the user does

    def move(self, point):
        self.person.move(point)

    def click(self, point, button=1):
        self.person.click(point, button)

    def key(self, *names):
        self.ask("xdotool", "key", "--delay", "40", *names)

    def copy(self, text):
        subprocess.run(["xclip", "-selection", "clipboard"], env=self.env, input=text.encode(), check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=TIMEOUT)

    def begin_copy(self, text):
        """Returns before the text is on the clipboard."""
        path = self.folder / "copied"
        path.write_text(text)
        self.start("copy", "xclip", "-selection", "clipboard", path)

    def clipboard(self):
        return self.ask("xclip", "-o", "-selection", "clipboard")

    def activate(self, window):
        """Gives a program's window the keyboard."""
        self.ask("xdotool", "windowactivate", window)
        wait_until("the active window", lambda: self.person.words("_NET_ACTIVE_WINDOW") == [window])

    def open_listener(self, geometry):
        """A program of another kind: what is typed and clicked into its window can be read afterwards."""
        self.start("listener", "stdbuf", "-oL", "xev", "-geometry", geometry, "-event", "keyboard", "-event", "button")
        window = wait_until("the listener's window", lambda: self.person.titled("Event Tester"))
        self.settle()
        self.activate(window)

    def typed(self):
        return "".join(re.findall(r'KeyPress.*?XLookupString gives 1 bytes: \([0-9a-f]+\) "(.)"', self.log("listener"), re.S))

    def presses(self):
        return self.log("listener").count("ButtonPress event")
