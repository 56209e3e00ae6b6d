import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Tidewell

// That a scan runs; still where the system asks for no motion.
RowLayout {
  spacing: 10
  Accessible.role: Accessible.StaticText
  Accessible.name: text.text

  BusyIndicator {
    running: visible
    visible: !Theme.reduceMotion
    padding: 0
    palette.dark: Theme.colors.tint
    Layout.preferredWidth: 18
    Layout.preferredHeight: 18
    Accessible.ignored: true
  }
  SymbolImage {
    name: "ellipsis"
    color: Theme.colors.tint
    visible: Theme.reduceMotion
    Layout.preferredWidth: 18
    Layout.preferredHeight: 18
  }
  Prose {
    id: text
    text: qsTr("Summarizing on this Mac…")
    color: Theme.colors.secondaryText
    lineSpacing: 1.2
    Accessible.ignored: true
    Layout.fillWidth: true
  }
}
