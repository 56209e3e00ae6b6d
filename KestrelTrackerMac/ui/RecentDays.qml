import QtQuick
import QtQuick.Layouts
import Tidewell

// The last days with a message, a row each.
ColumnLayout {
  id: recent

  required property var days

  spacing: 0

  Prose {
    id: headline
    text: qsTr("Recent daily activity")
    heading: true
    font.weight: Font.DemiBold
    Layout.fillWidth: true
    Layout.bottomMargin: 8
  }
  ColumnLayout {
    spacing: 0
    Layout.fillWidth: true
    Accessible.role: Accessible.List
    Accessible.name: headline.text

    Repeater {
      model: recent.days

      ColumnLayout {
        id: entry

        required property messagesDayFigures modelData

        spacing: 0

        Divider {}
        DayRow {
          day: entry.modelData
          Layout.fillWidth: true
          Layout.topMargin: 9
          Layout.bottomMargin: 9
        }
      }
    }
  }
}
