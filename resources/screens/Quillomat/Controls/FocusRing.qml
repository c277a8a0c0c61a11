// Shows where the keyboard is.
import QtQuick
import Quillomat.Theme

Rectangle {
    anchors.fill: parent
    anchors.margins: 1
    color: Theme.clear
    radius: Theme.smallRadius
    border.width: 2
    border.color: Theme.accent
}
