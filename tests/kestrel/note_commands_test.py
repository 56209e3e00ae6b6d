"""Runs kestrel trend, kestrel note and kestrel social as people and scripts do."""

import json
import os
import pathlib
import resource
import subprocess
import tempfile
import unittest

from kestrel_test_case import KESTREL, Field, KestrelTestCase, Raw, run, written

COUNTS = {"posts": "totalPosts", "reply_count": "totalReplies", "quote_count": "totalQuotes",
          "repost_count": "totalReposts", "like_count": "totalLikes", "follow_count": "totalFollows",
          "mention_count": "totalMentions", "link_count": "totalLinks", "hashtag_count": "totalHashtags",
          "late_night_posts": "totalLateNightPosts"}
DAY = {"date": "2024-05-01", "sentiment": 0.25, "sentiment_stdev": 0.5, "avg_post_length": 80, "absolutist_rate": 0.125,
       "posts_by_hour": [0, 1, 2], **{key: number for number, key in enumerate(COUNTS, 3)}}


def features(sentiment, ratio, length):
    return f'{{"sentiment":{sentiment},"absolutistRatio":{ratio},"length":{length}}}\n'


class Trend(KestrelTestCase):
    VALUES = [{"date": "2024-04-10T20:00:00Z", "value": 10}, {"date": "2024-05-12T20:00:00+02:00", "value": 15}]
    CALL = ["trend", "--aggregation", "sum", "--end", "2024-05-31T00:00:00Z"]
    ZERO = '{"value":0,"label":"","currentValue":0,"previousValue":0}\n'

    def test_a_trend_is_printed_in_the_order_of_its_fields(self):
        expected = '{"value":50,"label":"vs previous 30 days","currentValue":15,"previousValue":10}\n'
        self.assertEqual(self.result(*self.CALL, document=self.VALUES), expected)
        self.assertEqual(self.result(*self.CALL, document=self.VALUES[::-1]), expected)
        self.assertEqual(self.result(*self.CALL, "--start", "2024-05-01T00:00:00Z", document=self.VALUES), expected)
        self.assertEqual(self.result(*self.CALL, "--pretty", document=self.VALUES),
                         json.dumps(json.loads(expected), indent=2) + "\n")

    def test_a_trend_of_sums_is_not_that_of_averages(self):
        values = [*self.VALUES, {"date": "2024-05-13T00:00:00Z", "value": 5}]
        for aggregation, percent, current in (("sum", 100, 20), ("average", 0, 10)):
            done = json.loads(self.result("trend", "--aggregation", aggregation, "--end=2024-05-31T00:00:00Z",
                                          document=values))
            self.assertEqual((done["value"], done["currentValue"], done["previousValue"]), (percent, current, 10))
            self.assertEqual(done["label"], "vs previous 30 days")

    def test_a_trend_without_a_comparison_is_zero(self):
        for values in ([], self.VALUES[:1], self.VALUES[1:], [{**self.VALUES[0], "value": 0}, self.VALUES[1]],
                       [{**self.VALUES[0], "value": Raw("-0.0")}, self.VALUES[1]]):
            self.assertEqual(self.result(*self.CALL, document=values), self.ZERO)
        self.assertEqual(self.result(*self.CALL, "--start", "2024-06-01T00:00:00Z", document=self.VALUES), self.ZERO)
        self.assertEqual(self.result("trend", "--aggregation", "sum", "--end", "0001-01-05T00:00:00Z",
                                     document=[{"date": "0001-01-05T00:00:00Z", "value": 1}]), self.ZERO)

    def test_a_trend_ends_now_by_default(self):
        self.assertEqual(self.result("trend", "--aggregation", "sum", document=self.VALUES), self.ZERO)
        done = json.loads(self.result("trend", "--aggregation", "sum", "--start", "2024-05-01T00:00:00Z",
                                      document=self.VALUES))
        self.assertGreater(int(done["label"].split()[2]), 30)

    def test_the_30_days_of_a_trend_are_those_of_the_zone(self):
        # In Berlin the clocks were put forward on 31 March: the period begins at 11 o'clock UTC, not at 10.
        values = [{"date": "2024-03-16T10:30:00Z", "value": 4}, {"date": "2024-03-16T11:00:00Z", "value": 1}]
        call = ["trend", "--aggregation", "sum", "--end", "2024-04-15T10:00:00Z"]
        berlin = '{"value":-80,"label":"vs previous 29 days","currentValue":1,"previousValue":5}\n'
        self.assertEqual(self.result(*call, "--timezone", "Europe/Berlin", document=values), berlin)
        self.assertEqual(self.result(*call, document=values, TZ="Europe/Berlin"), berlin)
        self.assertEqual(self.result(*call, document=values), self.ZERO)

    def test_an_instant_of_a_trend_may_have_an_offset(self):
        for start, end in (("2024-05-01T02:00:00+02:00", "2024-05-30T19:00:00-0500"),):
            self.assertEqual(self.result("trend", "--aggregation=sum", f"--start={start}", f"--end={end}",
                                         document=self.VALUES),
                             '{"value":50,"label":"vs previous 30 days","currentValue":15,"previousValue":10}\n')

    def test_wrong_words_of_a_trend_are_refused(self):
        self.assert_refused(run("trend"), 2, "--aggregation is required (see kestrel trend --help)")
        for how in ("", "Sum", "mean", "sum ", "0"):
            self.assert_refused(run("trend", "--aggregation", how), 2,
                                f'--aggregation: "{how}" is not one of sum, average (see kestrel trend --help)')
        for option in ("--start", "--end"):
            for text in ("", "now", "2024-05-01", "2024-05-01T08:30:00", "2024-02-30T00:00:00Z", "0", "2024-05-01T08:30Z",
                         "2024-05-01T08:30:00.5Z", "2024-05-01t08:30:00z", "9999-12-31T23:59:59-00:01"):
                self.assert_refused(run("trend", "--aggregation", "sum", option, text), 2,
                                    f'{option}: "{text}" is not an instant such as 2024-05-01T08:30:00Z '
                                    "(see kestrel trend --help)")

    def test_a_percentage_beyond_64_bits_ends_with_4(self):
        message = "a trend whose percentage is not finite or lies beyond 64 bits"
        for previous, current in ((Raw("1e-300"), 1), (1, Raw("1e300"))):
            values = [{**self.VALUES[0], "value": previous}, {**self.VALUES[1], "value": current}]
            self.assert_refused(run(*self.CALL, input=written(values)), 4, message)
        values = [self.VALUES[0], *[{**self.VALUES[1], "value": Raw("1e308")}] * 2]
        self.assert_refused(run(*self.CALL, input=written(values)), 4, message)

    def test_trend_refuses_bad_input(self):
        # Sums that are no percentage beyond 64 bits, whatever number stands in the place of the second value.
        document = [{"date": "2024-05-12T00:00:00Z", "value": 1}, {"date": "2000-05-12T00:00:00Z", "value": 1}]
        self.assert_bad_input_is_refused(self.CALL, document, [
            Field("", "list"), Field("[1]", "object"), Field("[1].date", "instant"), Field("[1].value", "number")])


