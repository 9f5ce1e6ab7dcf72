"""A private X11 desktop without a screen, and what a user sees and does on it.

Everything is started for one test and ended with it: X server, session bus, window manager, compositor, panel or
tray, and the program under test. Nothing waits for a fixed time: every wait ends with what it waits for.
"""
import os
import pathlib
import re
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import time

PATIENCE = 20  # Seconds before a wait is given up; a loaded machine needs some.
SIZE = (1280, 800)
PANEL = 32  # Thickness of the panel or tray.
EDGES = {"top": "p=6;x=0;y=0", "bottom": "p=8;x=0;y=0", "left": "p=5;x=0;y=0", "right": "p=1;x=0;y=0"}
WATCHER = "org.kde.StatusNotifierWatcher"


def wait_until(what, condition, patience=PATIENCE):
    """Returns the first true result of `condition`."""
    end = time.monotonic() + patience
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise AssertionError(f"waited {patience} s in vain for: {what}")
        time.sleep(0.02)


class Rect:
    def __init__(self, x, y, width, height):
        self.x, self.y, self.width, self.height = x, y, width, height

    @property
    def right(self):
        return self.x + self.width

    @property
    def bottom(self):
        return self.y + self.height

    @property
    def center(self):
        return self.x + self.width // 2, self.y + self.height // 2

    def inside(self, other):
        return self.x >= other.x and self.y >= other.y and self.right <= other.right and self.bottom <= other.bottom

    def __repr__(self):
        return f"{self.width}x{self.height}+{self.x}+{self.y}"


