import QtQuick
import QtQuick.Layouts
import Tidewell

// The segmented picker of the day window. The keyboard reaches it as one control, in which the arrows choose.
FocusScope {
  id: picker

  property int days
  readonly property string title: qsTr("Time window")
  readonly property var segments: [month, quarter, year]

  signal chosen(int days)

  function step(by: int) {
    const index = segments.findIndex(segment => segment.checked) + by;
    if (index >= 0 && index < segments.length) {
      chosen(segments[index].days);
      segments[index].forceActiveFocus(Qt.TabFocusReason);
    }
  }

  implicitWidth: Math.min(360, 3 * Math.max(month.implicitWidth, quarter.implicitWidth, year.implicitWidth) + 4)
  implicitHeight: Math.max(28, Math.round(2.4 * Theme.body))
  Accessible.role: Accessible.Grouping
  Accessible.name: title
  Keys.onLeftPressed: step(-1)
  Keys.onRightPressed: step(1)
  Keys.onUpPressed: step(-1)
  Keys.onDownPressed: step(1)

  Rectangle {
    anchors.fill: parent
    color: Theme.colors.track
    radius: 8
  }
  RowLayout {
    anchors.fill: parent
    anchors.margins: 2
    spacing: 0

    TimeWindowSegment {
      id: month
      text: qsTr("30 days")
      days: 30
      checked: picker.days === days
      onClicked: picker.chosen(days)
    }
    TimeWindowSegment {
      id: quarter
      text: qsTr("90 days")
      days: 90
      checked: picker.days === days
      onClicked: picker.chosen(days)
    }
    TimeWindowSegment {
      id: year
      text: qsTr("1 year")
      days: 365
      checked: picker.days === days
      onClicked: picker.chosen(days)
    }
  }
}
