#include "RankedSignal.h"

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

namespace kestrel {
namespace {

/// The values by day, each day once.
std::vector<DayValue> lastOfEachDay(std::span<const DayValue> values) {
  std::vector<DayValue> latest(values.begin(), values.end());
  if (std::ranges::adjacent_find(latest, std::greater_equal(), &DayValue::day) == latest.end()) {
    return latest;  // as it mostly comes
  }
  std::vector<std::pair<std::int32_t, std::size_t>> order;
  order.reserve(values.size());
  for (std::size_t place = 0; place < values.size(); ++place) {
    order.emplace_back(values[place].day, place);
  }
  std::ranges::sort(order);
  latest.clear();
  for (const auto& [day, place] : order) {
    if (!latest.empty() && latest.back().day == day) {
      latest.pop_back();
    }
    latest.push_back(values[place]);
  }
  return latest;
}

/// The doubled rank, counted from the mean, of a value at `place`, where `sharedBefore` says of each place,
/// and of the end, how many days count before it.
double rankOf(const RankedSignal::Place& place, std::span<const std::uint32_t> sharedBefore) {
  return static_cast<double>(sharedBefore[place.runBegin] + sharedBefore[place.runEnd]) -
         static_cast<double>(sharedBefore.back());
}

/// In four sums that the processor can work on at a time; always the same four.
double sumOfProducts(std::span<const double> left, std::span<const double> right) {
  std::array<double, 4> sums{};
  for (std::size_t place = 0; place < left.size(); ++place) {
    sums[place % sums.size()] += left[place] * right[place];
  }
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

}  // namespace

RankedSignal RankedSignal::of(std::span<const DayValue> values, std::int32_t firstDay) {
  const auto latest = lastOfEachDay(values);
  std::vector<std::pair<double, std::uint32_t>> order;  // value, index of the day
  order.reserve(latest.size());
  RankedSignal signal;
  signal.days.reserve(latest.size());
  for (const auto& [day, value] : latest) {
    order.emplace_back(value, static_cast<std::uint32_t>(order.size()));
    signal.days.push_back(static_cast<std::uint32_t>(day - firstDay));
  }
  std::ranges::sort(order);

  const auto count = static_cast<std::uint32_t>(order.size());
  signal.ranks.resize(count);
  signal.places.reserve(count);
  for (std::uint32_t runBegin = 0, runEnd = 0; runBegin < count; runBegin = runEnd) {
    while (runEnd < count && order[runEnd].first == order[runBegin].first) {
      ++runEnd;
    }
    const double rank = static_cast<double>(runBegin + runEnd) - static_cast<double>(count);
    for (std::uint32_t place = runBegin; place < runEnd; ++place) {
      const std::uint32_t index = order[place].second;
      signal.ranks[index] = rank;
      signal.squares += rank * rank;
      signal.places.push_back({.day = signal.days[index], .runBegin = runBegin, .runEnd = runEnd});
    }
  }
  return signal;
}

RankCorrelator::RankCorrelator(std::size_t days) : numberOfDay_(days) {}

void RankCorrelator::take(const RankedSignal& first) {
  if (first_ != nullptr) {
    for (const std::uint32_t day : first_->days) {
      numberOfDay_[day] = 0;
    }
  }
  first_ = &first;
  std::uint32_t number = 0;
  for (const RankedSignal::Place& place : first.places) {
    numberOfDay_[place.day] = ++number;
  }
  isShared_.resize(first.places.size() + 1);
  sharedBeforeFirst_.resize(first.places.size() + 1);
  ranks_.resize(first.places.size() + 1);
}

RankCorrelation RankCorrelator::with(const RankedSignal& second) {
  const RankedSignal& first = *first_;
  if (first.days == second.days) {  // mostly so for the signals of one device
    return {.sharedDays = first.days.size(),
            .products = sumOfProducts(first.ranks, second.ranks),
            .firstSquares = first.squares,
            .secondSquares = second.squares};
  }

  numbers_.resize(second.places.size());
  sharedBeforeSecond_.resize(second.places.size() + 1);
  std::ranges::fill(isShared_, std::uint8_t{0});
  std::uint32_t shared = 0;
  for (std::size_t place = 0; place < second.places.size(); ++place) {
    const std::uint32_t number = numberOfDay_[second.places[place].day];
    numbers_[place] = number;
    isShared_[number] = 1;
    sharedBeforeSecond_[place] = shared;
    shared += number != 0 ? 1U : 0U;
  }
  sharedBeforeSecond_.back() = shared;

  std::uint32_t before = 0;
  for (std::size_t place = 0; place < first.places.size(); ++place) {
    sharedBeforeFirst_[place] = before;
    before += isShared_[place + 1];
  }
  sharedBeforeFirst_.back() = before;

  RankCorrelation sums{.sharedDays = shared};
  for (std::size_t place = 0; place < first.places.size(); ++place) {
    const double rank = isShared_[place + 1] * rankOf(first.places[place], sharedBeforeFirst_);
    ranks_[place + 1] = rank;
    sums.firstSquares += rank * rank;
  }
  for (std::size_t place = 0; place < second.places.size(); ++place) {
    const std::uint32_t number = numbers_[place];
    const double rank = number != 0 ? rankOf(second.places[place], sharedBeforeSecond_) : 0;
    sums.products += rank * ranks_[number];
    sums.secondSquares += rank * rank;
  }
  return sums;
}

}  // namespace kestrel
