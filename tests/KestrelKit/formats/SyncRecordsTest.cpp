#include <KestrelKit/formats/SyncRecord.h>
#include <KestrelKit/formats/SyncRequest.h>
#include <KestrelKit/formats/SyncResponse.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RandomAggregates.h>
#include <support/ReadBack.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

using DataType = SyncRecord::DataType;
using Origin = SyncRecord::Origin;

const std::string bare = R"({"dataType":"steps_daily","source":"ios","deviceId":"phone","sampleUuid":"s",)"
                         R"("capturedAt":"2024-05-02T04:00:00Z","tzIdentifier":"Europe/Zurich"})";

TEST(SyncRecordDataType, spellsAllSix) {
  const std::pair<DataType, std::string_view> rows[] = {
      {DataType::stepsDaily, "steps_daily"},
      {DataType::sleepMinutesDaily, "sleep_minutes_daily"},
      {DataType::hrvMsDailyAvg, "hrv_ms_daily_avg"},
      {DataType::spo2DailyAvg, "spo2_daily_avg"},
      {DataType::hrRestingDailyAvg, "hr_resting_daily_avg"},
      {DataType::moodSelfreport, "mood_selfreport"},
  };
  ASSERT_EQ(DataType::allCases.size(), std::size(rows));
  std::size_t index = 0;
  for (const auto& [dataType, text] : rows) {
    EXPECT_EQ(DataType::allCases[index++], dataType);
    EXPECT_EQ(dataType.rawValue(), text);
  }
}

TEST(SyncRecordOrigin, spellsAllThree) {
  ASSERT_EQ(Origin::allCases.size(), 3U);
  EXPECT_EQ(Origin(Origin::ios).rawValue(), "ios");
  EXPECT_EQ(Origin(Origin::watch).rawValue(), "watch");
  EXPECT_EQ(Origin(Origin::manual).rawValue(), "manual");
}

std::vector<testing::FieldRow> recordRows() {
  return {
      {"dataType", R"("mood_selfreport")", R"("mood_self_report")",
       "\"mood_self_report\" is not one of steps_daily, sleep_minutes_daily, hrv_ms_daily_avg, "
       "spo2_daily_avg, "
       "hr_resting_daily_avg, mood_selfreport; did you mean mood_selfreport?"},
      {"value", "8241.5", "true", "expected a number, found a boolean", /*isOptional=*/true},
      {"stringValue", R"("Hypomania")", "1", "expected text, found a number", /*isOptional=*/true},
      {"unit", R"("count")", "false", "expected text, found a boolean", /*isOptional=*/true},
      {"source", R"("watch")", R"("Watch")",
       R"("Watch" is not one of ios, watch, manual; did you mean watch?)"},
      {"deviceId", R"("watch 7")", "7", "expected text, found a number"},
      {"sampleUuid", R"("not a UUID")", "[]", "expected text, found a list"},
      {"capturedAt", R"("2024-05-02T04:00:00Z")", R"("2024-05-02T04:00:00")",
       R"("2024-05-02T04:00:00" is not an instant such as 2024-05-01T08:30:00Z)"},
      {"tzIdentifier", R"("Europe/Zurich")", "null", "expected text, found null"},
      {"metadata", R"({"app":"3","ä":""})", R"("app")", "expected an object, found text",
       /*isOptional=*/true},
  };
}

TEST(SyncRecord, readsAndWritesEachField) {
  const auto record =
      testing::expectStrictFields<SyncRecord>(JSONCoders::decoder, JSONCoders::encoder, recordRows());
  EXPECT_EQ(record, (SyncRecord{.dataType = DataType::moodSelfreport,
                                .value = 8241.5,
                                .stringValue = "Hypomania",
                                .unit = "count",
                                .source = Origin::watch,
                                .deviceId = "watch 7",
                                .sampleUuid = "not a UUID",
                                .capturedAt = instantSinceReferenceDate(736'315'200),
                                .tzIdentifier = "Europe/Zurich",
                                .metadata = {{{"app", "3"}, {"ä", ""}}}}));
}

TEST(SyncRecord, failsForAValueOfAnotherTypeInAnyField) {
  testing::expectOtherTypesRefused<SyncRecord>(JSONCoders::decoder, recordRows());
}

TEST(SyncRecord, failsForMetadataThatIsNoText) {
  auto rows = recordRows();
  for (const auto& [metadata, error] : {
           std::pair{R"({"app":3})", "metadata.app: expected text, found a number"},
           {R"({"app":null})", "metadata.app: expected text, found null"},
           {R"({"a b":[]})", R"(metadata["a b"]: expected text, found a list)"},
       }) {
    rows.back().value = metadata;
    EXPECT_EQ(testing::errorOf<SyncRecord>(JSONCoders::decoder, testing::objectOf(rows)), error);
  }
}

