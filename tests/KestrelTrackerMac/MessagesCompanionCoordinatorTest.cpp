#include <KestrelKit/foundation/Instant.h>
#include <KestrelTrackerMac/MessagesActivityReading.h>
#include <KestrelTrackerMac/MessagesCompanionCoordinator.h>
#include <KestrelTrackerMac/MessagesDatabaseReader.h>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <QCoreApplication>
#include <QCoroFuture>
#include <QDir>
#include <QFile>
#include <QFuture>
#include <QPromise>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <deque>
#include <expected>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace kestrel::companion {
namespace {

using AccessState = MessagesCompanionCoordinator::AccessState;
using ScanResult = std::expected<MessagesScanSummary, MessagesScanError>;

/// A reader that answers when the test says so, in the order it was asked.
class AnsweredReader final : public MessagesActivityReading {
 public:
  QCoro::Task<MessagesAccessState> checkAccess() override {
    probes.emplace_back();
    probes.back().start();
    const QFuture<MessagesAccessState> answer = probes.back().future();
    co_return co_await answer;
  }

  QCoro::Task<ScanResult> scan(std::int64_t days, Instant now) override {
    asked.emplace_back(days, now);
    scans.emplace_back();
    scans.back().start();
    const QFuture<ScanResult> answer = scans.back().future();
    co_return co_await answer;
  }

  std::deque<QPromise<MessagesAccessState>> probes;
  std::deque<QPromise<ScanResult>> scans;
  std::vector<std::pair<std::int64_t, Instant>> asked;
};

template <typename Answer>
void give(QPromise<Answer>& question, Answer answer) {
  question.addResult(std::move(answer));
  question.finish();
}

MessagesScanSummary summaryOf(std::int64_t days, std::int64_t sent) {
  return {
      .requestedDays = days,
      .scannedAt = instantSinceReferenceDate(800'000'000),
      .daily = {{.date = "2026-05-09", .sentCount = sent, .receivedCount = 3, .averageMessageLength = {}}}};
}

struct MessagesCompanionCoordinatorTest : testing::Test {
  MessagesCompanionCoordinatorTest() {
    auto owned = std::make_unique<AnsweredReader>();
    reader = owned.get();
    coordinator = std::make_unique<MessagesCompanionCoordinator>(std::move(owned));
  }

  void becomeReady() {
    coordinator->refreshAccess();
    give(reader->probes.back(), MessagesAccessState::ready);
    ASSERT_TRUE(QTest::qWaitFor([&] { return coordinator->accessState() == AccessState::Ready; }, patience));
  }

  void finishScan(ScanResult result) {
    give(reader->scans.back(), std::move(result));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !coordinator->isScanning(); }, patience));
  }

  static constexpr int patience = 60'000;
  AnsweredReader* reader = nullptr;
  std::unique_ptr<MessagesCompanionCoordinator> coordinator;
};

TEST_F(MessagesCompanionCoordinatorTest, startsCheckingWithNinetyDaysAndNothingElse) {
  EXPECT_EQ(coordinator->accessState(), AccessState::Checking);
  EXPECT_FALSE(coordinator->summary());
  EXPECT_FALSE(coordinator->isScanning());
  EXPECT_TRUE(coordinator->errorMessage().isEmpty());
  EXPECT_EQ(coordinator->selectedDays(), 90);
  EXPECT_EQ(coordinator->figures(), MessagesSummaryFigures{});
}

TEST_F(MessagesCompanionCoordinatorTest, aRefreshTakesTheStateOfTheProbe) {
  for (const MessagesAccessState state :
       {MessagesAccessState::ready, MessagesAccessState::needsFullDiskAccess,
        MessagesAccessState::unavailable}) {
    coordinator->refreshAccess();
    EXPECT_EQ(coordinator->accessState(), AccessState::Checking);
    give(reader->probes.back(), state);
    EXPECT_TRUE(QTest::qWaitFor([&] { return coordinator->accessState() == static_cast<AccessState>(state); },
                                patience));
  }
}

