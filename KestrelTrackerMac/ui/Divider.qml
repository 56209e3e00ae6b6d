import QtQuick
import QtQuick.Layouts
import Tidewell

Rectangle {
  color: Theme.colors.line
  Layout.fillWidth: true
  Layout.preferredHeight: 1
}
