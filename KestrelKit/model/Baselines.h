#pragma once

#include <KestrelKit/model/Baseline.h>
#include <KestrelKit/model/DailyMetrics.h>

#include <span>

namespace kestrel {

/// How baselines are computed. Pure; any thread.
struct Baselines {
  Baselines() = delete;

  /// The usual levels in `history`, which may be in any order: those of its last 28 days with data, by day
  /// key (of equal keys, the order given). A day has data unless it has 0 hours of sleep and 0 posts.
  ///
  /// Sleep is averaged over the days with more than 0 hours, posts over all of them, sentiment over the days
  /// with more than 0 posts; an average over no day stays what Baseline has. With fewer than 7 days with data
  /// all of Baseline stays as it is: a week is the least that holds every day of the week.
  static Baseline personal(std::span<const DailyMetrics> history);
};

}  // namespace kestrel
