import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Tidewell

// A command in a menu, with its shortcut.
MenuItem {
  id: item

  font.pixelSize: Theme.callout
  leftPadding: 12
  rightPadding: 12
  topPadding: 8
  bottomPadding: 8
  Accessible.name: text
  contentItem: RowLayout {
    spacing: 24

    Text {
      text: item.text
      font: item.font
      color: Theme.colors.text
      Layout.fillWidth: true
      Accessible.ignored: true
    }
    Text {
      text: item.action.shortcut
      font: item.font
      color: Theme.colors.secondaryText
      Accessible.ignored: true
    }
  }
  background: Rectangle {
    color: item.highlighted ? Theme.colors.track : "transparent"
    radius: 4

    FocusRing {
      anchors.margins: 0
      cornerRadius: 0
      visible: item.visualFocus
    }
  }
}
