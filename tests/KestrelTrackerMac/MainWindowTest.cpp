#include "DesktopPortal.h"

#include <KestrelTrackerMac/MainWindow.h>
#include <KestrelTrackerMac/MessagesActivityReading.h>
#include <KestrelTrackerMac/MessagesCompanionCoordinator.h>
#include <KestrelTrackerMac/Palette.h>
#include <KestrelTrackerMac/SymbolImage.h>
#include <KestrelTrackerMac/Theme.h>
#include <KestrelTrackerMac/TrayMenu.h>
#include <KestrelTrackerMac/WindowPresence.h>
#include <KestrelTrackerMac/reading/MessagesScanError.h>

#include <gtest/gtest.h>
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QColor>
#include <QCoreApplication>
#include <QCoroFuture>
#include <QFile>
#include <QFont>
#include <QFuture>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QLocale>
#include <QPalette>
#include <QPromise>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocumentFragment>
#include <QTranslator>
#include <QVariantAnimation>
#include <QWheelEvent>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <expected>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::companion {
namespace {

using AccessState = MessagesCompanionCoordinator::AccessState;
using ScanResult = std::expected<MessagesScanSummary, MessagesScanError>;

/// A reader whose answers are there at once: one state for every probe, and the results one scan after the
/// other. The scan after the last result runs until it is answered.
class PreparedReader final : public MessagesActivityReading {
 public:
  PreparedReader(MessagesAccessState state, std::deque<ScanResult> results)
      : state_(state), results_(std::move(results)) {}

  QCoro::Task<MessagesAccessState> checkAccess() override { co_return state_; }

  QCoro::Task<ScanResult> scan(std::int64_t days, Instant) override {
    asked.push_back(days);
    if (results_.empty()) {
      running_.start();
      const QFuture<ScanResult> answer = running_.future();
      co_return co_await answer;
    }
    ScanResult result = std::move(results_.front());
    results_.pop_front();
    co_return result;
  }

  void answer(ScanResult result) {
    running_.addResult(std::move(result));
    running_.finish();
  }

  std::vector<std::int64_t> asked;  ///< The days of each scan so far.

 private:
  MessagesAccessState state_;
  std::deque<ScanResult> results_;
  QPromise<ScanResult> running_;
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

/// Makes the system's palette dark or light.
void usePalette(bool dark) {
  QPalette palette;
  palette.setColor(QPalette::WindowText, dark ? Qt::white : Qt::black);
  palette.setColor(QPalette::Window, dark ? Qt::black : Qt::white);
  QGuiApplication::setPalette(palette);
}

QString plain(const QQuickItem& text) {
  const QString shown = text.property("text").toString();
  const bool rich = text.property("textFormat").toInt() == Qt::RichText;
  return rich ? QTextDocumentFragment::fromHtml(shown).toPlainText() : shown;
}

const std::vector<MessagesAccessState> accessStates{
    MessagesAccessState::ready, MessagesAccessState::needsFullDiskAccess, MessagesAccessState::unavailable,
    MessagesAccessState::checking};

struct MainWindowTest : testing::Test {
  MainWindowTest() { QLocale::setDefault(QLocale::c()); }
  ~MainWindowTest() override {
    close();
    QLocale::setDefault(QLocale::c());
    usePalette(false);
  }

  void show(MessagesAccessState state, std::deque<ScanResult> results = {}) {
    close();
    auto owned = std::make_unique<PreparedReader>(state, std::move(results));
    reader = owned.get();
    coordinator = std::make_unique<MessagesCompanionCoordinator>(std::move(owned));
    engine = std::make_unique<QQmlApplicationEngine>();
    window = &loadMainWindow(*engine, *coordinator);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window, patience));
    ASSERT_TRUE(QTest::qWaitFor([&] { return coordinator->accessState() == static_cast<AccessState>(state); },
                                patience));
  }

  void close() {
    if (coordinator && coordinator->isScanning()) {
      reader->answer(MessagesScanSummary{});
      EXPECT_TRUE(QTest::qWaitFor([&] { return !coordinator->isScanning(); }, patience));
    }
    engine.reset();  // before the coordinator that its views look at
    coordinator.reset();
  }

