#include <KestrelKit/circadian/CircadianClassifier.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <rapidcheck.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

const std::string steps = "Elevated step-count variability (possible early destabilization)";
const std::string rhythm = "Dampened activity rhythm (possible early destabilization)";
const std::string heartRate = "Resting heart rate elevated over baseline (possible early activation)";
const std::string nearBaseline = "Circadian phase near baseline";

/// A week of nights whose phase is shifted by `hours`, and nothing else.
CircadianFeatures shifted(double hours) {
  return {.date = "2025-03-05", .phaseDeviationHours = hours, .coverageNights = 1, .daysObserved = 7};
}

CircadianFeatures withAmplitude(CircadianFeatures features, double relativeAmplitude) {
  features.activity = ActivityRhythm{.relativeAmplitude = relativeAmplitude};
  return features;
}

CircadianFeatures withHeartRate(CircadianFeatures features, double deviation) {
  features.restingHRDeviationBpm = deviation;
  return features;
}

CircadianFeatures withSteps(CircadianFeatures features, double variability) {
  features.stepVariabilityCV = variability;
  return features;
}

StateClassification verdict(const CircadianFeatures& features, const HrvInput& hrv = HrvInput::measured(42)) {
  return CircadianClassifier::classify(features, hrv);
}

StateClassification unknown(std::string reason) {
  return {.date = "2025-03-05",
          .predictedState = KestrelState::unknown,
          .confidence = 0,
          .reasons = {std::move(reason)},
          .source = ClassificationSource::algorithmic};
}

// ---- Gates ----

TEST(CircadianClassifier, coverageOfHalfAndThreeDaysPassTheGate) {
  auto features = shifted(0);
  features.coverageNights = 0.5;
  features.daysObserved = 3;
  EXPECT_EQ(verdict(features).predictedState, KestrelState::euthymia);
  EXPECT_EQ(verdict(features).confidence, 0.25);
}

TEST(CircadianClassifier, lessCoverageOrFewerDaysDoNotPassTheGate) {
  const auto insufficient = unknown("Insufficient circadian coverage");
  for (const double coverage : {0.49, std::nextafter(0.5, 0), 0.0, -1.0, -infinity, notANumber}) {
    auto features = shifted(3);
    features.coverageNights = coverage;
    EXPECT_EQ(verdict(features), insufficient) << coverage;
  }
  for (const std::int64_t days :
       {std::int64_t{2}, std::int64_t{0}, std::numeric_limits<std::int64_t>::min()}) {
    auto features = shifted(3);
    features.daysObserved = days;
    EXPECT_EQ(verdict(features), insufficient) << days;
  }
}

TEST(CircadianClassifier, withoutAPhaseThereIsNoEstimate) {
  auto features = withHeartRate(withSteps(withAmplitude(shifted(3), 0.1), 0.9), 9);
  features.phaseDeviationHours.reset();
  EXPECT_EQ(verdict(features), unknown("No circadian phase estimate"));
  features.daysObserved = 2;  // the first gate goes before the second
  EXPECT_EQ(verdict(features), unknown("Insufficient circadian coverage"));
}

// ---- Phase ----

TEST(CircadianClassifier, phaseChoosesTheStateAtItsLimits) {
  using State = KestrelState;
  const struct {
    double hours;
    State state;
    double confidence;
    std::string reason;
  } rows[] = {
      {12, State::moderateDepression, 0.7, "Circadian phase markedly delayed (+12.0h)"},
      {2.0, State::moderateDepression, 0.7, "Circadian phase markedly delayed (+2.0h)"},
      {std::nextafter(2.0, 0), State::dysthymia, 0.6, "Circadian phase delayed (+2.0h)"},
      {1.43, State::dysthymia, 0.6, "Circadian phase delayed (+1.4h)"},
      {1.0, State::dysthymia, 0.6, "Circadian phase delayed (+1.0h)"},
      {std::nextafter(1.0, 0), State::euthymia, 0.5, nearBaseline},
      {0.99, State::euthymia, 0.5, nearBaseline},
      {0.0, State::euthymia, 0.5, nearBaseline},
      {-0.0, State::euthymia, 0.5, nearBaseline},
      {-0.99, State::euthymia, 0.5, nearBaseline},
      {std::nextafter(-1.0, 0), State::euthymia, 0.5, nearBaseline},
      {-1.0, State::hypomania, 0.6, "Circadian phase advanced (-1.0h)"},
      {-1.43, State::hypomania, 0.6, "Circadian phase advanced (-1.4h)"},
      {std::nextafter(-2.0, 0), State::hypomania, 0.6, "Circadian phase advanced (-2.0h)"},
      {-2.0, State::mania, 0.7, "Circadian phase markedly advanced (-2.0h)"},
      {-12, State::mania, 0.7, "Circadian phase markedly advanced (-12.0h)"},
      {infinity, State::moderateDepression, 0.7, "Circadian phase markedly delayed (+infh)"},
      {-infinity, State::mania, 0.7, "Circadian phase markedly advanced (-infh)"},
      {notANumber, State::euthymia, 0.5, nearBaseline},
  };
  for (const auto& [hours, state, confidence, reason] : rows) {
    const auto found = verdict(shifted(hours));
    EXPECT_EQ(found.predictedState, state) << hours;
    EXPECT_EQ(found.confidence, confidence) << hours;
    EXPECT_THAT(found.reasons, ElementsAre(reason)) << hours;
  }
}

