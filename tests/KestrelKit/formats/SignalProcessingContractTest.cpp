#include <KestrelKit/formats/AggregateRecordV2.h>
#include <KestrelKit/formats/BundledSignalProcessingContract.h>
#include <KestrelKit/formats/IOSAggregateSignalContract.h>
#include <KestrelKit/formats/SignalGroup.h>
#include <KestrelKit/formats/SignalProcessingContract.h>
#include <KestrelKit/formats/SyncRecord.h>
#include <KestrelKit/foundation/ResourceBundle.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RandomAggregates.h>
#include <support/ReadBack.h>
#include <support/RecordFields.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

using DataType = AggregateRecordV2::DataType;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// ---- Records.

TEST(SignalGroup, spellsAllSixAsTheirNames) {
  const std::pair<SignalGroup, std::string_view> rows[] = {
      {SignalGroup::essential, "essential"},       {SignalGroup::cardiacRhythm, "cardiacRhythm"},
      {SignalGroup::mentalAudio, "mentalAudio"},   {SignalGroup::bodyNutrition, "bodyNutrition"},
      {SignalGroup::reproductive, "reproductive"}, {SignalGroup::symptoms, "symptoms"},
  };
  ASSERT_EQ(SignalGroup::allCases.size(), std::size(rows));
  std::size_t index = 0;
  for (const auto& [group, text] : rows) {
    EXPECT_EQ(SignalGroup::allCases[index++], group);
    EXPECT_EQ(group.rawValue(), text);
  }
}

std::vector<testing::FieldRow> entryRows() {
  return {
      {"dataType", R"("photo_count_daily")", "1", "expected text, found a number"},
      {"displayName", R"("Photos")", "null", "expected text, found null"},
      {"sources", R"(["photo_activity"])", R"("photo_activity")", "expected a list, found text"},
      {"valueKind", R"("count")", "[]", "expected text, found a list"},
      {"unit", R"("")", "false", "expected text, found a boolean"},
      {"minimum", "-0.5", R"("0")", "expected a number, found text", /*isOptional=*/true},
      {"maximum", "1e+20", "-1e400", "-1e400 is too large for a 64-bit float", /*isOptional=*/true},
      {"integer", "true", "1", "expected a boolean, found a number"},
      {"consentTier", R"("context")", "{}", "expected text, found an object"},
      {"retention", R"("for_ever")", "true", "expected text, found a boolean"},
      {"backfill", R"("none")", "2", "expected text, found a number"},
      {"localProcessing", R"("daily_count")", "3", "expected text, found a number"},
      {"cloudSync", R"("never")", "4", "expected text, found a number"},
      {"serverProcessing", R"("storage")", "5", "expected text, found a number"},
      {"classifierPosture", R"("excluded")", "6", "expected text, found a number"},
      {"classifierPostureBySource", R"({"photo_activity":"excluded"})", "[]",
       "expected an object, found a list"},
      {"eraseScope", R"("device")", "7", "expected text, found a number"},
      {"unevaluatedReason", R"("nominal_code")", "8", "expected text, found a number", /*isOptional=*/true},
  };
}

TEST(SignalProcessingContractEntry, readsAndWritesEachField) {
  const auto entry = testing::expectStrictFields<SignalProcessingContractEntry>(
      JSONCoders::decoder, JSONCoders::encoder, entryRows());
  EXPECT_EQ(entry,
            (SignalProcessingContractEntry{.dataType = "photo_count_daily",
                                           .displayName = "Photos",
                                           .sources = {"photo_activity"},
                                           .valueKind = "count",
                                           .unit = "",
                                           .minimum = -0.5,
                                           .maximum = 1e20,
                                           .integer = true,
                                           .consentTier = "context",
                                           .retention = "for_ever",
                                           .backfill = "none",
                                           .localProcessing = "daily_count",
                                           .cloudSync = "never",
                                           .serverProcessing = "storage",
                                           .classifierPosture = "excluded",
                                           .classifierPostureBySource = {{"photo_activity", "excluded"}},
                                           .eraseScope = "device",
                                           .unevaluatedReason = "nominal_code"}));
  testing::expectOtherTypesRefused<SignalProcessingContractEntry>(JSONCoders::decoder, entryRows());
}

std::vector<testing::FieldRow> contractRows() {
  return {
      {"schemaVersion", "2", "2.5", "2.5 is not an integer of 64 bits"},
      {"signals", '[' + testing::objectOf(entryRows()) + ']', "{}", "expected a list, found an object"},
      {"collectorEmissionSets", R"({"ios":["photo_count_daily"],"watch":[]})", "[]",
       "expected an object, found a list",
       /*isOptional=*/true},
  };
}

TEST(SignalProcessingContract, readsAndWritesEachField) {
  const auto contract = testing::expectStrictFields<SignalProcessingContract>(
      JSONCoders::decoder, JSONCoders::encoder, contractRows());
  EXPECT_EQ(contract.signals.size(), 1U);
  EXPECT_EQ(contract.collectorEmissionSets->at("ios"), std::vector<std::string>{"photo_count_daily"});
  testing::expectOtherTypesRefused<SignalProcessingContract>(JSONCoders::decoder, contractRows());
}

