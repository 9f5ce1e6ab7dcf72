#!/usr/bin/env python3
"""The program as people use it who cannot see it, and people who use no mouse: on a real accessibility bus, with real keys.

Usage: test_accessibility.py PROGRAM ACCESSIBLE_TREE [unittest arguments]
"""
import subprocess
import sys
import typing
import unittest

import test_shell
from test_shell import CLEANED, TRACKED
from x11_desktop import TIMEOUT, wait_until

TREE = ""
CONTROLS = {"push button", "check box", "toggle button", "radio button", "page tab", "text", "entry", "button", "switch"}


class Element(typing.NamedTuple):
    depth: int
    role: str
    name: str
    states: set
    actions: list


class AccessibleTest(test_shell.DesktopTest):
    def started(self, **settings):
        desktop = self.desktop(tray="none")
        desktop.env["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        if settings:
            desktop.start_velmora()
            wait_until("the menu on the bus", desktop.menu)
            desktop.stop(desktop.velmora)
            desktop.store(**settings)
        desktop.start_velmora()
        wait_until("the menu on the bus", desktop.menu)
        return desktop

    @staticmethod
    def run_again(desktop, *arguments):
        subprocess.run([test_shell.PROGRAM, *arguments], env=desktop.env, check=True, stdin=subprocess.DEVNULL,
                       timeout=TIMEOUT)

    @staticmethod
    def elements(desktop):
        """What the accessibility bus knows of what is shown."""
        rows = [line.split("\t") for line in desktop.ask(TREE, "list").splitlines()]
        found = [Element(int(depth), role, name, set(states.split(",")), [name for name in actions.split(",") if name])
                 for depth, role, name, states, actions in (row for row in rows if len(row) == 5)]
        return [element for element in found if "showing" in element.states or element.depth < 2]

    def names(self, desktop, role):
        return [element.name for element in self.elements(desktop) if element.role == role]

    def wait_for(self, desktop, name):
        wait_until(name, lambda: any(element.name == name for element in self.elements(desktop)))

    def press(self, desktop, name):
        """Does the action of what is called so, as soon as that is there."""
        wait_until(f"{name} to press", lambda: subprocess.run(
            [TREE, "press", name], env=desktop.env, check=False, stdin=subprocess.DEVNULL, timeout=TIMEOUT).returncode == 0)

    def assert_speakable(self, desktop):
        for element in self.elements(desktop):
            self.assertFalse(element.role in CONTROLS | {"label", "heading", "frame", "window", "alert", "notification"}
                             and not element.name, f"an element without a name: {element}")
            if element.role in CONTROLS - {"text", "entry"}:
                self.assertTrue(element.actions, f"nothing can be done with {element}")


class ScreenReaderTests(AccessibleTest):
    def test_the_popover_is_named_and_its_controls_work(self):
        desktop = self.started()
        self.run_again(desktop, "--popover")
        wait_until("the popover", desktop.popover)
        self.wait_for(desktop, "Verlauf")
        self.assert_speakable(desktop)
        names = {element.name for element in self.elements(desktop)}
        self.assertLessEqual({"Velmora", "Active", "Protected", "Links", "Removed", "Heute", "Waiting for link"}, names)
        self.press(desktop, "Clean copied links")
        wait_until("the pause", lambda: "Resume Cleaning" in desktop.menu())
        self.wait_for(desktop, "Paused")
        self.press(desktop, "Clean copied links")
        wait_until("the end of the pause", lambda: "Pause Cleaning" in desktop.menu())
        self.press(desktop, "Verlauf")
        wait_until("the history", desktop.settings_window)

    def test_every_control_of_the_settings_works_by_its_name(self):
        desktop = self.started()
        self.run_again(desktop, "--settings")
        wait_until("the settings", desktop.settings_window)
        self.wait_for(desktop, "Auto-clean copied links")
        self.assert_speakable(desktop)
        for switch in ("Auto-clean copied links", "Ask before cleaning", "Share anonymous usage data", "Start at Login"):
            with self.subTest(switch):
                before = self.checked(desktop, switch)
                self.press(desktop, switch)
                wait_until(switch, lambda: self.checked(desktop, switch) != before)
                self.press(desktop, switch)
                wait_until(switch, lambda: self.checked(desktop, switch) == before)
        self.press(desktop, "Ocean")
        wait_until("the theme", lambda: self.checked(desktop, "Ocean"))
        self.press(desktop, "German")
        self.wait_for(desktop, "Kopierte Links automatisch bereinigen")
        self.press(desktop, "Englisch")
        self.wait_for(desktop, "Auto-clean copied links")
        self.press(desktop, "Show Menu Bar Icon")

    def checked(self, desktop, name):
        return any("checked" in element.states for element in self.elements(desktop) if element.name == name)

    def test_tabs_are_selected_and_show_their_pages(self):
        desktop = self.started()
        self.run_again(desktop, "--settings")
        wait_until("the settings", desktop.settings_window)
        for tab, shown in (("Cleaning", "Ignore last domain"), ("History", "Clear History"), ("General", "Theme")):
            with self.subTest(tab):
                self.press(desktop, tab)
                self.wait_for(desktop, shown)
                selected = [element.name for element in self.elements(desktop)
                            if element.role == "page tab" and "selected" in element.states]
                self.assertEqual(selected, [tab])
                self.assert_speakable(desktop)

    def test_ignored_domains_are_typed_and_the_last_one_is_added(self):
        desktop = self.started()
        desktop.copy(TRACKED)
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)
        self.run_again(desktop, "--settings")
        wait_until("the settings", desktop.settings_window)
        self.press(desktop, "Cleaning")
        self.press(desktop, "Ignore last domain")
        desktop.copy(TRACKED + "&gclid=1")
        desktop.settle()
        self.assertEqual(desktop.clipboard(), TRACKED + "&gclid=1")

    def test_the_history_is_read_copied_and_cleared(self):
        desktop = self.started()
        desktop.copy(TRACKED)
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)
        self.run_again(desktop, "--settings")
        wait_until("the settings", desktop.settings_window)
        self.press(desktop, "History")
        self.press(desktop, "Restore Original")
        wait_until("the original", lambda: desktop.clipboard() == TRACKED)
        self.press(desktop, "Copy Clean Link")
        wait_until("the clean link", lambda: desktop.clipboard() == CLEANED)
        self.press(desktop, "Details")
        self.wait_for(desktop, "Full Link Details")
        self.assert_speakable(desktop)
        self.press(desktop, "Close")
        self.press(desktop, "Clear History")
        self.wait_for(desktop, "No cleaned links yet")

    def test_notices_announce_themselves_and_the_warning_can_be_pressed(self):
        desktop = self.started(askBeforeCleaningEnabled=True)
        desktop.start("watch", TREE, "watch")
        wait_until("the watcher", lambda: "watching" in desktop.log("watch"))
        desktop.settle()
        desktop.copy(TRACKED)
        wait_until("the warning", desktop.toast)
        wait_until("its announcement", lambda: "notification\tTrackers found" in desktop.log("watch")
                   or "alert\tTrackers found" in desktop.log("watch"))
        self.assert_speakable(desktop)
        self.press(desktop, "Clean Link")
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)


