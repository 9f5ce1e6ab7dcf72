#!/usr/bin/env python3
"""Calls every method of velmora on the bus with garbage, and looks whether it goes on.

Usage: garbage.py PROGRAM [CALLS]      CALLS: for each method, 500 without it

The methods are those that the program's objects name themselves, the standard ones of the bus included. Half of the calls
have the right types and values of any size, half have any types. Afterwards it has to clean a copy, show its menu, and have
said nothing. Values that mean something are left out: the entries of the menu, the names of actions.
"""
import pathlib
import random
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from bus_client import FIXED, BusClient, types  # noqa: E402
from x11_desktop import Desktop, wait_until  # noqa: E402

SERVICE = "app.velmora.Velmora"
LONGEST = 100_000  # Of texts and arrays.
FIRST_FREE_NUMBER = 1000  # No entry of the menu has this number or a higher one.


class Garbage:
    def __init__(self, seed):
        self.random = random.Random(seed)

    def size(self):
        return self.random.choice([0, 1, 3, 200, LONGEST if self.random.random() < 0.02 else 2])

    def number(self, kind):
        if kind == "b":
            return self.random.randrange(2)
        if kind == "d":
            return self.random.choice([0.0, -1.0, 1e308, float("nan"), float("inf")])
        bits = {"y": 8, "n": 16, "q": 16, "i": 32, "u": 32, "x": 64, "t": 64}[kind]
        lowest = -(1 << (bits - 1)) if kind in "nix" else 0
        highest = lowest + (1 << bits) - 1
        least = min(FIRST_FREE_NUMBER, highest)
        return self.random.choice([lowest, highest, self.random.randint(least, highest)])

    def value(self, kind, depth=0):
        if kind in FIXED:
            return self.number(kind)
        if kind == "s":
            return "".join(self.random.choice("\x01%/\\é\U0001f517 x") for _ in range(min(self.size(), 2000))) + "\x7f"
        if kind == "o":
            return "/" + "x" * self.size()
        if kind == "g":
            return self.signature() or "s"  # Of an empty one Qt itself tells on the standard output.
        if kind == "v":
            inner = "i" if depth > 20 else self.type()
            return inner, self.value(inner, depth + 1)
        if kind[0] == "a":
            count = self.size() if kind[1] in FIXED else self.random.randrange(4)
            return [self.value(kind[1:], depth + 1) for _ in range(count)]
        return [self.value(part, depth + 1) for part in types(kind[1:-1])]

    def type(self, depth=0):
        kind = self.random.choice("ybnqiuxtdsogv" + ("a(" if depth < 8 else ""))
        if kind == "a" and self.random.random() < 0.3:
            return "a{s" + self.type(depth + 1) + "}"
        if kind == "a":
            return "a" + self.type(depth + 1)
        if kind == "(":
            return "(" + "".join(self.type(depth + 1) for _ in range(self.random.randint(1, 4))) + ")"
        return kind

    def signature(self):
        signature = ""
        for _ in range(self.random.randrange(6)):
            signature += self.type()
        return signature if len(signature) < 200 else "s"


def methods(desktop, path="/"):
    """All methods of the program as path, interface, name and the types of the arguments."""
    answer = desktop.call(SERVICE, path, "org.freedesktop.DBus.Introspectable.Introspect")
    for interface, content in re.findall(r'<interface name="([^"]+)">(.*?)</interface>', answer, re.S):
        for name, rest in re.findall(r'<method name="([^"]+)"(?:/>|>(.*?)</method>)', content, re.S):
            arguments = [tag for tag in re.findall(r"<arg [^>]*>", rest or "") if 'direction="out"' not in tag]
            yield path, interface, name, "".join(re.search(r'type="([^"]+)"', tag)[1] for tag in arguments)
    for child in re.findall(r'<node name="([^"]+)"', answer):
        yield from methods(desktop, path.rstrip("/") + "/" + child)


def pour(desktop, method, garbage, count):
    path, interface, name, signature = method
    with BusClient(desktop.env["DBUS_SESSION_BUS_ADDRESS"]) as bus:
        for number in range(count):
            given = signature if number % 2 else garbage.signature()
            bus.send(bus.call(SERVICE, path, interface, name, given, [garbage.value(kind) for kind in types(given)],
                              flags=number % 4 // 2))
            bus.drain()


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__.split("\n\n")[1])
    count = int(sys.argv[2]) if len(sys.argv) == 3 else 500
    seed = random.randrange(1 << 30)
    garbage = Garbage(seed)
    with Desktop(str(pathlib.Path(sys.argv[1]).resolve()), tray="none", compositor=False) as desktop:
        velmora = desktop.start_velmora()
        wait_until("the program", lambda: desktop.has_owner(SERVICE))
        desktop.settle()
        found = list(methods(desktop))
        for method in found:
            pour(desktop, method, garbage, count)
            if velmora.poll() is not None:
                sys.exit(f"{method}: ended with {velmora.returncode} (seed {seed})\n{desktop.log('velmora')}")
        desktop.catch_up()
        desktop.copy("https://shop.example/?id=1&utm_source=mail")
        wait_until("the cleaned link", lambda: desktop.clipboard() == "https://shop.example/?id=1")
        wait_until("the menu", desktop.menu)
        said = desktop.log("velmora")
    print(f"{len(found)} methods, {count} calls each (seed {seed}): it goes on")
    if said:
        sys.exit(f"it said:\n{said}")


if __name__ == "__main__":
    main()
