import QtQuick
import QtQuick.Layouts
import Tidewell

// A symbol with its text, one element to screen readers. The symbol stands in the middle of the first line.
RowLayout {
  id: label

  required property string symbol
  required property string text
  property color color: Theme.colors.text
  property alias font: prose.font
  property alias heading: prose.heading
  property real symbolSize: Math.round(1.3 * font.pixelSize)

  Accessible.role: heading ? Accessible.Heading : Accessible.StaticText
  Accessible.name: text
  spacing: 8

  SymbolImage {
    name: label.symbol
    color: label.color
    Layout.alignment: Qt.AlignTop
    // In the wider lines of text, letters stand a little above the middle.
    Layout.topMargin: Math.round((prose.lineHeight - height) / 2 - (label.heading ? 0 : 0.1 * label.font.pixelSize))
    Layout.preferredWidth: label.symbolSize
    Layout.preferredHeight: label.symbolSize
  }
  Prose {
    id: prose
    text: label.text
    color: label.color
    Accessible.ignored: true
    Layout.fillWidth: true
  }
}
