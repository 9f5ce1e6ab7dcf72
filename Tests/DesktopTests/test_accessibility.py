#!/usr/bin/python3
"""The program as it is used by who cannot see it, and by who has no mouse: on a real accessibility bus, with real keys.

Usage: test_accessibility.py PROGRAM [unittest arguments]
"""
import pathlib
import re
import subprocess
import sys
import unittest

import test_shell
from accessibility_bus import AccessibilityBus
from test_shell import CLEANED, TRACKED
from x11_desktop import TIMEOUT, wait_until

KEYS = pathlib.Path(__file__).resolve().parents[2] / "Documentation/Keyboard.md"
CONTROLS = {"push button", "check box", "radio button", "page tab", "text"}
ALERTS = ("alert", "alert message", "notification")  # As Qt's versions call the one role.
LANGUAGES = ("C.UTF-8", "de_DE.UTF-8")


class AccessibleTest(test_shell.DesktopTest):
    def started(self, language=LANGUAGES[0], **stored):
        desktop = self.desktop(tray="none")
        self.bus = AccessibilityBus(desktop.env["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(self.bus.close)
        self.german = language != LANGUAGES[0]
        desktop.start_velmora(LC_ALL=language)
        wait_until("the menu on the bus", desktop.menu)
        if stored:
            desktop.stop(desktop.velmora)
            desktop.store(**stored)
            desktop.start_velmora(LC_ALL=language)
            wait_until("the menu on the bus", desktop.menu)
        return desktop

    def t(self, english, german):
        return german if self.german else english

    @staticmethod
    def ask(desktop, option):
        """What a key of the desktop or an action of its menu does."""
        subprocess.run([test_shell.PROGRAM, option], env=desktop.env, check=True, stdin=subprocess.DEVNULL, timeout=TIMEOUT)

    def open_settings(self, desktop):
        self.ask(desktop, "--settings")
        wait_until("the settings", desktop.settings_window)
        number = next(window.number for window in desktop.windows() if window.rect.width >= 640)
        wait_until("the keyboard", lambda: desktop.person.words("_NET_ACTIVE_WINDOW") == [number])

    def wait_for(self, name):
        return wait_until(name, lambda: self.bus.named(name))

    def wait_gone(self, name):
        wait_until(f"the end of {name}", lambda: not self.bus.named(name))

    def press(self, name):
        """Does the action of the control that is called so, as soon as that is there."""
        self.assertTrue(self.bus.press(wait_until(f"{name} to press", lambda: self.bus.control(name))), name)

    def is_in_state(self, name, state):
        return any(state in element.states for element in self.bus.all_named(name))

    def assert_speakable(self):
        """Whatever is seen says what it is, and a control what it does."""
        shown = [element for element in self.bus.elements() if "showing" in element.states]
        self.assertGreater(len(shown), 3)
        for element in shown:
            self.assertTrue(element.name, element)
            if element.role in CONTROLS - {"text"}:
                self.assertTrue({"Press", "Toggle"} & set(element.actions), element)

    def assert_menu_says(self, desktop, english, german):
        wait_until(self.t(english, german), lambda: self.t(english, german) in desktop.menu())


class ScreenReaderTests(AccessibleTest):
    def in_each_language(self, test):
        for language in LANGUAGES:
            with self.subTest(language=language):
                test(self.started(language))
                self.doCleanups()

    def test_the_popover_is_read_and_pressed(self):
        self.in_each_language(self.use_the_popover)

    def use_the_popover(self, desktop):
        desktop.copy(TRACKED)
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)
        wait_until("the toast's end", lambda: not desktop.toast())
        self.ask(desktop, "--popover")
        history = "Verlauf"
        self.wait_for(history)
        self.assert_speakable()
        names = {element.name for element in self.bus.elements()}
        self.assertLessEqual({"Velmora", self.t("Active", "Aktiv"), self.t("2 removed", "2 entfernt"), TRACKED, CLEANED,
                              self.t("Removed", "Entfernt"), "Heute", "2"}, names)
        switch = self.t("Clean copied links", "Kopierte Links bereinigen")
        self.press(switch)
        self.assert_menu_says(desktop, "Resume Cleaning", "Bereinigung fortsetzen")
        self.wait_for(self.t("Paused", "Pausiert"))
        self.assertFalse(self.is_in_state(switch, "checked"))
        self.press(switch)
        self.assert_menu_says(desktop, "Pause Cleaning", "Bereinigung pausieren")
        self.press(history)
        wait_until("the history", desktop.settings_window)
        self.wait_for(self.t("Link History", "Link-Verlauf"))

    def test_every_setting_is_changed(self):
        self.in_each_language(self.change_settings)

    def change_settings(self, desktop):
        self.open_settings(desktop)
        self.wait_for(self.t("Updates", "Updates"))
        self.assert_speakable()
        desktop.key("End")
        wait_until("the end of the page", lambda: self.is_in_state("Updates", "showing"))
        self.assert_speakable()
        for switch in (self.t("Auto-clean copied links", "Kopierte Links automatisch bereinigen"),
                       self.t("Ask before cleaning", "Vor dem Bereinigen fragen"), self.t("Start at Login", "Beim Login starten"),
                       self.t("Share anonymous usage data", "Anonyme Nutzungsdaten teilen")):
            before = self.is_in_state(switch, "checked")
            for expected in (not before, before):
                self.press(switch)
                wait_until(switch, lambda: self.is_in_state(switch, "checked") == expected)
        for theme in (self.t("Aurora", "Aurora"), self.t("Ocean", "Ocean"), self.t("Light", "Hell"),
                      self.t("Graphite", "Graphit")):
            self.press(theme)
            wait_until(theme, lambda: self.is_in_state(theme, "checked"))
            self.assertEqual(self.bus.named(self.t("Theme", "Theme"), "panel").description, theme)
        self.press(self.t("Show Menu Bar Icon", "Menüleisten-Icon anzeigen"))
        self.wait_for(self.t("Check for Updates...", "Nach Updates suchen..."))  # Nothing to update here.
        self.press(self.t("German", "Englisch"))
        self.german = not self.german
        self.wait_for(self.t("Auto-clean copied links", "Kopierte Links automatisch bereinigen"))
        self.press("System")
        self.german = not self.german
        self.wait_for(self.t("Auto-clean copied links", "Kopierte Links automatisch bereinigen"))

    def test_tabs_are_selected_and_show_their_pages(self):
        self.in_each_language(self.turn_tabs)

    def turn_tabs(self, desktop):
        self.open_settings(desktop)
        for tab, shown in ((self.t("Cleaning", "Bereinigung"), self.t("Ignore last domain", "Letzte Domain ignorieren")),
                           (self.t("History", "Verlauf"), self.t("Clear History", "Verlauf leeren")),
                           (self.t("General", "Allgemein"), self.t("Theme", "Theme"))):
            self.press(tab)
            self.wait_for(shown)
            tabs = [element for element in self.bus.elements() if element.role == "page tab"]
            self.assertEqual([element.name for element in tabs if "selected" in element.states], [tab])
            self.assertFalse(any("checked" in element.states for element in tabs), tabs)
            self.assert_speakable()

    def test_domains_are_typed_and_the_last_one_is_added(self):
        self.in_each_language(self.ignore_domains)

    def ignore_domains(self, desktop):
        desktop.copy(TRACKED)
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)
        self.open_settings(desktop)
        self.press(self.t("Cleaning", "Bereinigung"))
        self.press(self.t("Ignore last domain", "Letzte Domain ignorieren"))
        editor = wait_until("the editor", lambda: self.bus.named(self.t("Ignored Domains", "Ignorierte Domains"), "text"))
        self.assertTrue(self.bus.give_keyboard(editor))
        desktop.key("ctrl+End", "Return")
        desktop.ask("xdotool", "type", "other.example")
        desktop.catch_up()
        for link in (TRACKED, "https://other.example/?utm_source=mail"):
            desktop.copy(link)
            desktop.settle()
            self.assertEqual(desktop.clipboard(), link)

    def test_the_history_is_read_copied_and_cleared(self):
        self.in_each_language(self.use_the_history)

    def use_the_history(self, desktop):
        desktop.copy(TRACKED)
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)
        self.open_settings(desktop)
        self.press(self.t("History", "Verlauf"))
        restore, copy = self.t("Restore Original", "Original"), self.t("Copy Clean Link", "Clean-Link kopieren")
        self.ask(desktop, "--pause")  # Else it counts as a new copy, which is cleaned at once.
        self.press(restore)
        wait_until("the original", lambda: desktop.clipboard() == TRACKED)
        self.ask(desktop, "--pause")
        self.press(copy)
        wait_until("the clean link", lambda: desktop.clipboard() == CLEANED)
        self.press("Details")
        self.wait_for(self.t("Full Link Details", "Link-Details"))
        self.assert_speakable()
        text = self.bus.named(self.t("Before", "Vorher"), "text")
        self.assertNotIn("editable", text.states)
        self.press(self.t("Close", "Schließen"))
        self.wait_gone(self.t("Close", "Schließen"))
        self.press(self.t("Clear History", "Verlauf leeren"))
        self.wait_for(self.t("No cleaned links yet", "Noch keine Links"))
        self.assert_speakable()

    def test_notices_announce_themselves_and_a_warning_is_pressed(self):
        for language in LANGUAGES:
            with self.subTest(language=language):
                self.hear_notices(self.started(language, askBeforeCleaningEnabled=True))
                self.doCleanups()

    def hear_notices(self, desktop):
        wait_until("the program on the bus", self.bus.elements)  # From its first answer on it tells what happens.
        self.bus.listen()
        desktop.copy(TRACKED)
        self.wait_for_announcement(self.t("Trackers found, 2 removed", "Tracker gefunden, 2 entfernt"))
        self.assert_speakable()
        self.press(self.t("Clean Link", "Link bereinigen"))
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)

    def wait_for_announcement(self, name):
        """Screen readers read an alert when it is shown."""
        wait_until(f"the announcement of {name}", lambda: any(
            kind == "StateChanged" and what == "showing" and number == 1 and element and element.name == name
            and element.role in ALERTS
            for kind, what, number, element in self.bus.heard()))

    def test_the_option_that_arrows_choose_is_told(self):
        desktop = self.started()
        self.open_settings(desktop)
        self.wait_for("Ocean")
        self.bus.listen()
        self.bus.give_keyboard(self.bus.named("Theme", "panel"))
        wait_until("the picker's focus", lambda: self.is_in_state("Theme", "focused"))
        for theme in ("Light", "Ocean"):
            desktop.key("Left")
            wait_until(f"what is said of {theme}", lambda: any(
                kind == "StateChanged" and what in ("focused", "checked") and number == 1 and element and element.name == theme
                for kind, what, number, element in self.bus.heard()))


