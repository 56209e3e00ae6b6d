#include <KestrelTrackerMac/MessagesSummaryFigures.h>

#include <gtest/gtest.h>
#include <QByteArrayView>
#include <QCoreApplication>
#include <QLocale>
#include <QString>
#include <QTranslator>

#include <cstdint>
#include <limits>
#include <string>

namespace kestrel::companion {
namespace {

MessagesScanSummary daysInMay(int count) {
  MessagesScanSummary summary{.requestedDays = 90, .scannedAt = {}, .daily = {}};
  for (int day = 1; day <= count; ++day) {
    summary.daily.push_back({.date = "2026-05-" + std::string{day < 10 ? "0" : ""} + std::to_string(day),
                             .sentCount = 1000 * day,
                             .receivedCount = day,
                             .activeConversationCount = 1,
                             .lateNightCount = 2,
                             .averageMessageLength = {}});
  }
  return summary;
}

const QLocale english{QLocale::English, QLocale::UnitedStates};

TEST(MessagesSummaryFigures, sevenDaysAreAllListed) {
  const MessagesSummaryFigures figures{daysInMay(7), english};
  ASSERT_EQ(figures.recentDays.size(), 7);
  EXPECT_EQ(figures.recentDays.first().date, QStringLiteral("2026-05-01"));
}

TEST(MessagesSummaryFigures, ofEightDaysTheLastSevenAreListedAndAllCounted) {
  const MessagesSummaryFigures figures{daysInMay(8), english};
  EXPECT_EQ(figures.activeDays, QStringLiteral("8"));
  ASSERT_EQ(figures.recentDays.size(), 7);
  EXPECT_EQ(figures.recentDays.first().date, QStringLiteral("2026-05-02"));
  EXPECT_EQ(figures.recentDays.last().date, QStringLiteral("2026-05-08"));
}

TEST(MessagesSummaryFigures, anEmptySummaryHasZerosAndNoDays) {
  const MessagesSummaryFigures figures{daysInMay(0), english};
  for (const QString& figure : {figures.activeDays, figures.sent, figures.received, figures.lateNight}) {
    EXPECT_EQ(figure, QStringLiteral("0"));
  }
  EXPECT_TRUE(figures.recentDays.isEmpty());
}

TEST(MessagesSummaryFigures, sumsRunOverAllDays) {
  const MessagesSummaryFigures figures{daysInMay(8), english};
  EXPECT_EQ(figures.sent, QStringLiteral("36,000"));
  EXPECT_EQ(figures.received, QStringLiteral("36"));
  EXPECT_EQ(figures.lateNight, QStringLiteral("16"));
}

TEST(MessagesSummaryFigures, aDayReadsSentThenReceivedInTheLocalesIntegers) {
  EXPECT_EQ((MessagesSummaryFigures{daysInMay(2), english}.recentDays.last().counts),
            QStringLiteral("2,000 sent · 2 received"));
  EXPECT_EQ((MessagesSummaryFigures{daysInMay(2), QLocale{QLocale::German}}.recentDays.last().counts),
            QStringLiteral("2.000 sent · 2 received"));
}

/// A language in which both words have a plural.
class InflectingTranslator : public QTranslator {
 public:
  QString translate(const char*, const char* text, const char*, int count) const override {
    const QString word =
        QByteArrayView{text}.endsWith("sent") ? QStringLiteral("envoyé") : QStringLiteral("reçu");
    return QStringLiteral("%lld ") + (count == 1 ? word : word + u's');
  }
};

TEST(MessagesSummaryFigures, eachOfTheTwoNumbersInflectsItsOwnWord) {
  InflectingTranslator translator;
  QCoreApplication::installTranslator(&translator);
  MessagesScanSummary summary = daysInMay(1);
  const auto counts = [&](std::int64_t sent, std::int64_t received) {
    summary.daily[0].sentCount = sent;
    summary.daily[0].receivedCount = received;
    return MessagesSummaryFigures{summary, english}.recentDays.first().counts;
  };
  EXPECT_EQ(counts(1, 2), QStringLiteral("1 envoyé · 2 reçus"));
  EXPECT_EQ(counts(0, 1), QStringLiteral("0 envoyés · 1 reçu"));
  EXPECT_EQ(counts(1'000'001, 4'294'967'297), QStringLiteral("1,000,001 envoyés · 4,294,967,297 reçus"));
  QCoreApplication::removeTranslator(&translator);
}

TEST(MessagesSummaryFigures, theGreatestSumIsShownWhole) {
  MessagesScanSummary summary = daysInMay(2);
  summary.daily[0].sentCount = std::numeric_limits<std::int64_t>::max() - 1;
  summary.daily[1].sentCount = 1;
  EXPECT_EQ((MessagesSummaryFigures{summary, english}.sent), QStringLiteral("9,223,372,036,854,775,807"));
}

TEST(MessagesSummaryFiguresDeathTest, aSumBeyond64BitsIsAProgrammingError) {
  MessagesScanSummary summary = daysInMay(2);
  summary.daily[0].sentCount = std::numeric_limits<std::int64_t>::max();
  summary.daily[1].sentCount = 1;
  EXPECT_DEATH((MessagesSummaryFigures{summary, english}), "64-bit");
}

}  // namespace
}  // namespace kestrel::companion
