#!/usr/bin/env python3
"""The program as people live with it, on real desktops with real clicks and keys.

Usage: test_shell.py PROGRAM [unittest arguments]
"""
import sys
import time
import unittest

from x11_desktop import PANEL, SIZE, Desktop, Rect, wait_until

PROGRAM = ""
TRACKED = "https://shop.example/item?id=7&utm_source=mail&fbclid=abc"
CLEANED = "https://shop.example/item?id=7"
OUTSIDE = (200, 600)


def work_area(edge):
    left, top, right, bottom = (PANEL if edge == side else 0 for side in ("left", "top", "right", "bottom"))
    return Rect(left, top, SIZE[0] - left - right, SIZE[1] - top - bottom)


def when_made(path):
    """Tells one file from the next of the same name, which may have the same inode; None while there is none."""
    try:
        return path.stat().st_ctime_ns
    except FileNotFoundError:
        return None


class DesktopTest(unittest.TestCase):
    def desktop(self, **options):
        desktop = Desktop(PROGRAM, **options)
        self.addCleanup(self.end, desktop)
        return desktop

    def end(self, desktop):
        if any(process.name == "velmora" for process in desktop.processes):
            for line in desktop.log("velmora").splitlines():
                print(f"  velmora: {line}", file=sys.stderr)
        desktop.close()

    def tell(self, what, seconds):
        print(f"  {self.id().split('.', 1)[1]}: {what} {seconds * 1000:.0f} ms", flush=True)

    def open_popover(self, desktop):
        icon = desktop.wait_for_icon()
        desktop.click(icon.center)
        return icon, wait_until("the popover", desktop.popover)

    def wait_closed(self, desktop):
        wait_until("the popover's end", lambda: not desktop.popover())


