#include "TimeZoneRules.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <utility>

namespace kestrel {
namespace {

/// A reader of the text of POSIX's form, left to right.
class RuleText {
 public:
  explicit RuleText(std::string_view text) : rest_(text) {}

  bool atEnd() const { return rest_.empty(); }
  bool atComma() const { return rest_.starts_with(','); }

  bool take(char expected) {
    if (!rest_.starts_with(expected)) {
      return false;
    }
    rest_.remove_prefix(1);
    return true;
  }

  /// A name of a zone's time: three or more letters, or anything of letters, digits and signs in `<>`.
  bool takeName() {
    const bool quoted = take('<');
    const auto isPart = [quoted](unsigned char c) {
      return quoted ? std::isalnum(c) || c == '+' || c == '-' : std::isalpha(c) != 0;
    };
    const auto end = std::ranges::find_if_not(rest_, isPart);
    const auto length = std::distance(rest_.begin(), end);
    rest_.remove_prefix(static_cast<std::size_t>(length));
    return length >= 3 && (!quoted || take('>'));
  }

  std::optional<unsigned> takeNumber(unsigned least, unsigned most) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
    if (error != std::errc{} || number < least || number > most) {
      return std::nullopt;
    }
    rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
    return number;
  }

  /// `[+-]hh[:mm[:ss]]` in seconds.
  std::optional<std::int64_t> takeTime(unsigned mostHours) {
    const bool negative = take('-');
    if (!negative) {
      take('+');
    }
    std::int64_t seconds = 0;
    for (std::int64_t unit = 3600; unit > 0; unit /= 60) {
      if (unit < 3600 && !take(':')) {
        break;
      }
      const auto number = takeNumber(0, unit == 3600 ? mostHours : 59);
      if (!number) {
        return std::nullopt;
      }
      seconds += *number * unit;
    }
    return negative ? -seconds : seconds;
  }

  std::optional<DayRule> takeDayRule() {
    DayRule rule;
    if (take('M')) {
      const auto month = takeNumber(1, 12);
      const auto week = take('.') ? takeNumber(1, 5) : std::nullopt;
      const auto day = take('.') ? takeNumber(0, 6) : std::nullopt;
      if (!month || !week || !day) {
        return std::nullopt;
      }
      rule = {.form = DayRule::Form::weekday, .month = *month, .week = *week, .day = *day};
    } else {
      const bool noLeap = take('J');
      const auto day = takeNumber(noLeap ? 1 : 0, 365);
      if (!day) {
        return std::nullopt;
      }
      rule = {.form = noLeap ? DayRule::Form::dayNoLeap : DayRule::Form::dayWithLeap, .day = *day};
    }
    if (take('/')) {
      const auto time = takeTime(167);
      if (!time) {
        return std::nullopt;
      }
      rule.time = *time;
    }
    return rule;
  }

 private:
  std::string_view rest_;
};

/// The big-endian numbers of a zone file, front to back. Reading beyond the end gives 0 and is remembered.
class ZoneBytes {
 public:
  explicit ZoneBytes(std::string_view bytes) : rest_(bytes) {}

  std::string_view take(std::size_t count) {
    complete_ = complete_ && count <= rest_.size();
    const auto taken = rest_.substr(0, complete_ ? count : 0);
    rest_.remove_prefix(taken.size());
    return taken;
  }

  template <typename Integer>
  Integer takeInteger() {
    std::make_unsigned_t<Integer> number = 0;
    for (const char byte : take(sizeof(Integer))) {
      number = static_cast<std::make_unsigned_t<Integer>>(number << 7 << 1) | static_cast<unsigned char>(byte);
    }
    return static_cast<Integer>(number);
  }

  std::string_view rest() const { return rest_; }
  bool complete() const { return complete_; }

 private:
  std::string_view rest_;
  bool complete_ = true;
};

struct ZoneHeader {
  char version = 0;
  std::uint32_t utcFlags = 0, standardFlags = 0, leapSeconds = 0, settings = 0, kinds = 0, letters = 0;