  void resize(int width, int height) {
    window->resize(width, height);
    const auto sized = [&] { return window->contentItem()->size() == QSizeF(width, height); };
    ASSERT_TRUE(QTest::qWaitFor(sized, patience));
    window->grabWindow();  // settles the layout
  }

  void becomeActive() {
    window->requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window, patience));
  }

  void click(const QQuickItem& control) {
    const QPointF middle = control.mapToScene(QPointF{control.width() / 2, control.height() / 2});
    QTest::mouseClick(window, Qt::LeftButton, {}, middle.toPoint());
  }

  /// All that the window can show, one after the other, with its name.
  void forEveryScene(const std::function<void(const char*)>& look) {
    for (const MessagesAccessState state : accessStates) {
      show(state);
      look("an access state");
    }
    show(MessagesAccessState::ready, {MessagesScanSummary{}});
    coordinator->scan();
    look("an empty result");
    show(MessagesAccessState::ready, {sevenDigits(), std::unexpected{MessagesScanError::queryFailed}});
    coordinator->scan();
    look("a full result");
    coordinator->scan();
    look("a failure over a full result");
    coordinator->scan();
    look("a running scan over a full result");
    show(MessagesAccessState::ready, {std::unexpected{MessagesScanError::accessRequired}});
    coordinator->scan();
    look("a scan that found the access gone");
  }

  std::vector<QQuickItem*> visible() const {
    std::vector<QQuickItem*> items;
    collect(window->contentItem(), items);
    return items;
  }

  std::vector<QQuickItem*> visible(const char* type) const {
    std::vector<QQuickItem*> items = visible();
    std::erase_if(items, [&](QQuickItem* item) { return !item->inherits(type); });
    return items;
  }

  /// The visible text or control that reads `text`.
  QQuickItem& named(const char* type, const QString& text) const {
    for (QQuickItem* item : visible(type)) {
      if (plain(*item) == text) {
        return *item;
      }
    }
    ADD_FAILURE() << "nothing reads " << text.toStdString();
    return *window->contentItem();
  }

  QStringList texts() const {
    QStringList result;
    for (const QQuickItem* item : visible("QQuickText")) {
      result.append(plain(*item));
    }
    return result;
  }

  /// What screen readers say of what is visible.
  QStringList accessibleNames() const {
    QStringList result;
    for (QQuickItem* item : visible()) {
      if (QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(item)) {
        result.append(accessible->text(QAccessible::Name));
      }
    }
    return result;
  }

  QStringList symbols() const {
    QStringList result;
    for (const QQuickItem* item : visible("kestrel::companion::SymbolImage")) {
      result.append(static_cast<const SymbolImage*>(item)->name());
    }
    return result;
  }

  std::vector<QQuickItem*> tiles() const {
    std::vector<QQuickItem*> items = visible();
    std::erase_if(items, [](QQuickItem* item) {
      return !item->property("valueFont").isValid() || !item->property("caption").isValid();
    });
    return items;
  }

  QQuickItem& page() const {
    const std::vector<QQuickItem*> scrolling = visible("QQuickFlickable");
    const auto found = std::ranges::find_if(
        scrolling, [](QQuickItem* item) { return item->property("disclaimer").isValid(); });
    EXPECT_NE(found, scrolling.end());
    return **found;
  }

  const Theme& theme() const {
    return *engine->singletonInstance<Theme*>(qmlTypeId("Tidewell", 1, 0, "Theme"));
  }

  static constexpr int patience = 60'000;
  std::unique_ptr<MessagesCompanionCoordinator> coordinator;
  PreparedReader* reader = nullptr;
  std::unique_ptr<QQmlApplicationEngine> engine;
  QQuickWindow* window = nullptr;
};

TEST_F(MainWindowTest, hasItsNamesIconAndSizes) {
  show(MessagesAccessState::ready);
  EXPECT_EQ(window->title(), QStringLiteral("Tidewell"));
  EXPECT_EQ(window->objectName(), QStringLiteral("main"));
  EXPECT_FALSE(window->icon().pixmap(64).isNull());
  EXPECT_EQ(window->size(), QSize(1080, 720));
  EXPECT_EQ(window->minimumSize(), QSize(480, 400));
}

