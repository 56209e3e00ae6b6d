"""What the application answers to words after its name; no window is shown."""

import os
import subprocess
import unittest


def answer(*arguments):
    result = subprocess.run([os.environ["TIDEWELL"], *arguments],
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=60)
    return result.returncode, result.stdout, result.stderr


class Arguments(unittest.TestCase):
    def test_help_is_printed(self):
        for word in ("--help", "-h"):
            status, output, errors = answer(word)
            self.assertEqual((status, errors), (0, ""))
            self.assertRegex(output, r"^Usage: .*tidewell")
            self.assertIn("Shows per-day activity figures of the local Messages database, in a window.", output)

    def test_the_version_is_printed(self):
        status, output, errors = answer("--version")
        self.assertEqual((status, errors), (0, ""))
        self.assertRegex(output, r"^tidewell \d+\.\d+\.\d+\n$")

    def test_what_it_does_not_know_is_refused(self):
        self.assertEqual(answer("--scan"), (2, "", "tidewell: Unknown option 'scan'.\n"))
        self.assertEqual(answer("--a\nb"), (2, "", "tidewell: Unknown option 'a\\u000Ab'.\n"))
        self.assertEqual(answer("chat.db"), (2, "", "tidewell: It takes no files or words.\n"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