  std::size_t bodySize(std::size_t timeSize) const {
    return settings * (timeSize + 1) + std::size_t{kinds} * 6 + letters + leapSeconds * (timeSize + 4) +
           standardFlags + utcFlags;
  }
};

std::optional<ZoneHeader> takeHeader(ZoneBytes& bytes) {
  if (bytes.take(4) != "TZif") {
    return std::nullopt;
  }
  ZoneHeader header;
  header.version = bytes.takeInteger<char>();
  bytes.take(15);
  for (std::uint32_t* count : {&header.utcFlags, &header.standardFlags, &header.leapSeconds, &header.settings,
                               &header.kinds, &header.letters}) {
    *count = bytes.takeInteger<std::uint32_t>();
  }
  return bytes.complete() && header.kinds > 0 && header.leapSeconds == 0 ? std::optional(header) : std::nullopt;
}

template <typename Time>
std::optional<TimeZone::Rules> takeBody(ZoneBytes& bytes, const ZoneHeader& header) {
  ZoneBytes body(bytes.take(header.bodySize(sizeof(Time))));
  if (!bytes.complete()) {
    return std::nullopt;
  }
  TimeZone::Rules rules;
  for (std::uint32_t i = 0; i < header.settings; ++i) {
    rules.settings.push_back({.at = body.takeInteger<Time>(), .offset = 0});
  }
  const auto kindOfSetting = body.take(header.settings);
  std::vector<std::int64_t> offsets;
  for (std::uint32_t i = 0; i < header.kinds; ++i) {
    offsets.push_back(body.takeInteger<std::int32_t>());
    body.take(2);
  }
  for (std::uint32_t i = 0; i < header.settings; ++i) {
    const auto kind = static_cast<unsigned char>(kindOfSetting[i]);
    if (kind >= offsets.size()) {
      return std::nullopt;
    }
    rules.settings[i].offset = offsets[kind];
  }
  constexpr std::int64_t hour = 3600;  // RFC 8536 allows less than 25 hours west and 26 hours east
  const auto tooFar = [](std::int64_t offset) { return offset <= -25 * hour || offset >= 26 * hour; };
  if (!std::ranges::is_sorted(rules.settings, {}, &TimeZone::Rules::Setting::at) ||
      std::ranges::any_of(offsets, tooFar)) {
    return std::nullopt;
  }
  rules.firstOffset = offsets.front();
  return rules;
}

}  // namespace

std::optional<YearlyRule> parseYearlyRule(std::string_view text) {
  RuleText rest(text);
  if (!rest.takeName()) {
    return std::nullopt;
  }
  const auto west = rest.takeTime(24);
  if (!west) {
    return std::nullopt;
  }
  YearlyRule rule{.standardOffset = -*west, .summer = std::nullopt};
  if (rest.atEnd()) {
    return rule;
  }
  if (!rest.takeName()) {
    return std::nullopt;
  }
  // Without days of its own, a summer time follows the rule of the United States, as in the C library.
  YearlyRule::Summer summer{.offset = rule.standardOffset + 3600,
                            .begin = {.month = 3, .week = 2},
                            .end = {.month = 11, .week = 1}};
  if (!rest.atEnd() && !rest.atComma()) {
    const auto summerWest = rest.takeTime(24);
    if (!summerWest) {
      return std::nullopt;
    }
    summer.offset = -*summerWest;
  }
  if (!rest.atEnd()) {
    const auto begin = rest.take(',') ? rest.takeDayRule() : std::nullopt;
    const auto end = rest.take(',') ? rest.takeDayRule() : std::nullopt;
    if (!begin || !end || !rest.atEnd()) {
      return std::nullopt;
    }
    summer.begin = *begin;
    summer.end = *end;
  }
  rule.summer = summer;
  return rule;
}

std::optional<TimeZone::Rules> readZoneFile(const std::filesystem::path& file) {
  constexpr std::uintmax_t largest = 1 << 20;  // the largest zone file of any system has some kilobytes
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) {
    return std::nullopt;
  }
  const auto size = std::filesystem::file_size(file, error);
  if (error || size > largest) {
    return std::nullopt;
  }
  std::string content(size, '\0');
  if (!std::ifstream(file, std::ios::binary).read(content.data(), static_cast<std::streamsize>(size))) {
    return std::nullopt;
  }

  ZoneBytes bytes(content);
  const auto header = takeHeader(bytes);
  if (!header) {
    return std::nullopt;
  }
  auto rules = takeBody<std::int32_t>(bytes, *header);
  if (header->version == 0) {
    return rules;
  }
  const auto wideHeader = takeHeader(bytes);
  if (!wideHeader) {
    return std::nullopt;
  }
  rules = takeBody<std::int64_t>(bytes, *wideHeader);
  const auto footer = bytes.rest();
  if (rules && footer.size() > 2 && footer.front() == '\n' && footer.back() == '\n') {
    rules->afterwards = parseYearlyRule(footer.substr(1, footer.size() - 2));
  }
  return rules;
}

}  // namespace kestrel
