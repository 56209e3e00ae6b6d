#include <KestrelKit/circadian/SleepConsolidator.h>
#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/TimeZone.h>
#include <fmt/format.h>

#include <boost/sort/spreadsort/integer_sort.hpp>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <ranges>
#include <string>

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

  /// Halfway, reckoned from 1970.
  Instant middle() const {
    constexpr auto epoch = ReferenceClock::referenceDateSince1970;
    return Instant((start.time_since_epoch() + epoch + (end.time_since_epoch() + epoch)) * 0.5 - epoch);
  }

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

/// The order that intervals are joined in: by their start, and of those that start together the longest
/// first. The others lie in it, so that no sum depends on the order that they came in.
template <class Interval>
bool comesFirst(const Interval& left, const Interval& right) {
  return left.start < right.start || (left.start == right.start && left.end > right.end);
}

/// Joins intervals that come in order into `most` sessions at the most.
template <class Joined>
std::vector<Joined> joinInOrder(auto&& intervals, Seconds gapLimit, std::size_t most) {
  std::vector<Joined> sessions;
  sessions.reserve(most);  // memory that is never touched costs nothing
  const auto end = std::ranges::end(intervals);
  for (auto next = std::ranges::begin(intervals); next != end;) {
    Joined session(*next);
    for (++next; next != end && session.gapTo(*next) <= gapLimit; ++next) {
      session.join(*next);
    }
    sessions.push_back(session);
  }
  return sessions;
}

/// A number that orders as `instant` does: of a negative float all bits are the other way round.
std::uint64_t orderOf(Instant instant) {
  constexpr auto sign = std::uint64_t{1} << 63;
  const auto bits = std::bit_cast<std::uint64_t>(secondsSinceReferenceDate(instant));
  return bits & sign ? ~bits : bits | sign;
}

/// Sorts intervals so that each comesFirst() before the next.
template <class Interval>
void putInOrder(std::vector<Interval>& intervals) {
  // By the digits of the starts, which takes less time than comparing them …
  const auto digits = [](const Interval& interval, unsigned shift) {
    return orderOf(interval.start) >> shift;
  };
  const auto startsFirst = [](const Interval& left, const Interval& right) {
    return left.start < right.start;
  };
  boost::sort::spreadsort::integer_sort(intervals.begin(), intervals.end(), digits, startsFirst);
  // … and by length among those that start together.
  for (auto first = intervals.begin(); first != intervals.end();) {
    const auto startsLater = [&](const Interval& each) { return each.start > first->start; };
    const auto last = std::find_if(first, intervals.end(), startsLater);
    std::sort(first, last, comesFirst<Interval>);
    first = last;
  }
}

template <class Joined, class Interval>
std::vector<Joined> join(std::span<const Interval> intervals, double gapLimitMinutes) {
  const Seconds gapLimit(gapLimitMinutes * 60);
  auto lasting = intervals | std::views::filter([](const Interval& each) { return each.end > each.start; });
  if (std::ranges::is_sorted(lasting, comesFirst<Interval>)) {
    return joinInOrder<Joined>(lasting, gapLimit, intervals.size());
  }
  std::vector<Interval> ordered;
  ordered.reserve(intervals.size());
  std::ranges::copy(lasting, std::back_inserter(ordered));
  putInOrder(ordered);
  return joinInOrder<Joined>(ordered, gapLimit, ordered.size());
}

/// The numbers as `%04d-%02d-%02d`.
std::string dayKeyOf(int year, int month, int day) {
  if (year < 0 || year > 9999) {
    return fmt::format("{:04}-{:02}-{:02}", year, month, day);
  }
  // Digit by digit: formatting takes several times as long.
  std::string key = "0000-00-00";
  const auto put = [&](std::size_t place, int number) {
    key[place] = static_cast<char>('0' + number / 10);
    key[place + 1] = static_cast<char>('0' + number % 10);
  };
  put(0, year / 100);
  put(2, year % 100);
  put(5, month);
  put(8, day);
  return key;
}

double inMinutes(Seconds time) { return time.count() / 60; }

/// What a calendar shows at instants that lie close to each other: its zone is asked again only where the
/// clocks were set in between. Zeros at an instant that it cannot name.
class CalendarReader {
 public:
  explicit CalendarReader(const Calendar& calendar) : calendar_(calendar) {}

  std::string dayKey(Instant instant) {
    const auto shown = at(instant);
    return shown ? dayKeyOf(shown->date.year, shown->date.month, shown->date.day) : dayKeyOf(0, 0, 0);
  }

  /// Since midnight by the clocks, the seconds dropped.
  double minutesOfDay(Instant instant) {
    const auto shown = at(instant);
    return shown ? static_cast<double>(floor<minutes>(shown->time - floor<days>(shown->time)).count()) : 0;
  }

 private:
  struct Shown {
    Calendar::Components date;
    std::chrono::local_seconds time;
  };

  std::optional<Shown> at(Instant instant) {
    if (!std::isfinite(secondsSinceReferenceDate(instant))) {
      return std::nullopt;
    }
    if (!stretch_.contains(instant)) {
      stretch_ = calendar_.timeZone().stretchAt(instant);
    }
    const auto time = stretch_.clockTime(instant);
    const auto date = time ? calendar_.components(*time) : std::nullopt;
    return date ? std::optional(Shown{.date = *date, .time = *time}) : std::nullopt;
  }

  const Calendar& calendar_;
  TimeZone::Stretch stretch_{};
};

}  // namespace

std::vector<SleepSession> SleepConsolidator::consolidate(std::span<const SleepInterval> intervals,
                                                         double gapLimitMinutes, const Calendar& calendar) {
  const auto sessions = join<Session>(intervals, gapLimitMinutes);
  CalendarReader reader(calendar);
  std::vector<SleepSession> nights;
  nights.reserve(sessions.size());
  for (const Session& session : sessions) {
    nights.emplace_back(reader.dayKey(session.end), reader.minutesOfDay(session.middle()),
                        inMinutes(session.covered));
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
  return SleepSession{.date = std::string(date),
                      .midSleepMinutes = reader.minutesOfDay(night->asleep.value_or(night->whole).middle()),
                      .asleepMinutes = inMinutes(night->timeAsleep())};
}

}  // namespace kestrel
