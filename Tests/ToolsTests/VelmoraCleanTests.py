#!/usr/bin/env python3
"""Runs velmora-clean as its users do: texts, streams and failures."""

import os
import pty
import re
import resource
import select
import subprocess
import tempfile
import threading
import time
import unittest

from velmora_clean import JOBS, PROGRAM, SANITIZED, answers, cleaned_lines, request, run, tracked_lines


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

    def test_takes_no_link_of_a_stream_for_all_that_there_is(self):
        done = run(stdin=b"https://e.com/?utm_source=a,5\n")
        self.assertEqual(done.stdout, b"https://e.com/,5\n")

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

    @unittest.skipIf(SANITIZED, "the sanitizers' shadow takes all addresses")
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
    def test_gives_the_same_text_with_any_number(self):
        for jobs in JOBS:
            self.assertTrue(run(jobs, stdin=tracked_lines(60000)).stdout == cleaned_lines(60000), jobs)

    def test_reads_a_regular_file_as_well_as_a_pipe(self):
        with tempfile.NamedTemporaryFile() as file:
            file.write(tracked_lines(60000) + b"https://e.com/?si=1")
            file.flush()
            for jobs in JOBS:
                self.assertTrue(run(jobs, file.name).stdout == cleaned_lines(60000) + b"https://e.com/", jobs)

    def test_reports_every_line_in_order(self):
        expected = b"".join(b"(standard input):%d: removed utm_source=%d; the link is now "
                            b"https://example.com/p/%d?id=%d\n" % (i + 1, i, i, i) for i in range(30000))
        for jobs in JOBS:
            self.assertTrue(run("--report", jobs, stdin=tracked_lines(30000)).stderr == expected, jobs)

    def test_answers_requests_in_order_and_names_malformed_lines(self):
        lines = [request(f"https://e.com/{i}?si=1", ignored_hosts=[f"h{i % 5}.com"]) if i % 1000 else b"{"
                 for i in range(20000)]
        for jobs in JOBS:
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
        for jobs in JOBS:
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


class Failing(unittest.TestCase):
    def test_says_why_the_output_cannot_be_written(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([PROGRAM], input=b"text\n", stdout=full, stderr=subprocess.PIPE, timeout=20)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, b"velmora-clean: cannot write: No space left on device\n")

    def test_says_that_standard_input_or_output_is_closed(self):
        for redirection, message in (("<&-", b"(standard input): Bad file descriptor"),
                                     (">&-", b"cannot write: Bad file descriptor")):
            done = subprocess.run(["sh", "-c", f'exec "$0" {redirection}', PROGRAM], input=b"text\n",
                                  capture_output=True, timeout=20)
            self.assertEqual((done.stderr, done.returncode), (b"velmora-clean: " + message + b"\n", 1))

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


if __name__ == "__main__":
    unittest.main()
