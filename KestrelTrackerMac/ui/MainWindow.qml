import QtQuick
import QtQuick.Controls.Basic
import Tidewell

ApplicationWindow {
  id: window

  required property MessagesCompanionCoordinator coordinator
  required property string disclaimer

  objectName: "main"
  title: qsTr("Tidewell")
  width: 1080
  height: 720
  minimumWidth: 480
  minimumHeight: 400
  visible: true
  color: Theme.colors.page
  onVisibleChanged: {
    if (visible) {
      coordinator.refreshAccess();
    }
  }
  onActiveFocusItemChanged: view.reveal(activeFocusItem)

  Action {
    id: scanAction
    text: qsTr("Scan Messages Activity")
    shortcut: "Ctrl+R"
    onTriggered: window.coordinator.scan()
  }

  menuBar: WindowMenuBar {
    scanAction: scanAction
    sideMargin: view.sideMargin
  }

  MessagesCompanionRootView {
    id: view
    anchors.fill: parent
    coordinator: window.coordinator
    disclaimer: window.disclaimer
  }
}
