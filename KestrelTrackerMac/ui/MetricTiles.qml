import QtQuick
import QtQuick.Layouts
import Tidewell

// The four figures of a summary, in columns of one width. Where they are narrow the padding gives way first, then
// the size of the digits, which is one for all four.
RowLayout {
  id: tiles

  required property messagesSummaryFigures figures
  readonly property var values: [figures.activeDays, figures.sent, figures.received, figures.lateNight]
  readonly property string spoken: `${days.spoken}, ${sent.spoken}, ${received.spoken}, ${lateNight.spoken}`
  readonly property font fullFont: Qt.font({ "pixelSize": Math.round(Theme.largeTitle), "weight": Font.Bold, "kerning": false })
  readonly property real fullWidth: Math.max(...values.map(value => TabularText.width(value, fullFont)))
  readonly property real tileWidth: (width - 3 * spacing) / 4
  readonly property int padding: Math.max(8, Math.min(16, (tileWidth - fullWidth) / 2))
  readonly property font valueFont: Qt.font({
    "pixelSize": Math.max(8, Math.floor(fullFont.pixelSize * Math.min(1, (tileWidth - 2 * padding) / fullWidth))),
    "weight": Font.Bold,
    "kerning": false
  })

  spacing: 12

  MetricTile {
    id: days
    value: tiles.figures.activeDays
    caption: qsTr("Active days")
    valueFont: tiles.valueFont
    padding: tiles.padding
  }
  MetricTile {
    id: sent
    value: tiles.figures.sent
    caption: qsTr("Sent")
    valueFont: tiles.valueFont
    padding: tiles.padding
  }
  MetricTile {
    id: received
    value: tiles.figures.received
    caption: qsTr("Received")
    valueFont: tiles.valueFont
    padding: tiles.padding
  }
  MetricTile {
    id: lateNight
    value: tiles.figures.lateNight
    caption: qsTr("Late night")
    valueFont: tiles.valueFont
    padding: tiles.padding
  }
}
