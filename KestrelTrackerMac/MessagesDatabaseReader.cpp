#include <KestrelTrackerMac/MessagesDatabaseReader.h>

#include <QCoroFuture>
#include <QThread>
#include <QtConcurrent>

#include <utility>

namespace kestrel::companion {

namespace {

void startThread(QThreadPool& pool, QThread::Priority priority) {
  pool.setThreadPriority(priority);
  pool.setMaxThreadCount(1);
  pool.setExpiryTimeout(-1);
  pool.start([] {});
}

}  // namespace

MessagesDatabaseReader::MessagesDatabaseReader(std::filesystem::path databaseURL)
    : databaseURL_(std::move(databaseURL)) {
  startThread(probes_, QThread::LowPriority);
  startThread(scans_, QThread::NormalPriority);
}

// What is awaited has a name in both functions: GCC 12 destroys the captures of a lambda twice when it is
// made within the awaited expression.

QCoro::Task<MessagesAccessState> MessagesDatabaseReader::checkAccess() {
  const auto state = QtConcurrent::run(&probes_, [path = databaseURL_] { return probeMessagesAccess(path); });
  co_return co_await state;
}

QCoro::Task<std::expected<MessagesScanSummary, MessagesScanError>> MessagesDatabaseReader::scan(
    std::int64_t days, Instant now) {
  const auto summary =
      QtConcurrent::run(&scans_, [path = databaseURL_, days, now] { return scanMessages(path, days, now); });
  co_return co_await summary;
}

}  // namespace kestrel::companion
