// Dims what stands behind and keeps touches from it.
import QtQuick
import Quillomat.Theme

Rectangle {
    id: root
    signal tapped()

    anchors.fill: parent
    color: Theme.scrim

    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        acceptedButtons: Qt.AllButtons
        onClicked: root.tapped()
        onWheel: event => event.accepted = true
    }
}
