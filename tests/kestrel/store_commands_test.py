"""Runs kestrel store as people and scripts do, and lets every call fail with which it writes."""

import concurrent.futures
import datetime
import json
import os
import pathlib
import shutil
import sqlite3
import stat
import subprocess
import tempfile

import unittest

from kestrel_test_case import KESTREL, Field, KestrelTestCase, gone_on, run

FAILING_CALLS = os.environ["FAILING_CALLS"]

DELIVERY = "2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10"
OTHER = "00000000-0000-0000-0000-000000000001"
MANIA = {"version": 1, "deliveryID": DELIVERY, "stateRaw": "Mania", "confidencePercent": 82,
         "generatedAt": "2024-05-01T08:30:00Z"}
STATE_FIELDS = [Field("", "object"), Field("version", "integer"), Field("deliveryID", "uuid"), Field("stateRaw", "text"),
                Field("confidencePercent", "integer"), Field("generatedAt", "instant")]
NOTHING = {"isPaired": False, "isWatchAppInstalled": False, "isReachable": False}
LATER = "2024-05-01T08:31:00Z"
# Commands that read, and those that change what is stored, each with its input.
READS = [["state"], ["snapshot"], ["phone"], ["evidence"]]
CHANGES = [(["state", "Mania"], ""), (["snapshot", "put"], "{}"), (["snapshot", "clear"], ""),
           (["phone", "put", "--received-at", LATER], json.dumps(MANIA)),
           (["evidence", "sent", "--at", LATER], json.dumps(MANIA)),
           (["evidence", "received", "--at", LATER], json.dumps(MANIA)),
           (["evidence", "acknowledged", DELIVERY, "--at", LATER], ""), (["evidence", "error", "lost"], "")]


def failure(folder, at, outcome):
    """The variables with which the program's call number `at` on `folder` ends in `outcome`."""
    return {"LD_PRELOAD": FAILING_CALLS, "FAILING_CALLS_UNDER": str(folder), "FAILING_CALLS_AT": str(at),
            "FAILING_CALLS_WITH": outcome,
            "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"}


