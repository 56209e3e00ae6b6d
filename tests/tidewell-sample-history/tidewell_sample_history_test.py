"""Runs tidewell-sample-history as people and scripts do."""

import contextlib
import datetime
import os
import pathlib
import re
import resource
import sqlite3
import subprocess
import tempfile
import unittest

SAMPLE_HISTORY = os.environ["TIDEWELL_SAMPLE_HISTORY"]
SECONDS = "CASE WHEN date > 1000000000000 THEN date / 1000000000.0 ELSE date END"


def run(*arguments, **options):
    return subprocess.run([SAMPLE_HISTORY, *map(str, arguments)], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          encoding="utf-8", timeout=300, check=False, **options)


def rows(path, query):
    with contextlib.closing(sqlite3.connect(path)) as connection:
        return connection.execute(query).fetchall()


class TidewellSampleHistory(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.path = self.folder / "chat.db"

    def assert_fails(self, done, status, message):
        self.assertEqual((done.returncode, done.stdout), (status, ""))
        self.assertRegex(done.stderr, r"\Atidewell-sample-history: [^\n]+\n\Z")
        self.assertIn(message, done.stderr)

    def test_writes_what_was_asked_for_and_prints_nothing(self):
        before = datetime.datetime.now().timestamp()
        done = run(self.path, "--messages", "2500", "--days", "30", "--seed", "1")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        [(count, first, last)] = rows(self.path, f"SELECT COUNT(*), MIN({SECONDS}), MAX({SECONDS}) FROM message")
        self.assertEqual(count, 2500)
        end = before - 978307200
        self.assertGreater(first, end - 30 * 86400 - 1)
        self.assertLess(first, end - 29 * 86400)
        self.assertLess(last, datetime.datetime.now().timestamp() - 978307200)

    def test_options_stand_before_the_path_as_well(self):
        self.assertEqual(run("--seed", "1", "--days=2", "--messages", "1e1", self.path).returncode, 0)
        self.assertEqual(rows(self.path, "SELECT COUNT(*) FROM message"), [(10,)])

    def test_the_rhythm_is_that_of_the_zone(self):
        # Three ordinary days: hardly a message between two and five by the clock of the place.
        for zone, offset in (("Asia/Tokyo", 9), ("Pacific/Honolulu", -10)):
            path = self.folder / zone.replace("/", "-")
            done = run(path, "--messages", "3000", "--days", "3", "--seed", "5", env={**os.environ, "TZ": zone})
            self.assertEqual(done.returncode, 0)
            night = rows(path, f"SELECT COUNT(*) FROM message WHERE "
                               f"(CAST({SECONDS} AS INTEGER) + {offset * 3600}) % 86400 / 3600 IN (2, 3, 4)")
            self.assertLess(night[0][0], 100)

    def test_a_file_that_exists_is_refused_and_kept(self):
        self.path.write_text("mine", encoding="utf-8")
        self.assert_fails(run(self.path, "--messages", "5", "--days", "1", "--seed", "1"), 3, "it already exists")
        self.assertEqual(self.path.read_text(encoding="utf-8"), "mine")

    def test_a_folder_that_does_not_exist_is_named(self):
        missing = self.folder / "no\nfolder" / "chat.db"
        self.assert_fails(run(missing, "--messages", "5", "--days", "1", "--seed", "1"), 3,
                          "no\\u000Afolder/chat.db: its folder does not exist")

    def test_a_path_is_a_path_whatever_it_looks_like(self):
        for name in ("file:chat.db", ":memory:", "file:chat.db?mode=memory"):
            done = run(name, "--messages", "5", "--days", "1", "--seed", "1", cwd=self.folder)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertEqual(rows(f"{self.folder}/{name}", "SELECT COUNT(*) FROM message"), [(5,)])
        self.assertEqual(len(list(self.folder.iterdir())), 3)
        self.assert_fails(run("", "--messages", "5", "--days", "1", "--seed", "1"), 3, "the path is empty")

    def test_a_full_disk_leaves_nothing_behind(self):
        # Python ignores the signal that goes with the limit, and so does its child then: what is left is the error.
        done = run(self.path, "--messages", "20000", "--days", "30", "--seed", "1", restore_signals=False,
                   preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100_000, 100_000)))
        self.assert_fails(done, 3, "chat.db: ")
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_wrong_use_ends_with_2_and_writes_nothing(self):
        right = {"--messages": "5", "--days": "1", "--seed": "1"}
        for name, values in (("--messages", ["-1", "10000001", "1.5", "abc", "+5", "0x5", "", "1e400"]),
                             ("--days", ["0", "7301", "-1", "abc"]),
                             ("--seed", ["-1", "9007199254740992", "0.5", "abc"])):
            for value in values:
                arguments = [word for pair in {**right, name: value}.items() for word in pair]
                self.assert_fails(run(self.path, *arguments), 2, name)
            arguments = [word for key in right if key != name for word in (key, right[key])]
            self.assert_fails(run(self.path, *arguments), 2, f"{name} is required")
        everything = [word for pair in right.items() for word in pair]
        self.assert_fails(run(*everything), 2, "PATH is required")
        self.assert_fails(run(self.path, "another.db", *everything), 2, "another.db")
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_the_example_of_the_help_works_as_it_stands(self):
        done = run("--help")
        self.assertTrue(all(len(line) <= 80 for line in done.stdout.splitlines()))
        example = re.search(r"Example:\n  tidewell-sample-history (.*)\n", done.stdout).group(1)
        self.assertEqual(run(*example.split(), cwd=self.folder).returncode, 0)
        self.assertEqual(rows(self.folder / "sample.db", "SELECT COUNT(*) FROM message"), [(20000,)])


if __name__ == "__main__":
    unittest.main()
