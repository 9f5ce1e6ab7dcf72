"""A private Wayland desktop without a screen: sway, with XWayland or without.

A test that uses it calls `as_ordinary_user` first: sway refuses to run as root.
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

from x11_desktop import TIMEOUT, Desktop, wait_until

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


class SwayDesktop(Desktop):
    """sway without a bar. `xwayland`: whether X11 programs can run too; `display` is then the X11 display."""

    def __init__(self, program, xwayland=True):
        self.program, self.tray_kind = program, "none"
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="velmora-sway-"))
        self.processes, self.person = [], None
        self.env = {name: os.environ[name] for name in ("PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "LSAN_OPTIONS")
                    if name in os.environ}
        self.env.update(HOME=str(self.folder), VELMORA_TEST_DESKTOP=str(self.folder), LC_ALL="C.UTF-8",
                        XDG_SESSION_TYPE="wayland", XDG_CURRENT_DESKTOP="sway", NO_AT_BRIDGE="1", LIBGL_ALWAYS_SOFTWARE="1")
        for name in ("RUNTIME_DIR", "CONFIG_HOME", "CACHE_HOME", "DATA_HOME", "STATE_HOME"):
            path = self.folder / name.lower()
            path.mkdir(mode=0o700)
            self.env["XDG_" + name] = str(path)
        pathlib.Path("/tmp/.X11-unix").mkdir(mode=0o1777, exist_ok=True)
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
        configuration.write_text(f"""xwayland {"force" if xwayland else "disable"}
output HEADLESS-1 mode --custom 1280x800@60Hz
exec sh -c 'echo "$WAYLAND_DISPLAY $SWAYSOCK $DISPLAY" > {names}.new; mv {names}.new {names}'
""")
        self.sway = self.start("sway", "sway", "--unsupported-gpu", "-c", configuration, env={
            "WLR_BACKENDS": "headless", "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1",
            "WLR_HEADLESS_OUTPUTS": "1"})
        wait_until("sway", lambda: names.exists() or self.sway.poll() is not None)
        if self.sway.poll() is not None:
            raise AssertionError("sway has ended:\n" + self.log("sway"))
        self.env["WAYLAND_DISPLAY"], self.env["SWAYSOCK"], *display = names.read_text().split()
        if xwayland:
            self.env["DISPLAY"] = display[0]
            wait_until("XWayland", lambda: "screen #0" in self.ask("xdpyinfo"))

    def state(self):
        lines = [f"{process.name}: {process.args}, status {process.poll()}" for process in self.processes]
        for path in sorted(self.folder.glob("*.log")):
            lines += [f"{path.stem}: {line}" for line in self.log(path.stem).splitlines()[-15:]]
        return "\n".join(lines)

    # Programs made for Wayland

    def copy_natively(self, text, kind=None):
        """Copies as such a program does, and returns when the compositor knows."""
        self.wl_copy(text.encode(), *(["--type", kind] if kind else []))

    def wl_copy(self, content, *options):
        subprocess.run(["wl-copy", *options], env=self.env, input=content, check=True, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, timeout=TIMEOUT)

    def paste_natively(self):
        return self.ask("wl-paste", "--no-newline")

    def offered(self):
        """The names under which the clipboard's contents can be had."""
        return self.ask("wl-paste", "--list-types").split()

    def focus_x11_window(self):
        """An X11 program of another kind with the focus: only then sway passes X11 copies on."""
        self.start("listener", "xev", "-event", "keyboard")
        wait_until("the listener's focus", lambda: self.focused() == "Event Tester")

    def focused(self):
        """The name of the window with the focus."""
        nodes = [json.loads(self.ask("swaymsg", "-r", "-t", "get_tree"))]
        for node in nodes:
            if node["focused"]:
                return node["name"]
            nodes += node["nodes"] + node["floating_nodes"]
        return None

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
