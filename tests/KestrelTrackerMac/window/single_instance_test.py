"""One process a user."""

import os
import signal
import subprocess
import unittest

from accessible_window import wait_until
from window_test_case import PROGRAM, WindowTestCase


class OneProcess(WindowTestCase):
    def start_again(self):
        environment = dict(os.environ, HOME=str(self.home))
        return subprocess.Popen([PROGRAM], env=environment)

    def test_a_second_start_brings_the_window_forward_and_ends_with_0(self):
        window = self.start()
        window.wait_for(lambda: window.in_front, "the window to be in front")
        subprocess.run(["xdotool", "getactivewindow", "windowminimize"], check=True)
        window.wait_for(lambda: not window.in_front, "the window to be minimized")
        second = self.start_again()
        self.assertEqual(second.wait(60), 0)
        window.wait_for(lambda: window.in_front, "the window to be in front again")
        self.assertIsNone(window.process.poll())

    def test_after_a_killed_process_the_next_start_runs(self):
        window = self.start()
        window.find("heading", "Local dashboard")
        os.killpg(window.process.pid, signal.SIGKILL)
        window.process.wait()
        self.start().find("heading", "Local dashboard")

    def test_of_simultaneous_starts_one_runs(self):
        starts = [self.start_again() for _ in range(5)]
        try:
            wait_until(lambda: sum(start.poll() is not None for start in starts) == 4, "four starts to end")
            self.assertEqual([start.poll() for start in starts if start.poll() is not None], [0] * 4)
        finally:
            for start in starts:
                start.kill()
                start.wait()


if __name__ == "__main__":
    unittest.main(verbosity=2)