TEST_F(MainWindowTest, theKeyboardOpensTheMenuAndScansFromIt) {
  const QString command = QStringLiteral("Scan Messages Activity");
  show(MessagesAccessState::ready);
  becomeActive();
  EXPECT_FALSE(texts().contains(command));
  QTest::keyClick(window, Qt::Key_F10);
  ASSERT_TRUE(QTest::qWaitFor([&] { return texts().contains(command); }, patience));
  QTest::keyClick(window, Qt::Key_Escape);
  ASSERT_TRUE(QTest::qWaitFor([&] { return !texts().contains(command); }, patience));
  EXPECT_FALSE(coordinator->isScanning());
  QTest::keyClick(window, Qt::Key_F10);
  ASSERT_TRUE(QTest::qWaitFor([&] { return texts().contains(command); }, patience));
  QTest::keyClick(window, Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return coordinator->isScanning(); }, patience));
}

TEST_F(MainWindowTest, theMenuLeavesThePageWhereItIs) {
  show(MessagesAccessState::ready, {sevenDigits()});
  coordinator->scan();
  becomeActive();
  resize(480, 400);
  QTest::keyClick(window, Qt::Key_End);
  const qreal end = page().property("contentY").toReal();
  EXPECT_GT(end, 400);
  QTest::keyClick(window, Qt::Key_F10);
  ASSERT_TRUE(
      QTest::qWaitFor([&] { return texts().contains(QStringLiteral("Scan Messages Activity")); }, patience));
  EXPECT_EQ(page().property("contentY").toReal(), end);
}

TEST_F(MainWindowTest, aControlThatTakesTheFocusIsScrolledTo) {
  show(MessagesAccessState::ready);
  becomeActive();
  resize(480, 400);
  QQuickItem& button = named("QQuickButton", QStringLiteral("Scan Locally"));
  EXPECT_GT(button.mapToScene(QPointF{}).y(), 400);
  button.forceActiveFocus(Qt::TabFocusReason);
  EXPECT_LE(button.mapToScene(QPointF{0, button.height()}).y(), 400);
}

TEST_F(MainWindowTest, theMenusTitleStandsAtThePagesMargin) {
  show(MessagesAccessState::ready);
  const auto title = [&] {
    return named("QQuickText", QStringLiteral("Tidewell")).mapToScene(QPointF{}).x();
  };
  EXPECT_EQ(title(), 32);
  resize(480, 400);
  EXPECT_EQ(title(), 16);
}

TEST_F(MainWindowTest, thePickersTitleStandsOnTheLineOfItsChoices) {
  show(MessagesAccessState::ready);
  const auto baseline = [&](const char* text) {
    const QQuickItem& item = named("QQuickText", QString::fromLatin1(text));
    return item.mapToScene(QPointF{0, item.baselineOffset()}).y();
  };
  EXPECT_EQ(baseline("Time window"), baseline("90 days"));
}

TEST_F(MainWindowTest, dayRowsStandALineAndTwiceNineApart) {
  show(MessagesAccessState::ready, {sevenDigits()});
  coordinator->scan();
  resize(1080, 1200);
  std::vector<qreal> tops;
  for (QQuickItem* item : visible()) {
    if (item->property("day").isValid()) {
      tops.push_back(item->mapToScene(QPointF{}).y());
    }
  }
  ASSERT_EQ(tops.size(), 7u);
  for (std::size_t row = 1; row < tops.size(); ++row) {
    EXPECT_EQ(tops[row] - tops[row - 1], std::round(1.45 * theme().body()) + 2 * 9 + 1);
  }
}

TEST_F(MainWindowTest, eachAccessStateShowsItsOwnContentOnly) {
  const std::map<MessagesAccessState, std::pair<QString, QString>> shown{
      {MessagesAccessState::ready, {QStringLiteral("Ready"), QStringLiteral("Scan Locally")}},
      {MessagesAccessState::needsFullDiskAccess,
       {QStringLiteral("Permission needed"), QStringLiteral("Open Full Disk Access")}},
      {MessagesAccessState::unavailable,
       {QStringLiteral("Unavailable"), QStringLiteral("Messages history isn’t available on this Mac.")}},
      {MessagesAccessState::checking,
       {QStringLiteral("Checking"), QStringLiteral("Checking Messages access…")}},
  };
  for (const auto& [state, expected] : shown) {
    show(state);
    for (const auto& [other, own] : shown) {
      EXPECT_EQ(texts().contains(own.first), other == state) << own.first.toStdString();
      EXPECT_EQ(texts().contains(own.second), other == state) << own.second.toStdString();
    }
  }
}

