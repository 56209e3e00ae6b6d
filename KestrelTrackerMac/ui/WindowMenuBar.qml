import QtQuick
import QtQuick.Controls.Basic
import Tidewell

// The commands of the window.
MenuBar {
  id: bar

  required property Action scanAction

  font.pixelSize: Theme.callout
  padding: 2
  background: Rectangle {
    color: Theme.colors.page
  }
  delegate: MenuBarItem {
    id: title
    leftPadding: 10
    rightPadding: 10
    topPadding: 4
    bottomPadding: 4
    Accessible.role: Accessible.MenuItem
    Accessible.name: text
    contentItem: Text {
      text: title.text
      font: title.font
      color: Theme.colors.text
      Accessible.ignored: true
    }
    background: Rectangle {
      color: title.highlighted ? Theme.colors.track : "transparent"
      radius: 6

      FocusRing {
        visible: title.visualFocus
      }
    }
  }

  Menu {
    title: qsTr("Tidewell")
    padding: 4
    background: Rectangle {
      implicitWidth: 280
      color: Theme.colors.box
      border.color: Theme.colors.line
      radius: 8
    }

    CommandItem {
      action: bar.scanAction
    }
  }
}
