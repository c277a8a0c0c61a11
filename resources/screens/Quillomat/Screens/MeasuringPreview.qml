// The measuring aids' texts and presses, laid over the preview where the core put them.
import QtQuick
import Quillomat.Controls
import Quillomat.Theme

Item {
    id: root

    required property QtObject screen
    required property real zoom

    Repeater {
        model: root.screen.captionCount
        Pressable {
            id: caption
            required property int index
            readonly property var place: root.screen.captions[index] ?? ({})

            name: place.text ?? ""
            x: (place.x ?? 0) * root.zoom
            y: (place.y ?? 0) * root.zoom
            width: (place.width ?? 0) * root.zoom
            height: (place.height ?? 0) * root.zoom
            onTriggered: root.screen.pressCaption(index)
            Caption {
                anchors.fill: parent
                anchors.leftMargin: Theme.step
                verticalAlignment: Text.AlignVCenter
                text: caption.name
                color: Theme.white
                size: Math.max(1, (caption.place.size ?? 10) * root.zoom)
                lineHeight: 1
            }
        }
    }
}