TEST(SignalProcessingContract, namesThePathInsideListsAndMaps) {
  const auto errorWith = [](std::size_t row, const std::string& value) {
    auto rows = contractRows();
    rows[row].value = value;
    return testing::errorOf<SignalProcessingContract>(JSONCoders::decoder, testing::objectOf(rows));
  };
  auto entry = entryRows();
  entry[2].value = "[\"a\",1]";
  EXPECT_EQ(errorWith(1, '[' + testing::objectOf(entry) + ']'),
            "signals[0].sources[1]: expected text, found a number");
  entry = entryRows();
  entry[15].value = R"({"a b":1})";
  EXPECT_EQ(errorWith(1, '[' + testing::objectOf(entry) + ']'),
            R"(signals[0].classifierPostureBySource["a b"]: expected text, found a number)");
  EXPECT_EQ(errorWith(2, R"({"ios":["a",null]})"), "collectorEmissionSets.ios[1]: expected text, found null");
  EXPECT_EQ(errorWith(2, R"({"ios":"a"})"), "collectorEmissionSets.ios: expected a list, found text");
}

TEST(SignalProcessingContract, readsBackWhatItWrites) {
  testing::expectToReadBackWhatItWrites<SignalProcessingContract>();
}

// ---- Validation.

/// An entry for each aggregate, all of them emitted by the phone: valid.
SignalProcessingContract validContract() {
  SignalProcessingContract contract{.collectorEmissionSets = {{{"ios", {}}}}};
  for (const DataType dataType : DataType::allCases) {
    contract.signals.push_back({.dataType = std::string(dataType.rawValue()),
                                .retention = "until_source_erasure",
                                .classifierPosture = "evaluation"});
    contract.collectorEmissionSets->at("ios").emplace_back(dataType.rawValue());
  }
  return contract;
}

SignalProcessingContractEntry& entryOf(SignalProcessingContract& contract, DataType dataType) {
  return *std::ranges::find(contract.signals, dataType.rawValue(), &SignalProcessingContractEntry::dataType);
}

std::vector<std::string> validated(const SignalProcessingContract& contract) {
  return IOSAggregateSignalContract::validate(contract);
}

TEST(IOSAggregateSignalContract, findsNothingWrongWithAnEntryForEachAggregate) {
  EXPECT_THAT(validated(validContract()), IsEmpty());
}

TEST(IOSAggregateSignalContract, yieldsOnlyTheVersionForAnUnsupportedOneWhateverElseItHolds) {
  for (const std::int64_t version : {1, 3, 0, -2}) {
    auto contract = validContract();
    contract.schemaVersion = version;
    EXPECT_THAT(validated(contract), ElementsAre("unsupported_schema_version"));
    contract.signals.push_back(contract.signals.front());  // a duplicate
    contract.signals.back().retention = "for_ever";
    contract.collectorEmissionSets.reset();
    EXPECT_THAT(validated(contract), ElementsAre("unsupported_schema_version"));
  }
}

TEST(IOSAggregateSignalContract, yieldsOnlyTheMissingEmissionSetWithoutOneForIos) {
  auto contract = validContract();
  contract.signals.clear();
  for (const decltype(contract.collectorEmissionSets)& sets : {decltype(contract.collectorEmissionSets)(),
                                                               {{}},
                                                               {{{"watch", {"photo_count_daily"}}}},
                                                               {{{"iOS", {}}}}}) {
    contract.collectorEmissionSets = sets;
    EXPECT_THAT(validated(contract), ElementsAre("missing_ios_collector_emission_set"));
  }
}

TEST(IOSAggregateSignalContract, acceptsStepsInProduction) {
  auto contract = validContract();
  for (const char* dataType : {"steps_daily", "sleep_minutes_daily", "hrv_ms_daily_avg"}) {
    contract.signals.push_back(
        {.dataType = dataType, .retention = "until_source_erasure", .classifierPosture = "production"});
  }
  EXPECT_THAT(validated(contract), IsEmpty());
}

TEST(IOSAggregateSignalContract, refusesPhotosInProduction) {
  auto contract = validContract();
  entryOf(contract, DataType::photoCountDaily).classifierPosture = "production";
  EXPECT_THAT(validated(contract), ElementsAre("unexpected_production:photo_count_daily"));
  entryOf(contract, DataType::photoCountDaily).classifierPosture = "Production";
  EXPECT_THAT(validated(contract), IsEmpty());
}

TEST(IOSAggregateSignalContract, refusesAnyRetentionButUntilSourceErasureAndLooksNoFurther) {
  for (const char* retention : {"", "for_ever", "until_source_erasure ", "Until_source_erasure"}) {
    auto contract = validContract();
    auto& entry = entryOf(contract, DataType::photoCountDaily);
    entry.retention = retention;
    entry.classifierPosture = "production";
    EXPECT_THAT(validated(contract), ElementsAre("retention:photo_count_daily"));
  }
}

