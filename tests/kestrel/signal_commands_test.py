"""Runs kestrel evidence and kestrel pairs as people and scripts do."""

import itertools
import json
import math
import unittest

from kestrel_test_case import Field, KestrelTestCase, Raw, run

STATES = ["Psychosis", "Mixed Episode", "Mania", "Hypomania", "Euthymia", "Dysthymia", "Moderate Depression",
          "Severe Depression", "Unknown"]


def day(number):
    """Every second day of 2024 from the first on: no two of them lie 1, 3 or 7 days apart."""
    return f"2024-{1 + number // 14:02}-{1 + 2 * (number % 14):02}"


def observations(values, signal="steps", source="watch"):
    return [{"date": day(number), "sourceID": source, "signalID": signal, "value": value}
            for number, value in enumerate(values)]


def labels(*states):
    return [{"date": day(number), "state": state} for number, state in enumerate(states)]


# Means 2 and 5, variances 1: three standard deviations apart, with a standard error of sqrt(6/9 + 9/8).
DOCUMENT = {"sources": ["watch"], "observations": observations([1, 2, 3, 4, 5, 6]),
            "labels": labels(*["Euthymia"] * 3, *["Mania"] * 3)}


class SignalCommands(KestrelTestCase):
    def evidence(self, *options, **changes):
        return json.loads(self.result("evidence", *options, document={**DOCUMENT, **changes}))

    def test_evidence_is_printed_in_the_order_of_its_fields(self):
        text = self.result("evidence", "--minimum-days", "3", document=DOCUMENT)
        unevaluated = ",".join(
            f'{{"signalID":"steps","comparison":"{comparison}","lagDays":{lag},"reason":"insufficient_samples"}}'
            for lag in (0, 1, 3, 7)
            for comparison in ("elevatedVsEuthymia", "depressedVsEuthymia", "mixedVsEuthymia", "psychosisVsEuthymia")
            if (lag, comparison) != (0, "elevatedVsEuthymia"))
        self.assertEqual(text, '[{"sourceID":"watch","status":"associationObserved","observedDays":6,"overlappingDays":6,'
                               '"evaluatedSignals":1,"strongestSignalID":"steps",'
                               '"strongestComparison":"elevatedVsEuthymia","standardizedDifference":3,"strongestLagDays":0,'
                               '"associations":[{"signalID":"steps","comparison":"elevatedVsEuthymia","lagDays":0,'
                               '"pairedDays":6,"coverage":1,"referenceDays":3,"comparisonDays":3,'
                               '"standardizedDifference":3,"confidenceInterval":[0.3765,5.6235],"pValue":0.025,'
                               f'"adjustedPValue":0.025}}],"unevaluated":[{unevaluated}]}}]\n')

    def test_evidence_leaves_out_what_is_absent(self):
        self.assertEqual(self.result("evidence", document={**DOCUMENT, "sources": ["ring"]}),
                         '[{"sourceID":"ring","status":"noData","observedDays":0,"overlappingDays":0,"evaluatedSignals":0,'
                         '"associations":[],"unevaluated":[]}]\n')
        self.assertEqual(self.result("evidence", document={**DOCUMENT, "sources": []}), "[]\n")

    def test_evidence_needs_five_days_in_each_group_by_default(self):
        for days, associations in ((4, 0), (5, 1)):
            values = [number * number % 7 for number in range(2 * days)]
            states = labels(*["Euthymia"] * days, *["Severe Depression"] * days)
            for options in ([], ["--minimum-days", "5"]):
                result, = self.evidence(*options, observations=observations(values), labels=states)
                self.assertEqual(len(result["associations"]), associations)
                self.assertEqual(result["status"] == "insufficientOverlap", not associations)

    def test_evidence_counts_an_effect_of_0_3_by_default(self):
        # Sixty days of each with deviation 1 and means that lie 0.29 and 0.31 of it apart, and sure enough.
        for apart, status in ((0.29, "noClearAssociation"), (0.31, "associationObserved")):
            spread = math.sqrt(119 / 120)
            values = [(-1) ** number * spread + apart * (number // 120) for number in range(240)]
            dates = [f"{2000 + number // 100}-{1 + number // 10 % 10:02}-{1 + 2 * (number % 10):02}" for number in range(240)]
            document = {"sources": ["watch"],
                        "observations": [{"date": date, "sourceID": "watch", "signalID": "steps", "value": value}
                                         for date, value in zip(dates, values)],
                        "labels": [{"date": date, "state": "Mania" if number >= 120 else "Euthymia"}
                                   for number, date in enumerate(dates)]}
            for options in ([], ["--minimum-effect", "0.3"]):
                result, = json.loads(self.result("evidence", *options, document=document))
                self.assertLessEqual(result["associations"][0]["adjustedPValue"], 0.1)
                self.assertEqual(result["status"], status, result["standardizedDifference"])

    def test_options_take_numbers_as_json_writes_them(self):
        for number in ("3", "3.0", "3e0", "30e-1"):
            self.assertEqual(len(self.evidence("--minimum-days", number)[0]["associations"]), 1)
        for number in ("4", "1e9", "99999999999999999999", "1e308"):
            self.assertEqual(len(self.evidence("--minimum-days", number)[0]["associations"]), 0)
        for number, status in (("3", "associationObserved"), ("3.00001", "noClearAssociation"), ("-1", "associationObserved"),
                               ("1e308", "noClearAssociation"), ("0", "associationObserved")):
            result, = self.evidence("--minimum-days", "2", "--minimum-effect", number)
            self.assertEqual(result["status"], status)
        for command in ("evidence", "pairs"):
            for number in ("0", "-1", "1.5", "0x5", "five", "", "+5", "05", "1e400", "nan"):
                self.assert_refused(run(command, "--minimum-days", number), 2,
                                    f'--minimum-days: "{number}" is not a whole number from 1 (see kestrel {command} --help)')
        for number in ("+0.3", ".3", "0,3", "1e400", "-1e400", "inf", ""):
            self.assert_refused(run("evidence", "--minimum-effect", number), 2,
                                f'--minimum-effect: "{number}" is not a number (see kestrel evidence --help)')
        self.assert_refused(run("pairs", "--minimum-effect", "1"), 2,
                            '"--minimum-effect" is not expected (see kestrel pairs --help)')

    def test_days_that_do_not_exist_count_for_nothing(self):
        expected = self.result("evidence", "--minimum-days=2", document=DOCUMENT)
        wrong = ["2024-02-30", "2023-02-29", "0000-12-31", "2024-1-1", "", "today", "2024-01-01T00:00:00Z", " 2024-01-01",
                 "２０２４-01-01", "10000-01-01", "9999-99-99"]
        more = {"sources": ["watch"],
                "observations": DOCUMENT["observations"] + [{**DOCUMENT["observations"][0], "date": date, "value": 1e6}
                                                            for date in wrong],
                "labels": DOCUMENT["labels"] + [{"date": date, "state": "Psychosis"} for date in wrong]}
        self.assertEqual(self.result("evidence", "--minimum-days=2", document=more), expected)
        self.assertEqual(self.result("pairs", document=more), "[]\n")

    def test_names_may_be_empty_and_of_every_script(self):
        names = ["", " ", "\0", "steps", "Schritte", "βήματα", "шаги", "خطوات", "צעדים", "कदम", "ก้าว", "歩数", "걸음", "👣",
                 "e\u0301", "é", "\u202eabc", "a\nb", "\"\\"]
        document = {"sources": names, "labels": DOCUMENT["labels"],
                    "observations": [each for name in names for each in observations([1, 2, 3, 4, 5, 6], name, name)]}
        results = json.loads(self.result("evidence", "--minimum-days=3", document=document))
        self.assertEqual([result["sourceID"] for result in results], names)
        self.assertEqual([result["strongestSignalID"] for result in results], names)
        pairs = json.loads(self.result("pairs", document=document))
        expected = list(itertools.combinations(sorted(names), 2))  # by code points
        self.assertEqual([(pair["firstSourceID"], pair["secondSourceID"]) for pair in pairs], expected)
        self.assertEqual({(pair["pairedDays"], pair["spearmanRho"]) for pair in pairs}, {(6, 1)})

    def test_values_at_the_edge_of_a_float_are_evaluated_or_not(self):
        for values in ([Raw("1e308")] * 3 + [Raw("-1e308")] * 3, [Raw("1e308"), Raw("-1e308")] * 3,
                       [Raw("5e-324"), 0, Raw("-0")] * 2, [Raw("1e-400")] * 6, [Raw("1" + "0" * 308)] * 6):
            result, = self.evidence("--minimum-days", "2", observations=observations(values))
            self.assertEqual(len(result["associations"]) + len(result["unevaluated"]), 16)

    def test_pairs_are_printed_in_the_order_of_their_fields(self):
        document = {"observations": observations([1, 2, 3, 4, 5], "b") + observations([2, 1, 4, 3, 5], "a") +
                    observations([1, 2, 3, 4], "short") + observations([7] * 5, "constant")}
        # Differences of ranks 1, 1, 1, 1, 0: 1 - 6 * 4 / (5 * 24).
        expected = ('[{"firstSourceID":"watch","firstSignalID":"a","secondSourceID":"watch","secondSignalID":"b",'
                    '"pairedDays":5,"spearmanRho":0.8}]\n')
        for options in ([], ["--minimum-days", "5"]):
            self.assertEqual(self.result("pairs", *options, document=document), expected)
        self.assertEqual(self.result("pairs", "--minimum-days", "6", document=document), "[]\n")
        self.assertEqual(len(json.loads(self.result("pairs", "--minimum-days", "4", document=document))), 3)
        # What evidence reads pairs reads as well.
        self.assertEqual(self.result("pairs", document={"labels": [], "sources": ["x"], **document}), expected)

    def test_the_zone_changes_nothing(self):
        for zone in ("Pacific/Kiritimati", "America/New_York"):
            self.assertEqual(self.result("evidence", "--minimum-days=2", "--timezone", zone, document=DOCUMENT),
                             self.result("evidence", "--minimum-days=2", document=DOCUMENT))

    def test_evidence_refuses_bad_input(self):
        self.assert_bad_input_is_refused(["evidence", "--minimum-days", "2"], DOCUMENT, [
            Field("", "object"), Field("sources", "list"), Field("sources[0]", "text"), Field("observations", "list"),
            Field("observations[1]", "object"), Field("observations[1].date", "text"),
            Field("observations[1].sourceID", "text"), Field("observations[1].signalID", "text"),
            Field("observations[1].value", "number"), Field("labels", "list"), Field("labels[2]", "object"),
            Field("labels[2].date", "text"), Field("labels[2].state", STATES)])

    def test_pairs_refuses_bad_input(self):
        self.assert_bad_input_is_refused(["pairs"], {"observations": DOCUMENT["observations"]}, [
            Field("", "object"), Field("observations", "list"), Field("observations[1]", "object"),
            Field("observations[1].date", "text"), Field("observations[1].sourceID", "text"),
            Field("observations[1].signalID", "text"), Field("observations[1].value", "number")])


if __name__ == "__main__":
    unittest.main()