class KeyboardDayTests(AccessibleTest):
    """Everything that is done in a day, by keys alone; each method is a row of the table in Documentation/Keyboard.md."""

    def test_a_day_without_a_mouse(self):
        rows = re.findall(r"^\| ([^|]+?) +\|", KEYS.read_text(), re.MULTILINE)[1:]
        desktop = self.started()
        desktop.copy(TRACKED)
        wait_until("the cleaned clipboard", lambda: desktop.clipboard() == CLEANED)
        wait_until("the toast's end", lambda: not desktop.toast())
        for row in rows:
            with self.subTest(row):
                getattr(self, re.sub(r"\W+", "_", row.lower()).strip("_"))(desktop)

    def tab_to(self, desktop, name):
        for _ in range(25):
            if name in self.bus.focused():
                return
            desktop.key("Tab")
            desktop.catch_up()
        self.fail(f"Tab never comes to {name}, but to {self.bus.focused()}")

    def pause_and_resume(self, desktop):
        self.ask(desktop, "--pause")
        self.assert_menu_says(desktop, "Resume Cleaning", "")
        self.ask(desktop, "--pause")
        self.assert_menu_says(desktop, "Pause Cleaning", "")

    def open_and_close_the_popover(self, desktop):
        self.ask(desktop, "--popover")
        wait_until("the popover", desktop.popover_for_keys)
        desktop.key("Escape")
        self.wait_closed(desktop)

    def pause_in_the_popover(self, desktop):
        self.ask(desktop, "--popover")
        wait_until("the popover", desktop.popover_for_keys)
        for says in ("Resume Cleaning", "Pause Cleaning"):
            desktop.key("space")
            self.assert_menu_says(desktop, says, "")
        desktop.key("Escape")
        self.wait_closed(desktop)

    def go_from_the_popover_to_the_history(self, desktop):
        self.ask(desktop, "--popover")
        wait_until("the popover", desktop.popover_for_keys)
        self.wait_for("Verlauf")
        self.tab_to(desktop, "Verlauf")
        desktop.key("Return")
        wait_until("the history", desktop.settings_window)
        self.wait_closed(desktop)
        self.wait_for("Link History")

    def open_and_close_the_settings(self, desktop):
        for key in ("Escape", "ctrl+w"):
            self.open_settings(desktop)
            desktop.key(key)
            wait_until("the closed settings", lambda: not desktop.settings_window())

    def turn_the_settings_pages(self, desktop):
        self.open_settings(desktop)
        self.tab_to(desktop, "Settings")
        desktop.key("Left", "Left")
        self.wait_for("Theme")
        desktop.key("Right")
        self.wait_for("Ignored Domains")
        desktop.key("Right")
        self.wait_for("Link History")

    def go_through_a_page(self, desktop):
        """Every control of every page is come to, in the order in which they stand, and left again."""
        self.open_settings(desktop)
        self.tab_to(desktop, "Settings")
        desktop.key("Left", "Left")
        for page in (["Auto-clean copied links", "Ask before cleaning", "Start at Login", "Show Menu Bar Icon", "App language",
                      "Theme", "Share anonymous usage data"],
                     ["Ignored Domains", "Ignore last domain"],
                     ["Clear History", "Copy Clean Link", "Restore Original", "Details"]):
            self.wait_for(page[0])
            stops = []
            for key in ["Tab"] * (len(page) + 1) + ["shift+Tab"] * len(page):
                desktop.key(key)
                desktop.catch_up()
                stops += [name for name in self.bus.focused() if name in page + ["Settings"]][:1]
            self.assertEqual(stops, [*page, "Settings", *reversed(page)])
            self.tab_to(desktop, "Settings")
            desktop.key("Right")

    def switch_a_setting(self, desktop):
        self.open_settings(desktop)
        self.tab_to(desktop, "Settings")
        desktop.key("Left", "Left")
        for switch in ("Auto-clean copied links", "Ask before cleaning", "Start at Login", "Share anonymous usage data"):
            self.tab_to(desktop, switch)
            before = self.is_in_state(switch, "checked")
            for expected in (not before, before):
                desktop.key("space")
                wait_until(switch, lambda: self.is_in_state(switch, "checked") == expected)

    def choose_language_and_theme(self, desktop):
        self.tab_to(desktop, "Theme")
        desktop.key("Left")
        wait_until("the theme", lambda: self.is_in_state("Light", "checked"))
        desktop.key("Right")
        wait_until("the theme", lambda: self.is_in_state("Graphite", "checked"))
        self.tab_to(desktop, "App language")
        desktop.key("Right")
        self.wait_for("Vor dem Bereinigen fragen")
        desktop.key("Left")
        self.wait_for("Ask before cleaning")

    def clean_the_link_of_a_warning(self, desktop):
        self.tab_to(desktop, "Ask before cleaning")
        desktop.key("space")
        wait_until("the switch", lambda: self.is_in_state("Ask before cleaning", "checked"))
        desktop.copy(TRACKED)
        wait_until("the warning", desktop.toast)
        self.assertEqual(desktop.clipboard(), TRACKED)
        self.ask(desktop, "--clean")
        wait_until("the clean link", lambda: desktop.clipboard() == CLEANED)
        wait_until("the warning's end", lambda: not desktop.toast())
        desktop.key("space")
        wait_until("the switch", lambda: not self.is_in_state("Ask before cleaning", "checked"))

    def restore_the_original(self, desktop):
        self.tab_to(desktop, "Settings")
        desktop.key("Right", "Right")
        self.tab_to(desktop, "Restore Original")
        self.ask(desktop, "--pause")  # Else it counts as a new copy, which is cleaned at once.
        desktop.key("Return")
        wait_until("the original", lambda: desktop.clipboard() == TRACKED)
        self.ask(desktop, "--pause")

    def copy_a_clean_link_again(self, desktop):
        self.tab_to(desktop, "Copy Clean Link")
        desktop.key("space")
        wait_until("the clean link", lambda: desktop.clipboard() == CLEANED)

    def read_and_leave_the_details(self, desktop):
        for key in ("Escape", "ctrl+w"):
            self.tab_to(desktop, "Details")
            desktop.key("Return")
            self.wait_for("Full Link Details")
            desktop.settle()
            self.tab_to(desktop, "Close")
            desktop.key(key)
            self.wait_gone("Full Link Details")
            self.assertTrue(desktop.settings_window(), "the settings are closed too")

    def clear_the_history(self, desktop):
        self.tab_to(desktop, "Clear History")
        desktop.key("Return")
        self.wait_for("No cleaned links yet")

    def ignore_a_domain(self, desktop):
        self.tab_to(desktop, "Settings")
        desktop.key("Left")
        self.wait_for("Ignored Domains")
        wait_until("the editor's keyboard", lambda: "Ignored Domains" in self.bus.focused() or desktop.key("Tab"))
        desktop.ask("xdotool", "type", "shop.example")
        desktop.catch_up()
        desktop.key("Escape")
        wait_until("the closed settings", lambda: not desktop.settings_window())
        desktop.copy(TRACKED)
        desktop.settle()
        self.assertEqual(desktop.clipboard(), TRACKED)

    def quit(self, desktop):
        self.ask(desktop, "--quit")
        self.assertEqual(desktop.velmora.wait(TIMEOUT), 0)


if __name__ == "__main__":
    test_shell.PROGRAM = sys.argv.pop(1)
    unittest.main(verbosity=2)
