import QtQuick
import QtQuick.Layouts
import Tidewell

// One figure above its caption.
Rectangle {
  id: tile

  required property string value
  required property string caption
  required property font valueFont
  required property int padding

  //: A figure as a screen reader says it: what was counted, and the count.
  readonly property string spoken: qsTr("%1: %2").arg(caption).arg(value)

  color: Theme.colors.tile
  radius: 10
  implicitHeight: column.implicitHeight + 2 * Math.max(12, padding)
  Layout.fillWidth: true
  Layout.fillHeight: true
  Layout.preferredWidth: 1
  Accessible.role: Accessible.StaticText
  Accessible.name: spoken

  Column {
    id: column
    anchors.left: parent.left
    anchors.right: parent.right
    anchors.top: parent.top
    anchors.margins: tile.padding
    anchors.topMargin: Math.max(12, tile.padding)
    spacing: 0

    Text {
      text: TabularText.markup(tile.value, tile.valueFont)
      textFormat: Text.RichText
      font: tile.valueFont
      color: Theme.colors.text
      Accessible.ignored: true
    }
    Prose {
      width: parent.width
      text: tile.caption
      color: Theme.colors.secondaryText
      font.pixelSize: Theme.callout
      Accessible.ignored: true
    }
  }
}
