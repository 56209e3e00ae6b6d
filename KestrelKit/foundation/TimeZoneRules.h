#pragma once

#include <KestrelKit/foundation/TimeZone.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

namespace kestrel {

/// A day of the year on which the clocks are set, in one of the three forms of POSIX.
struct DayRule {
  enum class Form {
    weekday,      ///< `Mm.w.d`: weekday `d` (0 is Sunday) of week `w` of month `m`; week 5 is the last one.
    dayNoLeap,    ///< `Jn`: day 1 to 365, 29 February never counted.
    dayWithLeap,  ///< `n`: day 0 to 365, 29 February counted.
  };
  Form form = Form::weekday;
  unsigned month = 0;
  unsigned week = 0;
  unsigned day = 0;
  std::int64_t time = 7'200;  ///< Seconds after midnight by the clocks before they are set; may be negative.
};

/// Two settings of the clocks that come back every year, or one offset for good: POSIX's form of `TZ`.
struct YearlyRule {
  struct Summer {
    std::int64_t offset = 0;
    DayRule begin;
    DayRule end;
  };
  std::int64_t standardOffset = 0;  ///< Seconds, east positive (POSIX writes it the other way round).
  std::optional<Summer> summer;
};

/// Every setting of the clocks of a zone, in seconds since 1970-01-01 00:00:00 UTC.
struct TimeZone::Rules {
  struct Setting {
    std::int64_t at;      ///< From here on …
    std::int64_t offset;  ///< … the clocks show this many seconds more than UTC.
  };
  std::int64_t firstOffset = 0;          ///< In force before the first setting.
  std::vector<Setting> settings;         ///< Ascending.
  std::optional<YearlyRule> afterwards;  ///< In force from the last setting on; absent: the last offset stays.
};

/// Reads `TZ` text in the form of POSIX (IEEE 1003.1-2017, 8.3, with RFC 8536's hours beyond a day); nothing when it
/// is not of that form.
std::optional<YearlyRule> parseYearlyRule(std::string_view text);

/// Reads a zone file (RFC 8536); nothing when `file` is not one, or is one that counts leap seconds: its settings lie
/// at other instants than those of a clock that counts none.
std::optional<TimeZone::Rules> readZoneFile(const std::filesystem::path& file);

}  // namespace kestrel
