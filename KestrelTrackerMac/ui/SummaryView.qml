import QtQuick
import QtQuick.Layouts
import Tidewell

// The result of the last scan.
ColumnLayout {
  id: view

  required property messagesSummaryFigures figures
  readonly property bool isEmpty: figures.recentDays.length === 0

  spacing: 20

  MetricTiles {
    figures: view.figures
    Layout.fillWidth: true
  }
  Prose {
    visible: view.isEmpty
    text: qsTr("No Messages activity was found in the selected window.")
    color: Theme.colors.secondaryText
    Layout.fillWidth: true
  }
  ColumnLayout {
    visible: !view.isEmpty
    spacing: 0
    Layout.fillWidth: true

    Prose {
      text: qsTr("Recent daily activity")
      heading: true
      font.weight: Font.DemiBold
      Layout.fillWidth: true
      Layout.bottomMargin: 6
    }
    ColumnLayout {
      spacing: 0
      Layout.fillWidth: true
      Accessible.role: Accessible.List
      Accessible.name: qsTr("Recent daily activity")

      Repeater {
        model: view.figures.recentDays

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
}
