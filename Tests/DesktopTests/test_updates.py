#!/usr/bin/env python3
"""The program updating itself: an installed copy, a feed over HTTPS, a user who presses the buttons.

Usage: test_updates.py BUILD-FOLDER RELEASE-TOOL [--self-contained] [unittest arguments]

The copies use the Qt of this machine, or with --self-contained each has one inside, as what is published has.
"""
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

from accessibility_bus import AccessibilityBus
from update_server import Certificate, UpdateServer
from x11_desktop import Desktop, wait_until

SOURCES = pathlib.Path(__file__).resolve().parents[2]
BUILD = RELEASE_TOOL = ""
KIND = []  # What the tarballs are made with.
NAME = "app.velmora.Velmora"
CHECK = "Check for Updates..."
ALONE = ["unshare", "-Um", "--map-current-user", "--keep-caps"]
SETTLED = 30  # Seconds, more than enough for the ten after which a version counts as started.


def run(*command, **options):
    return subprocess.run([str(word) for word in command], check=True, stdout=subprocess.PIPE, **options).stdout.decode()


class Publisher:
    """Makes versions of the built program, signs them and writes the feed."""

    def __init__(self):
        self.folder = folder = pathlib.Path(tempfile.mkdtemp(prefix="velmora-publisher-"))
        self.made = {}
        self.site = folder / "site"
        self.site.mkdir()
        self.key = folder / "signing.key"
        self.public = run(RELEASE_TOOL, "keys", self.key).strip()
        self.certificate = Certificate(folder)
        self.server = UpdateServer(self.site, self.certificate)

    def close(self):
        self.server.close()
        shutil.rmtree(self.folder)

    def tarball(self, version):
        if version not in self.made:
            self.made[version] = self.make_tarball(version)
        return self.made[version]

    def make_tarball(self, version):
        information = self.folder / "Info.json"
        run("cmake", f"-DOUTPUT={information}", f"-DIDENTIFIER={NAME}", f"-DSHORT_VERSION={version}.0",
            f"-DVERSION={version}", f"-DFEED={self.server.url}/appcast.xml", f"-DKEY={self.public}", "-P",
            SOURCES / "Packaging/Info.json.cmake")
        # Automatic checks are set, so that the question about them does not interfere.
        information.write_text(json.dumps({**json.loads(information.read_text()), "SUEnableAutomaticChecks": False}))
        archive = self.folder / f"velmora-{version}.tar.xz"
        run(SOURCES / "Tools/release/tarball", *KIND, BUILD, archive, information)
        return archive

    def broken_tarball(self, version):
        """One whose program ends at once, compressed in the other way that copies understand."""
        archive = self.folder / f"velmora-{version}-broken.tar.gz"
        with tempfile.TemporaryDirectory(dir=self.folder) as stage:
            run("tar", "-xf", self.tarball(version), "-C", stage)
            top, = pathlib.Path(stage).iterdir()
            (top / "bin/velmora").write_text("#!/bin/sh\nexit 1\n")
            run("tar", "--format=ustar", "-czf", archive, "-C", stage, top.name)
        return archive

    def image(self, version):
        """One file that holds a whole copy and starts it the way an AppImage does."""
        image = self.folder / f"velmora-{version}.AppImage"
        head = ('#!/bin/sh\nset -e\nAPPDIR=$(mktemp -d -p "$VELMORA_TEST_DESKTOP")\nexport APPDIR APPIMAGE="$(realpath "$0")"\n'
                'sed "1,/^ARCHIVE$/d" "$0" | tar -xJ -C "$APPDIR" --strip-components=1\n'
                'exec "$APPDIR/bin/velmora" "$@"\nARCHIVE\n')
        image.write_bytes(head.encode() + self.tarball(version).read_bytes())
        image.chmod(0o755)
        return image

    def announce(self, version, archive, key=None):
        shutil.copy(archive, self.site)
        (self.site / "appcast.xml").unlink(missing_ok=True)
        run(RELEASE_TOOL, "announce", key or self.key, archive, self.site / "appcast.xml", "--release", version, "--shown",
            f"{version}.0", "--url", f"{self.server.url}/{archive.name}", "--architecture", os.uname().machine)


class UpdateTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        if subprocess.run([*ALONE, "true"], check=False).returncode != 0:
            raise unittest.SkipTest("the kernel allows no user namespaces, in which alone the test's certificate is trusted")
        cls.publisher = Publisher()
        cls.addClassCleanup(cls.publisher.close)
        cls.server = cls.publisher.server

    def setUp(self):
        self.server.asked.clear()
        self.addCleanup(self.server.let_go)
        self.desktop = Desktop("", tray="none")
        self.addCleanup(self.desktop.close)
        self.apps = self.desktop.folder / "apps"
        self.prefix = self.apps / "velmora"
        self.hidden = self.apps / ".velmora.update"
        self.program = self.prefix / "bin/velmora"
        self.downloads = pathlib.Path(self.desktop.env["XDG_CACHE_HOME"]) / "velmora/updates"
        self.prefix.mkdir(parents=True)

    # What the user does

    def install(self, archive):
        run("tar", "-xf", archive, "-C", self.prefix, "--strip-components=1")

    def start(self):
        command = 'mount --bind "$0" /etc/ssl/certs && exec "$1"'
        self.desktop.start("velmora", *ALONE, "sh", "-c", command, str(self.publisher.certificate.trusted), str(self.program))
        return wait_until("the program", self.running)

    def check(self):
        wait_until("the menu's entry", lambda: CHECK in self.desktop.menu())
        self.desktop.choose(CHECK)
        wait_until("the update window", self.window)

    def press(self, key):
        window = self.window()
        if window:
            self.desktop.ask("xdotool", "windowactivate", "--sync", window, "key", key)

    def accept_until(self, what, condition):
        """Presses the window's main button, at whatever step it has one."""
        wait_until(what, lambda: condition() or self.press("Return"))

    # What is to be seen

    def window(self):
        # As wide as none of the other windows; its height is that of its step.
        return next((number for number, _, rect in self.desktop.windows() if rect.width == 500), None)

    def running(self):
        """The process that has the program's name on the bus."""
        answer = self.desktop.call("org.freedesktop.DBus", "/", "org.freedesktop.DBus.GetConnectionUnixProcessID",
                                   f"string:{NAME}")
        found = re.search(r"uint32 (\d+)", answer)
        return found and int(found[1])

    def installed_version(self):
        return json.loads((self.prefix / "share/velmora/Info.json").read_text())["CFBundleVersion"]

    def assert_whole(self, version):
        """The prefix holds this version and every file of it, and nothing else."""
        listed = (self.prefix / "share/velmora/manifest").read_text().split("\n")[:-1]
        present = [str(path.relative_to(self.prefix)) for path in self.prefix.rglob("*") if path.is_file()]
        self.assertEqual(sorted(present), sorted(listed))
        self.assertEqual(self.installed_version(), version)

    def assert_works(self):
        """It cleans a link."""
        # Answered by the event loop: from then on the clipboard is watched.
        wait_until("the tray item", lambda: self.desktop.item_property("Status"))
        self.desktop.copy("https://shop.example/?utm_source=mail")
        wait_until("the cleaned link", lambda: self.desktop.clipboard() == "https://shop.example/")

    def assert_undisturbed(self, pid):
        self.assertEqual(self.running(), pid)
        self.assertEqual(pathlib.Path(f"/proc/{pid}/exe").resolve(), self.program)
        self.assert_whole("1")
        self.assert_works()

    def wait_until_gone(self, what, path):
        wait_until(what, lambda: not path.exists(), SETTLED)


