"""Runs the program kestrel as a whole: its words and options, what it reads and writes, its help, and how it ends."""

import json
import os
import pathlib
import pty
import resource
import select
import shutil
import subprocess
import tempfile
import unittest

from kestrel_test_case import KESTREL, KestrelTestCase, run

CALLS = [["states"], ["state"], ["baseline"], ["classify"], ["predict"], ["shadow"], ["sleep"], ["circadian", "features"],
         ["circadian", "classify"], ["evidence"], ["pairs"],
         ["trend"], ["note"], ["social"],
         ["identity"], ["contract"],
         ["check"],
         ["log", "classification"], ["log", "shadow"], ["log", "self-report"], ["log", "events"], ["log", "latest"],
         ["log", "export"], ["log", "missed-elevated"], ["log", "clear"],
         ["store", "state"], ["store", "snapshot"], ["store", "snapshot", "put"], ["store", "snapshot", "clear"],
         ["store", "phone"], ["store", "phone", "put"], ["store", "evidence"], ["store", "evidence", "sent"],
         ["store", "evidence", "received"], ["store", "evidence", "acknowledged"], ["store", "evidence", "error"]]
# A call of each command that reads a document, with one that it takes.
READERS = [(["baseline"], "[]"), (["classify"], '{"days":[]}'), (["classify", "--each"], '{"days":[]}'),
           (["predict", "--days", "1"], "[]"), (["shadow"], "[]"), (["sleep", "--gap", "30"], "[]"),
           (["sleep", "--gap", "30", "--day", "2024-05-01"], "[]"),
           (["circadian", "features"], '{"date":"","nights":[],"stepCounts":[],"baselineRestingHeartRates":[],'
                                       '"expectedNights":0}'),
           (["circadian", "classify"], '{"features":{"date":"","coverageNights":0,"daysObserved":0}}'),
           (["evidence"], '{"sources":[],"observations":[],"labels":[]}'), (["pairs"], '{"observations":[]}'),
           (["trend", "--aggregation", "sum"], "[]"), (["note"], ""), (["social"], "[]"),
           (["identity"], "[]"),
           (["check", "baseline"], '{"avgSleep":7,"avgPosts":10,"avgSentiment":0}')]
DAYS = [{"date": f"2024-05-{number:02}", "sleep_hours": 7.25, "posts": 9, "sentiment": 0.1, "steps": 5000}
        for number in range(1, 29)]

# What the example of each command's help prints, worked out by hand.
EXAMPLES = {
    "": '"Severe Depression"',
    "state": '"Mania"',
    "baseline": '{"avgSleep":7,"avgPosts":10,"avgSentiment":0}',
    "classify": '[{"date":"2024-05-01","predictedState":"Mania","confidence":0.9,"reasons":["Severe sleep deficit (<4h)",'
                '"High activity/sentiment"],"source":"algorithmic"}]',
    "predict": '[{"date":"2024-05-04","predictedState":"Dysthymia","probability":0.7},'
               '{"date":"2024-05-05","predictedState":"Dysthymia","probability":0.7}]',
    "shadow": '{"scoredDays":1,"circadianAccuracy":1,"baselineAccuracy":0}',
    "sleep": '[{"date":"2024-05-02","midSleepMinutes":120,"asleepMinutes":480}]',
    "circadian classify": '{"date":"2024-05-02","predictedState":"Moderate Depression","confidence":0.7,"reasons":['
                          '"Circadian phase markedly delayed (+2.3h)"],"source":"algorithmic"}',
    "pairs": '[{"firstSourceID":"watch","firstSignalID":"sleep","secondSourceID":"watch","secondSignalID":"steps",'
             '"pairedDays":2,"spearmanRho":-1}]',
    "trend": '{"value":50,"label":"vs previous 30 days","currentValue":15,"previousValue":10}',
    "note": '{"sentiment":-0.4973,"absolutistRatio":0.25,"length":15}',
    "social": '{"summary":{"days":2,"totalPosts":4,"avgPostsPerDay":2,"avgPostLength":0,"absolutismRatePct":5,'
              '"totalReplies":0,"totalQuotes":0,"totalReposts":0,"totalLikes":0,"totalFollows":0,"totalMentions":0,'
              '"totalLinks":0,"totalHashtags":0,"totalLateNightPosts":0},"hours":['
              + ",".join(f'{{"hour":{hour},"posts":0}}' for hour in range(24)) +
              '],"interactions":[{"date":"2024-05-01","replies":0,"quotes":0,"reposts":0},{"date":"2024-05-02",'
              '"replies":0,"quotes":0,"reposts":0}],"absolutism":[{"date":"2024-05-01","absolutismPct":4},'
              '{"date":"2024-05-02","absolutismPct":8}]}',
    # printf '2024-05-01|photo_count_daily|4028000000000000|count' | sha256sum
    "identity": '["daily:2024-05-01:photo_count_daily:0d22a019f6088d80f964eb3e833f22209c7cd034054b6b8ae3f2efcdf4207332"]',
    "contract": "[]",
    "check": '{"essential":{"viz":{"daily":[{"date":"2024-05-01","posts":3}]}}}',
    "store state": '"Hypomania"',
    "store snapshot": "{}",
    "store phone": "{}",
    "store phone put": "true",
    "store evidence": '{"isPaired":false,"isWatchAppInstalled":false,"isReachable":false}',
    "log latest": "{}",
    "log missed-elevated": "1",
    # What only records or stores prints nothing, nor does a log of no event.
    **dict.fromkeys(("log classification", "log shadow", "log self-report", "log export", "log clear"), ""),
    **dict.fromkeys(("store snapshot put", "store snapshot clear", "store evidence sent", "store evidence received",
                     "store evidence acknowledged", "store evidence error"), ""),
}


