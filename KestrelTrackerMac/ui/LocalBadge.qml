import QtQuick
import QtQuick.Layouts
import Tidewell

Box {
  color: Theme.colors.badge
  border.width: 0
  padding: 16
  Accessible.role: Accessible.Grouping
  Accessible.name: qsTr("Local dashboard")

  RowLayout {
    spacing: 16
    Layout.leftMargin: 4

    SymbolImage {
      name: "macbook.and.iphone"
      color: Theme.colors.badgeBlue
      Layout.preferredWidth: Math.round(1.7 * Theme.secondTitle)
      Layout.preferredHeight: Math.round(1.7 * Theme.secondTitle)
    }
    ColumnLayout {
      spacing: 0

      Prose {
        text: qsTr("LOCAL")
        color: Theme.colors.badgeBlue
        font.pixelSize: Theme.smallestCaption
        font.weight: Font.Bold
        font.letterSpacing: 0.8
        Layout.fillWidth: true
      }
      Prose {
        text: qsTr("Entirely inside the app")
        font.weight: Font.DemiBold
        Layout.fillWidth: true
      }
      Prose {
        text: qsTr("This dashboard and its Messages summaries run locally. No browser, hosted page, or network connection is required.")
        color: Theme.colors.badgeSecondaryText
        Layout.fillWidth: true
      }
    }
  }
}
