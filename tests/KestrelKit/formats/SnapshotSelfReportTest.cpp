#include <KestrelKit/formats/SnapshotSelfReport.h>
#include <KestrelKit/formats/SnapshotSelfReportList.h>
#include <KestrelKit/foundation/JsonError.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RandomSnapshots.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

using Dropped = std::vector<JsonError>;

constexpr auto most = std::numeric_limits<std::int64_t>::max();
constexpr auto fewest = std::numeric_limits<std::int64_t>::min();

std::vector<SnapshotSelfReport> reportsOf(const std::string& reports, Dropped* dropped = nullptr) {
  const auto list =
      JSONCoders::decoder.decode<SnapshotSelfReportList>(R"({"reports":[)" + reports + "]}", dropped);
  EXPECT_TRUE(list) << list.error().text();
  return list ? list->reports : std::vector<SnapshotSelfReport>{};
}

SnapshotSelfReport reportWith(const std::string& member) {
  const auto reports = reportsOf(R"({"date":"2024-05-01","state":"Mania",)" + member + "}");
  return reports.size() == 1 ? reports.front() : SnapshotSelfReport{.date = "the report was dropped"};
}

const std::string everyField =
    R"({"date":"2024-05-01","state":"Manic","confidence":80,"source":"keyword","notes":"n",)"
    R"("observedAt":"2024-05-01T08:30:00Z"})";

TEST(SnapshotSelfReport, readsAndWritesEachField) {
  const auto reports = reportsOf(everyField);
  EXPECT_EQ(reports, (std::vector<SnapshotSelfReport>{{.date = "2024-05-01",
                                                       .state = "Manic",
                                                       .confidence = 80,
                                                       .source = "keyword",
                                                       .notes = "n",
                                                       .observedAt = instantSinceReferenceDate(736245000)}}));
  EXPECT_EQ(JSONCoders::encoder.encode(SnapshotSelfReportList{reports}),
            R"({"reports":[)" + everyField + "]}");
  const std::string least = R"({"date":"","state":""})";
  EXPECT_EQ(reportsOf(least), std::vector<SnapshotSelfReport>{{}});
  EXPECT_EQ(JSONCoders::encoder.encode(SnapshotSelfReport{}), least);
}