class Desktop:
    """tray: "sni" is a panel that knows StatusNotifierItem, "xembed" a plain notification area, "none" neither."""

    def __init__(self, program, tray="sni", edge="top", compositor=True, bus=True):
        self.program, self.tray_kind, self.edge = program, tray, edge
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="velmora-desktop-"))
        self.processes = []
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
            wait_until("the window manager", lambda: "window id" in self.ask("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"))
            if compositor:
                self.start("picom", "picom", "--backend", "xrender", "--config", "/dev/null")
                wait_until("the compositor", lambda: self.owns_selection("_NET_WM_CM_S0"))
            self.start_tray()
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
        return (self.folder / f"{name}.log").read_text(errors="replace")

    def ask(self, *command, patience=PATIENCE):
        return subprocess.run(command, env=self.env, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
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

    # Panel and tray

    def start_tray(self):
        if self.tray_kind == "sni":
            self.write_panel_settings()
            self.tray = self.start("panel", "xfce4-panel", "--disable-wm-check")
            wait_until("the panel's host", lambda: "boolean true" in self.watcher_property("IsStatusNotifierHostRegistered"))
        elif self.tray_kind == "xembed":
            self.tray = self.start("panel", "trayer", "--edge", self.edge, "--align", "right", "--widthtype", "pixel",
                                   "--width", "200", "--heighttype", "pixel", "--height", str(PANEL), "--SetDockType",
                                   "true", "--SetPartialStrut", "true", "--expand", "false")
            wait_until("the tray", lambda: self.owns_selection("_NET_SYSTEM_TRAY_S0"))

    def stop_tray(self):
        self.stop(self.tray)

    def write_panel_settings(self):
        folder = pathlib.Path(self.env["XDG_CONFIG_HOME"]) / "xfce4/xfconf/xfce-perchannel-xml"
        folder.mkdir(parents=True, exist_ok=True)
        mode = '<property name="mode" type="uint" value="1"/>' if self.edge in ("left", "right") else ""
        (folder / "xfce4-panel.xml").write_text(f"""<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array"><value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="{EDGES[self.edge]}"/>
      <property name="position-locked" type="bool" value="true"/>{mode}
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

    def owns_selection(self, name):
        code = ("import ctypes, sys; x = ctypes.CDLL('libX11.so.6'); x.XOpenDisplay.restype = ctypes.c_void_p; "
                "d = ctypes.c_void_p(x.XOpenDisplay(None)); x.XGetSelectionOwner.restype = ctypes.c_ulong; "
                "print(x.XGetSelectionOwner(d, ctypes.c_ulong(x.XInternAtom(d, sys.argv[1].encode(), 0))))")
        return self.ask("python3", "-c", code, name).strip() not in ("", "0")

    # The bus

    def call(self, service, path, method, *arguments):
        return self.ask("dbus-send", "--session", "--print-reply", f"--dest={service}", path, method, *arguments)

    def watcher_property(self, name):
        return self.call(WATCHER, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties.Get", f"string:{WATCHER}",
                         f"string:{name}")

    def item_property(self, name):
        return self.call("app.velmora.Velmora", "/StatusNotifierItem", "org.freedesktop.DBus.Properties.Get",
                         "string:org.kde.StatusNotifierItem", f"string:{name}")

    def is_registered(self):
        return "StatusNotifierItem" in self.watcher_property("RegisteredStatusNotifierItems")

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

    def store(self, **values):
        """Changes stored settings while the program does not run but has run before."""
        with sqlite3.connect(pathlib.Path(self.env["XDG_DATA_HOME"]) / "velmora/defaults.sqlite") as connection:
            for key, value in values.items():
                connection.execute("INSERT OR REPLACE INTO defaults(key, type, value) VALUES(?, 'bool', ?)", (key, value))

    # What is to be seen

    def windows(self):
        """(name, class, rectangle) of the visible windows of the program under test, menus of ours included."""
        tree = self.ask("xwininfo", "-root", "-tree")
        found = []
        for number, name, width, height, x, y in re.findall(
                r'(0x[0-9a-f]+) (.*?): \("velmora" "[Vv]elmora"\)\s+(\d+)x(\d+)\+-?\d+\+-?\d+\s+\+(-?\d+)\+(-?\d+)', tree):
            if "IsViewable" in self.ask("xwininfo", "-id", number):
                found.append((number, name, Rect(int(x), int(y), int(width), int(height))))
        return found

    def popover(self):
        return next((rect for _, _, rect in self.windows() if rect.width == 306), None)

    def toast(self):
        return next((rect for _, _, rect in self.windows() if rect.width == 342), None)

    def settings_window(self):
        return next((rect for _, _, rect in self.windows() if rect.width >= 640), None)

    def picture(self, rect):
        """Rows of (red, green, blue)."""
        data = subprocess.run(["import", "-silent", "-window", "root", "-crop",
                               f"{rect.width}x{rect.height}+{rect.x}+{rect.y}", "-depth", "8", "ppm:-"], env=self.env,
                              stdout=subprocess.PIPE, check=True, timeout=PATIENCE).stdout
        header = re.match(rb"P6\s+(\d+)\s+(\d+)\s+255\s", data)
        width, pixels = int(header[1]), data[header.end():]
        return [[tuple(pixels[3 * (row * width + column):][:3]) for column in range(width)]
                for row in range(int(header[2]))]

    def strip(self):
        if self.edge == "top":
            return Rect(0, 0, SIZE[0], PANEL)
        if self.edge == "bottom":
            return Rect(0, SIZE[1] - PANEL, SIZE[0], PANEL)
        if self.edge == "left":
            return Rect(0, 0, PANEL, SIZE[1])
        return Rect(SIZE[0] - PANEL, 0, PANEL, SIZE[1])

    def icon(self):
        """Where the icon is drawn, and how strongly it stands out (0 to 255); nothing while there is none."""
        strip = self.strip()
        if self.tray_kind == "xembed":  # A tray as long as its icons, not as the edge.
            found = [(int(x), int(y), int(w), int(h)) for w, h, x, y in re.findall(
                r'0x[0-9a-f]+ "Velmora[^\n]*?: \("velmora" "Velmora"\)\s+(\d+)x(\d+)\+\d+\+\d+\s+\+(\d+)\+(\d+)',
                self.ask("xwininfo", "-root", "-tree")) if 8 < int(w) <= 64]
            if not found:
                return None
            strip = Rect(*found[0])
        picture = self.picture(strip)
        rows = [row[2:-2] for row in picture[2:-2]]
        ground = max((pixel for row in rows for pixel in row), key=[p for row in rows for p in row].count) \
            if self.tray_kind == "xembed" else rows[0][0]
        marked = [(x + 2, y + 2, max(abs(a - b) for a, b in zip(pixel, ground)))
                  for y, row in enumerate(rows) for x, pixel in enumerate(row)
                  if max(abs(a - b) for a, b in zip(pixel, ground)) > 24]
        if len(marked) < 8:
            return None
        xs, ys = [x for x, _, _ in marked], [y for _, y, _ in marked]
        place = Rect(strip.x + min(xs), strip.y + min(ys), max(xs) - min(xs) + 1, max(ys) - min(ys) + 1)
        if max(place.width, place.height) > PANEL:
            return None  # Not an icon: a panel caught half drawn.
        return place, max(strength for _, _, strength in marked)

    def wait_for_icon(self):
        """Where the icon stands, once two looks in a row find it in one place: panels move their icons while they start."""
        seen = [None]

        def settled():
            seen.append(found := self.icon())
            return found and seen[-2] and repr(found[0]) == repr(seen[-2][0]) and found

        return wait_until("the icon", settled)[0]

    def panel_menu(self):
        """The menu that the panel draws, while it is open."""
        return next((Rect(*map(int, (x, y, width, height))) for width, height, x, y in re.findall(
            r'\("wrapper-2.0" "Wrapper-2.0"\)\s+(\d+)x(\d+)\+-?\d+\+-?\d+\s+\+(-?\d+)\+(-?\d+)',
            self.ask("xwininfo", "-root", "-tree")) if int(height) > 60), None)

    # What the user does

    def move(self, point):
        self.ask("xdotool", "mousemove", str(point[0]), str(point[1]))

    def click(self, point, button=1, times=1):
        self.ask("xdotool", "mousemove", str(point[0]), str(point[1]), "click", "--repeat", str(times), "--delay", "60",
                 str(button))

    def key(self, *names):
        self.ask("xdotool", "key", "--delay", "40", *names)

    def copy(self, text):
        subprocess.run(["xclip", "-selection", "clipboard"], env=self.env, input=text.encode(), check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=PATIENCE)

    def clipboard(self):
        return self.ask("timeout", "2", "xclip", "-o", "-selection", "clipboard")

    def open_listener(self, geometry):
        """A program of another kind: what is typed and clicked into its window can be read afterwards."""
        listener = self.start("listener", "stdbuf", "-oL", "xev", "-geometry", geometry, "-event", "keyboard", "-event",
                              "button")
        wait_until("the listener's window", lambda: "Event Tester" in self.ask("xprop", "-root", "_NET_CLIENT_LIST")
                   or self.ask("xdotool", "search", "--onlyvisible", "--name", "Event Tester").strip())
        window = self.ask("xdotool", "search", "--onlyvisible", "--name", "Event Tester").split()[0]
        self.ask("xdotool", "windowactivate", "--sync", window)
        return listener

    def typed(self):
        return "".join(re.findall(r'KeyPress.*?XLookupString gives 1 bytes: \([0-9a-f]+\) "(.)"', self.log("listener"), re.S))

    def presses(self):
        return self.log("listener").count("ButtonPress event")
