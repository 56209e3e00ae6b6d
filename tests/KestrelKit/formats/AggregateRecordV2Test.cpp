#include <KestrelKit/formats/AggregateRecordV2.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RandomAggregates.h>
#include <support/ReadBack.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <limits>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

using DataType = AggregateRecordV2::DataType;

constexpr std::string_view day = "2024-05-01";
constexpr std::string_view other = "daily:2024-04-30:photo_count_daily:0";
const Instant captured = instantSinceReferenceDate(736'315'200);  // 2024-05-02T04:00:00Z

// ---- The types.

TEST(AggregateRecordV2DataType, spellsAllEighteen) {
  const std::pair<DataType, std::string_view> rows[] = {
      {DataType::motionActiveMinutesDaily, "motion_active_minutes_daily"},
      {DataType::calendarEventCountDaily, "calendar_event_count_daily"},
      {DataType::calendarBusyMinutesDaily, "calendar_busy_minutes_daily"},
      {DataType::calendarLateNightEventCountDaily, "calendar_late_night_event_count_daily"},
      {DataType::photoCountDaily, "photo_count_daily"},
      {DataType::weatherTemperatureMaxCDaily, "weather_temperature_max_c_daily"},
      {DataType::weatherTemperatureMinCDaily, "weather_temperature_min_c_daily"},
      {DataType::weatherSunshineMinutesDaily, "weather_sunshine_minutes_daily"},
      {DataType::weatherDaylightMinutesDaily, "weather_daylight_minutes_daily"},
      {DataType::weatherPrecipitationMMDaily, "weather_precipitation_mm_daily"},
      {DataType::weatherCodeDaily, "weather_code_daily"},
      {DataType::workoutCountDaily, "workout_count_daily"},
      {DataType::workoutMinutesDaily, "workout_minutes_daily"},
      {DataType::workoutTypeDiversityDaily, "workout_type_diversity_daily"},
      {DataType::workoutLateEveningMinutesDaily, "workout_late_evening_minutes_daily"},
      {DataType::exerciseMinutesDaily, "exercise_minutes_daily"},
      {DataType::standHoursDaily, "stand_hours_daily"},
      {DataType::activeEnergyKcalDaily, "active_energy_kcal_daily"},
  };
  ASSERT_EQ(DataType::allCases.size(), std::size(rows));
  std::size_t index = 0;
  for (const auto& [dataType, text] : rows) {
    EXPECT_EQ(DataType::allCases[index++], dataType);
    EXPECT_EQ(dataType.rawValue(), text);
  }
}

// ---- Fields.

const std::vector<testing::FieldRow>& fieldRows() {
  static const std::vector<testing::FieldRow> rows = {
      {"upstreamRecordId", R"("daily:x")", "1", "expected text, found a number"},
      {"date", R"("2024-05-01")", "20240501", "expected text, found a number"},
      {"capturedAt", R"("2024-05-02T04:00:00Z")", R"("2024-02-30T04:00:00Z")",
       R"("2024-02-30T04:00:00Z" is not an instant such as 2024-05-01T08:30:00Z)"},
      {"dataType", R"("photo_count_daily")", R"("photo_count_dayly")",
       "\"photo_count_dayly\" is not one of motion_active_minutes_daily, calendar_event_count_daily, "
       "calendar_busy_minutes_daily, calendar_late_night_event_count_daily, photo_count_daily, "
       "weather_temperature_max_c_daily, weather_temperature_min_c_daily, weather_sunshine_minutes_daily, "
       "weather_daylight_minutes_daily, weather_precipitation_mm_daily, weather_code_daily, "
       "workout_count_daily, workout_minutes_daily, workout_type_diversity_daily, "
       "workout_late_evening_minutes_daily, exercise_minutes_daily, stand_hours_daily, "
       "active_energy_kcal_daily; did you mean photo_count_daily?"},
      {"value", "-1.5", "1e400", "1e400 is too large for a 64-bit float", /*isOptional=*/true},
      {"unit", R"("°C")", "[]", "expected text, found a list", /*isOptional=*/true},
      {"sampleCount", "96", "9223372036854775808", "9223372036854775808 is not an integer of 64 bits",
       /*isOptional=*/true},
      {"quality", "0.88", R"("0.88")", "expected a number, found text", /*isOptional=*/true},
      {"replacesUpstreamRecordId", R"("daily:y")", "{}", "expected text, found an object",
       /*isOptional=*/true},
      {"deleted", "true", "1", "expected a boolean, found a number", /*isOptional=*/true},
      {"schemaVersion", "2", "2.5", "2.5 is not an integer of 64 bits"},
      {"originKind", R"("local_permission")", "true", "expected text, found a boolean"},
      {"originId", R"("photos")", "null", "expected text, found null"},
  };
  return rows;
}

