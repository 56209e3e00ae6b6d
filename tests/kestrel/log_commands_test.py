"""Runs kestrel log as people and scripts do, and lets every call fail with which it writes."""

import concurrent.futures
import json
import os
import pathlib
import resource
import shutil
import stat
import subprocess
import tempfile
import unittest

from kestrel_test_case import KESTREL, KestrelTestCase, gone_on, run

FAILING_CALLS = os.environ["FAILING_CALLS"]

STATES = ["Psychosis", "Mixed Episode", "Mania", "Hypomania", "Euthymia", "Dysthymia", "Moderate Depression",
          "Severe Depression", "Unknown"]
KINDS = ["classifier", "selfReport", "shadow"]


def line(timestamp, kind="classifier", state="Mania", date="2024-05-01", **more):
    return json.dumps({"timestamp": timestamp, "kind": kind, "date": date, "stateRaw": state, **more},
                      separators=(",", ":"), ensure_ascii=False) + "\n"


OLD = line("2024-04-01T08:30:00Z", confidence=1) + line("2024-04-02T08:30:00Z", "selfReport", source="manual")


class LogCommands(KestrelTestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()
        self.file = self.folder / "log.jsonl"

    def log(self, *arguments, **changes):
        return self.output("log", "--file", str(self.file), *arguments, **changes)

    def events(self, **changes):
        return json.loads(self.log("events", **changes))

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())

    # Recording

    def test_what_only_records_prints_nothing(self):
        for arguments in (["classification", "2024-05-01", "Mania", "90"], ["shadow", "2024-05-01", "Mania", "-1"],
                          ["self-report", "2024-05-01", "Mania", "manual"], ["clear"]):
            self.assertEqual(self.log(*arguments), "")

    def test_events_are_listed_as_they_were_recorded(self):
        self.log("classification", "2024-05-01", "Mixed Episode", "90")
        self.log("self-report", "2024-05-01", "Mania", "keyword")
        self.log("shadow", "2024-05-02", "Unknown", "0")
        events = self.events()
        for event in events:
            self.assertRegex(event.pop("timestamp"), r"\A\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ\Z")
        self.assertEqual([list(event.items()) for event in events], [
            [("kind", "classifier"), ("date", "2024-05-01"), ("stateRaw", "Mixed Episode"), ("confidence", 90)],
            [("kind", "selfReport"), ("date", "2024-05-01"), ("stateRaw", "Mania"), ("source", "keyword")],
            [("kind", "shadow"), ("date", "2024-05-02"), ("stateRaw", "Unknown"), ("confidence", 0)]])

    def test_a_later_verdict_replaces_that_of_the_same_day(self):
        for confidence in ("1", "2"):
            for command in ("classification", "shadow"):
                self.log(command, "2024-05-01", "Mania", confidence)
            self.log("self-report", "2024-05-01", "Mania", "manual")
        self.assertEqual([(event["kind"], event.get("confidence")) for event in self.events()],
                         [("selfReport", None), ("classifier", 2), ("shadow", 2), ("selfReport", None)])

    def test_every_state_and_source_can_be_recorded(self):
        for state in STATES:
            for source in ("manual", "keyword"):
                self.log("self-report", "2024-05-01", state, source)
        self.assertEqual([(event["stateRaw"], event["source"]) for event in self.events()],
                         [(state, source) for state in STATES for source in ("manual", "keyword")])

    def test_confidences_are_whole_numbers_of_64_bits(self):
        for text, confidence in (("0", 0), ("5e1", 50), ("80.0", 80), ("9223372036854775807", 2**63 - 1)):
            self.log("classification", "2024-05-01", "Mania", text)
            self.assertEqual(self.events()[0]["confidence"], confidence)
        for words in (["-9223372036854775808"], ["--", "-9223372036854775808"]):
            self.log("classification", "2024-05-01", "Mania", *words)
            self.assertEqual(self.events()[0]["confidence"], -2**63)
        for text in ("-0.5", "-9223372036854775809", "-01", "80.5", "9223372036854775808", "1e19", "+5", "05", "0x10", "", " 5", "80%", "high"):
            self.assert_refused(run("log", "--file", str(self.file), "classification", "2024-05-01", "Mania", text), 2,
                                f'CONFIDENCE: "{text}" is not a whole number (see kestrel log classification --help)')

    def test_wrong_words_are_refused_before_the_log_is_touched(self):
        states = ", ".join(STATES)
        for arguments, message in (
                (["classification"], "DATE is required"), (["classification", "2024-05-01"], "STATE is required"),
                (["classification", "2024-05-01", "Mania"], "CONFIDENCE is required"),
                (["self-report", "2024-05-01", "Mania"], "SOURCE is required"), (["latest"], "KIND is required"),
                (["classification", "2024-02-30", "Mania", "1"], 'DATE: "2024-02-30" is not a day such as 2024-05-01'),
                (["shadow", "2024-5-1", "Mania", "1"], 'DATE: "2024-5-1" is not a day such as 2024-05-01'),
                (["shadow", "2024-05-01", "Manic", "1"], f'STATE: "Manic" is not one of {states}'),
                (["shadow", "2024-05-01", "mania", "1"], f'STATE: "mania" is not one of {states}'),
                (["self-report", "2024-05-01", "Mania", "hand"], 'SOURCE: "hand" is not one of manual, keyword'),
                (["latest", "classification"], f'KIND: "classification" is not one of {", ".join(KINDS)}'),
                (["events", "2024-05-01"], '"2024-05-01" is not expected'),
                (["clear", "--days", "1"], '"--days" is not expected')):
            self.assert_refused(run("log", "--file", str(self.file), *arguments), 2,
                                f"{message} (see kestrel log {arguments[0]} --help)")
        self.assert_refused(run("log"), 2, "COMMAND is required (see kestrel log --help)")
        self.assert_refused(run("log", "delete"), 2, '"delete" is not one of classification, shadow, self-report, events, '
                                                     "latest, export, missed-elevated, clear (see kestrel log --help)")
        self.assert_refused(run("log", "events", "--file"), 2, "--file needs a value (see kestrel log events --help)")
        self.assertEqual(self.names(), [])

    def test_the_file_may_be_named_anywhere(self):
        self.file.write_text(OLD, encoding="utf-8")
        for arguments in (["--file", str(self.file), "log", "export"], ["log", f"--file={self.file}", "export"],
                          ["log", "export", "--file", str(self.file)]):
            self.assertEqual(self.output(*arguments), OLD)

    def test_each_example_of_the_help_works_as_it_stands(self):
        event = r'"timestamp": "[^"]*",\n    "kind": "selfReport",\n    "date": "2024-05-01",\n    "stateRaw": "Mania",'
        outputs = {"": r"\[\]\n", "events": rf'\[\n  {{\n    {event}\n    "source": "manual"\n  }}\n\]\n',
                   "latest": r"{}\n", "missed-elevated": r"1\n"}
        for command in ("", "classification", "shadow", "self-report", "events", "latest", "export", "missed-elevated",
                        "clear"):
            with self.subTest(command=command):
                block = self.output("log", *command.split(), "--help").split("\nExample:\n")[1].split("\n\n")[0]
                example = "".join(line + "\n" for line in block.splitlines() if not line.startswith(" " * 6))
                done = subprocess.run(["sh", "-euc", example], capture_output=True, encoding="utf-8", check=False,
                                      env={**os.environ, "TMPDIR": str(self.folder),
                                           "PATH": f"{pathlib.Path(KESTREL).parent}:{os.environ['PATH']}"})
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                self.assertRegex(done.stdout, rf"\A{outputs.get(command, '')}\Z")

    # The log of the shared container

    def test_without_a_file_the_log_is_that_of_the_shared_container(self):
        container = self.folder / ".local" / "share" / "group.app.tidewell.shared"
        self.assertEqual(self.output("log", "events", HOME=str(self.folder)), "[]\n")
        self.assertEqual(self.names(), [])
        self.output("log", "classification", "2024-05-01", "Mania", "90", HOME=str(self.folder))
        self.assertEqual([path.name for path in container.iterdir()], ["dogfood-log.jsonl"])
        self.assertEqual(stat.S_IMODE(container.stat().st_mode), 0o700)
        self.assertEqual(stat.S_IMODE((container / "dogfood-log.jsonl").stat().st_mode), 0o600)
        data = self.folder / "data"
        self.output("log", "shadow", "2024-05-01", "Mania", "90", HOME=str(self.folder), XDG_DATA_HOME=str(data))
        self.assertEqual(len(list((data / "group.app.tidewell.shared").iterdir())), 1)

    def test_without_a_container_nothing_is_recorded_and_the_log_is_empty(self):
        nowhere = {"HOME": "relative"}
        for arguments, output in ((["events"], "[]\n"), (["latest", "shadow"], "{}\n"), (["export"], ""),
                                  (["missed-elevated"], "0\n")):
            self.assertEqual(self.output("log", *arguments, **nowhere), output)
        for arguments in (["classification", "2024-05-01", "Mania", "90"], ["clear"]):
            self.assert_refused(run("log", *arguments, **nowhere), 3,
                                "there is no folder for the log: the home is no absolute path")

    # Looking at it

    def test_the_latest_event_of_each_day_is_shown(self):
        first, second, other = (line("2024-05-01T08:30:00Z", state=state) for state in ("Mania", "Euthymia", "Unknown"))
        early = line("2024-04-01T08:30:00Z", date="2024-04-01")
        self.file.write_text(first + second + line("2024-05-01T08:29:59Z") + early + other.replace("classifier", "shadow"),
                             encoding="utf-8")
        self.assertEqual(self.log("latest", "classifier"),
                         f'{{"2024-04-01":{early.strip()},"2024-05-01":{second.strip()}}}\n')
        self.assertEqual(self.log("latest", "selfReport"), "{}\n")
        self.assertEqual(self.log("latest", "shadow", "--pretty").count("\n"), 8)

    def test_an_export_is_the_log_without_what_is_no_event(self):
        self.assertEqual(self.log("export"), "")
        self.file.write_text("nonsense\n" + OLD + "\n{}\n", encoding="utf-8")
        self.assertEqual(self.log("export"), OLD)

    def test_missed_elevated_reports_are_counted(self):
        self.assertEqual(self.log("missed-elevated"), "0\n")
        self.file.write_text(line("2024-05-01T08:30:00Z", "classifier", "Euthymia")
                             + line("2024-05-03T08:30:00Z", "classifier", "Euthymic")
                             + line("2024-05-05T08:30:00Z", "selfReport", "Manic")
                             + line("2024-05-03T08:30:00Z", "selfReport", "Hypomania"), encoding="utf-8")
        self.assertEqual(self.log("missed-elevated"), "3\n")

    def test_a_log_is_cleared_and_clearing_none_fails(self):
        self.file.write_text(OLD, encoding="utf-8")
        self.log("clear")
        self.assertEqual(self.names(), [])
        self.assert_refused(run("log", "--file", str(self.file), "clear"), 3, f"{self.file}: No such file or directory")

    # What cannot be read or written

    def test_a_log_that_is_no_text_is_said_reads_as_empty_and_is_set_aside(self):
        for text in (b"\xff", OLD.encode() + b"\xc3", b"\xc3\n" + OLD.encode()):
            self.file.write_bytes(text)
            said = f"kestrel: {self.file}: is not UTF-8 text\n"
            for arguments, output in ((["events"], "[]\n"), (["latest", "shadow"], "{}\n"), (["export"], ""),
                                      (["missed-elevated"], "0\n")):
                done = run("log", "--file", str(self.file), *arguments)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (0, output, said))
            self.assertEqual(self.file.read_bytes(), text)
            done = run("log", "--file", str(self.file), "self-report", "2024-05-01", "Mania", "manual")
            self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", said))
            self.assertEqual(len(self.events()), 1)
        self.assertEqual(self.names(), ["log.jsonl", "log.jsonl.unreadable", "log.jsonl.unreadable-2",
                                        "log.jsonl.unreadable-3"])
        self.assertEqual((self.folder / "log.jsonl.unreadable").read_bytes(), b"\xff")

    def test_a_log_that_its_user_may_not_read_is_said_reads_as_empty_and_is_set_aside(self):
        if os.geteuid() == 0:
            # Where root may not look, either, nobody finds the program.
            program = self.folder / "kestrel"
            shutil.copy(KESTREL, program)
            self.folder.chmod(0o777)
            nobody = {"user": 65534, "group": 65534}
        else:
            program, nobody = KESTREL, {}
        self.file.write_text(OLD, encoding="utf-8")
        os.chown(self.file, nobody.get("user", -1), -1)
        self.file.chmod(0o000)
        call = lambda *arguments: subprocess.run([program, "log", "--file", self.file, *arguments], capture_output=True,
                                                 encoding="utf-8", check=False, env={"HOME": "/", "TZ": "UTC"}, **nobody)
        done = call("events")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "[]\n", f"kestrel: {self.file}: Permission denied\n"))
        done = call("shadow", "2024-05-01", "Mania", "1")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", f"kestrel: {self.file}: Permission denied\n"))
        self.assertEqual(json.loads(call("events").stdout)[0]["date"], "2024-05-01")
        (self.folder / "log.jsonl.unreadable").chmod(0o600)
        self.assertEqual((self.folder / "log.jsonl.unreadable").read_text(encoding="utf-8"), OLD)

    def test_a_log_that_cannot_be_written_says_so_and_ends_with_3(self):
        for name, reason in (("none/log.jsonl", "No such file or directory"), (".", "Is a directory")):
            file = self.folder / name
            done = run("log", "--file", str(file), "shadow", "2024-05-01", "Mania", "1")
            self.assertEqual(done.returncode, 3)
            self.assertEqual(done.stdout, f"[DogfoodLog] write failed: {file}: {reason}\n")
            self.assertEqual(done.stderr.splitlines()[0], f"kestrel: {file}: " + (
                "Is a directory" if name == "." else "the log was not written"))
        done = run("log", "--file", "", "shadow", "2024-05-01", "Mania", "1")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (
            3, '[DogfoodLog] write failed: "": No such file or directory\n', 'kestrel: "": the log was not written\n'))
        self.assert_refused(run("log", "--file", "", "clear"), 3, '"": No such file or directory')
        self.assertEqual(self.names(), [])

    def test_a_full_disk_leaves_the_old_log_whole(self):
        full = self.folder / "full"
        full.mkdir()
        script = """
            cp "$2" "$1/log.jsonl"
            head -c 1M /dev/zero > "$1/rest" 2> /dev/null
            "$3" log --file "$1/log.jsonl" shadow 2024-05-01 Mania 1
            echo "$?" && cmp "$2" "$1/log.jsonl" && ls -A "$1"
            rm "$1/rest"
            "$3" log --file "$1/log.jsonl" shadow 2024-05-01 Mania 1
            echo "$?" && "$3" log --file "$1/log.jsonl" export | wc -l"""
        self.file.write_text(OLD * 64, encoding="utf-8")
        done = self.on_a_small_disk(full, script, self.file, KESTREL)
        self.assertEqual(done.stdout, f"[DogfoodLog] write failed: {full}/log.jsonl: No space left on device\n3\n"
                                      "log.jsonl\nrest\n0\n129\n")

    # Large ones

    def peak(self, *arguments):
        """How much memory the program takes at most for a command over the log, in MB."""
        done = subprocess.run(["/usr/bin/env", "python3", "-c", "import os, resource, subprocess, sys\n"
                               "done = subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL)\n"
                               "print(done.returncode, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss // 1024)",
                               KESTREL, "log", "--file", self.file, *arguments], capture_output=True, encoding="utf-8",
                              check=True)
        status, peak = map(int, done.stdout.split())
        self.assertEqual((status, done.stderr), (0, ""))
        return peak

    def test_a_gigabyte_of_garbage_takes_no_more_memory_than_a_small_log(self):
        self.file.write_text(OLD, encoding="utf-8")
        small = self.peak("events")
        for before in (b"", OLD.encode(), b"  "):
            with open(self.file, "wb") as file:
                file.write(before)
                file.truncate(2**30)
                file.seek(0, os.SEEK_END)
                file.write(b"\n" + OLD.encode())
            self.assertLess(self.peak("events"), small + 4)
            self.assertEqual(self.log("export"), OLD * (2 if before == OLD.encode() else 1))
        self.log("self-report", "2024-05-01", "Mania", "manual")
        self.assertLess(self.file.stat().st_size, 1000)

    def test_a_line_of_100_mb_is_read_or_passed_over(self):
        long = 100 * 2**20
        with open(self.file, "w", encoding="utf-8") as file:
            file.write(OLD + "x" * long + "\n" + OLD)
        self.assertEqual(self.log("export"), OLD * 2)
        with open(self.file, "w", encoding="utf-8") as file:
            file.write(OLD + '{"' + "x" * long + "\n" + OLD)
        self.assertEqual(self.log("export"), OLD * 2)
        event = line("2024-05-01T08:30:00Z", date="x" * long)
        self.file.write_text(OLD + event + OLD, encoding="utf-8")
        self.assertEqual(self.log("export"), OLD + event + OLD)

    def runs_within(self, room):
        """Whether the program starts in an address space of that many bytes; under a sanitizer it does not."""
        limit = lambda: resource.setrlimit(resource.RLIMIT_AS, (room, room))
        return subprocess.run([KESTREL, "--version"], preexec_fn=limit, capture_output=True, check=False).returncode == 0

    def test_a_line_of_100_mb_takes_no_memory_where_it_is_no_object_and_its_own_once_where_it_may_be_one(self):
        long = 100 * 2**20
        self.file.write_text(OLD, encoding="utf-8")
        small = self.peak("missed-elevated")
        for begun, most in (("x", 4), ("{x", 4), ("{", 4), ('{"a":[', 4), ("{[,", 4), ('{"', 104)):
            with open(self.file, "w", encoding="utf-8") as file:
                file.write(OLD + begun + begun[-1] * long + "\n" + OLD)
            self.assertLess(self.peak("missed-elevated"), small + most, begun)

    def test_an_event_of_100_mb_takes_its_own_memory_and_that_of_its_line(self):
        if not self.runs_within(200 << 20):
            self.skipTest("a sanitizer keeps what was given back")
        self.file.write_text(OLD, encoding="utf-8")
        small = self.peak("missed-elevated")
        self.file.write_text(OLD + line("2024-05-01T08:30:00Z", date="x" * (100 * 2**20)), encoding="utf-8")
        self.assertLess(self.peak("missed-elevated"), small + 204)

    def test_where_memory_runs_out_for_a_line_it_ends_with_1(self):
        room = 200 << 20
        limit = lambda: resource.setrlimit(resource.RLIMIT_AS, (room, room))
        if not self.runs_within(room):
            self.skipTest("a sanitizer takes more memory than there is to run out of")
        with open(self.file, "w", encoding="utf-8") as file:
            file.write(OLD + '{"' + "x" * (135 << 20))
        for arguments in (["events"], ["shadow", "2024-05-01", "Mania", "1"]):
            done = subprocess.run([KESTREL, "log", "--file", self.file, *arguments], preexec_fn=limit,
                                  capture_output=True, encoding="utf-8", check=False)
            self.assert_refused(done, 1, "memory has run out")
        self.assertEqual((self.names(), self.file.stat().st_size), (["log.jsonl"], len(OLD) + 2 + (135 << 20)))

    # Crashes, failures, and two at once

    def calls_of(self, *arguments, prints="", says=""):
        """The calls on the folder that a command makes, which prints and says this."""
        listed = self.folder.with_name(self.folder.name + ".calls")
        listed.unlink(missing_ok=True)
        self.addCleanup(lambda: listed.unlink(missing_ok=True))
        done = self.failing(*arguments, FAILING_CALLS_LIST=str(listed))
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, prints, says))
        calls = [entry.split(" ", 1) for entry in listed.read_text(encoding="utf-8").splitlines()]
        return [(call, pathlib.Path(path.removesuffix(" (deleted)")).name) for call, path in calls]

    def failing(self, *arguments, **changes):
        return run("log", "--file", str(self.file), *arguments, LD_PRELOAD=FAILING_CALLS,
                   FAILING_CALLS_UNDER=str(self.folder), **changes)

    def test_every_call_of_a_recording_may_fail(self):
        report = ["self-report", "2024-05-01", "Mania", "manual"]
        self.file.write_text(OLD, encoding="utf-8")
        calls = self.calls_of(*report)
        reading = calls.index(("open", "log.jsonl")) + 1
        renaming = next(number for number, (call, _) in enumerate(calls, 1) if call == "rename")
        self.assertLess({"read", "write", "flock", "fchmod", "fsync", "rename", "close"}, {call for call, _ in calls})
        self.assertEqual(calls[-3:-1], [("open", self.folder.name), ("fsync", self.folder.name)])
        for number, (call, name) in enumerate(calls, 1):
            for error, reason in (("ENOSPC", "No space left on device"), ("EIO", "Input/output error"),
                                  ("EDQUOT", "Disk quota exceeded"), ("EINTR", None), ("SHORT", None), ("KILL", None)):
                with self.subTest(call=call, name=name, number=number, error=error):
                    for path in self.folder.iterdir():
                        path.unlink()
                    self.file.write_text(OLD, encoding="utf-8")
                    done = self.failing(*report, FAILING_CALLS_AT=str(number), FAILING_CALLS_WITH=error)
                    text = self.file.read_text(encoding="utf-8") if self.file.exists() else None
                    says = (done.returncode, done.stdout, done.stderr)
                    added = (text or "").startswith(OLD) and (text or "").count("\n") == 3
                    if error == "KILL":
                        self.assertEqual(done.returncode, -9)
                        self.assertTrue(added if number > renaming else text == OLD, text)
                        self.assertLessEqual(len(self.names()), 2)
                        self.assertEqual(len(self.events()), 3 if added else 2)  # the next start
                        self.assertEqual(self.names(), ["log.jsonl"])
                    elif (reason is None or number < reading or call == "flock"
                          or (call, name) == ("close", "log.jsonl") and number < renaming):
                        self.assertEqual(says, (0, "", ""))
                        self.assertTrue(added, text)
                    elif name == "log.jsonl" and number < renaming:  # the old log cannot be read
                        self.assertEqual(says, (3, f"[DogfoodLog] write failed: {self.file}: {reason}\n",
                                                f"kestrel: {self.file}: {reason}\n"
                                                f"kestrel: {self.file}: the log was not written\n"))
                        self.assertEqual((text, self.names()), (OLD, ["log.jsonl"]))
                    else:
                        self.assertEqual(says, (3, f"[DogfoodLog] write failed: {self.file}: {reason}\n",
                                                f"kestrel: {self.file}: the log was not written\n"))
                        self.assertTrue(added if number > renaming else text == OLD, text)
                        self.assertEqual(self.names(), ["log.jsonl"])

    def test_every_call_may_fail_while_an_unreadable_log_is_set_aside(self):
        report = ["self-report", "2024-05-01", "Mania", "manual"]
        unreadable = b"\xff"
        self.file.write_bytes(unreadable)
        listed = self.folder.with_name(self.folder.name + ".calls")
        self.addCleanup(lambda: listed.unlink(missing_ok=True))
        self.failing(*report, FAILING_CALLS_LIST=str(listed))
        calls = [entry.split(" ", 1)[0] for entry in listed.read_text(encoding="utf-8").splitlines()]
        self.assertIn("renameat2", calls)
        renaming = calls.index("rename") + 1
        for number in range(1, len(calls) + 1):
            for error in ("EIO", "EINVAL", "EINTR", "SHORT", "KILL"):
                with self.subTest(number=number, error=error):
                    for path in self.folder.iterdir():
                        path.unlink()
                    self.file.write_bytes(unreadable)
                    done = self.failing(*report, FAILING_CALLS_AT=str(number), FAILING_CALLS_WITH=error)
                    kept = [path for path in self.folder.iterdir() if path.read_bytes() == unreadable]
                    self.assertEqual(len(kept), 1)
                    if done.returncode == 0:
                        self.assertEqual(kept[0].name, "log.jsonl.unreadable")
                        self.assertEqual(len(self.events()), 1)
                    elif done.returncode == 3:
                        renamed = self.file.exists() and self.file.read_bytes() != unreadable
                        self.assertEqual(kept[0].name, "log.jsonl.unreadable" if renamed else "log.jsonl")
                        self.assertEqual(renamed, number > renaming)
                    else:
                        self.assertEqual(done.returncode, -9)

    def test_an_unreadable_log_takes_nobodys_name_where_files_cannot_be_renamed_in_one_step(self):
        report = ["self-report", "2024-05-01", "Mania", "manual"]
        def prepare():
            for path in self.folder.iterdir():
                path.unlink()
            self.file.write_bytes(b"\xff")
            (self.folder / "log.jsonl.unreadable").write_bytes(b"\xfe")
        prepare()
        calls = self.calls_of(*report, says=f"kestrel: {self.file}: is not UTF-8 text\n")
        renaming = [number for number, (call, _) in enumerate(calls, 1) if call == "renameat2"]
        self.assertEqual(len(renaming), 2)
        for number in renaming:
            prepare()
            self.assertEqual(self.failing(*report, FAILING_CALLS_AT=str(number), FAILING_CALLS_WITH="EINVAL").returncode, 0)
            self.assertEqual(self.names(), ["log.jsonl", "log.jsonl.unreadable", "log.jsonl.unreadable-2"])
            self.assertEqual((self.folder / "log.jsonl.unreadable").read_bytes(), b"\xfe")
            self.assertEqual((self.folder / "log.jsonl.unreadable-2").read_bytes(), b"\xff")

    def test_a_replacement_that_another_program_takes_for_abandoned_is_made_anew(self):
        report = ["self-report", "2024-05-01", "Mania", "manual"]
        self.file.write_text(OLD, encoding="utf-8")
        locking = [call for call, _ in self.calls_of(*report)].index("flock") + 1
        self.file.write_text(OLD, encoding="utf-8")
        abandoned = self.folder / ".kestrel-replacement-0F0E0D0C-0B0A-0908-0706-050403020100"
        abandoned.write_text("", encoding="utf-8")
        removing = [call for call, _ in self.calls_of("export", prints=OLD)].index("unlink") + 1
        for other_stops in (False, True):
            self.file.write_text(OLD, encoding="utf-8")
            process = self.stopped_at(locking, *report)
            self.assertEqual(len(self.names()), 2)
            if other_stops:  # holding the lock
                other = self.stopped_at(removing, "export")
            else:
                self.assertEqual(self.log("export"), OLD)
                self.assertEqual(self.names(), ["log.jsonl"])
            done = gone_on(process)
            self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
            self.assertEqual(len(self.events()), 3)
            if other_stops:
                self.assertEqual(gone_on(other).returncode, 0)
            self.assertEqual(self.names(), ["log.jsonl"])

    def stopped_at(self, number, *arguments):
        """The command, stopped before its call `number` on the folder."""
        return self.stopped("log", "--file", str(self.file), *arguments, LD_PRELOAD=FAILING_CALLS,
                            FAILING_CALLS_UNDER=str(self.folder), FAILING_CALLS_AT=str(number),
                            FAILING_CALLS_WITH="PAUSE")

    def test_two_programs_on_one_log_never_damage_it(self):
        def record(command):
            for number in range(40):
                subprocess.run([KESTREL, "log", "--file", self.file, command, f"2024-05-{1 + number % 28:02}", "Mania", "1"],
                               check=True, env={"HOME": "/", "TZ": "UTC"})
        with concurrent.futures.ThreadPoolExecutor() as programs:
            both = [programs.submit(record, command) for command in ("classification", "shadow")]
            while not all(each.done() for each in both):
                if self.file.exists():
                    text = self.file.read_text(encoding="utf-8")
                    self.assertTrue(text.endswith("\n"))
                    self.assertEqual(len([json.loads(each) for each in text.splitlines()]), text.count("\n"))
            for each in both:
                each.result()
        self.assertEqual(self.names(), ["log.jsonl"])
        dates = [(event["kind"], event["date"]) for event in self.events()]
        self.assertEqual(len(dates), len(set(dates)))
        self.assertGreaterEqual(len(dates), 28)


if __name__ == "__main__":
    unittest.main()
