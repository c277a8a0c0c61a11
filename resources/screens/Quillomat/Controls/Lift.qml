// A soft shadow of one level below a rounded card.
import QtQuick
import Quillomat.Theme

Item {
    id: root
    property real radius: Theme.cardRadius

    anchors.fill: parent
    z: -1

    Repeater {
        model: 6
        Rectangle {
            required property int index
            x: -index * 2
            y: -index * 2 + 4
            width: root.width + 4 * index
            height: root.height + 4 * index
            radius: root.radius + 2 * index
            color: Theme.shade
            opacity: 0.16
        }
    }
}
