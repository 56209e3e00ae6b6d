#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelTrackerMac/MessagesSummaryFigures.h>
#include <KestrelTrackerMac/reading/MessageDayAggregate.h>

#include <QCoreApplication>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace kestrel::companion {

namespace {

std::int64_t sum(const std::vector<MessageDayAggregate>& days, std::int64_t MessageDayAggregate::* count) {
  std::int64_t total = 0;
  for (const MessageDayAggregate& day : days) {
    if (__builtin_add_overflow(total, day.*count, &total)) {
      programmingError("the sum of a summary's counts leaves the 64-bit range");
    }
  }
  return total;
}

QString integer(std::int64_t value, const QLocale& locale) { return locale.toString(qlonglong{value}); }

QString sentAndReceived(const MessageDayAggregate& day, const QLocale& locale) {
  static constexpr QLatin1StringView number{"%lld"};
  QString text = QCoreApplication::translate("MessagesSummaryFigures", "%lld sent · %lld received");
  for (const std::int64_t count : {day.sentCount, day.receivedCount}) {
    text.replace(text.indexOf(number), number.size(), integer(count, locale));
  }
  return text;
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