class UpdateTests(UpdateTest):
    def test_version_1_becomes_version_2_and_starts(self):
        self.install(self.publisher.tarball("1"))
        self.publisher.announce("2", self.publisher.tarball("2"))
        old = self.start()
        self.check()
        self.accept_until("version 2 in place", lambda: self.installed_version() == "2")
        new = wait_until("version 2 running", lambda: (now := self.running()) and now != old and now)
        self.assertEqual(pathlib.Path(f"/proc/{new}/exe").resolve(), self.program)
        self.assertTrue((self.hidden / "other/share/velmora/Info.json").exists())  # The old one is kept,
        self.assert_whole("2")
        self.assert_works()
        self.wait_until_gone("the old version", self.hidden)  # until the new one has settled.
        # It knows that it is version 2: to it the same feed has nothing new.
        self.server.asked.clear()
        self.check()
        wait_until("the feed", lambda: self.server.asked == ["/appcast.xml"])
        self.accept_until("the window's end", lambda: not self.window())
        self.assertEqual(self.server.asked, ["/appcast.xml"])

    def test_an_image_becomes_version_2_and_starts(self):
        self.program = self.apps / "Velmora.AppImage"
        self.hidden = self.apps / ".Velmora.AppImage.update"
        shutil.copy(self.publisher.image("1"), self.program)
        second = self.publisher.image("2")
        self.publisher.announce("2", second)
        old = self.start()
        self.check()
        self.accept_until("version 2 in place", lambda: self.program.read_bytes() == second.read_bytes())
        new = wait_until("version 2 running", lambda: (now := self.running()) and now != old and now)
        environment = pathlib.Path(f"/proc/{new}/environ").read_bytes().split(b"\0")
        self.assertIn(f"APPIMAGE={self.program}".encode(), environment)
        self.assertTrue((self.hidden / "other").exists())
        self.assert_works()

    def test_what_another_key_signed_is_refused(self):
        self.install(self.publisher.tarball("1"))
        key = self.publisher.folder / "stranger.key"
        run(RELEASE_TOOL, "keys", key)
        archive = self.publisher.tarball("2")
        self.publisher.announce("2", archive, key)
        pid = self.start()
        self.check()
        self.accept_until("the archive", lambda: f"/{archive.name}" in self.server.asked)
        self.accept_until("the failure's end", lambda: not self.window())
        self.assert_undisturbed(pid)
        self.assertFalse(self.hidden.exists())

    def test_a_version_that_does_not_start_gives_its_place_back(self):
        self.install(self.publisher.tarball("1"))
        self.publisher.announce("2", self.publisher.broken_tarball("2"))
        pid = self.start()
        self.check()
        self.accept_until("the failure's end", lambda: not self.window())
        self.assert_undisturbed(pid)
        self.wait_until_gone("the new version", self.hidden)

    def test_cancelled_half_way_nothing_is_left(self):
        self.install(self.publisher.tarball("1"))
        archive = self.publisher.tarball("2")
        self.publisher.announce("2", archive)
        pid = self.start()
        self.server.hold_back(f"/{archive.name}", 0.5)
        self.check()
        self.accept_until("half of the archive", self.server.held.is_set)
        wait_until("the download on the disk", lambda: any(self.downloads.iterdir()))
        wait_until("the window's end", lambda: not self.window() or self.press("Escape"))
        wait_until("the download's end", lambda: not any(self.downloads.iterdir()))
        self.assert_undisturbed(pid)

    def test_killed_at_any_step_a_whole_version_starts_again(self):
        self.install(self.publisher.tarball("1"))
        archive = self.publisher.tarball("2")
        self.publisher.announce("2", archive)
        for step, version in ((self.reach_the_question_for_the_feed, "1"), (self.reach_half_of_the_archive, "1"),
                              (self.reach_the_unpacking, "1"), (self.reach_the_ready_version, "1"),
                              (self.reach_the_exchange, "2")):
            with self.subTest(step.__name__):
                self.start()
                step(f"/{archive.name}")
                self.kill_everything()
                self.server.let_go()
                self.assert_whole(version)
        self.start()
        self.assert_whole("2")
        self.assert_works()
        self.wait_until_gone("what the killed ones left", self.hidden)
        self.assertEqual(list(self.downloads.iterdir()), [])

    def reach_the_question_for_the_feed(self, _):
        self.server.hold_back("/appcast.xml", 0)
        self.check()
        wait_until("the question for the feed", self.server.held.is_set)

    def reach_half_of_the_archive(self, archive):
        self.server.hold_back(archive, 0.5)
        self.check()
        self.accept_until("half of the archive", self.server.held.is_set)

    def reach_the_unpacking(self, archive):
        self.reach_half_of_the_archive(archive)
        before = self.ready_version()
        self.server.let_go()
        wait_until("unpacked files", lambda: (self.hidden / "unfinished").exists() or self.ready_version() != before)

    def reach_the_ready_version(self, archive):
        self.reach_half_of_the_archive(archive)
        before = self.ready_version()
        self.server.let_go()
        wait_until("the ready version", lambda: self.ready_version() not in (None, before))

    def reach_the_exchange(self, archive):
        self.reach_half_of_the_archive(archive)
        self.server.let_go()
        self.accept_until("the exchange", lambda: self.installed_version() == "2")

    def ready_version(self):
        """Whether the prepared version is complete, not one that a killed process left unfinished."""
        try:
            return (self.hidden / "other").stat().st_ctime_ns
        except FileNotFoundError:
            return None

    def kill_everything(self):
        ours = [process for process in self.desktop.processes if process.name == "velmora"]
        programs = [pid for pid in self.desktop.stragglers() if os.path.realpath(f"/proc/{pid}/exe").startswith(str(self.apps))]
        for pid in programs:
            os.kill(pid, signal.SIGKILL)
        for process in ours:
            self.desktop.stop(process, signal.SIGKILL)
        wait_until("the name to be free", lambda: not self.running())


