"""scripts/run where there is no display and no Messages database: a stranger's first minute."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class FirstRun(unittest.TestCase):
    def test_without_display_and_history_it_scans_a_sample_and_leaves_a_picture(self):
        with tempfile.TemporaryDirectory() as home:
            environment = {name: value for name, value in os.environ.items()
                           if name not in ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "XDG_CONFIG_HOME")}
            picture = ROOT / "build" / "release" / "dashboard.png"
            picture.unlink(missing_ok=True)
            result = subprocess.run([ROOT / "scripts" / "run"], env=dict(environment, HOME=home, LC_ALL="C.UTF-8"),
                                    cwd=home, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                    text=True)
            self.assertEqual(result.returncode, 0, result.stdout)
            self.assertIn(f"There is no Messages database at {home}/Library/Messages/chat.db.", result.stdout)
            self.assertRegex(result.stdout, r"(?m)^\d{4}-\d\d-\d\d +\d+ +\d+")
            self.assertTrue(result.stdout.endswith(f"A picture of the dashboard: {picture}\n"), result.stdout)
            self.assertEqual(picture.read_bytes()[:8], b"\x89PNG\r\n\x1a\n")
            self.assertEqual(os.listdir(home), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
