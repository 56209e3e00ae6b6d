"""The menu in the tray, and a window that is closed and comes back."""

import re
import unittest

from accessible_window import wait_until
from window_test_case import WindowTestCase, output_of, press_until


def tray_icon():
    """The window of the icon inside the tray, or nothing: the small one of the application's two."""
    for window in output_of("xdotool", "search", "--onlyvisible", "--classname", "^tidewell$").split():
        width = re.search(r"WIDTH=(\d+)", output_of("xdotool", "getwindowgeometry", "--shell", window))
        if width and int(width[1]) < 100:
            return window
    return None


class Tray(WindowTestCase):
    def setUp(self):
        super().setUp()
        self.write_history(messages=2_000, days=60)
        self.window = self.start_ready()
        self.window.wait_for(lambda: self.window.in_front, "the window to be in front")

    def open_menu(self):
        icon = wait_until(tray_icon, "the icon in the tray")
        output_of("xdotool", "mousemove", "--window", icon, "8", "8", "click", "3")
        return self.window.menu()

    def close_window(self):
        press_until("alt+F4", lambda: not self.window.visible, "the window to be hidden")

    def choose(self, name):
        next(item for item in self.open_menu().children if item.name == name).press()

    def test_the_menu_has_its_items_in_order(self):
        menu = self.open_menu()
        self.assertEqual(menu.name, "Tidewell")
        self.assertEqual([(node.role, node.name) for node in menu.children],
                         [("menu item", "Open Tidewell"), ("menu item", "Scan Messages Activity"),
                          ("separator", ""), ("menu item", "Quit Tidewell")])

    def test_closing_the_window_hides_it_and_open_brings_it_back(self):
        self.close_window()
        self.assertIsNone(self.window.process.poll())
        self.choose("Open Tidewell")
        self.window.wait_for(lambda: self.window.in_front, "the window to be in front again")

    def test_scan_brings_the_window_back_and_scans(self):
        self.close_window()
        self.choose("Scan Messages Activity")
        self.window.wait_for(lambda: self.window.in_front, "the window to be in front again")
        self.window.find("push button", "Scan Again")

    def test_quit_ends_the_application_with_0(self):
        self.choose("Quit Tidewell")
        self.assertEqual(self.window.wait_for_end(), 0)

    def test_quit_ends_it_with_the_window_closed_too(self):
        self.close_window()
        self.choose("Quit Tidewell")
        self.assertEqual(self.window.wait_for_end(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
