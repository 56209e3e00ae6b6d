"""Runs kestrel check with every kind of record: as it should be, with each field wrong in each way, and with elements
that a lossy list loses."""

import json
import os
import pathlib
import unittest

from kestrel_test_case import HUGE, Field, KestrelTestCase, Raw, run, with_value, without, written

REFERENCE = pathlib.Path(os.environ["TIDEWELL_SOURCE"]) / "docs/reference"
EXAMPLES = REFERENCE / "examples"
STATES = ["Psychosis", "Mixed Episode", "Mania", "Hypomania", "Euthymia", "Dysthymia", "Moderate Depression",
          "Severe Depression", "Unknown"]
SOURCES = ["manual", "keyword", "algorithmic"]
DATA_TYPES = [
    "motion_active_minutes_daily", "calendar_event_count_daily", "calendar_busy_minutes_daily",
    "calendar_late_night_event_count_daily", "photo_count_daily", "weather_temperature_max_c_daily",
    "weather_temperature_min_c_daily", "weather_sunshine_minutes_daily", "weather_daylight_minutes_daily",
    "weather_precipitation_mm_daily", "weather_code_daily", "workout_count_daily", "workout_minutes_daily",
    "workout_type_diversity_daily", "workout_late_evening_minutes_daily", "exercise_minutes_daily", "stand_hours_daily",
    "active_energy_kcal_daily"]
SYNCED = ["steps_daily", "sleep_minutes_daily", "hrv_ms_daily_avg", "spo2_daily_avg", "hr_resting_daily_avg",
          "mood_selfreport"]


def fields(prefix, **forms):
    """The fields of a record at `prefix`; a form that ends in a question mark is of one that may be absent."""
    def field(name, form):
        optional = isinstance(form, str) and form.endswith("?")
        return Field(prefix + name, form.removesuffix("?") if optional else form, optional)
    return [field(name, form) for name, form in forms.items()]


def paths(schema, node, path=""):
    """The paths of all that a schema describes below a node of it; of a list the first element, of a map one value."""
    if node is True:  # takes anything
        return []
    node = node.get("anyOf", [node])[0]
    if "$ref" in node:
        node = schema["$defs"][node["$ref"].removeprefix("#/$defs/")]
    below = [(f"{path}.{name}" if path else name, inner) for name, inner in node.get("properties", {}).items()]
    below += [(path + "[0]", node["items"])] if "items" in node else []
    below += [(path + '["a key"]', node["additionalProperties"])] if "additionalProperties" in node else []
    return [each for name, inner in below for each in (name, *paths(schema, inner, name))]