TEST_F(MessagesCompanionCoordinatorTest, pressingScanTwiceStartsOneScan) {
  becomeReady();
  coordinator->scan();
  coordinator->scan();
  EXPECT_TRUE(coordinator->isScanning());
  EXPECT_EQ(reader->asked.size(), 1u);
  finishScan(summaryOf(90, 1));
  EXPECT_EQ(reader->asked.size(), 1u);
}

TEST_F(MessagesCompanionCoordinatorTest, aScanWhileNotReadyDoesNothing) {
  const auto refused = [&] {
    coordinator->scan();
    return !coordinator->isScanning() && reader->asked.empty();
  };
  EXPECT_TRUE(refused());
  for (const MessagesAccessState state :
       {MessagesAccessState::needsFullDiskAccess, MessagesAccessState::unavailable}) {
    coordinator->refreshAccess();
    EXPECT_TRUE(refused());
    give(reader->probes.back(), state);
    ASSERT_TRUE(QTest::qWaitFor([&] { return coordinator->accessState() == static_cast<AccessState>(state); },
                                patience));
    EXPECT_TRUE(refused());
  }
}

TEST_F(MessagesCompanionCoordinatorTest, accessRequiredMovesTheStateAndShowsItsText) {
  becomeReady();
  coordinator->scan();
  finishScan(std::unexpected{MessagesScanError::accessRequired});
  EXPECT_EQ(coordinator->accessState(), AccessState::NeedsFullDiskAccess);
  EXPECT_EQ(coordinator->errorMessage(),
            QStringLiteral("Tidewell can’t read Messages yet. Enable Full Disk Access, then try again."));
}

TEST_F(MessagesCompanionCoordinatorTest, otherErrorsShowTheirTextsAndLeaveTheState) {
  becomeReady();
  const std::pair<MessagesScanError, QString> texts[] = {
      {MessagesScanError::databaseUnavailable,
       QStringLiteral("Messages history isn’t available on this Mac.")},
      {MessagesScanError::unsupportedDatabase,
       QStringLiteral("This version of the Messages database isn’t supported yet.")},
      {MessagesScanError::queryFailed,
       QStringLiteral("Messages activity couldn’t be summarized. No history was saved or sent.")},
  };
  for (const auto& [error, text] : texts) {
    coordinator->scan();
    EXPECT_TRUE(coordinator->errorMessage().isEmpty());
    finishScan(std::unexpected{error});
    EXPECT_EQ(coordinator->errorMessage(), text);
    EXPECT_EQ(coordinator->accessState(), AccessState::Ready);
  }
}

TEST_F(MessagesCompanionCoordinatorTest, anUnforeseenErrorIsAFailedQuery) {
  becomeReady();
  coordinator->scan();
  reader->scans.back().setException(std::make_exception_ptr(std::runtime_error{"no memory"}));
  reader->scans.back().finish();
  ASSERT_TRUE(QTest::qWaitFor([&] { return !coordinator->isScanning(); }, patience));
  EXPECT_EQ(coordinator->errorMessage(),
            QStringLiteral("Messages activity couldn’t be summarized. No history was saved or sent."));
  EXPECT_EQ(coordinator->accessState(), AccessState::Ready);
}

TEST_F(MessagesCompanionCoordinatorTest, anUnforeseenErrorOfTheProbeIsUnavailable) {
  coordinator->refreshAccess();
  reader->probes.back().setException(std::make_exception_ptr(std::runtime_error{"no memory"}));
  reader->probes.back().finish();
  EXPECT_TRUE(
      QTest::qWaitFor([&] { return coordinator->accessState() == AccessState::Unavailable; }, patience));
  becomeReady();
}

TEST_F(MessagesCompanionCoordinatorTest, aFailedScanLeavesTheOldSummaryWithTheErrorText) {
  becomeReady();
  coordinator->scan();
  finishScan(summaryOf(90, 41));
  coordinator->scan();
  EXPECT_EQ(coordinator->summary(), summaryOf(90, 41)) << "kept while the new scan runs";
  finishScan(std::unexpected{MessagesScanError::queryFailed});
  EXPECT_EQ(coordinator->summary(), summaryOf(90, 41));
  EXPECT_FALSE(coordinator->errorMessage().isEmpty());
}

