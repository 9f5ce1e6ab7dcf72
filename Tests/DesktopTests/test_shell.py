#!/usr/bin/env python3
"""The program in daily use, on real desktops with real clicks and keys.

Usage: test_shell.py PROGRAM [unittest arguments]
"""
import sys
import time
import unittest

from x11_desktop import PANEL, TIMEOUT, SIZE, Desktop, Rect, wait_until

PROGRAM = ""
TRACKED = "https://shop.example/item?id=7&utm_source=mail&fbclid=abc"
CLEANED = "https://shop.example/item?id=7"
OUTSIDE = (200, 600)


def work_area(edge):
    left, top, right, bottom = (PANEL if edge == side else 0 for side in ("left", "top", "right", "bottom"))
    return Rect(left, top, SIZE[0] - left - right, SIZE[1] - top - bottom)


def when_made(path):
    """Identifies a file, also against a later one of the same name and inode; None while there is none."""
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
        result = self._outcome.result
        if any(test is self for test, _ in result.failures + result.errors):
            print(desktop.state(), file=sys.stderr)
        said = desktop.complaints()
        desktop.close()
        self.assertEqual(said, "", "the program has complained")

    def tell(self, what, seconds):
        print(f"  {self.id().split('.', 1)[1]}: {what} {seconds * 1000:.0f} ms", flush=True)

    def open_popover(self, desktop):
        icon = desktop.wait_for_icon()
        desktop.click(icon.center)
        return icon, wait_until("the popover", desktop.popover)

    def wait_closed(self, desktop):
        wait_until("the popover's end", lambda: not desktop.popover())

    @staticmethod
    def let_clicks_count_again(desktop):
        time.sleep(0.4)  # A click any earlier belongs to the one that opened the popover.
        desktop.catch_up()

    def close_popover(self, desktop, icon):
        self.let_clicks_count_again(desktop)
        if desktop.popover():
            desktop.click(icon.center)
            self.wait_closed(desktop)


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
        wait_until("the icon", desktop.icon)
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
        self.let_clicks_count_again(desktop)
        desktop.click(icon.center)
        self.wait_closed(desktop)

    def test_the_popover_opens_at_every_edge(self):
        for edge in ("bottom", "left", "right"):
            with self.subTest(edge=edge):
                with Desktop(PROGRAM, tray=self.tray, edge=edge) as desktop:
                    desktop.start_velmora()
                    icon, popover = self.open_popover(desktop)
                    self.assertTrue(popover.inside(work_area(edge)), f"{edge}: {popover} for {icon}")
                    gap = {"bottom": SIZE[1] - PANEL - popover.bottom, "left": popover.x - PANEL,
                           "right": SIZE[0] - PANEL - popover.right}[edge]
                    self.assertLessEqual(gap, 12, f"{edge}: {popover} for {icon}")

    def test_a_double_click_leaves_the_popover_open(self):
        desktop = self.started()
        icon = desktop.wait_for_icon()
        if self.tray == "sni":
            desktop.watch_bus("member='Activate'")
        for attempt in range(5):
            desktop.click(icon.center)
            desktop.click(icon.center)
            wait_until("the popover", desktop.popover)
            if self.was_double_click(desktop, 2 * attempt):
                break
            self.close_popover(desktop, icon)
        else:
            self.fail("the panel passed no double click on in time")
        time.sleep(0.6)  # Nothing must happen, so there is nothing to wait for.
        desktop.catch_up()
        self.assertTrue(desktop.popover())

    def was_double_click(self, desktop, earlier):
        """Whether both clicks reached the program soon enough to be one: panels take their time, more so on busy machines."""
        if self.tray != "sni":
            return True
        clicks = wait_until("both clicks", lambda: (heard := desktop.heard("Activate"))[earlier + 1:] and heard)
        return clicks[earlier + 1] - clicks[earlier] < 0.3

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
        desktop.catch_up()
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
        seen = self.watch_growth(desktop, 536)
        self.assertEqual({(rect.x, rect.y, rect.width) for rect in seen}, {(small.x, small.y, 306)})
        self.assertEqual([rect.height for rect in seen], sorted(rect.height for rect in seen))
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == f"look: {CLEANED} !")
        wait_until("the toast's end", lambda: not desktop.toast())

    @staticmethod
    def watch_growth(desktop, height):
        """Every frame of the popover that is seen until it has that height."""
        seen = []
        wait_until("the grown popover",
                   lambda: (now := desktop.popover()) and (seen.append(now) or now.height == height))
        return seen

    def test_the_toast_lets_clicks_through_from_its_first_moment(self):
        desktop = self.started()
        desktop.wait_for_icon()
        desktop.copy(TRACKED)
        toast = None
        while not toast:
            toast = next((window for window in desktop.windows() if window.rect.width == 342), None)
        self.assertFalse(desktop.person.takes_clicks(toast.number))

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
        self.assertTrue(desktop.toast(), "the toast was gone before the click")
        wait_until("the click below the toast", lambda: desktop.presses() == 1)
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
        button = self.wait_for_button(desktop, warning)
        desktop.click(button.center)
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)
        wait_until("the notice's end", lambda: not desktop.toast(), 2)

    def wait_for_button(self, desktop, warning):
        """The position of the blue button once its entrance animation has ended."""
        seen = [None]

        def rests():
            seen.append(self.blue_area(desktop, Rect(warning.x + 60, warning.y + 60, 270, 52)))
            time.sleep(0.1)
            return desktop.toast() and seen[-1] and seen[-1] == seen[-2] and seen[-1]

        return wait_until("the blue button", rests)

    @staticmethod
    def blue_area(desktop, area):
        blue = [(x, y) for y, row in enumerate(desktop.picture(area)) for x, pixel in enumerate(row)
                if pixel[2] > pixel[0] + 60]
        if len(blue) < 500:
            return None
        left, top = min(x for x, _ in blue), min(y for _, y in blue)
        return Rect(area.x + left, area.y + top, max(x for x, _ in blue) - left, max(y for _, y in blue) - top)

    def test_pausing_dims_the_icon_and_stops_cleaning(self):
        desktop = self.started()
        desktop.wait_for_icon()
        full = desktop.icon()[1]
        desktop.choose("Pause Cleaning")
        wait_until("the dim icon", lambda: (now := desktop.icon()) and now[1] < 0.6 * full)
        desktop.copy(TRACKED)
        time.sleep(0.6)  # Nothing must happen, so there is nothing to wait for.
        desktop.catch_up()
        self.assertEqual(desktop.clipboard(), TRACKED)
        desktop.choose("Resume Cleaning")
        wait_until("the full icon", lambda: (now := desktop.icon()) and now[1] > 0.9 * full)

    def test_a_copy_pulses_the_icon(self):
        desktop = self.started()
        desktop.wait_for_icon()
        full = desktop.icon()[1]
        for attempt in range(5):  # Panels may draw the first and the last of a quick change only.
            desktop.begin_copy(f"https://shop.example/item?id={attempt}&utm_source=mail")
            seen = []  # From before the copy on: the pulse may be over when the toast is there.
            wait_until("the toast", lambda: seen.append(desktop.icon()) or desktop.toast())
            wait_until("the toast's end", lambda: seen.append(desktop.icon()) or not desktop.toast())
            wait_until("the full icon", lambda: (now := desktop.icon()) and now[1] > 0.95 * full)
            weakest = min(icon[1] for icon in seen if icon) / full
            if 0.4 < weakest < 0.75:
                return
        self.fail(f"no pulse seen, the last one went down to {weakest}")

    def test_the_settings_window_comes_to_the_desktop_in_use(self):
        desktop = self.started()
        desktop.wait_for_icon()
        desktop.choose("Settings")
        wait_until("the settings window", desktop.settings_window)
        window = next(window.number for window in desktop.windows() if window.rect.width >= 640)
        wait_until("the keyboard", lambda: desktop.person.words("_NET_ACTIVE_WINDOW") == [window])
        desktop.ask("xdotool", "set_desktop", 1)
        wait_until("the other desktop", lambda: desktop.person.words("_NET_CURRENT_DESKTOP") == [1]
                   and not desktop.settings_window())
        desktop.choose("History")
        wait_until("the settings window", desktop.settings_window)
        wait_until("the keyboard", lambda: desktop.person.words("_NET_ACTIVE_WINDOW") == [window])
        self.assertEqual(desktop.person.words("_NET_CURRENT_DESKTOP"), [1])

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
        self.assertEqual(desktop.velmora.wait(TIMEOUT), 0)

    def test_a_second_start_opens_the_settings_of_the_first_and_ends(self):
        desktop = self.started()
        desktop.wait_for_icon()
        before = time.monotonic()
        second = desktop.start("second", PROGRAM)
        self.assertEqual(second.wait(TIMEOUT), 0)
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
        window = next(window.number for window in desktop.windows() if window.rect.width >= 640)
        desktop.ask("xdotool", "windowmove", window, 40, 60)
        moved = wait_until("the moved window", lambda: (now := desktop.settings_window()) and now.x < 60 and now)
        desktop.activate(window)
        desktop.key("alt+F4")
        wait_until("the closed window", lambda: not desktop.settings_window())
        self.assertIsNone(desktop.velmora.poll())
        desktop.choose("Settings")
        wait_until("the settings window", desktop.settings_window)
        desktop.settle()
        again = desktop.settings_window()
        self.assertLess(abs(again.x - moved.x) + abs(again.y - moved.y), 60)