# Of each kind that is read strictly: a document, and its fields.
STRICT = {
    "daily-metrics": (
        {"date": "2024-05-01", "sleep_hours": 7, "posts": 9, "sentiment": 0.5, "steps": 1, "sentiment_stdev": 0.25,
         "avg_hrv": 40},
        fields("", date="text", sleep_hours="number", posts="integer", sentiment="number", steps="integer",
               sentiment_stdev="number?", avg_hrv="number?")),
    "log-event": (
        {"timestamp": "2024-05-01T08:30:00Z", "kind": "shadow", "date": "2024-05-01", "stateRaw": "Manic", "confidence": 80,
         "source": "manual"},
        fields("", timestamp="instant", kind=["classifier", "selfReport", "shadow"], date="text", stateRaw="text",
               confidence="integer?", source="text?")),
    "baseline": ({"avgSleep": 7, "avgPosts": 10, "avgSentiment": 0},
                 fields("", avgSleep="number", avgPosts="number", avgSentiment="number")),
    "classification": (
        {"date": "2024-05-01", "predictedState": "Mania", "confidence": 0.5, "reasons": ["r"], "source": "manual",
         "isConfirmed": True, "selfReportConfidence": 80, "selfReportNotes": "n", "isValidated": False},
        fields("", date="text", predictedState=STATES, confidence="number", reasons="list", source=SOURCES,
               isConfirmed="boolean?", selfReportConfidence="number?", selfReportNotes="text?", isValidated="boolean?")
        + fields("reasons", **{"[0]": "text"})),
    "prediction": ({"date": "2024-05-01", "predictedState": "Mania", "probability": 0.5},
                   fields("", date="text", predictedState=STATES, probability="number")),
    "sleep-session": ({"date": "2024-05-01", "midSleepMinutes": 1, "asleepMinutes": 2},
                      fields("", date="text", midSleepMinutes="number", asleepMinutes="number")),
    "circadian-features": (
        {"date": "2024-05-01", "phaseDeviationHours": 1, "sleepRegularitySDMinutes": 2, "durationSDMinutes": 3,
         "activity": {"m10OnsetHour": 1, "m10": 2, "l5": 3, "mesor": 4, "relativeAmplitude": 5},
         "stepVariabilityCV": 4, "restingHRDeviationBpm": 5, "coverageNights": 1, "daysObserved": 7},
        fields("", date="text", phaseDeviationHours="number?", sleepRegularitySDMinutes="number?",
               durationSDMinutes="number?", activity="object?", stepVariabilityCV="number?",
               restingHRDeviationBpm="number?", coverageNights="number", daysObserved="integer")
        + fields("activity.", m10OnsetHour="number", m10="number", l5="number", mesor="number",
                 relativeAmplitude="number")),
    "aggregate-batch": (
        {"batchId": "6F9619FF-8B86-D011-B42D-00C04FC964FF", "sourceType": "calendar", "sourceInstanceKey": "k",
         "platform": "p", "capturedTimezone": "UTC", "records": [
             {"upstreamRecordId": "u", "date": "2024-05-01", "capturedAt": "2024-05-01T08:30:00Z",
              "dataType": "photo_count_daily", "value": 1, "unit": "count", "sampleCount": 1, "quality": 1,
              "replacesUpstreamRecordId": "r", "deleted": False, "schemaVersion": 2, "originKind": "o", "originId": "i"}]},
        fields("", batchId="uuid", sourceType=["apple_health", "motion_activity", "calendar", "photo_activity", "weather"],
               sourceInstanceKey="text", platform="text", capturedTimezone="text", records="list")
        + fields("records", **{"[0]": "object"})
        + fields("records[0].", upstreamRecordId="text", date="text", capturedAt="instant", dataType=DATA_TYPES,
                 value="number?", unit="text?", sampleCount="integer?", quality="number?",
                 replacesUpstreamRecordId="text?", deleted="boolean?", schemaVersion="integer", originKind="text", originId="text")),
    "aggregate-response": (
        {"accepted": 1, "batchId": "6F9619FF-8B86-D011-B42D-00C04FC964FF", "schemaVersion": 2},
        fields("", accepted="integer", batchId="uuid", schemaVersion="integer")),
    "source-delete-response": ({"deleted": 1, "sourceInstanceKey": "k"},
                               fields("", deleted="integer", sourceInstanceKey="text")),
    "sync-request": (
        {"records": [{"dataType": "steps_daily", "value": 1, "stringValue": "s", "unit": "u", "source": "ios",
                      "deviceId": "d", "sampleUuid": "s", "capturedAt": "2024-05-01T08:30:00Z", "tzIdentifier": "UTC",
                      "metadata": {"a key": "value"}}]},
        fields("", records="list") + fields("records", **{"[0]": "object"})
        + fields("records[0].", dataType=SYNCED, value="number?", stringValue="text?", unit="text?",
                 source=["ios", "watch", "manual"], deviceId="text", sampleUuid="text", capturedAt="instant",
                 tzIdentifier="text", metadata="object?")
        + fields("records[0].metadata", **{'["a key"]': "text"})),
    "sync-response": ({"accepted": 0, "rejected": [{"index": 0, "reason": "r"}]},
                      fields("", accepted="integer", rejected="list") + fields("rejected", **{"[0]": "object"})
                      + fields("rejected[0].", index="integer", reason="text")),
    "contract": (
        {"schemaVersion": 2, "signals": [
            {"dataType": "d", "displayName": "n", "sources": ["s"], "valueKind": "v", "unit": "u", "minimum": 0,
             "maximum": 1, "integer": True, "consentTier": "c", "retention": "r", "backfill": "b",
             "localProcessing": "l", "cloudSync": "c", "serverProcessing": "s", "classifierPosture": "p",
             "classifierPostureBySource": {"a key": "p"}, "eraseScope": "e", "unevaluatedReason": "u"}],
         "collectorEmissionSets": {"a key": ["d"]}},
        fields("", schemaVersion="integer", signals="list", collectorEmissionSets="object?")
        + fields("collectorEmissionSets", **{'["a key"]': "list", '["a key"][0]': "text"})
        + fields("signals", **{"[0]": "object", "[0].sources[0]": "text"})
        + fields("signals[0].", dataType="text", displayName="text", sources="list", valueKind="text", unit="text",
                 minimum="number?", maximum="number?", integer="boolean", consentTier="text", retention="text", backfill="text",
                 localProcessing="text", cloudSync="text", serverProcessing="text", classifierPosture="text",
                 classifierPostureBySource="object", eraseScope="text", unevaluatedReason="text?")
        + fields("signals[0].classifierPostureBySource", **{'["a key"]': "text"})),
    "self-report": ({"state": "Mania", "confidence": 80, "notes": "n", "source": "manual", "keyword": "k"},
                    fields("", state=STATES, confidence="integer", notes="text?", source=SOURCES[:2], keyword="text?")),
    "watch-state": (
        {"version": 1, "deliveryID": "6F9619FF-8B86-D011-B42D-00C04FC964FF", "stateRaw": "Manic", "confidencePercent": 75,
         "generatedAt": "2024-05-01T08:30:00Z"},
        fields("", version="integer", deliveryID="uuid", stateRaw="text", confidencePercent="integer", generatedAt="instant")),
    "watch-receipt": ({"deliveryID": "6F9619FF-8B86-D011-B42D-00C04FC964FF", "receivedAt": "2024-05-01T08:30:00Z"},
                      fields("", deliveryID="uuid", receivedAt="instant")),
    "watch-evidence": (
        {"isPaired": True, "isWatchAppInstalled": True, "isReachable": False, "lastSentAt": "2024-05-01T08:30:00Z",
         "lastSentDeliveryID": "6F9619FF-8B86-D011-B42D-00C04FC964FF", "lastAcknowledgedAt": "2024-05-01T08:30:00Z",
         "lastAcknowledgedDeliveryID": "6F9619FF-8B86-D011-B42D-00C04FC964FF",
         "lastReceivedStateAt": "2024-05-01T08:30:00Z", "lastReceivedState": "Mania", "lastReceivedConfidence": 75,
         "lastError": "e"},
        fields("", isPaired="boolean", isWatchAppInstalled="boolean", isReachable="boolean", lastSentAt="instant?",
               lastSentDeliveryID="uuid?", lastAcknowledgedAt="instant?", lastAcknowledgedDeliveryID="uuid?",
               lastReceivedStateAt="instant?", lastReceivedState="text?",
               lastReceivedConfidence="integer?", lastError="text?")),
}
# Where these have a UUID.
UUIDS = [("aggregate-batch", "batchId"), ("aggregate-response", "batchId"), ("watch-state", "deliveryID"),
         ("watch-receipt", "deliveryID"), ("watch-evidence", "lastSentDeliveryID"),
         ("watch-evidence", "lastAcknowledgedDeliveryID")]

