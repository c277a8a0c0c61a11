// A text in the theme's type.
import QtQuick
import Quillomat.Theme

Text {
    property real size: Theme.sizeBody
    property bool strong: false
    property int weight: strong ? Font.DemiBold : Font.Normal

    color: Theme.text
    font.family: Theme.family
    font.pixelSize: size
    font.weight: weight
    lineHeight: Theme.lineHeight
    elide: Text.ElideRight
    textFormat: Text.PlainText
    renderType: Text.QtRendering
    Accessible.ignored: true
}
