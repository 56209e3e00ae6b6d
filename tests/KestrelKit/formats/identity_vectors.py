#!/usr/bin/env python3
"""Makes identity-vectors.json, the identities of values and deletions as another tool computes them: the content of each
is put together here, sha256sum hashes it.

    ./identity_vectors.py > identity-vectors.json
"""

import json
import math
import struct
import subprocess
import sys

TYPES = """motion_active_minutes_daily calendar_event_count_daily calendar_busy_minutes_daily
calendar_late_night_event_count_daily photo_count_daily weather_temperature_max_c_daily weather_temperature_min_c_daily
weather_sunshine_minutes_daily weather_daylight_minutes_daily weather_precipitation_mm_daily weather_code_daily
workout_count_daily workout_minutes_daily workout_type_diversity_daily workout_late_evening_minutes_daily
exercise_minutes_daily stand_hours_daily active_energy_kcal_daily""".split()
DAY = "2024-05-01"
OTHER = "daily:2024-04-30:photo_count_daily:" + "0123456789abcdef" * 4


def value(number, unit="count", date=DAY, kind="photo_count_daily", **parts):
    return {"date": date, "dataType": kind, "value": number, "unit": unit, **parts}


def deletion(date=DAY, kind="photo_count_daily", **parts):
    return {"date": date, "dataType": kind, "deleted": True, **parts}


# Values: the zeros, neighbours, the ends of the range, what does not print as it is.
ROWS = [value(number) for number in (
    0.0, -0.0, 12.0, 1.0, math.nextafter(1.0, 2.0), math.nextafter(1.0, 0.0), -1.5, 0.1, 0.3, 0.1 + 0.2, 5e-324, -5e-324,
    2.2250738585072014e-308, sys.float_info.max, -sys.float_info.max, 2.0 ** 53, 2.0 ** 53 + 2, 1e15, 1e-6)]
# Every type.
ROWS += [value(45.5, "min", kind=kind) for kind in TYPES]
# Units: none, outside ASCII, of the characters that part the content, of the same look in two codes.
ROWS += [value(21.5, unit) for unit in ("", "°C", "µg/m³", "分", "😀", "a|b", "\n", "é", "e\u0301")]
# Days: any text.
ROWS += [value(12.0, date=date) for date in ("2024-02-29", "0001-01-01", "yesterday", "", "2024-05-01|", "日")]
# The optional parts.
ROWS += [value(12.0, sampleCount=count) for count in (0, 1, -1, 96, 2 ** 63 - 1, -2 ** 63)]
ROWS += [value(12.0, quality=quality) for quality in (0.0, -0.0, 0.5, math.nextafter(0.5, 1.0), 1.0)]
ROWS += [value(12.0, replacesUpstreamRecordId=identity) for identity in (OTHER, "", "ä")]
ROWS += [value(12.0, sampleCount=3, quality=0.88), value(12.0, sampleCount=3, replacesUpstreamRecordId=OTHER),
         value(12.0, quality=0.88, replacesUpstreamRecordId=OTHER),
         value(-0.0, "°C", sampleCount=3, quality=0.88, replacesUpstreamRecordId=OTHER)]
# Deletions.
ROWS += [deletion(), deletion(replacesUpstreamRecordId=OTHER), deletion(replacesUpstreamRecordId=""),
         deletion(replacesUpstreamRecordId="ä|ö"), deletion(date="2024-02-29"), deletion(date="")]
ROWS += [deletion(kind=kind, replacesUpstreamRecordId=OTHER) for kind in TYPES[:4]]


def bits(number):
    return f"{struct.unpack('>Q', struct.pack('>d', number))[0]:016x}"


def identity(row):
    parts = [row["date"], row["dataType"]]
    parts += ["deleted"] if "deleted" in row else [bits(row["value"]), row["unit"]]
    parts += [f"sampleCount:{row['sampleCount']}"] if "sampleCount" in row else []
    parts += ["quality:" + bits(row["quality"])] if "quality" in row else []
    parts += ["replaces:" + row["replacesUpstreamRecordId"]] if "replacesUpstreamRecordId" in row else []
    hashed = subprocess.run(["sha256sum"], input="|".join(parts).encode(), capture_output=True, check=True).stdout
    return ":".join(["daily-delete" if "deleted" in row else "daily", row["date"], row["dataType"],
                     hashed.decode().split()[0]])


print("[\n " + ",\n ".join(json.dumps({**row, "identity": identity(row)}, ensure_ascii=False) for row in ROWS) + "\n]")