class OnEveryTray:
    """What holds on a StatusNotifierItem host and in a plain notification area alike."""
    tray = ""

    def started(self, **options):
        desktop = self.desktop(tray=self.tray, **options)
        desktop.start_velmora()
        return desktop

    def test_the_icon_appears_soon_after_the_start(self):
        desktop = self.desktop(tray=self.tray)
        before = time.monotonic()
        desktop.start_velmora()
        desktop.wait_for_icon()
        self.tell("icon seen after", time.monotonic() - before)

    def test_the_icon_appears_when_its_host_comes_late_and_when_it_comes_back(self):
        desktop = self.desktop(tray=self.tray)
        desktop.stop_tray()
        desktop.start_velmora()
        desktop.start_tray()
        desktop.wait_for_icon()
        desktop.stop_tray()
        desktop.start_tray()
        self.open_popover(desktop)

    def test_a_click_opens_below_the_icon_and_a_second_one_closes(self):
        desktop = self.started()
        icon, popover = self.open_popover(desktop)
        self.assertTrue(popover.inside(work_area("top")), popover)
        self.assertEqual((popover.width, popover.height), (306, 386))
        self.assertLessEqual(popover.y - PANEL, 12)
        self.assertLess(abs(min(icon.center[0], SIZE[0] - 8 - 153) - popover.center[0]), 24)
        time.sleep(0.4)  # A click any earlier belongs to the first.
        desktop.click(icon.center)
        self.wait_closed(desktop)

    def test_a_double_click_leaves_the_popover_open(self):
        desktop = self.started()
        icon = desktop.wait_for_icon()
        desktop.click(icon.center, times=2)
        wait_until("the popover", desktop.popover)
        time.sleep(0.6)  # Nothing must happen, so there is nothing to wait for.
        self.assertTrue(desktop.popover())

    def test_a_click_outside_closes_and_reaches_its_target(self):
        desktop = self.desktop(tray=self.tray)
        desktop.open_listener("400x300+50+450")
        desktop.start_velmora()
        self.open_popover(desktop)
        desktop.click(OUTSIDE)
        self.wait_closed(desktop)
        wait_until("the click in the other window", lambda: desktop.presses() == 1)

    def test_a_click_inside_leaves_the_popover_open(self):
        desktop = self.started()
        _, popover = self.open_popover(desktop)
        desktop.click((popover.center[0], popover.y + 130))
        time.sleep(0.5)  # Nothing must happen, so there is nothing to wait for.
        self.assertTrue(desktop.popover())

    def test_a_copy_is_cleaned_announced_and_grows_the_open_popover(self):
        desktop = self.started()
        _, small = self.open_popover(desktop)
        desktop.copy(f"look: {TRACKED} !")
        toast = wait_until("the toast", desktop.toast)
        area = work_area("top")
        self.assertEqual((toast.width, toast.height), (342, 86))
        self.assertEqual(toast.right, area.right - 18)
        self.assertLessEqual(toast.y - area.y - 10, 1)  # The panel's own edge.
        self.assertEqual(desktop.clipboard(), f"look: {CLEANED} !")
        large = wait_until("the grown popover", lambda: (now := desktop.popover()) and now.height == 536 and now)
        self.assertEqual((large.x, large.y, large.width), (small.x, small.y, 306))
        wait_until("the toast's end", lambda: not desktop.toast())

    def test_typing_elsewhere_goes_on_and_clicks_pass_through_the_toast(self):
        desktop = self.desktop(tray=self.tray)
        desktop.open_listener("500x500+760+40")
        desktop.start_velmora()
        icon = desktop.wait_for_icon()
        text = "abcdefghijklmnopqrstuvwxyz" * 4
        typing = desktop.start("typing", "xdotool", "type", "--delay", "25", text)
        desktop.copy(TRACKED)
        toast = wait_until("the toast", desktop.toast)
        desktop.click(toast.center)
        wait_until("the click below the toast", lambda: desktop.presses() == 1)
        self.assertTrue(desktop.toast())
        desktop.click(icon.center)
        wait_until("the popover", desktop.popover)
        typing.wait()
        wait_until("everything typed", lambda: len(desktop.typed()) >= len(text))
        self.assertEqual(desktop.typed(), text)

    def test_ask_first_cleans_only_when_asked(self):
        desktop = self.started()
        desktop.wait_for_icon()
        desktop.stop(desktop.velmora)
        desktop.store(askBeforeCleaningEnabled=True)
        desktop.start_velmora()
        desktop.wait_for_icon()
        desktop.copy(TRACKED)
        warning = wait_until("the warning", desktop.toast)
        self.assertEqual((warning.width, warning.height), (342, 118))
        wait_until("the warning's end", lambda: not desktop.toast())
        self.assertEqual(desktop.clipboard(), TRACKED)

        desktop.copy(TRACKED)
        button = Rect(warning.x + 132, warning.y + 70, 1, 1)
        wait_until("the blue button", lambda: desktop.toast() and self.is_blue(desktop.picture(button)[0][0]))
        time.sleep(0.3)  # Nobody hits a button while it still comes flying in.
        desktop.click((button.x, button.y + 8))
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)
        wait_until("the notice's end", lambda: not desktop.toast(), 2)

    @staticmethod
    def is_blue(pixel):
        return pixel[2] > pixel[0] + 60

    def test_pausing_dims_the_icon_and_stops_cleaning(self):
        desktop = self.started()
        desktop.wait_for_icon()
        full = desktop.icon()[1]
        desktop.choose("Pause Cleaning")
        wait_until("the dim icon", lambda: (now := desktop.icon()) and now[1] < 0.6 * full)
        desktop.copy(TRACKED)
        time.sleep(0.6)  # Nothing must happen, so there is nothing to wait for.
        self.assertEqual(desktop.clipboard(), TRACKED)
        desktop.choose("Resume Cleaning")
        wait_until("the full icon", lambda: desktop.icon()[1] > 0.9 * full)

    def test_each_exported_menu_entry_does_its_work(self):
        desktop = self.started()
        desktop.wait_for_icon()
        self.assertEqual(list(desktop.menu()), ["Pause Cleaning", "Start at Login", "History", "Settings", "Quit Velmora"])
        desktop.choose("Start at Login")
        wait_until("the check mark", lambda: desktop.is_checked("Start at Login"))
        desktop.choose("Start at Login")
        wait_until("no check mark", lambda: not desktop.is_checked("Start at Login"))
        desktop.choose("History")
        wait_until("the settings window", desktop.settings_window)
        desktop.choose("Quit Velmora")
        self.assertEqual(desktop.velmora.wait(10), 0)

    def test_a_second_start_opens_the_settings_of_the_first_and_ends(self):
        desktop = self.started()
        desktop.wait_for_icon()
        before = time.monotonic()
        second = desktop.start("second", PROGRAM)
        self.assertEqual(second.wait(20), 0)
        self.tell("second start ended after", time.monotonic() - before)
        window = wait_until("the settings window", desktop.settings_window)
        self.tell("settings window seen after", time.monotonic() - before)
        self.assertEqual((window.width, window.height), (660, 640))
        self.assertIsNone(desktop.velmora.poll())

    def test_the_settings_window_keeps_its_place_when_closed_and_opened_again(self):
        desktop = self.started()
        desktop.wait_for_icon()
        desktop.choose("Settings")
        wait_until("the settings window", desktop.settings_window)
        number = next(number for number, _, rect in desktop.windows() if rect.width >= 640)
        desktop.ask("xdotool", "windowmove", "--sync", number, "40", "60")
        moved = wait_until("the moved window", lambda: (now := desktop.settings_window()) and now.x < 60 and now)
        desktop.key("alt+F4")
        wait_until("the closed window", lambda: not desktop.settings_window())
        self.assertIsNone(desktop.velmora.poll())
        desktop.choose("Settings")
        again = wait_until("the settings window", desktop.settings_window)
        self.assertLess(abs(again.x - moved.x) + abs(again.y - moved.y), 60)


