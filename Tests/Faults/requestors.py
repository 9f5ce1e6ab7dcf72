#!/usr/bin/env python3
"""Pastes as no program should, and looks whether others still get the text.

Usage: requestors.py PROGRAM [ROW...]      ROW: names of rows, all without them

Each row is a kind of program that asks for the clipboard while velmora owns it: a cleaned link, or 12 MB of text where the
row is about pieces. Behind it a well-behaved program pastes and has to get the text within a second, and a copy has to be
cleaned within another. At the end the program runs, has said nothing, and uses no more than 32 MiB of written memory above
that of its start.
"""
import ctypes
import pathlib
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from misbehaviour import CLEAN, TRACKED, try_kinds  # noqa: E402
from x11_person import LIBRARY, REPLACE, Handle  # noqa: E402
from x11_programs import ATOM, NEVER, PROPERTY_NOTIFY, SELECTION_REQUEST, Event, Paster  # noqa: E402

MOST_MEMORY = 32  # MiB more than at the start.
FILLING = b"words " * 2_000_000
NO_WINDOW = 0x1FFFFFFF
ROWS, LARGE = {}, set()


def row(name, large=False):
    def add(ask):
        ROWS[name] = ask
        if large:
            LARGE.add(name)
        return ask
    return add


def target_row(name, target, count=1):
    @row(name)
    def ask(program):
        for _ in range(count):
            program.ask(target)


target_row("asks for a form that nobody knows", "application/x-nonsense")
target_row("asks to delete", "DELETE")
target_row("asks to insert a property", "INSERT_PROPERTY")
target_row("asks to save", "SAVE_TARGETS")
target_row("asks for the time a thousand times", "TIMESTAMP", 1000)
target_row("asks several things at once and names none", "MULTIPLE")


@row("asks for no form")
def no_form(program):
    LIBRARY.XConvertSelection(program.server, program.atom("CLIPBOARD"), NEVER, program.atom("PASTED"), program.window, NEVER)


@row("names no property")
def no_property(program):
    LIBRARY.XConvertSelection(program.server, program.atom("CLIPBOARD"), program.atom("UTF8_STRING"), NEVER, program.window,
                              NEVER)


@row("asks in the past")
def in_the_past(program):
    program.ask("UTF8_STRING", moment=Handle(1))


@row("asks in the future")
def in_the_future(program):
    program.ask("UTF8_STRING", moment=Handle(0xFFFFFFF0))


@row("destroys its window at once")
def vanishes(program):
    program.ask("UTF8_STRING")
    LIBRARY.XDestroyWindow(program.server, program.window)


@row("ends at once")
def ends(program):
    program.ask("UTF8_STRING")
    program.close()


@row("asks ten thousand times and never listens")
def floods(program):
    for _ in range(10_000):
        LIBRARY.XConvertSelection(program.server, program.atom("CLIPBOARD"), program.atom("UTF8_STRING"),
                                  program.atom("PASTED"), program.window, NEVER)


@row("wants it in the root window")
def into_the_root(program):
    root = Handle(LIBRARY.XDefaultRootWindow(program.server))
    LIBRARY.XConvertSelection(program.server, program.atom("CLIPBOARD"), program.atom("UTF8_STRING"), program.atom("PASTED"),
                              root, NEVER)


@row("wants it in the owner's own window")
def into_the_owner(program):
    owner = Handle(LIBRARY.XGetSelectionOwner(program.server, program.atom("CLIPBOARD")))
    for target in ("UTF8_STRING", "TARGETS", "MULTIPLE"):
        LIBRARY.XConvertSelection(program.server, program.atom("CLIPBOARD"), program.atom(target), program.atom("PASTED"),
                                  owner, NEVER)


@row("forges requests of windows that do not exist")
def forges(program):
    owner = LIBRARY.XGetSelectionOwner(program.server, program.atom("CLIPBOARD"))
    for number in range(2000):
        event = Event(kind=SELECTION_REQUEST)
        event.words[:6] = [owner, NO_WINDOW - number, program.atom("CLIPBOARD").value, program.atom("UTF8_STRING").value,
                           program.atom("PASTED").value, 0]
        LIBRARY.XSendEvent(program.server, Handle(owner), 0, NEVER, ctypes.byref(event))


def several(name, kind, size, values):
    """A row that asks for several forms with this list."""
    @row(name)
    def ask(program):
        data = values(program) if callable(values) else values
        LIBRARY.XChangeProperty(program.server, program.window, program.atom("PASTED"), Handle(kind), size, REPLACE,
                                data if size == 8 else (Handle * len(data))(*data), len(data))
        program.ask("MULTIPLE")


several("asks for several forms: none", ATOM, 32, [])
several("asks for several forms: an odd number", ATOM, 32, lambda program: [program.atom("UTF8_STRING").value] * 3)
several("asks for several forms: bytes", ATOM, 8, b"garbage!")
several("asks for several forms: several forms", ATOM, 32,
        lambda program: [program.atom("MULTIPLE").value, program.atom("PASTED").value] * 8)
several("asks for several forms: fifty thousand", ATOM, 32,
        lambda program: [program.atom("UTF8_STRING").value, program.atom("P").value] * 50_000)


@row("takes no piece", large=True)
def takes_no_piece(program):
    program.ask("UTF8_STRING")


@row("begins two hundred transfers", large=True)
def many_transfers(program):
    for number in range(200):
        program.ask("UTF8_STRING", f"PASTED{number}")


@row("ends behind the first piece", large=True)
def ends_in_the_middle(program):
    program.ask("UTF8_STRING")
    end = time.monotonic() + 2
    while time.monotonic() < end:
        event = program.next_event(0.5)
        if event is not None and event.kind == PROPERTY_NOTIFY and event.words[3] == 0:
            program.taken()
            break
    program.close()


@row("asks again for each piece", large=True)
def asks_again(program):
    for _ in range(20):
        program.ask("UTF8_STRING")
        program.next_event(0.05)
        program.taken()


def pastes_all(display, expected):
    """Whether another program gets the text within a second; of a long one the beginning of the transfer."""
    with Paster(display) as paster:
        pasted = paster.paste(patience=1)
        return pasted == expected if len(expected) < 100_000 else pasted is not None


def try_row(desktop, name, neighbour):
    display = desktop.env["DISPLAY"]
    tracked, clean = (text + b" " + FILLING if name in LARGE else text for text in (TRACKED, CLEAN))
    neighbour.copy(tracked)
    if neighbour.wait_until_lost(5) is None:
        return "not cleaned", ["the text itself was not cleaned"]
    complaints = []
    with Paster(display) as program:
        ROWS[name](program)
        if program.server:
            program.flush()
        if not pastes_all(display, clean):
            complaints.append("another program did not get the text within a second")
        neighbour.copy(TRACKED)
        if neighbour.wait_until_lost(1) is None:
            complaints.append("the next copy was not cleaned within a second")
        elif not pastes_all(display, CLEAN):
            complaints.append("nobody can paste the next copy")
    return "wrong" if complaints else "others get the text", complaints


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__.split("\n\n")[1])
    rest = 20  # Until the last transfer has been given up, and its memory.
    try_kinds(sys.argv[1], sys.argv[2:] or list(ROWS), try_row, MOST_MEMORY, rest)


if __name__ == "__main__":
    main()
