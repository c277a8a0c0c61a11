// The soft hollow that a picture lies in: light in the middle, deeper towards its rounded rim.
import QtQuick
import Quillomat.Theme

Canvas {
    id: root

    property real radius: Theme.cardRadius
    readonly property color middle: Theme.wellTop
    readonly property color rim: Theme.wellBottom

    onMiddleChanged: requestPaint()
    onWidthChanged: requestPaint()
    onHeightChanged: requestPaint()
    onPaint: {
        const context = getContext("2d");
        context.reset();
        const reach = Math.hypot(width, height) / 2;
        const light = context.createRadialGradient(width / 2, height * 0.46, 0, width / 2, height * 0.46, reach);
        light.addColorStop(0, middle);
        light.addColorStop(0.35, middle);
        light.addColorStop(1, rim);
        context.fillStyle = light;
        context.beginPath();
        context.roundedRect(0, 0, width, height, radius, radius);
        context.fill();
    }
}
