#include <tidewell-scan/ScanTable.h>

#include <KestrelKit/foundation/Calendar.h>
#include <KestrelKit/foundation/CheckedSum.h>
#include <KestrelKit/foundation/Instant.h>
#include <KestrelTrackerMac/reading/MessageDayAggregate.h>
#include <fmt/format.h>
#include <unicode/locid.h>
#include <unicode/numberformatter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utypes.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace kestrel::companion {
namespace {

using Row = std::array<std::string, 6>;

/// Numbers as the user writes them.
class Numbers {
 public:
  explicit Numbers(std::string_view locale) : format_(formatOf(locale)) {}

  std::string whole(std::int64_t number) const {
    UErrorCode status = U_ZERO_ERROR;
    return text(format_.formatInt(number, status), status);
  }

  std::string withOneDecimal(double number) const {
    UErrorCode status = U_ZERO_ERROR;
    return text(format_.precision(icu::number::Precision::fixedFraction(1)).formatDouble(number, status),
                status);
  }

 private:
  using Format = icu::number::LocalizedNumberFormatter;

  /// The way of `locale`, the plain one where that is none or one that ICU does not know (`@numbers=bogus`):
  /// it says so when it formats.
  static Format formatOf(std::string_view locale) {
    const auto language = locale.substr(0, locale.find('.'));
    if (!language.empty() && language != "C" && language != "POSIX") {
      const auto format =
          icu::number::NumberFormatter::withLocale(icu::Locale::createCanonical(std::string(locale).c_str()));
      UErrorCode status = U_ZERO_ERROR;
      format.formatInt(0, status);
      if (U_SUCCESS(status)) {
        return format;
      }
    }
    return icu::number::NumberFormatter::withLocale(icu::Locale("en", "US", "POSIX"));
  }

  static std::string text(const icu::number::FormattedNumber& number, UErrorCode& status) {
    std::string result;
    number.toString(status).toUTF8String(result);
    return result;
  }

  Format format_;
};

/// How many columns of a terminal `text` takes: a character of East Asian width takes two.
std::size_t width(const std::string& text) {
  const auto characters = icu::UnicodeString::fromUTF8(text);
  std::size_t columns = 0;
  for (std::int32_t index = 0; index < characters.length(); index = characters.moveIndex32(index, 1)) {
    const auto kind = u_getIntPropertyValue(characters.char32At(index), UCHAR_EAST_ASIAN_WIDTH);
    columns += kind == U_EA_WIDE || kind == U_EA_FULLWIDTH ? 2 : 1;
  }
  return columns;
}

std::string dayKey(std::optional<Instant> instant) {
  const auto day = instant ? Calendar::current().components(*instant) : std::nullopt;
  return day ? fmt::format("{:04}-{:02}-{:02}", day->year, day->month, day->day) : "?";
}

std::int64_t total(const MessagesScanSummary& summary, std::int64_t MessageDayAggregate::*count) {
  std::int64_t sum = 0;
  for (const MessageDayAggregate& day : summary.daily) {
    sum = checkedSum(sum, day.*count, "a sum of the days");
  }
  return sum;
}

}  // namespace

std::string scanTable(const MessagesScanSummary& summary, std::string_view locale) {
  const Numbers numbers(locale);
  // Not "from … to …": what is dated after the instant of the scan counts, too.
  std::string text =
      fmt::format("Messages activity since {} (the last {} before {})\n\n",
                  dayKey(Calendar::current().addingDays(summary.scannedAt, -summary.requestedDays)),
                  summary.requestedDays == 1 ? "day" : numbers.whole(summary.requestedDays) + " days",
                  dayKey(summary.scannedAt));
  if (summary.daily.empty()) {
    return text + "No Messages activity was found in the selected window.\n";
  }

  std::vector<Row> rows{{"Day", "Sent", "Received", "Conversations", "Late night", "Average length"}};
  for (const MessageDayAggregate& day : summary.daily) {
    rows.push_back({day.date, numbers.whole(day.sentCount), numbers.whole(day.receivedCount),
                    numbers.whole(day.activeConversationCount), numbers.whole(day.lateNightCount),
                    day.averageMessageLength ? numbers.withOneDecimal(*day.averageMessageLength) : "-"});
  }
  // A conversation that goes on for days is one, and an average of averages none: these columns have no
  // total.
  rows.push_back({fmt::format("{} active {}", numbers.whole(static_cast<std::int64_t>(summary.daily.size())),
                              summary.daily.size() == 1 ? "day" : "days"),
                  numbers.whole(total(summary, &MessageDayAggregate::sentCount)),
                  numbers.whole(total(summary, &MessageDayAggregate::receivedCount)), "",
                  numbers.whole(total(summary, &MessageDayAggregate::lateNightCount)), ""});

  constexpr std::size_t gap = 2;
  std::array<std::size_t, std::tuple_size_v<Row>> widths{};
  std::size_t whole = gap * (widths.size() - 1);
  for (std::size_t column = 0; column < widths.size(); ++column) {
    for (const Row& row : rows) {
      widths[column] = std::max(widths[column], width(row[column]));
    }
    whole += widths[column];
  }
  const std::string rule = std::string(whole, '-') + '\n';
  for (std::size_t index = 0; index < rows.size(); ++index) {
    if (index == 1 || index + 1 == rows.size()) {
      text += rule;
    }
    std::string line;
    for (std::size_t column = 0; column < widths.size(); ++column) {
      const std::string& cell = rows[index][column];
      const std::string padding(widths[column] - width(cell), ' ');
      if (column == 0) {
        line.append(cell).append(padding);
      } else {
        line.append(gap, ' ').append(padding).append(cell);
      }
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + '\n';
  }
  return text;
}

}  // namespace kestrel::companion
