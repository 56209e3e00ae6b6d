"""Runs kestrel states, state, baseline, classify, predict and shadow as people and scripts do."""

import json
import unittest

from kestrel_test_case import Field, KestrelTestCase, run

STATES = ["Psychosis", "Mixed Episode", "Mania", "Hypomania", "Euthymia", "Dysthymia", "Moderate Depression",
          "Severe Depression", "Unknown"]


def day(date, sleep, posts, sentiment, **more):
    return {"date": date, "sleep_hours": sleep, "posts": posts, "sentiment": sentiment, "steps": 5000, **more}


def day_fields(path):
    return [Field(path, "object"), Field(path + ".date", "text"), Field(path + ".sleep_hours", "number"),
            Field(path + ".posts", "integer"), Field(path + ".sentiment", "number"), Field(path + ".steps", "integer"),
            Field(path + ".sentiment_stdev", "number", optional=True), Field(path + ".avg_hrv", "number", optional=True)]


def classification(date, state, confidence, reasons, source="algorithmic", **more):
    return {"date": date, "predictedState": state, "confidence": confidence, "reasons": reasons, "source": source, **more}


def line(value):
    return json.dumps(value, separators=(",", ":"), ensure_ascii=False) + "\n"


# What the rules say of days against the default ten posts, worked out by hand.
JUDGED = [
    (day("2024-05-01", 3.9, 16, 0, sentiment_stdev=0.5), "Mixed Episode", 0.85,
     ["Severe sleep deficit (<4h)", "High activity", "High sentiment volatility"]),
    (day("2024-05-02", 3.9, 16, 0), "Mania", 0.9, ["Severe sleep deficit (<4h)", "High activity/sentiment"]),
    (day("2024-05-03", 3.9, 10, 0.3), "Hypomania", 0.7, ["Moderate sleep deficit (<6h)", "Elevated activity"]),
    (day("2024-05-04", 4, 10, 0), "Euthymia", 0.5, []),
    (day("2024-05-05", 0, 0, -0.9), "Unknown", 0, ["Insufficient data"]),
    (day("2024-05-06", 11, 10, -0.6), "Severe Depression", 0.85,
     ["Very low sentiment (<-0.5)", "Hypersomnia or near-zero activity"]),
    (day("2024-05-07", 11, 10, -0.4), "Moderate Depression", 0.75, ["Low sentiment", "Depressed activity or sleep"]),
    (day("2024-05-08", 11, 10, -0.2), "Dysthymia", 0.6, ["Lowered activity/sentiment"]),
    (day("2024-05-09", 3.9, 16, 0, avg_hrv=42.5), "Mania", 0.9, ["Severe sleep deficit (<4h)", "High activity/sentiment"]),
    (day("2024-05-10", 3.9, 16, 0, avg_hrv=None), "Unknown", 0,
     ["HRV missing near Mania boundary; held back", "Severe sleep deficit (<4h)", "High activity/sentiment"]),
]