class StatusNotifierTests(OnEveryTray, DesktopTest):
    tray = "sni"

    def test_the_hosts_menu_closes_the_popover(self):
        desktop = self.started()
        icon, _ = self.open_popover(desktop)
        desktop.click(icon.center, button=3)
        self.wait_closed(desktop)
        wait_until("the panel's menu", desktop.panel_menu)
        desktop.settle()
        menu = desktop.panel_menu()
        entry = Rect(menu.x + 4, menu.bottom - 30, menu.width - 8, 24)  # The last one: quit.
        plain = desktop.picture(entry)
        desktop.move(entry.center)
        wait_until("the entry to light up", lambda: desktop.picture(entry) != plain)
        time.sleep(0.8)  # The panel's toolkit takes an earlier click for the end of the one that opened the menu.
        desktop.click(entry.center)
        self.assertEqual(desktop.velmora.wait(TIMEOUT), 0)

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

    def test_a_hovering_pointer_shows_the_tooltip(self):
        desktop = self.started()
        icon = desktop.wait_for_icon()
        desktop.move(icon.center)
        tip = wait_until("the tip", lambda: self.tip(desktop))
        self.assertTrue(tip.rect.inside(work_area("top")), tip.rect)
        self.assertIn("Velmora \u00b7 Active \u00b7 0 links cleaned", desktop.person.title(tip.number))
        desktop.move(OUTSIDE)
        wait_until("the tip's end", lambda: not self.tip(desktop))

    @staticmethod
    def tip(desktop):
        return next((window for window in desktop.windows() if 16 < window.rect.height < 40 < window.rect.width), None)

    def test_our_menu_works_with_the_keyboard_and_closes_on_a_click_elsewhere(self):
        desktop = self.started()
        icon = desktop.wait_for_icon()
        desktop.click(icon.center, button=3)
        self.wait_for_menu(desktop)
        desktop.click(OUTSIDE)
        wait_until("the menu's end", lambda: not self.menu_window(desktop))
        desktop.click(icon.center, button=3)
        self.wait_for_menu(desktop)
        desktop.key("Up", "Return")  # The last entry: quit.
        self.assertEqual(desktop.velmora.wait(TIMEOUT), 0)

    @staticmethod
    def menu_window(desktop):
        return next((window.rect for window in desktop.windows()
                     if 180 <= window.rect.width < 306 and window.rect.height > 100), None)

    def wait_for_menu(self, desktop):
        """Our menu once it is drawn: by then it has the mouse and the keyboard."""
        menu = wait_until("our menu", lambda: self.menu_window(desktop))
        wait_until("the drawn menu", lambda: len({pixel for row in desktop.picture(menu) for pixel in row}) > 16)
        return menu


