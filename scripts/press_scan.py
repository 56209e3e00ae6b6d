"""Starts Tidewell, presses its scan button through the accessibility interface and saves a picture of the result.

    press_scan.py TIDEWELL PICTURE

Needs the environment that scripts/virtual-desktop gives. The window takes the whole display.
"""

import subprocess
import sys

from accessible_window import Tidewell, wait_until


def output_of(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout


class Steady:
    """Pictures of the display, until one is as the one before: nothing is left to be painted."""

    def __init__(self):
        self.last = None

    def picture(self):
        before, self.last = self.last, output_of("maim", "--hidecursor")
        return self.last if self.last == before else None


def main(program, path):
    with Tidewell(program) as window:
        button = window.find("push button", "Scan Locally")
        button.press()
        window.find("push button", "Scan Again")
        window.fill_the_display()
        picture = wait_until(Steady().picture, "the window to be painted")
    with open(path, "wb") as file:
        file.write(picture)


if __name__ == "__main__":
    try:
        main(*sys.argv[1:])
    except AssertionError as failure:
        sys.exit(f"press_scan: {failure}")