TEST(SnapshotSelfReport, takesAConfidenceThatIsANumberAndRoundsItHalfAwayFromZero) {
  const std::pair<std::string, std::optional<std::int64_t>> rows[] = {
      {"72.5", 73},
      {"80", 80},
      {"80.0", 80},
      {"8e1", 80},
      {"72.4999999999999", 72},
      {"72.49999999999999999999", 73},  // its nearest float is 72.5
      {"0.49999999999999994", 0},
      {"0.5", 1},
      {"-0.5", -1},
      {"-72.5", -73},
      {"-0.4", 0},
      {"-0", 0},
      {"1e-400", 0},
      {"9007199254740993", 9'007'199'254'740'993},  // has no 64-bit float
      {"2251799813685248.5", 2'251'799'813'685'249},
      {"9223372036854775807", most},
      {"-9223372036854775808", fewest},
      {"-9223372036854775808.0", fewest},
      {"9223372036854774784.0", 9'223'372'036'854'774'784},
      {"101", 101},
      {"null", std::nullopt},
      {R"("80")", std::nullopt},
      {"true", std::nullopt},
      {"[80]", std::nullopt},
      {R"({"a":80})", std::nullopt},
      {"1e400", std::nullopt},
      {"-1e400", std::nullopt},
  };
  for (const auto& [json, confidence] : rows) {
    Dropped dropped;
    EXPECT_EQ(reportWith("\"confidence\":" + json).confidence, confidence) << json;
    reportsOf(R"({"date":"d","state":"s","confidence":)" + json + "}", &dropped);
    EXPECT_TRUE(dropped.empty()) << json;
  }
}

constexpr std::string_view beyond64Bits[] = {
    "9223372036854775808",  "9223372036854775807.0",

    "-9223372036854777856", "-9223372036854777856.0", "1e19", "-1e19", "1e308",
};

using SnapshotSelfReportDeathTest = ::testing::Test;

TEST(SnapshotSelfReportDeathTest, stopsForAFiniteConfidenceBeyond64Bits) {
  for (const std::string_view literal : beyond64Bits) {
    EXPECT_DEATH(reportWith("\"confidence\":" + std::string(literal)),
                 "reports\\[0\\]\\.confidence: a confidence lies beyond 64 bits")
        << literal;
  }
  // Beyond 64 bits, but its nearest float is not.
  EXPECT_EQ(reportWith(R"("confidence":-9223372036854775809)").confidence, fewest);
}

// What does not stand does not stop: a document that is refused, a report that is dropped, a repeated key.
TEST(SnapshotSelfReport, doesNotStopForAConfidenceThatDoesNotStand) {
  Dropped dropped;
  const auto errorOf = [&](std::string_view json) {
    const auto list = JSONCoders::decoder.decode<SnapshotSelfReportList>(json, &dropped);
    return list ? "none" : list.error().text();
  };
  EXPECT_EQ(errorOf(R"({"reports":[{"date":"d","state":"s","confidence":1e30}])"),
            "the document is not well-formed JSON at byte 55");
  EXPECT_EQ(errorOf(R"({"reports":[{"date":"d","state":"s","confidence":1e30}],"reports":7})"),
            "reports: expected a list, found a number");
  EXPECT_TRUE(dropped.empty());
  EXPECT_EQ(errorOf(R"({"reports":[{"date":"d","state":"s","confidence":1e30}],"reports":[]})"), "none");
  EXPECT_EQ(errorOf(R"({"reports":[{"date":"d","state":"s","confidence":1e30,"confidence":5}]})"), "none");
  EXPECT_TRUE(dropped.empty());
  for (const std::string_view wrong :
       {R"({"confidence":1e30,"state":"s"})", R"({"confidence":1e30,"date":"d"})",
        R"({"date":"d","state":"s","confidence":1e30,"notes":5})"}) {
    dropped.clear();
    EXPECT_TRUE(reportsOf(std::string(wrong), &dropped).empty());
    EXPECT_EQ(dropped.size(), 1U) << wrong;
    EXPECT_TRUE(reportsOf(std::string(wrong)).empty());
  }
}

TEST(SnapshotSelfReport, readsAnInstantWithAndWithoutAFractionAndLeavesAnyOtherTextAbsent) {
  const std::pair<std::string, std::optional<double>> rows[] = {
      {"2024-05-01T08:30:00.250Z", 736245000.25},
      {"2024-05-01T08:30:00Z", 736245000},
      {"2024-05-01T08:30:00.5+02:00", 736237800.5},
      {"2024-05-01T08:30:00+0200", 736237800},
      {"2024-05-01T08:30:00.0-0030", 736246800},
      {"2024-05-01T08:30:00.123456789012345678901234567890Z", 736245000.123456789},
      {"2000-12-31T23:59:59.75Z", -0.25},
      {"0001-01-01T00:00:00.5Z", -63113903999.5},
      {"9999-12-31T23:59:59.5Z", 252423993599.5},
      {"9999-12-31T23:59:59.999999999Z", std::nullopt},  // its nearest float lies in the year after
      {"", std::nullopt},
      {"yesterday", std::nullopt},
      {"2024-05-01", std::nullopt},
      {"2024-05-01T08:30:00", std::nullopt},
      {"2024-05-01T08:30:00.Z", std::nullopt},
      {"2024-05-01T08:30:00.5", std::nullopt},
      {"2024-05-01T08:30:00,5Z", std::nullopt},
      {"2024-05-01T08:30:00.5 Z", std::nullopt},
      {"2024-05-01T08:30:00..5Z", std::nullopt},
      {"2024-05-01T08:30:00.-5Z", std::nullopt},
      {"2024-05-01T08:30.5Z", std::nullopt},
      {"2024-02-30T08:30:00.5Z", std::nullopt},
      {"2024-05-01T24:00:00.5Z", std::nullopt},
      {"2024-05-01t08:30:00.5z", std::nullopt},
      {"0000-05-01T08:30:00.5Z", std::nullopt},
      {" 2024-05-01T08:30:00.5Z", std::nullopt},
  };
  for (const auto& [text, seconds] : rows) {
    const auto report = reportWith(R"("observedAt":")" + text + '"');
    EXPECT_EQ(report.date, "2024-05-01") << text;
    EXPECT_EQ(report.observedAt.has_value(), seconds.has_value()) << text;
    if (report.observedAt && seconds) {
      EXPECT_EQ(secondsSinceReferenceDate(*report.observedAt), *seconds) << text;
    }
  }
}

TEST(SnapshotSelfReport, isKeptWithANullForItsInstant) {
  EXPECT_EQ(reportWith(R"("observedAt":null)"), (SnapshotSelfReport{.date = "2024-05-01", .state = "Mania"}));
}

TEST(SnapshotSelfReport, writesTheWholeSecondOfAnInstant) {
  const auto report = reportWith(R"("observedAt":"2024-05-01T10:30:59.999+02:00")");
  EXPECT_EQ(JSONCoders::encoder.encode(report),
            R"({"date":"2024-05-01","state":"Mania","observedAt":"2024-05-01T08:30:59Z"})");
}

TEST(SnapshotSelfReport, readsItsStateLeniently) {
  const std::pair<std::string, KestrelState> rows[] = {
      {"Hypomanic", KestrelState::hypomania},
      {"Major Depressive", KestrelState::severeDepression},
      {"Mania", KestrelState::mania},
      {"mania", KestrelState::unknown},
      {"", KestrelState::unknown},
      {"Overjoyed", KestrelState::unknown},
  };
  for (const auto& [text, state] : rows) {
    const auto reports = reportsOf(R"({"date":"d","state":")" + text + "\"}");
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports.front().kestrelState(), state) << text;
    EXPECT_EQ(reports.front().state, text);
  }
}

