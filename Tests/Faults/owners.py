#!/usr/bin/env python3
"""Copies as no program should, and looks what becomes of the next copy and of the program.

Usage: owners.py PROGRAM [ROW...]      ROW: names of rows, all without them

Each row is a kind of clipboard owner. Behind it a well-behaved program copies: that copy has to be cleaned within a second,
whatever the other still owes. Each row says whether its owner's copy is cleaned, and what a paste gives then.
At the end the program runs, has said nothing, and uses no more than 16 MiB of written memory above that of its start.
"""
import ctypes
import pathlib
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "TestBed"))
from misbehaviour import CLEAN, TRACKED, try_kinds  # noqa: E402
from x11_person import LIBRARY, Handle  # noqa: E402
from x11_programs import ATOM, NEVER, PROPERTY_NOTIFY, SELECTION_CLEAR, SELECTION_NOTIFY, Copier, Event, Paster  # noqa: E402

INTEGER, STRING = 19, 31
WAIT = 1  # Second for each hostile owner: four of the program's looks at the clipboard.
MOST_MEMORY = 16  # MiB more than at the start.
ROWS = {}


def row(name, expected=None):
    """`expected`: what is pasted after velmora has taken the clipboard; nothing when it has to leave it."""
    def add(owner):
        owner.expected = expected
        ROWS[name] = owner
        return owner
    return add


class Owner(Copier):
    """Answers what its members say: `forms` to the question for the forms, `answer` to that for the text."""
    expected = None

    def begin(self):
        self.copy(TRACKED)

    def handle(self, event):
        self.event = event
        super().handle(event)

    def convert(self, requestor, target, name):
        asked = target.value
        if asked == self.atom("TARGETS").value:
            return self.forms(requestor, name)
        return self.answer(requestor, target, name)

    def forms(self, requestor, name):
        return super().convert(requestor, self.atom("TARGETS"), name)

    def answer(self, requestor, target, name):
        return super().convert(requestor, target, name)

    def forms_are(self, requestor, name, kind, size, data):
        self.set_property(requestor, name, Handle(kind), size, data)
        return True

    def become_silent(self):
        self.notify = lambda *_: None


def with_forms(name, expected, kind, size, data):
    """A row whose list of forms is this."""
    class Forms(Owner):
        def forms(self, requestor, name):
            values = data(self) if callable(data) else data
            return self.forms_are(requestor, name, kind, size, values)
    row(name, expected)(Forms)


def with_text(name, expected, kind, size, data):
    """A row whose text is this; `kind` 0 means UTF8_STRING."""
    class Text(Owner):
        def answer(self, requestor, target, name):
            self.set_property(requestor, name, Handle(kind) if kind else target, size, data)
            return True
    row(name, expected)(Text)


with_forms("forms: none", None, ATOM, 32, [])
with_forms("forms: bytes", None, ATOM, 8, b"garbage!")
with_forms("forms: of another type", None, STRING, 8, b"\xff\x01garbage")
with_forms("forms: that do not exist", None, ATOM, 32, [0x1FFFFFFF, 0, 1, 0x12345678])
with_forms("forms: a hundred thousand", CLEAN, ATOM, 32, lambda owner: [owner.atom("UTF8_STRING").value] * 100_000)
with_forms("forms: a mark that is refused", None, ATOM, 32,
           lambda owner: [owner.atom("x-kde-passwordManagerHint").value, owner.atom("UTF8_STRING").value])
with_text("text: 16 bits each", None, 0, 32, [0x68747470] * 10)
with_text("text: a number", None, INTEGER, 32, [7])
with_text("text: an atom", None, ATOM, 32, [1])
with_text("text: empty", None, 0, 8, b"")
with_text("text: not UTF-8", b"\xff\xfe " + CLEAN + b" \xc3", 0, 8, b"\xff\xfe " + TRACKED + b" \xc3")
with_text("text: with zeros", b"\0\0 " + CLEAN + b" \0", 0, 8, b"\0\0 " + TRACKED + b" \0")
with_text("text: eight megabytes of parameters", b"https://shop.example/?a", 0, 8,
          b"https://shop.example/?a" + b"&utm_source=b" * 620_000)
with_text("text: a million question marks", None, 0, 8, b"?" * 1_000_000)


@row("never answers")
class Silent(Owner):
    def handle(self, event):
        pass


@row("never answers for the text")
class SilentText(Owner):
    def answer(self, *_):
        self.become_silent()


@row("refuses everything")
class Refusing(Owner):
    def convert(self, *_):
        return False


@row("refuses to name its forms", CLEAN)
class Old(Owner):
    def forms(self, *_):
        return False


@row("says that it has answered and has not")
class Unwritten(Owner):
    def answer(self, *_):
        return True


@row("answers into another property")
class Elsewhere(Owner):
    def answer(self, requestor, target, name):
        super().answer(requestor, target, self.atom("SOMEWHERE"))
        return True


class Twisted(Owner):
    """Tells of another request than was made."""
    place = 0

    def notify(self, request, name):
        request.words[self.place] = self.atom("ANOTHER").value
        super().notify(request, name)


