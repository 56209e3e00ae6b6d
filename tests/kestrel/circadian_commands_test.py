"""Runs kestrel sleep, circadian features and circadian classify as people and scripts do."""

import json
import math
import unittest

from kestrel_test_case import HUGE, Field, KestrelTestCase, Raw, run, with_value


def interval(start, end, *stage):
    """An interval of hours and minutes in UTC, of the first of May 2024 before noon, of the day before after it."""
    keys = ("start", "end", "stage")
    days = [f"2024-{'04-30' if clock > '12:00' else '05-01'}T{clock}:00Z" for clock in (start, end)]
    return dict(zip(keys, [*days, *stage]))


NIGHT = [interval("23:00", "01:00"), interval("00:30", "02:00"), interval("02:20", "06:00"), interval("09:00", "09:30")]
STAGES = [interval("22:00", "06:30", "inBed"), interval("22:30", "02:00", "asleepCore"), interval("02:00", "02:30", "awake"),
          interval("02:30", "06:00", "ASLEEPREM"), interval("03:00", "04:00", "deep"), interval("11:00", "11:30", "asleep")]
OBSERVATIONS = {
    "date": "2024-05-01",
    "nights": [{"date": "2024-04-29", "midSleepMinutes": 1430, "asleepMinutes": 400},
               {"date": "2024-04-30", "midSleepMinutes": 10, "asleepMinutes": 440},
               {"date": "2024-05-01", "midSleepMinutes": 0, "asleepMinutes": 480}],
    "judgedMidSleepMinutes": 120,
    "hourlyActivity": [0] * 5 + [10] * 9 + [20] * 10,
    "stepCounts": [3000, 5000],
    "restingHeartRate": 66,
    "baselineRestingHeartRates": [60, 61],
    "expectedNights": 7,
}
FEATURES = {"date": "2024-05-01", "phaseDeviationHours": -2.5, "sleepRegularitySDMinutes": 30, "durationSDMinutes": 20,
            "activity": {"m10OnsetHour": 9, "m10": 20, "l5": 1, "mesor": 10, "relativeAmplitude": 0.9},
            "stepVariabilityCV": 0.2, "restingHRDeviationBpm": 6.0, "coverageNights": 1, "daysObserved": 7}