TEST(AggregateRecordV2, readsAndWritesEachField) {
  const auto record =
      testing::expectStrictFields<AggregateRecordV2>(JSONCoders::decoder, JSONCoders::encoder, fieldRows());
  EXPECT_EQ(record, (AggregateRecordV2{.upstreamRecordId = "daily:x",
                                       .date = "2024-05-01",
                                       .capturedAt = captured,
                                       .dataType = DataType::photoCountDaily,
                                       .value = -1.5,
                                       .unit = "°C",
                                       .sampleCount = 96,
                                       .quality = 0.88,
                                       .replacesUpstreamRecordId = "daily:y",
                                       .deleted = true,
                                       .schemaVersion = 2,
                                       .originKind = "local_permission",
                                       .originId = "photos"}));
}

TEST(AggregateRecordV2, failsForAValueOfAnotherTypeInAnyField) {
  testing::expectOtherTypesRefused<AggregateRecordV2>(JSONCoders::decoder, fieldRows());
}

TEST(AggregateRecordV2, takesAnyVersionOriginAndIdentity) {
  auto rows = fieldRows();
  for (const auto& [key, value] : {std::pair{"schemaVersion", "-7"},
                                   {"originKind", "\"\""},
                                   {"date", "\"\""},
                                   {"upstreamRecordId", "\"\""},
                                   {"sampleCount", "-1"},
                                   {"quality", "-1e308"}}) {
    for (testing::FieldRow& row : rows) {
      row.value = row.key == key ? value : row.value;
    }
  }
  EXPECT_EQ(testing::errorOf<AggregateRecordV2>(JSONCoders::decoder, testing::objectOf(rows)), "none");
}

TEST(AggregateRecordV2, failsForAnInstantThatIsNone) {
  for (const char* text : {"", "yesterday", "2024-05-01", "2024-05-01T08:30:00", "2024-05-01T24:00:00Z",
                           "2024-05-01T08:30:00.5Z", "2024-05-01 08:30:00Z", "2024-05-01T08:30:00+02"}) {
    auto rows = fieldRows();
    rows[2].value = '"' + std::string(text) + '"';
    EXPECT_EQ(testing::errorOf<AggregateRecordV2>(JSONCoders::decoder, testing::objectOf(rows)),
              "capturedAt: \"" + std::string(text) + "\" is not an instant such as 2024-05-01T08:30:00Z");
  }
}

TEST(AggregateRecordV2, readsBackWhatItWrites) { testing::expectToReadBackWhatItWrites<AggregateRecordV2>(); }

// ---- Records made here.

TEST(AggregateRecordV2, ofAValueIsFilledIn) {
  const auto record = AggregateRecordV2::daily(day, captured, DataType::photoCountDaily, 12, "count",
                                               "photos", 96, 0.88, other);
  EXPECT_EQ(record, (AggregateRecordV2{.upstreamRecordId = AggregateRecordV2::dailyIdentity(
                                           day, DataType::photoCountDaily, 12, "count", 96, 0.88, other),
                                       .date = std::string(day),
                                       .capturedAt = captured,
                                       .dataType = DataType::photoCountDaily,
                                       .value = 12,
                                       .unit = "count",
                                       .sampleCount = 96,
                                       .quality = 0.88,
                                       .replacesUpstreamRecordId = std::string(other),
                                       .deleted = std::nullopt,
                                       .schemaVersion = 2,
                                       .originKind = "local_permission",
                                       .originId = "photos"}));
  const auto bare = AggregateRecordV2::daily(day, captured, DataType::photoCountDaily, 12, "count", "photos");
  EXPECT_EQ(bare.upstreamRecordId,
            AggregateRecordV2::dailyIdentity(day, DataType::photoCountDaily, 12, "count"));
  EXPECT_EQ(bare.sampleCount, std::nullopt);
  EXPECT_EQ(bare.quality, std::nullopt);
  EXPECT_EQ(bare.replacesUpstreamRecordId, std::nullopt);
}

