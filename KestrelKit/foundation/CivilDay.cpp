#include "TextForm.h"

#include <KestrelKit/foundation/CivilDay.h>

#include <fmt/format.h>

#include <charconv>
#include <cstddef>

namespace kestrel {
namespace {

constexpr std::chrono::year firstYear{1};
constexpr std::chrono::year lastYear{9999};

unsigned numberAt(std::string_view text, std::size_t place, std::size_t digits) noexcept {
  unsigned number = 0;
  std::from_chars(text.data() + place, text.data() + place + digits, number);
  return number;
}

}  // namespace

std::optional<std::chrono::year_month_day> civilDayFromText(std::string_view text) noexcept {
  if (!hasForm(text, "0000-00-00", isDigit)) {
    return std::nullopt;
  }
  const std::chrono::year_month_day day{std::chrono::year{static_cast<int>(numberAt(text, 0, 4))},
                                        std::chrono::month{numberAt(text, 5, 2)},
                                        std::chrono::day{numberAt(text, 8, 2)}};
  if (!day.ok() || day.year() < firstYear) {
    return std::nullopt;
  }
  return day;
}

std::optional<std::string> civilDayText(std::chrono::year_month_day day) {
  if (day.year() < firstYear || day.year() > lastYear) {
    return std::nullopt;
  }
  return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                     static_cast<unsigned>(day.day()));
}

}  // namespace kestrel
