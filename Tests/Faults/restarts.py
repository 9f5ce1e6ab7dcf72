#!/usr/bin/env python3
"""Takes away what velmora needs of a session while it runs, gives it back, and starts it twice at once.

Usage: restarts.py PROGRAM [ROUNDS [KIND...]]      ROUNDS: of each kind, 10 without it; KIND: all without them

tray        the panel ends and comes back: the icon comes back, copies are cleaned with and without it
compositor  the same
manager     the same of a clipboard manager; one that runs gets the text when the program ends
bus         the bus ends for good: copies are cleaned without it, and SIGTERM ends the program
server      the X server ends: the program ends with status 0, its store is whole, and it starts on another server
sway        a Wayland compositor ends, killed: the program ends, its store is whole, and it starts on another compositor
twice       two starts at once, with and without a bus: one program stays, and its store is whole
"""
import pathlib
import signal
import sqlite3
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from sway_desktop import SwayDesktop  # noqa: E402
from wayland_desktop import as_ordinary_user  # noqa: E402
from x11_desktop import Desktop, wait_until  # noqa: E402

number = 0


def clean_one(desktop):
    """A copy has to be cleaned."""
    global number
    number += 1
    desktop.copy(f"https://shop.example/?id={number}&utm_source=mail")
    wait_until("the cleaned link", lambda: desktop.clipboard() == f"https://shop.example/?id={number}", 5)


def store_is_whole(desktop):
    path = pathlib.Path(desktop.env["XDG_DATA_HOME"]) / "velmora/defaults.sqlite"
    with sqlite3.connect(path) as connection:
        if connection.execute("PRAGMA integrity_check").fetchone() != ("ok",) or list(path.parent.glob("*damaged*")):
            raise AssertionError("the store is damaged")


def tray(program, rounds):
    with Desktop(program, tray="xembed", compositor=False) as desktop:
        desktop.start_velmora()
        desktop.wait_for_icon()
        for _ in range(rounds):
            desktop.stop(desktop.tray)
            clean_one(desktop)
            desktop.start_tray()
            wait_until("the icon", desktop.icon)
            clean_one(desktop)
        return desktop.log("velmora")


def compositor(program, rounds):
    with Desktop(program, tray="none") as desktop:
        desktop.start_velmora()
        desktop.wait_for_velmora()
        for _ in range(rounds):
            desktop.stop(desktop.compositor)
            clean_one(desktop)
            desktop.start_compositor()
            clean_one(desktop)
        return desktop.log("velmora")


def manager(program, rounds):
    with Desktop(program, tray="none", compositor=False) as desktop:
        for _ in range(rounds):
            velmora = desktop.start_velmora()
            desktop.wait_for_velmora()
            for _ in range(2):
                running = desktop.start("manager", "xfce4-clipman")
                wait_until("the manager", lambda: desktop.person.owns_selection("CLIPBOARD_MANAGER"))
                clean_one(desktop)
                desktop.stop(running)
                clean_one(desktop)
            running = desktop.start("manager", "xfce4-clipman")
            wait_until("the manager", lambda: desktop.person.owns_selection("CLIPBOARD_MANAGER"))
            clean_one(desktop)
            desktop.stop(velmora)
            wait_until("the text behind the end", lambda: desktop.clipboard() == f"https://shop.example/?id={number}", 5)
            desktop.stop(running)
        return desktop.log("velmora")


def bus(program, rounds):
    for _ in range(rounds):
        with Desktop(program, tray="none", compositor=False) as desktop:
            velmora = desktop.start_velmora()
            desktop.wait_for_velmora()
            clean_one(desktop)
            desktop.stop(next(process for process in desktop.processes if process.name == "bus"), signal.SIGKILL)
            for _ in range(3):
                clean_one(desktop)
            velmora.terminate()
            if velmora.wait(5) != 0:
                raise AssertionError(f"ended with {velmora.returncode}")
            store_is_whole(desktop)
    return desktop.log("velmora")


def server(program, rounds):
    with Desktop(program, tray="none", compositor=False) as desktop:
        for _ in range(rounds):
            velmora = desktop.start_velmora()
            desktop.wait_for_velmora()
            clean_one(desktop)
            desktop.person.close()
            desktop.person = None
            desktop.stop(next(process for process in desktop.processes if process.name == "server"), signal.SIGKILL)
            if velmora.wait(5) != 0:
                raise AssertionError(f"ended with {velmora.returncode}")
            desktop.processes.remove(velmora)
            store_is_whole(desktop)
            desktop.start_server()
    return ""  # Of a lost server the toolkit tells itself.


def sway(program, rounds):
    with SwayDesktop(program) as desktop:
        for _ in range(rounds):
            velmora = desktop.start_velmora()
            desktop.wait_for_velmora()
            global number
            number += 1
            desktop.copy_natively(f"https://shop.example/?id={number}&utm_source=mail")
            wait_until("the cleaned link", lambda: desktop.paste_natively() == f"https://shop.example/?id={number}", 5)
            desktop.person.close()
            desktop.person = None
            desktop.stop(desktop.sway, signal.SIGKILL)
            velmora.wait(5)
            desktop.processes.remove(velmora)
            store_is_whole(desktop)
            (desktop.folder / "displays").unlink()
            desktop.start_sway(xwayland=True)
    return ""  # Of a lost compositor the toolkit tells itself.


def twice(program, rounds):
    for has_bus in (True, False):
        with Desktop(program, tray="none", compositor=False, bus=has_bus) as desktop:
            for _ in range(rounds):
                pair = [desktop.start("velmora", program) for _ in range(2)]
                wait_until("the end of one of them", lambda: [process.poll() for process in pair].count(None) == 1)
                time.sleep(0.3)
                if [process.poll() for process in pair].count(None) != 1:
                    raise AssertionError("none of the two has stayed")
                clean_one(desktop)
                for process in pair:
                    if process.poll() not in (None, 0):
                        raise AssertionError(f"the second one ended with {process.returncode}: {desktop.log('velmora')}")
                    desktop.stop(process)
                store_is_whole(desktop)
    return desktop.log("velmora")


KINDS = {kind.__name__: kind for kind in (tray, compositor, manager, bus, server, sway, twice)}


def outcome(name, program, rounds):
    """What to say of a kind, and whether it went wrong."""
    try:
        said = KINDS[name](program, rounds)
        return (f"it said: {said}", True) if said else ("as it should be", False)
    except (AssertionError, subprocess.TimeoutExpired, sqlite3.Error) as problem:
        return str(problem), True


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__.split("\n\n")[1])
    program = str(pathlib.Path(sys.argv[1]).resolve())
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 10
    names = sys.argv[3:] or list(KINDS)
    if names == ["sway"]:
        as_ordinary_user()
    failed = False
    for name in names:
        if name == "sway" and len(names) > 1:
            failed |= subprocess.run([sys.executable, __file__, program, str(rounds), name], check=False).returncode != 0
            continue
        text, is_wrong = outcome(name, program, rounds)
        failed |= is_wrong
        print(f"{name:12} {rounds} rounds: {text}", flush=True)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
