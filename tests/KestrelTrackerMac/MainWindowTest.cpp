#include <KestrelTrackerMac/MainWindow.h>
#include <KestrelTrackerMac/MessagesActivityReading.h>
#include <KestrelTrackerMac/MessagesCompanionCoordinator.h>
#include <KestrelTrackerMac/Palette.h>
#include <KestrelTrackerMac/SymbolImage.h>
#include <KestrelTrackerMac/reading/MessagesScanError.h>

#include <QColor>
#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QLocale>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <QTranslator>
#include <gtest/gtest.h>

#include <algorithm>
#include <expected>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::companion {
namespace {

using AccessState = MessagesCompanionCoordinator::AccessState;
using ScanResult = std::expected<MessagesScanSummary, MessagesScanError>;

/// A reader whose answers are there at once.
class ReadyReader final : public MessagesActivityReading {
 public:
  ReadyReader(MessagesAccessState state, ScanResult result) : state_(state), result_(std::move(result)) {}

  QCoro::Task<MessagesAccessState> checkAccess() override { co_return state_; }
  QCoro::Task<ScanResult> scan(std::int64_t, Instant) override { co_return result_; }

 private:
  MessagesAccessState state_;
  ScanResult result_;
};

MessagesScanSummary sevenDigits() {
  MessagesScanSummary summary{.requestedDays = 365, .scannedAt = {}, .daily = {}};
  for (int day = 10; day < 20; ++day) {
    summary.daily.push_back({.date = "2026-05-" + std::to_string(day),
                             .sentCount = 888'888,
                             .receivedCount = 800'008,
                             .activeConversationCount = 9,
                             .lateNightCount = 888'888,
                             .averageMessageLength = {}});
  }
  return summary;
}

void collect(QQuickItem* item, std::vector<QQuickItem*>& items) {
  if (!item->isVisible()) {
    return;
  }
  items.push_back(item);
  for (QQuickItem* child : item->childItems()) {
    collect(child, items);
  }
}

struct MainWindowTest : testing::Test {
  ~MainWindowTest() override { QLocale::setDefault(QLocale::c()); }

  void show(MessagesAccessState state, ScanResult result = MessagesScanSummary{}) {
    engine.reset();  // before the coordinator that its views look at
    coordinator = std::make_unique<MessagesCompanionCoordinator>(
        std::make_unique<ReadyReader>(state, std::move(result)));
    engine = std::make_unique<QQmlApplicationEngine>();
    window = &loadMainWindow(*engine, *coordinator);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window, patience));
    ASSERT_TRUE(QTest::qWaitFor([&] { return coordinator->accessState() == static_cast<AccessState>(state); },
                                patience));
  }

  std::vector<QQuickItem*> visible(const char* type) const {
    std::vector<QQuickItem*> items;
    collect(window->contentItem(), items);
    std::erase_if(items, [&](QQuickItem* item) { return !item->inherits(type); });
    return items;
  }

  QStringList texts() const {
    QStringList result;
    for (const QQuickItem* item : visible("QQuickText")) {
      result.append(item->property("text").toString());
    }
    return result;
  }

  std::vector<QQuickItem*> tiles() const {
    std::vector<QQuickItem*> items;
    collect(window->contentItem(), items);
    std::erase_if(items, [](QQuickItem* item) { return !item->property("valueFont").isValid() || !item->property("caption").isValid(); });
    return items;
  }

  static constexpr int patience = 60'000;
  std::unique_ptr<MessagesCompanionCoordinator> coordinator;
  std::unique_ptr<QQmlApplicationEngine> engine;
  QQuickWindow* window = nullptr;
};

TEST_F(MainWindowTest, hasItsTitleAndSizes) {
  show(MessagesAccessState::ready);
  EXPECT_EQ(window->title(), QStringLiteral("Tidewell"));
  EXPECT_EQ(window->size(), QSize(1080, 720));
  EXPECT_EQ(window->minimumSize(), QSize(480, 400));
}

