#include <KestrelKit/model/StateClassifier.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {
namespace {

using State = KestrelState;
using Reasons = std::vector<std::string>;

constexpr double infinity = std::numeric_limits<double>::infinity();

// The four signals that the rules read, called what they are called in the text of the rules.
struct Signals {
  double S;                   // sleep, hours
  double A;                   // posts ÷ usual posts
  double M;                   // sentiment
  std::optional<double> V{};  // its deviation
  HrvInput hrv = HrvInput::notProvided;
};

struct Subject {
  DailyMetrics day;
  Baseline baseline;
};

// A day, and a baseline of a power of two, whose activity ratio is exactly A.
Subject subjectOf(const Signals& signals) {
  int exponent = 0;
  const double fraction = std::frexp(signals.A, &exponent);
  return {.day = {.date = "2024-05-01",
                  .sleep_hours = signals.S,
                  .posts = static_cast<std::int64_t>(std::ldexp(fraction, 53)),
                  .sentiment = signals.M,
                  .steps = 9000,
                  .sentiment_stdev = signals.V,
                  .avg_hrv = signals.hrv},
          .baseline = {.avgPosts = std::ldexp(1.0, 53 - exponent)}};
}

StateClassification classified(const Signals& signals) {
  const auto [day, baseline] = subjectOf(signals);
  EXPECT_EQ(static_cast<double>(day.posts) / baseline.avgPosts, signals.A);
  return StateClassifier::classify(day, nullptr, baseline);
}

State stateOf(const Signals& signals) { return classified(signals).predictedState; }

StateClassification byRules(State state, double confidence, Reasons reasons) {
  return {.date = "2024-05-01",
          .predictedState = state,
          .confidence = confidence,
          .reasons = std::move(reasons),
          .source = ClassificationSource::algorithmic};
}

// Days that the rules take to be of these states.
const Signals mixed{.S = 3.9, .A = 1.6, .M = 0, .V = 0.5};
const Signals manic{.S = 3.9, .A = 1.6, .M = 0};
const Signals hypomanic{.S = 5, .A = 1.3, .M = 0};
const Signals severe{.S = 11, .A = 1, .M = -0.6};
const Signals moderate{.S = 11, .A = 1, .M = -0.4};
const Signals dysthymic{.S = 11, .A = 1, .M = -0.2};
const Signals well{.S = 7.5, .A = 1, .M = 0};

TEST(StateClassifier, givesEachRulesStateConfidenceAndReasons) {
  EXPECT_EQ(classified(mixed),
            byRules(State::mixedEpisode, 0.85,
                    {"Severe sleep deficit (<4h)", "High activity", "High sentiment volatility"}));
  EXPECT_EQ(classified(manic),
            byRules(State::mania, 0.9, {"Severe sleep deficit (<4h)", "High activity/sentiment"}));
  EXPECT_EQ(classified(hypomanic),
            byRules(State::hypomania, 0.7, {"Moderate sleep deficit (<6h)", "Elevated activity"}));
  EXPECT_EQ(classified(severe), byRules(State::severeDepression, 0.85,
                                        {"Very low sentiment (<-0.5)", "Hypersomnia or near-zero activity"}));
  EXPECT_EQ(classified(moderate),
            byRules(State::moderateDepression, 0.75, {"Low sentiment", "Depressed activity or sleep"}));
  EXPECT_EQ(classified(dysthymic), byRules(State::dysthymia, 0.6, {"Lowered activity/sentiment"}));
  EXPECT_EQ(classified(well), byRules(State::euthymia, 0.5, {}));
}

TEST(StateClassifier, knowsNothingOfADayWithoutSleepAndPosts) {
  DailyMetrics day{.date = "2024-05-01", .sleep_hours = 0.0, .posts = 0, .sentiment = -1};
  const auto nothing = byRules(State::unknown, 0.0, {"Insufficient data"});
  EXPECT_EQ(StateClassifier::classify(day, nullptr, {}), nothing);
  day.sleep_hours = -0.0;
  day.avg_hrv = HrvInput::missing;
  EXPECT_EQ(StateClassifier::classify(day, nullptr, {}), nothing);
  day.sleep_hours = std::nextafter(0.0, 1.0);  // hardly asleep, but asleep
  EXPECT_NE(StateClassifier::classify(day, nullptr, {}), nothing);
  day.sleep_hours = std::nan("");
  EXPECT_NE(StateClassifier::classify(day, nullptr, {}), nothing);
}

TEST(StateClassifier, takesAKeywordReportOfADayWithoutDataAndDoesNotValidateIt) {
  const DailyMetrics day{.date = "2024-05-01"};
  UserReport report{
      .state = State::mania, .percentage = 90, .notes = "n", .origin = SelfReportSource::keyword};
  StateClassification expected{.date = "2024-05-01",
                               .predictedState = State::mania,
                               .confidence = 0.7,
                               .reasons = {"Keyword detected in messages"},
                               .source = ClassificationSource::keyword,
                               .isValidated = false};
  EXPECT_EQ(StateClassifier::classify(day, &report, {}), expected);
  report.state = expected.predictedState = State::unknown;  // not even the state of a day without data
  EXPECT_EQ(StateClassifier::classify(day, &report, {}), expected);
}

TEST(StateClassifier, skipsTheElevatedRulesForADayWithPostsAndNoSleep) {
  EXPECT_EQ(stateOf({.S = 0.0, .A = 0.05, .M = -0.6}), State::severeDepression);
  EXPECT_EQ(stateOf({.S = 0.0, .A = 1.6, .M = 1, .V = 1}), State::euthymia);
  EXPECT_EQ(stateOf({.S = -1, .A = 1.6, .M = 1, .V = 1}), State::euthymia);
}

TEST(StateClassifier, tellsMixedEpisodeManiaAndHypomaniaOfAShortNightApart) {
  EXPECT_EQ(stateOf({.S = 3.9, .A = 1.6, .M = 0, .V = 0.5}), State::mixedEpisode);
  EXPECT_EQ(stateOf({.S = 3.9, .A = 1.6, .M = 0}), State::mania);
  EXPECT_EQ(stateOf({.S = 3.9, .A = 1.0, .M = 0.3}), State::hypomania);
}

TEST(StateClassifier, takesNoNightOfExactlyFourHoursForMania) {
  EXPECT_EQ(stateOf({.S = 4.0, .A = 1.6, .M = 0}), State::hypomania);
  EXPECT_EQ(stateOf({.S = 4.0, .A = 1.0, .M = 0.5}), State::hypomania);
  EXPECT_EQ(stateOf({.S = 4.0, .A = 1.2, .M = 0.2}), State::euthymia);
}

TEST(StateClassifier, takesNoNightOfExactlySixHoursForHypomania) {
  EXPECT_EQ(stateOf({.S = 6.0, .A = 2, .M = 1, .V = 1}), State::euthymia);
}

TEST(StateClassifier, tellsTheStatesAfterElevenHoursOfSleepApart) {
  EXPECT_EQ(stateOf({.S = 11, .A = 1, .M = -0.4}), State::moderateDepression);
  EXPECT_EQ(stateOf({.S = 11, .A = 1, .M = -0.2}), State::dysthymia);
  EXPECT_EQ(stateOf({.S = 11, .A = 1, .M = 0.0}), State::euthymia);
}

TEST(StateClassifier, takesNineHoursAndAnOrdinaryDayForEuthymiaWithoutReasons) {
  EXPECT_EQ(classified({.S = 9, .A = 1, .M = 0.0}), byRules(State::euthymia, 0.5, {}));
}

// Each limit of each rule: the state one step below it, at it and one step above it.
TEST(StateClassifier, keepsEveryLimitToTheLastBit) {
  struct Row {
    const char* limit;
    double at;
    Signals day;
    double Signals::*which;
    State below, on, above;
  };
  const auto S = &Signals::S;
  const auto A = &Signals::A;
  const auto M = &Signals::M;
  const Row rows[] = {
      {"mixed: S > 0", 0, mixed, S, State::euthymia, State::euthymia, State::mixedEpisode},
      {"mixed: S < 4", 4, mixed, S, State::mixedEpisode, State::hypomania, State::hypomania},
      {"mixed: A > 1.5", 1.5, mixed, A, State::hypomania, State::hypomania, State::mixedEpisode},
      {"mania: S > 0", 0, manic, S, State::euthymia, State::euthymia, State::mania},
      {"mania: S < 4", 4, manic, S, State::mania, State::hypomania, State::hypomania},
      {"mania: A > 1.5", 1.5, manic, A, State::hypomania, State::hypomania, State::mania},
      {"mania: M > 0.4",
       0.4,
       {.S = 3.9, .A = 1, .M = 0},
       M,
       State::hypomania,
       State::hypomania,
       State::mania},
      {"hypomania: S > 0", 0, hypomanic, S, State::euthymia, State::euthymia, State::hypomania},
      {"hypomania: S < 6", 6, hypomanic, S, State::hypomania, State::euthymia, State::euthymia},
      {"hypomania: A > 1.2", 1.2, hypomanic, A, State::euthymia, State::euthymia, State::hypomania},
      {"hypomania: M > 0.2",
       0.2,
       {.S = 5, .A = 1, .M = 0},
       M,
       State::euthymia,
       State::euthymia,
       State::hypomania},
      {"extreme: S > 10", 10, severe, S, State::dysthymia, State::dysthymia, State::severeDepression},
      {"extreme: A < 0.1",
       0.1,
       {.S = 7, .A = 0, .M = -0.6},
       A,  //
       State::severeDepression,
       State::moderateDepression,
       State::moderateDepression},
      {"severe: M < -0.5", -0.5, severe, M,  //
       State::severeDepression, State::moderateDepression, State::moderateDepression},
      {"moderate, extreme: M < -0.3", -0.3, moderate, M,  //
       State::moderateDepression, State::dysthymia, State::dysthymia},
      {"moderate: A < 0.3",
       0.3,
       {.S = 7, .A = 0, .M = -0.4},
       A,  //
       State::moderateDepression,
       State::euthymia,
       State::euthymia},
      {"moderate: M < -0.3",
       -0.3,
       {.S = 7, .A = 0.2, .M = 0},
       M,  //
       State::moderateDepression,
       State::euthymia,
       State::euthymia},
      {"dysthymia: S > 8", 8, dysthymic, S, State::euthymia, State::euthymia, State::dysthymia},
      {"dysthymia: M < -0.1", -0.1, dysthymic, M, State::dysthymia, State::euthymia, State::euthymia},
      {"dysthymia: A < 0.6",
       0.6,
       {.S = 9, .A = 0, .M = 0},
       A,
       State::dysthymia,
       State::euthymia,
       State::euthymia},
  };
  for (const Row& row : rows) {
    const auto stateAt = [&](double value) {
      Signals day = row.day;
      day.*row.which = value;
      return stateOf(day);
    };
    EXPECT_EQ(stateAt(std::nextafter(row.at, -infinity)), row.below) << row.limit;
    EXPECT_EQ(stateAt(row.at), row.on) << row.limit;
    EXPECT_EQ(stateAt(std::nextafter(row.at, infinity)), row.above) << row.limit;
  }
}

TEST(StateClassifier, keepsTheLimitOfTheVolatilityToTheLastBit) {
  Signals day = mixed;
  day.V = std::nextafter(0.4, 0);
  EXPECT_EQ(stateOf(day), State::mania);
  day.V = 0.4;
  EXPECT_EQ(stateOf(day), State::mania);
  day.V = std::nextafter(0.4, 1);
  EXPECT_EQ(stateOf(day), State::mixedEpisode);
  day.V = std::nan("");
  EXPECT_EQ(stateOf(day), State::mania);
  day.V = infinity;
  EXPECT_EQ(stateOf(day), State::mixedEpisode);
}

TEST(StateClassifier, takesAComparisonWithWhatIsNoNumberForFalse) {
  const double nan = std::nan("");
  EXPECT_EQ(stateOf({.S = nan, .A = 1.6, .M = 1, .V = 1}), State::euthymia);
  EXPECT_EQ(stateOf({.S = nan, .A = 0.05, .M = -0.6}), State::severeDepression);
  EXPECT_EQ(stateOf({.S = 11, .A = 1, .M = nan}), State::euthymia);
  EXPECT_EQ(stateOf({.S = 11, .A = 0.5, .M = nan}), State::dysthymia);
  EXPECT_EQ(stateOf({.S = 3.9, .A = 1.6, .M = nan}), State::mania);
  const DailyMetrics day{.date = "2024-05-01", .sleep_hours = 11, .posts = 1, .sentiment = -0.6};
  EXPECT_EQ(StateClassifier::classify(day, nullptr, {.avgPosts = nan}).predictedState,
            State::severeDepression);
  const DailyMetrics shortNight{.date = "2024-05-01", .sleep_hours = 3, .posts = 1, .sentiment = 0.5};
  EXPECT_EQ(StateClassifier::classify(shortNight, nullptr, {.avgPosts = nan}).predictedState, State::mania);
}

TEST(StateClassifier, takesInfinitiesAsTheyCompare) {
  EXPECT_EQ(stateOf({.S = infinity, .A = 1, .M = -infinity}), State::severeDepression);
  EXPECT_EQ(stateOf({.S = 3, .A = 1, .M = infinity}), State::mania);
  EXPECT_EQ(stateOf({.S = -infinity, .A = 1, .M = infinity}), State::euthymia);
  const DailyMetrics day{.date = "", .sleep_hours = 7, .posts = 5, .sentiment = -0.6};
  EXPECT_EQ(StateClassifier::classify(day, nullptr, {.avgPosts = infinity}).predictedState,
            State::severeDepression);  // a ratio of 0
}

TEST(StateClassifier, countsAPostsBaselineOfZeroAsOne) {
  const DailyMetrics day{.date = "2024-05-01", .sleep_hours = 5, .posts = 2, .sentiment = 0};
  for (const double zero : {0.0, -0.0}) {
    EXPECT_EQ(StateClassifier::classify(day, nullptr, {.avgPosts = zero}),
              StateClassifier::classify(day, nullptr, {.avgPosts = 1}));
    EXPECT_EQ(StateClassifier::classify(day, nullptr, {.avgPosts = zero}).predictedState, State::hypomania);
  }
  DailyMetrics quiet{.date = "2024-05-01", .sleep_hours = 7, .posts = 0, .sentiment = -0.6};
  EXPECT_EQ(StateClassifier::classify(quiet, nullptr, {.avgPosts = 0}).predictedState,
            State::severeDepression);
}

TEST(StateClassifier, readsNothingButThePostsOfTheBaselineAndNoSteps) {
  const auto [day, baseline] = subjectOf(manic);
  DailyMetrics other = day;
  other.steps = -1;
  EXPECT_EQ(StateClassifier::classify(other, nullptr,
                                      {.avgSleep = 1, .avgPosts = baseline.avgPosts, .avgSentiment = 1}),
            StateClassifier::classify(day, nullptr, baseline));
}

// ---- Reports.

StateClassification reported(const Signals& signals, const UserReport& report) {
  const auto [day, baseline] = subjectOf(signals);
  return StateClassifier::classify(day, &report, baseline);
}

TEST(StateClassifier, putsTheUsersOwnReportBeforeTheRules) {
  EXPECT_EQ(reported(well, {.state = State::mania, .percentage = 85}),
            (StateClassification{.date = "2024-05-01",
                                 .predictedState = State::mania,
                                 .confidence = 0.85,
                                 .reasons = {"Self-reported by user"},
                                 .source = ClassificationSource::manual,
                                 .selfReportConfidence = 85,
                                 .isValidated = false}));
  EXPECT_EQ(
      reported(manic, {.state = State::mania, .percentage = 7, .notes = "wired, 3 h", .keyword = "unread"}),
      (StateClassification{.date = "2024-05-01",
                           .predictedState = State::mania,
                           .confidence = 0.07,
                           .reasons = {"Self-reported: wired, 3 h"},
                           .source = ClassificationSource::manual,
                           .selfReportConfidence = 7,
                           .selfReportNotes = "wired, 3 h",
                           .isValidated = true}));
}

TEST(StateClassifier, tellsAnEmptyNoteFromNone) {
  const auto result = reported(well, {.state = State::euthymia, .percentage = 50, .notes = ""});
  EXPECT_EQ(result.reasons, Reasons{"Self-reported: "});
  EXPECT_EQ(result.selfReportNotes, "");
}

TEST(StateClassifier, namesTheKeywordThatRaisedAReport) {
  EXPECT_EQ(reported(severe, {.state = State::severeDepression,
                              .percentage = 99,
                              .notes = "kept out",
                              .origin = SelfReportSource::keyword,
                              .keyword = "no way \"out\""}),
            (StateClassification{.date = "2024-05-01",
                                 .predictedState = State::severeDepression,
                                 .confidence = 0.7,
                                 .reasons = {"Keyword detected: \"no way \"out\"\""},
                                 .source = ClassificationSource::keyword,
                                 .isValidated = true}));
  EXPECT_EQ(
      reported(severe, {.state = State::mania, .origin = SelfReportSource::keyword, .keyword = ""}).reasons,
      Reasons{"Keyword detected: \"\""});
}

TEST(StateClassifier, takesEveryPercentageAsItIs) {
  EXPECT_EQ(reported(well, {.state = State::mania, .percentage = 0}).confidence, 0.0);
  EXPECT_EQ(reported(well, {.state = State::mania, .percentage = 100}).confidence, 1.0);
  const auto result =
      reported(well, {.state = State::mania, .percentage = std::numeric_limits<std::int64_t>::min()});
  EXPECT_EQ(result.confidence, -0x1p63 / 100.0);
  EXPECT_EQ(result.selfReportConfidence, -0x1p63);
}

// ---- The hold-back.

TEST(StateClassifier, holdsManiaBackWhoseHrvIsMissingAndNotOneWhoseHrvIsNotProvided) {
  Signals day = manic;
  day.hrv = HrvInput::missing;
  EXPECT_EQ(classified(day), byRules(State::unknown, 0.0,
                                     {"HRV missing near Mania boundary; held back",
                                      "Severe sleep deficit (<4h)", "High activity/sentiment"}));
  day.hrv = HrvInput::notProvided;
  EXPECT_EQ(stateOf(day), State::mania);
  day.hrv = HrvInput::measured(0);
  EXPECT_EQ(stateOf(day), State::mania);
  day.hrv = HrvInput::measured(std::nan(""));
  EXPECT_EQ(stateOf(day), State::mania);
}

TEST(StateClassifier, holdsTheOtherElevatedStatesBackToo) {
  Signals day = mixed;
  day.hrv = HrvInput::missing;
  EXPECT_EQ(classified(day),
            byRules(State::unknown, 0.0,
                    {"HRV missing near Mixed Episode boundary; held back", "Severe sleep deficit (<4h)",
                     "High activity", "High sentiment volatility"}));
  day = hypomanic;
  day.hrv = HrvInput::missing;
  EXPECT_EQ(classified(day), byRules(State::unknown, 0.0,
                                     {"HRV missing near Hypomania boundary; held back",
                                      "Moderate sleep deficit (<6h)", "Elevated activity"}));
  day = {.S = 5, .A = 0.5, .M = 0.3, .hrv = HrvInput::missing};  // by its sentiment alone
  EXPECT_EQ(stateOf(day), State::unknown);
  const DailyMetrics posts{
      .date = "", .sleep_hours = 5, .posts = 2, .sentiment = 0, .avg_hrv = HrvInput::missing};
  EXPECT_EQ(StateClassifier::classify(posts, nullptr, {.avgPosts = 0}).predictedState, State::unknown);
}

TEST(StateClassifier, holdsNoOtherStateBack) {
  for (Signals day : {severe, moderate, dysthymic, well}) {
    const auto provided = classified(day);
    day.hrv = HrvInput::missing;
    EXPECT_EQ(classified(day), provided);
  }
}

TEST(StateClassifier, holdsNoReportBackAndValidatesItByTheRule) {
  Signals day = manic;
  day.hrv = HrvInput::missing;
  const auto result = reported(day, {.state = State::mania, .percentage = 60});
  EXPECT_EQ(result.predictedState, State::mania);
  EXPECT_EQ(result.isValidated, true);
  EXPECT_EQ(reported(day, {.state = State::unknown, .percentage = 60}).isValidated, false);
}

// ---- Series.

// One day each, in May, with the same baseline.
std::vector<DailyMetrics> seriesOf(const std::vector<Signals>& signals) {
  std::vector<DailyMetrics> days;
  for (const Signals& each : signals) {
    days.push_back({.date = "2024-05-0" + std::to_string(days.size() + 1),
                    .sleep_hours = each.S,
                    .posts = static_cast<std::int64_t>(10 * each.A),
                    .sentiment = each.M,
                    .sentiment_stdev = each.V,
                    .avg_hrv = each.hrv});
  }
  return days;
}

std::vector<State> statesOf(const std::vector<StateClassification>& series) {
  std::vector<State> states;
  for (const auto& day : series) {
    states.push_back(day.predictedState);
  }
  return states;
}

std::vector<State> smoothed(const std::vector<Signals>& signals, const UserReports& reports = {}) {
  return statesOf(StateClassifier::classifySeries(seriesOf(signals), reports, {}));
}

using States = std::vector<State>;

TEST(StateClassifier, smoothsALoneDepressedDayBetweenTwoManicOnes) {
  const auto series = StateClassifier::classifySeries(seriesOf({manic, severe, manic}), {}, {});
  ASSERT_EQ(statesOf(series), (States{State::mania, State::euthymia, State::mania}));
  EXPECT_EQ(series[1], (StateClassification{
                           .date = "2024-05-02",
                           .predictedState = State::euthymia,
                           .confidence = 0.5,
                           .reasons = {"Smoothed: Severe Depression not corroborated by neighbors",
                                       "Very low sentiment (<-0.5)", "Hypersomnia or near-zero activity"},
                           .source = ClassificationSource::algorithmic}));
}

TEST(StateClassifier, smoothsALoneElevatedDayBetweenTwoDepressedOnes) {
  const auto series = StateClassifier::classifySeries(seriesOf({dysthymic, mixed, moderate}), {}, {});
  ASSERT_EQ(statesOf(series), (States{State::dysthymia, State::euthymia, State::moderateDepression}));
  EXPECT_EQ(series[1].reasons,
            (Reasons{"Smoothed: Mixed Episode not corroborated by neighbors", "Severe sleep deficit (<4h)",
                     "High activity", "High sentiment volatility"}));
}

TEST(StateClassifier, returnsASeriesOfTwoDaysOrFewerUnchanged) {
  EXPECT_EQ(smoothed({}), States{});
  EXPECT_EQ(smoothed({severe}), States{State::severeDepression});
  EXPECT_EQ(smoothed({manic, severe}), (States{State::mania, State::severeDepression}));
}

TEST(StateClassifier, keepsALoneElevatedDayBetweenTwoEuthymicOnes) {
  EXPECT_EQ(smoothed({well, manic, well}), (States{State::euthymia, State::mania, State::euthymia}));
}

TEST(StateClassifier, keepsADayWhoseNeighboursAreNotBothOfTheOtherPolarity) {
  EXPECT_EQ(smoothed({manic, severe, well}),
            (States{State::mania, State::severeDepression, State::euthymia}));
  EXPECT_EQ(smoothed({manic, severe, severe, manic}),
            (States{State::mania, State::severeDepression, State::severeDepression, State::mania}));
  EXPECT_EQ(smoothed({manic, well, manic}), (States{State::mania, State::euthymia, State::mania}));
  EXPECT_EQ(smoothed({severe, hypomanic, mixed}),
            (States{State::severeDepression, State::hypomania, State::mixedEpisode}));
}

TEST(StateClassifier, judgesNeighboursBeforeSmoothing) {
  EXPECT_EQ(smoothed({manic, severe, manic, severe, manic}),
            (States{State::mania, State::euthymia, State::euthymia, State::euthymia, State::mania}));
}

TEST(StateClassifier, smoothsAgainstNeighboursThatWereReportedButNoReportedDay) {
  const UserReports neighbours{{"2024-05-01", {.state = State::psychosis, .percentage = 80}},
                               {"2024-05-03", {.state = State::mania, .origin = SelfReportSource::keyword}}};
  EXPECT_EQ(smoothed({well, severe, severe}, neighbours),
            (States{State::psychosis, State::euthymia, State::mania}));
  for (const SelfReportSource origin : SelfReportSource::allCases) {
    EXPECT_EQ(
        smoothed({manic, severe, manic},
                 {{"2024-05-02", {.state = State::severeDepression, .percentage = 50, .origin = origin}}}),
        (States{State::mania, State::severeDepression, State::mania}));
  }
}

TEST(StateClassifier, smoothsNoDayThatIsHeldBackNorAgainstOne) {
  Signals heldBack = manic;
  heldBack.hrv = HrvInput::missing;
  EXPECT_EQ(smoothed({severe, heldBack, severe}),
            (States{State::severeDepression, State::unknown, State::severeDepression}));
  EXPECT_EQ(smoothed({manic, severe, heldBack}),
            (States{State::mania, State::severeDepression, State::unknown}));
}

TEST(StateClassifier, findsAReportUnderTheDaysOwnKey) {
  auto days = seriesOf({well, well, well});
  days[1].date = days[2].date = "twice";
  EXPECT_EQ(
      statesOf(StateClassifier::classifySeries(days, {{"twice", {.state = State::mania}}, {"", {}}}, {})),
      (States{State::euthymia, State::mania, State::mania}));
}

TEST(StateClassifier, replacesWhatTheCallersResultHeld) {
  const auto days = seriesOf({manic, severe, manic, well, severe});
  const UserReports reports{{"2024-05-04", {.state = State::mania, .origin = SelfReportSource::keyword}},
                            {"2024-05-05", {.state = State::dysthymia, .percentage = 50, .notes = "n"}}};
  std::vector<StateClassification> result(9, {.date = "before",
                                              .predictedState = State::psychosis,
                                              .confidence = 2,
                                              .reasons = {"a", "b", "c", "d", "e"},
                                              .source = ClassificationSource::manual,
                                              .isConfirmed = true,
                                              .selfReportConfidence = 1,
                                              .selfReportNotes = "before",
                                              .isValidated = true});
  StateClassifier::classifySeries(days, reports, {}, result);
  EXPECT_EQ(result, StateClassifier::classifySeries(days, reports, {}));
  StateClassifier::classifySeries({}, reports, {}, result);
  EXPECT_TRUE(result.empty());
}

}  // namespace
}  // namespace kestrel
