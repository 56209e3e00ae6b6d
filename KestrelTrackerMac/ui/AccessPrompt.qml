import QtQuick
import QtQuick.Layouts
import Tidewell

// What stands in the way of a scan, and what to do about it.
ColumnLayout {
  id: prompt

  required property MessagesCompanionCoordinator coordinator
  readonly property bool needsFullDiskAccess:
      coordinator.accessState === MessagesCompanionCoordinator.NeedsFullDiskAccess

  spacing: 12

  SymbolLabel {
    symbol: prompt.needsFullDiskAccess ? "lock.shield" : "exclamationmark.triangle"
    text: prompt.needsFullDiskAccess ? qsTr("Full Disk Access is required to read the local Messages database.")
                                     : qsTr("Messages history isn’t available on this Mac.")
    font.weight: Font.DemiBold
    Layout.fillWidth: true
  }
  Prose {
    visible: prompt.needsFullDiskAccess
    text: qsTr("Open System Settings, enable Tidewell under Full Disk Access, then quit and reopen the installed app. Access applies to the copy in Applications, not the copy inside the DMG.")
    color: Theme.colors.secondaryText
    Layout.fillWidth: true
  }
  Flow {
    spacing: 12
    Layout.fillWidth: true
    Layout.topMargin: 4

    PushButton {
      visible: prompt.needsFullDiskAccess
      text: qsTr("Open Full Disk Access")
      prominent: true
      onClicked: prompt.coordinator.openPrivacySettings()
    }
    PushButton {
      text: qsTr("Check Again")
      onClicked: prompt.coordinator.refreshAccess()
    }
  }
  // A scan that found the access gone has moved the window here, away from the panel that would say why.
  FailureLabel {
    text: prompt.coordinator.errorMessage
    Layout.fillWidth: true
  }
}
