#include <KestrelKit/formats/SelfReportData.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {
namespace {

const std::string rest = R"(,"source":"manual"})";

std::string errorOf(const std::string& json) {
  return testing::errorOf<SelfReportData>(JSONCoders::decoder, json);
}

TEST(SelfReportData, readsAndWritesEachField) {
  const auto report = testing::expectStrictFields<SelfReportData>(
      JSONCoders::decoder, JSONCoders::encoder,
      {{"state", R"("Mixed Episode")", "2", "expected text, found a number"},
       {"confidence", "80", R"("80")", "expected an integer, found text"},
       {"notes", R"("")", "[]", "expected text, found a list", /*isOptional=*/true},
       {"source", R"("keyword")", R"("algorithmic")", R"("algorithmic" is not one of manual, keyword)"},
       {"keyword", R"("empty")", "false", "expected text, found a boolean", /*isOptional=*/true}});
  EXPECT_EQ(report, (SelfReportData{.state = KestrelState::mixedEpisode,
                                    .confidence = 80,
                                    .notes = "",
                                    .source = SelfReportSource::keyword,
                                    .keyword = "empty"}));
}

TEST(SelfReportData, failsWhoseStateTextIsALegacyName) {
  EXPECT_EQ(
      errorOf(R"({"state":"Hypomanic","confidence":80)" + rest),
      "state: \"Hypomanic\" is not one of Psychosis, Mixed Episode, Mania, Hypomania, Euthymia, Dysthymia, "
      "Moderate Depression, Severe Depression, Unknown; did you mean Hypomania?");
}

TEST(SelfReportData, failsWithoutAConfidence) {
  EXPECT_EQ(errorOf(R"({"state":"Hypomania")" + rest), "confidence: is missing");
  EXPECT_EQ(errorOf(R"({"state":"Hypomania","confidence":null)" + rest),
            "confidence: expected an integer, found null");
}

TEST(SelfReportData, takesWholeConfidencesOnlyAndOfThoseAny) {
  const std::pair<std::string, std::string> rows[] = {
      {"80", "none"},
      {"80.0", "none"},
      {"8e1", "none"},
      {"-1", "none"},
      {"101", "none"},
      {"9223372036854775807", "none"},
      {"72.5", "confidence: 72.5 is not an integer of 64 bits"},
      {"9223372036854775808", "confidence: 9223372036854775808 is not an integer of 64 bits"},
      {"1e400", "confidence: 1e400 is not an integer of 64 bits"},
      {"true", "confidence: expected an integer, found a boolean"},
  };
  for (const auto& [literal, error] : rows) {
    EXPECT_EQ(errorOf(R"({"state":"Hypomania","confidence":)" + literal + rest), error);
  }
}

TEST(SelfReportData, isLeftWithoutWhatIsAbsent) {
  const std::string json = R"({"state":"Hypomania","confidence":80)" + rest;
  const auto report = JSONCoders::decoder.decode<SelfReportData>(json);
  ASSERT_TRUE(report);
  EXPECT_EQ(report->notes, std::nullopt);
  EXPECT_EQ(report->keyword, std::nullopt);
  EXPECT_EQ(JSONCoders::encoder.encode(*report), json);
}

TEST(SelfReportData, tellsTheClassifierAllOfIt) {
  EXPECT_EQ((SelfReportData{.state = KestrelState::dysthymia,
                            .confidence = 55,
                            .notes = "flat",
                            .source = SelfReportSource::keyword,
                            .keyword = "grey"}
                 .userReport()),
            (UserReport{.state = KestrelState::dysthymia,
                        .percentage = 55,
                        .notes = "flat",
                        .origin = SelfReportSource::keyword,
                        .keyword = "grey"}));
  EXPECT_EQ((SelfReportData{.state = KestrelState::mania, .confidence = 1}.userReport()),
            (UserReport{.state = KestrelState::mania, .percentage = 1}));
}

TEST(SelfReportData, readsBackWhatItWrites) {
  EXPECT_TRUE(rc::check("any report", [](std::int64_t confidence, bool hasNotes, bool byKeyword) {
    const auto anyText =
        rc::gen::element<std::string>("", "\"ä⇊\n", "a text that is longer than a short one");
    const auto anyState = rc::gen::inRange<std::size_t>(0, KestrelState::allCases.size());
    SelfReportData report{.state = KestrelState::allCases[*anyState], .confidence = confidence};
    if (hasNotes) {
      report.notes = *anyText;
    }
    if (byKeyword) {
      report.source = SelfReportSource::keyword;
      report.keyword = *anyText;
    }
    const auto json = JSONCoders::encoder.encode(report);
    RC_ASSERT(json.has_value());
    RC_ASSERT((JSONCoders::decoder.decode<SelfReportData>(*json) == report));
  }));
}

}  // namespace
}  // namespace kestrel
