#!/usr/bin/env python3
"""How the program starts beside another one, what it can be asked for without its icon, and how it ends.

Usage: test_starts.py PROGRAM [unittest arguments]
"""
import os
import pathlib
import signal
import subprocess
import sys
import unittest

import test_shell
from x11_desktop import TIMEOUT, wait_until


class StartTests(test_shell.DesktopTest):
    def started(self):
        desktop = self.desktop(tray="none")
        desktop.start_velmora()
        wait_until("the menu on the bus", desktop.menu)
        return desktop

    @staticmethod
    def run_again(desktop, *arguments, **environment):
        """What another start writes to stderr, and its status."""
        ended = subprocess.run([test_shell.PROGRAM, *arguments], env={**desktop.env, **environment}, check=False,
                               stdin=subprocess.DEVNULL, capture_output=True, timeout=TIMEOUT)
        return ended.stderr.decode(), ended.returncode

    def test_unknown_arguments_are_refused_with_usage(self):
        desktop = self.desktop(tray="none")
        for arguments in (["--nonsense"], ["-x"], ["file.txt"], ["--settings", "more"]):
            with self.subTest(arguments):
                said, status = self.run_again(desktop, *arguments)
                self.assertEqual(status, 2)
                self.assertIn(f"velmora: unknown argument {arguments[-1]}\nUsage: velmora [", said)

    def test_the_running_program_does_what_it_is_asked_for(self):
        desktop = self.started()
        self.assertEqual(self.run_again(desktop, "--pause"), ("", 0))
        wait_until("the pause", lambda: "Resume Cleaning" in desktop.menu())
        self.assertEqual(self.run_again(desktop, "--pause"), ("", 0))
        wait_until("the end of the pause", lambda: "Pause Cleaning" in desktop.menu())
        self.assertEqual(self.run_again(desktop, "--popover"), ("", 0))
        wait_until("the popover", desktop.popover)
        self.assertEqual(self.run_again(desktop, "--settings"), ("", 0))
        wait_until("the settings window", desktop.settings_window)
        self.assertEqual(self.run_again(desktop, "--quit"), ("", 0))
        self.assertEqual(desktop.velmora.wait(TIMEOUT), 0)
        self.assertEqual(self.run_again(desktop, "--quit"), ("velmora: it is not running.\n", 1))

    def test_a_first_start_can_be_asked_for_the_settings(self):
        desktop = self.desktop(tray="none")
        desktop.start("velmora", test_shell.PROGRAM, "--settings")
        wait_until("the settings window", desktop.settings_window)

    def test_the_popover_that_keys_open_has_the_keyboard_and_gives_it_back(self):
        desktop = self.desktop(tray="none")
        desktop.open_listener("200x100+900+600")
        desktop.start_velmora()
        wait_until("the menu on the bus", desktop.menu)
        self.run_again(desktop, "--popover")
        wait_until("the popover", desktop.popover_for_keys)
        desktop.key("space")  # The switch is the first stop.
        wait_until("the pause", lambda: "Resume Cleaning" in desktop.menu())
        desktop.key("Tab", "shift+Tab", "space")
        wait_until("the end of the pause", lambda: "Pause Cleaning" in desktop.menu())
        self.assertEqual(desktop.typed(), "")
        desktop.key("Escape")
        wait_until("the popover's end", lambda: not desktop.popover())
        desktop.key("a")
        wait_until("what is typed into the earlier window", lambda: desktop.typed() == "a")
        self.run_again(desktop, "--popover")
        wait_until("the popover", desktop.popover_for_keys)
        # The history's button is shown last; on the switch Return does nothing.
        wait_until("the history", lambda: desktop.settings_window() or desktop.key("Tab", "Return"))
        wait_until("the popover's end", lambda: not desktop.popover())

    def test_every_window_carries_the_icon(self):
        desktop = self.started()
        self.run_again(desktop, "--settings")
        wait_until("the settings window", desktop.settings_window)
        self.run_again(desktop, "--popover")
        wait_until("the popover", desktop.popover)
        desktop.copy(test_shell.TRACKED)
        wait_until("the toast", desktop.toast)
        windows = [window for window in desktop.windows() if window.rect.width > 1]
        self.assertGreaterEqual(len(windows), 2)
        for window in windows:
            pictures = self.icon_pictures(desktop.person.words("_NET_WM_ICON", window.number))
            self.assertLessEqual({(16, 16), (32, 32), (64, 64)}, set(pictures), window)
            for size, pixels in pictures.items():
                opaque = sum(pixel >> 24 & 255 == 255 for pixel in pixels)
                self.assertTrue(0.5 * len(pixels) < opaque < len(pixels), (window, size))  # Drawn, with round corners.
                self.assertGreater(len(set(pixels)), 16, (window, size))

    @staticmethod
    def icon_pictures(words):
        found = {}
        while words:
            width, height = words[:2]
            found[width, height] = words[2:2 + width * height]
            words = words[2 + width * height:]
        return found

    def test_a_popover_that_keys_opened_closes_when_they_go_elsewhere(self):
        desktop = self.started()
        self.run_again(desktop, "--popover")
        wait_until("the popover", desktop.popover_for_keys)
        desktop.open_listener("200x100+900+600")
        wait_until("the popover's end", lambda: not desktop.popover())

    def test_a_program_that_does_not_answer_is_named(self):
        desktop = self.started()
        desktop.velmora.send_signal(signal.SIGSTOP)
        try:
            said, status = self.run_again(desktop)
        finally:
            desktop.velmora.send_signal(signal.SIGCONT)
        self.assertEqual(status, 1)
        self.assertIn("it is running already but does not answer", said)

    def test_two_buses_with_one_home_have_one_program(self):
        desktop = self.started()
        socket = pathlib.Path(desktop.env["XDG_RUNTIME_DIR"]) / "other-bus"
        desktop.start("otherbus", "dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address=unix:path={socket}")
        wait_until("the other bus", socket.exists)
        said, status = self.run_again(desktop, DBUS_SESSION_BUS_ADDRESS=f"unix:path={socket}")
        self.assertEqual(status, 1)
        self.assertIn(f"process {desktop.velmora.pid}, display {desktop.env['DISPLAY']}. Quit it there first.", said)
        desktop.stop(desktop.velmora, signal.SIGKILL)
        desktop.start("velmora", test_shell.PROGRAM, "--settings", env={"DBUS_SESSION_BUS_ADDRESS": f"unix:path={socket}"})
        wait_until("the settings window", desktop.settings_window)

    def test_nohup_is_respected(self):
        desktop = self.desktop(tray="none")
        desktop.velmora = desktop.start("velmora", "nohup", test_shell.PROGRAM)
        wait_until("the menu on the bus", desktop.menu)
        desktop.velmora.send_signal(signal.SIGHUP)
        desktop.catch_up()
        self.assertIsNone(desktop.velmora.poll())
        desktop.velmora.send_signal(signal.SIGTERM)
        self.assertEqual(desktop.velmora.wait(TIMEOUT), 0)

    def test_the_end_of_the_x_server_is_an_ordinary_end(self):
        desktop = self.started()
        server = next(process for process in desktop.processes if process.name == "server")
        desktop.person.close()
        desktop.person = None
        server.send_signal(signal.SIGKILL)
        self.assertEqual(desktop.velmora.wait(TIMEOUT), 0)
        (desktop.folder / "velmora.log").write_text("")  # The toolkit may have told that its server is gone.


if __name__ == "__main__":
    os.environ.pop("QT_QPA_PLATFORM", None)
    test_shell.PROGRAM = sys.argv.pop(1)
    unittest.main(verbosity=2)
