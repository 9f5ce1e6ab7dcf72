"""A user of a Wayland desktop: just enough of the wire protocol to use a mouse and a keyboard, which stay plugged in."""
import array
import os
import pathlib
import socket
import struct
import time

import person

BUTTONS = {1: 0x110, 2: 0x112, 3: 0x111}  # Left, middle, right.
KEYS = {"Escape": 1, "Tab": 15, "Return": 28, "space": 57, "Down": 108, "a": 30, "b": 48, "c": 46}  # As the kernel counts.
LAYOUT = b"""xkb_keymap {
  xkb_keycodes { include "evdev+aliases(qwerty)" };
  xkb_types { include "complete" };
  xkb_compat { include "complete" };
  xkb_symbols { include "pc+us+inet(evdev)" };
};
\0"""
DISPLAY, REGISTRY = 1, 2
SYNC, GET_REGISTRY = 0, 1
CREATE, MOTION_ABSOLUTE, BUTTON, FRAME = 0, 1, 2, 4
KEYMAP, KEY = 0, 1
TEXT_V1 = 1


class Person(person.Person):
    """By wlr-virtual-pointer-unstable-v1 and virtual-keyboard-unstable-v1. `size`: of all screens together, in points."""

    def __init__(self, environment, size):
        self.size, self.last, self.globals = size, REGISTRY, {}
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(20)
        self.socket.connect(os.fspath(pathlib.Path(environment["XDG_RUNTIME_DIR"]) / environment["WAYLAND_DISPLAY"]))
        self.send(DISPLAY, GET_REGISTRY, REGISTRY)
        self.wait()
        self.plug_in()
        self.wait()

    def plug_in(self):
        manager, seat = self.bind("zwlr_virtual_pointer_manager_v1"), self.bind("wl_seat")
        self.mouse = self.new()
        self.send(manager, CREATE, seat, self.mouse)
        manager = self.bind("zwp_virtual_keyboard_manager_v1")
        self.keyboard = self.new()
        self.send(manager, CREATE, seat, self.keyboard)
        self.send_layout()

    def send_layout(self):
        file = os.memfd_create("layout")
        os.write(file, LAYOUT)
        message = struct.pack("=IIII", self.keyboard, 16 << 16 | KEYMAP, TEXT_V1, len(LAYOUT))
        self.socket.sendmsg([message], [(socket.SOL_SOCKET, socket.SCM_RIGHTS, array.array("i", [file]))])
        os.close(file)

    def close(self):
        self.socket.close()

    def new(self):
        self.last += 1
        return self.last

    def send(self, target, request, *arguments):
        body = b""
        for argument in arguments:
            if isinstance(argument, str):
                text = argument.encode() + b"\0"
                body += struct.pack("=I", len(text)) + text + b"\0" * (-len(text) % 4)
            else:
                body += struct.pack("=I", argument)
        self.socket.sendall(struct.pack("=II", target, (8 + len(body)) << 16 | request) + body)

    def receive(self, size):
        data = b""
        while len(data) < size:
            part = self.socket.recv(size - len(data))
            if not part:
                raise AssertionError("the compositor has gone away")
            data += part
        return data

    def wait(self):
        """Returns when the compositor has dealt with everything that was sent."""
        done = self.new()
        self.send(DISPLAY, SYNC, done)
        while True:
            sender, word = struct.unpack("=II", self.receive(8))
            body = self.receive((word >> 16) - 8)
            if sender == DISPLAY and word & 0xffff == 0:
                raise AssertionError(f"protocol error: {body!r}")
            if sender == REGISTRY and word & 0xffff == 0:
                name, length = struct.unpack_from("=II", body)
                self.globals[body[8:8 + length - 1].decode()] = name
            if sender == done:
                return

    def bind(self, interface, version=1):
        proxy = self.new()
        self.send(REGISTRY, 0, self.globals[interface], interface, version, proxy)
        return proxy

    @staticmethod
    def now():
        return int(time.monotonic() * 1000) & 0xffffffff

    def move(self, point):
        self.send(self.mouse, MOTION_ABSOLUTE, self.now(), int(point[0]), int(point[1]), *self.size)
        self.send(self.mouse, FRAME)
        self.wait()

    def press(self, button, isDown):
        self.send(self.mouse, BUTTON, self.now(), BUTTONS[button], int(isDown))
        self.send(self.mouse, FRAME)
        self.wait()

    def press_key(self, name, isDown):
        self.send(self.keyboard, KEY, self.now(), KEYS[name], int(isDown))
        self.wait()