TEST(CircadianClassifier, delayOf234WithFullCoverageIsModerateDepression) {
  EXPECT_EQ(verdict(shifted(2.34)), (StateClassification{
                                        .date = "2025-03-05",
                                        .predictedState = KestrelState::moderateDepression,
                                        .confidence = 0.7,
                                        .reasons = {"Circadian phase markedly delayed (+2.3h)"},
                                        .source = ClassificationSource::algorithmic,
                                    }));
}

TEST(CircadianClassifier, whatOnlyAUserSaysIsAbsent) {
  for (const double hours : {3.0, 0.0, -3.0}) {
    const auto found = verdict(shifted(hours));
    EXPECT_EQ(found.isConfirmed, std::nullopt);
    EXPECT_EQ(found.selfReportConfidence, std::nullopt);
    EXPECT_EQ(found.selfReportNotes, std::nullopt);
    EXPECT_EQ(found.isValidated, std::nullopt);
  }
}

TEST(CircadianClassifier, confidenceIsScaledByTheCoverage) {
  auto features = shifted(2);
  features.coverageNights = 5.0 / 7;
  EXPECT_EQ(verdict(features).confidence, 5.0 / 7 * 0.7);
}

// ---- Secondary signals ----

TEST(CircadianClassifier, irregularStepsCastDoubtOnEuthymiaAlone) {
  EXPECT_EQ(verdict(withSteps(shifted(0), 0.6)).confidence, 0.5 * 0.7);
  EXPECT_THAT(verdict(withSteps(shifted(0), 0.6)).reasons, ElementsAre(nearBaseline, steps));
  EXPECT_THAT(verdict(withSteps(shifted(0), std::nextafter(0.5, 1))).reasons, SizeIs(2));
  EXPECT_THAT(verdict(withSteps(shifted(0), infinity)).reasons, SizeIs(2));
  for (const double none : {0.5, 0.4, -1.0, -infinity, notANumber}) {
    EXPECT_EQ(verdict(withSteps(shifted(0), none)), verdict(shifted(0))) << none;
  }
  for (const double hours : {3.0, 1.5, -1.5, -3.0}) {
    EXPECT_EQ(verdict(withSteps(shifted(hours), 0.9)), verdict(shifted(hours))) << hours;
  }
}

TEST(CircadianClassifier, dampenedRhythmCorroboratesDepression) {
  const auto moderate = verdict(withAmplitude(shifted(2), 0.3));
  EXPECT_EQ(moderate.confidence, 0.7 * 1.15);
  EXPECT_THAT(moderate.reasons,
              ElementsAre("Circadian phase markedly delayed (+2.0h)",
                          "Dampened activity rhythm (relative amplitude 0.3) corroborates"));
  const auto dysthymia = verdict(withAmplitude(shifted(1), 0.0));
  EXPECT_EQ(dysthymia.confidence, 0.6 * 1.15);
  EXPECT_THAT(dysthymia.reasons,
              ElementsAre("Circadian phase delayed (+1.0h)",
                          "Dampened activity rhythm (relative amplitude 0.0) corroborates"));
}

TEST(CircadianClassifier, dampenedRhythmCastsDoubtOnEuthymia) {
  EXPECT_EQ(verdict(withAmplitude(shifted(0), 0.3)).confidence, 0.5 * 0.8);
  EXPECT_THAT(verdict(withAmplitude(shifted(0), 0.3)).reasons, ElementsAre(nearBaseline, rhythm));
}

TEST(CircadianClassifier, dampenedRhythmSaysNothingOfElevatedStates) {
  for (const double hours : {-1.5, -3.0}) {
    EXPECT_EQ(verdict(withAmplitude(shifted(hours), 0.1)), verdict(shifted(hours)));
  }
}

TEST(CircadianClassifier, relativeAmplitudeOfHalfHasNoEffect) {
  for (const double hours : {3.0, 1.5, 0.0}) {
    for (const double none :
         {0.5, 0.8, 1.0, 2.0, -0.1, std::nextafter(0.0, -1), infinity, -infinity, notANumber}) {
      EXPECT_EQ(verdict(withAmplitude(shifted(hours), none)), verdict(shifted(hours))) << none;
    }
    for (const double some : {std::nextafter(0.5, 0), 0.0, -0.0}) {
      EXPECT_THAT(verdict(withAmplitude(shifted(hours), some)).reasons, SizeIs(2)) << some;
    }
  }
}

