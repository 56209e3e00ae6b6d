#include <KestrelKit/model/ShadowEvaluator.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

using State = KestrelState;

TEST(ShadowEvaluator, sortsTheDaysAndScoresTheSecond) {
  EXPECT_EQ(ShadowEvaluator::evaluate(std::vector<ShadowDay>{
                {.date = "2024-05-02", .circadianState = State::mania, .label = State::hypomania},
                {.date = "2024-05-01", .circadianState = std::nullopt, .label = State::euthymia}}),
            (ShadowSummary{.scoredDays = 1, .circadianAccuracy = 1.0, .baselineAccuracy = 0.0}));
}

TEST(ShadowEvaluator, scoresNothingOfDaysThatAreAllUnlabelledOrOfASingleLabel) {
  const ShadowSummary nothing{.scoredDays = 0, .circadianAccuracy = 0.0, .baselineAccuracy = 0.0};
  EXPECT_EQ(ShadowEvaluator::evaluate({}), nothing);
  std::vector<ShadowDay> days(5, {.date = "2024-05-01", .circadianState = State::mania});
  EXPECT_EQ(ShadowEvaluator::evaluate(days), nothing);
  days[2].label = State::mania;
  EXPECT_EQ(ShadowEvaluator::evaluate(days), nothing);
}

TEST(ShadowEvaluator, leavesThePreviousLabelAsItIsOnADayWithoutOne) {
  EXPECT_EQ(ShadowEvaluator::evaluate(std::vector<ShadowDay>{
                {.date = "1", .circadianState = {}, .label = State::dysthymia},
                {.date = "2", .circadianState = State::euthymia, .label = {}},
                {.date = "3", .circadianState = State::euthymia, .label = State::moderateDepression}}),
            (ShadowSummary{.scoredDays = 1, .circadianAccuracy = 0.0, .baselineAccuracy = 1.0}));
}

TEST(ShadowEvaluator, countsAnUnknownAgainstALabelledUnknownOnlyAndAnAbsentStateNever) {
  EXPECT_EQ(ShadowEvaluator::evaluate(std::vector<ShadowDay>{
                {.date = "1", .circadianState = {}, .label = State::unknown},
                {.date = "2", .circadianState = State::unknown, .label = State::unknown},     // both
                {.date = "3", .circadianState = {}, .label = State::unknown},                 // the baseline
                {.date = "4", .circadianState = State::unknown, .label = State::euthymia}}),  // none
            (ShadowSummary{.scoredDays = 3, .circadianAccuracy = 1.0 / 3, .baselineAccuracy = 2.0 / 3}));
}

TEST(ShadowEvaluator, keepsDaysOfOneDateInTheirOrder) {
  const std::vector<ShadowDay> days{{.date = "2", .circadianState = {}, .label = State::mania},
                                    {.date = "1", .circadianState = {}, .label = State::euthymia},
                                    {.date = "2", .circadianState = {}, .label = State::dysthymia},
                                    {.date = "3", .circadianState = {}, .label = State::severeDepression}};
  EXPECT_EQ(ShadowEvaluator::evaluate(days),
            (ShadowSummary{.scoredDays = 3, .circadianAccuracy = 0, .baselineAccuracy = 1.0 / 3}));
}

// The classes, written down a second time.
bool agree(State left, State right) {
  static const std::set<std::set<std::string_view>> classes{
      {"Psychosis", "Mixed Episode", "Mania", "Hypomania"},
      {"Euthymia"},
      {"Dysthymia", "Moderate Depression", "Severe Depression"},
      {"Unknown"}};
  for (const auto& texts : classes) {
    if (texts.contains(left.rawValue())) {
      return texts.contains(right.rawValue());
    }
  }
  return false;
}

TEST(ShadowEvaluator, agreesByClassForEveryPairOfStates) {
  for (const State circadian : State::allCases) {
    for (const State label : State::allCases) {
      for (const State previous : State::allCases) {
        EXPECT_EQ(ShadowEvaluator::evaluate(
                      std::vector<ShadowDay>{{.date = "1", .circadianState = {}, .label = previous},
                                             {.date = "2", .circadianState = circadian, .label = label}}),
                  (ShadowSummary{.scoredDays = 1,
                                 .circadianAccuracy = agree(circadian, label) ? 1.0 : 0.0,
                                 .baselineAccuracy = agree(previous, label) ? 1.0 : 0.0}))
            << circadian.rawValue() << ", " << label.rawValue() << ", " << previous.rawValue();
      }
    }
  }
}

// Scored without sorting: the days of each date as they come, date by date.
ShadowSummary judged(const std::vector<ShadowDay>& days) {
  std::map<std::string, std::vector<ShadowDay>> byDate;
  for (const ShadowDay& day : days) {
    byDate[day.date].push_back(day);
  }
  std::vector<ShadowDay> labelled;
  for (const auto& [date, ofDate] : byDate) {
    std::ranges::copy_if(ofDate, std::back_inserter(labelled),
                         [](const ShadowDay& day) { return day.label.has_value(); });
  }
  double circadian = 0;
  double baseline = 0;
  for (std::size_t index = 1; index < labelled.size(); ++index) {
    const ShadowDay& day = labelled[index];
    circadian += day.circadianState && agree(*day.circadianState, *day.label) ? 1 : 0;
    baseline += agree(*labelled[index - 1].label, *day.label) ? 1 : 0;
  }
  const auto scored = static_cast<double>(labelled.size()) - 1;
  if (scored < 1) {
    return {};
  }
  return {.scoredDays = static_cast<std::int64_t>(scored),
          .circadianAccuracy = circadian / scored,
          .baselineAccuracy = baseline / scored};
}

TEST(ShadowEvaluator, scoresRandomDaysAsTheJudgeDoes) {
  EXPECT_TRUE(rc::check("any days", [] {
    const auto anyState = [] {
      const auto choice = *rc::gen::inRange<std::size_t>(0, KestrelState::allCases.size() + 1);
      return choice < KestrelState::allCases.size() ? std::optional{KestrelState::allCases[choice]}
                                                    : std::nullopt;
    };
    std::vector<ShadowDay> days;
    for (int left = *rc::gen::inRange(0, 60); left > 0; --left) {
      const std::string date = std::to_string(*rc::gen::inRange(0, 5));
      const auto circadianState = anyState();
      days.push_back({.date = date, .circadianState = circadianState, .label = anyState()});
    }
    RC_ASSERT(ShadowEvaluator::evaluate(days) == judged(days));
  }));
}

}  // namespace
}  // namespace kestrel
