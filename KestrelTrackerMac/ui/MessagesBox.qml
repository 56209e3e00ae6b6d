import QtQuick
import QtQuick.Layouts
import Tidewell

Box {
  id: box

  required property MessagesCompanionCoordinator coordinator
  readonly property int accessState: coordinator.accessState

  RowLayout {
    spacing: 12
    Layout.fillWidth: true

    SymbolLabel {
      symbol: "message.fill"
      text: qsTr("Messages activity")
      heading: true
      font.pixelSize: Math.round(Theme.title)
      font.weight: Font.Bold
      symbolSize: Math.round(1.15 * Theme.title)
      Layout.fillWidth: true
    }
    AccessCapsule {
      accessState: box.accessState
      Layout.alignment: Qt.AlignVCenter
    }
  }
  Prose {
    text: qsTr("Tidewell can calculate daily sent and received counts, active conversation counts, timing, and average message length. It does not copy or save message bodies, attachments, names, handles, or conversation titles.")
    color: Theme.colors.secondaryText
    Layout.fillWidth: true
  }
  Divider {
    Layout.topMargin: 4
    Layout.bottomMargin: 8
  }
  SymbolLabel {
    visible: box.accessState === MessagesCompanionCoordinator.Checking
    symbol: "ellipsis"
    text: qsTr("Checking Messages access…")
    color: Theme.colors.secondaryText
    Layout.fillWidth: true
  }
  AccessPrompt {
    visible: box.accessState === MessagesCompanionCoordinator.NeedsFullDiskAccess
            || box.accessState === MessagesCompanionCoordinator.Unavailable
    coordinator: box.coordinator
    Layout.fillWidth: true
  }
  ScanPanel {
    visible: box.accessState === MessagesCompanionCoordinator.Ready
    coordinator: box.coordinator
    Layout.fillWidth: true
  }
}
