#pragma once

#include <KestrelKit/circadian/SleepInterval.h>
#include <KestrelKit/circadian/SleepSession.h>
#include <KestrelKit/circadian/SleepStageInterval.h>
#include <KestrelKit/foundation/Calendar.h>

#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace kestrel {

/// Joins recorded segments of sleep into nights.
///
/// Taken by their start, an interval belongs to the night before it when the gap since that night's latest
/// end is at most the gap limit, in minutes; an overlap is a negative gap. Intervals that do not end after
/// they start count for nothing. A night bears the day of its latest end, in the calendar given: the day on
/// which the person woke. Its mid-sleep is what the clocks of the calendar's zone show halfway between its
/// first start and its latest end, seconds dropped. A day or a time that the calendar cannot name, far beyond
/// any life or not finite, has zeros in the place of its numbers.
///
/// The order of the input does not matter, and nothing fails. Input that comes ordered by start, and of equal
/// starts the longest first, is neither sorted nor copied.
struct SleepConsolidator {
  SleepConsolidator() = delete;

  /// The nights in the order of time. Time that several intervals cover counts once as asleep.
  static std::vector<SleepSession> consolidate(std::span<const SleepInterval> intervals,
                                               double gapLimitMinutes, const Calendar& calendar);

  /// The night of the day `date`, a day key, told from intervals with stages; nothing when no night bears
  /// that day.
  ///
  /// Intervals of every stage make up the nights. Asleep is the time that intervals of the stages `asleep`,
  /// `asleepUnspecified`, `asleepCore`, `asleepDeep`, `asleepREM`, `core`, `deep` and `rem` cover, in upper
  /// or lower case; mid-sleep lies halfway between the first start and the latest end of these. Where none
  /// counts as asleep, mid-sleep is that of the whole night, with 0 minutes asleep. Of several nights of that
  /// day the one with the most minutes asleep is given, of equal ones the earliest.
  static std::optional<SleepSession> consolidate(std::span<const SleepStageInterval> intervals,
                                                 double gapLimitMinutes, const Calendar& calendar,
                                                 std::string_view date);
};

}  // namespace kestrel