class KeyboardDayTests(AccessibleTest):
    """Everything that a user does in a day, by keys alone."""

    def tab_to(self, desktop, name):
        for _ in range(30):
            focused = [element.name for element in self.elements(desktop) if "focused" in element.states]
            if name in focused:
                return
            desktop.key("Tab")
            desktop.catch_up()
        self.fail(f"Tab never comes to {name}")

    def test_a_day_without_a_mouse(self):
        desktop = self.started()
        desktop.copy(TRACKED)  # A copied link is cleaned.
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)
        wait_until("the toast's end", lambda: not desktop.toast())
        self.use_the_popover(desktop)
        self.use_the_history(desktop)
        self.ignore_a_domain(desktop)
        self.change_settings(desktop)
        self.run_again(desktop, "--pause")
        wait_until("the pause", lambda: "Resume Cleaning" in desktop.menu())
        self.run_again(desktop, "--quit")
        self.assertEqual(desktop.velmora.wait(TIMEOUT), 0)

    def use_the_popover(self, desktop):
        self.run_again(desktop, "--popover")
        wait_until("the popover", desktop.popover_for_keys)
        desktop.key("space")
        wait_until("the pause", lambda: "Resume Cleaning" in desktop.menu())
        desktop.key("space")
        wait_until("the end of the pause", lambda: "Pause Cleaning" in desktop.menu())
        desktop.key("Escape")
        self.wait_closed(desktop)

    def use_the_history(self, desktop):
        self.run_again(desktop, "--popover")
        wait_until("the popover", desktop.popover)
        self.tab_to(desktop, "Verlauf")
        desktop.key("Return")
        wait_until("the history", desktop.settings_window)
        self.wait_closed(desktop)
        desktop.settle()
        self.tab_to(desktop, "Restore Original")
        desktop.key("Return")
        wait_until("the original", lambda: desktop.clipboard() == TRACKED)
        self.tab_to(desktop, "Details")
        desktop.key("space")
        self.wait_for(desktop, "Full Link Details")
        desktop.key("Escape")
        wait_until("the sheet's end", lambda: "Full Link Details" not in self.names(desktop, "heading"))
        self.tab_to(desktop, "Copy Clean Link")
        desktop.key("Return")
        wait_until("the clean link", lambda: desktop.clipboard() == CLEANED)
        self.tab_to(desktop, "Clear History")
        desktop.key("Return")
        self.wait_for(desktop, "No cleaned links yet")

    def ignore_a_domain(self, desktop):
        self.tab_to(desktop, "Settings")
        desktop.key("Left")
        self.tab_to(desktop, "Ignored Domains")
        desktop.ask("xdotool", "type", "shop.example")
        desktop.key("Escape")
        wait_until("the closed settings", lambda: not desktop.settings_window())
        desktop.copy(TRACKED)
        desktop.settle()
        self.assertEqual(desktop.clipboard(), TRACKED)

    def change_settings(self, desktop):
        self.run_again(desktop, "--settings")
        wait_until("the settings", desktop.settings_window)
        desktop.settle()
        self.tab_to(desktop, "Ask before cleaning")
        desktop.key("space")
        self.tab_to(desktop, "App language")
        desktop.key("Right", "Right")
        self.wait_for(desktop, "Vor dem Bereinigen fragen")
        desktop.key("Left")
        self.wait_for(desktop, "Ask before cleaning")
        desktop.key("ctrl+w")
        wait_until("the closed settings", lambda: not desktop.settings_window())


if __name__ == "__main__":
    test_shell.PROGRAM, TREE = sys.argv.pop(1), sys.argv.pop(1)
    unittest.main(verbosity=2)