class StatusNotifierTests(OnEveryTray, DesktopTest):
    tray = "sni"

    def test_the_popover_opens_at_every_edge(self):
        for edge in ("bottom", "left", "right"):
            with self.subTest(edge=edge):
                with Desktop(PROGRAM, tray="sni", edge=edge) as desktop:
                    desktop.start_velmora()
                    icon, popover = self.open_popover(desktop)
                    self.assertTrue(popover.inside(work_area(edge)), f"{edge}: {popover} for {icon}")
                    gap = {"bottom": SIZE[1] - PANEL - popover.bottom, "left": popover.x - PANEL,
                           "right": SIZE[0] - PANEL - popover.right}[edge]
                    self.assertLessEqual(gap, 12, f"{edge}: {popover} for {icon}")

    def test_the_hosts_menu_closes_the_popover(self):
        desktop = self.started()
        icon, _ = self.open_popover(desktop)
        desktop.click(icon.center, button=3)
        self.wait_closed(desktop)
        menu = wait_until("the panel's menu", desktop.panel_menu)
        entry = (menu.center[0], menu.bottom - 16)  # The last one: quit.
        desktop.move(entry)
        time.sleep(0.8)  # The panel's toolkit takes an earlier click for the end of the one that opened the menu.
        desktop.click(entry)
        self.assertEqual(desktop.velmora.wait(10), 0)

    def test_the_tooltip_follows_the_state(self):
        desktop = self.started()
        desktop.wait_for_icon()
        self.assertIn("Velmora \u00b7 Active \u00b7 0 links cleaned", desktop.item_property("ToolTip"))
        desktop.copy(TRACKED)
        wait_until("the count", lambda: "Velmora \u00b7 Active \u00b7 1 links cleaned" in desktop.item_property("ToolTip"))