TEST_F(MainWindowTest, theScanButtonReadsScanAgainFromTheFirstSummaryOnAlsoAfterALaterFailure) {
  show(MessagesAccessState::ready, {sevenDigits(), std::unexpected{MessagesScanError::queryFailed}});
  EXPECT_TRUE(texts().contains(QStringLiteral("Scan Locally")));
  for (int scan = 0; scan < 2; ++scan) {
    coordinator->scan();
    EXPECT_TRUE(texts().contains(QStringLiteral("Scan Again")));
    EXPECT_FALSE(texts().contains(QStringLiteral("Scan Locally")));
  }
  EXPECT_FALSE(coordinator->errorMessage().isEmpty());
  EXPECT_EQ(tiles().size(), 4u) << "the old summary stays";
}

TEST_F(MainWindowTest, choosingOneYearMakesTheNextScanRequest365Days) {
  show(MessagesAccessState::ready, {MessagesScanSummary{}, MessagesScanSummary{}});
  click(named("QQuickButton", QStringLiteral("Scan Locally")));
  click(named("QQuickRadioButton", QStringLiteral("1 year")));
  click(named("QQuickButton", QStringLiteral("Scan Again")));
  EXPECT_EQ(reader->asked, (std::vector<std::int64_t>{90, 365}));
}

TEST_F(MainWindowTest, aScanThatFindsTheAccessGoneShowsWhy) {
  show(MessagesAccessState::ready, {std::unexpected{MessagesScanError::accessRequired}});
  coordinator->scan();
  EXPECT_TRUE(texts().contains(QStringLiteral("Permission needed")));
  EXPECT_TRUE(texts().contains(
      QStringLiteral("Tidewell can’t read Messages yet. Enable Full Disk Access, then try again.")));
}

TEST_F(MainWindowTest, theScanButtonReadsScanLocallyAfterAFirstScanThatFailed) {
  show(MessagesAccessState::ready, {std::unexpected{MessagesScanError::queryFailed}});
  coordinator->scan();
  EXPECT_TRUE(texts().contains(QStringLiteral("Scan Locally")));
  EXPECT_TRUE(texts().contains(
      QStringLiteral("Messages activity couldn’t be summarized. No history was saved or sent.")));
}

TEST_F(MainWindowTest, anEmptyResultHasFourTilesAndSaysSo) {
  show(MessagesAccessState::ready, {MessagesScanSummary{}});
  coordinator->scan();
  ASSERT_EQ(tiles().size(), 4u);
  for (const QQuickItem* tile : tiles()) {
    EXPECT_EQ(tile->property("value").toString(), QStringLiteral("0"));
  }
  EXPECT_TRUE(texts().contains(QStringLiteral("No Messages activity was found in the selected window.")));
  EXPECT_FALSE(texts().contains(QStringLiteral("Recent daily activity")));
}

TEST_F(MainWindowTest, theTilesAreFourEqualColumnsThatHoldSevenDigitsFrom480Up) {
  for (const QLocale& locale :
       {QLocale{QLocale::English}, QLocale{QLocale::German}, QLocale{QLocale::French},
        QLocale{QLocale::Hindi, QLocale::DevanagariScript, QLocale::India},
        QLocale{QLocale::Arabic, QLocale::Egypt}, QLocale{QLocale::German, QLocale::Switzerland}}) {
    QLocale::setDefault(locale);
    show(MessagesAccessState::ready, {sevenDigits()});
    coordinator->scan();
    for (const int width : {480, 481, 560, 640, 641, 800, 1080, 1600}) {
      resize(width, 720);
      ASSERT_EQ(tiles().size(), 4u);
      for (QQuickItem* tile : tiles()) {
        EXPECT_FALSE(tile->property("valueFont").value<QFont>().kerning())
            << "cells of equal width have none";
        EXPECT_NEAR(tile->width(), tiles().front()->width(), 1.0) << width;
        std::vector<QQuickItem*> inside;
        collect(tile, inside);
        for (QQuickItem* text : inside) {
          if (text->inherits("QQuickText")) {
            const QPointF left = text->mapToItem(tile, QPointF{0, 0});
            EXPECT_LE(left.x() + text->property("contentWidth").toReal(), tile->width())
                << locale.name().toStdString() << ' ' << width;
            EXPECT_LE(left.y() + text->property("contentHeight").toReal(), tile->height())
                << locale.name().toStdString() << ' ' << width;
          }
        }
      }
    }
  }
}

