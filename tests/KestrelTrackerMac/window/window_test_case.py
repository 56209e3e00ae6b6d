"""What the tests of the window share: a home of its own, a history in it, and the running application."""

import os
import shutil
import sqlite3
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from accessible_window import Tidewell, let_scans_run_on, wait_until

PROGRAM = os.environ["TIDEWELL"]
SAMPLE_HISTORY = os.environ["TIDEWELL_SAMPLE_HISTORY"]


class WindowTestCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        os.environ["TZ"] = "UTC"
        os.environ["LC_ALL"] = "en_US.UTF-8"
        self.home = Path(tempfile.mkdtemp(prefix="tidewell-home-"))
        self.addCleanup(shutil.rmtree, self.home)
        self.database = self.home / "Library" / "Messages" / "chat.db"
        self.database.parent.mkdir(parents=True)

    def write_history(self, messages, days):
        """A sample history whose last message is of the last minutes."""
        subprocess.run([SAMPLE_HISTORY, self.database, "--messages", str(messages), "--days", str(days), "--seed", "7"],
                       check=True)

    def ask(self, query):
        with sqlite3.connect(f"file:{self.database}?mode=ro", uri=True) as connection:
            return connection.execute(query).fetchall()

    def change_history(self, statements):
        connection = sqlite3.connect(self.database)
        connection.executescript(statements)
        connection.close()

    def write_history_without_end(self):
        """A history whose scan runs until the process ends."""
        self.write_history(messages=0, days=1)
        let_scans_run_on(self.database)

    def start(self, program=PROGRAM, **environment):
        window = Tidewell(program, self.home, environment)
        self.addCleanup(window.__exit__)
        return window

    def start_ready(self, program=PROGRAM, **environment):
        """The application, once it has found out that the history can be read."""
        window = self.start(program, **environment)
        window.find("push button", "Scan Locally")
        return window


def output_of(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, text=True).stdout


def press_until(keys, condition, what):
    """Presses keys until what they are for has come about: a window manager that is busy now and then loses one."""
    pressed = float("-inf")

    def has_come_about():
        nonlocal pressed
        if not condition() and time.monotonic() - pressed > 5:
            key(keys)
            pressed = time.monotonic()
        return condition()

    wait_until(has_come_about, what)


def key(*keys):
    """Presses keys as the keyboard would; they reach the window that has the focus."""
    subprocess.run(["xdotool", "key", "--clearmodifiers", *keys], check=True)
