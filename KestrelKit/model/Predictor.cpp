#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/model/Predictor.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <iterator>

namespace kestrel {
namespace {

constexpr std::size_t fewestClassifications = 3;

struct Persistence {
  KestrelState state;
  double probability;
};

constexpr Persistence persistences[] = {
    {KestrelState::psychosis, 0.4},
    {KestrelState::mixedEpisode, 0.45},
    {KestrelState::mania, 0.5},
    {KestrelState::hypomania, 0.6},
    {KestrelState::euthymia, 0.8},
    {KestrelState::dysthymia, 0.7},
    {KestrelState::moderateDepression, 0.65},
    {KestrelState::severeDepression, 0.7},
};
constexpr double otherPersistence = 0.6;

double persistenceOf(KestrelState state) noexcept {
  const auto* row = std::ranges::find(persistences, state, &Persistence::state);
  return row != std::end(persistences) ? row->probability : otherPersistence;
}

}  // namespace

std::vector<Prediction> Predictor::predict(std::span<const StateClassification> history, std::int64_t days,
                                           const DayKeyFormatter& formatter) {
  if (days < 1) {
    programmingError("a forecast of fewer than 1 day");
  }
  if (history.size() < fewestClassifications) {
    return {};
  }
  const StateClassification& last = history.back();
  const auto lastDay = formatter.date(last.date);
  if (!lastDay) {
    return {};
  }
  const double probability = persistenceOf(last.predictedState);

  std::vector<Prediction> predictions;
  for (std::int64_t ahead = 1; ahead <= days; ++ahead) {
    const auto date = formatter.key(*lastDay + std::chrono::days{ahead});
    if (!date) {
      break;  // the year 10000, and no later day has a key either
    }
    predictions.push_back({.date = *date, .predictedState = last.predictedState, .probability = probability});
  }
  return predictions;
}

}  // namespace kestrel
