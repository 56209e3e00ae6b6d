#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelTrackerMac/MessagesSummaryFigures.h>
#include <KestrelTrackerMac/reading/MessageDayAggregate.h>

#include <QCoreApplication>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace kestrel::companion {

namespace {

std::int64_t sum(const std::vector<MessageDayAggregate>& days, std::int64_t MessageDayAggregate::*count) {
  std::int64_t total = 0;
  for (const MessageDayAggregate& day : days) {
    if (__builtin_add_overflow(total, day.*count, &total)) {
      programmingError("the sum of a summary's counts leaves the 64-bit range");
    }
  }
  return total;
}

QString integer(std::int64_t value, const QLocale& locale) { return locale.toString(qlonglong{value}); }

/// The translation of `text` for `count`, which stands for its `%lld`.
QString counted(const char* text, std::int64_t count, const QLocale& locale) {
  // An integer of the same plural form in every language: none looks beyond the last six digits of a large
  // one.
  static constexpr std::int64_t period = 1'000'000;
  const auto form = static_cast<int>(count < period ? count : period + count % period);
  return QCoreApplication::translate("MessagesSummaryFigures", text, nullptr, form)
      .replace(QLatin1StringView{"%lld"}, integer(count, locale));
}

/// "%lld sent · %lld received". Languages inflect after each of the two numbers, so that each has a text of
/// its own.
QString sentAndReceived(const MessageDayAggregate& day, const QLocale& locale) {
  return counted("%lld sent", day.sentCount, locale) + QStringLiteral(" · ") +
         counted("%lld received", day.receivedCount, locale);
}

}  // namespace

MessagesSummaryFigures::MessagesSummaryFigures(const MessagesScanSummary& summary, const QLocale& locale)
    : activeDays(integer(std::ssize(summary.daily), locale)),
      sent(integer(sum(summary.daily, &MessageDayAggregate::sentCount), locale)),
      received(integer(sum(summary.daily, &MessageDayAggregate::receivedCount), locale)),
      lateNight(integer(sum(summary.daily, &MessageDayAggregate::lateNightCount), locale)) {
  const auto listed = std::min<std::ptrdiff_t>(std::ssize(summary.daily), recentDayCount);
  for (auto day = summary.daily.end() - listed; day != summary.daily.end(); ++day) {
    recentDays.append({.date = QString::fromStdString(day->date), .counts = sentAndReceived(*day, locale)});
  }
}

QVariantList MessagesSummaryFigures::recentDayValues() const {
  QVariantList values;
  for (const MessagesDayFigures& day : recentDays) {
    values.append(QVariant::fromValue(day));
  }
  return values;
}

}  // namespace kestrel::companion
