#!/usr/bin/env python3
"""Holds velmora-clean against its documents: man pages, completions, Pipelines.md."""

import json
import os
import re
import shutil
import subprocess
import tempfile
import unittest

from velmora_clean import PROGRAM, PROJECT, cleaned_lines, request, run, tracked_lines


class Documentation(unittest.TestCase):
    MAN_PAGE = os.path.join(PROJECT, "Documentation", "velmora-clean.1")

    @unittest.skipUnless(shutil.which("groff"), "groff formats man pages")
    def test_man_pages_are_formatted_without_a_warning(self):
        for page in (self.MAN_PAGE, os.path.join(PROJECT, "Packaging", "velmora.1.in")):
            done = subprocess.run(["groff", "-man", "-Tutf8", "-ww", "-z", page], capture_output=True, timeout=60)
            self.assertEqual((done.stderr, done.returncode), (b"", 0))

    def test_every_option_stands_in_the_man_page_and_the_completions(self):
        options = set(re.findall(r"--[a-z-]+", run("--help").stdout.decode()))
        self.assertGreaterEqual(options, {"--in-place", "--jobs", "--jsonl", "--ignore-host", "--report"})
        with open(self.MAN_PAGE, encoding="utf-8") as file:
            page = file.read().replace("\\-", "-")
        completions = os.path.join(PROJECT, "Packaging", "completion")
        texts = {"the man page": page}
        for name in ("_velmora-clean", "velmora-clean.bash", "velmora-clean.fish"):
            with open(os.path.join(completions, name), encoding="utf-8") as file:
                texts[name] = file.read()
        for place, text in texts.items():
            for option in options:
                spelled = f"-l {option[2:]}" if place.endswith(".fish") else option
                self.assertRegex(text, rf"{re.escape(spelled)}(?![a-z-])", f"{place} misses {option}")

    @unittest.skipUnless(shutil.which("bash"), "a shell completes")
    def test_bash_completes_options_and_files(self):
        script = os.path.join(PROJECT, "Packaging", "completion", "velmora-clean.bash")

        def complete(*words):
            line = " ".join(f"'{word}'" for word in words)
            done = subprocess.run(
                ["bash", "-c", f". {script}; COMP_WORDS=({line}); COMP_CWORD={len(words) - 1}; compopt() {{ :; }}; "
                 "_velmora_clean; printf '%s\\n' \"${COMPREPLY[@]}\""], capture_output=True, text=True, timeout=20)
            return done.stdout.split()

        self.assertEqual(complete("velmora-clean", "--in"), ["--in-place"])
        self.assertEqual(complete("velmora-clean", "--jo"), ["--jobs"])
        self.assertEqual(complete("velmora-clean", "--jobs", ""), [])
        self.assertEqual(complete("velmora-clean", script[:-2]), [script])


@unittest.skipUnless(shutil.which("parallel"), "GNU parallel runs commands side by side")
class WorkingInPipelines(unittest.TestCase):
    """What Documentation/Pipelines.md shows."""

    def parallel(self, *arguments, stdin=b"", **options):
        return subprocess.run(["parallel", "--will-cite", *arguments], input=stdin, capture_output=True, timeout=120,
                              **options)

    def test_gives_the_same_text_in_blocks_side_by_side(self):
        done = self.parallel("--pipe", "--keep-order", "--block", "256k", PROGRAM, "--jobs", "1",
                             stdin=tracked_lines(40000))
        self.assertEqual((done.stderr, done.returncode), (b"", 0))
        self.assertTrue(done.stdout == cleaned_lines(40000))

    def test_gives_the_same_answers_in_blocks_side_by_side(self):
        lines = [request(f"https://e.com/{i}?si=1") for i in range(20000)]
        done = self.parallel("--pipe", "--keep-order", "--block", "256k", PROGRAM, "--jsonl", "--jobs", "1",
                             stdin=b"\n".join(lines) + b"\n")
        self.assertEqual([json.loads(line)["cleaned_text"] for line in done.stdout.splitlines()],
                         [f"https://e.com/{i}" for i in range(20000)])

    def test_cleans_files_in_place_side_by_side(self):
        with tempfile.TemporaryDirectory() as folder:
            names = [os.path.join(folder, f"file {i}") for i in range(10)]
            for name in names:
                with open(name, "wb") as file:
                    file.write(tracked_lines(100))
            done = self.parallel("-0", "-n", "3", PROGRAM, "--in-place", "--jobs", "1",
                                 stdin="\0".join(names).encode())
            self.assertEqual((done.stderr, done.returncode), (b"", 0))
            for name in names:
                with open(name, "rb") as file:
                    self.assertTrue(file.read() == cleaned_lines(100))


if __name__ == "__main__":
    unittest.main()
