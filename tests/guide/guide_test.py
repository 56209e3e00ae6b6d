"""Runs every command of the guide on the examples, and compares what it prints with what the guide shows."""

import datetime
import json
import os
import pathlib
import re
import statistics
import subprocess
import tempfile
import unittest
import zoneinfo

KESTREL = pathlib.Path(os.environ["KESTREL"])
SOURCE = pathlib.Path(os.environ["TIDEWELL_SOURCE"])
EXAMPLES = SOURCE / "examples"
PAGES = sorted((SOURCE / "docs/guide").glob("*.md"))

COMMAND = {"sh"}
OUTPUT = {"json", "text"}


def run(command):
    """What a command of the guide prints, errors included, in the examples' folder and zone."""
    environment = {"PATH": f"{KESTREL.parent}:{os.environ['PATH']}", "HOME": "/nonexistent",
                   "LC_ALL": "C.UTF-8", "TZ": "Europe/Berlin"}
    if "ASAN_OPTIONS" in os.environ:
        environment["ASAN_OPTIONS"] = os.environ["ASAN_OPTIONS"]
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(["sh", "-c", command], cwd=EXAMPLES, env={**environment, "TMPDIR": folder},
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", timeout=300,
                              check=False)
    if done.returncode != 0:
        raise AssertionError(f"{command.strip()}\nended with status {done.returncode}:\n{done.stdout}")
    return done.stdout


def result(command):
    return json.loads(run(command))


def example(name):
    return json.loads((EXAMPLES / name).read_text(encoding="utf-8"))


def commands_and_outputs(page):
    """The fenced blocks of a page in pairs; a ValueError says which block has no partner."""
    blocks = re.findall(r"^```(\w*)\n(.*?)^```$", page, re.MULTILINE | re.DOTALL)
    fences = sum(line.lstrip().startswith("```") for line in page.splitlines())
    if fences != 2 * len(blocks):
        raise ValueError("a fence that is indented or not closed")
    outside = re.sub(r"^```.*?^```$", "", page, flags=re.MULTILINE | re.DOTALL)
    if lonely := re.search(r"^(?: {4}|\t).*\b(?:kestrel [a-z]|python3 ).*$", outside, re.MULTILINE):
        raise ValueError(f"a command outside of a block: {lonely[0]}")
    pairs = []
    for language, text in blocks:
        awaited = COMMAND if len(pairs) % 2 == 0 else OUTPUT
        if language not in awaited:
            raise ValueError(f"{sorted(awaited)} should stand where this does: {language} {text}")
        pairs.append(text)
    if len(pairs) % 2:
        raise ValueError(f"a command without its output: {pairs[-1]}")
    return list(zip(pairs[::2], pairs[1::2]))


def comparable(text):
    """Long fractions to nine decimals: the last digits of a sine differ between mathematical libraries."""
    return re.sub(r"\d+\.\d{10,}", lambda number: f"{float(number[0]):.9f}", text)


class Pages(unittest.TestCase):
    maxDiff = None

    def test_every_command_prints_what_the_guide_shows(self):
        for page in PAGES:
            pairs = commands_and_outputs(page.read_text(encoding="utf-8"))
            self.assertTrue(pairs, page.name)
            for command, output in pairs:
                with self.subTest(page=page.name, command=command):
                    self.assertEqual(comparable(run(command)), comparable(output))

    def test_a_block_without_its_partner_is_found(self):
        command, output = "```sh\nkestrel states\n```\n", "```json\n[]\n```\n"
        both = command + "\nwords\n\n" + output
        self.assertEqual(commands_and_outputs(both), [("kestrel states\n", "[]\n")])
        for page in [command, output, output + command, command + both, both + output, both + command,
                     "```\nkestrel states\n```\n" + output, command + "```python\n1\n```\n",
                     command + "```json\n[]\n", command + output.replace("```", "  ```"),
                     "    kestrel states\n" + both]:
            with self.subTest(page=page), self.assertRaises(ValueError):
                commands_and_outputs(page)

    def test_links_lead_somewhere(self):
        for page in [*PAGES, EXAMPLES / "README.md"]:
            for target in re.findall(r"\]\(([^)#]+)\)", page.read_text(encoding="utf-8")):
                with self.subTest(page=page.name, target=target):
                    self.assertTrue((page.parent / target).exists())

    def test_the_disclaimer_is_the_librarys(self):
        header = (SOURCE / "KestrelKit/model/Disclaimer.h").read_text(encoding="utf-8")
        text = "".join(re.findall(r'"([^"]*)"', header))
        self.assertIn("not a medical device", text)
        self.assertIn(text, " ".join((SOURCE / "docs/guide/README.md").read_text(encoding="utf-8").split()))