class CircadianCommands(KestrelTestCase):
    def assert_close(self, value, expected):
        self.assertTrue(math.isclose(value, expected, rel_tol=1e-12, abs_tol=1e-9), (value, expected))

    def test_sleep_joins_intervals_into_nights(self):
        expected = ('[{"date":"2024-05-01","midSleepMinutes":150,"asleepMinutes":400},'
                    '{"date":"2024-05-01","midSleepMinutes":555,"asleepMinutes":30}]\n')
        for intervals in (NIGHT, NIGHT[::-1], NIGHT + NIGHT, [*NIGHT, interval("03:00", "03:00"), interval("04:00", "03:00")]):
            self.assertEqual(self.result("sleep", "--gap", "30", document=intervals), expected)
        self.assertEqual(self.result("sleep", "--gap", "30", document=[]), "[]\n")

    def test_sleep_takes_any_number_as_gap(self):
        one = '[{"date":"2024-05-01","midSleepMinutes":255,"asleepMinutes":430}]\n'  # 23:00 to 09:30
        for gap in ("180", "180.0", "1.8e2", "1e308"):
            self.assertEqual(self.result("sleep", "--gap", gap, document=NIGHT), one)
        self.assertEqual(len(json.loads(self.result("sleep", "--gap", "179.99", document=NIGHT))), 2)
        self.assertEqual(len(json.loads(self.result("sleep", "--gap", "20", document=NIGHT))), 2)
        for gap in ("19.99", "0", "-0", "-30"):
            self.assertEqual(len(json.loads(self.result("sleep", "--gap", gap, document=NIGHT))), 3)
        self.assertEqual(len(json.loads(self.result("sleep", "--gap", "-31", document=NIGHT))), 4)

    def test_sleep_names_days_and_times_by_the_clocks_of_the_zone(self):
        # The night in which the clocks of Zurich are set from 02:00 to 03:00, from 23:00 to 07:00 on them.
        intervals = [{"start": "2024-03-30T22:00:00Z", "end": "2024-03-31T07:00:00+02:00"}]
        for options, expected in ((["--timezone", "Europe/Zurich"], ("2024-03-31", 210, 420)),
                                  (["--timezone", "Pacific/Auckland"], ("2024-03-31", 870, 420)),
                                  (["--timezone", "America/New_York"], ("2024-03-31", 1290, 420))):
            date, middle, asleep = expected
            self.assertEqual(self.result("sleep", "--gap=30", *options, document=intervals),
                             f'[{{"date":"{date}","midSleepMinutes":{middle},"asleepMinutes":{asleep}}}]\n')
            self.assertEqual(self.result("sleep", "--gap=30", document=intervals, TZ=options[1]),
                             self.result("sleep", "--gap=30", *options, document=intervals, TZ="Asia/Tokyo"))

    def test_sleep_reckons_in_the_gregorian_calendar(self):
        for locale in ("th_TH.UTF-8", "de_DE.UTF-8@calendar=hebrew"):
            self.assertEqual(self.result("sleep", "--gap", "30", document=NIGHT, LC_ALL=locale),
                             self.result("sleep", "--gap", "30", document=NIGHT))

    def test_sleep_of_a_day_counts_what_is_asleep(self):
        # Asleep from 22:30 to 02:00 and from 02:30 to 06:00, with the middle at 02:15.
        night = '{"date":"2024-05-01","midSleepMinutes":135,"asleepMinutes":420}\n'
        self.assertEqual(self.result("sleep", "--gap", "30", "--day", "2024-05-01", document=STAGES), night)
        self.assertEqual(self.result("sleep", "--gap", "30", "--day", "2024-05-01", document=STAGES[::-1]), night)
        self.assertEqual(self.result("sleep", "--gap", "30", "--day", "2024-05-01", document=STAGES[-1:]),
                         '{"date":"2024-05-01","midSleepMinutes":675,"asleepMinutes":30}\n')
        self.assertEqual(self.result("sleep", "--gap", "30", "--day", "2024-05-01", document=[STAGES[0], STAGES[2]]),
                         '{"date":"2024-05-01","midSleepMinutes":135,"asleepMinutes":0}\n')  # 22:00 to 06:30
        for day in ("2024-04-30", "2024-05-02", "0001-01-01", "9999-12-31"):
            self.assertEqual(self.result("sleep", "--gap", "30", "--day", day, document=STAGES), "null\n")
        self.assertEqual(self.result("sleep", "--gap", "30", "--day", "2024-05-01", document=[]), "null\n")

    def test_sleep_takes_a_gap_and_a_day_that_exists(self):
        for gap in ("+5", ".5", "5.", "05", "0x10", "1e400", "-1e400", "inf", "nan", "", " 5", "thirty", "5m", "null"):
            self.assert_refused(run("sleep", "--gap", gap), 2, f'--gap: "{gap}" is not a number (see kestrel sleep --help)')
        for day in ("2024-02-30", "2023-02-29", "2024-5-1", "2024-05-01T00:00:00Z", "0000-01-01", "20240501", "", "today",
                    " 2024-05-01", "２０２４-05-01", "10000-01-01"):
            self.assert_refused(run("sleep", "--gap", "30", "--day", day), 2,
                                f'--day: "{day}" is not a day such as 2024-05-01 (see kestrel sleep --help)')
        for arguments, message in ((["sleep"], "--gap is required"), (["sleep", "--day", "2024-05-01"], "--gap is required"),
                                   (["sleep", "--gap"], "--gap needs a value"),
                                   (["sleep", "--gap", "1", "--gap", "2"], "--gap is given twice"),
                                   (["sleep", "--gap", "1", "--each"], '"--each" is not expected')):
            self.assert_refused(run(*arguments), 2, f"{message} (see kestrel sleep --help)")

    def test_sleep_refuses_bad_input(self):
        self.assert_bad_input_is_refused(["sleep", "--gap", "30"], NIGHT, [
            Field("", "list"), Field("[1]", "object"), Field("[1].start", "instant"), Field("[1].end", "instant")])

    def test_sleep_of_a_day_refuses_bad_input(self):
        self.assert_bad_input_is_refused(["sleep", "--gap", "30", "--day", "2024-05-01"], STAGES, [
            Field("", "list"), Field("[1]", "object"), Field("[1].start", "instant"), Field("[1].end", "instant"),
            Field("[1].stage", "text")])

    def test_features_are_those_of_the_observations(self):
        text = self.result("circadian", "features", document=OBSERVATIONS)
        features = json.loads(text)
        self.assertEqual(list(features), ["date", "phaseDeviationHours", "sleepRegularitySDMinutes", "durationSDMinutes",
                                          "activity", "stepVariabilityCV", "restingHRDeviationBpm", "coverageNights",
                                          "daysObserved"])
        self.assertEqual(list(features["activity"]), ["m10OnsetHour", "m10", "l5", "mesor", "relativeAmplitude"])
        self.assertEqual((features["date"], features["daysObserved"]), ("2024-05-01", 3))
        # The mean of 23:50, 00:10 and 00:00 is midnight; two of the three unit vectors are 2.5 degrees off it.
        self.assert_close(features["phaseDeviationHours"], 2)
        resultant = (1 + 2 * math.cos(math.radians(2.5))) / 3
        self.assert_close(features["sleepRegularitySDMinutes"], math.sqrt(-2 * math.log(resultant)) * 720 / math.pi)
        self.assert_close(features["durationSDMinutes"], math.sqrt(3200 / 3))
        # Ten hours of 20 from 14:00 on, five of rest from midnight; in all 290.
        for key, value in (("m10OnsetHour", 14), ("m10", 20), ("l5", 0), ("mesor", 290 / 24), ("relativeAmplitude", 1)):
            self.assert_close(features["activity"][key], value)
        self.assert_close(features["stepVariabilityCV"], 0.25)
        self.assert_close(features["restingHRDeviationBpm"], 5.5)
        self.assert_close(features["coverageNights"], 3 / 7)

    def test_features_without_anything_to_work_on_are_absent(self):
        bare = {"date": "", "nights": [], "stepCounts": [], "baselineRestingHeartRates": [], "expectedNights": 0}
        nothing = '{"date":"","coverageNights":0,"daysObserved":0}\n'
        for more in ({}, {"judgedMidSleepMinutes": 60}, {"hourlyActivity": [1] * 23}, {"hourlyActivity": [0] * 24},
                     {"hourlyActivity": []}, {"restingHeartRate": 60}, {"judgedMidSleepMinutes": None}, {"stepCounts": [0, 0]},
                     {"baselineRestingHeartRates": [60]}, {"expectedNights": -3}, {"unknown": 1}):
            self.assertEqual(self.result("circadian", "features", document={**bare, **more}), nothing)

    def test_features_that_are_not_finite_are_refused(self):
        nights = [{"date": "", "midSleepMinutes": 0, "asleepMinutes": minutes} for minutes in (-1e308, 1e308)]
        done = run("circadian", "features", input=json.dumps({**OBSERVATIONS, "nights": nights}))
        self.assert_refused(done, 1, "durationSDMinutes: is not a finite number")

    def test_features_of_heart_rates_beyond_64_bits_break_a_rule(self):
        for rates in ([9223372036854775807, 1], [-9223372036854775808, -1]):
            done = run("circadian", "features", input=json.dumps({**OBSERVATIONS, "baselineRestingHeartRates": rates}))
            self.assertEqual((done.returncode, done.stdout), (4, ""))
            self.assertRegex(done.stderr, r"\Akestrel: [^\n]*64 bits[^\n]*\n\Z")
        whole = {**OBSERVATIONS, "baselineRestingHeartRates": [9223372036854775807, -9223372036854775807, 3]}
        self.assert_close(json.loads(self.result("circadian", "features", document=whole))["restingHRDeviationBpm"], 65)

    def test_features_refuses_bad_input(self):
        self.assert_bad_input_is_refused(["circadian", "features"], OBSERVATIONS, [
            Field("", "object"), Field("date", "text"), Field("nights", "list"), Field("nights[1]", "object"),
            Field("nights[1].date", "text"), Field("nights[1].midSleepMinutes", "number"),
            Field("nights[1].asleepMinutes", "number"), Field("judgedMidSleepMinutes", "number", optional=True),
            Field("hourlyActivity", "list", optional=True), Field("hourlyActivity[23]", "number"),
            Field("stepCounts", "list"), Field("stepCounts[1]", "integer"),
            Field("restingHeartRate", "integer", optional=True), Field("baselineRestingHeartRates", "list"),
            Field("baselineRestingHeartRates[1]", "integer"), Field("expectedNights", "integer")])

    def classified(self, features, **more):
        return self.result("circadian", "classify", document={"features": {**FEATURES, **features}, **more})

    def test_classify_by_the_rhythm_tells_state_and_reasons(self):
        bare = {"date": "2024-05-01", "coverageNights": 1, "daysObserved": 3}
        for more, expected in (
                ({"phaseDeviationHours": 2.34},
                 '"Moderate Depression","confidence":0.7,"reasons":["Circadian phase markedly delayed (+2.3h)"]'),
                ({"phaseDeviationHours": 1}, '"Dysthymia","confidence":0.6,"reasons":["Circadian phase delayed (+1.0h)"]'),
                ({"phaseDeviationHours": -1}, '"Hypomania","confidence":0.6,"reasons":["Circadian phase advanced (-1.0h)"]'),
                ({"phaseDeviationHours": 0.99}, '"Euthymia","confidence":0.5,"reasons":["Circadian phase near baseline"]'),
                ({"phaseDeviationHours": 2, "daysObserved": 2},
                 '"Unknown","confidence":0,"reasons":["Insufficient circadian coverage"]'),
                ({"phaseDeviationHours": 2, "coverageNights": 0.49},
                 '"Unknown","confidence":0,"reasons":["Insufficient circadian coverage"]'),
                ({"phaseDeviationHours": 2, "coverageNights": 0.5},
                 '"Moderate Depression","confidence":0.35,"reasons":["Circadian phase markedly delayed (+2.0h)"]'),
                ({}, '"Unknown","confidence":0,"reasons":["No circadian phase estimate"]')):
            self.assertEqual(self.result("circadian", "classify", document={"features": {**bare, **more}}),
                             f'{{"date":"2024-05-01","predictedState":{expected},"source":"algorithmic"}}\n')

    def test_classify_by_the_rhythm_reads_heart_rate_variability_in_three_ways(self):
        mania = ('{"date":"2024-05-01","predictedState":"Mania","confidence":0.805,"reasons":['
                 '"Circadian phase markedly advanced (-2.5h)",'
                 '"Resting heart rate elevated 6.0 bpm over baseline corroborates"],"source":"algorithmic"}\n')
        verdict, measured = json.loads(self.classified({})), json.loads(self.classified({}, avg_hrv=40))
        self.assert_close(verdict["confidence"], 0.7 * 1.15)
        self.assertEqual(verdict, measured)
        self.assertEqual({**verdict, "confidence": 0.805}, json.loads(mania))
        self.assertEqual(self.classified({}, avg_hrv=None),
                         '{"date":"2024-05-01","predictedState":"Unknown","confidence":0,"reasons":['
                         '"HRV missing near Mania boundary; held back"],"source":"algorithmic"}\n')

    def test_classify_by_the_rhythm_reads_what_features_prints(self):
        features = json.loads(self.result("circadian", "features", document=OBSERVATIONS))
        verdict = json.loads(self.result("circadian", "classify", document={"features": features}))
        self.assertEqual((verdict["predictedState"], verdict["confidence"]), ("Unknown", 0))  # 3 nights of 7
        self.assertEqual(verdict["reasons"], ["Insufficient circadian coverage"])

    def test_classify_by_the_rhythm_is_no_daily_classify(self):
        self.assert_refused(run("circadian", "classify", "--each"), 2,
                            '"--each" is not expected (see kestrel circadian classify --help)')

    def test_classify_by_the_rhythm_refuses_bad_input(self):
        document = {"features": FEATURES, "avg_hrv": 40}
        fields = [Field(f"features.{key}", "number", optional=True) for key in
                  ("phaseDeviationHours", "sleepRegularitySDMinutes", "durationSDMinutes", "stepVariabilityCV",
                   "restingHRDeviationBpm")]
        fields += [Field(f"features.activity.{key}", "number") for key in FEATURES["activity"]]
        self.assert_bad_input_is_refused(["circadian", "classify"], document, [
            Field("", "object"), Field("features", "object"), Field("features.date", "text"), *fields,
            Field("features.activity", "object", optional=True), Field("features.coverageNights", "number"),
            Field("features.daysObserved", "integer"), Field("avg_hrv", "number", optional=True)])
        self.assert_refused(run("circadian", "classify", input=json.dumps(with_value(document, ["features", "coverageNights"],
                                                                                     None))), 1,
                            "features.coverageNights: expected a number, found null")

    def test_classify_by_the_rhythm_takes_literals_of_any_length(self):
        self.assertIn(f"(+{1e300:.1f}h)", self.classified({"phaseDeviationHours": Raw(HUGE[:301])}))


if __name__ == "__main__":
    unittest.main()
