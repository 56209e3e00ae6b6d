#include <KestrelKit/model/ShadowEvaluator.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cstdint>
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

TEST(ShadowEvaluator, scoresEachLabelledDayButTheFirst) {
  EXPECT_TRUE(rc::check("any days", [] {
    const std::optional<State> choices[] = {std::nullopt, State::mania, State::euthymia};
    std::vector<ShadowDay> days;
    std::int64_t labelled = 0;
    for (int left = *rc::gen::inRange(0, 30); left > 0; --left) {
      days.push_back({.date = std::to_string(*rc::gen::inRange(0, 9)),
                      .circadianState = choices[*rc::gen::inRange(0, 3)],
                      .label = choices[*rc::gen::inRange(0, 3)]});
      labelled += days.back().label ? 1 : 0;
    }
    const ShadowSummary summary = ShadowEvaluator::evaluate(days);
    RC_ASSERT(summary.scoredDays == std::max<std::int64_t>(labelled - 1, 0));
    RC_ASSERT(summary.circadianAccuracy >= 0.0);
    RC_ASSERT(summary.circadianAccuracy <= 1.0);
    RC_ASSERT(summary.baselineAccuracy >= 0.0);
    RC_ASSERT(summary.baselineAccuracy <= 1.0);
  }));
}

}  // namespace
}  // namespace kestrel
