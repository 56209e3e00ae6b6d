"""Runs kestrel identity and kestrel contract as people and scripts do, and the latter from every layout in which the
bundle of the library is found."""

import hashlib
import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from kestrel_test_case import KESTREL, Field, KestrelTestCase, Raw, run, with_value, written

SOURCE = pathlib.Path(os.environ["TIDEWELL_SOURCE"])
CONTRACT = SOURCE / "KestrelKit" / "resources" / "signal-processing-contract.json"
VECTORS = SOURCE / "tests" / "KestrelKit" / "formats" / "identity-vectors.json"
TYPES = ["motion_active_minutes_daily", "calendar_event_count_daily", "calendar_busy_minutes_daily",
         "calendar_late_night_event_count_daily", "photo_count_daily", "weather_temperature_max_c_daily",
         "weather_temperature_min_c_daily", "weather_sunshine_minutes_daily", "weather_daylight_minutes_daily",
         "weather_precipitation_mm_daily", "weather_code_daily", "workout_count_daily", "workout_minutes_daily",
         "workout_type_diversity_daily", "workout_late_evening_minutes_daily", "exercise_minutes_daily",
         "stand_hours_daily", "active_energy_kcal_daily"]
VALUE = {"date": "2024-05-01", "dataType": "photo_count_daily", "value": 12, "unit": "count", "sampleCount": 3,
         "quality": 0.5, "replacesUpstreamRecordId": "daily:x", "deleted": False}
DELETION = {"date": "2024-05-01", "dataType": "photo_count_daily", "deleted": True}
DUPLICATE = "the contract has two entries of the data type"


def hashed(kind, content):
    """The identity of the content, which begins with the day and the type."""
    return ":".join([kind, *content.split("|")[:2], hashlib.sha256(content.encode()).hexdigest()])