TEST_F(MainWindowTest, eachAccessStateShowsItsOwnContentOnly) {
  const std::map<MessagesAccessState, std::pair<QString, QString>> shown{
      {MessagesAccessState::ready, {QStringLiteral("Ready"), QStringLiteral("Scan Locally")}},
      {MessagesAccessState::needsFullDiskAccess,
       {QStringLiteral("Permission needed"), QStringLiteral("Open Full Disk Access")}},
      {MessagesAccessState::unavailable,
       {QStringLiteral("Unavailable"), QStringLiteral("Messages history isn’t available on this Mac.")}},
      {MessagesAccessState::checking, {QStringLiteral("Checking"), QStringLiteral("Checking Messages access…")}},
  };
  for (const auto& [state, expected] : shown) {
    show(state);
    for (const auto& [other, own] : shown) {
      EXPECT_EQ(texts().contains(own.first), other == state) << own.first.toStdString();
      EXPECT_EQ(texts().contains(own.second), other == state) << own.second.toStdString();
    }
  }
}

TEST_F(MainWindowTest, theScanButtonReadsScanAgainFromTheFirstSummaryOn) {
  show(MessagesAccessState::ready, sevenDigits());
  EXPECT_TRUE(texts().contains(QStringLiteral("Scan Locally")));
  coordinator->scan();
  EXPECT_TRUE(texts().contains(QStringLiteral("Scan Again")));
  EXPECT_FALSE(texts().contains(QStringLiteral("Scan Locally")));
}

TEST_F(MainWindowTest, theScanButtonReadsScanLocallyAfterAFirstScanThatFailed) {
  show(MessagesAccessState::ready, std::unexpected{MessagesScanError::queryFailed});
  coordinator->scan();
  EXPECT_TRUE(texts().contains(QStringLiteral("Scan Locally")));
  EXPECT_TRUE(
      texts().contains(QStringLiteral("Messages activity couldn’t be summarized. No history was saved or sent.")));
}

TEST_F(MainWindowTest, anEmptyResultHasFourTilesAndSaysSo) {
  show(MessagesAccessState::ready);
  coordinator->scan();
  ASSERT_EQ(tiles().size(), 4u);
  for (const QQuickItem* tile : tiles()) {
    EXPECT_EQ(tile->property("value").toString(), QStringLiteral("0"));
  }
  EXPECT_TRUE(texts().contains(QStringLiteral("No Messages activity was found in the selected window.")));
  EXPECT_FALSE(texts().contains(QStringLiteral("Recent daily activity")));
}

TEST_F(MainWindowTest, theTilesAreFourEqualColumnsThatHoldSevenDigitsFrom480Up) {
  for (const QLocale& locale : {QLocale{QLocale::English}, QLocale{QLocale::German}, QLocale{QLocale::French},
                                QLocale{QLocale::Hindi, QLocale::DevanagariScript, QLocale::India},
                                QLocale{QLocale::Arabic, QLocale::Egypt}, QLocale{QLocale::German, QLocale::Switzerland}}) {
    QLocale::setDefault(locale);
    show(MessagesAccessState::ready, sevenDigits());
    coordinator->scan();
    for (const int width : {480, 481, 560, 640, 641, 800, 1080, 1600}) {
      window->resize(width, 720);
      const auto sized = [&] { return window->contentItem()->width() >= width; };
      ASSERT_TRUE(QTest::qWaitFor(sized, patience));
      window->grabWindow();  // settles the layout
      ASSERT_EQ(tiles().size(), 4u);
      for (QQuickItem* tile : tiles()) {
        EXPECT_NEAR(tile->width(), tiles().front()->width(), 1.0) << width;
        std::vector<QQuickItem*> inside;
        collect(tile, inside);
        for (QQuickItem* text : inside) {
          if (text->inherits("QQuickText")) {
            const QPointF left = text->mapToItem(tile, QPointF{0, 0});
            EXPECT_LE(left.x() + text->property("contentWidth").toReal(), tile->width()) << locale.name().toStdString() << ' ' << width;
            EXPECT_LE(left.y() + text->property("contentHeight").toReal(), tile->height()) << locale.name().toStdString() << ' ' << width;
          }
        }
      }
    }
  }
}

