import QtQuick
import QtQuick.Controls.Basic
import Tidewell

Button {
  id: button

  property bool prominent: false

  focusPolicy: Qt.StrongFocus
  font.pixelSize: Theme.body
  font.weight: prominent ? Font.DemiBold : Font.Medium
  leftPadding: 16
  rightPadding: 16
  topPadding: 0
  bottomPadding: 0
  implicitHeight: Math.max(28, Math.round(2.4 * Theme.body))
  Accessible.name: text
  Accessible.onPressAction: button.clicked()
  Keys.onReturnPressed: button.clicked()
  Keys.onEnterPressed: button.clicked()

  contentItem: Text {
    text: button.text
    font: button.font
    color: button.prominent ? Theme.colors.prominentText : Theme.colors.text
    horizontalAlignment: Text.AlignHCenter
    verticalAlignment: Text.AlignVCenter
    elide: Text.ElideRight
    Accessible.ignored: true
  }
  background: Rectangle {
    radius: 8
    color: button.prominent ? (button.down ? Theme.colors.prominentPressed : Theme.colors.prominent)
                            : (button.down ? Theme.colors.track : Theme.colors.tile)
    border.color: button.prominent ? "transparent" : Theme.colors.controlLine
    border.width: button.prominent ? 0 : 1

    FocusRing {
      visible: button.visualFocus
    }
  }
}