class NotificationAreaTests(OnEveryTray, DesktopTest):
    tray = "xembed"

    def test_a_right_click_closes_the_popover_and_shows_our_menu(self):
        desktop = self.started()
        icon, _ = self.open_popover(desktop)
        desktop.click(icon.center, button=3)
        menu = self.wait_for_menu(desktop)
        self.wait_closed(desktop)
        self.assertGreaterEqual(menu.width, 180)
        self.assertTrue(menu.inside(work_area("top")), menu)
        desktop.click((menu.x + 60, menu.y + 18))  # The first entry.
        wait_until("the paused program", lambda: "Resume Cleaning" in desktop.menu())

    def test_our_menu_is_worked_with_the_keyboard_and_closed_by_a_click_elsewhere(self):
        desktop = self.started()
        icon = desktop.wait_for_icon()
        desktop.click(icon.center, button=3)
        self.wait_for_menu(desktop)
        desktop.click(OUTSIDE)
        wait_until("the menu's end", lambda: not self.menu_window(desktop))
        desktop.click(icon.center, button=3)
        self.wait_for_menu(desktop)
        desktop.key("Up", "Return")  # The last entry: quit.
        self.assertEqual(desktop.velmora.wait(10), 0)

    @staticmethod
    def menu_window(desktop):
        return next((rect for _, _, rect in desktop.windows() if 180 <= rect.width < 306 and rect.height > 100), None)

    def wait_for_menu(self, desktop):
        return wait_until("our menu", lambda: self.menu_window(desktop))


class WithoutTrayTests(DesktopTest):
    def test_copies_are_cleaned_without_any_tray(self):
        desktop = self.desktop(tray="none")
        desktop.start_velmora()
        wait_until("the menu on the bus", desktop.menu)
        desktop.copy(TRACKED)
        wait_until("the toast", desktop.toast)
        self.assertEqual(desktop.clipboard(), CLEANED)

    def test_panels_are_cut_to_their_shape_without_a_compositor(self):
        desktop = self.desktop(tray="none", compositor=False)
        desktop.ask("xsetroot", "-solid", "#20a040")
        desktop.start_velmora()
        wait_until("the menu on the bus", desktop.menu)
        desktop.copy(TRACKED)
        toast = wait_until("the toast", desktop.toast)
        outside = desktop.picture(Rect(toast.x - 4, toast.y - 4, 2, 2))[0][0]
        corner = desktop.picture(Rect(toast.x, toast.y, 3, 3))
        self.assertTrue(all(pixel == outside for row in corner for pixel in row), corner)

    def test_a_second_start_without_a_bus_reaches_the_first(self):
        desktop = self.desktop(tray="none", bus=False)
        desktop.env["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent"
        desktop.start_velmora()
        socket = desktop.folder / "runtime_dir/app.velmora.Velmora.socket"
        wait_until("the first to listen", socket.exists)
        self.assertEqual(desktop.start("second", PROGRAM).wait(20), 0)
        wait_until("the settings window", desktop.settings_window)
        desktop.stop(desktop.velmora, 9)  # Its socket stays behind.
        stale = when_made(socket)
        desktop.start_velmora()
        wait_until("the socket of the next one", lambda: when_made(socket) not in (None, stale))
        self.assertEqual(desktop.start("second", PROGRAM).wait(20), 0)
        wait_until("the settings window of the next one", desktop.settings_window)

    def test_quitting_leaves_the_text_with_a_clipboard_manager(self):
        desktop = self.desktop(tray="none")
        desktop.start("clipman", "xfce4-clipman")
        wait_until("the clipboard manager", lambda: desktop.owns_selection("CLIPBOARD_MANAGER"))
        desktop.start_velmora()
        wait_until("the menu on the bus", desktop.menu)
        desktop.copy(TRACKED)
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)
        before = time.monotonic()
        desktop.choose("Quit Velmora")
        self.assertEqual(desktop.velmora.wait(10), 0)
        self.tell("quitting took", time.monotonic() - before)
        wait_until("the text of the ended program", lambda: desktop.clipboard() == CLEANED)


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    unittest.main(verbosity=2)
