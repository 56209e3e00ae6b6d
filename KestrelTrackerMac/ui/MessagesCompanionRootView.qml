import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Tidewell

// The dashboard: one column that scrolls.
Flickable {
  id: view

  required property MessagesCompanionCoordinator coordinator
  required property string disclaimer
  readonly property int sideMargin: width < 640 ? 16 : 32

  // What scrolling by the keyboard leaves of the page that was seen.
  readonly property int line: 48

  function scrollTo(y: real) {
    contentY = Math.max(0, Math.min(y, contentHeight - height));
  }
  function holds(item: Item): bool {
    for (let ancestor = item?.parent; ancestor; ancestor = ancestor.parent) {
      if (ancestor === contentItem) {
        return true;
      }
    }
    return false;
  }

  // Scrolls to a control of the page that has taken the focus. Menus take it too, and leave the page where it is.
  function reveal(item: Item) {
    if (!holds(item)) {
      return;
    }
    const top = item.mapToItem(contentItem, 0, 0).y;
    const margin = 24;
    if (top - margin < contentY) {
      scrollTo(top - margin);
    } else if (top + item.height + margin > contentY + height) {
      scrollTo(top + item.height + margin - height);
    }
  }

  contentWidth: width
  contentHeight: page.implicitHeight + 2 * 28
  boundsBehavior: Flickable.StopAtBounds
  pixelAligned: true
  focus: true
  ScrollBar.vertical: ScrollBar {
    id: bar
    policy: view.contentHeight > view.height ? ScrollBar.AlwaysOn : ScrollBar.AlwaysOff
    contentItem: Rectangle {
      implicitWidth: 6
      radius: 3
      color: bar.pressed ? Theme.colors.secondaryText : Theme.colors.controlLine
    }
    Accessible.ignored: true
  }
  // A wheel makes a Flickable glide.
  WheelHandler {
    enabled: Theme.reduceMotion
    onWheel: event => view.scrollTo(view.contentY - event.angleDelta.y)
  }
  Keys.onPressed: event => {
    switch (event.key) {
    case Qt.Key_Up: scrollTo(contentY - line); break;
    case Qt.Key_Down: scrollTo(contentY + line); break;
    case Qt.Key_PageUp: scrollTo(contentY - height + line); break;
    case Qt.Key_PageDown: scrollTo(contentY + height - line); break;
    case Qt.Key_Home: scrollTo(0); break;
    case Qt.Key_End: scrollTo(contentHeight); break;
    default: return;
    }
    event.accepted = true;
  }

  ColumnLayout {
    id: page
    x: view.sideMargin
    y: 28
    width: view.width - 2 * view.sideMargin
    spacing: 16

    ColumnLayout {
      spacing: 4
      Layout.fillWidth: true
      Layout.bottomMargin: 4

      SymbolLabel {
        symbol: "chart.xyaxis.line"
        text: qsTr("Local dashboard")
        heading: true
        font.pixelSize: Math.round(Theme.largeTitle)
        font.weight: Font.Bold
        symbolSize: Math.round(1.1 * Theme.largeTitle)
        Layout.fillWidth: true
      }
      Prose {
        text: qsTr("Tidewell for Mac keeps private, consent-first summaries close to their source.")
        color: Theme.colors.secondaryText
        font.pixelSize: Theme.thirdTitle
        Layout.fillWidth: true
      }
    }
    LocalBadge {}
    MessagesBox {
      coordinator: view.coordinator
    }
    HealthBox {}
    Prose {
      text: view.disclaimer
      color: Theme.colors.secondaryText
      font.pixelSize: Theme.footnote
      Layout.fillWidth: true
    }
  }
}
