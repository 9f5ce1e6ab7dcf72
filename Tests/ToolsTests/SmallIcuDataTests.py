#!/usr/bin/env python3
"""What ICU still knows with the data that goes into the tarball, and that the rest is gone.

Usage: SmallIcuDataTests.py SOURCES [unittest arguments]

A process of its own loads the small data by its name before the libraries that need it: a program in the tarball finds it
that way, too. Run with --ask, this is that process.
"""
import ctypes
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCES = ""
LARGEST = 3_000_000
# What Qt asks of ICU, in a German or other session: case, order, and the encodings of old files.
CASES = (("Straße", "de_DE", "STRASSE"), ("istanbul", "tr_TR", "İSTANBUL"), ("ĳs", "nl_NL", "ĲS"))
KNOWN = ("UTF-8", "UTF-16LE", "ISO-8859-1", "ISO-8859-15", "ISO-8859-2", "windows-1252", "windows-1250")
GONE = ("Shift_JIS", "GB18030", "Big5")


def installed_data():
    found = re.search(r"libicudata\.so\.(\d+) .*=> (\S+)", subprocess.run(
        ["/sbin/ldconfig", "-p"], check=True, capture_output=True, text=True).stdout)
    return found[1], pathlib.Path(found[2])


class Icu:
    """Functions of ICU; their names end in its version."""

    def __init__(self, version):
        self.version = version
        self.common = ctypes.CDLL(f"libicuuc.so.{version}")
        self.language = ctypes.CDLL(f"libicui18n.so.{version}")

    def call(self, library, name, *arguments, result=ctypes.c_int):
        function = getattr(library, f"{name}_{self.version}")
        function.restype = result
        problem = ctypes.c_int(0)
        value = function(*arguments, ctypes.byref(problem))
        return value if problem.value <= 0 else None

    def upper(self, text, locale):
        source, target = text.encode("utf-16-le"), ctypes.create_string_buffer(200)
        size = self.call(self.common, "u_strToUpper", target, 100, source, len(source) // 2, locale.encode())
        return size and target.raw[:2 * size].decode("utf-16-le")

    def has_encoding(self, name):
        return bool(self.call(self.common, "ucnv_open", name.encode(), result=ctypes.c_void_p))

    def composed(self, text):
        source, target = text.encode("utf-16-le"), ctypes.create_string_buffer(200)
        normalizer = self.call(self.common, "unorm2_getNFCInstance", result=ctypes.c_void_p)
        size = normalizer and self.call(self.common, "unorm2_normalize", ctypes.c_void_p(normalizer), source,
                                        len(source) // 2, target, 100)
        return size and target.raw[:2 * size].decode("utf-16-le")

    def can_sort(self, locale):
        return bool(self.call(self.language, "ucol_open", locale.encode(), result=ctypes.c_void_p))


def answer(version):
    icu = Icu(version)
    loaded = {line.split()[-1] for line in pathlib.Path("/proc/self/maps").read_text().splitlines() if "libicudata" in line}
    return {"loaded": sorted(loaded), "upper": [icu.upper(text, locale) for text, locale, _ in CASES],
            "encodings": [name for name in KNOWN + GONE if icu.has_encoding(name)], "composed": icu.composed("a\u0308"),
            "sorts": [locale for locale in ("de", "en") if icu.can_sort(locale)]}


class SmallIcuDataTests(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="velmora-icu-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        version, whole = installed_data()
        cls.library = cls.folder / f"libicudata.so.{version}"
        shutil.copyfile(whole, cls.library)
        subprocess.run([pathlib.Path(SOURCES) / "Tools/release/small-icu-data", cls.library], check=True)
        told = subprocess.run([sys.executable, __file__, "--ask", version], check=True, stdout=subprocess.PIPE,
                              env={**os.environ, "LD_LIBRARY_PATH": str(cls.folder)})
        cls.told = json.loads(told.stdout)

    def test_it_is_small_and_is_what_is_loaded(self):
        self.assertLess(self.library.stat().st_size, LARGEST)
        self.assertEqual(self.told["loaded"], [str(self.library)])

    def test_case_follows_the_language(self):
        self.assertEqual(self.told["upper"], [upper for _, _, upper in CASES])

    def test_letters_are_composed(self):
        self.assertEqual(self.told["composed"], "ä")

    def test_texts_are_sorted(self):
        self.assertEqual(self.told["sorts"], ["de", "en"])

    def test_encodings_of_old_files_are_there_and_no_others(self):
        self.assertEqual(self.told["encodings"], list(KNOWN))


if __name__ == "__main__":
    if sys.argv[1] == "--ask":
        print(json.dumps(answer(sys.argv[2])))
    else:
        SOURCES = sys.argv.pop(1)
        unittest.main(verbosity=2)
