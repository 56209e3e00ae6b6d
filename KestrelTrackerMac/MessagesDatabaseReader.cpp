#include <KestrelTrackerMac/MessagesDatabaseReader.h>

#include <QCoroFuture>
#include <QThread>
#include <QtConcurrent>

#include <utility>

namespace kestrel::companion {

MessagesDatabaseReader::MessagesDatabaseReader(std::filesystem::path databaseURL)
    : databaseURL_(std::move(databaseURL)) {
  probes_.setThreadPriority(QThread::LowPriority);
  scans_.setThreadPriority(QThread::NormalPriority);
}

QCoro::Task<MessagesAccessState> MessagesDatabaseReader::checkAccess() {
  co_return co_await QtConcurrent::run(&probes_, [path = databaseURL_] { return probeMessagesAccess(path); });
}

QCoro::Task<std::expected<MessagesScanSummary, MessagesScanError>> MessagesDatabaseReader::scan(std::int64_t days,
                                                                                                Instant now) {
  co_return co_await QtConcurrent::run(
      &scans_, [path = databaseURL_, days, now] { return scanMessages(path, days, now); });
}

}  // namespace kestrel::companion
