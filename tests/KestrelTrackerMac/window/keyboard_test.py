"""Everything by the keyboard alone: the order of Tab, Space, Enter, the arrows and Control-R."""

import unittest

from window_test_case import WindowTestCase, key


class KeyboardAlone(WindowTestCase):
    def setUp(self):
        super().setUp()
        self.write_history(messages=2_000, days=60)

    def start_in_front(self):
        window = self.start_ready()
        window.wait_for(lambda: window.in_front, "the window to be in front")
        return window

    def focus(self, window, role, name):
        """Goes on by Tab until that control has the focus."""
        for _ in range(12):
            key("Tab")
            control = window.wait_for(window.focused_control, "a control to have the focus")
            if (control.role, control.name) == (role, name):
                return control
        self.fail(f"Tab does not reach the {role} “{name}”\n{window.picture()}")

    def test_tab_goes_through_the_controls_in_reading_order_and_round(self):
        window = self.start_in_front()
        self.focus(window, "radio button", "90 days")
        seen = []
        while ("radio button", "90 days") not in seen and len(seen) < 12:
            before = window.focused_control()
            place = (before.role, before.name)
            key("Tab")
            window.wait_for(lambda: window.focused_control() and
                            (window.focused_control().role, window.focused_control().name) != place,
                            f"Tab to leave {place}")
            control = window.focused_control()
            seen.append((control.role, control.name))
        self.assertEqual(seen[0], ("push button", "Scan Locally"))
        self.assertIn(("radio button", "90 days"), seen)

    def test_space_presses_the_button(self):
        window = self.start_in_front()
        self.focus(window, "push button", "Scan Locally")
        key("space")
        window.find("push button", "Scan Again")

    def test_enter_presses_the_button(self):
        window = self.start_in_front()
        self.focus(window, "push button", "Scan Locally")
        key("Return")
        window.find("push button", "Scan Again")

    def test_the_arrows_choose_the_days(self):
        window = self.start_in_front()
        self.focus(window, "radio button", "90 days")
        for arrow, name in (("Right", "1 year"), ("Left", "90 days"), ("Left", "30 days"), ("Left", "30 days")):
            key(arrow)
            choice = window.find("radio button", name)
            window.wait_for(lambda: choice.checked, f"{name} to be chosen")

    def test_control_r_scans(self):
        window = self.start_in_front()
        key("ctrl+r")
        window.find("push button", "Scan Again")


if __name__ == "__main__":
    unittest.main(verbosity=2)
