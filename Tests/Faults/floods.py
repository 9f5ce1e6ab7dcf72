#!/usr/bin/env python3
"""Floods velmora with requests and measures how long it takes from SIGTERM to its end.

Usage: floods.py PROGRAM [ROUNDS]      ROUNDS: of each kind, 5 without it

Three kinds: none, two programs that paste without waiting for answers, three that call a method on the bus likewise.
"""
import pathlib
import signal
import statistics
import subprocess
import sys
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from bus_client import BusClient  # noqa: E402
from x11_desktop import Desktop, wait_until  # noqa: E402
from x11_person import LIBRARY, Handle, Pointer  # noqa: E402

LIBRARY.XCreateSimpleWindow.restype = Handle


class Flood(threading.Thread):
    def __init__(self):
        super().__init__(daemon=True)
        self.stopping = False

    def run(self):
        try:
            while not self.stopping:
                self.pour()
        except OSError:
            pass  # Its receiver has ended.

    def stop(self):
        self.stopping = True
        self.join(5)


class Pastes(Flood):
    def __init__(self, desktop):
        super().__init__()
        self.server = Pointer(LIBRARY.XOpenDisplay(desktop.env["DISPLAY"].encode()))
        root = Handle(LIBRARY.XDefaultRootWindow(self.server))
        self.window = Handle(LIBRARY.XCreateSimpleWindow(self.server, root, 0, 0, 1, 1, 0, Handle(0), Handle(0)))
        self.atoms = [Handle(LIBRARY.XInternAtom(self.server, name, 0)) for name in (b"CLIPBOARD", b"UTF8_STRING", b"PASTED")]

    def pour(self):
        for _ in range(500):
            LIBRARY.XConvertSelection(self.server, *self.atoms, self.window, Handle(0))
        LIBRARY.XSync(self.server, 1)


class Calls(Flood):
    def __init__(self, desktop):
        super().__init__()
        self.bus = BusClient(desktop.env["DBUS_SESSION_BUS_ADDRESS"])

    def pour(self):
        self.bus.send(b"".join(self.bus.call("app.velmora.Velmora", "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Scroll")
                               for _ in range(200)))


def time_to_end(program, kind, count):
    with Desktop(program, tray="none", compositor=False) as desktop:
        velmora = desktop.start_velmora()
        wait_until("the program", lambda: desktop.has_owner("app.velmora.Velmora"))
        desktop.settle()
        desktop.copy("https://shop.example/?id=1&utm_source=mail")
        wait_until("the cleaned link", lambda: desktop.clipboard() == "https://shop.example/?id=1")
        floods = [kind(desktop) for _ in range(count)]
        for flood in floods:
            flood.start()
        time.sleep(1)
        begin = time.monotonic()
        velmora.send_signal(signal.SIGTERM)
        try:
            velmora.wait(20)
        except subprocess.TimeoutExpired:
            pass
        elapsed = (time.monotonic() - begin) * 1000
        for flood in floods:
            flood.stop()
        return elapsed


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__.split("\n\n")[1])
    program = str(pathlib.Path(sys.argv[1]).resolve())
    rounds = int(sys.argv[2]) if len(sys.argv) == 3 else 5
    for name, kind, count in (("no flood", None, 0), ("pastes", Pastes, 2), ("calls on the bus", Calls, 3)):
        times = [time_to_end(program, kind, count) for _ in range(rounds)]
        print(f"{name:18} SIGTERM to the end: median {statistics.median(times):.0f} ms, longest {max(times):.0f} ms", flush=True)


if __name__ == "__main__":
    main()