class MoodStateCommands(KestrelTestCase):
    def test_states_are_the_nine_in_their_order(self):
        rows = [("Psychosis", "✦", "PSY", "purple", "elevated", True), ("Mixed Episode", "↔", "MIX", "pink", "elevated", True),
                ("Mania", "↑", "MAN", "red", "elevated", False), ("Hypomania", "↗", "HYP", "orange", "elevated", False),
                ("Euthymia", "•", "EUT", "green", "stable", False), ("Dysthymia", "↘", "DYS", "teal", "depressed", False),
                ("Moderate Depression", "↓", "MOD", "blue", "depressed", False),
                ("Severe Depression", "⇊", "SEV", "indigo", "depressed", True), ("Unknown", "?", "?", "gray", "none", False)]
        self.assertEqual(self.output("states"), line([
            {"state": state, "symbol": symbol, "shortCode": code, "color": color, "label": f"{symbol} {state}",
             "group": group, "offersCrisisSupport": crisis} for state, symbol, code, color, group, crisis in rows]))

    def test_states_reads_nothing(self):
        for arguments, message in ((["states", "-"], '"-" is not expected'), (["states", "x.json"], '"x.json" is not expected')):
            self.assert_refused(run(*arguments), 2, f"{message} (see kestrel states --help)")

    def test_state_reads_leniently(self):
        for state in STATES:
            self.assertEqual(self.output("state", state), line(state))
        for text, state in (("Manic", "Mania"), ("Hypomanic", "Hypomania"), ("Euthymic", "Euthymia"),
                            ("Dysthymic", "Dysthymia"), ("Major Depressive", "Severe Depression"), ("mania", "Unknown"),
                            ("", "Unknown"), ("[a,b]", "Unknown"), ("{}", "Unknown"), ("%%", "Unknown"), ("-", "Unknown"),
                            ("states", "Unknown"), ("Mania ", "Unknown"), ("a\nb", "Unknown"), ("\udcff", "Unknown")):
            self.assertEqual(self.output("state", text), line(state), text)
        self.assertEqual(self.output("state", "--", "--pretty"), line("Unknown"))

    def test_state_takes_one_text(self):
        for arguments, message in ((["state"], "TEXT is required"), (["state", "Mania", "Manic"], '"Manic" is not expected'),
                                   (["state", "-x"], '"-x" is not expected')):
            self.assert_refused(run(*arguments), 2, f"{message} (see kestrel state --help)")

    def test_baseline_is_the_mean_of_days_with_data(self):
        # Sleep over the days that have some: (6 + 7 + 8 + 9) / 4. Posts over all seven: 14 / 7. Sentiment over those
        # with posts: (0.5 + -0.25 + 0.5 + 0.25) / 4. The eighth is no day with data.
        days = [day("2024-05-01", 6, 2, 0.5), day("2024-05-02", 7, 4, -0.25), day("2024-05-03", 8, 0, 9),
                day("2024-05-04", 9, 0, 9), day("2024-05-05", 0, 4, 0.5), day("2024-05-06", -1, 0, 9),
                day("2024-05-07", 0, 4, 0.25), day("2024-05-08", 0, 0, 9)]
        self.assertEqual(self.result("baseline", document=days),
                         '{"avgSleep":7.5,"avgPosts":2,"avgSentiment":0.25}\n')
        self.assertEqual(self.result("baseline", document=days[::-1]), self.result("baseline", document=days))
        for few in ([], days[:6], days[1:]):
            self.assertEqual(self.result("baseline", document=few), '{"avgSleep":7,"avgPosts":10,"avgSentiment":0}\n')

    def test_baseline_takes_the_last_28_days(self):
        days = [day(f"2024-{month:02}-{number:02}", 8 if month == 5 else 4, month, 0)
                for month in (4, 5) for number in range(1, 29)]
        self.assertEqual(self.result("baseline", document=days), '{"avgSleep":8,"avgPosts":5,"avgSentiment":0}\n')

    def test_baseline_refuses_bad_input(self):
        days = [day("2024-05-01", 7, 9, 0.1, sentiment_stdev=0.2, avg_hrv=40)] * 2
        self.assert_bad_input_is_refused(["baseline"], days, [Field("", "list"), *day_fields("[1]")])

    def test_classify_follows_the_rules(self):
        document = {"days": [metrics for metrics, *_ in JUDGED]}
        expected = line([classification(metrics["date"], *verdict) for metrics, *verdict in JUDGED])
        self.assertEqual(self.result("classify", "--each", document=document), expected)

    def test_classify_takes_days_as_a_series_unless_told_otherwise(self):
        mania, depression = JUDGED[1], JUDGED[5]
        days = [{**metrics, "date": f"2024-06-0{number}"}
                for number, (metrics, *_) in enumerate([mania, depression, mania], 1)]
        each = [classification(f"2024-06-0{number}", *verdict)
                for number, (_, *verdict) in enumerate([mania, depression, mania], 1)]
        self.assertEqual(self.result("classify", "--each", document={"days": days}), line(each))
        smoothed = [each[0], classification("2024-06-02", "Euthymia", 0.5,
                                            ["Smoothed: Severe Depression not corroborated by neighbors",
                                             *depression[-1]]), each[2]]
        self.assertEqual(self.result("classify", document={"days": days}), line(smoothed))
        self.assertEqual(self.result("classify", document={"days": days[:2]}), line(each[:2]))

    def test_classify_lets_a_report_go_before_the_rules(self):
        days = [day("2024-05-01", 0, 0, 0), day("2024-05-02", 9, 10, 0), day("2024-05-03", 3.9, 16, 0, avg_hrv=None)]
        reports = {"2024-05-01": {"state": "Hypomania", "confidence": 30, "source": "keyword", "keyword": "wired"},
                   "2024-05-02": {"state": "Euthymia", "confidence": 85, "notes": "", "source": "manual"},
                   "2024-05-03": {"state": "Mixed Episode", "confidence": 5e0, "source": "manual"},
                   "2024-05-04": {"state": "Mania", "confidence": 100, "source": "keyword"}}
        expected = line([
            classification("2024-05-01", "Hypomania", 0.7, ['Keyword detected: "wired"'], "keyword", isValidated=False),
            classification("2024-05-02", "Euthymia", 0.85, ["Self-reported: "], "manual", selfReportConfidence=85,
                           selfReportNotes="", isValidated=True),
            classification("2024-05-03", "Mixed Episode", 0.05, ["Self-reported by user"], "manual",
                           selfReportConfidence=5, isValidated=False)])
        for options in ([], ["--each"]):
            self.assertEqual(self.result("classify", *options, document={"days": days, "reports": reports}), expected)

    def test_classify_judges_against_the_baseline_that_is_given(self):
        days = [day("2024-05-01", 3.9, 16, 0)]
        for posts, state in ((10.6, "Mania"), (13, "Hypomania"), (20, "Euthymia"), (0, "Mania")):
            baseline = {"avgSleep": 7, "avgPosts": posts, "avgSentiment": 0}
            verdict = json.loads(self.result("classify", document={"days": days, "baseline": baseline}))[0]
            self.assertEqual(verdict["predictedState"], state)
        self.assertEqual(self.result("classify", document={"days": days, "baseline": None, "reports": None}),
                         self.result("classify", document={"days": days}))
        self.assertEqual(self.result("classify", document={"days": []}), "[]\n")

    def test_classify_takes_the_last_of_repeated_reports(self):
        metrics = json.dumps(day("2024-05-01", 9, 10, 0))
        report = '"2024-05-01":{"state":"%s","confidence":50,"source":"manual"}'
        document = f'{{"days":[{metrics}],"reports":{{{report % "Nonsense"},{report % "Mania"}}}}}'
        self.assertEqual(json.loads(self.output("classify", input=document))[0]["predictedState"], "Mania")

    def test_classify_refuses_bad_input(self):
        document = {"days": [day("2024-05-01", 7, 9, 0.1, sentiment_stdev=0.2, avg_hrv=40)] * 2,
                    "reports": {"2024-05-01": {"state": "Mania", "confidence": 50, "notes": "n", "source": "keyword",
                                               "keyword": "k"}},
                    "baseline": {"avgSleep": 7, "avgPosts": 9, "avgSentiment": 0}}
        report = 'reports["2024-05-01"]'
        self.assert_bad_input_is_refused(["classify"], document, [
            Field("", "object"), Field("days", "list"), *day_fields("days[1]"), Field("reports", "object", optional=True),
            Field(report, "object"), Field(report + ".state", STATES), Field(report + ".confidence", "integer"),
            Field(report + ".notes", "text", optional=True), Field(report + ".source", ["manual", "keyword"]),
            Field(report + ".keyword", "text", optional=True), Field("baseline", "object", optional=True),
            Field("baseline.avgSleep", "number"), Field("baseline.avgPosts", "number"),
            Field("baseline.avgSentiment", "number")])

    def test_predict_carries_the_last_state_forward(self):
        probabilities = [0.4, 0.45, 0.5, 0.6, 0.8, 0.7, 0.65, 0.7, 0.6]
        for state, probability in zip(STATES, probabilities):
            history = [classification(f"2024-02-{number}", last, 0.5, [])
                       for number, last in ((25, "Mania"), (26, "Mania"), (27, state))]
            self.assertEqual(self.result("predict", "--days", "3", document=history), line([
                {"date": date, "predictedState": state, "probability": probability}
                for date in ("2024-02-28", "2024-02-29", "2024-03-01")]))

    def test_predict_is_empty_without_three_days_or_a_last_date(self):
        history = [classification("2024-05-01", "Euthymia", 0.5, [])] * 3
        self.assertEqual(self.result("predict", "--days", "1", document=history[:2]), "[]\n")
        for date in ("", "2024-02-30", "2024-5-1", "yesterday"):
            self.assertEqual(self.result("predict", "--days", "2",
                                         document=[*history, classification(date, "Mania", 0.5, [])]), "[]\n")

    def test_predict_adds_days_of_24_hours_to_local_midnight(self):
        # In Zurich the day of the change lasts 25 hours, so that its key comes twice; no day is skipped in spring.
        history = [classification("2024-10-26", "Euthymia", 0.5, [])] * 3
        for zone, dates in (("Europe/Zurich", ["2024-10-27", "2024-10-27", "2024-10-28"]),
                            ("UTC", ["2024-10-27", "2024-10-28", "2024-10-29"])):
            done = json.loads(self.result("predict", "--days", "3", "--timezone", zone, document=history))
            self.assertEqual([prediction["date"] for prediction in done], dates)

    def test_predict_ends_with_the_year_9999(self):
        history = [classification("9999-12-29", "Euthymia", 0.5, [])] * 3
        for days in ("2", "3", "1000000", "9223372036854775808", "1e300"):
            done = json.loads(self.result("predict", "--days", days, document=history))
            self.assertEqual([prediction["date"] for prediction in done], ["9999-12-30", "9999-12-31"])

    def test_predict_takes_a_number_of_days_from_1(self):
        for days in ("0", "-1", "1.5", "0.9", "-1e300", "1e400", "+1", "01", "0x1", " 1", "", "one", "null", "٢"):
            self.assert_refused(run("predict", "--days", days), 2,
                                f'--days: "{days}" is not a whole number from 1 (see kestrel predict --help)')
        for arguments, message in ((["predict"], "--days is required"), (["predict", "--days"], "--days needs a value"),
                                   (["predict", "--days="], "--days needs a value"),
                                   (["predict", "--days", "1", "--days", "2"], "--days is given twice")):
            self.assert_refused(run(*arguments), 2, f"{message} (see kestrel predict --help)")

    def test_predict_reads_what_classify_prints(self):
        document = {"days": [metrics for metrics, *_ in JUDGED],
                    "reports": {"2024-05-10": {"state": "Dysthymia", "confidence": 85, "source": "manual"}}}
        done = self.output("predict", "--days", "1", input=self.result("classify", document=document))
        self.assertEqual(done, '[{"date":"2024-05-11","predictedState":"Dysthymia","probability":0.7}]\n')

    def test_predict_refuses_bad_input(self):
        history = [classification("2024-05-01", "Euthymia", 0.5, ["a", "b"], isConfirmed=True, selfReportConfidence=50,
                                  selfReportNotes="n", isValidated=True)] * 3
        self.assert_bad_input_is_refused(["predict", "--days", "1"], history, [
            Field("", "list"), Field("[2]", "object"), Field("[2].date", "text"), Field("[2].predictedState", STATES),
            Field("[2].confidence", "number"), Field("[2].reasons", "list"), Field("[2].reasons[1]", "text"),
            Field("[2].source", ["manual", "keyword", "algorithmic"]),
            Field("[2].selfReportConfidence", "number", optional=True),
            Field("[2].selfReportNotes", "text", optional=True)])
        for key in ("isConfirmed", "isValidated"):
            changed = [*history[:2], {**history[2], key: 1}]
            self.assert_refused(run("predict", "--days", "1", input=json.dumps(changed)), 1,
                                f"[2].{key}: expected a boolean, found a number")

    def test_shadow_scores_by_group(self):
        days = [{"date": "2024-05-02", "circadianState": "Mania", "label": "Hypomania"},
                {"date": "2024-05-01", "label": "Euthymia"}]
        self.assertEqual(self.result("shadow", document=days),
                         '{"scoredDays":1,"circadianAccuracy":1,"baselineAccuracy":0}\n')
        days += [{"date": "2024-05-03", "circadianState": "Mania"},
                 {"date": "2024-05-04", "circadianState": "Unknown", "label": "Psychosis"},
                 {"date": "2024-05-05", "circadianState": None, "label": "Mania"},
                 {"date": "2024-05-06", "circadianState": "Euthymia", "label": "Euthymia"}]
        # Scored are the 2nd, 4th, 5th and 6th: the circadian state agrees on the 2nd and 6th, the label before on the
        # 4th and 5th.
        self.assertEqual(self.result("shadow", document=days),
                         '{"scoredDays":4,"circadianAccuracy":0.5,"baselineAccuracy":0.5}\n')

    def test_shadow_without_two_labels_scores_nothing(self):
        for days in ([], [{"date": "2024-05-01"}], [{"date": "2024-05-01", "label": "Mania", "circadianState": "Mania"}]):
            self.assertEqual(self.result("shadow", document=days),
                             '{"scoredDays":0,"circadianAccuracy":0,"baselineAccuracy":0}\n')

    def test_shadow_refuses_bad_input(self):
        days = [{"date": "2024-05-01", "circadianState": "Mania", "label": "Mania"}] * 2
        self.assert_bad_input_is_refused(["shadow"], days, [
            Field("", "list"), Field("[1]", "object"), Field("[1].date", "text"),
            Field("[1].circadianState", STATES, optional=True), Field("[1].label", STATES, optional=True)])


if __name__ == "__main__":
    unittest.main()
