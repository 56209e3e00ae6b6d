import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Tidewell

// One choice of the day window.
RadioButton {
  id: segment

  required property int days

  focusPolicy: checked ? Qt.StrongFocus : Qt.NoFocus
  focus: checked
  font.pixelSize: Theme.body
  font.weight: Font.Medium
  padding: 0
  spacing: 0
  indicator: null
  Layout.fillWidth: true
  Layout.fillHeight: true
  Layout.preferredWidth: 1
  Accessible.name: text
  Accessible.onPressAction: segment.clicked()
  Accessible.onToggleAction: segment.clicked()

  contentItem: Text {
    text: segment.text
    font: segment.font
    color: Theme.colors.text
    horizontalAlignment: Text.AlignHCenter
    verticalAlignment: Text.AlignVCenter
    leftPadding: 16
    rightPadding: 16
    Accessible.ignored: true
  }
  background: Item {
    Rectangle {
      visible: segment.checked
      anchors.fill: parent
      color: Theme.colors.segment
      border.color: Theme.dark ? "transparent" : Theme.colors.line
      radius: 6
    }
    FocusRing {
      visible: segment.visualFocus
      cornerRadius: 6
    }
  }
}
