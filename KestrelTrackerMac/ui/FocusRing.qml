import QtQuick
import Tidewell

// Around the control that the keyboard speaks to, outside its edge. Whoever has one says when it is visible.
Rectangle {
  property real cornerRadius: 8

  anchors.fill: parent
  anchors.margins: -4
  color: "transparent"
  border.color: Theme.colors.tint
  border.width: 2
  radius: cornerRadius + 4
}
