#!/usr/bin/env python3
"""Asks velmora-clean for answers to JSON lines."""

import json
import tempfile
import unittest

from velmora_clean import answers, request, run


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