class Kestrel(KestrelTestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def file(self, text, name="input.json"):
        path = self.folder / name
        path.write_text(text, encoding="utf-8")
        return str(path)

    # Words and options

    def test_a_command_is_required(self):
        for arguments in ([], ["--pretty"], ["--timezone", "UTC"], ["--"], ["--timezone", "states"]):
            self.assert_refused(run(*arguments), 2, "COMMAND is required (see kestrel --help)")
        for arguments in (["circadian"], ["--pretty", "circadian"], ["circadian", "--pretty"]):
            self.assert_refused(run(*arguments), 2, "COMMAND is required (see kestrel circadian --help)")

    def test_an_unknown_command_is_answered_with_the_known_ones(self):
        known = "states, state, baseline, classify, predict, shadow, sleep, circadian, evidence, pairs, " \
                "trend, note, social, " \
                "identity, contract, " \
                "check, " \
                "log, " \
                "store"
        for name, meant in (("stat", "state"), ("state's", "states"), ("contrast", "contract")):
            self.assert_refused(run(name), 2,
                                f'"{name}" is not one of {known}; did you mean {meant}? (see kestrel --help)')
        for name in ("STATES", "features", "", "-", "input.json"):
            self.assert_refused(run(name), 2, f'"{name}" is not one of {known} (see kestrel --help)')
        self.assert_refused(run("a\nb\x1b"), 2, f'"a\\u000Ab\\u001B" is not one of {known} (see kestrel --help)')
        self.assert_refused(run("circadian", "states"), 2,
                            '"states" is not one of features, classify (see kestrel circadian --help)')

    def test_options_stand_before_or_after_the_command(self):
        document = '[{"start":"2024-05-01T22:00:00Z","end":"2024-05-02T06:00:00Z"}]'
        path = self.file(document)
        expected = '[\n  {\n    "date": "2024-05-02",\n    "midSleepMinutes": 660,\n    "asleepMinutes": 480\n  }\n]\n'
        for arguments in (["sleep", "--gap", "30", "--timezone", "Asia/Tokyo", "--pretty", path],
                          ["--gap", "30", "--timezone", "Asia/Tokyo", "--pretty", "sleep", path],
                          ["--timezone=Asia/Tokyo", "sleep", path, "--gap=30", "--pretty"],
                          ["--pretty", "--gap", "3e1", "sleep", "--timezone", "Asia/Tokyo", path],
                          ["--pretty", "--gap=30.0", "sleep", "--timezone", "Asia/Tokyo", "--", path]):
            self.assertEqual(self.output(*arguments), expected)
        for arguments in (["--pretty", "circadian", "features"], ["circadian", "--pretty", "features"],
                          ["circadian", "features", "--pretty"], ["circadian", "features", "-", "--pretty"]):
            document = next(text for call, text in READERS if call == ["circadian", "features"])
            done = self.output(*arguments, input=document)
            self.assertEqual(done, '{\n  "date": "",\n  "coverageNights": 0,\n  "daysObserved": 0\n}\n')

    def test_a_value_is_no_command(self):
        self.assert_refused(run("--gap", "states", "sleep"), 2, '--gap: "states" is not a number (see kestrel sleep --help)')
        self.assert_refused(run("--timezone", "sleep", "states"), 2,
                            '--timezone: "sleep" is not the name of a time zone (see kestrel states --help)')

    def test_an_option_of_another_command_is_not_expected(self):
        for arguments, option, command in ((["states", "--days", "1"], "--days", "states"),
                                           (["--days", "1", "states"], "--days", "states"),
                                           (["--days=1", "states"], "--days=1", "states"),
                                           (["baseline", "--each"], "--each", "baseline"),
                                           (["predict", "--days", "1", "--gap", "1"], "--gap", "predict"),
                                           (["circadian", "classify", "--each"], "--each", "circadian classify")):
            self.assert_refused(run(*arguments), 2, f'"{option}" is not expected (see kestrel {command} --help)')

    def test_wrong_use_is_said_of_the_first_word_that_is_wrong(self):
        for arguments, message in ((["--lout", "nonsense"], '"--lout" is not expected (see kestrel --help)'),
                                   (["states", "x", "--lout"], '"x" is not expected (see kestrel states --help)'),
                                   (["baseline", "a", "b"], '"b" is not expected (see kestrel baseline --help)'),
                                   (["states", "--pretty=yes"], "--pretty takes no value (see kestrel states --help)"),
                                   (["states", "--timezone"], "--timezone needs a value (see kestrel states --help)"),
                                   (["states", "--timezone", "UTC", "--timezone", "UTC"],
                                    "--timezone is given twice (see kestrel states --help)"),
                                   (["classify", "--timezone", "Mars/Olympus"],
                                    '--timezone: "Mars/Olympus" is not the name of a time zone (see kestrel classify --help)'),
                                   (["--generate", "poem"], '"--generate" is not expected (see kestrel --help)')):
            self.assert_refused(run(*arguments), 2, message)

    def test_the_command_line_is_judged_before_files_and_these_before_documents(self):
        for call, _ in READERS:
            self.assert_refused(run(*call, "/nonexistent/x.json", "--timezone", "Nowhere"), 2,
                                f'--timezone: "Nowhere" is not the name of a time zone (see kestrel '
                                f'{" ".join(call[:2] if call[0] == "circadian" else call[:1])} --help)')
            self.assert_refused(run(*call, "/nonexistent/x.json", input="nonsense"), 3,
                                "/nonexistent/x.json: No such file or directory")
        self.assert_refused(run("predict", "/nonexistent/x.json", "--days", "0"), 2,
                            '--days: "0" is not a whole number from 1 (see kestrel predict --help)')

    # Reading

    def test_a_file_and_standard_input_are_read_alike(self):
        document = json.dumps(DAYS)
        path = self.file(document, "daily metrics.json")
        expected = '{"avgSleep":7.25,"avgPosts":9,"avgSentiment":0.1}\n'
        self.assertEqual(json.loads(self.output("baseline", input=document))["avgSleep"], 7.25)
        for arguments in (["baseline", path], ["baseline", "-"], ["baseline"], ["baseline", "--", path]):
            done = json.loads(self.output(*arguments, input=document))
            self.assertEqual({**done, "avgSentiment": round(done["avgSentiment"], 12)}, json.loads(expected))
        with open(path, encoding="utf-8") as stream:
            self.assertEqual(self.output("baseline", stdin=stream), self.output("baseline", path))

    def test_a_named_file_goes_before_standard_input(self):
        self.assertEqual(self.output("shadow", self.file("[]"), input="nonsense"),
                         '{"scoredDays":0,"circadianAccuracy":0,"baselineAccuracy":0}\n')

    def test_a_file_may_be_called_a_dash(self):
        path = self.folder / "-"
        path.write_text("[]", encoding="utf-8")
        self.assertEqual(self.output("predict", "--days", "1", str(path)), "[]\n")

    def test_a_large_document_is_read_whole(self):
        days = [{**DAYS[0], "date": f"{year}-{month:02}-{number:02}"}
                for year in range(1800, 2020) for month in range(1, 13) for number in range(1, 29)]
        document = json.dumps({"days": days})
        self.assertGreater(len(document), 1 << 22)
        one = json.loads(self.output("classify", input=json.dumps({"days": days[:1]})))[0]
        expected = [{**one, "date": day["date"]} for day in days]
        for options in ([], [self.file(document)]):
            self.assertEqual(json.loads(self.output("classify", *options, input=document)), expected)

    def test_a_document_of_4_gib_is_refused_unread(self):
        path = self.file("")
        os.truncate(path, 1 << 32)
        self.assert_refused(run("classify", path), 1, f"{path}: more than 4 GiB are no document")

    def test_input_that_cannot_be_read_ends_with_3(self):
        for call, _ in READERS:
            for path, reason in (("/nonexistent/x.json", "No such file or directory"), (str(self.folder), "Is a directory"),
                                 ("x" * 300, "File name too long"), ("/dev/null/x", "Not a directory")):
                self.assert_refused(run(*call, path), 3, f"{path}: {reason}")
            self.assert_refused(run(*call, ""), 3, '"": No such file or directory')
            with open("/dev/null", "wb") as unreadable:
                self.assert_refused(run(*call, stdin=unreadable), 3, "standard input: Bad file descriptor")
            closed = subprocess.run(["sh", "-c", 'exec "$0" "$@" <&-', KESTREL, *call], capture_output=True,
                                    encoding="utf-8", check=False)
            self.assert_refused(closed, 3, "standard input: Bad file descriptor")
            folder = os.open(self.folder, os.O_RDONLY)
            self.assert_refused(run(*call, stdin=folder), 3, "standard input: Is a directory")
            os.close(folder)
        self.assert_refused(run("shadow", "/nonexistent/a\nb"), 3, "/nonexistent/a\\u000Ab: No such file or directory")

    def test_input_that_comes_late_is_waited_for(self):
        reading, writing = os.pipe()
        os.set_blocking(reading, False)
        process = subprocess.Popen([KESTREL, "baseline"], stdin=reading, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        os.close(reading)
        # It sleeps in the kernel, for there is nothing to read yet.
        while " (sleeping)" not in pathlib.Path(f"/proc/{process.pid}/status").read_text(encoding="utf-8"):
            self.assertIsNone(process.poll(), "it did not wait")
        os.write(writing, b"[]")
        os.close(writing)
        self.assertEqual(process.communicate(), (EXAMPLES["baseline"].encode() + b"\n", b""))
        self.assertEqual(process.returncode, 0)

    def limited(self, room, *arguments, **changes):
        """Runs the program with an address space of `room` bytes."""
        limit = lambda: resource.setrlimit(resource.RLIMIT_AS, (room, room))
        return subprocess.run([KESTREL, *arguments], preexec_fn=limit, capture_output=True, encoding="utf-8", check=False,
                              **changes)

    def test_where_memory_runs_out_it_ends_with_1(self):
        room = 200 << 20
        if self.limited(room, "--version").returncode:
            self.skipTest("a sanitizer takes more memory than there is to run out of")
        self.assert_refused(self.limited(room, "baseline", input="[" + " " * room + "]"), 1, "memory has run out")

    def test_wherever_memory_runs_out_it_ends_with_1(self):
        steps = range(32 << 20, 200 << 20, 1 << 20)
        least = next((room for room in steps if self.limited(room, "--version").returncode == 0), None)
        if least is None:
            self.skipTest("a sanitizer takes more memory than there is to run out of")
        lost = '{"health":{"health":[' + ",".join(["7"] * 30_000) + "]}}"
        ends = set()
        for room in range(least, least + (20 << 20), 1 << 18):
            done = self.limited(room, "check", "dashboard-snapshot", input=lost)
            with self.subTest(room=room):
                self.assertIn(done.returncode, (0, 1), done.stderr[-200:])
                if done.returncode == 1:
                    self.assertEqual((done.stdout, done.stderr.splitlines()[-1]), ("", "kestrel: memory has run out"))
            ends.add(done.returncode)
        self.assertEqual(ends, {0, 1})

    def test_a_file_without_permission_ends_with_3(self):
        # Root reads everything, so that a copy of the program is run as nobody then.
        os.chmod(self.folder, 0o755)
        locked = pathlib.Path(self.file("[]"))
        locked.chmod(0)
        program = self.folder / "kestrel"
        shutil.copy(KESTREL, program)
        user = {"user": 65534} if os.getuid() == 0 else {}
        done = subprocess.run([program, "shadow", locked], capture_output=True, encoding="utf-8", check=False, **user)
        self.assert_refused(done, 3, f"{locked}: Permission denied")

    # Writing

    def test_output_is_one_line_without_blanks_between_tokens(self):
        for call, document in [(["states"], ""), (["state", "Mania"], ""), *READERS]:
            text = self.output(*call, input=document)
            self.assertEqual(text, json.dumps(json.loads(text), separators=(",", ":"), ensure_ascii=False) + "\n", call)
            self.assertEqual(self.output(*call, "--pretty", input=document),
                             json.dumps(json.loads(text), indent=2, ensure_ascii=False) + "\n")

    def test_output_that_cannot_be_written_ends_with_3(self):
        for call, document in [(["states"], ""), (["state", "Mania"], ""), *READERS, (["--help"], ""), (["--version"], ""),
                               (["sleep", "--help"], "")]:
            with open("/dev/full", "wb") as full:
                done = run(*call, input=document, stdout=full)
                self.assertEqual((done.returncode, done.stderr),
                                 (3, "kestrel: standard output: No space left on device\n"), call)
            reading, writing = os.pipe()
            os.close(reading)
            done = run(*call, input=document, stdout=writing)
            os.close(writing)
            self.assertEqual((done.returncode, done.stderr), (3, "kestrel: standard output: Broken pipe\n"), call)
            closed = subprocess.run(["sh", "-c", 'exec "$0" "$@" >&-', KESTREL, *call], input=document,
                                    stderr=subprocess.PIPE, encoding="utf-8", check=False)
            self.assertEqual((closed.returncode, closed.stderr),
                             (3, "kestrel: standard output: Bad file descriptor\n"), call)

    def test_output_into_a_file_that_may_not_grow_ends_with_3(self):
        with open(self.folder / "output", "wb") as output:
            done = subprocess.run([KESTREL, "states"], stdout=output, stderr=subprocess.PIPE, encoding="utf-8", check=False,
                                  preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (10, 10)))
        self.assertEqual((done.returncode, done.stderr), (3, "kestrel: standard output: File too large\n"))

    def test_output_waits_for_a_slow_reader(self):
        reading, writing = os.pipe()
        os.set_blocking(writing, False)
        history = json.dumps([{"date": "2024-05-01", "predictedState": "Mania", "confidence": 1, "reasons": [],
                               "source": "algorithmic"}] * 3)
        process = subprocess.Popen([KESTREL, "predict", "--days", "10000", self.file(history)], stdout=writing,
                                   stderr=subprocess.PIPE)
        os.close(writing)
        with open(reading, "rb") as output:
            self.assertEqual(len(json.loads(output.read())), 10_000)
        self.assertEqual((process.communicate()[1], process.returncode), (b"", 0))

    def test_a_run_writes_no_file_and_opens_no_socket(self):
        for call, document in [(["states"], ""), *READERS, (["shadow"], "nonsense")]:
            trace = self.folder / "trace"
            subprocess.run(["strace", "-f", "-o", trace, "-e", "trace=openat,open,creat,socket,mkdir,unlink,rename", KESTREL,
                            *call], input=document, encoding="utf-8", stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                           check=False, env={"PATH": os.environ["PATH"], "ASAN_OPTIONS": "detect_leaks=0"})
            calls = trace.read_text(encoding="utf-8")
            self.assertIn("openat(", calls)
            self.assertNotRegex(calls, r"O_WRONLY|O_RDWR|O_CREAT|socket\(|creat\(|mkdir\(|unlink\(|rename\(")

    # Progress

    def test_long_work_is_told_on_a_terminal_and_wiped(self):
        # The work lasts as long as the writer of its input likes. Neither the one whose errors go to a pipe nor those
        # whose input is being typed, all of which started before, may have said a word by then.
        silent = subprocess.Popen([KESTREL, "shadow"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE)
        nothing = b'{"scoredDays":0,"circadianAccuracy":0,"baselineAccuracy":0}\n'
        typed = []
        for call, text, result in (("shadow", b"[]", nothing),
                                   ("note", b"good", b'{"sentiment":0.6124,"absolutistRatio":0,"length":5}\n')):
            keyboard, keyboard_end = pty.openpty()
            process = subprocess.Popen([KESTREL, call], stdin=keyboard_end, stdout=subprocess.PIPE, stderr=keyboard_end)
            os.close(keyboard_end)
            typed.append((process, keyboard, text, result))
        screen, screen_end = pty.openpty()
        told = subprocess.Popen([KESTREL, "shadow"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=screen_end)
        os.close(screen_end)
        shown = b""
        while b"working, 2 s" not in shown:
            shown += os.read(screen, 1000)
        self.assertEqual(shown, b"\r\x1b[Kworking, 1 s\r\x1b[Kworking, 2 s")
        self.assertEqual(select.select([silent.stderr, *(keyboard for _, keyboard, _, _ in typed)], [], [], 0)[0], [])
        for _, keyboard, text, _ in typed:
            os.write(keyboard, text + b"\n\x04")
        for process in (told, silent):
            process.stdin.write(b"[]")
            process.stdin.close()
        for process, result in ((told, nothing), (silent, nothing), *((process, result) for process, _, _, result in typed)):
            self.assertEqual(process.stdout.read(), result)
            self.assertEqual(process.wait(), 0)
            process.stdout.close()
        self.assertEqual(silent.stderr.read(), b"")
        silent.stderr.close()
        self.assertTrue(self.rest(screen).endswith(b"\r\x1b[K"))
        for _, keyboard, text, _ in typed:
            self.assertEqual(self.rest(keyboard).replace(b"^D\b\b", b""), text + b"\r\n")  # what the terminal echoes

    def test_an_error_line_takes_the_place_of_the_progress(self):
        for document, status, line in ((b"nonsense", 1, b"kestrel: the document is not well-formed JSON at byte 0\r\n"),
                                       (b'{"date":"","nights":[],"stepCounts":[],"restingHeartRate":60,"expectedNights":0,'
                                        b'"baselineRestingHeartRates":[9223372036854775807,1]}', 4, None)):
            screen, screen_end = pty.openpty()
            process = subprocess.Popen([KESTREL, "circadian", "features"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                       stderr=screen_end)
            os.close(screen_end)
            shown = b""
            while b"working, 1 s" not in shown:
                shown += os.read(screen, 1000)
            self.assertEqual(process.communicate(document)[0], b"")
            self.assertEqual(process.returncode, status)
            shown += self.rest(screen)
            self.assertRegex(shown, rb"\A(\r\x1b\[Kworking, \d+ s)+\r\x1b\[Kkestrel: [^\r\n]+\r\n\Z")
            if line:
                self.assertTrue(shown.endswith(line))

    def rest(self, terminal):
        """What is still to be read of a terminal that no process has open any more."""
        text = b""
        try:
            while True:
                text += os.read(terminal, 1000)
        except OSError:
            os.close(terminal)
            return text

    # Help

    def test_help_is_printed_of_the_program_and_of_each_command(self):
        for call in [[], ["circadian"], *CALLS]:
            text = self.output(*call, "--help")
            self.assertTrue(text.startswith(f"Usage: {' '.join(['kestrel', *call])} "), text)
            self.assertTrue(all(len(line) <= 80 for line in text.splitlines()), text)
            for name in ("--timezone ID", "--pretty", "-h, --help", "--version", "\nExample:\n"):
                self.assertIn(name, text)
            self.assertEqual("\nExit status:\n" in text, not call)
            self.assertEqual(self.output("--help", *call), text)
            self.assertEqual(self.output(*call, "-h"), text)
            for wrong in (["--unknown"], ["--timezone", "Nowhere"], ["--pretty=5"]):
                self.assertEqual(self.output(*call, *wrong, "--help"), text)

    def test_help_lists_every_command_with_its_purpose(self):
        for text, prefix in ((self.output("--help"), []), (self.output("circadian", "--help"), ["circadian"])):
            listed = text.split("\nCommands:\n")[1].split("\n\n")[0]
            names = [line.split("  ")[1].split() for line in listed.splitlines() if not line.startswith("   ")]
            self.assertEqual([[*prefix, *name] for name in names], [call for call in CALLS if call[:len(prefix)] == prefix])

    def test_help_says_what_each_command_takes(self):
        for call, entries in ((["state"], ["TEXT"]), (["baseline"], ["[FILE]"]), (["classify"], ["[FILE]", "[--each]"]),
                              (["predict"], ["[FILE]", "--days N"]), (["shadow"], ["[FILE]"]),
                              (["sleep"], ["[FILE]", "--gap MINUTES", "[--day KEY]"]), (["circadian", "features"], ["[FILE]"]),
                              (["circadian", "classify"], ["[FILE]"]), (["states"], []),
                              (["evidence"], ["[FILE]", "[--minimum-days N]", "[--minimum-effect X]"]),
                              (["pairs"], ["[FILE]", "[--minimum-days N]"]),
                              (["trend"], ["[FILE]", "--aggregation HOW", "[--start T]", "[--end T]"]),
                              (["note"], ["[FILE]", "[--lines]"]), (["social"], ["[FILE]"]),
                              (["identity"], ["[FILE]"]), (["contract"], ["[FILE]"]),
                              (["check"], ["KIND", "[FILE]"]),
                              (["log", "shadow"], ["DATE", "STATE", "CONFIDENCE", "[--file PATH]"]),
                              (["log", "self-report"], ["DATE", "STATE", "SOURCE", "[--file PATH]"]),
                              (["log", "latest"], ["KIND", "[--file PATH]"])):
            usage = " ".join(self.output(*call, "--help").split("\n\n")[0].split())
            self.assertEqual(usage, " ".join(["Usage: kestrel", *call, *entries, "[--timezone ID] [--pretty] [--help] "
                                              "[--version]"]))

    def test_each_example_of_the_help_works_as_it_stands(self):
        for call in [[], *CALLS]:
            with self.subTest(call=call):
                block = self.output(*call, "--help").split("\nExample:\n")[1]
                example = "".join(line + "\n" for line in block.splitlines() if not line.startswith(" " * 6))
                done = subprocess.run(["sh", "-euc", example], capture_output=True, encoding="utf-8", check=False,
                                      env={**os.environ, "PATH": f"{pathlib.Path(KESTREL).parent}:{os.environ['PATH']}"})
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                if " ".join(call) in EXAMPLES:
                    output = EXAMPLES[" ".join(call)]
                    self.assertEqual(done.stdout, output and output + "\n")
                elif call == ["states"]:
                    self.assertEqual(done.stdout, self.output("states", "--pretty"))
                elif call == ["evidence"]:
                    result, = json.loads(done.stdout)
                    association, = result["associations"]
                    # Means 5500 and 9450, variances 500,000 and 405,000.
                    self.assertAlmostEqual(association["standardizedDifference"], 3950 / 452_500 ** 0.5, delta=5e-5)
                    self.assertEqual((association["comparison"], association["lagDays"]), ("elevatedVsEuthymia", 0))
                elif call == ["log", "events"]:
                    event, = json.loads(done.stdout)
                    self.assertEqual((event["kind"], event["date"], event["stateRaw"]), ("selfReport", "2024-05-01", "Mania"))
                else:
                    features = json.loads(done.stdout)
                    self.assertAlmostEqual(features["phaseDeviationHours"], 2, places=9)
                    self.assertEqual(features["date"], "2024-05-02")

    def test_version_is_printed_with_every_command(self):
        text = self.output("--version")
        self.assertRegex(text, r"\Akestrel \d+\.\d+\.\d+\n\Z")
        for call in [["circadian"], *CALLS]:
            self.assertEqual(self.output(*call, "--version"), text)
            self.assertEqual(self.output("--version", *call, "--unknown"), text)

    def test_a_zone_of_the_environment_holds_without_an_option(self):
        document = '[{"start":"2024-05-01T22:00:00Z","end":"2024-05-02T06:00:00Z"}]'
        tokyo = '[{"date":"2024-05-02","midSleepMinutes":660,"asleepMinutes":480}]\n'
        self.assertEqual(self.output("sleep", "--gap", "30", input=document, TZ="Asia/Tokyo"), tokyo)
        self.assertEqual(self.output("sleep", "--gap", "30", "--timezone", "Asia/Tokyo", input=document, TZ="UTC"), tokyo)


if __name__ == "__main__":
    unittest.main()
