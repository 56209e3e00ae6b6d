import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Tidewell

// Where a scan is chosen and started, and where its result stands.
ColumnLayout {
  id: panel

  required property MessagesCompanionCoordinator coordinator

  spacing: 16

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
  RowLayout {
    visible: panel.coordinator.isScanning
    spacing: 10
    Layout.fillWidth: true

    BusyIndicator {
      running: panel.coordinator.isScanning && !Theme.reduceMotion
      visible: !Theme.reduceMotion
      padding: 0
      palette.dark: Theme.colors.tint
      Layout.preferredWidth: 18
      Layout.preferredHeight: 18
      Accessible.ignored: true
    }
    SymbolImage {
      name: "ellipsis"
      color: Theme.colors.tint
      visible: Theme.reduceMotion
      Layout.preferredWidth: 18
      Layout.preferredHeight: 18
    }
    Prose {
      text: qsTr("Summarizing on this Mac…")
      color: Theme.colors.secondaryText
      Layout.fillWidth: true
    }
  }
  SymbolLabel {
    visible: panel.coordinator.errorMessage !== ""
    symbol: "exclamationmark.circle"
    text: panel.coordinator.errorMessage
    color: Theme.colors.red
    Layout.fillWidth: true
  }
  SummaryView {
    visible: panel.coordinator.hasSummary
    figures: panel.coordinator.figures
    Layout.fillWidth: true
  }
}