SNAPSHOT = json.loads((EXAMPLES / "dashboard-snapshot.json").read_text(encoding="utf-8"))
# Where it is strict: what lies outside of its lists.
SNAPSHOT_FIELDS = (
    fields("", essential="object?", health="object?", optional="object?")
    + fields("essential.", viz="object?", communication="object?")
    + fields("essential.viz.", summary="object?", daily="list?")
    + fields("essential.viz.summary.", total_posts="integer?", total_days="integer?", avg_sentiment="number?")
    + fields("health.", health="list?", onDeviceAggregates="list?") + fields("optional.", correlation="object?")
    + fields("optional.correlation.", summary="object?")
    + fields("optional.correlation.summary.", total_overlapping_days="integer?", high_risk_days="integer?",
             correlations="object?")
    + fields("optional.correlation.summary.correlations.", posts_vs_sleep="number?", sentiment_vs_sleep="number?",
             steps_vs_posts="number?", steps_vs_sentiment="number?"))
# Where it is lossy.
ELEMENT_FIELDS = (
    fields("essential.viz.daily", **{"[0]": "object"})
    + fields("essential.viz.daily[0].", date="text", posts="integer?", sentiment="number?", sentiment_stdev="number?",
             reply_count="integer?", quote_count="integer?", repost_count="integer?", like_count="integer?",
             follow_count="integer?", mention_count="integer?", link_count="integer?", hashtag_count="integer?",
             avg_post_length="number?", absolutist_rate="number?", late_night_posts="integer?", posts_by_hour="list?")
    + fields("essential.viz.daily[0].posts_by_hour", **{"[0]": "integer"})
    + fields("health.health", **{"[0]": "object"})
    + fields("health.health[0].", date="text", steps="integer?", sleep_hours="number?", avg_hrv="number?",
             hrv_avg="number?", avg_heart_rate="number?", heart_rate_avg="number?", spo2_avg="number?", source="text?")
    + fields("health.onDeviceAggregates", **{"[0]": "object"})
    + fields("health.onDeviceAggregates[0].", date="text", dataType="text", value="number", unit="text",
             sourceType="text", sourceInstanceKey="text", capturedAt="text?", displayName="text?",
             lastSuccessfulAt="text?", freshnessDeadline="text?", stale="boolean?", classifierStatus="text?"))
