import QtQuick
import QtQuick.Layouts
import Tidewell

// That a scan runs; still where the system asks for no motion.
RowLayout {
  id: progress

  spacing: 8
  Accessible.role: Accessible.StaticText
  Accessible.name: text.text

  SymbolImage {
    name: "progress.indicator"
    color: Theme.colors.tint
    Layout.preferredWidth: 20
    Layout.preferredHeight: 20

    RotationAnimation on rotation {
      running: progress.visible && !Theme.reduceMotion
      from: 0
      to: 360
      duration: 1000
      loops: Animation.Infinite
    }
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
