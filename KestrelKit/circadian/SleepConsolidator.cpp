#include <KestrelKit/circadian/SleepConsolidator.h>
#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/TimeZone.h>
#include <fmt/compile.h>
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <ranges>
#include <string>
#include <utility>

namespace kestrel {
namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::minutes;

/// The stages that count as asleep, in any case of their ASCII letters.
constexpr std::string_view asleepStages[] = {
    "asleep", "asleepUnspecified", "asleepCore", "asleepDeep", "asleepREM", "core", "deep", "rem",
};

bool isAsleep(std::string_view stage) {
  const auto lowerCase = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::ranges::any_of(asleepStages, [&](std::string_view name) {
    return std::ranges::equal(name, stage, {}, lowerCase, lowerCase);
  });
}

/// Intervals that have been joined so far, in the order of their starts.
struct Session {
  Instant start;
  Instant end;
  Seconds covered;  ///< What the intervals cover, counted once where they overlap.

  explicit Session(const auto& interval)
      : start(interval.start), end(interval.end), covered(interval.end - interval.start) {}

  Seconds gapTo(const auto& interval) const { return interval.start - end; }

  void join(const auto& interval) {
    const Instant uncovered = std::max(end, interval.start);
    if (interval.end > uncovered) {
      covered += interval.end - uncovered;
    }
    end = std::max(end, interval.end);
  }
};

/// A session of intervals with stages, and those among them that count as asleep.
struct StagedSession {
  Session whole;
  std::optional<Session> asleep{};

  explicit StagedSession(const SleepStageInterval& interval) : whole(interval) { joinAsleep(interval); }

  Seconds gapTo(const SleepStageInterval& interval) const { return whole.gapTo(interval); }

  void join(const SleepStageInterval& interval) {
    whole.join(interval);
    joinAsleep(interval);
  }

  Seconds timeAsleep() const { return asleep ? asleep->covered : Seconds(0); }

 private:
  void joinAsleep(const SleepStageInterval& interval) {
    if (!isAsleep(interval.stage)) {
      return;
    }
    if (asleep) {
      asleep->join(interval);
    } else {
      asleep.emplace(interval);
    }
  }
};

template <class Joined>
std::vector<Joined> joinOrdered(auto&& intervals, Seconds gapLimit) {
  std::vector<Joined> sessions;
  for (const auto& interval : intervals) {
    if (!sessions.empty() && sessions.back().gapTo(interval) <= gapLimit) {
      sessions.back().join(interval);
    } else {
      sessions.emplace_back(interval);
    }
  }
  return sessions;
}

template <class Joined, class Interval>
std::vector<Joined> join(std::span<const Interval> intervals, double gapLimitMinutes) {
  const auto lasts = [](const Interval& interval) { return interval.end > interval.start; };
  // The longest first among those that start together: the others lie in it, so that no sum depends on the
  // order that they came in.
  const auto comesFirst = [](const Interval& left, const Interval& right) {
    return left.start < right.start || (left.start == right.start && left.end > right.end);
  };
  const Seconds gapLimit(gapLimitMinutes * 60);
  auto lasting = intervals | std::views::filter(lasts);
  if (std::ranges::is_sorted(lasting, comesFirst)) {
    return joinOrdered<Joined>(lasting, gapLimit);
  }
  std::vector<Interval> ordered;
  ordered.reserve(intervals.size());
  std::ranges::copy(lasting, std::back_inserter(ordered));
  std::ranges::sort(ordered, comesFirst);
  return joinOrdered<Joined>(ordered, gapLimit);
}

Instant midpoint(Instant start, Instant end) {
  constexpr auto since1970 = [](Instant instant) {
    return instant.time_since_epoch() + ReferenceClock::referenceDateSince1970;
  };
  return Instant((since1970(start) + since1970(end)) * 0.5 - ReferenceClock::referenceDateSince1970);
}

/// What a calendar and its clocks show. Zeros where it cannot name the instant.
struct Shown {
  int year = 0;
  int month = 0;
  int day = 0;
  double minutesOfDay = 0;  ///< Hours and whole minutes on the clocks.
};

/// Reads a calendar at instants that lie close to each other: its zone is asked again only where the clocks
/// were set in between.
class CalendarReader {
 public:
  explicit CalendarReader(const Calendar& calendar) : calendar_(calendar) {}

  Shown at(Instant instant) {
    if (!stretch_.contains(instant)) {
      if (!std::isfinite(secondsSinceReferenceDate(instant))) {
        return {};
      }
      stretch_ = calendar_.timeZone().stretchAt(instant);
    }
    const auto time = stretch_.clockTime(instant);
    const auto components = time ? calendar_.components(*time) : std::nullopt;
    if (!components) {
      return {};
    }
    const auto sinceMidnight = floor<minutes>(*time - floor<days>(*time));
    return {.year = components->year,
            .month = components->month,
            .day = components->day,
            .minutesOfDay = static_cast<double>(sinceMidnight.count())};
  }

  /// The key of the day that `instant` lies in.
  std::string dayKey(Instant instant) {
    const auto [year, month, day, ignored] = at(instant);
    return fmt::format(FMT_COMPILE("{:04}-{:02}-{:02}"), year, month, day);
  }

 private:
  const Calendar& calendar_;
  TimeZone::Stretch stretch_{};
};

SleepSession sleepSession(std::string date, const Session& session, Seconds asleep,
                          CalendarReader& calendar) {
  return {.date = std::move(date),
          .midSleepMinutes = calendar.at(midpoint(session.start, session.end)).minutesOfDay,
          .asleepMinutes = asleep.count() / 60};
}

}  // namespace

std::vector<SleepSession> SleepConsolidator::consolidate(std::span<const SleepInterval> intervals,
                                                         double gapLimitMinutes, const Calendar& calendar) {
  const auto sessions = join<Session>(intervals, gapLimitMinutes);
  CalendarReader reader(calendar);
  std::vector<SleepSession> nights;
  nights.reserve(sessions.size());
  for (const Session& session : sessions) {
    nights.push_back(sleepSession(reader.dayKey(session.end), session, session.covered, reader));
  }
  return nights;
}

std::optional<SleepSession> SleepConsolidator::consolidate(std::span<const SleepStageInterval> intervals,
                                                           double gapLimitMinutes, const Calendar& calendar,
                                                           std::string_view date) {
  auto sessions = join<StagedSession>(intervals, gapLimitMinutes);
  CalendarReader reader(calendar);
  std::erase_if(sessions,
                [&](const StagedSession& session) { return reader.dayKey(session.whole.end) != date; });
  const auto night =
      std::ranges::max_element(sessions, {}, &StagedSession::timeAsleep);  // the earliest of equals
  if (night == sessions.end()) {
    return std::nullopt;
  }
  return sleepSession(std::string(date), night->asleep.value_or(night->whole), night->timeAsleep(), reader);
}

}  // namespace kestrel
