#!/usr/bin/env python3
"""Copies for a long time, opens popovers and settings in between, and looks whether anything grows.

Usage: soak.py PROGRAM [COPIES]      COPIES: how many, 100000 without it

Of 21 copies 20 follow each other without a pause, as programs make them that copy while the user drags; the last one is
waited for until it is cleaned. Every 420 copies the popover is opened and closed, every 4,200 the settings. A line for
each tenth of the copies, taken when the views' engine has been given up a minute after the last view: what the process
has for itself (private pages, of these the written ones), descriptors, threads, resources on the X server, and how long
those copies that were waited for took to be cleaned (median). Ends with 1 when a copy was not cleaned, or when something is
more than a tenth above what it was in the first line; code that no other program shares just now is left out of that.
"""
import ctypes
import pathlib
import statistics
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from x11_desktop import Desktop, wait_until  # noqa: E402
from x11_person import Handle, Number, Pointer  # noqa: E402
from x11_programs import Copier  # noqa: E402

BURST, STRETCHES = 20, 10
POPOVER_EVERY, SETTINGS_EVERY = 20, 200  # Rounds.
REST = 66  # Seconds after which the engine of the last view has gone, and its memory.
RESOURCES = ctypes.CDLL("libXRes.so.1")


class Kind(ctypes.Structure):
    _fields_ = [("name", Handle), ("count", ctypes.c_uint)]


def private_memory(process):
    lines = pathlib.Path(f"/proc/{process.pid}/smaps_rollup").read_text().splitlines()
    mib = {line.split(":")[0]: int(line.split()[1]) / 1024 for line in lines if line.startswith("Private_")}
    return mib["Private_Clean"] + mib["Private_Dirty"], mib["Private_Dirty"]


def x_resources(desktop, window):
    """How many resources of all kinds the owner of a window has on the X server."""
    count, kinds = Number(), ctypes.POINTER(Kind)()
    RESOURCES.XResQueryClientResources(desktop.person.display, Handle(window), ctypes.byref(count), ctypes.byref(kinds))
    total = sum(kinds[number].count for number in range(count.value))
    if kinds:
        ctypes.CDLL("libX11.so.6").XFree(Pointer(ctypes.addressof(kinds.contents)))
    return total


class Soak:
    def __init__(self, desktop):
        self.desktop = desktop
        self.icon = desktop.wait_for_icon()
        self.icon_window = desktop.windows()[0].number
        self.copier = Copier(desktop.env["DISPLAY"])
        self.copies = self.missed = 0
        self.rows = []

    def round(self):
        """A burst of copies and one that is waited for; its seconds."""
        for _ in range(BURST):
            self.copies += 1
            self.copier.copy(b"https://shop.example/?id=%d&utm_source=mail" % self.copies)
        self.copies += 1
        self.copier.copy(b"https://shop.example/?id=%d&utm_source=mail" % self.copies)
        taken = self.copier.wait_until_lost(10)
        self.missed += taken is None
        return taken

    def show_popover(self):
        self.desktop.click(self.icon.center)
        wait_until("the popover", self.desktop.popover)
        time.sleep(0.45)  # Until a click is no longer part of a double click.
        self.desktop.click(self.icon.center)
        wait_until("the popover's end", lambda: not self.desktop.popover())

    def show_settings(self):
        self.desktop.ask(self.desktop.program, "--settings")
        wait_until("the settings", self.desktop.settings_window)
        window = next(window.number for window in self.desktop.windows() if window.rect.width >= 640)
        self.desktop.activate(window)
        self.desktop.key("alt+F4")
        wait_until("the end of the settings", lambda: not self.desktop.settings_window())

    def stretch(self, copies):
        """One line of the table."""
        end, taken, rounds = self.copies + copies, [], self.copies // (BURST + 1)
        while self.copies < end:
            rounds += 1
            seconds = self.round()
            if seconds is not None:
                taken.append(seconds)
            if rounds % SETTINGS_EVERY == 0:
                self.show_settings()
            elif rounds % POPOVER_EVERY == 0:
                self.show_popover()
        wait_until("the notice's end", lambda: not self.desktop.toast())
        time.sleep(REST)
        process = self.desktop.velmora
        private, written = private_memory(process)
        proc = pathlib.Path(f"/proc/{process.pid}")
        row = (private, written, len(list(proc.glob("fd/*"))), len(list(proc.glob("task/*"))),
               x_resources(self.desktop, self.icon_window), statistics.median(taken) * 1000)
        self.rows.append(row)
        print(f"{self.copies:7} copies  {row[0]:5.1f} MiB, {row[1]:5.1f} written  {row[2]:3} descriptors  {row[3]:2} threads  "
              f"{row[4]:3} X resources  cleaned after {row[5]:3.0f} ms", flush=True)

    def growth(self):
        names = ("written memory", "descriptors", "threads", "X resources", "time to clean")
        before, after = self.rows[0][1:], self.rows[-1][1:]
        return [f"{name} grew from {old:.1f} to {new:.1f}" for name, old, new in zip(names, before, after) if new > old * 1.1]


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__.split("\n\n")[1])
    copies = int(sys.argv[2]) if len(sys.argv) == 3 else 100000
    begin = time.monotonic()
    with Desktop(str(pathlib.Path(sys.argv[1]).resolve()), tray="xembed", compositor=False) as desktop:
        desktop.start_velmora()
        soak = Soak(desktop)
        for _ in range(STRETCHES):
            soak.stretch(copies // STRETCHES)
        complaints = soak.growth()
    if soak.missed:
        complaints.append(f"{soak.missed} copies were not cleaned")
    print(f"{soak.copies} copies in {(time.monotonic() - begin) / 60:.0f} minutes")
    for complaint in complaints:
        print(complaint)
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
