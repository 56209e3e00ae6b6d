"""Gives the summary runs of every kind, as ctest writes them, and compares what it prints and how it ends."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SUMMARY = sys.argv.pop(1)


class TestSummary(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.run_file = Path(folder.name) / "tests.xml"
        self.skips = Path(folder.name) / "skips.txt"
        self.skips.write_text("# Why\n\nshell.portal there is no portal\n", encoding="utf-8")

    def summary(self, *cases, skips=None):
        body = "".join(f'<testcase name="{name}" status="{status}"><system-out/></testcase>' for name, status in cases)
        self.run_file.write_text(f"<testsuite>{body}</testsuite>", encoding="utf-8")
        return self.outcome(self.run_file, *(["--skips", skips] if skips else []))

    @staticmethod
    def outcome(*arguments):
        done = subprocess.run([SUMMARY, *arguments], capture_output=True, text=True, check=False)
        return done.returncode, done.stdout + done.stderr

    def test_all_passed(self):
        self.assertEqual(self.summary(("a", "run"), ("b", "run"), skips=self.skips), (0, "2 passed, 0 failed, 0 skipped\n"))

    def test_a_failure(self):
        self.assertEqual(self.summary(("a", "run"), ("b", "fail")), (1, "failed: b\n1 passed, 1 failed, 0 skipped\n"))

    def test_what_did_not_run_was_skipped(self):
        for status in ("notrun", "disabled"):
            self.assertEqual(self.summary(("a", status)), (0, "skipped: a\n0 passed, 0 failed, 1 skipped\n"))
            self.assertEqual(self.summary(("a", status), skips=self.skips),
                             (1, "skipped: a, and not on the list of skips\n0 passed, 0 failed, 1 skipped\n"))

    def test_a_skip_on_the_list(self):
        self.assertEqual(self.summary(("shell.portal", "notrun"), skips=self.skips),
                         (0, "skipped: shell.portal\n0 passed, 0 failed, 1 skipped\n"))

    def test_a_test_on_the_list_that_ran_is_said(self):
        self.assertEqual(self.summary(("shell.portal", "run"), skips=self.skips),
                         (0, "not skipped, though on the list of skips: shell.portal\n1 passed, 0 failed, 0 skipped\n"))

    def test_no_tests_at_all(self):
        self.assertEqual(self.summary(), (1, "0 passed, 0 failed, 0 skipped\n"))

    def test_files_that_cannot_be_read_are_one_line(self):
        missing = self.skips.with_name("missing")
        self.assertEqual(self.summary(("a", "run"), skips=missing), (1, f"{missing}: No such file or directory\n"))
        self.assertEqual(self.outcome(missing), (1, f"{missing}: No such file or directory\n"))
        self.run_file.write_text("<testsuite>", encoding="utf-8")
        status, text = self.outcome(self.run_file)
        self.assertEqual((status, text.count("\n")), (1, 1))
        self.assertTrue(text.startswith(f"{self.run_file}: no element found"))

    def test_a_skip_without_a_reason(self):
        self.skips.write_text("a\n", encoding="utf-8")
        self.assertEqual(self.summary(("a", "notrun"), skips=self.skips), (1, f"{self.skips}: a: a skip needs its reason\n"))


if __name__ == "__main__":
    unittest.main()
