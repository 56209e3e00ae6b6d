#include <KestrelKit/foundation/Instant.h>
#include <KestrelTrackerMac/MessagesCompanionCoordinator.h>
#include <KestrelTrackerMac/PrivacySettings.h>
#include <KestrelTrackerMac/reading/MessagesScanError.h>

#include <QCoreApplication>
#include <QLocale>
#include <QPointer>

#include <expected>
#include <string>
#include <utility>

namespace kestrel::companion {

namespace {

/// The reader's text in the user's language.
QString localized(MessagesScanError error) {
  return QCoreApplication::translate("MessagesScanError", std::string{errorDescription(error)}.c_str());
}

// What a reader could not foresee, such as memory that ran out, is a failure like any other.

QCoro::Task<MessagesAccessState> probed(MessagesActivityReading& reader) {
  try {
    co_return co_await reader.checkAccess();
  } catch (...) {
    co_return MessagesAccessState::unavailable;
  }
}

QCoro::Task<std::expected<MessagesScanSummary, MessagesScanError>> scanned(MessagesActivityReading& reader,
                                                                           int days) {
  try {
    co_return co_await reader.scan(days, ReferenceClock::now());
  } catch (...) {
    co_return std::unexpected{MessagesScanError::queryFailed};
  }
}

}  // namespace

MessagesCompanionCoordinator::MessagesCompanionCoordinator(std::unique_ptr<MessagesActivityReading> reader,
                                                           QObject* parent)
    : QObject(parent), reader_(std::move(reader)) {}

MessagesCompanionCoordinator::~MessagesCompanionCoordinator() = default;

MessagesSummaryFigures MessagesCompanionCoordinator::figures() const {
  return summary_ ? MessagesSummaryFigures{*summary_, QLocale{}} : MessagesSummaryFigures{};
}

void MessagesCompanionCoordinator::refreshAccess() {
  if (isScanning_) {
    return;
  }
  setAccessState(MessagesAccessState::checking);
  setErrorMessage({});
  probe();
}

void MessagesCompanionCoordinator::scan() {
  if (accessState_ != MessagesAccessState::ready || isScanning_) {
    return;
  }
  setIsScanning(true);
  setErrorMessage({});
  runScan();
}

void MessagesCompanionCoordinator::openPrivacySettings() { companion::openPrivacySettings(); }

QCoro::Task<> MessagesCompanionCoordinator::probe() {
  const QPointer<MessagesCompanionCoordinator> self{this};
  const MessagesAccessState state = co_await probed(*reader_);
  if (self) {
    setAccessState(state);
  }
}

QCoro::Task<> MessagesCompanionCoordinator::runScan() {
  const QPointer<MessagesCompanionCoordinator> self{this};
  auto result = co_await scanned(*reader_, selectedDays_);
  if (!self) {
    co_return;
  }
  if (result) {
    setSummary(std::move(*result));
  } else {
    setErrorMessage(localized(result.error()));
    if (result.error() == MessagesScanError::accessRequired) {
      setAccessState(MessagesAccessState::needsFullDiskAccess);
    }
  }
  setIsScanning(false);
}

void MessagesCompanionCoordinator::setSelectedDays(int days) {
  if (selectedDays_ != days) {
    selectedDays_ = days;
    Q_EMIT selectedDaysChanged();
  }
}

void MessagesCompanionCoordinator::setAccessState(MessagesAccessState state) {
  if (accessState_ != state) {
    accessState_ = state;
    Q_EMIT accessStateChanged();
  }
}

void MessagesCompanionCoordinator::setSummary(MessagesScanSummary summary) {
  if (summary_ != summary) {
    summary_ = std::move(summary);
    Q_EMIT summaryChanged();
  }
}

void MessagesCompanionCoordinator::setIsScanning(bool scanning) {
  if (isScanning_ != scanning) {
    isScanning_ = scanning;
    Q_EMIT isScanningChanged();
  }
}

void MessagesCompanionCoordinator::setErrorMessage(const QString& message) {
  if (errorMessage_ != message) {
    errorMessage_ = message;
    Q_EMIT errorMessageChanged();
  }
}

}  // namespace kestrel::companion