TEST(AggregateRecordV2, ofADeletionEncodesDeletedAndNoValueUnitSampleCountOrQuality) {
  const auto record =
      AggregateRecordV2::dailyDeletion(day, captured, DataType::photoCountDaily, other, "photos");
  EXPECT_EQ(JSONCoders::encoder.encode(record),
            R"({"upstreamRecordId":")" +
                AggregateRecordV2::dailyDeletionIdentity(day, DataType::photoCountDaily, other) +
                R"(","date":"2024-05-01","capturedAt":"2024-05-02T04:00:00Z","dataType":"photo_count_daily",)"
                R"("replacesUpstreamRecordId":"daily:2024-04-30:photo_count_daily:0","deleted":true,)"
                R"("schemaVersion":2,"originKind":"local_permission","originId":"photos"})");
}

TEST(AggregateRecordV2, ofADeletionMayReplaceNothing) {
  const auto record =
      AggregateRecordV2::dailyDeletion(day, captured, DataType::photoCountDaily, std::nullopt, "photos");
  EXPECT_EQ(record.upstreamRecordId,
            AggregateRecordV2::dailyDeletionIdentity(day, DataType::photoCountDaily));
  EXPECT_EQ(record.replacesUpstreamRecordId, std::nullopt);
}

// ---- Identities.

/// One of identity-vectors.json.
struct Vector {
  std::string date{};
  DataType dataType = DataType::photoCountDaily;
  std::optional<double> value{};
  std::optional<std::string> unit{};
  std::optional<std::int64_t> sampleCount{};
  std::optional<double> quality{};
  std::optional<std::string> replacesUpstreamRecordId{};
  std::optional<bool> deleted{};
  std::string identity{};

  static JsonFields jsonFields() {
    using R = Vector;
    static constexpr JsonField fields[] = {
        field<&R::date>("date"),
        field<&R::dataType>("dataType"),
        field<&R::value>("value"),
        field<&R::unit>("unit"),
        field<&R::sampleCount>("sampleCount"),
        field<&R::quality>("quality"),
        field<&R::replacesUpstreamRecordId>("replacesUpstreamRecordId"),
        field<&R::deleted>("deleted"),
        field<&R::identity>("identity"),
    };
    return fields;
  }
};

std::vector<Vector> vectors() {
  const std::ifstream file(IDENTITY_VECTORS);
  std::ostringstream json;
  json << file.rdbuf();
  return JSONCoders::decoder.decode<std::vector<Vector>>(json.view()).value();
}

TEST(AggregateRecordV2Identity, isWhatSha256sumMakesOfTheContent) {
  std::set<std::string> identities;
  for (const Vector& row : vectors()) {
    const std::string identity =
        row.deleted
            ? AggregateRecordV2::dailyDeletionIdentity(row.date, row.dataType, row.replacesUpstreamRecordId)
            : AggregateRecordV2::dailyIdentity(row.date, row.dataType, row.value.value(), row.unit.value(),
                                               row.sampleCount, row.quality, row.replacesUpstreamRecordId);
    EXPECT_EQ(identity, row.identity);
    EXPECT_TRUE(identities.insert(identity).second) << "two vectors have " << identity;
  }
  EXPECT_GE(identities.size(), 40U);
}

std::string identityOf(double value, std::optional<std::int64_t> sampleCount = {},
                       std::optional<double> quality = {}) {
  return AggregateRecordV2::dailyIdentity(day, DataType::photoCountDaily, value, "count", sampleCount,
                                          quality);
}

TEST(AggregateRecordV2Identity, isTheSameForTheSameContentAndAnotherForAnotherQuality) {
  EXPECT_EQ(identityOf(12, 96, 0.88), identityOf(12, 96, 0.88));
  EXPECT_NE(identityOf(12, 96, 0.88), identityOf(12, 96, 0.89));
  EXPECT_NE(identityOf(12, 96, 0.88), identityOf(12, 96, std::nextafter(0.88, 1)));
  EXPECT_NE(identityOf(12, 96, 0.88), identityOf(12, 96));
}

TEST(AggregateRecordV2Identity, tellsApartWhatPrintsAlike) {
  EXPECT_NE(identityOf(0.0), identityOf(-0.0));
  EXPECT_NE(identityOf(12), identityOf(std::nextafter(12, 13)));
  EXPECT_NE(identityOf(12), identityOf(std::nextafter(12, 11)));
  EXPECT_NE(identityOf(12, {}, 0.0), identityOf(12, {}, -0.0));
}

