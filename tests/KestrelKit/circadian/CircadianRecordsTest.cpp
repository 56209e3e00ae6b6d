#include <KestrelKit/circadian/ActivityRhythm.h>
#include <KestrelKit/circadian/CircadianFeatures.h>
#include <KestrelKit/circadian/CircadianObservations.h>
#include <KestrelKit/circadian/SleepInterval.h>
#include <KestrelKit/circadian/SleepSession.h>
#include <KestrelKit/circadian/SleepStageInterval.h>
#include <KestrelKit/model/JSONCoders.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

/// One field of a record: its key, a value for it in JSON, and what the field expects.
struct Member {
  std::string key;
  std::string value;
  std::string type;
  bool isRequired = true;
};

/// The members as an object, the one at `index` with another value, or left out when that is empty.
std::string objectOf(const std::vector<Member>& members, std::size_t index = SIZE_MAX,
                     const std::string& other = "") {
  std::string json;
  for (std::size_t each = 0; each < members.size(); ++each) {
    const auto& value = each == index ? other : members[each].value;
    if (!value.empty()) {
      json += (json.empty() ? "" : ",") + ('"' + members[each].key) + "\":" + value;
    }
  }
  return '{' + json + '}';
}

template <class T>
std::string errorOf(const std::string& json) {
  const auto record = JSONCoders::decoder.decode<T>(json);
  return record ? "none" : record.error().text();
}

/// Reads and writes the record of `members`, with each member by itself absent, null and of every wrong type.
template <class T>
void expectForm(const T& record, const std::vector<Member>& members) {
  EXPECT_EQ(JSONCoders::encoder.encode(record).value_or(""), objectOf(members));
  EXPECT_EQ(JSONCoders::decoder.decode<T>(objectOf(members)), record);
  const std::pair<std::string, std::string> wrongValues[] = {
      {"true", "a boolean"}, {"7", "a number"}, {"\"text\"", "text"}, {"[]", "a list"}, {"{}", "an object"}};
  for (std::size_t index = 0; index < members.size(); ++index) {
    const auto& [key, value, type, isRequired] = members[index];
    EXPECT_EQ(errorOf<T>(objectOf(members, index)), isRequired ? key + ": is missing" : "none");
    EXPECT_EQ(errorOf<T>(objectOf(members, index, "null")),
              isRequired ? key + ": expected " + type + ", found null" : "none");
    for (const auto& [wrong, found] : wrongValues) {
      const bool isRightType = found == type || (found == "a number" && type == "an integer") ||
                               (found == "text" && type == "text") ||
                               (found == "an object" && type == "an object");
      if (!isRightType) {
        EXPECT_EQ(errorOf<T>(objectOf(members, index, wrong)),
                  key + ": expected " + type + ", found " + found);
      }
    }
  }
}

