#include "SignalSeries.h"

#include <KestrelKit/foundation/CivilDay.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace kestrel {
namespace {

/// Whether two texts are equal, without a call for those that fit two machine words, as names of signals
/// mostly do.
[[gnu::always_inline]] inline bool areEqual(std::string_view left, std::string_view right) {
  constexpr std::size_t word = sizeof(std::uint64_t);
  if (left.size() != right.size() || left.size() < word || left.size() > 2 * word) {
    return left == right;
  }
  const auto difference = [&](std::size_t place) {
    std::uint64_t words[2];
    std::memcpy(&words[0], left.data() + place, word);
    std::memcpy(&words[1], right.data() + place, word);
    return words[0] ^ words[1];
  };
  return (difference(0) | difference(left.size() - word)) == 0;
}

/// The signals met so far. Observations mostly come signal by signal or day by day, so that the signal that
/// followed a signal the last time mostly follows it again: that one is tried before its name is looked up.
class SignalIndex {
 public:
  SignalSeries& signalOf(const SignalEvidenceObservation& observation) {
    if (signals_.empty() || !isOf(signals_[signals_[last_].follower].key, observation)) {
      const auto [place, isNew] =
          places_.try_emplace({observation.sourceID, observation.signalID}, signals_.size());
      if (isNew) {
        signals_.push_back({.key = {observation.sourceID, observation.signalID},
                            .days = {},
                            .values = {},
                            .follower = place->second});
      }
      signals_[last_].follower = place->second;
    }
    last_ = signals_[last_].follower;
    return signals_[last_];
  }

  std::vector<SignalSeries> takeSignals() {
    std::ranges::sort(signals_, {}, &SignalSeries::key);
    return std::move(signals_);
  }

 private:
  using Names = std::pair<std::string_view, std::string_view>;  // of source and signal

  struct Hash {
    std::size_t operator()(const Names& names) const noexcept {
      constexpr std::hash<std::string_view> hash;
      return std::rotl(hash(names.first), 1) ^ hash(names.second);
    }
  };

  static bool isOf(const SignalKey& key, const SignalEvidenceObservation& observation) {
    return areEqual(key.signalID, observation.signalID) && areEqual(key.sourceID, observation.sourceID);
  }

  std::vector<SignalSeries> signals_;
  std::size_t last_ = 0;
  std::unordered_map<Names, std::size_t, Hash> places_;
};

/// Room for the values of a signal that has `values` among the first `seen` of `all` observations: as many as
/// it will have if it goes on like this, and a quarter, so that values are seldom copied. Memory that stays
/// unused costs nothing.
std::size_t capacityFor(std::size_t values, std::size_t seen, std::size_t all) {
  constexpr std::size_t fewest = 16;
  const auto foretold = static_cast<std::size_t>(1.25 * static_cast<double>(values) *
                                                 static_cast<double>(all) / static_cast<double>(seen));
  return std::max({fewest, 2 * values, foretold});
}

}  // namespace

GroupedObservations groupedBySignal(std::span<const SignalEvidenceObservation> observations) {
  std::int32_t first = std::numeric_limits<std::int32_t>::max();
  std::int32_t last = std::numeric_limits<std::int32_t>::min();
  SignalIndex index;
  std::string_view date;  // of the last observation; those of a day mostly come one after the other
  bool isDay = false;
  std::int32_t day = 0;
  std::size_t seen = 0;
  for (const SignalEvidenceObservation& observation : observations) {
    ++seen;
    if (!areEqual(observation.date, date)) {
      date = observation.date;
      const auto civilDay = civilDayFromText(date);
      isDay = civilDay.has_value();
      if (isDay) {
        day = static_cast<std::int32_t>(civilDay->time_since_epoch().count());
        first = std::min(first, day);
        last = std::max(last, day);
      }
    }
    if (isDay && std::isfinite(observation.value)) {
      SignalSeries& signal = index.signalOf(observation);
      if (signal.values.size() == signal.values.capacity()) {
        const std::size_t capacity = capacityFor(signal.values.size(), seen, observations.size());
        signal.days.reserve(capacity);
        signal.values.reserve(capacity);
      }
      signal.days.push_back(day);
      signal.values.push_back(observation.value);
    }
  }
  GroupedObservations grouped{.signals = index.takeSignals()};
  if (first <= last) {
    grouped.firstDay = first;
    grouped.days = static_cast<std::size_t>(last - first) + 1;
  }
  return grouped;
}

}  // namespace kestrel
