#!/usr/bin/env python3
"""Popover and toast in a Wayland session whose compositor shows panels itself.

Usage: test_wayland_panels.py PROGRAM [unittest arguments]
"""
import sys
import unittest

from accessibility_bus import AccessibilityBus
from sway_desktop import SwayDesktop
from wayland_desktop import as_ordinary_user
from x11_desktop import SIZE, wait_until
from x11_person import Rect

PROGRAM = ""
TRACKED = "https://shop.example/item?id=1&utm_source=mail&fbclid=abc"
CLEANED = "https://shop.example/item?id=1"
TOAST = (342, 86)
ALERTS = ("alert", "alert message", "notification")  # As Qt's versions call the one role.
POPOVER, GROWN = (306, 386), (306, 536)


class PanelTest(unittest.TestCase):
    def start(self, **options):
        desktop = SwayDesktop(PROGRAM, **options)
        self.addCleanup(self.end, desktop)
        desktop.start_velmora()
        wait_until("the menu on the bus", desktop.menu)
        for screen in range(len(desktop.scales)):
            if desktop.bar:
                wait_until("the icon", lambda place=desktop.icon_place(screen): desktop.is_drawn_at(place))
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

    def test_it_announces_itself_to_screen_readers(self):
        desktop = self.start()
        bus = AccessibilityBus(desktop.env["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(bus.close)
        wait_until("the program on the bus", bus.elements)
        bus.listen()
        desktop.copy_natively(TRACKED)
        wait_until("the announcement", lambda: any(
            (kind, what, number) == ("StateChanged", "showing", 1) and element and element.role in ALERTS
            and element.name == "Cleaned, 2 removed" for kind, what, number, element in bus.heard()))

    def test_it_takes_neither_keys_nor_clicks(self):
        desktop = self.start()
        desktop.focus_x11_window()
        windows = desktop.arranged_windows()
        desktop.copy_natively(TRACKED)
        wait_until("the cleaned link", lambda: desktop.paste_natively() == CLEANED)
        place = self.toast_frame(desktop).center
        ground = desktop.picture(Rect(*place, 1, 1))
        wait_until("the toast over the window", lambda: desktop.picture(Rect(*place, 1, 1)) != ground)
        desktop.click(place)
        desktop.key("a")
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
            desktop.click((SIZE[0] * screen + 200, 400))
            wait_until("the focus", lambda: desktop.focused_screen() == screen)
            desktop.copy_natively(TRACKED)
            self.wait_for(desktop, self.toast_frame(desktop, screen), screen)
            self.assertIsNone(desktop.seen(1 - screen))
            wait_until("its end", lambda: not desktop.seen(screen))


class PopoverTests(PanelTest):
    def open(self, desktop, screen=0):
        desktop.click(desktop.icon_place(screen))
        frame = self.popover_frame(desktop, screen)
        self.wait_for(desktop, frame, screen)
        return frame

    def popover_frame(self, desktop, screen=0, size=POPOVER):
        free = desktop.free_area(screen)
        return Rect(free.right - 8 - size[0], free.y + 8 if desktop.bar == "top" else free.bottom - 8 - size[1], *size)

    @staticmethod
    def has_switch(desktop, frame):
        """Whether the white knob of the switch is on its dark ground, which comes last."""
        knob, ground = (desktop.picture(Rect(frame.x + x, frame.y + 32, 1, 1))[0][0] for x in (278, 150))
        return min(knob) > 230 and max(ground) < 90

    @staticmethod
    def is_revealed(desktop, frame):
        """Whether the white texts of the last card are there. They come last, when the icon takes a click again."""
        card = desktop.picture(Rect(frame.x + 16, frame.bottom - 90, frame.width - 32, 74))
        return any(min(pixel) > 235 for row in card for pixel in row)

    def wait_for_end(self, desktop, screen=0):
        wait_until("the popover's end", lambda: not desktop.seen(screen))

    def test_it_stands_beside_the_icon_and_is_no_window(self):
        for bar in ("top", "bottom"):
            for scale in (1, 1.5, 2):
                with self.subTest(bar=bar, scale=scale):
                    desktop = self.start(bar=bar, scales=(scale,))
                    frame = self.open(desktop)
                    self.assertEqual(desktop.arranged_windows(), [])
                    wait_until("the whole popover", lambda: self.is_revealed(desktop, frame))
                    desktop.click(desktop.icon_place())
                    self.wait_for_end(desktop)

    def test_it_is_on_the_screen_of_the_click(self):
        desktop = self.start(bar="top", scales=(1, 1))
        for screen in (1, 0):
            self.open(desktop, screen)
            self.assertIsNone(desktop.seen(1 - screen))
            desktop.key("Escape")
            self.wait_for_end(desktop, screen)

    def test_escape_closes_it_and_the_keyboard_goes_back(self):
        desktop = self.start(bar="top")
        desktop.focus_x11_window()
        frame = self.popover_frame(desktop)
        ground = desktop.picture(frame)
        desktop.click(desktop.icon_place())
        wait_until("the popover", lambda: desktop.picture(frame) != ground)
        desktop.key("Escape")
        wait_until("its end", lambda: desktop.picture(frame) == ground)
        desktop.key("b")
        wait_until("the key", lambda: desktop.typed() == "b")

    def test_a_click_elsewhere_closes_it_and_reaches_its_window(self):
        desktop = self.start(bar="top")
        desktop.focus_by_click_only()
        desktop.focus_x11_window()
        place = Rect(*self.popover_frame(desktop).center, 1, 1)
        ground = desktop.picture(place)
        desktop.click(desktop.icon_place())
        wait_until("the popover", lambda: desktop.picture(place) != ground)
        desktop.rest_in_x11_window((300, 500))
        self.assertNotEqual(desktop.picture(place), ground, "closed before the click")
        desktop.click((300, 500))
        wait_until("its end", lambda: desktop.picture(place) == ground)
        desktop.key("c")
        wait_until("the key", lambda: desktop.typed() == "c")
        self.assertEqual(desktop.presses(), 1)

    def test_a_click_on_the_bare_desktop_closes_it(self):
        desktop = self.start(bar="top", scales=(1, 1))
        for place in ((300, 500), (SIZE[0] + 300, 500)):
            frame = self.open(desktop)
            desktop.move((400, 500))
            wait_until("the opened popover", lambda: self.has_switch(desktop, frame))
            desktop.key("Tab", "space", "space")  # What the keyboard still goes to is not closing.
            desktop.click(place)
            self.wait_for_end(desktop)

    def test_the_way_to_it_does_not_close_it(self):
        """By default sway gives the keyboard to the window under the mouse."""
        desktop = self.start(bar="top")
        desktop.focus_x11_window()
        frame = self.popover_frame(desktop)
        place = Rect(*frame.center, 1, 1)
        ground = desktop.picture(place)
        icon = desktop.icon_place()
        desktop.click(icon)
        wait_until("the opened popover", lambda: self.has_switch(desktop, frame))
        for y in range(icon[1], frame.center[1], 3):
            desktop.move((icon[0], y))
        desktop.key("Tab", "space")
        wait_until("the pause", lambda: "Resume Cleaning" in desktop.menu())
        self.assertNotEqual(desktop.picture(place), ground)
        desktop.click((300, 500))
        wait_until("its end", lambda: desktop.picture(place) == ground)

    def test_it_grows_away_from_the_bar(self):
        for bar in ("top", "bottom"):
            with self.subTest(bar=bar):
                desktop = self.start(bar=bar)
                self.open(desktop)
                desktop.copy_natively(TRACKED)
                grown = self.popover_frame(desktop, size=GROWN)
                wait_until("the grown popover alone", lambda: desktop.seen() == grown)

    def test_its_switch_can_be_used_by_keys_and_by_the_mouse(self):
        desktop = self.start(bar="top")
        frame = self.open(desktop)
        self.assertIn("Pause Cleaning", desktop.menu())
        desktop.key("Tab", "space")
        wait_until("the pause", lambda: "Resume Cleaning" in desktop.menu())
        desktop.click((frame.right - 42, frame.y + 33))
        wait_until("the end of the pause", lambda: "Pause Cleaning" in desktop.menu())


class MenuTests(PanelTest):
    """Our own menu: swaybar leaves it to us to show one."""

    def open(self, desktop):
        desktop.click(desktop.icon_place(), button=3)
        free = desktop.free_area()

        def menu():
            frame = desktop.seen()
            distance = frame and (frame.y - free.y if desktop.bar == "top" else free.bottom - frame.bottom)
            return frame if frame and frame.width >= 180 and distance == 4 else None

        frame = wait_until("the menu, 4 points from the bar", menu)
        self.assertEqual(desktop.arranged_windows(), [])
        return frame

    def wait_for_end(self, desktop):
        wait_until("the menu's end", lambda: not desktop.seen())

    def test_it_can_be_used_by_keys(self):
        desktop = self.start(bar="bottom")
        self.open(desktop)
        desktop.key("Escape")
        self.wait_for_end(desktop)
        self.open(desktop)
        desktop.key("Down", "Return")
        wait_until("the pause", lambda: "Resume Cleaning" in desktop.menu())
        self.wait_for_end(desktop)

    def test_it_can_be_used_by_the_mouse(self):
        desktop = self.start(bar="top")
        menu = self.open(desktop)
        desktop.click((menu.x + 60, menu.y + 5 + 13))
        wait_until("the pause", lambda: "Resume Cleaning" in desktop.menu())
        self.wait_for_end(desktop)

    def test_a_second_click_closes_it(self):
        desktop = self.start(bar="top")
        self.open(desktop)
        desktop.click(desktop.icon_place(), button=3)
        self.wait_for_end(desktop)
        desktop.catch_up()
        self.assertIsNone(desktop.seen())

    def test_a_click_on_the_bare_desktop_closes_it(self):
        desktop = self.start(bar="top")
        self.open(desktop)
        desktop.click((300, 500), button=3)
        self.wait_for_end(desktop)

    def test_a_click_into_a_window_closes_it(self):
        desktop = self.start(bar="top")
        desktop.focus_by_click_only()
        desktop.focus_x11_window()
        free = desktop.free_area()
        place = Rect(free.right - 90, free.y + 60, 1, 1)
        ground = desktop.picture(place)
        desktop.click(desktop.icon_place(), button=3)
        wait_until("the menu", lambda: desktop.picture(place) != ground)
        desktop.rest_in_x11_window((300, 500))
        desktop.click((300, 500))
        wait_until("its end", lambda: desktop.picture(place) == ground)


if __name__ == "__main__":
    as_ordinary_user()
    PROGRAM = sys.argv.pop(1)
    unittest.main(verbosity=2)
