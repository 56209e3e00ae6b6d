"""Judges every day of the diary by its sleep, with the program `kestrel`.

    python3 circadian_days.py inputs      what `kestrel circadian features` is given for each day
    python3 circadian_days.py verdicts    what `kestrel circadian classify` makes of it
    python3 circadian_days.py shadow      those verdicts beside the person's own labels, for `kestrel shadow`

Prints one JSON list, a day an element. The choices that `kestrel` leaves to its callers are made here:

- a day is judged against the 28 days before it, and never against itself or a later one;
- clock times are those of the place where the person was (travel.json);
- of several sleeps that end on one day the longest is that day's night, the others are naps;
- a label is a report that the person made; one that a keyword raised is none.
"""

import datetime
import json
import pathlib
import subprocess
import sys

FOLDER = pathlib.Path(__file__).parent
HOME = "Europe/Berlin"
GAP_MINUTES = 60
WINDOW_DAYS = 28


def read(name):
    return json.loads((FOLDER / name).read_text(encoding="utf-8"))


def kestrel(*arguments, given):
    done = subprocess.run(["kestrel", *arguments], input=json.dumps(given), stdout=subprocess.PIPE,
                          encoding="utf-8", check=True)
    return json.loads(done.stdout)


def longest_by_day(intervals, zone):
    """The longest sleep that ends on each day, by the clocks of one zone."""
    nights = {}
    for session in kestrel("sleep", "--gap", str(GAP_MINUTES), "--timezone", zone, given=intervals):
        best = nights.get(session["date"])
        if best is None or session["asleepMinutes"] > best["asleepMinutes"]:
            nights[session["date"]] = session
    return nights


def nights_by_day():
    intervals = read("sleep.json")
    nights = longest_by_day(intervals, HOME)
    for stay in read("travel.json"):
        away = longest_by_day(intervals, stay["zone"])
        here = {day for day in nights.keys() | away.keys() if stay["firstDay"] <= day <= stay["lastDay"]}
        nights = {day: night for day, night in nights.items() if day not in here}
        nights |= {day: night for day, night in away.items() if day in here}
    return nights


def inputs():
    nights = nights_by_day()
    measured = {entry["date"]: entry for entry in read("heart-and-steps.json")}
    for day in (entry["date"] for entry in read("diary.json")["days"]):
        today = datetime.date.fromisoformat(day)
        window = [str(today - datetime.timedelta(days=back)) for back in range(WINDOW_DAYS, 0, -1)]
        usual = [measured[before] for before in window if before in measured]
        given = {"date": day, "nights": [nights[before] for before in window if before in nights]}
        if day in nights:
            given["judgedMidSleepMinutes"] = nights[day]["midSleepMinutes"]
        if usual:
            given["hourlyActivity"] = [sum(hour) for hour in zip(*(entry["hourlySteps"] for entry in usual))]
        given["stepCounts"] = [sum(entry["hourlySteps"]) for entry in usual]
        if "restingHeartRate" in measured.get(day, {}):
            given["restingHeartRate"] = measured[day]["restingHeartRate"]
        given["baselineRestingHeartRates"] = [entry["restingHeartRate"] for entry in usual
                                              if "restingHeartRate" in entry]
        given["expectedNights"] = WINDOW_DAYS
        yield given


def verdicts():
    heart_rate_variability = {entry["date"]: {"avg_hrv": entry["avg_hrv"]} if "avg_hrv" in entry else {}
                              for entry in read("diary.json")["days"]}
    for given in inputs():
        features = kestrel("circadian", "features", given=given)
        yield kestrel("circadian", "classify", given={"features": features} | heart_rate_variability[given["date"]])


def shadow():
    reports = read("diary.json")["reports"]
    for verdict in verdicts():
        day = {"date": verdict["date"], "circadianState": verdict["predictedState"]}
        report = reports.get(verdict["date"], {})
        yield day | ({"label": report["state"]} if report.get("source") == "manual" else {})


if __name__ == "__main__":
    lists = {"inputs": inputs, "verdicts": verdicts, "shadow": shadow}
    if len(sys.argv) != 2 or sys.argv[1] not in lists:
        sys.exit(f"usage: python3 {sys.argv[0]} {'|'.join(lists)}")
    print("[" + ",\n ".join(json.dumps(element) for element in lists[sys.argv[1]]()) + "]")