TEST(SyncRecord, withOnlyTheRequiredFieldsHasNoValueStringValueUnitOrMetadata) {
  const auto record = JSONCoders::decoder.decode<SyncRecord>(bare);
  ASSERT_TRUE(record);
  EXPECT_EQ(record->value, std::nullopt);
  EXPECT_EQ(record->stringValue, std::nullopt);
  EXPECT_EQ(record->unit, std::nullopt);
  EXPECT_EQ(record->metadata, std::nullopt);
  EXPECT_EQ(JSONCoders::encoder.encode(*record), bare);
}

TEST(SyncRecord, withTheDataTypeStepsFails) {
  std::string json = bare;
  json.replace(json.find("steps_daily"), 11, "steps");
  EXPECT_EQ(
      testing::errorOf<SyncRecord>(JSONCoders::decoder, json),
      "dataType: \"steps\" is not one of steps_daily, sleep_minutes_daily, hrv_ms_daily_avg, spo2_daily_avg, "
      "hr_resting_daily_avg, mood_selfreport");
}

TEST(SyncRecord, keepsEmptyMetadata) {
  std::string json = bare;
  json.insert(json.size() - 1, R"(,"metadata":{})");
  const auto record = JSONCoders::decoder.decode<SyncRecord>(json);
  ASSERT_TRUE(record);
  EXPECT_TRUE(record->metadata.has_value());
  EXPECT_EQ(JSONCoders::encoder.encode(*record), json);
}

TEST(SyncRequest, readsAndWritesItsRecords) {
  const std::vector<testing::FieldRow> rows = {
      {"records", '[' + bare + ',' + bare + ']', "7", "expected a list, found a number"}};
  const auto request =
      testing::expectStrictFields<SyncRequest>(JSONCoders::decoder, JSONCoders::encoder, rows);
  EXPECT_EQ(request.records.size(), 2U);
  testing::expectOtherTypesRefused<SyncRequest>(JSONCoders::decoder, rows);
}

TEST(SyncRequest, failsForOneRecordThatDoes) {
  std::string wrong = bare;
  wrong.replace(wrong.find("\"ios\""), 5, "\"phone\"");
  EXPECT_EQ(testing::errorOf<SyncRequest>(JSONCoders::decoder, R"({"records":[)" + bare + ',' + wrong + "]}"),
            R"(records[1].source: "phone" is not one of ios, watch, manual)");
  EXPECT_EQ(testing::errorOf<SyncRequest>(JSONCoders::decoder, R"({"records":[{}]})"),
            "records[0].dataType: is missing");
}

TEST(SyncRequest, readsBackWhatItWrites) { testing::expectToReadBackWhatItWrites<SyncRequest>(); }

TEST(SyncResponse, readsAndWritesEachField) {
  const std::vector<testing::FieldRow> rows = {
      {"accepted", "1", "1e19", "1e19 is not an integer of 64 bits"},
      {"rejected", R"([{"index":1,"reason":"late"}])", "null", "expected a list, found null"},
  };
  const auto response =
      testing::expectStrictFields<SyncResponse>(JSONCoders::decoder, JSONCoders::encoder, rows);
  EXPECT_EQ(response, (SyncResponse{.accepted = 1, .rejected = {{.index = 1, .reason = "late"}}}));
  testing::expectOtherTypesRefused<SyncResponse>(JSONCoders::decoder, rows);
}

TEST(SyncResponse, mayRejectNothing) {
  const auto response = JSONCoders::decoder.decode<SyncResponse>(R"({"accepted":0,"rejected":[]})");
  ASSERT_TRUE(response);
  EXPECT_EQ(*response, SyncResponse{});
}

TEST(SyncResponse, withoutRejectedFails) {
  EXPECT_EQ(testing::errorOf<SyncResponse>(JSONCoders::decoder, R"({"accepted":0})"), "rejected: is missing");
}

TEST(SyncRecordError, readsAndWritesEachField) {
  const std::vector<testing::FieldRow> rows = {
      {"index", "0", "0.5", "0.5 is not an integer of 64 bits"},
      {"reason", R"("")", "0", "expected text, found a number"},
  };
  const auto error = testing::expectStrictFields<SyncResponse::SyncRecordError>(JSONCoders::decoder,
                                                                                JSONCoders::encoder, rows);
  EXPECT_EQ(error, (SyncResponse::SyncRecordError{.index = 0, .reason = ""}));
  testing::expectOtherTypesRefused<SyncResponse::SyncRecordError>(JSONCoders::decoder, rows);
}

TEST(SyncResponse, readsBackWhatItWrites) { testing::expectToReadBackWhatItWrites<SyncResponse>(); }

}  // namespace
}  // namespace kestrel