class Examples(unittest.TestCase):
    maxDiff = None

    def test_every_file_is_described(self):
        page = (EXAMPLES / "README.md").read_text(encoding="utf-8")
        described = set(re.findall(r"`([\w.-]+\.(?:json|py|txt))`", page))
        self.assertEqual({path.name for path in EXAMPLES.iterdir()}, described | {"README.md"})

    def test_the_diary_has_each_of_120_days_once(self):
        first = datetime.date(2024, 2, 1)
        days = [day["date"] for day in example("diary.json")["days"]]
        self.assertEqual(days, [str(first + datetime.timedelta(days=after)) for after in range(120)])
        self.assertLessEqual(set(example("diary.json")["reports"]), set(days))

    def test_hours_asleep_and_steps_in_the_diary_are_those_recorded(self):
        stays = example("travel.json")
        instant = datetime.datetime.fromisoformat
        sleep = [(instant(stretch["start"]), instant(stretch["end"])) for stretch in example("sleep.json")]
        steps = {day["date"]: sum(day["hourlySteps"]) for day in example("heart-and-steps.json")}
        for day in example("diary.json")["days"]:
            away = [stay["zone"] for stay in stays if stay["firstDay"] <= day["date"] <= stay["lastDay"]]
            zone = zoneinfo.ZoneInfo(away[0] if away else "Europe/Berlin")
            midnight = instant(day["date"]).replace(tzinfo=zone)
            begin, end = midnight - datetime.timedelta(hours=5), midnight + datetime.timedelta(hours=13)
            night = [stretch for stretch in sleep if begin < stretch[0] < end]
            for start, _ in night:
                self.assertEqual(start.utcoffset(), start.astimezone(zone).utcoffset(), start)
            minutes = sum((end - start).total_seconds() / 60 for start, end in night)
            with self.subTest(date=day["date"]):
                self.assertEqual(day["sleep_hours"], round(minutes / 60, 1))
                self.assertEqual(day["steps"], steps.get(day["date"], 0))

    def test_the_baseline_in_the_diary_is_that_of_the_first_four_weeks(self):
        diary = example("diary.json")
        days = [day for day in diary["days"][:28] if day["sleep_hours"] or day["posts"]]
        means = {"avgSleep": statistics.mean(day["sleep_hours"] for day in days if day["sleep_hours"]),
                 "avgPosts": statistics.mean(day["posts"] for day in days),
                 "avgSentiment": statistics.mean(day["sentiment"] for day in days if day["posts"])}
        self.assertEqual(diary["baseline"], {name: round(mean, 2) for name, mean in means.items()})

    def test_derived_files_follow_from_the_recorded_ones(self):
        inputs = {day["date"]: day for day in result("python3 circadian_days.py inputs")}
        self.assertEqual(example("circadian-day.json"), inputs["2024-03-18"])
        self.assertEqual(example("shadow-days.json"), result("python3 circadian_days.py shadow"))
        self.assertEqual(example("history.json"), result("kestrel classify diary.json")[-7:])

        heart_rate_variability = next(day["avg_hrv"] for day in example("diary.json")["days"]
                                      if day["date"] == "2024-03-18")
        features = result("kestrel circadian features circadian-day.json")
        written = json.dumps({"features": features, "avg_hrv": heart_rate_variability})
        self.assertEqual(comparable(json.dumps(example("circadian-verdict.json"))), comparable(written))

    def test_signals_are_those_of_the_diary(self):
        diary = example("diary.json")
        rates = {day["date"]: day.get("restingHeartRate") for day in example("heart-and-steps.json")}
        expected = []
        for day in diary["days"]:
            signals = [("watch", "sleepHours", day["sleep_hours"] or None),
                       ("watch", "restingHeartRate", rates.get(day["date"])),
                       ("watch", "heartRateVariability", day.get("avg_hrv")), ("watch", "steps", day["steps"] or None),
                       ("posts", "count", day["posts"]),
                       ("posts", "sentiment", day["sentiment"] if day["posts"] else None)]
            expected += [{"date": day["date"], "sourceID": source, "signalID": signal, "value": value}
                         for source, signal, value in signals if value is not None]
        labels = [{"date": date, "state": report["state"]} for date, report in diary["reports"].items()]
        self.assertEqual(example("signals.json"),
                         {"sources": ["watch", "posts"], "observations": expected, "labels": labels})

    def test_hours_asleep_are_those_of_the_diary(self):
        berlin = zoneinfo.ZoneInfo("Europe/Berlin")
        expected = [{"date": datetime.datetime.fromisoformat(day["date"]).replace(hour=12, tzinfo=berlin).isoformat(),
                     "value": day["sleep_hours"]} for day in example("diary.json")["days"] if day["sleep_hours"]]
        self.assertEqual(example("hours-asleep.json"), expected)

    def test_days_of_posts_are_those_of_the_diary(self):
        for day, posts in zip(example("diary.json")["days"], example("post-days.json"), strict=True):
            with self.subTest(date=day["date"]):
                self.assertEqual((posts["date"], posts["posts"]), (day["date"], day["posts"]))
                self.assertEqual(posts.get("sentiment"), day["sentiment"] if day["posts"] else None)
                self.assertEqual(posts.get("sentiment_stdev"), day.get("sentiment_stdev"))
                self.assertEqual(sum(posts.get("posts_by_hour", [])), posts["posts"])
                self.assertEqual(sum(posts.get("posts_by_hour", [])[:5]), posts.get("late_night_posts", 0))

    def test_nights_with_stages_are_those_of_the_plain_intervals(self):
        plain = sorted(result("kestrel sleep --gap 60 sleep.json"), key=lambda night: night["asleepMinutes"])
        longest = {night["date"]: night for night in plain}
        for day in ["2024-02-20", "2024-03-18", "2024-04-16"]:
            with self.subTest(day=day):
                night = result(f"kestrel sleep --gap 60 --day {day} sleep-stages.json")
                self.assertEqual(night, longest[day])


if __name__ == "__main__":
    unittest.main()