TEST(SnapshotSelfReport, isByKeywordWhenItsSourceSaysSo) {
  EXPECT_TRUE(reportWith(R"("source":"keyword")").isKeyword());
  for (const std::string source : {R"("manual")", R"("Keyword")", R"("")", "null"}) {
    EXPECT_FALSE(reportWith("\"source\":" + source).isKeyword()) << source;
  }
  EXPECT_FALSE(SnapshotSelfReport{}.isKeyword());
}

TEST(SnapshotSelfReportList, losesExactlyTheReportThatIsWrong) {
  const std::pair<std::string, std::string> rows[] = {
      {"7", ": expected an object, found a number"},
      {"null", ": expected an object, found null"},
      {"[]", ": expected an object, found a list"},
      {"{}", ".date: is missing"},
      {R"({"date":"d"})", ".state: is missing"},
      {R"({"date":null,"state":"s"})", ".date: expected text, found null"},
      {R"({"date":1,"state":"s"})", ".date: expected text, found a number"},
      {R"({"date":"d","state":null})", ".state: expected text, found null"},
      {R"({"date":"d","state":{}})", ".state: expected text, found an object"},
      {R"({"date":"d","state":"s","source":true})", ".source: expected text, found a boolean"},
      {R"({"date":"d","state":"s","notes":["n"]})", ".notes: expected text, found a list"},
      {R"({"date":"d","state":"s","observedAt":1714552200})", ".observedAt: expected text, found a number"},
      {R"({"date":"d","state":"s","observedAt":false})", ".observedAt: expected text, found a boolean"},
  };
  for (const auto& [json, reason] : rows) {
    Dropped dropped;
    std::string reports = everyField;
    reports.append(",").append(json).append(",").append(everyField);
    EXPECT_EQ(reportsOf(reports, &dropped), reportsOf(everyField + ',' + everyField)) << json;
    ASSERT_EQ(dropped.size(), 1U) << json;
    EXPECT_EQ(dropped.front().text(), "reports[1]" + reason);
  }
}

TEST(SnapshotSelfReportList, isRefusedWithoutAListOfReports) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"{}", "reports: is missing"},
      {R"({"reports":null})", "reports: expected a list, found null"},
      {R"({"reports":{}})", "reports: expected a list, found an object"},
      {R"({"reports":"x"})", "reports: expected a list, found text"},
      {"[]", "expected an object, found a list"},
      {R"({"reports":[{"date":1,"confidence":01}]})", "the document is not well-formed JSON at byte 35"},
      {R"({"reports":[{"date":1,"observedAt":"\ud800"}]})", "the document has a malformed escape at byte 36"},
  };
  for (const auto& [json, error] : rows) {
    const auto list = JSONCoders::decoder.decode<SnapshotSelfReportList>(json);
    ASSERT_FALSE(list) << json;
    EXPECT_EQ(list.error().text(), error);
  }
  EXPECT_EQ(JSONCoders::decoder.decode<SnapshotSelfReportList>(R"({"reports":[]})"),
            SnapshotSelfReportList{});
}

TEST(SnapshotSelfReportList, readsBackWhatItWrites) {
  EXPECT_TRUE(rc::check("any reports", [](const SnapshotSelfReportList& list) {
    const auto json = JSONCoders::encoder.encode(list);
    RC_ASSERT(json.has_value());
    const auto back = JSONCoders::decoder.decode<SnapshotSelfReportList>(*json);
    RC_ASSERT((back == list));
    RC_ASSERT((JSONCoders::encoder.encode(*back) == json));
  }));
}

}  // namespace
}  // namespace kestrel