@row("tells of another selection", CLEAN)
class OtherSelection(Twisted):
    place = 2


@row("tells of another target")
class OtherTarget(Twisted):
    place = 3


@row("answers a thousand times", CLEAN)
class Chatty(Owner):
    def notify(self, request, name):
        for _ in range(1000):
            super().notify(request, name)


@row("answers late", CLEAN)
class Late(Owner):
    def answer(self, *given):
        time.sleep(0.3)
        return super().answer(*given)


@row("destroys its window when asked")
class Vanishing(Owner):
    def convert(self, *_):
        LIBRARY.XDestroyWindow(self.server, self.window)
        return False


@row("ends when asked for its forms")
class EndingAtForms(Owner):
    def handle(self, event):
        self.close()


@row("ends when asked for the text")
class EndingAtText(Owner):
    def answer(self, *_):
        self.close()
        return False

    def notify(self, request, name):
        if self.server:
            super().notify(request, name)


@row("takes the clipboard again whenever it is asked")
class Restless(Owner):
    def handle(self, event):
        super().handle(event)
        self.copy(self.text)


class Pieces(Owner):
    """Sends its text in pieces."""
    announced = len(TRACKED)

    def answer(self, requestor, target, name):
        self.place = requestor, target, name
        self.sent = 0
        LIBRARY.XSelectInput(self.server, Handle(requestor), ctypes.c_long(1 << 22))
        self.set_property(requestor, name, self.atom("INCR"), 32, [self.announced])
        return True

    def handle(self, event):
        if event.kind == PROPERTY_NOTIFY and event.words[3] == 1 and hasattr(self, "place") \
                and event.words[0] == self.place[0]:
            self.sent += 1
            self.piece(*self.place)
            self.flush()
        else:
            super().handle(event)

    def piece(self, requestor, target, name):
        self.set_property(requestor, name, target, 8, self.text[self.sent - 1:self.sent])


@row("pieces: of one byte", CLEAN)
class TinyPieces(Pieces):
    pass


@row("pieces: announced and never sent")
class NoPieces(Pieces):
    def piece(self, *_):
        pass


@row("pieces: without an end")
class EndlessPieces(Pieces):
    def piece(self, requestor, target, name):
        self.set_property(requestor, name, target, 8, TRACKED + b" ")


@row("pieces: ends behind the first")
class EndingPieces(Pieces):
    def piece(self, *place):
        super().piece(*place)
        if self.sent > 1:
            self.close()

    def flush(self):
        if self.server:
            super().flush()


@row("pieces: four gigabytes announced")
class LyingPieces(TinyPieces):
    announced = 0xFFFFFFFF


@row("pieces: of another type")
class OddPieces(Pieces):
    def piece(self, requestor, target, name):
        self.set_property(requestor, name, Handle(INTEGER), 32, [7] if self.sent < 5 else [])


@row("pieces: that announce pieces")
class NestedPieces(Pieces):
    def piece(self, requestor, target, name):
        self.set_property(requestor, name, self.atom("INCR"), 32, [1])


@row("floods with answers to nothing", CLEAN)
class Forger(Owner):
    def begin(self):
        super().begin()
        velmora = LIBRARY.XGetSelectionOwner(self.server, self.atom("CLIPBOARD"))
        for kind in (SELECTION_NOTIFY, SELECTION_CLEAR, PROPERTY_NOTIFY) * 3000:
            event = Event(kind=kind)
            event.words[:5] = [velmora, self.atom("CLIPBOARD").value, self.atom("UTF8_STRING").value, 1, 0]
            LIBRARY.XSendEvent(self.server, Handle(self.victim), 0, NEVER, ctypes.byref(event))
        self.flush()


def try_row(desktop, name, neighbour):
    complaints, display = [], desktop.env["DISPLAY"]
    with ROWS[name](display) as owner, Paster(display) as paster:
        owner.victim = LIBRARY.XGetSelectionOwner(neighbour.server, neighbour.atom("CLIPBOARD"))
        owner.begin()
        end = time.monotonic() + WAIT
        was_taken = False
        while owner.server and not was_taken and (left := end - time.monotonic()) > 0:
            event = owner.next_event(left)
            was_taken = event is not None and event.kind == SELECTION_CLEAR and not event.sent
            if event is not None and not was_taken:
                owner.handle(event)
        pasted = paster.paste() if was_taken else None
        if pasted != owner.expected:
            complaints.append(f"pasted {pasted[:80] if pasted else pasted}")
        neighbour.copy(TRACKED)
        if neighbour.wait_until_lost(1) is None:
            complaints.append("the next copy was not cleaned within a second")
        elif paster.paste() != CLEAN:
            complaints.append("the next copy was cleaned to something else")
    return ("cleaned" if was_taken else "left"), complaints


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__.split("\n\n")[1])
    try_kinds(sys.argv[1], sys.argv[2:] or list(ROWS), try_row, MOST_MEMORY, rest=8)  # Until the last notice has gone.


if __name__ == "__main__":
    main()