class StoreCommands(KestrelTestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()
        self.suite = self.folder / "suite.sqlite"

    def store(self, *arguments, **changes):
        return self.output("store", "--suite", str(self.suite), *arguments, **changes)

    def read(self, *arguments):
        return json.loads(self.store(*arguments))

    def names(self, folder=None):
        return sorted(path.name for path in (folder or self.folder).iterdir())

    # Where nothing is stored

    def test_where_nothing_is_stored_reading_prints_it_and_creates_nothing(self):
        for arguments, output in ((["state"], '"Unknown"\n'), (["snapshot"], "{}\n"), (["phone"], "{}\n"),
                                  (["evidence"], json.dumps(NOTHING, separators=(",", ":")) + "\n")):
            self.assertEqual(self.store(*arguments), output)
        self.assertEqual(self.names(), [])

    def test_what_only_stores_prints_nothing(self):
        for arguments, document in CHANGES:
            if arguments[0] not in ("state", "phone"):
                self.assertEqual(self.store(*arguments, input=document), "")

    def test_pretty_indents(self):
        self.assertEqual(self.store("evidence", "--pretty"),
                         '{\n  "isPaired": false,\n  "isWatchAppInstalled": false,\n  "isReachable": false\n}\n')

    # The state

    def test_a_state_is_read_leniently_set_and_printed(self):
        for text, state in (("Mania", "Mania"), ("Hypomanic", "Hypomania"), ("serene", "Unknown"), ("", "Unknown")):
            self.assertEqual(self.read("state", text), state)
            self.assertEqual(self.read("state"), state)

    # The dashboard's snapshot

    def test_a_snapshot_is_stored_with_the_present_time_printed_and_cleared(self):
        snapshot = {"essential": {"viz": {"summary": {"total_posts": 7}, "daily": [{"date": "2024-05-01", "posts": 7}]}}}
        now = lambda: datetime.datetime.now(datetime.timezone.utc).replace(microsecond=0)
        before = now()
        self.store("snapshot", "put", input=json.dumps(snapshot))
        stored = self.read("snapshot")
        self.assertEqual(stored["snapshot"], snapshot)
        self.assertEqual(list(stored), ["snapshot", "updatedAt"])
        self.assertTrue(before <= datetime.datetime.fromisoformat(stored["updatedAt"].replace("Z", "+00:00")) <= now())
        self.store("snapshot", "clear")
        self.assertEqual(self.read("snapshot"), {})
        self.store("snapshot", "clear")

    def test_a_snapshot_comes_from_a_file_or_standard_input(self):
        path = self.folder / "snapshot.json"
        path.write_text('{"health": {}}', encoding="utf-8")
        self.store("snapshot", "put", str(path), input="nonsense")
        self.assertEqual(self.read("snapshot")["snapshot"], {"health": {}})
        self.store("snapshot", "put", "-", input="{}")
        self.assertEqual(self.read("snapshot")["snapshot"], {})

    def test_a_snapshot_that_is_none_is_refused_and_leaves_the_stored_one(self):
        self.store("snapshot", "put", input='{"health": {}}')
        self.assert_refused(run("store", "--suite", str(self.suite), "snapshot", "put", input='{"health": 7}'), 1,
                            "health: expected an object, found a number")
        self.assertEqual(self.read("snapshot")["snapshot"], {"health": {}})

    def test_a_snapshot_that_would_be_printed_deeper_than_it_could_be_read_is_refused(self):
        for levels in (508, 509):
            sentiment = "[" * levels + "]" * levels
            text = '{"essential":{"communication":{"daily_sentiment":' + sentiment + "}}}"
            self.store("snapshot", "put", input=text)
            if levels == 508:
                self.assertIn(f'{{"snapshot":{text},', self.store("snapshot"))
        self.assert_refused(run("store", "--suite", str(self.suite), "snapshot"), 1,
                            "snapshot.essential.communication.daily_sentiment: is nested beyond 512 levels")

    # The phone's state

    def test_a_phone_state_is_stored_unless_a_later_one_is(self):
        put = lambda at, received: self.read_put({**MANIA, "generatedAt": at}, received)
        self.assertIs(put("2024-05-01T08:30:00Z", "2024-05-01T09:00:00Z"), True)
        self.assertEqual(self.read("phone"), {"snapshot": MANIA, "receivedAt": "2024-05-01T09:00:00Z"})
        self.assertIs(put("2024-05-01T08:29:59Z", "2024-05-01T09:00:01Z"), False)
        self.assertEqual(self.read("phone"), {"snapshot": MANIA, "receivedAt": "2024-05-01T09:00:00Z"})
        self.assertIs(put("2024-05-01T10:30:00+02:00", "2024-05-01T08:00:00Z"), True)
        self.assertEqual(self.read("phone")["receivedAt"], "2024-05-01T08:00:00Z")
        self.assertIs(put("2024-05-01T08:30:01Z", "2024-05-01T09:00:02Z"), True)
        self.assertEqual(self.read("phone")["snapshot"]["generatedAt"], "2024-05-01T08:30:01Z")
        self.assertEqual(self.read("state"), "Unknown")

    def read_put(self, state, received, *options):
        return json.loads(self.store("phone", "put", "--received-at", received, *options, input=json.dumps(state)))

    def test_a_phone_state_updates_the_latest_state_where_asked_to(self):
        self.read_put({**MANIA, "stateRaw": "Hypomanic"}, LATER, "--update-latest")
        self.assertEqual(self.read("state"), "Hypomania")
        self.assertIs(self.read_put({**MANIA, "generatedAt": "2024-01-01T00:00:00Z"}, LATER, "--update-latest"), False)
        self.assertEqual(self.read("state"), "Hypomania")

    # The evidence

    def test_a_delivery_is_recorded_from_its_sending_to_its_receipt(self):
        at = lambda minute: f"2024-05-01T09:{minute:02}:00Z"
        self.store("evidence", "error", "not reachable")
        self.assertEqual(self.read("evidence"), {**NOTHING, "lastError": "not reachable"})
        self.store("evidence", "acknowledged", DELIVERY, "--at", at(0))
        self.assertEqual(self.read("evidence"), {**NOTHING, "lastError": "not reachable"})
        self.store("evidence", "sent", "--at", at(1), input=json.dumps(MANIA))
        sent = {**NOTHING, "lastSentAt": at(1), "lastSentDeliveryID": DELIVERY}
        self.assertEqual(self.read("evidence"), sent)
        self.store("evidence", "acknowledged", OTHER, "--at", at(2))
        self.assertEqual(self.read("evidence"), sent)
        self.store("evidence", "acknowledged", DELIVERY.lower(), "--at", at(3))
        acknowledged = {**sent, "lastAcknowledgedAt": at(3), "lastAcknowledgedDeliveryID": DELIVERY}
        self.assertEqual(self.read("evidence"), acknowledged)
        self.store("evidence", "received", "--at", at(4), input=json.dumps({**MANIA, "stateRaw": "Hypomanic"}))
        self.assertEqual(self.read("evidence"), {**acknowledged, "lastReceivedStateAt": at(4),
                                                 "lastReceivedState": "Hypomania", "lastReceivedConfidence": 82})

    # Wrong use, and wrong input

    def test_wrong_use_is_said(self):
        instant = "an instant such as 2024-05-01T08:30:00Z"
        for arguments, message in (
                (["state", "Mania", "x"], '"x" is not expected (see kestrel store state --help)'),
                (["snapshot", "drop"], '"drop" is not expected (see kestrel store snapshot --help)'),
                (["snapshot", "put", "--at", LATER], '"--at" is not expected (see kestrel store snapshot put --help)'),
                (["phone", "put"], "--received-at is required (see kestrel store phone put --help)"),
                (["phone", "put", "--received-at", "now"],
                 f'--received-at: "now" is not {instant} (see kestrel store phone put --help)'),
                (["phone", "put", "--received-at", LATER, "--update-latest=yes"],
                 "--update-latest takes no value (see kestrel store phone put --help)"),
                (["evidence", "sent"], "--at is required (see kestrel store evidence sent --help)"),
                (["evidence", "received"], "--at is required (see kestrel store evidence received --help)"),
                (["evidence", "sent", "--at", "2024-05-01"],
                 f'--at: "2024-05-01" is not {instant} (see kestrel store evidence sent --help)'),
                (["evidence", "acknowledged", "--at", LATER],
                 "DELIVERY-ID is required (see kestrel store evidence acknowledged --help)"),
                (["evidence", "acknowledged", DELIVERY], "--at is required (see kestrel store evidence acknowledged --help)"),
                (["evidence", "error"], "TEXT is required (see kestrel store evidence error --help)"),
                ([], "COMMAND is required (see kestrel store --help)"),
                (["clear"], '"clear" is not one of state, snapshot, phone, evidence (see kestrel store --help)')):
            self.assert_refused(run("store", "--suite", str(self.suite), *arguments), 2, message)
        for text in ("", "nonsense", "{" + DELIVERY + "}", DELIVERY.replace("-", ""), DELIVERY + "0"):
            self.assert_refused(run("store", "--suite", str(self.suite), "evidence", "acknowledged", text, "--at", LATER), 2,
                                f'DELIVERY-ID: "{text}" is not a UUID such as {DELIVERY} '
                                "(see kestrel store evidence acknowledged --help)")
        self.assertEqual(self.names(), [])

    def test_the_command_line_is_judged_before_files_and_these_before_documents(self):
        missing = str(self.folder / "missing" / "suite.sqlite")
        self.assert_refused(run("store", "--suite", missing, "evidence", "sent", "/nonexistent/x.json"), 2,
                            "--at is required (see kestrel store evidence sent --help)")
        for arguments, _ in CHANGES:
            self.assert_refused(run("store", "--suite", missing, *arguments, input="nonsense"), 3,
                                f"{missing}: No such file or directory")
        self.assert_refused(run("store", "--suite", str(self.suite), "snapshot", "put", "/nonexistent/x.json"), 3,
                            "/nonexistent/x.json: No such file or directory")

    def test_a_watch_state_that_is_none_is_refused(self):
        fields = [field for field in STATE_FIELDS if field.form != "uuid"]
        for call in (["phone", "put", "--received-at", LATER], ["evidence", "sent", "--at", LATER],
                     ["evidence", "received", "--at", LATER]):
            self.assert_bad_input_is_refused(["store", "--suite", str(self.suite), *call], MANIA, fields)
            self.assert_refused(run("store", "--suite", str(self.suite), *call, input=json.dumps({**MANIA, "deliveryID": 7})),
                                1, "deliveryID: expected text, found a number")

    def test_an_error_that_is_no_text_is_refused_and_the_last_one_stays(self):
        self.store("evidence", "error", "good")
        self.assert_refused(run("store", "--suite", str(self.suite), "evidence", "error", b"a\xffb"), 2,
                            'TEXT: "a\\xFFb" is not UTF-8 text (see kestrel store evidence error --help)')
        self.assertEqual(json.loads(self.store("evidence"))["lastError"], "good")

    # What cannot be opened, read or written

    def test_a_suite_that_cannot_be_opened_ends_with_3_and_stays_as_it_is(self):
        self.suite.write_text("this is no database, whatever it is called", encoding="utf-8")
        for arguments, document in [*((call, "") for call in READS), *CHANGES]:
            self.assert_refused(run("store", "--suite", str(self.suite), *arguments, input=document), 3,
                                f"{self.suite}: file is not a database")
        self.assertEqual(self.suite.read_text(encoding="utf-8"), "this is no database, whatever it is called")
        for path, reason in ((self.folder, "Is a directory"), (self.suite / "x", "Not a directory"),
                             (self.folder / "none" / "x", "No such file or directory")):
            for arguments in READS:
                self.assert_refused(run("store", "--suite", str(path), *arguments), 3, f"{path}: {reason}")

    def test_a_suite_without_a_name_holds_nothing_and_cannot_be_made(self):
        self.assertEqual(self.output("store", "--suite", "", "state"), '"Unknown"\n')
        self.assert_refused(run("store", "--suite", "", "state", "Mania"), 3, '"": No such file or directory')

    def test_a_database_of_another_program_ends_with_3_and_stays_as_it_is(self):
        connection = sqlite3.connect(self.suite)
        connection.execute("CREATE TABLE message (text)")
        connection.close()
        before = self.suite.read_bytes()
        for arguments in (["state"], ["state", "Mania"]):
            self.assert_refused(run("store", "--suite", str(self.suite), *arguments), 3,
                                f"{self.suite}: is a database, but none of shared defaults")
        self.assertEqual(self.suite.read_bytes(), before)

    def test_a_suite_that_cannot_be_written_ends_with_3(self):
        if os.geteuid() == 0:
            # Where root may not look, either, nobody finds the program.
            program = self.folder / "kestrel"
            shutil.copy(KESTREL, program)
            nobody = {"user": 65534, "group": 65534}
        else:
            program, nobody = KESTREL, {}
        self.store("state", "Mania")
        self.suite.chmod(0o444)
        self.folder.chmod(0o555)
        call = lambda *arguments: subprocess.run([program, "store", "--suite", self.suite, *arguments], capture_output=True,
                                                 encoding="utf-8", check=False, env={"HOME": "/"}, **nobody)
        self.assertEqual(call("state").stdout, '"Mania"\n')
        self.assert_refused(call("state", "Euthymia"), 3, f"{self.suite}: attempt to write a readonly database")
        self.assertEqual(call("state").stdout, '"Mania"\n')
        self.folder.chmod(0o755)
        self.suite.chmod(0o000)
        self.assert_refused(call("state"), 3, f"{self.suite}: Permission denied")
        self.suite.chmod(0o600)

    def test_a_link_to_a_suite_that_does_not_exist_yet_is_followed_and_stays(self):
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        self.suite.symlink_to("elsewhere/target.sqlite")
        self.assertEqual(self.store("state"), '"Unknown"\n')
        self.assertEqual(self.names(elsewhere), [])
        self.assertEqual(self.store("state", "Mania"), '"Mania"\n')
        self.assertEqual(self.store("state"), '"Mania"\n')
        self.assertEqual((self.names(elsewhere), self.suite.is_symlink()), (["target.sqlite"], True))
        self.assertEqual(stat.S_IMODE((elsewhere / "target.sqlite").stat().st_mode), 0o600)
        (elsewhere / "target.sqlite").unlink()
        elsewhere.rmdir()
        self.assertEqual(self.store("state"), '"Unknown"\n')
        self.assert_refused(run("store", "--suite", str(self.suite), "state", "Mania"), 3,
                            f"{self.suite}: No such file or directory")

    def test_a_damaged_suite_is_said_and_not_taken_for_nothing(self):
        for number in range(8):
            self.store("snapshot", "put", input=json.dumps({"health": {"health": [
                {"date": f"2024-05-{day:02}", "source": "x" * 100 * number} for day in range(1, 29)]}}))
        with open(self.suite, "r+b") as suite:
            suite.seek(4096)
            suite.write(b"\x5a" * (self.suite.stat().st_size - 4096))
        for arguments in (["snapshot"], ["state"], ["state", "Mania"]):
            self.assert_refused(run("store", "--suite", str(self.suite), *arguments), 3,
                                f"{self.suite}: database disk image is malformed")

    def test_a_full_disk_ends_with_3_and_loses_nothing(self):
        disk = self.folder / "disk"
        disk.mkdir()
        script = """
            "$2" store --suite "$1/suite.sqlite" state Mania
            head -c 1M /dev/zero > "$1/rest" 2> /dev/null
            "$2" store --suite "$1/suite.sqlite" state Euthymia; echo "$?"
            "$2" store --suite "$1/suite.sqlite" state
            rm "$1/rest"
            "$2" store --suite "$1/suite.sqlite" state Euthymia"""
        done = self.on_a_small_disk(disk, script, KESTREL)
        self.assertEqual(done.stdout, '"Mania"\n3\n"Mania"\n"Euthymia"\n')
        self.assertEqual(done.stderr, f"kestrel: {disk}/suite.sqlite: database or disk is full\n")

    # The application group's

    def test_without_a_suite_the_groups_is_used_and_made_for_its_owner_alone(self):
        for variables, folder in (({"XDG_DATA_HOME": str(self.folder / "data")}, self.folder / "data"),
                                  ({"HOME": str(self.folder)}, self.folder / ".local" / "share"),
                                  ({"HOME": str(self.folder / "home"), "XDG_DATA_HOME": "relative"},
                                   self.folder / "home" / ".local" / "share")):
            container = folder / "group.app.tidewell.shared"
            for arguments in READS:
                self.output("store", *arguments, **variables)
            self.assertFalse(folder.exists())
            self.assertEqual(self.output("store", "state", "Mania", **variables), '"Mania"\n')
            self.assertEqual(self.output("store", "state", **variables), '"Mania"\n')
            self.assertEqual(self.names(container), ["defaults.sqlite"])
            self.assertEqual(stat.S_IMODE(container.stat().st_mode), 0o700)
            self.assertEqual(stat.S_IMODE((container / "defaults.sqlite").stat().st_mode), 0o600)

    def test_a_container_that_cannot_be_made_ends_with_3(self):
        (self.folder / "file").write_text("", encoding="utf-8")
        home = {"XDG_DATA_HOME": str(self.folder / "file")}
        self.assertEqual(self.output("store", "state", **home), '"Unknown"\n')
        self.assert_refused(run("store", "state", "Mania", **home), 3,
                            f"{self.folder}/file/group.app.tidewell.shared/defaults.sqlite: Not a directory")

    def test_without_a_container_every_command_ends_with_3_unless_a_suite_is_named(self):
        nowhere = {"HOME": "relative"}
        for arguments, document in [*((call, "") for call in READS), *CHANGES]:
            self.assert_refused(run("store", *arguments, input=document, **nowhere), 3,
                                "the shared defaults: there is no folder for them: the home is no absolute path")
            self.store(*arguments, input=document, **nowhere)
        self.assertEqual(self.names(), ["suite.sqlite"])

    # Failing calls

    def failing(self, folder, at, outcome, *arguments):
        """Runs the program with its call number `at` on `folder` ending in `outcome`."""
        environment = failure(folder, at, outcome)
        if at == 0:
            environment["FAILING_CALLS_LIST"] = str(folder) + ".calls"
        return run("store", "--suite", str(folder / "suite.sqlite"), *arguments, **environment)

    def stored(self, suite):
        """What a suite holds, as an SQLite that is not ours has it."""
        if not suite.exists() or not suite.stat().st_size:
            return {}
        connection = sqlite3.connect(suite)
        try:
            self.assertEqual(connection.execute("PRAGMA integrity_check").fetchone(), ("ok",))
            return dict(connection.execute("SELECT key, value FROM defaults"))
        except sqlite3.OperationalError as error:
            self.assertIn("no such table", str(error))  # The file was made, and nothing written.
            return {}
        finally:
            connection.close()

    def assert_every_call_may_fail(self, before):
        """Has each call with which a state is written end in each way, in a suite that `before` prepares."""
        def prepared(name):
            folder = self.folder / name
            folder.mkdir()
            before(folder / "suite.sqlite")
            return folder
        folder = prepared("listed")
        old = self.stored(folder / "suite.sqlite")
        self.assertEqual(self.failing(folder, 0, "EIO", "state", "Euthymia").returncode, 0)
        calls = pathlib.Path(f"{folder}.calls").read_text(encoding="utf-8").splitlines()
        new = {**old, "complication.latestState": "Euthymia"}
        self.assertEqual(self.stored(folder / "suite.sqlite"), new)
        names = {call.split()[0] for call in calls}
        self.assertTrue(any(name.startswith("open") for name in names) and any("write" in name for name in names), names)
        self.assertTrue(names & {"fsync", "fdatasync"} and "unlink" in names, names)

        def attempt(at, outcome):
            folder = prepared(f"{at}-{outcome}")
            done = self.failing(folder, at, outcome, "state", "Euthymia")
            what = (at, calls[at - 1], outcome, done)
            found = self.stored(folder / "suite.sqlite")
            with_ours = run("store", "--suite", str(folder / "suite.sqlite"), "state")
            self.assertEqual((with_ours.returncode, json.loads(with_ours.stdout)),
                             (0, found.get("complication.latestState", "Unknown")), what)
            self.assertIn(found, (old, new), what)
            if outcome in ("EINTR", "SHORT"):
                self.assertEqual((done.returncode, done.stdout, done.stderr), (0, '"Euthymia"\n', ""), what)
            if done.returncode == 0:
                self.assertEqual((found, done.stderr), (new, ""), what)
            elif outcome == "KILL":
                self.assertEqual(done.returncode, -9, what)
            else:
                self.assertEqual((done.returncode, done.stdout), (3, ""), what)
                self.assertRegex(done.stderr, rf"\Akestrel: {folder}/suite\.sqlite: [^\n]+\n\Z", what)
            return outcome, done.returncode, found == new

        attempts = [(at, outcome) for outcome in ("EINTR", "SHORT", "ENOSPC", "EIO", "KILL")
                    for at in range(1, len(calls) + 1)]
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            ends = set(pool.map(lambda one: attempt(*one), attempts))
        for end in (("EIO", 3, False), ("ENOSPC", 3, False), ("KILL", -9, False), ("KILL", -9, True)):
            self.assertIn(end, ends)

    def test_every_call_of_a_change_may_fail_and_the_suite_is_the_old_or_the_new_one(self):
        def before(suite):
            self.output("store", "--suite", str(suite), "state", "Mania")
            self.output("store", "--suite", str(suite), "evidence", "error", "kept")
        self.assert_every_call_may_fail(before)

    def test_every_call_of_the_first_change_may_fail_and_the_suite_is_none_or_the_new_one(self):
        self.assert_every_call_may_fail(lambda suite: None)

    # Two at once

    def stopped_at(self, at, *arguments):
        """The command, stopped before its call number `at` on the suite's folder."""
        return self.stopped("store", "--suite", str(self.suite), *arguments, **failure(self.folder, at, "PAUSE"))

    def test_two_programs_may_make_the_suite_at_the_same_moment(self):
        process = self.stopped_at(1, "state", "Mania")  # before it makes the file, since there is none
        self.store("evidence", "error", "of the other")
        done = gone_on(process)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, '"Mania"\n', ""))
        self.assertEqual((self.read("state"), self.read("evidence")["lastError"]), ("Mania", "of the other"))

    def test_a_suite_that_is_removed_as_it_is_made_is_said(self):
        process = self.stopped_at(2, "state", "Mania")  # the file is made
        self.suite.unlink()
        self.assert_refused(gone_on(process), 3, f"{self.suite}: the file was removed as it was made")
        self.assertEqual(self.names(), [])


if __name__ == "__main__":
    unittest.main()
