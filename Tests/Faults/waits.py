#!/usr/bin/env python3
"""Floods velmora on the bus and measures how long a copy then waits until it is clean, and a paste for its text.

Usage: waits.py PROGRAM [COPIES [KIND...]]      COPIES: with each kind, 100 without it; KIND: names of rows, all without them

none             nobody asks for anything
others           three programs that call somebody else on the bus
calls            three programs that call a method on the bus
menu             three programs that ask for its menu on the bus
properties       three programs that ask for all properties of its icon

A row ends with the first copy that is not clean after ten seconds. Ends with 1 when a copy waited a second, or a paste a
quarter of one.
"""
import contextlib
import pathlib
import statistics
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from bus_client import BusClient  # noqa: E402
from floods import begin_flood, pour_calls, pour_menu, pour_on_the_bus, require_running  # noqa: E402
from misbehaviour import written_memory  # noqa: E402
from x11_desktop import Desktop  # noqa: E402
from x11_programs import Copier, Paster  # noqa: E402

LONGEST_COPY, LONGEST_PASTE = 1000, 250  # Milliseconds.
PASTES = 5  # Of each copy.
PATIENCE = 10


def pour_others(env):
    with BusClient(env["DBUS_SESSION_BUS_ADDRESS"]) as bus:
        while True:
            bus.send(bus.call("org.freedesktop.DBus", "/", "org.freedesktop.DBus.Peer", "Ping") * 200)


def pour_properties(env):
    pour_on_the_bus(env, "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "GetAll", "s",
                    ["org.kde.StatusNotifierItem"])


KINDS = {"none": (None, 0), "others": (pour_others, 3), "calls": (pour_calls, 3), "menu": (pour_menu, 3),
         "properties": (pour_properties, 3)}


def wait_of_copy(copier, number):
    copier.copy(b"https://shop.example/?id=%d&utm_source=mail" % number)
    waited = copier.wait_until_lost(PATIENCE)
    return PATIENCE if waited is None else waited


def wait_of_paste(paster, number):
    begin = time.monotonic()
    is_clean = paster.paste(patience=PATIENCE) == b"https://shop.example/?id=%d" % number
    return time.monotonic() - begin if is_clean else PATIENCE


def measure(program, kind, count, copies):
    """Milliseconds of each copy and of each paste, and the written memory in MiB at the end."""
    with Desktop(program, tray="none", compositor=False) as desktop, contextlib.ExitStack() as ended:
        velmora = desktop.start_velmora()
        desktop.wait_for_velmora()
        desktop.settle()
        copier, paster = (ended.enter_context(other(desktop.env["DISPLAY"])) for other in (Copier, Paster))
        wait_of_copy(copier, 0)
        floods = begin_flood(kind, count, desktop.env)
        ended.callback(lambda: [flood.kill() for flood in floods])
        time.sleep(1)
        waits = [], []
        for number in range(1, copies + 1):
            waits[0].append(wait_of_copy(copier, number) * 1000)
            if waits[0][-1] >= PATIENCE * 1000:
                break
            waits[1].extend(wait_of_paste(paster, number) * 1000 for _ in range(PASTES))
        require_running(floods, velmora)
        return *waits, written_memory(velmora)


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__.split("\n\n")[1])
    program = str(pathlib.Path(sys.argv[1]).resolve())
    copies = int(sys.argv[2]) if len(sys.argv) > 2 else 100
    failed = False
    for name in sys.argv[3:] or KINDS:
        copied, pasted, memory = measure(program, *KINDS[name], copies)
        if max(copied) >= PATIENCE * 1000:
            failed = True
            print(f"{name:12} copy {len(copied)} was not cleaned in {PATIENCE} s; written memory {memory:.1f} MiB", flush=True)
            continue
        failed |= max(copied) > LONGEST_COPY or max(pasted) > LONGEST_PASTE
        print(f"{name:12} copy to clean: median {statistics.median(copied):.0f} ms, longest {max(copied):.0f} ms; "
              f"paste: median {statistics.median(pasted):.1f} ms, longest {max(pasted):.1f} ms; "
              f"written memory {memory:.1f} MiB", flush=True)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
