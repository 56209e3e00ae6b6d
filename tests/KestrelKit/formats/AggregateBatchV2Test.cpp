#include <KestrelKit/formats/AggregateBatchV2.h>
#include <KestrelKit/formats/AggregateBatchV2Response.h>
#include <KestrelKit/formats/AggregateSourceDeleteResponse.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RandomAggregates.h>
#include <support/ReadBack.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

using SourceType = AggregateBatchV2::SourceType;

const std::string record =
    R"({"upstreamRecordId":"daily:x","date":"2024-05-01","capturedAt":"2024-05-02T04:00:00Z",)"
    R"("dataType":"stand_hours_daily","schemaVersion":2,"originKind":"local_permission","originId":""})";
const std::string uuid = "0B9C6B0E-1F2D-4C57-9C0A-5B1A3E6D7F80";

TEST(AggregateBatchV2SourceType, spellsAllFive) {
  const std::pair<SourceType, std::string_view> rows[] = {
      {SourceType::appleHealth, "apple_health"}, {SourceType::motionActivity, "motion_activity"},
      {SourceType::calendar, "calendar"},        {SourceType::photoActivity, "photo_activity"},
      {SourceType::weather, "weather"},
  };
  ASSERT_EQ(SourceType::allCases.size(), std::size(rows));
  std::size_t index = 0;
  for (const auto& [sourceType, text] : rows) {
    EXPECT_EQ(SourceType::allCases[index++], sourceType);
    EXPECT_EQ(sourceType.rawValue(), text);
  }
}

std::vector<testing::FieldRow> batchRows() {
  return {
      {"batchId", '"' + uuid + '"', R"("0B9C6B0E1F2D4C579C0A5B1A3E6D7F80")",
       R"("0B9C6B0E1F2D4C579C0A5B1A3E6D7F80" is not a UUID)"},
      {"sourceType", R"("weather")", R"("whether")",
       R"("whether" is not one of apple_health, motion_activity, calendar, photo_activity, weather)"},
      {"sourceInstanceKey", R"("phone")", "7", "expected text, found a number"},
      {"platform", R"("ios")", "[]", "expected text, found a list"},
      {"capturedTimezone", R"("Europe/Zurich")", "{}", "expected text, found an object"},
      {"records", '[' + record + ']', record, "expected a list, found an object"},
  };
}

TEST(AggregateBatchV2, readsAndWritesEachField) {
  const auto batch =
      testing::expectStrictFields<AggregateBatchV2>(JSONCoders::decoder, JSONCoders::encoder, batchRows());
  EXPECT_EQ(batch,
            (AggregateBatchV2{.batchId = *uuidFromText(uuid),
                              .sourceType = SourceType::weather,
                              .sourceInstanceKey = "phone",
                              .platform = "ios",
                              .capturedTimezone = "Europe/Zurich",
                              .records = {{.upstreamRecordId = "daily:x",
                                           .date = "2024-05-01",
                                           .capturedAt = instantSinceReferenceDate(736'315'200),
                                           .dataType = AggregateRecordV2::DataType::standHoursDaily}}}));
  testing::expectOtherTypesRefused<AggregateBatchV2>(JSONCoders::decoder, batchRows());
}

TEST(AggregateBatchV2, failsForAnUnknownSourceType) {
  auto rows = batchRows();
  rows[1].value = R"("weathers")";
  EXPECT_EQ(testing::errorOf<AggregateBatchV2>(JSONCoders::decoder, testing::objectOf(rows)),
            "sourceType: \"weathers\" is not one of apple_health, motion_activity, calendar, photo_activity, "
            "weather; did you mean weather?");
}

TEST(AggregateBatchV2, failsForAnUnknownDataTypeInOneOfItsRecords) {
  auto rows = batchRows();
  std::string wrong = record;
  wrong.replace(wrong.find("stand_hours_daily"), 17, "steps_daily");
  rows[5].value = '[' + record + ',' + wrong + ',' + record + ']';
  EXPECT_TRUE(
      testing::errorOf<AggregateBatchV2>(JSONCoders::decoder, testing::objectOf(rows))
          .starts_with("records[1].dataType: \"steps_daily\" is not one of motion_active_minutes_daily, "));
}

TEST(AggregateBatchV2, failsForWhatIsNoRecordAmongItsRecords) {
  for (const auto& [element, message] :
       {std::pair{"null", "expected an object, found null"}, {"[]", "expected an object, found a list"}}) {
    auto rows = batchRows();
    rows[5].value = '[' + record + ',' + element + ']';
    EXPECT_EQ(testing::errorOf<AggregateBatchV2>(JSONCoders::decoder, testing::objectOf(rows)),
              "records[1]: " + std::string(message));
  }
}

TEST(AggregateBatchV2, mayHaveNoRecords) {
  auto rows = batchRows();
  rows[5].value = "[]";
  const auto batch = JSONCoders::decoder.decode<AggregateBatchV2>(testing::objectOf(rows));
  ASSERT_TRUE(batch);
  EXPECT_EQ(JSONCoders::encoder.encode(*batch), testing::objectOf(rows));
}

TEST(AggregateBatchV2, readsBackWhatItWrites) { testing::expectToReadBackWhatItWrites<AggregateBatchV2>(); }

std::vector<testing::FieldRow> responseRows() {
  return {
      {"accepted", "3", "3.5", "3.5 is not an integer of 64 bits"},
      {"batchId", '"' + uuid + '"', R"("")", R"("" is not a UUID)"},
      {"schemaVersion", "2", R"("2")", "expected an integer, found text"},
  };
}

TEST(AggregateBatchV2Response, readsAndWritesEachField) {
  const auto response = testing::expectStrictFields<AggregateBatchV2Response>(
      JSONCoders::decoder, JSONCoders::encoder, responseRows());
  const AggregateBatchV2Response expected{.accepted = 3, .batchId = *uuidFromText(uuid), .schemaVersion = 2};
  EXPECT_EQ(response, expected);
  testing::expectOtherTypesRefused<AggregateBatchV2Response>(JSONCoders::decoder, responseRows());
}

TEST(AggregateBatchV2Response, differsInEachOfItsThreeFields) {
  const AggregateBatchV2Response response{.accepted = 3, .batchId = *uuidFromText(uuid), .schemaVersion = 2};
  auto other = response;
  other.accepted = 4;
  EXPECT_NE(other, response);
  other = response;
  other.batchId = Uuid{};
  EXPECT_NE(other, response);
  other = response;
  other.schemaVersion = 1;
  EXPECT_NE(other, response);
}

TEST(AggregateBatchV2Response, readsBackWhatItWrites) {
  testing::expectToReadBackWhatItWrites<AggregateBatchV2Response>();
}

TEST(AggregateSourceDeleteResponse, readsAndWritesEachField) {
  const std::vector<testing::FieldRow> rows = {
      {"deleted", "412", "true", "expected an integer, found a boolean"},
      {"sourceInstanceKey", R"("phone")", "false", "expected text, found a boolean"},
  };
  const auto response = testing::expectStrictFields<AggregateSourceDeleteResponse>(JSONCoders::decoder,
                                                                                   JSONCoders::encoder, rows);
  const AggregateSourceDeleteResponse expected{.deleted = 412, .sourceInstanceKey = "phone"};
  EXPECT_EQ(response, expected);
  testing::expectOtherTypesRefused<AggregateSourceDeleteResponse>(JSONCoders::decoder, rows);
}

TEST(AggregateSourceDeleteResponse, readsBackWhatItWrites) {
  testing::expectToReadBackWhatItWrites<AggregateSourceDeleteResponse>();
}

}  // namespace
}  // namespace kestrel
