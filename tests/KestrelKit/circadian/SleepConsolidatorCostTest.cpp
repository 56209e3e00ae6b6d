#include <KestrelKit/circadian/SleepConsolidator.h>
#include <gtest/gtest.h>
#include <support/Allocations.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

/// Five intervals a night for `nights` nights, in order.
std::vector<SleepInterval> nightsOfFive(int nights) {
  std::vector<SleepInterval> intervals;
  for (int index = 0; index < nights * 5; ++index) {
    const double start = index / 5 * 86'400.0 + index % 5 * 5400.0;
    intervals.push_back({instantSinceReferenceDate(start), instantSinceReferenceDate(start + 5000)});
  }
  return intervals;
}

/// How often consolidating into `nights` nights takes memory.
std::size_t allocationsFor(const std::vector<SleepInterval>& intervals, std::size_t nights) {
  const Calendar calendar = Calendar::gregorian(TimeZone::utc());
  const std::size_t before = Allocations::count;
  const auto sessions = SleepConsolidator::consolidate(intervals, 30, calendar);
  EXPECT_EQ(sessions.size(), nights);
  return Allocations::count - before;
}

TEST(SleepConsolidatorCost, inputInOrderIsNotCopied) {
  auto intervals = nightsOfFive(1000);
  const std::size_t inOrder = allocationsFor(intervals, 1000);
  std::swap(intervals[0], intervals[1]);
  EXPECT_EQ(allocationsFor(intervals, 1000), inOrder + 1);
}

TEST(SleepConsolidatorCost, nothingIsAllocatedForANightByItself) {
  // The nights, and the list of sessions that doubles up to their number: 1, 2, 4, … 1024.
  EXPECT_LE(allocationsFor(nightsOfFive(1000), 1000), 1U + 11U);
}

}  // namespace
}  // namespace kestrel
