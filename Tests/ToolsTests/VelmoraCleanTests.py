#!/usr/bin/env python3
"""Runs velmora-clean as its users do. The program's path stands in VELMORA_CLEAN."""

import json
import os
import pty
import re
import resource
import select
import shutil
import signal
import stat
import subprocess
import tempfile
import threading
import time
import unittest

PROGRAM = os.path.abspath(os.environ["VELMORA_CLEAN"])
PROJECT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))


def run(*arguments, stdin=b"", **options):
    return subprocess.run([PROGRAM, *arguments], input=stdin, capture_output=True, timeout=60, **options)


def answers(*lines, arguments=("--jsonl",)):
    done = run(*arguments, stdin=b"".join(line + b"\n" for line in lines))
    return [json.loads(line) for line in done.stdout.splitlines()], done


def request(text, **members):
    return json.dumps({"text": text, **members}).encode()


def tracked_lines(count):
    return b"".join(b"%d https://example.com/p/%d?utm_source=%d&id=%d\r\n" % (i, i, i, i) for i in range(count))


def cleaned_lines(count):
    return b"".join(b"%d https://example.com/p/%d?id=%d\r\n" % (i, i, i) for i in range(count))


class CleaningText(unittest.TestCase):
    def test_cleans_standard_input(self):
        done = run(stdin=b"see https://www.example.com/watch?v=1&si=x&utm_source=y.\n")
        self.assertEqual(done.stdout, b"see https://www.example.com/watch?v=1.\n")
        self.assertEqual((done.stderr, done.returncode), (b"", 0))

    def test_keeps_every_byte_around_links(self):
        before = bytes(range(256)) + b"\r\n\0\n"
        done = run(stdin=before + b"https://e.com/?utm_source=a" + b"\r\n" + before)
        self.assertEqual(done.stdout, before + b"https://e.com/\r\n" + before)

    def test_adds_no_line_feed_at_the_end(self):
        self.assertEqual(run(stdin=b"https://e.com/?si=1").stdout, b"https://e.com/")
        self.assertEqual(run(stdin=b"").stdout, b"")

    def test_joins_nothing_across_a_line_break(self):
        done = run(stdin=b"https://e.com/?utm_source=a\n&utm_medium=b\n")
        self.assertEqual(done.stdout, b"https://e.com/\n&utm_medium=b\n")

    def test_ignores_hosts_in_both_spellings_of_the_option(self):
        text = b"https://a.com/?si=1 https://x.b.com/?si=1 https://c.com/?si=1\n"
        done = run("--ignore-host", "A.com", "--ignore-host=b.com", stdin=text)
        self.assertEqual(done.stdout, b"https://a.com/?si=1 https://x.b.com/?si=1 https://c.com/\n")

    def test_reads_files_one_after_the_other_and_standard_input_for_a_dash(self):
        with tempfile.TemporaryDirectory() as folder:
            first, second = os.path.join(folder, "first"), os.path.join(folder, "--second")
            for path, content in ((first, b"https://a.com/?si=1"), (second, b"/x https://b.com/?si=1")):
                with open(path, "wb") as file:
                    file.write(content)
            done = run(first, "-", "--", "--second", stdin=b"\nhttps://c.com/?si=1\n", cwd=folder)
        self.assertEqual(done.stdout, b"https://a.com/\nhttps://c.com/\n/x https://b.com/")

    def test_names_a_missing_file_and_reads_the_others(self):
        done = run("/nonexistent/one", "-", stdin=b"https://e.com/?si=1")
        self.assertEqual((done.stdout, done.returncode), (b"https://e.com/", 1))
        self.assertEqual(done.stderr, b"velmora-clean: /nonexistent/one: No such file or directory\n")

    def test_says_that_a_folder_cannot_be_read(self):
        done = run("/")
        self.assertEqual((done.stdout, done.returncode), (b"", 1))
        self.assertIn(b"/: Is a directory", done.stderr)

    def test_reports_what_was_removed_and_where(self):
        done = run("--report", stdin=b"a\n\nhttps://e.com/?x=1&utm_source=a%0Ab&si\nhttps://f.com/?gclid=1")
        self.assertEqual(done.stderr.decode().splitlines(), [
            "(standard input):3: removed utm_source=a\\x0ab; the link is now https://e.com/?x=1",
            "(standard input):3: removed si; the link is now https://e.com/?x=1",
            "(standard input):4: removed gclid=1; the link is now https://f.com/"])
        self.assertEqual(done.returncode, 0)

    def test_reports_names_and_values_without_harm_to_a_terminal(self):
        with tempfile.TemporaryDirectory() as folder:
            name = os.path.join(folder, "a\nb\u202e\x1b[31m")
            with open(name, "w", encoding="utf-8") as file:
                file.write("https://e.com/?utm_source=%C2%9B%E2%80%AEa%FF\u0442&utm_%1B=%E2%81%A6")
            done = run("--report", name)
            missing = run(name + "x")
        shown = folder + "/a\\x0ab\\u202e\\x1b[31m"
        self.assertEqual(done.stderr.decode().splitlines(), [
            shown + ":1: removed utm_source; the link is now https://e.com/",
            shown + ":1: removed utm_\\x1b=\\u2066; the link is now https://e.com/"])
        self.assertEqual(missing.stderr.decode(), f"velmora-clean: {shown}x: No such file or directory\n")

    def test_fails_when_the_report_cannot_be_written(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([PROGRAM, "--report"], input=b"https://e.com/?si=1", stdout=subprocess.PIPE,
                                  stderr=full, timeout=20)
        self.assertEqual((done.stdout, done.returncode), (b"https://e.com/", 1))

    def test_takes_ignored_hosts_from_urls_and_patterns(self):
        text = b"https://a.com/?si=1 https://x.b.com/?si=1 https://c.com/?si=1\n"
        done = run("--ignore-host", "https://a.com/path?x", "--ignore-host=*.b.com", stdin=text)
        self.assertEqual(done.stdout, b"https://a.com/?si=1 https://x.b.com/?si=1 https://c.com/\n")

    def test_refuses_to_read_the_file_that_it_writes(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "file")
            for mode, arguments, name in (("ab", [path], path), ("ab", [], "(standard input)"),
                                          ("r+b", [path], path)):
                with open(path, "wb") as file:
                    file.write(b"https://e.com/?si=1\n")
                with open(path, mode) as output, open(path, "rb") as own:
                    done = subprocess.run([PROGRAM, *arguments, "/dev/null"] if arguments else [PROGRAM], stdin=own,
                                          stdout=output, stderr=subprocess.PIPE, timeout=20)
                self.assertEqual(done.returncode, 1)
                self.assertEqual(done.stderr.decode(), f"velmora-clean: {name}: input file is output file; "
                                                       "--in-place cleans a file itself\n")
                with open(path, "rb") as file:
                    self.assertEqual(file.read(), b"https://e.com/?si=1\n")

    def test_may_read_and_write_one_terminal_or_device(self):
        with open("/dev/null", "r+b") as null:
            done = subprocess.run([PROGRAM], stdin=null, stdout=null, stderr=subprocess.PIPE, timeout=20)
        self.assertEqual((done.stderr, done.returncode), (b"", 0))

    def test_cleans_a_link_that_arrives_in_pieces(self):
        process = subprocess.Popen([PROGRAM], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        for piece in (b"a http", b"s://e.c", b"om/?utm_", b"source=a&id=7", b" b\n"):
            process.stdin.write(piece)
            process.stdin.flush()
        self.assertEqual(process.stdout.readline(), b"a https://e.com/?id=7 b\n")
        process.communicate(timeout=20)

    def test_answers_a_line_before_the_next_one_comes(self):
        process = subprocess.Popen([PROGRAM], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        for _ in range(3):
            process.stdin.write(b"https://e.com/?si=1\n")
            process.stdin.flush()
            self.assertEqual(process.stdout.readline(), b"https://e.com/\n")
        process.communicate(timeout=20)
        self.assertEqual(process.returncode, 0)

    def test_cleans_links_wherever_the_pieces_of_a_long_text_are_cut(self):
        text = b"".join(b"%d https://example.com/p/%d?utm_source=%d&id=%d\n" % (i, i, i, i) for i in range(40000))
        expected = b"".join(b"%d https://example.com/p/%d?id=%d\n" % (i, i, i) for i in range(40000))
        self.assertEqual(run(stdin=text).stdout, expected)

    def test_cleans_the_links_of_one_long_line(self):
        line = b"https://e.com/?utm_source=a&x " * 100000
        self.assertEqual(run(stdin=line).stdout, b"https://e.com/?x " * 100000)

    def test_cleans_a_single_word_of_many_megabytes(self):
        tail = b"x" * (8 * 1024 * 1024)
        done = run(stdin=b"https://e.com/?utm_source=a&x=" + tail)
        self.assertEqual(done.stdout, b"https://e.com/?x=" + tail)

    def test_passes_on_a_word_that_is_too_long_to_hold(self):
        word = b"https://e.com/?utm_source=" + b"x" * (65 * 1024 * 1024)
        done = run(stdin=word + b"y https://e.com/?si=1")
        self.assertTrue(done.stdout == word + b"y https://e.com/")

    @unittest.skipIf("sanitize" in os.environ.get("VELMORA_BUILD", ""), "the sanitizers' shadow takes all addresses")
    def test_takes_the_same_memory_for_an_input_of_any_size(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_DATA, (48 << 20, 48 << 20))

        process = subprocess.Popen([PROGRAM, "--jobs=2"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                                   preexec_fn=limit)
        piece = b"some prose and https://example.com/?utm_source=a&id=1 more prose\n" * 16384
        for _ in range(128):
            process.stdin.write(piece)
        process.stdin.close()
        self.assertEqual(process.wait(timeout=60), 0)


class WorkingOnSeveralThreads(unittest.TestCase):
    JOBS = ("--jobs=1", "--jobs=2", "--jobs=7")

    def test_gives_the_same_text_with_any_number(self):
        for jobs in self.JOBS:
            self.assertTrue(run(jobs, stdin=tracked_lines(60000)).stdout == cleaned_lines(60000), jobs)

    def test_reads_a_regular_file_as_well_as_a_pipe(self):
        with tempfile.NamedTemporaryFile() as file:
            file.write(tracked_lines(60000) + b"https://e.com/?si=1")
            file.flush()
            for jobs in self.JOBS:
                self.assertTrue(run(jobs, file.name).stdout == cleaned_lines(60000) + b"https://e.com/", jobs)

    def test_reports_every_line_in_order(self):
        expected = b"".join(b"(standard input):%d: removed utm_source=%d; the link is now "
                            b"https://example.com/p/%d?id=%d\n" % (i + 1, i, i, i) for i in range(30000))
        for jobs in self.JOBS:
            self.assertTrue(run("--report", jobs, stdin=tracked_lines(30000)).stderr == expected, jobs)

    def test_answers_requests_in_order_and_names_malformed_lines(self):
        lines = [request(f"https://e.com/{i}?si=1", ignored_hosts=[f"h{i % 5}.com"]) if i % 1000 else b"{"
                 for i in range(20000)]
        for jobs in self.JOBS:
            got, done = answers(*lines, arguments=("--jsonl", jobs))
            self.assertEqual([answer.get("cleaned_text") for answer in got],
                             [f"https://e.com/{i}" if i % 1000 else None for i in range(20000)])
            self.assertEqual(re.findall(rb"^velmora-clean: \(standard input\):(\d+): ", done.stderr, re.M),
                             [b"%d" % (i + 1) for i in range(0, 20000, 1000)])
            self.assertEqual(done.returncode, 1)

    def test_answers_each_line_before_the_next_one_comes(self):
        for arguments, line, answer in (
                (("--jobs=4",), b"https://e.com/?si=1\n", b"https://e.com/\n"),
                (("--jobs=4", "--jsonl", "--detect"), request("none") + b"\n", b'{"links":[]}\n')):
            process = subprocess.Popen([PROGRAM, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
            for _ in range(20):
                process.stdin.write(line)
                process.stdin.flush()
                self.assertEqual(process.stdout.readline(), answer)
            process.communicate(timeout=20)

    def test_ends_when_its_reader_goes_away_though_no_input_comes(self):
        for jobs in self.JOBS:
            process = subprocess.Popen([PROGRAM, jobs], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
            for _ in range(3):
                process.stdin.write(b"line\n")
                process.stdin.flush()
                self.assertEqual(process.stdout.readline(), b"line\n")
            process.stdout.close()
            process.stdin.write(b"line\n")
            process.stdin.flush()
            self.assertEqual(process.wait(timeout=20), 1)
            process.stdin.close()

    def test_needs_a_sensible_number(self):
        for number in ("0", "-1", "x", "2x", "1025", " 1", "99999999999999999999"):
            done = run("--jobs", number)
            self.assertEqual((done.returncode, done.stderr.splitlines()[0]), (
                2, f'velmora-clean: --jobs: "{number}" is no number from 1 to 1024'.encode()))


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
        for jobs in WorkingOnSeveralThreads.JOBS:
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


class ShowingProgress(unittest.TestCase):
    def messages_on_a_terminal(self, *arguments, lines):
        """What a terminal gets while lines come, one each third of a second: the program waits for a whole one."""
        terminal, end = pty.openpty()
        process = subprocess.Popen([PROGRAM, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=end)
        os.close(end)
        shown = b""
        for _ in range(lines):
            process.stdin.write(b"https://e.com/?si=1\n")
            process.stdin.flush()
            process.stdout.readline()
            next_line = time.monotonic() + 0.34
            while select.select([terminal], [], [], max(0, next_line - time.monotonic()))[0]:
                shown += os.read(terminal, 65536)
        process.communicate(timeout=20)
        try:
            while block := os.read(terminal, 65536):
                shown += block
        except OSError:  # The other end is closed.
            pass
        os.close(terminal)
        return shown.replace(b"\r\n", b"\n")

    def test_shows_how_far_it_is_and_takes_it_back(self):
        shown = self.messages_on_a_terminal(lines=5)
        self.assertIn(b"\r0 MiB\033[K", shown)
        self.assertTrue(shown.endswith(b"\r\033[K"))

    def test_takes_it_back_before_a_line_of_the_report(self):
        shown = self.messages_on_a_terminal("--report", lines=7)
        self.assertIn(b"MiB", shown)
        self.assertEqual(shown.count(b"removed si=1"), 7)
        for line in shown.split(b"\n"):
            self.assertNotRegex(line, rb"MiB\033\[K\(standard", "a line of the report begins behind the progress")
        self.assertRegex(shown, rb"MiB\033\[K\r\033\[K\(standard input\):\d: removed")


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


class Failing(unittest.TestCase):
    def test_says_why_the_output_cannot_be_written(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([PROGRAM], input=b"text\n", stdout=full, stderr=subprocess.PIPE, timeout=20)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, b"velmora-clean: cannot write: No space left on device\n")

    def test_ends_quietly_when_its_reader_goes_away(self):
        process = subprocess.Popen([PROGRAM], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        process.stdout.close()

        def feed():
            try:
                for _ in range(64):
                    os.write(process.stdin.fileno(), b"x " * 131072)
            except BrokenPipeError:
                pass
            process.stdin.close()

        feeder = threading.Thread(target=feed)
        feeder.start()
        self.assertEqual(process.wait(timeout=20), 1)
        feeder.join()
        self.assertEqual(process.stderr.read(), b"")
        process.stderr.close()

    def test_explains_a_command_line_that_it_does_not_understand(self):
        for arguments, problem in ((["--nonsense"], b"unknown option: --nonsense"),
                                   (["-x"], b"unknown option: -x"),
                                   (["--ignore-host"], b"--ignore-host needs a host"),
                                   (["--detect"], b"--detect needs --jsonl"),
                                   (["--ignore-host="], b"--ignore-host needs a host"),
                                   (["--ignore-host", "a*b"],
                                    b'--ignore-host: no host can be made out in "a*b"'),
                                   (["--jobs"], b"--jobs needs a number"),
                                   (["--\x1b[2J"], b"unknown option: --\\x1b[2J"),
                                   (["--jsonl=x"], b"unknown option: --jsonl=x"),
                                   (["--report", "--jsonl"], b"--report and --jsonl exclude each other")):
            done = run(*arguments)
            self.assertEqual((done.stdout, done.returncode), (b"", 2))
            self.assertEqual(done.stderr, b"velmora-clean: " + problem + b"\nTry: velmora-clean --help\n")

    def test_shows_help_and_version(self):
        for option in ("--help", "-h"):
            done = run(option)
            self.assertEqual((done.returncode, done.stderr), (0, b""))
            self.assertTrue(done.stdout.startswith(b"usage: velmora-clean"))
        self.assertRegex(run("--version").stdout, rb"\Avelmora-clean \d+\.\d+\.\d+\n\Z")


class AnsweringRequests(unittest.TestCase):
    def test_gives_the_whole_result(self):
        got, done = answers(request("x https://e.com/?utm_source=a&id=1&si"))
        self.assertEqual(got, [{"original_text": "x https://e.com/?utm_source=a&id=1&si",
                                "cleaned_text": "x https://e.com/?id=1", "did_change": True,
                                "removed_items": [{"name": "utm_source", "value": "a"},
                                                  {"name": "si", "value": None}]}])
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertEqual(list(got[0]), ["original_text", "cleaned_text", "did_change", "removed_items"])

    def test_ignores_the_hosts_of_each_request_and_of_the_command_line(self):
        text = "https://a.com/?si=1 https://b.com/?si=1"
        got, _ = answers(request(text, ignored_hosts=["A.com."]), request(text, ignored_hosts=[]),
                         request(text, ignored_hosts=None), request(text), request(text, ignored_hosts=["a.com"]))
        self.assertEqual([answer["cleaned_text"] for answer in got],
                         ["https://a.com/?si=1 https://b.com/"] + ["https://a.com/ https://b.com/"] * 3 +
                         ["https://a.com/?si=1 https://b.com/"])
        got, _ = answers(request(text, ignored_hosts=["a.com"]), arguments=("--jsonl", "--ignore-host=b.com"))
        self.assertEqual(got[0]["cleaned_text"], text)

    def test_prepares_many_different_sets_of_hosts(self):
        got, _ = answers(*(request("https://h7.com/?si=1", ignored_hosts=[f"h{i}.com"]) for i in range(600)))
        self.assertEqual([i for i, answer in enumerate(got) if not answer["did_change"]], [7])

    def test_detects_links_in_utf16_units(self):
        got, _ = answers(request("🙂 https://e.com/🙂?a=1, example.com me@e.com"), arguments=("--jsonl", "--detect"))
        self.assertEqual(got, [{"links": [{"offset": 3, "length": 20, "url": "https://e.com/🙂?a=1"},
                                          {"offset": 25, "length": 11, "url": "http://example.com"},
                                          {"offset": 37, "length": 8, "url": "mailto:me@e.com"}]}])

    def test_answers_a_malformed_line_in_its_place(self):
        bad = [b"{", b"[]", b'"x"', b"{}", b'{"text": 1}', b'{"text": null}', b'{"text": "a"} x',
               b'{"text": "a", "ignored_hosts": "e.com"}', b'{"text": "a", "ignored_hosts": [1]}',
               b'{"text": "\xff"}', b'{"text": "\xed\xa0\x80"}', b'{"text": "\\ud800"}', b'{"text": "\\udc00x"}',
               b'{"text": "\\x"}', b'{"text": "a\tb"}', b'{"text": "a\0b"}', b'{"text": "a",}', b"{'text': 'a'}",
               b'{"text": "a", "n": 1e999}', b"\xff\xfe", b"[" * 100000]
        for line in bad:
            got, done = answers(request("one"), line, request("two"))
            self.assertEqual(len(got), 3, line[:40])
            self.assertEqual(list(got[1]), ["error"], line[:40])
            self.assertEqual((got[0]["cleaned_text"], got[2]["cleaned_text"]), ("one", "two"))
            self.assertEqual(done.returncode, 1)
            self.assertTrue(done.stderr.startswith(b"velmora-clean: (standard input):2: "), done.stderr)
            self.assertEqual(done.stderr.count(b"\n"), 1)

    def test_reads_escapes(self):
        got, _ = answers(b'{"text": "\\u0068ttps:\\/\\/e.com/?si=1\\n\\ud83d\\ude42\\u0000\\"\\u00e9"}')
        self.assertEqual(got[0]["cleaned_text"], 'https://e.com/\n🙂\0"é')

    def test_takes_the_last_of_repeated_members_and_skips_unknown_ones(self):
        got, _ = answers(b'{"x": [1, {"text": "no"}], "text": "one", "text": "https://e.com/?si=1", "y": 2}')
        self.assertEqual(got[0]["cleaned_text"], "https://e.com/")

    def test_accepts_line_ends_of_other_systems_and_a_last_line_without_one(self):
        done = run("--jsonl", stdin=request("a") + b"\r\n" + request("b") + b"\r\n" + request("c"))
        self.assertEqual([json.loads(line)["cleaned_text"] for line in done.stdout.split(b"\n")[:-1]], ["a", "b", "c"])
        self.assertEqual(done.returncode, 0)

    def test_answers_a_blank_line_by_a_blank_line(self):
        done = run("--jsonl", stdin=request("a") + b"\n\n \t\r\n" + request("b") + b"\n")
        lines = done.stdout.split(b"\n")
        self.assertEqual(lines[1:3], [b"", b""])
        self.assertEqual(json.loads(lines[3])["cleaned_text"], "b")
        self.assertEqual((done.returncode, done.stderr), (0, b""))

    def test_answers_a_text_of_many_megabytes(self):
        text = "https://e.com/?si=1 é " * 400000
        got, _ = answers(request(text))
        self.assertTrue(got[0]["cleaned_text"] == "https://e.com/ é " * 400000)
        self.assertEqual(len(got[0]["removed_items"]), 400000)

    def test_names_the_line_of_the_input_in_both_messages(self):
        got, done = answers(request("a"), request("b"), b'{"text": x}')
        self.assertIn("at line 3, column 10", got[2]["error"])
        self.assertRegex(done.stderr, rb"\Avelmora-clean: \(standard input\):3: .*at line 3, column 10")
        self.assertNotIn(b"line 1", done.stderr)

    def test_keeps_messages_about_malformed_lines_short_and_harmless(self):
        _, done = answers(b'{"text": "' + b"x" * 100000 + b"\x1b[31m", b'{"\xe2\x80\xae')
        self.assertEqual(done.stderr.count(b"\n"), 2)
        self.assertLess(len(done.stderr), 400)
        self.assertNotIn(b"\x1b", done.stderr)
        self.assertNotIn(b"\xe2\x80\xae", done.stderr)

    def test_names_the_file_of_a_malformed_line(self):
        with tempfile.NamedTemporaryFile(suffix=".jsonl") as file:
            file.write(request("a") + b"\nnonsense\n")
            file.flush()
            done = run("--jsonl", file.name)
        self.assertTrue(done.stderr.startswith(f"velmora-clean: {file.name}:2: ".encode()))


if __name__ == "__main__":
    unittest.main()
