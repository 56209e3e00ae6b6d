"""Holds the signal-processing contract to the page that explains its words, and to itself."""

import json
import os
import pathlib
import re
import unittest

SOURCE = pathlib.Path(os.environ["TIDEWELL_SOURCE"])
REFERENCE = SOURCE / "docs" / "reference"
CONTRACT = json.loads((SOURCE / "KestrelKit" / "resources" / "signal-processing-contract.json").read_text("utf-8"))
PAGE = (REFERENCE / "signal-contract.md").read_text("utf-8")
BATCH, REQUEST = (json.loads((REFERENCE / "schemas" / f"{kind}.schema.json").read_text("utf-8"))
                  for kind in ("aggregate-batch", "sync-request"))
COLLECTORS = BATCH["properties"]["sourceType"]["enum"]
AGGREGATES = BATCH["$defs"]["record"]["properties"]["dataType"]["enum"]
ORIGINS = REQUEST["$defs"]["record"]["properties"]["source"]["enum"]
SYNCED = REQUEST["$defs"]["record"]["properties"]["dataType"]["enum"]
BOLDNESS = ["excluded", "evaluation", "production"]


def words_of(key):
    section = re.search(rf"^## `{key}`\n(.*?)(?=^## |\Z)", PAGE, re.MULTILINE | re.DOTALL)[1]
    return re.findall(r"^\| `([a-zA-Z0-9_]+)` \| \S", section, re.MULTILINE)


class SignalContract(unittest.TestCase):
    maxDiff = None

    def test_every_word_is_explained_and_every_explained_word_is_used(self):
        keys = re.findall(r"^## `(\w+)`$", PAGE, re.MULTILINE)
        self.assertEqual(keys, ["sources", "valueKind", "unit", "consentTier", "retention", "backfill", "localProcessing",
                                "cloudSync", "serverProcessing", "classifierPosture", "eraseScope", "unevaluatedReason"])
        for key in keys:
            used = set()
            for signal in CONTRACT["signals"]:
                value = signal.get(key, [])
                used.update(value if isinstance(value, list) else [value])
                if key == "classifierPosture":
                    used.update(signal["classifierPostureBySource"].values())
            with self.subTest(key=key):
                words = words_of(key)
                self.assertEqual(len(words), len(set(words)))
                self.assertEqual(set(words), used)

    def test_every_collector_is_explained(self):
        section = PAGE.split("## Emission sets")[1]
        self.assertEqual(sorted(re.findall(r"^\| `(\w+)` \|", section, re.MULTILINE)),
                         sorted(CONTRACT["collectorEmissionSets"]))

    def test_every_data_type_has_one_entry_in_the_order_of_their_declaration(self):
        self.assertEqual([signal["dataType"] for signal in CONTRACT["signals"]], AGGREGATES + SYNCED)
        names = [signal["displayName"] for signal in CONTRACT["signals"]]
        self.assertEqual(len(names), len(set(names)))

    def test_every_source_has_a_posture_and_the_signal_the_boldest_of_them(self):
        for signal in CONTRACT["signals"]:
            with self.subTest(signal=signal["dataType"]):
                postures = signal["classifierPostureBySource"]
                self.assertEqual(sorted(postures), sorted(signal["sources"]))
                self.assertEqual(signal["classifierPosture"], max(postures.values(), key=BOLDNESS.index))

    def test_only_the_three_signals_that_may_feed_production_do(self):
        self.assertEqual([signal["dataType"] for signal in CONTRACT["signals"]
                          if "production" in signal["classifierPostureBySource"].values()],
                         ["steps_daily", "sleep_minutes_daily", "hrv_ms_daily_avg"])
        for signal in CONTRACT["signals"]:
            self.assertEqual(signal["serverProcessing"] == "classification", signal["classifierPosture"] == "production")

    def test_aggregates_come_from_collectors_and_synced_values_from_origins(self):
        for signal in CONTRACT["signals"]:
            allowed = COLLECTORS if signal["dataType"] in AGGREGATES else ORIGINS
            with self.subTest(signal=signal["dataType"]):
                self.assertTrue(signal["sources"])
                self.assertLessEqual(set(signal["sources"]), set(allowed))

    def test_the_emission_sets_are_what_the_sources_say(self):
        synced = {signal["dataType"]: signal["sources"] for signal in CONTRACT["signals"] if signal["dataType"] in SYNCED}
        for collector, emitted in CONTRACT["collectorEmissionSets"].items():
            expected = [name for name in SYNCED if collector in synced[name]]
            self.assertEqual(emitted, (AGGREGATES if collector == "ios" else []) + expected)

    def test_ranges_are_ranges(self):
        for signal in CONTRACT["signals"]:
            with self.subTest(signal=signal["dataType"]):
                if signal["valueKind"] == "text":
                    self.assertNotIn("minimum", signal)
                    self.assertNotIn("maximum", signal)
                else:
                    self.assertLess(signal["minimum"], signal["maximum"])
                if signal["unit"] == "min":
                    self.assertEqual((signal["minimum"], signal["maximum"]), (0, 25 * 60))
                self.assertEqual(signal["integer"], signal["valueKind"] in ("count", "category"))


if __name__ == "__main__":
    unittest.main()
