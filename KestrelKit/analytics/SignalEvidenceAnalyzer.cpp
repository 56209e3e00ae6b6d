#include <KestrelKit/analytics/SignalEvidenceAnalyzer.h>
#include <KestrelKit/analytics/SignalStatistics.h>
#include <KestrelKit/foundation/CivilDay.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <map>
#include <string_view>
#include <system_error>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "RankedSignal.h"
#include "SignalSeries.h"

namespace kestrel {
namespace {

constexpr std::array<std::int64_t, 4> lags = {0, 1, 3, 7};  // days; fixed, the first is none
constexpr double largestAdjustedPValue = 0.1;               // of an association that counts as observed

/// The groups of states that are compared, euthymia as the reference, and none.
enum Group : std::uint8_t { noGroup, euthymia, elevated, depressed, mixed, psychosis, groupCount };

constexpr Group groupOf(KestrelState state) noexcept {
  switch (state) {
    case KestrelState::euthymia:
      return euthymia;
    case KestrelState::mania:
    case KestrelState::hypomania:
      return elevated;
    case KestrelState::dysthymia:
    case KestrelState::moderateDepression:
    case KestrelState::severeDepression:
      return depressed;
    case KestrelState::mixedEpisode:
      return mixed;
    case KestrelState::psychosis:
      return psychosis;
    case KestrelState::unknown:
    default:
      return noGroup;
  }
}

constexpr std::pair<SignalEvidenceComparison, Group> comparisons[] = {
    {SignalEvidenceComparison::elevatedVsEuthymia, elevated},
    {SignalEvidenceComparison::depressedVsEuthymia, depressed},
    {SignalEvidenceComparison::mixedVsEuthymia, mixed},
    {SignalEvidenceComparison::psychosisVsEuthymia, psychosis},
};

/// What one pass over a source found, before the p-values of the run are adjusted.
struct SourceComputation {
  std::int64_t observedDays = 0;
  std::int64_t overlappingDays = 0;
  std::int64_t evaluatedSignals = 0;
  std::vector<SignalEvidenceAssociation> candidates{};  // their adjusted p-values are still to come
  std::vector<SignalEvidenceUnevaluated> unevaluated{};
};

/// Which days one signal or source was seen on; the next one starts anew without clearing them.
class SeenDays {
 public:
  explicit SeenDays(std::size_t days) : seenBy_(days) {}

  void startAnew() { ++current_; }

  /// Whether `day` is seen for the first time.
  bool isNew(std::size_t day) { return std::exchange(seenBy_[day], current_) != current_; }

 private:
  std::vector<std::uint32_t> seenBy_;
  std::uint32_t current_ = 0;
};

/// The groups of the labels that stand at each lag behind a day.
using GroupsByLag = std::array<Group, lags.size()>;

/// One of each group at each lag.
template <class T>
using Samples = std::array<std::array<T, groupCount>, lags.size()>;
using Moments = Samples<SampleMoments>;

/// What the values of a sample sum up to.
struct Sums {
  std::int64_t count = 0;
  double values = 0;
  double mean = 0;
  double squares = 0;  // of the deviations from the mean
};

/// The least and the greatest value of a sample.
struct Extremes {
  double least = std::numeric_limits<double>::infinity();
  double greatest = -std::numeric_limits<double>::infinity();
};

/// Whether all values of a sample may be equal: their mean need not be one of them to the last bits, and then
/// they seem to have a spread of as little, or one beyond a float where they are huge.
bool mayBeConstant(const SampleMoments& moments) noexcept {
  constexpr double lastBits = 0x1p-40;
  return !(std::sqrt(moments.variance) > std::abs(moments.mean) * lastBits) ||
         !std::isfinite(moments.variance);
}

class EvidenceRun {
 public:
  EvidenceRun(std::span<const SignalEvidenceObservation> observations,
              std::span<const SignalEvidenceLabel> labels, std::int64_t minimumDays)
      : observed_(groupedBySignal(observations)),
        minimumDays_(minimumDays),
        groups_(observed_.days),
        seenBySignal_(observed_.days),
        seenBySource_(observed_.days) {
    for (const SignalEvidenceLabel& label : labels) {
      const auto date = civilDayFromText(label.date);
      const Group group = groupOf(label.state);
      if (!date || group == noGroup) {
        continue;
      }
      const auto labelled = date->time_since_epoch().count() - observed_.firstDay;
      for (std::size_t lag = 0; lag < lags.size(); ++lag) {
        const auto day = labelled - lags[lag];
        if (day >= 0 && static_cast<std::size_t>(day) < groups_.size()) {
          groups_[static_cast<std::size_t>(day)][lag] = group;
        }
      }
    }
  }

