import QtQuick
import QtQuick.Layouts
import Tidewell

// Where a scan is chosen and started, and where its result stands.
ColumnLayout {
  id: panel

  required property MessagesCompanionCoordinator coordinator

  spacing: 16

  Connections {
    target: panel.coordinator

    // A scan that gives the figures of the one before has a result all the same.
    function onIsScanningChanged() {
      if (panel.coordinator.isScanning) {
        Announcer.announce(progress);
      } else {
        Announcer.announce(panel.coordinator.errorMessage === "" ? result : failure);
      }
    }
  }

  Prose {
    text: qsTr("Nothing is read until you start a scan. Results stay in this app for the current session and are not uploaded.")
    color: Theme.colors.secondaryText
    font.pixelSize: Theme.callout
    Layout.fillWidth: true
  }
  Flow {
    spacing: 16
    Layout.fillWidth: true

    RowLayout {
      width: Math.min(implicitWidth, parent.width)
      spacing: 16

      Prose {
        text: picker.title
        color: Theme.colors.secondaryText
        lineSpacing: 1.2
        wrapMode: Text.NoWrap
        Accessible.ignored: true
      }
      TimeWindowPicker {
        id: picker
        days: panel.coordinator.selectedDays
        Layout.fillWidth: true
        Layout.maximumWidth: implicitWidth
        onChosen: days => panel.coordinator.selectedDays = days
      }
    }
    PushButton {
      text: panel.coordinator.hasSummary ? qsTr("Scan Again") : qsTr("Scan Locally")
      prominent: true
      onClicked: panel.coordinator.scan()
    }
  }
  ScanProgress {
    id: progress
    visible: panel.coordinator.isScanning
    Layout.fillWidth: true
  }
  SymbolLabel {
    id: failure
    visible: panel.coordinator.errorMessage !== ""
    symbol: "exclamationmark.circle"
    text: panel.coordinator.errorMessage
    color: Theme.colors.red
    Layout.fillWidth: true
  }
  SummaryView {
    id: result
    visible: panel.coordinator.hasSummary
    figures: panel.coordinator.figures
    Layout.fillWidth: true
  }
}
