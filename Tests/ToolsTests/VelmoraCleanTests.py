#!/usr/bin/env python3
"""Runs velmora-clean as its users do. The program's path stands in VELMORA_CLEAN."""

import json
import os
import resource
import subprocess
import tempfile
import threading
import unittest

PROGRAM = os.path.abspath(os.environ["VELMORA_CLEAN"])


def run(*arguments, stdin=b"", **options):
    return subprocess.run([PROGRAM, *arguments], input=stdin, capture_output=True, timeout=60, **options)


def answers(*lines, arguments=("--jsonl",)):
    done = run(*arguments, stdin=b"".join(line + b"\n" for line in lines))
    return [json.loads(line) for line in done.stdout.splitlines()], done


def request(text, **members):
    return json.dumps({"text": text, **members}).encode()


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

        process = subprocess.Popen([PROGRAM], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, preexec_fn=limit)
        piece = b"some prose and https://example.com/?utm_source=a&id=1 more prose\n" * 16384
        for _ in range(128):
            process.stdin.write(piece)
        process.stdin.close()
        self.assertEqual(process.wait(timeout=60), 0)


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

    def test_names_the_file_of_a_malformed_line(self):
        with tempfile.NamedTemporaryFile(suffix=".jsonl") as file:
            file.write(request("a") + b"\nnonsense\n")
            file.flush()
            done = run("--jsonl", file.name)
        self.assertTrue(done.stderr.startswith(f"velmora-clean: {file.name}:2: ".encode()))


if __name__ == "__main__":
    unittest.main()