TEST(AggregateRecordV2Identity, isMadeOfTheBitsOfWhatIsNotFinite) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  // printf '2024-05-01|photo_count_daily|7ff0000000000000|count' | sha256sum, and so on.
  const std::pair<double, std::string_view> rows[] = {
      {infinity, "2405a2c1e08f31c7b7c80bcd9e571fd6d6d99495887748e7bb917e72b1db2c0e"},
      {-infinity, "8d5d9839f24b3ea13f66e40fb8081608aae79cb7d91da3792d39fecc548f25b3"},
      {none, "cfb29f387d080e2bf9614a5902f50357a5c6b0141f480043f5d3bb418318a4a0"},
  };
  for (const auto& [value, digest] : rows) {
    EXPECT_EQ(identityOf(value), "daily:2024-05-01:photo_count_daily:" + std::string(digest));
  }
}

TEST(AggregateRecordV2Identity, doesNotDependOnWhoComputedItOrWhen) {
  EXPECT_EQ(
      AggregateRecordV2::daily(day, captured, DataType::photoCountDaily, 12, "count", "photos")
          .upstreamRecordId,
      AggregateRecordV2::daily(day, Instant{}, DataType::photoCountDaily, 12, "count", "").upstreamRecordId);
}

TEST(AggregateRecordV2BaseContentIdentity, leavesOutSampleCountQualityAndReplacement) {
  const auto record = AggregateRecordV2::daily(day, captured, DataType::photoCountDaily, 12, "count",
                                               "photos", 96, 0.88, other);
  EXPECT_EQ(record.baseContentIdentity(), identityOf(12));
  EXPECT_NE(record.baseContentIdentity(), record.upstreamRecordId);
  const auto bare = AggregateRecordV2::daily(day, captured, DataType::photoCountDaily, 12, "count", "photos");
  EXPECT_EQ(bare.baseContentIdentity(), bare.upstreamRecordId);
}

TEST(AggregateRecordV2BaseContentIdentity, ofADeletionIsThatOfTheDeletionWithoutReplacement) {
  auto record = AggregateRecordV2::dailyDeletion(day, captured, DataType::photoCountDaily, other, "photos");
  EXPECT_EQ(record.baseContentIdentity(),
            AggregateRecordV2::dailyDeletionIdentity(day, DataType::photoCountDaily));
  record.value = 12;
  record.unit = "count";
  EXPECT_EQ(record.baseContentIdentity(),
            AggregateRecordV2::dailyDeletionIdentity(day, DataType::photoCountDaily));
  record.deleted = false;
  EXPECT_EQ(record.baseContentIdentity(), identityOf(12));
}

TEST(AggregateRecordV2BaseContentIdentity, isAbsentWhereARecordHasNoContent) {
  auto record = AggregateRecordV2::daily(day, captured, DataType::photoCountDaily, 12, "count", "photos");
  record.unit.reset();
  EXPECT_EQ(record.baseContentIdentity(), std::nullopt);
  record.unit = "count";
  record.value.reset();
  EXPECT_EQ(record.baseContentIdentity(), std::nullopt);
  record.deleted = false;
  EXPECT_EQ(record.baseContentIdentity(), std::nullopt);
}

TEST(AggregateRecordV2Identity, changesWithEveryPart) {
  EXPECT_TRUE(rc::check("any two records", [](const AggregateRecordV2& one, const AggregateRecordV2& two) {
    const auto identity = [](const AggregateRecordV2& record) {
      return AggregateRecordV2::dailyIdentity(record.date, record.dataType, record.value.value_or(0),
                                              record.unit.value_or(""), record.sampleCount, record.quality,
                                              record.replacesUpstreamRecordId);
    };
    // Each part of `one` in turn taken from `two`; the texts hold none of the characters that part them.
    const std::string whole = identity(one);
    const auto differs = [&](auto AggregateRecordV2::*part) {
      AggregateRecordV2 changed = one;
      changed.*part = two.*part;
      return (identity(changed) != whole) == (one.*part != two.*part);
    };
    RC_ASSERT(differs(&AggregateRecordV2::date));
    RC_ASSERT(differs(&AggregateRecordV2::dataType));
    RC_ASSERT(differs(&AggregateRecordV2::sampleCount));
    RC_ASSERT(differs(&AggregateRecordV2::replacesUpstreamRecordId));
    AggregateRecordV2 negative = one;
    negative.value = -one.value.value_or(0);
    RC_ASSERT(identity(negative) != whole);
  }));
}

}  // namespace
}  // namespace kestrel
