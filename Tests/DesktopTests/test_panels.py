#!/usr/bin/env python3
"""Popover and toast as the desktop shows them: without a compositor, and when one ends or starts.

Usage: test_panels.py PROGRAM [unittest arguments]
"""
import sys
import unittest

import test_shell
from x11_desktop import PANEL, Rect, wait_until
from x11_monitors import LEFT, RIGHT, TwoMonitors

GREEN = (0x20, 0xa0, 0x40)


class CompositorTests(test_shell.DesktopTest):
    def started(self, compositor):
        desktop = self.desktop(tray="xembed", compositor=compositor)
        desktop.person.paint_background(0x20A040)
        desktop.start_velmora()
        return desktop

    @staticmethod
    def corner(desktop, panel):
        return {pixel for row in desktop.picture(Rect(panel.x, panel.y, 3, 3)) for pixel in row}

    def test_open_panels_follow_a_compositor_that_ends_and_comes_back(self):
        desktop = self.started(compositor=True)
        _, popover = self.open_popover(desktop)
        wait_until("a translucent corner", lambda: self.corner(desktop, popover) == {GREEN})
        desktop.stop(desktop.compositor)
        wait_until("a corner that is cut off", lambda: self.corner(desktop, popover) == {GREEN})
        desktop.start_compositor()
        wait_until("a translucent corner again", lambda: self.corner(desktop, popover) == {GREEN})

    def test_without_a_compositor_nothing_flashes_while_the_popover_opens(self):
        desktop = self.started(compositor=False)
        icon = desktop.wait_for_icon()
        desktop.click(icon.center)
        popover = wait_until("the popover", desktop.popover)
        strip = Rect(popover.x + 20, popover.center[1], popover.width - 40, 1)
        seen = []

        def is_at_rest():
            seen.append(desktop.picture(strip)[0])
            return len(seen) > 60 and seen[-1] == seen[-2]

        wait_until("the opened popover", is_at_rest)
        final = max(sum(pixel) for pixel in seen[-1])
        ground = [sum(row[0]) for row in seen if row[0] != GREEN]
        self.assertLessEqual(max(ground), sum(seen[-1][0]) + 90, "brighter than it becomes")
        self.assertGreater(final, max(ground), "the texts are brighter than their ground")


class IconTests(test_shell.DesktopTest):
    def test_the_icon_has_the_colour_that_its_tray_needs(self):
        for dark, compositor in ((False, True), (True, True), (False, False), (True, False)):
            with self.subTest(dark=dark, compositor=compositor):
                desktop = self.desktop(tray="xembed", dark_tray=dark, compositor=compositor)
                desktop.start_velmora()
                pixels = [sum(pixel) / 3 for row in desktop.picture(desktop.wait_for_icon()) for pixel in row]
                self.assertGreater(max(pixels) - min(pixels), 120)
                ground = desktop.picture(Rect(desktop.icon()[0].x - 6, desktop.icon()[0].center[1], 1, 1))[0][0]
                self.assertEqual(sum(ground) / 3 < 100, dark, ground)
                desktop.stop(desktop.velmora)


class PlacementTests(test_shell.DesktopTest):
    """Where the popover and our own menu stand, at a panel that does not draw the menu itself."""

    def started(self, **options):
        desktop = self.desktop(tray="xembed", **options)
        desktop.start_velmora()
        return desktop

    def menu(self, desktop):
        return test_shell.NotificationAreaTests.wait_for_menu(self, desktop)

    menu_window = staticmethod(test_shell.NotificationAreaTests.menu_window)

    def test_the_popover_grows_away_from_a_panel_at_the_bottom(self):
        desktop = self.started(edge="bottom")
        _, before = self.open_popover(desktop)
        desktop.copy(test_shell.TRACKED)
        wait_until("the grown popover", lambda: (now := desktop.popover()) and now.height == 536)
        self.assertEqual(desktop.popover().bottom, before.bottom)
        self.assertTrue(desktop.popover().inside(test_shell.work_area("bottom")), desktop.popover())

    def test_a_second_right_click_closes_the_menu(self):
        desktop = self.started()
        icon = desktop.wait_for_icon()
        desktop.click(icon.center, button=3)
        menu = self.menu(desktop)
        self.assertLessEqual(menu.y - icon.bottom, 16)
        desktop.click(icon.center, button=3)
        wait_until("the menu's end", lambda: not self.menu_window(desktop))
        desktop.catch_up()
        self.assertIsNone(self.menu_window(desktop))
        desktop.click(icon.center, button=3)
        self.menu(desktop)
        desktop.key("End", "Home", "s", "Return")  # Start at Login.
        wait_until("the choice", lambda: desktop.is_checked("Start at Login"))


class MonitorTests(test_shell.DesktopTest):
    """On two monitors. The main one is the left one."""

    def opened(self, panel, edge):
        """The desktop, icon and popover with a panel at that edge of that output."""
        desktop = TwoMonitors(test_shell.PROGRAM, panel, edge=edge)
        self.addCleanup(self.end, desktop)
        desktop.start_velmora()
        return desktop, *self.open_popover(desktop)

    def grown(self, desktop):
        desktop.copy(test_shell.TRACKED)
        wait_until("the grown popover", lambda: (now := desktop.popover()) and now.height == 536)
        return desktop.popover()

    def test_the_popover_keeps_off_a_panel_between_the_monitors(self):
        desktop, icon, popover = self.opened("DUMMY0", "right")
        line = 1  # The panel draws one at its edge.
        area = Rect(LEFT.x, LEFT.y, LEFT.width - PANEL - line, LEFT.height)
        self.assertTrue(popover.inside(area), popover)
        self.assertLessEqual(icon.x - popover.right, 24)
        self.assertTrue(self.grown(desktop).inside(area), desktop.popover())
        toast = wait_until("the toast", desktop.toast)
        self.assertEqual((toast.right, toast.y), (area.right - 18, area.y + 10))

    def test_a_panel_of_the_other_monitor_has_the_popover_but_not_the_toast(self):
        desktop, icon, popover = self.opened("DUMMY1", "bottom")
        area = Rect(RIGHT.x, RIGHT.y, RIGHT.width, RIGHT.height - PANEL)
        self.assertTrue(popover.inside(area), popover)
        self.assertLessEqual(icon.y - popover.bottom, 24)
        self.assertEqual(self.grown(desktop).bottom, popover.bottom)
        toast = wait_until("the toast", desktop.toast)
        self.assertEqual((toast.right, toast.y), (LEFT.right - 18, LEFT.y + 10))


if __name__ == "__main__":
    test_shell.PROGRAM = sys.argv.pop(1)
    unittest.main(verbosity=2)
