#include <KestrelKit/model/Baselines.h>

#include <algorithm>
#include <cstddef>
#include <ranges>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

constexpr std::size_t mostDays = 28;   // four weeks: recent, and every day of the week alike
constexpr std::size_t fewestDays = 7;  // a week

// The mean of what is added; as long as nothing is, what the level is usually.
class Mean {
 public:
  void add(double value) noexcept {
    sum_ += value;
    count_ += 1;
  }

  double valueOr(double usual) const noexcept { return count_ == 0 ? usual : sum_ / count_; }

 private:
  double sum_ = 0;
  double count_ = 0;
};

}  // namespace

Baseline Baselines::personal(std::span<const DailyMetrics> history) {
  std::vector<const DailyMetrics*> days;
  for (const DailyMetrics& day : history) {
    if (!(day.sleep_hours == 0 && day.posts == 0)) {
      days.push_back(&day);
    }
  }
  Baseline usual;
  if (days.size() < fewestDays) {
    return usual;
  }
  // Days of one key in the order given, which is that of their places.
  std::ranges::sort(days, {}, [](const DailyMetrics* day) {
    return std::pair{std::string_view{day->date}, day};
  });

  Mean sleep;
  Mean posts;
  Mean sentiment;
  for (const DailyMetrics* day : days | std::views::drop(days.size() - std::min(days.size(), mostDays))) {
    posts.add(static_cast<double>(day->posts));  // as floats, so that no sum of counts lies beyond 64 bits
    if (day->sleep_hours > 0) {
      sleep.add(day->sleep_hours);
    }
    if (day->posts > 0) {
      sentiment.add(day->sentiment);
    }
  }
  return {.avgSleep = sleep.valueOr(usual.avgSleep),
          .avgPosts = posts.valueOr(usual.avgPosts),
          .avgSentiment = sentiment.valueOr(usual.avgSentiment)};
}

}  // namespace kestrel
