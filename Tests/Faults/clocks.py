#!/usr/bin/env python3
"""Moves the clock while velmora runs and the time zone between its starts, and looks at what is counted for which day.

Usage: clocks.py PROGRAM LIBRARY      LIBRARY: libvelmora-shifted-clock.so of the build

Behind each move two copies have to be cleaned; the store has to name the day that it is then, there, and to count the
cleanings since that day began. The C library reads the zone once in a process, so another zone is another start.
"""
import datetime
import os
import pathlib
import sqlite3
import struct
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from x11_desktop import Desktop, wait_until  # noqa: E402

UTC, EAST, WEST = "UTC", "Pacific/Kiritimati", "Pacific/Pago_Pago"  # The earliest and the latest days on earth.
MOVES = (  # Name, moment in UTC, zone.
    ("an ordinary evening", "2026-03-07 23:59:30", UTC),
    ("midnight", "2026-03-08 00:00:10", UTC),
    ("back over midnight", "2026-03-07 23:59:40", UTC),
    ("a zone where it is tomorrow", "2026-03-07 23:59:50", EAST),
    ("a zone where it is yesterday", "2026-03-08 00:00:20", WEST),
    ("back home", "2026-03-08 00:00:30", UTC),
    ("an hour that summer time leaves out", "2026-03-29 01:30:00", "Europe/Berlin"),
    ("a year back", "2025-03-08 12:00:00", UTC),
    ("the beginning of 1970", "1970-01-01 00:00:05", UTC),
    ("before the beginning of 1970, there", "1970-01-01 00:00:10", WEST),
    ("the end of 32 bits", "2038-01-19 03:14:05", UTC),
    ("behind the end of 32 bits", "2038-01-19 03:14:20", UTC),
    ("the end of 32 bits without a sign", "2106-02-07 06:28:20", UTC),
    ("the year 9999", "9999-12-30 12:00:00", UTC),
    ("today again", "2026-03-08 12:00:00", UTC),
)


class Clock:
    def __init__(self, folder):
        self.file = folder / "shift"
        self.file.write_bytes(struct.pack("<qq", 0, 0))

    def set(self, moment):
        shift = int((moment - datetime.datetime.now(datetime.timezone.utc)).total_seconds() * 1000)
        with open(self.file, "r+b") as file:
            file.write(struct.pack("<qq", 0, shift))


def day_in(zone, moment):
    """The day as the C library sees it, asked of a process of its own."""
    return subprocess.run(["date", "-d", f"@{moment.timestamp():.0f}", "+%Y-%m-%d"], env={**os.environ, "TZ": zone}, check=True,
                          stdout=subprocess.PIPE).stdout.decode().strip()


def stored(desktop):
    path = pathlib.Path(desktop.env["XDG_DATA_HOME"]) / "velmora/defaults.sqlite"
    with sqlite3.connect(path) as connection:
        values = dict(connection.execute("SELECT key, value FROM defaults").fetchall())
    return values.get("todayKey"), values.get("cleanedToday"), values.get("totalCleaned")


def start(desktop, clock, library, zone):
    desktop.start_velmora(LD_PRELOAD=library, TZ=zone, VELMORA_CLOCK_SHIFT=str(clock.file))
    desktop.wait_for_velmora()
    desktop.settle()


def clean_two(desktop, copies):
    for number in (copies + 1, copies + 2):
        desktop.copy(f"https://shop.example/?id={number}&utm_source=mail")
        wait_until("the cleaned link", lambda last=number: desktop.clipboard() == f"https://shop.example/?id={last}", 5)
    desktop.catch_up()


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.split("\n\n")[1])
    library = str(pathlib.Path(sys.argv[2]).resolve())
    wrong = copies = count = 0
    last_day, last_zone = None, None
    with Desktop(str(pathlib.Path(sys.argv[1]).resolve()), tray="none", compositor=False) as desktop:
        clock = Clock(desktop.folder)
        for name, written, zone in MOVES:
            moment = datetime.datetime.fromisoformat(written).replace(tzinfo=datetime.timezone.utc)
            clock.set(moment)
            if zone != last_zone:
                if last_zone is not None:
                    desktop.stop(desktop.velmora)
                start(desktop, clock, library, zone)
                last_zone = zone
            clean_two(desktop, copies)
            copies += 2
            day = day_in(zone, moment)
            count = count + 2 if day == last_day else 2
            last_day = day
            found = stored(desktop)
            wrong += found != (day, count, copies)
            print(f"{name:40} {found[0]}: {found[1]} of {found[2]}"
                  + ("" if found == (day, count, copies) else f", expected {day}: {count} of {copies}"), flush=True)
        if desktop.velmora.poll() is not None or desktop.log("velmora"):
            sys.exit(f"ended with {desktop.velmora.returncode}, said: {desktop.log('velmora')}")
    print(f"{len(MOVES)} moves, {wrong} wrong")
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
