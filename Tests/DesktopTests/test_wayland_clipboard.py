#!/usr/bin/env python3
"""The program's clipboard in a Wayland session, beside programs made for Wayland and for X11.

Usage: test_wayland_clipboard.py PROGRAM [unittest arguments]
"""
import os
import shutil
import signal
import subprocess
import sys
import unittest

from sway_desktop import SwayDesktop
from wayland_desktop import as_ordinary_user
from x11_desktop import TIMEOUT, wait_until
from x11_programs import ATOM, Copier, Handle

PROGRAM = ""
COPIES = 10
NO_PLUGIN = "install XWayland or the package qt6-wayland"


def tracked(number):
    return f"https://shop.example/item?id={number}&utm_source=mail&fbclid=abc"


def cleaned(number):
    return f"https://shop.example/item?id={number}"


class PasswordManager(Copier):
    """Marks what it copies as secret."""
    MARK = "x-kde-passwordManagerHint"

    def __init__(self, display):
        super().__init__(display)
        self.asked = []
        self.forms = {"UTF8_STRING": lambda: self.text, self.MARK: lambda: b"secret"}

    def convert(self, requestor, target, name):
        form = next((form for form in ("TARGETS", *self.forms) if self.atom(form).value == target.value), None)
        self.asked.append(form)
        if form == "TARGETS":
            self.set_property(requestor, name, Handle(ATOM), 32, [self.atom(form).value for form in self.forms])
        elif form:
            self.set_property(requestor, name, target, 8, self.forms[form]())
        return form is not None

    def answer(self):
        """Answers what has been asked by now."""
        while event := self.next_event(0):
            self.handle(event)


class SwayTest(unittest.TestCase):
    def desktop(self, **options):
        desktop = SwayDesktop(PROGRAM, **options)
        self.addCleanup(self.end, desktop)
        return desktop

    def end(self, desktop):
        result = self._outcome.result
        if any(test is self for test, _ in result.failures + result.errors):
            print(desktop.state(), file=sys.stderr)
        desktop.close()

    def start(self, **options):
        desktop = self.desktop(**options)
        desktop.start_velmora()
        wait_until("the menu on the bus", desktop.menu)
        return desktop

    def wait_for_clipboard(self, desktop, text):
        wait_until(f"{text} on the clipboard", lambda: desktop.paste_natively() == text)


class CleaningTests(SwayTest):
    def test_every_native_copy_is_cleaned_without_any_focus(self):
        desktop = self.start()
        for number in range(COPIES):
            desktop.copy_natively(tracked(number))
            self.wait_for_clipboard(desktop, cleaned(number))

    def test_every_x11_copy_is_cleaned_while_another_program_has_the_focus(self):
        desktop = self.start()
        desktop.focus_x11_window()
        for number in range(COPIES):
            desktop.copy(tracked(number))
            self.wait_for_clipboard(desktop, cleaned(number))
            wait_until("the cleaned text in X11", lambda: desktop.clipboard() == cleaned(number))

    def test_a_copy_of_the_same_text_is_cleaned_again(self):
        desktop = self.start()
        for _ in range(3):
            desktop.copy_natively(tracked(7))
            self.wait_for_clipboard(desktop, cleaned(7))

    def test_other_contents_stay_what_they_are(self):
        desktop = self.start()
        for content, options in ((b"\x89PNG", ["--type", "image/png"]), (tracked(1).encode(), ["--type", "text/html"]),
                                 (b"no link at all", [])):
            desktop.wl_copy(content, *options)
            offered = desktop.offered()
            desktop.copy_natively(tracked(2))  # Proof that the copy before was looked at.
            self.wait_for_clipboard(desktop, cleaned(2))
            desktop.wl_copy(content, *options)
            desktop.catch_up()
            self.assertEqual(desktop.offered(), offered)
        subprocess.run(["wl-copy", "--clear"], env=desktop.env, check=True, timeout=TIMEOUT)
        desktop.copy_natively(tracked(3))
        self.wait_for_clipboard(desktop, cleaned(3))

    def test_a_secret_of_an_x11_program_is_not_read(self):
        """sway passes it on without its mark."""
        desktop = self.start()
        desktop.focus_x11_window()
        with PasswordManager(desktop.env["DISPLAY"]) as manager:
            manager.copy(tracked(1).encode())
            wait_until("the question for the mark", lambda: manager.answer() or manager.MARK in manager.asked)
            desktop.catch_up()
            manager.answer()
            self.assertIn("text/plain;charset=utf-8", desktop.offered())  # Wayland programs could have it.
            self.assertEqual(set(manager.asked), {"TARGETS", manager.MARK})
        desktop.copy_natively(tracked(2))
        self.wait_for_clipboard(desktop, cleaned(2))

    def test_an_owner_that_hangs_costs_its_copy_only(self):
        desktop = self.start()
        hanging = desktop.start("hanging", "wl-copy", "--foreground", tracked(1))
        wait_until("the copy", desktop.offered)
        hanging.send_signal(signal.SIGSTOP)
        desktop.copy_natively(tracked(2))
        self.wait_for_clipboard(desktop, cleaned(2))
        hanging.send_signal(signal.SIGCONT)


