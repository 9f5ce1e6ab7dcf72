#!/usr/bin/env python3
"""Has velmora-clean replace files."""

import os
import resource
import shutil
import signal
import stat
import subprocess
import tempfile
import unittest

from velmora_clean import JOBS, PROGRAM, cleaned_lines, run, tracked_lines


class CleaningInPlace(unittest.TestCase):
    TEXT = b"https://e.com/?si=1&x\r\n\0 no line feed"
    CLEANED = b"https://e.com/?x\r\n\0 no line feed"

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.path = os.path.join(self.folder, "file.txt")
        self.write(self.TEXT)

    def write(self, content, path=None):
        with open(path or self.path, "wb") as file:
            file.write(content)

    def read(self):
        with open(self.path, "rb") as file:
            return file.read()

    def expect_refused(self, done, message, path=None):
        self.assertEqual(done.stderr.decode(), f"velmora-clean: {path or self.path}: {message}\n")
        self.assertEqual((done.stdout, done.returncode), (b"", 1))

    def expect_untouched(self, *others):
        self.assertEqual(self.read(), self.TEXT)
        self.assertEqual(sorted(os.listdir(self.folder)), sorted(["file.txt", *others]))

    def test_cleans_the_file_and_writes_nothing_else(self):
        done = run("--in-place", self.path)
        self.assertEqual((done.stdout, done.stderr, done.returncode), (b"", b"", 0))
        self.assertEqual(self.read(), self.CLEANED)
        self.assertEqual(os.listdir(self.folder), ["file.txt"])

    def test_cleans_several_files_by_any_path(self):
        other = os.path.join(self.folder, "--other")
        self.write(self.TEXT, other)
        done = run("--in-place", "--jobs=2", "file.txt", "--", "--other", cwd=self.folder)
        self.assertEqual(done.returncode, 0)
        self.assertEqual(self.read(), self.CLEANED)
        with open(other, "rb") as file:
            self.assertEqual(file.read(), self.CLEANED)

    def test_cleans_a_long_file_whose_first_tracker_comes_late(self):
        for jobs in JOBS:
            self.write(b"plain text\n" * 200000 + tracked_lines(20000) + b"plain text\n" * 100000)
            self.assertEqual(run("--in-place", jobs, self.path).returncode, 0)
            self.assertTrue(self.read() == b"plain text\n" * 200000 + cleaned_lines(20000) + b"plain text\n" * 100000)

    def test_keeps_rights_and_attributes(self):
        os.chmod(self.path, 0o2641)
        try:
            os.setxattr(self.path, "user.note", b"kept")
            noted = True
        except OSError:
            noted = False
        self.assertEqual(run("--in-place", self.path).returncode, 0)
        self.assertEqual(stat.S_IMODE(os.stat(self.path).st_mode), 0o2641)
        if noted:
            self.assertEqual(os.getxattr(self.path, "user.note"), b"kept")

    @unittest.skipIf(os.geteuid() != 0, "only root may give files away")
    def test_keeps_the_owner(self):
        os.chown(self.path, 1234, 2345)
        os.chmod(self.path, 0o4755)
        self.assertEqual(run("--in-place", self.path).returncode, 0)
        status = os.stat(self.path)
        self.assertEqual((status.st_uid, status.st_gid, stat.S_IMODE(status.st_mode)), (1234, 2345, 0o4755))

    def test_does_nothing_when_nothing_changes(self):
        for content in (b"", b"x", b"nothing to remove\n" * 100000):
            self.write(content)
            before = os.stat(self.path)
            folder = os.stat(self.folder)
            self.assertEqual(run("--in-place", self.path).returncode, 0)
            after = os.stat(self.path)
            self.assertEqual((before.st_ino, before.st_mtime_ns, before.st_ctime_ns),
                             (after.st_ino, after.st_mtime_ns, after.st_ctime_ns))
            self.assertEqual(folder.st_mtime_ns, os.stat(self.folder).st_mtime_ns)

    def test_reports_by_name(self):
        done = run("--in-place", "--report", self.path)
        self.assertEqual(done.stderr.decode(), f"{self.path}:1: removed si=1; the link is now https://e.com/?x\n")

    def test_refuses_what_is_no_regular_file_and_cleans_the_others(self):
        pipe = os.path.join(self.folder, "pipe")
        os.mkfifo(pipe)
        for path in (self.folder, pipe, "/dev/null"):
            self.expect_refused(run("--in-place", path), "is not a regular file", path)
        self.expect_refused(run("--in-place", "/nonexistent"), "No such file or directory", "/nonexistent")
        self.expect_untouched("pipe")
        self.expect_refused(run("--in-place", pipe, self.path), "is not a regular file", pipe)
        self.assertEqual(self.read(), self.CLEANED)

    def test_refuses_links(self):
        link = os.path.join(self.folder, "link")
        os.symlink("file.txt", link)
        self.expect_refused(run("--in-place", link), "is a symbolic link; name the file that it leads to", link)
        self.expect_untouched("link")
        os.unlink(link)
        os.link(self.path, link)
        self.expect_refused(run("--in-place", self.path),
                            "has several names (hard links), of which only one would be cleaned")
        self.expect_untouched("link")

    def test_refuses_standard_input_and_requests(self):
        for arguments, problem in (([], "--in-place needs files; standard input has no place"),
                                   (["-"], "--in-place needs files; standard input has no place"),
                                   (["--jsonl", "x"], "--in-place and --jsonl exclude each other")):
            done = run("--in-place", *arguments)
            self.assertEqual(done.stderr.decode(), f"velmora-clean: {problem}\nTry: velmora-clean --help\n")
            self.assertEqual(done.returncode, 2)

    @unittest.skipIf(os.geteuid() != 0, "only root may become somebody else")
    def test_respects_rights_of_files_and_folders(self):
        def nobody():
            os.setgid(65534)
            os.setuid(65534)

        program = shutil.copy(PROGRAM, self.folder)
        os.chmod(self.folder, 0o755)
        os.chmod(self.path, 0o644)

        def clean():
            return subprocess.run([program, "--in-place", self.path], capture_output=True, preexec_fn=nobody, timeout=20)

        self.expect_refused(clean(), "Permission denied")
        os.chmod(self.path, 0o666)
        self.expect_refused(clean(), "no temporary file can be made beside it: Permission denied")
        self.expect_untouched(os.path.basename(program))
        os.chmod(self.folder, 0o777)
        os.chmod(self.path, 0o6666)
        self.assertEqual(clean().returncode, 0)
        # Cleaned, but it acts for nobody's sake any more.
        self.assertEqual(self.read(), self.CLEANED)
        self.assertEqual(stat.S_IMODE(os.stat(self.path).st_mode), 0o666)

    def test_leaves_the_file_whole_when_it_cannot_be_written(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (100000, 100000))

        text = tracked_lines(20000)
        self.write(text)
        self.expect_refused(run("--in-place", self.path, preexec_fn=limit), "cannot write: File too large")
        self.assertTrue(self.read() == text)
        self.assertEqual(os.listdir(self.folder), ["file.txt"])

    def test_leaves_the_file_whole_when_a_signal_ends_it(self):
        # A report that nobody reads holds the program up in the middle of its work.
        text = tracked_lines(40000)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGKILL):
            self.write(text)
            process = subprocess.Popen([PROGRAM, "--in-place", "--report", self.path], stderr=subprocess.PIPE)
            process.stderr.read(1)
            self.assertEqual(len(os.listdir(self.folder)), 2)
            process.send_signal(number)
            self.assertEqual(process.wait(timeout=20), -number)
            process.stderr.close()
            self.assertTrue(self.read() == text)
            left = [name for name in os.listdir(self.folder) if name != "file.txt"]
            self.assertEqual(len(left), 1 if number == signal.SIGKILL else 0)

    def test_writes_no_message_into_a_file_when_standard_descriptors_are_closed(self):
        text = tracked_lines(20000)
        self.write(text)
        done = subprocess.run(["sh", "-c", 'exec "$0" --in-place --report "$1" >&- 2>&-', PROGRAM, self.path],
                              timeout=20)
        self.assertEqual(done.returncode, 1)  # Nobody can read the report.
        self.assertTrue(self.read() == cleaned_lines(20000))

    def test_leaves_a_file_alone_that_changes_meanwhile(self):
        self.write(tracked_lines(40000))
        process = subprocess.Popen([PROGRAM, "--in-place", "--report", self.path], stderr=subprocess.PIPE)
        process.stderr.read(1)
        with open(self.path, "ab") as file:
            file.write(b"somebody else's line\n")
        messages = process.communicate(timeout=20)[1]
        self.assertTrue(messages.decode().endswith(
            f"velmora-clean: {self.path}: changed while it was being cleaned, and was left as it is\n"))
        self.assertEqual(process.returncode, 1)
        self.assertTrue(self.read() == tracked_lines(40000) + b"somebody else's line\n")
        self.assertEqual(os.listdir(self.folder), ["file.txt"])


if __name__ == "__main__":
    unittest.main()
