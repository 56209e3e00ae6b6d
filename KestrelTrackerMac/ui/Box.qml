import QtQuick
import QtQuick.Layouts
import Tidewell

// A group of things that belong together, on a ground of its own.
Rectangle {
  id: box

  default property alias content: column.data
  property int padding: 20

  color: Theme.colors.box
  border.color: Theme.colors.line
  border.width: 1
  radius: 12
  implicitHeight: column.implicitHeight + 2 * padding
  Layout.fillWidth: true

  ColumnLayout {
    id: column
    anchors.fill: parent
    anchors.margins: box.padding
    spacing: 8
  }
}