class EndTests(SwayTest):
    def test_the_text_outlives_us_until_it_is_replaced(self):
        desktop = self.start()
        desktop.copy_natively(tracked(1))
        self.wait_for_clipboard(desktop, cleaned(1))
        desktop.choose("Quit Velmora")
        self.assertEqual(desktop.velmora.wait(TIMEOUT), 0)
        self.assertEqual(desktop.paste_natively(), cleaned(1))
        self.assertEqual(len(desktop.keepers()), 1)

        desktop.copy_natively("something else")
        wait_until("the end of the keeper", lambda: not desktop.keepers())
        self.assertEqual(desktop.paste_natively(), "something else")

    def test_nothing_of_ours_stays_behind_when_the_text_is_not_ours(self):
        desktop = self.start()
        desktop.copy_natively("without a link")
        desktop.catch_up()
        desktop.choose("Quit Velmora")
        self.assertEqual(desktop.velmora.wait(TIMEOUT), 0)
        self.assertEqual(desktop.keepers(), [])

    def test_the_keeper_ends_with_the_session(self):
        desktop = self.start()
        desktop.copy_natively(tracked(1))
        self.wait_for_clipboard(desktop, cleaned(1))
        desktop.choose("Quit Velmora")
        desktop.velmora.wait(TIMEOUT)
        self.assertEqual(len(desktop.keepers()), 1)
        desktop.stop(desktop.sway)
        wait_until("the end of the keeper", lambda: not desktop.keepers())


class StartTests(SwayTest):
    def said(self, environment):
        """What the program says on stderr when it cannot start, and its status."""
        ended = subprocess.run([PROGRAM], env={"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", **environment}, check=False,
                               stdin=subprocess.DEVNULL, capture_output=True, timeout=TIMEOUT)
        return ended.stderr.decode(), ended.returncode

    def test_without_a_desktop_it_says_so(self):
        for environment, words in (({}, "there is no desktop here"),
                                   ({"DISPLAY": ":29999"}, "the display :29999 cannot be reached"),
                                   ({"WAYLAND_DISPLAY": "/nowhere"}, "the Wayland compositor /nowhere can be reached"),
                                   ({"WAYLAND_DISPLAY": "/nowhere", "DISPLAY": ":29999"}, "neither an X server nor"),
                                   ({"QT_QPA_PLATFORM": "xcb"}, "there is no desktop here")):
            with self.subTest(environment):
                text, status = self.said(environment)
                self.assertEqual(status, 1)
                self.assertIn(words, text)
                self.assertEqual(text.count("\n"), 1)

    def test_a_session_that_offers_nothing_usable_is_no_abort(self):
        """Without XWayland and without Qt's Wayland plugin; where that is installed, the program just runs."""
        desktop = self.desktop(xwayland=False)
        program = desktop.start_velmora(QT_QPA_PLATFORM_PLUGIN_PATH="/nowhere")
        wait_until("the end or the menu", lambda: program.poll() is not None or desktop.menu())
        if program.poll() is not None:
            self.assertEqual(program.returncode, 1)
            self.assertIn(NO_PLUGIN, desktop.log("velmora"))

    def test_a_copy_with_its_own_plugins_looks_for_wayland_among_them(self):
        desktop = self.desktop(xwayland=False)
        copy = desktop.folder / "copy"
        (copy / "bin").mkdir(parents=True)
        desktop.program = shutil.copy(PROGRAM, copy / "bin")
        (copy / "bin/qt.conf").write_text("[Paths]\nPrefix=..\nPlugins=plugins\n")
        self.assertEqual(desktop.start_velmora().wait(TIMEOUT), 1)
        self.assertIn(NO_PLUGIN, desktop.log("velmora"))

        (copy / "plugins/platforms").mkdir(parents=True)
        (copy / "plugins/platforms/libqwayland-none.so").touch()
        self.assertNotEqual(desktop.start_velmora().wait(TIMEOUT), 0)  # Found, though Qt cannot load it.
        self.assertEqual(desktop.log("velmora").count(NO_PLUGIN), 1)


if __name__ == "__main__":
    as_ordinary_user()
    PROGRAM = sys.argv.pop(1)
    unittest.main(verbosity=2)
