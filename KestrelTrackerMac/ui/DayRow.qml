import QtQuick
import QtQuick.Layouts
import Tidewell

// What one day held.
RowLayout {
  id: row

  required property messagesDayFigures day
  readonly property font digits: Qt.font({ "pixelSize": Theme.body, "kerning": false })

  spacing: 16
  Layout.preferredHeight: Math.round(1.45 * Theme.body)
  Accessible.role: Accessible.ListItem
  Accessible.name: qsTr("%1: %2").arg(day.date).arg(day.counts)

  Text {
    text: TabularText.markup(row.day.date, row.digits)
    textFormat: Text.RichText
    font: row.digits
    color: Theme.colors.text
    Layout.leftMargin: 4
    Accessible.ignored: true
  }
  Item {
    Layout.fillWidth: true
  }
  Text {
    text: TabularText.markup(row.day.counts, row.digits)
    textFormat: Text.RichText
    font: row.digits
    color: Theme.colors.secondaryText
    Layout.rightMargin: 4
    Accessible.ignored: true
  }
}
