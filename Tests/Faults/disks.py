#!/usr/bin/env python3
"""Fills the disk of the store, takes it away and gives it back while velmora runs.

Usage: disks.py PROGRAM      as root, or where users may make name spaces of their own

The store is in a small file system in memory that only the program sees.

full        the disk is full: copies are cleaned, and when there is room again everything is counted that was cleaned
read-only   the same for a disk that cannot be written to from the start
removed     the same when the store's files are removed while the program runs
"""
import contextlib
import os
import pathlib
import sqlite3
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from x11_desktop import Desktop, wait_until  # noqa: E402

SPACE = ["unshare", "--mount"] if os.geteuid() == 0 else ["unshare", "--map-current-user", "--keep-caps", "--mount"]
ENTER = ["nsenter", "--mount"] if os.geteuid() == 0 else ["nsenter", "--preserve-credentials", "--user", "--mount"]
START = 'mount -t tmpfs -o size=1m,mode=700 none "$1" && { [ -z "$2" ] || mount -o remount,"$2" "$1"; } && exec "$0"'
COPIES = 5


class Session:
    def __init__(self, desktop, option=""):
        self.desktop, self.copies = desktop, 0
        self.store = pathlib.Path(desktop.env["XDG_DATA_HOME"]) / "velmora"
        self.store.mkdir(mode=0o700, exist_ok=True)
        self.velmora = desktop.start("velmora", *SPACE, "sh", "-c", START, desktop.program, self.store, option)
        desktop.wait_for_velmora()
        desktop.settle()
        self.folder = pathlib.Path(f"/proc/{self.velmora.pid}/root{self.store}")

    def remount(self, option):
        subprocess.run([*ENTER, "-t", str(self.velmora.pid), "mount", "-o", f"remount,{option}", self.store], check=True)

    def clean(self, count):
        for _ in range(count):
            self.copies += 1
            self.desktop.copy(f"https://shop.example/?id={self.copies}&utm_source=mail")
            wait_until("the cleaned link", lambda: self.desktop.clipboard() == f"https://shop.example/?id={self.copies}", 5)
        self.desktop.catch_up()

    def counted(self):
        # SQLite would follow the folder's name out of the program's name space: it gets copies.
        copy = self.desktop.folder / "copy.sqlite"
        for suffix in ("", "-wal"):
            file = self.folder / f"defaults.sqlite{suffix}"
            pathlib.Path(f"{copy}{suffix}").write_bytes(file.read_bytes() if file.exists() else b"")
        with contextlib.closing(sqlite3.connect(copy)) as connection:
            if connection.execute("PRAGMA integrity_check").fetchone() != ("ok",):
                raise AssertionError("the store is damaged")
            found = connection.execute("SELECT value FROM defaults WHERE key='totalCleaned'").fetchone()
        return found[0] if found else 0

    def end(self):
        """Everything that was cleaned has to be counted, and the program to be well."""
        self.clean(1)
        if self.counted() != self.copies:
            raise AssertionError(f"{self.copies} cleaned, {self.counted()} counted")
        if list(self.folder.glob("*damaged*")):
            raise AssertionError("the store was set aside")
        self.velmora.terminate()
        if self.velmora.wait(5) != 0:
            raise AssertionError(f"ended with {self.velmora.returncode}")
        if said := self.desktop.log("velmora"):
            raise AssertionError(f"it said: {said}")


def full(desktop):
    session = Session(desktop)
    session.clean(COPIES)
    filling = session.folder / "filling"
    with open(filling, "wb", buffering=0) as file:
        try:
            while True:
                file.write(bytes(512))
        except OSError:
            pass
    session.clean(COPIES)
    before = session.counted()
    if before == session.copies:
        raise AssertionError("the disk was not full")
    filling.unlink()
    session.end()


def read_only(desktop):
    session = Session(desktop, "ro")
    session.clean(COPIES)
    session.remount("rw")
    session.end()


def removed(desktop):
    session = Session(desktop)
    session.clean(COPIES)
    for file in list(session.folder.iterdir()):
        file.unlink()
    session.clean(COPIES)
    session.end()


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__.split("\n\n")[1])
    program, failed = str(pathlib.Path(sys.argv[1]).resolve()), False
    for kind in (full, read_only, removed):
        try:
            with Desktop(program, tray="none", compositor=False) as desktop:
                kind(desktop)
            outcome = "everything is counted"
        except (AssertionError, OSError, sqlite3.Error, subprocess.SubprocessError) as problem:
            outcome, failed = str(problem), True
        print(f"{kind.__name__:10} {outcome}", flush=True)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
