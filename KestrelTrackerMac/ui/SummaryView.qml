import QtQuick
import QtQuick.Layouts
import Tidewell

// The result of the last scan.
ColumnLayout {
  id: view

  required property messagesSummaryFigures figures
  readonly property bool isEmpty: figures.recentDays.length === 0
  readonly property string nothing: qsTr("No Messages activity was found in the selected window.")

  spacing: 20
  Accessible.role: Accessible.Grouping
  Accessible.name: isEmpty ? nothing : tiles.spoken

  MetricTiles {
    id: tiles
    figures: view.figures
    Layout.fillWidth: true
  }
  Prose {
    visible: view.isEmpty
    text: view.nothing
    color: Theme.colors.secondaryText
    Layout.fillWidth: true
  }
  RecentDays {
    visible: !view.isEmpty
    days: view.figures.recentDays
    Layout.fillWidth: true
  }
}
