#!/usr/bin/env python3
"""Popover and toast in a Wayland session whose compositor shows panels itself.

Usage: test_wayland_panels.py PROGRAM [unittest arguments]
"""
import sys
import unittest

from sway_desktop import SwayDesktop, as_ordinary_user
from x11_desktop import SIZE, wait_until
from x11_person import Rect

PROGRAM = ""
TRACKED = "https://shop.example/item?id=1&utm_source=mail&fbclid=abc"
CLEANED = "https://shop.example/item?id=1"
TOAST = (342, 86)


class PanelTest(unittest.TestCase):
    def start(self, **options):
        desktop = SwayDesktop(PROGRAM, **options)
        self.addCleanup(self.end, desktop)
        desktop.start_velmora()
        wait_until("the menu on the bus", desktop.menu)
        return desktop

    def end(self, desktop):
        result = self._outcome.result
        if any(test is self for test, _ in result.failures + result.errors):
            print(desktop.state(), file=sys.stderr)
        desktop.close()

    def toast_frame(self, desktop, screen=0):
        free = desktop.free_area(screen)
        return Rect(free.right - 18 - TOAST[0], free.y + 10, *TOAST)

    def wait_for(self, desktop, frame, screen=0):
        wait_until(f"something at {vars(frame)}", lambda: desktop.seen(screen) == frame)


class ToastTests(PanelTest):
    def test_it_stands_below_the_bar_and_is_no_window(self):
        desktop = self.start(bar="top")
        desktop.copy_natively(TRACKED)
        self.wait_for(desktop, self.toast_frame(desktop))
        self.assertEqual(desktop.arranged_windows(), [])
        wait_until("its end", lambda: not desktop.seen())

    def test_it_takes_neither_keys_nor_clicks(self):
        desktop = self.start()
        desktop.focus_x11_window()
        windows = desktop.arranged_windows()
        desktop.copy_natively(TRACKED)
        wait_until("the cleaned link", lambda: desktop.paste_natively() == CLEANED)
        place = self.toast_frame(desktop).center
        ground = desktop.picture(Rect(*place, 1, 1))
        wait_until("the toast over the window", lambda: desktop.picture(Rect(*place, 1, 1)) != ground)
        desktop.pointer.click(place)
        desktop.type("a")
        wait_until("the key", lambda: desktop.typed() == "a")
        self.assertEqual(desktop.presses(), 1)
        self.assertNotEqual(desktop.picture(Rect(*place, 1, 1)), ground, "the toast has gone too early")
        self.assertEqual(desktop.focused(), "Event Tester")
        self.assertEqual(desktop.arranged_windows(), windows)

    def test_it_has_the_pixels_of_the_screen(self):
        for scale in (1, 1.5, 2):
            with self.subTest(scale=scale):
                desktop = self.start(scales=(scale,), bar="top")
                desktop.copy_natively(TRACKED)
                frame = self.toast_frame(desktop)
                self.wait_for(desktop, frame)
                self.assertTrue(self.is_sharp(desktop, frame))

    def is_sharp(self, desktop, frame):
        """Whether there are pixels of letters that an enlarged picture would have given to their neighbours too."""
        text = Rect(frame.x + 70, frame.y + 20, 120, 50)
        rows = desktop.picture(text)
        pairs = [(row[x], row[x + 1]) for row in rows[::2] for x in range(0, len(row) - 1, 2)]
        return any(abs(sum(a) - sum(b)) > 200 for a, b in pairs)

    def test_it_is_where_the_user_works(self):
        desktop = self.start(scales=(1, 1), bar="top")
        for screen in (1, 0):
            desktop.pointer.click((SIZE[0] * screen + 200, 400))
            wait_until("the focus", lambda: desktop.focused_screen() == screen)
            desktop.copy_natively(TRACKED)
            self.wait_for(desktop, self.toast_frame(desktop, screen), screen)
            self.assertIsNone(desktop.seen(1 - screen))
            wait_until("its end", lambda: not desktop.seen(screen))


if __name__ == "__main__":
    as_ordinary_user()
    PROGRAM = sys.argv.pop(1)
    unittest.main(verbosity=2)