TEST(CircadianClassifier, raisedHeartRateCorroboratesMania) {
  auto features = withHeartRate(shifted(-2.5), 6);
  features.coverageNights = 0.75;
  const auto mania = verdict(features);
  EXPECT_EQ(mania.predictedState, KestrelState::mania);
  EXPECT_EQ(mania.confidence, 0.75 * std::min(0.7 * 1.15, 0.85));
  EXPECT_THAT(mania.reasons, ElementsAre("Circadian phase markedly advanced (-2.5h)",
                                         "Resting heart rate elevated 6.0 bpm over baseline corroborates"));
  EXPECT_EQ(verdict(withHeartRate(shifted(-1), 6)).confidence, 0.6 * 1.15);
}

TEST(CircadianClassifier, raisedHeartRateCastsDoubtOnEuthymia) {
  EXPECT_EQ(verdict(withHeartRate(shifted(0), 6)).confidence, 0.5 * 0.8);
  EXPECT_THAT(verdict(withHeartRate(shifted(0), 6)).reasons, ElementsAre(nearBaseline, heartRate));
}

TEST(CircadianClassifier, raisedHeartRateSaysNothingOfDepression) {
  for (const double hours : {1.5, 3.0}) {
    EXPECT_EQ(verdict(withHeartRate(shifted(hours), 20)), verdict(shifted(hours)));
  }
}

TEST(CircadianClassifier, heartRateCountsFromFiveBeatsOn) {
  for (const double hours : {0.0, -1.5, -3.0}) {
    for (const double none : {std::nextafter(5.0, 0), 0.0, -20.0, infinity, -infinity, notANumber}) {
      EXPECT_EQ(verdict(withHeartRate(shifted(hours), none)), verdict(shifted(hours))) << none;
    }
    for (const double some : {5.0, 1e300}) {
      EXPECT_THAT(verdict(withHeartRate(shifted(hours), some)).reasons, SizeIs(2)) << some;
    }
  }
}

TEST(CircadianClassifier, allDoubtsCompoundInTheirOrder) {
  auto features = withHeartRate(withAmplitude(withSteps(shifted(0), 0.6), 0.3), 7);
  features.coverageNights = 0.9;
  const auto found = verdict(features);
  EXPECT_EQ(found.predictedState, KestrelState::euthymia);
  EXPECT_EQ(found.confidence, 0.9 * (0.5 * 0.7 * 0.8 * 0.8));
  EXPECT_THAT(found.reasons, ElementsAre(nearBaseline, steps, rhythm, heartRate));
}

// ---- Heart-rate variability ----

TEST(CircadianClassifier, missingHrvHoldsAnElevatedVerdictBack) {
  EXPECT_EQ(verdict(withHeartRate(shifted(-2.5), 6), HrvInput::missing),
            unknown("HRV missing near Mania boundary; held back"));
  EXPECT_EQ(verdict(shifted(-12), HrvInput::missing), unknown("HRV missing near Mania boundary; held back"));
  EXPECT_EQ(verdict(shifted(-1), HrvInput::missing),
            unknown("HRV missing near Hypomania boundary; held back"));
}

TEST(CircadianClassifier, hrvThatIsNotProvidedHoldsNothingBack) {
  const auto features = withHeartRate(shifted(-2.5), 6);
  EXPECT_EQ(verdict(features, HrvInput::notProvided), verdict(features, HrvInput::measured(0)));
  EXPECT_EQ(verdict(features, HrvInput::notProvided).predictedState, KestrelState::mania);
}

TEST(CircadianClassifier, missingHrvHoldsNoOtherVerdictBack) {
  for (const double hours : {3.0, 1.5, 0.0, std::nextafter(-1.0, 0)}) {
    EXPECT_EQ(verdict(shifted(hours), HrvInput::missing), verdict(shifted(hours)));
  }
}

// ---- Every input ----

std::string printed(const char* before, double number, const char* after) {
  std::array<char, 400> text{};
  std::snprintf(text.data(), text.size(), "%s%.1f%s", before, number, after);
  return text.data();
}

