#pragma once

#include <KestrelKit/model/ShadowDay.h>
#include <KestrelKit/model/ShadowSummary.h>

#include <span>

namespace kestrel {

/// Scores the circadian classifier in the shadow of the user's own labels, before it is trusted. Pure; any
/// thread.
struct ShadowEvaluator {
  ShadowEvaluator() = delete;

  /// The score over `days`, which may be in any order: they are taken by day key, equal ones in the order
  /// given. A day counts when it has a label and an earlier day had one; two states agree when they belong to
  /// the same group of StateTheme, and what is absent agrees with nothing.
  static ShadowSummary evaluate(std::span<const ShadowDay> days);
};

}  // namespace kestrel