TEST_F(MessagesCompanionCoordinatorTest, theChosenWindowIsWhatTheNextScanAsksFor) {
  becomeReady();
  coordinator->setSelectedDays(365);
  const Instant before = ReferenceClock::now();
  coordinator->scan();
  coordinator->setSelectedDays(30);
  ASSERT_EQ(reader->asked.size(), 1u);
  EXPECT_EQ(reader->asked[0].first, 365);
  EXPECT_GE(reader->asked[0].second, before);
  EXPECT_LE(reader->asked[0].second, ReferenceClock::now());
  finishScan(summaryOf(365, 1));
}

TEST_F(MessagesCompanionCoordinatorTest, aRefreshDuringAScanIsIgnoredAndWorksAfterwards) {
  becomeReady();
  coordinator->scan();
  coordinator->refreshAccess();
  EXPECT_EQ(reader->probes.size(), 1u);
  EXPECT_EQ(coordinator->accessState(), AccessState::Ready);
  finishScan(std::unexpected{MessagesScanError::queryFailed});
  coordinator->refreshAccess();
  EXPECT_EQ(reader->probes.size(), 2u);
  EXPECT_TRUE(coordinator->errorMessage().isEmpty()) << "a refresh forgets the failure";
  give(reader->probes.back(), MessagesAccessState::ready);
  EXPECT_TRUE(QTest::qWaitFor([&] { return coordinator->accessState() == AccessState::Ready; }, patience));
}

TEST_F(MessagesCompanionCoordinatorTest, propertiesNotifyOnlyWhenTheyChange) {
  becomeReady();
  QSignalSpy access{coordinator.get(), &MessagesCompanionCoordinator::accessStateChanged};
  QSignalSpy summary{coordinator.get(), &MessagesCompanionCoordinator::summaryChanged};
  QSignalSpy scanning{coordinator.get(), &MessagesCompanionCoordinator::isScanningChanged};
  QSignalSpy error{coordinator.get(), &MessagesCompanionCoordinator::errorMessageChanged};
  QSignalSpy days{coordinator.get(), &MessagesCompanionCoordinator::selectedDaysChanged};

  coordinator->setSelectedDays(90);
  EXPECT_EQ(days.count(), 0);
  coordinator->setSelectedDays(30);
  EXPECT_EQ(days.count(), 1);

  for (int scan = 0; scan < 2; ++scan) {
    coordinator->scan();
    finishScan(summaryOf(30, 5));
  }
  EXPECT_EQ(summary.count(), 1) << "the second scan gave the same summary";
  EXPECT_EQ(scanning.count(), 4);
  EXPECT_EQ(error.count(), 0);

  coordinator->scan();
  finishScan(summaryOf(30, 6));
  EXPECT_EQ(summary.count(), 2);
  EXPECT_EQ(access.count(), 0);

  coordinator->refreshAccess();
  coordinator->refreshAccess();
  EXPECT_EQ(access.count(), 1) << "it was checking already";
  give(reader->probes[1], MessagesAccessState::ready);
  give(reader->probes[2], MessagesAccessState::ready);
  ASSERT_TRUE(QTest::qWaitFor([&] { return coordinator->accessState() == AccessState::Ready; }, patience));
}

TEST_F(MessagesCompanionCoordinatorTest, theSummaryIsSetBeforeScanningEnds) {
  becomeReady();
  std::vector<QString> order;
  QObject::connect(coordinator.get(), &MessagesCompanionCoordinator::summaryChanged,
                   [&] { order.push_back(QStringLiteral("summary")); });
  QObject::connect(coordinator.get(), &MessagesCompanionCoordinator::isScanningChanged, [&] {
    order.push_back(coordinator->isScanning() ? QStringLiteral("scanning") : QStringLiteral("done"));
  });
  coordinator->scan();
  finishScan(summaryOf(90, 2));
  EXPECT_EQ(order,
            (std::vector{QStringLiteral("scanning"), QStringLiteral("summary"), QStringLiteral("done")}));
}

