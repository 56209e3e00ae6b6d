#pragma once

#include <KestrelTrackerMac/reading/MessagesScanSummary.h>

#include <QLocale>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QtQmlIntegration>

namespace kestrel::companion {

/// One row of "Recent daily activity".
class MessagesDayFigures {
  Q_GADGET
  QML_VALUE_TYPE(messagesDayFigures)
  Q_PROPERTY(QString date MEMBER date)
  Q_PROPERTY(QString counts MEMBER counts)

 public:
  QString date;    ///< The day key.
  QString counts;  ///< What was sent and received, as a sentence in the user's language.

  bool operator==(const MessagesDayFigures&) const = default;
};

/// A scan's summary as the dashboard shows it: texts, with the integers of a locale.
class MessagesSummaryFigures {
  Q_GADGET
  QML_VALUE_TYPE(messagesSummaryFigures)
  Q_PROPERTY(QString activeDays MEMBER activeDays)
  Q_PROPERTY(QString sent MEMBER sent)
  Q_PROPERTY(QString received MEMBER received)
  Q_PROPERTY(QString lateNight MEMBER lateNight)
  Q_PROPERTY(QVariantList recentDays READ recentDayValues)

 public:
  /// How many days are listed at most.
  static constexpr int recentDayCount = 7;

  MessagesSummaryFigures() = default;

  /// The figures of `summary` in `locale`. Counts whose sum leaves the 64-bit range are a programming error.
  MessagesSummaryFigures(const MessagesScanSummary& summary, const QLocale& locale);

  QString activeDays;  ///< Days with at least one message.
  QString sent;        ///< Messages sent on all of them.
  QString received;    ///< Messages received on all of them.
  QString lateNight;   ///< Messages between midnight and five on all of them.

  QList<MessagesDayFigures> recentDays;  ///< The last days with a message, at most seven, ascending.

  bool operator==(const MessagesSummaryFigures&) const = default;

 private:
  QVariantList recentDayValues() const;
};

}  // namespace kestrel::companion
