import QtQuick
import Tidewell

// Whether Messages can be read, at a glance.
Rectangle {
  id: capsule

  required property int accessState
  readonly property var look: {
    switch (accessState) {
    case MessagesCompanionCoordinator.Ready:
      return { "text": qsTr("Ready"), "color": Theme.colors.readyText, "fill": Theme.colors.readyFill };
    case MessagesCompanionCoordinator.NeedsFullDiskAccess:
      return { "text": qsTr("Permission needed"), "color": Theme.colors.permissionText, "fill": Theme.colors.permissionFill };
    case MessagesCompanionCoordinator.Unavailable:
      return { "text": qsTr("Unavailable"), "color": Theme.colors.unavailableText, "fill": Theme.colors.unavailableFill };
    }
    return { "text": qsTr("Checking"), "color": Theme.colors.checkingText, "fill": Theme.colors.checkingFill };
  }

  color: look.fill
  radius: height / 2
  implicitWidth: label.implicitWidth + 24
  implicitHeight: Math.round(2 * label.font.pixelSize)
  Accessible.role: Accessible.StaticText
  Accessible.name: qsTr("Messages access: %1").arg(look.text)

  Text {
    id: label
    anchors.centerIn: parent
    text: capsule.look.text
    color: capsule.look.color
    font.pixelSize: Theme.caption
    font.weight: Font.DemiBold
    Accessible.ignored: true
  }
}
