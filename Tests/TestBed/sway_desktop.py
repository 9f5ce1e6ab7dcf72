"""sway without a screen, with XWayland or without. It refuses to run as root, see `as_ordinary_user`.
"""
import json
import os
import subprocess

from wayland_desktop import WaylandDesktop
from wayland_person import Person
from x11_desktop import PANEL, SIZE, TIMEOUT, wait_until
from x11_person import Rect


class SwayDesktop(WaylandDesktop):
    """sway, side by side on as many screens as there are `scales`; `bar` is the edge at which swaybar shows icons.

    `xwayland`: whether X11 programs can run too; `display` is then the X11 display."""

    def __init__(self, program, xwayland=True, bar=None, scales=(1,)):
        super().__init__(program, "sway")
        self.tray_kind, self.bar, self.scales = "sni" if bar else "none", bar, scales
        try:
            self.start_bus()
            self.start_sway(xwayland)
        except BaseException:
            self.close()
            raise

    def start_sway(self, xwayland):
        """sway alone knows its displays, so it writes them down itself."""
        names = self.folder / "displays"
        configuration = self.folder / "sway.conf"
        outputs = "\n".join(f"output HEADLESS-{number} mode --custom {round(SIZE[0] * scale)}x{round(SIZE[1] * scale)}@60Hz "
                            f"scale {scale} position {SIZE[0] * (number - 1)} 0"
                            for number, scale in enumerate(self.scales, 1))
        configuration.write_text(f"""xwayland {"force" if xwayland else "disable"}
{outputs}
seat * hide_cursor 100
{self.bar_configuration()}
exec sh -c 'echo "$WAYLAND_DISPLAY $SWAYSOCK $DISPLAY" > {names}.new; mv {names}.new {names}'
""")
        self.sway = self.start("sway", "sway", "--unsupported-gpu", "-c", configuration, env={
            "WLR_BACKENDS": "headless", "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1",
            "WLR_HEADLESS_OUTPUTS": str(len(self.scales))})
        wait_until("sway", lambda: names.exists() or self.sway.poll() is not None)
        if self.sway.poll() is not None:
            raise AssertionError("sway has ended:\n" + self.log("sway"))
        self.env["WAYLAND_DISPLAY"], self.env["SWAYSOCK"], *display = names.read_text().split()
        if xwayland:
            self.env["DISPLAY"] = display[0]
            wait_until("XWayland", lambda: "screen #0" in self.ask("xdpyinfo"))
        self.person = Person(self.env, (SIZE[0] * len(self.scales), SIZE[1]))
        if self.bar:
            wait_until("the bar's host", lambda: "boolean true" in self.watcher_property("IsStatusNotifierHostRegistered"))

    def bar_configuration(self):
        if not self.bar:
            return ""
        return f"bar {{\n position {self.bar}\n height {PANEL}\n tray_output *\n status_command sleep 3600\n}}"

    def key(self, *names):
        for name in names:
            self.person.tap_key(name)

    def focus_by_click_only(self):
        """By default the focus follows the mouse."""
        self.ask("swaymsg", "focus_follows_mouse", "no")

    def rest_in_x11_window(self, point):
        """Moves the mouse over the white window of an X11 program and leaves it there until sway hides it.

        XWayland loses a press that follows the move at once, as no person's does, when the focus moves with it."""
        arrow = Rect(*point, 8, 12)

        def is_hidden():
            return all(pixel == (255, 255, 255) for row in self.picture(arrow) for pixel in row)

        self.move(point)
        wait_until("the mouse", lambda: not is_hidden())
        wait_until("the mouse at rest", is_hidden)

    def icon_place(self, screen=0):
        """The first icon of the bar."""
        return SIZE[0] * (screen + 1) - PANEL // 2, PANEL // 2 if self.bar == "top" else SIZE[1] - PANEL // 2

    def focused_screen(self):
        outputs = json.loads(self.ask("swaymsg", "-r", "-t", "get_outputs"))
        return next((output["rect"]["x"] // SIZE[0] for output in outputs if output["focused"]), None)

    def focus_x11_window(self):
        """An X11 program of another kind with the focus: only then sway passes X11 copies on."""
        self.start("listener", "stdbuf", "-oL", "xev", "-event", "keyboard", "-event", "button")
        wait_until("the listener's focus", lambda: self.focused() == "Event Tester")
        middle = Rect(SIZE[0] // 2, SIZE[1] // 2, 1, 1)
        wait_until("its picture", lambda: self.picture(middle) == [[(255, 255, 255)]])

    def nodes(self):
        """Everything that sway arranges: screens, workspaces, windows."""
        nodes = [json.loads(self.ask("swaymsg", "-r", "-t", "get_tree"))]
        for node in nodes:
            nodes += node["nodes"] + node["floating_nodes"]
        return nodes

    def focused(self):
        """The name of the window with the focus."""
        return next((node["name"] for node in self.nodes() if node["focused"]), None)

    def arranged_windows(self):
        """The names of the windows that sway has given a place; panels are none of them."""
        return [node["name"] for node in self.nodes() if node["type"] in ("con", "floating_con") and node.get("pid")]

    def state(self):
        arranged = [f"{node['type']} {node['name']}, {'focused' if node['focused'] else 'not focused'}, {node['rect']}"
                    for node in self.nodes()]
        return "\n".join([super().state(), *arranged, self.ask("xwininfo", "-root", "-tree")])

    # What is to be seen

    def pixels(self, rect):
        """Width, height and the bytes of a part of one screen, at that screen's scale; three bytes a pixel."""
        data = subprocess.run(["grim", "-t", "ppm", "-g", f"{rect.x},{rect.y} {rect.width}x{rect.height}", "-"],
                              env=self.env, check=True, stdout=subprocess.PIPE, timeout=TIMEOUT).stdout
        width, height = (int(word) for word in data.split(maxsplit=3)[1:3])
        return width, height, data[-3 * width * height:]

    def picture(self, rect):
        width, height, data = self.pixels(rect)
        return [[tuple(data[3 * x:3 * x + 3]) for x in range(y * width, (y + 1) * width)] for y in range(height)]

    def is_drawn_at(self, place):
        """Whether something stands out from its ground around a place in the bar."""
        _, _, data = self.pixels(Rect(place[0] - 8, place[1] - 8, 16, 16))
        return max(data) - min(data) > 60

    def free_area(self, screen=0):
        """A screen without its bar."""
        return Rect(SIZE[0] * screen, PANEL if self.bar == "top" else 0, SIZE[0], SIZE[1] - (PANEL if self.bar else 0))

    def seen(self, screen=0):
        """Where something stands out from the empty desktop, in points of the whole desktop; nothing when it is empty."""
        free = self.free_area(screen)
        width, height, data = self.pixels(free)
        rows = [data[3 * width * y:3 * width * (y + 1)] for y in range(height)]
        ground = rows[height // 2][:3] * width
        marked = [y for y, row in enumerate(rows) if row != ground]
        if not marked:
            return None
        left = min(len(os.path.commonprefix([rows[y], ground])) for y in marked) // 3
        right = width - min(len(os.path.commonprefix([rows[y][::-1], ground])) for y in marked) // 3
        scale = self.scales[screen]
        return Rect(free.x + round(left / scale), free.y + round(marked[0] / scale), round((right - left) / scale),
                    round((marked[-1] + 1 - marked[0]) / scale))
