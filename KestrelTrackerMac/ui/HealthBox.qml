import QtQuick
import QtQuick.Layouts
import Tidewell

Box {
  RowLayout {
    spacing: 16

    SymbolImage {
      name: "heart.text.clipboard"
      color: Theme.colors.pink
      Layout.alignment: Qt.AlignTop
      Layout.preferredWidth: Math.round(1.15 * Theme.title)
      Layout.preferredHeight: Math.round(1.15 * Theme.title)
    }
    ColumnLayout {
      spacing: 0

      Prose {
        text: qsTr("Apple Health")
        heading: true
        font.weight: Font.DemiBold
        lineSpacing: 1.45
        Layout.fillWidth: true
      }
      Prose {
        text: qsTr("Handled on iPhone")
        font.pixelSize: Theme.callout
        Layout.fillWidth: true
      }
      Prose {
        text: qsTr("The iPhone app reads permitted HealthKit signals directly and keeps them local unless Sync is enabled. This Mac app does not ask for an Apple Health export.")
        color: Theme.colors.secondaryText
        Layout.fillWidth: true
        Layout.topMargin: 4
      }
    }
  }
}
