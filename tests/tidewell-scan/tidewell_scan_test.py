"""Runs tidewell-scan as people and scripts do, and compares what it says with counts of its own."""

import datetime
import decimal
import json
import os
import pathlib
import re
import shutil
import sqlite3
import subprocess
import tempfile
import unittest
import zoneinfo

SCAN = os.environ["TIDEWELL_SCAN"]
SAMPLE_HISTORY = os.environ["TIDEWELL_SAMPLE_HISTORY"]
UTC = datetime.timezone.utc
REFERENCE_DATE = datetime.datetime(2001, 1, 1, tzinfo=UTC)

ACCESS_REQUIRED = "Tidewell can’t read Messages yet. Enable Full Disk Access, then try again."
DATABASE_UNAVAILABLE = "Messages history isn’t available on this Mac."
UNSUPPORTED_DATABASE = "This version of the Messages database isn’t supported yet."
QUERY_FAILED = "Messages activity couldn’t be summarized. No history was saved or sent."


def run(*arguments, **changes):
    """Runs the program in a plain environment; `changes` are variables, and `stdout` where it goes."""
    stdout = changes.pop("stdout", subprocess.PIPE)
    environment = {"PATH": os.environ["PATH"], "HOME": "/nonexistent", "TZ": "UTC", "LC_ALL": "C"}
    if "ASAN_OPTIONS" in os.environ:
        environment["ASAN_OPTIONS"] = os.environ["ASAN_OPTIONS"]
    environment.update(changes)
    return subprocess.run([SCAN, *arguments], env={k: v for k, v in environment.items() if v is not None},
                          stdout=stdout, stderr=subprocess.PIPE, encoding="utf-8", timeout=300, check=False)


