#!/usr/bin/env python3
"""Starts velmora where it finds what it would never have made, and looks whether it works.

Usage: starts.py PROGRAM      needs 1.1 GB of disk, and root or name spaces for users

large       a store of a gigabyte: it starts, cleans and counts
not UTF-8   a home whose name is no UTF-8: it starts and cleans; what it cannot keep it keeps in memory
no HOME     nothing names a home: it cleans, and keeps its store where the user database has the home
counter     a counter at its end: the copy stays as it is, because the program ends before it takes the clipboard
"""
import contextlib
import os
import pathlib
import pwd
import shutil
import signal
import sqlite3
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from disks import SPACE  # noqa: E402
from misbehaviour import written_memory  # noqa: E402
from x11_desktop import Desktop, wait_until  # noqa: E402

GIGABYTE = 1_000_000_000
LARGEST = (1 << 63) - 1
TRACKED, CLEAN = "https://shop.example/?id=1&utm_source=mail", "https://shop.example/?id=1"


def store(desktop):
    return contextlib.closing(sqlite3.connect(pathlib.Path(desktop.env["XDG_DATA_HOME"]) / "velmora/defaults.sqlite"))


def started(desktop, **environment):
    begin = time.monotonic()
    velmora = desktop.start_velmora(**environment)
    desktop.wait_for_velmora()
    seconds = time.monotonic() - begin
    desktop.settle()
    return velmora, seconds


def clean_one(desktop):
    desktop.copy(TRACKED)
    wait_until("the cleaned link", lambda: desktop.clipboard() == CLEAN, 5)
    desktop.catch_up()


def counted(desktop):
    with store(desktop) as connection:
        return connection.execute("SELECT value FROM defaults WHERE key='totalCleaned'").fetchone()[0]


def make_store(desktop):
    velmora, _ = started(desktop)
    clean_one(desktop)
    desktop.stop(velmora)


def large(desktop):
    make_store(desktop)
    with store(desktop) as connection:
        connection.execute("INSERT INTO defaults(key, type, value) VALUES('large', 'data', zeroblob(?))", (GIGABYTE - 8192,))
        connection.commit()
        connection.execute("PRAGMA wal_checkpoint(TRUNCATE)")
    velmora, seconds = started(desktop)
    clean_one(desktop)
    memory = written_memory(velmora)
    desktop.stop(velmora)
    if counted(desktop) != 2:
        raise AssertionError(f"{counted(desktop)} counted")
    return f"started in {seconds * 1000:.0f} ms, {memory:.1f} MiB of written memory, cleaned and counted"


def not_utf8(desktop):
    home = os.fsencode(desktop.folder) + b"/h\xff\xfeme"
    os.mkdir(home, 0o700)
    names = {name: os.fsdecode(home) for name in ("HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME")}
    velmora, _ = started(desktop, **names)
    clean_one(desktop)
    velmora.terminate()
    if velmora.wait(5) != 0:
        raise AssertionError(f"ended with {velmora.returncode}")
    made = [name for name in os.listdir(os.fsencode(desktop.folder)) if name.startswith(b"h") and name != b"h\xff\xfeme"]
    if made:
        raise AssertionError(f"made {made}")
    return f"cleaned; in that home: {sorted(os.listdir(home))}"


def no_home(desktop):
    """The home of the user database is an empty file system in memory, which only the program sees."""
    home = pwd.getpwuid(os.getuid()).pw_dir
    script = ('mount -t tmpfs -o mode=700 none "$1" && '
              'unset HOME XDG_DATA_HOME XDG_CONFIG_HOME XDG_CACHE_HOME XDG_STATE_HOME && exec "$0"')
    velmora = desktop.start("velmora", *SPACE, "sh", "-c", script, desktop.program, home)
    desktop.wait_for_velmora()
    desktop.settle()
    clean_one(desktop)
    made = pathlib.Path(f"/proc/{velmora.pid}/root{home}/.local/share/velmora/defaults.sqlite")
    if not made.exists():
        raise AssertionError(f"no store below {home}")
    velmora.terminate()
    if velmora.wait(5) != 0:
        raise AssertionError(f"ended with {velmora.returncode}")
    return "cleaned; the store is in the home of the user database"


def counter(desktop):
    make_store(desktop)
    with store(desktop) as connection:
        connection.execute("UPDATE defaults SET value=? WHERE key='totalCleaned'", (LARGEST,))
        connection.commit()
    velmora, _ = started(desktop)
    desktop.copy(TRACKED)
    if velmora.wait(5) != -signal.SIGABRT:
        raise AssertionError(f"ended with {velmora.returncode}")
    if desktop.clipboard() != TRACKED:
        raise AssertionError("the clipboard was taken")
    if counted(desktop) != LARGEST:
        raise AssertionError(f"{counted(desktop)} counted")
    desktop.processes.remove(velmora)
    started(desktop)
    return "ended before it took the clipboard, and starts again"


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__.split("\n\n")[1])
    program, failed = str(pathlib.Path(sys.argv[1]).resolve()), False
    for name, kind in (("large", large), ("not UTF-8", not_utf8), ("no HOME", no_home), ("counter", counter)):
        with Desktop(program, tray="none", compositor=False) as desktop:
            try:
                outcome = kind(desktop)
                if said := desktop.log("velmora"):
                    outcome, failed = f"it said: {said}", True
            except (AssertionError, OSError, sqlite3.Error, subprocess.SubprocessError) as problem:
                outcome, failed = str(problem), True
            shutil.rmtree(pathlib.Path(desktop.env["XDG_DATA_HOME"]) / "velmora", ignore_errors=True)
        print(f"{name:10} {outcome}", flush=True)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
