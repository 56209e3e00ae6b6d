"""What screen readers find: the whole tree as a kept text, and what every control owes them."""

import difflib
import os
import unittest
from pathlib import Path

from window_test_case import WindowTestCase

DISCLAIMER = ("Tidewell is a tracking and personal-insight tool. It is not a medical device, not FDA-cleared, and not a "
              "substitute for clinical care.")
BASELINES = Path(__file__).parent / "baselines"


class AccessibilityTree(WindowTestCase):
    def assert_baseline(self, name, window):
        """Compares with the kept text. TIDEWELL_KEEP_BASELINES=1 keeps what there is now."""
        window.wait_for(lambda: window.find_now("label", DISCLAIMER), "the end of the page")
        path = BASELINES / f"{name}.txt"
        found = window.picture() + "\n"
        if os.environ.get("TIDEWELL_KEEP_BASELINES") == "1":
            BASELINES.mkdir(exist_ok=True)
            path.write_text(found, encoding="utf-8")
        kept = path.read_text(encoding="utf-8")
        difference = difflib.unified_diff(kept.splitlines(), found.splitlines(), "kept", "found", lineterm="")
        self.assertEqual(kept, found, "\n".join(difference))

    def assert_everything_that_takes_focus_is_named(self, window):
        nameless = [node.role for node in window.nodes() if node.focusable and not (node.role and node.name)]
        self.assertEqual(nameless, [], window.picture())

    def test_ready(self):
        self.write_history(messages=0, days=1)
        window = self.start_ready()
        window.fill_the_display()
        self.assert_everything_that_takes_focus_is_named(window)
        self.assert_baseline("ready", window)

    def test_after_a_scan_without_activity(self):
        self.write_history(messages=0, days=1)
        window = self.start_ready()
        window.fill_the_display()
        window.find("push button", "Scan Locally").press()
        window.find("label", "No Messages activity was found in the selected window.")
        self.assert_everything_that_takes_focus_is_named(window)
        self.assert_baseline("empty", window)

    def test_after_a_scan_with_activity(self):
        self.write_history(messages=3_000, days=60)
        window = self.start_ready()
        window.fill_the_display()
        window.find("push button", "Scan Locally").press()
        window.find("push button", "Scan Again")
        window.wait_for(lambda: len(window.names("list item")) == 7, "seven days")
        self.assert_everything_that_takes_focus_is_named(window)

    def test_permission_needed(self):
        window = self.start()
        window.fill_the_display()
        window.find("push button", "Open Full Disk Access")
        window.find("label", "Messages access: Permission needed")
        self.assert_everything_that_takes_focus_is_named(window)
        self.assert_baseline("permission", window)

    def test_unavailable(self):
        self.database.mkdir()
        window = self.start()
        window.fill_the_display()
        window.find("label", "Messages access: Unavailable")
        self.assert_everything_that_takes_focus_is_named(window)
        self.assert_baseline("unavailable", window)

    def test_while_scanning(self):
        self.write_history_without_end()
        window = self.start_ready()
        window.fill_the_display()
        window.find("push button", "Scan Locally").press()
        window.find("label", "Summarizing on this Mac…")
        self.assert_everything_that_takes_focus_is_named(window)
        self.assert_baseline("scanning", window)

    def test_after_a_failed_scan(self):
        self.write_history(messages=0, days=1)
        window = self.start_ready()
        window.fill_the_display()
        window.find("push button", "Scan Locally").press()
        window.find("label", "No Messages activity was found in the selected window.")
        self.change_history("ALTER TABLE chat_message_join RENAME TO other")
        window.find("push button", "Scan Again").press()
        window.find("label", "This version of the Messages database isn’t supported yet.")
        self.assert_everything_that_takes_focus_is_named(window)
        self.assert_baseline("failed", window)


if __name__ == "__main__":
    unittest.main(verbosity=2)