  SourceComputation pass(std::string_view sourceID) {
    SourceComputation computation;
    seenBySource_.startAnew();
    const auto signals = std::ranges::equal_range(
        observed_.signals, sourceID, {},
        [](const SignalSeries& signal) { return std::string_view(signal.key.sourceID); });
    for (const SignalSeries& signal : signals) {
      compare(signal, countDays(signal, computation), computation);
    }
    std::ranges::sort(computation.candidates, {}, [](const SignalEvidenceAssociation& each) {
      return std::tuple(std::string_view(each.signalID), each.comparison.rawValue(), each.lagDays);
    });
    return computation;
  }

 private:
  std::size_t placeOf(std::int32_t day) const { return static_cast<std::size_t>(day - observed_.firstDay); }

  /// The distinct days of `signal`; adds those that are new to its source.
  std::int64_t countDays(const SignalSeries& signal, SourceComputation& computation) {
    std::int64_t count = 0;
    seenBySignal_.startAnew();
    for (const std::int32_t date : signal.days) {
      const std::size_t day = placeOf(date);
      if (seenBySignal_.isNew(day)) {
        count += 1;
        if (seenBySource_.isNew(day)) {
          computation.observedDays += 1;
          computation.overlappingDays += groups_[day].front() != noGroup ? 1 : 0;
        }
      }
    }
    return count;
  }

  /// In two passes over the values, each for all lags at once: their means, then the deviations from these.
  Moments momentsOf(const SignalSeries& signal) const {
    std::array<Samples<Sums>, 2>
        halves{};  // every second value by itself: a sum waits half as often for itself
    forEachPaired(signal, halves, [](Sums& sum, double value) {
      sum.count += 1;
      sum.values += value;
    });
    forEachSample([&](std::size_t lag, std::size_t group) {
      Sums& one = halves[0][lag][group];
      Sums& other = halves[1][lag][group];
      one.count += other.count;
      one.mean = (one.values + other.values) / static_cast<double>(std::max<std::int64_t>(one.count, 1));
      other.mean = one.mean;
    });
    forEachPaired(signal, halves, [](Sums& sum, double value) {
      const double deviation = value - sum.mean;
      sum.squares += deviation * deviation;
    });
    Moments moments{};
    bool someMayBeConstant = false;
    forEachSample([&](std::size_t lag, std::size_t group) {
      const Sums& all = halves[0][lag][group];
      const double squares = all.squares + halves[1][lag][group].squares;
      const auto freedom = static_cast<double>(std::max<std::int64_t>(all.count - 1, 1));
      SampleMoments& sample = moments[lag][group];
      sample = {.count = all.count, .mean = all.mean, .variance = squares / freedom};
      someMayBeConstant |= sample.count > 1 && mayBeConstant(sample);
    });
    if (someMayBeConstant) {
      setConstants(signal, moments);
    }
    return moments;
  }

