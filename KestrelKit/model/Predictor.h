#pragma once

#include <KestrelKit/model/DateKey.h>
#include <KestrelKit/model/DayKeyFormatter.h>
#include <KestrelKit/model/Prediction.h>
#include <KestrelKit/model/StateClassification.h>

#include <cstdint>
#include <span>
#include <vector>

namespace kestrel {

/// The persistence forecast: tomorrow is as today, with a probability that is the state's own. What any other
/// forecast has to be better than. Pure; any thread.
struct Predictor {
  Predictor() = delete;

  /// The forecast of the `days` days, 1 or more, that follow the last of `history`, which is in the order of
  /// time. Fewer than 1 is a programming error whatever the history: a caller that counts wrongly should not
  /// learn of it only when there is enough to forecast from.
  ///
  /// Empty when the history holds fewer than 3 classifications or its last date is no day key; a day beyond
  /// the year 9999 is left out. Days are added in 24 hours to the midnight at which `formatter` has the last
  /// date begin, and named by it again: across the night in which the clocks are set back a key comes twice.
  static std::vector<Prediction> predict(std::span<const StateClassification> history, std::int64_t days,
                                         const DayKeyFormatter& formatter = DateKey::formatter());
};

}  // namespace kestrel
