// Shows where the keyboard is: a line in the accent, and one inside of it that stands out where the accent does not.
import QtQuick
import Quillomat.Theme

Rectangle {
    id: root

    color: Theme.clear
    radius: Theme.smallRadius
    border.width: 2
    border.color: Theme.accent

    Rectangle {
        anchors.fill: parent
        anchors.margins: 2
        color: Theme.clear
        radius: Math.max(0, root.radius - 2)
        border.width: 1
        border.color: Theme.card
    }
}