class WithoutTrayTests(DesktopTest):
    def test_copies_are_cleaned_without_any_tray(self):
        desktop = self.desktop(tray="none")
        desktop.start_velmora()
        wait_until("the menu on the bus", desktop.menu)
        desktop.copy(TRACKED)
        wait_until("the toast", desktop.toast)
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)

    def test_panels_are_cut_to_their_shape_without_a_compositor(self):
        desktop = self.desktop(tray="none", compositor=False)
        desktop.person.paint_background(0x20A040)
        desktop.start_velmora()
        wait_until("the menu on the bus", desktop.menu)
        desktop.copy(TRACKED)
        toast = wait_until("the toast", desktop.toast)
        middle = Rect(*toast.center, 1, 1)
        wait_until("the drawn toast", lambda: desktop.picture(middle) != [[(0x20, 0xa0, 0x40)]])
        outside = desktop.picture(Rect(toast.x - 4, toast.y - 4, 2, 2))[0][0]
        corner = desktop.picture(Rect(toast.x, toast.y, 3, 3))
        self.assertTrue(all(pixel == outside for row in corner for pixel in row), corner)

    def test_a_second_start_without_a_bus_reaches_the_first(self):
        desktop = self.desktop(tray="none", bus=False)
        desktop.env["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent"
        desktop.start_velmora()
        socket = desktop.folder / "runtime_dir/app.velmora.Velmora.socket"
        wait_until("the first to listen", socket.exists)
        self.assertEqual(desktop.start("second", PROGRAM).wait(TIMEOUT), 0)
        wait_until("the settings window", desktop.settings_window)
        desktop.stop(desktop.velmora, 9)  # Its socket stays behind.
        stale = when_made(socket)
        desktop.start_velmora()
        wait_until("the socket of the next one", lambda: when_made(socket) not in (None, stale))
        self.assertEqual(desktop.start("second", PROGRAM).wait(TIMEOUT), 0)
        wait_until("the settings window of the next one", desktop.settings_window)

    def test_quitting_leaves_the_text_with_a_clipboard_manager(self):
        desktop = self.desktop(tray="none")
        desktop.start("clipman", "xfce4-clipman")
        wait_until("the clipboard manager", lambda: desktop.person.owns_selection("CLIPBOARD_MANAGER"))
        desktop.start_velmora()
        wait_until("the menu on the bus", desktop.menu)
        desktop.copy(TRACKED)
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)
        desktop.settle()  # This manager keeps what it has read, and takes its time to read.
        desktop.watch_bus("member='Event'")
        desktop.choose("Quit Velmora")
        self.assertEqual(desktop.velmora.wait(TIMEOUT), 0)
        ended = time.time()
        self.tell("quitting took", ended - wait_until("the choice on the bus", lambda: desktop.heard("Event"))[0])
        wait_until("the text of the ended program", lambda: desktop.clipboard() == CLEANED)


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    unittest.main(verbosity=2)