class FormatCommands(KestrelTestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def identities(self, *elements):
        return json.loads(self.result("identity", document=list(elements)))

    # identity

    def test_identity_prints_one_for_each_element_in_order(self):
        rows = json.loads(VECTORS.read_text(encoding="utf-8"))
        self.assertGreaterEqual(len(rows), 40)
        self.assertEqual(json.loads(self.output("identity", str(VECTORS))), [row["identity"] for row in rows])

    def test_identity_takes_both_forms_in_one_list(self):
        value = hashed("daily", "2024-05-01|photo_count_daily|4028000000000000|count|sampleCount:3|"
                                "quality:3fe0000000000000|replaces:daily:x")
        deletion = hashed("daily-delete", "2024-05-01|photo_count_daily|deleted")
        self.assertEqual(self.identities(DELETION, VALUE, DELETION), [deletion, value, deletion])
        self.assertEqual(self.identities(), [])

    def test_identity_takes_deleted_that_is_absent_null_or_false_for_a_value(self):
        bare = {name: field for name, field in VALUE.items() if name != "deleted"}
        self.assertEqual(len(set(self.identities(bare, {**bare, "deleted": None}, VALUE))), 1)

    def test_identity_ignores_in_a_deletion_what_that_does_not_need(self):
        for wrong in ({"value": "much"}, {"unit": []}, {"sampleCount": 1.5}, {"quality": Raw("1e400")}):
            for element in ({**wrong, **DELETION}, {**DELETION, **wrong}):
                self.assertEqual(self.identities(element), self.identities(DELETION))

    def test_identity_of_a_deletion_holds_what_it_replaces(self):
        self.assertEqual(self.identities({**DELETION, "replacesUpstreamRecordId": "daily:x"}),
                         [hashed("daily-delete", "2024-05-01|photo_count_daily|deleted|replaces:daily:x")])

    def test_identity_takes_the_last_of_repeated_keys(self):
        text = '[{"date":"d","dataType":"photo_count_daily","deleted":true,"value":1,"unit":"u","deleted":false}]'
        self.assertEqual(json.loads(self.output("identity", input=text)),
                         [hashed("daily", "d|photo_count_daily|3ff0000000000000|u")])

    def test_identity_tells_the_zeros_apart(self):
        zero, negative = self.identities({**VALUE, "value": 0}, {**VALUE, "value": Raw("-0")})
        self.assertNotEqual(zero, negative)

    def test_identity_refuses_bad_values(self):
        self.assert_bad_input_is_refused(["identity"], [VALUE, DELETION], [
            Field("", "list"), Field("[0]", "object"), Field("[0].date", "text"), Field("[0].dataType", TYPES),
            Field("[0].value", "number"), Field("[0].unit", "text"), Field("[0].sampleCount", "integer", optional=True),
            Field("[0].quality", "number", optional=True), Field("[0].replacesUpstreamRecordId", "text", optional=True)])

    def test_identity_refuses_bad_deletions(self):
        document = [{**DELETION, "replacesUpstreamRecordId": "daily:x"}]
        self.assert_bad_input_is_refused(["identity"], document, [
            Field("", "list"), Field("[0]", "object"), Field("[0].date", "text"), Field("[0].dataType", TYPES),
            Field("[0].replacesUpstreamRecordId", "text", optional=True)])

    def test_identity_refuses_a_deleted_that_is_no_boolean(self):
        for wrong, found in (("true", "text"), (1, "a number"), ([], "a list"), ({}, "an object")):
            done = run("identity", input=json.dumps([DELETION, {**VALUE, "deleted": wrong}]))
            self.assert_refused(done, 1, f"[1].deleted: expected a boolean, found {found}")

    def test_identity_names_the_first_element_that_is_wrong(self):
        done = run("identity", input=json.dumps([VALUE, {**VALUE, "unit": 1}, {**DELETION, "date": 1}, 7]))
        self.assert_refused(done, 1, "[1].unit: expected text, found a number")
        done = run("identity", input=json.dumps([VALUE, {**DELETION, "date": 1}, {**VALUE, "unit": 1}, 7]))
        self.assert_refused(done, 1, "[1].date: expected text, found a number")

    # contract

    def contract(self, change=None):
        contract = json.loads(CONTRACT.read_text(encoding="utf-8"))
        if change:
            change(contract)
        return json.dumps(contract)

    def assert_findings(self, done, findings):
        self.assertEqual((done.returncode, done.stderr), (1 if findings else 0, ""))
        self.assertEqual(json.loads(done.stdout), findings)

    def test_contract_finds_nothing_wrong_with_the_one_in_the_bundle(self):
        self.assertEqual(self.output("contract"), "[]\n")
        self.assertEqual(self.output("contract", str(CONTRACT)), "[]\n")
        self.assertEqual(self.output("contract", "-", input=self.contract()), "[]\n")
        self.assertEqual(self.output("contract", "--pretty"), "[]\n")

    def test_contract_reads_standard_input_only_when_told(self):
        self.assertEqual(self.output("contract", input="nonsense"), "[]\n")
        self.assert_refused(run("contract", "-", input="nonsense"), 1,
                            "the document is not well-formed JSON at byte 0")

    def test_contract_prints_its_findings_and_ends_with_1(self):
        def change(contract):
            contract["signals"][4]["classifierPosture"] = "production"
            contract["signals"][2]["retention"] = "for_ever"
            del contract["signals"][0]
            contract["collectorEmissionSets"]["ios"].remove("weather_code_daily")

        findings = ["missing:motion_active_minutes_daily", "retention:calendar_busy_minutes_daily",
                    "unexpected_production:photo_count_daily", "missing_collector_emission:weather_code_daily"]
        done = run("contract", "-", input=self.contract(change))
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (1, json.dumps(findings, separators=(",", ":")) + "\n", ""))
        done = run("contract", "--pretty", "-", input=self.contract(change))
        self.assertEqual((done.returncode, done.stdout, done.stderr), (1, json.dumps(findings, indent=2) + "\n", ""))

    def test_contract_of_another_version_or_without_the_phone_has_one_finding(self):
        self.assert_findings(run("contract", "-", input=self.contract(lambda it: it.update(schemaVersion=1, signals=[]))),
                             ["unsupported_schema_version"])
        for sets in (None, {}, {"watch": []}):
            change = {"collectorEmissionSets": sets}
            self.assert_findings(run("contract", "-", input=self.contract(lambda it, change=change: it.update(change))),
                                 ["missing_ios_collector_emission_set"])

    def test_contract_with_two_entries_of_a_data_type_ends_with_4(self):
        done = run("contract", "-", input=self.contract(lambda it: it["signals"].append(it["signals"][0])))
        self.assert_refused(done, 4, f"{DUPLICATE} \"motion_active_minutes_daily\"")

    def test_contract_whose_findings_cannot_be_written_ends_with_3(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            done = subprocess.run([KESTREL, "contract", "-"], input=self.contract(lambda it: it.update(signals=[])),
                                  stdout=full, stderr=subprocess.PIPE, encoding="utf-8", check=False)
        self.assertEqual((done.returncode, done.stderr),
                         (3, "kestrel: standard output: No space left on device\n"))

    def test_contract_refuses_what_is_none(self):
        document = json.loads(self.contract())
        entry = "signals[10]"
        self.assertEqual(len(document["signals"][10]), 18, "the entry with every field")
        fields = [Field("", "object"), Field("signals", "list"), Field("collectorEmissionSets.watch[0]", "text"),
                  Field(f"{entry}.sources", "list"), Field(f"{entry}.sources[0]", "text"), Field(f"{entry}.integer", "boolean"),
                  Field(f"{entry}.classifierPostureBySource", "object"),
                  Field(f"{entry}.minimum", "number", optional=True), Field(f"{entry}.maximum", "number", optional=True),
                  Field(f"{entry}.unevaluatedReason", "text", optional=True)]
        fields += [Field(f"{entry}.{name}", "text") for name in
                   ("dataType", "displayName", "valueKind", "unit", "consentTier", "retention", "backfill",
                    "localProcessing", "cloudSync", "serverProcessing", "classifierPosture", "eraseScope")]
        self.assert_bad_input_is_refused(["contract", "-"], document, fields)
        # What may be left out, or may be 0, with a finding.
        for field in (Field(entry, "object"), Field("schemaVersion", "integer"),
                      Field("collectorEmissionSets", "object", optional=True),
                      Field("collectorEmissionSets.ios", "list")):
            for value, message in field.wrong():
                with self.subTest(field=field.path, value=value):
                    done = run("contract", "-", input=written(with_value(document, field.keys, value)))
                    self.assert_refused(done, 1, f"{field.path}: {message}")

    def test_contract_that_cannot_be_read_ends_with_3(self):
        self.assert_refused(run("contract", "/nonexistent/contract.json"), 3,
                            "/nonexistent/contract.json: No such file or directory")

    # The bundle

    def installed(self, bundle):
        """The program in a folder `bin` of its own, with a bundle in the folder of that name, if any."""
        program = self.folder / "bin" / "kestrel"
        program.parent.mkdir()
        shutil.copy(KESTREL, program)
        if bundle:
            shutil.copytree(CONTRACT.parent, self.folder / bundle / "KestrelKit_KestrelKit.bundle")
        return program

    def run_installed(self, program):
        return subprocess.run([program, "contract"], cwd="/", stdin=subprocess.DEVNULL, capture_output=True,
                              encoding="utf-8", check=False)

    def test_the_bundle_is_found_beside_the_folder_of_an_installed_program(self):
        done = self.run_installed(self.installed("share/kestrel"))
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "[]\n", ""))

    def test_the_bundle_is_found_beside_the_program(self):
        done = self.run_installed(self.installed("bin"))
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "[]\n", ""))

    def test_without_a_bundle_it_ends_with_4(self):
        done = self.run_installed(self.installed(None))
        self.assert_refused(done, 4, "unable to find bundle named KestrelKit_KestrelKit")

    def test_a_bundle_without_the_contract_ends_with_3(self):
        program = self.installed("bin")
        bundle = self.folder / "bin" / "KestrelKit_KestrelKit.bundle"
        (bundle / CONTRACT.name).unlink()
        self.assert_refused(self.run_installed(program), 3, f"{bundle}: it has no signal-processing-contract.json")

    @unittest.skipUnless(pathlib.Path("/proc/self/mem").is_file(), "needs a file that fails in reading")
    def test_a_bundle_whose_contract_fails_in_reading_ends_with_3(self):
        program = self.installed("bin")
        file = self.folder / "bin" / "KestrelKit_KestrelKit.bundle" / CONTRACT.name
        file.unlink()
        file.symlink_to("/proc/self/mem")  # whose first page is never there
        self.assert_refused(self.run_installed(program), 3, f"{file}: it cannot be read")

    def test_a_bundle_whose_contract_is_none_ends_with_1(self):
        program = self.installed("bin")
        file = self.folder / "bin" / "KestrelKit_KestrelKit.bundle" / CONTRACT.name
        for text, message in (("", "the document is not well-formed JSON at byte 0"),
                              ('{"schemaVersion":2}', "signals: is missing"),
                              ('{"schemaVersion":"2","signals":[]}', "schemaVersion: expected an integer, found text")):
            file.write_text(text, encoding="utf-8")
            self.assert_refused(self.run_installed(program), 1, f"{file}: {message}")


if __name__ == "__main__":
    unittest.main()
