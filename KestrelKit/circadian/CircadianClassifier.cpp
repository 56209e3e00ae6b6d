#include <KestrelKit/circadian/CircadianClassifier.h>
#include <KestrelKit/model/ClassificationSource.h>
#include <KestrelKit/model/KestrelState.h>
#include <KestrelKit/model/StateGroup.h>
#include <KestrelKit/model/StateTheme.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

/// What a shift of the sleep phase, in hours and positive when later than usual, says of the state.
struct PhaseRule {
  bool (*holds)(double hours);
  KestrelState state;
  double confidence;
  std::string_view reason;  ///< The hours stand in the place of the braces.
};

// clang-format off

// The first that holds decides. The sign of an advance is that of its number.
constexpr PhaseRule phaseRules[] = {
    {[](double hours) { return hours >= 2.0; },  KestrelState::moderateDepression, 0.7,
     "Circadian phase markedly delayed (+{:.1f}h)"},
    {[](double hours) { return hours >= 1.0; },  KestrelState::dysthymia,          0.6,
     "Circadian phase delayed (+{:.1f}h)"},
    {[](double hours) { return hours <= -2.0; }, KestrelState::mania,              0.7,
     "Circadian phase markedly advanced ({:.1f}h)"},
    {[](double hours) { return hours <= -1.0; }, KestrelState::hypomania,          0.6,
     "Circadian phase advanced ({:.1f}h)"},
    {[](double) { return true; },                KestrelState::euthymia,           0.5,
     "Circadian phase near baseline"},
};

// clang-format on

using Features = CircadianFeatures;

std::optional<double> stepVariability(const Features& features) { return features.stepVariabilityCV; }

std::optional<double> relativeAmplitude(const Features& features) {
  return features.activity ? std::optional(features.activity->relativeAmplitude) : std::nullopt;
}

std::optional<double> restingHeartRate(const Features& features) { return features.restingHRDeviationBpm; }

bool isIrregular(double variation) { return variation > 0.5; }
bool isDampened(double amplitude) { return amplitude >= 0 && amplitude < 0.5; }
bool isRaised(double beatsOverBaseline) {
  return beatsOverBaseline >= 5.0 && std::isfinite(beatsOverBaseline);
}

/// What a secondary signal does to the confidence in a state that the phase has chosen.
struct SecondaryRule {
  std::optional<double> (*signal)(const Features& features);
  bool (*holds)(double signal);
  StateGroup group;         ///< Of the state.
  double factor;            ///< Above 1 it corroborates the state, below it casts doubt on it.
  std::string_view reason;  ///< The signal stands in the place of the braces.
};

// clang-format off

// All that hold apply, in this order.
constexpr SecondaryRule secondaryRules[] = {
    {stepVariability,   isIrregular, StateGroup::stable,    0.7,
     "Elevated step-count variability (possible early destabilization)"},
    {relativeAmplitude, isDampened,  StateGroup::depressed, 1.15,
     "Dampened activity rhythm (relative amplitude {:.1f}) corroborates"},
    {relativeAmplitude, isDampened,  StateGroup::stable,    0.8,
     "Dampened activity rhythm (possible early destabilization)"},
    {restingHeartRate,  isRaised,    StateGroup::elevated,  1.15,
     "Resting heart rate elevated {:.1f} bpm over baseline corroborates"},
    {restingHeartRate,  isRaised,    StateGroup::stable,    0.8,
     "Resting heart rate elevated over baseline (possible early activation)"},
};

// clang-format on

constexpr double mostConfidence = 0.85;  // however many signals corroborate

// With less, the nights say too little.
constexpr double leastCoverage = 0.5;
constexpr std::int64_t leastDays = 3;

std::string reasonText(std::string_view reason, double number) {
  return fmt::format(fmt::runtime(reason), number);
}

StateClassification verdict(const Features& features, KestrelState state, double confidence,
                            std::vector<std::string> reasons) {
  return {.date = features.date,
          .predictedState = state,
          .confidence = confidence,
          .reasons = std::move(reasons),
          .source = ClassificationSource::algorithmic};
}

StateClassification unknown(const Features& features, std::string reason) {
  return verdict(features, KestrelState::unknown, 0, {std::move(reason)});
}

}  // namespace

StateClassification CircadianClassifier::classify(const CircadianFeatures& features, const HrvInput& hrv) {
  // Written so that a coverage that is not a number is too little.
  if (!(features.coverageNights >= leastCoverage) || features.daysObserved < leastDays) {
    return unknown(features, "Insufficient circadian coverage");
  }
  if (!features.phaseDeviationHours) {
    return unknown(features, "No circadian phase estimate");
  }

  const double hours = *features.phaseDeviationHours;
  const auto& phase =
      *std::ranges::find_if(phaseRules, [&](const PhaseRule& rule) { return rule.holds(hours); });
  const StateGroup group = StateTheme::group(phase.state);
  if (group == StateGroup::elevated && hrv == HrvInput::missing) {
    return unknown(features, fmt::format("HRV missing near {} boundary; held back", phase.state.rawValue()));
  }

  double confidence = phase.confidence;
  std::vector reasons{reasonText(phase.reason, hours)};
  for (const auto& [signal, holds, appliesTo, factor, reason] : secondaryRules) {
    const auto value = signal(features);
    if (appliesTo == group && value && holds(*value)) {
      confidence = std::min(confidence * factor, mostConfidence);
      reasons.push_back(reasonText(reason, *value));
    }
  }
  return verdict(features, phase.state, features.coverageNights * confidence, std::move(reasons));
}

}  // namespace kestrel
