#!/usr/bin/env python3
"""Copies two hundred times a second for a minute, and looks whether the program keeps up.

Usage: rush.py PROGRAM [SECONDS]      SECONDS: how long, 60 without it

The last copy has to be cleaned within a second. What was cleaned on the way has to be counted as often as it stood on the
clipboard. Prints the processor's time that the program took.
"""
import pathlib
import sqlite3
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from misbehaviour import written_memory  # noqa: E402
from x11_desktop import Desktop  # noqa: E402
from x11_programs import SELECTION_CLEAR, Copier  # noqa: E402

PAUSE = 1 / 200


def processor_seconds(process):
    fields = pathlib.Path(f"/proc/{process.pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / 100


def rush(copier, seconds):
    """How many copies were made, and how often another program took the clipboard from one."""
    begin, copies, taken = time.monotonic(), 0, 0
    while (now := time.monotonic()) < begin + seconds:
        copies += 1
        copier.copy(b"https://shop.example/?id=%d&utm_source=mail" % copies)
        while (left := begin + copies * PAUSE - now) > 0:
            event = copier.next_event(left)
            if event is not None:
                taken += event.kind == SELECTION_CLEAR
                copier.handle(event)
            now = time.monotonic()
    return copies, taken


def counted(desktop):
    path = pathlib.Path(desktop.env["XDG_DATA_HOME"]) / "velmora/defaults.sqlite"
    with sqlite3.connect(path) as connection:
        found = connection.execute("SELECT value FROM defaults WHERE key='totalCleaned'").fetchone()
    return found[0] if found else 0


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__.split("\n\n")[1])
    seconds = int(sys.argv[2]) if len(sys.argv) == 3 else 60
    with Desktop(str(pathlib.Path(sys.argv[1]).resolve()), tray="none", compositor=False) as desktop:
        velmora = desktop.start_velmora()
        desktop.wait_for_velmora()
        desktop.settle()
        before, used = written_memory(velmora), processor_seconds(velmora)
        with Copier(desktop.env["DISPLAY"]) as copier:
            copies, taken = rush(copier, seconds)
            copier.copy(b"https://shop.example/?id=last&utm_source=mail")
            waited = copier.wait_until_lost(1)
        used = processor_seconds(velmora) - used
        is_clean = desktop.clipboard() == "https://shop.example/?id=last"
        time.sleep(8)  # Until the last notice has gone, and its memory.
        after, total, said = written_memory(velmora), counted(desktop), desktop.log("velmora")
    taken += waited is not None
    print(f"{copies} copies in {seconds} s, {taken} cleaned, {total} counted, {used:.1f} s of the processor; "
          f"written memory {before:.1f} MiB before, {after:.1f} MiB after")
    sys.exit(f"it said:\n{said}" if said else 0 if is_clean and waited is not None and total == taken else 1)


if __name__ == "__main__":
    main()