class Note(KestrelTestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_a_note_is_the_whole_input_its_last_line_feed_included(self):
        self.assertEqual(self.output("note", input="not good at all"), features(-0.4973, 0.25, 15))
        self.assertEqual(self.output("note", input="not good at all\n"), features(-0.4973, 0.25, 16))
        self.assertEqual(self.output("note", input="not good\r\nat all\n"), features(-0.4973, 0.25, 17))
        self.assertEqual(self.output("note", input=""), features(0, 0, 0))
        self.assertEqual(self.output("note", input="\n"), features(0, 0, 1))
        self.assertEqual(self.output("note", "--pretty", input="superb"),
                         '{\n  "sentiment": 0.7906,\n  "absolutistRatio": 0,\n  "length": 6\n}\n')

    def test_a_note_is_text_and_not_json(self):
        self.assertEqual(self.output("note", input='{"good":"bad"}'), features(0, 0, 14))
        self.assertEqual(self.output("note", input="nonsense ["), features(0, 0, 10))
        self.assertEqual(self.output("note", input="\ufeffgood \0 all"), features(0.6124, 0.5, 11))

    def test_each_line_is_a_note_without_its_line_feed(self):
        lines = ["not good at all", "", "https://x.y/good @juno", "Can’t love", "can't love", "\tsuperb\r", "👍 all"]
        expected = (features(-0.4973, 0.25, 15) + features(0, 0, 0) + features(0, 0, 22) + features(0.6124, 0, 10) +
                    features(-0.4973, 0, 10) + features(0.7906, 0, 8) + features(0, 1, 6))
        self.assertEqual(self.output("note", "--lines", input="\n".join(lines)), expected)
        self.assertEqual(self.output("note", "--lines", input="\n".join(lines) + "\n"), expected)
        path = self.folder / "notes.txt"
        path.write_text("\n".join(lines), encoding="utf-8", newline="")
        for words in (["note", "--lines", str(path)], ["--lines", "note", str(path)], ["note", str(path), "--lines"]):
            self.assertEqual(self.output(*words), expected)

    def test_an_empty_line_is_a_note_and_an_empty_input_none(self):
        self.assertEqual(self.output("note", "--lines", input=""), "")
        self.assertEqual(self.output("note", "--lines", input="\n"), features(0, 0, 0))
        self.assertEqual(self.output("note", "--lines", input="\n\n"), features(0, 0, 0) * 2)
        self.assertEqual(self.output("note", "--lines", input="\ngood"), features(0, 0, 0) + features(0.6124, 0, 4))

    def test_a_negator_does_not_reach_into_the_next_line(self):
        self.assertEqual(self.output("note", "--lines", input="not\ngood\n"),
                         features(0, 0, 3) + features(0.6124, 0, 4))
        self.assertEqual(self.output("note", input="not\ngood"), features(-0.4973, 0, 8))

    def test_lines_are_the_notes_one_by_one(self):
        lines = [f"{'not ' * (number % 3)}good {'x' * (number * 37 % 5000)} день {'👍' * (number % 7)} all"
                 for number in range(300)]
        expected = "".join(self.output("note", input=line) for line in lines)
        self.assertEqual(self.output("note", "--lines", input="\n".join(lines)), expected)

    def test_what_is_not_utf8_is_refused_with_its_place(self):
        # The program takes bytes; in these texts a byte that is no UTF-8 stands as a lone surrogate.
        for text, byte in (("\udcff", 0), ("good \udcc3", 5), ("\udced\udca0\udc80", 0), ("é\udc80", 2), ("\n\udcc0\udc80", 1),
                           ("x" * 100_000 + "\udcf4\udc90\udc80\udc80", 100_000), ("\udce2\udc84", 0)):
            self.assert_refused(run("note", input=text), 1, f"the note is not valid UTF-8 at byte {byte}")
        for text, line, byte in (("\udcff", 1, 0), ("good\nall \udcc3\n", 2, 4), ("\n\n\n\udce2\udc84\n\udcff", 4, 0),
                                 ("é\udc80", 1, 2), ("x\n" * 200_000 + "é\udcff\n", 200_001, 2),
                                 ("\udce2\n\udc84\udcaa", 1, 0), ("x" * 100_000 + "\n" + "y" * 100_000 + "\udcff", 2, 100_000)):
            self.assert_refused(run("note", "--lines", input=text), 1, f"line {line} is not valid UTF-8 at byte {byte}")

    def test_lines_are_not_indented(self):
        self.assert_refused(run("note", "--lines", "--pretty"), 2, "--lines does not go with --pretty (see kestrel note --help)")

    def test_a_line_of_100_megabytes_is_a_note(self):
        path = self.folder / "long.txt"
        pattern = "not good at all "
        with open(path, "w", encoding="ascii") as file:
            for _ in range(100):
                file.write(pattern * 62_500)
        size = os.path.getsize(path)
        self.assertEqual(size, 100_000_000)
        self.assertEqual(self.output("note", str(path)), features(-1, 0.25, 100000000))
        self.assertEqual(self.output("note", "--lines", str(path)), features(-1, 0.25, 100000000))
        with open(path, "ab") as file:
            file.write(b"\nall\n\xff")
        self.assert_refused(run("note", "--lines", str(path)), 1, "line 3 is not valid UTF-8 at byte 0")
        self.assert_refused(run("note", str(path)), 1, f"the note is not valid UTF-8 at byte {size + 5}")

    def test_many_lines_are_not_held_at_a_time(self):
        # What is printed stays in memory until all is right, but of 200 MB of input only some.
        def limited():
            resource.setrlimit(resource.RLIMIT_AS, (150 << 20, 150 << 20))
        if subprocess.run([KESTREL, "--version"], preexec_fn=limited, capture_output=True, check=False).returncode:
            self.skipTest("a sanitizer takes more memory than this")
        path = self.folder / "many.txt"
        line = ("superb " * 2000).strip() + "\n"
        with open(path, "w", encoding="ascii") as file:
            for _ in range(14_300):
                file.write(line)
        self.assertGreater(os.path.getsize(path), 200_000_000)
        for arguments, stream in (([str(path)], None), ([], path.open("rb"))):
            done = subprocess.run([KESTREL, "note", "--lines", *arguments], stdin=stream or subprocess.DEVNULL,
                                  capture_output=True, preexec_fn=limited, encoding="utf-8", check=False)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertEqual(done.stdout, features(1, 0, 13999) * 14_300)
            if stream:
                stream.close()

    def test_lines_that_come_bit_by_bit_are_put_together(self):
        process = subprocess.Popen([KESTREL, "note", "--lines"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        for byte in "не good\nall İ".encode():
            process.stdin.write(bytes([byte]))
            process.stdin.flush()
        output, _ = process.communicate()
        self.assertEqual(output.decode(), features(0.6124, 0, 7) + features(0, 0.5, 5))

    def test_lines_that_cannot_be_read_end_with_3(self):
        self.assert_refused(run("note", "--lines", "/nonexistent/x.txt"), 3, "/nonexistent/x.txt: No such file or directory")
        self.assert_refused(run("note", "--lines", str(self.folder)), 3, f"{self.folder}: Is a directory")
        with open("/dev/full", "wb") as full:
            done = run("note", "--lines", input="good\n", stdout=full)
        self.assertEqual((done.returncode, done.stderr), (3, "kestrel: standard output: No space left on device\n"))


class Social(KestrelTestCase):
    def social(self, document):
        return json.loads(self.result("social", document=document))

    def test_social_is_printed_in_the_order_of_its_fields(self):
        document = [DAY, {"date": "2024-04-30"}, {"date": "2024-05-02", "posts": 1, "absolutist_rate": 0.5, "reply_count": 2}]
        hours = ",".join(f'{{"hour":{hour},"posts":{hour if hour < 3 else 0}}}' for hour in range(24))
        self.assertEqual(self.result("social", document=document),
                         '{"summary":{"days":2,"totalPosts":4,"avgPostsPerDay":2,"avgPostLength":80,'
                         '"absolutismRatePct":21.875,"totalReplies":6,"totalQuotes":5,"totalReposts":6,"totalLikes":7,'
                         '"totalFollows":8,"totalMentions":9,"totalLinks":10,"totalHashtags":11,"totalLateNightPosts":12},'
                         f'"hours":[{hours}],"interactions":[{{"date":"2024-05-01","replies":4,"quotes":5,"reposts":6}},'
                         '{"date":"2024-04-30","replies":0,"quotes":0,"reposts":0},'
                         '{"date":"2024-05-02","replies":2,"quotes":0,"reposts":0}],'
                         '"absolutism":[{"date":"2024-05-01","absolutismPct":12.5},{"date":"2024-04-30","absolutismPct":0},'
                         '{"date":"2024-05-02","absolutismPct":50}]}\n')

    def test_no_days_give_24_hours_and_zeros(self):
        done = self.social([])
        self.assertEqual(done["hours"], [{"hour": hour, "posts": 0} for hour in range(24)])
        self.assertEqual((set(done["summary"].values()), done["interactions"], done["absolutism"]), ({0}, [], []))

    def test_each_count_goes_to_its_total(self):
        for count, total in COUNTS.items():
            summary = self.social([{"date": "", count: 40}, {"date": "", count: 2}, {"date": ""}])["summary"]
            expected = {total: 42, **({"days": 2, "avgPostsPerDay": 21} if count == "posts" else {})}
            self.assertEqual({key: value for key, value in summary.items() if value}, expected)

    def test_a_sum_beyond_64_bits_ends_with_4(self):
        for count, what in zip(COUNTS, ("posts", "replies", "quotes", "reposts", "likes", "follows", "mentions", "links",
                                        "hashtags", "late-night posts")):
            days = [{"date": "", count: 2 ** 63 - 1}, {"date": "", count: 1}]
            done = run("social", input=json.dumps(days))
            self.assertEqual((done.returncode, done.stdout), (4, ""))
            self.assertRegex(done.stderr, rf"\Akestrel: the sum of the {what}[^\n]*\n\Z")
        days = [{"date": "", "posts_by_hour": [2 ** 63 - 1]}, {"date": "", "posts_by_hour": [1]}]
        done = run("social", input=json.dumps(days))
        self.assertEqual((done.returncode, done.stdout), (4, ""))

    def test_an_average_beyond_a_float_is_refused(self):
        for field, key in (("avg_post_length", "summary.avgPostLength"), ("absolutist_rate", "summary.absolutismRatePct")):
            self.assert_refused(run("social", input=json.dumps([{"date": "", "posts": 10, field: 1e308}])), 1,
                                f"{key}: is not a finite number")

    def test_days_are_decoded_strictly(self):
        self.assert_refused(run("social", input='[{"date":"2024-05-01"},{"posts":1}]'), 1, "[1].date: is missing")

    def test_social_refuses_bad_input(self):
        counts = [Field(f"[1].{key}", "integer", optional=True) for key in COUNTS]
        numbers = [Field(f"[1].{key}", "number", optional=True)
                   for key in ("sentiment", "sentiment_stdev", "avg_post_length", "absolutist_rate")]
        self.assert_bad_input_is_refused(["social"], [DAY, {**DAY, "date": "2024-05-02"}], [
            Field("", "list"), Field("[1]", "object"), Field("[1].date", "text"),
            Field("[1].posts_by_hour", "list", optional=True), Field("[1].posts_by_hour[2]", "integer"),
            *counts, *numbers])


if __name__ == "__main__":
    unittest.main()