TEST_F(MessagesCompanionCoordinatorTest, aCoordinatorThatIsGoneTakesNoAnswer) {
  // The reader goes with its coordinator, the answers under way do not.
  coordinator->refreshAccess();
  const QFuture<MessagesAccessState> answer = reader->probes.back().future();
  QPromise<MessagesAccessState> probe = std::move(reader->probes.back());
  coordinator.reset();
  give(probe, MessagesAccessState::ready);
  QCoreApplication::processEvents();
  EXPECT_TRUE(answer.isFinished());
}

struct RealReader : testing::Test {
  RealReader() {
    coordinator = std::make_unique<MessagesCompanionCoordinator>(
        std::make_unique<MessagesDatabaseReader>(folder.filePath(QStringLiteral("chat.db")).toStdString()));
  }

  void run(const char* sql) {
    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open(folder.filePath(QStringLiteral("chat.db")).toUtf8().constData(), &connection),
              SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(connection, sql, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection);
    sqlite3_close(connection);
  }

  void refreshTo(AccessState state) {
    coordinator->refreshAccess();
    ASSERT_TRUE(QTest::qWaitFor([&] { return coordinator->accessState() == state; }, 60'000));
  }

  void scan() {
    coordinator->scan();  // a short one may be over when it returns
    ASSERT_TRUE(QTest::qWaitFor([&] { return !coordinator->isScanning(); }, 60'000));
  }

  QTemporaryDir folder;
  std::unique_ptr<MessagesCompanionCoordinator> coordinator;
};

TEST_F(RealReader, aMissingFileNeedsAccessAndIsFoundWhenItComes) {
  refreshTo(AccessState::NeedsFullDiskAccess);
  run("CREATE TABLE message (x)");
  refreshTo(AccessState::Ready);
}

TEST_F(RealReader, aFolderInItsPlaceIsNoHistory) {
  ASSERT_TRUE(QDir{folder.path()}.mkdir(QStringLiteral("chat.db")));
  refreshTo(AccessState::Unavailable);
}

TEST_F(RealReader, anUnknownSchemaShowsAtTheScanOnly) {
  run("CREATE TABLE message (x)");
  refreshTo(AccessState::Ready);
  scan();
  EXPECT_EQ(coordinator->errorMessage(),
            QStringLiteral("This version of the Messages database isn’t supported yet."));
  EXPECT_EQ(coordinator->accessState(), AccessState::Ready);
}

TEST_F(RealReader, aScanCountsWhatIsThere) {
  run("CREATE TABLE message (date INTEGER, is_from_me INTEGER, text TEXT);"
      "CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER);"
      "INSERT INTO message SELECT unixepoch() - 978307200 - 60, value, 'abc' FROM json_each('[1,1,0]');"
      "INSERT INTO message SELECT unixepoch() - 978307200 - 40 * 86400, 1, 'abc';");
  refreshTo(AccessState::Ready);
  scan();
  ASSERT_TRUE(coordinator->summary());
  EXPECT_EQ(coordinator->figures().activeDays, QStringLiteral("2"));
  EXPECT_EQ(coordinator->figures().sent, QStringLiteral("3"));
  coordinator->setSelectedDays(30);
  scan();
  EXPECT_EQ(coordinator->figures().activeDays, QStringLiteral("1"));
  EXPECT_EQ(coordinator->figures().sent, QStringLiteral("2"));
  EXPECT_EQ(coordinator->figures().received, QStringLiteral("1"));
}

TEST_F(RealReader, aFileThatGoesBetweenProbeAndScanNeedsAccess) {
  run("CREATE TABLE message (x)");
  refreshTo(AccessState::Ready);
  ASSERT_TRUE(QFile::remove(folder.filePath(QStringLiteral("chat.db"))));
  scan();
  EXPECT_EQ(coordinator->accessState(), AccessState::NeedsFullDiskAccess);
}

}  // namespace
}  // namespace kestrel::companion
