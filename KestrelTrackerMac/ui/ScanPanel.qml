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

      // As tall and as centred as the texts beside it, so that all stand on one line.
      Text {
        text: picker.title
        color: Theme.colors.secondaryText
        font.pixelSize: Theme.body
        verticalAlignment: Text.AlignVCenter
        Layout.preferredHeight: picker.implicitHeight
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
  FailureLabel {
    id: failure
    text: panel.coordinator.errorMessage
    Layout.fillWidth: true
  }
  SummaryView {
    id: result
    visible: panel.coordinator.hasSummary
    figures: panel.coordinator.figures
    Layout.fillWidth: true
  }
}