TEST(IOSAggregateSignalContract, missesEachEntryThatIsNotThere) {
  for (const DataType dataType : DataType::allCases) {
    auto contract = validContract();
    entryOf(contract, dataType).dataType = "something_else";
    EXPECT_THAT(validated(contract), ElementsAre("missing:" + std::string(dataType.rawValue())));
  }
}

TEST(IOSAggregateSignalContract, missesEachAggregateThatTheIosSetDoesNotList) {
  for (const DataType dataType : DataType::allCases) {
    auto contract = validContract();
    std::erase(contract.collectorEmissionSets->at("ios"), dataType.rawValue());
    contract.collectorEmissionSets->emplace("watch", std::vector{std::string(dataType.rawValue())});
    EXPECT_THAT(validated(contract),
                ElementsAre("missing_collector_emission:" + std::string(dataType.rawValue())));
  }
}

TEST(IOSAggregateSignalContract, yieldsErrorsInTheOrderOfDeclarationThoseOfEntriesFirst) {
  auto contract = validContract();
  std::ranges::reverse(contract.signals);
  entryOf(contract, DataType::photoCountDaily).classifierPosture = "production";
  entryOf(contract, DataType::calendarBusyMinutesDaily).retention = "";
  entryOf(contract, DataType::activeEnergyKcalDaily).dataType = "";
  auto& emitted = contract.collectorEmissionSets->at("ios");
  std::erase(emitted, "weather_code_daily");
  std::erase(emitted, "motion_active_minutes_daily");
  EXPECT_THAT(validated(contract),
              ElementsAre("retention:calendar_busy_minutes_daily", "unexpected_production:photo_count_daily",
                          "missing:active_energy_kcal_daily",
                          "missing_collector_emission:motion_active_minutes_daily",
                          "missing_collector_emission:weather_code_daily"));
}

TEST(IOSAggregateSignalContract, findsEverythingMissingInAnEmptyContract) {
  SignalProcessingContract contract{.collectorEmissionSets = {{{"ios", {}}}}};
  std::vector<std::string> expected;
  for (const char* fault : {"missing:", "missing_collector_emission:"}) {
    for (const DataType dataType : DataType::allCases) {
      expected.push_back(std::string(fault).append(dataType.rawValue()));
    }
  }
  EXPECT_EQ(validated(contract), expected);
}

TEST(IOSAggregateSignalContract, doesNotMindWhatItDoesNotKnow) {
  auto contract = validContract();
  contract.signals.push_back(
      {.dataType = "tomorrow_daily", .retention = "for_ever", .classifierPosture = "production"});
  contract.collectorEmissionSets->at("ios").push_back("tomorrow_daily");
  contract.collectorEmissionSets->at("ios").push_back("tomorrow_daily");
  EXPECT_THAT(validated(contract), IsEmpty());
}

TEST(IOSAggregateSignalContractDeathTest, endsTheProcessForTwoEntriesOfOneDataType) {
  auto contract = validContract();
  contract.signals.push_back(entryOf(contract, DataType::photoCountDaily));
  EXPECT_DEATH(validated(contract),
               "programming error: the contract has two entries of the data type \"photo_count_daily\"");
  // Before the emission set is looked for, and whatever the type.
  contract = validContract();
  contract.signals.resize(2);
  contract.signals[0].dataType = contract.signals[1].dataType = "tomorrow_daily";
  contract.collectorEmissionSets.reset();
  EXPECT_DEATH(validated(contract), "two entries of the data type \"tomorrow_daily\"");
}

// ---- The contract in the bundle.

TEST(BundledSignalProcessingContract, isValid) {
  const auto contract = BundledSignalProcessingContract::load();
  ASSERT_TRUE(contract) << contract.error().message;
  EXPECT_THAT(validated(*contract), IsEmpty());
}

TEST(BundledSignalProcessingContract, isWrittenBackAsItIs) {
  const auto contract = BundledSignalProcessingContract::load();
  ASSERT_TRUE(contract);
  const std::ifstream file(*ResourceBundle::kestrelKit().resource("signal-processing-contract", "json"));
  std::ostringstream json;
  json << file.rdbuf();
  EXPECT_EQ(JSONCoders::encoder.encode(*contract, JsonLayout::indented).value() + '\n', json.view());
}

TEST(BundledSignalProcessingContract, hasAnEntryForEachAggregateAndEachSyncedValue) {
  const auto contract = BundledSignalProcessingContract::load();
  ASSERT_TRUE(contract);
  std::vector<std::string_view> expected;
  for (const DataType dataType : DataType::allCases) {
    expected.push_back(dataType.rawValue());
  }
  for (const SyncRecord::DataType dataType : SyncRecord::DataType::allCases) {
    expected.push_back(dataType.rawValue());
  }
  std::vector<std::string_view> dataTypes;
  for (const SignalProcessingContractEntry& entry : contract->signals) {
    dataTypes.push_back(entry.dataType);
    EXPECT_EQ(entry.retention, "until_source_erasure");
    EXPECT_TRUE(SignalGroup::fromRawValue(entry.consentTier) || entry.consentTier == "context")
        << entry.consentTier;
  }
  EXPECT_EQ(dataTypes, expected);
}

}  // namespace
}  // namespace kestrel