TEST_F(MainWindowTest, nothingReachesBeyondTheWindowsWidth) {
  QTranslator german;
  ASSERT_TRUE(german.load(QStringLiteral(":/i18n/tidewell_de.qm")));
  const auto look = [&](const char* scene) {
    resize(480, 400);
    for (QQuickItem* text : visible("QQuickText")) {
      const std::string what = plain(*text).toStdString() + " in " + scene;
      const qreal width = text->property("contentWidth").toReal();
      EXPECT_LE(text->mapToScene(QPointF{}).x() + std::min(text->width(), width), 480.0 - 16.0) << what;
      EXPECT_LE(width, text->width() + 0.5) << what;
      EXPECT_FALSE(text->property("truncated").toBool()) << what;
    }
  };
  forEveryScene(look);
  QCoreApplication::installTranslator(&german);
  QLocale::setDefault(QLocale{QLocale::German});
  forEveryScene(look);
}

TEST_F(MainWindowTest, aGermanTableCoversEveryText) {
  QTranslator german;
  ASSERT_TRUE(german.load(QStringLiteral(":/i18n/tidewell_de.qm")));
  const auto everything = [&] {
    QSet<QString> found;
    forEveryScene([&](const char*) {
      becomeActive();
      QTest::keyClick(window, Qt::Key_F10);
      EXPECT_TRUE(QTest::qWaitFor([&] { return visible("QQuickMenuItem").size() == 1; }, patience));
      for (const QString& text : texts() + accessibleNames()) {
        found.insert(text);
      }
    });
    WindowPresence presence{*window};
    const TrayMenu tray{*coordinator, presence};
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
      for (const QAction* action : widget->actions()) {
        found.insert(action->text());
      }
    }
    return found;
  };
  const QSet<QString> english = everything();
  for (const char* text :
       {"Sent", "Late night", "888888 sent · 800008 received", "Summarizing on this Mac…",
        "No Messages activity was found in the selected window.", "Scan Messages Activity",
        "2026-05-19: 888888 sent · 800008 received", "Messages access: Ready", "Quit Tidewell"}) {
    EXPECT_TRUE(english.contains(QString::fromUtf8(text))) << text << " is not among what is compared";
  }
  QCoreApplication::installTranslator(&german);
  const QSet<QString> translated = everything();

  // Names stay what they are; the shortcut is Qt's to translate.
  const QSet<QString> names{QStringLiteral("Tidewell"), QStringLiteral("Apple Health"),
                            QStringLiteral("Ctrl+R")};
  static const QRegularExpression letter{QStringLiteral("\\p{L}")};
  for (const QString& text : translated - names) {
    EXPECT_FALSE(english.contains(text) && text.contains(letter)) << text.toStdString();
  }
  for (const MessagesScanError error :
       {MessagesScanError::accessRequired, MessagesScanError::databaseUnavailable,
        MessagesScanError::unsupportedDatabase, MessagesScanError::queryFailed}) {
    const std::string text{errorDescription(error)};
    EXPECT_FALSE(german.translate("MessagesScanError", text.c_str()).isEmpty()) << text;
  }
}