  /// Gives samples of equal values that value as their mean, and no variance.
  void setConstants(const SignalSeries& signal, Moments& moments) const {
    std::array<Samples<Extremes>, 1> extremes{};
    forEachPaired(signal, extremes, [](Extremes& sample, double value) {
      sample.least = std::min(sample.least, value);
      sample.greatest = std::max(sample.greatest, value);
    });
    forEachSample([&](std::size_t lag, std::size_t group) {
      const auto& [least, greatest] = extremes[0][lag][group];
      if (least == greatest) {
        moments[lag][group].mean = least;
        moments[lag][group].variance = 0;
      }
    });
  }

  /// Has each value added to what the samples that it is paired with, one a lag, are in one of `parts`, which
  /// take turns.
  template <class Part, std::size_t count, class Add>
  void forEachPaired(const SignalSeries& signal, std::array<Samples<Part>, count>& parts, Add add) const {
    for (std::size_t place = 0; place < signal.values.size(); ++place) {
      Samples<Part>& part = parts[place % count];
      const GroupsByLag& groups = groups_[placeOf(signal.days[place])];
      [&]<std::size_t... lag>(std::index_sequence<lag...>) {
        (add(part[lag][groups[lag]], signal.values[place]), ...);
      }
      (std::make_index_sequence<lags.size()>());
    }
  }

  template <class Work>
  static void forEachSample(Work work) {
    for (std::size_t lag = 0; lag < lags.size(); ++lag) {
      for (std::size_t group = 0; group < groupCount; ++group) {
        work(lag, group);
      }
    }
  }

  void compare(const SignalSeries& signal, std::int64_t observedDays, SourceComputation& computation) const {
    const Moments moments = momentsOf(signal);
    const std::size_t candidatesBefore = computation.candidates.size();
    for (std::size_t lag = 0; lag < lags.size(); ++lag) {
      const SampleMoments& reference = moments[lag][euthymia];
      for (const auto& row : comparisons) {
        const SignalEvidenceComparison comparison = row.first;
        const SampleMoments& compared = moments[lag][row.second];
        const auto leaveOut = [&](SignalEvidenceReason reason) {
          computation.unevaluated.push_back({.signalID = signal.key.signalID,
                                             .comparison = comparison,
                                             .lagDays = lags[lag],
                                             .reason = reason});
        };
        if (std::min(reference.count, compared.count) < minimumDays_) {
          leaveOut(SignalEvidenceReason::insufficientSamples);
          continue;
        }
        const auto difference = SignalStatistics::standardizedDifference(reference, compared);
        if (!difference) {
          leaveOut(SignalEvidenceReason::insufficientVariation);
          continue;
        }
        const std::int64_t pairedDays = reference.count + compared.count;
        const double coverage = static_cast<double>(pairedDays) / static_cast<double>(observedDays);
        computation.candidates.push_back(
            {.signalID = signal.key.signalID,
             .comparison = comparison,
             .lagDays = lags[lag],
             .pairedDays = pairedDays,
             .coverage = SignalStatistics::roundedToFourDecimals(std::min(coverage, 1.0)),
             .referenceDays = reference.count,
             .comparisonDays = compared.count,
             .standardizedDifference = difference->difference,
             .confidenceInterval = difference->confidenceInterval,
             .pValue = difference->pValue});
      }
    }
    computation.evaluatedSignals += computation.candidates.size() > candidatesBefore ? 1 : 0;
  }

