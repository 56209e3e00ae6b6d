import QtQuick
import QtQuick.Controls.Basic
import Tidewell

// The commands of the window. F10 opens them, as on other desktops.
MenuBar {
  id: bar

  required property Action scanAction
  required property int sideMargin

  // How far the title's highlight reaches beyond its text, which stands at the page's margin.
  readonly property int overhang: 12

  function openByKey() {
    const title = itemAt(0) as MenuBarItem;
    title.forceActiveFocus(Qt.ShortcutFocusReason);
    title.triggered();
    title.menu.itemAt(0).forceActiveFocus(Qt.TabFocusReason);
  }

  font.pixelSize: Theme.callout
  topPadding: 4
  bottomPadding: 5
  leftPadding: sideMargin - overhang
  rightPadding: sideMargin - overhang
  Accessible.name: qsTr("Menu bar")
  background: Rectangle {
    color: Theme.colors.page

    Rectangle {
      anchors.left: parent.left
      anchors.right: parent.right
      anchors.bottom: parent.bottom
      height: 1
      color: Theme.colors.line
    }
  }
  delegate: MenuBarItem {
    id: title
    leftPadding: 12  // the overhang
    rightPadding: 12
    topPadding: 4
    bottomPadding: 4
    // Qt 6.4 tells screen readers of a title that it is a menu bar, whatever its role; its text speaks for it.
    Accessible.ignored: true
    contentItem: Text {
      text: title.text
      font: title.font
      color: Theme.colors.text
      Accessible.role: Accessible.MenuItem
      Accessible.name: text
      Accessible.onPressAction: title.triggered()
    }
    background: Rectangle {
      color: title.highlighted ? Theme.colors.track : "transparent"
      radius: 8

      FocusRing {
        anchors.margins: 0
        visible: title.visualFocus
      }
    }
  }

  Shortcut {
    sequence: "F10"
    onActivated: bar.openByKey()
  }

  Menu {
    id: menu
    title: qsTr("Tidewell")
    padding: 4
    background: Rectangle {
      implicitWidth: 280
      color: Theme.colors.box
      border.color: Theme.colors.line
      radius: 8
    }
    // Without the indicator of scrolling that a menu has otherwise, which screen readers find no name for.
    contentItem: ListView {
      model: menu.contentModel
      currentIndex: menu.currentIndex
      interactive: false
      implicitHeight: contentHeight
    }
    // The item that stands for a menu takes a name only so.
    Component.onCompleted: contentItem.parent.Accessible.name = Qt.binding(() => title)

    CommandItem {
      action: bar.scanAction
    }
  }
}
