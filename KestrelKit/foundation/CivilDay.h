#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kestrel {

/// The day that `text` names: exactly `yyyy-MM-dd` in ASCII digits, a day that exists, of the years 0001 to
/// 9999. Absent for anything else. Always inline: there is one to read for every value that was ever
/// recorded, and handing the result over would take longer than reading it.
[[gnu::always_inline]] inline std::optional<std::chrono::local_days> civilDayFromText(
    std::string_view text) noexcept {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
    return std::nullopt;
  }
  bool areDigits = true;
  const auto digit = [&](std::size_t place) {
    const unsigned value = static_cast<unsigned char>(text[place]) - unsigned{'0'};
    areDigits &= value <= 9;
    return value;
  };
  const unsigned year = ((digit(0) * 10 + digit(1)) * 10 + digit(2)) * 10 + digit(3);
  const unsigned month = digit(5) * 10 + digit(6);
  const unsigned day = digit(8) * 10 + digit(9);
  if (!areDigits || year == 0 || month == 0 || month > 12 || day == 0) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year{static_cast<int>(year)}, std::chrono::month{month},
                                         std::chrono::day{day}};
  if (day > 28 && !date.ok()) {
    return std::nullopt;
  }
  return std::chrono::local_days{date};
}

/// `day` as `yyyy-MM-dd`. Absent outside the years 0001 to 9999.
std::optional<std::string> civilDayText(std::chrono::local_days day);

}  // namespace kestrel