  GroupedObservations observed_;
  std::int64_t minimumDays_;
  std::vector<GroupsByLag> groups_;  // of each day from the first observed one
  SeenDays seenBySignal_;
  SeenDays seenBySource_;
};

/// Adjusts all p-values of the run as one family.
void adjust(std::span<SourceComputation> computations) {
  std::vector<double> family;
  for (const SourceComputation& computation : computations) {
    for (const SignalEvidenceAssociation& candidate : computation.candidates) {
      family.push_back(candidate.pValue);
    }
  }
  const auto adjusted = SignalStatistics::benjaminiHochberg(family);
  auto next = adjusted.begin();
  for (SourceComputation& computation : computations) {
    for (SignalEvidenceAssociation& candidate : computation.candidates) {
      candidate.adjustedPValue = SignalStatistics::roundedToFourDecimals(*next++);
    }
  }
}

SignalEvidenceStatus statusOf(const SourceComputation& computation, double minimumEffect) {
  if (computation.observedDays == 0) {
    return SignalEvidenceStatus::noData;
  }
  if (computation.candidates.empty()) {
    const bool lacksVariation = std::ranges::any_of(computation.unevaluated, [](const auto& each) {
      return each.reason == SignalEvidenceReason::insufficientVariation;
    });
    return lacksVariation ? SignalEvidenceStatus::insufficientVariation
                          : SignalEvidenceStatus::insufficientOverlap;
  }
  const bool isObserved =
      std::ranges::any_of(computation.candidates, [&](const SignalEvidenceAssociation& each) {
        return std::abs(each.standardizedDifference) >= minimumEffect &&
               each.adjustedPValue <= largestAdjustedPValue;
      });
  return isObserved ? SignalEvidenceStatus::associationObserved : SignalEvidenceStatus::noClearAssociation;
}

SignalEvidenceResult resultOf(const std::string& sourceID, SourceComputation computation,
                              double minimumEffect) {
  SignalEvidenceResult result{.sourceID = sourceID,
                              .status = statusOf(computation, minimumEffect),
                              .observedDays = computation.observedDays,
                              .overlappingDays = computation.overlappingDays,
                              .evaluatedSignals = computation.evaluatedSignals,
                              .associations = std::move(computation.candidates),
                              .unevaluated = std::move(computation.unevaluated)};
  const auto strongest = std::ranges::max_element(result.associations, {}, [](const auto& each) {
    return std::abs(each.standardizedDifference);
  });  // the first of equal ones
  if (strongest != result.associations.end()) {
    result.strongestSignalID = strongest->signalID;
    result.strongestComparison = strongest->comparison;
    result.standardizedDifference = strongest->standardizedDifference;
    result.strongestLagDays = strongest->lagDays;
  }
  return result;
}

/// A number for each signal, the same for those that have the same days, as the signals of one device mostly
/// do.
std::vector<std::size_t> numbersOfDays(std::span<const RankedSignal> signals) {
  constexpr auto comesFirst = [](std::span<const std::uint32_t> left, std::span<const std::uint32_t> right) {
    return std::ranges::lexicographical_compare(left, right);
  };
  std::map<std::span<const std::uint32_t>, std::size_t, decltype(comesFirst)> numbers;
  std::vector<std::size_t> numberOfEach;
  for (const RankedSignal& signal : signals) {
    numberOfEach.push_back(numbers.try_emplace(signal.days, numbers.size()).first->second);
  }
  return numberOfEach;
}

/// Runs `work` in `threads` threads, of which this is one; in fewer where the system gives no more.
template <class Work>
void inThreads(std::size_t threads, const Work& work) {
  std::vector<std::jthread> others;
  try {
    while (others.size() + 1 < threads) {
      others.emplace_back(work);
    }
  } catch (const std::system_error&) {  // NOLINT(bugprone-empty-catch): those that there are do it all
  }
  work();
}

}  // namespace

std::vector<SignalEvidenceResult> SignalEvidenceAnalyzer::analyze(
    std::span<const std::string> sourceIDs, std::span<const SignalEvidenceObservation> observations,
    std::span<const SignalEvidenceLabel> labels, std::int64_t minimumDays, double minimumEffect) {
  EvidenceRun run(observations, labels, minimumDays);
  std::vector<SourceComputation> computations;
  std::unordered_map<std::string_view, std::size_t> firstPass;  // a later pass finds the same
  for (const std::string& sourceID : sourceIDs) {
    const auto [first, isNew] = firstPass.try_emplace(sourceID, computations.size());
    computations.push_back(isNew ? run.pass(sourceID) : computations[first->second]);
  }
  adjust(computations);

  std::vector<SignalEvidenceResult> results;
  results.reserve(sourceIDs.size());
  for (std::size_t place = 0; place < sourceIDs.size(); ++place) {
    results.push_back(resultOf(sourceIDs[place], std::move(computations[place]), minimumEffect));
  }
  return results;
}

std::vector<SignalPairAssociation> SignalEvidenceAnalyzer::pairs(
    std::span<const SignalEvidenceObservation> observations, std::int64_t minimumDays, unsigned threads) {
  const auto observed = groupedBySignal(observations);
  const std::size_t count = observed.signals.size();

  std::vector<RankedSignal> ranked(count);
  std::atomic<std::size_t> nextSignal = 0;
  inThreads(std::min<std::size_t>(threads, count), [&] {
    for (std::size_t place = nextSignal++; place < count; place = nextSignal++) {
      ranked[place] = RankedSignal::of(observed.signals[place], observed.firstDay);
    }
  });
  const auto calendars = numbersOfDays(ranked);

  // A thread takes some signals at a time to pair them with all later ones.
  constexpr std::size_t atATime = 8;
  std::vector<std::vector<SignalPairAssociation>> pairsOfFirst(count);
  std::atomic<std::size_t> nextBegin = 0;
  inThreads(std::min<std::size_t>(threads, (count + atATime - 1) / atATime), [&] {
    RankCorrelator correlator(observed.days);
    std::array<std::vector<double>, atATime> products;  // of those with the same days, by the second
    products.fill(std::vector<double>(count));
    for (std::size_t begin = nextBegin.fetch_add(atATime); begin < count;
         begin = nextBegin.fetch_add(atATime)) {
      const std::size_t end = std::min(begin + atATime, count);
      // A signal meets them all while the processor has it at hand.
      for (std::size_t second = begin + 1; second < count; ++second) {
        for (std::size_t first = begin; first < std::min(end, second); ++first) {
          if (calendars[first] == calendars[second]) {
            products[first - begin][second] = sumOfProducts(ranked[first].ranks, ranked[second].ranks);
          }
        }
      }
      for (std::size_t first = begin; first < end; ++first) {
        correlator.take(ranked[first]);
        for (std::size_t second = first + 1; second < count; ++second) {
          const RankCorrelation correlation =
              calendars[first] == calendars[second]
                  ? RankCorrelation{.sharedDays = ranked[first].days.size(),
                                    .products = products[first - begin][second],
                                    .firstSquares = ranked[first].squares,
                                    .secondSquares = ranked[second].squares}
                  : correlator.with(ranked[second]);
          // Of whole numbers: 0 where one of the two does not vary, and far from it where both do.
          const double spread = std::sqrt(correlation.firstSquares * correlation.secondSquares);
          const auto pairedDays = static_cast<std::int64_t>(correlation.sharedDays);
          if (pairedDays < minimumDays || spread == 0) {
            continue;
          }
          const SignalKey& firstKey = observed.signals[first].key;
          const SignalKey& secondKey = observed.signals[second].key;
          pairsOfFirst[first].push_back(
              {.firstSourceID = firstKey.sourceID,
               .firstSignalID = firstKey.signalID,
               .secondSourceID = secondKey.sourceID,
               .secondSignalID = secondKey.signalID,
               .pairedDays = pairedDays,
               .spearmanRho = SignalStatistics::roundedToFourDecimals(correlation.products / spread)});
        }
      }
    }
  });

  std::size_t all = 0;
  for (const auto& some : pairsOfFirst) {
    all += some.size();
  }
  std::vector<SignalPairAssociation> pairs;
  pairs.reserve(all);
  for (auto& some : pairsOfFirst) {
    std::ranges::move(some, std::back_inserter(pairs));
  }
  return pairs;
}

}  // namespace kestrel
