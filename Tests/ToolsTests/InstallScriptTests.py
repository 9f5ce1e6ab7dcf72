#!/usr/bin/env python3
"""The script in the tarball that puts the program into the user's menu. Usage: InstallScriptTests.py SOURCE-FOLDER"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCES = pathlib.Path()
ENTRY = "applications/app.velmora.Velmora.desktop"
OTHERS = ["icons/hicolor/16x16/apps/app.velmora.Velmora.png", "icons/hicolor/symbolic/apps/app.velmora.Velmora-symbolic.svg",
          "bash-completion/completions/velmora", "fish/vendor_completions.d/velmora-clean.fish"]


class InstallScriptTests(unittest.TestCase):
    def setUp(self):
        self.home = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.home)
        self.data = self.home / "data"

    def unpacked(self, name="velmora-1"):
        """A folder as the tarball has it, as far as the script looks at it."""
        folder = self.home / name
        for file in OTHERS:
            (folder / "share" / file).parent.mkdir(parents=True)
            (folder / "share" / file).write_text(file)
        (folder / "share/applications").mkdir()
        shutil.copy(SOURCES / "Packaging/app.velmora.Velmora.desktop", folder / "share/applications")
        (folder / "bin").mkdir()
        (folder / "bin/velmora").write_text("#!/bin/sh\n")
        (folder / "bin/velmora").chmod(0o755)
        shutil.copy(SOURCES / "Packaging/install.sh", folder)
        return folder

    def run_script(self, folder, *arguments):
        return subprocess.run([folder / "install.sh", *arguments], check=False, capture_output=True, text=True, cwd="/",
                              env={"PATH": os.environ["PATH"], "HOME": str(self.home), "XDG_DATA_HOME": str(self.data)})

    def installed(self):
        return {str(path.relative_to(self.data)) for path in self.data.rglob("*") if path.is_file()}

    def test_entry_icons_and_completion_come_and_go(self):
        folder = self.unpacked("my velmora")
        self.assertEqual(self.run_script(folder).returncode, 0)
        self.assertEqual(self.installed(), {ENTRY, *OTHERS})
        lines = (self.data / ENTRY).read_text().splitlines()
        options = ("", " --popover", " --settings", " --pause", " --quit")
        self.assertEqual([line for line in lines if line.startswith("Exec=")],
                         [f'Exec="{folder}/bin/velmora"{option}' for option in options])
        self.assertIn(f"TryExec={folder}/bin/velmora", lines)
        other = self.data / "applications/other.desktop"
        other.write_text("")
        self.assertEqual(self.run_script(folder, "--remove").returncode, 0)
        self.assertEqual(self.installed(), {"applications/other.desktop"})
        self.assertEqual(self.run_script(folder, "--remove").returncode, 0)  # Nothing to do is no error.

    def test_a_folder_that_was_moved_is_installed_anew(self):
        self.run_script(self.unpacked())
        moved = (self.home / "velmora-1").rename(self.home / "elsewhere")
        self.assertEqual(self.run_script(moved).returncode, 0)
        self.assertIn(f'Exec="{moved}/bin/velmora"\n', (self.data / ENTRY).read_text())

    def test_what_cannot_work_is_refused_and_nothing_is_written(self):
        for name in ("50% off", "$off", "a&b", "a|b", 'a"b', "a`b", "a\\b"):
            with self.subTest(name):
                result = self.run_script(self.unpacked(name))
                self.assertEqual((result.returncode, self.installed()), (1, set()))
                self.assertIn("has characters that a menu cannot use", result.stderr)
        torn = self.unpacked("torn")
        (torn / "bin/velmora").unlink()
        result = self.run_script(torn)
        self.assertEqual((result.returncode, self.installed()), (1, set()))
        self.assertIn("unpack the whole archive", result.stderr)
        result = self.run_script(torn, "--force")
        self.assertEqual((result.returncode, result.stderr), (2, "Usage: install.sh [--remove]\n"))


if __name__ == "__main__":
    SOURCES = pathlib.Path(sys.argv.pop(1))
    unittest.main(verbosity=2)
