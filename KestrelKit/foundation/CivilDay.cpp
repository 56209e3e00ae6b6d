#include "TextForm.h"

#include <KestrelKit/foundation/CivilDay.h>

#include <fmt/format.h>

#include <charconv>
#include <cstddef>

namespace kestrel {
namespace {

using std::chrono::January;
using std::chrono::local_days;
using std::chrono::year;

// The years 0001 to 9999.
constexpr local_days begin{year{1} / January / 1};
constexpr local_days end{year{10000} / January / 1};

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
  if (!day.ok() || local_days{day} < begin) {
    return std::nullopt;
  }
  return day;
}

std::optional<std::string> civilDayText(local_days day) {
  if (day < begin || day >= end) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{day};
  return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                     static_cast<unsigned>(date.day()));
}

}  // namespace kestrel