def messages(database):
    """Every message as (instant, sent, conversation, length of its text), read without the program's statement."""
    connection = sqlite3.connect(database)
    chats = {}
    for chat, message in connection.execute("SELECT chat_id, message_id FROM chat_message_join"):
        chats[message] = min(chat, chats.get(message, chat))
    for row, date, sent, text in connection.execute("SELECT ROWID, date, is_from_me, text FROM message"):
        seconds = date / 1e9 if abs(date) > 10**12 else date
        yield (REFERENCE_DATE + datetime.timedelta(seconds=seconds), sent != 0, chats.get(row, -row),
               None if text is None else len(text.encode("utf-32-le")) // 4)
    connection.close()


def counted(database, now, days, zone):
    """The days as the program should find them."""
    zone = zoneinfo.ZoneInfo(zone)
    local = now.astimezone(zone).replace(tzinfo=None) - datetime.timedelta(days=days)
    cutoff = local.replace(tzinfo=zone).astimezone(UTC)
    found = {}
    for instant, sent, conversation, length in messages(database):
        if instant < cutoff:
            continue
        there = instant.astimezone(zone)
        day = found.setdefault(there.strftime("%Y-%m-%d"), {"sent": 0, "received": 0, "late": 0, "who": set(), "lengths": []})
        day["sent" if sent else "received"] += 1
        day["who"].add(conversation)
        day["late"] += there.hour < 5
        if length:
            day["lengths"].append(length)
    result = []
    for key, day in sorted(found.items()):
        entry = {"date": key, "sentCount": day["sent"], "receivedCount": day["received"],
                 "activeConversationCount": len(day["who"]), "lateNightCount": day["late"]}
        if day["lengths"]:
            entry["averageMessageLength"] = sum(day["lengths"]) / len(day["lengths"])
        result.append(entry)
    return result


def tenths(number):
    """The number with one decimal, as ICU rounds: its shortest decimal text, a half to the even neighbour."""
    return str(decimal.Decimal(repr(number)).quantize(decimal.Decimal("0.1"), decimal.ROUND_HALF_EVEN))


class TidewellScan(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory()
        cls.folder = pathlib.Path(cls.temporary.name)
        cls.home = cls.folder / "home"
        (cls.home / "Library/Messages").mkdir(parents=True)
        cls.database = cls.home / "Library/Messages/chat.db"
        subprocess.run([SAMPLE_HISTORY, cls.database, "--messages", "6000", "--days", "420", "--seed", "11"],
                       check=True)
        cls.now = datetime.datetime.now(UTC).replace(microsecond=0)

    @classmethod
    def tearDownClass(cls):
        cls.temporary.cleanup()

    def scan(self, *arguments, **changes):
        done = run("--database", str(self.database), "--now", self.now.strftime("%Y-%m-%dT%H:%M:%SZ"), *arguments,
                   **changes)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def assert_refused(self, done, status, message):
        self.assertEqual((done.returncode, done.stdout), (status, ""))
        self.assertRegex(done.stderr, r"\Atidewell-scan: [^\n]+\n\Z")
        self.assertIn(message, done.stderr)

    def test_counts_like_plain_sql_for_every_window_and_zone(self):
        for zone in ("UTC", "Europe/Zurich", "America/St_Johns", "Asia/Kathmandu", "Pacific/Chatham"):
            for days in (1, 30, 90, 365):
                with self.subTest(zone=zone, days=days):
                    summary = json.loads(self.scan("--json", "--days", str(days), TZ=zone))
                    self.assertEqual(summary, {"requestedDays": days,
                                               "scannedAt": self.now.strftime("%Y-%m-%dT%H:%M:%SZ"),
                                               "daily": counted(self.database, self.now, days, zone)})

    def test_timezone_goes_before_the_environment(self):
        for zone in ("Asia/Tokyo", "America/Los_Angeles"):
            self.assertEqual(self.scan("--json", "--timezone", zone, TZ="Europe/Paris"), self.scan("--json", TZ=zone))
        self.assertNotEqual(self.scan("--json", TZ="Asia/Tokyo"), self.scan("--json", TZ="America/Los_Angeles"))

    def test_days_are_those_of_the_calendar_of_the_locale(self):
        gregorian = json.loads(self.scan("--json"))["daily"]
        for locale in ({"LC_ALL": "th_TH.UTF-8"}, {"LC_ALL": None, "LC_TIME": "th_TH"}, {"LC_ALL": "", "LANG": "th_TH"},
                       {"LC_ALL": "de_DE.UTF-8@calendar=buddhist"}):
            buddhist = json.loads(self.scan("--json", **locale))["daily"]
            self.assertEqual([day["date"] for day in buddhist],
                             [str(int(day["date"][:4]) + 543) + day["date"][4:] for day in gregorian])

    def test_json_is_one_line_in_the_order_of_declaration(self):
        text = self.scan("--json")
        self.assertEqual(text.count("\n"), 1)
        self.assertTrue(text.endswith("]}\n"))
        self.assertNotIn(" ", text)
        self.assertEqual(list(json.loads(text)), ["requestedDays", "scannedAt", "daily"])
        self.assertEqual([key for key in json.loads(text)["daily"][0] if key != "averageMessageLength"],
                         ["date", "sentCount", "receivedCount", "activeConversationCount", "lateNightCount"])

    def test_pretty_json_is_the_same_indented_by_two_blanks(self):
        compact = self.scan("--json")
        self.assertEqual(self.scan("--json", "--pretty"), json.dumps(json.loads(compact), indent=2) + "\n")
        self.assertEqual(self.scan("--pretty", "--json"), self.scan("--json", "--pretty"))

    def test_table_says_what_the_json_says(self):
        daily = json.loads(self.scan("--json"))["daily"]
        lines = self.scan().splitlines()
        self.assertTrue(all(len(line) <= 80 and line == line.rstrip() for line in lines))
        self.assertEqual([line.split() for line in lines[4:-2]],
                         [[day["date"], str(day["sentCount"]), str(day["receivedCount"]),
                           str(day["activeConversationCount"]), str(day["lateNightCount"]),
                           tenths(day["averageMessageLength"]) if "averageMessageLength" in day else "-"]
                          for day in daily])
        self.assertEqual(lines[-1].split(),
                         [str(len(daily)), "active", "days", *(str(sum(day[count] for day in daily))
                                                     for count in ("sentCount", "receivedCount", "lateNightCount"))])
        first = (self.now - datetime.timedelta(days=90)).strftime("%Y-%m-%d")
        self.assertEqual(lines[0], f"Messages activity since {first} (the last 90 days before {self.now:%Y-%m-%d})")

    def test_table_groups_digits_as_the_locale_does(self):
        sums = [line.splitlines()[-1] for line in (self.scan("--days", "365", LC_ALL=locale)
                                                   for locale in ("C", "en_US.UTF-8", "de_DE.UTF-8"))]
        self.assertRegex(sums[0], r"\d{4}")
        self.assertRegex(sums[1], r"\d,\d{3}")
        self.assertRegex(sums[2], r"\d\.\d{3}")
        self.assertEqual(re.sub("[,.]", "", sums[1]).split(), sums[0].split())
        mixed = self.scan("--days", "365", LC_ALL=None, LC_NUMERIC="en_US.UTF-8", LANG="de_DE.UTF-8")
        self.assertEqual(mixed.splitlines()[-1], sums[1])

    def test_table_has_its_figures_also_where_the_locale_is_unknown(self):
        self.assertEqual(self.scan(LC_ALL="en_US@numbers=bogus"), self.scan())

    def test_nothing_found_is_said(self):
        later = (self.now + datetime.timedelta(days=10)).strftime("%Y-%m-%dT%H:%M:%SZ")
        done = run("--database", str(self.database), "--now", later, "--days", "1")
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout, r"\AMessages activity since [-0-9]+ \(the last day before [-0-9]+\)\n\n")
        self.assertTrue(done.stdout.endswith("\n\nNo Messages activity was found in the selected window.\n"))
        done = run("--database", str(self.database), "--now", later, "--days", "5", "--json")
        self.assertEqual(done.stdout, f'{{"requestedDays":5,"scannedAt":"{later}","daily":[]}}\n')

    def test_options_stand_in_any_order_and_with_an_equals_sign(self):
        now = self.now.strftime("%Y-%m-%dT%H:%M:%SZ")
        expected = self.scan("--json", "--days", "7")
        for arguments in ([f"--now={now}", "--json", "--days=7", f"--database={self.database}"],
                          ["--json", "--days", "7.0", "--now", now, "--database", str(self.database)],
                          ["--days", "70e-1", "--database", str(self.database), "--now", now, "--json"]):
            self.assertEqual(run(*arguments).stdout, expected)

    def test_an_offset_names_the_same_instant(self):
        there = self.now.astimezone(datetime.timezone(datetime.timedelta(hours=2)))
        for form in ("%Y-%m-%dT%H:%M:%S+02:00", "%Y-%m-%dT%H:%M:%S+0200"):
            done = run("--database", str(self.database), "--now", there.strftime(form), "--json")
            self.assertEqual(done.stdout, self.scan("--json"))

    def test_defaults_are_90_days_up_to_now_in_the_home_folder(self):
        before = datetime.datetime.now(UTC).replace(microsecond=0)
        summary = json.loads(run("--json", HOME=str(self.home)).stdout)
        scanned = datetime.datetime.strptime(summary["scannedAt"], "%Y-%m-%dT%H:%M:%SZ").replace(tzinfo=UTC)
        self.assertEqual(summary["requestedDays"], 90)
        self.assertLessEqual(before, scanned)
        self.assertLessEqual(scanned, datetime.datetime.now(UTC))
        self.assertEqual(run("--check-access", HOME=str(self.home)).stdout, "ready\n")
        self.assertEqual(run("--check-access", HOME=str(self.folder)).stdout, "needsFullDiskAccess\n")

    def test_check_access_prints_the_name_of_the_state_alone(self):
        empty = self.folder / "empty.db"
        empty.touch()
        for path, state in ((self.database, "ready"), (empty, "ready"), (self.folder / "none.db", "needsFullDiskAccess"),
                            (self.folder, "unavailable"), ("", "needsFullDiskAccess")):
            done = run("--check-access", "--database", str(path))
            self.assertEqual((done.returncode, done.stdout, done.stderr), (0, state + "\n", ""), path)

    def test_an_unreadable_file_ends_with_1_and_asks_for_access(self):
        # Root reads everything, so that a copy of the program is run as nobody then.
        with tempfile.TemporaryDirectory() as folder:
            os.chmod(folder, 0o755)
            locked = pathlib.Path(folder) / "chat.db"
            shutil.copy(self.database, locked)
            locked.chmod(0)
            program = pathlib.Path(folder) / "tidewell-scan"
            shutil.copy(SCAN, program)
            user = {"user": 65534} if os.getuid() == 0 else {}
            for arguments, outcome in ((["--database", locked], (1, "", f"tidewell-scan: {ACCESS_REQUIRED}\n")),
                                       (["--database", locked, "--check-access"], (0, "needsFullDiskAccess\n", ""))):
                done = subprocess.run([program, *arguments], capture_output=True, encoding="utf-8", check=False, **user)
                self.assertEqual((done.returncode, done.stdout, done.stderr), outcome)

    def test_every_scan_error_ends_with_1_and_its_text(self):
        garbage = self.folder / "garbage.db"
        garbage.write_bytes(b"this is no database, however long one looks at it" * 100)
        other = self.folder / "other.db"
        with sqlite3.connect(other) as connection:
            connection.execute("CREATE TABLE message (date INTEGER)")
        connection.close()
        for path, text in ((self.folder / "none.db", ACCESS_REQUIRED), (self.folder, DATABASE_UNAVAILABLE),
                           ("", ACCESS_REQUIRED), (garbage, UNSUPPORTED_DATABASE), (other, UNSUPPORTED_DATABASE)):
            for format_options in ([], ["--json"]):
                done = run("--database", str(path), *format_options)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", f"tidewell-scan: {text}\n"), path)

    def test_days_outside_1_to_365_are_the_scan_error_also_where_there_is_no_database(self):
        for database in (self.database, "/nonexistent"):
            for days in ("0", "366", "-1", "-90", "99999999999999999999", "-99999999999999999999", "1e300"):
                done = run("--days", days, "--database", str(database))
                self.assertEqual((done.returncode, done.stdout, done.stderr),
                                 (1, "", f"tidewell-scan: {QUERY_FAILED}\n"), days)
        for days in ("1", "365"):
            self.scan("--days", days)

    def test_wrong_use_ends_with_2_and_one_line(self):
        for arguments, message in ((["--days", "abc"], '--days: "abc" is not a whole number'),
                                   (["--days", "+5"], '--days: "+5" is not'), (["--days", "0x10"], "--days"),
                                   (["--days", ".5"], "--days"), (["--days", "5.5"], "--days"),
                                   (["--days", " 5"], "--days"), (["--days", ""], "--days"),
                                   (["--days", "٩٠"], "--days"), (["--days"], "--days needs a value"),
                                   (["--days", "5", "--days", "6"], "--days is given twice"),
                                   (["--now", "yesterday"], '--now: "yesterday" is not an instant'),
                                   (["--now", "2024-05-01T08:30:00"], "--now"),
                                   (["--now", "2024-02-30T08:30:00Z"], "--now"),
                                   (["--now", "2024-05-01T08:30:00.5Z"], "--now"), (["--now", "0"], "--now"),
                                   (["--timezone", "Mars/Olympus"], '--timezone: "Mars/Olympus" is not'),
                                   (["--timezone", ""], "--timezone"), (["--timezone"], "--timezone"),
                                   (["--database"], "--database needs a value"),
                                   (["--database="], "--database needs a value"),
                                   (["--pretty"], "--pretty needs --json"), (["--json=true"], "--json takes no value"),
                                   (["--json="], "--json takes no value"), (["--help=5"], "--help takes no value"),
                                   (["--unknown"], '"--unknown" is not expected'), (["-x"], '"-x" is not expected'),
                                   (["b", "a", "--unknown"], '"b" is not expected'), ([""], '"" is not expected'),
                                   (["--jso"], "--jso"), (["chat.db"], "chat.db"), (["a\nb\x1b[31m"], "a\\u000Ab\\u001B"),
                                   (["--json", "--check-access"], "--json does not go with --check-access"),
                                   (["--check-access", "--days", "5"], "--check-access does not go with --days"),
                                   (["--check-access", "--now", "2024-05-01T08:30:00Z"],
                                    "--check-access does not go with --now"),
                                   (["--generate"], "--generate"), (["--generate", "poem"], "--generate")):
            with self.subTest(arguments=arguments):
                self.assert_refused(run(*arguments), 2, message)

    def test_the_command_line_is_judged_before_the_database(self):
        self.assert_refused(run("--database", "/nonexistent", "--timezone", "Nowhere"), 2, "--timezone")

    def test_output_that_cannot_be_written_ends_with_3(self):
        for arguments in (["--database", str(self.database)], ["--help"], ["--version"], ["--check-access"]):
            with open("/dev/full", "wb") as full:
                self.assert_refused_without_output(run(*arguments, stdout=full), "No space left on device")
            reading, writing = os.pipe()
            os.close(reading)
            self.assert_refused_without_output(run(*arguments, stdout=writing), "Broken pipe")
            os.close(writing)
            closed = subprocess.run(["sh", "-c", 'exec "$0" "$@" >&-', SCAN, *arguments], stderr=subprocess.PIPE,
                                    encoding="utf-8", check=False)
            self.assert_refused_without_output(closed, "Bad file descriptor")

    def assert_refused_without_output(self, done, reason):
        self.assertEqual((done.returncode, done.stderr), (3, f"tidewell-scan: standard output: {reason}\n"))

    def test_help_and_version(self):
        for option in ("-h", "--help"):
            done = run(option)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertTrue(all(len(line) <= 80 for line in done.stdout.splitlines()))
            for name in ("--days N", "--now T", "--database PATH", "--timezone ID", "--json", "--pretty",
                         "--check-access", "--help", "--version", "Default: 90."):
                self.assertIn(name, done.stdout)
        self.assertRegex(run("--version").stdout, r"\Atidewell-scan \d+\.\d+\.\d+\n\Z")

    def test_help_goes_before_whatever_is_wrong(self):
        for wrong in (["--unknown"], ["--days", "abc"], ["--json", "--check-access"], ["chat.db"]):
            for arguments in (["--help", *wrong], [*wrong, "--help"]):
                done = run(*arguments)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (0, run("--help").stdout, ""), arguments)

    def test_the_example_of_the_help_works_as_it_stands(self):
        example = re.search(r"Example:\n  tidewell-scan (.*)\n", run("--help").stdout).group(1)
        done = run(*example.split(), HOME=str(self.home))
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(json.loads(done.stdout)["requestedDays"], 30)

    def test_a_run_writes_no_file_and_opens_no_socket(self):
        aside = (str(self.database) + "-shm", str(self.database) + "-wal")
        for arguments in (["--days", "365"], ["--days", "365", "--json"], ["--check-access"], ["--help"], ["--days", "0"],
                          ["--timezone", "Asia/Tokyo"]):
            trace = self.folder / "trace"
            done = subprocess.run(["strace", "-f", "-o", trace, SCAN, *arguments], stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL, check=False,
                                  env={"HOME": str(self.home), "LC_ALL": "de_DE.UTF-8", "PATH": os.environ["PATH"],
                                       "ASAN_OPTIONS": "detect_leaks=0"})
            self.assertIn(done.returncode, (0, 1))
            calls = trace.read_text(encoding="utf-8", errors="replace").splitlines()
            self.assertGreater(len(calls), 20)
            self.assertEqual([call for call in calls if self.changes_something(call)
                              and not any(f'"{path}"' in call for path in aside)], [], arguments)

    @staticmethod
    def changes_something(call):
        name = re.match(r"\d+\s+(\w+)\(", call)
        if not name:
            return False
        if name.group(1) in ("open", "openat", "openat2"):
            return re.search(r"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_TMPFILE", call) and '"/dev/null"' not in call
        return name.group(1) in {"creat", "rename", "renameat", "renameat2", "unlink", "unlinkat", "mkdir", "mkdirat",
                                 "rmdir", "link", "linkat", "symlink", "symlinkat", "truncate", "chmod", "fchmodat",
                                 "chown", "mknod", "mknodat", "socket", "socketpair", "connect", "utimensat",
                                 "setxattr", "memfd_create"}


if __name__ == "__main__":
    unittest.main()
