#!/usr/bin/env python3
"""Floods velmora with requests and measures how long it takes from SIGTERM to its end.

Usage: floods.py PROGRAM [ROUNDS [KIND...]]      ROUNDS: of each kind, 5 without it; KIND: names of rows, all without them

none             nobody asks for anything
pastes           two programs that paste without waiting for answers
several forms    two programs that ask for 64 forms at once, likewise
pieces           two programs that begin transfers of 12 MB and take each piece
copies           two programs that take the clipboard from each other
forged events    two programs that send it what only the server may send
calls            three programs that call a method on the bus
menu             three programs that ask for its menu on the bus
callers          three programs that call its local socket, in a session without a bus

Ends with 1 when a round took more than 300 ms.
"""
import contextlib
import ctypes
import multiprocessing
import os
import pathlib
import select
import signal
import socket
import statistics
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from bus_client import BusClient  # noqa: E402
from x11_desktop import Desktop, wait_until  # noqa: E402
from x11_person import LIBRARY, Handle  # noqa: E402
from x11_programs import ATOM, NEVER, PROPERTY_NOTIFY, SELECTION_NOTIFY, Copier, Event, Paster  # noqa: E402

LIMIT = 300  # Milliseconds.
AT_ONCE = 500
TRACKED, CLEAN = "https://shop.example/?id=1&utm_source=mail", "https://shop.example/?id=1"
FILLING = " words" * 2_000_000


def pour_pastes(env):
    with Paster(env["DISPLAY"]) as program:
        while True:
            for _ in range(AT_ONCE):
                LIBRARY.XConvertSelection(program.server, program.atom("CLIPBOARD"), program.atom("UTF8_STRING"),
                                          program.atom("PASTED"), program.window, NEVER)
            LIBRARY.XSync(program.server, 1)


def pour_several_forms(env):
    with Paster(env["DISPLAY"]) as program:
        forms = [program.atom("UTF8_STRING").value, program.atom("ONE").value] * 64
        while True:
            for _ in range(AT_ONCE):
                program.set_property(program.window.value, program.atom("PASTED"), Handle(ATOM), 32, forms)
                LIBRARY.XConvertSelection(program.server, program.atom("CLIPBOARD"), program.atom("MULTIPLE"),
                                          program.atom("PASTED"), program.window, NEVER)
            LIBRARY.XSync(program.server, 1)


def pour_pieces(env):
    with Paster(env["DISPLAY"]) as program:
        names = [f"PASTED{number}" for number in range(8)]
        while True:
            for name in names:
                program.ask("UTF8_STRING", name)
            end = time.monotonic() + 0.2
            while time.monotonic() < end:
                for name in names:
                    program.taken(name)
            LIBRARY.XSync(program.server, 1)


def pour_copies(env):
    with Copier(env["DISPLAY"]) as program:
        program.text = TRACKED.encode()
        while True:
            program.copy(program.text)
            while (event := program.next_event(0)) is not None:
                program.handle(event)


def pour_forged_events(env):
    with Paster(env["DISPLAY"]) as program:
        owner = Handle(LIBRARY.XGetSelectionOwner(program.server, program.atom("CLIPBOARD")))
        events = [Event(kind=kind) for kind in (SELECTION_NOTIFY, PROPERTY_NOTIFY)]
        for event in events:
            event.words[0] = owner.value
        while True:
            for _ in range(AT_ONCE):
                for event in events:
                    LIBRARY.XSendEvent(program.server, owner, 0, NEVER, ctypes.byref(event))
            LIBRARY.XSync(program.server, 1)


def pour_on_the_bus(env, *call):
    with BusClient(env["DBUS_SESSION_BUS_ADDRESS"]) as bus:
        while True:
            bus.send(b"".join(bus.call("app.velmora.Velmora", *call) for _ in range(200)))


def pour_calls(env):
    pour_on_the_bus(env, "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Scroll")


def pour_menu(env):
    pour_on_the_bus(env, "/StatusMenu", "com.canonical.dbusmenu", "GetLayout", "iias", [0, -1, []])


def pour_callers(env):
    address = next(pathlib.Path(env["XDG_RUNTIME_DIR"]).glob("*.socket"))
    while True:
        with socket.socket(socket.AF_UNIX) as caller:
            caller.connect(str(address))
            with contextlib.suppress(BrokenPipeError, ConnectionResetError):  # More at once are turned away.
                caller.sendall(b"settings\n" + b"x" * 5000)


# What pours, how many do, and whether the text is a long one.
KINDS = {"none": (None, 0, False), "pastes": (pour_pastes, 2, False), "several forms": (pour_several_forms, 2, False),
         "pieces": (pour_pieces, 2, True), "copies": (pour_copies, 2, False), "forged events": (pour_forged_events, 2, False),
         "calls": (pour_calls, 3, False), "menu": (pour_menu, 3, False), "callers": (pour_callers, 3, False)}


def pour(kind, env):
    try:
        kind(env)
    except OSError:
        pass  # Its receiver has ended.


def begin_flood(kind, count, env):
    floods = [multiprocessing.Process(target=pour, args=(kind, env), daemon=True) for _ in range(count)]
    for flood in floods:
        flood.start()
    return floods


def require_running(floods, velmora):
    if not all(flood.is_alive() for flood in floods) or velmora.poll() is not None:
        raise AssertionError("the flood or the program has ended")


def start(desktop, is_long):
    """The program, once it owns a text that it has cleaned."""
    velmora = desktop.start_velmora()
    with Copier(desktop.env["DISPLAY"]) as copier:
        wait_until("an idle program", lambda: velmora.poll() is None and desktop.settle() is None)
        copier.copy((TRACKED + FILLING * is_long).encode())
        if copier.wait_until_lost(20) is None:
            raise AssertionError("the text was not cleaned")
    return velmora


def time_to_end(program, kind, count, is_long):
    """Milliseconds from the signal on."""
    with Desktop(program, tray="none", compositor=False, bus=kind is not pour_callers) as desktop:
        velmora = start(desktop, is_long)
        floods = begin_flood(kind, count, desktop.env)
        time.sleep(1)
        require_running(floods, velmora)
        end = os.pidfd_open(velmora.pid)
        begin = time.monotonic()
        velmora.send_signal(signal.SIGTERM)
        select.select([end], [], [], 20)
        elapsed = (time.monotonic() - begin) * 1000
        os.close(end)
        for flood in floods:
            flood.kill()
            flood.join()
        return elapsed


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__.split("\n\n")[1])
    program = str(pathlib.Path(sys.argv[1]).resolve())
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    failed = False
    for name in sys.argv[3:] or KINDS:
        times = [time_to_end(program, *KINDS[name]) for _ in range(rounds)]
        failed |= max(times) > LIMIT
        print(f"{name:16} SIGTERM to the end: median {statistics.median(times):.0f} ms, longest {max(times):.0f} ms", flush=True)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
