#!/usr/bin/env python3
"""Finds the hardening of CMake/Hardening.cmake in the built programs. Usage: HardeningTests.py PROGRAM..."""

import os
import platform
import re
import subprocess
import sys
import unittest

PROGRAMS = []


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, errors="replace").stdout


class HardeningTests(unittest.TestCase):
    def assert_each_has(self, pattern, *command):
        self.assertTrue(PROGRAMS, "no program was named")
        for program in PROGRAMS:
            with self.subTest(program=program):
                self.assertTrue(re.search(pattern, output_of(*command, program)), f"no {pattern}")

    def test_programs_are_position_independent(self):
        self.assert_each_has(r"Type:\s+DYN \(Position-Independent Executable", "readelf", "-hW")

    def test_relocations_are_read_only_and_resolved_at_the_start(self):
        self.assert_each_has("GNU_RELRO", "readelf", "-lW")
        self.assert_each_has(r"FLAGS_1\).*\bNOW\b", "readelf", "-dW")

    def test_the_stack_is_not_executable(self):
        self.assert_each_has(r"GNU_STACK(\s+0x\w+){5}\s+RW\s", "readelf", "-lW")

    def test_the_stack_is_protected(self):
        self.assert_each_has("__stack_chk_fail", "readelf", "--dyn-syms", "-W")

    @unittest.skipIf(os.environ.get("VELMORA_BUILD_TYPE") == "Debug", "needs an optimising build")
    def test_sizes_of_buffers_are_checked(self):
        self.assert_each_has(r"\b__\w+_chk@", "readelf", "--dyn-syms", "-W")

    # The entries of functions are marked. The program's own mark is missing on Debian 12, whose start files have none;
    # they contain a few marked entries in every program.
    @unittest.skipUnless(platform.machine() == "x86_64", "instructions of x86")
    def test_control_flow_is_protected(self):
        for program in PROGRAMS:
            with self.subTest(program=program):
                self.assertGreater(output_of("objdump", "-d", "--no-show-raw-insn", program).count("endbr64"), 50)

    # A large frame is touched page by page, so that it cannot jump over the guard page. Only the application has one.
    @unittest.skipUnless(platform.machine() == "x86_64", "instructions of x86")
    def test_large_frames_are_probed(self):
        application = [program for program in PROGRAMS if program.endswith("/velmora")]
        if not application:
            self.skipTest("the application is not built")
        code = output_of("objdump", "-d", "--no-show-raw-insn", *application)
        self.assertTrue(re.search(r"sub +\$0x1000,%rsp\s+\S+:\s+orq +\$0x0,\(%rsp\)", code))


if __name__ == "__main__":
    PROGRAMS = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])