TEST(CircadianRecords, sleepIntervalHasItsForm) {
  expectForm(SleepInterval{.start = instantSinceReferenceDate(0), .end = instantSinceReferenceDate(28'800)},
             {{"start", R"("2001-01-01T00:00:00Z")", "text"}, {"end", R"("2001-01-01T08:00:00Z")", "text"}});
}

TEST(CircadianRecords, sleepStageIntervalHasItsForm) {
  expectForm(SleepStageInterval{.start = instantSinceReferenceDate(0),
                                .end = instantSinceReferenceDate(5400),
                                .stage = "asleepREM"},
             {{"start", R"("2001-01-01T00:00:00Z")", "text"},
              {"end", R"("2001-01-01T01:30:00Z")", "text"},
              {"stage", R"("asleepREM")", "text"}});
}

TEST(CircadianRecords, sleepSessionHasItsForm) {
  expectForm(SleepSession{.date = "2025-03-05", .midSleepMinutes = 210, .asleepMinutes = 412.5},
             {{"date", R"("2025-03-05")", "text"},
              {"midSleepMinutes", "210", "a number"},
              {"asleepMinutes", "412.5", "a number"}});
}

const std::string rhythm =
    R"({"m10OnsetHour":8,"m10":600,"l5":12.5,"mesor":280.25,"relativeAmplitude":0.96})";

TEST(CircadianRecords, activityRhythmHasItsForm) {
  expectForm(
      ActivityRhythm{.m10OnsetHour = 8, .m10 = 600, .l5 = 12.5, .mesor = 280.25, .relativeAmplitude = 0.96},
      {{"m10OnsetHour", "8", "a number"},
       {"m10", "600", "a number"},
       {"l5", "12.5", "a number"},
       {"mesor", "280.25", "a number"},
       {"relativeAmplitude", "0.96", "a number"}});
}

const CircadianFeatures features{
    .date = "2025-03-05",
    .phaseDeviationHours = -1.25,
    .sleepRegularitySDMinutes = 30.5,
    .durationSDMinutes = 41,
    .activity =
        ActivityRhythm{.m10OnsetHour = 8, .m10 = 600, .l5 = 12.5, .mesor = 280.25, .relativeAmplitude = 0.96},
    .stepVariabilityCV = 0.375,
    .restingHRDeviationBpm = 5.5,
    .coverageNights = 0.875,
    .daysObserved = 7};

TEST(CircadianRecords, circadianFeaturesHaveTheirForm) {
  expectForm(features, {{"date", R"("2025-03-05")", "text"},
                        {"phaseDeviationHours", "-1.25", "a number", false},
                        {"sleepRegularitySDMinutes", "30.5", "a number", false},
                        {"durationSDMinutes", "41", "a number", false},
                        {"activity", rhythm, "an object", false},
                        {"stepVariabilityCV", "0.375", "a number", false},
                        {"restingHRDeviationBpm", "5.5", "a number", false},
                        {"coverageNights", "0.875", "a number"},
                        {"daysObserved", "7", "an integer"}});
}

TEST(CircadianRecords, circadianFeaturesLeaveOutWhatIsAbsent) {
  EXPECT_EQ(JSONCoders::encoder.encode(CircadianFeatures{.date = "d"}).value_or(""),
            R"({"date":"d","coverageNights":0,"daysObserved":0})");
}

TEST(CircadianRecords, errorInARhythmNamesItsPath) {
  EXPECT_EQ(errorOf<CircadianFeatures>(
                R"({"date":"d","activity":{"m10":"x"},"coverageNights":1,"daysObserved":3})"),
            "activity.m10: expected a number, found text");
}

TEST(CircadianRecords, spreadWithoutBoundIsNotWritten) {
  auto unbounded = features;
  unbounded.sleepRegularitySDMinutes = std::numeric_limits<double>::infinity();
  const auto json = JSONCoders::encoder.encode(unbounded);
  ASSERT_FALSE(json);
  EXPECT_EQ(json.error().path, "sleepRegularitySDMinutes");
}

TEST(CircadianRecords, circadianObservationsHaveTheirForm) {
  expectForm(CircadianObservations{.date = "2025-03-05",
                                   .nights = {{"2025-03-04", 210, 412.5}},
                                   .judgedMidSleepMinutes = 187,
                                   .hourlyActivity = std::vector{0.5, 100.0},
                                   .stepCounts = {8000, 12},
                                   .restingHeartRate = 61,
                                   .baselineRestingHeartRates = {58, 60},
                                   .expectedNights = 28},
             {{"date", R"("2025-03-05")", "text"},
              {"nights", R"([{"date":"2025-03-04","midSleepMinutes":210,"asleepMinutes":412.5}])", "a list"},
              {"judgedMidSleepMinutes", "187", "a number", false},
              {"hourlyActivity", "[0.5,100]", "a list", false},
              {"stepCounts", "[8000,12]", "a list"},
              {"restingHeartRate", "61", "an integer", false},
              {"baselineRestingHeartRates", "[58,60]", "a list"},
              {"expectedNights", "28", "an integer"}});
}

TEST(CircadianRecords, errorInAListNamesItsElement) {
  const auto error = [](const std::string& member) {
    return errorOf<CircadianObservations>(
        R"({"date":"d","nights":[],"stepCounts":[],"baselineRestingHeartRates":[],"expectedNights":1,)" +
        member + '}');
  };
  EXPECT_EQ(error(R"("nights":[{"date":"d","midSleepMinutes":1}])"), "nights[0].asleepMinutes: is missing");
  EXPECT_EQ(error(R"("stepCounts":[1,null])"), "stepCounts[1]: expected an integer, found null");
  EXPECT_EQ(error(R"("stepCounts":[1,0.5])"), "stepCounts[1]: 0.5 is not an integer of 64 bits");
  EXPECT_EQ(error(R"("hourlyActivity":[0,"1"])"), "hourlyActivity[1]: expected a number, found text");
  EXPECT_EQ(error(R"("baselineRestingHeartRates":[61.5])"),
            "baselineRestingHeartRates[0]: 61.5 is not an integer of 64 bits");
}

TEST(CircadianRecords, recordsDifferWhenOneFieldDoes) {
  const SleepStageInterval interval{instantSinceReferenceDate(1), instantSinceReferenceDate(2), "core"};
  auto other = interval;
  EXPECT_EQ(interval, other);
  other.start = instantSinceReferenceDate(0);
  EXPECT_NE(interval, other);
  other = interval;
  other.end = instantSinceReferenceDate(3);
  EXPECT_NE(interval, other);
  other = interval;
  other.stage = "Core";
  EXPECT_NE(interval, other);
}

}  // namespace
}  // namespace kestrel