TEST_F(MainWindowTest, nothingReachesBeyondTheWindowsWidth) {
  for (const auto state : {MessagesAccessState::ready, MessagesAccessState::needsFullDiskAccess,
                           MessagesAccessState::unavailable, MessagesAccessState::checking}) {
    show(state, sevenDigits());
    coordinator->scan();
    window->resize(480, 400);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->contentItem()->width() == 480; }, patience));
    window->grabWindow();
    for (QQuickItem* text : visible("QQuickText")) {
      const qreal right = text->mapToScene(QPointF{0, 0}).x() +
                          std::min(text->width(), text->property("contentWidth").toReal());
      EXPECT_LE(right, 480.0 - 16.0) << text->property("text").toString().toStdString();
      EXPECT_LE(text->property("contentWidth").toReal(), text->width() + 0.5)
          << text->property("text").toString().toStdString();
    }
  }
}

TEST_F(MainWindowTest, aGermanTableCoversEveryText) {
  QTranslator german;
  ASSERT_TRUE(german.load(QStringLiteral(":/i18n/tidewell_de.qm")));
  for (const auto state : {MessagesAccessState::ready, MessagesAccessState::needsFullDiskAccess,
                           MessagesAccessState::unavailable, MessagesAccessState::checking}) {
    show(state, std::unexpected{MessagesScanError::queryFailed});
    coordinator->scan();
    const QStringList english = texts();
    QCoreApplication::installTranslator(&german);
    show(state, std::unexpected{MessagesScanError::queryFailed});
    coordinator->scan();
    const QStringList translated = texts();
    QCoreApplication::removeTranslator(&german);
    for (const QString& text : translated) {
      // Names stay what they are.
      if (text != QStringLiteral("Tidewell") && text != QStringLiteral("Apple Health")) {
        EXPECT_FALSE(english.contains(text)) << text.toStdString();
      }
    }
  }
  for (const MessagesScanError error : {MessagesScanError::accessRequired, MessagesScanError::databaseUnavailable,
                                        MessagesScanError::unsupportedDatabase, MessagesScanError::queryFailed}) {
    const std::string text{errorDescription(error)};
    EXPECT_FALSE(german.translate("MessagesScanError", text.c_str()).isEmpty()) << text;
  }
}

TEST_F(MainWindowTest, everySymbolHasAPicture) {
  for (const auto state : {MessagesAccessState::ready, MessagesAccessState::needsFullDiskAccess,
                           MessagesAccessState::unavailable, MessagesAccessState::checking}) {
    show(state, std::unexpected{MessagesScanError::queryFailed});
    coordinator->scan();
    for (const QQuickItem* item : visible("kestrel::companion::SymbolImage")) {
      const QString name = static_cast<const SymbolImage*>(item)->name();
      EXPECT_TRUE(QFile::exists(QStringLiteral(":/symbols/%1.svg").arg(name))) << name.toStdString();
    }
  }
}

/// What lies beneath a text and what it is painted with, from the picture: its most frequent colour, and of the
/// others the one that stands out most.
double contrastInPicture(const QImage& picture, const QRect& area) {
  std::map<QRgb, int> counts;
  for (int y = area.top(); y <= area.bottom(); ++y) {
    for (int x = area.left(); x <= area.right(); ++x) {
      ++counts[picture.pixel(x, y)];
    }
  }
  const auto ground = std::ranges::max_element(counts, {}, &std::pair<const QRgb, int>::second)->first;
  double most = 1;
  for (const auto& [color, count] : counts) {
    most = std::max(most, contrastRatio(QColor{color}, QColor{ground}));
  }
  return most;
}

TEST_F(MainWindowTest, everyTextReadsInThePicture) {
  for (const auto state : {MessagesAccessState::ready, MessagesAccessState::needsFullDiskAccess,
                           MessagesAccessState::unavailable, MessagesAccessState::checking}) {
    show(state, std::unexpected{MessagesScanError::queryFailed});
    coordinator->scan();
    window->resize(1080, 1200);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->contentItem()->height() >= 1100; }, patience));
    window->grabWindow();  // settles the layout
    const QImage picture = window->grabWindow();
    ASSERT_FALSE(picture.isNull());
    const qreal scale = static_cast<qreal>(picture.width()) / window->width();
    for (QQuickItem* text : visible("QQuickText")) {
      const QRectF place = text->mapRectToScene(text->boundingRect());
      const QRect area = QRectF{place.topLeft() * scale, place.size() * scale}.toRect() & picture.rect();
      if (!area.isEmpty()) {
        EXPECT_GE(contrastInPicture(picture, area), 4.5) << text->property("text").toString().toStdString();
      }
    }
  }
}

}  // namespace
}  // namespace kestrel::companion
