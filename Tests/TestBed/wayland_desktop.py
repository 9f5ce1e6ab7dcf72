"""What all private Wayland desktops without a screen have in common: surroundings, copying and pasting."""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

from x11_desktop import PANEL, TIMEOUT, Desktop, wait_until

ORDINARY_USER = "VELMORA_TEST_ORDINARY_USER"


def as_ordinary_user():
    """Runs the present script again as somebody else when it runs as root, in a user namespace where there are some."""
    if os.geteuid() != 0 or ORDINARY_USER in os.environ:
        return
    os.environ[ORDINARY_USER] = "1"
    namespace = ["unshare", "--user", "--map-user=1000", "--map-group=1000"]
    if subprocess.run([*namespace, "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0:
        command = [*namespace, "--"]
    else:
        command = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--"]
    os.execvp(command[0], [*command, sys.executable, *sys.orig_argv[1:]])


class WaylandDesktop(Desktop):
    """`name`: as in XDG_CURRENT_DESKTOP. What starts the compositor comes with each kind."""

    def __init__(self, program, name):
        self.program = program
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix=f"velmora-{name.lower()}-"))
        self.processes, self.person = [], None
        self.env = {name: os.environ[name] for name in ("PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "LSAN_OPTIONS")
                    if name in os.environ}
        self.env.update(HOME=str(self.folder), VELMORA_TEST_DESKTOP=str(self.folder), LC_ALL="C.UTF-8",
                        XDG_SESSION_TYPE="wayland", XDG_CURRENT_DESKTOP=name, NO_AT_BRIDGE="1", LIBGL_ALWAYS_SOFTWARE="1")
        for kind in ("RUNTIME_DIR", "CONFIG_HOME", "CACHE_HOME", "DATA_HOME", "STATE_HOME"):
            path = self.folder / kind.lower()
            path.mkdir(mode=0o700)
            self.env["XDG_" + kind] = str(path)
        pathlib.Path("/tmp/.X11-unix").mkdir(mode=0o1777, exist_ok=True)

    def state(self):
        lines = [f"{process.name}: {process.args}, status {process.poll()}" for process in self.processes]
        for path in sorted(self.folder.glob("*.log")):
            lines += [f"{path.stem}: {line}" for line in self.log(path.stem).splitlines()[-15:]]
        return "\n".join(lines)

    def start_waybar(self, edge):
        """The bar that shows icons on any compositor with layer-shell; its only module is the tray."""
        configuration, style = self.folder / "waybar.json", self.folder / "waybar.css"
        side = "width" if edge in ("left", "right") else "height"
        configuration.write_text(json.dumps({"layer": "top", "position": edge, side: PANEL, "modules-right": ["tray"],
                                             "tray": {"icon-size": 18}}))
        style.write_text("* { font-family: sans; } window#waybar { background: #f6f5f4; }")
        self.start("waybar", "waybar", "-c", str(configuration), "-s", str(style))
        wait_until("the bar's host", lambda: "boolean true" in self.watcher_property("IsStatusNotifierHostRegistered"))

    # Programs made for Wayland

    def copy_natively(self, text, kind=None):
        """Copies as such a program does, and returns when the compositor knows."""
        self.wl_copy(text.encode(), *(["--type", kind] if kind else []))

    def wl_copy(self, content, *options):
        subprocess.run(["wl-copy", *options], env=self.env, input=content, check=True, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, timeout=TIMEOUT)

    def paste_natively(self, patience=TIMEOUT):
        return self.ask("wl-paste", "--no-newline", patience=patience)

    def offered(self):
        """The names under which the clipboard's contents can be had."""
        return self.ask("wl-paste", "--list-types").split()

    def keepers(self):
        """The processes that keep a text after its program has ended."""
        found = []
        for pid in self.stragglers():
            try:
                if b"--keep-clipboard" in pathlib.Path(f"/proc/{pid}/cmdline").read_bytes().split(b"\0"):
                    found.append(pid)
            except OSError:
                continue
        return found
