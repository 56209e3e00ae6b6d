#pragma once

#include <KestrelTrackerMac/MessagesActivityReading.h>
#include <KestrelTrackerMac/MessagesSummaryFigures.h>
#include <KestrelTrackerMac/reading/MessagesAccessState.h>
#include <KestrelTrackerMac/reading/MessagesScanSummary.h>

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

#include <memory>
#include <optional>

namespace kestrel::companion {

/// The one piece of state behind the window and the tray menu: whether the Messages database can be read,
/// whether a scan runs, what the last one gave. Main thread only. Nothing here fails: a failure ends as
/// `errorMessage`. A property notifies only when its value differs from the one before.
class MessagesCompanionCoordinator : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The application owns the one coordinator.")
  Q_PROPERTY(AccessState accessState READ accessState NOTIFY accessStateChanged)
  Q_PROPERTY(bool hasSummary READ hasSummary NOTIFY summaryChanged)
  Q_PROPERTY(kestrel::companion::MessagesSummaryFigures figures READ figures NOTIFY summaryChanged)
  Q_PROPERTY(bool isScanning READ isScanning NOTIFY isScanningChanged)
  Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)
  Q_PROPERTY(int selectedDays READ selectedDays WRITE setSelectedDays NOTIFY selectedDaysChanged)

 public:
  /// MessagesAccessState under the names that QML takes.
  enum class AccessState {
    Checking = static_cast<int>(MessagesAccessState::checking),
    Ready = static_cast<int>(MessagesAccessState::ready),
    NeedsFullDiskAccess = static_cast<int>(MessagesAccessState::needsFullDiskAccess),
    Unavailable = static_cast<int>(MessagesAccessState::unavailable),
  };
  Q_ENUM(AccessState)

  /// A coordinator over `reader`, which is not empty.
  explicit MessagesCompanionCoordinator(std::unique_ptr<MessagesActivityReading> reader,
                                        QObject* parent = nullptr);
  ~MessagesCompanionCoordinator() override;

  /// `checking` until the first probe has ended.
  AccessState accessState() const { return static_cast<AccessState>(accessState_); }

  /// The result of the last scan that succeeded; absent before.
  const std::optional<MessagesScanSummary>& summary() const { return summary_; }
  bool hasSummary() const { return summary_.has_value(); }

  /// The summary as texts in the user's locale; empty texts where there is no summary.
  MessagesSummaryFigures figures() const;

  /// True from the start of a scan until its result is in the other properties.
  bool isScanning() const { return isScanning_; }

  /// The text of the last failure; empty where there is none.
  QString errorMessage() const { return errorMessage_; }

  /// The window of the next scan in days.
  int selectedDays() const { return selectedDays_; }
  void setSelectedDays(int days);

  /// Probes the database anew and forgets the last failure. Refused during a scan.
  Q_INVOKABLE void refreshAccess();

  /// Scans `selectedDays` days up to now. Refused unless the access is `ready` and no scan runs.
  Q_INVOKABLE void scan();

  /// Opens the system's settings where Full Disk Access is granted.
  Q_INVOKABLE void openPrivacySettings();

 Q_SIGNALS:
  void accessStateChanged();
  void summaryChanged();
  void isScanningChanged();
  void errorMessageChanged();
  void selectedDaysChanged();

 private:
  QCoro::Task<> probe();
  QCoro::Task<> runScan();
  void setAccessState(MessagesAccessState state);
  void setSummary(MessagesScanSummary summary);
  void setIsScanning(bool scanning);
  void setErrorMessage(const QString& message);

  MessagesAccessState accessState_ = MessagesAccessState::checking;
  std::optional<MessagesScanSummary> summary_;
  bool isScanning_ = false;
  QString errorMessage_;
  int selectedDays_ = 90;
  std::unique_ptr<MessagesActivityReading> reader_;
};

}  // namespace kestrel::companion
