#include <KestrelKit/foundation/CivilDay.h>

#include <fmt/format.h>

namespace kestrel {
namespace {

using std::chrono::January;
using std::chrono::local_days;
using std::chrono::year;

// The years 0001 to 9999.
constexpr local_days begin{year{1} / January / 1};
constexpr local_days end{year{10000} / January / 1};

}  // namespace

std::optional<std::string> civilDayText(local_days day) {
  if (day < begin || day >= end) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{day};
  return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                     static_cast<unsigned>(date.day()));
}

}  // namespace kestrel
