#!/usr/bin/env python3
"""Kills velmora at random moments while links are copied, and looks at what is stored afterwards.

Usage: kills.py PROGRAM [KILLS]      KILLS: how many, 100 without it

A cleaning counts as acknowledged when a later one has reached the clipboard: its own record comes before that. After each
kill the store has to open, to be whole, and to hold every acknowledged cleaning; the counter has to agree with the
history. Prints what was lost and ends with 1 if anything was.
"""
import json
import pathlib
import random
import signal
import sqlite3
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from x11_desktop import Desktop  # noqa: E402

KEPT = 30  # Entries of the history.


def stored(desktop):
    """The number of cleanings and the cleaned texts of the history, newest first."""
    path = pathlib.Path(desktop.env["XDG_DATA_HOME"]) / "velmora/defaults.sqlite"
    with sqlite3.connect(path) as connection:
        if connection.execute("PRAGMA integrity_check").fetchone() != ("ok",):
            raise AssertionError("the store is damaged")
        values = dict(connection.execute("SELECT key, value FROM defaults").fetchall())
        lists = dict(connection.execute("SELECT key, rows FROM lists").fetchall())
        pieces = dict(connection.execute("SELECT row, value FROM pieces").fetchall())
    history = values.get("historyEntries", b"[]")
    if "historyEntries" in lists:
        history = b"".join(pieces[int(row)] for row in lists["historyEntries"].split())
    return values.get("totalCleaned", 0), [entry["cleanedText"] for entry in json.loads(history)]


def run_once(desktop, number, rng):
    """Copies until the kill; the numbers of the copies that were made, and of the last that was acknowledged."""
    velmora = desktop.start_velmora()
    desktop.wait_for_velmora()
    end = time.monotonic() + rng.uniform(0.05, 1.5)
    last_cleaned = acknowledged = None
    while time.monotonic() < end:
        number += 1
        desktop.copy(f"https://shop.example/?id={number}&utm_source=mail")
        while time.monotonic() < end:
            if desktop.clipboard() == f"https://shop.example/?id={number}":
                acknowledged, last_cleaned = last_cleaned, number
                break
    desktop.stop(velmora, signal.SIGKILL)
    return number, acknowledged


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__.split("\n\n")[1])
    kills = int(sys.argv[2]) if len(sys.argv) == 3 else 100
    seed = random.randrange(1 << 30)
    rng, number, lost, acknowledged_in_all = random.Random(seed), 0, 0, 0
    with Desktop(str(pathlib.Path(sys.argv[1]).resolve()), tray="none", compositor=False) as desktop:
        for kill in range(kills):
            number, acknowledged = run_once(desktop, number, rng)
            total, history = stored(desktop)
            if len(history) != min(total, KEPT):
                print(f"kill {kill}: {total} counted, {len(history)} in the history", flush=True)
                lost += 1
            if acknowledged is not None:
                acknowledged_in_all += 1
                if f"https://shop.example/?id={acknowledged}" not in history:
                    print(f"kill {kill}: copy {acknowledged} is lost", flush=True)
                    lost += 1
    print(f"{kills} kills (seed {seed}), {number} copies, {acknowledged_in_all} looked for, {lost} lost")
    sys.exit(1 if lost else 0)


if __name__ == "__main__":
    main()
