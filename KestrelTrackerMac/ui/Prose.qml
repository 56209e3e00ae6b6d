import QtQuick
import Tidewell

// Text in lines: wraps, and is told to screen readers.
Text {
  property bool heading: false
  property real lineSpacing: heading ? 1.2 : 1.45

  color: Theme.colors.text
  font.pixelSize: Theme.body
  lineHeightMode: Text.FixedHeight
  lineHeight: Math.round(lineSpacing * font.pixelSize)
  textFormat: Text.PlainText
  wrapMode: Text.Wrap
  Accessible.role: heading ? Accessible.Heading : Accessible.StaticText
  Accessible.name: text
}
