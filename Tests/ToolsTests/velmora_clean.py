"""What the tests of velmora-clean share. The program's path stands in VELMORA_CLEAN."""

import json
import os
import subprocess

PROGRAM = os.path.abspath(os.environ["VELMORA_CLEAN"])
PROJECT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
SANITIZED = "sanitize" in os.environ.get("VELMORA_BUILD", "")


def run(*arguments, stdin=b"", **options):
    return subprocess.run([PROGRAM, *arguments], input=stdin, capture_output=True, timeout=60, **options)


def answers(*lines, arguments=("--jsonl",)):
    done = run(*arguments, stdin=b"".join(line + b"\n" for line in lines))
    return [json.loads(line) for line in done.stdout.splitlines()], done


def request(text, **members):
    return json.dumps({"text": text, **members}).encode()


# Numbers of threads that must make no difference.
JOBS = ("--jobs=1", "--jobs=2", "--jobs=7")


def tracked_lines(count):
    return b"".join(b"%d https://example.com/p/%d?utm_source=%d&id=%d\r\n" % (i, i, i, i) for i in range(count))


def cleaned_lines(count):
    return b"".join(b"%d https://example.com/p/%d?id=%d\r\n" % (i, i, i) for i in range(count))
