#include <KestrelKit/analytics/BlueskyInsights.h>
#include <KestrelKit/foundation/CheckedSum.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kestrel {
namespace {

constexpr std::int64_t hoursOfDay = 24;

/// A total, and the count of a day that it adds up.
struct Total {
  std::int64_t BlueskySummary::*total;
  std::optional<std::int64_t> VizDay::*ofDay;
  std::string_view name;
};

constexpr Total totals[] = {
    {&BlueskySummary::totalPosts, &VizDay::posts, "the sum of the posts"},
    {&BlueskySummary::totalReplies, &VizDay::replyCount, "the sum of the replies"},
    {&BlueskySummary::totalQuotes, &VizDay::quoteCount, "the sum of the quotes"},
    {&BlueskySummary::totalReposts, &VizDay::repostCount, "the sum of the reposts"},
    {&BlueskySummary::totalLikes, &VizDay::likeCount, "the sum of the likes"},
    {&BlueskySummary::totalFollows, &VizDay::followCount, "the sum of the follows"},
    {&BlueskySummary::totalMentions, &VizDay::mentionCount, "the sum of the mentions"},
    {&BlueskySummary::totalLinks, &VizDay::linkCount, "the sum of the links"},
    {&BlueskySummary::totalHashtags, &VizDay::hashtagCount, "the sum of the hashtags"},
    {&BlueskySummary::totalLateNightPosts, &VizDay::lateNightPosts, "the sum of the late-night posts"},
};

double finiteOrZero(double value) noexcept { return std::isfinite(value) ? value : 0; }

double quotient(double sum, std::int64_t count) noexcept {
  return count == 0 ? 0 : sum / static_cast<double>(count);
}

/// An average over the posts of the days that have a value.
class AverageOfPosts {
 public:
  void add(const std::optional<double>& value, std::int64_t posts) {
    if (value) {
      sum_ += finiteOrZero(*value) * static_cast<double>(posts);
      weight_ = checkedSum(weight_, posts, "the number of posts that an average is of");
    }
  }

  double value() const noexcept { return quotient(sum_, weight_); }

 private:
  double sum_ = 0;
  std::int64_t weight_ = 0;
};

}  // namespace

BlueskySummary BlueskyInsights::summary(std::span<const VizDay> days) {
  BlueskySummary summary;
  AverageOfPosts length;
  AverageOfPosts absolutism;
  for (const VizDay& day : days) {
    for (const auto& [total, ofDay, name] : totals) {
      summary.*total = checkedSum(summary.*total, (day.*ofDay).value_or(0), name);
    }
    const std::int64_t posts = day.posts.value_or(0);
    if (posts > 0) {
      ++summary.days;
    }
    length.add(day.avgPostLength, posts);
    absolutism.add(day.absolutistRate, posts);
  }
  summary.avgPostsPerDay = quotient(static_cast<double>(summary.totalPosts), summary.days);
  summary.avgPostLength = length.value();
  summary.absolutismRatePct = absolutism.value() * 100;
  return summary;
}

std::vector<HourBucket> BlueskyInsights::postsByHour(std::span<const VizDay> days) {
  std::vector<HourBucket> hours;
  hours.reserve(hoursOfDay);
  for (std::int64_t hour = 0; hour < hoursOfDay; ++hour) {
    hours.push_back({.hour = hour});
  }
  for (const VizDay& day : days) {
    if (day.postsByHour) {
      for (std::size_t hour = 0; hour < std::min(hours.size(), day.postsByHour->size()); ++hour) {
        hours[hour].posts =
            checkedSum(hours[hour].posts, (*day.postsByHour)[hour], "the sum of the posts of an hour");
      }
    }
  }
  return hours;
}

std::vector<InteractionDay> BlueskyInsights::interactions(std::span<const VizDay> days) {
  std::vector<InteractionDay> series;
  series.reserve(days.size());
  for (const VizDay& day : days) {
    series.push_back({.date = day.date,
                      .replies = day.replyCount.value_or(0),
                      .quotes = day.quoteCount.value_or(0),
                      .reposts = day.repostCount.value_or(0)});
  }
  return series;
}

std::vector<AbsolutismDay> BlueskyInsights::absolutism(std::span<const VizDay> days) {
  std::vector<AbsolutismDay> series;
  series.reserve(days.size());
  for (const VizDay& day : days) {
    series.push_back({.date = day.date, .absolutismPct = finiteOrZero(day.absolutistRate.value_or(0)) * 100});
  }
  return series;
}

}  // namespace kestrel