/// The rules once more, one after the other instead of in tables.
StateClassification stepByStep(const CircadianFeatures& features, const HrvInput& hrv) {
  using State = KestrelState;
  StateClassification result{.date = features.date, .source = ClassificationSource::algorithmic};
  const auto held = [&](const std::string& reason) {
    result.predictedState = State::unknown;
    result.confidence = 0;
    result.reasons = {reason};
    return result;
  };
  if (features.coverageNights < 0.5 || std::isnan(features.coverageNights) || features.daysObserved < 3) {
    return held("Insufficient circadian coverage");
  }
  if (!features.phaseDeviationHours.has_value()) {
    return held("No circadian phase estimate");
  }
  const double p = features.phaseDeviationHours.value();
  double c = 0.5;
  State state = State::euthymia;
  std::string reason = nearBaseline;
  if (p >= 2) {
    state = State::moderateDepression;
    c = 0.7;
    reason = printed("Circadian phase markedly delayed (+", p, "h)");
  } else if (p >= 1) {
    state = State::dysthymia;
    c = 0.6;
    reason = printed("Circadian phase delayed (+", p, "h)");
  } else if (p <= -2) {
    state = State::mania;
    c = 0.7;
    reason = printed("Circadian phase markedly advanced (", p, "h)");
  } else if (p <= -1) {
    state = State::hypomania;
    c = 0.6;
    reason = printed("Circadian phase advanced (", p, "h)");
  }
  result.predictedState = state;
  result.reasons = {reason};
  const bool euthymic = state == State::euthymia;
  const bool elevated = state == State::mania || state == State::hypomania;
  if (euthymic && features.stepVariabilityCV.has_value() && *features.stepVariabilityCV > 0.5) {
    c *= 0.7;
    result.reasons.push_back(steps);
  }
  if (features.activity.has_value()) {
    const double r = features.activity->relativeAmplitude;
    if (std::isfinite(r) && r >= 0 && r < 0.5) {
      if (euthymic) {
        c *= 0.8;
        result.reasons.push_back(rhythm);
      } else if (!elevated) {
        c = std::min(c * 1.15, 0.85);
        result.reasons.push_back(
            printed("Dampened activity rhythm (relative amplitude ", r, ") corroborates"));
      }
    }
  }
  if (features.restingHRDeviationBpm.has_value()) {
    const double d = features.restingHRDeviationBpm.value();
    if (std::isfinite(d) && d >= 5) {
      if (euthymic) {
        c *= 0.8;
        result.reasons.push_back(heartRate);
      } else if (elevated) {
        c = std::min(c * 1.15, 0.85);
        result.reasons.push_back(
            printed("Resting heart rate elevated ", d, " bpm over baseline corroborates"));
      }
    }
  }
  if (elevated && hrv == HrvInput::missing) {
    return held("HRV missing near " + std::string(state.rawValue()) + " boundary; held back");
  }
  result.confidence = features.coverageNights * c;
  return result;
}

TEST(CircadianClassifier, isTotalAndFollowsItsRulesStepByStep) {
  EXPECT_TRUE(rc::check([] {
    // Every double there is, and more often those at which something changes.
    const auto special = rc::gen::elementOf(std::vector<double>{0.0,
                                                                -0.0,
                                                                0.49,
                                                                0.5,
                                                                0.3,
                                                                0.6,
                                                                1.0,
                                                                -1.0,
                                                                0.99,
                                                                -0.99,
                                                                2.0,
                                                                -2.0,
                                                                2.5,
                                                                -2.5,
                                                                1.25,
                                                                5.0,
                                                                4.99,
                                                                7.0,
                                                                infinity,
                                                                -infinity,
                                                                notANumber,
                                                                std::nextafter(0.5, 0),
                                                                std::nextafter(5.0, 0),
                                                                std::nextafter(-1.0, 0)});
    const auto number = rc::gen::oneOf(special, special, rc::gen::arbitrary<double>());
    const auto maybe = [&]() -> std::optional<double> {
      return *rc::gen::inRange(0, 5) == 0 ? std::nullopt : std::optional(*number);
    };
    CircadianFeatures features{
        .date = *rc::gen::arbitrary<std::string>(),
        .phaseDeviationHours = maybe(),
        .sleepRegularitySDMinutes = maybe(),
        .durationSDMinutes = maybe(),
        .stepVariabilityCV = maybe(),
        .restingHRDeviationBpm = maybe(),
        .coverageNights = *rc::gen::oneOf(rc::gen::elementOf(std::vector{0.5, 0.75, 1.0}), number),
        .daysObserved =
            *rc::gen::oneOf(rc::gen::inRange<std::int64_t>(0, 12), rc::gen::arbitrary<std::int64_t>()),
    };
    if (*rc::gen::arbitrary<bool>()) {
      features.activity = ActivityRhythm{*number, *number, *number, *number, *number};
    }
    const auto hrv =
        *rc::gen::elementOf(std::vector{HrvInput::missing, HrvInput::notProvided, HrvInput::measured(30)});
    const auto found = verdict(features, hrv);
    const auto expected = stepByStep(features, hrv);
    RC_ASSERT(found.predictedState == expected.predictedState);
    RC_ASSERT(found.reasons == expected.reasons);
    RC_ASSERT(found.confidence == expected.confidence);
    RC_ASSERT(found == expected);
  }));
}

}  // namespace
}  // namespace kestrel
