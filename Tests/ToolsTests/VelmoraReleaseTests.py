#!/usr/bin/env python3
"""Runs velmora-release as a publisher does. The program's path is in VELMORA_RELEASE."""
import base64
import os
import pathlib
import re
import stat
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

PROGRAM = os.path.abspath(os.environ["VELMORA_RELEASE"])
UPDATES = "{http://www.andymatuschak.org/xml-namespaces/sparkle}"
OWN = "{https://velmora.app/xml-namespaces/updates}"


class Release(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.key = self.folder / "key"
        self.archive = self.folder / "velmora-2.tar.gz"
        self.archive.write_bytes(b"an archive")
        self.feed = self.folder / "appcast.xml"
        self.public = self.succeed("keys", self.key).strip()

    def run_tool(self, *arguments):
        return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True, timeout=60, check=False,
                              env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000"})

    def succeed(self, *arguments):
        done = self.run_tool(*arguments)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def fail_with(self, words, *arguments, status=1):
        done = self.run_tool(*arguments)
        self.assertEqual((done.returncode, done.stdout), (status, ""))
        self.assertIn(words, done.stderr)

    def announce(self, release, *options):
        return ("announce", self.key, self.archive, self.feed, "--release", release, "--url", "https://e.example/v.tar.gz",
                *options)

    def items(self):
        return ElementTree.parse(self.feed).getroot().findall("channel/item")

    def signature(self):
        return re.search(r'edSignature="([^"]+)" length="10"', self.succeed("sign", self.key, self.archive))[1]


class Keys(Release):
    def test_a_key_is_its_owners_alone_and_has_a_public_half(self):
        self.assertEqual(stat.S_IMODE(self.key.stat().st_mode), 0o600)
        self.assertEqual(len(base64.b64decode(self.public, validate=True)), 32)
        self.assertEqual(self.succeed("public-key", self.key).strip(), self.public)

    def test_no_key_is_ever_overwritten(self):
        before = self.key.read_bytes()
        self.fail_with("exists", "keys", self.key)
        self.assertEqual(self.key.read_bytes(), before)

    def test_what_is_no_key_is_refused_with_its_line(self):
        self.key.write_text("# a remark\nrubbish\n")
        self.fail_with("key:2:", "public-key", self.key)


class Signatures(Release):
    def test_a_signature_holds_for_its_archive_alone(self):
        signature = self.signature()
        self.succeed("verify", self.public, self.archive, signature)
        self.archive.write_bytes(b"An archive")
        self.fail_with("not that of this file", "verify", self.public, self.archive, signature)

    def test_a_signature_holds_for_its_key_alone(self):
        other = self.succeed("keys", self.folder / "other").strip()
        self.fail_with("not that of this file", "verify", other, self.archive, self.signature())

    def test_what_cannot_be_installed_is_not_signed(self):
        self.fail_with("neither .tar.xz nor .tar.gz nor .AppImage", "sign", self.key, self.key)
        self.archive.write_bytes(b"")
        self.fail_with("empty, or cannot be read", "sign", self.key, self.archive)


class Announcements(Release):
    def test_an_entry_says_what_copies_need(self):
        notes = self.folder / "notes"
        notes.write_text("New: <b>this</b> & that\n")
        self.succeed(*self.announce("20", "--shown", "2.0", "--notes", notes, "--minimum-system", "2.36", "--critical"))
        item, = self.items()
        self.assertEqual(item.findtext(UPDATES + "version"), "20")
        self.assertEqual(item.findtext(UPDATES + "shortVersionString"), "2.0")
        self.assertEqual(item.findtext(UPDATES + "minimumSystemVersion"), "2.36")
        self.assertIsNotNone(item.find(UPDATES + "criticalUpdate"))
        self.assertEqual(item.findtext("description"), "New: <b>this</b> & that")
        self.assertEqual(item.find("description").get(UPDATES + "format"), "plain-text")
        self.assertEqual(item.findtext("pubDate"), "14 Nov 2023 22:13:20 +0000")
        enclosure = item.find("enclosure").attrib
        self.assertEqual(enclosure.pop(UPDATES + "edSignature"), self.signature())
        self.assertEqual(enclosure, {"url": "https://e.example/v.tar.gz", "length": "10", "type": "application/gzip",
                                     UPDATES + "os": "linux", OWN + "architecture": "x86_64"})

    def test_entries_before_stay_below(self):
        self.succeed(*self.announce("20"))
        self.succeed(*self.announce("21"))
        self.assertEqual([item.findtext(UPDATES + "version") for item in self.items()], ["21", "20"])

    def test_one_version_may_come_for_several_processors_but_once_for_each(self):
        self.succeed(*self.announce("20"))
        self.succeed(*self.announce("20", "--architecture", "aarch64"))
        self.fail_with("version 20 is there already", *self.announce("20"))
        self.assertEqual(len(self.items()), 2)

    def test_only_https_is_announced(self):
        self.fail_with("no https address", "announce", self.key, self.archive, self.feed, "--release", "20", "--url",
                       "http://e.example/v.tar.gz")
        self.assertFalse(self.feed.exists())

    def test_a_damaged_feed_is_left_as_it_is(self):
        self.feed.write_text("<rss><channel>")
        self.fail_with("appcast.xml: line 1", *self.announce("20"))
        self.assertEqual(self.feed.read_text(), "<rss><channel>")

    def test_wrong_use_is_explained(self):
        self.fail_with("--release is missing", *self.announce(""))
        self.fail_with("see --help", "announce", self.key, status=2)
        self.fail_with("see --help", "publish", status=2)


if __name__ == "__main__":
    unittest.main()