TEST_F(MainWindowTest, everySymbolStandsWhereItBelongsAndHasAPicture) {
  const auto expect = [&](std::initializer_list<const char*> ofTheMessagesBox) {
    QStringList expected{QStringLiteral("chart.xyaxis.line"), QStringLiteral("macbook.and.iphone"),
                         QStringLiteral("message.fill")};
    for (const char* name : ofTheMessagesBox) {
      expected.append(QString::fromLatin1(name));
    }
    expected.append(QStringLiteral("heart.text.clipboard"));
    EXPECT_EQ(symbols(), expected) << symbols().join(u' ').toStdString();
    for (const QString& name : symbols()) {
      EXPECT_TRUE(QFile::exists(QStringLiteral(":/symbols/%1.svg").arg(name))) << name.toStdString();
    }
  };
  show(MessagesAccessState::checking);
  expect({"ellipsis"});
  show(MessagesAccessState::needsFullDiskAccess);
  expect({"lock.shield"});
  show(MessagesAccessState::unavailable);
  expect({"exclamationmark.triangle"});
  show(MessagesAccessState::ready, {std::unexpected{MessagesScanError::queryFailed}});
  expect({});
  coordinator->scan();
  expect({"exclamationmark.circle"});
  coordinator->scan();
  expect({"progress.indicator"});
}

TEST_F(MainWindowTest, theProgressIndicatorTurnsUnlessTheSystemAsksForNoMotion) {
  DesktopPortal portal;
  for (const bool still : {false, true}) {
    portal.set(still ? "org.freedesktop.appearance reduced-motion uint32 1"
                     : "org.freedesktop.appearance reduced-motion uint32 0");
    show(MessagesAccessState::ready);
    ASSERT_TRUE(QTest::qWaitFor([&] { return theme().reduceMotion() == still; }, patience));
    coordinator->scan();
    const std::vector<QQuickItem*> all = visible("kestrel::companion::SymbolImage");
    const auto indicator = std::ranges::find_if(all, [](QQuickItem* item) {
      return static_cast<SymbolImage*>(item)->name() == QStringLiteral("progress.indicator");
    });
    ASSERT_NE(indicator, all.end());
    QSignalSpy turns{*indicator, &QQuickItem::rotationChanged};
    // Of two animations that run, one does not come to its end before the other has moved.
    QVariantAnimation other;
    other.setStartValue(0);
    other.setEndValue(1);
    other.start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return other.state() == QAbstractAnimation::Stopped; }, patience));
    EXPECT_EQ(turns.isEmpty(), still);
  }
}

TEST_F(MainWindowTest, theWheelDoesNotGlideWhereTheSystemAsksForNoMotion) {
  DesktopPortal portal;
  portal.set("org.freedesktop.appearance reduced-motion uint32 1");
  show(MessagesAccessState::ready);
  ASSERT_TRUE(QTest::qWaitFor([&] { return theme().reduceMotion(); }, patience));
  resize(480, 400);
  QWheelEvent turn{{240, 200}, {240, 200}, {}, {0, -120}, {}, {}, Qt::NoScrollPhase, false};
  QCoreApplication::sendEvent(window, &turn);
  EXPECT_EQ(page().property("contentY").toReal(), 120);
  EXPECT_FALSE(page().property("moving").toBool());
}

/// What lies beneath a text and what it is painted with, from the picture: its most frequent colour, and of
/// the others the one that stands out most.
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

TEST_F(MainWindowTest, everyTextReadsInThePictureOfBothSchemes) {
  forEveryScene([&](const char* scene) {
    resize(1080, 1200);
    for (const bool dark : {false, true}) {
      usePalette(dark);  // while the window is there, which follows
      ASSERT_TRUE(QTest::qWaitFor([&] { return theme().dark() == dark; }, patience));
      const QImage picture = window->grabWindow();
      ASSERT_FALSE(picture.isNull());
      const Palette expected = dark ? Palette::dark() : Palette::light();
      EXPECT_EQ(picture.pixelColor(picture.width() - 1, picture.height() - 1), expected.page) << scene;
      const qreal scale = static_cast<qreal>(picture.width()) / window->width();
      for (QQuickItem* text : visible("QQuickText")) {
        const QRectF place = text->mapRectToScene(text->boundingRect());
        const QRect area = QRectF{place.topLeft() * scale, place.size() * scale}.toRect() & picture.rect();
        if (!area.isEmpty()) {
          EXPECT_GE(contrastInPicture(picture, area), 4.5) << plain(*text).toStdString() << " in " << scene;
        }
      }
    }
  });
}

}  // namespace
}  // namespace kestrel::companion
