#pragma once

#include <KestrelKit/foundation/JsonField.h>

namespace kestrel {

/// How activity is spread over the 24 hours: the non-parametric measures of the rest-activity rhythm (W.
/// Witting et al., "Alterations in the circadian rest-activity rhythm in aging and Alzheimer's disease",
/// Biological Psychiatry 27, 1990, 563-572; E. J. W. Van Someren et al., Chronobiology International 16,
/// 1999, 505-518). Activity is in the unit of the hourly totals, steps for instance. See
/// CircadianStatistics::activityRhythm().
struct ActivityRhythm {
  double m10OnsetHour = 0;       ///< The hour, 0 to 23, with which the most active 10 hours begin.
  double m10 = 0;                ///< Mean activity of the most active 10 consecutive hours.
  double l5 = 0;                 ///< Mean activity of the least active 5 consecutive hours.
  double mesor = 0;              ///< Mean activity of all 24 hours.
  double relativeAmplitude = 0;  ///< (M10 - L5) / (M10 + L5): 0 is flat, 1 has five hours of full rest.

  bool operator==(const ActivityRhythm&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
