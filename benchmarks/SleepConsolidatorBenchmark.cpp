// What making nights of sleep intervals costs beside sorting them.
//
//   sleep_consolidator_benchmark [ROUNDS]
//
// Two million nights of three to seven intervals, ten million in all. Each round, in turns: std::sort of the
// shuffled intervals by their start; the consolidation of the same shuffled intervals; that of the ordered
// ones; both with the nights they give. Prints medians and ratios in two zones. Takes at least 5 ROUNDS,
// which is also what it takes by default.

#include <KestrelKit/circadian/SleepConsolidator.h>
#include <KestrelKit/foundation/Calendar.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "Timing.h"

namespace {

using kestrel::Calendar;
using kestrel::SleepConsolidator;
using kestrel::SleepInterval;
using kestrel::benchmark::median;
using kestrel::benchmark::processorMilliseconds;

constexpr std::size_t nightCount = 2'000'000;
constexpr std::size_t intervalCount = 5 * nightCount;
constexpr double gapLimitMinutes = 60;

/// One night a day from the first of January of the year 1 on, to the year 5476. Evenings begin between 21:30
/// and 23:30 in UTC; the intervals last 20 to 80 minutes, and the gaps between them 0 to 20, or overlap by up
/// to 10.
std::vector<SleepInterval> orderedIntervals() {
  std::mt19937_64 random(1);
  const auto minutes = [&](int least, int most) {
    return std::uniform_int_distribution(least * 60, most * 60)(random) * 1.0;
  };
  constexpr double firstEvening = -63'113'904'000.0 + 21.5 * 3600;
  std::vector<SleepInterval> intervals;
  intervals.reserve(intervalCount);
  for (std::size_t night = 0; night < nightCount; ++night) {
    // Three to seven, the last nights so that the sum comes out.
    const std::size_t left = intervalCount - intervals.size();
    const std::size_t nightsLeft = nightCount - night;
    const std::size_t wanted = 3 + random() % 5;
    const std::size_t count =
        nightsLeft == 1
            ? left
            : std::clamp(wanted, left - std::min(left, 7 * (nightsLeft - 1)), left - 3 * (nightsLeft - 1));
    double time = firstEvening + static_cast<double>(night) * 86'400 + minutes(0, 120);
    for (std::size_t each = 0; each < count; ++each) {
      const double end = time + minutes(20, 80);
      intervals.push_back(
          {kestrel::instantSinceReferenceDate(time), kestrel::instantSinceReferenceDate(end)});
      time = end + minutes(-10, 20);
    }
  }
  return intervals;
}

}  // namespace

int main(int count, char** arguments) {
  constexpr int fewestRounds = 5;
  const int rounds =
      count > 1 ? std::atoi(arguments[1]) : fewestRounds;  // NOLINT(cert-err34-c): 0 is refused below
  if (rounds < fewestRounds) {
    fmt::print(stderr, "sleep_consolidator_benchmark: at least {} rounds are needed\n", fewestRounds);
    return 1;
  }
  const auto ordered = orderedIntervals();
  auto shuffled = ordered;
  std::ranges::shuffle(shuffled, std::mt19937_64(2));
  if (!std::ranges::is_sorted(ordered, {}, &SleepInterval::start) || ordered.size() != intervalCount) {
    fmt::print(stderr, "sleep_consolidator_benchmark: the input is not what it should be\n");
    return 1;
  }

  fmt::print(
      "| zone | std::sort, ms | shuffled, ms | ratio | in order, ms | ratio |\n|---|--:|--:|--:|--:|--:|\n");
  for (const char* zone : {"UTC", "America/New_York"}) {
    const Calendar calendar = Calendar::gregorian(kestrel::TimeZone::named(zone).value());
    const auto consolidate = [&](const std::vector<SleepInterval>& intervals) {
      return processorMilliseconds([&] {
        const auto nights = SleepConsolidator::consolidate(intervals, gapLimitMinutes, calendar);
        if (nights.size() != nightCount) {
          fmt::print(stderr, "sleep_consolidator_benchmark: {} nights\n", nights.size());
          std::exit(1);
        }
      });
    };
    std::vector<double> sort;
    std::vector<double> whole;
    std::vector<double> inOrder;
    std::vector<double> wholeRatio;
    std::vector<double> inOrderRatio;
    for (int round = 0; round < rounds; ++round) {
      {
        auto copy = shuffled;  // what it takes to make is not counted
        sort.push_back(processorMilliseconds([&] {
          std::sort(copy.begin(), copy.end(), [](const SleepInterval& left, const SleepInterval& right) {
            return left.start < right.start;
          });
        }));
      }
      whole.push_back(consolidate(shuffled));
      inOrder.push_back(consolidate(ordered));
      wholeRatio.push_back(whole.back() / sort.back());
      inOrderRatio.push_back(inOrder.back() / sort.back());
    }
    fmt::print("| {} | {:.0f} | {:.0f} | {:.2f} | {:.0f} | {:.2f} |\n", zone, median(sort), median(whole),
               median(wholeRatio), median(inOrder), median(inOrderRatio));
    std::fflush(stdout);
  }
}
