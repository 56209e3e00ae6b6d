#pragma once

#include <KestrelKit/analytics/AbsolutismDay.h>
#include <KestrelKit/analytics/BlueskySummary.h>
#include <KestrelKit/analytics/HourBucket.h>
#include <KestrelKit/analytics/InteractionDay.h>
#include <KestrelKit/formats/VizDay.h>

#include <span>
#include <vector>

namespace kestrel {

/// What days of social posts add up to. Pure; any thread. A count that a day lacks is 0; a sum beyond 64 bits
/// is a programming error.
struct BlueskyInsights {
  BlueskyInsights() = delete;

  /// The totals of `days`, and averages in which a day counts as often as it has posts. A day without an
  /// average length, or without a rate of absolutist words, is left out of that average; one that is not
  /// finite counts as 0. Nothing is rounded.
  static BlueskySummary summary(std::span<const VizDay> days);

  /// The posts of each hour, 0 to 23, over all days. An hour that a day does not list has none; what follows
  /// the 24th hour of a day is ignored.
  static std::vector<HourBucket> postsByHour(std::span<const VizDay> days);

  /// One entry a day, in the order given.
  static std::vector<InteractionDay> interactions(std::span<const VizDay> days);

  /// One entry a day, in the order given. A rate that is absent or not finite is 0.
  static std::vector<AbsolutismDay> absolutism(std::span<const VizDay> days);
};

}  // namespace kestrel