# Where it takes anything.
SERIES = ["essential.communication.daily_sentiment", "essential.communication.daily_absolutist"]
REPORTS = {"reports": [{"date": "d", "state": "Manic", "confidence": 73, "source": "keyword", "notes": "n",
                        "observedAt": "2024-05-01T08:30:00Z"}, {"date": "e", "state": ""}]}
# Where these are strict, and where lossy; an instant that is none is absent.
REPORTS_FIELDS = fields("", reports="list")
REPORT_FIELDS = (fields("reports", **{"[0]": "object"})
                 + fields("reports[0].", date="text", state="text", source="text?", notes="text?", observedAt="text?"))
TOLERANT = ["reports[0].confidence"]
KINDS = ["daily-metrics", "baseline", "classification", "prediction", "sleep-session", "circadian-features",
         "aggregate-batch", "aggregate-response", "source-delete-response", "sync-request", "sync-response",
         "dashboard-snapshot", "contract", "self-report", "snapshot-self-reports", "log-event",
         "watch-state", "watch-receipt", "watch-evidence"]


class Check(KestrelTestCase):
    def assert_lost(self, kind, document, lines):
        """Expects that `document` is taken but for what `lines` name; gives what is left."""
        done = run("check", kind, input=written(document))
        self.assertEqual((done.returncode, done.stderr), (0, "".join(f"kestrel: {line}\n" for line in lines)))
        return json.loads(done.stdout)

    # Every kind

    def test_an_example_of_each_kind_is_printed_as_it_is(self):
        for kind in KINDS:
            with self.subTest(kind=kind):
                example = (EXAMPLES / f"{kind}.json").read_text(encoding="utf-8")
                self.assertEqual(self.output("check", kind, "--pretty", input=example), example)
                self.assertEqual(self.output("check", kind, str(EXAMPLES / f"{kind}.json"), "--pretty"), example)

    def test_each_strict_record_is_refused_for_each_field_that_is_wrong(self):
        for kind, (document, wrong) in STRICT.items():
            with self.subTest(kind=kind):
                self.assertEqual(self.result("check", kind, document=document), written(document) + "\n")
                self.assert_bad_input_is_refused(["check", kind], document, [Field("", "object"), *wrong])

    def test_every_field_that_a_schema_has_is_among_those_that_are_tried(self):
        tried = {kind: [field.path for field in tries] for kind, (_, tries) in STRICT.items()}
        tried["dashboard-snapshot"] = [field.path for field in SNAPSHOT_FIELDS + ELEMENT_FIELDS] + SERIES
        tried["snapshot-self-reports"] = [field.path for field in REPORTS_FIELDS + REPORT_FIELDS] + TOLERANT
        self.assertEqual(set(tried), set(KINDS))
        for kind, fields_tried in tried.items():
            schema = json.loads((REFERENCE / "schemas" / f"{kind}.schema.json").read_text(encoding="utf-8"))
            self.assertEqual(sorted(fields_tried), sorted(paths(schema, schema)), kind)

    def test_a_uuid_is_taken_in_either_case(self):
        for kind, key in UUIDS:
            document, _ = STRICT[kind]
            with self.subTest(kind=kind, key=key):
                self.assertEqual(self.result("check", kind, document=with_value(document, [key], document[key].lower())),
                                 written(document) + "\n")

    def test_heart_rate_variability_that_is_missing_is_not_one_that_is_not_provided(self):
        document, _ = STRICT["daily-metrics"]
        for changed in (with_value(document, ["avg_hrv"], None), without(document, ["avg_hrv"])):
            self.assertEqual(self.result("check", "daily-metrics", document=changed), written(changed) + "\n")

    def test_what_a_record_does_not_have_is_left_out(self):
        document, _ = STRICT["self-report"]
        strange = {"unknown": [{}], **document, "notes": None}
        self.assertEqual(self.result("check", "self-report", document=strange),
                         written(without(document, ["notes"])) + "\n")

    # What lists lose

    def test_a_snapshot_is_refused_for_what_is_wrong_outside_of_its_lists(self):
        self.assert_bad_input_is_refused(["check", "dashboard-snapshot"], SNAPSHOT,
                                         [Field("", "object"), *SNAPSHOT_FIELDS])

    def test_the_series_of_a_snapshot_are_kept_as_they_are(self):
        for field in fields("", **{path: "any?" for path in SERIES}):
            for value in ("text", 1.5, True, [], {}, [{"date": 7}, None], Raw("1e400"), Raw(HUGE)):
                document = with_value(SNAPSHOT, field.keys, value)
                self.assertEqual(self.result("check", "dashboard-snapshot", document=document), written(document) + "\n")
            self.assertEqual(self.result("check", "dashboard-snapshot", document=with_value(SNAPSHOT, field.keys, None)),
                             written(without(SNAPSHOT, field.keys)) + "\n")

    def test_a_snapshot_loses_exactly_the_element_that_is_wrong(self):
        for field in ELEMENT_FIELDS:
            element = field.path[:field.path.index("[0]")].split(".")
            whole = json.loads(written(SNAPSHOT))
            inner = whole
            for key in element[:-1]:
                inner = inner[key]
            inner[element[-1]].append(inner[element[-1]][0])
            left = without(whole, [*element, 0])
            wrong = [(with_value(whole, field.keys, value), message) for value, message in field.wrong()]
            if not field.optional and not isinstance(field.keys[-1], int):
                wrong.append((without(whole, field.keys), "is missing"))
            for document, message in wrong:
                with self.subTest(field=field.path, message=message):
                    kept = self.assert_lost("dashboard-snapshot", document, [f"{field.path}: {message}"])
                    self.assertEqual(kept, left)

    def test_everything_that_was_lost_is_named_in_its_order(self):
        document = {"health": {"health": [7, {"date": "d"}, None]},
                    "essential": {"viz": {"daily": [{"date": "d", "posts": 1.5}, "x"]}}}
        left = self.assert_lost("dashboard-snapshot", document, [
            "health.health[0]: expected an object, found a number", "health.health[2]: expected an object, found null",
            "essential.viz.daily[0].posts: 1.5 is not an integer of 64 bits",
            "essential.viz.daily[1]: expected an object, found text"])
        self.assertEqual(left, {"essential": {"viz": {"daily": []}}, "health": {"health": [{"date": "d"}]}})

    def test_a_refused_document_names_nothing_that_was_lost(self):
        for text, message in (('{"health":{"health":[7]},"essential":7}', "essential: expected an object, found a number"),
                              ('{"health":{"health":[7]}', "the document is not well-formed JSON at byte 24"),
                              ('{"health":{"health":[{"steps":01}]}}', "the document is not well-formed JSON at byte 30"),
                              ('{"ignored":["\\q"]}', "the document has a malformed escape at byte 13")):
            self.assert_refused(run("check", "dashboard-snapshot", input=text), 1, message)

    def test_reports_are_refused_for_what_is_wrong_outside_of_their_list(self):
        self.assert_bad_input_is_refused(["check", "snapshot-self-reports"], REPORTS, [Field("", "object"), *REPORTS_FIELDS])

    def test_a_report_is_lost_for_what_is_wrong_but_not_for_its_confidence(self):
        for field in REPORT_FIELDS:
            wrong = [(with_value(REPORTS, field.keys, value), message) for value, message in field.wrong()]
            if not field.optional and not isinstance(field.keys[-1], int):
                wrong.append((without(REPORTS, field.keys), "is missing"))
            for document, message in wrong:
                with self.subTest(field=field.path, message=message):
                    self.assertEqual(self.assert_lost("snapshot-self-reports", document, [f"{field.path}: {message}"]),
                                     {"reports": REPORTS["reports"][1:]})
        keys = ["reports", 0, "confidence"]
        for value in ("80", True, [], {}, None, Raw("1e400"), ...):
            document = without(REPORTS, keys) if value is ... else with_value(REPORTS, keys, value)
            self.assertEqual(self.assert_lost("snapshot-self-reports", document, []), without(REPORTS, keys))
        for value, percent in ((72.5, 73), (Raw("80.0"), 80), (-0.5, -1)):
            self.assertEqual(self.assert_lost("snapshot-self-reports", with_value(REPORTS, keys, value), []),
                             with_value(REPORTS, keys, percent))

    def test_an_instant_with_a_fraction_is_written_in_whole_seconds(self):
        keys = ["reports", 0, "observedAt"]
        for text, instant in (("2024-05-01T08:30:00.250Z", "2024-05-01T08:30:00Z"),
                              ("2024-05-01T10:30:59.999+02:00", "2024-05-01T08:30:59Z")):
            self.assertEqual(self.assert_lost("snapshot-self-reports", with_value(REPORTS, keys, text), []),
                             with_value(REPORTS, keys, instant))
        self.assertEqual(self.assert_lost("snapshot-self-reports", with_value(REPORTS, keys, "yesterday"), []),
                         without(REPORTS, keys))

    def test_a_confidence_beyond_64_bits_breaks_a_rule(self):
        keys = ["reports", 0, "confidence"]
        for literal in ("1e30", "-1e30", "9223372036854775808", "1e308"):
            self.assert_refused(run("check", "snapshot-self-reports", input=written(with_value(REPORTS, keys, Raw(literal)))),
                                4, "reports[0].confidence: a confidence lies beyond 64 bits")
        lost = with_value(with_value(REPORTS, keys, Raw("1e30")), ["reports", 0, "date"], 7)
        self.assert_lost("snapshot-self-reports", lost, ["reports[0].date: expected text, found a number"])

    # Wrong use

    def test_a_kind_that_is_none_is_answered_with_the_kinds(self):
        done = run("check", "nonsense", input="{}")
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertTrue(done.stderr.startswith('kestrel: KIND: "nonsense" is not one of daily-metrics, '), done.stderr)
        self.assertTrue(done.stderr.endswith(" (see kestrel check --help)\n"))
        for kind in KINDS:
            self.assertIn(kind, done.stderr)
        for name in ("", "Baseline", "baseline ", "baselines"):
            self.assertEqual(run("check", name).returncode, 2)
        self.assert_refused(run("check"), 2, "KIND is required (see kestrel check --help)")
        self.assert_refused(run("check", "baseline", "a", "b"), 2, '"b" is not expected (see kestrel check --help)')
        self.assertEqual(run("check", "nonsense", "/nonexistent/x.json").returncode, 2)
        self.assert_refused(run("check", "baseline", "/nonexistent/x.json"), 3,
                            "/nonexistent/x.json: No such file or directory")


if __name__ == "__main__":
    unittest.main()
