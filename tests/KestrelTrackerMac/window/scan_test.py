"""A whole scan, pressed and read through the accessibility bus, against a count in plain SQL."""

import datetime
import unittest

from window_test_case import WindowTestCase

REFERENCE = datetime.datetime(2001, 1, 1, tzinfo=datetime.timezone.utc)

# In UTC a calendar day has 86,400 seconds, so that the window is a plain difference.
DAYS_IN_SQL = """
WITH m AS (
  SELECT CASE WHEN abs(date) > 1000000000000 THEN date / 1000000000.0 ELSE date END AS seconds, is_from_me
  FROM message
)
SELECT date(seconds + 978307200, 'unixepoch') AS day, sum(is_from_me != 0), sum(is_from_me = 0),
       sum(CAST(strftime('%H', seconds + 978307200, 'unixepoch') AS INTEGER) < 5)
FROM m WHERE seconds >= {cutoff} GROUP BY day ORDER BY day
"""


def grouped(number):
    return f"{number:,}"


class WholeScan(WindowTestCase):
    def days_since(self, cutoff):
        return self.ask(DAYS_IN_SQL.format(cutoff=cutoff))

    def assert_shows(self, window, days):
        figures = {"Active days": len(days), "Sent": sum(day[1] for day in days),
                   "Received": sum(day[2] for day in days), "Late night": sum(day[3] for day in days)}
        tiles = {f"{caption}: {grouped(number)}" for caption, number in figures.items()}
        window.wait_for(lambda: tiles <= set(window.names("label")), f"the tiles {tiles}")
        rows = [f"{day}: {grouped(sent)} sent · {grouped(received)} received" for day, sent, received, _ in days[-7:]]
        self.assertEqual(window.names("list item"), rows)

    def test_a_year_shows_what_sql_counts(self):
        self.write_history(messages=20_000, days=500)
        window = self.start_ready()
        window.fill_the_display()
        year = window.find("radio button", "1 year")
        year.press()
        window.wait_for(lambda: year.checked, "the year to be chosen")
        now = (datetime.datetime.now(datetime.timezone.utc) - REFERENCE).total_seconds()
        cutoff = int(now) - 365 * 86_400
        # The scan takes its own time a moment later. No message may lie in between.
        self.database_without_messages_near(cutoff)
        window.find("push button", "Scan Locally").press()
        window.find("push button", "Scan Again")
        days = self.days_since(cutoff)
        self.assertGreater(len(days), 7)
        self.assert_shows(window, days)

    def database_without_messages_near(self, cutoff):
        self.change_history(f"""
            DELETE FROM message WHERE
              CASE WHEN abs(date) > 1000000000000 THEN date / 1000000000.0 ELSE date END
              BETWEEN {cutoff} - 60 AND {cutoff} + 600""")

    def test_an_empty_history_shows_zeros_and_says_so(self):
        self.write_history(messages=0, days=1)
        window = self.start_ready()
        window.fill_the_display()
        window.find("push button", "Scan Locally").press()
        window.find("label", "No Messages activity was found in the selected window.")
        self.assert_shows(window, [])

    def test_without_a_history_permission_is_asked_for(self):
        window = self.start()
        window.fill_the_display()
        window.find("label", "Full Disk Access is required to read the local Messages database.")
        window.find("label", "Messages access: Permission needed")
        self.write_history(messages=100, days=3)
        window.find("push button", "Check Again").press()
        window.find("push button", "Scan Locally")

    def assert_scans_with_side_files(self, window):
        """A database in WAL mode whose side files are missing: SQLite makes them."""
        self.change_history("PRAGMA journal_mode = WAL")
        window.find("push button", "Check Again").press()
        window.find("push button", "Scan Locally").press()
        window.find("push button", "Scan Again")
        self.assert_shows(window, self.days_since(0)[-90:])

    def test_a_history_in_a_folder_made_later_is_read(self):
        self.database.parent.rmdir()
        window = self.start()
        window.fill_the_display()
        window.find("label", "Messages access: Permission needed")
        self.database.parent.mkdir()
        self.write_history(messages=300, days=20)
        self.assert_scans_with_side_files(window)

    def test_a_history_behind_a_link_is_read(self):
        window = self.start()
        window.fill_the_display()
        window.find("label", "Messages access: Permission needed")
        self.write_history(messages=300, days=20)
        elsewhere = self.home / "elsewhere"
        elsewhere.mkdir()
        self.database = self.database.rename(elsewhere / "chat.db")
        (self.home / "Library/Messages/chat.db").symlink_to(self.database)
        self.assert_scans_with_side_files(window)

    def test_a_failed_scan_keeps_the_earlier_summary(self):
        self.write_history(messages=500, days=30)
        window = self.start_ready()
        window.fill_the_display()
        window.find("push button", "Scan Locally").press()
        window.find("push button", "Scan Again")
        tiles = [name for name in window.names("label") if name.startswith("Sent: ")]
        self.change_history("ALTER TABLE chat_message_join RENAME TO other")
        window.find("push button", "Scan Again").press()
        error = "This version of the Messages database isn’t supported yet."
        window.find("label", error)
        self.assertEqual([name for name in window.names("label") if name.startswith("Sent: ")], tiles)
        window.find("push button", "Scan Again")
        window.wait_for(lambda: error in window.alerts, "the error to be announced")

    def test_the_menu_bar_has_the_command(self):
        self.write_history(messages=500, days=30)
        window = self.start_ready()
        window.find("menu item", "Tidewell").click()
        window.find("menu item", "Scan Messages Activity").click()
        window.find("push button", "Scan Again")

    def test_progress_and_result_are_announced(self):
        self.write_history(messages=200_000, days=300)
        window = self.start_ready()
        window.fill_the_display()
        window.find("push button", "Scan Locally").press()
        window.wait_for(lambda: "Summarizing on this Mac…" in window.alerts, "the progress to be announced")
        window.wait_for(lambda: any("Active days: " in alert for alert in window.alerts),
                        "the result to be announced")


if __name__ == "__main__":
    unittest.main(verbosity=2)
