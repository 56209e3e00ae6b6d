#include "RankedSignal.h"

#include <boost/sort/spreadsort/integer_sort.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <utility>

namespace kestrel {
namespace {

/// Holds sums over all days of the calendar, of the cubes of their number, as they are.
__extension__ using Wide = __int128;

/// The values of `signal` by day, each day once.
SignalSeries lastOfEachDay(const SignalSeries& signal) {
  std::vector<std::pair<std::int32_t, std::size_t>> order;
  order.reserve(signal.days.size());
  for (const std::int32_t day : signal.days) {
    order.emplace_back(day, order.size());
  }
  std::ranges::sort(order);
  SignalSeries latest{};
  for (const auto& [day, place] : order) {
    if (!latest.days.empty() && latest.days.back() == day) {
      latest.values.back() = signal.values[place];
    } else {
      latest.days.push_back(day);
      latest.values.push_back(signal.values[place]);
    }
  }
  return latest;
}

/// Ascends as finite values do, and is equal for those that are.
std::uint64_t orderOf(double value) {
  constexpr std::uint64_t sign = std::uint64_t{1} << 63U;
  const auto bits = std::bit_cast<std::uint64_t>(value + 0.0);  // -0 becomes 0
  return (bits & sign) != 0 ? ~bits : bits | sign;
}

/// Calls `work` with each run of days whose values are equal, in their order. Where every run has but one
/// day, the compiler gets to know it.
template <class Work>
void forEachRun(const RankedSignal& signal, const Work& work) {
  const std::span<const std::uint32_t> order(signal.order);
  if (signal.runEnds.size() == order.size()) {
    for (const std::uint32_t& day : order) {
      work(std::span<const std::uint32_t, 1>(&day, 1));
    }
    return;
  }
  std::size_t begin = 0;
  for (const std::uint32_t end : signal.runEnds) {
    work(order.subspan(begin, end - begin));
    begin = end;
  }
}

/// A number of days, cubed, less itself: three times the sum of the squared ranks of so many different
/// values, and what they lack where these values are equal.
Wide cubeLess(std::uint32_t days) { return (Wide{days} * days - 1) * days; }

}  // namespace

RankedSignal RankedSignal::of(const SignalSeries& series, std::int32_t firstDay) {
  if (std::ranges::adjacent_find(series.days, std::greater_equal()) != series.days.end()) {
    return of(lastOfEachDay(series), firstDay);  // which has its days in order
  }
  struct Ordered {
    std::uint64_t value;
    std::uint32_t place;
  };
  std::vector<Ordered> ordered;
  ordered.reserve(series.values.size());
  for (const double value : series.values) {
    ordered.push_back({.value = orderOf(value), .place = static_cast<std::uint32_t>(ordered.size())});
  }
  RankedSignal signal;
  signal.days.reserve(series.days.size());
  for (const std::int32_t day : series.days) {
    signal.days.push_back(static_cast<std::uint32_t>(day - firstDay));
  }
  boost::sort::spreadsort::integer_sort(
      ordered.begin(), ordered.end(), [](const Ordered& each, unsigned shift) { return each.value >> shift; },
      [](const Ordered& left, const Ordered& right) { return left.value < right.value; });

  const auto count = static_cast<std::uint32_t>(ordered.size());
  signal.ranks.resize(count);
  signal.order.reserve(count);
  for (std::uint32_t begin = 0, end = 0; begin < count; begin = end) {
    while (end < count && ordered[end].value == ordered[begin].value) {
      ++end;
    }
    const double rank = static_cast<double>(begin + end) - static_cast<double>(count);
    for (std::uint32_t place = begin; place < end; ++place) {
      signal.ranks[ordered[place].place] = rank;
      signal.order.push_back(signal.days[ordered[place].place]);
    }
    signal.squares += rank * rank * static_cast<double>(end - begin);
    signal.runEnds.push_back(end);
  }
  return signal;
}

double sumOfProducts(std::span<const double> left, std::span<const double> right) {
  constexpr std::size_t lanes = 8;  // which the processor can work on at a time; always the same
  std::array<double, lanes> sums{};
  std::size_t place = 0;
  for (; place + lanes <= left.size(); place += lanes) {
    for (std::size_t lane = 0; lane < lanes; ++lane) {
      sums[lane] += left[place + lane] * right[place + lane];
    }
  }
  double sum = 0;
  for (; place < left.size(); ++place) {
    sum += left[place] * right[place];
  }
  for (const double each : sums) {
    sum += each;
  }
  return sum;
}

RankCorrelator::RankCorrelator(std::size_t days) : isOfFirst_(days), ranks_(days) {}

void RankCorrelator::take(const RankedSignal& first) {
  if (first_ != nullptr) {
    for (const std::uint32_t day : first_->days) {
      isOfFirst_[day] = 0;
    }
  }
  first_ = &first;
  for (const std::uint32_t day : first.days) {
    isOfFirst_[day] = 1;
  }
}

RankCorrelation RankCorrelator::with(const RankedSignal& second) {
  std::uint32_t shared = 0;
  Wide lackOfSecond = 0;
  forEachRun(second, [&](auto run) {
    const std::uint32_t before = shared;
    for (const std::uint32_t day : run) {
      shared += isOfFirst_[day];
    }
    const std::uint32_t rank = before + shared + 1;
    for (const std::uint32_t day : run) {
      ranks_[day] = isOfFirst_[day] != 0 ? rank : 0;
    }
    if (run.size() > 1) {
      lackOfSecond += cubeLess(shared - before);
    }
  });

  std::uint32_t passed = 0;
  Wide products = 0;
  Wide lackOfFirst = 0;
  forEachRun(*first_, [&](auto run) {
    const std::uint32_t before = passed;
    std::uint64_t ranks = 0;
    for (const std::uint32_t day : run) {
      passed += ranks_[day] != 0 ? 1U : 0U;
      ranks += ranks_[day];
      ranks_[day] = 0;
    }
    products += Wide{ranks} * (before + passed + 1);
    if (run.size() > 1) {
      lackOfFirst += cubeLess(passed - before);
    }
  });

  const Wide all = cubeLess(shared);
  const Wide productsFromMeans = products - Wide{shared} * (shared + 1) * (shared + 1);
  const Wide firstSquares = (all - lackOfFirst) / 3;  // without a remainder
  const Wide secondSquares = (all - lackOfSecond) / 3;
  return {.sharedDays = shared,
          .products = static_cast<double>(productsFromMeans),
          .firstSquares = static_cast<double>(firstSquares),
          .secondSquares = static_cast<double>(secondSquares)};
}

}  // namespace kestrel
