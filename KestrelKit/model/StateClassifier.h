#pragma once

#include <KestrelKit/model/Baseline.h>
#include <KestrelKit/model/DailyMetrics.h>
#include <KestrelKit/model/StateClassification.h>
#include <KestrelKit/model/UserReport.h>

#include <span>
#include <vector>

namespace kestrel {

/// The state of a day, from its signals, by a fixed table of rules that stands at the start of the source
/// file: the rules are the product's own, and no learned model. A user's own report goes before the rules; a
/// heart-rate variability that is missing can hold an elevated verdict back; and in a series a lone day of
/// one polarity between two days of the other is not reported.
///
/// It never fails, whatever the numbers: without data a day is `unknown`, with a reason; a comparison with
/// what is not a number is false. Of the baseline it reads the posts only, and 0 counts as 1. Pure; any
/// thread.
struct StateClassifier {
  StateClassifier() = delete;

  /// The state of one day. `report` is the user's own for that day; null: there is none.
  static StateClassification classify(const DailyMetrics& day, const UserReport* report,
                                      const Baseline& baseline);

  /// The states of `days`, one each, in the order given, which is that of time. Of three neighbours that
  /// disagree the middle one becomes euthymia: one that the rules decided, elevated between two depressed
  /// days or depressed between two elevated ones, whatever these come from. A day's neighbours are judged as
  /// the rules or their reports have them, before any smoothing. A report is found under the day's own key,
  /// most quickly where the keys ascend.
  static std::vector<StateClassification> classifySeries(std::span<const DailyMetrics> days,
                                                         const UserReports& reports,
                                                         const Baseline& baseline);

  /// The same into `result`, whose memory is used again as far as it reaches: for callers that classify anew
  /// and again. What it held is replaced.
  static void classifySeries(std::span<const DailyMetrics> days, const UserReports& reports,
                             const Baseline& baseline, std::vector<StateClassification>& result);
};

}  // namespace kestrel
