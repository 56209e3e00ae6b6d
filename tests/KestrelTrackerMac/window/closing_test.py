"""Closing and quitting where the desktop has no tray."""

import os
import subprocess
import unittest

from window_test_case import WindowTestCase, key, press_until


def own_display():
    """A second X server, and the number that it found free."""
    reading, writing = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1600x24", "-nolisten", "tcp"],
                              pass_fds=[writing], stderr=subprocess.DEVNULL)
    os.close(writing)
    with open(reading, encoding="ascii") as numbers:
        return server, numbers.readline().strip()


class Closing(WindowTestCase):
    def test_without_a_tray_closing_the_window_ends_the_application(self):
        self.write_history(messages=0, days=1)
        window = self.start_ready()
        window.wait_for(lambda: window.in_front, "the window to be in front")
        press_until("alt+F4", lambda: window.process.poll() is not None, "the application to end")
        self.assertEqual(window.wait_for_end(), 0)

    def test_closing_during_a_scan_ends_with_0_and_does_not_wait_for_it(self):
        self.write_history_without_end()
        window = self.start_ready()
        window.wait_for(lambda: window.in_front, "the window to be in front")
        key("ctrl+r")
        window.find("label", "Summarizing on this Mac…")
        press_until("alt+F4", lambda: window.process.poll() is not None, "the application to end")
        self.assertEqual(window.wait_for_end(), 0)

    def test_a_display_that_vanishes_during_a_scan_ends_it(self):
        self.write_history_without_end()
        display, number = own_display()
        self.addCleanup(display.kill)
        window = self.start_ready(DISPLAY=f":{number}")
        window.find("push button", "Scan Locally").press()
        window.find("label", "Summarizing on this Mac…")
        display.kill()
        display.wait()
        # With 1, but for a race inside of Qt that it seldom loses.
        self.assertNotEqual(window.wait_for_end(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