class ScreenReaderTests(UpdateTest):
    def read_and_press(self, language, check, found, skip, remind, install, ready, later):
        self.install(self.publisher.tarball("1"))
        self.publisher.announce("2", self.publisher.tarball("2"))
        self.desktop.env["LC_ALL"] = language
        bus = AccessibilityBus(self.desktop.env["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(bus.close)
        pid = self.start()
        for answer in (remind, install):
            wait_until("the menu's entry", lambda: check in self.desktop.menu())
            self.desktop.choose(check)
            wait_until(found, lambda: bus.named(found, "label"))
            buttons = {element.name for element in bus.elements() if element.role == "push button"}
            self.assertEqual(buttons, {skip, remind, install})
            self.assertTrue(bus.press(bus.control(answer)))
            if answer == remind:
                wait_until("the window's end", lambda: not self.window())
        wait_until(ready, lambda: bus.named(ready, "label"))
        self.assertTrue(bus.press(wait_until(later, lambda: bus.control(later))))
        wait_until("the window's end", lambda: not self.window())
        self.assert_undisturbed(pid)
        self.assertEqual(self.desktop.complaints(), "")

    def test_the_window_is_read_and_pressed_in_english(self):
        self.read_and_press("C.UTF-8", CHECK, "Velmora 2.0 is here", "Skip This Version", "Remind Me Later", "Install Update",
                            "Velmora 2.0 is ready", "Later")

    def test_the_window_is_read_and_pressed_in_german(self):
        self.read_and_press("de_DE.UTF-8", "Nach Updates suchen...", "Velmora 2.0 ist da", "Diese Version überspringen",
                            "Später erinnern", "Installieren", "Velmora 2.0 ist bereit", "Später")


if __name__ == "__main__":
    BUILD, RELEASE_TOOL, *rest = sys.argv[1:]
    KIND = [word for word in rest if word == "--self-contained"]
    unittest.main(argv=[sys.argv[0], *(word for word in rest if word not in KIND)], verbosity=2)
