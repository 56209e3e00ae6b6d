#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace kestrel {

/// The day that `text` names: exactly `yyyy-MM-dd` in ASCII digits, a day that exists, of the years 0001 to
/// 9999. Absent for anything else.
std::optional<std::chrono::year_month_day> civilDayFromText(std::string_view text) noexcept;

/// `day` as `yyyy-MM-dd`. Absent outside the years 0001 to 9999.
std::optional<std::string> civilDayText(std::chrono::local_days day);

}  // namespace kestrel
